#include "ui/RunSoftKeyAction.h"

#include "frame/Progress.h"
#include "ui/PendantFixture.h"
#include "userprogram/Staging.h"

namespace nomira::testing {
namespace {

class RunSoftKeyActionTest : public PendantFixture {
  protected:
    static void Run(int nIndex) { RunSoftKeyAction(Pendant(), Short(nIndex), u"SoftKey_Click"); }
    // The stages of the action alone.
    const Texts& StagesOf(int nIndex) {
        view.stages.clear();
        Run(nIndex);
        return view.stages;
    }
    // The form with the option chosen and, in a list, the entry selected.
    void LoadAndChoose(int nOption) {
        LoadPendant();
        g_sMsgSelectFile = u"select one";
        g_sMsgEnterName = u"enter a name";
        PressStatus(nOption);
    }
    void LoadForImport(int nFile = 0) {
        LoadAndChoose(1);
        User().Select(u"File1", Short(nFile));
    }
    static void SetAdd(std::int16_t nValue) { Get<CheckBox>(u"chkBoxAdd").SetValue(nValue); }

    // What the panel and the bar show around a pass.
    static Texts Around(std::initializer_list<TextView> pictures) {
        Texts stages;
        for (const TextView sPicture : pictures) {
            stages.emplace_back(u"bar=on");
            stages.push_back(u"3.Picture=" + Text(sPicture));
            stages.emplace_back(u"bar=off");
            stages.emplace_back(u"3.Picture=");
        }
        return stages;
    }
    void ExpectAtRest() {
        EXPECT_FALSE(Seen(u"ProgressBar2"));
        EXPECT_EQ(PanelOf(3).Text(), u"");
        EXPECT_EQ(PictureOf(3), u"");
        EXPECT_TRUE(machine.desktop.boxes.empty());
    }
};

TEST_F(RunSoftKeyActionTest, OtherKeysHaveNoAction) {
    LoadPendant();
    for (const int nIndex : {2, 3, 4, -1, 7, 32767})
        Run(nIndex);
    EXPECT_TRUE(view.events.empty());
    EXPECT_TRUE(machine.files.Exists(kTextFile));
}

// ---- View ----

TEST_F(RunSoftKeyActionTest, TheViewIsReadUnderThePictureOfReading) {
    Store("IO", "IN_1", "Gate");
    LoadPendant();
    Get<TextBox>(u"txtboxView").SetText(u"old");
    EXPECT_EQ(StagesOf(0),
              (Texts{u"2.Picture=", u"2.Picture=picLinkUp", u"bar=on", u"3.Picture=picRead",
                     u"view=0", u"view=11", u"bar=off", u"3.Picture="}));
    EXPECT_EQ(Get<TextBox>(u"txtboxView").Text(), u"IN_1 Gate\r\n");
    ExpectAtRest();
}

TEST_F(RunSoftKeyActionTest, TheOldTextIsGoneWhileTheViewIsRead) {
    Store("IO", "IN_1", "Gate");
    LoadPendant();
    Get<TextBox>(u"txtboxView").SetText(u"old");
    Text sInside = u"not looked";
    Text sPicture;
    AtStep(1, [&] {
        sInside = Get<TextBox>(u"txtboxView").Text();
        sPicture = PictureOf(3);
        PanelOf(2).SetPicture({});
    });
    Run(0);
    EXPECT_EQ(sInside, u"");
    EXPECT_EQ(sPicture, u"picRead");
    EXPECT_EQ(PictureOf(2), u"picLinkUp") << "it is given once more at the end";
}

// The view takes the word away and puts the picture of a good link there.
TEST_F(RunSoftKeyActionTest, TheViewHidesThatTheLinkIsMissing) {
    LoadPendant();
    g_Comm().ExitVexonComm();
    PanelOf(2).SetText(u"no connect to Vexon !!!");
    PanelOf(2).SetPicture({});
    Run(0);
    EXPECT_EQ(PanelOf(2).Text(), u"");
    EXPECT_EQ(PictureOf(2), u"picLinkUp");
}

TEST_F(RunSoftKeyActionTest, AnEmptyDatabaseIsAnEmptyView) {
    LoadPendant();
    PressSoft(0);
    EXPECT_EQ(Get<TextBox>(u"txtboxView").Text(), u"");
    EXPECT_EQ(Keys(), "+++-+ ----");
}

TEST_F(RunSoftKeyActionTest, TheBarBeginsAnewWithEachAction) {
    Store("IO", "IN_1", "Gate");
    LoadPendant();
    g_dProgressValue = 80;
    float nSeen = 0;
    AtStep(2, [&] { nSeen = Get<ProgressBar>(u"ProgressBar2").Value(); });
    Run(0);
    EXPECT_EQ(nSeen, 1.0F);
}

// ---- Save ----

TEST_F(RunSoftKeyActionTest, TheViewIsSavedAndThenTheDatabaseCompacted) {
    Store("IO", "IN_1", "Gate");
    LoadPendant();
    PressSoft(0);
    User().Type(u"txtboxView", u"IN_1 Door\r\nIN_2 Lamp\r\n");
    EXPECT_EQ(StagesOf(1), (Texts{u"bar=on", u"3.Picture=picWrite", u"3.Picture=picCompact",
                                  u"bar=off", u"3.Picture="}));
    EXPECT_EQ(Stored(), (Rows{"IN_1|Door", "IN_2|Lamp"}));
    EXPECT_EQ(files.killed, Texts{Text(kLongTextDatabase)}) << "the copy took its place";
    EXPECT_EQ(Get<TextBox>(u"txtboxView").Text(), u"IN_1 Door\r\nIN_2 Lamp\r\n");
    ExpectAtRest();
}

TEST_F(RunSoftKeyActionTest, WhatIsDoneIsShownWhileItIsDone) {
    struct Row {
        std::int16_t nOption, nKey;  // no option: the view
        TextView sAtFirst;
    };
    Store("IO", "IN_9", "old");
    for (const Row& row : {Row{0, 0, u"picRead"}, Row{0, 1, u"picWrite"}, Row{1, 5, u"picDelete"},
                           Row{2, 5, u"picRead"}}) {
        SCOPED_TRACE(std::to_string(row.nOption) + " " + std::to_string(row.nKey));
        LoadPendant();
        if (row.nOption != 0) PressStatus(row.nOption);
        if (row.nOption == 1) User().Select(u"File1", 0);
        if (row.nKey == 1) {
            PressSoft(0);
            User().Type(u"txtboxView", u"IN_9 new\r\n");
        }
        Text sInside;
        AtStep(1, [&] { sInside = PictureOf(3); });
        Text sAtKill;
        files.onKill = [&] {
            EXPECT_TRUE(Seen(u"ProgressBar2"));
            sAtKill = PictureOf(3);
        };
        PressSoft(row.nKey);
        files.onKill = nullptr;
        EXPECT_EQ(sInside, row.sAtFirst);
        EXPECT_EQ(sAtKill, row.nKey == 1 ? u"picCompact" : u"") << "where the old file goes";
        UnloadForm(kStdBofFormClass);
    }
}

TEST_F(RunSoftKeyActionTest, WithoutAnEditTheDatabaseIsCompactedAllTheSame) {
    Store("IO", "IN_1", "Gate");
    db.Execute(
        "WITH RECURSIVE n(i) AS (SELECT 100 UNION ALL SELECT i+1 FROM n LIMIT 200)"
        " INSERT INTO Messages SELECT 1,i,printf('%01000d',i) FROM n;"
        "DELETE FROM Messages WHERE Language_id>99");
    const auto nBefore = std::filesystem::file_size(db.Path());
    LoadPendant();
    PressSoft(0);
    PressSoft(1);
    EXPECT_LT(std::filesystem::file_size(db.Path()), nBefore);
    EXPECT_EQ(Stored(), Rows{"IN_1|Gate"});
}

TEST_F(RunSoftKeyActionTest, TheCustomersViewKeepsTheCustomersKeys) {
    BecomeCustomer();
    Store("IO", "IN_1", "Gate");
    LoadPendant();
    PressSoft(0);
    EXPECT_EQ(Get<TextBox>(u"txtboxView").Text(), u"E1 Gate\r\n");
    User().Type(u"txtboxView", u"E1 Door\r\n");
    PressSoft(1);
    EXPECT_EQ(Stored(), Rows{"IN_1|Door"});
    EXPECT_EQ(Get<TextBox>(u"txtboxView").Text(), u"E1 Door\r\n");
}

TEST_F(RunSoftKeyActionTest, AFailureLeavesTheFormAsTheActionHasIt) {
    LoadPendant();
    PressSoft(0);
    User().Type(u"txtboxView", Text(40000, u'x'));
    EXPECT_EQ(Raised([] { PressSoft(1); }), ErrorNumber::Overflow);
    EXPECT_EQ(PictureOf(3), u"picWrite");
    EXPECT_TRUE(Seen(u"ProgressBar2"));
    EXPECT_EQ(Keys(), "----+ ----");
}

// ---- Text file into database ----

TEST_F(RunSoftKeyActionTest, AnImportDeletesTheOldTextsUnlessTheBoxIsSet) {
    struct Row {
        std::int16_t nValue;
        Texts stages;
        Rows stored;
    };
    const Row rows[] = {
        {CheckBox::kCleared, Around({u"picDelete", u"picWrite"}), {"IN_1|Gate", "IN_2|Door"}},
        {CheckBox::kChecked, Around({u"picWrite"}), {"IN_1|Gate", "IN_2|Door", "IN_9|old"}},
        {CheckBox::kGrey, Around({u"picWrite"}), {"IN_1|Gate", "IN_2|Door", "IN_9|old"}},
    };
    for (const Row& row : rows) {
        db.Execute("DELETE FROM Messages; DELETE FROM Items");
        Store("IO", "IN_9", "old");
        LoadForImport();
        SetAdd(row.nValue);
        EXPECT_EQ(StagesOf(5), row.stages);
        EXPECT_EQ(Stored(), row.stored);
        ExpectAtRest();
        UnloadForm(kStdBofFormClass);
    }
}

TEST_F(RunSoftKeyActionTest, AnImportTakesTheSelectedFile) {
    LoadForImport(1);
    PanelOf(4).SetText(u"a problem");
    PressSoft(5);
    EXPECT_EQ(Stored(), Rows{"IN_7|Second"});
    EXPECT_EQ(PanelOf(4).Text(), u"");
}

TEST_F(RunSoftKeyActionTest, OnlyTheFirstOfSeveralFilesIsImported) {
    LoadAndChoose(1);
    Get<FileListBox>(u"File1").SetMultiSelect(SelectionList::kSimple);
    User().Select(u"File1", 1);
    User().Select(u"File1", 0);
    PressSoft(5);
    EXPECT_EQ(Stored(), (Rows{"IN_1|Gate", "IN_2|Door"}));
}

TEST_F(RunSoftKeyActionTest, AnImportWithoutASelectionShowsItsMessageAndChangesNothing) {
    Store("IO", "IN_9", "old");
    for (const TextView sCustomer : {u"Somebody", u"VW"}) {
        BecomeCustomer(sCustomer);
        LoadAndChoose(1);
        view.stages.clear();
        PressSoft(5);
        EXPECT_EQ(PanelOf(4).Text(), u"select one");
        EXPECT_EQ(PictureOf(4), u"picCritical");
        EXPECT_EQ(std::ranges::count(view.stages, u"3.Picture=picWrite"), 1) << "the pass runs";
        EXPECT_EQ(Stored(), Rows{"IN_9|old"});
        EXPECT_EQ(Keys(), "+--++ -+++");
        ExpectAtRest();
        UnloadForm(kStdBofFormClass);
    }
}

// ---- The customer's harvest ----

class HarvestActionTest : public RunSoftKeyActionTest {
  protected:
    HarvestActionTest() {
        BecomeCustomer();
        g_sTextFilePath = u"\\Roboter\\Init";
        machine.files.Put(u"C:\\tqx\\Roboter\\Init\\a.txt",
                          "X = E12 \\ ;Taster\r\nE1 Gate\r\nX = A3 \\ ;Lampe\r\n");
        machine.files.Put(u"C:\\tqx\\Roboter\\Init\\b.txt", "E1 Gate\r\nA2 Door\r\n");
        Store("IO", "IN_9", "old");
    }
};

TEST_F(HarvestActionTest, AFileOfAssignmentsIsHarvestedAndNotImported) {
    LoadForImport(0);
    EXPECT_EQ(StagesOf(5), Around({u"picWrite"}));
    EXPECT_EQ(Stored(), (Rows{"IN_12|Taster", "OUT_3|Lampe"}));
    ExpectAtRest();
}

TEST_F(HarvestActionTest, TheBoxKeepsTheOldTextsOfAHarvest) {
    LoadForImport(0);
    SetAdd(CheckBox::kChecked);
    EXPECT_EQ(StagesOf(5), Around({u"picWrite"}));
    EXPECT_EQ(Stored(), (Rows{"IN_12|Taster", "IN_9|old", "OUT_3|Lampe"}));
}

TEST_F(HarvestActionTest, AnyOtherFileIsImported) {
    LoadForImport(1);
    EXPECT_EQ(StagesOf(5), Around({u"picDelete", u"picWrite"}));
    EXPECT_EQ(Stored(), (Rows{"IN_1|Gate", "OUT_2|Door"}));
}

TEST_F(HarvestActionTest, AnotherCustomersFileIsNotHarvested) {
    BecomeCustomer(u"vw");
    LoadForImport(0);
    SetAdd(CheckBox::kChecked);
    Run(5);
    EXPECT_EQ(Stored(), Rows{"IN_9|old"});
}

// ---- Database into text file ----

TEST_F(RunSoftKeyActionTest, AnExportWritesTheNamedFile) {
    Store("IO", "IN_1", "Gate");
    LoadAndChoose(2);
    EXPECT_EQ(StagesOf(5), Around({u"picRead"}));
    EXPECT_EQ(machine.files.Bytes(u"C:\\tqx\\Data\\SymName.txt"), "IN_1 Gate\r\n\r\n");
    ExpectAtRest();
}

TEST_F(RunSoftKeyActionTest, AnExportWithoutANameShowsItsMessageAndRunsNothing) {
    Store("IO", "IN_1", "Gate");
    LoadAndChoose(2);
    User().Type(u"Text1", u"");
    view.stages.clear();
    PressSoft(5);
    EXPECT_EQ(view.stages, (Texts{u"4.Text=enter a name", u"4.Picture=picCritical"}));
    EXPECT_EQ(Keys(), "+--++ +-+-");
    EXPECT_EQ(machine.files.Dir(u"C:\\tqx\\Data\\*"), (Texts{u"names.txt", u"second.txt"}));
}

// ---- Database into programs ----

class ProgramsActionTest : public RunSoftKeyActionTest {
  protected:
    static constexpr TextView kOnRobotA = u"TQX:\\R1\\Program\\a.src";
    static constexpr TextView kOnRobotB = u"TQX:\\R1\\Program\\b.src";

