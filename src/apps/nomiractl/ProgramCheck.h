// Looks through a robot program as the rewriter would, and finds what would stop it and what it
// would do otherwise than meant.
#pragma once

#include <filesystem>
#include <string>

#include "apps/nomiractl/CollectingDesktop.h"
#include "apps/nomiractl/Findings.h"

namespace nomira::companion {

// `desktop` must be the platform's. Without a database (`bDatabase` false) only what needs no name
// is checked. Gives whether a number without a name was compared with that of an earlier program
// (EarlierName.h). Throws Refusal if the file can't be read.
bool CheckProgram(const std::filesystem::path& file, bool bDatabase, CollectingDesktop& desktop,
                  Findings& findings);

}  // namespace nomira::companion
