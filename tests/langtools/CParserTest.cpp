#include "langtools/CParser.h"

#include <gtest/gtest.h>

#include "langtools/BasicText.h"
#include "langtools/ProgramState.h"
#include "langtools/RuntimeError.h"
#include "testing/Raised.h"
#include "testing/Random.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

using Tokens = CParser::Tokens;

Tokens TokensOf(TextView sText, TextView sFirst, TextView sNext = u" ") {
    CParser parser;
    const Tokens* pTokens = parser.Parse(sText, sFirst, sNext);
    return pTokens ? *pTokens : Tokens{u"(no list)"};
}

Text Repeated(TextView sPart, std::size_t nTimes) {
    Text sText;
    for (std::size_t n = 0; n < nTimes; ++n)
        sText += sPart;
    return sText;
}

TEST(CParserTest, CommandLineIsCutAtBars) {
    CParser parser;
    parser.Parse(u"TEXT_INTO_DB|a|b", u"|", u" ");
    EXPECT_EQ(parser.count(), 3);
    EXPECT_EQ(parser.Token(1), u"TEXT_INTO_DB");
    EXPECT_EQ(parser.Token(2), u"a");
    EXPECT_EQ(parser.Token(3), u"b");
}

TEST(CParserTest, TokenOutsideOfTheListIsEmpty) {
    CParser parser;
    parser.Parse(u"TEXT_INTO_DB|a|b", u"|", u" ");
    EXPECT_EQ(parser.Token(4), u"");
    EXPECT_EQ(parser.Token(0), u"");
    EXPECT_EQ(parser.Token(-1), u"");
    EXPECT_EQ(parser.Token(32767), u"");
    EXPECT_EQ(parser.Token(-32768), u"");
}

TEST(CParserTest, HoldsNothingBeforeTheFirstParse) {
    const CParser parser;
    EXPECT_EQ(parser.count(), 0);
    EXPECT_EQ(parser.Token(1), u"");
}

TEST(CParserTest, AdjacentSeparatorsLeaveNoEmptyFields) {
    EXPECT_EQ(TokensOf(u"|a||b|", u"|"), (Tokens{u"a", u"b"}));
    EXPECT_EQ(TokensOf(u"a||c", u"|"), (Tokens{u"a", u"c"}));
    EXPECT_EQ(TokensOf(u"a b  c", u" "), (Tokens{u"a", u"b", u"c"}));
}

TEST(CParserTest, LeadingSeparatorIsDroppedTogetherWithTheBlanksAroundTheText) {
    EXPECT_EQ(TokensOf(u"  |a", u"|"), (Tokens{u"a"}));
    EXPECT_EQ(TokensOf(u" | | a ", u"|"), (Tokens{u" a"}));
}

TEST(CParserTest, TokensKeepTheirBlanks) {
    EXPECT_EQ(TokensOf(u"a | b ", u"|"), (Tokens{u"a ", u" b "}));
    EXPECT_EQ(TokensOf(u"  a  ", u"|"), (Tokens{u"  a  "}));
}

TEST(CParserTest, LastTokenLosesItsBlanksOnlyBehindALeadingSeparator) {
    EXPECT_EQ(TokensOf(u"a|b  ", u"|"), (Tokens{u"a", u"b  "}));
    EXPECT_EQ(TokensOf(u"|a|b  ", u"|"), (Tokens{u"a", u"b"}));
}

TEST(CParserTest, BlankAtTheStartBecomesATokenAndSwallowsTheNextCharacter) {
    EXPECT_EQ(TokensOf(u" ab cd", u" "), (Tokens{u" ", u"b", u"cd"}));
}

TEST(CParserTest, OnlyTheWholeLineEndSeparates) {
    EXPECT_EQ(TokensOf(u"x\r\n\r\ny", u"\r\n"), (Tokens{u"x", u"y"}));
    EXPECT_EQ(TokensOf(u"x\ny\r\nz\r", u"\r\n"), (Tokens{u"x\ny", u"z\r"}));
    EXPECT_EQ(TokensOf(u"\r\n\r\nx\r\n", u"\r\n"), (Tokens{u"x"}));
}

TEST(CParserTest, SeparatorThatBeginsWithABlankIsHalfPassedAtTheStart) {
    EXPECT_EQ(TokensOf(u" |a |b", u" |"), (Tokens{u"|a", u"b"}));
    EXPECT_EQ(TokensOf(u"   a  b", u"  "), (Tokens{u"  a  b"}));
}

