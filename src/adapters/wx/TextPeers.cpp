#include "adapters/wx/TextPeers.h"

#include <wx/stattext.h>
#include <wx/textctrl.h>

#include "adapters/wx/WxText.h"

namespace nomira::wx {
namespace {

long StyleOf(const TextBox& control) {
    if (control.BothScrollBars()) return wxTE_MULTILINE | wxTE_DONTWRAP | wxHSCROLL;
    return control.MultiLine() ? wxTE_MULTILINE | wxTE_NO_VSCROLL : 0;
}

}  // namespace

TextPeer::TextPeer(FormWindow& owner, TextBox& control, wxWindow& parent)
    : PeerOf(owner, control),
      m_box(new wxTextCtrl(&parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                           StyleOf(control))) {
    Adopt(*m_box);
    m_box->Bind(wxEVT_TEXT, [this](auto&) { OnTyped(); });
}

// A text that stands there already is left alone, and the caret with it.
void TextPeer::SyncOwn() {
    const Text& sText = TheControl().Text();
    if (sText == m_sShown) return;
    m_sShown = sText;
    m_box->ChangeValue(ToWxLines(sText));
}

void TextPeer::OnTyped() {
    Act([this] {
        m_sShown = FromWxLines(m_box->GetValue());
        TheControl().UserType(Text(m_sShown));
    });
}

LabelPeer::LabelPeer(FormWindow& owner, Label& control, wxWindow& parent) : PeerOf(owner, control) {
    Adopt(*new wxStaticText(&parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                            wxST_NO_AUTORESIZE));
}

void LabelPeer::SyncOwn() {
    ShowCaption(TheControl().Caption(), 0);
}

}  // namespace nomira::wx
