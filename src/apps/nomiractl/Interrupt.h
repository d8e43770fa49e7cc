// Ctrl-C and its like: a writing command stops at its next step, takes back what it has begun, and
// says so.
#pragma once

#include <stdexcept>
#include <string>

#include "apps/nomiractl/ExitCode.h"

namespace nomira::companion {

// Ends a command with ExitCode::Interrupted. The core traps run-time errors alone, so that this
// goes through its passes.
class Interruption : public std::runtime_error {
  public:
    Interruption() : std::runtime_error("interrupted; nothing was changed") {}
    explicit Interruption(const std::string& sWords) : std::runtime_error(sWords) {}
};

// While it lives, the first SIGINT, SIGTERM or SIGHUP is kept for RequireNoInterrupt; a second one
// ends the process as ever. Behind its life the first one changes nothing: what is done is done,
// and the exit status tells so. A signal that is ignored (nohup) stays so. A file that grows beyond
// what is allowed fails like a full disk, instead of ending the process. One at a time.
class InterruptWatch {
  public:
    InterruptWatch();
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;
};

// Throws Interruption if a signal has come since the watch began.
void RequireNoInterrupt();

}  // namespace nomira::companion
