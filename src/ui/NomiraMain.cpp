#include "ui/NomiraMain.h"

#include "platform/Platform.h"
#include "ui/FormLayout.h"
#include "ui/formlayer/StatusBar.h"

namespace nomira {
namespace {

using Kind = ControlKind;

// The places overlap on purpose: the option that is chosen decides which of the lists are seen.
// clang-format off
constexpr ControlDesign kControls[] = {
    {u"Dir1", Kind::DirList, 120, 720, 1815, 2340, u"", 0},
    {u"Drive1", Kind::DriveList, 120, 240, 1815, 315, u"", 1},
    {u"TreeView1", Kind::Tree, 120, 720, 1815, 2415, u"", 2, {.sImageList = u"ImageList1"}},
    {u"Option1", Kind::RadioButton, 2160, 240, 2415, 255, u"Textfile -> Database", 3},
    {u"Option2", Kind::RadioButton, 2160, 600, 2415, 255, u"Database -> Textfile", 4},
    {u"Option3", Kind::RadioButton, 2160, 960, 2415, 255, u"Database (IO's) -> Programs", 5},
    {u"Text1", Kind::TextBox, 2040, 1800, 1695, 375, u"", 6,
     {.bVisible = false, .bMultiLine = true}},
    {u"txtboxView", Kind::TextBox, 120, 240, 3615, 2895, u"", 7,
     {.bMultiLine = true, .bBothScrollBars = true}},
    {u"List1", Kind::ListBox, 2040, 1440, 1695, 1230, u"", 8,
     {.nMultiSelect = SelectionList::kSimple}},
    {u"File1", Kind::FileList, 2040, 1440, 1695, 1065, u"", 9},
    {u"File2", Kind::FileList, 2040, 1440, 1695, 1260, u"", 10,
     {.nMultiSelect = SelectionList::kSimple}},
    {u"chkBoxAdd", Kind::CheckBox, 2040, 2760, 1695, 255, u"overwrite old datas", 11,
     {.nValue = CheckBox::kChecked}},
    {u"chkBoxSelAll", Kind::CheckBox, 2040, 2760, 975, 255, u"select all", 12},
    {u"cmdStart", Kind::Button, 3840, 1440, 855, 495, u"Start", 13},
    {u"cmdExit", Kind::Button, 3840, 2040, 855, 495, u"Exit", 14},
    {u"cmdView", Kind::Button, 3840, 2640, 855, 495, u"View DB", 15},
    {u"ProgressBar1", Kind::ProgressBar, 480, 2280, 855, 255, u"", 16},
    {u"StatusBar1", Kind::StatusBar, 0, 3240, 4830, 285, u"", 17, {.nPanels = 1}},
    {u"Picture1", Kind::PictureBox, 30, 3270, 255, 255, u"", 18, {.sPicture = u"picLinked"}},
};
// clang-format on

constexpr ContainerDesign kContainers[] = {{u"", kControls}};

constexpr TextView kTreePictures[] = {u"picTreeRoot", u"picTreeNode"};
constexpr PictureListDesign kPictureLists[] = {{u"ImageList1", 16, 16, kTreePictures}};

constexpr FormDesign kDesign{kNomiraMainClass, u"Longname - Conversion", 4830, 3525, kContainers,
                             kPictureLists};

constexpr std::int32_t kFirstPanelWidth = 255;

struct AddedPanel {
    TextView sKey;
    std::int32_t nMinWidth;
    std::int16_t nStyle;
};

constexpr AddedPanel kAddedPanels[] = {
    {u"Objekt2", 1700, Panel::kTextStyle},
    {u"Objekt3", 2100, Panel::kTextStyle},
    {u"Objekt4", 960, Panel::kClockStyle},
};

void AddPanels(StatusBar& bar) {
    bar.Panels(1).SetMinWidth(kFirstPanelWidth);
    for (const AddedPanel& added : kAddedPanels) {
        Panel& panel = bar.AddPanel(Text(added.sKey));
        panel.SetMinWidth(added.nMinWidth);
        panel.SetStyle(added.nStyle);
    }
}

void CentreOnScreen(Form& form) {
    const ScreenSize screen = TheDesktop().Screen();
    form.Move((screen.nWidth - form.Width()) / 2, (screen.nHeight - form.Height()) / 2,
              form.Width(), form.Height());
}

// Over the second panel.
void LayProgressBar(ProgressBar& progress, const StatusBar& bar) {
    progress.SetMin(1);
    progress.SetMax(27);
    progress.SetVisible(false);
    progress.Move(bar.Left() + 2055, bar.Top() + 90, 2000, bar.Height() / 2);
}

}  // namespace

NomiraMain::NomiraMain() : DesignedForm(kDesign) {}

void NomiraMain::Load() {
    StartLists();
    CentreOnScreen(*this);
    auto& bar = Get<StatusBar>(u"StatusBar1");
    LayProgressBar(Get<ProgressBar>(u"ProgressBar1"), bar);
    Get<Control>(u"Picture1").SetVisible(false);
    AddPanels(bar);
    InitFormLayout(*this);
}

}  // namespace nomira
