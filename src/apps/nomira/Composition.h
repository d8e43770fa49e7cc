// What the program is made of on a POSIX system, for its two executables: nomira, which links no
// toolkit, and nomira-window, which nomira becomes where a form is to be seen.
#pragma once

#include <functional>
#include <memory>
#include <span>

#include "adapters/posix/PosixMachine.h"
#include "adapters/rpc/RpcLinkLibrary.h"

namespace nomira {

// The parts that a front end has to do with. They stand until the program is at its end.
struct Parts {
    posix::PosixMachine& machine;
    rpc::RpcLinkLibrary& link;
};

// Puts a view onto the program (ui/formlayer/FormLayer.h) and its desktop into the platform, and
// gives what keeps both; empty if there is no display.
using MakeFrontEnd = std::function<std::shared_ptr<void>(const Parts& parts)>;

// Whether the command line ends up with a form: none is given, or it is a batch command.
bool WantsForm(std::span<const char* const> arguments);

// Runs the program with the arguments behind its name, and gives its exit status: 0, or 1 after a
// run-time error (shown in the run-time box), an unusable prefix, or a front end that has no window
// to show itself in (one line each on the error stream).
int RunNomira(std::span<const char* const> arguments, const MakeFrontEnd& makeFrontEnd);

}  // namespace nomira
