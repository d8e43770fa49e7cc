#include "adapters/rpc/Base64.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace nomira::rpc {
namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kPadding = '=';
constexpr std::uint8_t kNone = 0xFF;

constexpr auto kValues = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(kNone);
    for (std::size_t n = 0; n < kAlphabet.size(); ++n)
        values[static_cast<std::uint8_t>(kAlphabet[n])] = static_cast<std::uint8_t>(n);
    return values;
}();

std::uint32_t ByteAt(std::string_view sBytes, std::size_t n) {
    return n < sBytes.size() ? static_cast<std::uint8_t>(sBytes[n]) : 0;
}

std::size_t PaddingOf(std::string_view sText) {
    if (sText.ends_with("==")) return 2;
    return sText.ends_with(kPadding) ? 1 : 0;
}

}  // namespace

std::string ToBase64(std::string_view sBytes) {
    std::string sText;
    sText.reserve((sBytes.size() + 2) / 3 * 4);
    for (std::size_t n = 0; n < sBytes.size(); n += 3) {
        const std::uint32_t nThree =
            ByteAt(sBytes, n) << 16 | ByteAt(sBytes, n + 1) << 8 | ByteAt(sBytes, n + 2);
        for (const int nShift : {18, 12, 6, 0})
            sText += kAlphabet[nThree >> nShift & 0x3F];
    }
    if (sBytes.size() % 3 != 0) {
        const std::size_t nPadding = 3 - sBytes.size() % 3;
        sText.replace(sText.size() - nPadding, nPadding, nPadding, kPadding);
    }
    return sText;
}

std::optional<std::string> FromBase64(std::string_view sText) {
    if (sText.size() % 4 != 0) return std::nullopt;
    const std::size_t nPadding = PaddingOf(sText);
    sText.remove_suffix(nPadding);
    std::string sBytes;
    sBytes.reserve(sText.size() / 4 * 3 + 2);
    std::uint32_t nHeld = 0;
    int nHeldBits = 0;
    for (const char c : sText) {
        const std::uint8_t nValue = kValues[static_cast<std::uint8_t>(c)];
        if (nValue == kNone) return std::nullopt;
        nHeld = nHeld << 6 | nValue;
        nHeldBits += 6;
        if (nHeldBits < 8) continue;
        nHeldBits -= 8;
        sBytes += static_cast<char>(nHeld >> nHeldBits & 0xFF);
    }
    const bool bRestIsZero = (nHeld & ((1U << nHeldBits) - 1)) == 0;
    if (!bRestIsZero || sBytes.size() % 3 != (3 - nPadding) % 3) return std::nullopt;
    return sBytes;
}

}  // namespace nomira::rpc
