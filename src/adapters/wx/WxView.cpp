#include "adapters/wx/WxView.h"

#include <wx/app.h>
#include <wx/evtloopsrc.h>

#include <algorithm>
#include <thread>
#include <utility>

#include "ui/formlayer/FormLayer.h"

namespace nomira::wx {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// A pass moves its bar far more often than an eye can follow.
constexpr milliseconds kBetweenPaints{40};
// So long a new window may take to get onto the screen before the program goes on without it.
constexpr milliseconds kLongestMapping{250};
constexpr milliseconds kBetweenLooks{2};

constexpr int kMillisecondsOfMinute = 60000;

}  // namespace

// Serves one source as long as it lives.
class WxView::Watch : public wxEventLoopSourceHandler {
  public:
    Watch(WxView& view, const EventSource& source, int nDescriptor)
        : m_view(view),
          m_source(source),
          m_nDescriptor(nDescriptor),
          m_watch(wxEventLoopBase::AddSourceForFD(nDescriptor, this, wxEVENT_SOURCE_INPUT)) {}

    int Descriptor() const { return m_nDescriptor; }
    void OnReadWaiting() override { m_view.ServeSource(m_source); }
    void OnWriteWaiting() override {}
    void OnExceptionWaiting() override { m_view.ServeSource(m_source); }

  private:
    WxView& m_view;
    EventSource m_source;
    int m_nDescriptor;
    std::unique_ptr<wxEventLoopSource> m_watch;
};

WxView::WxView() {
    m_minute.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { TurnClocks(); });
    wxTheApp->Bind(wxEVT_IDLE, &WxView::OnIdle, this);
}

// Nothing of a window is at work any more, so they go at once.
WxView::~WxView() {
    wxTheApp->Unbind(wxEVT_IDLE, &WxView::OnIdle, this);
    m_watches.clear();
    for (const Shown& shown : m_shown)
        delete shown.window;
    for (const FormWindow* window : m_gone)
        delete window;
    if (TheView() == this) SetView(nullptr);
}

void WxView::FormShown(Form& form) {
    if (!form.Focus()) form.FocusNext();
    auto* window = new FormWindow(*this, form);
    m_shown.push_back({window, {}});
    window->ShowChanges();
    TellTitle(*window);
    window->Show();
    window->SetFocus();
    window->Note(nullptr, {});
    AwaitFirstPaint(*window);
    AwaitMinute();
}

void WxView::FormUnloaded(Form& form) {
    const auto place = std::ranges::find_if(
        m_shown, [&](const Shown& shown) { return shown.window->Shows(form); });
    if (place == m_shown.end()) return;
    FormWindow* window = place->window;
    if (onTitleGone) onTitleGone(place->sTitle);
    m_shown.erase(place);
    std::erase(m_closing, window);
    window->Detach();
    window->Hide();
    m_gone.push_back(window);
    if (m_nActs == 0) EndActs();
    if (m_bRunning && !AnyFormVisible()) m_loop.ScheduleExit();
}

void WxView::PropertyChanged(Form& form, Control* control, TextView sProperty) {
    FormWindow* window = FrameOf(form);
    if (!window) return;
    window->Note(control, sProperty);
    if (!control && sProperty == u"Caption") {
        window->ShowChanges();
        TellTitle(*window);
    }
    // A bar that moves is how the operator sees that the program works.
    if (As<ProgressBar>(control) && steady_clock::now() - m_lastPaint >= kBetweenPaints)
        PaintAtOnce();
}

void WxView::Refreshed(Control& control) {
    if (FrameOf(control.Owner())) PaintAtOnce();
}

void WxView::ProcessPendingEvents() {
    ShowChanges();
    ++m_nYields;
    CloseForms();
    m_loop.YieldFor(wxEVT_CATEGORY_ALL);
    --m_nYields;
    Rethrow();
}

void WxView::RunEventLoop() {
    Serve();
    ShowChanges();
    if (!m_failure && AnyFormVisible()) {
        m_bRunning = true;
        m_loop.Run();
        m_bRunning = false;
    }
    Rethrow();
}

void WxView::Rethrow() {
    if (m_failure) std::rethrow_exception(std::exchange(m_failure, nullptr));
}

void WxView::AddSource(EventSource source) {
    m_sources.push_back(std::move(source));
}

void WxView::RaiseWindow(TextView sTitle) {
    for (const Shown& shown : m_shown) {
        if (shown.sTitle != sTitle) continue;
        shown.window->Iconize(false);
        shown.window->Raise();
    }
}

