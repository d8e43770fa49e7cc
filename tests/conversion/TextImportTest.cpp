#include "conversion/TextImport.h"

#include <map>

#include "conversion/ConversionFixture.h"
#include "conversion/PassObserver.h"
#include "testing/ForwardingEngine.h"
#include "testing/ForwardingPorts.h"
#include "testing/Raised.h"

namespace nomira::testing {
namespace {

class TextImportTest : public ConversionFixture {
  protected:
    // What the database holds after the lines were imported into it.
    Rows Imported(const std::vector<std::string>& lines) {
        PutFile(lines);
        TextIntoDb(kFile);
        return Stored();
    }
    // What the database holds after the lines were imported with the wipe.
    Rows Overwritten(const std::vector<std::string>& lines) {
        PutFile(lines);
        ClearDbForTextFile(kFile);
        TextIntoDb(kFile);
        return Stored();
    }
};

// ---- The line forms ----

struct LineForm {
    std::string sPrefix;        // as the file has it
    std::string sStoredPrefix;  // as the database has it
    std::string sModule;
    int nMaxDigits;
};

const std::vector<LineForm> kStandardForms{
    {"IN_", "IN_", "IO", 4},
    {"OUT_", "OUT_", "IO", 4},
    {"ANIN_", "ANIN_", "IO", 2},
    {"ANOUT_", "ANOUT_", "IO", 2},
    {"BININ_", "BININ_", "IO", 2},
    {"BINOUT_", "BINOUT_", "IO", 2},
    {"", "", "ZTQXProcParam", 3},
    {"NoticeText", "NoticeText", "Notice", 3},
    {"CounterText", "CounterText", "Counter", 2},
    {"FlagText", "FlagText", "Flag", 4},
    {"TimerText", "TimerText", "Timer", 2},
    {"Start1", "Start1", "A10TP", 1},
    {"Weld1", "Weld1", "A10TP", 1},
    {"CraterChannel1", "CraterChannel1", "A10TP", 1},
};

const std::vector<LineForm> kCustomerForms{
    {"E", "IN_", "IO", 4},
    {"A", "OUT_", "IO", 4},
    {"ANAE", "ANIN_", "IO", 2},
    {"ANAA", "ANOUT_", "IO", 2},
    {"BINE", "BININ_", "IO", 2},
    {"BINA", "BINOUT_", "IO", 2},
    {"P", "ZTQXProcParam_", "ZTQXProcParam", 3},
    {"M", "NoticeText", "Notice", 3},
    {"I", "CounterText", "Counter", 2},
    {"F", "FlagText", "Flag", 4},
    {"T", "TimerText", "Timer", 2},
    {"Start1", "Start1", "A10TP", 1},
    {"Weld1", "Weld1", "A10TP", 1},
    {"CraterChannel1", "CraterChannel1", "A10TP", 1},
};

class LineFormTest : public TextImportTest {
  protected:
    // Each form with one digit up to one too many: the last line is passed over.
    void ExpectForms(const std::vector<LineForm>& forms) {
        Rows expected;
        std::vector<std::string> lines;
        for (const LineForm& form : forms) {
            std::string sNumber;
            for (int nDigits = 1; nDigits <= form.nMaxDigits + 1; ++nDigits) {
                sNumber += static_cast<char>('0' + nDigits);
                lines.push_back(form.sPrefix + sNumber + " Name of it");
                if (nDigits <= form.nMaxDigits)
                    expected.push_back(form.sModule + "|" + form.sStoredPrefix + sNumber +
                                       "|Name of it");
            }
        }
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(Imported(lines), expected);
    }
};

TEST_F(LineFormTest, EveryStandardFormIsStoredUpToItsDigits) {
    ExpectForms(kStandardForms);
}

TEST_F(LineFormTest, EveryCustomerFormIsStoredInStandardFormUpToItsDigits) {
    BecomeCustomer();
    ExpectForms(kCustomerForms);
}

TEST_F(LineFormTest, AnotherCustomerReadsTheStandardForms) {
    BecomeCustomer(u"vw");
    ExpectForms(kStandardForms);
}

TEST_F(TextImportTest, AStandardInstallationReadsNoCustomerKeys) {
    std::vector<std::string> lines;
    for (const LineForm& form : kCustomerForms)
        if (form.sPrefix != form.sStoredPrefix) lines.push_back(form.sPrefix + "5 Pumpe");
    EXPECT_EQ(lines.size(), 11U);
    EXPECT_EQ(Imported(lines), Rows{});
}

TEST_F(TextImportTest, ACustomerInstallationReadsNoStandardKeys) {
    BecomeCustomer();
    std::vector<std::string> lines{"ZTQXProcParam_17 Pumpe"};
    for (const LineForm& form : kStandardForms)
        if (form.sModule != "A10TP") lines.push_back(form.sPrefix + "5 Pumpe");
    EXPECT_EQ(lines.size(), 12U);
    EXPECT_EQ(Imported(lines), Rows{});
}

TEST_F(TextImportTest, AStandardProcessParameterIsKnownByItsBareNumberAlone) {
    EXPECT_EQ(Imported({"17 Pumpe", "ZTQXProcParam_18 Pumpe"}), Rows{"ZTQXProcParam|17|Pumpe"});
}

TEST_F(TextImportTest, TheNumberIsKeptAsItsDigitsWereRead) {
    EXPECT_EQ(Imported({"IN_007 a", "IN_7 b", "IN_0 c", "IN_9999 d"}),
              (Rows{"IO|IN_007|a", "IO|IN_0|c", "IO|IN_7|b", "IO|IN_9999|d"}));
}

// ---- What makes a key ----

TEST_F(TextImportTest, WhatIsNoKeyIsPassedOver) {
    const std::vector<std::string> lines{"",
                                         " ",
                                         "    ",
                                         "\t",
                                         "; a comment",
                                         "IN_ 5 text",
                                         "in_5 text",
                                         "IN_5: text",
                                         "IN_5Pump text",
                                         "IN_12345 text",
                                         "IN_x text",
                                         "XIN_5 text",
                                         "TimerText123",
                                         "Start112 text",
                                         "Start1 text",
                                         "1234 text",
                                         "17: text",
                                         "Pump IN_5",
                                         "ANIN_123 text",
                                         "|EMPTY|"};
    EXPECT_EQ(Imported(lines), Rows{});
}

TEST_F(TextImportTest, LinesMayComeInAnyOrderAmongOthers) {
    EXPECT_EQ(
        Imported({"Signals of the cell", "TimerText3 Kleber", "", "IN_2 Pumpe", "Weld11 Naht",
                  "IN_1 Tor"}),
        (Rows{"A10TP|Weld11|Naht", "IO|IN_1|Tor", "IO|IN_2|Pumpe", "Timer|TimerText3|Kleber"}));
}

TEST_F(TextImportTest, TheLaterOfTwoLinesWithOneKeyStands) {
    EXPECT_EQ(Imported({"IN_5 first", "IN_5 second"}), Rows{"IO|IN_5|second"});
}

TEST_F(TextImportTest, WithoutTheWipeTheFileIsMergedIn) {
    Store("IO", "IN_5", "old");
    Store("IO", "IN_6", "kept");
    EXPECT_EQ(Imported({"IN_5 new", "IN_7 added"}),
              (Rows{"IO|IN_5|new", "IO|IN_6|kept", "IO|IN_7|added"}));
}

// ---- The text behind the key ----

TEST_F(TextImportTest, BlanksAroundTheTextGoAndThoseInsideStay) {
    EXPECT_EQ(Imported({"IN_5    Pumpe  links 2   "}), Rows{"IO|IN_5|Pumpe  links 2"});
}

TEST_F(TextImportTest, AKeyWithoutATextStoresTheEmptyMarkerOverWhatWasThere) {
    Store("IO", "IN_5", "old");
    EXPECT_EQ(Imported({"IN_5", "OUT_6   ", "17", "TimerText3\t"}),
              (Rows{"IO|IN_5||EMPTY|", "IO|OUT_6||EMPTY|", "Timer|TimerText3||EMPTY|",
                    "ZTQXProcParam|17||EMPTY|"}));
}

TEST_F(TextImportTest, ACustomerKeyWithoutATextStoresTheEmptyMarker) {
    BecomeCustomer();
    EXPECT_EQ(Imported({"M3"}), Rows{"Notice|NoticeText3||EMPTY|"});
}

TEST_F(TextImportTest, AWeldingChannelWithoutATextStoresAnEmptyText) {
    EXPECT_EQ(Imported({"Start11", "Weld12 ", "CraterChannel13"}),
              (Rows{"A10TP|CraterChannel13|", "A10TP|Start11|", "A10TP|Weld12|"}));
}

TEST_F(TextImportTest, TheMarkerAsATextMeansTheSameAsNone) {
    EXPECT_EQ(Imported({"IN_5 |EMPTY|"}), Rows{"IO|IN_5||EMPTY|"});
}

TEST_F(TextImportTest, ATabBehindTheKeySeparates) {
    EXPECT_EQ(Imported({"IN_5\tPumpe", "IN_6\t \tTor"}), (Rows{"IO|IN_5|Pumpe", "IO|IN_6|Tor"}));
}

TEST_F(TextImportTest, ATabInsideTheTextBecomesFourBlanks) {
    EXPECT_EQ(Imported({"IN_5 a\tb"}), Rows{"IO|IN_5|a    b"});
}

TEST_F(TextImportTest, WithBlanksAheadTheKeyStaysInTheText) {
    EXPECT_EQ(Imported({"  IN_5 Pumpe", "\tIN_6 Tor", " Weld11 Naht", " IN_7"}),
              (Rows{"A10TP|Weld11|Weld11 Naht", "IO|IN_5|IN_5 Pumpe", "IO|IN_6|IN_6 Tor",
                    "IO|IN_7|IN_7"}));
}

TEST_F(TextImportTest, WithBlanksAheadTheCustomerKeyStaysInTheTextAsItWas) {
    BecomeCustomer();
    EXPECT_EQ(Imported({"  E5 Pumpe"}), Rows{"IO|IN_5|E5 Pumpe"});
}

TEST_F(TextImportTest, TextsOfAnyCharactersAndLengthAreStoredWhole) {
    const std::string sLong(30000, 'x');
    EXPECT_EQ(Imported({"IN_1 it's \"here\" | 100% _ #*?[", "IN_2 " + sLong}),
              (Rows{"IO|IN_1|it's \"here\" | 100% _ #*?[", "IO|IN_2|" + sLong}));
}

// ---- Umlauts ----

TEST_F(TextImportTest, UmlautsAreSpelledOut) {
    EXPECT_EQ(Imported({"IN_1 F\xFCllstand gro\xDF",
                        "IN_2 \xD6L \xC4RGER \xDC"
                        "BER \xF6\xE4"}),
              (Rows{"IO|IN_1|Fuellstand gross", "IO|IN_2|OeL AeRGER UeBER oeae"}));
}

TEST_F(TextImportTest, OtherCharactersAbove127Stay) {
    EXPECT_EQ(Imported({"IN_1 \xB5m \xA7 \xE9\xE8 \x80"}),
              Rows{"IO|IN_1|\xC2\xB5m \xC2\xA7 \xC3\xA9\xC3\xA8 \xE2\x82\xAC"});
}

TEST_F(TextImportTest, NormalizeUmlautsChangesInPlaceAndReturnsTheSameText) {
    const std::map<Text, Text> rows{
        {u"", u""},
        {u"Pumpe", u"Pumpe"},
        {u"öÖäÄüÜß", u"oeOeaeAeueUess"},
        {u"Füllstand groß", u"Fuellstand gross"},
        {u"ÜBER", u"UeBER"},
        {u"ä\tü", u"ae    ue"},
        {u"\t\t", u"        "},
        {u"µ§é^*", u"µ§é^*"},
        {u"ẞ", u"ẞ"},  // the capital sharp s is none of the seven letters
    };
    for (const auto& [sLine, sExpected] : rows) {
        Text sChanged = sLine;
        EXPECT_EQ(&NormalizeUmlauts(sChanged), &sChanged);
        EXPECT_EQ(sChanged, sExpected);
    }
}

TEST_F(TextImportTest, NormalizeUmlautsRaisesOverflowAbove32767Characters) {
    Text sFits(32767, u'x');
    EXPECT_EQ(NormalizeUmlauts(sFits).size(), 32767U);
    Text sTooLong(32768, u'x');
    EXPECT_EQ(Raised([&] { NormalizeUmlauts(sTooLong); }), ErrorNumber::Overflow);
}

// ---- Line ends ----

TEST_F(TextImportTest, CrLfAndLoneCrEndALineAndTheLastNeedsNoEnd) {
    machine.files.Put(kFile, "IN_1 a\r\nIN_2 b\rIN_3 c\r\n\rIN_4 d");
    TextIntoDb(kFile);
    EXPECT_EQ(Stored(), (Rows{"IO|IN_1|a", "IO|IN_2|b", "IO|IN_3|c", "IO|IN_4|d"}));
}

TEST_F(TextImportTest, AFileWithLoneLfIsOneLine) {
    machine.files.Put(kFile, "IN_1 a\nIN_2 b\n");
    TextIntoDb(kFile);
    EXPECT_EQ(Stored(), Rows{"IO|IN_1|a\nIN_2 b\n"});
}

// ---- The course of a pass ----

TEST_F(TextImportTest, AnEmptyFileStoresNothingAndIsMadeKnown) {
    ForwardingEngine engine;
    machine.files.Put(kFile, "");
    TextIntoDb(kFile);
    EXPECT_EQ(engine.operations, (std::vector<Text>{u"open connection", u"close connection"}));
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 1);
    EXPECT_EQ(Stored(), Rows{});
}

TEST_F(TextImportTest, AMissingFileChangesNothingAndIsNotMadeKnown) {
    StoreOneOfEachClass();
    ForwardingEngine engine;
    LoadForm(std::make_unique<LabelForm>());
    EXPECT_EQ(StepsOf([&] {
                  ClearDbForTextFile(u"C:\\nowhere\\names.txt");
                  TextIntoDb(u"C:\\nowhere\\names.txt");
                  TextIntoDb(u"");
              }),
              0);
    EXPECT_EQ(engine.operations, std::vector<Text>{});
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 0);
    EXPECT_EQ(FindControl<Label>(u"StdForm", u"Information")->Caption(), u"");
    EXPECT_EQ(Stored(), Joined(OldSignals(), OldWelding()));
}

