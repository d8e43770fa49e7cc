#include "userprogram/Staging.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "adapters/memory/ScriptedLinkLibrary.h"
#include "frame/ProgramVariables.h"
#include "langtools/RuntimeError.h"
#include "link/cVexonComm.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/StatusBar.h"
#include "userprogram/ProgramFixture.h"

namespace nomira::testing {
namespace {

class MakeDirectoryPathTest : public ::testing::Test {
  protected:
    memory::MemoryFiles& Files() { return m_machine.files; }
    memory::MemoryMachine m_machine;
};

TEST_F(MakeDirectoryPathTest, EveryLevelIsMade) {
    MakeDirectoryPath(u"C:\\Temp\\NomiraTemp\\Third");
    EXPECT_TRUE(Files().GetAttr(u"C:\\Temp") & AttributeDirectory);
    EXPECT_TRUE(Files().GetAttr(u"C:\\Temp\\NomiraTemp") & AttributeDirectory);
    EXPECT_TRUE(Files().GetAttr(u"C:\\Temp\\NomiraTemp\\Third") & AttributeDirectory);
}

TEST_F(MakeDirectoryPathTest, ClosingBackslashMakesNoDifference) {
    MakeDirectoryPath(u"C:\\Temp\\NomiraTemp\\");
    EXPECT_EQ(Files().Dir(u"C:\\Temp\\*", AttributeDirectory), std::vector<Text>{u"NomiraTemp"});
}

TEST_F(MakeDirectoryPathTest, ExistingPathStaysAsItIs) {
    Files().Put(u"C:\\Temp\\NomiraTemp\\a.src", "x");
    MakeDirectoryPath(u"C:\\Temp\\NomiraTemp");
    EXPECT_EQ(Files().Bytes(u"C:\\Temp\\NomiraTemp\\a.src"), "x");
}

TEST_F(MakeDirectoryPathTest, MissingLevelsBehindAnExistingOneAreMade) {
    Files().PutDirectory(u"C:\\Temp");
    MakeDirectoryPath(u"C:\\Temp\\a\\b");
    EXPECT_TRUE(Files().Exists(u"C:\\Temp\\a\\b"));
}

TEST_F(MakeDirectoryPathTest, FailuresAreIgnored) {
    Files().Put(u"C:\\Temp", "a file in the way");
    EXPECT_NO_THROW(MakeDirectoryPath(u"C:\\Temp\\NomiraTemp"));
    EXPECT_NO_THROW(MakeDirectoryPath(u"Q:\\Temp\\NomiraTemp"));
    EXPECT_FALSE(Files().Exists(u"C:\\Temp\\NomiraTemp"));
    Files().FailChange(u"C:\\a", ErrorNumber::PermissionDenied);
    EXPECT_NO_THROW(MakeDirectoryPath(u"C:\\a\\b"));
    EXPECT_FALSE(Files().Exists(u"C:\\a"));
    EXPECT_EQ(Files().Bytes(u"C:\\Temp"), "a file in the way");
}

TEST_F(MakeDirectoryPathTest, RootAloneMakesNothing) {
    MakeDirectoryPath(u"C:\\");
    EXPECT_TRUE(Files().Dir(u"C:\\*", AttributeDirectory).empty());
}

TEST_F(MakeDirectoryPathTest, TwoBackslashesEndThePath) {
    MakeDirectoryPath(u"C:\\a\\\\b");
    EXPECT_TRUE(Files().Exists(u"C:\\a"));
    EXPECT_FALSE(Files().Exists(u"C:\\a\\b"));
}

TEST_F(MakeDirectoryPathTest, PathShorterThanARootIsNoFailure) {
    EXPECT_NO_THROW(MakeDirectoryPath(u""));
    EXPECT_NO_THROW(MakeDirectoryPath(u"C:"));
}

// ---- A form's selection ----

// The controls that both main forms have, with programs to select from.
class SelectionForm : public Form {
  public:
    SelectionForm() : Form(u"Selection") {
        file2.SetMultiSelect(true);
        for (int n = 0; n < 4; ++n)
            bar.AddPanel();
    }
    FileListBox& file1 = Add<FileListBox>(u"File1");
    FileListBox& file2 = Add<FileListBox>(u"File2");
    DirListBox& dir1 = Add<DirListBox>(u"Dir1");
    TextBox& text1 = Add<TextBox>(u"Text1");
    StatusBar& bar = Add<StatusBar>(u"StatusBar1");
};

class SelectionTest : public ProgramFixture {
  protected:
    SelectionTest() {
        g_sMsgSelectFile = u"select one file at least";
        g_sMsgEnterName = u"please enter a name";
        for (const TextView sName : {u"a.src", u"b.src", u"c.src"})
            Files().Put(Text(u"C:\\prog\\").append(sName), "x");
        Files().Put(u"C:\\root.txt", "x");
        m_form.file1.SetPath(u"C:\\prog");
        m_form.file2.SetPath(u"C:\\prog");
        ShowOldProblem();
    }
    memory::MemoryFiles& Files() { return m_machine.files; }
    void ShowOldProblem() {
        Problem().SetText(u"old");
        Problem().SetPicture({u"old"});
    }
    Panel& Problem() { return m_form.bar.Panels(4); }
    void ExpectProblem(TextView sText, TextView sPicture) {
        EXPECT_EQ(Problem().Text(), sText);
        EXPECT_EQ(Problem().Picture().sName, sPicture);
        for (std::int16_t n = 1; n <= 3; ++n)
            EXPECT_EQ(m_form.bar.Panels(n).Text(), u"");
    }

