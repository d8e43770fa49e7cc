// Runs of plans: with the journal around them, so that each is done or not done, whatever happens.
#pragma once

#include <optional>
#include <ostream>

#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseWork.h"
#include "apps/nomiractl/Journal.h"

namespace nomira::companion {

// The folder of the journal for these options.
std::filesystem::path JournalFolder(const Options& options);

// The journal of the options' prefix. A run that a killed command has left is finished first if all
// of it was done, and taken back otherwise, with a word to `err`. Not while a Machine lives.
Journal OpenJournal(const Options& options, std::ostream& err);

// The same for a command that changes something with these options, and none for one that only
// looks or saves a plan.
std::optional<Journal> JournalFor(const Options& options, std::ostream& err);

// The way that the options ask for, or the usual one.
AtomicWay WayOf(const Options& options);

// Changes the plan's programs, as one run; nothing happens for a plan without any. Throws Refusal
// or Interruption, and every program is as it was then.
void RunOnPrograms(Plan& plan, const Journal& journal, AtomicWay way);

// Commits what was changed in the database, as one run; for a plan without changes it is rolled
// back instead, so that the file stays as it is. False then.
bool CommitRun(const Plan& plan, const Journal& journal, DatabaseWork& database);

// Applies a plan that was made elsewhere, as one run: to its programs, or to its database, if they
// are as the plan had them; without a journal, as for a dry run, it only looks whether they are.
// Not while a Machine lives. Throws as above.
void RunPlan(Plan& plan, const Journal* journal, const Options& options, std::ostream& err);

}  // namespace nomira::companion
