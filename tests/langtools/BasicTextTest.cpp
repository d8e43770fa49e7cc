#include "langtools/BasicText.h"

#include <gtest/gtest.h>

#include <limits>

#include "langtools/CodePage.h"
#include "langtools/RuntimeError.h"
#include "testing/Raised.h"
#include "testing/Random.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

constexpr std::int64_t kHuge = std::numeric_limits<std::int64_t>::max();

TEST(BasicTextTest, LeftAndRightGiveAtMostTheWholeText) {
    EXPECT_EQ(Left(u"Motor", 2), u"Mo");
    EXPECT_EQ(Left(u"Motor", 0), u"");
    EXPECT_EQ(Left(u"Motor", kHuge), u"Motor");
    EXPECT_EQ(Right(u"Motor", 2), u"or");
    EXPECT_EQ(Right(u"Motor", 0), u"");
    EXPECT_EQ(Right(u"Motor", kHuge), u"Motor");
    EXPECT_EQ(Right(u"", 3), u"");
}

TEST(BasicTextTest, MidCountsFromOneAndStopsAtTheEnd) {
    EXPECT_EQ(Mid(u"Motor", 1), u"Motor");
    EXPECT_EQ(Mid(u"Motor", 5), u"r");
    EXPECT_EQ(Mid(u"Motor", 6), u"");
    EXPECT_EQ(Mid(u"Motor", kHuge), u"");
    EXPECT_EQ(Mid(u"Motor", 2, 3), u"oto");
    EXPECT_EQ(Mid(u"Motor", 2, 0), u"");
    EXPECT_EQ(Mid(u"Motor", 4, kHuge), u"or");
    EXPECT_EQ(Mid(u"", 1, 1), u"");
}

TEST(BasicTextTest, LengthsBelowZeroAndPositionsBelowOneAreInvalid) {
    constexpr auto kInvalid = ErrorNumber::InvalidProcedureCall;
    EXPECT_EQ(Raised([] { Left(u"a", -1); }), kInvalid);
    EXPECT_EQ(Raised([] { Right(u"a", -1); }), kInvalid);
    EXPECT_EQ(Raised([] { Mid(u"a", 0); }), kInvalid);
    EXPECT_EQ(Raised([] { Mid(u"a", 1, -1); }), kInvalid);
    EXPECT_EQ(Raised([] { Mid(u"a", 9, -1); }), kInvalid);
    EXPECT_EQ(Raised([] { InStr(0, u"a", u"a"); }), kInvalid);
    EXPECT_EQ(Raised([] { InStrNoCase(0, u"a", u"a"); }), kInvalid);
}

struct InStrRow {
    std::int64_t nStart;
    TextView sText, sWhat;
    std::int32_t nPosition;
};

TEST(BasicTextTest, InStrGivesTheFirstPositionOrZero) {
    const InStrRow rows[] = {
        {1, u"a|b|c", u"|", 2},  {2, u"a|b|c", u"|", 2}, {3, u"a|b|c", u"|", 4},
        {5, u"a|b|c", u"|", 0},  {6, u"a|b|c", u"c", 0}, {kHuge, u"a|b|c", u"c", 0},
        {1, u"abc", u"abcd", 0}, {1, u"", u"a", 0},      {1, u"", u"", 0},
        {2, u"abc", u"", 2},     {4, u"abc", u"", 0},    {1, u"xAX", u"X", 3},
        {1, u"aab", u"ab", 2},
    };
    for (const InStrRow& row : rows) {
        EXPECT_EQ(InStr(row.nStart, row.sText, row.sWhat), row.nPosition)
            << row.nStart << " " << Printable(row.sText) << " " << Printable(row.sWhat);
    }
    EXPECT_EQ(InStr(u"a|b", u"|"), 2);
}

// Place by place, as one would say it.
std::int32_t FindPlainly(std::int64_t nStart, TextView sText, TextView sWhat) {
    for (auto n = static_cast<std::size_t>(nStart) - 1; n + sWhat.size() <= sText.size(); ++n)
        if (EqualNoCase(sText.substr(n, sWhat.size()), sWhat))
            return static_cast<std::int32_t>(n + 1);
    return 0;
}

