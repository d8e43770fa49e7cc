#include "userprogram/HarvestLine.h"

#include <gtest/gtest.h>

#include <vector>

#include "langtools/RuntimeError.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

// The parts of one line, cut in the harvest's order.
struct Cut {
    Text sName, sSymbol, sLong;
};

Cut CutLine(TextView sRead) {
    Text sLine = RewriteLine(sRead);
    Cut cut;
    cut.sName = CutSignalName(sLine);
    cut.sSymbol = CutSymbol(sLine);
    cut.sLong = CutLongText(sLine);
    return cut;
}

TEST(RewriteLineTest, MarkerAndFourCharactersBecomeSemicolonAndBlank) {
    EXPECT_EQ(RewriteLine(u"X = E12 \\ ;|1234Motor"), u"X = E12 \\ ; Motor");
    EXPECT_EQ(RewriteLine(u"a;|1234"), u"a; ");
    EXPECT_EQ(RewriteLine(u"a;|12"), u"a; ");
}

TEST(RewriteLineTest, OnlyTheFirstMarkerGoes) {
    EXPECT_EQ(RewriteLine(u"a;|1234b;|5678c"), u"a; b;|5678c");
}

TEST(RewriteLineTest, LineWithoutMarkerOrWithItAtTheStartStays) {
    for (const TextView sLine : {u"", u"X = E1 \\ ;Motor", u";|1234Motor", u"; |1234"})
        EXPECT_EQ(RewriteLine(sLine), sLine);
}

TEST(RewriteLineTest, MarkerAtTheStartHidesALaterOne) {
    EXPECT_EQ(RewriteLine(u";|1234X = E1 \\ ;|1234Motor"), u";|1234X = E1 \\ ;|1234Motor");
}

TEST(IsSignalLineTest, EachClassWithAndWithoutOneBlank) {
    for (const TextView sName : {u"E1", u"A1", u"ANAE1", u"ANAA1", u"BINE1", u"BINA1", u"P1"}) {
        EXPECT_TRUE(IsSignalLine(Text(u"X =").append(sName))) << Printable(sName);
        EXPECT_TRUE(IsSignalLine(Text(u"X = ").append(sName).append(u" \\ ;t")))
            << Printable(sName);
        EXPECT_FALSE(IsSignalLine(Text(u"X =  ").append(sName))) << Printable(sName);
    }
}

TEST(IsSignalLineTest, OnlyInputsMayBeginWithZero) {
    EXPECT_TRUE(IsSignalLine(u"X = E012 \\ ;Taster"));
    EXPECT_TRUE(IsSignalLine(u"X=E012"));
    for (const TextView sName : {u"A0", u"ANAE0", u"ANAA0", u"BINE0", u"BINA0", u"P0"}) {
        EXPECT_FALSE(IsSignalLine(Text(u"X = ").append(sName))) << Printable(sName);
        EXPECT_FALSE(IsSignalLine(Text(u"X=").append(sName))) << Printable(sName);
    }
}

TEST(IsSignalLineTest, RefusesOtherForms) {
    for (const TextView sLine :
         {u"", u"E12 \\ ;Text", u"X = e12 \\ ;Text", u"X  =  E12 \\ ;Text", u"X = F12 \\ ;Text",
          u"X =\tE12 \\ ;Text", u"X = EX12", u"X = M1", u"X = T1", u"X = ANAB1", u"X = BIN1"}) {
        EXPECT_FALSE(IsSignalLine(sLine)) << Printable(sLine);
    }
}

TEST(IsSignalLineTest, AnyEqualsSignOfTheLineWillDo) {
    EXPECT_TRUE(IsSignalLine(u"a == b = E1"));
    EXPECT_TRUE(IsSignalLine(u"X = 5 ; =P7"));
}

TEST(CutSignalNameTest, TakesWhatStandsBetweenEqualsSignAndBackslash) {
    Text sLine = u"X = E12 \\ ;Motor links";
    EXPECT_EQ(CutSignalName(sLine), u"E12");
    EXPECT_EQ(sLine, u" E12 \\ ;Motor links");
}

TEST(CutSignalNameTest, WithoutEqualsSignTheLineStays) {
    Text sLine = u"E12 \\  ;Tür";
    EXPECT_EQ(CutSignalName(sLine), u"");
    EXPECT_EQ(sLine, u"E12 \\  ;Tür");
}

TEST(CutSignalNameTest, WithoutBackslashTheRestIsLeftUnfiltered) {
    Text sLine = u"X = E12  ;Tür";
    EXPECT_EQ(CutSignalName(sLine), u"");
    EXPECT_EQ(sLine, u" E12  ;Tür");
}

// The place of the backslash was taken before the blanks collapsed.
TEST(CutSignalNameTest, CollapsedBlanksLetTheCutFallBehindTheBackslash) {
    Text sLine = u"X = E12   \\ ;x";
    EXPECT_EQ(CutSignalName(sLine), u"E12 \\");
    EXPECT_EQ(sLine, u" E12 \\ ;x");
}

TEST(CutSignalNameTest, CutFallsIntoTheCommentWithManyBlanks) {
    Text sLine = u"X = E12          \\ ;x";
    EXPECT_EQ(CutSignalName(sLine), u"E12 \\ ;x");
}

TEST(CutSignalNameTest, TabBecomesFourBlanksThatCollapseToOne) {
    Text sLine = u"X = E12\t\\ ;a\tb";
    EXPECT_EQ(CutSignalName(sLine), u"E12");
    EXPECT_EQ(sLine, u" E12 \\ ;a b");
}

