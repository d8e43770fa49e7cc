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

struct BoxRow {
    TextView sName;
    std::int32_t nLeft, nTop, nWidth, nHeight;
    TextView sCaption;
    std::int16_t nValue;
};

void ExpectBox(const Form& form, const BoxRow& row) {
    const auto& box = form.Get<CheckBox>(row.sName);
    EXPECT_EQ(box.Left(), row.nLeft);
    EXPECT_EQ(box.Top(), row.nTop);
    EXPECT_EQ(box.Width(), row.nWidth);
    EXPECT_EQ(box.Height(), row.nHeight);
    EXPECT_EQ(box.Caption(), row.sCaption);
    EXPECT_EQ(box.Value(), row.nValue);
}

// As designed, the one box means "overwrite" on the desktop and "add" on the pendant.
TEST_F(MainFormsTest, TheCheckBoxesHaveTheirWordsPlacesAndValues) {
    const NomiraMain desktop;
    ExpectBox(desktop, {u"chkBoxAdd", 2040, 2760, 1695, 255, u"overwrite old datas", 1});
    EXPECT_EQ(desktop.Find(u"chkBoxSymbol"), nullptr);
    const StdBofForm pendant;
    ExpectBox(pendant, {u"chkBoxAdd", 240, 5280, 2295, 195, u"Langtexte hinzufuegen", 0});
    ExpectBox(pendant, {u"chkBoxSymbol", 240, 3960, 2175, 375, u"mit Kurzsymbolik", 0});
}

TEST_F(MainFormsTest, AFormThatIsOnlyLoadedIsNotLive) {
    EXPECT_FALSE(LoadForm(std::make_unique<NomiraMain>()).IsLive());
    EXPECT_FALSE(LoadForm(std::make_unique<StdBofForm>()).IsLive());
}

}  // namespace
}  // namespace nomira
