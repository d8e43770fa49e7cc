// Text and paths as the console and JSON have them.
#pragma once

#include <filesystem>
#include <string>

#include "langtools/Text.h"

namespace nomira::companion {

// UTF-8; what is no character (half a surrogate pair) becomes U+FFFD.
std::string Utf8(TextView sText);

// For one line on a terminal: UTF-8, control characters as "?", cut with "..." if it is long.
std::string Shown(TextView sText);

// The path as UTF-16 for the core, absolute. Throws Refusal for a path that can't be told to it:
// one that is no UTF-8, or holds a backslash, which separates folders there.
Text CorePath(const std::filesystem::path& path);

}  // namespace nomira::companion
