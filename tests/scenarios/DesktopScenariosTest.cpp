// An operator's work at the desktop form, from the start of the program to its end.
#include <gtest/gtest.h>

#include "langtools/RuntimeError.h"
#include "scenarios/Plant.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/Buttons.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/StatusBar.h"
#include "ui/formlayer/TreeView.h"

namespace nomira::testing {
namespace {

using memory::PlayedUser;
using Texts = std::vector<std::string>;

const Text& PanelText(const Form& form, std::int16_t nPanel) {
    return form.Get<StatusBar>(u"StatusBar1").Panels(nPanel).Text();
}

bool IsVisible(const Form& form, TextView sControl) {
    return form.Get<Control>(sControl).Visible();
}

void ExpectFinished(const Form& form) {
    EXPECT_EQ(PanelText(form, 2), u"program");
    EXPECT_EQ(PanelText(form, 3), u"finished!");
}

std::vector<Text> Entries(const SelectionList& list) {
    std::vector<Text> entries;
    for (std::int16_t n = 0; n < list.ListCount(); ++n)
        entries.push_back(list.List(n));
    return entries;
}

class DesktopScenariosTest : public ::testing::Test {
  protected:
    Plant plant;
};

// The list of text files takes one at a time: the second one ends the choice of the first.
TEST_F(DesktopScenariosTest, TwoTextFilesGoIntoTheDatabaseOneAfterTheOther) {
    plant.StoreText("IO", "IN_9", "from before");
    plant.Put("tqx/Data/a.txt", "IN_1 Pump\r\nOUT_2 Valve\r\n");
    plant.Put("tqx/Data/b.txt", "IN_1 Pump 2\r\nIN_3 Gate\r\n");
    const int nStatus = plant.Run([&](PlayedUser& user, Form& form) {
        user.Click(u"Option1");
        EXPECT_EQ(Entries(form.Get<FileListBox>(u"File1")),
                  (std::vector<Text>{u"a.txt", u"b.txt"}));
        user.Select(u"File1", 1);
        user.Select(u"File1", 0);
        EXPECT_FALSE(form.Get<FileListBox>(u"File1").Selected(1));
        user.Click(u"cmdStart");
        ExpectFinished(form);
        EXPECT_EQ(plant.Texts(), (Texts{"IN_1=Pump", "OUT_2=Valve"}));

        user.Click(u"chkBoxAdd");  // no longer over the old ones
        user.Select(u"File1", 1);
        user.Click(u"cmdStart");
        ExpectFinished(form);
        EXPECT_EQ(plant.Texts(), (Texts{"IN_1=Pump 2", "IN_3=Gate", "OUT_2=Valve"}));
        user.Click(u"cmdExit");
        ADD_FAILURE() << "the program goes on";
    });
    EXPECT_EQ(nStatus, 0);
    EXPECT_TRUE(plant.desktop.boxes.empty());
}

TEST_F(DesktopScenariosTest, TheDatabaseIsViewedEditedAndSaved) {
    plant.StoreText("IO", "IN_1", "Pump");
    plant.StoreText("IO", "IN_2", "Valve");
    const int nStatus = plant.Run([&](PlayedUser& user, Form& form) {
        user.Click(u"cmdView");
        EXPECT_EQ(form.Get<TextBox>(u"txtboxView").Text(), u"IN_1 Pump\r\nIN_2 Valve\r\n");
        user.Type(u"txtboxView", u"IN_1 Pump A\r\nIN_4 Gate\r\n");
        user.Click(u"cmdStart");
        EXPECT_EQ(plant.Texts(), (Texts{"IN_1=Pump A", "IN_4=Gate"}));
        EXPECT_TRUE(IsVisible(form, u"txtboxView"));
        user.Click(u"cmdView");
        EXPECT_EQ(form.Get<TextBox>(u"txtboxView").Text(), u"IN_1 Pump A\r\nIN_4 Gate\r\n");
        user.Click(u"cmdExit");
        EXPECT_FALSE(IsVisible(form, u"txtboxView"));
        EXPECT_FALSE(IsVisible(form, u"cmdStart"));
        user.Click(u"cmdExit");
        ADD_FAILURE() << "the program goes on";
    });
    EXPECT_EQ(nStatus, 0);
}

TEST_F(DesktopScenariosTest, TheDatabaseGoesIntoATextFileOfTheNameGiven) {
    plant.StoreText("IO", "IN_1", "Pump");
    plant.Run([&](PlayedUser& user, Form& form) {
        user.Click(u"Option2");
        EXPECT_EQ(form.Get<TextBox>(u"Text1").Text(), u"SymName.txt");
        user.Click(u"cmdStart");
        ExpectFinished(form);
        user.Type(u"Text1", u"other.txt");
        user.Click(u"cmdStart");
    });
    EXPECT_EQ(plant.Bytes("tqx/Data/SymName.txt"), "IN_1 Pump\r\n\r\n");
    EXPECT_EQ(plant.Bytes("tqx/Data/other.txt"), "IN_1 Pump\r\n\r\n");
}

TEST_F(DesktopScenariosTest, ProgramsOfTheDiskTakeTheNames) {
    plant.StoreText("IO", "OUT_7", "Pump");
    for (const char* sName : {"a", "b", "c"})
        plant.Put(std::string("tqx/Roboter/TQX/R1/") + sName + ".src", kProgram);
    plant.Run([&](PlayedUser& user, Form& form) {
        user.Click(u"Option3");
        EXPECT_EQ(Entries(form.Get<FileListBox>(u"File2")),
                  (std::vector<Text>{u"a.src", u"b.src", u"c.src"}));
        user.Select(u"File2", 0);
        user.Select(u"File2", 2);
        user.Click(u"cmdStart");
        ExpectFinished(form);
    });
    EXPECT_EQ(plant.Bytes("tqx/Roboter/TQX/R1/a.src"), kRewritten);
    EXPECT_EQ(plant.Bytes("tqx/Roboter/TQX/R1/b.src"), kProgram);
    EXPECT_EQ(plant.Bytes("tqx/Roboter/TQX/R1/c.src"), kRewritten);
}

// The tree and the list show the controller; what goes through is what is selected in the list of
// the disk's programs, whose names the controller is asked for.
TEST_F(DesktopScenariosTest, ProgramsOfTheControllerAreShownAndTakeTheNames) {
    plant.RunMiddleware();
    plant.StoreText("IO", "OUT_7", "Pump");
    plant.PutOnRobot("R1/main.src", "DEF main()\r\nEND\r\n");
    plant.PutOnRobot("R1/Program/a.src", kProgram);
    plant.Put("tqx/Roboter/TQX/R1/a.src", "DEF a()\r\nthe disk's own copy\r\nEND\r\n");
    plant.Run([&](PlayedUser& user, Form& form) {
        form.Get<DirListBox>(u"Dir1").SetPath(u"C:\\tqx\\Roboter\\TQX\\R1");
        user.Click(u"Option3");
        EXPECT_TRUE(IsVisible(form, u"Picture1"));
        EXPECT_TRUE(IsVisible(form, u"TreeView1"));
        auto& tree = form.Get<TreeView>(u"TreeView1");
        ASSERT_EQ(tree.Nodes().Count(), 3);
        EXPECT_EQ(tree.Nodes().Item(1).Text(), u"TQX:\\");
        EXPECT_EQ(tree.Nodes().Item(3).Text(), u"Program");
        EXPECT_EQ(Entries(form.Get<ListBox>(u"List1")), std::vector<Text>{u"main.src"});
        user.Click(u"chkBoxSelAll");
        user.Click(u"cmdStart");
        ExpectFinished(form);
    });
    EXPECT_EQ(plant.BytesOnRobot("R1/Program/a.src"), kRewritten);
    EXPECT_EQ(plant.Bytes("tqx/Roboter/TQX/R1/a.src"), "DEF a()\r\nthe disk's own copy\r\nEND\r\n");
    EXPECT_FALSE(std::filesystem::exists(plant.OnDriveC("Temp/NomiraTemp")));
}

TEST_F(DesktopScenariosTest, WithoutTheLinkTheProgramsOfTheDiskAreOffered) {
    plant.Put("tqx/Roboter/TQX/R1/a.src", kProgram);
    plant.Run([&](PlayedUser& user, Form& form) {
        user.Click(u"Option3");
        EXPECT_FALSE(IsVisible(form, u"Picture1"));
        EXPECT_FALSE(IsVisible(form, u"TreeView1"));
        EXPECT_EQ(form.Get<FileListBox>(u"File2").ListCount(), 1);
        user.Click(u"cmdStart");
    });
    ASSERT_EQ(plant.desktop.boxes.size(), 1U);
    EXPECT_EQ(plant.desktop.boxes[0], (memory::MessageBoxShown{u"Please choose one file at least !",
                                                               u"Tip", BoxIcon::Exclamation}));
}

TEST_F(DesktopScenariosTest, WithoutTheDatabaseOnlyTheEndIsOpen) {
    std::filesystem::remove(plant.Database());
    const int nStatus = plant.Run([&](PlayedUser& user, Form& form) {
        EXPECT_EQ(PanelText(form, 3), u"no connect to database !!!");
        user.Click(u"cmdView");
        EXPECT_FALSE(IsVisible(form, u"txtboxView"));
        user.Click(u"Option1");
        EXPECT_TRUE(IsVisible(form, u"cmdStart"));
        EXPECT_FALSE(form.Get<Control>(u"cmdStart").Enabled());
        user.Click(u"cmdExit");
        ADD_FAILURE() << "the program goes on";
    });
    EXPECT_EQ(nStatus, 0);
}

TEST_F(DesktopScenariosTest, ADriveWithoutADiskIsToldAndLeft) {
    plant.AddEmptyDrive('a');
    plant.Run([&](PlayedUser& user, Form& form) {
        user.PickDrive(u"Drive1", u"a:");
        EXPECT_EQ(form.Get<DriveListBox>(u"Drive1").Drive(), u"c:");
    });
    ASSERT_EQ(plant.desktop.boxes.size(), 1U);
    EXPECT_EQ(plant.desktop.boxes[0], (memory::MessageBoxShown{u"Please insert disk in drive A:",
                                                               u"Tip", BoxIcon::Exclamation}));
}

TEST_F(DesktopScenariosTest, AProgramThatCannotBeReadEndsTheRun) {
    std::filesystem::create_directories(plant.OnDriveC("tqx/Roboter/TQX/R1"));
    plant.Put("tqx/Roboter/TQX/R1/a.src", kProgram);
    const int nStatus = plant.Run([&](PlayedUser& user, Form&) {
        user.Click(u"Option3");
        user.Select(u"File2", 0);
        std::filesystem::remove(plant.OnDriveC("tqx/Roboter/TQX/R1/a.src"));
        user.Click(u"cmdStart");
        ADD_FAILURE() << "the program goes on";
    });
    EXPECT_EQ(nStatus, 1);
    ASSERT_EQ(plant.desktop.boxes.size(), 1U);
    EXPECT_EQ(plant.desktop.boxes[0].sText.substr(0, 14), u"Run-time error");
}

}  // namespace
}  // namespace nomira::testing
