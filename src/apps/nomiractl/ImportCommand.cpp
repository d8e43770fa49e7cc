#include <fmt/format.h>

#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseRun.h"
#include "apps/nomiractl/ImportPass.h"
#include "apps/nomiractl/ImportReport.h"
#include "apps/nomiractl/Interrupt.h"
#include "apps/nomiractl/KnownTexts.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/PlanViews.h"
#include "apps/nomiractl/ProgressBar.h"
#include "apps/nomiractl/Runs.h"
#include "apps/nomiractl/Words.h"
#include "apps/nomiractl/WriteJson.h"
#include "conversion/TextImport.h"
#include "frame/Settings.h"

namespace nomira::companion {
namespace {

// Collects what the passes tell while it lives.
class ImportWatch : public PassObserver, public StoreObserver {
  public:
    ImportWatch(KnownTexts& known, ImportReport& report) : m_known(known), m_report(report) {
        SetPassObserver(this);
        SetStoreObserver(this);
    }
    ~ImportWatch() override {
        SetPassObserver(nullptr);
        SetStoreObserver(nullptr);
    }
    ImportWatch(const ImportWatch&) = delete;
    ImportWatch& operator=(const ImportWatch&) = delete;

    void ImportBegins() override { m_bBegun = true; }
    bool IsHeld(TextView sModule, TextView sKey, TextView sText) override {
        RequireNoInterrupt();  // as a look into the database would
        if (m_known.Holds(sModule, sKey, sText)) return true;
        m_known.Forget(sModule, sKey);
        m_bStored = true;
        return false;
    }
    void TextStored(TextView, TextView, TextView, StoreOutcome outcome) override {
        m_lastOutcome = outcome;
    }
    void LineStored(std::int64_t nLine, TextView sKey, TextView sModule, TextView,
                    bool bStored) override {
        const bool bGood = bStored && (m_lastOutcome == StoreOutcome::Added ||
                                       m_lastOutcome == StoreOutcome::Changed);
        if (!bGood) {
            m_report.failed.push_back({nLine, Text(sKey), m_lastOutcome});
            return;
        }
        ++m_report.lines[ClassRow(sModule, sKey)];
        m_report.storedAt[{Text(sModule), Text(sKey)}] = nLine;
    }
    void LinePassedOver(std::int64_t nLine, TextView sLine, PassedOver reason) override {
        m_report.passedOver.push_back({nLine, Text(sLine), reason});
    }

    bool HasBegun() const { return m_bBegun; }
    bool HasStored() const { return m_bStored; }

  private:
    KnownTexts& m_known;
    ImportReport& m_report;
    StoreOutcome m_lastOutcome = StoreOutcome::Failed;
    bool m_bBegun = false;
    bool m_bStored = false;  // what was held already apart
};

}  // namespace

bool RunPasses(const Options& options, const Rows& rows, ImportReport& report) {
    const Text sFile = CorePath(options.file);
    // A wipe takes what is known, and leaves little to gain.
    static const Rows none;
    KnownTexts known(options.bOverwrite ? none : rows);
    const ImportWatch watch(known, report);
    if (options.bOverwrite) ClearDbForTextFile(sFile);
    TextIntoDb(sFile);
    if (!watch.HasBegun())
        throw Refusal(fmt::format("{}: the file can't be opened", options.file.string()),
                      ExitCode::Files);
    return options.bOverwrite || watch.HasStored();
}

namespace {

// What each line has become: a change of the plan, or a note.
Plan PlanOf(const Options& options, const Machine& machine, std::vector<ItemChange> items,
            const ImportReport& report) {
    Plan plan = PlanOnDatabase(options, machine, std::move(items));
    TakeLines(plan, report.sFile, report.storedAt);
    for (const ImportReport::PassedLine& line : report.passedOver)
        plan.notes.push_back({report.sFile, line.nLine, ReasonCode(line.reason), line.sLine});
    return plan;
}

// Two passes where classes are wiped first.
std::uint64_t LinesToRead(const TextSource& source, const Options& options) {
    const auto nLines = static_cast<std::uint64_t>(CountLines(source.Bytes(), source.Form().ends));
    return options.bOverwrite ? 2 * nLines : nLines;
}

void Show(const ImportReport& report, const Options& options, Streams streams) {
    if (options.bJson)
        WriteJson(streams.out, ReportAsJson(report));
    else if (!options.bQuiet)
        PrintReport(report, streams.out);
    PrintFailures(report, streams.err);
}

}  // namespace

ExitCode ImportTextFile(const Options& options, Streams streams) {
    const InterruptWatch interrupts;
    const auto source = ReadTextSource(options.file, FormOf(options), streams.in);
    const std::optional<Journal> journal = JournalFor(options, streams.err);
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    source->RequireNoFlaws();
    ProgressBar bar(ScreenFor(options, streams), "import", ProgressUnit::Lines,
                    LinesToRead(*source, options));
    machine.TakeText(options.file, source, [&bar](std::size_t) { bar.Step(); });
    ImportReport report{.sFile = source->Name(),
                        .sDatabase = machine.Database().string(),
                        .bCustomer = IsCustomerVw(),
                        .bOverwrite = options.bOverwrite,
                        .bDryRun = OnlyLooks(options)};

    DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Write);
    const Rows before = database.ReadRows();
    const bool bTouched = RunPasses(options, before, report);
    bar.Wipe();
    if (report.failed.empty()) database.RequireNoFailure();
    std::vector<ItemChange> changes;
    if (bTouched) {
        const Rows after = database.ReadRows();
        report.changes = Compare(GroupByName(before), GroupByName(after));
        changes = Difference(before, after);
    } else {
        report.changes = Unchanged(before);
    }
    Plan plan = PlanOf(options, machine, std::move(changes), report);
    if (report.failed.empty())
        EndDatabaseRun(plan, before, options.file, options, journal, machine, database);
    if (options.bDiff) PrintDiff(plan, streams.out);
    Show(report, options, streams);
    return report.failed.empty() ? ExitCode::Done : ExitCode::Refused;
}

}  // namespace nomira::companion