TEST(BasicTextTest, InStrNoCaseFindsWhatAPlainSearchFinds) {
    Random random;
    SCOPED_TRACE(random.Seed());
    int nFound = 0;
    for (int n = 0; n < 20'000; ++n) {
        const Text sText =
            random.TextOf(u"aAbB @`{[1\u00E4\u00C4\u00FF\u0178\u00B5\u2161", 40) + u"x";
        const Text sWhat = u"" + random.TextOf(u"abAB @`1\u00E4\u00C4\u00FF\u2161", 2) + u"a";
        const auto nStart = static_cast<std::int64_t>(1 + random.UpTo(6));
        if (static_cast<std::size_t>(nStart) > sText.size()) continue;
        const std::int32_t nPlace = InStrNoCase(nStart, sText, sWhat);
        ASSERT_EQ(nPlace, FindPlainly(nStart, sText, sWhat))
            << Printable(sText) << " / " << Printable(sWhat);
        nFound += nPlace > 0 ? 1 : 0;
    }
    EXPECT_GT(nFound, 1'000);
}

TEST(BasicTextTest, InStrNoCaseDiffersInNothingButCase) {
    const InStrRow rows[] = {
        {1, u"xAX", u"X", 1}, {2, u"xAX", u"x", 3}, {1, u"T\u00DCR", u"\u00FCr", 2},
        {4, u"abc", u"C", 0}, {1, u"", u"", 0},     {2, u"abc", u"", 2},
        {4, u"abc", u"", 0},  {1, u"abc", u"D", 0},
    };
    for (const InStrRow& row : rows) {
        EXPECT_EQ(InStrNoCase(row.nStart, row.sText, row.sWhat), row.nPosition)
            << row.nStart << " " << Printable(row.sText) << " " << Printable(row.sWhat);
    }
}

TEST(BasicTextTest, TrimRemovesBlanksOnly) {
    EXPECT_EQ(Trim(u"  a b "), u"a b");
    EXPECT_EQ(LTrim(u"  a b "), u"a b ");
    EXPECT_EQ(RTrim(u"  a b "), u"  a b");
    EXPECT_EQ(Trim(u"    "), u"");
    EXPECT_EQ(Trim(u""), u"");
    EXPECT_EQ(Trim(u" \ta\r\n "), u"\ta\r\n");
    EXPECT_EQ(Trim(u"\u00A0a\u3000"), u"\u00A0a\u3000");
}

TEST(BasicTextTest, UCaseAndLCaseFoldTheLettersOfTheCodePage) {
    EXPECT_EQ(UCase(u"T\u00FCr @[`{ 1 z"), u"T\u00DCR @[`{ 1 Z");
    EXPECT_EQ(LCase(u"T\u00DCR @[`{ 1 Z"), u"t\u00FCr @[`{ 1 z");
    EXPECT_EQ(UCase(u"\u0161\u0153\u017E\u00FF\u00FE"), u"\u0160\u0152\u017D\u0178\u00DE");
    EXPECT_EQ(LCase(u"\u0160\u0152\u017D\u0178\u00DE"), u"\u0161\u0153\u017E\u00FF\u00FE");
}

TEST(BasicTextTest, SignsBetweenTheLettersHaveNoCase) {
    EXPECT_EQ(UCase(u"\u00F7\u00DF\u00AA\u00BA\u0192"), u"\u00F7\u00DF\u00AA\u00BA\u0192");
    EXPECT_EQ(LCase(u"\u00D7\u00DF"), u"\u00D7\u00DF");
}

TEST(BasicTextTest, CaseNeverLeavesTheCodePage) {
    EXPECT_EQ(UCase(u"10 \u00B5m"), u"10 \u00B5M");
    EXPECT_EQ(UCase(u"\u0101\u03B1\u0434"), u"\u0101\u03B1\u0434");  // not in page 1252 at all
    for (int nByte = 0; nByte < 256; ++nByte) {
        const char byte = static_cast<char>(nByte);
        const char16_t c = Windows1252().Decode(std::string_view(&byte, 1))[0];
        EXPECT_TRUE(Windows1252().Holds(UCase(c))) << nByte;
        EXPECT_TRUE(Windows1252().Holds(LCase(c))) << nByte;
        EXPECT_EQ(UCase(LCase(UCase(c))), UCase(c)) << nByte;
    }
}

// A page that holds a handful of Greek and Cyrillic letters in its upper half.
class OtherPage {
  public:
    OtherPage() : m_page(1, Letters()) { SetSystemCodePage(&m_page); }
    ~OtherPage() { SetSystemCodePage(nullptr); }

  private:
    static SingleBytePage::Table Letters() {
        SingleBytePage::Table table{};
        for (std::size_t n = 0; n < 0x80; ++n)
            table[n] = static_cast<char16_t>(n);
        std::size_t n = 0x80;
        for (const char16_t c :
             TextView(u"\u0386\u03AC\u038C\u03CC\u0391\u03B1\u0401\u0451\u0414\u0434\u0104\u0105"
                      u"\u0139\u013A\u0179\u017A\u0490\u0491")) {
            table[n++] = c;
        }
        return table;
    }
    SingleBytePage m_page;
};

TEST(BasicTextTest, CaseFollowsTheSystemsPage) {
    const OtherPage page;
    constexpr TextView kCapitals = u"\u0386\u038C\u0391\u0401\u0414\u0104\u0139\u0179\u0490";
    constexpr TextView kSmall = u"\u03AC\u03CC\u03B1\u0451\u0434\u0105\u013A\u017A\u0491";
    EXPECT_EQ(UCase(kSmall), kCapitals);
    EXPECT_EQ(LCase(kCapitals), kSmall);
    EXPECT_EQ(UCase(kCapitals), kCapitals);
    EXPECT_EQ(LCase(kSmall), kSmall);
    EXPECT_EQ(UCase(u"\u00FC\u03B2"), u"\u00FC\u03B2");
}

TEST(BasicTextTest, EqualNoCaseComparesWholeTexts) {
    EXPECT_TRUE(EqualNoCase(u"T\u00FCr", u"t\u00DCR"));
    EXPECT_TRUE(EqualNoCase(u"", u""));
    EXPECT_FALSE(EqualNoCase(u"Motor", u"Motor1"));
    EXPECT_FALSE(EqualNoCase(u"Motor", u"Moter"));
    EXPECT_FALSE(EqualNoCase(u"[", u"{"));
}

TEST(BasicTextTest, ReplaceDoesNotLookAtWhatItPutIn) {
    EXPECT_EQ(Replace(u"aXbX", u"X", u"XX"), u"aXXbXX");
    EXPECT_EQ(Replace(u"aab", u"ab", u"b"), u"ab");
    EXPECT_EQ(Replace(u"aaa", u"aa", u"b"), u"ba");
    EXPECT_EQ(Replace(u"abc", u"", u"x"), u"abc");
    EXPECT_EQ(Replace(u"abc", u"abc", u""), u"");
}

TEST(BasicTextTest, ValReadsDigitsAsFarAsTheyGo) {
    const std::pair<TextView, std::int64_t> rows[] = {
        {u"12", 12},
        {u"  12 \\", 12},
        {u"-12def", -12},
        {u"+7", 7},
        {u"1-2-3", 1},
        {u"--5", 0},
        {u"", 0},
        {u"x5", 0},
        {u"&H10", 0},
        {u"1e5", 1},
        {u"1.5", 1},
        {u"007", 7},
        {u"- 5", 0},
        {u"9223372036854775807", kHuge},
        {u"9223372036854775808", kHuge},
        {u"99999999999999999999999", kHuge},
        {u"-99999999999999999999999", -kHuge},
    };
    for (const auto& [sText, nValue] : rows)
        EXPECT_EQ(Val(sText), nValue) << Printable(sText);
}

TEST(BasicTextTest, DecimalTextHasNoBlankInFront) {
    EXPECT_EQ(DecimalText(0), u"0");
    EXPECT_EQ(DecimalText(1031), u"1031");
    EXPECT_EQ(DecimalText(-7), u"-7");
}

TEST(BasicTextTest, HexValueReadsUpTo32Bits) {
    EXPECT_EQ(HexValue(u"407"), 0x407);
    EXPECT_EQ(HexValue(u"aBcD"), 0xABCD);
    EXPECT_EQ(HexValue(u"7FFFFFFF"), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(HexValue(u"80000000"), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(HexValue(u"FFFFFFFF"), -1);
    EXPECT_EQ(HexValue(u"0000000000007"), 7);
}

TEST(BasicTextTest, HexValueRefusesWhatIsNoHexadecimalNumber) {
    for (const TextView sText : {u"", u"G", u"4 07", u" 407", u"-1", u"0x1", u"\uFF11"})
        EXPECT_EQ(Raised([&] { HexValue(sText); }), ErrorNumber::TypeMismatch) << Printable(sText);
    EXPECT_EQ(Raised([] { HexValue(u"100000000"); }), ErrorNumber::Overflow);
}

TEST(BasicTextTest, AsciiBytesBecomeTheSameCharacters) {
    EXPECT_EQ(FromAscii("IN_1"), u"IN_1");
    EXPECT_EQ(FromAscii(""), u"");
}

}  // namespace
}  // namespace nomira::testing
