#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>

#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/Interrupt.h"
#include "apps/nomiractl/PlanViews.h"
#include "apps/nomiractl/RunLog.h"
#include "apps/nomiractl/Runs.h"
#include "apps/nomiractl/WriteJson.h"

namespace nomira::companion {
namespace {

// The last run that still counts and takes none back itself, so that one undo after another goes
// back in time.
RunEntry LastRun(const std::vector<RunEntry>& entries) {
    const auto last = std::find_if(entries.rbegin(), entries.rend(), [](const RunEntry& entry) {
        return !entry.nUndoes && !entry.nUndoneBy;
    });
    if (last == entries.rend()) throw Refusal("there is no run to take back; see: nomiractl log");
    return *last;
}

RunEntry NamedRun(const std::vector<RunEntry>& entries, int nRun) {
    const auto named = std::find_if(entries.begin(), entries.end(),
                                    [&](const RunEntry& entry) { return entry.nRun == nRun; });
    if (named == entries.end())
        throw Refusal(fmt::format("there is no run {}; see: nomiractl log", nRun));
    if (named->nUndoneBy)
        throw Refusal(
            fmt::format("run {0} is taken back already, by run {1}; undo {1} brings it"
                        " back",
                        nRun, *named->nUndoneBy));
    return *named;
}

void Show(const Options& options, const Plan& plan, const RunEntry& entry, Streams streams) {
    if (options.bJson) {
        nlohmann::ordered_json json{
            {"run", entry.nRun}, {"command", entry.sCommand}, {"dry_run", options.bDryRun}};
        json.update(PlanAsJson(plan));
        WriteJson(streams.out, json);
    } else if (!options.bQuiet) {
        fmt::print(streams.out, "{} {}, \"{}\": {}\n",
                   options.bDryRun ? "would take back run" : "took back run", entry.nRun,
                   entry.sCommand, InWords(Count(plan)));
    }
}

}  // namespace

ExitCode UndoRun(const Options& options, Streams streams) {
    const InterruptWatch watch;
    const Journal journal = OpenJournal(options, streams.err);
    const std::vector<RunEntry> entries = ReadRunLog(JournalFolder(options));
    const RunEntry entry = options.run ? NamedRun(entries, *options.run) : LastRun(entries);
    Plan plan = Inverse(ReadPlan(journal.RunFile(entry.nRun)).plan);
    plan.command = options.words;
    plan.nUndoes = entry.nRun;
    if (options.bDiff) PrintDiff(plan, streams.out);
    RunPlan(plan, options.bDryRun ? nullptr : &journal, options, streams.err);
    Show(options, plan, entry, streams);
    return ExitCode::Done;
}

}  // namespace nomira::companion
