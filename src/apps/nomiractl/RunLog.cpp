#include "apps/nomiractl/RunLog.h"

#include <algorithm>
#include <system_error>

#include "apps/nomiractl/PlanViews.h"
#include "apps/nomiractl/Refusal.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

std::optional<RunEntry> EntryOf(const fs::path& file) {
    try {
        const PlanHead head = ReadPlanHead(file);
        Plan plan;
        TakePlanHead(plan, head);
        return RunEntry{head.at("run"), head.at("time"), CommandLine(plan),
                        CountsOf(head), plan.nUndoes,    std::nullopt};
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

// From the last one on, so that what takes a run back is known to be in force or not.
void FindUndone(std::vector<RunEntry>& entries) {
    for (auto undo = entries.rbegin(); undo != entries.rend(); ++undo) {
        if (!undo->nUndoes || undo->nUndoneBy) continue;
        const auto undone =
            std::find_if(entries.begin(), entries.end(),
                         [&](const RunEntry& entry) { return entry.nRun == *undo->nUndoes; });
        if (undone != entries.end()) undone->nUndoneBy = undo->nRun;
    }
}

}  // namespace

std::vector<RunEntry> ReadRunLog(const fs::path& folder) {
    std::vector<RunEntry> entries;
    std::error_code error;
    for (const auto& file : fs::directory_iterator(folder, error)) {
        if (file.path().extension() != kFinishedRun) continue;
        if (auto entry = EntryOf(file.path())) entries.push_back(std::move(*entry));
    }
    std::sort(entries.begin(), entries.end(),
              [](const RunEntry& a, const RunEntry& b) { return a.nRun < b.nRun; });
    FindUndone(entries);
    return entries;
}

}  // namespace nomira::companion
