// What a soft key of the pendant form starts. The handler has put the form's keys into their state
// for the action already. Passes let events through: an action can be ended, and options can be
// chosen, in the middle of it.
#pragma once

#include <cstdint>

#include "langtools/Text.h"

namespace nomira {

class StdBofForm;

// By the key's index: 0 views the database, 1 saves the view and compacts the database, 5 runs the
// conversion of the chosen option, 6 ends the program and doesn't come back; the other indexes have
// no action. The caller's name is not used. Failures of the passes go up; the form stays as the
// action has it then.
void RunSoftKeyAction(StdBofForm& form, std::int16_t nIndex, TextView sCallerName);

}  // namespace nomira
