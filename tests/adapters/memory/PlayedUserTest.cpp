#include "adapters/memory/PlayedUser.h"

#include "adapters/memory/MemoryMachine.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/Buttons.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/PendantKeyControl.h"
#include "ui/formlayer/TreeView.h"

namespace nomira::memory {
namespace {

class SampleForm : public Form {
  public:
    SampleForm() : Form(u"Sample") { list.AddItem(u"entry"); }
    Button& key = AddElement<Button>(u"Key", 1);
    CheckBox& box = Add<CheckBox>(u"Box");
    TextBox& name = Add<TextBox>(u"Name");
    ListBox& list = Add<ListBox>(u"List");
    DriveListBox& drives = Add<DriveListBox>(u"Drives");
    DirListBox& directories = Add<DirListBox>(u"Directories");
    TreeView& tree = Add<TreeView>(u"Tree");
    PendantKeyControl& keys = Add<PendantKeyControl>(u"Keys");
};

class PlayedUserTest : public ::testing::Test {
  protected:
    MemoryMachine machine;
    SampleForm form;
    PlayedUser user{form};
};

TEST_F(PlayedUserTest, ActsReachTheControlsOfTheirNames) {
    int nClicks = 0;
    form.key.onClick = [&] { ++nClicks; };
    user.Click(u"Key", 1);
    EXPECT_EQ(nClicks, 1);
    user.Click(u"Box");
    EXPECT_EQ(form.box.Value(), CheckBox::kChecked);
    user.Type(u"Name", u"text");
    EXPECT_EQ(form.name.Text(), u"text");
    user.Select(u"List", 0);
    EXPECT_TRUE(form.list.Selected(0));
    user.Select(u"List", 0, false);
    EXPECT_FALSE(form.list.Selected(0));
}

TEST_F(PlayedUserTest, ActsReachTheListsOfTheDisk) {
    machine.files.PutDirectory(u"D:\\sub");
    user.PickDrive(u"Drives", u"d:");
    EXPECT_EQ(form.drives.Drive(), u"d:");
    form.directories.SetPath(u"D:\\");
    user.Highlight(u"Directories", 0);
    EXPECT_EQ(form.directories.ListIndex(), 0);
    int nPressed = 0;
    form.directories.onKeyPress = [&](std::int16_t nKeyAscii) { nPressed = nKeyAscii; };
    user.PressKey(u"Directories", 13);
    EXPECT_EQ(nPressed, 13);
}

TEST_F(PlayedUserTest, KeysReachTheirControls) {
    std::vector<int> pressed;
    form.tree.Nodes().Add(u"T", u"TQX:\\", 1);
    form.tree.onKeyDown = [&](std::int16_t& nKeyCode, std::int16_t) {
        pressed.push_back(nKeyCode);
    };
    form.keys.onFKey = [&](std::int16_t nKeyCode) { pressed.push_back(nKeyCode); };
    form.keys.AddFKeys(113, 113);
    user.SelectNode(u"Tree", u"T");
    EXPECT_TRUE(form.tree.Nodes().Item(1).Selected());
    user.PressTreeKey(u"Tree", 40);
    user.PressPendantKey(u"Keys", 113);
    EXPECT_EQ(pressed, (std::vector<int>{40, 113}));
    form.box.SetTabIndex(0);
    user.PressTab();
    EXPECT_TRUE(form.box.HasFocus());
}

TEST_F(PlayedUserTest, AMissingControlRaises) {
    EXPECT_EQ(testing::Raised([&] { user.Click(u"None"); }), ErrorNumber::NoSuchMember);
    EXPECT_EQ(testing::Raised([&] { user.Click(u"Key", 2); }), ErrorNumber::ControlElementMissing);
}

}  // namespace
}  // namespace nomira::memory