TEST_F(TextImportTest, TheFileIsClosedFirstThenTheDatabaseThenTheProcessIsTold) {
    PutFile({"IN_1 a"});
    ForwardingEngine engine;
    int nCloses = 0;
    engine.before = [&](const Text& sOperation) {
        if (sOperation != u"close connection") return;
        ++nCloses;
        EXPECT_EQ(machine.files.OpenFiles(), 0);
        EXPECT_EQ(machine.closedLibrary.nRefreshes, 0);
    };
    TextIntoDb(kFile);
    EXPECT_EQ(nCloses, 1);
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 1);
    EXPECT_FALSE(g_Connection);
}

TEST_F(TextImportTest, WithoutTheDatabaseProcessNobodyIsTold) {
    machine.processes.processes.clear();
    EXPECT_EQ(Imported({"IN_1 a"}), Rows{"IO|IN_1|a"});
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 0);
}

TEST_F(TextImportTest, WithoutADatabaseTheFileIsReadToItsEndInSilence) {
    db.RemoveFile();
    PutFile({"IN_1 a", "x", "Weld11 b"});
    EXPECT_EQ(StepsOf([&] { TextIntoDb(kFile); }), 3);
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 1);
    EXPECT_EQ(machine.files.OpenFiles(), 0);
    EXPECT_FALSE(std::filesystem::exists(db.Path()));
    EXPECT_TRUE(machine.desktop.boxes.empty());
}

