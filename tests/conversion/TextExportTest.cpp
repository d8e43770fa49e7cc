#include "conversion/TextExport.h"

#include "conversion/ConversionFixture.h"
#include "conversion/KeyScheme.h"
#include "conversion/PassObserver.h"
#include "conversion/TextImport.h"
#include "testing/ForwardingEngine.h"
#include "testing/Raised.h"

namespace nomira::testing {
namespace {

class TextExportTest : public ConversionFixture {
  protected:
    Text Inputs() const { return ReadClassRows(u"IO", u"IN_", 0, u"E"); }
    Text Flags() const { return ReadClassRows(u"Flag", u"FlagText", 0, u"F"); }
};

// ---- The rows of one class ----

TEST_F(TextExportTest, ARowIsKeyBlankTextAndCrLf) {
    Store("IO", "IN_12", "Pumpe links");
    EXPECT_EQ(Inputs(), u"IN_12 Pumpe links\r\n");
}

TEST_F(TextExportTest, AnEmptyTextLeavesTheBlankBehindTheKey) {
    Store("IO", "IN_12", "");
    EXPECT_EQ(Inputs(), u"IN_12 \r\n");
}

TEST_F(TextExportTest, RowsComeByNumber) {
    for (const char* sNumber : {"1000", "2", "10", "100", "1", "99", "9", "3", "9999", "11"})
        Store("IO", std::string("IN_") + sNumber, "t");
    EXPECT_EQ(Inputs(),
              u"IN_1 t\r\nIN_2 t\r\nIN_3 t\r\nIN_9 t\r\nIN_10 t\r\nIN_11 t\r\nIN_99 t\r\n"
              u"IN_100 t\r\nIN_1000 t\r\nIN_9999 t\r\n");
}

TEST_F(TextExportTest, LeadingZerosCountAsDigits) {
    Store("IO", "IN_007", "c");
    Store("IO", "IN_10", "b");
    Store("IO", "IN_7", "a");
    EXPECT_EQ(Inputs(), u"IN_7 a\r\nIN_10 b\r\nIN_007 c\r\n");
}

TEST_F(TextExportTest, KeysThatAreNotPrefixAndOneToFourDigitsAreLeftOut) {
    for (const char* sKey : {"IN_", "IN_12345", "IN_5x", "IN_x", "IN_5 ", "INX5", "IN_1_2"})
        Store("IO", sKey, "t");
    Store("IO", "IN_1", "kept");
    EXPECT_EQ(Inputs(), u"IN_1 kept\r\n");
}

TEST_F(TextExportTest, EveryClassTakesUpToFourDigits) {
    Store("Timer", "TimerText123", "t");
    Store("A10TP", "Weld11234", "t");
    EXPECT_EQ(ReadClassRows(u"Timer", u"TimerText", 0, u"T"), u"TimerText123 t\r\n");
    EXPECT_EQ(ReadClassRows(u"A10TP", u"Weld1", 8, u"Weld1"), u"Weld11234 t\r\n");
}

TEST_F(TextExportTest, OnlyTheModuleAndTheLongTextLanguageCount) {
    Store("IO", "IN_1", "kept");
    Store("Other", "IN_2", "of another module");
    StoreSql("IO", "IN_3", "'of another language'", "7");
    EXPECT_EQ(Inputs(), u"IN_1 kept\r\n");
}

TEST_F(TextExportTest, TheEmptyMarkerIsLeftOutIfItIsTheWholeText) {
    Store("IO", "IN_1", "|EMPTY|");
    Store("IO", "IN_2", " |EMPTY|");
    Store("IO", "IN_3", "|EMPTY| ");
    Store("IO", "IN_4", "|empty|");
    EXPECT_EQ(Inputs(), u"IN_2  |EMPTY|\r\nIN_3 |EMPTY| \r\nIN_4 |empty|\r\n");
}

TEST_F(TextExportTest, ANullIsLeftOut) {
    StoreSql("IO", "IN_1", "NULL");
    Store("IO", "IN_2", "kept");
    EXPECT_EQ(Inputs(), u"IN_2 kept\r\n");
}

TEST_F(TextExportTest, TheSizeBoundsNothing) {
    Store("IO", "IN_9999", "t");
    EXPECT_EQ(ReadClassRows(u"IO", u"IN_", 1, u"E"), u"IN_9999 t\r\n");
    EXPECT_EQ(ReadClassRows(u"IO", u"IN_", -1, u"E"), u"IN_9999 t\r\n");
}

TEST_F(TextExportTest, TheCustomerPrefixIsUsedOnACustomerInstallationAlone) {
    Store("IO", "IN_12", "Pumpe");
    BecomeCustomer(u"vw");
    EXPECT_EQ(Inputs(), u"IN_12 Pumpe\r\n");
    BecomeCustomer();
    EXPECT_EQ(Inputs(), u"E12 Pumpe\r\n");
}

TEST_F(TextExportTest, TheSwapTrimsTheRow) {
    Store("IO", "IN_1", "Pumpe  ");
    Store("IO", "IN_2", "");
    EXPECT_EQ(Inputs(), u"IN_1 Pumpe  \r\nIN_2 \r\n");
    BecomeCustomer();
    EXPECT_EQ(Inputs(), u"E1 Pumpe\r\nE2\r\n");
}

TEST_F(TextExportTest, TheReadIsStaticReadOnlyAndHasTheDatabaseToItself) {
    Store("IO", "IN_1", "a");
    ForwardingEngine engine;
    Inputs();
    EXPECT_EQ(engine.operations,
              (std::vector<Text>{u"open connection", u"open " + ExportReadStatement(u"IO", u"IN_"),
                                 u"first", u"field String", u"field KeyString", u"next",
                                 u"close recordset", u"close connection"}));
    EXPECT_EQ(engine.cursor, CursorKind::Static);
    EXPECT_EQ(engine.lock, LockKind::ReadOnly);
    EXPECT_FALSE(g_Connection);
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 0);
}

// ---- Progress ----

TEST_F(TextExportTest, AClassWithoutRowsTakesTheThreeStepsOfTheClearing) {
    EXPECT_EQ(StepsOf([&] { Inputs(); }), 3);
}

struct StepRow {
    std::vector<const char*> keys;
    int nExpected;  // a step per row read, one per even row of each list, three
};

TEST_F(TextExportTest, OneStepARowReadAndOneForEverySecondRowOfAList) {
    const StepRow rows[] = {
        {{"IN_1"}, 1 + 1 + 3},
        {{"IN_1", "IN_2"}, 2 + 1 + 3},
        {{"IN_1", "IN_2", "IN_3"}, 3 + 2 + 3},
        {{"IN_1", "IN_11", "IN_111", "IN_1111"}, 4 + 4 + 3},
        {{"IN_1", "IN_2", "IN_11", "IN_12", "IN_13"}, 5 + 1 + 2 + 3},
        {{"IN_12345", "IN_x"}, 2 + 0 + 3},
    };
    for (const StepRow& row : rows) {
        db.Execute("DELETE FROM Messages; DELETE FROM Items;");
        for (const char* sKey : row.keys)
            Store("IO", sKey, "t");
        EXPECT_EQ(StepsOf([&] { Inputs(); }), row.nExpected) << row.keys.size() << " keys";
    }
}

TEST_F(TextExportTest, RowsThatAreLeftOutTakeAStepToo) {
    Store("IO", "IN_1", "|EMPTY|");
    StoreSql("IO", "IN_2", "NULL");
    EXPECT_EQ(StepsOf([&] { Inputs(); }), 2 + 3);
}

TEST_F(TextExportTest, TheStepOfARowComesBehindItsReading) {
    Store("IO", "IN_1", "a");
    Store("IO", "IN_2", "b");
    ForwardingEngine engine;
    engine.FailAt(u"field KeyString", 2);
    EXPECT_EQ(StepsOf([&] { Inputs(); }), 1);
}

// ---- Failures ----

TEST_F(TextExportTest, WithoutADatabaseTheResultIsEmpty) {
    db.RemoveFile();
    EXPECT_EQ(StepsOf([&] { EXPECT_EQ(Inputs(), u""); }), 0);
    EXPECT_EQ(BuildLongTextDump(), u"");
}

TEST_F(TextExportTest, AFailureOfTheReadGivesAnEmptyResultAndClosesTheDatabase) {
    Store("IO", "IN_1", "a");
    for (const TextView sOperation : {u"open connection", u"open SELECT", u"first", u"field String",
                                      u"field KeyString", u"next"}) {
        ForwardingEngine engine;
        engine.FailAt(Text(sOperation), 1);
        EXPECT_EQ(Inputs(), u"") << Printable(sOperation);
        EXPECT_FALSE(g_Connection);
        EXPECT_EQ(machine.closedLibrary.nRefreshes, 0);
    }
}

// The sort buffers are cleared on the way of success alone.
TEST_F(TextExportTest, RowsOfAFailedReadGoOutWithTheNextClass) {
    Store("IO", "IN_2", "b");
    Store("IO", "IN_1", "a");
    Store("IO", "IN_3", "c");
    Store("Flag", "FlagText1", "f");
    ForwardingEngine engine;
    engine.FailAt(u"next", 2);
    EXPECT_EQ(Inputs(), u"");
    EXPECT_EQ(Flags(), u"FlagText1 f\r\nIN_1 a\r\nIN_2 b\r\n");
    EXPECT_EQ(Flags(), u"FlagText1 f\r\n");
}

// They don't begin with the next class's prefix, so that the swap leaves them as they are.
TEST_F(TextExportTest, RowsOfAFailedReadKeepTheirStandardKeyOnACustomerInstallation) {
    BecomeCustomer();
    Store("IO", "IN_1", "a  ");
    Store("Flag", "FlagText22", "f");
    ForwardingEngine engine;
    engine.FailAt(u"next", 1);
    EXPECT_EQ(Inputs(), u"");
    EXPECT_EQ(Flags(), u"IN_1 a  \r\nF22 f\r\n");
}

TEST_F(TextExportTest, AFailedReadOfTheSameClassDoublesItsRows) {
    Store("IO", "IN_1", "a");
    ForwardingEngine engine;
    engine.FailAt(u"next", 1);
    EXPECT_EQ(Inputs(), u"");
    EXPECT_EQ(Inputs(), u"IN_1 a\r\nIN_1 a\r\n");
}

TEST_F(TextExportTest, AFailureOfTheCloseComesTooLateToMatter) {
    Store("IO", "IN_1", "a");
    ForwardingEngine engine;
    engine.FailAt(u"close recordset", 1);
    EXPECT_EQ(Inputs(), u"IN_1 a\r\n");
    EXPECT_EQ(Inputs(), u"IN_1 a\r\n");
}

// A failure while the rows are being appended leaves those that stand in the result, and the
// buffers as they are.
TEST_F(TextExportTest, AFailureWhileAppendingLeavesWhatIsThere) {
    Store("IO", "IN_1", "a");
    Store("IO", "IN_2", "b");
    Store("IO", "IN_11", "c");
    int nCalls = 0;
    view.onPendingEvents = [&nCalls] {
        if (++nCalls == 3 + 2) Raise(ErrorNumber::ObjectNotSet);  // at the row of two digits
    };
    StepsOf([&] { EXPECT_EQ(Inputs(), u"IN_1 a\r\nIN_2 b\r\nIN_11 c\r\n"); });
    EXPECT_EQ(Flags(), u"IN_1 a\r\nIN_2 b\r\nIN_11 c\r\n");
}

TEST_F(TextExportTest, AFailureWhileClearingKeepsTheListsThatAreNotYetCleared) {
    Store("IO", "IN_1", "a");
    Store("IO", "IN_11", "b");
    Store("IO", "IN_111", "c");
    int nCalls = 0;
    view.onPendingEvents = [&nCalls] {
        if (++nCalls == 3 + 3 + 2) Raise(ErrorNumber::ObjectNotSet);  // behind the second list
    };
    StepsOf([&] { Inputs(); });
    EXPECT_EQ(Flags(), u"IN_111 c\r\n");
}

// An event of the pendant form can run inside a pass; one that exports too must do no harm.
TEST_F(TextExportTest, AnExportInsideAnExportDoesNoHarm) {
    for (int n = 1; n <= 9; ++n)
        Store("IO", "IN_" + std::to_string(n), "t");
    int nCalls = 0;
    view.onPendingEvents = [this, &nCalls] {
        if (++nCalls == 11) Inputs();
    };
    StepsOf([&] { EXPECT_TRUE(Inputs().starts_with(u"IN_1 t\r\n")); });
    EXPECT_GT(nCalls, 11);
}

// ---- The whole dump ----

TEST_F(TextExportTest, AnEmptyDatabaseGivesAnEmptyDump) {
    g_sLastExport = u"old";
    EXPECT_EQ(BuildLongTextDump(), u"");
    EXPECT_EQ(g_sLastExport, u"");
}

constexpr TextView kDumpOfEachClass =
    u"IN_900 old\r\nOUT_900 old\r\nNoticeText90 old\r\nCounterText9 old\r\nFlagText900 old\r\n"
    u"TimerText9 old\r\nANIN_9 old\r\nANOUT_9 old\r\nBININ_9 old\r\nBINOUT_9 old\r\n"
    u"ZTQXProcParam_90 old\r\nStart19 old\r\nWeld19 old\r\nCraterChannel19 old\r\n";

TEST_F(TextExportTest, TheDumpHasTheClassesInTheirOrder) {
    StoreOneOfEachClass();
    EXPECT_EQ(BuildLongTextDump(), kDumpOfEachClass);
    EXPECT_EQ(g_sLastExport, kDumpOfEachClass);
}

TEST_F(TextExportTest, TheDumpHasCustomerKeysExceptForTheWeldingChannels) {
    BecomeCustomer();
    StoreOneOfEachClass();
    EXPECT_EQ(BuildLongTextDump(),
              u"E900 old\r\nA900 old\r\nM90 old\r\nI9 old\r\nF900 old\r\nT9 old\r\nANAE9 old\r\n"
              u"ANAA9 old\r\nBINE9 old\r\nBINA9 old\r\nP90 old\r\nStart19 old\r\nWeld19 old\r\n"
              u"CraterChannel19 old\r\n");
}

TEST_F(TextExportTest, TheDumpOpensAndClosesTheDatabaseForEachClass) {
    ForwardingEngine engine;
    BuildLongTextDump();
    EXPECT_EQ(engine.Count(u"open connection"), 14);
    EXPECT_EQ(engine.Count(u"close connection"), 14);
}

TEST_F(TextExportTest, ADumpGoesOnOverAClassThatFails) {
    StoreOneOfEachClass();
    ForwardingEngine engine;
    engine.FailAt(u"open SELECT", 1);
    EXPECT_EQ(BuildLongTextDump(), kDumpOfEachClass.substr(kDumpOfEachClass.find(u"OUT_")));
}

TEST_F(TextExportTest, BareNumbersOfProcessParametersAreNotExported) {
    Store("ZTQXProcParam", "17", "t");
    EXPECT_EQ(BuildLongTextDump(), u"");
}

// ---- The file ----

TEST_F(TextExportTest, TheFileIsTheDumpAndOneMoreCrLf) {
    StoreOneOfEachClass();
    DbIntoText(kFile);
    // The directory isn't there yet.
    EXPECT_FALSE(machine.files.Exists(kFile));
    machine.files.PutDirectory(u"C:\\data");
    DbIntoText(kFile);
    std::string expected;
    for (const char16_t c : kDumpOfEachClass)
        expected += static_cast<char>(c);
    EXPECT_EQ(machine.files.Bytes(kFile), expected + "\r\n");
    EXPECT_EQ(machine.files.OpenFiles(), 0);
    EXPECT_EQ(g_sLastExport, kDumpOfEachClass);
}

TEST_F(TextExportTest, TheFileIsInTheSystemsCodePage) {
    // Jet 3 has no character that the page lacks.
    const bool bBeyond = db.Format() != StoreFormat::Jet3;
    StoreSql("IO", "IN_1",
             bBeyond ? "'\xC2\xB5m \xE2\x82\xAC \xCE\xA9'" : "'\xC2\xB5m \xE2\x82\xAC'");
    machine.files.PutDirectory(u"C:\\data");
    DbIntoText(kFile);
    EXPECT_EQ(machine.files.Bytes(kFile),
              bBeyond ? "IN_1 \xB5m \x80 ?\r\n\r\n" : "IN_1 \xB5m \x80\r\n\r\n");
}

TEST_F(TextExportTest, AnExistingFileIsReplacedWhole) {
    Store("IO", "IN_1", "a");
    machine.files.Put(kFile, "a much longer text that was here before");
    DbIntoText(kFile);
    EXPECT_EQ(machine.files.Bytes(kFile), "IN_1 a\r\n\r\n");
}

TEST_F(TextExportTest, AnEmptyDumpLeavesTheFileAndItsAttributesAlone) {
    machine.files.Put(kFile, "old");
    machine.files.SetAttr(kFile, AttributeReadOnly | AttributeHidden);
    DbIntoText(kFile);
    EXPECT_EQ(machine.files.Bytes(kFile), "old");
    EXPECT_EQ(machine.files.GetAttr(kFile), AttributeReadOnly | AttributeHidden);
    DbIntoText(u"C:\\data\\new.txt");
    EXPECT_FALSE(machine.files.Exists(u"C:\\data\\new.txt"));
}

TEST_F(TextExportTest, AttributesOtherThanTheArchiveBitAloneAreLost) {
    Store("IO", "IN_1", "a");
    for (const std::uint16_t nAttributes :
         {AttributeNormal, AttributeReadOnly, AttributeHidden, AttributeSystem, AttributeArchive}) {
        for (const std::uint16_t nArchive : {AttributeNormal, AttributeArchive}) {
            machine.files.Put(kFile, "old");
            machine.files.SetAttr(kFile, nAttributes | nArchive);
            DbIntoText(kFile);
            EXPECT_EQ(machine.files.Bytes(kFile), "IN_1 a\r\n\r\n") << nAttributes;
            EXPECT_EQ(machine.files.GetAttr(kFile), AttributeArchive) << nAttributes;
        }
    }
}

TEST_F(TextExportTest, ATargetThatCannotBeOpenedLosesItsAttributesAllTheSame) {
    Store("IO", "IN_1", "a");
    machine.files.Put(kFile, "old");
    machine.files.SetAttr(kFile, AttributeReadOnly);
    machine.files.FailOpen(kFile, ErrorNumber::PermissionDenied);
    DbIntoText(kFile);
    EXPECT_EQ(machine.files.Bytes(kFile), "old");
    EXPECT_EQ(machine.files.GetAttr(kFile), AttributeArchive);
    EXPECT_TRUE(machine.desktop.boxes.empty());
}

TEST_F(TextExportTest, ATargetThatIsADirectoryOrNowhereIsPassedOver) {
    Store("IO", "IN_1", "a");
    machine.files.PutDirectory(u"C:\\data");
    for (const TextView sTarget :
         {u"C:\\data", u"C:\\data\\", u"C:\\nowhere\\x.txt", u"Q:\\x", u""})
        EXPECT_EQ(Raised([&] { DbIntoText(sTarget); }), std::nullopt) << Printable(sTarget);
}

// The open alone is guarded.
TEST_F(TextExportTest, ADiskThatRunsFullRaisesOutOfTheExport) {
    Store("IO", "IN_1", "a");
    machine.files.Put(kFile, "old");
    machine.files.FailWrite(kFile, ErrorNumber::DiskFull);
    EXPECT_EQ(Raised([&] { DbIntoText(kFile); }), ErrorNumber::DiskFull);
    EXPECT_EQ(machine.files.OpenFiles(), 0);
}

// ---- Round trips ----

TEST_F(TextExportTest, AStandardFileLosesItsProcessParametersWhenItIsImportedAgain) {
    StoreOneOfEachClass();
    machine.files.PutDirectory(u"C:\\data");
    DbIntoText(kFile);
    ClearDbForTextFile(kFile);
    TextIntoDb(kFile);
    Rows expected = Joined(OldSignals(), OldWelding());
    std::erase(expected, "ZTQXProcParam|ZTQXProcParam_90|old");
    EXPECT_EQ(Stored(), expected);
}

TEST_F(TextExportTest, ACustomerFileComesBackWhole) {
    BecomeCustomer();
    StoreOneOfEachClass();
    machine.files.PutDirectory(u"C:\\data");
    DbIntoText(kFile);
    ClearDbForTextFile(kFile);
    TextIntoDb(kFile);
    EXPECT_EQ(Stored(), Joined(OldSignals(), OldWelding()));
}

TEST_F(TextExportTest, EntriesMarkedEmptyAreLostOnTheWayThroughAFile) {
    Store("IO", "IN_1", "|EMPTY|");
    Store("IO", "IN_2", "b");
    machine.files.PutDirectory(u"C:\\data");
    DbIntoText(kFile);
    ClearDbForTextFile(kFile);
    TextIntoDb(kFile);
    EXPECT_EQ(Stored(), Rows{"IO|IN_2|b"});
}

TEST_F(TextExportTest, ARowWithTooManyDigitsForTheImportIsLostOnTheWayThroughAFile) {
    Store("Timer", "TimerText123", "t");
    Store("Timer", "TimerText12", "t");
    machine.files.PutDirectory(u"C:\\data");
    DbIntoText(kFile);
    ClearDbForTextFile(kFile);
    TextIntoDb(kFile);
    EXPECT_EQ(Stored(), Rows{"Timer|TimerText12|t"});
}

// ---- Observers ----

struct ExportObserved : PassObserver {
    std::vector<Text> happened;
    void RowExported(TextView sKey, TextView sText) override {
        happened.push_back(Text(sKey) + u"|" + Text(sText));
    }
    void RowLeftOut(TextView sKey, TextView sText) override {
        happened.push_back(u"left out " + Text(sKey) + u"|" + Text(sText));
    }
};

TEST_F(TextExportTest, AnObserverIsToldOfEachRowInStandardForm) {
    BecomeCustomer();
    Store("IO", "IN_1", "a");
    Store("IO", "IN_2", "|EMPTY|");
    Store("IO", "IN_12345", "c");
    StoreSql("IO", "IN_4", "NULL");
    ExportObserved observed;
    SetPassObserver(&observed);
    EXPECT_EQ(Inputs(), u"E1 a\r\n");
    std::sort(observed.happened.begin(), observed.happened.end());
    EXPECT_EQ(observed.happened, (std::vector<Text>{u"IN_1|a", u"left out IN_12345|c",
                                                    u"left out IN_2||EMPTY|", u"left out IN_4|"}));
}

}  // namespace
}  // namespace nomira::testing
