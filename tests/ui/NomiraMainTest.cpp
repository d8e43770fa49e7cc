#include "ui/NomiraMain.h"

#include "conversion/TextExport.h"
#include "database/adoModul.h"
#include "langtools/ProgramEnd.h"
#include "testing/ForwardingEngine.h"
#include "testing/Raised.h"
#include "testing/UnavailableEngine.h"
#include "ui/DesktopFixture.h"
#include "ui/formlayer/TreeView.h"
#include "userprogram/Staging.h"

namespace nomira::testing {
namespace {

// What is seen in each state.
const Texts kNoOption{u"Dir1",    u"Drive1",  u"Option1", u"Option2",
                      u"Option3", u"cmdExit", u"cmdView", u"StatusBar1"};
const Texts kOption1{u"Dir1",      u"Drive1",   u"Option1", u"Option2", u"Option3",   u"File1",
                     u"chkBoxAdd", u"cmdStart", u"cmdExit", u"cmdView", u"StatusBar1"};
const Texts kOption2{u"Dir1",  u"Drive1",   u"Option1", u"Option2", u"Option3",
                     u"Text1", u"cmdStart", u"cmdExit", u"cmdView", u"StatusBar1"};
const Texts kOption3{u"Dir1",         u"Drive1",   u"Option1", u"Option2", u"Option3",   u"File2",
                     u"chkBoxSelAll", u"cmdStart", u"cmdExit", u"cmdView", u"StatusBar1"};
const Texts kOnController{u"TreeView1", u"Option1",      u"Option2",  u"Option3",
                          u"List1",     u"chkBoxSelAll", u"cmdStart", u"cmdExit",
                          u"cmdView",   u"StatusBar1",   u"Picture1"};
const Texts kView{u"txtboxView", u"cmdStart", u"cmdExit", u"cmdView", u"StatusBar1"};

Texts With(Texts names, TextView sName) {
    names.emplace_back(sName);
    return names;
}

class NomiraMainTest : public DesktopFixture {
  protected:
    // Whether the click ends the program.
    bool Ends(TextView sButton) const {
        try {
            User().Click(sButton);
            return false;
        } catch (const ProgramEnd&) {
            return true;
        }
    }
    Text Caption(TextView sButton) const { return Get<Button>(sButton).Caption(); }
    Text DirPath() const { return Get<DirListBox>(u"Dir1").Path(); }
    Text Drive() const { return Get<DriveListBox>(u"Drive1").Drive(); }
    std::vector<memory::MessageBoxShown>& Boxes() { return machine.desktop.boxes; }
    // The steps, the listings of directories and the bar's moves left out.
    Texts Steps() const {
        Texts steps = view.steps;
        std::erase_if(
            steps, [](TextView s) { return s.starts_with(u"dir ") || s == u"ProgressBar1.Value"; });
        return steps;
    }

