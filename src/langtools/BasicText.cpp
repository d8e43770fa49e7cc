#include "langtools/BasicText.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <optional>
#include <string>

#include "langtools/Ascii.h"
#include "langtools/CodePage.h"
#include "langtools/RuntimeError.h"

namespace nomira {
namespace {

std::size_t LengthArgument(std::int64_t n) {
    if (n < 0) Raise(ErrorNumber::InvalidProcedureCall);
    return static_cast<std::size_t>(n);
}

std::size_t PositionArgument(std::int64_t n) {
    if (n < 1) Raise(ErrorNumber::InvalidProcedureCall);
    return static_cast<std::size_t>(n - 1);
}

// Case pairs outside ASCII that the 8-bit pages of Europe hold: Latin-1, Latin Extended-A, Greek
// and Cyrillic. Letters further out have no place in an 8-bit page.
struct CaseRun {
    char16_t first, last;  // the capitals
    char16_t distance;     // capital to small letter
    char16_t step;  // 1: every character is a capital; 2: capitals and small letters alternate
};

constexpr CaseRun kCaseRuns[] = {
    {0x00C0, 0x00D6, 0x20, 1}, {0x00D8, 0x00DE, 0x20, 1}, {0x0100, 0x012E, 1, 2},
    {0x0132, 0x0136, 1, 2},    {0x0139, 0x0147, 1, 2},    {0x014A, 0x0176, 1, 2},
    {0x0179, 0x017D, 1, 2},    {0x0386, 0x0386, 0x26, 1}, {0x0388, 0x038A, 0x25, 1},
    {0x038C, 0x038C, 0x40, 1}, {0x038E, 0x038F, 0x3F, 1}, {0x0391, 0x03A1, 0x20, 1},
    {0x03A3, 0x03AB, 0x20, 1}, {0x0400, 0x040F, 0x50, 1}, {0x0410, 0x042F, 0x20, 1},
    {0x0490, 0x0490, 1, 1},
};
constexpr char16_t kSmallYDiaeresis = 0x00FF;
constexpr char16_t kCapitalYDiaeresis = 0x0178;

std::optional<char16_t> CapitalOf(char16_t c) {
    if (c == kSmallYDiaeresis) return kCapitalYDiaeresis;
    for (const CaseRun& run : kCaseRuns) {
        if (c < run.first + run.distance || c > run.last + run.distance) continue;
        if ((c - run.distance - run.first) % run.step == 0) {
            return static_cast<char16_t>(c - run.distance);
        }
    }
    return std::nullopt;
}

std::optional<char16_t> SmallOf(char16_t c) {
    if (c == kCapitalYDiaeresis) return kSmallYDiaeresis;
    for (const CaseRun& run : kCaseRuns) {
        if (c < run.first || c > run.last) continue;
        if ((c - run.first) % run.step == 0) return static_cast<char16_t>(c + run.distance);
    }
    return std::nullopt;
}

char16_t WithinPage(char16_t c, std::optional<char16_t> counterpart) {
    return counterpart && SystemCodePage().Holds(*counterpart) ? *counterpart : c;
}

char16_t AsciiUCase(char16_t c) {
    return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 0x20) : c;
}

bool SameNoCase(char16_t a, char16_t b) {
    if (a == b) return true;
    // Beyond ASCII no capital is an ASCII one.
    return (a | b) < 0x80 ? AsciiUCase(a) == AsciiUCase(b) : UCase(a) == UCase(b);
}

bool IsAsciiLetter(char16_t c) {
    return AsciiUCase(c) >= u'A' && AsciiUCase(c) <= u'Z';
}

// Finds the places at which a text without regard to case may begin: most fall out by their first
// character, a word of characters at a time. Beyond ASCII, cases don't come in pairs.
class FirstCharacter {
  public:
    explicit FirstCharacter(char16_t c)
        : m_nCaseBits(IsAsciiLetter(c) ? 0x20 * kEach : 0), m_nWord(c * kEach | m_nCaseBits) {}

    // The first such place from `n` on; `nEnd` if there is none ahead of it.
    std::size_t Find(TextView sText, std::size_t n, std::size_t nEnd) const {
        while (n + kPerWord <= nEnd && !IsInWord(sText.data() + n))
            n += kPerWord;
        while (n < nEnd && !IsHere(sText[n]))
            ++n;
        return n;
    }

  private:
    static constexpr std::uint64_t kEach = 0x0001'0001'0001'0001;  // times a character
    static constexpr std::uint64_t kBeyondAscii = 0xFF80 * kEach;
    static constexpr std::size_t kPerWord = sizeof kEach / sizeof(char16_t);

    // May be true for nothing at all, but never false for a place.
    bool IsInWord(const char16_t* pWord) const {
        std::uint64_t nWord = 0;
        std::memcpy(&nWord, pWord, sizeof nWord);
        const std::uint64_t nOther = (nWord | m_nCaseBits) ^ m_nWord;
        const std::uint64_t nZeroes = (nOther - kEach) & ~nOther & (0x8000 * kEach);
        return (nZeroes | (nWord & kBeyondAscii)) != 0;
    }
    bool IsHere(char16_t c) const {
        return c >= 0x80 || ((c | m_nCaseBits) & 0xFFFF) == (m_nWord & 0xFFFF);
    }