TEST_F(TextImportTest, AStoreThatFailsEndsNothing) {
    ForwardingEngine engine;
    engine.FailAt(u"open SELECT Items.Key_id FROM ITEMS", 2);
    EXPECT_EQ(Imported({"IN_1 a", "IN_2 b", "IN_3 c"}), (Rows{"IO|IN_1|a", "IO|IN_3|c"}));
}

TEST_F(TextImportTest, OneProgressStepALineRecognisedOrNot) {
    PutFile({"IN_1 a", "", "   ", "no key", "Weld11 b", "IN_12345 c", "IN_1"});
    EXPECT_EQ(StepsOf([&] { TextIntoDb(kFile); }), 7);
}

TEST_F(TextImportTest, TheLabelOfTheSmallFormTellsThatDataIsConverted) {
    LoadForm(std::make_unique<LabelForm>());
    ForwardingEngine engine;
    std::vector<Text> captions;
    engine.before = [&](const Text& sOperation) {
        if (sOperation.ends_with(u"connection"))
            captions.push_back(FindControl<Label>(u"StdForm", u"Information")->Caption());
    };
    Imported({"IN_1 a"});
    EXPECT_EQ(captions, (std::vector<Text>{u"", u"converting data"}));
}

TEST_F(TextImportTest, TheLineInWorkIsLeftInTheSharedVariables) {
    BecomeCustomer();
    Imported({"E5 F\xFCllstand "});
    EXPECT_EQ(g_sLine, u"E5 Fuellstand ");
    EXPECT_EQ(g_vSymbol, u"IN_5");
    EXPECT_EQ(g_vLongName, u"Fuellstand");
    Imported({"E6 Tor", "no key"});
    EXPECT_EQ(g_sLine, u"no key");
    EXPECT_EQ(g_vSymbol, u"no");
    EXPECT_EQ(g_vLongName, u"Tor");
}

