// Edited text on its way back into the database.
#include "conversion/ConversionFixture.h"
#include "conversion/TextExport.h"
#include "conversion/TextImport.h"
#include "testing/ForwardingEngine.h"
#include "testing/Raised.h"

namespace nomira::testing {
namespace {

class EditedTextTest : public ConversionFixture {
  protected:
    // What the database holds after the lines, each ended by CR LF, were applied.
    Rows Applied(const std::vector<Text>& lines) {
        Text sText = Lines(lines);
        ApplyEditedText(sText);
        return Stored();
    }
    static Text Lines(const std::vector<Text>& lines) {
        Text sText;
        for (const Text& sLine : lines)
            sText += sLine + u"\r\n";
        return sText;
    }
};

// ---- Keys ----

struct LineRow {
    Text sLine;
    Rows stored;
};

class EditedLineTest : public EditedTextTest {
  protected:
    void Expect(const std::vector<LineRow>& rows) {
        for (const LineRow& row : rows)
            EXPECT_EQ(Applied({u"IN_1 first", row.sLine}), Joined(row.stored, {"IO|IN_1|first"}))
                << Printable(row.sLine);
    }
};

TEST_F(EditedLineTest, KeysWithAnUnderscoreEndBehindTheirDigits) {
    Expect({
        {u"OUT_1234 a b", {"IO|OUT_1234|a b"}},
        {u"IN_1234 a", {"IO|IN_1234|a"}},
        {u"OUT_123 a", {"IO|OUT_123|a"}},
        {u"IN_123 a", {"IO|IN_123|a"}},
        {u"ZTQXProcParam_123 a", {"ZTQXProcParam|ZTQXProcParam_123|a"}},
        {u"OUT_12 a", {"IO|OUT_12|a"}},
        {u"IN_12 a", {"IO|IN_12|a"}},
        {u"ANIN_12 a", {"IO|ANIN_12|a"}},
        {u"ANOUT_12 a", {"IO|ANOUT_12|a"}},
        {u"BININ_12 a", {"IO|BININ_12|a"}},
        {u"BINOUT_12 a", {"IO|BINOUT_12|a"}},
        {u"ZTQXProcParam_12 a", {"ZTQXProcParam|ZTQXProcParam_12|a"}},
        {u"OUT_1 a", {"IO|OUT_1|a"}},
        {u"IN_2 a", {"IO|IN_2|a"}},
        {u"ANIN_1 a", {"IO|ANIN_1|a"}},
        {u"ANOUT_1 a", {"IO|ANOUT_1|a"}},
        {u"BININ_1 a", {"IO|BININ_1|a"}},
        {u"BINOUT_1 a", {"IO|BINOUT_1|a"}},
        {u"ZTQXProcParam_1 a", {"ZTQXProcParam|ZTQXProcParam_1|a"}},
    });
}

TEST_F(EditedLineTest, NoBlankIsNeededBehindAnUnderscoreKey) {
    Expect({
        {u"IN_12Pumpe", {"IO|IN_12|Pumpe"}},
        {u"OUT_1:x", {"IO|OUT_1|:x"}},
        {u"ANOUT_7V", {"IO|ANOUT_7|V"}},
        {u"ZTQXProcParam_5_6", {"ZTQXProcParam|ZTQXProcParam_5|_6"}},
    });
}

TEST_F(EditedLineTest, DigitsBeyondTheLimitGoToTheText) {
    Expect({
        {u"IN_12345 Tor", {"IO|IN_1234|5 Tor"}},
        {u"OUT_12345", {"IO|OUT_1234|5"}},
        {u"ANIN_123 a", {"IO|ANIN_12|3 a"}},
        {u"ANOUT_123 a", {"IO|ANOUT_12|3 a"}},
        {u"BININ_123 a", {"IO|BININ_12|3 a"}},
        {u"BINOUT_123 a", {"IO|BINOUT_12|3 a"}},
        {u"ZTQXProcParam_1234 a", {"ZTQXProcParam|ZTQXProcParam_123|4 a"}},
    });
}

TEST_F(EditedLineTest, AnUnderscoreKeyAloneStoresAnEmptyText) {
    Expect({
        {u"IN_5", {"IO|IN_5|"}},
        {u"OUT_1234   ", {"IO|OUT_1234|"}},
        {u"ZTQXProcParam_17", {"ZTQXProcParam|ZTQXProcParam_17|"}},
    });
}

TEST_F(EditedLineTest, TextKeysEndAtTheBlank) {
    Expect({
        {u"FlagText1234 a b", {"Flag|FlagText1234|a b"}},
        {u"FlagText123 a", {"Flag|FlagText123|a"}},
        {u"NoticeText123 a", {"Notice|NoticeText123|a"}},
        {u"CounterText12 a", {"Counter|CounterText12|a"}},
        {u"NoticeText12 a", {"Notice|NoticeText12|a"}},
        {u"TimerText12 a", {"Timer|TimerText12|a"}},
        {u"FlagText12 a", {"Flag|FlagText12|a"}},
        {u"CounterText1 a", {"Counter|CounterText1|a"}},
        {u"NoticeText1 a", {"Notice|NoticeText1|a"}},
        {u"TimerText1 a", {"Timer|TimerText1|a"}},
        {u"FlagText1    a", {"Flag|FlagText1|a"}},
    });
}

TEST_F(EditedLineTest, TextKeysWithoutABlankOrWithTooManyDigitsArePassedOver) {
    Expect({
        {u"FlagText5", {}},
        {u"FlagText5 ", {}},
        {u"FlagText5x a", {}},
        {u"FlagText12345 a", {}},
        {u"NoticeText1234 a", {}},
        {u"CounterText123 a", {}},
        {u"TimerText123 a", {}},
        {u"TimerText a", {}},
    });
}

TEST_F(EditedLineTest, WeldingChannelsEndAtTheBlank) {
    Expect({
        {u"Start11 a b", {"A10TP|Start11|a b"}},
        {u"Weld12   a", {"A10TP|Weld12|a"}},
        {u"CraterChannel13 a", {"A10TP|CraterChannel13|a"}},
        {u"Start11", {}},
        {u"Weld112 a", {}},
        {u"Start1 a", {}},
        {u"CraterChannel1x a", {}},
    });
}

TEST_F(EditedLineTest, OtherWordsArePassedOver) {
    Expect({
        {u"Signals of the cell", {}},
        {u"IN_", {}},
        {u"IN_x5", {}},
        {u"in_5 a", {}},
        {u"XIN_5 a", {}},
        {u"17 a", {}},
        {u"E5 a", {}},
        {u"|EMPTY|", {}},
    });
}

TEST_F(EditedLineTest, BlanksAroundALineGo) {
    Expect({
        {u"   IN_5   a  b  ", {"IO|IN_5|a  b"}},
        {u"  FlagText5 a ", {"Flag|FlagText5|a"}},
    });
}

// A tab is no blank when the line is trimmed and has become four by the time it is tested.
TEST_F(EditedLineTest, TabsAtTheEndsOfALine) {
    Expect({
        {u"\tIN_5 a", {}},
        {u"\tFlagText5 a", {}},
        {u"\tStart11 a", {"A10TP|Start11|a"}},
        {u"Weld11\t", {}},
        {u"IN_5\ta\tb", {"IO|IN_5|a    b"}},
        {u"FlagText5\ta", {"Flag|FlagText5|a"}},
    });
}

// The blanks that the tab became are enough for the pattern, and are gone when the key's end is
// looked for.
TEST_F(EditedTextTest, ATextKeyWithNothingButATabBehindItRaisesInvalidProcedureCall) {
    Text sText = u"IN_5 a\r\nFlagText5\t\r\nIN_6 b";
    EXPECT_EQ(Raised([&] { ApplyEditedText(sText); }), ErrorNumber::InvalidProcedureCall);
    EXPECT_TRUE(g_Connection);
    CloseDatabase();
    EXPECT_EQ(Stored(), Rows{"IO|IN_5|a"});
}

TEST_F(EditedLineTest, UmlautsAreSpelledOut) {
    Expect({
        {u"IN_5 Füllstand groß", {"IO|IN_5|Fuellstand gross"}},
        {u"FlagText5 ÖL", {"Flag|FlagText5|OeL"}},
        {u"Weld11 Übergang", {"A10TP|Weld11|Uebergang"}},
    });
}

TEST_F(EditedLineTest, TheEmptyMarkerIsATextLikeAnyOther) {
    Expect({{u"IN_5 |EMPTY|", {"IO|IN_5||EMPTY|"}},
            {u"FlagText5 |EMPTY|", {"Flag|FlagText5||EMPTY|"}}});
}

// ---- The customer's keys ----

TEST_F(EditedTextTest, CustomerTextToStandardSwapsEveryCustomerKey) {
    EXPECT_EQ(
        CustomerTextToStandard(Lines({u"A1 a", u"E2 b", u"BINA3 c", u"BINE4 d", u"ANAA5 e",
                                      u"ANAE6 f", u"P7 g", u"M8 h", u"I9 i", u"F10 j", u"T11 k"})),
        Lines({u"OUT_1 a", u"IN_2 b", u"BINOUT_3 c", u"BININ_4 d", u"ANOUT_5 e", u"ANIN_6 f",
               u"ZTQXProcParam_7 g", u"NoticeText8 h", u"CounterText9 i", u"FlagText10 j",
               u"TimerText11 k"}));
}

TEST_F(EditedTextTest, CustomerTextToStandardTrimsLinesAndDropsEmptyOnes) {
    EXPECT_EQ(CustomerTextToStandard(u"\r\n  E5 a  \r\n\r\n\r\n other   line \r\nE6  b"),
              u"IN_5 a\r\nother   line\r\nIN_6  b\r\n");
    EXPECT_EQ(CustomerTextToStandard(u""), u"");
}

TEST_F(EditedTextTest, CustomerTextToStandardLeavesOtherLinesAsTheyAre) {
    const Text sText =
        Lines({u"IN_5 a", u"Start11 b", u"E a", u"e5 a", u"EA5 a", u"ANA1 a", u"\tE5 a", u"5 a"});
    EXPECT_EQ(CustomerTextToStandard(sText), sText);
}

TEST_F(EditedTextTest, ALineOfBlanksBecomesAnEmptyLine) {
    EXPECT_EQ(CustomerTextToStandard(u"E5 a\r\n   \r\nE6 b"), u"IN_5 a\r\n\r\nIN_6 b\r\n");
}

TEST_F(EditedTextTest, ACustomerInstallationTakesBothForms) {
    BecomeCustomer();
    EXPECT_EQ(Applied({u"E5 a", u"IN_6 b", u"T3 Ofen", u"TimerText4 c", u"P1 d",
                       u"ZTQXProcParam_2 e", u"Start11 f", u"E12345 g"}),
              (Rows{"A10TP|Start11|f", "IO|IN_1234|5 g", "IO|IN_5|a", "IO|IN_6|b",
                    "Timer|TimerText3|Ofen", "Timer|TimerText4|c",
                    "ZTQXProcParam|ZTQXProcParam_1|d", "ZTQXProcParam|ZTQXProcParam_2|e"}));
}

TEST_F(EditedTextTest, ACustomersTextComesBackInStandardForm) {
    BecomeCustomer();
    Text sText = u"E5 a\r\nx";
    ApplyEditedText(sText);
    EXPECT_EQ(sText, u"IN_5 a\r\nx\r\n");
    EXPECT_EQ(g_sLastExport, sText);
}

TEST_F(EditedTextTest, AStandardTextComesBackAsItWas) {
    Text sText = u" IN_5 \xFC\r\n\r\nE5 a";
    ApplyEditedText(sText);
    EXPECT_EQ(sText, u" IN_5 \xFC\r\n\r\nE5 a");
    EXPECT_EQ(g_sLastExport, sText);
    EXPECT_EQ(Stored(), Rows{"IO|IN_5|ue"});
}

// ---- The course ----

TEST_F(EditedTextTest, TheUnchangedDumpDoesNothing) {
    StoreOneOfEachClass();
    Text sText = BuildLongTextDump();
    ForwardingEngine engine;
    EXPECT_EQ(StepsOf([&] { ApplyEditedText(sText); }), 0);
    EXPECT_EQ(engine.operations, std::vector<Text>{});
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 0);
    EXPECT_EQ(Stored(), Joined(OldSignals(), OldWelding()));
}

TEST_F(EditedTextTest, TheTextLastAppliedDoesNothingAgain) {
    Text sText = u"IN_5 a";
    ApplyEditedText(sText);
    db.Execute("DELETE FROM Messages; DELETE FROM Items;");
    ApplyEditedText(sText);
    EXPECT_EQ(Stored(), Rows{});
}

TEST_F(EditedTextTest, AtStartAnEmptyTextDoesNothing) {
    StoreOneOfEachClass();
    EXPECT_EQ(Applied({}), Joined(OldSignals(), OldWelding()));
}

TEST_F(EditedTextTest, AnEmptyBoxDeletesEveryLongText) {
    StoreOneOfEachClass();
    BuildLongTextDump();
    Text sText;
    ApplyEditedText(sText);
    EXPECT_EQ(Stored(), Rows{});
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 1);
}

