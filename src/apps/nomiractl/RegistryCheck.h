// Looks through an export of a controller's registry and finds what the program would read
// otherwise than meant.
#pragma once

#include <filesystem>

#include "apps/nomiractl/Findings.h"
#include "apps/nomiractl/Machine.h"

namespace nomira::companion {

// `machine` reads its settings from the file from here on. Throws Refusal if it can't be read.
void CheckRegistry(const std::filesystem::path& file, Machine& machine, Findings& findings);

}  // namespace nomira::companion
