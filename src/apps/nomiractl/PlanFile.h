// Plans on the disk: those that the user saves, and those that the journal keeps of its runs.
//
// A file has one JSON object a line: first what the plan is, then a line for each input, item,
// program and note, and "end" with the number of lines before it, so that a file that was cut off
// is seen. Bytes that are no UTF-8 stand as {"bytes": "..."} with a character for each byte.
#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "apps/nomiractl/Plan.h"

namespace nomira::companion {

// What else the head of a file tells, in the order in which it is to stand.
using PlanHead = nlohmann::ordered_json;

struct PlanOnDisk {
    PlanHead head;
    Plan plan;
};

// `head` stands in the first line in front of what the plan itself tells.
void WritePlan(std::ostream& out, const PlanHead& head, const Plan& plan);

// Throws Refusal for a file that can't be read, is none of these, or is damaged.
PlanOnDisk ReadPlan(const std::filesystem::path& file);
// The first line alone, of a whole file.
PlanHead ReadPlanHead(const std::filesystem::path& file);

// What the first line tells of the plan itself.
void TakePlanHead(Plan& plan, const PlanHead& head);
PlanCounts CountsOf(const PlanHead& head);

}  // namespace nomira::companion
