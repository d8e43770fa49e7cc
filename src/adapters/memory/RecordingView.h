// A view without a screen: it writes down what it is told.
#pragma once

#include <functional>
#include <vector>

#include "langtools/Text.h"
#include "ui/formlayer/View.h"

namespace nomira::memory {

struct ViewEvent {
    enum class Kind {
        FormShown,
        FormUnloaded,
        PropertyChanged,
        Refreshed,
        PendingEvents,
        EventLoop
    };
    Kind kind = Kind::PendingEvents;
    Text sForm;      // the form's class; empty for PendingEvents
    Text sControl;   // with its index, as SoftKey(3); empty if the event is the form's own
    Text sProperty;  // for PropertyChanged
    bool operator==(const ViewEvent&) const = default;
};

class RecordingView : public View {
  public:
    std::vector<ViewEvent> events;
    // Runs inside ProcessPendingEvents, as a user's act would; may be empty.
    std::function<void()> onPendingEvents;
    // What the user does in the event loop, which then ends; may be empty.
    std::function<void()> onEventLoop;

    // How many events of the kind there were.
    int Count(ViewEvent::Kind kind) const;
    // How often the property of the control changed; an empty control name means the form's own.
    int CountChanges(TextView sControl, TextView sProperty) const;

    void FormShown(Form& form) override;
    void FormUnloaded(Form& form) override;
    void PropertyChanged(Form& form, Control* control, TextView sProperty) override;
    void Refreshed(Control& control) override;
    void ProcessPendingEvents() override;
    void RunEventLoop() override;
};

}  // namespace nomira::memory