TEST_F(EditedTextTest, AllClassesAreDeletedWhateverTheTextHolds) {
    StoreOneOfEachClass();
    EXPECT_EQ(Applied({u"IN_5 a"}), Rows{"IO|IN_5|a"});
}

// Their keys begin with no class's prefix.
TEST_F(EditedTextTest, BareNumbersOfProcessParametersAreNotDeleted) {
    Store("ZTQXProcParam", "17", "old");
    EXPECT_EQ(Applied({u"IN_5 a"}), (Rows{"IO|IN_5|a", "ZTQXProcParam|17|old"}));
}

TEST_F(EditedTextTest, ADumpThatIsAppliedAgainLeavesTheSameTexts) {
    StoreOneOfEachClass();
    Text sText = BuildLongTextDump();
    sText += u"IN_1 new\r\n";
    ApplyEditedText(sText);
    EXPECT_EQ(Stored(), Joined(Joined(OldSignals(), OldWelding()), {"IO|IN_1|new"}));
}

TEST_F(EditedTextTest, TheClassesAreDeletedInTheirOrderWithAStepForEachSignalClass) {
    ForwardingEngine engine;
    std::vector<std::pair<Text, int>> deletes;
    engine.before = [&](const Text& sOperation) {
        const std::size_t nLike = sOperation.find(u"Like '");
        if (sOperation.starts_with(u"open DELETE"))
            deletes.emplace_back(sOperation.substr(nLike + 6), Steps());
    };
    Text sText = u"x";
    const int nSteps = StepsOf([&] { ApplyEditedText(sText); });
    EXPECT_EQ(deletes, (std::vector<std::pair<Text, int>>{{u"IN_%'))", 0},
                                                          {u"OUT_%'))", 1},
                                                          {u"NoticeText%'))", 2},
                                                          {u"CounterText%'))", 3},
                                                          {u"FlagText%'))", 4},
                                                          {u"TimerText%'))", 5},
                                                          {u"ANIN_%'))", 6},
                                                          {u"ANOUT_%'))", 7},
                                                          {u"BININ_%'))", 8},
                                                          {u"BINOUT_%'))", 9},
                                                          {u"ZTQXProcParam_%'))", 10},
                                                          {u"Start1%'))", 11},
                                                          {u"Weld1%'))", 11},
                                                          {u"CraterChannel1%'))", 11}}));
    EXPECT_EQ(nSteps, 11 + 1);
}

