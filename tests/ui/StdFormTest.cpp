#include "ui/StdForm.h"

#include "adapters/memory/MemoryMachine.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {
namespace {

class StdFormTest : public ::testing::Test {
  protected:
    memory::MemoryMachine machine;
    Form& LoadIt() { return LoadForm(std::make_unique<StdForm>()); }
};

TEST_F(StdFormTest, HasItsDesignTimeWordsAndPlaces) {
    const StdForm form;
    EXPECT_EQ(form.Class(), u"StdForm");
    EXPECT_EQ(form.Caption(), u"TQ X1  Longtext Convert-Programm");
    EXPECT_EQ(form.Width(), 5265);
    EXPECT_EQ(form.Height(), 2250);
    EXPECT_EQ(form.Get<Label>(u"Information").Caption(), u"");
    EXPECT_EQ(form.Get<Frame>(u"Frame").Caption(), u"Info");

    struct Row {
        TextView sName;
        std::int32_t nLeft, nTop, nWidth, nHeight;
    };
    for (const Row& row :
         {Row{u"Information", 120, 255, 5055, 660}, Row{u"Frame", 120, 1080, 5055, 855},
          Row{u"ProgressBar", 120, 360, 4815, 375}}) {
        const Control& control = form.Get<Control>(row.sName);
        EXPECT_EQ(control.Left(), row.nLeft) << testing::Printable(row.sName);
        EXPECT_EQ(control.Top(), row.nTop) << testing::Printable(row.sName);
        EXPECT_EQ(control.Width(), row.nWidth) << testing::Printable(row.sName);
        EXPECT_EQ(control.Height(), row.nHeight) << testing::Printable(row.sName);
    }
}

TEST_F(StdFormTest, LoadSetsTheBar) {
    const auto& bar = LoadIt().Get<ProgressBar>(u"ProgressBar");
    EXPECT_EQ(bar.Min(), 1);
    EXPECT_EQ(bar.Max(), 100);
    EXPECT_EQ(bar.Value(), 1);
}

TEST_F(StdFormTest, LoadSetsTheBarWhateverItWas) {
    StdForm form;
    auto& bar = form.Get<ProgressBar>(u"ProgressBar");
    bar.SetMax(50);
    bar.SetValue(20);
    form.Load();
    EXPECT_EQ(bar.Max(), 100);
    EXPECT_EQ(bar.Value(), 1);
}

TEST_F(StdFormTest, LoadCentresTheFormOnTheScreen) {
    machine.desktop.screen = {15265, 12250};
    const Form& form = LoadIt();
    EXPECT_EQ(form.Left(), 5000);
    EXPECT_EQ(form.Top(), 5000);
    EXPECT_EQ(form.Width(), 5265);
    EXPECT_EQ(form.Height(), 2250);
}

TEST_F(StdFormTest, AScreenSmallerThanTheFormPutsItOffTheEdge) {
    machine.desktop.screen = {5063, 2048};
    const Form& form = LoadIt();
    EXPECT_EQ(form.Left(), -101);
    EXPECT_EQ(form.Top(), -101);
}

}  // namespace
}  // namespace nomira
