// What the journal knows of its finished runs.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/nomiractl/Journal.h"

namespace nomira::companion {

struct RunEntry {
    int nRun;
    std::string sTime;  // UTC, as TimeNow gives it
    std::string sCommand;
    PlanCounts counts;
    std::optional<int> nUndoes;    // the run that it takes back
    std::optional<int> nUndoneBy;  // the run that takes it back, unless that was taken back itself
};

// Ascending. A record that can't be read is passed over.
std::vector<RunEntry> ReadRunLog(const std::filesystem::path& folder);

}  // namespace nomira::companion
