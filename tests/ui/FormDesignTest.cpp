// The designs of the three forms, control by control, against tables of their own.
#include <functional>
#include <set>
#include <typeinfo>

#include "adapters/memory/MemoryMachine.h"
#include "testing/TextPrinting.h"
#include "ui/NomiraMain.h"
#include "ui/StdBofForm.h"
#include "ui/StdForm.h"
#include "ui/formlayer/Buttons.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/PendantKeyControl.h"
#include "ui/formlayer/StatusBar.h"
#include "ui/formlayer/TreeView.h"

namespace nomira {
namespace {

// Whether the control is of the very kind.
template <typename Kind>
bool Is(const Control& control) {
    return typeid(control) == typeid(Kind);
}

struct Row {
    TextView sName;
    std::int16_t nIndex;  // of an array's element, else -1
    bool (*isKind)(const Control&);
    std::int32_t nLeft, nTop, nWidth, nHeight;
    TextView sText;
    std::int16_t nTab;
    TextView sContainer;
};

// clang-format off
const Row kDesktopRows[] = {
    {u"Dir1", -1, Is<DirListBox>, 120, 720, 1815, 2340, u"", 0, u""},
    {u"Drive1", -1, Is<DriveListBox>, 120, 240, 1815, 315, u"", 1, u""},
    {u"TreeView1", -1, Is<TreeView>, 120, 720, 1815, 2415, u"", 2, u""},
    {u"Option1", -1, Is<RadioButton>, 2160, 240, 2415, 255, u"Textfile -> Database", 3, u""},
    {u"Option2", -1, Is<RadioButton>, 2160, 600, 2415, 255, u"Database -> Textfile", 4, u""},
    {u"Option3", -1, Is<RadioButton>, 2160, 960, 2415, 255, u"Database (IO's) -> Programs", 5, u""},
    {u"Text1", -1, Is<TextBox>, 2040, 1800, 1695, 375, u"", 6, u""},
    {u"txtboxView", -1, Is<TextBox>, 120, 240, 3615, 2895, u"", 7, u""},
    {u"List1", -1, Is<ListBox>, 2040, 1440, 1695, 1230, u"", 8, u""},
    {u"File1", -1, Is<FileListBox>, 2040, 1440, 1695, 1065, u"", 9, u""},
    {u"File2", -1, Is<FileListBox>, 2040, 1440, 1695, 1260, u"", 10, u""},
    {u"chkBoxAdd", -1, Is<CheckBox>, 2040, 2760, 1695, 255, u"overwrite old datas", 11, u""},
    {u"chkBoxSelAll", -1, Is<CheckBox>, 2040, 2760, 975, 255, u"select all", 12, u""},
    {u"cmdStart", -1, Is<Button>, 3840, 1440, 855, 495, u"Start", 13, u""},
    {u"cmdExit", -1, Is<Button>, 3840, 2040, 855, 495, u"Exit", 14, u""},
    {u"cmdView", -1, Is<Button>, 3840, 2640, 855, 495, u"View DB", 15, u""},
    {u"ProgressBar1", -1, Is<ProgressBar>, 480, 2280, 855, 255, u"", 16, u""},
    {u"StatusBar1", -1, Is<StatusBar>, 0, 3240, 4830, 285, u"", 17, u""},
    {u"Picture1", -1, Is<PictureBox>, 30, 3270, 255, 255, u"", 18, u""},
};

const Row kPendantRows[] = {
    {u"SoftKey", 0, Is<Button>, 600, 6830, 1095, 375, u"Soft-Key 0", 12, u""},
    {u"SoftKey", 1, Is<Button>, 1680, 6830, 1215, 375, u"Soft-Key 1", 11, u""},
    {u"SoftKey", 2, Is<Button>, 2890, 6830, 1215, 375, u"Soft-Key 2", 10, u""},
    {u"SoftKey", 3, Is<Button>, 4080, 6830, 1215, 375, u"Soft-Key 3", 9, u""},
    {u"SoftKey", 4, Is<Button>, 5280, 6830, 1215, 375, u"Soft-Key 4", 8, u""},
    {u"SoftKey", 5, Is<Button>, 6480, 6830, 1215, 375, u"Soft-Key 5", 7, u""},
    {u"SoftKey", 6, Is<Button>, 7680, 6830, 1215, 375, u"Soft-Key 6", 6, u""},
    {u"StatKeyL", 0, Is<Button>, 0, 600, 615, 615, u"SKL 0", 5, u""},
    {u"StatKeyL", 1, Is<Button>, 0, 1800, 615, 615, u"", 4, u""},
    {u"StatKeyL", 2, Is<Button>, 0, 3000, 615, 615, u"", 3, u""},
    {u"StatKeyL", 3, Is<Button>, 0, 4200, 615, 615, u"", 2, u""},
    {u"StatKeyL", 4, Is<Button>, 0, 5400, 615, 615, u"", 1, u""},
    {u"StatKeyL", 5, Is<Button>, 0, 6480, 615, 615, u"SKL 5", 0, u""},
    {u"adoList1", -1, Is<ListBox>, 4200, 120, 495, 255, u"", 33, u""},
    {u"adoList2", -1, Is<ListBox>, 4920, 120, 495, 255, u"", 34, u""},
    {u"adoList3", -1, Is<ListBox>, 5640, 120, 495, 255, u"", 35, u""},
    {u"adoList4", -1, Is<ListBox>, 6360, 120, 495, 255, u"", 36, u""},
    {u"RahmenFrm", -1, Is<Frame>, 720, 360, 8775, 6375, u"Langtext - Konvertierung", 13, u""},
    {u"Option1", -1, Is<RadioButton>, 240, 1500, 2175, 550, u"Textfile -> Database", 14, u"RahmenFrm"},
    {u"Option2", -1, Is<RadioButton>, 240, 2700, 2175, 550, u"Database -> Textfile", 15, u"RahmenFrm"},
    {u"Option3", -1, Is<RadioButton>, 240, 3900, 2175, 550, u"Database (IO's) -> Programs", 22, u"RahmenFrm"},
    {u"chkBoxSymbol", -1, Is<CheckBox>, 240, 3960, 2175, 375, u"mit Kurzsymbolik", 16, u"RahmenFrm"},
    {u"chkBoxAdd", -1, Is<CheckBox>, 240, 5280, 2295, 195, u"Langtexte hinzufuegen", 19, u"RahmenFrm"},
    {u"chkBoxSelAll", -1, Is<CheckBox>, 240, 5280, 2295, 195, u"Select all", 20, u"RahmenFrm"},
    {u"ProgressBar2", -1, Is<ProgressBar>, 5040, 5640, 3350, 135, u"", 17, u"RahmenFrm"},
    {u"StatusBar1", -1, Is<StatusBar>, 120, 5880, 8535, 375, u"", 18, u"RahmenFrm"},
    {u"Drive1", -1, Is<DriveListBox>, 2760, 840, 2175, 315, u"", 21, u"RahmenFrm"},
    {u"Dir1", -1, Is<DirListBox>, 2760, 1320, 2175, 3465, u"", 23, u"RahmenFrm"},
    {u"Text1", -1, Is<TextBox>, 5040, 840, 3495, 315, u"Text1", 24, u"RahmenFrm"},
    {u"Picture1", -1, Is<PictureBox>, 2760, 840, 5775, 3975, u"", 25, u"RahmenFrm"},
    {u"txtboxView", -1, Is<TextBox>, 2760, 840, 5775, 3975, u"", 29, u"RahmenFrm"},
    {u"TreeView1", -1, Is<TreeView>, 2760, 840, 2175, 3975, u"", 28, u"RahmenFrm"},
    {u"File2", -1, Is<FileListBox>, 5040, 840, 3495, 3990, u"", 30, u"RahmenFrm"},
    {u"File1", -1, Is<FileListBox>, 5040, 840, 3495, 3990, u"", 31, u"RahmenFrm"},
    {u"List1", -1, Is<ListBox>, 5040, 840, 3495, 3960, u"", 32, u"RahmenFrm"},
    {u"Shape1", -1, Is<Shape>, 120, 720, 2415, 4215, u"", -1, u"RahmenFrm"},
    {u"Shape2", -1, Is<Shape>, 2640, 720, 6015, 4215, u"", -1, u"RahmenFrm"},
    {u"Image1", -1, Is<Image>, 480, 720, 720, 720, u"", -1, u"Picture1"},
    {u"Text2", -1, Is<TextBox>, 1440, 960, 4215, 750, u"Langtext - Konvertierungs - Tool", 27, u"Picture1"},
    {u"txtVersion", -1, Is<TextBox>, 1440, 1750, 2895, 375, u"Version ...", 26, u"Picture1"},
};

const Row kStdRows[] = {
    {u"Information", -1, Is<Label>, 120, 255, 5055, 660, u"", 0, u""},
    {u"Frame", -1, Is<Frame>, 120, 1080, 5055, 855, u"Info", 1, u""},
    {u"ProgressBar", -1, Is<ProgressBar>, 120, 360, 4815, 375, u"", 2, u"Frame"},
};
// clang-format on

template <typename Kind>
bool CopyCaption(const Control& control, Text& sText) {
    const auto* captioned = dynamic_cast<const Kind*>(&control);
    if (captioned) sText = captioned->Caption();
    return captioned != nullptr;
}

// The caption, or what stands in a text box; empty for other kinds.
Text WordsOf(const Control& control) {
    Text sText;
    if (const auto* box = dynamic_cast<const TextBox*>(&control)) return box->Text();
    CopyCaption<Button>(control, sText) || CopyCaption<RadioButton>(control, sText) ||
        CopyCaption<CheckBox>(control, sText) || CopyCaption<Frame>(control, sText) ||
        CopyCaption<Label>(control, sText);
    return sText;
}

std::size_t CountControls(const Form& form) {
    std::size_t nControls = 0;
    form.ForEachControl([&](Control&) { ++nControls; });
    return nControls;
}

void ExpectRow(const Form& form, const Row& row) {
    SCOPED_TRACE(testing::Printable(row.sName) + "(" + std::to_string(row.nIndex) + ")");
    const Control* control =
        row.nIndex < 0 ? form.Find(row.sName) : form.Find(row.sName, row.nIndex);
    ASSERT_NE(control, nullptr);
    EXPECT_TRUE(row.isKind(*control));
    EXPECT_EQ(control->Left(), row.nLeft);
    EXPECT_EQ(control->Top(), row.nTop);
    EXPECT_EQ(control->Width(), row.nWidth);
    EXPECT_EQ(control->Height(), row.nHeight);
    EXPECT_EQ(WordsOf(*control), row.sText);
    EXPECT_EQ(control->TabIndex(), row.nTab);
    EXPECT_EQ(control->Container() ? control->Container()->Name() : Text(), row.sContainer);
    EXPECT_TRUE(control->Enabled());
}

template <std::size_t nRows>
void ExpectRows(const Form& form, const Row (&rows)[nRows], std::size_t nControlsWithoutPlace) {
    for (const Row& row : rows)
        ExpectRow(form, row);
    EXPECT_EQ(CountControls(form), nRows + nControlsWithoutPlace);
}

std::vector<Text> NamesOf(const Form& form, const std::function<bool(Control&)>& counts) {
    std::vector<Text> names;
    form.ForEachControl([&](Control& control) {
        if (counts(control)) names.push_back(control.FullName());
    });
    return names;
}

bool IsHidden(Control& control) {
    return !control.Visible();
}

struct PictureListRow {
    TextView sName;
    std::int16_t nWidth, nHeight, nImages;
};

void ExpectPictureList(const Form& form, const PictureListRow& row) {
    SCOPED_TRACE(testing::Printable(row.sName));
    const auto& list = form.Get<PictureList>(row.sName);
    EXPECT_EQ(list.ImageWidth(), row.nWidth);
    EXPECT_EQ(list.ImageHeight(), row.nHeight);
    ASSERT_EQ(list.ImageCount(), row.nImages);
    std::set<Text> names;
    for (std::int16_t n = 1; n <= row.nImages; ++n)
        names.insert(list.ListImages(n).Picture.sName);
    EXPECT_EQ(names.size(), static_cast<std::size_t>(row.nImages));
    EXPECT_FALSE(names.contains(u""));
}

class FormDesignTest : public ::testing::Test {
  protected:
    memory::MemoryMachine machine;
    const NomiraMain desktop;
    const StdBofForm pendant;
};

TEST_F(FormDesignTest, TheDesktopFormHasItsControls) {
    ExpectRows(desktop, kDesktopRows, 1);
}

TEST_F(FormDesignTest, ThePendantFormHasItsControls) {
    ExpectRows(pendant, kPendantRows, 5);
}

TEST_F(FormDesignTest, TheBatchFormHasItsControls) {
    const StdForm form;
    ExpectRows(form, kStdRows, 0);
    EXPECT_EQ(form.Get<Label>(u"Information").Font(), (Font{u"Arial", 9.75F, true}));
}

TEST_F(FormDesignTest, TheFormsHaveTheirCaptionsSizesAndColours) {
    EXPECT_EQ(desktop.Caption(), u"Longname - Conversion");
    EXPECT_EQ(desktop.Width(), 4830);
    EXPECT_EQ(desktop.Height(), 3525);
    EXPECT_EQ(desktop.BackColour(), std::nullopt);
    EXPECT_EQ(pendant.Caption(), u"Nomira");
    EXPECT_EQ(pendant.Left(), 0);
    EXPECT_EQ(pendant.Top(), 0);
    EXPECT_EQ(pendant.Width(), 9630);
    EXPECT_EQ(pendant.Height(), 7260);
    EXPECT_EQ(pendant.BackColour(), 0xC0C0C0U);
}

TEST_F(FormDesignTest, FewControlsAreHiddenAtFirst) {
    EXPECT_EQ(NamesOf(desktop, IsHidden), (std::vector<Text>{u"Text1"}));
    EXPECT_EQ(NamesOf(pendant, IsHidden),
              (std::vector<Text>{u"adoList1", u"adoList2", u"adoList3", u"adoList4"}));
}

TEST_F(FormDesignTest, OneBoxIsCheckedAtFirstAndNoOptionIsChosen) {
    const auto isSet = [](Control& control) {
        const auto* box = dynamic_cast<CheckBox*>(&control);
        const auto* option = dynamic_cast<RadioButton*>(&control);
        return (box && box->Value() != CheckBox::kCleared) || (option && option->Value());
    };
    EXPECT_EQ(NamesOf(desktop, isSet), (std::vector<Text>{u"chkBoxAdd"}));
    EXPECT_EQ(NamesOf(pendant, isSet), std::vector<Text>{});
    EXPECT_EQ(desktop.Get<CheckBox>(u"chkBoxAdd").Value(), 1);
}

TEST_F(FormDesignTest, ThePendantsTabOrderHasListsAndTextBoxesAlone) {
    const auto isStop = [](Control& control) {
        const bool bButton = dynamic_cast<Button*>(&control) ||
                             dynamic_cast<RadioButton*>(&control) ||
                             dynamic_cast<CheckBox*>(&control);
        return bButton && control.TabStop();
    };
    EXPECT_EQ(NamesOf(pendant, isStop), std::vector<Text>{});
    EXPECT_EQ(NamesOf(desktop, isStop),
              (std::vector<Text>{u"Option1", u"Option2", u"Option3", u"chkBoxAdd", u"chkBoxSelAll",
                                 u"cmdStart", u"cmdExit", u"cmdView"}));
    EXPECT_TRUE(pendant.Get<FileListBox>(u"File1").TabStop());
}

TEST_F(FormDesignTest, SomeButtonsShowPictures) {
    const auto isPictureStyle = [](Control& control) {
        const auto* button = dynamic_cast<Button*>(&control);
        return button && button->PictureStyle();
    };
    EXPECT_EQ(NamesOf(pendant, isPictureStyle),
              (std::vector<Text>{u"SoftKey(0)", u"SoftKey(1)", u"SoftKey(2)", u"SoftKey(5)",
                                 u"SoftKey(6)", u"StatKeyL(1)", u"StatKeyL(2)", u"StatKeyL(3)",
                                 u"StatKeyL(4)"}));
    EXPECT_EQ(NamesOf(desktop, isPictureStyle), std::vector<Text>{});
    EXPECT_NE(pendant.Get<Button>(u"StatKeyL", 4).Picture(), Picture{});
    EXPECT_EQ(pendant.Get<Button>(u"StatKeyL", 3).Picture(), Picture{});
    EXPECT_NE(pendant.Get<Image>(u"Image1").Picture(), Picture{});
}

TEST_F(FormDesignTest, TheListsHaveTheirKindsOfSelection) {
    struct SelectionRow {
        const Form& form;
        TextView sList;
        std::int16_t nMultiSelect;
    };
    for (const auto& row : {SelectionRow{desktop, u"List1", 1}, SelectionRow{desktop, u"File1", 0},
                            SelectionRow{desktop, u"File2", 1}, SelectionRow{pendant, u"List1", 2},
                            SelectionRow{pendant, u"File1", 0}, SelectionRow{pendant, u"File2", 1},
                            SelectionRow{pendant, u"adoList1", 0}})
        EXPECT_EQ(row.form.Get<SelectionList>(row.sList).MultiSelect(), row.nMultiSelect)
            << testing::Printable(row.sList);
    const auto isSorted = [](Control& control) {
        const auto* list = dynamic_cast<ListBox*>(&control);
        return list && list->Sorted();
    };
    EXPECT_EQ(NamesOf(desktop, isSorted), std::vector<Text>{});
    EXPECT_EQ(NamesOf(pendant, isSorted),
              (std::vector<Text>{u"adoList1", u"adoList2", u"adoList3", u"adoList4"}));
}

TEST_F(FormDesignTest, SomeTextBoxesHaveSeveralLinesAndScrollBars) {
    const auto isMultiLine = [](Control& control) {
        const auto* box = dynamic_cast<TextBox*>(&control);
        return box && box->MultiLine();
    };
    const auto hasBars = [](Control& control) {
        const auto* box = dynamic_cast<TextBox*>(&control);
        return box && box->BothScrollBars();
    };
    EXPECT_EQ(NamesOf(desktop, isMultiLine), (std::vector<Text>{u"Text1", u"txtboxView"}));
    EXPECT_EQ(NamesOf(pendant, isMultiLine), (std::vector<Text>{u"txtboxView", u"Text2"}));
    EXPECT_EQ(NamesOf(desktop, hasBars), (std::vector<Text>{u"txtboxView"}));
    EXPECT_EQ(NamesOf(pendant, hasBars), (std::vector<Text>{u"txtboxView"}));
}

TEST_F(FormDesignTest, FontsAndColoursAreTakenWhereTold) {
    const auto hasFont = [](Control& control) { return control.Font() != Font{}; };
    const auto hasColour = [](Control& control) { return control.BackColour().has_value(); };
    EXPECT_EQ(NamesOf(desktop, hasFont), std::vector<Text>{});
    EXPECT_EQ(NamesOf(desktop, hasColour), std::vector<Text>{});
    EXPECT_EQ(NamesOf(pendant, hasFont),
              (std::vector<Text>{u"RahmenFrm", u"Text2", u"txtVersion"}));
    EXPECT_EQ(NamesOf(pendant, hasColour),
              (std::vector<Text>{u"Option1", u"Option2", u"Option3", u"chkBoxSymbol"}));
    EXPECT_EQ(pendant.Find(u"RahmenFrm")->Font(), (Font{u"", 9.75F, true}));
    EXPECT_EQ(pendant.Find(u"Text2")->Font(), (Font{u"", 13.5F, false}));
    EXPECT_EQ(pendant.Find(u"txtVersion")->Font(), (Font{u"", 9.75F, true}));
    EXPECT_EQ(pendant.Find(u"Option2")->BackColour(), 0x00FFFFU);
}

TEST_F(FormDesignTest, TheBarsHaveTheirPanels) {
    EXPECT_EQ(desktop.Get<StatusBar>(u"StatusBar1").PanelCount(), 1);
    EXPECT_EQ(pendant.Get<StatusBar>(u"StatusBar1").PanelCount(), 4);
}

TEST_F(FormDesignTest, ThePictureListsHaveTheirSizes) {
    ExpectPictureList(desktop, {u"ImageList1", 16, 16, 2});
    for (const auto& row : {PictureListRow{u"ImageList1", 16, 16, 3},
                            {u"ImageList2", 32, 32, 8},
                            {u"ImageList3", 48, 48, 3},
                            {u"ImageList4", 20, 19, 10}})
        ExpectPictureList(pendant, row);
    EXPECT_EQ(desktop.Get<TreeView>(u"TreeView1").ImageList(), u"ImageList1");
    EXPECT_EQ(pendant.Get<TreeView>(u"TreeView1").ImageList(), u"");
}

// Other routines name these pictures.
TEST_F(FormDesignTest, TheStatusPicturesHaveTheirPlaces) {
    const auto& list = pendant.Get<PictureList>(u"ImageList4");
    struct PictureRow {
        std::int16_t nPlace;
        TextView sName;
    };
    for (const auto& row : {PictureRow{6, u"picRead"},
                            {7, u"picWrite"},
                            {8, u"picDelete"},
                            {9, u"picCompact"},
                            {10, u"picCritical"}})
        EXPECT_EQ(list.ListImages(row.nPlace).Picture.sName, row.sName);
}

TEST_F(FormDesignTest, ThePendantKeysHaveTheirProgramId) {
    const auto& keys = pendant.Get<PendantKeyControl>(u"TqpKeys");
    EXPECT_EQ(keys.ProgramId(), u"TQPOCXLibCtl.Tqp");
    EXPECT_TRUE(keys.Ranges().empty());
}

}  // namespace
}  // namespace nomira
