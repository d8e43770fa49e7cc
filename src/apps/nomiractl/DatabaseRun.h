// What the commands that change the database have in common, once it is worked out what changes.
#pragma once

#include "apps/nomiractl/DatabaseWork.h"
#include "apps/nomiractl/Journal.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/Options.h"
#include "apps/nomiractl/Plan.h"

namespace nomira::companion {

// Does with the plan what the options ask for: commits it as a run, saves it, or neither; the
// database has the changes in its transaction already. `before` are the rows ahead of them, and
// `input` the file that asks for them, if there is one; of "-" nothing is kept. Throws Refusal,
// also for more changes than are allowed.
void EndDatabaseRun(Plan& plan, const Rows& before, const std::filesystem::path& input,
                    const Options& options, const std::optional<Journal>& journal, Machine& machine,
                    DatabaseWork& database);

// The plan of a command that changes these items.
Plan PlanOnDatabase(const Options& options, const Machine& machine, std::vector<ItemChange> items);

// Whether the options want a look, or a saved plan, and no change.
bool OnlyLooks(const Options& options);

// The plan as the options want to see it: diff, JSON, or a line that tells the counts.
void ShowDatabaseRun(const Plan& plan, const Options& options, std::ostream& out);

}  // namespace nomira::companion
