#include "userprogram/FoldHeader.h"

#include <gtest/gtest.h>

#include <vector>

#include "adapters/memory/MemoryMachine.h"
#include "conversion/TextImport.h"
#include "langtools/BasicText.h"
#include "langtools/RuntimeError.h"
#include "testing/FlakyEngine.h"
#include "testing/Raised.h"
#include "testing/Random.h"
#include "testing/TestDatabase.h"
#include "testing/TextPrinting.h"
#include "userprogram/ProgramFixture.h"

namespace nomira::testing {
namespace {

class FoldHeaderTest : public ProgramFixture {
  protected:
    // The line after the chain of patterns, with the state of a fresh program.
    Text Rewrite(TextView sLine) {
        g_vLongName.clear();
        return RewriteNext(sLine);
    }
    // The same, with the state that an earlier line has left.
    Text RewriteNext(TextView sLine) {
        g_bLineChanged = false;
        g_sLine = sLine;
        RewriteFoldLine();
        return g_sLine;
    }
    void ExpectStays(TextView sLine) {
        EXPECT_EQ(Rewrite(sLine), sLine);
        EXPECT_FALSE(g_bLineChanged) << Printable(sLine);
    }
    void ExpectRaises(ErrorNumber number, TextView sLine) {
        EXPECT_EQ(Raised([&] { Rewrite(sLine); }), number) << Printable(sLine);
    }
};

// A header of each form; "@" stands for the name.
struct FormRow {
    TextView sHeader;
    TextView sNewName;
};

const std::vector<FormRow> kHeaders = {
    {u";FOLD OUT 12 '@' State=TRUE;%{PE}%P 2:12,3:TRUE", u"Cooling"},
    {u";FOLD OUT 12 '@' AT POINT State=TRUE;%{PE}", u"Cooling"},
    {u";FOLD WAIT FOR ( OUT 2 '@' ) ;%{PE}", u"Valve"},
    {u";FOLD PULSE 12 '@' State=TRUE Time=0.1 sec;%{PE}", u"Cooling"},
    {u";FOLD SYN OUT 12 '@' State=TRUE at START Delay=5ms;%{PE}", u"Cooling"},
    {u";FOLD SYN PULSE 12 '@' State=FALSE Time=1 sec;%{PE}", u"Cooling"},
    {u";FOLD WAIT FOR IN 5 '@' State=TRUE;%{PE}", u"Door"},
    {u";FOLD WAIT FOR OUT 12 '@' State=FALSE;%{PE}", u"Cooling"},
    {u";FOLD ANOUT ON @ = 0.5 * v + 1;%{PE}%VANOUT_DYN%P:CHANNEL_3,4:0.5", u"Speed"},
    {u";FOLD ANOUT OFF @;%{PE}%VANOUT_DYN%P:CHANNEL_3,", u"Speed"},
    {u";FOLD ANOUT @ = 0.5;%{PE}%VANOUT_STAT%P:CHANNEL_3,", u"Speed"},
};

Text Named(TextView sHeader, TextView sName) {
    return Replace(sHeader, u"@", sName);
}

TEST_F(FoldHeaderTest, EachFormTakesTheNameOfTheDatabase) {
    for (const FormRow& row : kHeaders) {
        EXPECT_EQ(Rewrite(Named(row.sHeader, u"Gas")), Named(row.sHeader, row.sNewName));
        EXPECT_TRUE(g_bLineChanged) << Printable(row.sHeader);
    }
}

TEST_F(FoldHeaderTest, CurrentNameStaysInEachForm) {
    for (const FormRow& row : kHeaders)
        ExpectStays(Named(row.sHeader, row.sNewName));
}

TEST_F(FoldHeaderTest, LowerCaseHeadersAreRecognised) {
    for (const FormRow& row : kHeaders) {
        if (row.sHeader.find(u"AT POINT") != TextView::npos) continue;  // exact in case
        const Text sHeader = LCase(row.sHeader);
        EXPECT_EQ(Rewrite(Named(sHeader, u"gas")), Named(sHeader, row.sNewName));
    }
}

TEST_F(FoldHeaderTest, IndentOfBlanksStays) {
    for (const FormRow& row : kHeaders) {
        const Text sHeader = Text(u"    ").append(row.sHeader) + u"  ";
        EXPECT_EQ(Rewrite(Named(sHeader, u"Gas")), Named(sHeader, row.sNewName));
    }
}

TEST_F(FoldHeaderTest, IndentOfATabHidesTheHeader) {
    for (const FormRow& row : kHeaders)
        ExpectStays(u"\t" + Named(row.sHeader, u"Gas"));
}

TEST_F(FoldHeaderTest, NumberAndEverythingBehindTheNameStayInTheWorkedCase) {
    EXPECT_EQ(Rewrite(u";FOLD OUT 12 'Pump' State=TRUE"), u";FOLD OUT 12 'Cooling' State=TRUE");
    EXPECT_EQ(g_vSymbol, u"12");
    EXPECT_EQ(g_vLongName, u"Pump");
}

TEST_F(FoldHeaderTest, NameWithAnApostropheIsReplacedInEveryPass) {
    Store(u"IO", u"OUT_7", u"operator's panel");
    const Text sLine = Rewrite(u";FOLD OUT 7 'x' State");
    EXPECT_EQ(sLine, u";FOLD OUT 7 'operator's panel' State");
    EXPECT_EQ(Rewrite(sLine), sLine);
    EXPECT_TRUE(g_bLineChanged);
    EXPECT_EQ(g_vLongName, u"operator");
}

TEST_F(FoldHeaderTest, OtherLinesPassThrough) {
    for (const TextView sLine :
         {u"", u" ", u";FOLD", u";FOLD ", u"OUT 12 'Pump' State=TRUE", u";ENDFOLD",
          u";FOLDER OUT 12 'Pump' State=TRUE", u"; FOLD OUT 12 'Pump' State=TRUE",
          u";FOLD  OUT 12 'Pump' State=TRUE", u";FOLD SET OUT 12 'Pump' State=TRUE",
          u";FOLD Start of the cell State", u";FOLD WAIT FOR FLAG 3 'x' State=TRUE",
          u";FOLD SYN 12 'Pump' State=TRUE", u"x ;FOLD OUT 12 'Pump' State=TRUE",
          // The hidden part does not tell the channel.
          u";FOLD ANOUT Gas = 0.5;%{PE}", u";FOLD ANOUT Gas;%{PE}%VANOUT_STAT:CHANNEL_3,",
          u";FOLD ANOUT ON Gas = 0.5;%{PE}%VANOUT_OLD:CHANNEL_3,",
          u";FOLD ANOUT Gas = 0.5;%{PE}%VANOUT_STAT CHANNEL_3,",
          u";FOLD ANOUT ON Gas = 0.5;%{PE}%VANOUT_DYN CHANNEL_3,",
          u";FOLD ANOUT OFF Gas;%{PE}%VANOUT_DYN CHANNEL_3,",
          // No blank behind the words.
          u";FOLD ANOUTER = 0.5;%{PE}%VANOUT_STAT:CHANNEL_3,",
          u";FOLD ANOUT ONE = 0.5;%{PE}%VANOUT_DYN:CHANNEL_3,",
          u";FOLD ANOUT OFFER;%{PE}%VANOUT_DYN:CHANNEL_3,"}) {
        ExpectStays(sLine);
    }
}

TEST_F(FoldHeaderTest, NumberOfOtherSignsLeavesTheLine) {
    for (const TextView sLine :
         {u";FOLD OUT x12 'Pump' State=TRUE", u";FOLD OUT $OUT[12] 'Pump' State=TRUE",
          u";FOLD PULSE 1 2 'Pump' State=TRUE", u";FOLD WAIT FOR ( IN a 'Pump' )",
          u";FOLD OUT sym: symName State=TRUE", u";FOLD OUT 12 State=TRUE",
          u";FOLD OUT 12 'Pump State=TRUE"}) {
        ExpectStays(sLine);
    }
}

// The alphabet of numbers is tested, not their form, and nothing at all is in it.
TEST_F(FoldHeaderTest, MissingNumberIsLookedUpAsBarePrefix) {
    Store(u"IO", u"OUT_", u"Nobody");
    EXPECT_EQ(Rewrite(u";FOLD OUT 'Pump' State=TRUE"), u";FOLD OUT 'Nobody' State=TRUE");
}

TEST_F(FoldHeaderTest, KeyIsTheNumberAsItStands) {
    Store(u"IO", u"OUT_012", u"Zero");
    EXPECT_EQ(Rewrite(u";FOLD OUT 012 'Pump' State=TRUE"), u";FOLD OUT 012 'Zero' State=TRUE");
}

// --- titles of a user's own, and headers that lack their end mark

TEST_F(FoldHeaderTest, SimpleHeaderWithoutStateIsAnInvalidCall) {
    for (const TextView sLine :
         {u";FOLD OUTLET of the cell", u";FOLD OUT 12 'Pump'", u";FOLD PULSE 12 'Pump'",
          u";FOLD SYN OUT 12 'Pump'", u";FOLD SYN PULSE 12 'Pump'", u";FOLD WAIT FOR IN 5 'Door'",
          u";FOLD WAIT FOR INSPECTION", u";FOLD WAIT FOR OUT 12 'Pump'", u";FOLD OUT",
          u";FOLD PULSEWIDTH", u";FOLD SYN OUTER", u";FOLD SYN PULSEWIDTH",
          u";FOLD WAIT FOR OUTFEED"}) {
        ExpectRaises(ErrorNumber::InvalidProcedureCall, sLine);
    }
}

TEST_F(FoldHeaderTest, OwnTitleWithStateButWithoutKeywordStays) {
    ExpectStays(u";FOLD OUTLET 4 'Pump' State of play");
}

TEST_F(FoldHeaderTest, AnalogueChannelWithoutCommaIsAnInvalidCall) {
    for (const TextView sLine : {u";FOLD ANOUT Gas = 0.5;%{PE}%VANOUT_STAT:CHANNEL_3",
                                 u";FOLD ANOUT ON Gas = 0.5;%{PE}%VANOUT_DYN:CHANNEL_3",
                                 u";FOLD ANOUT OFF Gas;%{PE}%VANOUT_DYN:CHANNEL_",
                                 // The comma directly behind the tag is passed over.
                                 u";FOLD ANOUT OFF Gas;%{PE}%VANOUT_DYN:CHANNEL_,"}) {
        ExpectRaises(ErrorNumber::InvalidProcedureCall, sLine);
    }
}

TEST_F(FoldHeaderTest, ChannelThatIsNoNumberIsLookedUpAsBarePrefix) {
    Store(u"IO", u"ANOUT_", u"Nobody");
    EXPECT_EQ(Rewrite(u";FOLD ANOUT Gas = 0.5;%{PE}%VANOUT_STAT:CHANNEL_x,"),
              u";FOLD ANOUT Nobody = 0.5;%{PE}%VANOUT_STAT:CHANNEL_x,");
}

TEST_F(FoldHeaderTest, PositionBeyondSixteenBitsOverflows) {
    ExpectRaises(ErrorNumber::Overflow,
                 u";FOLD OUT 12 '" + Text(32767, u'x') + u"' State=TRUE;%{PE}");
}

TEST_F(FoldHeaderTest, LongTailBehindTheNameIsNoTrouble) {
    const Text sTail = u" State=TRUE;%{PE}" + Text(40000, u'x');
    EXPECT_EQ(Rewrite(u";FOLD OUT 12 'Pump'" + sTail), u";FOLD OUT 12 'Cooling'" + sTail);
}

// The end of the signal's place is searched from the second character behind the keyword.
TEST_F(FoldHeaderTest, StateIsSearchedBehindTheKeyword) {
    EXPECT_EQ(Rewrite(u";FOLD OUTER State of OUT 12 'Pump' State=TRUE"),
              u";FOLD OUTER State of OUT 12 'Cooling' State=TRUE");
    ExpectRaises(ErrorNumber::InvalidProcedureCall, u";FOLD OUT State=TRUE");
}

// A header that fits two analogue patterns: with the third one, the symbol would begin at "ON".
TEST_F(FoldHeaderTest, FirstPatternOfTheChainDecides) {
    EXPECT_EQ(Rewrite(u";FOLD ANOUT ON Gas = 1;%{PE}%VANOUT_DYN%VANOUT_STAT:CHANNEL_3,"),
              u";FOLD ANOUT ON Speed = 1;%{PE}%VANOUT_DYN%VANOUT_STAT:CHANNEL_3,");
    EXPECT_EQ(Rewrite(u";FOLD ANOUT OFF Gas = 1;%{PE}%VANOUT_DYN%VANOUT_STAT:CHANNEL_3,"),
              u";FOLD ANOUT OFF Speed;%{PE}%VANOUT_DYN%VANOUT_STAT:CHANNEL_3,");
}

// --- blanks between keyword and number

struct LineRow {
    TextView sLine;
    TextView sRewritten;
};

TEST_F(FoldHeaderTest, MoreThanOneBlankAheadOfTheNumberCutsTheLine) {
    const std::vector<LineRow> rows = {
        {u";FOLD OUT  12 'Pump' State=TRUE", u";FOLD OUT  12'Cooling' State=TRUE"},
        {u";FOLD OUT   12 'Pump' State=TRUE", u";FOLD OUT   1'Cooling' State=TRUE"},
        {u";FOLD OUT    12 'Pump' State=TRUE", u";FOLD OUT    'Cooling' State=TRUE"},
        {u";FOLD WAIT FOR IN  5 'Gate' State=TRUE", u";FOLD WAIT FOR IN  5'Door' State=TRUE"},
        {u";FOLD WAIT FOR ( OUT   2 'x' )", u";FOLD WAIT FOR ( OUT   'Valve' )"},
    };
    for (const LineRow& row : rows)
        EXPECT_EQ(Rewrite(row.sLine), row.sRewritten);
}

TEST_F(FoldHeaderTest, BlanksBetweenNumberAndNameStay) {
    EXPECT_EQ(Rewrite(u";FOLD OUT 12   'Pump' State=TRUE"), u";FOLD OUT 12   'Cooling' State=TRUE");
}

// What stands between the closing quote and " State" belongs to the signal's place and goes.
TEST_F(FoldHeaderTest, BlanksBehindTheClosingQuoteGo) {
    EXPECT_EQ(Rewrite(u";FOLD OUT 12 'Pump'   State=TRUE"), u";FOLD OUT 12 'Cooling' State=TRUE");
}

TEST_F(FoldHeaderTest, OfSeveralQuotedTextsTheFirstIsTheName) {
    EXPECT_EQ(Rewrite(u";FOLD OUT 12 'Pump' or 'Fan' State=TRUE"),
              u";FOLD OUT 12 'Cooling' State=TRUE");
    EXPECT_EQ(g_vLongName, u"Pump");
}

// --- "12: symName", a header that has no name yet

TEST_F(FoldHeaderTest, SymbolOnlyFormsTakeTheNameInPlaceOfTheColon) {
    EXPECT_EQ(Rewrite(u";FOLD OUT 12: symName State=TRUE;%{PE}"),
              u";FOLD OUT 12'Cooling' State=TRUE;%{PE}");
    EXPECT_EQ(Rewrite(u";FOLD WAIT FOR IN 5 : symName State=TRUE;%{PE}"),
              u";FOLD WAIT FOR IN 5 'Door' State=TRUE;%{PE}");
    EXPECT_EQ(Rewrite(u";FOLD OUT 12:my_symName State=TRUE"), u";FOLD OUT 12'Cooling' State=TRUE");
}

// The word behind the number is not read as a name: what counts is what an earlier line has left.
TEST_F(FoldHeaderTest, SymbolOnlyFormComparesWithTheNameOfAnEarlierLine) {
    const TextView sSymbolOnly = u";FOLD OUT 12: symName State=TRUE;%{PE}";
    Rewrite(u";FOLD OUT 2 'Cooling' State=TRUE");
    EXPECT_EQ(RewriteNext(sSymbolOnly), sSymbolOnly);
    EXPECT_FALSE(g_bLineChanged);
    Rewrite(u";FOLD OUT 2 'Pump' State=TRUE");
    EXPECT_EQ(RewriteNext(sSymbolOnly), u";FOLD OUT 12'Cooling' State=TRUE;%{PE}");
}

TEST_F(FoldHeaderTest, SymbolOnlyFormIsExactInCase) {
    for (const TextView sLine :
         {u";FOLD OUT 12: symname State=TRUE", u";FOLD OUT 12: SYMNAME State=TRUE",
          u";FOLD WAIT FOR IN 5: SymName State=TRUE"}) {
        ExpectStays(sLine);
    }
}

TEST_F(FoldHeaderTest, OtherSimpleFormsLeaveSymbolOnlyLinesAlone) {
    for (const TextView sLine :
         {u";FOLD PULSE 12: symName State=TRUE", u";FOLD SYN OUT 12: symName State=TRUE",
          u";FOLD SYN PULSE 12: symName State=TRUE", u";FOLD WAIT FOR OUT 12: symName State=TRUE",
          u";FOLD PULSE : symName State=TRUE"}) {
        ExpectStays(sLine);
    }
}

TEST_F(FoldHeaderTest, SymbolOnlyFormWithoutAColonIsNoNumber) {
    ExpectStays(u";FOLD OUT 12 symName State=TRUE");
}

// --- AT POINT

TEST_F(FoldHeaderTest, AtPointEndsTheSignalsPlace) {
    EXPECT_EQ(Rewrite(u";FOLD OUT 12 'Pump' AT POINT State=TRUE"),
              u";FOLD OUT 12 'Cooling' AT POINT State=TRUE");
    EXPECT_EQ(Rewrite(u";FOLD OUTER at point of OUT 12 'Pump' AT POINT State=TRUE"),
              u";FOLD OUTER at point of OUT 12 'Cooling' AT POINT State=TRUE");
}

TEST_F(FoldHeaderTest, AtPointIsExactInCaseAndForTheFirstFormAlone) {
    for (const TextView sLine : {u";FOLD OUT 12 'Pump' At Point State=TRUE",
                                 u";FOLD SYN OUT 12 'Pump' AT POINT State=TRUE",
                                 u";FOLD WAIT FOR OUT 12 'Pump' AT POINT State=TRUE",
                                 u";FOLD PULSE 12 'Pump' AT POINT State=TRUE"}) {
        ExpectStays(sLine);
    }
}

// The test is exact in case, the search for the place is not, and finds it inside the name.
TEST_F(FoldHeaderTest, NameThatHoldsAtPointIsAnInvalidCall) {
    ExpectRaises(ErrorNumber::InvalidProcedureCall,
                 u";FOLD OUT 12 'stop at point 3' AT POINT State=TRUE");
}

TEST_F(FoldHeaderTest, AtPointWithoutABlankAheadIsAnInvalidCall) {
    ExpectRaises(ErrorNumber::InvalidProcedureCall, u";FOLD OUT 12 'Pump'AT POINT State=TRUE");
}

// --- the wait with several conditions

TEST_F(FoldHeaderTest, WaitLooksUpEachClassInItsModule) {
    EXPECT_EQ(Rewrite(u";FOLD WAIT FOR ( IN 1 'a' ) AND ( OUT 2 'b' ) AND ( CYCFLAG 3 'c' ) AND "
                      u"( TIMER 2 'd' ) AND ( FLAG 3 'e' ) ;%{PE}%P 2:1"),
              u";FOLD WAIT FOR ( IN 1 'Gate' ) AND ( OUT 2 'Valve' ) AND ( CYCFLAG 3 'Ready' ) AND "
              u"( TIMER 2 'Delay' ) AND ( FLAG 3 'Done' ) ;%{PE}%P 2:1");
}

// The boxes of refused names tell in which order the classes are worked.
TEST_F(FoldHeaderTest, WaitWorksOneClassBehindTheOther) {
    Store(u"Flag", u"FlagText8", u"^");
    Store(u"Timer", u"TimerText8", u"^");
    Store(u"Notice", u"NoticeText8", u"^");
    Store(u"IO", u"OUT_8", u"^");
    Store(u"IO", u"IN_8", u"^");
    ExpectStays(
        u";FOLD WAIT FOR ( TIMER 8 'a' ) AND ( CYCFLAG 8 'b' ) AND ( OUT 8 'c' ) AND "
        u"( IN 8 'd' ) ;%{PE}");
    ExpectStays(u";FOLD WAIT FOR ( FLAG 8 'a' ) AND ( TIMER 8 'b' ) ;%{PE}");
    std::vector<Text> texts;
    for (const auto& box : Boxes())
        texts.push_back(box.sText.substr(box.sText.find(u'\n') + 1));
    EXPECT_EQ(texts, (std::vector<Text>{u"IN_8  ^", u"OUT_8  ^", u"NoticeText8  ^",
                                        u"TimerText8  ^", u"TimerText8  ^", u"FlagText8  ^"}));
}

TEST_F(FoldHeaderTest, WaitFindsLaterConditionsOfAClass) {
    EXPECT_EQ(Rewrite(u";FOLD WAIT FOR ( IN 1 'a' ) OR ( IN 5 'b' ) OR ( IN 1 'c' ) ;%{PE}"),
              u";FOLD WAIT FOR ( IN 1 'Gate' ) OR ( IN 5 'Door' ) OR ( IN 1 'Gate' ) ;%{PE}");
    EXPECT_EQ(Rewrite(u";Fold Wait For (In 1 'a' ) Or (In 5 'b' ) ;%{PE}"),
              u";Fold Wait For (In 1 'Gate' ) Or (In 5 'Door' ) ;%{PE}");
    EXPECT_EQ(Rewrite(u";FOLD WAIT FOR ( FLAG 3 'a' ) OR ( FLAG 3 'b' ) ;%{PE}"),
              u";FOLD WAIT FOR ( FLAG 3 'Done' ) OR ( FLAG 3 'Done' ) ;%{PE}");
}

TEST_F(FoldHeaderTest, WaitEndsAClassAtANameWithoutABlankBehind) {
    ExpectStays(u";FOLD WAIT FOR ( IN 1 'a')");
    EXPECT_EQ(Rewrite(u";FOLD WAIT FOR ( OUT 2 'b' ) AND ( IN 1 'a')"),
              u";FOLD WAIT FOR ( OUT 2 'Valve' ) AND ( IN 1 'a')");
}

// The place of the first signal reaches to the next quote with a blank, and is replaced as a whole.
TEST_F(FoldHeaderTest, WaitSwallowsAConditionBehindANameWithoutABlank) {
    EXPECT_EQ(Rewrite(u";FOLD WAIT FOR ( IN 1 'a') AND ( IN 5 'b' )"),
              u";FOLD WAIT FOR ( IN 1 'Gate' )");
}

TEST_F(FoldHeaderTest, WaitConditionWithoutANameGoesOnAtTheNext) {
    EXPECT_EQ(Rewrite(u";FOLD WAIT FOR ( IN 7 ) AND ( IN 1 'a' ) AND ( IN 5 'b' ) ;%{PE}"),
              u";FOLD WAIT FOR ( IN 7 ) AND ( IN 1 'a' ) AND ( IN 5 'Door' ) ;%{PE}");
}

TEST_F(FoldHeaderTest, LoneCyclicFlagIsNoFlag) {
    ExpectStays(u";FOLD WAIT FOR ( CYCFLAG 3 'Ready' ) ;%{PE}");
    EXPECT_EQ(Rewrite(u";FOLD WAIT FOR ( CYCFLAG 3 'Ready' ) AND ( FLAG 3 'a' ) ;%{PE}"),
              u";FOLD WAIT FOR ( CYCFLAG 3 'Ready' ) AND ( FLAG 3 'Done' ) ;%{PE}");
}

// Only the first flag must have a blank ahead: the search behind it stops inside CYCFLAG.
TEST_F(FoldHeaderTest, CyclicFlagBehindAFlagIsTakenForAFlag) {
    EXPECT_EQ(Rewrite(u";FOLD WAIT FOR ( FLAG 3 'a' ) AND ( CYCFLAG 3 'Ready' ) ;%{PE}"),
              u";FOLD WAIT FOR ( FLAG 3 'Done' ) AND ( CYCFLAG 3 'Done' ) ;%{PE}");
}

TEST_F(FoldHeaderTest, HiddenPartIsNotSearchedForLaterConditions) {
    const TextView sHidden = u";%{PE}%P 2:IN 5 'b' ";
    EXPECT_EQ(Rewrite(Text(u";FOLD WAIT FOR ( IN 1 'a' ) ").append(sHidden)),
              Text(u";FOLD WAIT FOR ( IN 1 'Gate' ) ").append(sHidden));
}

// In the visible part they are one, so that a condition behind them is taken from too far ahead.
TEST_F(FoldHeaderTest, SeparatorsInARowHideALaterCondition) {
    EXPECT_EQ(Rewrite(u";FOLD WAIT FOR ( IN 1 'a' ) ;;; AND ( IN 5 'b' ) ;%{PE}"),
              u";FOLD WAIT FOR ( IN 1 'Gate' ) ;;; AND ( IN 5 'b' ) ;%{PE}");
}

TEST_F(FoldHeaderTest, ConditionInAHeaderOfMorePartsThanCanBeCountedOverflows) {
    Text sLine = u";FOLD WAIT FOR ( IN 1 'a' ) ";
    for (int n = 0; n < 32768; ++n)
        sLine += u"x;";
    ExpectRaises(ErrorNumber::Overflow, sLine);
}

// The first search of a class goes over the whole line.
TEST_F(FoldHeaderTest, ClassThatOnlyTheHiddenPartHoldsIsFoundThere) {
    EXPECT_EQ(Rewrite(u";FOLD WAIT FOR ( OUT 2 'a' ) ;%{PE}%P 2:IN 5 'b' "),
              u";FOLD WAIT FOR ( OUT 2 'Valve' ) ;%{PE}%P 2:IN 5 'Door' ");
}

// The search goes on where the old name ended. Here the new one is so much shorter that the next
// condition lies ahead of that place; the next run finds it.
TEST_F(FoldHeaderTest, ConditionBehindAMuchShorterNameIsMissed) {
    const TextView sFirst =
        u";FOLD WAIT FOR ( IN 1 'The very long name of an old gate' ) AND ( IN 5 'b' ) ;%{PE}";
    const TextView sSecond = u";FOLD WAIT FOR ( IN 1 'Gate' ) AND ( IN 5 'b' ) ;%{PE}";
    EXPECT_EQ(Rewrite(sFirst), sSecond);
    EXPECT_EQ(Rewrite(sSecond), u";FOLD WAIT FOR ( IN 1 'Gate' ) AND ( IN 5 'Door' ) ;%{PE}");
}

// A new name that looks like a condition, and is longer than the old one, is searched itself.
TEST_F(FoldHeaderTest, LongerNameIsSearchedForConditions) {
    Store(u"IO", u"IN_8", u"Slot OUT of IN 5 'x' order");
    EXPECT_EQ(Rewrite(u";FOLD WAIT FOR ( IN 8 'a' )"),
              u";FOLD WAIT FOR ( IN 8 'Slot OUT of IN 5 'Door' order' )");
}

TEST_F(FoldHeaderTest, NameThatHoldsItselfAsAConditionGrowsUntilPositionsOverflow) {
    Store(u"IO", u"IN_8", Text(3000, u'x') + u" IN 8 'x' y");
    ExpectRaises(ErrorNumber::Overflow, u";FOLD WAIT FOR ( IN 8 'a' )");
}

// Keywords are searched without regard to case or word: "in " ends many an English word.
TEST_F(FoldHeaderTest, KeywordAtTheEndOfAWordStartsACondition) {
    EXPECT_EQ(Rewrite(u";FOLD WAIT FOR ( Main 5 'b' ) ;%{PE}"),
              u";FOLD WAIT FOR ( Main 5 'Door' ) ;%{PE}");
}

// --- what the database says

TEST_F(FoldHeaderTest, NumberWithoutATextLosesItsName) {
    EXPECT_EQ(Rewrite(u";FOLD OUT 99 'Pump' State=TRUE"), u";FOLD OUT 99 '' State=TRUE");
    EXPECT_TRUE(g_bLineChanged);
    ExpectStays(u";FOLD OUT 99 '' State=TRUE");
}

TEST_F(FoldHeaderTest, AnalogueOutputWithoutATextKeepsItsName) {
    ExpectStays(u";FOLD ANOUT Gas = 0.5;%{PE}%VANOUT_STAT:CHANNEL_9,");
}

TEST_F(FoldHeaderTest, TextThatEqualsItsKeyLeavesTheLine) {
    Store(u"IO", u"OUT_13", u"OUT_13");
    Store(u"IO", u"ANOUT_4", u"ANOUT_4");
    Store(u"Notice", u"NoticeText9", u"NoticeText9");
    ExpectStays(u";FOLD OUT 13 'Pump' State=TRUE");
    ExpectStays(u";FOLD ANOUT Gas = 0.5;%{PE}%VANOUT_STAT:CHANNEL_4,");
    ExpectStays(u";FOLD WAIT FOR ( CYCFLAG 9 'a' )");
}

TEST_F(FoldHeaderTest, EmptyMarkerIsWrittenAsItStands) {
    Store(u"IO", u"OUT_14", u"|EMPTY|");
    EXPECT_EQ(Rewrite(u";FOLD OUT 14 'Pump' State=TRUE"), u";FOLD OUT 14 '|EMPTY|' State=TRUE");
}

TEST_F(FoldHeaderTest, RefusedSignShowsABoxAndLeavesTheLine) {
    Store(u"IO", u"OUT_15", u"Tür");
    ExpectStays(u";FOLD OUT 15 'Pump' State=TRUE");
    ASSERT_EQ(Boxes().size(), 1U);
    EXPECT_EQ(Boxes()[0].sText, u"Invalid sign in database: \r\nOUT_15  Tür");
    EXPECT_EQ(Boxes()[0].sTitle, u"Nomira");
    EXPECT_EQ(Boxes()[0].icon, BoxIcon::None);
}

TEST_F(FoldHeaderTest, RefusedSignInAWaitShowsABoxAndTheRunGoesOn) {
    Store(u"Timer", u"TimerText8", u"5^2");
    EXPECT_EQ(Rewrite(u";FOLD WAIT FOR ( TIMER 8 'a' ) AND ( TIMER 2 'b' ) ;%{PE}"),
              u";FOLD WAIT FOR ( TIMER 8 'a' ) AND ( TIMER 2 'Delay' ) ;%{PE}");
    ASSERT_EQ(Boxes().size(), 1U);
    EXPECT_EQ(Boxes()[0].sText, u"Invalid sign in database: \r\nTimerText8  5^2");
}

TEST_F(FoldHeaderTest, RefusedSignOfAnAnalogueOutputIsSilent) {
    Store(u"IO", u"ANOUT_5", u"Größe");
    ExpectStays(u";FOLD ANOUT Gas = 0.5;%{PE}%VANOUT_STAT:CHANNEL_5,");
    EXPECT_TRUE(Boxes().empty());
}

// What is refused is never compared: the box comes for the current name too, and an old name that
// is no pattern fails nothing.
TEST_F(FoldHeaderTest, RefusedSignIsFoundAheadOfTheComparison) {
    Store(u"IO", u"OUT_15", u"Tür");
    ExpectStays(u";FOLD OUT 15 'Tür' State=TRUE");
    EXPECT_EQ(Boxes().size(), 1U);
    ExpectStays(u";FOLD OUT 15 'Pump [2' State=TRUE");
    EXPECT_EQ(Boxes().size(), 2U);
    Store(u"IO", u"ANOUT_5", u"Größe");
    ExpectStays(u";FOLD ANOUT Gas [2 = 0.5;%{PE}%VANOUT_STAT:CHANNEL_5,");
    EXPECT_EQ(Boxes().size(), 2U);
}

// Without a connection the name is unknown rather than empty.
TEST_F(FoldHeaderTest, WithoutADatabaseEveryLineStays) {
    m_database.RemoveFile();
    for (const FormRow& row : kHeaders)
        ExpectStays(Named(row.sHeader, u"Gas"));
}

TEST_F(FoldHeaderTest, WeldingModuleIsAskedOnlyWhenTheConnectionFailed) {
    Store(u"A10TP", u"OUT_40", u"Welding");
    EXPECT_EQ(Rewrite(u";FOLD OUT 40 'Pump' State=TRUE"), u";FOLD OUT 40 '' State=TRUE");
    const FlakyEngine flaky(1);
    EXPECT_EQ(Rewrite(u";FOLD OUT 40 'Pump' State=TRUE"), u";FOLD OUT 40 'Welding' State=TRUE");
}

TEST_F(FoldHeaderTest, AnalogueOutputHasNoSecondTry) {
    Store(u"A10TP", u"ANOUT_3", u"Welding");
    const FlakyEngine flaky(1);
    ExpectStays(u";FOLD ANOUT Gas = 0.5;%{PE}%VANOUT_STAT:CHANNEL_3,");
}

// --- the old name is a pattern

TEST_F(FoldHeaderTest, WildcardsOfAnOldNameMakeItCurrent) {
    Store(u"IO", u"OUT_7", u"Tool 3");
    for (const TextView sName :
         {u"*", u"Tool*", u"Tool ?", u"Tool #", u"Tool [1-4]", u"Tool [!5]"}) {
        ExpectStays(Named(u";FOLD OUT 7 '@' State=TRUE", sName));
    }
    for (const TextView sName : {u"tool*", u"Tool", u"Tool ##", u"Tool [5-9]", u"Tool [!3]"}) {
        EXPECT_EQ(Rewrite(Named(u";FOLD OUT 7 '@' State=TRUE", sName)),
                  u";FOLD OUT 7 'Tool 3' State=TRUE");
    }
}

TEST_F(FoldHeaderTest, WildcardsOfAnOldAnalogueNameMakeItCurrent) {
    ExpectStays(u";FOLD ANOUT S*d = 0.5;%{PE}%VANOUT_STAT:CHANNEL_3,");
    ExpectStays(u";FOLD ANOUT Sp[a-f][a-f]d = 0.5;%{PE}%VANOUT_STAT:CHANNEL_3,");
}

TEST_F(FoldHeaderTest, OldNameOfWildcardsForNothingKeepsANameWithoutAText) {
    ExpectStays(u";FOLD OUT 99 '**' State=TRUE");
    EXPECT_EQ(Rewrite(u";FOLD OUT 99 '?' State=TRUE"), u";FOLD OUT 99 '' State=TRUE");
}

TEST_F(FoldHeaderTest, UnclosedBracketInAnOldNameIsAnInvalidPattern) {
    for (const TextView sLine :
         {u";FOLD OUT 12 'Pump [2' State=TRUE", u";FOLD OUT 99 '[' State=TRUE",
          u";FOLD WAIT FOR ( IN 1 'Gate[' )", u";FOLD OUT 12 'Pump [2' AT POINT State=TRUE",
          u";FOLD ANOUT Gas[ = 0.5;%{PE}%VANOUT_STAT:CHANNEL_3,",
          u";FOLD ANOUT Gas[ = 0.5;%{PE}%VANOUT_STAT:CHANNEL_9,"}) {
        ExpectRaises(ErrorNumber::InvalidPattern, sLine);
    }
}

// --- analogue outputs

TEST_F(FoldHeaderTest, OldAnalogueNameIsReplacedAtItsFirstPlaceInTheLine) {
    EXPECT_EQ(Rewrite(u";FOLD ANOUT OUT = 0.5;%{PE}%VANOUT_STAT:CHANNEL_3,"),
              u";FOLD ANSpeed OUT = 0.5;%{PE}%VANOUT_STAT:CHANNEL_3,");
    EXPECT_EQ(Rewrite(u";FOLD ANOUT ON F = 0.5;%{PE}%VANOUT_DYN:CHANNEL_3,"),
              u";SpeedOLD ANOUT ON F = 0.5;%{PE}%VANOUT_DYN:CHANNEL_3,");
}

TEST_F(FoldHeaderTest, OldAnalogueNameIsReplacedOnce) {
    EXPECT_EQ(Rewrite(u";FOLD ANOUT Gas = 0.5;%{PE}%VANOUT_STAT:CHANNEL_3,2:Gas"),
              u";FOLD ANOUT Speed = 0.5;%{PE}%VANOUT_STAT:CHANNEL_3,2:Gas");
}

TEST_F(FoldHeaderTest, OldAnalogueNameIsSearchedExactInCase) {
    EXPECT_EQ(Rewrite(u";FOLD ANOUT out = 0.5;%{PE}%VANOUT_STAT:CHANNEL_3,"),
              u";FOLD ANOUT Speed = 0.5;%{PE}%VANOUT_STAT:CHANNEL_3,");
}

TEST_F(FoldHeaderTest, ChannelIsSearchedBehindTheEndMark) {
    EXPECT_EQ(Rewrite(u";FOLD ANOUT CHANNEL_9, = 0.5;%{PE}%VANOUT_STAT:CHANNEL_3,"),
              u";FOLD ANOUT Speed = 0.5;%{PE}%VANOUT_STAT:CHANNEL_3,");
}

// Nothing can be found in its place; the program counts as changed all the same.
TEST_F(FoldHeaderTest, AnalogueHeaderWithoutANameCountsAsChanged) {
    const TextView sLine = u";FOLD ANOUT = 0.5;%{PE}%VANOUT_STAT:CHANNEL_3,";
    EXPECT_EQ(Rewrite(sLine), sLine);
    EXPECT_TRUE(g_bLineChanged);
}

// --- the helpers on their own

TEST_F(FoldHeaderTest, CutFoldCommentEndsAtTheHiddenPart) {
    const std::vector<LineRow> rows = {
        {u";FOLD OUT 1;%{PE}%P 2:1;x", u";FOLD OUT 1;"},
        {u"   ;FOLD OUT 1;  %{PE};x", u"   ;FOLD OUT 1;"},
        {u";FOLD a;b;%{PE}", u";FOLD a;b;"},
        {u";FOLD a;x%{PE}", u";FOLD a;x%{PE};"},
        {u";FOLD a;%b;%{PE}", u";FOLD a;%b;"},
        {u";FOLD a", u";FOLD a;"},
        {u"", u";"},
        {u"no comment", u";no comment;"},
        {u"x = 1 ;note", u"x = 1 ;x = 1 ;note;"},
        {u";%{PE}", u";"},
    };
    for (const LineRow& row : rows)
        EXPECT_EQ(CutFoldComment(row.sLine), row.sRewritten) << Printable(row.sLine);
}

// The parts of a line are counted with 16 bits.
TEST_F(FoldHeaderTest, CutFoldCommentTakesUpTo32767Parts) {
    Text sParts;
    for (int n = 0; n < 32767; ++n)
        sParts += u"a;";
    EXPECT_EQ(CutFoldComment(sParts), sParts.substr(0, 2) + sParts);
    EXPECT_EQ(CutFoldComment(u";" + sParts), u";" + sParts);
    EXPECT_EQ(Raised([&] { CutFoldComment(u";b;" + sParts); }), ErrorNumber::Overflow);
}

TEST_F(FoldHeaderTest, ReadAnoutChannelTakesTheTextAheadOfTheComma) {
    g_sLine = u"channel_1,CHANNEL_22, :CHANNEL_x3,CHANNEL_7";
    EXPECT_EQ(ReadAnoutChannel(u"CHANNEL_", 1), u"1");
    EXPECT_EQ(ReadAnoutChannel(u"CHANNEL_", 2), u"22");
    EXPECT_EQ(ReadAnoutChannel(u"CHANNEL_", 20), u"");
    EXPECT_THROW(ReadAnoutChannel(u"CHANNEL_", 30), RuntimeError);
    EXPECT_THROW(ReadAnoutChannel(u"CHANNEL_", 0), RuntimeError);
}

// --- properties, over headers made at random

struct RandomHeader {
    Text sAhead, sName, sBehind;
    Text Line() const { return sAhead + u"'" + sName + u"'" + sBehind; }
};

RandomHeader MakeHeader(Random& random) {
    constexpr TextView kPlain = u"abcXYZ0189 .,-_/()";
    constexpr TextView kAny = u"abcXYZ 019.,;:%{}='\"[*?#\\\tÄöß";
    const std::vector<TextView> words = {u"OUT ", u"PULSE ", u"SYN OUT ", u"SYN PULSE ",
                                         u"WAIT FOR OUT "};
    RandomHeader header;
    header.sAhead = random.TextOf(u" ", 5) + u";FOLD ";
    header.sAhead.append(words[random.UpTo(words.size() - 1)]);
    header.sAhead += DecimalText(static_cast<std::int64_t>(random.UpTo(20))) + u" ";
    header.sName = random.TextOf(kPlain, 12);
    header.sBehind = u" State" + random.TextOf(kAny, 30);
    return header;
}

TEST_F(FoldHeaderTest, RandomHeadersChangeBetweenTheQuotesAlone) {
    Random random;
    int nChanged = 0;
    for (int n = 0; n < 400; ++n) {
        const RandomHeader header = MakeHeader(random);
        const Text sLine = header.Line();
        SCOPED_TRACE(random.Seed() + ": " + Printable(sLine));
        const Text sNew = Rewrite(sLine);
        ASSERT_TRUE(sNew.starts_with(header.sAhead + u"'")) << Printable(sNew);
        ASSERT_TRUE(sNew.ends_with(u"'" + header.sBehind)) << Printable(sNew);
        ASSERT_EQ(g_bLineChanged, sNew != sLine);
        ASSERT_EQ(RewriteNext(sNew), sNew);  // what was written is current
        ASSERT_FALSE(g_bLineChanged);
        nChanged += sNew != sLine ? 1 : 0;
    }
    EXPECT_GT(nChanged, 200);
}

// What no form takes must come through untouched, whatever it holds.
TEST_F(FoldHeaderTest, RandomLinesThatAreNoHeadersStay) {
    Random random;
    for (int n = 0; n < 400; ++n) {
        const Text sLine = random.TextOf(u";FOLDUTfold 'in\t=%{}[*", 40);
        if (UCase(Trim(sLine)).starts_with(u";FOLD ")) continue;
        SCOPED_TRACE(random.Seed() + ": " + Printable(sLine));
        ExpectStays(sLine);
    }
}

// ---- The look at bytes ahead of the patterns ----

TEST(MayBeFoldHeaderTest, EveryFormsBeginningMayBeOneInAnyCaseBehindBlanks) {
    for (const char* const sLine :
         {";FOLD OUT", ";fold outlet", "   ;FOLD Wait For (", ";FOLD PULSE 1", ";FOLD SYN OUT 1",
          ";FOLD SYN PULSE 1", ";FOLD WAIT FOR IN", ";FOLD WAIT FOR OUT 1", ";FOLD ANOUT ON ",
          ";FOLD ANOUT OFF ", ";FOLD ANOUT x"})
        EXPECT_TRUE(MayBeFoldHeader(sLine)) << sLine;
}

TEST(MayBeFoldHeaderTest, OtherLinesAreNoneForSure) {
    for (const char* const sLine :
         {"", "   ", ";", ";FOLD", ";FOLD ", "x;FOLD OUT 1", ";FOLD  OUT 1", "\t;FOLD OUT 1",
          ";FOLDOUT 1", ";FOLD PTP P1", ";FOLD \xD6UT 1", "; FOLD OUT 1", ";FOLD WAIT FOR TIMER"})
        EXPECT_FALSE(MayBeFoldHeader(sLine)) << sLine;
}

}  // namespace
}  // namespace nomira::testing
