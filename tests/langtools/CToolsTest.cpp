#include "langtools/CTools.h"

#include <gtest/gtest.h>

#include <optional>

#include "langtools/RuntimeError.h"
#include "testing/Raised.h"
#include "testing/Random.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

constexpr std::size_t kMostCounted = 32767;

TEST(CToolsTest, LookupsPassTheClassThrough) {
    std::int16_t nType = 0;
    EXPECT_TRUE(g_Tools().IsTQLOperator(u"and", &nType));
    EXPECT_EQ(nType, 2);
    EXPECT_TRUE(g_Tools().IsTQLToken(u"and", &nType));
    EXPECT_EQ(nType, 4);
    EXPECT_TRUE(g_Tools().IsTQLOperator(u"Exor"));
    EXPECT_TRUE(g_Tools().IsTQLToken(u"endWhile"));
}

TEST(CToolsTest, LookupThatFindsNothingLeavesTheClassAlone) {
    std::int16_t nType = 42;
    EXPECT_FALSE(g_Tools().IsTQLOperator(u"motor", &nType));
    EXPECT_FALSE(g_Tools().IsTQLToken(u"", &nType));
    EXPECT_FALSE(g_Tools().IsTQLToken(Text(100000, u'a'), &nType));
    EXPECT_EQ(nType, 42);
}

TEST(CToolsTest, CommentMayHoldOrdinaryText) {
    for (const TextView sText : {u"Motor rechts", u"", u"IN_17 (100%) 'Pump'", u"\u00E9\u00E0"})
        EXPECT_TRUE(g_Tools().IsValidTQLComment(sText)) << Printable(sText);
}

TEST(CToolsTest, CommentMayHoldNoneOfTheRefusedCharacters) {
    for (const char16_t c : TextView(u"\u00E4\u00F6\u00FC\u00D6\u00C4\u00DC\u00B5\u00DF\u00A7^*")) {
        const Text sText = Text(u"Motor ") + c + u" rechts";
        EXPECT_FALSE(g_Tools().IsValidTQLComment(sText)) << Printable(sText);
    }
    EXPECT_FALSE(g_Tools().IsValidTQLComment(u"T\u00FCr auf"));
}

// The capital that some systems give the micro sign is no character of the 8-bit page.
TEST(CToolsTest, MicroSignIsRefusedForItHasNoCapitalInTheCodePage) {
    EXPECT_FALSE(g_Tools().IsValidTQLComment(u"10 \u00B5m"));
}

struct NumberRow {
    TextView sText;
    bool bFound;
    std::int32_t nValue;
};

TEST(CToolsTest, Str2LongTakesTheFirstNumber) {
    const NumberRow rows[] = {
        {u"123456789", true, 123456789},
        {u"1234567890", true, 123456789},
        {u"12345678901", true, 123456789},
        {u"-123456789", true, -12345678},
        {u"+7", true, 7},
        {u"1-2-3", true, 1},
        {u"abc-12def34", true, -12},
        {u"12-3", true, 12},
        {u"--5", true, 0},
        {u"-", true, 0},
        {u"+-5", true, 0},
        {u"", false, 0},
        {u"abc", false, 0},
        {u"#10", true, 10},
        {u"&H10", true, 10},
        {u"1e5", true, 1},
        {u"1.5", true, 1},
        {u"  42 43", true, 42},
        {u"\u0663\u0664 5", true, 5},  // digits of another script are no digits
        {u"999999999", true, 999999999},
    };
    for (const NumberRow& row : rows) {
        std::int32_t nLong = -77;
        EXPECT_EQ(g_Tools().Str2Long(row.sText, nLong), row.bFound) << Printable(row.sText);
        EXPECT_EQ(nLong, row.nValue) << Printable(row.sText);
    }
}

TEST(CToolsTest, Str2IntTakesFourCharactersAndNoPlus) {
    const NumberRow rows[] = {
        {u"+7", true, 7},       {u"7+8", true, 7},       {u"1024 ", true, 1024},
        {u"65536", true, 6553}, {u"123456", true, 1234}, {u"-12345", true, -123},
        {u"+", false, 0},       {u"-", true, 0},         {u"", false, 0},
        {u"abc", false, 0},     {u"x-9y", true, -9},
    };
    for (const NumberRow& row : rows) {
        std::int16_t nInt = -77;
        EXPECT_EQ(g_Tools().Str2Int(row.sText, nInt), row.bFound) << Printable(row.sText);
        EXPECT_EQ(nInt, row.nValue) << Printable(row.sText);
    }
}

