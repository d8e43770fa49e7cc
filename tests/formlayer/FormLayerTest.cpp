#include "ui/formlayer/FormLayer.h"

#include "adapters/memory/MemoryMachine.h"
#include "langtools/ProgramState.h"
#include "langtools/RuntimeError.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"

namespace nomira {
namespace {

using memory::ViewEvent;
using testing::Raised;

class SampleForm : public Form {
  public:
    explicit SampleForm(Text sClass) : Form(std::move(sClass)) { Add<Label>(u"Words"); }
    void Load() override {
        ++nLoads;
        bInCollectionAtLoad = FindForm(Class()) == this;
    }
    int nLoads = 0;
    bool bInCollectionAtLoad = false;
};

class FailingForm : public Form {
  public:
    FailingForm() : Form(u"Failing") {}
    void Load() override { Raise(ErrorNumber::ObjectNotSet); }
};

class FormLayerTest : public ::testing::Test {
  protected:
    memory::MemoryMachine machine;
    memory::RecordingView view;

    static SampleForm& LoadSample(TextView sClass) {
        return static_cast<SampleForm&>(LoadForm(std::make_unique<SampleForm>(Text(sClass))));
    }
};

TEST_F(FormLayerTest, LoadsAFormOnceAndFindsItByItsClass) {
    SampleForm& form = LoadSample(u"One");
    LoadSample(u"Two");
    EXPECT_EQ(form.nLoads, 1);
    EXPECT_TRUE(form.bInCollectionAtLoad);
    EXPECT_EQ(FindForm(u"One"), &form);
    EXPECT_EQ(FindForm(u"Three"), nullptr);
    EXPECT_FALSE(form.Visible());
}

TEST_F(FormLayerTest, ASecondFormOfTheSameClassIsRefused) {
    SampleForm& form = LoadSample(u"One");
    EXPECT_EQ(Raised([] { LoadSample(u"One"); }), ErrorNumber::KeyAlreadyUsed);
    EXPECT_EQ(FindForm(u"One"), &form);
    EXPECT_EQ(form.nLoads, 1);
}

TEST_F(FormLayerTest, AFormThatFailsToLoadIsNotLoaded) {
    EXPECT_EQ(Raised([] { LoadForm(std::make_unique<FailingForm>()); }), ErrorNumber::ObjectNotSet);
    EXPECT_EQ(FindForm(u"Failing"), nullptr);
}

TEST_F(FormLayerTest, UnloadTakesTheFormAway) {
    SetView(&view);
    LoadSample(u"One").Show();
    EXPECT_TRUE(AnyFormVisible());
    UnloadForm(u"One");
    EXPECT_EQ(FindForm(u"One"), nullptr);
    EXPECT_FALSE(AnyFormVisible());
    EXPECT_EQ(view.events,
              (std::vector<ViewEvent>{{ViewEvent::Kind::FormShown, u"One", u"", u""},
                                      {ViewEvent::Kind::FormUnloaded, u"One", u"", u""}}));
    LoadSample(u"One");
    EXPECT_NE(FindForm(u"One"), nullptr);
}

TEST_F(FormLayerTest, UnloadOfWhatIsNotLoadedDoesNothing) {
    SetView(&view);
    LoadSample(u"One");
    UnloadForm(u"Two");
    EXPECT_NE(FindForm(u"One"), nullptr);
    EXPECT_TRUE(view.events.empty());
}

TEST_F(FormLayerTest, AFormMayBeUnloadedByItsOwnName) {
    const SampleForm& form = LoadSample(u"One");
    UnloadForm(form.Class());
    EXPECT_EQ(FindForm(u"One"), nullptr);
}

TEST_F(FormLayerTest, ALoadedFormThatIsNotShownIsNotVisible) {
    EXPECT_FALSE(AnyFormVisible());
    LoadSample(u"One");
    EXPECT_FALSE(AnyFormVisible());
    LoadSample(u"Two").Show();
    EXPECT_TRUE(AnyFormVisible());
}

TEST_F(FormLayerTest, FindsAControlOfALoadedForm) {
    LoadSample(u"One");
    EXPECT_NE(FindControl<Label>(u"One", u"Words"), nullptr);
    EXPECT_EQ(FindControl<ProgressBar>(u"One", u"Words"), nullptr);
    EXPECT_EQ(FindControl<Label>(u"One", u"Other"), nullptr);
    EXPECT_EQ(FindControl<Label>(u"Two", u"Words"), nullptr);
}

TEST_F(FormLayerTest, PendingEventsAreTheViewsBusiness) {
    ProcessPendingEvents();
    SetView(&view);
    EXPECT_EQ(TheView(), &view);
    ProcessPendingEvents();
    EXPECT_EQ(view.Count(ViewEvent::Kind::PendingEvents), 1);
}

TEST_F(FormLayerTest, AResetDropsFormsAndView) {
    SetView(&view);
    LoadSample(u"One").Show();
    view.events.clear();
    ResetProgramState();
    EXPECT_EQ(FindForm(u"One"), nullptr);
    EXPECT_EQ(TheView(), nullptr);
    EXPECT_TRUE(view.events.empty());
}

}  // namespace
}  // namespace nomira
