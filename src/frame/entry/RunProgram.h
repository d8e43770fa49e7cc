// The common top of every program that runs Main: what nobody has trapped ends here.
#pragma once

namespace nomira {

// Runs Main and then, with a form on the screen, the view's event loop, and returns the process's
// exit status: 0, also when the operator has ended the program in the middle of a pass, or 1 after
// a RuntimeError that got through, which the operator is shown in the run-time box (title
// kApplicationTitle, text "Run-time error 'N':", an empty line, the description). Any other
// exception passes. The program's own failures, such as wrong parameters or a file that can't be
// opened, are no errors here: they give 0.
int RunProgram();

}  // namespace nomira