    static constexpr TextView kInsert = u"Please insert disk in drive A:";
    const memory::MessageBoxShown tip{Text(kInsert), u"Tip", BoxIcon::Exclamation};
};

// ---- Load ----

TEST_F(NomiraMainTest, LoadsIntoTheMiddleOfTheScreen) {
    machine.desktop.screen = {14830, 13525};
    Show();
    EXPECT_EQ(form->Left(), 5000);
    EXPECT_EQ(form->Top(), 5000);
    EXPECT_EQ(form->Width(), 4830);
    EXPECT_EQ(form->Height(), 3525);
}

TEST_F(NomiraMainTest, TheBarLiesHiddenOverTheStatusBar) {
    Show();
    const auto& bar = Get<ProgressBar>(u"ProgressBar1");
    EXPECT_EQ(bar.Min(), 1);
    EXPECT_EQ(bar.Max(), 27);
    EXPECT_EQ(bar.Value(), 1);
    EXPECT_EQ(bar.Left(), 2055);
    EXPECT_EQ(bar.Top(), 3330);
    EXPECT_EQ(bar.Width(), 2000);
    EXPECT_EQ(bar.Height(), 142);  // of 142.5
    EXPECT_FALSE(bar.Visible());
    EXPECT_FALSE(Get<Control>(u"Picture1").Visible());
}

TEST_F(NomiraMainTest, ThePanelsAreAddedWhenItLoads) {
    EXPECT_EQ(NomiraMain().Get<StatusBar>(u"StatusBar1").PanelCount(), 1);
    Show();
    const auto& bar = Get<StatusBar>(u"StatusBar1");
    struct Row {
        TextView sKey;
        std::int32_t nMinWidth;
        std::int16_t nStyle;
    };
    const Row rows[] = {
        {u"", 255, 0}, {u"Objekt2", 1700, 0}, {u"Objekt3", 2100, 0}, {u"Objekt4", 960, 5}};
    ASSERT_EQ(bar.PanelCount(), 4);
    for (std::int16_t n = 1; n <= 4; ++n) {
        const Row& row = rows[n - 1];
        EXPECT_EQ(bar.Panels(n).Key(), row.sKey);
        EXPECT_EQ(bar.Panels(n).MinWidth(), row.nMinWidth);
        EXPECT_EQ(bar.Panels(n).Style(), row.nStyle);
        EXPECT_EQ(bar.Panels(n).Text(), u"");
    }
}

TEST_F(NomiraMainTest, StartsWithoutAChosenOption) {
    Show();
    EXPECT_EQ(Seen(), kNoOption);
    for (const TextView sOption : {u"Option1", u"Option2", u"Option3"})
        EXPECT_FALSE(Get<RadioButton>(sOption).Value());
    for (const TextView sButton : {u"cmdStart", u"cmdView", u"cmdExit"})
        EXPECT_TRUE(IsEnabled(sButton));
    EXPECT_EQ(Get<FileListBox>(u"File1").Pattern(), u"*.txt");
    EXPECT_EQ(Get<FileListBox>(u"File2").Pattern(), u"*.src");
}

TEST_F(NomiraMainTest, LoadsInItsOrder) {
    g_sInstallDir = u"C:\\tqx";
    machine.files.PutDirectory(u"C:\\tqx");
    ForwardingEngine engine;
    engine.before = [&](const Text& sOperation) { view.steps.push_back(sOperation); };
    auto made = std::make_unique<NomiraMain>();
    SetView(&view);
    LoadForm(std::move(made));
    const TextView order[] = {u"StatusBar1.Panels(1).MinWidth",
                              u"ProgressBar1.Min",
                              u"ProgressBar1.Visible=False",
                              u"Picture1.Visible=False",
                              u"ProgressBar1.Left",
                              u"StatusBar1.Panels(2).MinWidth",
                              u"StatusBar1.Panels(3).MinWidth",
                              u"StatusBar1.Panels(4).MinWidth",
                              u"StatusBar1.Panels(4).Style",
                              u"File1.Visible=False",
                              u"cmdStart.Visible=False",
                              u"open connection"};
    for (std::size_t n = 1; n < std::size(order); ++n)
        EXPECT_LT(view.PlaceOf(order[n - 1]), view.PlaceOf(order[n])) << Printable(order[n]);
    ASSERT_TRUE(view.Has(u"open connection"));
    const auto fromThere = view.steps.begin() + view.PlaceOf(u"open connection");
    EXPECT_EQ(std::count(fromThere, view.steps.end(), u"Dir1.Path"), 1)
        << "then the lists go to the installation";
    CloseDatabase();
}

TEST_F(NomiraMainTest, TheDatabaseStaysOpenBehindTheLoad) {
    Show();
    ASSERT_NE(g_Connection, nullptr);
    EXPECT_EQ(g_Connection->State(), kStateOpen);
    EXPECT_EQ(Panel(3), u"");
}

TEST_F(NomiraMainTest, WithoutADatabaseStartAndViewAreOff) {
    db.RemoveFile();
    g_sInstallDir = u"C:\\tqx";
    machine.files.PutDirectory(u"C:\\tqx");
    Show();
    EXPECT_EQ(g_Connection, nullptr);
    EXPECT_FALSE(IsEnabled(u"cmdView"));
    EXPECT_FALSE(IsEnabled(u"cmdStart"));
    EXPECT_EQ(Panel(3), u"no connect to database !!!");
    EXPECT_EQ(DirPath(), u"c:\\tqx") << "the load goes on";
    EXPECT_TRUE(Boxes().empty());

    User().Click(u"Option1");
    EXPECT_EQ(Seen(), kOption1);
    EXPECT_FALSE(IsEnabled(u"cmdStart"));
    User().Click(u"cmdStart");
    User().Click(u"cmdView");
    EXPECT_EQ(Seen(), kOption1);
    EXPECT_EQ(Panel(3), u"no connect to database !!!");
    EXPECT_TRUE(Ends(u"cmdExit"));
}

TEST_F(NomiraMainTest, AnEngineThatFailsIsAMissingDatabase) {
    const UnavailableEngine engine;
    Show();
    EXPECT_FALSE(IsEnabled(u"cmdView"));
    EXPECT_FALSE(IsEnabled(u"cmdStart"));
    EXPECT_EQ(Panel(3), u"no connect to database !!!");
}

TEST_F(NomiraMainTest, WithoutAnInstallationTheListsStay) {
    machine.files.Put(u"C:\\a.src", "x");
    Show();
    EXPECT_EQ(Drive(), u"c:");
    EXPECT_EQ(DirPath(), u"c:\\");
    EXPECT_EQ(Selected(Get<FileListBox>(u"File2")), Texts{}) << "no handler has run";
}

TEST_F(NomiraMainTest, TheListsGoToTheInstallation) {
    machine.files.Put(u"C:\\tqx\\Data\\a.src", "x");
    machine.files.Put(u"C:\\tqx\\Data\\b.txt", "x");
    g_sInstallDir = u"C:\\tqx\\Data";
    Show();
    EXPECT_EQ(Drive(), u"c:");
    EXPECT_EQ(DirPath(), u"c:\\tqx\\Data");
    EXPECT_EQ(Entries(Get<FileListBox>(u"File1")), (Texts{u"b.txt"}));
    EXPECT_EQ(Selected(Get<FileListBox>(u"File2")), (Texts{u"a.src"}));
}

TEST_F(NomiraMainTest, TheInstallationMayLieOnAnotherDrive) {
    machine.files.PutDirectory(u"D:\\tqx");
    g_sInstallDir = u"D:\\tqx";
    Show();
    EXPECT_EQ(Drive(), u"d:");
    EXPECT_EQ(DirPath(), u"d:\\tqx");
}

TEST_F(NomiraMainTest, AMissingDriveKeepsTheOldOneWithoutAMessage) {
    g_sInstallDir = u"Q:\\tqx";
    Show();
    EXPECT_EQ(Drive(), u"c:");
    EXPECT_TRUE(Boxes().empty());
    EXPECT_EQ(Seen(), kNoOption);
}

TEST_F(NomiraMainTest, AMissingInstallationReturnsToTheOldDrive) {
    machine.files.PutDirectory(u"D:\\");
    for (const TextView sPath : {u"D:\\none", u"D:\\", u"D:", u"D"}) {
        g_sInstallDir = sPath;
        Show();
        EXPECT_EQ(Drive(), u"c:") << Printable(sPath);
        EXPECT_EQ(DirPath(), u"c:\\") << "by the drive's change";
        EXPECT_TRUE(Boxes().empty());
        UnloadForm(kNomiraMainClass);
    }
}

TEST_F(NomiraMainTest, AnInstallationOnADriveWithoutADiskShowsTheTip) {
    machine.files.PutDirectory(u"C:\\tqx");
    disk.drives = {u"D:"};
    g_sInstallDir = u"D:\\tqx";
    Show();
    EXPECT_EQ(Boxes(), (std::vector{tip}));
    EXPECT_EQ(Drive(), u"c:");
    EXPECT_EQ(DirPath(), u"c:\\tqx") << "the rest counts from the drive that the list shows";
}

TEST_F(NomiraMainTest, WithoutDrivesTheLoadEndsNormally) {
    disk.bNone = true;
    for (const TextView sPath : {u"", u"C:\\tqx"}) {
        g_sInstallDir = sPath;
        Show();
        EXPECT_EQ(Drive(), u"");
        EXPECT_EQ(DirPath(), u"");
        EXPECT_EQ(Seen(), kNoOption);
        EXPECT_TRUE(Boxes().empty());
        UnloadForm(kNomiraMainClass);
    }
}

// ---- Options ----

TEST_F(NomiraMainTest, EachOptionShowsItsLists) {
    Show();
    User().Click(u"Option1");
    EXPECT_EQ(Seen(), kOption1);
    User().Click(u"Option2");
    EXPECT_EQ(Seen(), kOption2);
    EXPECT_EQ(Get<TextBox>(u"Text1").Text(), u"names.txt");
    User().Click(u"Option3");
    EXPECT_EQ(Seen(), kOption3);
    User().Click(u"Option1");
    EXPECT_EQ(Seen(), kOption1);
}

TEST_F(NomiraMainTest, WithoutTheMiddlewareNobodyAsksTheLink) {
    Show();
    User().Click(u"Option3");
    EXPECT_EQ(Seen(), kOption3);
    EXPECT_FALSE(g_Comm().IsVexonConnected());
    EXPECT_TRUE(library.calls.empty());
}

TEST_F(NomiraMainTest, TheOtherMiddlewareIsNoReasonToConnect) {
    RunMiddleware(u"Orvo-Vexon 3.EXE");
    Show();
    User().Click(u"Option3");
    EXPECT_EQ(Seen(), kOption3);
    EXPECT_FALSE(g_Comm().IsVexonConnected());
}

TEST_F(NomiraMainTest, WithTheLinkTheProgramsAreTheControllers) {
    RunMiddleware();
    SetDirectories({u"Program", u"System"});
    SetPrograms({u"a.src", u"b.dat"});
    Show();
    User().Click(u"Option3");
    EXPECT_EQ(Seen(), kOnController);
    EXPECT_EQ(Get<TreeView>(u"TreeView1").Nodes().Count(), 4);
    EXPECT_EQ(Get<TreeView>(u"TreeView1").SelectedItem()->Text(), u"Program");
    EXPECT_EQ(Entries(Get<ListBox>(u"List1")), (Texts{u"a.src"}));
    EXPECT_EQ(Calls(u"CreateLinkObject(LNK_TqxLib.SyncFile, NomiraMain"), 1);
    EXPECT_EQ(Calls(u"ListDirectory(TQX:\\\\R1\\*., 0, 5)"), 1);
    EXPECT_EQ(Calls(u"ListDirectory(TQX:\\\\R1\\, 0, 5)"), 1);
    EXPECT_TRUE(Boxes().empty());
}

TEST_F(NomiraMainTest, TheOldListsGoWhenTheControllersCome) {
    RunMiddleware();
    SetPrograms({u"a.src"});
    Show();
    User().Click(u"Option2");
    User().Click(u"Option3");
    EXPECT_EQ(Seen(), kOnController);
    User().Click(u"Option1");
    EXPECT_EQ(Seen(), With(kOption1, u"Picture1"));
}

TEST_F(NomiraMainTest, WithoutDirectoriesTheTreeStays) {
    RunMiddleware();
    SetPrograms({u"a.src"});
    Show();
    Get<TreeView>(u"TreeView1").Nodes().Add(u"old", u"old", 1);
    User().Click(u"Option3");
    EXPECT_EQ(Get<TreeView>(u"TreeView1").Nodes().Count(), 1);
    EXPECT_EQ(Seen(), kOnController);
}

TEST_F(NomiraMainTest, WithoutProgramsTheFormStays) {
    RunMiddleware();
    SetDirectories({u"Program"});
    Show();
    User().Click(u"Option3");
    EXPECT_EQ(Seen(), With(kNoOption, u"Picture1")) << "Start stays hidden";
    EXPECT_EQ(Get<TreeView>(u"TreeView1").Nodes().Count(), 3);
    User().Click(u"Option1");
    User().Click(u"Option3");
    EXPECT_EQ(Seen(), With(kOption1, u"Picture1")) << "Start stays seen";
}

TEST_F(NomiraMainTest, AControllerThatDoesNotAnswerLeavesTheForm) {
    RunMiddleware();
    library.bMiddlewareRuns = false;
    Show();
    User().Click(u"Option3");
    EXPECT_EQ(Seen(), With(kNoOption, u"Picture1"));
    EXPECT_TRUE(g_Comm().IsVexonConnected());
}

TEST_F(NomiraMainTest, ARefusedConnectionShowsWhatIsShownWithoutTheMiddleware) {
    Show();
    User().Click(u"Option3");
    const auto without = Seen();
    UnloadForm(kNomiraMainClass);
    RunMiddleware();
    library.bInstalled = false;
    Show();
    User().Click(u"Option3");
    EXPECT_EQ(Seen(), without);
    EXPECT_TRUE(Boxes().empty());
}

TEST_F(NomiraMainTest, ChoosingOptionThreeTwiceDoublesTheList) {
    RunMiddleware();
    SetPrograms({u"a.src", u"b.src"});
    Show();
    User().Click(u"Option3");
    User().Click(u"Option3");
    EXPECT_EQ(Entries(Get<ListBox>(u"List1")), (Texts{u"a.src", u"b.src"})) << "chosen already";
    User().Click(u"Option1");
    User().Click(u"Option3");
    EXPECT_EQ(Entries(Get<ListBox>(u"List1")), (Texts{u"a.src", u"b.src", u"a.src", u"b.src"}));
}

TEST_F(NomiraMainTest, ALinklessChoiceLeavesTreeAndListAsTheyWere) {
    RunMiddleware();
    SetDirectories({u"Program"});
    SetPrograms({u"a.src"});
    Show();
    User().Click(u"Option3");
    User().Click(u"cmdView");
    machine.processes.processes.clear();
    Get<Control>(u"TreeView1").SetVisible(true);
    User().Click(u"cmdExit");
    EXPECT_TRUE(Get<Control>(u"TreeView1").Visible());
    EXPECT_TRUE(Get<Control>(u"File2").Visible());
    EXPECT_EQ(Entries(Get<ListBox>(u"List1")), (Texts{u"a.src"}));
}

// A nested directory ends in the failure of a tree that nobody fills.
TEST_F(NomiraMainTest, ANestedDirectoryFailsOutOfTheChoice) {
    RunMiddleware();
    SetDirectories({u"Program", u"Program\\Sub"});
    SetPrograms({u"a.src"});
    Show();
    EXPECT_EQ(Raised([&] { User().Click(u"Option3"); }), ErrorNumber::IndexOutOfBounds);
    EXPECT_NE(FindForm(kStdBofFormClass), nullptr);
    EXPECT_FALSE(FindForm(kStdBofFormClass)->Visible());
}

TEST_F(NomiraMainTest, AClickInTheTreeMovesTheHighlightAlone) {
    RunMiddleware();
    SetDirectories({u"Program", u"System"});
    SetPrograms({u"a.src"});
    Show();
    User().Click(u"Option3");
    library.calls.clear();
    view.steps.clear();
    User().SelectNode(u"TreeView1", u"R1_2");
    User().PressTreeKey(u"TreeView1", 40);
    EXPECT_EQ(view.steps, (Texts{u"TreeView1.SelectedItem"}));
    EXPECT_TRUE(library.calls.empty());
}

TEST_F(NomiraMainTest, SelectAllTreatsBothLists) {
    RunMiddleware();
    SetPrograms({u"a.src", u"b.src"});
    machine.files.Put(u"C:\\tqx\\x.src", "x");
    machine.files.Put(u"C:\\tqx\\y.src", "x");
    g_sInstallDir = u"C:\\tqx";
    Show();
    EXPECT_EQ(Selected(Get<FileListBox>(u"File2")), (Texts{u"x.src"}));
    User().Click(u"Option3");
    User().Click(u"chkBoxSelAll");
    EXPECT_EQ(Selected(Get<FileListBox>(u"File2")), (Texts{u"x.src", u"y.src"}));
    EXPECT_EQ(Selected(Get<ListBox>(u"List1")), (Texts{u"a.src", u"b.src"}));
    User().Click(u"chkBoxSelAll");
    EXPECT_EQ(Selected(Get<FileListBox>(u"File2")), Texts{});
    EXPECT_EQ(Selected(Get<ListBox>(u"List1")), Texts{});
}

// The box's value is set back, and its handler takes every selection away.
TEST_F(NomiraMainTest, ChoosingOptionThreeAgainClearsTheSelection) {
    RunMiddleware();
    SetPrograms({u"a.src"});
    machine.files.Put(u"C:\\tqx\\x.src", "x");
    g_sInstallDir = u"C:\\tqx";
    Show();
    User().Click(u"Option3");
    User().Click(u"chkBoxSelAll");
    User().Click(u"Option2");
    User().Click(u"Option3");
    EXPECT_EQ(Get<CheckBox>(u"chkBoxSelAll").Value(), CheckBox::kCleared);
    EXPECT_EQ(Selected(Get<FileListBox>(u"File2")), Texts{});
    EXPECT_EQ(Selected(Get<ListBox>(u"List1")), Texts{});
}

// ---- The view ----

TEST_F(NomiraMainTest, TheViewShowsTheDatabaseAsText) {
    Store("IO", "IN_1", "Door");
    Store("Flag", "FlagText2", "Ready");
    Show();
    User().Click(u"cmdView");
    EXPECT_EQ(Seen(), kView);
    EXPECT_EQ(Get<TextBox>(u"txtboxView").Text(), u"IN_1 Door\r\nFlagText2 Ready\r\n");
    EXPECT_EQ(Caption(u"cmdStart"), u"Save DB");
    EXPECT_EQ(Caption(u"cmdExit"), u"Exit View");
    for (const TextView sButton : {u"cmdStart", u"cmdView", u"cmdExit"})
        EXPECT_TRUE(IsEnabled(sButton));
    EXPECT_EQ(Panel(2), u"");
    EXPECT_EQ(g_Connection, nullptr);
}

TEST_F(NomiraMainTest, TheViewOpensInItsOrder) {
    Show();
    User().Click(u"Option1");
    SetVisible(*form, {u"Text1", u"File2", u"List1", u"TreeView1", u"chkBoxSelAll"}, true);
    Get<Control>(u"cmdStart").SetVisible(false);
    Get<FileListBox>(u"File1").SetPattern(u"*.old");
    Get<FileListBox>(u"File2").SetPattern(u"*.old");
    Get<Control>(u"cmdView").SetFocus();
    ForwardingEngine engine;
    engine.before = [&](const Text&) {
        const bool bNoted = view.Has(u"database");
        if (!bNoted) view.steps.emplace_back(u"database");
    };
    Store("IO", "IN_1", "Door");
    view.steps.clear();
    User().Click(u"cmdView");
    EXPECT_EQ(Steps(), (Texts{u"Dir1.Visible=False",
                              u"Drive1.Visible=False",
                              u"Option1.Visible=False",
                              u"Option2.Visible=False",
                              u"Option3.Visible=False",
                              u"Text1.Visible=False",
                              u"File1.Visible=False",
                              u"File2.Visible=False",
                              u"List1.Visible=False",
                              u"TreeView1.Visible=False",
                              u"chkBoxAdd.Visible=False",
                              u"chkBoxSelAll.Visible=False",
                              u"txtboxView.Visible=True",
                              u"cmdStart.Visible=True",
                              u"File1.Pattern",
                              u"File2.Pattern",
                              u"cmdStart.Caption=Save DB",
                              u"cmdExit.Caption=Exit View",
                              u"cmdExit.Enabled=False",
                              u"cmdStart.Enabled=False",
                              u"pending events",
                              u"StatusBar1.Panels(2).Text=exporting data",
                              u"StatusBar1.Refresh",
                              u"ProgressBar1.Visible=True",
                              u"database",
                              u"txtboxView.Text",
                              u"cmdExit.Enabled=True",
                              u"cmdStart.Enabled=True",
                              u"ProgressBar1.Visible=False",
                              u"StatusBar1.Panels(2).Text="}));
}

TEST_F(NomiraMainTest, NeitherExitNorStartIsLiveWhileTheViewOpens) {
    Show();
    view.onPendingEvents = [&] {
        EXPECT_FALSE(Ends(u"cmdExit"));
        User().Click(u"cmdStart");
    };
    ForwardingEngine engine;
    int nSeen = 0;
    engine.before = [&](const Text&) {
        ++nSeen;
        EXPECT_FALSE(IsEnabled(u"cmdExit"));
        EXPECT_FALSE(IsEnabled(u"cmdStart"));
        EXPECT_TRUE(IsEnabled(u"cmdView"));
    };
    User().Click(u"cmdView");
    EXPECT_GT(nSeen, 0);
    EXPECT_EQ(Panel(3), u"");
    EXPECT_EQ(Seen(), kView);
}

TEST_F(NomiraMainTest, TheViewPressedAgainDropsEdits) {
    Store("IO", "IN_1", "Door");
    Show();
    User().Click(u"cmdView");
    User().Type(u"txtboxView", u"IN_1 Edited\r\n");
    User().Click(u"cmdView");
    EXPECT_EQ(Get<TextBox>(u"txtboxView").Text(), u"IN_1 Door\r\n");
    EXPECT_EQ(Seen(), kView);
    EXPECT_EQ(Caption(u"cmdExit"), u"Exit View");
}

TEST_F(NomiraMainTest, TheViewMayBePressedAgainWhileItOpens) {
    Store("IO", "IN_1", "Door");
    Show();
    int nPressed = 0;
    view.onPendingEvents = [&] {
        if (++nPressed == 1) User().Click(u"cmdView");
    };
    User().Click(u"cmdView");
    EXPECT_EQ(nPressed, 2);
    EXPECT_EQ(Seen(), kView);
    EXPECT_EQ(Get<TextBox>(u"txtboxView").Text(), u"IN_1 Door\r\n");
    EXPECT_TRUE(IsEnabled(u"cmdExit"));
}

TEST_F(NomiraMainTest, AFormThatIsClosedWhileTheViewOpensEndsTheProgram) {
    Show();
    view.onPendingEvents = [this] { form->UserClose(); };
    EXPECT_THROW(User().Click(u"cmdView"), ProgramEnd);
    EXPECT_EQ(view.steps.back(), u"pending events");
    EXPECT_EQ(FindForm(kNomiraMainClass), form);
}

TEST_F(NomiraMainTest, AFormThatIsClosedAtRestGoes) {
    Show();
    User().Click(u"cmdView");
    form->UserClose();
    EXPECT_EQ(FindForm(kNomiraMainClass), nullptr);
    EXPECT_FALSE(AnyFormVisible());
}

TEST_F(NomiraMainTest, TheViewComesBackToTheChosenOption) {
    struct Row {
        TextView sOption;
        const Texts& seen;
    };
    Show();
    for (const Row& row : {Row{u"", kNoOption}, Row{u"Option1", kOption1},
                           Row{u"Option2", kOption2}, Row{u"Option3", kOption3}}) {
        if (!row.sOption.empty()) User().Click(row.sOption);
        User().Click(u"cmdView");
        EXPECT_EQ(Seen(), kView) << Printable(row.sOption);
        EXPECT_FALSE(Ends(u"cmdExit"));
        EXPECT_EQ(Seen(), row.seen) << Printable(row.sOption);
        EXPECT_EQ(Caption(u"cmdStart"), u"Start");
        EXPECT_EQ(Caption(u"cmdExit"), u"Exit");
        for (const TextView sOption : {u"Option1", u"Option2", u"Option3"})
            EXPECT_EQ(Get<RadioButton>(sOption).Value(), sOption == row.sOption);
    }
}

TEST_F(NomiraMainTest, LeavingTheViewGoesInItsOrder) {
    Show();
    User().Click(u"Option1");
    User().Click(u"cmdView");
    view.steps.clear();
    User().Click(u"cmdExit");
    EXPECT_EQ(Steps(), (Texts{u"cmdExit.Focus", u"Dir1.Visible=True", u"Drive1.Visible=True",
                              u"Option1.Visible=True", u"Option2.Visible=True",
                              u"Option3.Visible=True", u"txtboxView.Visible=False",
                              u"File1.Refresh", u"File1.Visible=True", u"chkBoxAdd.Visible=True",
                              u"cmdStart.Caption=Start", u"cmdExit.Caption=Exit"}));
}

TEST_F(NomiraMainTest, LeavingTheViewWithoutAnOptionHidesStartFirst) {
    Show();
    User().Click(u"cmdView");
    view.steps.clear();
    User().Click(u"cmdExit");
    EXPECT_EQ(Steps(),
              (Texts{u"cmdExit.Focus", u"Dir1.Visible=True", u"Drive1.Visible=True",
                     u"Option1.Visible=True", u"Option2.Visible=True", u"Option3.Visible=True",
                     u"cmdStart.Visible=False", u"txtboxView.Visible=False",
                     u"cmdStart.Caption=Start", u"cmdExit.Caption=Exit"}));
    for (const TextView sOption : {u"Option1", u"Option2", u"Option3"})
        EXPECT_FALSE(Get<RadioButton>(sOption).Value());
}

TEST_F(NomiraMainTest, LeavingTheViewAsksTheControllerAnew) {
    RunMiddleware();
    SetDirectories({u"Program"});
    SetPrograms({u"a.src"});
    Show();
    User().Click(u"Option3");
    User().Click(u"cmdView");
    EXPECT_EQ(Seen(), With(kView, u"Picture1"));
    SetPrograms({u"b.src"});
    library.calls.clear();
    User().Click(u"cmdExit");
    EXPECT_EQ(library.calls, (Texts{u"ListDirectory(TQX:\\\\R1\\*., 0, 5)",
                                    u"ListDirectory(TQX:\\\\R1\\, 0, 5)"}));
    EXPECT_EQ(Entries(Get<ListBox>(u"List1")), (Texts{u"a.src", u"b.src"}));
    EXPECT_TRUE(Get<Control>(u"TreeView1").Visible());
    EXPECT_FALSE(Get<Control>(u"Dir1").Visible());
    EXPECT_EQ(Caption(u"cmdExit"), u"Exit");
}

// ---- Exit ----

TEST_F(NomiraMainTest, ExitEndsTheProgram) {
    machine.files.PutDirectory(TempDir);
    Show();
    EXPECT_TRUE(Ends(u"cmdExit"));
    EXPECT_TRUE(machine.files.Exists(TempDir)) << "the pendant's exit alone clears it";
    EXPECT_TRUE(Boxes().empty());
}

TEST_F(NomiraMainTest, ExitLetsGoOfTheLinkFirst) {
    RunMiddleware();
    SetPrograms({u"a.src"});
    Show();
    User().Click(u"Option3");
    library.calls.clear();
    EXPECT_TRUE(Ends(u"cmdExit"));
    EXPECT_EQ(Calls(u"Release("), 7);
    EXPECT_EQ(Calls(u"Release(factory)"), 1);
    EXPECT_TRUE(g_Comm().IsVexonConnected()) << "the inner object itself stays";
}

TEST_F(NomiraMainTest, TheExactCaptionTellsWhetherTheViewIsOpen) {
    Show();
    for (const TextView sCaption : {u"exit view", u"Exit View ", u"Exit", u"Sicht verlassen"}) {
        Get<Button>(u"cmdExit").SetCaption(sCaption);
        EXPECT_TRUE(Ends(u"cmdExit")) << Printable(sCaption);
    }
    Get<Button>(u"cmdExit").SetCaption(u"Exit View");
    EXPECT_FALSE(Ends(u"cmdExit"));
}

// ---- Directories and drives ----

TEST_F(NomiraMainTest, AnOpenedDirectoryFillsTheListsAndSelectsItsFirstProgram) {
    for (const TextView sName : {u"a.src", u"b.src", u"c.txt"})
        machine.files.Put(Text(u"C:\\prog\\").append(sName), "x");
    Show();
    Get<DirListBox>(u"Dir1").UserOpen(0);
    EXPECT_EQ(Entries(Get<FileListBox>(u"File1")), (Texts{u"c.txt"}));
    EXPECT_EQ(Selected(Get<FileListBox>(u"File2")), (Texts{u"a.src"}));
    Get<DirListBox>(u"Dir1").UserOpen(-2);
    EXPECT_EQ(Entries(Get<FileListBox>(u"File2")), Texts{});
    EXPECT_TRUE(Boxes().empty());
}

TEST_F(NomiraMainTest, APickedDriveShowsItsRoot) {
    machine.files.Put(u"D:\\d.src", "x");
    Show();
    User().PickDrive(u"Drive1", u"d:");
    EXPECT_EQ(DirPath(), u"d:\\");
    EXPECT_EQ(Selected(Get<FileListBox>(u"File2")), (Texts{u"d.src"}));
    EXPECT_TRUE(Boxes().empty());
}

TEST_F(NomiraMainTest, ADriveWithoutADiskReturnsToTheDriveOfTheLoad) {
    machine.files.PutDirectory(u"D:\\tqx");
    disk.drives = {u"E:", u"F:"};
    g_sInstallDir = u"D:\\tqx";
    Show();
    ASSERT_EQ(Drive(), u"d:");
    User().PickDrive(u"Drive1", u"e:");
    EXPECT_EQ(Boxes(), (std::vector{tip}));
    EXPECT_EQ(Drive(), u"c:") << "the drive ahead of the installation";
    EXPECT_EQ(DirPath(), u"c:\\");
    User().PickDrive(u"Drive1", u"d:");
    User().PickDrive(u"Drive1", u"f:");
    EXPECT_EQ(Boxes(), (std::vector{tip, tip}));
    EXPECT_EQ(Drive(), u"c:") << "and not the last one that worked";
}

TEST_F(NomiraMainTest, ADriveOfTheLoadThatFailsTooEndsThere) {
    machine.files.PutDirectory(u"D:\\tqx");
    g_sInstallDir = u"D:\\tqx";
    Show();
    disk.drives = {u"C:", u"E:"};
    User().PickDrive(u"Drive1", u"e:");
    EXPECT_EQ(Boxes(), (std::vector{tip, tip}));
    EXPECT_EQ(Drive(), u"c:");
    EXPECT_EQ(DirPath(), u"d:\\tqx");
}

TEST_F(NomiraMainTest, WithoutAnInstallationThereIsNoDriveToReturnTo) {
    disk.drives = {u"E:"};
    Show();
    EXPECT_EQ(Raised([&] { User().PickDrive(u"Drive1", u"e:"); }), ErrorNumber::DeviceUnavailable);
    EXPECT_EQ(Boxes(), (std::vector{tip}));
    EXPECT_EQ(Drive(), u"e:");
}

TEST_F(NomiraMainTest, AnotherFailureOfADriveStandsInTheTitleAndKeepsTheDrive) {
    machine.files.PutDirectory(u"C:\\tqx");
    g_sInstallDir = u"C:\\tqx";
    Show();
    for (const ErrorNumber number :
         {ErrorNumber::DiskNotReady, ErrorNumber::PathFileAccess, ErrorNumber::DeviceIo}) {
        disk.drives = {u"E:"};
        disk.number = number;
        User().PickDrive(u"Drive1", u"e:");
        EXPECT_EQ(Boxes(),
                  (std::vector{memory::MessageBoxShown{
                      u"Runtime error!", Text(ErrorDescription(number)), BoxIcon::Exclamation}}));
        EXPECT_EQ(Drive(), u"e:");
        EXPECT_EQ(DirPath(), u"c:\\tqx");
        User().PickDrive(u"Drive1", u"c:");
        Get<DirListBox>(u"Dir1").SetPath(u"c:\\tqx");
        Boxes().clear();
    }
}

}  // namespace
}  // namespace nomira::testing
