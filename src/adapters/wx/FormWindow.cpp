#include "adapters/wx/FormWindow.h"

#include <wx/radiobut.h>
#include <wx/settings.h>
#include <wx/textctrl.h>

#include <algorithm>
#include <utility>

#include "adapters/wx/Lengths.h"
#include "adapters/wx/NativeStyle.h"
#include "adapters/wx/PendantKeyTable.h"
#include "adapters/wx/PictureStore.h"
#include "adapters/wx/WxText.h"
#include "adapters/wx/WxView.h"
#include "ui/formlayer/PendantKeyControl.h"
#include "ui/formlayer/Picture.h"
#include "ui/formlayer/StatusBar.h"

namespace nomira::wx {
namespace {

constexpr long kFrameStyle = wxCAPTION | wxSYSTEM_MENU | wxCLOSE_BOX | wxMINIMIZE_BOX;

bool Contains(const wxWindow& outer, const wxWindow* inner) {
    while (inner && inner != &outer)
        inner = inner->GetParent();
    return inner != nullptr;
}

wxColour GroundColour(const Form& form) {
    if (!form.BackColour()) return wxSystemSettings::GetColour(wxSYS_COLOUR_BTNFACE);
    const std::uint32_t nColour = *form.BackColour();
    return {static_cast<unsigned char>(nColour >> 16), static_cast<unsigned char>(nColour >> 8),
            static_cast<unsigned char>(nColour)};
}

}  // namespace

FormWindow::FormWindow(WxView& view, Form& form)
    : wxFrame(nullptr, wxID_ANY, ToWx(form.Caption()), wxDefaultPosition, wxDefaultSize,
              kFrameStyle),
      m_view(view),
      m_form(&form),
      m_client(new Surface(*this, Surface::Border::None)) {
    MakeCompact(*this);
    SetIcons(ApplicationIcons());
    SetName(ToWx(form.Class()));
    m_client->SetBackgroundColour(GroundColour(form));
    if (form.BackColour()) m_client->SetForegroundColour(*wxBLACK);
    AddPeers();
    Bind(wxEVT_CHAR_HOOK, &FormWindow::OnKey, this);
    Bind(wxEVT_CLOSE_WINDOW, &FormWindow::OnClose, this);
}

// The windows go ahead of the peers whose routines they call.
FormWindow::~FormWindow() {
    Detach();
    DestroyChildren();
}

void FormWindow::Detach() {
    m_form = nullptr;
    m_changed.clear();
}

// A status bar lies below what else is on its place. A container stands ahead of what lies in it.
void FormWindow::AddPeers() {
    m_form->ForEachControl([this](Control& control) {
        if (As<StatusBar>(&control) && !control.Container()) AddPeer(control);
    });
    m_form->ForEachControl([this](Control& control) {
        if (!m_peers.contains(&control)) AddPeer(control);
    });
    for (const auto& [control, peer] : m_peers)
        if (As<StatusBar>(const_cast<Control*>(control))) peer->Window().Lower();
}

void FormWindow::AddPeer(Control& control) {
    if (auto peer = MakePeer(*this, control, ContainerOf(control)))
        m_peers.emplace(&control, std::move(peer));
    m_changed.push_back(&control);
}

wxWindow& FormWindow::ContainerOf(const Control& control) const {
    wxWindow* window = control.Container() ? WindowOf(*control.Container()) : nullptr;
    return window ? *window : *m_client;
}

wxWindow* FormWindow::WindowOf(const Control& control) const {
    const auto place = m_peers.find(&control);
    return place == m_peers.end() ? nullptr : &place->second->Window();
}

void FormWindow::AddNoChoice(wxWindow& container) {
    wxRadioButton*& noChoice = m_noChoices[&container];
    if (noChoice) return;
    noChoice =
        new wxRadioButton(&container, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, wxRB_GROUP);
    noChoice->Hide();
}

void FormWindow::ChooseNone(wxWindow& container) {
    m_noChoices.at(&container)->SetValue(true);
}

void FormWindow::Note(Control* control, TextView sProperty) {
    if (!m_form) return;
    if (!control) m_bFrameChanged = true;
    if (control && sProperty == u"Focus") m_bFocusChanged = true;
    if (control && std::ranges::find(m_changed, control) == m_changed.end())
        m_changed.push_back(control);
}

void FormWindow::ShowChanges() {
    if (!m_form || m_bSyncing) return;
    m_bSyncing = true;
    if (m_bFrameChanged) SyncFrame();
    for (Control* control : std::exchange(m_changed, {})) {
        const auto place = m_peers.find(control);
        if (place != m_peers.end()) place->second->Sync();
    }
    SyncLines();
    SyncFocus();
    m_bSyncing = false;
}

void FormWindow::SyncFrame() {
    m_bFrameChanged = false;
    SetTitle(ToWx(m_form->Caption()));
    const wxRect place = PlaceOf(*m_form);
    if (GetClientSize() != place.GetSize()) SetClientSize(place.GetSize());
    if (GetPosition() != place.GetPosition()) Move(place.GetPosition());
}

// The frame lines of each ground.
void FormWindow::SyncLines() {
    std::map<Surface*, std::vector<wxRect>> lines;
    m_form->ForEachControl([&](Control& control) {
        auto* ground = dynamic_cast<Surface*>(&ContainerOf(control));
        if (!ground || !As<Shape>(&control)) return;
        std::vector<wxRect>& places = lines[ground];
        if (control.Visible()) places.push_back(PlaceOf(control));
    });
    for (auto& [ground, places] : lines)
        ground->SetLines(std::move(places));
}

// To where the form has it, unless the user works in another window.
void FormWindow::SyncFocus() {
    const bool bMove = std::exchange(m_bFocusChanged, false);
    const Control* control = m_form->Focus();
    wxWindow* focus = control ? WindowOf(*control) : m_client;
    const wxWindow* held = wxWindow::FindFocus();
    if (!focus || Contains(*focus, held) || !(bMove || Contains(*this, held))) return;
    focus->SetFocus();
    // Getting the keys selects nothing, neither a text nor the first line of a list.
    if (auto* text = dynamic_cast<wxTextCtrl*>(focus)) text->SelectNone();
    if (control) m_peers.at(control)->Sync();
}

void FormWindow::Act(const std::function<void()>& act) {
    if (!m_form || m_bSyncing) return;
    m_view.Act([&] {
        act();
        if (m_form) NoteAll();
    });
}

// An act may have changed on the screen what the form has not, such as the choice that a button
// took away from another one.
void FormWindow::NoteAll() {
    m_form->ForEachControl([this](Control& control) { Note(&control, {}); });
}

void FormWindow::OnKey(wxKeyEvent& event) {
    if (!m_form || !TakeKey(event)) event.Skip();
}

bool FormWindow::TakeKey(const wxKeyEvent& event) {
    if (event.GetKeyCode() == WXK_TAB && !event.ControlDown() && !event.AltDown()) {
        Act([&] {
            if (event.ShiftDown())
                m_form->FocusPrevious();
            else
                m_form->FocusNext();
        });
        return true;
    }
    const PcKey* key = KeyOfEvent(event);
    PendantKeyControl* keys = nullptr;
    m_form->ForEachControl([&](Control& control) {
        if (auto* found = As<PendantKeyControl>(&control)) keys = found;
    });
    if (!key || !keys) return false;
    Act([&] { keys->UserKey(key->nCode); });
    return true;
}

void FormWindow::OnClose(wxCloseEvent& event) {
    if (event.CanVeto()) event.Veto();
    if (m_form) m_view.Close(*this);
}

}  // namespace nomira::wx
