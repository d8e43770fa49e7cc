#include "ui/StdForm.h"

#include "platform/Platform.h"

namespace nomira {
namespace {

constexpr ControlDesign kOnForm[] = {
    {u"Information",
     ControlKind::Label,
     120,
     255,
     5055,
     660,
     u"",
     0,
     {.font = {u"Arial", 9.75F, true}}},
    {u"Frame", ControlKind::Frame, 120, 1080, 5055, 855, u"Info", 1},
};

constexpr ControlDesign kInFrame[] = {
    {u"ProgressBar", ControlKind::ProgressBar, 120, 360, 4815, 375, u"", 2},
};

constexpr ContainerDesign kContainers[] = {{u"", kOnForm}, {u"Frame", kInFrame}};

// The two blanks in the caption belong to it.
constexpr FormDesign kDesign{kStdFormClass, u"TQ X1  Longtext Convert-Programm", 5265, 2250,
                             kContainers};

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