TEST_F(EditedTextTest, OneStepALineRecognisedOrNotAndNoneForAnEmptyOne) {
    Text sText = u"IN_5 a\r\n\r\nno key\r\n   \r\nFlagText5\r\n";
    EXPECT_EQ(StepsOf([&] { ApplyEditedText(sText); }), 11 + 4);
}

TEST_F(EditedTextTest, TheDatabaseIsClosedBeforeTheProcessIsTold) {
    ForwardingEngine engine;
    int nCloses = 0;
    engine.before = [&](const Text& sOperation) {
        if (sOperation != u"close connection") return;
        ++nCloses;
        EXPECT_EQ(machine.closedLibrary.nRefreshes, 0);
    };
    Applied({u"IN_5 a"});
    EXPECT_EQ(engine.Count(u"open connection"), 1);
    EXPECT_EQ(nCloses, 1);
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 1);
    EXPECT_FALSE(g_Connection);
}

// The wipe has run by then, and nobody says a word.
TEST_F(EditedTextTest, AStoreThatFailsLosesItsEntry) {
    Store("IO", "IN_5", "a");
    Store("IO", "IN_6", "b");
    ForwardingEngine engine;
    engine.FailAt(u"open SELECT Items.Key_id FROM ITEMS", 1);
    EXPECT_EQ(Applied({u"IN_5 a", u"IN_6 b"}), Rows{"IO|IN_6|b"});
}