TEST(CParserTest, TextWithoutTokensGivesNoneAlsoAfterAnotherText) {
    CParser parser;
    for (const TextView sText : {u"", u"|||", u" | |"}) {
        parser.Parse(u"other|text", u"|", u" ");
        const Tokens* pTokens = parser.Parse(sText, u"|", u" ");
        ASSERT_NE(pTokens, nullptr);
        EXPECT_TRUE(pTokens->empty()) << Printable(sText);
        EXPECT_EQ(parser.count(), 0);
    }
}

TEST(CParserTest, EmptyTextGivesNoTokensAfterATextCutAtOtherSeparators) {
    CParser parser;
    parser.Parse(u"a|b c|d", u"|", u"c");
    EXPECT_TRUE(parser.Parse(u"", u"b", u"d")->empty());
}

TEST(CParserTest, EmptyFirstSeparatorGivesNoListAndDropsTheTokens) {
    CParser parser;
    parser.Parse(u"a|b", u"|", u" ");
    EXPECT_EQ(parser.Parse(u"abc", u"", u" "), nullptr);
    EXPECT_EQ(parser.count(), 0);
    EXPECT_EQ(parser.Token(1), u"");
}

TEST(CParserTest, FirstTokenEndsAtTheFirstSeparatorAndTheOthersAtTheNext) {
    EXPECT_EQ(TokensOf(u"a|b c|d", u"|", u"c"), (Tokens{u"a", u"b ", u"|d"}));
}

TEST(CParserTest, RunOfTheFirstSeparatorIsPassedBeforeTheNextOneCounts) {
    EXPECT_EQ(TokensOf(u"a|||b|c,d", u"|", u","), (Tokens{u"a", u"b|c", u"d"}));
}

TEST(CParserTest, BlankNextSeparatorMeansTheFirst) {
    for (const TextView sNext : {u"", u" ", u"   "}) {
        EXPECT_EQ(TokensOf(u"a b|c d|e", u"|", sNext), (Tokens{u"a b", u"c d", u"e"}));
    }
}

TEST(CParserTest, SeparatorsAreBlanksIfNotGiven) {
    CParser parser;
    EXPECT_EQ(*parser.Parse(u"a b"), (Tokens{u"a", u"b"}));
}

TEST(CParserTest, SeparatorsAreExactInCase) {
    EXPECT_EQ(TokensOf(u"1x2X3", u"X"), (Tokens{u"1x2", u"3"}));
}

TEST(CParserTest, ReturnsItsOwnList) {
    CParser parser;
    const Tokens* pTokens = parser.Parse(u"a|b", u"|");
    EXPECT_EQ(&parser.Token(2), &(*pTokens)[1]);
    EXPECT_EQ(parser.Parse(u"c", u"|"), pTokens);
    EXPECT_EQ(*pTokens, (Tokens{u"c"}));
}

TEST(CParserTest, OwnTokensCanBeParsedAgain) {
    CParser parser;
    parser.Parse(u"a long first token|x,a long second token,|,", u"|");
    EXPECT_EQ(*parser.Parse(parser.Token(2), parser.Token(3), parser.Token(3)),
              (Tokens{u"x", u"a long second token"}));
}

TEST(CParserTest, CountsUpTo32767Tokens) {
    CParser parser;
    parser.Parse(Repeated(u"a|", 32767), u"|");
    EXPECT_EQ(parser.count(), 32767);
    EXPECT_EQ(parser.Token(32767), u"a");
    EXPECT_EQ(*parser.Parse(u"b", u"|"), (Tokens{u"b"}));
}

TEST(CParserTest, OneTokenMoreOverflowsEachCountOfThem) {
    CParser parser;
    EXPECT_EQ(parser.Parse(Repeated(u"a|", 32768), u"|")->size(), 32768u);
    EXPECT_EQ(Raised([&] { parser.count(); }), ErrorNumber::Overflow);
    EXPECT_EQ(Raised([&] { parser.Token(1); }), ErrorNumber::Overflow);
    EXPECT_EQ(Raised([&] { parser.Parse(u"b", u"|"); }), ErrorNumber::Overflow);
    EXPECT_EQ(Raised([&] { parser.Parse(u"b", u""); }), ErrorNumber::Overflow);
}

