#include "langtools/CParser.h"

#include <limits>
#include <utility>

#include "langtools/BasicText.h"
#include "langtools/ProgramState.h"
#include "langtools/RuntimeError.h"

namespace nomira {
namespace {

constexpr std::size_t kMaxCount = std::numeric_limits<std::int16_t>::max();

std::int32_t Length(TextView sText) {
    return static_cast<std::int32_t>(sText.size());
}

// A text without a leading separator keeps its blanks: only a hit trims it.
TextView WithoutLeadingSeparators(TextView strline, TextView sSeparator) {
    for (TextView s = Trim(strline); s.starts_with(sSeparator); s = Trim(strline)) {
        strline = s.substr(sSeparator.size());
    }
    return strline;
}

const OnProgramReset kReset([] { g_Parser() = CParser(); });

}  // namespace

const CParser::Tokens* CParser::Parse(TextView strline, TextView strFirstSeperator,
                                      TextView strNextSeperator) {
    static_cast<void>(count());
    // The old tokens live on until the new ones are cut, for an argument may be one of them.
    const Tokens colOld = std::exchange(m_colTokens, {});
    if (strFirstSeperator.empty()) return nullptr;

    m_sFirstSeperator = strFirstSeperator;
    m_sNextSeperator = Trim(strNextSeperator).empty() ? strFirstSeperator : strNextSeperator;
    m_sSource = WithoutLeadingSeparators(strline, strFirstSeperator);
    for (Text sToken = GetNextToken(m_sSource, m_sFirstSeperator); !sToken.empty();
         sToken = GetNextToken(u"", m_sNextSeperator)) {
        // One token too many is enough to make every look at the list raise Overflow; to keep
        // more would only let a huge text eat the memory. The scan itself goes on to the end, so
        // that it leaves nothing behind.
        if (m_colTokens.size() <= kMaxCount) m_colTokens.push_back(std::move(sToken));
    }
    return &m_colTokens;
}

std::int16_t CParser::count() const {
    return ToInt16(static_cast<std::int64_t>(m_colTokens.size()));
}

const Text& CParser::Token(std::int16_t nIndex) const {
    static const Text sNone;
    if (nIndex > count() || nIndex < 1) return sNone;
    return m_colTokens[static_cast<std::size_t>(nIndex - 1)];
}

Text CParser::GetNextToken(TextView strline, TextView sSeparator) {
    if (!strline.empty()) {
        nScanPos = 1;
        sScanText = strline;
        nScanLen = Length(strline);
        sScanSeparator = sSeparator;
    } else if (sScanText.empty()) {
        return {};
    } else if (sSeparator != sScanSeparator) {
        nScanPos = SkipSeparators(sScanText, nScanPos, sScanSeparator);
        sScanSeparator = sSeparator;
    }
    nScanPos = SkipSeparators(sScanText, nScanPos, sSeparator);
    std::int32_t nLength = MeasureToken(sScanText, nScanPos, sSeparator);
    // Only where the start of the text was half passed can a separator still stand here; all that
    // is left becomes the token then.
    if (nLength == 0) nLength = nScanLen + 1;
    Text sToken(Mid(sScanText, nScanPos, nLength));
    nScanPos += nLength + Length(sSeparator);
    return sToken;
}

// Behind the last separator the length is that of the whole text, more than is left: the next
// position lies behind the end then, which ends the scan. A separator at the very start of the
// text counts as a token of its own; see SkipSeparators.
std::int32_t CParser::MeasureToken(TextView strline, std::int32_t nPos, TextView sSeparator) {
    const std::int32_t nHit = InStr(nPos, strline, sSeparator);
    if (nHit == 0) return Length(strline);
    return nHit == 1 ? nPos : nHit - nPos;
}

// The position behind the run of separators at `nPos`, except at the very start of the text:
// there one character less than a separator is passed over, which is none for a separator of one
// character. A text that begins with its blank separator so gives the blank itself as the first
// token, and callers have always seen it that way.
std::int32_t CParser::SkipSeparators(TextView strline, std::int32_t nPos, TextView sSeparator) {
    const std::int32_t nLength = Length(sSeparator);
    std::int32_t nHit = InStr(nPos, strline, sSeparator);
    if (nHit == 1) return nPos + nLength - 1;
    for (; nHit == nPos; nHit = InStr(nPos, strline, sSeparator)) {
        nPos += nLength;
    }
    return nPos;
}

CParser& g_Parser() {
    static thread_local CParser parser;
    return parser;
}

}  // namespace nomira