TEST_F(EditedTextTest, WithoutADatabaseTheTextCountsAsAppliedAllTheSame) {
    db.RemoveFile();
    Text sText = u"IN_5 a";
    EXPECT_EQ(StepsOf([&] { ApplyEditedText(sText); }), 11 + 1);
    EXPECT_EQ(g_sLastExport, u"IN_5 a");
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 1);
}

TEST_F(EditedTextTest, TheSharedLineIsNotTouched) {
    g_sLine = u"line";
    g_vSymbol = u"symbol";
    g_vLongName = u"name";
    Applied({u"IN_5 a"});
    EXPECT_EQ(g_sLine, u"line");
    EXPECT_EQ(g_vSymbol, u"symbol");
    EXPECT_EQ(g_vLongName, u"name");
}

// The lines are counted with 16 bits, and counted after the wipe.
TEST_F(EditedTextTest, MoreThan32767LinesRaiseOverflowWhenAllIsDeleted) {
    Store("IO", "IN_5", "a");
    Text sText;
    for (int n = 0; n < 32768; ++n)
        sText += u"x\r\n";
    EXPECT_EQ(Raised([&] { ApplyEditedText(sText); }), ErrorNumber::Overflow);
    EXPECT_TRUE(g_Connection);
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 0);
    EXPECT_EQ(g_sLastExport, u"");
    CloseDatabase();
    EXPECT_EQ(Stored(), Rows{});
}

