#include <string>
#include <string_view>
#include <vector>

#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseWork.h"
#include "apps/nomiractl/Interrupt.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/PlanViews.h"
#include "apps/nomiractl/ProgramPaths.h"
#include "apps/nomiractl/RewriteRun.h"
#include "apps/nomiractl/Runs.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

// What differs, and no more of the line.
BytesChange PieceOf(const LineChange& line) {
    const std::string_view old = line.sOld;
    const std::string_view now = line.sNew;
    const auto [inOld, inNew] = std::mismatch(old.begin(), old.end(), now.begin(), now.end());
    const auto nHead = static_cast<std::size_t>(inOld - old.begin());
    const std::string_view oldRest = old.substr(nHead);
    const std::string_view newRest = now.substr(nHead);
    const auto tail =
        std::mismatch(oldRest.rbegin(), oldRest.rend(), newRest.rbegin(), newRest.rend());
    const auto nTail = static_cast<std::size_t>(tail.first - oldRest.rbegin());
    return {line.nLine, line.nPlace + nHead, std::string(oldRest.substr(0, oldRest.size() - nTail)),
            std::string(newRest.substr(0, newRest.size() - nTail))};
}

// Takes the lines out of `rewrite`, but not their numbers.
ProgramChange ChangeOf(const fs::path& path, const Fingerprint& before, RewritePlan& rewrite) {
    ProgramChange change{
        fs::absolute(path), before, FingerprintOf(rewrite.sNewBytes), {}, std::nullopt};
    for (LineChange& line : rewrite.changes) {
        change.pieces.push_back(PieceOf(line));
        std::string().swap(line.sOld);  // an assignment would keep the room
        std::string().swap(line.sNew);
    }
    return change;
}

}  // namespace

ExitCode RewritePrograms(const Options& options, Streams streams) {
    const InterruptWatch watch;
    const std::optional<Journal> journal = JournalFor(options, streams.err);
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    // A database that can't be read would look like one without names.
    DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Read);
    database.ReadItems();
    RewriteRun run(options, streams, machine.Boxes(), database);
    Plan plan{.command = options.words, .database = fs::absolute(machine.Database())};
    for (const fs::path& path : NamedPrograms(options.programs)) {
        Fingerprint before;
        run.Rewrite(
            path.string(),
            [&] {
                std::string sBytes = ReadProgram(path);
                before = FingerprintOf(sBytes);
                return sBytes;
            },
            [&](RewritePlan& rewrite) {
                RequireWritable(path);
                plan.programs.push_back(ChangeOf(path, before, rewrite));
            });
    }
    RequireAtMost(plan, options.maxChanges);
    if (journal) RunOnPrograms(plan, *journal, WayOf(options));
    if (!options.planFile.empty()) {
        plan.databaseState = FingerprintOf(database.ReadRows());
        SavePlan(plan, options);
    }
    return run.Finish();
}

}  // namespace nomira::companion
