#include "ui/FormDesign.h"

#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/StatusBar.h"

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

Control& DesignedForm::AddTextBox(const ControlDesign& design) {
    auto& box = Add<TextBox>(Text(design.sName));
    box.SetText(design.sCaption);
    return box;
}

Control& DesignedForm::AddCheckBox(const ControlDesign& design) {
    auto& box = AddWithCaption<CheckBox>(design);
    box.SetValue(design.nValue);
    return box;
}

Control& DesignedForm::AddFileList(const ControlDesign& design) {
    auto& list = Add<FileListBox>(Text(design.sName));
    list.SetMultiSelect(design.kind == ControlKind::MultiFileList);
    return list;
}

Control& DesignedForm::AddStatusBar(const ControlDesign& design) {
    auto& bar = Add<StatusBar>(Text(design.sName));
    for (std::int16_t n = 0; n < design.nValue; ++n)
        bar.AddPanel();
    return bar;
}

Control& DesignedForm::AddByKind(const ControlDesign& design) {
    switch (design.kind) {
        case ControlKind::Label:
            return AddWithCaption<Label>(design);
        case ControlKind::Frame:
            return AddWithCaption<Frame>(design);
        case ControlKind::TextBox:
            return AddTextBox(design);
        case ControlKind::CheckBox:
            return AddCheckBox(design);
        case ControlKind::DirList:
            return Add<DirListBox>(Text(design.sName));
        case ControlKind::FileList:
        case ControlKind::MultiFileList:
            return AddFileList(design);
        case ControlKind::StatusBar:
            return AddStatusBar(design);
        case ControlKind::ProgressBar:
            break;
    }
    return Add<ProgressBar>(Text(design.sName));
}

}  // namespace nomira
