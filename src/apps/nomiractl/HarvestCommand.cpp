#include <fmt/format.h>
#include <fmt/ostream.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <vector>

#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseRun.h"
#include "apps/nomiractl/Interrupt.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/PlanViews.h"
#include "apps/nomiractl/Runs.h"
#include "apps/nomiractl/TextSource.h"
#include "apps/nomiractl/Words.h"
#include "apps/nomiractl/WriteJson.h"
#include "database/adoModul.h"
#include "ui/NomiraMain.h"
#include "ui/StdBofForm.h"
#include "ui/formlayer/FormLayer.h"
#include "userprogram/Customer2.h"

namespace nomira::companion {
namespace {

// Collects what could not be stored while it lives.
class StoreWatch : public StoreObserver {
  public:
    StoreWatch() { SetStoreObserver(this); }
    ~StoreWatch() override { SetStoreObserver(nullptr); }
    StoreWatch(const StoreWatch&) = delete;
    StoreWatch& operator=(const StoreWatch&) = delete;

    void TextStored(TextView, TextView sKey, TextView, StoreOutcome outcome) override {
        const bool bGood = outcome == StoreOutcome::Added || outcome == StoreOutcome::Changed;
        if (!bGood) m_lost.emplace_back(sKey);
    }
    const std::vector<Text>& Lost() const { return m_lost; }

  private:
    std::vector<Text> m_lost;
};

// The harvest takes its options from the check boxes of the two main forms, as on the desktop.
class HarvestForms {
  public:
    explicit HarvestForms(const Options& options) {
        Form& pendant = LoadForm(std::make_unique<StdBofForm>());
        pendant.Get<CheckBox>(u"chkBoxSymbol").SetValue(options.bWithSymbols ? 1 : 0);
        m_desktop.Get<CheckBox>(u"chkBoxAdd").SetValue(options.bOverwrite ? 1 : 0);
    }
    ~HarvestForms() { UnloadForm(kStdBofFormClass); }
    HarvestForms(const HarvestForms&) = delete;
    HarvestForms& operator=(const HarvestForms&) = delete;

    const Form& Desktop() const { return m_desktop; }

  private:
    NomiraMain m_desktop;
};

std::size_t CountHarvested() {
    std::size_t nCount = 0;
    for (const KeyedTexts& keys : m_colKey)
        nCount += keys.Count();
    return nCount;
}

void Show(const Options& options, const ByClass<ClassChanges>& changes, std::ostream& out) {
    if (options.bJson) {
        auto json = nlohmann::ordered_json::array();
        for (std::size_t n = 0; n < changes.size(); ++n)
            json.push_back({{"class", Utf8(ClassRowName(n))},
                            {"added", changes[n].nAdded},
                            {"changed", changes[n].nChanged},
                            {"unchanged", changes[n].nUnchanged},
                            {"removed", changes[n].nRemoved}});
        WriteJson(out, nlohmann::ordered_json{{"file", options.file.string()},
                                              {"dry_run", OnlyLooks(options)},
                                              {"signals", CountHarvested()},
                                              {"classes", json}});
        return;
    }
    if (options.bQuiet) return;
    fmt::print(out, "{}: {} signals{}\n\n{:<24}{:>8}{:>9}{:>11}{:>9}\n", options.file.string(),
               CountHarvested(), OnlyLooks(options) ? " (dry run, nothing was changed)" : "",
               "class", "added", "changed", "unchanged", "removed");
    for (std::size_t n = 0; n < changes.size(); ++n)
        fmt::print(out, "{:<24}{:>8}{:>9}{:>11}{:>9}\n", Utf8(ClassRowName(n)), changes[n].nAdded,
                   changes[n].nChanged, changes[n].nUnchanged, changes[n].nRemoved);
}

}  // namespace

ExitCode HarvestAssignments(const Options& options, Streams streams) {
    const InterruptWatch interrupts;
    const auto source = ReadTextSource(options.file, {}, streams.in);
    const std::optional<Journal> journal = JournalFor(options, streams.err);
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    machine.TakeText(options.file, source);
    DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Write);
    const Rows before = database.ReadRows();
    const HarvestForms forms(options);
    if (!HarvestFile(CorePath(options.file)))
        throw Refusal(
            fmt::format("{}: no line assigns a signal, as in \"X = E12 \\ ;Name\"; the"
                        " database was left as it is",
                        options.file.string()));
    const StoreWatch watch;
    WriteHarvest(forms.Desktop());
    for (const Text& sKey : watch.Lost())
        fmt::print(streams.err, "nomiractl: {}: {}: could not be stored\n", options.file.string(),
                   Shown(sKey));
    if (!watch.Lost().empty()) return ExitCode::Refused;
    database.RequireNoFailure();
    const Rows after = database.ReadRows();
    Plan plan = PlanOnDatabase(options, machine, Difference(before, after));
    EndDatabaseRun(plan, before, options.file, options, journal, machine, database);
    if (options.bDiff) PrintDiff(plan, streams.out);
    Show(options, Compare(GroupByName(before), GroupByName(after)), streams.out);
    return ExitCode::Done;
}

}  // namespace nomira::companion
