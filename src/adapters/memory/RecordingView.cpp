#include "adapters/memory/RecordingView.h"

#include <algorithm>

#include "ui/formlayer/Form.h"

namespace nomira::memory {

int RecordingView::Count(ViewEvent::Kind kind) const {
    return static_cast<int>(std::count_if(
        events.begin(), events.end(), [&](const ViewEvent& event) { return event.kind == kind; }));
}

int RecordingView::CountChanges(TextView sControl, TextView sProperty) const {
    return static_cast<int>(std::count_if(events.begin(), events.end(), [&](const auto& event) {
        return event.kind == ViewEvent::Kind::PropertyChanged && event.sControl == sControl &&
               event.sProperty == sProperty;
    }));
}

void RecordingView::FormShown(Form& form) {
    events.push_back({ViewEvent::Kind::FormShown, form.Class(), {}, {}});
}

void RecordingView::FormUnloaded(Form& form) {
    events.push_back({ViewEvent::Kind::FormUnloaded, form.Class(), {}, {}});
}

void RecordingView::PropertyChanged(Form& form, Control* control, TextView sProperty) {
    events.push_back({ViewEvent::Kind::PropertyChanged, form.Class(),
                      control ? control->FullName() : Text(), Text(sProperty)});
}

void RecordingView::Refreshed(Control& control) {
    events.push_back({ViewEvent::Kind::Refreshed, control.Owner().Class(), control.FullName(), {}});
}

void RecordingView::ProcessPendingEvents() {
    events.push_back({ViewEvent::Kind::PendingEvents, {}, {}, {}});
    if (onPendingEvents) onPendingEvents();
}

void RecordingView::RunEventLoop() {
    events.push_back({ViewEvent::Kind::EventLoop, {}, {}, {}});
    if (onEventLoop) onEventLoop();
}

}  // namespace nomira::memory
