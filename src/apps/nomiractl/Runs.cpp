#include "apps/nomiractl/Runs.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <string>
#include <utility>

#include "adapters/posix/Prefix.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/PlanViews.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

constexpr AtomicWay kUsualWay = AtomicWay::InPlace;

struct WayWord {
    const char* sWord;
    AtomicWay way;
};
constexpr WayWord kWays[]{{"in-place", AtomicWay::InPlace}, {"rename", AtomicWay::Rename}};

Options OnDatabase(const Options& options, const fs::path& database) {
    Options other = options;
    other.database = database;
    return other;
}

bool IsInDatabase(const Plan& plan, const Options& options) {
    Machine machine(OnDatabase(options, plan.database));
    DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Read);
    return AreAfter(plan.items, database.ReadRows());
}

// A database that is gone, or is none any more, has nothing of the run.
bool WasCommitted(const Plan& plan, const Options& options) {
    std::error_code ignored;
    if (!fs::exists(plan.database, ignored)) return false;
    return IsInDatabase(plan, options);
}

void Tell(std::ostream& err, const Plan& plan, const char* sWhat) {
    fmt::print(err, "nomiractl: \"{}\" was broken off before its end; {}\n", CommandLine(plan),
               sWhat);
}

void RecoverPrograms(int nRun, const Plan& plan, const Journal& journal, std::ostream& err) {
    if (AllAreChanged(plan.programs)) {
        journal.Finish(nRun);
        return Tell(err, plan, "all it had to do was done, so that it counts as finished");
    }
    for (const std::string& sLeft : PutBack(plan.programs, journal.OldBytesOf(nRun), nRun))
        fmt::print(err, "nomiractl: {}\n", sLeft);
    journal.Discard(nRun);
    Tell(err, plan, "its programs are as they were before it");
}

void RecoverDatabase(int nRun, const Plan& plan, const Journal& journal, const Options& options,
                     std::ostream& err) {
    if (WasCommitted(plan, options)) {
        journal.Finish(nRun);
        return Tell(err, plan, "all it had to do was done, so that it counts as finished");
    }
    journal.Discard(nRun);
    Tell(err, plan, "the database is as it was before it");
}

// What a run that only looks has changed in the transaction goes with it.
void RunOnDatabase(const Plan& plan, const Journal* journal, const Options& options,
                   std::ostream& err) {
    Machine machine(OnDatabase(options, plan.database));
    machine.PrintWarnings(err);
    DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Write);
    database.ChangeRows(plan.items);
    if (journal && CommitRun(plan, *journal, database)) machine.TellOfChange();
}

}  // namespace

fs::path JournalFolder(const Options& options) {
    return JournalFolder(options.prefix.empty() ? posix::Prefix::RootFromEnvironment()
                                                : options.prefix);
}

Journal OpenJournal(const Options& options, std::ostream& err) {
    Journal journal(JournalFolder(options));
    journal.RemoveLitter();
    for (const int nRun : journal.Unfinished()) {
        const Plan plan = ReadPlan(journal.OpenFile(nRun)).plan;
        if (plan.programs.empty())
            RecoverDatabase(nRun, plan, journal, options, err);
        else
            RecoverPrograms(nRun, plan, journal, err);
    }
    return journal;
}

std::optional<Journal> JournalFor(const Options& options, std::ostream& err) {
    if (options.bDryRun || options.bCheck || !options.planFile.empty()) return std::nullopt;
    return OpenJournal(options, err);
}

AtomicWay WayOf(const Options& options) {
    for (const WayWord& word : kWays)
        if (options.atomic == word.sWord) return word.way;
    return kUsualWay;
}

void RunOnPrograms(Plan& plan, const Journal& journal, AtomicWay way) {
    if (plan.programs.empty()) return;
    const int nRun = journal.Next();
    const OldBytes old = journal.OldBytesOf(nRun);
    try {
        old.Keep(plan.programs);
        journal.Begin(nRun, plan);
    } catch (const std::exception&) {
        journal.Discard(nRun);
        throw;
    }
    try {
        WritePrograms(plan.programs, old, way, nRun);
    } catch (const std::exception&) {
        PutBack(plan.programs, old, nRun);
        journal.Discard(nRun);
        throw;
    }
    journal.Finish(nRun);
}

bool CommitRun(const Plan& plan, const Journal& journal, DatabaseWork& database) {
    if (plan.items.empty()) return false;
    const int nRun = journal.Next();
    journal.Begin(nRun, plan);
    try {
        database.Commit();
    } catch (const std::exception&) {
        journal.Discard(nRun);
        throw;
    }
    journal.Finish(nRun);
    return true;
}

void RunPlan(Plan& plan, const Journal* journal, const Options& options, std::ostream& err) {
    if (!plan.items.empty()) return RunOnDatabase(plan, journal, options, err);
    if (!journal) return RequireAsPlanned(plan.programs);
    RunOnPrograms(plan, *journal, WayOf(options));
}

}  // namespace nomira::companion