void WxView::ShowChanges() {
    for (std::size_t n = 0; n < m_shown.size(); ++n)
        m_shown[n].window->ShowChanges();
}

FormWindow* WxView::FrameOf(const Form& form) const {
    for (const Shown& shown : m_shown)
        if (shown.window->Shows(form)) return shown.window;
    return nullptr;
}

wxWindow* WxView::WindowOf(const Control& control) const {
    const FormWindow* frame = FrameOf(control.Owner());
    return frame ? frame->WindowOf(control) : nullptr;
}

void WxView::Act(const std::function<void()>& act) {
    if (m_failure || m_bPainting) return;
    ++m_nActs;
    try {
        act();
        ShowChanges();
    } catch (...) {
        m_failure = std::current_exception();
    }
    --m_nActs;
    if (m_nActs == 0) EndActs();
    if (m_failure && m_nYields == 0 && m_bRunning) m_loop.ScheduleExit();
}

// What had to wait until no handler was at work.
void WxView::EndActs() {
    for (FormWindow* window : std::exchange(m_gone, {}))
        window->Destroy();
    CloseForms();
}

void WxView::CloseForms() {
    for (FormWindow* window : std::exchange(m_closing, {})) {
        if (m_failure || !window->TheForm()) continue;
        Act([window] { window->TheForm()->UserClose(); });
    }
}

void WxView::Close(FormWindow& window) {
    if (std::ranges::find(m_closing, &window) == m_closing.end()) m_closing.push_back(&window);
    const bool bServing = m_nYields > 0 || (m_bRunning && m_nActs == 0);
    if (bServing && !m_bPainting) CloseForms();
}

void WxView::OnIdle(wxIdleEvent& event) {
    event.Skip();
    Serve();
}

// Events that lie read already are not told by a descriptor.
void WxView::Serve() {
    if (m_bPainting || m_sources.empty()) return;
    for (const EventSource& source : m_sources)
        Act(source.serve);
    WatchSources();
}

void WxView::ServeSource(const EventSource& source) {
    Act(source.serve);
    wxTheApp->CallAfter([this] { WatchSources(); });
}

void WxView::WatchSources() {
    std::vector<std::pair<const EventSource*, int>> wanted;
    for (const EventSource& source : m_sources)
        for (const int nDescriptor : source.descriptors())
            if (nDescriptor >= 0) wanted.emplace_back(&source, nDescriptor);
    const bool bSame = std::ranges::equal(
        wanted, m_watches, {}, [](const auto& row) { return row.second; },
        [](const auto& watch) { return watch->Descriptor(); });
    if (bSame) return;
    m_watches.clear();
    for (const auto& [source, nDescriptor] : wanted)
        m_watches.push_back(std::make_unique<Watch>(*this, *source, nDescriptor));
}

// Input waits, and the sources with it: they would be ready all the time, and painting would not
// come to its end.
void WxView::PaintAtOnce() {
    if (m_bPainting) return;
    ShowChanges();
    const bool bWatched = !m_watches.empty();
    m_watches.clear();
    m_bPainting = true;
    m_loop.YieldFor(wxEVT_CATEGORY_UI);
    m_bPainting = false;
    if (bWatched) WatchSources();
    m_lastPaint = steady_clock::now();
}

void WxView::AwaitFirstPaint(const FormWindow& window) {
    const auto end = steady_clock::now() + kLongestMapping;
    do {
        PaintAtOnce();
        if (window.IsPainted()) return;
        std::this_thread::sleep_for(kBetweenLooks);
    } while (steady_clock::now() < end);
}

void WxView::TellTitle(FormWindow& window) {
    const auto place = std::ranges::find(m_shown, &window, &Shown::window);
    const Text& sTitle = window.TheForm()->Caption();
    if (place == m_shown.end() || place->sTitle == sTitle) return;
    if (onTitleGone && !place->sTitle.empty()) onTitleGone(place->sTitle);
    place->sTitle = sTitle;
    if (onTitleShown) onTitleShown(sTitle);
}

void WxView::TurnClocks() {
    for (const Shown& shown : m_shown)
        shown.window->ClientArea().Refresh();
    AwaitMinute();
}

void WxView::AwaitMinute() {
    const auto nNow = std::chrono::duration_cast<milliseconds>(
        std::chrono::system_clock::now().time_since_epoch());
    m_minute.StartOnce(kMillisecondsOfMinute -
                       static_cast<int>(nNow.count() % kMillisecondsOfMinute) + 1);
}

}  // namespace nomira::wx
