#include "langtools/Matches.h"

#include <gtest/gtest.h>

#include "langtools/RuntimeError.h"
#include "testing/Raised.h"
#include "testing/Random.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

struct Row {
    TextView sText, sPattern;
};

void ExpectAll(bool bMatches, std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
        EXPECT_EQ(Matches(row.sText, row.sPattern), bMatches)
            << Printable(row.sText) << " and the pattern " << Printable(row.sPattern);
    }
}

TEST(MatchesTest, PatternCoversTheWholeText) {
    ExpectAll(true, {{u"", u""}, {u"abc", u"abc"}, {u"|EMPTY|", u"|EMPTY|"}});
    ExpectAll(false, {{u"abc", u"ab"},
                      {u"ab", u"abc"},
                      {u"xabc", u"abc"},
                      {u"", u"a"},
                      {u"a", u""},
                      {u"|EMPTY| ", u"|EMPTY|"}});
}

TEST(MatchesTest, NumberSignIsOneDigit) {
    ExpectAll(true, {{u"IN_12", u"IN_##"}, {u"0", u"#"}, {u"9", u"#"}});
    ExpectAll(false, {{u"IN_1", u"IN_##"},
                      {u"IN_123", u"IN_##"},
                      {u"IN_1x", u"IN_##"},
                      {u"#", u"#"},
                      {u"/", u"#"},
                      {u":", u"#"},
                      {u"\u0663", u"#"}});
}

TEST(MatchesTest, StarIsAnyRunOfCharacters) {
    ExpectAll(true, {{u"IN_12", u"IN_##*"},
                     {u"IN_123", u"IN_##*"},
                     {u"IN_12 Pump", u"IN_##*"},
                     {u"", u"*"},
                     {u"a b\tc\r\n", u"*"},
                     {u"", u"***"},
                     {u"abc", u"a*c"},
                     {u"ac", u"a*c"},
                     {u"acbc", u"a*c"},
                     {u"xaxbx", u"*a*b*"},
                     {u"ababc", u"*abc"},
                     {u"aaab", u"*a*a*b"},
                     {u"'x'", u"*'*'"},
                     {u"''", u"*'*'"}});
    ExpectAll(false, {{u"IN_1", u"IN_##*"},
                      {u"abcx", u"a*c"},
                      {u"xbxax", u"*a*b*"},
                      {u"'", u"*'*'"},
                      {u"aab", u"*a*a*a*b"}});
}

TEST(MatchesTest, BlankInThePatternIsOneBlank) {
    ExpectAll(true, {{u"FlagText3 x", u"FlagText# *"}, {u"FlagText3 ", u"FlagText# *"}});
    ExpectAll(false, {{u"FlagText3", u"FlagText# *"},
                      {u"FlagText34 x", u"FlagText# *"},
                      {u"FlagText3\tx", u"FlagText# *"},
                      {u"a  b", u"a b"}});
}

TEST(MatchesTest, QuestionMarkIsOneCharacter) {
    ExpectAll(true, {{u"abc", u"a?c"}, {u"a\nc", u"a?c"}, {u"?", u"?"}, {u"ab", u"*?b"}});
    ExpectAll(false, {{u"ac", u"a?c"}, {u"", u"?"}, {u"ab", u"?"}, {u"b", u"*?b"}});
}

TEST(MatchesTest, ComparisonIsByCharacterCode) {
    ExpectAll(true, {{u"T\u00FCr", u"T\u00FCr"}, {u"]-!", u"]-!"}, {u"a\\b.c(", u"a\\b.c("}});
    ExpectAll(false, {{u"in_1", u"IN_#"}, {u"T\u00DCr", u"T\u00FCr"}, {u"e", u"\u00E9"}});
}

TEST(MatchesTest, BracketsAreOneCharacterOutOfASet) {
    ExpectAll(true, {{u"E7", u"E[0-9]"},
                     {u"b", u"[abc]"},
                     {u"A1", u"[A-E][0-9]*"},
                     {u"P12", u"[P][0-9]*"},
                     {u"ANAE3 x", u"ANA[A-E][0-9]*"},
                     {u"x = E1 AND", u"*= E[0-9]*"},
                     {u"k", u"[a-ck-m5]"},
                     {u"5", u"[a-ck-m5]"}});
    ExpectAll(false, {{u"A0", u"A[1-9]"},
                      {u"F1", u"[A-E][0-9]*"},
                      {u"", u"[a]"},
                      {u"ab", u"[ab]"},
                      {u"B", u"[abc]"},
                      {u"d", u"[a-ck-m5]"},
                      {u"-", u"[a-c]"}});
}

TEST(MatchesTest, ExclamationMarkTurnsTheSetAround) {
    ExpectAll(true, {{u"x", u"[!0-9]"}, {u"!", u"[!0-9]"}, {u"!", u"[a!]"}, {u"!", u"[!]"}});
    ExpectAll(false, {{u"5", u"[!0-9]"}, {u"", u"[!0-9]"}, {u"!", u"[!!]"}, {u"x", u"[!]"}});
}

TEST(MatchesTest, WildcardsInASetStandForThemselves) {
    ExpectAll(true, {{u"*", u"[*?#[]"}, {u"?", u"[*?#[]"}, {u"#", u"[#]"}, {u"[", u"[[]"}});
    ExpectAll(false, {{u"5", u"[#]"}, {u"ab", u"[*]"}, {u"a", u"[?]"}});
}

