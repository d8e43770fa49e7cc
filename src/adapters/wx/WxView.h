// The view on a real screen: every form that is shown gets a window, whose controls are kept in
// step with the form's.
//
// One thread serves all: windows, handlers, passes. What a handler raises never travels through the
// toolkit: the view keeps it, leaves the loop that it is in, and lets it come out of RunEventLoop
// or ProcessPendingEvents.
#pragma once

#include <wx/evtloop.h>
#include <wx/timer.h>

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <vector>

#include "adapters/wx/FormWindow.h"
#include "ui/formlayer/View.h"

namespace nomira::wx {

// Something besides the windows that has events to serve while the user is served.
struct EventSource {
    // Descriptors that become readable when there is something; asked anew after each event.
    std::function<std::vector<int>()> descriptors;
    // Serves what is there, without waiting. What it raises is taken as what a handler raises.
    std::function<void()> serve;
};

class WxView : public View {
  public:
    // A Toolkit that is ready must stand, and outlive the view.
    WxView();
    ~WxView() override;
    WxView(const WxView&) = delete;
    WxView& operator=(const WxView&) = delete;

    void FormShown(Form& form) override;
    void FormUnloaded(Form& form) override;
    void PropertyChanged(Form& form, Control* control, TextView sProperty) override;
    void Refreshed(Control& control) override;
    void ProcessPendingEvents() override;
    void RunEventLoop() override;

    void AddSource(EventSource source);
    // Told when a window of this title comes, and when it is there no longer. May be empty.
    std::function<void(TextView sTitle)> onTitleShown, onTitleGone;
    // Lays the window of this exact title over the others and gives it the keys; nothing happens
    // without one.
    void RaiseWindow(TextView sTitle);

    // Brings everything that has changed to the windows, without painting them.
    void ShowChanges();

    // The form's frame and the control's window; nullptr if there is none. For tests and for
    // windows that belong to these.
    FormWindow* FrameOf(const Form& form) const;
    wxWindow* WindowOf(const Control& control) const;

    // For the windows: runs what the user did, by the rule above.
    void Act(const std::function<void()>& act);
    // For the windows: the user has closed the form (Form::UserClose), which may have to wait until
    // the user is served again.
    void Close(FormWindow& window);

  private:
    class Watch;

    void OnIdle(wxIdleEvent& event);
    void Serve();
    void ServeSource(const EventSource& source);
    void WatchSources();
    void PaintAtOnce();
    void AwaitFirstPaint(const FormWindow& window);
    void EndActs();
    void CloseForms();
    void Rethrow();
    void TellTitle(FormWindow& window);
    void TurnClocks();
    void AwaitMinute();

    struct Shown {
        FormWindow* window;
        Text sTitle;  // as it was told
    };

    wxEventLoop m_loop;
    wxEventLoopActivator m_active{&m_loop};
    wxTimer m_minute;
    std::vector<Shown> m_shown;
    std::vector<FormWindow*> m_gone;     // to be destroyed when no act runs
    std::vector<FormWindow*> m_closing;  // closed while nothing was served
    std::vector<EventSource> m_sources;
    std::vector<std::unique_ptr<Watch>> m_watches;
    std::exception_ptr m_failure;
    int m_nActs = 0;
    int m_nYields = 0;
    bool m_bRunning = false;   // the event loop
    bool m_bPainting = false;  // no act is heard meanwhile
    std::chrono::steady_clock::time_point m_lastPaint;
};

}  // namespace nomira::wx
