// What a character gives to the key of a text: the tables of the sort order General, one for each
// generation. They are data of the format; KeyCodes puts keys together from them.
#pragma once

#include <cstdint>
#include <optional>

namespace nomira::jet {

// Jet 3 sorts the bytes of code page 1252.
struct NarrowCode {
    std::uint8_t first = 0;
    std::uint8_t second = 0;  // 0: the character has one key byte only
    // What it adds to the string of accents: so many digits of this value. A letter that could
    // carry an accent and has none adds a 2.
    std::uint8_t nAccent = 0;
    std::uint8_t nAccentDigits = 0;
};
inline constexpr std::uint8_t kPlainLetter = 2;

// Every byte has one.
const NarrowCode& NarrowCodeOf(std::uint8_t nByte);

// Jet 4 sorts characters of 16 bits. Without key bytes and without an aside the character counts
// for nothing at all.
struct WideCode {
    std::uint16_t nKey = 0;   // one or two bytes, high byte first; 0: none
    std::uint8_t nExtra = 0;  // 0: no accent
    std::uint8_t nAside = 0;  // of characters without key bytes: told behind all others
};

// nullopt for a character whose code isn't known.
std::optional<WideCode> WideCodeOf(char16_t c);

}  // namespace nomira::jet
