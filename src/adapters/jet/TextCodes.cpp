#include "adapters/jet/TextCodes.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace nomira::jet {
namespace {

// Bytes 80 to 9F; all others are their own characters.
constexpr std::uint8_t kFirstOwn = 0x80;
constexpr std::array<char16_t, 32> kOwnCharacters = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr std::array<std::uint8_t, 2> kCompressedMark = {0xFF, 0xFE};
constexpr char16_t kMarkAsCharacter = 0xFEFF;
// A compressed text of two characters would be no shorter; longer ones than that other programs
// don't expect.
constexpr std::size_t kFewestCompressed = 3;
constexpr std::size_t kMostCompressed = 1024;

std::u16string DecodePlain(ByteView bytes) {
    std::u16string sText(bytes.size() / 2, u'\0');
    for (std::size_t i = 0; i < sText.size(); ++i)
        sText[i] = static_cast<char16_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
    return sText;
}

// A zero byte turns from characters of one byte to those of two, and back.
std::u16string DecodeCompressed(ByteView bytes) {
    std::u16string sText;
    sText.reserve(bytes.size());
    bool bNarrow = true;
    for (std::size_t i = 0; i < bytes.size();) {
        const std::uint8_t nByte = bytes[i++];
        if (nByte == 0)
            bNarrow = !bNarrow;
        else if (bNarrow)
            sText.push_back(nByte);
        else if (i < bytes.size())
            sText.push_back(static_cast<char16_t>(nByte | bytes[i++] << 8));
    }
    return sText;
}

bool IsCompressed(ByteView bytes) {
    return bytes.size() >= kCompressedMark.size() &&
           std::equal(kCompressedMark.begin(), kCompressedMark.end(), bytes.begin());
}

constexpr std::uint64_t kOnes = 0x0101010101010101;

// Not 0 if one of the eight bytes is 0 or no ASCII.
constexpr std::uint64_t OthersIn(std::uint64_t nWord) {
    return (nWord | (nWord - kOnes)) & kOnes << 7U;
}

// Without U+0000, and not empty.
bool IsAscii(ByteView bytes) {
    std::uint64_t nOthers = 0;
    std::size_t n = 0;
    for (std::uint64_t nWord = 0; n + sizeof nWord <= bytes.size(); n += sizeof nWord) {
        std::memcpy(&nWord, bytes.data() + n, sizeof nWord);
        nOthers |= OthersIn(nWord);
    }
    for (; n < bytes.size(); ++n)
        nOthers |= OthersIn(kOnes << 8U | bytes[n]);
    return nOthers == 0 && !bytes.empty();
}

// Of characters of two bytes each.
std::optional<ByteView> NarrowAscii(ByteView bytes, Bytes& room) {
    room.resize(bytes.size() / 2);
    unsigned nHigh = 0;
    for (std::size_t i = 0; i < room.size(); ++i) {
        room[i] = bytes[2 * i];
        nHigh |= bytes[2 * i + 1];
    }
    return nHigh == 0 && IsAscii(room) ? std::optional<ByteView>(room) : std::nullopt;
}

bool CanCompress(std::u16string_view sText) {
    return sText.size() >= kFewestCompressed && sText.size() <= kMostCompressed &&
           std::all_of(sText.begin(), sText.end(),
                       [](char16_t c) { return c >= 0x0001 && c <= 0x00FF; });
}

std::optional<Bytes> EncodeNarrow(std::u16string_view sText) {
    Bytes bytes;
    bytes.reserve(sText.size());
    for (const char16_t c : sText) {
        const auto nByte = ToCodePage1252(c);
        if (!nByte) return std::nullopt;
        bytes.push_back(*nByte);
    }
    return bytes;
}

Bytes EncodeCompressed(std::u16string_view sText) {
    Bytes bytes(kCompressedMark.begin(), kCompressedMark.end());
    bytes.reserve(bytes.size() + sText.size());
    for (const char16_t c : sText)
        bytes.push_back(static_cast<std::uint8_t>(c));
    return bytes;
}

Bytes EncodePlain(std::u16string_view sText) {
    Bytes bytes;
    bytes.reserve(2 * sText.size());
    for (const char16_t c : sText) {
        bytes.push_back(static_cast<std::uint8_t>(c));
        bytes.push_back(static_cast<std::uint8_t>(c >> 8));
    }
    return bytes;
}

}  // namespace

char16_t FromCodePage1252(std::uint8_t nByte) {
    const std::size_t nOwn = static_cast<std::size_t>(nByte) - kFirstOwn;
    return nOwn < kOwnCharacters.size() ? kOwnCharacters[nOwn] : nByte;
}

std::optional<std::uint8_t> ToCodePage1252(char16_t c) {
    if (c < kFirstOwn || (c > 0x009F && c <= 0x00FF)) return static_cast<std::uint8_t>(c);
    const auto* const found = std::find(kOwnCharacters.begin(), kOwnCharacters.end(), c);
    if (found == kOwnCharacters.end()) return std::nullopt;
    return static_cast<std::uint8_t>(kFirstOwn + (found - kOwnCharacters.begin()));
}

std::u16string DecodeText(ByteView bytes, Generation generation) {
    if (generation == Generation::Jet4) {
        return IsCompressed(bytes) ? DecodeCompressed(bytes.subspan(kCompressedMark.size()))
                                   : DecodePlain(bytes);
    }
    std::u16string sText(bytes.size(), u'\0');
    std::transform(bytes.begin(), bytes.end(), sText.begin(), FromCodePage1252);
    return sText;
}

std::optional<ByteView> AsciiOf(ByteView bytes, Generation generation, Bytes& room) {
    if (generation == Generation::Jet4) {
        if (!IsCompressed(bytes)) return NarrowAscii(bytes, room);
        bytes = bytes.subspan(kCompressedMark.size());
    }
    return IsAscii(bytes) ? std::optional(bytes) : std::nullopt;
}

std::optional<Bytes> EncodeText(std::u16string_view sText, Generation generation,
                                bool bMayCompress) {
    if (generation == Generation::Jet3) return EncodeNarrow(sText);
    if (bMayCompress && CanCompress(sText)) return EncodeCompressed(sText);
    if (!sText.empty() && sText.front() == kMarkAsCharacter) return std::nullopt;
    return EncodePlain(sText);
}

}  // namespace nomira::jet
