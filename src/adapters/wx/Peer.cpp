#include "adapters/wx/Peer.h"

#include "adapters/wx/Fonts.h"
#include "adapters/wx/FormWindow.h"
#include "adapters/wx/Lengths.h"
#include "adapters/wx/NativeStyle.h"
#include "adapters/wx/PendantKeyTable.h"
#include "adapters/wx/WxText.h"
#include "ui/formlayer/Form.h"

namespace nomira::wx {
namespace {

constexpr std::uint32_t kDisabledWriting = 0x787878;

wxColour ToWx(std::uint32_t nColour) {
    return {static_cast<unsigned char>(nColour >> 16), static_cast<unsigned char>(nColour >> 8),
            static_cast<unsigned char>(nColour)};
}

// The colour behind what a control writes, if one is told for it or for what it lies on.
Colour ColourBehind(const Control& control) {
    for (const Control* here = &control; here; here = here->Container())
        if (here->BackColour()) return here->BackColour();
    return control.Owner().BackColour();
}

}  // namespace

void Peer::Adopt(wxWindow& window) {
    m_window = &window;
    window.SetName(wx::ToWx(m_control.FullName()));
    SetAccessibleName(window, wx::ToWx(m_control.FullName()));
    if (const PcKey* key = KeyOfButton(m_control)) {
        window.SetToolTip(ToolTipOf(*key));
        SetAccessibleName(window, key->sWhat);
    }
    window.Bind(wxEVT_SET_FOCUS, [this](wxFocusEvent& event) {
        event.Skip();
        Act([this] {
            if (m_control.CanTakeFocus() && !m_control.HasFocus()) m_control.SetFocus();
        });
    });
}

void Peer::Sync() {
    const wxRect place = PlaceOf(m_control);
    if (m_window->GetRect() != place) m_window->SetSize(place);
    if (m_window->IsThisEnabled() != m_control.Enabled()) m_window->Enable(m_control.Enabled());
    if (m_shownFont != m_control.Font()) {
        m_shownFont = m_control.Font();
        m_window->SetFont(MakeFont(*m_shownFont));
    }
    SyncColours();
    SyncOwn();
    if (m_window->IsShown() != m_control.Visible()) m_window->Show(m_control.Visible());
}

// A told colour is light, so what is written on it is dark in every theme.
void Peer::SyncColours() {
    if (m_shownEnabled == m_control.Enabled()) return;
    m_shownEnabled = m_control.Enabled();
    if (m_control.BackColour()) m_window->SetBackgroundColour(ToWx(*m_control.BackColour()));
    if (ColourBehind(m_control))
        m_window->SetForegroundColour(m_control.Enabled() ? *wxBLACK : ToWx(kDisabledWriting));
}

void Peer::Act(const std::function<void()>& act) {
    m_owner.Act(act);
}

void Peer::ShowCaption(TextView sCaption, int nTaken) {
    const wxSize room(m_window->GetSize().x - nTaken, m_window->GetSize().y);
    const FittedText fitted = FitText(wx::ToWx(sCaption), MakeFont(m_control.Font()), room);
    const wxString sLabel = wxControl::EscapeMnemonics(fitted.sText);
    if (m_window->GetLabel() == sLabel && m_window->GetFont() == fitted.font) return;
    m_window->SetFont(fitted.font);
    m_window->SetLabel(sLabel);
}

}  // namespace nomira::wx
