// What a plan looks like to people and to pipelines.
#pragma once

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "apps/nomiractl/Options.h"
#include "apps/nomiractl/Plan.h"

namespace nomira::companion {

// The words of the command line as one line.
std::string CommandLine(const Plan& plan);

// The changes: a line for each text of the database that goes ("-") or comes ("+"), and a unified
// diff for each program that can be read.
void PrintDiff(const Plan& plan, std::ostream& out);

// {"added": ..., "entries": [...], "programs": [...]}
nlohmann::ordered_json PlanAsJson(const Plan& plan);

// Saves the plan for `apply`, into a file that is written whole or not at all. Throws Refusal.
void SavePlan(const Plan& plan, const Options& options);

// The input as it is now. Throws Refusal.
PlanInput InputOf(const std::filesystem::path& file);

}  // namespace nomira::companion
