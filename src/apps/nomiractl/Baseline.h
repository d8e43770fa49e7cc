// What is known already: findings of an earlier check that a later one doesn't show.
//
// A finding is known again by its rule, its file and what it is about (the line's text or the key),
// not by its line, so that lines may move. As many are hidden as the baseline holds.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include "apps/nomiractl/Findings.h"

namespace nomira::companion {

// The file's bytes, one finding a line so that a version control shows what has changed.
std::string BaselineOf(const Findings& findings);

// Takes the known findings out, and gives their number. Throws Refusal for a file that can't be
// read or is no baseline.
std::size_t HideKnown(const std::filesystem::path& baseline, Findings& findings);

}  // namespace nomira::companion
