// The process's entry routine: refuses a second instance, reads the settings, works out the
// language, and picks the front end. Nothing else in the program looks at the command line.
#pragma once

namespace nomira {

// Called once, when the machine (platform/Platform.h) and, for a batch run, the database engine
// stand. When it returns, a front end whose form is visible goes on from its view's message loop;
// with no form visible the process is at its end: a batch run is done, the command line was none
// for this program, or another instance runs already. The end is the same in all three cases,
// silent and without a result. A RuntimeError gets through and ends the process: the language in
// the registry is no hexadecimal number (TypeMismatch) or one of more than 32 bits (Overflow), or a
// pass has failed.
void Main();

}  // namespace nomira
