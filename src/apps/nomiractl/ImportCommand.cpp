#include <fmt/format.h>

#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseRun.h"
#include "apps/nomiractl/FileChecks.h"
#include "apps/nomiractl/ImportPass.h"
#include "apps/nomiractl/ImportReport.h"
#include "apps/nomiractl/Interrupt.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/PlanViews.h"
#include "apps/nomiractl/Runs.h"
#include "apps/nomiractl/Words.h"
#include "conversion/TextImport.h"
#include "frame/Settings.h"

namespace nomira::companion {
namespace {

// Collects what the passes tell while it lives.
class ImportWatch : public PassObserver, public StoreObserver {
  public:
    explicit ImportWatch(ImportReport& report) : m_report(report) {
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

  private:
    ImportReport& m_report;
    StoreOutcome m_lastOutcome = StoreOutcome::Failed;
    bool m_bBegun = false;
};

}  // namespace

void RunPasses(const Options& options, ImportReport& report) {
    const Text sFile = CorePath(options.file);
    const ImportWatch watch(report);
    if (options.bOverwrite) ClearDbForTextFile(sFile);
    TextIntoDb(sFile);
    if (!watch.HasBegun())
        throw Refusal(fmt::format("{}: the file can't be opened", options.file.string()),
                      ExitCode::Files);
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

void Show(const ImportReport& report, const Options& options, Streams streams) {
    if (options.bJson)
        streams.out << ReportAsJson(report).dump(2) << '\n';
    else if (!options.bQuiet)
        PrintReport(report, streams.out);
    PrintFailures(report, streams.err);
}

}  // namespace

ExitCode ImportTextFile(const Options& options, Streams streams) {
    const InterruptWatch interrupts;
    CheckTextFile(options.file);
    const std::optional<Journal> journal = JournalFor(options, streams.err);
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    ImportReport report{.sFile = options.file.string(),
                        .sDatabase = machine.Database().string(),
                        .bCustomer = IsCustomerVw(),
                        .bOverwrite = options.bOverwrite,
                        .bDryRun = OnlyLooks(options)};

    DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Write);
    const Rows before = database.ReadRows();
    RunPasses(options, report);
    if (report.failed.empty()) database.RequireNoFailure();
    const Rows after = database.ReadRows();
    report.changes = Compare(GroupByName(before), GroupByName(after));
    Plan plan = PlanOf(options, machine, Difference(before, after), report);
    if (report.failed.empty())
        EndDatabaseRun(plan, before, options.file, options, journal, machine, database);
    if (options.bDiff) PrintDiff(plan, streams.out);
    Show(report, options, streams);
    return report.failed.empty() ? ExitCode::Done : ExitCode::Refused;
}

}  // namespace nomira::companion
