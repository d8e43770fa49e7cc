#include "adapters/memory/MemoryMachine.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"
#include "ui/NomiraMain.h"
#include "ui/StdBofForm.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/FormLayer.h"
#include "ui/formlayer/StatusBar.h"

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

struct PlaceRow {
    TextView sName;
    std::int32_t nLeft, nTop, nWidth, nHeight;
};

void ExpectPlaces(const Form& form, std::initializer_list<PlaceRow> rows) {
    for (const PlaceRow& row : rows) {
        SCOPED_TRACE(testing::Printable(row.sName));
        const auto& control = form.Get<Control>(row.sName);
        EXPECT_EQ(control.Left(), row.nLeft);
        EXPECT_EQ(control.Top(), row.nTop);
        EXPECT_EQ(control.Width(), row.nWidth);
        EXPECT_EQ(control.Height(), row.nHeight);
    }
}

TEST_F(MainFormsTest, TheListsOfFilesHaveTheirPlaces) {
    ExpectPlaces(NomiraMain(), {{u"Dir1", 120, 720, 1815, 2340},
                                {u"Text1", 2040, 1800, 1695, 375},
                                {u"File1", 2040, 1440, 1695, 1065},
                                {u"File2", 2040, 1440, 1695, 1260},
                                {u"StatusBar1", 0, 3240, 4830, 285}});
    ExpectPlaces(StdBofForm(), {{u"Dir1", 2760, 1320, 2175, 3465},
                                {u"Text1", 5040, 840, 3495, 315},
                                {u"File1", 5040, 840, 3495, 3990},
                                {u"File2", 5040, 840, 3495, 3990},
                                {u"StatusBar1", 120, 5880, 8535, 375}});
}

TEST_F(MainFormsTest, OnlyTheListsOfProgramsTakeSeveralSelections) {
    const NomiraMain desktop;
    const StdBofForm pendant;
    for (const Form* form : std::initializer_list<const Form*>{&desktop, &pendant}) {
        EXPECT_FALSE(form->Get<FileListBox>(u"File1").MultiSelect());
        EXPECT_TRUE(form->Get<FileListBox>(u"File2").MultiSelect());
        EXPECT_EQ(form->Get<DirListBox>(u"Dir1").ListCount(), 0);
    }
    EXPECT_EQ(desktop.Get<TextBox>(u"Text1").Text(), u"");
    EXPECT_EQ(pendant.Get<TextBox>(u"Text1").Text(), u"Text1");
}

TEST_F(MainFormsTest, TheDesktopFormsPanelsAreAddedWhenItLoads) {
    EXPECT_EQ(NomiraMain().Get<StatusBar>(u"StatusBar1").PanelCount(), 1);
    const Form& form = LoadForm(std::make_unique<NomiraMain>());
    const StatusBar& bar = form.Get<StatusBar>(u"StatusBar1");
    struct Row {
        TextView sKey;
        std::int32_t nMinWidth;
        std::int16_t nStyle;
    };
    const Row rows[] = {
        {u"", 255, 0}, {u"Objekt2", 1700, 0}, {u"Objekt3", 2100, 0}, {u"Objekt4", 960, 5}};
    ASSERT_EQ(bar.PanelCount(), 4);
    for (std::int16_t n = 1; n <= 4; ++n) {
        const Row& row = rows[n - 1];
        EXPECT_EQ(bar.Panels(n).Key(), row.sKey);
        EXPECT_EQ(bar.Panels(n).MinWidth(), row.nMinWidth);
        EXPECT_EQ(bar.Panels(n).Style(), row.nStyle);
    }
}

TEST_F(MainFormsTest, ThePendantFormHasItsPanelsFromDesignTime) {
    EXPECT_EQ(StdBofForm().Get<StatusBar>(u"StatusBar1").PanelCount(), 4);
}

// The link calls by name; the pendant form alone has the one method, and ignores what it is told.
TEST_F(MainFormsTest, OnlyThePendantFormTakesReportsOfTheLink) {
    const CallArgument arguments[] = {Text(u"$A=1")};
    StdBofForm pendant;
    EXPECT_EQ(testing::Raised([&] { pendant.CallByName(u"SetInfoResult", arguments); }),
              std::nullopt);
    EXPECT_EQ(testing::Raised([&] { pendant.CallByName(u"Vexon1_CmdMessage", arguments); }),
              ErrorNumber::NoSuchMember);
    NomiraMain desktop;
    EXPECT_EQ(testing::Raised([&] { desktop.CallByName(u"SetInfoResult", arguments); }),
              ErrorNumber::NoSuchMember);
}

TEST_F(MainFormsTest, AFormThatIsOnlyLoadedIsNotLive) {
    EXPECT_FALSE(LoadForm(std::make_unique<NomiraMain>()).IsLive());
    EXPECT_FALSE(LoadForm(std::make_unique<StdBofForm>()).IsLive());
}

}  // namespace
}  // namespace nomira
