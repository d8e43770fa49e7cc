// A form on the screen: a frame with a peer for each control that has a window.
//
// What changes in the form is only noted; ShowChanges brings it to the windows, at the end of every
// act and whenever the view is about to paint. The window may outlive the form, as the toolkit
// deletes windows at its own time: it is detached then, and deaf.
#pragma once

#include <wx/frame.h>

#include <map>
#include <memory>
#include <vector>

#include "adapters/wx/Peer.h"
#include "adapters/wx/Surface.h"
#include "langtools/Text.h"
#include "ui/formlayer/Form.h"

class wxRadioButton;

namespace nomira::wx {

class WxView;

class FormWindow : public wxFrame {
  public:
    // Hidden at first.
    FormWindow(WxView& view, Form& form);
    ~FormWindow() override;

    bool Shows(const Form& form) const { return m_form == &form; }
    // nullptr when detached.
    Form* TheForm() const { return m_form; }
    // The form is about to go.
    void Detach();

    // `control` is nullptr for the form's own properties.
    void Note(Control* control, TextView sProperty);
    // Everything noted since the last call.
    void ShowChanges();

    // Runs an act of the user, unless the windows are just being brought in step.
    void Act(const std::function<void()>& act);

    // The window of the control, nullptr if its kind has none.
    wxWindow* WindowOf(const Control& control) const;
    wxWindow& ClientArea() const { return *m_client; }
    // Whether the client area has been painted since the window was made.
    bool IsPainted() const { return m_client->IsPainted(); }

    // The choice that is set while no button of a group is, so that the toolkit's own rule of one
    // choice per group holds; it can't be seen. One for each container, ahead of its others.
    void AddNoChoice(wxWindow& container);
    void ChooseNone(wxWindow& container);

  private:
    void AddPeers();
    void AddPeer(Control& control);
    wxWindow& ContainerOf(const Control& control) const;
    void NoteAll();
    void SyncFrame();
    void SyncLines();
    void SyncFocus();
    void OnKey(wxKeyEvent& event);
    void OnClose(wxCloseEvent& event);
    bool TakeKey(const wxKeyEvent& event);

    WxView& m_view;
    Form* m_form;
    Surface* m_client;
    std::map<const Control*, std::unique_ptr<Peer>> m_peers;
    std::map<const wxWindow*, wxRadioButton*> m_noChoices;
    std::vector<Control*> m_changed;
    bool m_bFrameChanged = true;
    bool m_bFocusChanged = true;
    bool m_bSyncing = false;
};

}  // namespace nomira::wx
