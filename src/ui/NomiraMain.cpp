#include "ui/NomiraMain.h"

#include "ui/formlayer/StatusBar.h"

namespace nomira {
namespace {

constexpr ControlDesign kControls[] = {
    {u"Dir1", ControlKind::DirList, 120, 720, 1815, 2340, u""},
    {u"Text1", ControlKind::TextBox, 2040, 1800, 1695, 375, u""},
    {u"File1", ControlKind::FileList, 2040, 1440, 1695, 1065, u""},
    {u"File2", ControlKind::MultiFileList, 2040, 1440, 1695, 1260, u""},
    {u"chkBoxAdd", ControlKind::CheckBox, 2040, 2760, 1695, 255, u"overwrite old datas",
     CheckBox::kChecked},
    {u"ProgressBar1", ControlKind::ProgressBar, 480, 2280, 855, 255, u""},
    {u"StatusBar1", ControlKind::StatusBar, 0, 3240, 4830, 285, u"", 1},
};

constexpr FormDesign kDesign{kNomiraMainClass, u"Longname - Conversion", 4830, 3525, kControls};

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

}  // namespace

NomiraMain::NomiraMain() : DesignedForm(kDesign) {}

void NomiraMain::Load() {
    auto& bar = Get<ProgressBar>(u"ProgressBar1");
    bar.SetMin(1);
    bar.SetMax(27);
    AddPanels(Get<StatusBar>(u"StatusBar1"));
}

}  // namespace nomira
