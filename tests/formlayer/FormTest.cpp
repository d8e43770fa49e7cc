#include "ui/formlayer/Form.h"

#include "adapters/memory/MemoryMachine.h"
#include "langtools/ProgramEnd.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/Buttons.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {
namespace {

using memory::ViewEvent;

class SampleForm : public Form {
  public:
    SampleForm() : Form(u"Sample") {
        Add<Label>(u"Words");
        Add<ProgressBar>(u"Bar");
    }
};

class FormTest : public ::testing::Test {
  protected:
    FormTest() { SetView(&view); }
    ~FormTest() override { SetView(nullptr); }
    memory::RecordingView view;
    SampleForm form;
};

TEST_F(FormTest, BeginsHiddenAndNotLive) {
    EXPECT_EQ(form.Class(), u"Sample");
    EXPECT_FALSE(form.Visible());
    EXPECT_FALSE(form.IsLive());
    form.SetLive(true);
    EXPECT_TRUE(form.IsLive());
    EXPECT_FALSE(form.Visible());
}

TEST_F(FormTest, FindsControlsByTheirExactName) {
    ASSERT_NE(form.Find(u"Bar"), nullptr);
    EXPECT_EQ(form.Find(u"Bar")->Name(), u"Bar");
    EXPECT_EQ(form.Find(u"bar"), nullptr);
    EXPECT_EQ(form.Find(u""), nullptr);
}

TEST_F(FormTest, GetRaisesForAMissingControlAndForOneOfAnotherKind) {
    EXPECT_EQ(form.Get<Label>(u"Words").Name(), u"Words");
    for (const TextView sName : {u"Bar", u"None"})
        EXPECT_EQ(testing::Raised([&] { form.Get<Label>(sName); }), ErrorNumber::NoSuchMember)
            << testing::Printable(sName);
}

TEST_F(FormTest, TellsItsOwnPropertiesWithoutAControl) {
    for (int i = 0; i < 2; ++i) {
        form.SetCaption(u"Title");
        form.Move(0, 1, 2, 0);
    }
    EXPECT_EQ(view.events, (std::vector<ViewEvent>{
                               {ViewEvent::Kind::PropertyChanged, u"Sample", u"", u"Caption"},
                               {ViewEvent::Kind::PropertyChanged, u"Sample", u"", u"Top"},
                               {ViewEvent::Kind::PropertyChanged, u"Sample", u"", u"Width"}}));
    EXPECT_EQ(form.Caption(), u"Title");
    EXPECT_EQ(form.Left(), 0);
    EXPECT_EQ(form.Top(), 1);
    EXPECT_EQ(form.Width(), 2);
    EXPECT_EQ(form.Height(), 0);
}

TEST_F(FormTest, AFormWithoutMethodsOfItsOwnRefusesCallsByName) {
    const CallArgument arguments[] = {Text(u"x"), std::int16_t{0}};
    EXPECT_EQ(testing::Raised([&] { form.CallByName(u"SetInfoResult", arguments); }),
              ErrorNumber::NoSuchMember);
}

TEST_F(FormTest, AReferenceEndsWithItsForm) {
    auto other = std::make_unique<SampleForm>();
    const std::weak_ptr<Form> reference = other->Reference();
    EXPECT_EQ(reference.lock().get(), other.get());
    other.reset();
    EXPECT_TRUE(reference.expired());
}

TEST_F(FormTest, IsShownOnce) {
    form.Show();
    form.Show();
    EXPECT_TRUE(form.Visible());
    EXPECT_EQ(view.events,
              (std::vector<ViewEvent>{{ViewEvent::Kind::FormShown, u"Sample", u"", u""}}));
}

// A loaded form with a button that lets events through, and that has something to do behind them.
class FormCloseTest : public ::testing::Test {
  protected:
    class YieldingForm : public Form {
      public:
        explicit YieldingForm(Text sClass) : Form(std::move(sClass)) {
            Add<Button>(u"Yield").onClick = [this] {
                ProcessPendingEvents();
                SetCaption(u"done");
            };
            Add<Button>(u"Fail").onClick = [] { Raise(ErrorNumber::PathNotFound); };
        }
    };

    FormCloseTest() {
        SetView(&view);
        form.Show();
        other.Show();
        view.events.clear();
    }
    ~FormCloseTest() override {
        SetView(nullptr);
        UnloadForm(u"One");
        UnloadForm(u"Two");
    }
    void Click(TextView sButton) { form.Get<Button>(sButton).UserClick(); }

    memory::RecordingView view;
    Form& form = LoadForm(std::make_unique<YieldingForm>(u"One"));
    Form& other = LoadForm(std::make_unique<YieldingForm>(u"Two"));
};

TEST_F(FormCloseTest, AtRestTheFormIsUnloaded) {
    const std::weak_ptr<Form> reference = form.Reference();
    form.UserClose();
    EXPECT_EQ(FindForm(u"One"), nullptr);
    EXPECT_TRUE(reference.expired());
    EXPECT_EQ(view.events,
              (std::vector<ViewEvent>{{ViewEvent::Kind::FormUnloaded, u"One", u"", u""}}));
    EXPECT_EQ(FindForm(u"Two"), &other);
}

TEST_F(FormCloseTest, InsideAHandlerTheProgramEndsAndTheFormStays) {
    view.onPendingEvents = [this] { form.UserClose(); };
    EXPECT_THROW(Click(u"Yield"), ProgramEnd);
    EXPECT_EQ(FindForm(u"One"), &form);
    EXPECT_TRUE(form.Visible());
    EXPECT_EQ(form.Caption(), u"") << "the handler has gone on";
}

TEST_F(FormCloseTest, TheHandlerOfAnotherFormCountsToo) {
    view.onPendingEvents = [this] { other.UserClose(); };
    EXPECT_THROW(Click(u"Yield"), ProgramEnd);
    EXPECT_EQ(FindForm(u"Two"), &other);
}

TEST_F(FormCloseTest, AHandlerInsideAnotherLeavesTheOuterOneAtWork) {
    view.onPendingEvents = [this] {
        view.onPendingEvents = nullptr;
        Click(u"Yield");
        form.UserClose();
    };
    EXPECT_THROW(Click(u"Yield"), ProgramEnd);
    EXPECT_EQ(FindForm(u"One"), &form);
}

TEST_F(FormCloseTest, BehindAHandlerTheFormIsAtRestHoweverTheHandlerEnded) {
    Click(u"Yield");
    EXPECT_EQ(testing::Raised([this] { Click(u"Fail"); }), ErrorNumber::PathNotFound);
    view.onPendingEvents = [this] { form.UserClose(); };
    EXPECT_THROW(Click(u"Yield"), ProgramEnd);
    form.UserClose();
    EXPECT_EQ(FindForm(u"One"), nullptr);
}

}  // namespace
}  // namespace nomira
