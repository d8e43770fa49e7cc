#include "ui/StdBofForm.h"

namespace nomira {
namespace {

// The bar keeps the limits of its kind, 0 to 100.
constexpr ControlDesign kControls[] = {
    {u"chkBoxSymbol", ControlKind::CheckBox, 240, 3960, 2175, 375, u"mit Kurzsymbolik"},
    {u"chkBoxAdd", ControlKind::CheckBox, 240, 5280, 2295, 195, u"Langtexte hinzufuegen"},
    {u"ProgressBar2", ControlKind::ProgressBar, 5040, 5640, 3350, 135, u""},
    {u"StatusBar1", ControlKind::StatusBar, 120, 5880, 8535, 375, u"", 4},
    {u"Dir1", ControlKind::DirList, 2760, 1320, 2175, 3465, u""},
    {u"Text1", ControlKind::TextBox, 5040, 840, 3495, 315, u"Text1"},
    {u"File2", ControlKind::MultiFileList, 5040, 840, 3495, 3990, u""},
    {u"File1", ControlKind::FileList, 5040, 840, 3495, 3990, u""},
};

constexpr FormDesign kDesign{kStdBofFormClass, u"Nomira", 9630, 7260, kControls};

}  // namespace

StdBofForm::StdBofForm() : DesignedForm(kDesign) {}

void StdBofForm::CallByName(TextView sMethod, std::span<const CallArgument> arguments) {
    if (sMethod != u"SetInfoResult") Form::CallByName(sMethod, arguments);
}

}  // namespace nomira
