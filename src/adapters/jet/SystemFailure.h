// The one translator of the system's failures into the library's own.
#pragma once

#include <system_error>

#include "adapters/jet/Failure.h"

namespace nomira::jet {

// Runs the system's part of a routine; what the system refuses is raised as InputOutput.
template <class Call>
auto Translated(const Call& call) {
    try {
        return call();
    } catch (const std::system_error& error) {
        Fail(FailureKind::InputOutput, error.code().message());
    }
}

}  // namespace nomira::jet