    ProgramsActionTest() {
        Store("IO", "OUT_12", "Cooling");
        library.PutFile(kOnRobotA, kOldProgram);
        library.PutFile(kOnRobotB, kOldProgram);
    }
    void ExpectNothingRewritten() {
        EXPECT_EQ(library.FileBytes(kOnRobotA), kOldProgram);
        EXPECT_EQ(library.FileBytes(kOnRobotB), kOldProgram);
        EXPECT_EQ(machine.files.Bytes(kProgram), kOldProgram);
    }
};

TEST_F(ProgramsActionTest, OverTheLinkTheSelectedProgramsOfTheControllerAreRewritten) {
    LoadAndChoose(3);
    PressStatus(4);
    EXPECT_EQ(StagesOf(5), Around({u"picWrite"}));
    EXPECT_EQ(library.FileBytes(kOnRobotA), kNewProgram);
    EXPECT_EQ(library.FileBytes(kOnRobotB), kNewProgram);
    EXPECT_EQ(machine.files.Bytes(kProgram), kOldProgram);
    EXPECT_FALSE(machine.files.Exists(TempDir));
    ExpectAtRest();
}

TEST_F(ProgramsActionTest, WithoutASelectionTheStagingDirectoryIsMadeAndTheMessageShown) {
    LoadAndChoose(3);
    PressSoft(5);
    EXPECT_EQ(PanelOf(4).Text(), u"select one");
    EXPECT_EQ(PictureOf(4), u"picCritical");
    EXPECT_TRUE(machine.files.Exists(TempDir));
    ExpectNothingRewritten();
    EXPECT_EQ(Keys(), "+--++ ++-+");
}

// The link's answer is yes as soon as its object is there, so that the disk's programs are left.
TEST_F(ProgramsActionTest, WithoutTheMiddlewareNothingIsRewritten) {
    library.bMiddlewareRuns = false;
    LoadAndChoose(3);
    PressStatus(4);
    EXPECT_EQ(StagesOf(5), Around({u"picWrite"}));
    ExpectNothingRewritten();
}

TEST_F(ProgramsActionTest, AMissingLinkIsConnectedFirst) {
    LoadAndChoose(3);
    User().Select(u"File2", 0);
    g_Comm().ExitVexonComm();
    library.calls.clear();
    Run(5);
    EXPECT_EQ(
        std::ranges::count(library.calls, u"CreateLinkObject(LNK_TqxLib.SyncFile, StdBofForm)"), 1);
    EXPECT_EQ(library.FileBytes(kOnRobotA), kNewProgram);
    EXPECT_EQ(library.FileBytes(kOnRobotB), kOldProgram);
}

TEST_F(ProgramsActionTest, WithoutTheLibraryTheFirstSelectedProgramOfTheDiskIsRewritten) {
    library.bInstalled = false;
    LoadAndChoose(3);
    PressStatus(4);
    view.stages.clear();
    PressSoft(5);
    EXPECT_EQ(machine.files.Bytes(kProgram), kNewProgram);
    EXPECT_EQ(machine.files.Bytes(u"C:\\tqx\\Roboter\\TQX\\R1\\b.src"), kOldProgram);
    EXPECT_EQ(view.stages, Texts{}) << "no picture, and no bar";
}

TEST_F(ProgramsActionTest, WithoutTheLibraryAndASelectionTheRewriterGetsAnEmptyPath) {
    library.bInstalled = false;
    LoadAndChoose(3);
    EXPECT_EQ(Raised([] { PressSoft(5); }), ErrorNumber::BadFileName);
    EXPECT_EQ(PanelOf(4).Text(), u"");
}

TEST_F(ProgramsActionTest, AFailureOfTheRewriterGoesUp) {
    library.PutFile(kOnRobotA, ";FOLD OUT my own title\r\n");
    LoadAndChoose(3);
    User().Select(u"File2", 0);
    EXPECT_EQ(Raised([] { PressSoft(5); }), ErrorNumber::InvalidProcedureCall);
    EXPECT_EQ(Keys(), "----+ ++-+");
    EXPECT_EQ(PictureOf(3), u"picWrite");
    EXPECT_TRUE(machine.files.Exists(TempDir));
}

// ---- No option ----

TEST_F(ProgramsActionTest, WithoutAnOptionTheLinkIsConnectedAndNothingElseHappens) {
    LoadPendant();
    g_Comm().ExitVexonComm();
    SoftKey(Pendant(), 5).SetEnabled(true);
    SetVisible(Pendant(), {u"ProgressBar2"}, true);
    view.stages.clear();
    PressSoft(5);
    EXPECT_TRUE(g_Comm().IsVexonConnected());
    EXPECT_EQ(view.stages, Texts{u"bar=off"});
    EXPECT_EQ(Keys(), "+--++ +++-");
    ExpectNothingRewritten();
    EXPECT_FALSE(machine.files.Exists(TempDir));
}

// ---- Exit ----

TEST_F(RunSoftKeyActionTest, TheExitDoesNotComeBack) {
    LoadPendant();
    SoftKey(Pendant(), 6).SetEnabled(false);
    EXPECT_TRUE(EndsProgram([] { Run(6); }));
    EXPECT_TRUE(Get<PendantKeyControl>(u"TqpKeys").Ranges().empty());
    EXPECT_FALSE(g_Comm().IsVexonConnected());
}

}  // namespace
}  // namespace nomira::testing
