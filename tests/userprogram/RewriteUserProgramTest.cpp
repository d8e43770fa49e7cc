#include "userprogram/RewriteUserProgram.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "conversion/TextImport.h"
#include "frame/ProgramVariables.h"
#include "frame/Progress.h"
#include "langtools/RuntimeError.h"
#include "platform/ForwardingFiles.h"
#include "testing/ForwardingPorts.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/StatusBar.h"
#include "userprogram/FoldHeader.h"
#include "userprogram/ProgramFixture.h"

namespace nomira::testing {
namespace {

constexpr TextView kProgram = u"C:\\prog\\weld.src";

class RewriteUserProgramTest : public ProgramFixture {
  protected:
    void Put(std::string_view bytes) { m_machine.files.Put(kProgram, bytes); }
    std::string Bytes() const { return m_machine.files.Bytes(kProgram); }

    // A file that opening for writing would fail on.
    void MakeReadOnly() { m_machine.files.SetAttr(kProgram, AttributeReadOnly); }

    void ExpectRaises(ErrorNumber number, TextView sPath) {
        EXPECT_EQ(Raised([&] { RewriteUserProgram(sPath); }), number) << Printable(sPath);
        EXPECT_EQ(m_machine.files.OpenFiles(), 0);
    }
};

TEST_F(RewriteUserProgramTest, ChangedLineGoesIntoTheFileAndTheOthersStay) {
    Put("DEF weld()\r\n"
        "  ;FOLD OUT 12 'Pump' State=TRUE;%{PE}%P 2:12\r\n"
        "  $OUT[12]=TRUE ; 'Pump'\r\n"
        "\r\n"
        "  ;ENDFOLD\r\n"
        ";FOLD SET 12 'Pump' State=TRUE\r\n"
        "END\r\n");
    EXPECT_TRUE(RewriteUserProgram(kProgram));
    EXPECT_EQ(Bytes(),
              "DEF weld()\r\n"
              "  ;FOLD OUT 12 'Cooling' State=TRUE;%{PE}%P 2:12\r\n"
              "  $OUT[12]=TRUE ; 'Pump'\r\n"
              "\r\n"
              "  ;ENDFOLD\r\n"
              ";FOLD SET 12 'Pump' State=TRUE\r\n"
              "END\r\n");
    EXPECT_EQ(m_machine.files.OpenFiles(), 0);
}

TEST_F(RewriteUserProgramTest, ProgramWithoutAHeaderIsNotWritten) {
    Put("DEF weld()\rEND");
    MakeReadOnly();
    EXPECT_FALSE(RewriteUserProgram(kProgram));
    EXPECT_EQ(Bytes(), "DEF weld()\rEND");
}

TEST_F(RewriteUserProgramTest, ProgramWithCurrentNamesIsNotWritten) {
    Put(";FOLD OUT 12 'Cooling' State=TRUE\r;FOLD PULSE 1 'Clamp' State=TRUE");
    MakeReadOnly();
    EXPECT_FALSE(RewriteUserProgram(kProgram));
    EXPECT_EQ(Bytes(), ";FOLD OUT 12 'Cooling' State=TRUE\r;FOLD PULSE 1 'Clamp' State=TRUE");
}

TEST_F(RewriteUserProgramTest, SecondRunFindsNothingToChange) {
    Put(";FOLD OUT 12 'Pump' State=TRUE\r\n;FOLD WAIT FOR IN 5 'x' State=TRUE\r\n");
    EXPECT_TRUE(RewriteUserProgram(kProgram));
    MakeReadOnly();
    EXPECT_FALSE(RewriteUserProgram(kProgram));
}

TEST_F(RewriteUserProgramTest, EmptyProgramIsNotWritten) {
    Put("");
    MakeReadOnly();
    EXPECT_FALSE(RewriteUserProgram(kProgram));
}

TEST_F(RewriteUserProgramTest, ChangedProgramEndsEveryLineWithCrLf) {
    Put("a\rb\r\n;FOLD OUT 12 'Pump' State=TRUE");
    EXPECT_TRUE(RewriteUserProgram(kProgram));
    EXPECT_EQ(Bytes(), "a\r\nb\r\n;FOLD OUT 12 'Cooling' State=TRUE\r\n");
}

TEST_F(RewriteUserProgramTest, LoneLineFeedDoesNotEndALine) {
    Put("a\n;FOLD OUT 12 'Pump' State=TRUE\r\n;FOLD OUT 12 'Pump' State=TRUE\nb\r\n");
    EXPECT_TRUE(RewriteUserProgram(kProgram));
    EXPECT_EQ(Bytes(),
              "a\n;FOLD OUT 12 'Pump' State=TRUE\r\n;FOLD OUT 12 'Cooling' State=TRUE\nb\r\n");
}

TEST_F(RewriteUserProgramTest, EightBitCharactersSurvive) {
    std::string sAllBytes;
    for (int n = 1; n < 256; ++n) {
        if (n != '\r') sAllBytes += static_cast<char>(n);
    }
    Put(sAllBytes + "\r\n;FOLD OUT 12 'T\xFCr \x80' State=TRUE;\xE4\xDF\r\n");
    EXPECT_TRUE(RewriteUserProgram(kProgram));
    EXPECT_EQ(Bytes(), sAllBytes + "\r\n;FOLD OUT 12 'Cooling' State=TRUE;\xE4\xDF\r\n");
}

TEST_F(RewriteUserProgramTest, ChangedFlagIsThatOfTheLastProgram) {
    Put(";FOLD OUT 12 'Pump' State=TRUE\r\n");
    EXPECT_TRUE(RewriteUserProgram(kProgram));
    EXPECT_TRUE(g_bLineChanged);
    EXPECT_FALSE(RewriteUserProgram(kProgram));
    EXPECT_FALSE(g_bLineChanged);
}

// The shared text variables keep their values from program to program.
TEST_F(RewriteUserProgramTest, NameOfAnEarlierProgramIsComparedWith) {
    Put(";FOLD OUT 12 'Cooling' State=TRUE\r\n");
    RewriteUserProgram(kProgram);
    Put(";FOLD OUT 12: symName State=TRUE\r\n");
    EXPECT_FALSE(RewriteUserProgram(kProgram));
    g_vLongName.clear();
    EXPECT_TRUE(RewriteUserProgram(kProgram));
    EXPECT_EQ(Bytes(), ";FOLD OUT 12'Cooling' State=TRUE\r\n");
}

TEST_F(RewriteUserProgramTest, AnalogueHeaderWithoutANameWritesTheProgramAnew) {
    Put("a\r;FOLD ANOUT = 0.5;%{PE}%VANOUT_STAT:CHANNEL_3,");
    EXPECT_TRUE(RewriteUserProgram(kProgram));
    EXPECT_EQ(Bytes(), "a\r\n;FOLD ANOUT = 0.5;%{PE}%VANOUT_STAT:CHANNEL_3,\r\n");
}

// --- failures end the run

TEST_F(RewriteUserProgramTest, MissingProgramRaises) {
    m_machine.files.PutDirectory(u"C:\\prog");
    ExpectRaises(ErrorNumber::FileNotFound, kProgram);
}

TEST_F(RewriteUserProgramTest, LockedProgramRaises) {
    Put("a\r\n");
    m_machine.files.FailOpen(kProgram, ErrorNumber::PermissionDenied);
    ExpectRaises(ErrorNumber::PermissionDenied, kProgram);
}

TEST_F(RewriteUserProgramTest, EmptyPathRaises) {
    EXPECT_THROW(RewriteUserProgram(u""), RuntimeError);
}

TEST_F(RewriteUserProgramTest, InvalidHeaderLeavesTheProgramAsItWas) {
    const std::string sBefore = ";FOLD OUT 12 'Pump' State=TRUE\r\n;FOLD OUT my own title\r\n";
    Put(sBefore);
    ExpectRaises(ErrorNumber::InvalidProcedureCall, kProgram);
    EXPECT_EQ(Bytes(), sBefore);
}

TEST_F(RewriteUserProgramTest, ReadOnlyProgramThatWouldChangeRaisesAndStays) {
    Put(";FOLD OUT 12 'Pump' State=TRUE\r\n");
    MakeReadOnly();
    ExpectRaises(ErrorNumber::PathFileAccess, kProgram);
    EXPECT_EQ(Bytes(), ";FOLD OUT 12 'Pump' State=TRUE\r\n");
}

std::string ManyLines(int nLines) {
    std::string bytes = ";FOLD OUT 12 'Pump' State=TRUE\r\n";
    for (int n = 1; n < nLines; ++n)
        bytes += "x\r\n";
    return bytes;
}

// The lines are counted with 16 bits when the file is open for writing already.
TEST_F(RewriteUserProgramTest, MoreLinesThanSixteenBitsCountLeaveTheFileEmpty) {
    Put(ManyLines(32768));
    ExpectRaises(ErrorNumber::Overflow, kProgram);
    EXPECT_EQ(Bytes(), "");
}

TEST_F(RewriteUserProgramTest, AsManyLinesAsSixteenBitsCountAreWritten) {
    Put(ManyLines(32767));
    EXPECT_TRUE(RewriteUserProgram(kProgram));
    EXPECT_EQ(Bytes().substr(0, 35), ";FOLD OUT 12 'Cooling' State=TRUE\r\n");
    EXPECT_EQ(Bytes().size(), 35U + 3U * 32766U);
}

TEST_F(RewriteUserProgramTest, UnchangedProgramMayHaveAnyNumberOfLines) {
    const std::string sBefore = ManyLines(40000).substr(32);
    Put(sBefore);
    EXPECT_FALSE(RewriteUserProgram(kProgram));
    EXPECT_EQ(Bytes(), sBefore);
}

TEST_F(RewriteUserProgramTest, FullDiskCutsTheFileShort) {
    Put("first\r\n;FOLD OUT 12 'Pump' State=TRUE\r\nlast\r\n");
    m_machine.files.FailWrite(kProgram, ErrorNumber::DiskFull, 10);
    EXPECT_THROW(RewriteUserProgram(kProgram), RuntimeError);
    EXPECT_EQ(Bytes(), "first\r\n");
}

// --- what the forms see

TEST_F(RewriteUserProgramTest, FileNameIsShownAndEachLineIsAStep) {
    g_bBatchMode = true;
    const LoadedForm form(u"StdForm");
    const auto& information = form->With<Label>(u"Information");
    form->With<ProgressBar>(u"ProgressBar");
    Put("a\r\nb\r\n;FOLD OUT 12 'Pump' State=TRUE\r\nc");
    RewriteUserProgram(kProgram);
    EXPECT_EQ(information.Caption(), u"weld.src");
    EXPECT_EQ(g_nProgressCount, 4);
}

TEST_F(RewriteUserProgramTest, FileNameIsShownInTheDesktopFormsStatusBar) {
    const LoadedForm form(u"NomiraMain");
    auto& bar = form->With<StatusBar>(u"StatusBar1");
    bar.AddPanel();
    const auto& running = bar.AddPanel();
    Put("a\r\n");
    RewriteUserProgram(kProgram);
    EXPECT_EQ(running.Text(), u"weld.src");
    EXPECT_EQ(bar.Panels(1).Text(), u"");
}

TEST_F(RewriteUserProgramTest, BarOfTheDesktopFormIsSeenDuringTheRun) {
    memory::RecordingView view;
    const LoadedForm form(u"NomiraMain");
    auto& bar = form->With<ProgressBar>(u"ProgressBar1");
    bar.SetVisible(false);
    SetView(&view);
    Put("a\r\n");
    RewriteUserProgram(kProgram);
    SetView(nullptr);
    EXPECT_EQ(view.CountChanges(u"ProgressBar1", u"Visible"), 2);
    EXPECT_FALSE(bar.Visible());
}

TEST_F(RewriteUserProgramTest, ProgramThatCannotBeOpenedShowsNothing) {
    const LoadedForm desktop(u"NomiraMain");
    auto& bar = desktop->With<ProgressBar>(u"ProgressBar1");
    bar.SetVisible(false);
    const LoadedForm form(u"StdForm");
    const auto& information = form->With<Label>(u"Information");
    EXPECT_THROW(RewriteUserProgram(kProgram), RuntimeError);
    EXPECT_FALSE(bar.Visible());
    EXPECT_EQ(information.Caption(), u"");
}

TEST_F(RewriteUserProgramTest, BarGoesWhenTheProgramIsReadAndBeforeItIsWritten) {
    const LoadedForm desktop(u"NomiraMain");
    const auto& bar = desktop->With<ProgressBar>(u"ProgressBar1");
    Put(";FOLD OUT my own title\r\n");
    ExpectRaises(ErrorNumber::InvalidProcedureCall, kProgram);
    EXPECT_TRUE(bar.Visible());
    Put(";FOLD OUT 12 'Pump' State=TRUE\r\n");
    MakeReadOnly();
    ExpectRaises(ErrorNumber::PathFileAccess, kProgram);
    EXPECT_FALSE(bar.Visible());
}

// Some systems don't let a file be written that is open.
TEST_F(RewriteUserProgramTest, ProgramIsClosedBeforeItIsOpenedForWriting) {
    class CountingFiles : public ForwardingFiles {
      public:
        explicit CountingFiles(memory::MemoryFiles& inner)
            : ForwardingFiles(inner), m_memory(inner) {}
        std::unique_ptr<OutputFile> OpenForOutput(TextView sPath) override {
            openAtOutput.push_back(m_memory.OpenFiles());
            return ForwardingFiles::OpenForOutput(sPath);
        }
        std::vector<int> openAtOutput;

      private:
        memory::MemoryFiles& m_memory;
    };
    CountingFiles files(m_machine.files);
    Platform platform = PortsOf(m_machine);
    platform.files = &files;
    SetPlatform(platform);
    Put(";FOLD OUT 12 'Pump' State=TRUE\r\n");
    EXPECT_TRUE(RewriteUserProgram(kProgram));
    EXPECT_EQ(files.openAtOutput, std::vector<int>{0});
    SetPlatform(PortsOf(m_machine));
}

// --- a whole directory

class RewriteDirectoryTest : public RewriteUserProgramTest {
  protected:
    static constexpr std::string_view kOld = ";FOLD OUT 12 'Pump' State=TRUE\r\n";
    static constexpr std::string_view kNew = ";FOLD OUT 12 'Cooling' State=TRUE\r\n";
    memory::MemoryFiles& Files() { return m_machine.files; }
};

TEST_F(RewriteDirectoryTest, EveryProgramIsRewrittenAndNothingElse) {
    Files().Put(u"C:\\prog\\a.src", kOld);
    Files().Put(u"C:\\prog\\B.SRC", kOld);
    Files().Put(u"C:\\prog\\c.dat", kOld);
    Files().Put(u"C:\\prog\\c.src.bak", kOld);
    Files().Put(u"C:\\prog\\sub\\d.src", kOld);
    Files().Put(u"C:\\progress.src", kOld);
    RewriteDirectory(u"C:\\prog\\");
    EXPECT_EQ(Files().Bytes(u"C:\\prog\\a.src"), kNew);
    EXPECT_EQ(Files().Bytes(u"C:\\prog\\B.SRC"), kNew);
    EXPECT_EQ(Files().Bytes(u"C:\\prog\\c.dat"), kOld);
    EXPECT_EQ(Files().Bytes(u"C:\\prog\\c.src.bak"), kOld);
    EXPECT_EQ(Files().Bytes(u"C:\\prog\\sub\\d.src"), kOld);
    EXPECT_EQ(Files().Bytes(u"C:\\progress.src"), kOld);
}

TEST_F(RewriteDirectoryTest, DirectoryNamedLikeAProgramIsPassedOver) {
    Files().PutDirectory(u"C:\\prog\\a.src");
    Files().Put(u"C:\\prog\\b.src", kOld);
    RewriteDirectory(u"C:\\prog\\");
    EXPECT_EQ(Files().Bytes(u"C:\\prog\\b.src"), kNew);
}

TEST_F(RewriteDirectoryTest, EmptyOrMissingDirectoryIsNoFailure) {
    Files().PutDirectory(u"C:\\prog");
    EXPECT_NO_THROW(RewriteDirectory(u"C:\\prog\\"));
    EXPECT_NO_THROW(RewriteDirectory(u"C:\\none\\"));
}

// The caller sees to the closing "\"; without it the last part begins the file names.
TEST_F(RewriteDirectoryTest, DirectoryIsTakenAsGiven) {
    Files().Put(u"C:\\prog1.src", kOld);
    Files().Put(u"C:\\prog\\a.src", kOld);
    EXPECT_THROW(RewriteDirectory(u"C:\\prog"), RuntimeError);
    EXPECT_EQ(Files().Bytes(u"C:\\prog\\a.src"), kOld);
}

TEST_F(RewriteDirectoryTest, FailureEndsTheRunAndEarlierProgramsStayRewritten) {
    Files().Put(u"C:\\prog\\a.src", kOld);
    Files().Put(u"C:\\prog\\b.src", ";FOLD OUT my own title\r\n");
    Files().Put(u"C:\\prog\\c.src", kOld);
    EXPECT_THROW(RewriteDirectory(u"C:\\prog\\"), RuntimeError);
    EXPECT_EQ(Files().Bytes(u"C:\\prog\\a.src"), kNew);
    EXPECT_EQ(Files().Bytes(u"C:\\prog\\c.src"), kOld);
}

}  // namespace
}  // namespace nomira::testing
