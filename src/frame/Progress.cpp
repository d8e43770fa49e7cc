#include "frame/Progress.h"

#include <cmath>

#include "frame/ProgramVariables.h"
#include "langtools/ProgramState.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {

bool g_bProgressReset = false;
std::int32_t g_nProgressCount = 0;
double g_dProgressValue = 0;

namespace {

constexpr double kPendantStart = 1.0;
constexpr double kPendantStep = 0.15;

const OnProgramReset g_reset{[] {
    g_bProgressReset = false;
    g_nProgressCount = 0;
    g_dProgressValue = 0;
}};

bool IsFormLive(TextView sClass) {
    const Form* form = FindForm(sClass);
    return form && form->IsLive();
}

// Takes the request, if there is one.
bool TakeReset() {
    const bool bReset = g_bProgressReset;
    g_bProgressReset = false;
    return bReset;
}

// The next count; false if the bar stays as it is. Only odd counts are shown, which keeps the 0
// of the wrap away from a bar whose minimum is 1. With an odd maximum the wrap itself makes two
// even counts follow each other.
bool StepCount(const ProgressBar& bar) {
    if (TakeReset()) {
        g_nProgressCount = 1;
        return true;
    }
    g_nProgressCount = (g_nProgressCount + 1) % static_cast<std::int32_t>(std::lrint(bar.Max()));
    return g_nProgressCount % 2 != 0;
}

void AdvanceCountingBar(ProgressBar* bar) {
    if (bar && StepCount(*bar)) bar->SetValue(static_cast<float>(g_nProgressCount));
}

void AdvancePendantBar() {
    ProcessPendingEvents();
    auto* bar = FindControl<ProgressBar>(u"StdBofForm", u"ProgressBar2");
    if (!bar) return;  // an event may have closed the form
    if (g_dProgressValue < kPendantStart) g_dProgressValue = kPendantStart;
    g_dProgressValue += kPendantStep;
    const bool bPassed = bar->Max() < static_cast<float>(g_dProgressValue);
    if (TakeReset() || bPassed) g_dProgressValue = kPendantStart;
    bar->SetValue(static_cast<float>(g_dProgressValue));
}

}  // namespace

void AdvanceProgress() {
    if (g_bBatchMode)
        AdvanceCountingBar(FindControl<ProgressBar>(u"StdForm", u"ProgressBar"));
    else if (IsFormLive(u"StdBofForm"))
        AdvancePendantBar();
    else if (IsFormLive(u"NomiraMain"))
        AdvanceCountingBar(FindControl<ProgressBar>(u"NomiraMain", u"ProgressBar1"));
}

}  // namespace nomira
