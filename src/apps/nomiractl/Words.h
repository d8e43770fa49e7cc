// Text and paths as the console and JSON have them.
#pragma once

#include <filesystem>
#include <string>

#include "langtools/Text.h"

namespace nomira::companion {

// What a code page gives for bytes that are no character of it.
inline constexpr char16_t kNoCharacter = 0xFFFD;

// UTF-8; what is no character (half a surrogate pair) becomes kNoCharacter.
std::string Utf8(TextView sText);

// For one line on a terminal: UTF-8, control characters as "?", cut with "..." if it is long.
std::string Shown(TextView sText);
// The same, whatever its length.
std::string ShownWhole(TextView sText);

// The path as the core has it, absolute. Throws Refusal for one with a backslash, which separates
// folders there.
Text CorePath(const std::filesystem::path& path);

}  // namespace nomira::companion
