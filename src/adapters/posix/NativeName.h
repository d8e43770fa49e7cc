// Names of this system as Text and back: UTF-8.
//
// A file name here is a row of bytes and need not be UTF-8 (old programs leave names in Latin-1).
// A byte that is no UTF-8 becomes a lone low surrogate, U+DC80 to U+DCFF, and turns into the same
// byte on its way back, so that every file that is listed can also be opened.
#pragma once

#include <string>
#include <string_view>

#include "langtools/Text.h"

namespace nomira::posix {

Text FromNative(std::string_view bytes);
// Half of a surrogate pair that stands for no byte becomes U+FFFD.
std::string ToNative(TextView sText);

}  // namespace nomira::posix
