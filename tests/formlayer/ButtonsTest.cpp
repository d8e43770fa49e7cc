#include "ui/formlayer/Buttons.h"

#include "adapters/memory/MemoryMachine.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {
namespace {

class SampleForm : public Form {
  public:
    SampleForm() : Form(u"Sample") {
        for (RadioButton* inside : {&first, &second})
            inside->SetContainer(border);
    }
    Frame& border = Add<Frame>(u"Border");
    RadioButton& first = Add<RadioButton>(u"First");
    RadioButton& second = Add<RadioButton>(u"Second");
    RadioButton& outside = Add<RadioButton>(u"Outside");
    RadioButton& beside = Add<RadioButton>(u"Beside");
    Button& button = Add<Button>(u"Start");
    CheckBox& box = Add<CheckBox>(u"Choice");
};

class ButtonsTest : public ::testing::Test {
  protected:
    ButtonsTest() { SetView(&view); }
    ~ButtonsTest() override { SetView(nullptr); }

    memory::RecordingView view;
    SampleForm form;
    int nClicks = 0;
    std::function<void()> count = [this] { ++nClicks; };
};

TEST_F(ButtonsTest, AButtonHasWordsPicturesAndAFont) {
    EXPECT_FALSE(form.button.PictureStyle());
    for (int i = 0; i < 2; ++i) {
        form.button.SetCaption(u"Start");
        form.button.SetPicture({u"on"});
        form.button.SetDisabledPicture({u"off"});
        form.button.SetFontBold(true);
    }
    EXPECT_EQ(form.button.Caption(), u"Start");
    EXPECT_EQ(form.button.Picture().sName, u"on");
    EXPECT_EQ(form.button.DisabledPicture().sName, u"off");
    EXPECT_TRUE(form.button.Font().bBold);
    for (const TextView sProperty : {u"Caption", u"Picture", u"DisabledPicture", u"Font"})
        EXPECT_EQ(view.CountChanges(u"Start", sProperty), 1) << testing::Printable(sProperty);
}

TEST_F(ButtonsTest, BoldLeavesTheRestOfTheFont) {
    form.button.SetFont({u"Arial", 9.75F, false});
    form.button.SetFontBold(true);
    EXPECT_EQ(form.button.Font(), (Font{u"Arial", 9.75F, true}));
}

TEST_F(ButtonsTest, AClickRunsTheHandlerAndTakesTheFocus) {
    form.button.UserClick();
    EXPECT_TRUE(form.button.HasFocus());
    form.button.onClick = count;
    form.button.UserClick();
    form.button.UserClick();
    EXPECT_EQ(nClicks, 2);
}

TEST_F(ButtonsTest, TheUserDoesNotReachWhatIsHiddenOrDisabled) {
    form.button.onClick = form.first.onClick = form.box.onClick = count;
    form.button.SetVisible(false);
    form.box.SetEnabled(false);
    form.border.SetVisible(false);
    for (Control* control : std::initializer_list<Control*>{&form.button, &form.box, &form.first})
        control->UserClick();
    EXPECT_EQ(nClicks, 0);
    EXPECT_FALSE(form.first.Value());
    EXPECT_EQ(form.box.Value(), CheckBox::kCleared);
    EXPECT_EQ(form.Focus(), nullptr);
}

TEST_F(ButtonsTest, AHandlerMayReplaceItself) {
    form.button.onClick = [this] {
        form.button.onClick = nullptr;
        ++nClicks;
    };
    form.button.UserClick();
    form.button.UserClick();
    EXPECT_EQ(nClicks, 1);
}

TEST_F(ButtonsTest, AHandlerMayUnloadItsForm) {
    class ClosingForm : public Form {
      public:
        ClosingForm() : Form(u"Closing") {
            auto& exit = Add<Button>(u"Exit");
            exit.onClick = [] { UnloadForm(u"Closing"); };
        }
    };
    LoadForm(std::make_unique<ClosingForm>()).Get<Button>(u"Exit").UserClick();
    EXPECT_EQ(FindForm(u"Closing"), nullptr);
}

TEST_F(ButtonsTest, ARadioButtonTakesTheValueFromItsGroup) {
    form.outside.SetValue(true);
    form.first.SetValue(true);
    form.second.SetValue(true);
    EXPECT_FALSE(form.first.Value());
    EXPECT_TRUE(form.second.Value());
    EXPECT_TRUE(form.outside.Value());
    form.beside.SetValue(true);
    EXPECT_FALSE(form.outside.Value());
    EXPECT_TRUE(form.second.Value());
    EXPECT_EQ(view.CountChanges(u"First", u"Value"), 2);
}

TEST_F(ButtonsTest, ARadioButtonRunsItsHandlerAtEachNewValueThatIsSet) {
    form.first.onClick = count;
    form.first.SetValue(false);
    EXPECT_EQ(nClicks, 0);
    form.first.SetValue(true);
    form.first.SetValue(true);
    EXPECT_EQ(nClicks, 1);
    form.first.SetValue(false);
    EXPECT_EQ(nClicks, 2);
}

TEST_F(ButtonsTest, TheChoiceOfAnotherButtonRunsNoHandlerOfTheOneBefore) {
    form.first.SetValue(true);
    form.first.onClick = count;
    bool bFirstWasOff = false;
    form.second.onClick = [&] { bFirstWasOff = !form.first.Value(); };
    form.second.UserClick();
    EXPECT_TRUE(bFirstWasOff);
    EXPECT_EQ(nClicks, 0);
}

TEST_F(ButtonsTest, AUsersSecondClickOnARadioButtonChangesNothing) {
    form.first.onClick = count;
    form.first.UserClick();
    form.first.UserClick();
    EXPECT_TRUE(form.first.Value());
    EXPECT_EQ(nClicks, 1);
}

TEST_F(ButtonsTest, ABoxRunsItsHandlerAtEachNewValue) {
    form.box.onClick = count;
    form.box.SetValue(CheckBox::kCleared);
    EXPECT_EQ(nClicks, 0);
    form.box.SetValue(CheckBox::kChecked);
    form.box.SetValue(CheckBox::kChecked);
    EXPECT_EQ(nClicks, 1);
    form.box.SetValue(CheckBox::kGrey);
    EXPECT_EQ(nClicks, 2);
}

TEST_F(ButtonsTest, AUsersClickTurnsABox) {
    std::vector<std::int16_t> values;
    form.box.onClick = [&] { values.push_back(form.box.Value()); };
    form.box.UserClick();
    form.box.UserClick();
    form.box.SetValue(CheckBox::kGrey);
    form.box.UserClick();
    EXPECT_EQ(values, (std::vector<std::int16_t>{1, 0, 2, 0}));
}

// A handler that sets the value it was called for comes to its end at once.
TEST_F(ButtonsTest, AHandlerThatSetsTheSameValueDoesNotRunAgain) {
    form.first.onClick = [this] {
        ++nClicks;
        form.first.SetValue(true);
    };
    form.first.SetValue(true);
    EXPECT_EQ(nClicks, 1);
}

}  // namespace
}  // namespace nomira
