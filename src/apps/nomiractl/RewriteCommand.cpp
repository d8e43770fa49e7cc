#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseWork.h"
#include "apps/nomiractl/EarlierName.h"
#include "apps/nomiractl/InOrder.h"
#include "apps/nomiractl/Interrupt.h"
#include "apps/nomiractl/Jobs.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/NameTable.h"
#include "apps/nomiractl/PlanViews.h"
#include "apps/nomiractl/ProgramPaths.h"
#include "apps/nomiractl/ProgressBar.h"
#include "apps/nomiractl/RewriteRun.h"
#include "apps/nomiractl/Runs.h"
#include "userprogram/FoldObserver.h"

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

// Tells when a number without a name is compared with that of an earlier program.
class EarlierNameWatch : public FoldObserver {
  public:
    explicit EarlierNameWatch(bool& bAsked) : m_bAsked(bAsked) { SetFoldObserver(this); }
    ~EarlierNameWatch() override { SetFoldObserver(nullptr); }
    EarlierNameWatch(const EarlierNameWatch&) = delete;
    EarlierNameWatch& operator=(const EarlierNameWatch&) = delete;

    void SymbolOnlyFound() override { m_bAsked = m_bAsked || IsNameUnknown(); }

  private:
    bool& m_bAsked;
};

struct Looked {
    ProgramReport report;
    std::optional<ProgramChange> change;
    std::optional<PlanInput> input;  // if the plan is to be saved
};

Looked Look(const RewriteRun& run, const fs::path& path, bool bSaved, bool& bAsked) {
    const EarlierNameWatch watch(bAsked);
    Looked looked;
    looked.report = run.Look(
        path.string(),
        [&] {
            std::string sBytes = ReadProgram(path);
            if (bSaved) looked.input = PlanInput{fs::absolute(path), FingerprintOf(sBytes)};
            return sBytes;
        },
        [&](RewritePlan& rewrite, const std::string& sBytes) {
            RequireWritable(path);
            looked.change = ChangeOf(path, FingerprintOf(sBytes), rewrite);
        });
    return looked;
}

}  // namespace

ExitCode RewritePrograms(const Options& options, Streams streams) {
    const InterruptWatch watch;
    const std::optional<Journal> journal = JournalFor(options, streams.err);
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Read);
    Plan plan{.command = options.words, .database = fs::absolute(machine.Database())};
    // Ahead of the names, so that a change in between makes the plan out of date.
    const bool bSaved = !options.planFile.empty();
    if (bSaved) plan.databaseState = FingerprintOf(database.ReadRows());
    // A database that can't be read is refused here; it would look like one without names.
    const NameTable names(database.ReadItems());
    const std::vector<fs::path> programs = NamedPrograms(options.programs);
    ProgressBar bar(ScreenFor(options, streams), "rewrite", ProgressUnit::Programs,
                    programs.size());
    StreamsAboveBar above(streams, bar);
    RewriteRun run(options, above.All(), machine.Boxes(), database);
    InOrder(
        programs.size(), ThreadsFor(options),
        [&](std::size_t n) {
            auto own =
                LookOnItsOwn([&](bool& bAsked) { return Look(run, programs[n], bSaved, bAsked); });
            return std::pair(n, std::move(own));
        },
        [&](auto numbered) {
            const fs::path& path = programs[numbered.first];
            Looked looked = InItsTurn(std::move(numbered.second), [&](bool& bAsked) {
                return Look(run, path, bSaved, bAsked);
            });
            if (looked.change)
                plan.programs.push_back(std::move(*looked.change));
            else if (looked.input)
                plan.inputs.push_back(std::move(*looked.input));
            run.Take(std::move(looked.report));
            bar.Step();
        });
    bar.Wipe();
    RequireAtMost(plan, options.maxChanges);
    if (journal) RunOnPrograms(plan, *journal, WayOf(options));
    if (bSaved) SavePlan(plan, options);
    return run.Finish();
}

}  // namespace nomira::companion
