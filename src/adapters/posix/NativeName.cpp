#include "adapters/posix/NativeName.h"

#include <cstddef>
#include <cstdint>

namespace nomira::posix {
namespace {

constexpr char16_t kByteEscape = 0xDC00;  // plus the byte, which is 80 or above
constexpr std::uint32_t kReplacement = 0xFFFD;
constexpr std::uint32_t kSupplementary = 0x10000;

// The three lengths above one byte: how the first byte looks, and the least character that needs
// so many bytes.
struct SequenceForm {
    unsigned char nMask, nLead;
    std::size_t nLength;
    std::uint32_t nLeast;
};
constexpr SequenceForm kForms[] = {
    {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, kSupplementary}};

bool IsSurrogate(std::uint32_t n) {
    return n >= 0xD800 && n <= 0xDFFF;
}

bool IsHigh(char16_t c) {
    return c >= 0xD800 && c <= 0xDBFF;
}

bool IsLow(char16_t c) {
    return c >= 0xDC00 && c <= 0xDFFF;
}

// The character of `form` at the start of `bytes`, 0 if it isn't well formed.
std::uint32_t ReadSequence(std::string_view bytes, const SequenceForm& form) {
    if (bytes.size() < form.nLength) return 0;
    std::uint32_t n = static_cast<unsigned char>(bytes[0]) & static_cast<unsigned>(~form.nMask);
    for (std::size_t i = 1; i < form.nLength; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if ((byte & 0xC0) != 0x80) return 0;
        n = n << 6 | (byte & 0x3F);
    }
    return n < form.nLeast || n > 0x10FFFF || IsSurrogate(n) ? 0 : n;
}

void AppendCharacter(Text& sText, std::uint32_t n) {
    if (n < kSupplementary) {
        sText += static_cast<char16_t>(n);
    } else {
        sText += static_cast<char16_t>(0xD800 + ((n - kSupplementary) >> 10));
        sText += static_cast<char16_t>(0xDC00 + ((n - kSupplementary) & 0x3FF));
    }
}

// Appends what stands at the start of `bytes`, and tells how many bytes that was.
std::size_t AppendNext(Text& sText, std::string_view bytes) {
    const auto byte = static_cast<unsigned char>(bytes[0]);
    for (const SequenceForm& form : kForms) {
        if ((byte & form.nMask) != form.nLead) continue;
        if (const std::uint32_t n = ReadSequence(bytes, form)) {
            AppendCharacter(sText, n);
            return form.nLength;
        }
    }
    sText += byte < 0x80 ? static_cast<char16_t>(byte) : static_cast<char16_t>(kByteEscape | byte);
    return 1;
}

void AppendUtf8(std::string& bytes, std::uint32_t n) {
    const auto append = [&](std::uint32_t nByte) { bytes += static_cast<char>(nByte); };
    if (n < 0x80) return append(n);
    if (n < 0x800) {
        append(0xC0 | n >> 6);
    } else {
        if (n < kSupplementary) {
            append(0xE0 | n >> 12);
        } else {
            append(0xF0 | n >> 18);
            append(0x80 | (n >> 12 & 0x3F));
        }
        append(0x80 | (n >> 6 & 0x3F));
    }
    append(0x80 | (n & 0x3F));
}

}  // namespace

Text FromNative(std::string_view bytes) {
    Text sText;
    sText.reserve(bytes.size());
    while (!bytes.empty())
        bytes.remove_prefix(AppendNext(sText, bytes));
    return sText;
}

std::string ToNative(TextView sText) {
    std::string bytes;
    bytes.reserve(sText.size());
    for (std::size_t i = 0; i < sText.size(); ++i) {
        const char16_t c = sText[i];
        if (IsHigh(c) && i + 1 < sText.size() && IsLow(sText[i + 1])) {
            const std::uint32_t nHigh = c - 0xD800U, nLow = sText[++i] - 0xDC00U;
            AppendUtf8(bytes, kSupplementary + (nHigh << 10 | nLow));
        } else if (c >= (kByteEscape | 0x80) && c <= (kByteEscape | 0xFF)) {
            bytes += static_cast<char>(c & 0xFF);
        } else {
            AppendUtf8(bytes, IsSurrogate(c) ? kReplacement : c);
        }
    }
    return bytes;
}

}  // namespace nomira::posix
