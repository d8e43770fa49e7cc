// Looks through a message database and finds what an export, an import or a rewrite would silently
// lose or change.
#pragma once

#include "apps/nomiractl/DatabaseWork.h"
#include "apps/nomiractl/Findings.h"

namespace nomira::companion {

// The database must be the one that the core's path means. Throws Refusal if it can't be read.
void CheckNames(DatabaseWork& database, Findings& findings);

}  // namespace nomira::companion