TEST_F(TextImportTest, AnEmptyLineLeavesAnEmptySymbol) {
    Imported({"IN_1 a", ""});
    EXPECT_EQ(g_vSymbol, u"");
}

// What is stored before the line stays stored; nobody closes the database.
TEST_F(TextImportTest, ALineOfMoreThan32767CharactersRaisesOverflowOutOfThePass) {
    PutFile({"IN_1 a", "IN_2 " + std::string(32763, 'x'), "IN_3 c"});
    EXPECT_EQ(Raised([&] { TextIntoDb(kFile); }), ErrorNumber::Overflow);
    EXPECT_EQ(machine.files.OpenFiles(), 0);
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 0);
    ASSERT_TRUE(g_Connection);
    EXPECT_EQ(g_Connection->State(), kStateOpen);
    CloseDatabase();
    EXPECT_EQ(Stored(), Rows{"IO|IN_1|a"});
}

TEST_F(TextImportTest, ALineOf32767CharactersIsStored) {
    const std::string sText(32762, 'x');
    EXPECT_EQ(Imported({"IN_2 " + sText}), Rows{"IO|IN_2|" + sText});
}

// ---- The wipe ----

TEST_F(TextImportTest, OneSignalKeyWipesAllSignalsAndNoWeldingChannel) {
    StoreOneOfEachClass();
    EXPECT_EQ(Overwritten({"IN_1 Tor"}), Joined(OldWelding(), {"IO|IN_1|Tor"}));
}

