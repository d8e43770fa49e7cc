#include "adapters/memory/MemoryMachine.h"
#include "frame/ProgramVariables.h"
#include "frame/Settings.h"
#include "platform/Platform.h"
#include "testing/ForwardingFiles.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"
#include "ui/NomiraMain.h"
#include "ui/StdBofForm.h"
#include "ui/formlayer/Buttons.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/FormLayer.h"
#include "ui/formlayer/PendantKeyControl.h"
#include "ui/formlayer/StatusBar.h"

namespace nomira {
namespace {

class MainFormsTest : public ::testing::Test {
  protected:
    memory::MemoryMachine machine;
};

TEST_F(MainFormsTest, TheDesktopFormLoadsIntoTheMiddleOfTheScreen) {
    machine.desktop.screen = {14830, 13525};
    const Form& form = LoadForm(std::make_unique<NomiraMain>());
    EXPECT_EQ(form.Left(), 5000);
    EXPECT_EQ(form.Top(), 5000);
    EXPECT_EQ(form.Width(), 4830);
    EXPECT_EQ(form.Height(), 3525);
}

TEST_F(MainFormsTest, TheDesktopsBarLiesHiddenOverTheStatusBar) {
    const Form& form = LoadForm(std::make_unique<NomiraMain>());
    const auto& bar = form.Get<ProgressBar>(u"ProgressBar1");
    EXPECT_EQ(bar.Min(), 1);
    EXPECT_EQ(bar.Max(), 27);
    EXPECT_EQ(bar.Value(), 1);
    EXPECT_EQ(bar.Left(), 2055);
    EXPECT_EQ(bar.Top(), 3330);
    EXPECT_EQ(bar.Width(), 2000);
    EXPECT_EQ(bar.Height(), 142);  // of 142.5
    EXPECT_FALSE(bar.Visible());
    EXPECT_FALSE(form.Get<Control>(u"Picture1").Visible());
}

TEST_F(MainFormsTest, TheDesktopFormLoadsIntoItsStartState) {
    const Form& form = LoadForm(std::make_unique<NomiraMain>());
    EXPECT_FALSE(form.Get<Control>(u"cmdStart").Visible());
    EXPECT_FALSE(form.Get<Control>(u"File1").Visible());
    EXPECT_TRUE(form.Get<Control>(u"Dir1").Visible());
}

TEST_F(MainFormsTest, TheListsBeginOnTheFirstDrive) {
    machine.files.Put(u"C:\\a.txt", "x");
    machine.files.Put(u"C:\\sub\\b.src", "x");
    g_sTextFileExt = u"*.txt";
    g_bPendantMode = true;
    LoadForm(std::make_unique<NomiraMain>());
    LoadForm(std::make_unique<StdBofForm>());
    for (const TextView sForm : {kNomiraMainClass, kStdBofFormClass}) {
        const Form& form = *FindForm(sForm);
        EXPECT_EQ(form.Get<DriveListBox>(u"Drive1").Drive(), u"c:");
        EXPECT_EQ(form.Get<DirListBox>(u"Dir1").ListCount(), 1);
        EXPECT_EQ(form.Get<FileListBox>(u"File1").ListCount(), 1);
        EXPECT_EQ(form.Get<FileListBox>(u"File2").Path(), form.Get<DirListBox>(u"Dir1").Path());
    }
}

class NoDrives : public testing::ForwardingFiles {
  public:
    using ForwardingFiles::ForwardingFiles;
    std::vector<Text> Drives() override { return {}; }
};

TEST_F(MainFormsTest, WithoutADriveTheListsStayEmpty) {
    std::vector<Text> happened;
    NoDrives files(machine.files, happened);
    Platform platform{&machine.registry,
                      &machine.processes,
                      &machine.locale,
                      &machine.desktop,
                      &files,
                      &machine.closedLibrary,
                      u""};
    SetPlatform(platform);
    const Form& form = LoadForm(std::make_unique<NomiraMain>());
    EXPECT_EQ(form.Get<DriveListBox>(u"Drive1").Drive(), u"");
    EXPECT_EQ(form.Get<DirListBox>(u"Dir1").Path(), u"");
    EXPECT_FALSE(form.Get<Control>(u"cmdStart").Visible());
}

TEST_F(MainFormsTest, ThePendantFormLoadsIntoItsStartStateInPendantModeAlone) {
    g_bPendantMode = true;
    const Form& form = LoadForm(std::make_unique<StdBofForm>());
    EXPECT_EQ(form.Get<Button>(u"SoftKey", 3).Caption(), u"");
    EXPECT_EQ(form.Get<StatusBar>(u"StatusBar1").Panels(4).MinWidth(), 5775);
    EXPECT_FALSE(form.Get<Control>(u"ProgressBar2").Visible());
    EXPECT_EQ(form.Get<PendantKeyControl>(u"TqpKeys").Ranges().size(), 3U);
    UnloadForm(kStdBofFormClass);
    g_bPendantMode = false;
    const Form& unseen = LoadForm(std::make_unique<StdBofForm>());
    EXPECT_EQ(unseen.Get<Button>(u"SoftKey", 3).Caption(), u"Soft-Key 3");
    EXPECT_TRUE(unseen.Get<Control>(u"ProgressBar2").Visible());
    EXPECT_TRUE(unseen.Get<PendantKeyControl>(u"TqpKeys").Ranges().empty());
}

TEST_F(MainFormsTest, TheDesktopFormsPanelsAreAddedWhenItLoads) {
    EXPECT_EQ(NomiraMain().Get<StatusBar>(u"StatusBar1").PanelCount(), 1);
    const Form& form = LoadForm(std::make_unique<NomiraMain>());
    const StatusBar& bar = form.Get<StatusBar>(u"StatusBar1");
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
    }
}

// The link calls by name; the pendant form alone has the one method, and ignores what it is told.
TEST_F(MainFormsTest, OnlyThePendantFormTakesReportsOfTheLink) {
    const CallArgument arguments[] = {Text(u"$A=1")};
    StdBofForm pendant;
    EXPECT_EQ(testing::Raised([&] { pendant.CallByName(u"SetInfoResult", arguments); }),
              std::nullopt);
    EXPECT_EQ(testing::Raised([&] { pendant.CallByName(u"Vexon1_CmdMessage", arguments); }),
              ErrorNumber::NoSuchMember);
    NomiraMain desktop;
    EXPECT_EQ(testing::Raised([&] { desktop.CallByName(u"SetInfoResult", arguments); }),
              ErrorNumber::NoSuchMember);
}

TEST_F(MainFormsTest, AFormThatIsOnlyLoadedIsNotLive) {
    EXPECT_FALSE(LoadForm(std::make_unique<NomiraMain>()).IsLive());
    EXPECT_FALSE(LoadForm(std::make_unique<StdBofForm>()).IsLive());
}

}  // namespace
}  // namespace nomira
