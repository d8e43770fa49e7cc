#include "adapters/wx/ButtonPeers.h"

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/radiobut.h>

#include "adapters/wx/FormWindow.h"
#include "adapters/wx/PictureStore.h"
#include "adapters/wx/Surface.h"
#include "adapters/wx/WxText.h"

namespace nomira::wx {
namespace {

// What a control needs of its width besides its caption.
constexpr int kButtonEdges = 10;
constexpr int kMark = 23;

// Such a picture leaves its button's edges to be seen.
constexpr int kPictureEdges = 4;

wxBitmapBundle PictureOn(const wxWindow& button, const Picture& picture) {
    const wxBitmapBundle bundle = PictureBundle(picture.sName);
    if (!bundle.IsOk()) return {};
    return wxBitmapBundle(
        PictureFor(button, bundle, button.GetSize() - wxSize(kPictureEdges, kPictureEdges)));
}

wxCheckBoxState StateOf(std::int16_t nValue) {
    if (nValue == CheckBox::kGrey) return wxCHK_UNDETERMINED;
    return nValue == CheckBox::kChecked ? wxCHK_CHECKED : wxCHK_UNCHECKED;
}

}  // namespace

ButtonPeer::ButtonPeer(FormWindow& owner, Button& control, wxWindow& parent)
    : PeerOf(owner, control),
      m_button(
          new wxButton(&parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, wxBU_EXACTFIT)) {
    Adopt(*m_button);
    m_button->Bind(wxEVT_BUTTON, [this](auto&) { Act([this] { TheControl().UserClick(); }); });
}

void ButtonPeer::SyncOwn() {
    ShowCaption(TheControl().Caption(), kButtonEdges);
    if (TheControl().PictureStyle()) ShowPictures();
}

void ButtonPeer::ShowPictures() {
    const Picture& picture = TheControl().Picture();
    const Picture& disabled = TheControl().DisabledPicture();
    if (m_shown == picture && m_shownDisabled == disabled) return;
    m_shown = picture;
    m_shownDisabled = disabled;
    m_button->SetBitmap(PictureOn(*m_button, picture));
    m_button->SetBitmapDisabled(PictureOn(*m_button, disabled));
}

RadioPeer::RadioPeer(FormWindow& owner, RadioButton& control, wxWindow& parent)
    : PeerOf(owner, control) {
    owner.AddNoChoice(parent);
    m_button = new wxRadioButton(&parent, wxID_ANY, "");
    Adopt(*m_button);
    m_button->Bind(wxEVT_RADIOBUTTON, [this](auto&) { Act([this] { TheControl().UserClick(); }); });
}

void RadioPeer::SyncOwn() {
    ShowCaption(TheControl().Caption(), kMark);
    if (TheControl().Value() == m_button->GetValue()) return;
    if (TheControl().Value())
        m_button->SetValue(true);
    else
        Owner().ChooseNone(*m_button->GetParent());
}

CheckPeer::CheckPeer(FormWindow& owner, CheckBox& control, wxWindow& parent)
    : PeerOf(owner, control),
      m_box(new wxCheckBox(&parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, wxCHK_3STATE)) {
    Adopt(*m_box);
    m_box->Bind(wxEVT_CHECKBOX, [this](auto&) { Act([this] { TheControl().UserClick(); }); });
}

void CheckPeer::SyncOwn() {
    ShowCaption(TheControl().Caption(), kMark);
    const wxCheckBoxState state = StateOf(TheControl().Value());
    if (m_box->Get3StateValue() != state) m_box->Set3StateValue(state);
}

}  // namespace nomira::wx
