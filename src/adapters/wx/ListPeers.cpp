#include "adapters/wx/ListPeers.h"

#include <wx/choice.h>
#include <wx/listbox.h>

#include <algorithm>

#include "adapters/wx/WxText.h"
#include "ui/formlayer/Form.h"

namespace nomira::wx {
namespace {

constexpr const char* kStep = "  ";
constexpr std::int16_t kEnter = 13;

long StyleOf(const SelectionList& control) {
    switch (control.MultiSelect()) {
        case SelectionList::kSimple:
            return wxLB_MULTIPLE;
        case SelectionList::kExtended:
            return wxLB_EXTENDED;
        default:
            return wxLB_SINGLE;
    }
}

std::vector<Text> EntriesOf(const SelectionList& control) {
    std::vector<Text> entries;
    for (std::int16_t n = 0; n < control.ListCount(); ++n)
        entries.push_back(control.List(n));
    return entries;
}

template <typename Window>
void Fill(Window& window, const std::vector<Text>& entries) {
    wxArrayString lines;
    for (const Text& sEntry : entries)
        lines.push_back(ToWx(sEntry));
    window.Set(lines);
}

// Of a root the root, else what is behind the last backslash.
TextView LastName(TextView sPath) {
    const std::size_t nLast = sPath.rfind(u'\\');
    const bool bRoot = nLast == TextView::npos || nLast + 1 == sPath.size();
    return bRoot ? sPath : sPath.substr(nLast + 1);
}

}  // namespace

SelectionListPeer::SelectionListPeer(FormWindow& owner, SelectionList& control, wxWindow& parent)
    : PeerOf(owner, control),
      m_list(new wxListBox(&parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, 0, nullptr,
                           StyleOf(control))) {
    Adopt(*m_list);
    m_list->Bind(wxEVT_LISTBOX, [this](auto&) { OnSelected(); });
    m_list->Bind(wxEVT_CHAR_HOOK, [this](wxKeyEvent& event) { OnKey(event); });
    if (control.MultiSelect() != SelectionList::kSimple) return;
    m_list->Bind(wxEVT_LEFT_DOWN, [this](wxMouseEvent& event) { OnClicked(event); });
    m_list->Bind(wxEVT_LEFT_DCLICK, [this](wxMouseEvent& event) { OnClicked(event); });
}

void SelectionListPeer::SyncOwn() {
    std::vector<Text> entries = EntriesOf(TheControl());
    if (entries != m_entries) {
        m_entries = std::move(entries);
        Fill(*m_list, m_entries);
    }
    for (std::int16_t n = 0; n < TheControl().ListCount(); ++n) {
        const bool bSelected = TheControl().Selected(n);
        if (m_list->IsSelected(n) == bSelected) continue;
        if (bSelected)
            m_list->SetSelection(n);
        else
            m_list->Deselect(n);
    }
}

void SelectionListPeer::OnSelected() {
    Act([this] {
        if (TheControl().MultiSelect() == SelectionList::kSimple) {
            MoveCaret();
            return;
        }
        for (std::int16_t n = 0; n < TheControl().ListCount(); ++n)
            if (m_list->IsSelected(n) != TheControl().Selected(n))
                TheControl().UserSelect(n, m_list->IsSelected(n));
    });
}

// The toolkit has selected the one line to which a key has moved; the line keeps the frame that
// shows where the keys are, and the selection goes back to what the control has.
void SelectionListPeer::MoveCaret() {
    wxArrayInt selected;
    m_list->GetSelections(selected);
    if (selected.size() == 1) m_nCaret = static_cast<std::int16_t>(selected[0]);
}

void SelectionListPeer::OnClicked(const wxMouseEvent& event) {
    const int nLine = m_list->HitTest(event.GetPosition());
    m_list->SetFocus();
    if (nLine == wxNOT_FOUND) return;
    m_nCaret = static_cast<std::int16_t>(nLine);
    TurnAtCaret();
}

void SelectionListPeer::OnKey(wxKeyEvent& event) {
    const int nKey = event.GetKeyCode();
    const bool bSimple = TheControl().MultiSelect() == SelectionList::kSimple;
    wxArrayInt selected;
    const bool bMoves = nKey == WXK_HOME || nKey == WXK_UP || nKey == WXK_DOWN;
    if (bSimple ? nKey == WXK_SPACE
                : (nKey == WXK_SPACE || bMoves) && m_list->GetSelections(selected) == 0)
        TurnAtCaret();
    else
        event.Skip();
}

void SelectionListPeer::TurnAtCaret() {
    Act([this] {
        if (m_nCaret < TheControl().ListCount())
            TheControl().UserSelect(m_nCaret, !TheControl().Selected(m_nCaret));
    });
}

DriveListPeer::DriveListPeer(FormWindow& owner, DriveListBox& control, wxWindow& parent)
    : PeerOf(owner, control), m_choice(new wxChoice(&parent, wxID_ANY)) {
    Adopt(*m_choice);
    m_choice->Bind(wxEVT_CHOICE, [this](auto&) {
        Act([this] { TheControl().UserPick(FromWx(m_choice->GetStringSelection())); });
    });
}

void DriveListPeer::SyncOwn() {
    std::vector<Text> drives = TheControl().Drives();
    if (drives != m_drives) {
        m_drives = std::move(drives);
        Fill(*m_choice, m_drives);
    }
    const wxString sDrive = ToWx(TheControl().Drive());
    if (m_choice->GetStringSelection() != sDrive) m_choice->SetStringSelection(sDrive);
}

DirListPeer::DirListPeer(FormWindow& owner, DirListBox& control, wxWindow& parent)
    : PeerOf(owner, control), m_list(new wxListBox(&parent, wxID_ANY)) {
    Adopt(*m_list);
    m_list->Bind(wxEVT_LISTBOX,
                 [this](auto&) { Act([this] { TheControl().UserHighlight(Highlighted()); }); });
    m_list->Bind(wxEVT_LEFT_DCLICK, [this](wxMouseEvent& event) { OnDoubleClick(event); });
    // The toolkit makes this of the enter key, and keeps the key to itself.
    m_list->Bind(wxEVT_LISTBOX_DCLICK, [this](auto&) { OnEnter(); });
}

// From the root down to the directory, then what is in it.
std::vector<Text> DirListPeer::Paths() const {
    std::vector<Text> paths;
    if (TheControl().Path().empty()) return paths;
    for (std::int16_t n = -1;; --n) {
        paths.insert(paths.begin(), TheControl().List(n));
        if (LastName(paths.front()) == paths.front()) break;
    }
    for (std::int16_t n = 0; n < TheControl().ListCount(); ++n)
        paths.push_back(TheControl().List(n));
    return paths;
}

void DirListPeer::SyncOwn() {
    std::vector<Text> paths = Paths();
    m_nAbove = static_cast<std::int16_t>(static_cast<std::int16_t>(paths.size()) -
                                         TheControl().ListCount());
    if (paths != m_paths) {
        m_paths = std::move(paths);
        wxArrayString lines;
        for (std::size_t n = 0; n < m_paths.size(); ++n) {
            wxString sStep;
            for (std::size_t nStep = 0; nStep < std::min<std::size_t>(n, m_nAbove); ++nStep)
                sStep += kStep;
            lines.push_back(sStep + ToWx(LastName(m_paths[n])));
        }
        m_list->Set(lines);
    }
    if (m_paths.empty()) return;
    const int nLine = TheControl().ListIndex() + m_nAbove;
    if (m_list->GetSelection() != nLine) m_list->SetSelection(nLine);
}

std::int16_t DirListPeer::Highlighted() const {
    return static_cast<std::int16_t>(std::max(m_list->GetSelection(), 0) - m_nAbove);
}

void DirListPeer::OnDoubleClick(const wxMouseEvent& event) {
    const int nLine = m_list->HitTest(event.GetPosition());
    if (nLine == wxNOT_FOUND) return;
    Act([&] { TheControl().UserOpen(static_cast<std::int16_t>(nLine - m_nAbove)); });
}

void DirListPeer::OnEnter() {
    Act([this] {
        const std::weak_ptr<Form> form = TheControl().Owner().Reference();
        const Text sPath = TheControl().Path();
        TheControl().UserKeyPress(kEnter);
        if (!form.expired() && TheControl().Path() == sPath)
            TheControl().UserOpen(TheControl().ListIndex());
    });
}

}  // namespace nomira::wx
