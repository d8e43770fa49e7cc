// How the companion says no: in words for its user, with the file, the line and the remedy.
#pragma once

#include <stdexcept>
#include <string>

#include "apps/nomiractl/ExitCode.h"

namespace nomira::companion {

// Ends a command with the exit status; the words go to the error stream behind the program's name.
// The core's own failures stay RuntimeErrors.
class Refusal : public std::runtime_error {
  public:
    explicit Refusal(const std::string& sWords, ExitCode exit = ExitCode::Refused)
        : std::runtime_error(sWords), m_exit(exit) {}

    ExitCode Exit() const { return m_exit; }

  private:
    ExitCode m_exit;
};

}  // namespace nomira::companion