TEST_F(TextImportTest, OneWeldingKeyWipesAllWeldingChannelsAndNoSignal) {
    for (const char* sKey : {"Start11", "Weld11", "CraterChannel11"}) {
        db.Execute("DELETE FROM Messages; DELETE FROM Items;");
        StoreOneOfEachClass();
        EXPECT_EQ(Overwritten({std::string(sKey) + " Naht"}),
                  Joined(OldSignals(), {"A10TP|" + std::string(sKey) + "|Naht"}));
    }
}

TEST_F(TextImportTest, BothKindsOfKeysWipeAll) {
    StoreOneOfEachClass();
    EXPECT_EQ(Overwritten({"Weld11 Naht", "T", "IN_1 Tor"}),
              (Rows{"A10TP|Weld11|Naht", "IO|IN_1|Tor"}));
}

class WipeReasonTest : public TextImportTest {
  protected:
    // Whether a file of this one line wipes the signals.
    bool Wipes(const std::string& sLine) {
        db.Execute("DELETE FROM Messages; DELETE FROM Items;");
        Store("IO", "IN_900", "old");
        PutFile({sLine});
        ClearDbForTextFile(kFile);
        return Stored().empty();
    }
    // Each form with one digit up to one too many.
    void ExpectReasons(const std::vector<LineForm>& forms) {
        for (const LineForm& form : forms) {
            const bool bReason = form.sModule != "A10TP" && !form.sStoredPrefix.starts_with("BIN");
            std::string sNumber;
            for (int nDigits = 1; nDigits <= form.nMaxDigits + 1; ++nDigits) {
                sNumber += '1';
                const std::string sLine = form.sPrefix + sNumber + " Name";
                EXPECT_EQ(Wipes(sLine), bReason && nDigits <= form.nMaxDigits) << sLine;
            }
        }
    }
};

