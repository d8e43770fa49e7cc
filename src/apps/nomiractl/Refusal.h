// How the companion says no: in words for its user, with the file, the line and the remedy.
#pragma once

#include <stdexcept>

namespace nomira::companion {

// Ends a command with ExitCode::Refused; the words go to the error stream behind the program's
// name. The core's own failures stay RuntimeErrors.
class Refusal : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The process's exit status, as the help tells it. Pipelines rely on the numbers.
enum class ExitCode {
    Done = 0,
    Refused = 1,     // something failed; nothing was changed
    WrongUsage = 2,  // the arguments make no command
};

}  // namespace nomira::companion
