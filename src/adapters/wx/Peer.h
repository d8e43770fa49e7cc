// A peer is a control's counterpart on the screen: it shows what the control has, and tells the
// control what the user does. One class per kind of control, in the files beside this one.
//
// A peer lives as long as its form's window, which may be longer than the control: it touches the
// control only in Sync and in acts, and neither runs any more when the form is gone.
#pragma once

#include <wx/window.h>

#include <functional>
#include <memory>

#include "ui/formlayer/Controls.h"

namespace nomira::wx {

class FormWindow;

class Peer {
  public:
    virtual ~Peer() = default;
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    wxWindow& Window() const { return *m_window; }

    // Makes the window show the control as it is now. The user's acts aren't heard meanwhile.
    void Sync();

  protected:
    Peer(FormWindow& owner, Control& control) : m_owner(owner), m_control(control) {}

    // Takes the window, which the toolkit owns, and hears of its focus.
    void Adopt(wxWindow& window);

    // What only this kind has.
    virtual void SyncOwn() {}

    // An act of the user: runs with all that is told in View.h about handlers, and afterwards the
    // window is in step with the control again, whatever the control has made of the act.
    void Act(const std::function<void()>& act);

    FormWindow& Owner() const { return m_owner; }
    // Sets the caption so that it stays inside the window, less `nTaken` dots of its width.
    void ShowCaption(TextView sCaption, int nTaken);

  private:
    void SyncColours();

    FormWindow& m_owner;
    Control& m_control;
    wxWindow* m_window = nullptr;
    std::optional<Font> m_shownFont;
    std::optional<bool> m_shownEnabled;
};

// A peer whose control is of the kind.
template <typename Kind>
class PeerOf : public Peer {
  protected:
    PeerOf(FormWindow& owner, Kind& control) : Peer(owner, control), m_control(control) {}
    Kind& TheControl() const { return m_control; }

  private:
    Kind& m_control;
};

// The peer for the control, its window lying in `parent`; empty for a kind that has no window.
std::unique_ptr<Peer> MakePeer(FormWindow& owner, Control& control, wxWindow& parent);

}  // namespace nomira::wx
