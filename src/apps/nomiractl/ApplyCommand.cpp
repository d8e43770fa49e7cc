#include <fmt/format.h>
#include <fmt/ostream.h>

#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/Interrupt.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/PlanViews.h"
#include "apps/nomiractl/Runs.h"
#include "apps/nomiractl/WriteJson.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void RefuseChanged(const fs::path& path) {
    throw Refusal(
        fmt::format("{}: has changed since the plan was made; make a new plan; nothing"
                    " was changed",
                    path.string()));
}

// The files, and the database with all its names, from which the plan was worked out. Its programs
// are looked at by RunPlan.
void RequireSameInputs(const Plan& plan, const Options& options) {
    for (const PlanInput& input : plan.inputs)
        if (InputOf(input.file).fingerprint != input.fingerprint) RefuseChanged(input.file);
    if (!plan.databaseState) return;
    Options other = options;
    other.database = plan.database;
    Machine machine(other);
    DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Read);
    if (FingerprintOf(database.ReadRows()) != *plan.databaseState) RefuseChanged(plan.database);
}

void Show(const Options& options, const Plan& plan, Streams streams) {
    if (options.bJson) {
        nlohmann::ordered_json json{{"plan", options.file.string()}, {"dry_run", options.bDryRun}};
        json.update(PlanAsJson(plan));
        WriteJson(streams.out, json);
    } else if (!options.bQuiet) {
        fmt::print(streams.out, "\"{}\"{}: {}\n", CommandLine(plan),
                   options.bDryRun ? " (dry run, nothing was changed)" : "", InWords(Count(plan)));
    }
}

}  // namespace

ExitCode ApplySavedPlan(const Options& options, Streams streams) {
    const InterruptWatch watch;
    const std::optional<Journal> journal = JournalFor(options, streams.err);
    PlanOnDisk saved = ReadPlan(options.file);
    RequireSameInputs(saved.plan, options);
    if (options.bDiff) PrintDiff(saved.plan, streams.out);
    RunPlan(saved.plan, journal ? &*journal : nullptr, options, streams.err);
    Show(options, saved.plan, streams);
    return ExitCode::Done;
}

}  // namespace nomira::companion
