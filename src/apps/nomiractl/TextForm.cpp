#include "apps/nomiractl/TextForm.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "adapters/posix/NativeName.h"
#include "apps/nomiractl/Words.h"

namespace nomira::companion {
namespace {

constexpr char16_t kByteEscape = 0xDC00;  // as in NativeName.h

bool IsAscii(TextView sLine) {
    return std::all_of(sLine.begin(), sLine.end(), [](char16_t c) { return c < 0x80; });
}

// The character of one or two places at the text's start.
TextView NextCharacter(TextView sText) {
    const bool bPair =
        sText.size() > 1 && (sText[0] & 0xFC00) == 0xD800 && (sText[1] & 0xFC00) == 0xDC00;
    return sText.substr(0, bPair ? 2 : 1);
}

std::uint32_t NumberOf(TextView sCharacter) {
    if (sCharacter.size() == 1) return sCharacter[0];
    return 0x10000U + ((sCharacter[0] - 0xD800U) << 10U) + (sCharacter[1] - 0xDC00U);
}

std::string SignOf(TextView sCharacter) {
    return fmt::format("\"{}\" (U+{:04X})", ShownWhole(sCharacter), NumberOf(sCharacter));
}

// A pair is one character to a page that has it, and none to the pages of 256.
bool PageHolds(const CodePage& page, TextView sCharacter) {
    if (sCharacter.size() == 1) return page.Holds(sCharacter[0]);
    return page.Decode(page.Encode(sCharacter)) == sCharacter;
}

// `flawOf` tells what is wrong with a character, if anything is; its place is filled in here.
template <typename FlawOf>
std::vector<TextFlaw> FlawsIn(TextView sText, std::int64_t nLine, FlawOf flawOf) {
    std::vector<TextFlaw> flaws;
    if (IsAscii(sText)) return flaws;
    for (std::int64_t nColumn = 1; !sText.empty(); ++nColumn) {
        const TextView sCharacter = NextCharacter(sText);
        sText.remove_prefix(sCharacter.size());
        if (std::optional<TextFlaw> flaw = flawOf(sCharacter)) {
            flaw->nLine = nLine;
            flaw->nColumn = nColumn;
            flaws.push_back(*std::move(flaw));
        }
    }
    return flaws;
}

TextFlaw FlawOf(Flaw flaw, std::string sSign = {}) {
    return {flaw, 0, 0, std::move(sSign)};
}

bool IsHalf(TextView sCharacter) {
    return sCharacter.size() == 1 && (sCharacter[0] & 0xF800) == 0xD800;
}

bool IsEscapedByte(TextView sCharacter) {
    return sCharacter.size() == 1 && (sCharacter[0] & 0xFC00) == kByteEscape;
}

}  // namespace

TextForm FormOf(const Options& options, TextForm usual) {
    if (!options.sEncoding.empty())
        usual.encoding = options.sEncoding == "utf-8" ? TextEncoding::Utf8 : TextEncoding::CodePage;
    if (!options.sLineEnds.empty())
        usual.ends = options.sLineEnds == "lf" ? LineEnds::Lf : LineEnds::CrLf;
    return usual;
}

std::string_view TakeLine(std::string_view& bytes, LineEnds ends) {
    const std::size_t nEnd = std::min(
        ends == LineEnds::Lf ? bytes.find_first_of("\r\n") : bytes.find('\r'), bytes.size());
    const std::string_view line = bytes.substr(0, nEnd);
    bytes.remove_prefix(nEnd);
    bytes.remove_prefix(bytes.starts_with("\r\n") ? 2 : std::min<std::size_t>(1, bytes.size()));
    return line;
}

std::int64_t CountLines(std::string_view bytes, LineEnds ends) {
    std::int64_t nLines = 0;
    for (; !bytes.empty(); ++nLines)
        TakeLine(bytes, ends);
    return nLines;
}

Text DecodeLine(std::string_view line, TextEncoding encoding, const CodePage& page) {
    return encoding == TextEncoding::Utf8 ? posix::FromNative(line) : page.Decode(line);
}

std::string EncodeLine(TextView sLine, TextEncoding encoding, const CodePage& page) {
    return encoding == TextEncoding::Utf8 ? posix::ToNative(sLine) : page.Encode(sLine);
}

std::vector<TextFlaw> FlawsOfLine(TextView sLine, std::int64_t nLine, TextEncoding encoding,
                                  const CodePage& page) {
    const bool bUtf8 = encoding == TextEncoding::Utf8;
    return FlawsIn(sLine, nLine, [&](TextView sCharacter) -> std::optional<TextFlaw> {
        if (bUtf8 && IsEscapedByte(sCharacter))
            return FlawOf(Flaw::NotUtf8, fmt::format("{:02X}", sCharacter[0] - kByteEscape));
        if (!bUtf8 && sCharacter[0] == kNoCharacter) return FlawOf(Flaw::NoCharacter);
        if (bUtf8 && !PageHolds(page, sCharacter))
            return FlawOf(Flaw::OutsidePage, SignOf(sCharacter));
        return std::nullopt;
    });
}

std::vector<TextFlaw> FlawsOfRow(TextView sRow, std::int64_t nLine, TextEncoding encoding,
                                 const CodePage& page) {
    const bool bUtf8 = encoding == TextEncoding::Utf8;
    return FlawsIn(sRow, nLine, [&](TextView sCharacter) -> std::optional<TextFlaw> {
        if (!bUtf8 && !PageHolds(page, sCharacter))
            return FlawOf(Flaw::OutsidePage, SignOf(sCharacter));
        if (bUtf8 && IsHalf(sCharacter)) return FlawOf(Flaw::HalfPair);
        return std::nullopt;
    });
}

bool HasUtf16Mark(std::string_view bytes) {
    return bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
}

std::string InWords(const TextFlaw& flaw, const CodePage& page) {
    switch (flaw.flaw) {
        case Flaw::NotUtf8:
            return fmt::format("the byte {} is no UTF-8", flaw.sSign);
        case Flaw::NoCharacter:
            return fmt::format("a byte that is no character of code page {}", page.Number());
        case Flaw::HalfPair:
            return "half of a surrogate pair, which is no character";
        case Flaw::OutsidePage:
            break;
    }
    return fmt::format("the character {} is not in code page {}", flaw.sSign, page.Number());
}

}  // namespace nomira::companion
