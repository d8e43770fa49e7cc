// What an operation of the simulator refuses with, so that a test can compare it.
#pragma once

#include "apps/vexon3/OperationFailed.h"
#include "langtools/Text.h"

namespace nomira::testing {

// The message key of the failure's record; empty if the action comes back.
template <typename Action>
Text TroubleOf(Action action) {
    try {
        action();
        return {};
    } catch (const simulator::OperationFailed& failed) {
        return failed.Record().bstrDBMessage;
    }
}

}  // namespace nomira::testing
