// Feeds bytes to CParser and Matches: text, first separator, next separator and pattern, cut at
// zero bytes and decoded by the system's 8-bit page.
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "langtools/CParser.h"
#include "langtools/CodePage.h"
#include "langtools/Matches.h"
#include "langtools/RuntimeError.h"

namespace {

using nomira::Text;
using nomira::TextView;

// What the plain matcher below can take: its time grows with the power of the stars.
constexpr std::size_t kMostPlainText = 12;
constexpr std::size_t kMostPlainPattern = 12;

void Require(bool bHolds) {
    if (!bHolds) std::abort();
}

// Cuts off the bytes up to the next zero byte, which goes too.
Text NextPart(std::string_view& bytes) {
    const std::size_t nEnd = bytes.find('\0');
    const std::string_view part = bytes.substr(0, nEnd);
    bytes.remove_prefix(nEnd == std::string_view::npos ? bytes.size() : nEnd + 1);
    return nomira::SystemCodePage().Decode(part);
}

bool PlainlyInSet(char16_t c, TextView sSet) {
    if (sSet.empty()) return false;
    if (sSet.size() > 2 && sSet[1] == u'-') {
        return (sSet[0] <= c && c <= sSet[2]) || PlainlyInSet(c, sSet.substr(3));
    }
    return sSet[0] == c || PlainlyInSet(c, sSet.substr(1));
}

// The rules of Matches by recursion; every set of the pattern is closed.
bool PlainlyMatches(TextView sText, TextView sPattern) {
    if (sPattern.empty()) return sText.empty();
    const char16_t cFirst = sPattern[0];
    TextView sRest = sPattern.substr(1);
    if (cFirst == u'*') {
        return PlainlyMatches(sText, sRest) ||
               (!sText.empty() && PlainlyMatches(sText.substr(1), sPattern));
    }
    TextView sSet;
    if (cFirst == u'[') {
        const std::size_t nClose = sRest.find(u']');
        sSet = sRest.substr(0, nClose);
        sRest = sRest.substr(nClose + 1);
        if (sSet.empty()) return PlainlyMatches(sText, sRest);
    }
    if (sText.empty()) return false;
    const char16_t c = sText[0];
    bool bOne = c == cFirst;
    if (cFirst == u'?') bOne = true;
    if (cFirst == u'#') bOne = c >= u'0' && c <= u'9';
    if (cFirst == u'[') {
        bOne = sSet.size() > 1 && sSet[0] == u'!' ? !PlainlyInSet(c, sSet.substr(1))
                                                  : PlainlyInSet(c, sSet);
    }
    return bOne && PlainlyMatches(sText.substr(1), sRest);
}

std::optional<nomira::ErrorNumber> CheckMatches(TextView sText, TextView sPattern) {
    try {
        const bool bMatches = nomira::Matches(sText, sPattern);
        if (sText.size() <= kMostPlainText && sPattern.size() <= kMostPlainPattern) {
            Require(bMatches == PlainlyMatches(sText, sPattern));
        }
        return std::nullopt;
    } catch (const nomira::RuntimeError& error) {
        return error.Number();
    }
}

void CheckPattern(TextView sText, TextView sPattern) {
    Require(nomira::Matches(sText, u"*"));
    const std::size_t nOpen = sPattern.rfind(u'[');
    const bool bUnclosed = nOpen != Text::npos && sPattern.find(u']', nOpen) == Text::npos;
    const auto raised = CheckMatches(sText, sPattern);
    Require(raised.has_value() == bUnclosed);
    Require(!raised || *raised == nomira::ErrorNumber::InvalidPattern);
}

void CheckTokens(TextView sText, TextView sFirst, TextView sNext) {
    nomira::CParser parser;
    const nomira::CParser::Tokens* pTokens = parser.Parse(sText, sFirst, sNext);
    Require((pTokens == nullptr) == sFirst.empty());
    if (!pTokens) return;
    std::size_t nFrom = 0;
    for (const Text& sToken : *pTokens) {
        Require(!sToken.empty());
        const std::size_t nHit = sText.find(sToken, nFrom);
        Require(nHit != TextView::npos);  // a part of the text, behind the one before it
        nFrom = nHit + sToken.size();
    }
    try {
        Require(static_cast<std::size_t>(parser.count()) == pTokens->size());
        Require(parser.Token(parser.count()) == (pTokens->empty() ? Text() : pTokens->back()));
    } catch (const nomira::RuntimeError& error) {
        Require(error.Number() == nomira::ErrorNumber::Overflow);
        Require(pTokens->size() == 32768);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    std::string_view bytes(reinterpret_cast<const char*>(pData), nSize);
    const Text sText = NextPart(bytes);
    const Text sFirst = NextPart(bytes);
    const Text sNext = NextPart(bytes);
    const Text sPattern = NextPart(bytes);
    CheckTokens(sText, sFirst, sNext);
    CheckPattern(sText, sPattern);
    return 0;
}
