// The one progress call of all long loops. The loops don't know their length, so a call only
// moves a bar on, and the bar wraps. Which bar is asked of the forms at each call.
#pragma once

#include <cstdint>

namespace nomira {

// True makes the next AdvanceProgress start its bar anew; AdvanceProgress clears it.
extern bool g_bProgressReset;
// Where the bars stand between calls and between runs: the count of the batch and desktop bars,
// which share it, and the position of the pendant bar. AdvanceProgress alone writes them.
extern std::int32_t g_nProgressCount;
extern double g_dProgressValue;

// Steps the bar of the front end that runs: the batch run's small form, else the pendant form if
// it is live, else the desktop form if it is live; without any of them it does nothing. On the
// pendant alone it first lets pending user-interface events through.
void AdvanceProgress();

}  // namespace nomira
