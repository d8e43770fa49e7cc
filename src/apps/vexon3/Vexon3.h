// The simulator of the controller's middleware, as a command line program.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace nomira::simulator {

enum class ExitCode { Done = 0, Failed = 1, WrongUsage = 2 };

// Runs with the arguments, the program's name left out, until SIGTERM or SIGINT comes. `out` takes
// help and state, `err` the complaints and, without --log, the log.
ExitCode RunVexon3(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

}  // namespace nomira::simulator