TEST(CParserTest, TokensBeyondTheFirstOneTooManyAreNotKept) {
    CParser parser;
    EXPECT_EQ(parser.Parse(Repeated(u"a|", 100000), u"|")->size(), 32768u);
}

TEST(CParserTest, LongRunsOfSeparatorsAreNoTrouble) {
    const Text sRun = Repeated(u"|", 1000000);
    EXPECT_EQ(TokensOf(u"a" + sRun + u"b", u"|"), (Tokens{u"a", u"b"}));
    EXPECT_EQ(TokensOf(Repeated(u" |", 500000) + u"b", u"|"), (Tokens{u"b"}));
}

TEST(CParserTest, OneParserServesTheWholeProgram) {
    g_Parser().Parse(u"a|b", u"|");
    EXPECT_EQ(g_Parser().Token(2), u"b");
    ResetProgramState();
    EXPECT_EQ(g_Parser().count(), 0);
}

// The scanner as it was first written, recursion and all: the measure for CParser.
class FirstParser {
  public:
    Tokens Parse(Text strline, const Text& sFirst, const Text& sNextGiven) {
        Tokens tokens;
        if (sFirst.empty()) return tokens;
        const Text sNext = Trim(sNextGiven).empty() ? sFirst : sNextGiven;
        const auto nLength = static_cast<std::int64_t>(sFirst.size());
        while (Left(Trim(strline), nLength) == sFirst) {
            const Text sTrimmed(Trim(strline));
            strline = Mid(sTrimmed, nLength + 1);
        }
        Text sToken = GetNextToken(strline, sFirst);
        while (!sToken.empty()) {
            tokens.push_back(sToken);
            sToken = GetNextToken(u"", sNext);
        }
        return tokens;
    }

  private:
    Text GetNextToken(const Text& strline, const Text& sSeparator) {
        if (!strline.empty()) {
            m_nPos = 1;
            m_sText = strline;
            m_nLen = static_cast<int>(strline.size());
            m_sSeparator = sSeparator;
        }
        if (strline.empty() && m_sText.empty()) return u"";
        if (strline.empty() && sSeparator != m_sSeparator) {
            m_nPos = SkipSeparators(m_sText, m_nPos, m_sSeparator);
            m_sSeparator = sSeparator;
        }
        const int n = SkipSeparators(m_sText, m_nPos, sSeparator);
        if (n == 0) return u"";
        m_nPos = n;
        int m = MeasureToken(m_sText, m_nPos, sSeparator);
        if (m == 0) m = m_nLen + 1;
        const Text sResult(Mid(m_sText, m_nPos, m));
        m_nPos = m_nPos + m + static_cast<int>(sSeparator.size());
        return sResult;
    }

    static int MeasureToken(const Text& strline, int nPos, const Text& sSeparator) {
        const int i = InStr(nPos, strline, sSeparator);
        if (i == 0) return static_cast<int>(strline.size());
        if (i == 1) return nPos;
        return i - nPos;
    }

    static int SkipSeparators(const Text& strline, int nPos, const Text& sSeparator) {
        const int nLength = static_cast<int>(sSeparator.size());
        const int i = InStr(nPos, strline, sSeparator);
        if (i == 1) return nPos + nLength - 1;
        if (i == nPos) return SkipSeparators(strline, nPos + nLength, sSeparator);
        return nPos;
    }

    Text m_sText, m_sSeparator;
    int m_nPos = 0, m_nLen = 0;
};

// Both parsers live through all rounds, so that what a scan leaves behind is compared too.
TEST(CParserTest, CutsAnyTextAsTheFirstParserDid) {
    Random random;
    SCOPED_TRACE(random.Seed());
    CParser parser;
    FirstParser first;
    for (int nRound = 0; nRound < 50000; ++nRound) {
        const Text sText = random.TextOf(u" |ab\r\n", 14);
        const Text sFirst = random.TextOf(u" |a\r\n", 3);
        const Text sNext = random.TextOf(u" |b\r\n", 3);
        const Tokens expected = first.Parse(sText, sFirst, sNext);
        const Tokens* pTokens = parser.Parse(sText, sFirst, sNext);
        ASSERT_EQ(pTokens == nullptr, sFirst.empty());
        ASSERT_EQ(pTokens ? *pTokens : Tokens{}, expected)
            << "text " << Printable(sText) << " first " << Printable(sFirst) << " next "
            << Printable(sNext);
    }
}

}  // namespace
}  // namespace nomira::testing