    std::uint64_t m_nCaseBits;
    std::uint64_t m_nWord;
};

}  // namespace

TextView Left(TextView sText, std::int64_t nLength) {
    return sText.substr(0, LengthArgument(nLength));
}

TextView Right(TextView sText, std::int64_t nLength) {
    const std::size_t nKept = std::min(sText.size(), LengthArgument(nLength));
    return sText.substr(sText.size() - nKept);
}

TextView Mid(TextView sText, std::int64_t nStart) {
    const std::size_t nFrom = PositionArgument(nStart);
    return nFrom < sText.size() ? sText.substr(nFrom) : TextView();
}

TextView Mid(TextView sText, std::int64_t nStart, std::int64_t nLength) {
    return Mid(sText, nStart).substr(0, LengthArgument(nLength));
}

std::int32_t InStr(std::int64_t nStart, TextView sText, TextView sWhat) {
    const std::size_t nFrom = PositionArgument(nStart);
    if (nFrom >= sText.size()) return 0;
    const std::size_t nHit = sText.find(sWhat, nFrom);
    return nHit == TextView::npos ? 0 : static_cast<std::int32_t>(nHit + 1);
}

std::int32_t InStr(TextView sText, TextView sWhat) {
    return InStr(1, sText, sWhat);
}

std::int32_t InStrNoCase(std::int64_t nStart, TextView sText, TextView sWhat) {
    const std::size_t nFrom = PositionArgument(nStart);
    if (nFrom >= sText.size()) return 0;
    if (sWhat.empty()) return static_cast<std::int32_t>(nFrom + 1);
    if (sText.size() - nFrom < sWhat.size()) return 0;
    const FirstCharacter first(sWhat[0]);
    const std::size_t nEnd = sText.size() - sWhat.size() + 1;
    for (std::size_t n = first.Find(sText, nFrom, nEnd); n < nEnd;
         n = first.Find(sText, n + 1, nEnd)) {
        if (EqualNoCase(sText.substr(n, sWhat.size()), sWhat))
            return static_cast<std::int32_t>(n + 1);
    }
    return 0;
}

TextView LTrim(TextView sText) {
    const std::size_t nFirst = sText.find_first_not_of(u' ');
    return nFirst == TextView::npos ? TextView() : sText.substr(nFirst);
}

TextView RTrim(TextView sText) {
    return sText.substr(0, sText.find_last_not_of(u' ') + 1);
}

TextView Trim(TextView sText) {
    return RTrim(LTrim(sText));
}

char16_t UCase(char16_t c) {
    return c < 0x80 ? AsciiUCase(c) : WithinPage(c, CapitalOf(c));
}

char16_t LCase(char16_t c) {
    if (c < 0x80) return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 0x20) : c;
    return WithinPage(c, SmallOf(c));
}

Text UCase(TextView sText) {
    Text sUpper(sText);
    if (AsciiLength(sText) == sText.size()) {
        for (char16_t& c : sUpper)
            c = AsciiUCase(c);
    } else {
        for (char16_t& c : sUpper)
            c = UCase(c);
    }
    return sUpper;
}

Text LCase(TextView sText) {
    Text sLower(sText);
    for (char16_t& c : sLower)
        c = LCase(c);
    return sLower;
}

bool EqualNoCase(TextView sLeft, TextView sRight) {
    return std::equal(sLeft.begin(), sLeft.end(), sRight.begin(), sRight.end(), SameNoCase);
}

Text Replace(TextView sText, TextView sOld, TextView sNew) {
    if (sOld.empty()) return Text(sText);
    Text sResult;
    std::size_t nFrom = 0;
    for (std::size_t nHit; (nHit = sText.find(sOld, nFrom)) != TextView::npos;) {
        sResult.append(sText.substr(nFrom, nHit - nFrom)).append(sNew);
        nFrom = nHit + sOld.size();
    }
    return sResult.append(sText.substr(nFrom));
}

std::int64_t Val(TextView sText) {
    sText = LTrim(sText);
    const bool bNegative = sText.starts_with(u'-');
    if (bNegative || sText.starts_with(u'+')) sText.remove_prefix(1);
    constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
    std::int64_t n = 0;
    for (const char16_t c : sText) {
        if (c < u'0' || c > u'9') break;
        const int nDigit = c - u'0';
        n = n > (kMax - nDigit) / 10 ? kMax : n * 10 + nDigit;
    }
    return bNegative ? -n : n;
}

Text DecimalText(std::int64_t n) {
    return FromAscii(std::to_string(n));
}

std::int32_t HexValue(TextView sDigits) {
    if (sDigits.empty()) Raise(ErrorNumber::TypeMismatch);
    std::string sAscii;
    for (const char16_t c : sDigits) {
        const char16_t u = UCase(c);
        if (!((u >= u'0' && u <= u'9') || (u >= u'A' && u <= u'F'))) {
            Raise(ErrorNumber::TypeMismatch);
        }
        sAscii += static_cast<char>(u);
    }
    std::uint32_t n = 0;
    const auto [end, error] = std::from_chars(sAscii.data(), sAscii.data() + sAscii.size(), n, 16);
    if (error != std::errc()) Raise(ErrorNumber::Overflow);
    return static_cast<std::int32_t>(n);
}

Text FromAscii(std::string_view sAscii) {
    return Text(sAscii.begin(), sAscii.end());
}

}  // namespace nomira
