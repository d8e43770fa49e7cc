// What a user does with mouse and keyboard, played by a robot from outside, reaches the controls;
// and what the controls make of it is on the screen afterwards.
#include "WindowFixture.h"
#include "langtools/BasicText.h"
#include "langtools/RuntimeError.h"
#include "ui/formlayer/Buttons.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/PendantKeyControl.h"
#include "ui/formlayer/TreeView.h"

namespace nomira::wx {
namespace {

// One control of each kind that a user can act on.
class SampleForm : public Form {
  public:
    SampleForm() : Form(u"Sample") {
        SetCaption(u"Sample & form");
        Move(1500, 1500, 7500, 6000);
        Place(button, 0, 0, 1500, 450);
        button.SetCaption(u"Save & go");
        Place(first, 0, 500, 1500, 300);
        Place(second, 0, 800, 1500, 300);
        first.SetCaption(u"first");
        second.SetCaption(u"second");
        Place(box, 0, 1200, 1500, 300);
        box.SetCaption(u"box");
        line.SetText(u"line");
        Place(line, 1800, 0, 1800, 375);
        text.SetMultiLine(true);
        text.SetBothScrollBars(true);
        Place(text, 1800, 500, 1800, 1500);
        Place(single, 3900, 0, 1500, 1800);
        simple.SetMultiSelect(SelectionList::kSimple);
        Place(simple, 5700, 0, 1500, 1800);
        extended.SetMultiSelect(SelectionList::kExtended);
        Place(extended, 3900, 2100, 1500, 1800);
        Place(drives, 0, 2100, 1500, 375);
        Place(directory, 0, 2600, 1500, 2400);
        Place(files, 1800, 2600, 1800, 2400);
        Place(tree, 5700, 2100, 1500, 2400);
        for (ListBox* list : {&single, &simple, &extended})
            for (const TextView sEntry : {u"one", u"two", u"three"})
                list->AddItem(sEntry);
        keys.AddFKeys(113, 119);
        keys.AddFKeys(129, 132);
    }
    void Place(Control& control, std::int32_t nLeft, std::int32_t nTop, std::int32_t nWidth,
               std::int32_t nHeight) {
        control.Move(nLeft, nTop, nWidth, nHeight);
        control.SetTabIndex(m_nNextTab++);
    }

    Button& button = Add<Button>(u"Button");
    RadioButton& first = Add<RadioButton>(u"First");
    RadioButton& second = Add<RadioButton>(u"Second");
    CheckBox& box = Add<CheckBox>(u"Box");
    TextBox& line = Add<TextBox>(u"Line");
    TextBox& text = Add<TextBox>(u"Text");
    ListBox& single = Add<ListBox>(u"Single");
    ListBox& simple = Add<ListBox>(u"Simple");
    ListBox& extended = Add<ListBox>(u"Extended");
    DriveListBox& drives = Add<DriveListBox>(u"Drives");
    DirListBox& directory = Add<DirListBox>(u"Directory");
    FileListBox& files = Add<FileListBox>(u"Files");
    TreeView& tree = Add<TreeView>(u"Tree");
    PendantKeyControl& keys = Add<PendantKeyControl>(u"Keys");

  private:
    std::int16_t m_nNextTab = 0;
};

class UserActsTest : public WindowTest {
  protected:
    UserActsTest() {
        machine.files.Put(u"C:\\sub\\deep\\a.txt", "x");
        machine.files.Put(u"C:\\sub\\b.txt", "x");
        machine.files.Put(u"D:\\c.txt", "x");
        form = static_cast<SampleForm*>(&LoadForm(std::make_unique<SampleForm>()));
        form->directory.SetPath(u"C:\\");
        form->files.SetPath(u"C:\\sub");
        form->Show();
        Settle();
    }
    static std::vector<bool> SelectionOf(const SelectionList& list) {
        std::vector<bool> selected;
        for (std::int16_t n = 0; n < list.ListCount(); ++n)
            selected.push_back(list.Selected(n));
        return selected;
    }
    using Selection = std::vector<bool>;

    // The middle of a list's line, dots.
    void ClickLine(const Control& list, int nLine, int nTimes = 1) {
        constexpr int kLine = 19;
        ClickAt(list, 30, kLine * nLine + kLine / 2, nTimes);
    }