    SelectionForm m_form;
};

TEST_F(SelectionTest, AnyEntryCountsAsASelection) {
    EXPECT_FALSE(HasSelectionFile1(m_form));
    EXPECT_FALSE(HasSelectionFile2(m_form));
    m_form.file1.SetSelected(2, true);
    EXPECT_TRUE(HasSelectionFile1(m_form));
    EXPECT_FALSE(HasSelectionFile2(m_form));
    m_form.file2.SetSelected(0, true);
    EXPECT_TRUE(HasSelectionFile2(m_form));
    ExpectProblem(u"old", u"old");
}

TEST_F(SelectionTest, EmptyListHasNoSelection) {
    m_form.file1.SetPattern(u"*.none");
    m_form.file2.SetPattern(u"*.none");
    EXPECT_FALSE(HasSelectionFile1(m_form));
    EXPECT_FALSE(HasSelectionFile2(m_form));
}

TEST_F(SelectionTest, FirstSelectedTextFileClearsTheProblem) {
    m_form.file1.SetSelected(1, true);
    EXPECT_EQ(FirstSelectedFile1(m_form), u"C:\\prog\\b.src");
    ExpectProblem(u"", u"");
}

TEST_F(SelectionTest, NoSelectedTextFileIsAProblem) {
    EXPECT_EQ(FirstSelectedFile1(m_form), u"");
    ExpectProblem(u"select one file at least", u"picCritical");
}

TEST_F(SelectionTest, FirstSelectedProgramLeavesTheProblem) {
    EXPECT_EQ(FirstSelectedFile2(m_form), u"");
    ExpectProblem(u"old", u"old");
    m_form.file2.SetSelected(2, true);
    m_form.file2.SetSelected(1, true);
    EXPECT_EQ(FirstSelectedFile2(m_form), u"C:\\prog\\b.src");
    ExpectProblem(u"old", u"old");
}

TEST_F(SelectionTest, RootGetsNoSecondBackslash) {
    for (FileListBox* list : {&m_form.file1, &m_form.file2}) {
        list->SetPath(u"C:\\");
        list->SetSelected(0, true);
    }
    m_form.dir1.SetPath(u"C:\\");
    m_form.text1.SetText(u"names.txt");
    EXPECT_EQ(FirstSelectedFile1(m_form), u"C:\\root.txt");
    EXPECT_EQ(FirstSelectedFile2(m_form), u"C:\\root.txt");
    EXPECT_EQ(ExportTargetPath(m_form), u"C:\\names.txt");
}

TEST_F(SelectionTest, SelectedProgramsAreCollectedInTheirOrder) {
    m_form.file2.SetSelected(2, true);
    m_form.file2.SetSelected(0, true);
    EXPECT_EQ(CollectSelectedFile2(m_form), (std::vector<Text>{u"a.src", u"c.src"}));
    EXPECT_TRUE(Files().Exists(TempDir));
    ExpectProblem(u"", u"");
}

TEST_F(SelectionTest, StagingDirectoryIsMadeEvenIfNothingIsSelected) {
    EXPECT_EQ(CollectSelectedFile2(m_form), std::nullopt);
    EXPECT_TRUE(Files().Exists(TempDir));
    ExpectProblem(u"select one file at least", u"picCritical");
}

TEST_F(SelectionTest, ExportGoesIntoTheDirectoryUnderTheName) {
    m_form.dir1.SetPath(u"C:\\prog");
    m_form.text1.SetText(u"names.txt");
    EXPECT_TRUE(HasTextFileName(m_form));
    EXPECT_EQ(ExportTargetPath(m_form), u"C:\\prog\\names.txt");
    ExpectProblem(u"", u"");
}

TEST_F(SelectionTest, ExportWithoutANameIsAProblem) {
    m_form.dir1.SetPath(u"C:\\prog");
    EXPECT_FALSE(HasTextFileName(m_form));
    EXPECT_EQ(ExportTargetPath(m_form), u"");
    ExpectProblem(u"please enter a name", u"picCritical");
    m_form.text1.SetText(u" ");
    EXPECT_TRUE(HasTextFileName(m_form)) << "a blank is a name";
}

TEST_F(SelectionTest, FormWithoutTheControlsRaises) {
    const Form form(u"Bare");
    EXPECT_EQ(Raised([&] { HasSelectionFile1(form); }), ErrorNumber::NoSuchMember);
    EXPECT_EQ(Raised([&] { ExportTargetPath(form); }), ErrorNumber::NoSuchMember);
}

// ---- Programs on the controller ----

constexpr const char* kOldProgram = ";FOLD OUT 12 'Pump' State=TRUE\r\n";
constexpr const char* kNewProgram = ";FOLD OUT 12 'Cooling' State=TRUE\r\n";

class StagedRewriteTest : public SelectionTest {
  protected:
    StagedRewriteTest() {
        SetLinkLibrary(&m_library);
        g_Comm().ConnectingVexon(u"Selection", &m_form);
        for (const TextView sName : {u"a.src", u"b.src", u"c.src"})
            m_library.PutFile(OnRobot(sName), kOldProgram);
    }
    ~StagedRewriteTest() override {
        g_Comm().ExitVexonComm();
        SetLinkLibrary(nullptr);
    }
    static Text OnRobot(TextView sName) { return Text(u"TQX:\\R1\\Program\\").append(sName); }
    void Select(std::initializer_list<std::int16_t> indexes) {
        for (const std::int16_t nIndex : indexes)
            m_form.file2.SetSelected(nIndex, true);
        m_library.calls.clear();
    }
    std::vector<Text> Copies() const {
        std::vector<Text> copies;
        std::ranges::copy_if(m_library.calls, std::back_inserter(copies),
                             [](TextView sCall) { return sCall.starts_with(u"CopyFile"); });
        return copies;
    }

