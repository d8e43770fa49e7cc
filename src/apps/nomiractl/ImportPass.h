// The faithful import, watched.
#pragma once

#include "apps/nomiractl/DatabaseRows.h"
#include "apps/nomiractl/ImportReport.h"
#include "apps/nomiractl/Options.h"

namespace nomira::companion {

// Runs the passes over the options' file and fills the report's lines. `rows` are those that the
// database has now: texts that stand there already are not stored once more. Gives whether the
// database was asked to change anything. Throws Refusal for a file that can't be opened.
bool RunPasses(const Options& options, const Rows& rows, ImportReport& report);

}  // namespace nomira::companion