TEST(MatchesTest, HyphenAtTheEndsOfASetStandsForItself) {
    ExpectAll(true, {{u"-", u"[-a]"},
                     {u"a", u"[-a]"},
                     {u"-", u"[a-]"},
                     {u"-", u"[-]"},
                     {u"-", u"[0-9-]"},
                     {u"-", u"[!a]"}});
    ExpectAll(false, {{u"b", u"[a-]"}, {u"-", u"[!-a]"}, {u"-", u"[!a-]"}, {u"b", u"[-a]"}});
}

TEST(MatchesTest, RangeThatRunsBackwardsIsEmpty) {
    ExpectAll(false, {{u"5", u"[9-1]"}, {u"9", u"[9-1]"}, {u"-", u"[9-1]"}});
    ExpectAll(true, {{u"x", u"[9-1x]"}, {u"5", u"[!9-1]"}});
}

TEST(MatchesTest, EmptySetStandsForNoCharacter) {
    ExpectAll(true, {{u"", u"[]"}, {u"ab", u"a[]b"}, {u"ab", u"[]*[]b[]"}});
    ExpectAll(false, {{u"a", u"[]"}, {u"axb", u"a[]b"}});
}

TEST(MatchesTest, ClosingBracketOutsideOfASetStandsForItself) {
    ExpectAll(true, {{u"]", u"]"}, {u"a]", u"[a]]"}, {u"a]", u"[]a]"}});
    ExpectAll(false, {{u"a", u"[a]]"}});
}

TEST(MatchesTest, UnclosedSetIsAnInvalidPatternWhateverTheText) {
    for (const TextView sPattern : {u"[", u"a[", u"a[b", u"*[", u"[a][b", u"[!", u"[]["}) {
        for (const TextView sText : {u"", u"a", u"x", u"a[b", u"["}) {
            EXPECT_EQ(Raised([&] { Matches(sText, sPattern); }), ErrorNumber::InvalidPattern)
                << Printable(sText) << " and the pattern " << Printable(sPattern);
        }
    }
}

TEST(MatchesTest, ManyStarsStayQuick) {
    const Text sText(5000, u'a');
    Text sPattern;
    for (int n = 0; n < 500; ++n)
        sPattern += u"*a";
    EXPECT_TRUE(Matches(sText, sPattern));
    EXPECT_FALSE(Matches(sText, sPattern + u"b"));
}

// The rules read aloud: tries every length for a star.
bool MatchesPlainly(TextView sText, TextView sPattern) {
    if (sPattern.empty()) return sText.empty();
    const char16_t cPattern = sPattern[0];
    if (cPattern == u'*') {
        for (std::size_t n = 0; n <= sText.size(); ++n) {
            if (MatchesPlainly(sText.substr(n), sPattern.substr(1))) return true;
        }
        return false;
    }
    if (cPattern == u'[') {
        const std::size_t nClose = sPattern.find(u']');
        const TextView sSet = sPattern.substr(1, nClose - 1);
        const TextView sRest = sPattern.substr(nClose + 1);
        if (sSet.empty()) return MatchesPlainly(sText, sRest);
        if (sText.empty()) return false;
        const bool bOutside = sSet[0] == u'!' && sSet != u"!";
        bool bInside = false;
        for (std::size_t n = bOutside ? 1 : 0; n < sSet.size(); ++n) {
            if (n + 2 < sSet.size() && sSet[n + 1] == u'-') {
                bInside = bInside || (sText[0] >= sSet[n] && sText[0] <= sSet[n + 2]);
                n += 2;
            } else {
                bInside = bInside || sText[0] == sSet[n];
            }
        }
        return bInside != bOutside && MatchesPlainly(sText.substr(1), sRest);
    }
    if (sText.empty()) return false;
    const bool bOne = cPattern == u'?' ||
                      (cPattern == u'#' && sText[0] >= u'0' && sText[0] <= u'9') ||
                      (cPattern != u'#' && cPattern == sText[0]);
    return bOne && MatchesPlainly(sText.substr(1), sPattern.substr(1));
}

TEST(MatchesTest, AnyPatternMatchesAsTheRulesSay) {
    Random random;
    SCOPED_TRACE(random.Seed());
    int nHits = 0;
    for (int nRound = 0; nRound < 100000; ++nRound) {
        const Text sText = random.TextOf(u"ab1-!]", 6);
        const Text sPattern = random.TextOf(u"ab1**?#-![[]]]", 7);
        const auto raised = Raised([&] {
            const bool bMatches = Matches(sText, sPattern);
            nHits += bMatches ? 1 : 0;
            EXPECT_EQ(bMatches, MatchesPlainly(sText, sPattern))
                << Printable(sText) << " and the pattern " << Printable(sPattern);
        });
        const std::size_t nOpen = sPattern.rfind(u'[');
        const bool bUnclosed = nOpen != Text::npos && sPattern.find(u']', nOpen) == Text::npos;
        ASSERT_EQ(raised.has_value(), bUnclosed) << Printable(sPattern);
        if (HasFailure()) return;
    }
    EXPECT_GT(nHits, 1000);
}

}  // namespace
}  // namespace nomira::testing