    memory::ScriptedLinkLibrary m_library{m_machine.files};
};

TEST_F(StagedRewriteTest, SelectedProgramsAreFetchedRewrittenAndSentBack) {
    Select({0, 2});
    StagedRewriteOnController(m_form);
    EXPECT_EQ(Copies(),
              (std::vector<Text>{
                  u"CopyFile(TQX:\\R1\\Program\\a.src, C:\\Temp\\NomiraTemp\\a.src, 4160)",
                  u"CopyFile(C:\\Temp\\NomiraTemp\\a.src, TQX:\\R1\\Program\\a.src, 64)",
                  u"CopyFile(TQX:\\R1\\Program\\c.src, C:\\Temp\\NomiraTemp\\c.src, 4160)",
                  u"CopyFile(C:\\Temp\\NomiraTemp\\c.src, TQX:\\R1\\Program\\c.src, 64)"}));
    EXPECT_EQ(m_library.FileBytes(OnRobot(u"a.src")), kNewProgram);
    EXPECT_EQ(m_library.FileBytes(OnRobot(u"b.src")), kOldProgram);
    EXPECT_EQ(m_library.FileBytes(OnRobot(u"c.src")), kNewProgram);
    EXPECT_FALSE(Files().Exists(TempDir));
    EXPECT_TRUE(Files().Exists(u"C:\\Temp"));
}

TEST_F(StagedRewriteTest, ProgramWithoutAChangeIsNotSentBack) {
    m_library.PutFile(OnRobot(u"a.src"), kNewProgram);
    Select({0});
    StagedRewriteOnController(m_form);
    EXPECT_EQ(Copies(),
              (std::vector<Text>{
                  u"CopyFile(TQX:\\R1\\Program\\a.src, C:\\Temp\\NomiraTemp\\a.src, 4160)"}));
    EXPECT_FALSE(Files().Exists(TempDir));
}

TEST_F(StagedRewriteTest, NothingSelectedLeavesAnEmptyStagingDirectory) {
    Select({});
    StagedRewriteOnController(m_form);
    EXPECT_EQ(Copies(), std::vector<Text>{});
    EXPECT_TRUE(Files().Exists(TempDir));
    ExpectProblem(u"select one file at least", u"picCritical");
}

TEST_F(StagedRewriteTest, ProgramThatCannotBeFetchedIsPassedOverInSilence) {
    m_library.Fail(u"CopyFile(TQX:\\R1\\Program\\a.src");
    Select({0, 1});
    StagedRewriteOnController(m_form);
    EXPECT_EQ(m_library.FileBytes(OnRobot(u"a.src")), kOldProgram);
    EXPECT_EQ(m_library.FileBytes(OnRobot(u"b.src")), kNewProgram);
    ExpectProblem(u"", u"");
    EXPECT_TRUE(Boxes().empty());
}

TEST_F(StagedRewriteTest, ChangeThatCannotBeSentBackIsLostInSilence) {
    m_library.Fail(u"CopyFile(C:\\Temp");
    Select({0});
    StagedRewriteOnController(m_form);
    EXPECT_EQ(m_library.FileBytes(OnRobot(u"a.src")), kOldProgram);
    EXPECT_FALSE(Files().Exists(TempDir));
    ExpectProblem(u"", u"");
    EXPECT_TRUE(Boxes().empty());
}

TEST_F(StagedRewriteTest, WithoutAStagingDirectoryNothingChanges) {
    Files().Put(u"C:\\Temp", "a file in the way");
    Select({0, 1});
    StagedRewriteOnController(m_form);
    EXPECT_EQ(m_library.FileBytes(OnRobot(u"a.src")), kOldProgram);
    EXPECT_EQ(m_library.FileBytes(OnRobot(u"b.src")), kOldProgram);
    EXPECT_EQ(Files().Bytes(u"C:\\Temp"), "a file in the way");
}

TEST_F(StagedRewriteTest, ProgramsOfTheRunLieThereTogether) {
    Select({0, 1});
    m_library.Fail(u"CopyFile(C:\\Temp\\NomiraTemp\\b.src");
    Files().FailChange(u"C:\\Temp\\NomiraTemp\\a.src", ErrorNumber::PathFileAccess);
    Files().FailChange(u"C:\\Temp\\NomiraTemp\\b.src", ErrorNumber::PathFileAccess);
    StagedRewriteOnController(m_form);
    EXPECT_EQ(Files().Dir(u"C:\\Temp\\NomiraTemp\\*"), (std::vector<Text>{u"a.src", u"b.src"}));
}

TEST_F(StagedRewriteTest, OtherFilesStayAndTheirDirectoryWithThem) {
    Files().Put(u"C:\\Temp\\NomiraTemp\\other.dat", "x");
    Files().Put(u"C:\\Temp\\NomiraTemp\\left.src", "x");
    Select({0});
    StagedRewriteOnController(m_form);
    EXPECT_EQ(Files().Dir(u"C:\\Temp\\NomiraTemp\\*"), (std::vector<Text>{u"other.dat"}));
}

TEST_F(StagedRewriteTest, FetchReplacesALeftOverProgram) {
    Files().Put(u"C:\\Temp\\NomiraTemp\\a.src", "left over");
    Select({0});
    StagedRewriteOnController(m_form);
    EXPECT_EQ(m_library.FileBytes(OnRobot(u"a.src")), kNewProgram);
}

TEST_F(StagedRewriteTest, FailureOfTheRewriterGoesUpAndLeavesTheFiles) {
    m_library.PutFile(OnRobot(u"b.src"), ";FOLD OUT my own title\r\n");
    Select({0, 1, 2});
    EXPECT_EQ(Raised([&] { StagedRewriteOnController(m_form); }),
              ErrorNumber::InvalidProcedureCall);
    EXPECT_EQ(Files().Dir(u"C:\\Temp\\NomiraTemp\\*"), (std::vector<Text>{u"a.src", u"b.src"}));
    EXPECT_EQ(m_library.FileBytes(OnRobot(u"c.src")), kOldProgram);
}

TEST_F(StagedRewriteTest, WithoutALinkTheRunFails) {
    g_Comm().ExitVexonComm();
    Select({0});
    EXPECT_EQ(Raised([&] { StagedRewriteOnController(m_form); }), ErrorNumber::ObjectNotSet);
}

TEST_F(StagedRewriteTest, UnlinkedRunChangesNothing) {
    g_Comm().ExitVexonComm();
    m_library.bMiddlewareRuns = false;
    g_Comm().ConnectingVexon(u"Selection", &m_form);
    Select({0});
    StagedRewriteOnController(m_form);
    EXPECT_EQ(m_library.FileBytes(OnRobot(u"a.src")), kOldProgram);
    EXPECT_FALSE(Files().Exists(TempDir));
}

TEST_F(StagedRewriteTest, ClearingIgnoresWhatIsNotThere) {
    EXPECT_NO_THROW(ClearTempDir());
    Files().PutDirectory(TempDir);
    ClearTempDir();
    EXPECT_FALSE(Files().Exists(TempDir));
}

}  // namespace
}  // namespace nomira::testing
