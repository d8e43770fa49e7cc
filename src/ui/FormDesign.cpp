#include "ui/FormDesign.h"

#include "ui/formlayer/Buttons.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/Picture.h"
#include "ui/formlayer/StatusBar.h"
#include "ui/formlayer/TreeView.h"

namespace nomira {
namespace {

template <typename Kind>
void ApplyText(Kind& control, const ControlDesign& design) {
    if constexpr (requires { control.SetCaption(design.sText); }) control.SetCaption(design.sText);
    if constexpr (requires { control.SetText(design.sText); }) control.SetText(design.sText);
}

// Each property that the kind has.
template <typename Kind>
void ApplyExtras(Kind& control, const ControlExtras& extras) {
    if constexpr (std::is_same_v<Kind, CheckBox>) control.SetValue(extras.nValue);
    if constexpr (requires { control.SetMultiLine(true); }) {
        control.SetMultiLine(extras.bMultiLine);
        control.SetBothScrollBars(extras.bBothScrollBars);
    }
    if constexpr (requires { control.SetMultiSelect(0); })
        control.SetMultiSelect(extras.nMultiSelect);
    if constexpr (requires { control.SetSorted(true); }) control.SetSorted(extras.bSorted);
    if constexpr (requires { control.SetPictureStyle(true); })
        control.SetPictureStyle(extras.bPictureStyle);
    if constexpr (requires { control.SetPicture(Picture{}); })
        control.SetPicture({Text(extras.sPicture)});
    if constexpr (requires { control.SetImageList(extras.sImageList); })
        control.SetImageList(extras.sImageList);
    if constexpr (requires { control.AddPanel(); }) {
        for (std::int16_t n = 0; n < extras.nPanels; ++n)
            control.AddPanel();
    }
}

void ApplyCommon(Control& control, const ControlDesign& design) {
    const ControlExtras& extras = design.extras;
    control.Move(design.nLeft, design.nTop, design.nWidth, design.nHeight);
    control.SetTabIndex(design.nTab);
    control.SetVisible(extras.bVisible);
    control.SetFont({Text(extras.font.sName), extras.font.nSize, extras.font.bBold});
    control.SetBackColour(extras.backColour);
}

bool IsButton(ControlKind kind) {
    return kind == ControlKind::Button || kind == ControlKind::RadioButton ||
           kind == ControlKind::CheckBox;
}

}  // namespace

DesignedForm::DesignedForm(const FormDesign& design) : Form(Text(design.sClass)) {
    SetCaption(design.sCaption);
    Move(0, 0, design.nWidth, design.nHeight);
    SetBackColour(design.backColour);
    for (const ContainerDesign& container : design.containers)
        AddControls(container, design.bTabStopsAtButtons);
    for (const PictureListDesign& list : design.pictureLists)
        AddPictureList(list);
}

void DesignedForm::AddControls(const ContainerDesign& container, bool bTabStopsAtButtons) {
    for (const ControlDesign& design : container.controls) {
        Control& control = AddByKind(design);
        ApplyCommon(control, design);
        if (!container.sContainer.empty()) control.SetContainer(Get<Control>(container.sContainer));
        if (IsButton(design.kind)) control.SetTabStop(bTabStopsAtButtons);
    }
}

void DesignedForm::AddPictureList(const PictureListDesign& design) {
    auto& list = Add<PictureList>(Text(design.sName));
    list.SetImageSize(design.nWidth, design.nHeight);
    for (const TextView sPicture : design.pictures)
        list.AddImage({Text(sPicture)});
}

void DesignedForm::StartLists() {
    try {
        const Text sDrive = Get<DriveListBox>(u"Drive1").Drive();
        Get<DirListBox>(u"Dir1").SetPath(sDrive);
        Get<FileListBox>(u"File1").SetPath(sDrive);
        Get<FileListBox>(u"File2").SetPath(sDrive);
    } catch (const RuntimeError&) {  // an operator picks another drive
    }
}

template <typename Kind>
Control& DesignedForm::AddDesigned(const ControlDesign& design) {
    const auto nIndex = design.extras.nIndex;
    Kind& control =
        nIndex ? AddElement<Kind>(Text(design.sName), *nIndex) : Add<Kind>(Text(design.sName));
    ApplyText(control, design);
    ApplyExtras(control, design.extras);
    return control;
}

Control& DesignedForm::AddByKind(const ControlDesign& design) {
    switch (design.kind) {
        case ControlKind::Button:
            return AddDesigned<Button>(design);
        case ControlKind::CheckBox:
            return AddDesigned<CheckBox>(design);
        case ControlKind::DirList:
            return AddDesigned<DirListBox>(design);
        case ControlKind::DriveList:
            return AddDesigned<DriveListBox>(design);
        case ControlKind::FileList:
            return AddDesigned<FileListBox>(design);
        case ControlKind::Frame:
            return AddDesigned<Frame>(design);
        case ControlKind::Image:
            return AddDesigned<Image>(design);
        case ControlKind::Label:
            return AddDesigned<Label>(design);
        case ControlKind::ListBox:
            return AddDesigned<ListBox>(design);
        case ControlKind::PictureBox:
            return AddDesigned<PictureBox>(design);
        case ControlKind::RadioButton:
            return AddDesigned<RadioButton>(design);
        case ControlKind::Shape:
            return AddDesigned<Shape>(design);
        case ControlKind::StatusBar:
            return AddDesigned<StatusBar>(design);
        case ControlKind::TextBox:
            return AddDesigned<TextBox>(design);
        case ControlKind::Tree:
            return AddDesigned<TreeView>(design);
        case ControlKind::ProgressBar:
            break;
    }
    return AddDesigned<ProgressBar>(design);
}

}  // namespace nomira