// The customer's keys are turned when the wipe has run.
TEST_F(EditedTextTest, MoreThan32767LinesOfACustomerRaiseWhenAllIsDeletedToo) {
    BecomeCustomer();
    Store("IO", "IN_5", "a");
    Text sText;
    for (int n = 0; n < 32768; ++n)
        sText += u"x\r\n";
    const Text sBefore = sText;
    EXPECT_EQ(Raised([&] { ApplyEditedText(sText); }), ErrorNumber::Overflow);
    EXPECT_EQ(sText, sBefore);
    CloseDatabase();
    EXPECT_EQ(Stored(), Rows{});
}

TEST_F(EditedTextTest, AsManyAs32767LinesAreApplied) {
    Text sText = u"IN_5 a\r\n";
    for (int n = 0; n < 32765; ++n)
        sText += u"x\r\n";
    sText += u"IN_6 b";
    ApplyEditedText(sText);
    EXPECT_EQ(Stored(), (Rows{"IO|IN_5|a", "IO|IN_6|b"}));
}

TEST_F(EditedTextTest, ALineOfMoreThan32767CharactersRaisesOverflow) {
    Text sText = u"IN_5 a\r\nIN_6 " + Text(32763, u'x') + u"\r\nIN_7 b";
    EXPECT_EQ(Raised([&] { ApplyEditedText(sText); }), ErrorNumber::Overflow);
    EXPECT_TRUE(g_Connection);
    CloseDatabase();
    EXPECT_EQ(Stored(), Rows{"IO|IN_5|a"});
}

// ---- Beside the import of a file ----

TEST_F(EditedTextTest, TheSameLinesMeanSomethingElseInAFile) {
    const std::vector<std::string> lines{"IN_12Pumpe", "IN_12345 x",         "TimerText5",
                                         "OUT_5",      "ZTQXProcParam_17 y", "18 z"};
    PutFile(lines);
    TextIntoDb(kFile);
    EXPECT_EQ(Stored(),
              (Rows{"IO|OUT_5||EMPTY|", "Timer|TimerText5||EMPTY|", "ZTQXProcParam|18|z"}));
    db.Execute("DELETE FROM Messages; DELETE FROM Items;");
    std::vector<Text> texts;
    for (const std::string& line : lines)
        texts.emplace_back(line.begin(), line.end());
    EXPECT_EQ(Applied(texts), (Rows{"IO|IN_1234|5 x", "IO|IN_12|Pumpe", "IO|OUT_5|",
                                    "ZTQXProcParam|ZTQXProcParam_17|y"}));
}

}  // namespace
}  // namespace nomira::testing
