// The end of the program from within a handler: the operator leaves or closes the form, perhaps in
// the middle of a pass.
#pragma once

namespace nomira {

// Travels from EndProgram to the program's top, which ends the process without a word. No failure,
// so that whoever traps failures lets it through; files and connections close on its way.
struct ProgramEnd {};

[[noreturn]] inline void EndProgram() {
    throw ProgramEnd{};
}

}  // namespace nomira
