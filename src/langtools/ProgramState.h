// Program-wide variables and their way back to the start values.
//
// A variable is declared in the header of the module that writes it and defined once in its
// source. The module also registers how its variables are reset, so that a test can begin where
// a fresh process begins.
#pragma once

namespace nomira {

// Registers a reset routine for the life of the program; meant for one static object per module.
struct OnProgramReset {
    explicit OnProgramReset(void (*reset)());
};

// Gives every registered module its start values again.
void ResetProgramState();

}  // namespace nomira
