#include "langtools/Utf8.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "langtools/Ascii.h"

namespace nomira {
namespace {

constexpr char16_t kReplacement = u'\uFFFD';
constexpr char32_t kFirstSupplementary = 0x10000;

bool IsHighSurrogate(char16_t c) {
    return c >= 0xD800 && c <= 0xDBFF;
}

bool IsLowSurrogate(char16_t c) {
    return c >= 0xDC00 && c <= 0xDFFF;
}

char Byte(char32_t n) {
    return static_cast<char>(static_cast<std::uint8_t>(n));
}

void AppendUtf8(std::string& sBytes, char32_t c) {
    if (c < 0x80) {
        sBytes += Byte(c);
        return;
    }
    if (c < 0x800) {
        sBytes += Byte(0xC0 | (c >> 6));
    } else {
        if (c < kFirstSupplementary) {
            sBytes += Byte(0xE0 | (c >> 12));
        } else {
            sBytes += Byte(0xF0 | (c >> 18));
            sBytes += Byte(0x80 | ((c >> 12) & 0x3F));
        }
        sBytes += Byte(0x80 | ((c >> 6) & 0x3F));
    }
    sBytes += Byte(0x80 | (c & 0x3F));
}

void AppendUtf16(Text& sText, char32_t c) {
    if (c < kFirstSupplementary) {
        sText += static_cast<char16_t>(c);
        return;
    }
    const char32_t nOffset = c - kFirstSupplementary;
    sText += static_cast<char16_t>(0xD800 + (nOffset >> 10));
    sText += static_cast<char16_t>(0xDC00 + (nOffset & 0x3FF));
}

// The sequences by their first byte: how long, which bits of it count, and the smallest character
// that may be written so; a smaller one in that many bytes is no character.
struct Lead {
    std::uint8_t nMask;
    std::uint8_t nMark;
    std::size_t nLength;
    char32_t nSmallest;
};
constexpr Lead kLeads[] = {
    {0x80, 0x00, 1, 0x00},
    {0xE0, 0xC0, 2, 0x80},
    {0xF0, 0xE0, 3, 0x800},
    {0xF8, 0xF0, 4, kFirstSupplementary},
};
constexpr char32_t kLargest = 0x10FFFF;

// The character at the front of `sBytes`, which isn't empty, and its length; 0 if there is none.
std::size_t DecodeFront(std::string_view sBytes, char32_t& c) {
    const auto nFirst = static_cast<std::uint8_t>(sBytes.front());
    for (const Lead& lead : kLeads) {
        if ((nFirst & lead.nMask) != lead.nMark) continue;
        if (sBytes.size() < lead.nLength) return 0;
        c = nFirst & static_cast<std::uint8_t>(~lead.nMask);
        for (std::size_t n = 1; n < lead.nLength; ++n) {
            const auto nByte = static_cast<std::uint8_t>(sBytes[n]);
            if ((nByte & 0xC0) != 0x80) return 0;
            c = (c << 6) | (nByte & 0x3F);
        }
        return c >= lead.nSmallest && c <= kLargest ? lead.nLength : 0;
    }
    return 0;
}

// Takes what is ASCII, most often all there is, off the front of `from` and appends it.
template <typename To, typename From>
void TakeAscii(To& to, From& from) {
    const std::size_t nLength = AsciiLength(from);
    const std::size_t nOld = to.size();
    to.reserve(nOld + from.size());
    to.resize(nOld + nLength);
    std::copy_n(from.begin(), nLength, to.begin() + static_cast<std::ptrdiff_t>(nOld));
    from.remove_prefix(nLength);
}

// Takes the character at the front, which isn't empty, off the text.
char32_t TakeCharacter(TextView& sText) {
    char32_t c = sText[0];
    std::size_t nLength = 1;
    if (IsHighSurrogate(sText[0]) && sText.size() > 1 && IsLowSurrogate(sText[1])) {
        c = kFirstSupplementary + ((c & 0x3FF) << 10) + (sText[1] & 0x3FF);
        nLength = 2;
    }
    sText.remove_prefix(nLength);
    return c;
}

}  // namespace

std::string ToUtf8(TextView sText) {
    std::string sBytes;
    for (TakeAscii(sBytes, sText); !sText.empty(); TakeAscii(sBytes, sText))
        AppendUtf8(sBytes, TakeCharacter(sText));
    return sBytes;
}

Text FromUtf8(std::string_view sBytes) {
    if (AsciiLength(sBytes) == sBytes.size()) return {sBytes.begin(), sBytes.end()};
    Text sText;
    for (TakeAscii(sText, sBytes); !sBytes.empty(); TakeAscii(sText, sBytes)) {
        char32_t c = kReplacement;
        const std::size_t nLength = DecodeFront(sBytes, c);
        AppendUtf16(sText, nLength == 0 ? kReplacement : c);
        sBytes.remove_prefix(nLength == 0 ? 1 : nLength);
    }
    return sText;
}

}  // namespace nomira
