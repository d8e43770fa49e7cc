// How many inputs, outputs, flags and so on the controller has.
#pragma once

#include <cstdint>
#include <vector>

#include "langtools/Text.h"

namespace nomira {

// Where a size came from: the controller's own answer, the usual size in its place, or neither, so
// that the variable is as it was.
enum class SizeSource { Told, Usual, Untouched };

struct SystemSize {
    TextView sVariable;  // what the controller is asked for
    std::int16_t nSize;
    SizeSource source;
};

// Reads the ten sizes of frame/ProgramVariables.h over g_Comm, which must hold a link (else
// ObjectNotSet is raised), and tells what became of each, in their order. A size that can't be read
// gets its usual value; but for g_nNumProcParam, which is left as it is. A size takes four digits
// of the answer, and 0 from one without digits. Parses with g_Parser.
std::vector<SystemSize> ReadSystemSizes();

}  // namespace nomira
