// Stands in for the closed library: a command of the user's that tells the controller's side.
#pragma once

#include <string>

#include "platform/ClosedLibrary.h"

namespace nomira::posix {

class HookClosedLibrary : public ClosedLibrary {
  public:
    // `sCommand` is for /bin/sh; an empty one does nothing.
    explicit HookClosedLibrary(std::string sCommand);

    // Runs the command and waits for its end. Its success isn't asked for, as the library has no
    // result either.
    void RefreshConfDb() override;

  private:
    std::string m_sCommand;
};

}  // namespace nomira::posix