TEST_F(WipeReasonTest, EveryStandardSignalKeyButTheBinaryOnes) {
    ExpectReasons(kStandardForms);
}

TEST_F(WipeReasonTest, EveryCustomerSignalKeyButTheBinaryOnes) {
    BecomeCustomer();
    ExpectReasons(kCustomerForms);
}

TEST_F(WipeReasonTest, ABareNumberOfUpToThreeDigitsOnAStandardInstallation) {
    EXPECT_TRUE(Wipes("17"));
    EXPECT_TRUE(Wipes("123 things to do"));
    EXPECT_FALSE(Wipes("1234 things to do"));
    EXPECT_FALSE(Wipes("ZTQXProcParam_17 Pumpe"));
    BecomeCustomer();
    EXPECT_FALSE(Wipes("17"));
}

TEST_F(WipeReasonTest, BlanksAheadOfTheKeyAreNoHindrance) {
    EXPECT_TRUE(Wipes("   IN_5 Pumpe"));
}

// Tabs become blanks in the import alone.
TEST_F(WipeReasonTest, ATabBesideTheKeyIsNone) {
    EXPECT_FALSE(Wipes("IN_5\tPumpe"));
    EXPECT_FALSE(Wipes("\tIN_5 Pumpe"));
    EXPECT_TRUE(Wipes("IN_5 \tPumpe"));
}

TEST_F(TextImportTest, AKeyWithATabIsMergedIntoWhatWasNotWiped) {
    StoreOneOfEachClass();
    EXPECT_EQ(Overwritten({"IN_5\tPumpe"}),
              Joined(Joined(OldSignals(), OldWelding()), {"IO|IN_5|Pumpe"}));
}

TEST_F(TextImportTest, AFileOfBinarySignalsAloneWipesNothingAndIsMergedIn) {
    StoreOneOfEachClass();
    EXPECT_EQ(Overwritten({"BININ_1 Wert", "BINOUT_2 Zahl"}),
              Joined(Joined(OldSignals(), OldWelding()), {"IO|BININ_1|Wert", "IO|BINOUT_2|Zahl"}));
}

