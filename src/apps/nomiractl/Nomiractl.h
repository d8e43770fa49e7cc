// The console companion: reports, dry runs and clear words over the same core as nomira.
#pragma once

#include <iostream>
#include <string>
#include <vector>

#include "apps/nomiractl/Refusal.h"

namespace nomira::companion {

// Runs one command. `args` are the arguments behind the program's name; results go to `out`,
// everything else to `err`; a file "-" is read from `in`. For the length of the call the process's
// platform, database engine and program-wide variables are the command's.
ExitCode RunNomiractl(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                      std::istream& in = std::cin);

}  // namespace nomira::companion
