// The faithful import, watched.
#pragma once

#include "apps/nomiractl/ImportReport.h"
#include "apps/nomiractl/Options.h"

namespace nomira::companion {

// Runs the passes over the options' file and fills the report's lines. Throws Refusal for a file
// that can't be opened.
void RunPasses(const Options& options, ImportReport& report);

}  // namespace nomira::companion
