#include "ui/RunConversion.h"

#include "conversion/TextExport.h"
#include "database/adoModul.h"
#include "frame/Progress.h"
#include "testing/ForwardingEngine.h"
#include "testing/Raised.h"
#include "ui/DesktopFixture.h"
#include "userprogram/Staging.h"

namespace nomira::testing {
namespace {

using Rows = std::vector<std::string>;

constexpr const char* kOldProgram = ";FOLD OUT 12 'Pump' State=TRUE\r\n";
constexpr const char* kNewProgram = ";FOLD OUT 12 'Cooling' State=TRUE\r\n";
// A fold header that the rewriter fails at.
constexpr const char* kBadProgram = ";FOLD OUT my own title\r\n";

constexpr TextView kDirectory = u"C:\\work";

// The steps with which every run begins and, but for one without a selection, ends.
const Texts kBegin{u"cmdExit.Enabled=False", u"cmdView.Enabled=False", u"ProgressBar1.Min",
                   u"ProgressBar1.Value", u"ProgressBar1.Visible=True"};
const Texts kFinish{u"cmdExit.Enabled=True",
                    u"cmdView.Enabled=True",
                    u"ProgressBar1.Visible=False",
                    u"StatusBar1.Panels(2).Text=program",
                    u"StatusBar1.Panels(3).Text=finished!",
                    u"StatusBar1.Refresh"};

Texts Joined(std::initializer_list<Texts> parts) {
    Texts all;
    for (const Texts& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

// The rewriter shows and hides the bar, and shows the program's name, by itself.
Texts FinishBehindTheRewriter() {
    Texts steps = kFinish;
    std::erase(steps, u"ProgressBar1.Visible=False");
    return steps;
}

class RunConversionTest : public DesktopFixture {
  protected:
    RunConversionTest() {
        machine.processes.Add(u"C:\\tqx\\OrvoDB.exe");
        machine.files.PutDirectory(kDirectory);
        g_nNumIo = 1024;
    }

    static Text PathOf(TextView sName) { return (Text(kDirectory) + u"\\").append(sName); }
    void Put(TextView sName, std::string_view bytes) { machine.files.Put(PathOf(sName), bytes); }
    std::string Bytes(TextView sName) { return machine.files.Bytes(PathOf(sName)); }

    // The form, its lists on the directory and nothing selected, with the option chosen.
    void ShowWith(TextView sOption) {
        Show();
        Get<DirListBox>(u"Dir1").SetPath(kDirectory);
        Select(u"File2", {});
        if (!sOption.empty()) User().Click(sOption);
        Ready();
    }
    // The same for programs while the middleware runs, which asks for no list of the controller.
    void ShowOnController() {
        Show();
        Get<DirListBox>(u"Dir1").SetPath(kDirectory);
        Select(u"File2", {});
        RunMiddleware();
        g_Comm().ConnectingVexon(kNomiraMainClass, form);
        Get<RadioButton>(u"Option3").SetValue(true);
        Ready();
    }
    // The steps so far are forgotten, and the focus is where the user's click leaves it.
    void Ready() {
        Get<Control>(u"cmdStart").SetVisible(true);
        Get<Control>(u"cmdStart").SetFocus();
        view.steps.clear();
        library.calls.clear();
    }
    void Select(TextView sList, const Texts& names) const {
        auto& list = Get<FileListBox>(sList);
        list.SetMultiSelect(SelectionList::kSimple);
        for (std::int16_t n = 0; n < list.ListCount(); ++n)
            list.SetSelected(n, std::ranges::count(names, list.List(n)) != 0);
        Get<Control>(u"cmdStart").SetVisible(true);
    }
    void Start() {
        view.steps.clear();
        User().Click(u"cmdStart");
    }
    // The steps of the run, the bar's moves and the listings left out.
    Texts Steps() const {
        Texts steps;
        bool bBegun = false;
        for (const Text& sStep : view.steps) {
            const bool bMove = sStep == u"ProgressBar1.Value";
            if (sStep.starts_with(u"dir ") || (bMove && bBegun)) continue;
            bBegun = bBegun || bMove;
            steps.push_back(sStep);
        }
        return steps;
    }
    void ExpectAskedForASelection() {
        EXPECT_EQ(machine.desktop.boxes,
                  (std::vector{memory::MessageBoxShown{u"Please choose one file at least !", u"Tip",
                                                       BoxIcon::Exclamation}}));
    }
    void ExpectFinished() const {
        EXPECT_EQ(Panel(2), u"program");
        EXPECT_EQ(Panel(3), u"finished!");
        EXPECT_TRUE(IsEnabled(u"cmdExit"));
        EXPECT_TRUE(IsEnabled(u"cmdView"));
        EXPECT_TRUE(IsEnabled(u"cmdStart"));
        EXPECT_FALSE(Get<Control>(u"ProgressBar1").Visible());
    }
};

// ---- Any run ----

TEST_F(RunConversionTest, WithoutAnOptionTheRunIsFinishedAtOnce) {
    ShowWith(u"");
    Start();
    EXPECT_EQ(Steps(), Joined({kBegin, kFinish}));
    ExpectFinished();
    EXPECT_TRUE(machine.desktop.boxes.empty());
    EXPECT_EQ(Stored(), Rows{});
}

TEST_F(RunConversionTest, TheBarGetsItsRangeAtEveryStart) {
    ShowWith(u"");
    auto& bar = Get<ProgressBar>(u"ProgressBar1");
    EXPECT_EQ(bar.Min(), 1);
    bar.SetMax(50);
    bar.SetValue(40);
    Start();
    EXPECT_EQ(bar.Min(), 0);
    EXPECT_EQ(bar.Max(), 27);
    EXPECT_EQ(bar.Value(), 0);
    EXPECT_TRUE(g_bProgressReset);
}

TEST_F(RunConversionTest, EveryRunStartsTheBarAnew) {
    Put(u"a.txt", "IN_1 a\r\nIN_2 b\r\nIN_3 c\r\n");
    ShowWith(u"Option1");
    Get<CheckBox>(u"chkBoxAdd").SetValue(CheckBox::kCleared);
    Select(u"File1", {u"a.txt"});
    for (int n = 0; n < 2; ++n) {
        Start();
        EXPECT_EQ(Get<ProgressBar>(u"ProgressBar1").Value(), 3);
        EXPECT_EQ(g_nProgressCount, 3);
        EXPECT_FALSE(g_bProgressReset);
    }
}

TEST_F(RunConversionTest, NoEventsAreLetThrough) {
    Put(u"a.txt", "IN_1 a\r\n");
    ShowWith(u"Option1");
    Select(u"File1", {u"a.txt"});
    Start();
    EXPECT_FALSE(view.Has(u"pending events"));
    ExpectFinished();
}

TEST_F(RunConversionTest, ExitAndViewAreOffDuringTheRunAndStartIsNot) {
    Put(u"a.txt", "IN_1 a\r\n");
    ShowWith(u"Option1");
    Select(u"File1", {u"a.txt"});
    ForwardingEngine engine;
    int nSeen = 0;
    engine.before = [&](const Text&) {
        ++nSeen;
        EXPECT_FALSE(IsEnabled(u"cmdExit"));
        EXPECT_FALSE(IsEnabled(u"cmdView"));
        EXPECT_TRUE(IsEnabled(u"cmdStart"));
        EXPECT_TRUE(Get<Control>(u"ProgressBar1").Visible());
    };
    Start();
    EXPECT_GT(nSeen, 0);
    ExpectFinished();
}

// ---- Text files into the database ----

TEST_F(RunConversionTest, WithoutASelectedTextFileTheRunAsksForOne) {
    Put(u"a.txt", "IN_1 a\r\n");
    ShowWith(u"Option1");
    Start();
    ExpectAskedForASelection();
    EXPECT_EQ(Steps(), Joined({kBegin, {u"cmdExit.Enabled=True", u"cmdView.Enabled=True"}}));
    EXPECT_TRUE(Get<Control>(u"ProgressBar1").Visible()) << "it stays";
    EXPECT_EQ(Panel(2), u"");
    EXPECT_EQ(Panel(3), u"");
    EXPECT_EQ(Stored(), Rows{});
}

TEST_F(RunConversionTest, ACheckedBoxDeletesTheOldDataFirst) {
    Put(u"a.txt", "IN_1 Door\r\n");
    Store("IO", "OUT_5", "old");
    ShowWith(u"Option1");
    Select(u"File1", {u"a.txt"});
    ASSERT_EQ(Get<CheckBox>(u"chkBoxAdd").Value(), CheckBox::kChecked) << "by design";
    Start();
    EXPECT_EQ(Stored(), (Rows{"IN_1|Door"}));
    EXPECT_EQ(Steps(),
              Joined({kBegin,
                      {u"StatusBar1.Panels(2).Text=deleting data", u"input C:\\work\\a.txt",
                       u"StatusBar1.Panels(2).Text=converting data", u"input C:\\work\\a.txt"},
                      kFinish}));
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 2);
    ExpectFinished();
}

TEST_F(RunConversionTest, AnyOtherValueOfTheBoxKeepsThem) {
    Put(u"a.txt", "IN_1 Door\r\n");
    Store("IO", "OUT_5", "old");
    for (const std::int16_t nValue : {CheckBox::kCleared, CheckBox::kGrey}) {
        ShowWith(u"Option1");
        Select(u"File1", {u"a.txt"});
        Get<CheckBox>(u"chkBoxAdd").SetValue(nValue);
        Start();
        EXPECT_EQ(Stored(), (Rows{"IN_1|Door", "OUT_5|old"}));
        EXPECT_EQ(Steps(),
                  Joined({kBegin,
                          {u"StatusBar1.Panels(2).Text=converting data", u"input C:\\work\\a.txt"},
                          kFinish}));
        UnloadForm(kNomiraMainClass);
    }
}

TEST_F(RunConversionTest, EverySelectedTextFileIsDoneInItsOrder) {
    Put(u"a.txt", "IN_1 first\r\nIN_2 a\r\n");
    Put(u"b.txt", "IN_3 b\r\n");
    Put(u"c.txt", "IN_1 last\r\n");
    ShowWith(u"Option1");
    Get<CheckBox>(u"chkBoxAdd").SetValue(CheckBox::kCleared);
    Select(u"File1", {u"c.txt", u"a.txt"});
    Start();
    EXPECT_EQ(Stored(), (Rows{"IN_1|last", "IN_2|a"}));
    EXPECT_EQ(Steps(), Joined({kBegin,
                               {u"StatusBar1.Panels(2).Text=converting data",
                                u"input C:\\work\\a.txt", u"input C:\\work\\c.txt"},
                               kFinish}));
}

TEST_F(RunConversionTest, EachFileDeletesWhatTheOneAheadHasStored) {
    Put(u"a.txt", "IN_1 a\r\n");
    Put(u"b.txt", "IN_2 b\r\n");
    ShowWith(u"Option1");
    Select(u"File1", {u"a.txt", u"b.txt"});
    Start();
    EXPECT_EQ(Stored(), (Rows{"IN_2|b"}));
}

TEST_F(RunConversionTest, TheDesignSelectsOneTextFileAtATime) {
    Put(u"a.txt", "IN_1 a\r\n");
    Put(u"b.txt", "IN_2 b\r\n");
    ShowWith(u"Option1");
    User().Select(u"File1", 0);
    User().Select(u"File1", 1);
    Start();
    EXPECT_EQ(Stored(), (Rows{"IN_2|b"}));
}

TEST_F(RunConversionTest, ARootGetsNoSecondBackslash) {
    machine.files.Put(u"C:\\root.txt", "IN_1 a\r\n");
    ShowWith(u"Option1");
    Get<FileListBox>(u"File1").SetPath(u"C:\\");
    Select(u"File1", {u"root.txt"});
    Start();
    EXPECT_TRUE(view.Has(u"input C:\\root.txt"));
    EXPECT_EQ(Stored(), (Rows{"IN_1|a"}));
}

TEST_F(RunConversionTest, AMissingDatabaseStaysSilent) {
    Put(u"a.txt", "IN_1 a\r\n");
    ShowWith(u"Option1");
    Select(u"File1", {u"a.txt"});
    CloseDatabase();
    db.RemoveFile();
    Start();
    ExpectFinished();
    EXPECT_TRUE(machine.desktop.boxes.empty());
}

TEST_F(RunConversionTest, AFailureOfThePassComesOutOfTheClick) {
    Put(u"a.txt", "IN_1 " + std::string(40000, 'x') + "\r\n");
    ShowWith(u"Option1");
    Select(u"File1", {u"a.txt"});
    EXPECT_EQ(Raised([&] { Start(); }), ErrorNumber::Overflow);
    EXPECT_FALSE(IsEnabled(u"cmdExit"));
    EXPECT_FALSE(IsEnabled(u"cmdView"));
    EXPECT_TRUE(Get<Control>(u"ProgressBar1").Visible());
    EXPECT_EQ(Panel(2), u"converting data");
    EXPECT_EQ(Panel(3), u"");
}

// ---- The customer's files ----

TEST_F(RunConversionTest, TheCustomersFileIsHarvestedAndNotImported) {
    BecomeCustomer();
    Put(u"a.txt", "Tor_auf = E12 \\ ;Tor offen\r\nE7 imported\r\n");
    Store("IO", "OUT_5", "old");
    ShowWith(u"Option1");
    Select(u"File1", {u"a.txt"});
    Get<CheckBox>(u"chkBoxAdd").SetValue(CheckBox::kCleared);
    Start();
    EXPECT_EQ(Stored(), (Rows{"IN_12|Tor offen", "OUT_5|old"}));
    EXPECT_EQ(Steps(),
              Joined({kBegin,
                      {u"input C:\\work\\a.txt", u"StatusBar1.Panels(2).Text=converting data"},
                      kFinish}));
}

// The wipe ahead of an import is not for it; WriteHarvest has one of its own, by the same box.
TEST_F(RunConversionTest, TheBoxMakesNoDifferenceToTheStepsOfAHarvest) {
    BecomeCustomer();
    Put(u"a.txt", "Tor_auf = E12 \\ ;Tor offen\r\n");
    Store("IO", "OUT_5", "old");
    ShowWith(u"Option1");
    Select(u"File1", {u"a.txt"});
    Start();
    EXPECT_EQ(Steps(),
              Joined({kBegin,
                      {u"input C:\\work\\a.txt", u"StatusBar1.Panels(2).Text=converting data"},
                      kFinish}));
    EXPECT_EQ(Stored(), (Rows{"IN_12|Tor offen"}));
}

TEST_F(RunConversionTest, ACustomersFileWithoutSignalsIsImported) {
    BecomeCustomer();
    Put(u"a.txt", "E7 imported\r\n");
    Put(u"b.txt", "Tor_auf = E12 \\ ;Tor offen\r\n");
    ShowWith(u"Option1");
    Select(u"File1", {u"a.txt", u"b.txt"});
    Get<CheckBox>(u"chkBoxAdd").SetValue(CheckBox::kCleared);
    Start();
    EXPECT_EQ(Stored(), (Rows{"IN_12|Tor offen", "IN_7|imported"}));
    EXPECT_EQ(Steps(),
              Joined({kBegin,
                      {u"input C:\\work\\a.txt", u"StatusBar1.Panels(2).Text=converting data",
                       u"input C:\\work\\a.txt", u"input C:\\work\\b.txt"},
                      kFinish}));
}

TEST_F(RunConversionTest, ACustomersFileWithoutSignalsHeedsTheBox) {
    BecomeCustomer();
    Put(u"a.txt", "E7 imported\r\n");
    Store("IO", "OUT_5", "old");
    ShowWith(u"Option1");
    Select(u"File1", {u"a.txt"});
    Start();
    EXPECT_EQ(Stored(), (Rows{"IN_7|imported"}));
    EXPECT_TRUE(view.Has(u"StatusBar1.Panels(2).Text=deleting data"));
}

TEST_F(RunConversionTest, OtherCustomersFilesAreNotHarvested) {
    Put(u"a.txt", "Tor_auf = E12 \\ ;Tor offen\r\nIN_7 imported\r\n");
    for (const TextView sCustomer : {u"vw", u"VW ", u"Anybody"}) {
        BecomeCustomer(sCustomer);
        ShowWith(u"Option1");
        Select(u"File1", {u"a.txt"});
        Start();
        EXPECT_EQ(Stored(), (Rows{"IN_7|imported"})) << Printable(sCustomer);
        UnloadForm(kNomiraMainClass);
    }
}

TEST_F(RunConversionTest, ACustomersFileThatCannotBeOpenedFails) {
    BecomeCustomer();
    Put(u"a.txt", "E7 imported\r\n");
    ShowWith(u"Option1");
    Select(u"File1", {u"a.txt"});
    machine.files.FailOpen(PathOf(u"a.txt"), ErrorNumber::PermissionDenied);
    EXPECT_EQ(Raised([&] { Start(); }), ErrorNumber::PermissionDenied);
    EXPECT_FALSE(IsEnabled(u"cmdExit"));
}

// ---- The database into a text file ----

TEST_F(RunConversionTest, TheDatabaseGoesIntoTheNamedFile) {
    Store("IO", "IN_1", "Door");
    ShowWith(u"Option2");
    EXPECT_EQ(Get<TextBox>(u"Text1").Text(), u"names.txt");
    Start();
    EXPECT_EQ(Bytes(u"names.txt"), "IN_1 Door\r\n\r\n");
    EXPECT_EQ(Steps(), Joined({kBegin, {u"output C:\\work\\names.txt"}, kFinish}));
    ExpectFinished();
}

TEST_F(RunConversionTest, WithoutANameTheExportEndsAsAnyOther) {
    g_sMsgEnterName = u"please enter a name";
    Store("IO", "IN_1", "Door");
    ShowWith(u"Option2");
    User().Type(u"Text1", u"");
    Ready();
    Start();
    EXPECT_EQ(Steps(), Joined({kBegin,
                               {u"StatusBar1.Panels(4).Text=please enter a name",
                                u"StatusBar1.Panels(4).Picture", u"output "},
                               kFinish}));
    ExpectFinished();
    EXPECT_TRUE(machine.desktop.boxes.empty());
    EXPECT_EQ(machine.files.Dir(u"C:\\work\\*"), Texts{});
}

TEST_F(RunConversionTest, AFailureOfTheExportComesOutOfTheClick) {
    Store("IO", "IN_1", "Door");
    ShowWith(u"Option2");
    machine.files.FailWrite(PathOf(u"names.txt"), ErrorNumber::DiskFull);
    EXPECT_EQ(Raised([&] { Start(); }), ErrorNumber::DiskFull);
    EXPECT_FALSE(IsEnabled(u"cmdView"));
    EXPECT_EQ(Panel(3), u"");
}

// ---- The database into programs on the disk ----

TEST_F(RunConversionTest, WithoutASelectedProgramTheRunAsksForOne) {
    Put(u"a.src", kOldProgram);
    ShowWith(u"Option3");
    Select(u"File2", {});
    Start();
    ExpectAskedForASelection();
    EXPECT_EQ(Steps(), Joined({kBegin, {u"cmdExit.Enabled=True", u"cmdView.Enabled=True"}}));
    EXPECT_TRUE(Get<Control>(u"ProgressBar1").Visible());
    EXPECT_EQ(Panel(3), u"");
    EXPECT_FALSE(machine.files.Exists(TempDir));
}

TEST_F(RunConversionTest, EverySelectedProgramIsRewritten) {
    Store("IO", "OUT_12", "Cooling");
    for (const TextView sName : {u"a.src", u"b.src", u"c.src"})
        Put(sName, kOldProgram);
    ShowWith(u"Option3");
    Select(u"File2", {u"a.src", u"c.src"});
    Start();
    EXPECT_EQ(Bytes(u"a.src"), kNewProgram);
    EXPECT_EQ(Bytes(u"b.src"), kOldProgram);
    EXPECT_EQ(Bytes(u"c.src"), kNewProgram);
    EXPECT_EQ(Steps(), Joined({kBegin,
                               {u"StatusBar1.Panels(2).Text=a.src", u"StatusBar1.Refresh",
                                u"input C:\\work\\a.src", u"ProgressBar1.Visible=False",
                                u"output C:\\work\\a.src", u"StatusBar1.Panels(2).Text=c.src",
                                u"StatusBar1.Refresh", u"input C:\\work\\c.src",
                                u"ProgressBar1.Visible=True", u"ProgressBar1.Visible=False",
                                u"output C:\\work\\c.src"},
                               FinishBehindTheRewriter()}));
    ExpectFinished();
}

TEST_F(RunConversionTest, ProgramsOfARootAreFound) {
    Store("IO", "OUT_12", "Cooling");
    machine.files.Put(u"C:\\root.src", kOldProgram);
    ShowWith(u"Option3");
    Get<FileListBox>(u"File2").SetPath(u"C:\\");
    Select(u"File2", {u"root.src"});
    Start();
    EXPECT_EQ(machine.files.Bytes(u"C:\\root.src"), kNewProgram);
}

TEST_F(RunConversionTest, AFailureOfTheRewriterComesOutOfTheClick) {
    Store("IO", "OUT_12", "Cooling");
    Put(u"a.src", kOldProgram);
    Put(u"b.src", kBadProgram);
    Put(u"c.src", kOldProgram);
    ShowWith(u"Option3");
    Select(u"File2", {u"a.src", u"b.src", u"c.src"});
    EXPECT_EQ(Raised([&] { Start(); }), ErrorNumber::InvalidProcedureCall);
    EXPECT_EQ(Bytes(u"a.src"), kNewProgram);
    EXPECT_EQ(Bytes(u"c.src"), kOldProgram);
    EXPECT_EQ(Panel(2), u"b.src");
    EXPECT_FALSE(IsEnabled(u"cmdExit"));
    EXPECT_FALSE(IsEnabled(u"cmdView"));
}

// ---- The database into programs on the controller ----

class ControllerRunTest : public RunConversionTest {
  protected:
    ControllerRunTest() {
        g_sMsgSelectFile = u"select one file at least";
        Store("IO", "OUT_12", "Cooling");
        for (const TextView sName : {u"a.src", u"b.src"}) {
            Put(sName, "local");
            library.PutFile(OnRobot(sName), kOldProgram);
        }
    }
    static Text OnRobot(TextView sName) { return Text(u"TQX:\\R1\\Program\\").append(sName); }
};

TEST_F(ControllerRunTest, SelectedProgramsAreFetchedRewrittenAndSentBack) {
    ShowOnController();
    Select(u"File2", {u"a.src"});
    Start();
    EXPECT_EQ(library.FileBytes(OnRobot(u"a.src")), kNewProgram);
    EXPECT_EQ(library.FileBytes(OnRobot(u"b.src")), kOldProgram);
    EXPECT_EQ(Bytes(u"a.src"), "local");
    EXPECT_EQ(Calls(u"CopyFile"), 2);
    EXPECT_FALSE(machine.files.Exists(TempDir));
    EXPECT_EQ(Steps(),
              Joined({kBegin,
                      {u"input C:\\Temp\\NomiraTemp\\a.src", u"StatusBar1.Panels(2).Text=a.src",
                       u"ProgressBar1.Visible=False", u"output C:\\Temp\\NomiraTemp\\a.src"},
                      FinishBehindTheRewriter()}));
    ExpectFinished();
}

TEST_F(ControllerRunTest, WithoutASelectionThePanelSaysSoAndTheRunIsFinished) {
    ShowOnController();
    Start();
    EXPECT_EQ(Panel(4), u"select one file at least");
    EXPECT_EQ(Get<StatusBar>(u"StatusBar1").Panels(4).Picture().sName, u"picCritical");
    EXPECT_TRUE(machine.desktop.boxes.empty());
    EXPECT_EQ(Steps(), Joined({kBegin,
                               {u"StatusBar1.Panels(4).Text=select one file at least",
                                u"StatusBar1.Panels(4).Picture"},
                               kFinish}));
    EXPECT_TRUE(machine.files.Exists(TempDir)) << "made already, and not cleared";
    EXPECT_TRUE(library.calls.empty());
    ExpectFinished();
}

TEST_F(ControllerRunTest, TheDesktopHasNoWordsForIt) {
    g_sMsgSelectFile.clear();
    ShowOnController();
    Start();
    EXPECT_EQ(Panel(4), u"");
    EXPECT_EQ(Get<StatusBar>(u"StatusBar1").Panels(4).Picture().sName, u"picCritical");
    ExpectFinished();
}

TEST_F(ControllerRunTest, ASelectionClearsTheProblem) {
    ShowOnController();
    Start();
    Select(u"File2", {u"a.src"});
    Start();
    EXPECT_EQ(Panel(4), u"");
    EXPECT_EQ(Get<StatusBar>(u"StatusBar1").Panels(4).Picture(), Picture{});
}

TEST_F(ControllerRunTest, EitherMiddlewareMakesTheProgramsTheControllers) {
    for (const TextView sProcess :
         {u"Orvo-Vexon 3.EXE", u"VEXON3.EXE", u"vexon3.exe", u"orvo-vexon 3.exe"}) {
        machine.processes.processes.clear();
        ShowWith(u"Option3");
        RunMiddleware(sProcess);
        g_Comm().ConnectingVexon(kNomiraMainClass, form);
        Select(u"File2", {});
        Start();
        EXPECT_EQ(Panel(4), u"select one file at least") << Printable(sProcess);
        EXPECT_TRUE(machine.desktop.boxes.empty());
        UnloadForm(kNomiraMainClass);
    }
}

TEST_F(ControllerRunTest, AnotherProcessLeavesThemOnTheDisk) {
    RunMiddleware(u"orvo.exe");
    Put(u"a.src", kOldProgram);
    ShowWith(u"Option3");
    Select(u"File2", {u"a.src"});
    Start();
    EXPECT_EQ(Bytes(u"a.src"), kNewProgram);
    EXPECT_TRUE(library.calls.empty());
}

// What the operator sees and selects there is List1; the run reads File2 all the same.
TEST_F(ControllerRunTest, TheHiddenListTellsWhichPrograms) {
    SetPrograms({u"a.src", u"b.src"});
    ShowWith(u"");
    RunMiddleware();
    User().Click(u"Option3");
    ASSERT_FALSE(Get<Control>(u"File2").Visible());
    User().Select(u"List1", 0);
    Select(u"File2", {u"b.src"});
    Start();
    EXPECT_EQ(library.FileBytes(OnRobot(u"a.src")), kOldProgram);
    EXPECT_EQ(library.FileBytes(OnRobot(u"b.src")), kNewProgram);
}

TEST_F(ControllerRunTest, WithoutALinkTheRunFails) {
    ShowOnController();
    g_Comm().ExitVexonComm();
    Select(u"File2", {u"a.src"});
    EXPECT_EQ(Raised([&] { Start(); }), ErrorNumber::ObjectNotSet);
    EXPECT_FALSE(IsEnabled(u"cmdExit"));
    EXPECT_EQ(Panel(3), u"");
}

TEST_F(ControllerRunTest, AProgramThatCannotBeFetchedIsPassedOverInSilence) {
    ShowOnController();
    library.Fail(u"CopyFile(TQX:\\R1\\Program\\a.src");
    Select(u"File2", {u"a.src", u"b.src"});
    Start();
    EXPECT_EQ(library.FileBytes(OnRobot(u"a.src")), kOldProgram);
    EXPECT_EQ(library.FileBytes(OnRobot(u"b.src")), kNewProgram);
    ExpectFinished();
    EXPECT_TRUE(machine.desktop.boxes.empty());
}

TEST_F(ControllerRunTest, AFailureOfTheRewriterLeavesTheStagedPrograms) {
    library.PutFile(OnRobot(u"b.src"), kBadProgram);
    ShowOnController();
    Select(u"File2", {u"a.src", u"b.src"});
    EXPECT_EQ(Raised([&] { Start(); }), ErrorNumber::InvalidProcedureCall);
    EXPECT_EQ(machine.files.Dir(u"C:\\Temp\\NomiraTemp\\*"), (Texts{u"a.src", u"b.src"}));
    EXPECT_FALSE(IsEnabled(u"cmdView"));
}

// ---- The view's save ----

class SaveViewTest : public RunConversionTest {
  protected:
    SaveViewTest() {
        Store("IO", "IN_1", "Door");
        Store("IO", "IN_2", "Gate");
        Show();
        User().Click(u"Option1");
        User().Click(u"cmdView");
    }
};

TEST_F(SaveViewTest, TheEditedTextReplacesTheDatabase) {
    User().Type(u"txtboxView", u"IN_1 Window\r\nOUT_3 Lamp\r\n");
    Start();
    EXPECT_EQ(Stored(), (Rows{"IN_1|Window", "OUT_3|Lamp"}));
    EXPECT_TRUE(IsEnabled(u"cmdExit"));
    EXPECT_TRUE(IsEnabled(u"cmdView"));
    EXPECT_EQ(Panel(2), u"");
    EXPECT_EQ(Panel(3), u"") << "no word of an end here";
    EXPECT_TRUE(Get<Control>(u"txtboxView").Visible());
    EXPECT_EQ(Get<Button>(u"cmdStart").Caption(), u"Save DB");
    EXPECT_TRUE(machine.desktop.boxes.empty());
}

TEST_F(SaveViewTest, SavesInItsOrder) {
    User().Type(u"txtboxView", u"IN_1 Window\r\n");
    Get<Control>(u"cmdStart").SetFocus();
    Get<ProgressBar>(u"ProgressBar1").SetMax(50);
    Get<ProgressBar>(u"ProgressBar1").SetMin(1);
    ForwardingEngine engine;
    engine.before = [&](const Text&) {
        if (view.steps.back() != u"database" && view.steps.back() != u"ProgressBar1.Value")
            view.steps.emplace_back(u"database");
    };
    Start();
    Texts steps = view.steps;
    std::erase(steps, u"ProgressBar1.Value");
    EXPECT_EQ(steps, (Texts{u"cmdExit.Enabled=False", u"cmdView.Enabled=False", u"ProgressBar1.Min",
                            u"ProgressBar1.Max", u"StatusBar1.Panels(2).Text=saving data",
                            u"StatusBar1.Refresh", u"ProgressBar1.Visible=True", u"database",
                            u"ProgressBar1.Visible=False", u"StatusBar1.Panels(2).Text=",
                            u"cmdExit.Enabled=True", u"cmdView.Enabled=True"}));
}

TEST_F(SaveViewTest, TheSaveStartsNoProgressAnew) {
    g_bProgressReset = false;
    Get<ProgressBar>(u"ProgressBar1").SetMin(0);
    Get<ProgressBar>(u"ProgressBar1").SetValue(5);
    Start();  // without an edit, so that no step is made
    EXPECT_FALSE(g_bProgressReset);
    EXPECT_EQ(Get<ProgressBar>(u"ProgressBar1").Value(), 5);
}

TEST_F(SaveViewTest, NothingIsCompacted) {
    User().Type(u"txtboxView", u"IN_1 Window\r\n");
    class CountingEngine : public ForwardingEngine {
      public:
        int nCompactions = 0;
        void CompactDatabase(TextView, TextView) override { ++nCompactions; }
    } engine;
    Start();
    EXPECT_EQ(engine.nCompactions, 0);
    EXPECT_GT(engine.Count(u"open"), 0);
}

TEST_F(SaveViewTest, TheViewKeepsTheTextAsTheOperatorLeftIt) {
    BecomeCustomer();
    User().Type(u"txtboxView", u"E1 Window\r\n");
    Start();
    EXPECT_EQ(Stored(), (Rows{"IN_1|Window"}));
    EXPECT_EQ(Get<TextBox>(u"txtboxView").Text(), u"E1 Window\r\n");
}

TEST_F(SaveViewTest, TheExactCaptionTellsThatTheViewIsOpen) {
    User().Type(u"txtboxView", u"IN_1 Window\r\n");
    Get<Button>(u"cmdStart").SetCaption(u"save db");
    Start();
    ExpectAskedForASelection();
    EXPECT_EQ(Stored(), (Rows{"IN_1|Door", "IN_2|Gate"}));
}

TEST_F(SaveViewTest, AFailureComesOutOfTheClick) {
    User().Type(u"txtboxView", Text(40000, u'x'));
    EXPECT_EQ(Raised([&] { Start(); }), ErrorNumber::Overflow);
    EXPECT_FALSE(IsEnabled(u"cmdExit"));
    EXPECT_EQ(Panel(2), u"saving data");
}

}  // namespace
}  // namespace nomira::testing
