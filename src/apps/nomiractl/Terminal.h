// Whether a stream ends on a terminal, and what fits there.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>

namespace nomira::companion {

// True for the process's standard output or error stream on a terminal, false for every other.
bool IsTerminal(const std::ostream& out);

// Columns of the terminal that such a stream ends on; 80 if it doesn't tell.
std::size_t TerminalWidth(const std::ostream& out);

// The first characters of a UTF-8 text, with "..." in the place of what doesn't fit.
std::string CutToWidth(std::string_view sText, std::size_t nWidth);

}  // namespace nomira::companion
