#include "ui/formlayer/Controls.h"

#include <limits>

#include "adapters/memory/MemoryMachine.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {
namespace {

using memory::ViewEvent;
using testing::Raised;

class SampleForm : public Form {
  public:
    SampleForm() : Form(u"Sample") {}
    Label& label = Add<Label>(u"Words");
    Frame& frame = Add<Frame>(u"Border");
    TextBox& textBox = Add<TextBox>(u"Name");
    CheckBox& box = Add<CheckBox>(u"Choice");
    ProgressBar& bar = Add<ProgressBar>(u"Bar");
};

class ControlsTest : public ::testing::Test {
  protected:
    ControlsTest() { SetView(&view); }
    ~ControlsTest() override { SetView(nullptr); }

    memory::RecordingView view;
    SampleForm form;

    // The properties of the control that the view was told of, in order.
    std::vector<Text> Told(TextView sControl) const {
        std::vector<Text> properties;
        for (const ViewEvent& event : view.events)
            if (event.kind == ViewEvent::Kind::PropertyChanged && event.sControl == sControl)
                properties.push_back(event.sProperty);
        return properties;
    }
};

TEST_F(ControlsTest, AControlKnowsItsNameAndItsForm) {
    EXPECT_EQ(form.label.Name(), u"Words");
    EXPECT_EQ(&form.label.Owner(), &form);
}

TEST_F(ControlsTest, AControlBeginsVisibleEnabledAndWithoutSize) {
    EXPECT_TRUE(form.label.Visible());
    EXPECT_TRUE(form.label.Enabled());
    EXPECT_EQ(form.label.Width(), 0);
    EXPECT_EQ(form.label.Caption(), u"");
    EXPECT_TRUE(view.events.empty());
}

TEST_F(ControlsTest, AMoveTellsWhatIsNew) {
    form.label.Move(10, 20, 30, 40);
    EXPECT_EQ(Told(u"Words"), (std::vector<Text>{u"Left", u"Top", u"Width", u"Height"}));
    view.events.clear();
    form.label.Move(10, 25, 30, 40);
    EXPECT_EQ(Told(u"Words"), (std::vector<Text>{u"Top"}));
    EXPECT_EQ(form.label.Left(), 10);
    EXPECT_EQ(form.label.Top(), 25);
    EXPECT_EQ(form.label.Width(), 30);
    EXPECT_EQ(form.label.Height(), 40);
}

TEST_F(ControlsTest, APropertyIsToldOnlyWhenItsValueIsNew) {
    for (int i = 0; i < 2; ++i) {
        form.label.SetCaption(u"text");
        form.label.SetVisible(false);
        form.label.SetEnabled(false);
        form.frame.SetCaption(u"title");
    }
    EXPECT_EQ(Told(u"Words"), (std::vector<Text>{u"Caption", u"Visible", u"Enabled"}));
    EXPECT_EQ(Told(u"Border"), (std::vector<Text>{u"Caption"}));
    EXPECT_EQ(form.label.Caption(), u"text");
    EXPECT_FALSE(form.label.Visible());
    EXPECT_FALSE(form.label.Enabled());
    EXPECT_EQ(form.frame.Caption(), u"title");
}

TEST_F(ControlsTest, TheViewSeesTheNewValueAlready) {
    class Peeking : public memory::RecordingView {
      public:
        void PropertyChanged(Form&, Control* control, TextView) override {
            sSeen = dynamic_cast<Label&>(*control).Caption();
        }
        Text sSeen;
    };
    Peeking peeking;
    SetView(&peeking);
    form.label.SetCaption(u"new");
    EXPECT_EQ(peeking.sSeen, u"new");
}

TEST_F(ControlsTest, ARefreshGoesToTheView) {
    form.label.Refresh();
    EXPECT_EQ(view.events,
              (std::vector<ViewEvent>{{ViewEvent::Kind::Refreshed, u"Sample", u"Words", u""}}));
}

TEST_F(ControlsTest, EverythingWorksWithoutAView) {
    SetView(nullptr);
    form.label.SetCaption(u"text");
    form.label.Refresh();
    form.label.Move(1, 2, 3, 4);
    EXPECT_EQ(form.label.Caption(), u"text");
    EXPECT_EQ(form.label.Height(), 4);
    EXPECT_TRUE(view.events.empty());
}

TEST_F(ControlsTest, ATextBoxHoldsItsText) {
    EXPECT_EQ(form.textBox.Text(), u"");
    form.textBox.SetText(u"names.txt");
    form.textBox.SetText(u"names.txt");
    EXPECT_EQ(form.textBox.Text(), u"names.txt");
    EXPECT_EQ(Told(u"Name"), (std::vector<Text>{u"Text"}));
}

TEST_F(ControlsTest, TheUserTypesWhereTheBoxCanBeReached) {
    form.textBox.UserType(u"abc");
    EXPECT_TRUE(form.textBox.HasFocus());
    form.textBox.SetEnabled(false);
    form.textBox.UserType(u"xyz");
    EXPECT_EQ(form.textBox.Text(), u"abc");
}

TEST_F(ControlsTest, AControlHasAFontAndAColourWhereTold) {
    EXPECT_EQ(form.label.Font(), Font{});
    EXPECT_EQ(form.label.BackColour(), std::nullopt);
    for (int i = 0; i < 2; ++i) {
        form.label.SetFont({u"Arial", 9.75F, true});
        form.label.SetBackColour(0xC0C0C0);
    }
    EXPECT_EQ(form.label.Font(), (Font{u"Arial", 9.75F, true}));
    EXPECT_EQ(form.label.BackColour(), 0xC0C0C0U);
    EXPECT_EQ(Told(u"Words"), (std::vector<Text>{u"Font", u"BackColour"}));
}

TEST_F(ControlsTest, ABoxBeginsClearedAndTellsItsNewValues) {
    EXPECT_EQ(form.box.Value(), CheckBox::kCleared);
    form.box.SetValue(CheckBox::kCleared);
    form.box.SetValue(CheckBox::kChecked);
    form.box.SetCaption(u"add");
    EXPECT_EQ(form.box.Value(), 1);
    EXPECT_EQ(form.box.Caption(), u"add");
    EXPECT_EQ(Told(u"Choice"), (std::vector<Text>{u"Value", u"Caption"}));
}

TEST_F(ControlsTest, ABoxRefusesOtherValues) {
    form.box.SetValue(CheckBox::kGrey);
    for (const int nValue : {-1, 3}) {
        EXPECT_EQ(Raised([&] { form.box.SetValue(static_cast<std::int16_t>(nValue)); }),
                  ErrorNumber::InvalidPropertyValue);
    }
    EXPECT_EQ(form.box.Value(), CheckBox::kGrey);
}

TEST_F(ControlsTest, ABarRunsFromZeroToAHundredAtFirst) {
    EXPECT_EQ(form.bar.Min(), 0);
    EXPECT_EQ(form.bar.Max(), 100);
    EXPECT_EQ(form.bar.Value(), 0);
}

TEST_F(ControlsTest, ABarTakesValuesUpToItsLimits) {
    form.bar.SetMin(1);
    form.bar.SetMax(27);
    for (const float nValue : {1.0F, 1.15F, 27.0F}) {
        form.bar.SetValue(nValue);
        EXPECT_EQ(form.bar.Value(), nValue);
    }
}

TEST_F(ControlsTest, ABarRefusesValuesOutsideItsLimits) {
    form.bar.SetMin(1);
    form.bar.SetValue(50);
    EXPECT_EQ(Raised([&] { form.bar.SetValue(0.99F); }), ErrorNumber::InvalidPropertyValue);
    EXPECT_EQ(Raised([&] { form.bar.SetValue(100.01F); }), ErrorNumber::InvalidPropertyValue);
    EXPECT_EQ(Raised([&] { form.bar.SetValue(std::numeric_limits<float>::quiet_NaN()); }),
              ErrorNumber::InvalidPropertyValue);
    EXPECT_EQ(form.bar.Value(), 50);
}

TEST_F(ControlsTest, ABarRefusesLimitsThatCross) {
    EXPECT_EQ(Raised([&] { form.bar.SetMin(100); }), ErrorNumber::InvalidPropertyValue);
    EXPECT_EQ(Raised([&] { form.bar.SetMax(0); }), ErrorNumber::InvalidPropertyValue);
    EXPECT_EQ(Raised([&] { form.bar.SetMax(-1); }), ErrorNumber::InvalidPropertyValue);
    EXPECT_EQ(form.bar.Min(), 0);
    EXPECT_EQ(form.bar.Max(), 100);
}

TEST_F(ControlsTest, ALimitTakesTheValueAlong) {
    form.bar.SetMin(1);
    EXPECT_EQ(form.bar.Value(), 1);
    form.bar.SetValue(90);
    form.bar.SetMax(27);
    EXPECT_EQ(form.bar.Value(), 27);
    EXPECT_EQ(Told(u"Bar"), (std::vector<Text>{u"Min", u"Value", u"Value", u"Max", u"Value"}));
}

}  // namespace
}  // namespace nomira
