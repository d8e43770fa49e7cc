#include "ui/NomiraMain.h"

namespace nomira {
namespace {

constexpr ControlDesign kControls[] = {
    {u"chkBoxAdd", ControlKind::CheckBox, 2040, 2760, 1695, 255, u"overwrite old datas",
     CheckBox::kChecked},
    {u"ProgressBar1", ControlKind::ProgressBar, 480, 2280, 855, 255, u""},
};

constexpr FormDesign kDesign{kNomiraMainClass, u"Longname - Conversion", 4830, 3525, kControls};

}  // namespace

NomiraMain::NomiraMain() : DesignedForm(kDesign) {}

void NomiraMain::Load() {
    auto& bar = Get<ProgressBar>(u"ProgressBar1");
    bar.SetMin(1);
    bar.SetMax(27);
}

}  // namespace nomira
