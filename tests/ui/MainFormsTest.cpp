#include "adapters/memory/MemoryMachine.h"
#include "testing/TextPrinting.h"
#include "ui/NomiraMain.h"
#include "ui/StdBofForm.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {
namespace {

class MainFormsTest : public ::testing::Test {
  protected:
    memory::MemoryMachine machine;
};

TEST_F(MainFormsTest, TheDesktopFormHasItsCaptionSizeAndBar) {
    const Form& form = LoadForm(std::make_unique<NomiraMain>());
    EXPECT_EQ(form.Class(), u"NomiraMain");
    EXPECT_EQ(form.Caption(), u"Longname - Conversion");
    EXPECT_EQ(form.Width(), 4830);
    EXPECT_EQ(form.Height(), 3525);
    const auto& bar = form.Get<ProgressBar>(u"ProgressBar1");
    EXPECT_EQ(bar.Min(), 1);
    EXPECT_EQ(bar.Max(), 27);
    EXPECT_EQ(bar.Value(), 1);
    EXPECT_EQ(bar.Left(), 480);
    EXPECT_EQ(bar.Top(), 2280);
    EXPECT_EQ(bar.Width(), 855);
    EXPECT_EQ(bar.Height(), 255);
}

TEST_F(MainFormsTest, ThePendantFormHasItsCaptionSizeAndBar) {
    const Form& form = LoadForm(std::make_unique<StdBofForm>());
    EXPECT_EQ(form.Class(), u"StdBofForm");
    EXPECT_EQ(form.Caption(), u"Nomira");
    EXPECT_EQ(form.Left(), 0);
    EXPECT_EQ(form.Top(), 0);
    EXPECT_EQ(form.Width(), 9630);
    EXPECT_EQ(form.Height(), 7260);
    const auto& bar = form.Get<ProgressBar>(u"ProgressBar2");
    EXPECT_EQ(bar.Max(), 100);
    EXPECT_EQ(bar.Left(), 5040);
    EXPECT_EQ(bar.Top(), 5640);
    EXPECT_EQ(bar.Width(), 3350);
    EXPECT_EQ(bar.Height(), 135);
}

TEST_F(MainFormsTest, AFormThatIsOnlyLoadedIsNotLive) {
    EXPECT_FALSE(LoadForm(std::make_unique<NomiraMain>()).IsLive());
    EXPECT_FALSE(LoadForm(std::make_unique<StdBofForm>()).IsLive());
}

}  // namespace
}  // namespace nomira
