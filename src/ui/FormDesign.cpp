#include "ui/FormDesign.h"

namespace nomira {

DesignedForm::DesignedForm(const FormDesign& design) : Form(Text(design.sClass)) {
    SetCaption(design.sCaption);
    Move(0, 0, design.nWidth, design.nHeight);
    for (const ControlDesign& control : design.controls)
        AddByKind(control).Move(control.nLeft, control.nTop, control.nWidth, control.nHeight);
}

template <typename Kind>
Kind& DesignedForm::AddWithCaption(const ControlDesign& design) {
    Kind& control = Add<Kind>(Text(design.sName));
    control.SetCaption(design.sCaption);
    return control;
}

Control& DesignedForm::AddByKind(const ControlDesign& design) {
    switch (design.kind) {
        case ControlKind::Label:
            return AddWithCaption<Label>(design);
        case ControlKind::Frame:
            return AddWithCaption<Frame>(design);
        case ControlKind::CheckBox: {
            auto& box = AddWithCaption<CheckBox>(design);
            box.SetValue(design.nValue);
            return box;
        }
        case ControlKind::ProgressBar:
            break;
    }
    return Add<ProgressBar>(Text(design.sName));
}

}  // namespace nomira