TEST(CToolsTest, IsNumTestsTheAlphabetAndNotTheForm) {
    for (const TextView sText : {u"", u"1.2.3", u"--", u"E", u"e", u"1,5e3", u"17", u"+-.,"})
        EXPECT_TRUE(g_Tools().IsNum(sText)) << Printable(sText);
    for (const TextView sText : {u"1 2", u"0x10", u" ", u"1\t", u"IN_1", u"\u0663", u"\u00E9"})
        EXPECT_FALSE(g_Tools().IsNum(sText)) << Printable(sText);
}

struct ReplaceRow {
    TextView sText, sOld, sNew, sResult;
};

TEST(CToolsTest, ReplacesUntilNothingIsLeftToReplace) {
    const ReplaceRow rows[] = {
        {u"a\"b\"c", u"\"", u"", u"abc"},
        {u"aab", u"ab", u"b", u"b"},       // the hit that arises from a join
        {u"aaabbb", u"ab", u"", u""},      // from a join of both neighbours
        {u"a    b", u"  ", u" ", u"a b"},  // from the replacement and what follows
        {u"xaay", u"aa", u"a", u"xay"},
        {u"Tuer", u"ue", u"\u00FC", u"T\u00FCr"},
        {u"abc", u"x", u"y", u"abc"},
        {u"abc", u"abc", u"", u""},
        {u"abc", u"abcd", u"", u"abc"},
        {u"", u"a", u"b", u""},
        {u"AaA", u"A", u"b", u"bab"},        // exact in case
        {u"abb", u"ab", u"baa", u"bbaaaa"},  // grows
    };
    for (const ReplaceRow& row : rows) {
        EXPECT_EQ(g_Tools().ReplaceAllSubStrings(row.sText, row.sOld, row.sNew), row.sResult)
            << Printable(row.sText);
    }
}

TEST(CToolsTest, RefusesReplacementsThatWouldNeverEnd) {
    const ReplaceRow rows[] = {
        {u"banana", u"a", u"aa", u"banana"}, {u"banana", u"a", u"xax", u"banana"},
        {u"banana", u"a", u"a", u"banana"},  {u"banana", u"", u"x", u"banana"},
        {u"banana", u"", u"", u"banana"},    {u"", u"", u"", u""},
    };
    for (const ReplaceRow& row : rows) {
        EXPECT_EQ(g_Tools().ReplaceAllSubStrings(row.sText, row.sOld, row.sNew), row.sResult)
            << Printable(row.sText);
    }
}

// Searches from the start again after each hit; nullopt if that goes on for too long.
std::optional<Text> ReplaceFromTheStart(Text sText, TextView sOld, TextView sNew) {
    if (sOld.empty() || sNew.find(sOld) != Text::npos) return sText;
    for (int nHits = 0; nHits < 500; ++nHits) {
        const std::size_t nHit = sText.find(sOld);
        if (nHit == Text::npos) return sText;
        sText.replace(nHit, sOld.size(), sNew);
    }
    return std::nullopt;
}

TEST(CToolsTest, ReplacingEqualsSearchingFromTheStartAgain) {
    Random random;
    SCOPED_TRACE(random.Seed());
    int nCompared = 0;
    for (int nRound = 0; nRound < 50000; ++nRound) {
        const Text sText = random.TextOf(u"abc", 20);
        const Text sOld = random.TextOf(u"abc", 4);
        const Text sNew = random.TextOf(u"abc", 5);
        const std::optional<Text> sExpected = ReplaceFromTheStart(sText, sOld, sNew);
        if (!sExpected) continue;
        ++nCompared;
        ASSERT_EQ(g_Tools().ReplaceAllSubStrings(sText, sOld, sNew), *sExpected)
            << Printable(sText) << ": " << Printable(sOld) << " by " << Printable(sNew);
    }
    EXPECT_GT(nCompared, 25000);
}

TEST(CToolsTest, LongTextsAreReplacedInOneGo) {
    constexpr std::size_t kLong = 1000000;
    EXPECT_EQ(g_Tools().ReplaceAllSubStrings(Text(kLong, u'\t'), u"\t", u"    "),
              Text(4 * kLong, u' '));
    EXPECT_EQ(g_Tools().ReplaceAllSubStrings(Text(kLong, u'a') + Text(kLong, u'b'), u"ab", u""),
              u"");
}

TEST(CToolsTest, EachTabBecomesOneBlank) {
    EXPECT_EQ(g_Tools().ReplaceTabsWithSpace(u"a\tb\t\tc "), u"a b  c ");
    EXPECT_EQ(g_Tools().ReplaceTabsWithSpace(u""), u"");
}