TEST_F(TextImportTest, BinarySignalsAreWipedWithTheOthers) {
    Store("IO", "BININ_9", "old");
    EXPECT_EQ(Overwritten({"BININ_1 Wert", "FlagText1 Merker"}),
              (Rows{"Flag|FlagText1|Merker", "IO|BININ_1|Wert"}));
}

TEST_F(TextImportTest, TheWipeDeletesTheClassesInTheirOrderAndOnce) {
    PutFile({"IN_1 a", "Weld11 b", "OUT_2 c", "Start12 d"});
    ForwardingEngine engine;
    ClearDbForTextFile(kFile);
    std::vector<Text> expected{u"open connection"};
    for (const TextView sPrefix : {u"IN_", u"OUT_", u"NoticeText", u"CounterText", u"FlagText",
                                   u"TimerText", u"ANIN_", u"ANOUT_", u"BININ_", u"BINOUT_",
                                   u"ZTQXProcParam_", u"Start1", u"Weld1", u"CraterChannel1"})
        expected.push_back(Text(u"open DELETE FROM Items WHERE (((Items.KeyString) Like '")
                               .append(sPrefix)
                               .append(u"%'))"));
    expected.push_back(u"close connection");
    std::erase_if(engine.operations, [](const Text& s) { return s == u"close recordset"; });
    EXPECT_EQ(engine.operations, expected);
}

TEST_F(TextImportTest, TheBareNumbersOfProcessParametersAreNotWiped) {
    Store("ZTQXProcParam", "17", "old");
    EXPECT_EQ(Overwritten({"IN_1 a"}), (Rows{"IO|IN_1|a", "ZTQXProcParam|17|old"}));
}

TEST_F(TextImportTest, TheWipeTakesAProgressStepForEachSignalClassAndNoneForLines) {
    PutFile({"x", "", "Weld11 b", "x"});
    EXPECT_EQ(StepsOf([&] { ClearDbForTextFile(kFile); }), 0);
    PutFile({"x", "IN_1 a", "OUT_2 b", "Weld11 c"});
    EXPECT_EQ(StepsOf([&] { ClearDbForTextFile(kFile); }), 11);
}

TEST_F(TextImportTest, TheWipeAdvancesTheBarAheadOfEachDelete) {
    PutFile({"IN_1 a"});
    ForwardingEngine engine;
    std::vector<int> stepsAtDelete;
    engine.before = [&](const Text& sOperation) {
        if (sOperation.starts_with(u"open DELETE")) stepsAtDelete.push_back(Steps());
    };
    StepsOf([&] { ClearDbForTextFile(kFile); });
    EXPECT_EQ(stepsAtDelete, (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
}

// The closed library, looking at what is open when it is told.
class LookingLibrary : public ClosedLibrary {
  public:
    explicit LookingLibrary(memory::MemoryFiles& files) : m_files(files) {}
    int nOpenFiles = -1;
    bool bConnected = true;
    void RefreshConfDb() override {
        nOpenFiles = m_files.OpenFiles();
        bConnected = g_Connection != nullptr;
    }

  private:
    memory::MemoryFiles& m_files;
};

TEST_F(TextImportTest, TheWipeIsMadeKnownWhileItsFileIsStillOpen) {
    PutFile({"IN_1 a"});
    LookingLibrary library(machine.files);
    Platform platform = PortsOf(machine);
    platform.closedLibrary = &library;
    SetPlatform(platform);
    ClearDbForTextFile(kFile);
    EXPECT_EQ(library.nOpenFiles, 1);
    EXPECT_FALSE(library.bConnected);
    EXPECT_EQ(machine.files.OpenFiles(), 0);
    TextIntoDb(kFile);
    EXPECT_EQ(library.nOpenFiles, 0);
    EXPECT_FALSE(library.bConnected);
    SetPlatform(PortsOf(machine));
}

TEST_F(TextImportTest, TheWipeReadsOnToTheEndOfTheFile) {
    PutFile({"IN_1 a", "Weld11 b", "last line"});
    ClearDbForTextFile(kFile);
    EXPECT_EQ(g_sLine, u"last line");
    EXPECT_EQ(g_vSymbol, u"last");
}

TEST_F(TextImportTest, AnEmptyFileWipesNothingAndIsMadeKnown) {
    StoreOneOfEachClass();
    machine.files.Put(kFile, "");
    ClearDbForTextFile(kFile);
    EXPECT_EQ(Stored(), Joined(OldSignals(), OldWelding()));
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 1);
}

TEST_F(TextImportTest, WipeAndImportTellTheProcessTwice) {
    Overwritten({"IN_1 a"});
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 2);
}