// The longer spelling of an umlaut moves the backslash away from the place of the cut.
TEST(CutSignalNameTest, UmlautAheadOfTheBackslashShortensTheName) {
    Text sLine = u"X =E1ä\\ ;x";
    EXPECT_EQ(CutSignalName(sLine), u"E1a");
}

TEST(CutSymbolTest, TakesWhatStandsAheadOfTheFirstEqualsSign) {
    EXPECT_EQ(CutSymbol(u" Sym = E1 \\ ;x = y"), u"Sym");
    EXPECT_EQ(CutSymbol(u"=E1"), u"");
    EXPECT_EQ(CutSymbol(u" E1 \\ ;x"), u"");
}

TEST(CutLongTextTest, TakesTheCommentWithoutItsSemicolon) {
    EXPECT_EQ(CutLongText(u" E1 \\ ;Motor links "), u"Motor links");
    EXPECT_EQ(CutLongText(u" E1 \\;  Motor"), u"Motor");
    EXPECT_EQ(CutLongText(u" E1 \\ Motor"), u"Motor");
    EXPECT_EQ(CutLongText(u" E1 \\ ;; Motor"), u"; Motor");
    EXPECT_EQ(CutLongText(u" E1 \\ ;a \\ b"), u"a \\ b");
}

TEST(CutLongTextTest, IsEmptyWithoutBackslashOrComment) {
    for (const TextView sLine : {u"", u" E1 ;Motor", u" E1 \\", u" E1 \\ ", u" E1 \\ ;", u"\\ ; "})
        EXPECT_EQ(CutLongText(sLine), u"") << Printable(sLine);
}

TEST(CollapseBlanksTest, EveryRunBecomesOneBlankAndTabsStay) {
    EXPECT_EQ(CollapseBlanks(u""), u"");
    EXPECT_EQ(CollapseBlanks(u"  a   b c    "), u" a b c ");
    EXPECT_EQ(CollapseBlanks(u"a\t\tb \t c"), u"a\t\tb \t c");
}

TEST(ClassifySignalTest, LettersAndADigitGiveTheClass) {
    for (const TextView sClass : {u"E", u"A", u"ANAE", u"ANAA", u"BINE", u"BINA", u"M", u"F", u"I",
                                  u"T", u"t", u"S", u"P"}) {
        EXPECT_EQ(ClassifySignal(Text(sClass) + u"0"), sClass);
        EXPECT_EQ(ClassifySignal(Text(u"  ").append(sClass).append(u"12 \\ ")), sClass);
        EXPECT_EQ(ClassifySignal(sClass), u"");
        EXPECT_EQ(ClassifySignal(Text(sClass) + u" 1"), u"");
    }
}

TEST(ClassifySignalTest, OtherNamesHaveNoClass) {
    for (const TextView sName : {u"", u"e1", u"B1", u"ANAB1", u"BIN1", u"anae1", u"1E", u"p1"})
        EXPECT_EQ(ClassifySignal(sName), u"") << Printable(sName);
}

TEST(SignalNumberTest, ReadsTheDigitsBehindTheLetters) {
    struct Row {
        TextView sName;
        std::int32_t nNumber;
    };
    const std::vector<Row> rows = {
        {u"E12", 12},   {u"E012", 12},    {u"A7", 7},
        {u"P3", 3},     {u"e12", 12},     {u"ANAE3", 3},
        {u"ANAA04", 4}, {u"BINE5", 5},    {u"bina6", 6},
        {u"B1", 1},     {u"ANAD9", 9},    {u"E12 \\", 12},
        {u"E1a2", 1},   {u"ANAE3 \\", 3}, {u"E2147483647", 2147483647},
        {u"C8x", 8},
    };
    for (const Row& row : rows)
        EXPECT_EQ(SignalNumber(row.sName), row.nNumber) << Printable(row.sName);
}

TEST(SignalNumberTest, OtherNamesHaveTheNumberZero) {
    for (const TextView sName : {u"", u"E", u" E12", u"M3", u"ANA3", u"ANAF3", u"F1"})
        EXPECT_EQ(SignalNumber(sName), 0) << Printable(sName);
}

TEST(SignalNumberTest, MoreThanThirtyTwoBitsOverflow) {
    for (const TextView sName : {u"E2147483648", u"E99999999999999999999999"}) {
        EXPECT_EQ(Raised([&] { SignalNumber(sName); }), ErrorNumber::Overflow) << Printable(sName);
    }
}

TEST(HarvestLineTest, WholeLinesComeApart) {
    struct Row {
        TextView sLine, sName, sSymbol, sLong;
    };
    const std::vector<Row> rows = {
        {u"X = E12 \\ ;Motor links", u"E12", u"", u"Motor links"},
        {u"X=A1\\;Ventil", u"A1", u"", u"Ventil"},
        {u"X = ANAE3 \\ ;Druck", u"ANAE3", u"", u"Druck"},
        {u"X = P12 \\ ;Wert", u"P12", u"", u"Wert"},
        {u"X = E12", u"", u"", u""},
        {u"X = E12 \\ ;|1234Motor", u"E12", u"", u"Motor"},
        {u"X = E12 \\ ;Sym;Text", u"E12", u"", u"Sym;Text"},
        {u"X = E1 \\ ;Tür", u"E1", u"", u"Tuer"},
        {u"X = E1 \\ ;links\trechts", u"E1", u"", u"links rechts"},
        {u"X = Y = E1 \\ ;doppelt", u"Y = E1", u"Y", u"doppelt"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Printable(row.sLine));
        const Cut cut = CutLine(row.sLine);
        EXPECT_EQ(cut.sName, row.sName);
        EXPECT_EQ(cut.sSymbol, row.sSymbol);
        EXPECT_EQ(cut.sLong, row.sLong);
    }
}

}  // namespace
}  // namespace nomira::testing
