// Lists: of files and of anything, of drives, of directories.
#pragma once

#include <vector>

#include "adapters/wx/Peer.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/ListBox.h"

class wxChoice;
class wxKeyEvent;
class wxListBox;
class wxMouseEvent;

namespace nomira::wx {

class SelectionListPeer : public PeerOf<SelectionList> {
  public:
    SelectionListPeer(FormWindow& owner, SelectionList& control, wxWindow& parent);

  private:
    void SyncOwn() override;
    void OnSelected();
    // A simple list: the mouse and the blank key turn one entry, and the other keys only move. Any
    // other list in which nothing is selected begins with its first entry.
    void OnClicked(const wxMouseEvent& event);
    void OnKey(wxKeyEvent& event);
    void MoveCaret();
    void TurnAtCaret();

    wxListBox* m_list;
    std::vector<Text> m_entries;  // those shown
    std::int16_t m_nCaret = 0;    // line of a simple list at which the keys are; else 0
};

class DriveListPeer : public PeerOf<DriveListBox> {
  public:
    DriveListPeer(FormWindow& owner, DriveListBox& control, wxWindow& parent);

  private:
    void SyncOwn() override;

    wxChoice* m_choice;
    std::vector<Text> m_drives;  // those shown
};

// Shows the way to the directory, a name a line, and its subdirectories below, each a step further
// in. A double click opens, and so does the enter key, unless the form itself has made something of
// that.
class DirListPeer : public PeerOf<DirListBox> {
  public:
    DirListPeer(FormWindow& owner, DirListBox& control, wxWindow& parent);

  private:
    void SyncOwn() override;
    std::vector<Text> Paths() const;
    // The control's number of the line that is highlighted.
    std::int16_t Highlighted() const;
    void OnDoubleClick(const wxMouseEvent& event);
    void OnEnter();

    wxListBox* m_list;
    std::vector<Text> m_paths;  // of the lines shown
    std::int16_t m_nAbove = 0;  // lines down to the directory itself
};

}  // namespace nomira::wx
