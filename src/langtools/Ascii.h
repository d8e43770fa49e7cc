// Runs of ASCII, which most names are made of from end to end: found a word at a time, so that
// conversions between 8-bit and 16-bit text spend their time on the others alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace nomira {

// How many characters from the start on are below 128.
template <typename Character>
std::size_t AsciiLength(std::basic_string_view<Character> sText) {
    using Unsigned = std::make_unsigned_t<Character>;
    constexpr Unsigned kBeyondAscii = static_cast<Unsigned>(~0x7FU);
    // The same mask for each character of a word.
    constexpr std::uint64_t kWordMask =
        ~std::uint64_t{0} / std::uint64_t{Unsigned(~Unsigned{0})} * std::uint64_t{kBeyondAscii};
    constexpr std::size_t kPerWord = sizeof(std::uint64_t) / sizeof(Character);
    std::size_t n = 0;
    for (; n + kPerWord <= sText.size(); n += kPerWord) {
        std::uint64_t nWord = 0;
        std::memcpy(&nWord, sText.data() + n, sizeof nWord);
        if ((nWord & kWordMask) != 0) break;
    }
    while (n < sText.size() && (static_cast<Unsigned>(sText[n]) & kBeyondAscii) == 0)
        ++n;
    return n;
}

}  // namespace nomira