TEST(CToolsTest, FindsAnyCharacterOfTheList) {
    EXPECT_TRUE(g_Tools().FindChrInStr(u"Motor", u"xyzt"));
    EXPECT_FALSE(g_Tools().FindChrInStr(u"Motor", u"xyzT"));
    EXPECT_FALSE(g_Tools().FindChrInStr(u"Motor", u""));
    EXPECT_FALSE(g_Tools().FindChrInStr(u"", u"abc"));
    EXPECT_FALSE(g_Tools().FindChrInStr(u"", u""));
}

TEST(CToolsTest, RemovesAFirstTokenAndTrimsTheRest) {
    EXPECT_EQ(g_Tools().RemoveFirstToken(u"DECL INT x", u"DECL"), u"INT x");
    EXPECT_EQ(g_Tools().RemoveFirstToken(u"DECL  x  ", u"DECL"), u"x");
    EXPECT_EQ(g_Tools().RemoveFirstToken(u"DECLARE", u"DECL"), u"ARE");
    EXPECT_EQ(g_Tools().RemoveFirstToken(u"  DECL x", u"DECL"), u"  DECL x");
    EXPECT_EQ(g_Tools().RemoveFirstToken(u"decl x", u"DECL"), u"decl x");
    EXPECT_EQ(g_Tools().RemoveFirstToken(u"DECL", u"DECL"), u"");
    EXPECT_EQ(g_Tools().RemoveFirstToken(u"DEC", u"DECL"), u"DEC");
    EXPECT_EQ(g_Tools().RemoveFirstToken(u"  x ", u""), u"x");
    EXPECT_EQ(g_Tools().RemoveFirstToken(u"", u""), u"");
    EXPECT_EQ(g_Tools().RemoveFirstToken(u"E1\tPump ", u"E1"), u"\tPump");
}

TEST(CToolsTest, RemovesALastTokenAndTrimsTheRest) {
    EXPECT_EQ(g_Tools().RemoveLastToken(u"x = 1", u"1"), u"x =");
    EXPECT_EQ(g_Tools().RemoveLastToken(u"x = 1  ", u"1"), u"x = 1  ");
    EXPECT_EQ(g_Tools().RemoveLastToken(u"  a END", u"END"), u"a");
    EXPECT_EQ(g_Tools().RemoveLastToken(u"a end", u"END"), u"a end");
    EXPECT_EQ(g_Tools().RemoveLastToken(u"WEEKEND", u"END"), u"WEEK");
    EXPECT_EQ(g_Tools().RemoveLastToken(u"  x ", u""), u"x");
}

TEST(CToolsTest, ScansCountUpTo32767Characters) {
    const Text sLongest(kMostCounted, u'1');
    std::int32_t nLong = 0;
    std::int16_t nInt = 0;
    EXPECT_TRUE(g_Tools().Str2Long(sLongest, nLong));
    EXPECT_TRUE(g_Tools().Str2Int(sLongest, nInt));
    EXPECT_TRUE(g_Tools().IsNum(sLongest));
    EXPECT_FALSE(g_Tools().FindChrInStr(sLongest, u"2"));
    EXPECT_TRUE(g_Tools().IsValidTQLComment(sLongest));
}

TEST(CToolsTest, OneCharacterMoreOverflowsTheScans) {
    const Text sTooLong = Text(1, u'x') + Text(kMostCounted, u'1');
    std::int32_t nLong = 0;
    std::int16_t nInt = 0;
    EXPECT_EQ(Raised([&] { g_Tools().Str2Long(sTooLong, nLong); }), ErrorNumber::Overflow);
    EXPECT_EQ(Raised([&] { g_Tools().Str2Int(sTooLong, nInt); }), ErrorNumber::Overflow);
    EXPECT_EQ(Raised([&] { g_Tools().IsNum(sTooLong); }), ErrorNumber::Overflow);
    EXPECT_EQ(Raised([&] { g_Tools().FindChrInStr(sTooLong, u"x"); }), ErrorNumber::Overflow);
    EXPECT_EQ(Raised([&] { g_Tools().IsValidTQLComment(sTooLong); }), ErrorNumber::Overflow);
}

TEST(CToolsTest, OtherOperationsTakeTextsOfAnyLength) {
    const Text sLong(kMostCounted + 1, u'a');
    EXPECT_EQ(g_Tools().RemoveFirstToken(sLong, u"a").size(), kMostCounted);
    EXPECT_EQ(g_Tools().RemoveLastToken(sLong, u"a").size(), kMostCounted);
    EXPECT_EQ(g_Tools().ReplaceAllSubStrings(sLong, u"a", u""), u"");
}

}  // namespace
}  // namespace nomira::testing
