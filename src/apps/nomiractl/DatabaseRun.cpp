#include "apps/nomiractl/DatabaseRun.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <utility>

#include "apps/nomiractl/PlanViews.h"
#include "apps/nomiractl/Runs.h"
#include "apps/nomiractl/TextSource.h"
#include "apps/nomiractl/WriteJson.h"

namespace nomira::companion {

void EndDatabaseRun(Plan& plan, const Rows& before, const std::filesystem::path& input,
                    const Options& options, const std::optional<Journal>& journal, Machine& machine,
                    DatabaseWork& database) {
    RequireAtMost(plan, options.maxChanges);
    if (journal && CommitRun(plan, *journal, database)) machine.TellOfChange();
    if (options.planFile.empty()) return;
    if (!input.empty() && input != kStream) plan.inputs.push_back(InputOf(input));
    plan.databaseState = FingerprintOf(before);
    SavePlan(plan, options);
}

Plan PlanOnDatabase(const Options& options, const Machine& machine, std::vector<ItemChange> items) {
    return Plan{.command = options.words,
                .database = std::filesystem::absolute(machine.Database()),
                .items = std::move(items)};
}

bool OnlyLooks(const Options& options) {
    return options.bDryRun || !options.planFile.empty();
}

void ShowDatabaseRun(const Plan& plan, const Options& options, std::ostream& out) {
    if (options.bDiff) PrintDiff(plan, out);
    if (options.bJson) {
        nlohmann::ordered_json json{{"database", plan.database.string()},
                                    {"dry_run", OnlyLooks(options)}};
        json.update(PlanAsJson(plan));
        WriteJson(out, json);
    } else if (!options.bQuiet) {
        fmt::print(out, "{}: {}{}\n", plan.database.string(), InWords(Count(plan)),
                   OnlyLooks(options) ? " (dry run, nothing was changed)" : "");
    }
}

}  // namespace nomira::companion
