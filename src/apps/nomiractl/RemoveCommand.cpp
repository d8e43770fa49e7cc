#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseRun.h"
#include "apps/nomiractl/Interrupt.h"
#include "apps/nomiractl/KeySelection.h"
#include "apps/nomiractl/Runs.h"

namespace nomira::companion {
namespace {

std::vector<ItemChange> Removals(const Rows& rows, const KeySelection& selection) {
    std::vector<ItemChange> items;
    for (const ItemRow& row : rows)
        if (selection.Holds(row.sModule.value_or(Text()), row.sKey.value_or(Text())))
            items.push_back({row, std::nullopt, 0});
    return items;
}

}  // namespace

ExitCode RemoveKeys(const Options& options, Streams streams) {
    const InterruptWatch watch;
    const KeySelection selection(options.keys, options.classes);
    const std::optional<Journal> journal = JournalFor(options, streams.err);
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Write);
    const Rows before = database.ReadRows();
    Plan plan = PlanOnDatabase(options, machine, Removals(before, selection));
    if (plan.items.empty()) throw Refusal("none of these keys is in the database");
    database.ChangeRows(plan.items);
    EndDatabaseRun(plan, before, {}, options, journal, machine, database);
    ShowDatabaseRun(plan, options, streams.out);
    return ExitCode::Done;
}

}  // namespace nomira::companion
