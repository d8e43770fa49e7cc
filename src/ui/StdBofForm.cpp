#include "ui/StdBofForm.h"

namespace nomira {
namespace {

// The bar keeps the limits of its kind, 0 to 100.
constexpr ControlDesign kControls[] = {
    {u"chkBoxSymbol", ControlKind::CheckBox, 240, 3960, 2175, 375, u"mit Kurzsymbolik"},
    {u"chkBoxAdd", ControlKind::CheckBox, 240, 5280, 2295, 195, u"Langtexte hinzufuegen"},
    {u"ProgressBar2", ControlKind::ProgressBar, 5040, 5640, 3350, 135, u""},
};

constexpr FormDesign kDesign{kStdBofFormClass, u"Nomira", 9630, 7260, kControls};

}  // namespace

StdBofForm::StdBofForm() : DesignedForm(kDesign) {}

}  // namespace nomira