    SampleForm* form;
};

TEST_F(UserActsTest, EveryControlStandsAsTheFormHasIt) {
    ExpectInStep(*form);
    TakeScreenshot(*form, "sample");
}

TEST_F(UserActsTest, AButtonIsClickedByMouseAndByKey) {
    int nClicks = 0;
    form->button.onClick = [&] { ++nClicks; };
    Click(form->button);
    EXPECT_EQ(nClicks, 1);
    EXPECT_TRUE(form->button.HasFocus());
    Robot("key space");
    EXPECT_EQ(nClicks, 2);
    Robot("key Return");
    EXPECT_EQ(nClicks, 3);
}

TEST_F(UserActsTest, ADisabledButtonIsNotClicked) {
    bool bClicked = false;
    form->button.onClick = [&] { bClicked = true; };
    form->button.SetEnabled(false);
    Settle();
    Click(form->button);
    EXPECT_FALSE(bClicked);
    ExpectInStep(*form);
}

TEST_F(UserActsTest, ARadioButtonTakesTheChoiceFromTheOther) {
    Click(form->first);
    EXPECT_TRUE(form->first.Value());
    ExpectInStep(*form);
    Click(form->second);
    EXPECT_FALSE(form->first.Value());
    EXPECT_TRUE(form->second.Value());
    ExpectInStep(*form);
}

TEST_F(UserActsTest, AChoiceThatTheHandlerTakesBackIsGoneFromTheScreen) {
    form->first.SetValue(true);
    form->second.onClick = [&] { form->second.SetValue(false); };
    Click(form->second);
    EXPECT_FALSE(form->first.Value());
    EXPECT_FALSE(form->second.Value());
    ExpectInStep(*form);
}

TEST_F(UserActsTest, ACheckBoxTurns) {
    Click(form->box);
    EXPECT_EQ(form->box.Value(), CheckBox::kChecked);
    Click(form->box);
    EXPECT_EQ(form->box.Value(), CheckBox::kCleared);
    form->box.SetValue(CheckBox::kGrey);
    Click(form->box);
    EXPECT_EQ(form->box.Value(), CheckBox::kCleared);
    ExpectInStep(*form);
}

TEST_F(UserActsTest, TypedTextReachesTheBoxAndTheCaretStays) {
    Click(form->line);
    Robot("key Home type ab");
    EXPECT_EQ(form->line.Text(), u"abline");
    Robot("type c");
    EXPECT_EQ(form->line.Text(), u"abcline");
    ExpectInStep(*form);
}

TEST_F(UserActsTest, TypedLinesHaveTheProgramsLineEnds) {
    form->text.SetText(u"one\r\ntwo");
    Settle();
    Click(form->text);
    Robot("key ctrl+Home key Return");
    EXPECT_EQ(form->text.Text(), u"\r\none\r\ntwo");
    ExpectInStep(*form);
}

TEST_F(UserActsTest, ASingleListHasOneSelection) {
    ClickLine(form->single, 1);
    EXPECT_EQ(SelectionOf(form->single), (Selection{false, true, false}));
    Robot("key Down");
    EXPECT_EQ(SelectionOf(form->single), (Selection{false, false, true}));
    ExpectInStep(*form);
}

TEST_F(UserActsTest, AListThatGetsTheKeysSelectsNothingByThat) {
    form->text.SetFocus();
    Settle();
    Robot("key Tab");
    ASSERT_TRUE(form->single.HasFocus());
    EXPECT_EQ(SelectionOf(form->single), (Selection{false, false, false}));
    ExpectInStep(*form);
    Robot("key space");
    EXPECT_EQ(SelectionOf(form->single), (Selection{true, false, false}));
    ExpectInStep(*form);
}

TEST_F(UserActsTest, ASimpleListTurnsEntryByEntry) {
    ClickLine(form->simple, 0);
    ClickLine(form->simple, 2);
    EXPECT_EQ(SelectionOf(form->simple), (Selection{true, false, true}));
    ClickLine(form->simple, 0);
    EXPECT_EQ(SelectionOf(form->simple), (Selection{false, false, true}));
    ExpectInStep(*form);
}

TEST_F(UserActsTest, KeysMoveThroughASimpleListAndTheBlankTurns) {
    ClickLine(form->simple, 0);
    Robot("key Down key Down");
    EXPECT_EQ(SelectionOf(form->simple), (Selection{true, false, false}));
    ExpectInStep(*form);
    Robot("key space");
    EXPECT_EQ(SelectionOf(form->simple), (Selection{true, false, true}));
    Robot("key Up key space");
    EXPECT_EQ(SelectionOf(form->simple), (Selection{true, true, true}));
    ExpectInStep(*form);
}

TEST_F(UserActsTest, AnExtendedListSelectsRanges) {
    ClickLine(form->extended, 0);
    Robot("keydown shift key Down key Down keyup shift");
    EXPECT_EQ(SelectionOf(form->extended), (Selection{true, true, true}));
    ClickLine(form->extended, 1);
    EXPECT_EQ(SelectionOf(form->extended), (Selection{false, true, false}));
    ExpectInStep(*form);
}

TEST_F(UserActsTest, ADriveIsPicked) {
    form->drives.SetFocus();
    Settle();
    Robot("key space key Down key Return");
    EXPECT_EQ(form->drives.Drive(), u"d:");
    ExpectInStep(*form);
}

TEST_F(UserActsTest, ADriveThatTheHandlerTakesBackIsGoneFromTheScreen) {
    form->drives.onChange = [&] { form->drives.SetDrive(u"c:"); };
    form->drives.SetFocus();
    Settle();
    Robot("key space key Down key Return");
    EXPECT_EQ(form->drives.Drive(), u"c:");
    ExpectInStep(*form);
}

TEST_F(UserActsTest, ADirectoryIsHighlightedAndOpened) {
    ClickLine(form->directory, 1);
    EXPECT_EQ(form->directory.ListIndex(), 0);
    EXPECT_EQ(form->directory.Path(), u"C:\\");
    ClickLine(form->directory, 1, 2);
    EXPECT_EQ(form->directory.Path(), u"C:\\sub");
    ClickLine(form->directory, 0, 2);
    EXPECT_EQ(form->directory.Path(), u"C:\\");
}

TEST_F(UserActsTest, TheEnterKeyOpensADirectoryOnce) {
    int nChanges = 0;
    std::int16_t nKey = 0;
    form->directory.onChange = [&] { ++nChanges; };
    form->directory.onKeyPress = [&](std::int16_t nKeyAscii) {
        nKey = nKeyAscii;
        form->directory.SetPath(form->directory.List(form->directory.ListIndex()));
    };
    ClickLine(form->directory, 1);
    Robot("key Return");
    EXPECT_EQ(nKey, 13);
    EXPECT_EQ(form->directory.Path(), u"C:\\sub");
    form->directory.onKeyPress = nullptr;
    Robot("key Down key Return");
    EXPECT_EQ(form->directory.Path(), u"C:\\sub\\deep");
    EXPECT_EQ(nChanges, 2);
}

TEST_F(UserActsTest, ATreeIsWalkedByKeys) {
    TreeNodes& nodes = form->tree.Nodes();
    nodes.Add(u"a", u"A", 0).SetSelected(true);
    nodes.AddChild(nodes.Add(u"b", u"B", 0), u"c", u"C", 0);
    nodes.Item(u"b").SetExpanded(true);
    form->tree.SetFocus();
    Settle();
    ExpectInStep(*form);
    std::vector<std::pair<int, Text>> heard;
    form->tree.onKeyDown = [&](std::int16_t& nKeyCode, std::int16_t) {
        heard.emplace_back(nKeyCode, form->tree.SelectedItem()->Key());
    };
    Robot("key Down key Down key Up");
    EXPECT_EQ(form->tree.SelectedItem()->Key(), u"b");
    EXPECT_EQ(heard, (std::vector<std::pair<int, Text>>{{40, u"a"}, {40, u"b"}, {38, u"c"}}));
    form->tree.onKeyDown = [](std::int16_t& nKeyCode, std::int16_t) { nKeyCode = 0; };
    Robot("key Down");
    EXPECT_EQ(form->tree.SelectedItem()->Key(), u"b");
    ExpectInStep(*form);
}

TEST_F(UserActsTest, TheTabKeyGoesRoundInTheDesignsOrder) {
    form->second.SetTabStop(false);
    form->button.SetFocus();
    Settle();
    Robot("key Tab");
    EXPECT_TRUE(form->first.HasFocus());
    Robot("key Tab key Tab");
    EXPECT_TRUE(form->line.HasFocus());
    EXPECT_TRUE(view->WindowOf(form->line)->HasFocus());
    Robot("key shift+Tab key shift+Tab key shift+Tab key shift+Tab");
    EXPECT_TRUE(form->tree.HasFocus());
    EXPECT_TRUE(view->WindowOf(form->tree)->HasFocus());
}

TEST_F(UserActsTest, TheKeyboardGoesWhereTheProgramSendsIt) {
    form->line.SetFocus();
    Settle();
    Robot("key Home type x");
    EXPECT_EQ(form->line.Text(), u"xline");
    form->text.SetFocus();
    Settle();
    Robot("type y");
    EXPECT_EQ(form->text.Text(), u"y");
}

TEST_F(UserActsTest, WhatLosesTheFocusHandsTheKeysOn) {
    form->line.SetFocus();
    Settle();
    form->line.SetVisible(false);
    Settle();
    Robot("type z");
    EXPECT_EQ(form->text.Text(), u"z");
}

TEST_F(UserActsTest, PcKeysStandForThePendantsKeys) {
    std::vector<int> heard;
    form->keys.onFKey = [&](std::int16_t nCode) { heard.push_back(nCode); };
    Robot("key F2 key F3 key F4 key F7 key F8 key ctrl+1 key ctrl+2 key ctrl+3 key ctrl+4");
    EXPECT_EQ(heard, (std::vector<int>{113, 114, 115, 118, 119, 129, 130, 131, 132}));
    form->keys.SubFKeys(129, 132);
    Robot("key ctrl+1 key F5 key F2");
    EXPECT_EQ(heard.back(), 113);
    EXPECT_EQ(heard.size(), 10U);
}

}  // namespace
}  // namespace nomira::wx
