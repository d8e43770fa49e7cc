// How many inputs, outputs, flags and so on the controller has.
#pragma once

namespace nomira {

// Reads the ten sizes of frame/ProgramVariables.h over g_Comm, which must hold a link (else
// ObjectNotSet is raised). A size that can't be read gets its usual value; but for g_nNumProcParam,
// which is left as it is. A size takes four digits of the answer, and 0 from one without digits.
// Parses with g_Parser.
void ReadSystemSizes();

}  // namespace nomira
