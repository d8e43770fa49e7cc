// The program's command line out of the arguments that the system has cut it into.
#pragma once

#include <span>

#include "langtools/CodePage.h"
#include "langtools/Text.h"

namespace nomira {

// The arguments behind the program's name, joined by one blank each. They are UTF-8; a byte that
// belongs to no character there is one of the 8-bit page, so that a script in that page works too.
Text JoinArguments(std::span<const char* const> arguments, const CodePage& page);

}  // namespace nomira
