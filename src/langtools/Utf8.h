// The program's 16-bit text as the UTF-8 that files and databases hold, and back.
#pragma once

#include <string>
#include <string_view>

#include "langtools/Text.h"

namespace nomira {

// A surrogate without its partner becomes the three bytes of its number, so that any text comes
// back from the store as it went in.
std::string ToUtf8(TextView sText);

// The inverse of ToUtf8. A byte that belongs to no character gives U+FFFD.
Text FromUtf8(std::string_view sBytes);

}  // namespace nomira
