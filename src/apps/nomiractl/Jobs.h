// How many threads a command over many programs takes.
#pragma once

#include <algorithm>
#include <cstddef>
#include <thread>

#include "apps/nomiractl/Options.h"
#include "langtools/CodePage.h"

namespace nomira::companion {

// What --jobs says, or one for each processor. A page that threads can't share allows one alone.
// The machine must be the options'.
inline std::size_t ThreadsFor(const Options& options) {
    if (!SystemCodePage().IsPlain()) return 1;
    return options.jobs.value_or(std::max(1U, std::thread::hardware_concurrency()));
}

}  // namespace nomira::companion
