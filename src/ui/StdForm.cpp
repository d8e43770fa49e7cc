#include "ui/StdForm.h"

#include "platform/Platform.h"

namespace nomira {
namespace {

constexpr ControlDesign kControls[] = {
    {u"Information", ControlKind::Label, 120, 255, 5055, 660, u""},
    {u"Frame", ControlKind::Frame, 120, 1080, 5055, 855, u"Info"},
    // Inside the frame.
    {u"ProgressBar", ControlKind::ProgressBar, 120, 360, 4815, 375, u""},
};

// The two blanks in the caption belong to it.
constexpr FormDesign kDesign{kStdFormClass, u"TQ X1  Longtext Convert-Programm", 5265, 2250,
                             kControls};

}  // namespace

StdForm::StdForm() : DesignedForm(kDesign) {}

void StdForm::Load() {
    auto& bar = Get<ProgressBar>(u"ProgressBar");
    bar.SetMin(1);
    bar.SetMax(100);
    bar.SetValue(1);
    const ScreenSize screen = TheDesktop().Screen();
    Move((screen.nWidth - Width()) / 2, (screen.nHeight - Height()) / 2, Width(), Height());
}

}  // namespace nomira