TEST_F(TextImportTest, WithoutADatabaseTheWipeIsSilent) {
    db.RemoveFile();
    PutFile({"IN_1 a", "Weld11 b"});
    EXPECT_EQ(StepsOf([&] { ClearDbForTextFile(kFile); }), 11);
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 1);
}

// The wipe doesn't look at umlauts, so that the length of a line is nothing to it; but words are
// counted with 16 bits.
TEST_F(TextImportTest, TheWipeTakesLongLinesButNoMoreThan32767Words) {
    Store("IO", "IN_900", "old");
    PutFile({"IN_1 " + std::string(40000, 'x')});
    EXPECT_EQ(Raised([&] { ClearDbForTextFile(kFile); }), std::nullopt);
    EXPECT_EQ(Stored(), Rows{});

    std::string sWords;
    for (int n = 0; n < 32768; ++n)
        sWords += "x ";
    PutFile({sWords});
    EXPECT_EQ(Raised([&] { ClearDbForTextFile(kFile); }), ErrorNumber::Overflow);
    EXPECT_EQ(machine.files.OpenFiles(), 0);
    EXPECT_TRUE(g_Connection);
}

// ---- Observers ----

struct Observed : PassObserver {
    std::vector<Text> happened;

    void ImportBegins() override { happened.push_back(u"begins"); }
    void LineStored(std::int64_t nLine, TextView sKey, TextView sModule, TextView sText,
                    bool bStored) override {
        happened.push_back(Text(1, static_cast<char16_t>(u'0' + nLine)) + u" " + Text(sModule) +
                           u"|" + Text(sKey) + u"|" + Text(sText) + (bStored ? u"" : u" lost"));
    }
    void LinePassedOver(std::int64_t nLine, TextView sLine, PassedOver reason) override {
        static constexpr TextView kReasons[] = {u"blank", u"unknown", u"digits", u"other form"};
        happened.push_back(Text(1, static_cast<char16_t>(u'0' + nLine)) + u" " + Text(sLine) +
                           u": " + Text(kReasons[static_cast<std::size_t>(reason)]));
    }
};

TEST_F(TextImportTest, AnObserverIsToldOfEachLineAndItsNumber) {
    Observed observed;
    SetPassObserver(&observed);
    Imported({"IN_1 F\xFCll", "", "IN_2", "a\tb", "IN_12345 x", "E5 x"});
    EXPECT_EQ(
        observed.happened,
        (std::vector<Text>{u"begins", u"1 IO|IN_1|Fuell", u"2 : blank", u"3 IO|IN_2||EMPTY|",
                           u"4 a    b: unknown", u"5 IN_12345 x: digits", u"6 E5 x: other form"}));
}

TEST_F(TextImportTest, AnObserverIsToldWhatTheStoreRefused) {
    db.RemoveFile();
    Observed observed;
    SetPassObserver(&observed);
    PutFile({"IN_1 a"});
    TextIntoDb(kFile);
    EXPECT_EQ(observed.happened, (std::vector<Text>{u"begins", u"1 IO|IN_1|a lost"}));
}

TEST_F(TextImportTest, AFileThatCannotBeOpenedBeginsNothing) {
    Observed observed;
    SetPassObserver(&observed);
    TextIntoDb(u"C:\\none.txt");
    EXPECT_TRUE(observed.happened.empty());
}

}  // namespace
}  // namespace nomira::testing
