// Looks through a text file of long names as the program would read it, and finds what it would
// silently do otherwise than meant.
#pragma once

#include <filesystem>
#include <string>

#include "apps/nomiractl/Findings.h"
#include "apps/nomiractl/TextSource.h"
#include "conversion/KeyScheme.h"

namespace nomira::companion {

// How many digits keys of the class have in a text file, as "timers have one or two digits".
std::string DigitSentence(const SignalClass& signalClass);

// The platform must be the installation's, and read `source` at the path; no database is needed.
void CheckTextFileLines(const std::filesystem::path& file, const TextSource& source,
                        Findings& findings);

}  // namespace nomira::companion
