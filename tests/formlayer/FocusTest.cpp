// Arrays of controls, the focus and the tab order of a form.
#include "adapters/memory/MemoryMachine.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/Buttons.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {
namespace {

using testing::Raised;

class SampleForm : public Form {
  public:
    SampleForm() : Form(u"Sample") {
        AddElement<Button>(u"Key", 0);
        AddElement<Button>(u"Key", 3);
        third.SetTabIndex(3);
        first.SetTabIndex(1);
        second.SetTabIndex(2);
        second.SetContainer(border);
        words.SetTabIndex(0);
    }
    Frame& border = Add<Frame>(u"Border");
    Label& words = Add<Label>(u"Words");
    TextBox& third = Add<TextBox>(u"Third");
    TextBox& first = Add<TextBox>(u"First");
    TextBox& second = Add<TextBox>(u"Second");
    TextBox& placeless = Add<TextBox>(u"Placeless");
};

class FocusTest : public ::testing::Test {
  protected:
    FocusTest() { SetView(&view); }
    ~FocusTest() override { SetView(nullptr); }

    memory::RecordingView view;
    SampleForm form;
    Text FocusName() const { return form.Focus() ? form.Focus()->Name() : Text(); }
};

TEST_F(FocusTest, AnElementIsFoundByNameAndIndex) {
    auto& key = form.Get<Button>(u"Key", 3);
    EXPECT_EQ(key.Name(), u"Key");
    EXPECT_EQ(key.Index(), 3);
    EXPECT_EQ(key.FullName(), u"Key(3)");
    EXPECT_NE(&key, &form.Get<Button>(u"Key", 0));
    EXPECT_EQ(form.first.Index(), std::nullopt);
    EXPECT_EQ(form.first.FullName(), u"First");
    EXPECT_EQ(form.Find(u"Key"), nullptr);
    EXPECT_EQ(form.Find(u"First", 0), nullptr);
}

TEST_F(FocusTest, AMissingElementHasANumberOfItsOwn) {
    EXPECT_EQ(Raised([&] { form.Get<Button>(u"Key", 1); }), ErrorNumber::ControlElementMissing);
    EXPECT_EQ(Raised([&] { form.Get<Button>(u"Other", 0); }), ErrorNumber::NoSuchMember);
    EXPECT_EQ(Raised([&] { form.Get<Button>(u"First", 0); }), ErrorNumber::NoSuchMember);
    EXPECT_EQ(Raised([&] { form.Get<TextBox>(u"Key", 0); }), ErrorNumber::NoSuchMember);
}

TEST_F(FocusTest, TheViewHearsWhichElementHasChanged) {
    form.Get<Button>(u"Key", 3).SetCaption(u"x");
    form.Get<Button>(u"Key", 3).Refresh();
    ASSERT_EQ(view.events.size(), 2U);
    EXPECT_EQ(view.events[0].sControl, u"Key(3)");
    EXPECT_EQ(view.events[1].sControl, u"Key(3)");
}

TEST_F(FocusTest, TheFocusIsGivenAndTold) {
    EXPECT_EQ(form.Focus(), nullptr);
    form.first.SetFocus();
    form.first.SetFocus();
    EXPECT_TRUE(form.first.HasFocus());
    form.second.SetFocus();
    EXPECT_FALSE(form.first.HasFocus());
    EXPECT_EQ(view.CountChanges(u"First", u"Focus"), 1);
    EXPECT_EQ(view.CountChanges(u"Second", u"Focus"), 1);
}

TEST_F(FocusTest, WhatCannotTakeTheFocusRaises) {
    form.third.SetFocus();
    form.first.SetVisible(false);
    form.placeless.SetEnabled(false);
    form.border.SetVisible(false);
    for (Control* control : std::initializer_list<Control*>{&form.words, &form.border, &form.first,
                                                            &form.placeless, &form.second})
        EXPECT_EQ(Raised([&] { control->SetFocus(); }), ErrorNumber::InvalidProcedureCall)
            << testing::Printable(control->Name());
    EXPECT_EQ(FocusName(), u"Third");
    form.border.SetVisible(true);
    form.second.SetFocus();
    EXPECT_EQ(FocusName(), u"Second");
    form.border.SetEnabled(false);
    EXPECT_FALSE(form.second.CanTakeFocus());
}

TEST_F(FocusTest, TheTabKeyGoesByTheIndicesAndRound) {
    std::vector<Text> visited;
    for (int n = 0; n < 4; ++n) {
        form.FocusNext();
        visited.push_back(FocusName());
    }
    EXPECT_EQ(visited, (std::vector<Text>{u"First", u"Second", u"Third", u"First"}));
}

TEST_F(FocusTest, TheTabKeyPassesOverWhatIsNoStop) {
    form.first.SetTabStop(false);
    EXPECT_FALSE(form.first.TabStop());
    form.second.SetVisible(false);
    form.FocusNext();
    EXPECT_EQ(FocusName(), u"Third");
    form.FocusNext();
    EXPECT_EQ(FocusName(), u"Third");
    form.first.SetFocus();
    EXPECT_EQ(FocusName(), u"First");
    EXPECT_EQ(view.CountChanges(u"First", u"TabStop"), 1);
}

TEST_F(FocusTest, TheFocusMovesOnFromAControlThatLosesIt) {
    form.first.SetFocus();
    form.first.SetEnabled(false);
    EXPECT_EQ(FocusName(), u"Second");
    form.border.SetVisible(false);
    EXPECT_EQ(FocusName(), u"Third");
    form.third.SetVisible(false);
    EXPECT_EQ(form.Focus(), nullptr);
    form.FocusNext();
    EXPECT_EQ(form.Focus(), nullptr);
}

TEST_F(FocusTest, TheTabKeyGoesBackwardsToo) {
    form.FocusPrevious();
    EXPECT_EQ(FocusName(), u"Third");
    form.FocusPrevious();
    EXPECT_EQ(FocusName(), u"Second");
    form.second.SetTabStop(false);
    form.FocusPrevious();
    EXPECT_EQ(FocusName(), u"First");
    form.FocusPrevious();
    EXPECT_EQ(FocusName(), u"Third");
    form.placeless.SetFocus();
    form.FocusPrevious();
    EXPECT_EQ(FocusName(), u"Third");
}

}  // namespace
}  // namespace nomira
