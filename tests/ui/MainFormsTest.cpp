#include "adapters/memory/MemoryMachine.h"
#include "frame/ProgramVariables.h"
#include "frame/Settings.h"
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

TEST_F(MainFormsTest, TheListsBeginOnDriveC) {
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
