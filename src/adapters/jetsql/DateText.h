// Access files keep a moment as days since the end of 1899, with the time of day as the fraction;
// SQLite's own functions understand text, "2004-06-05 13:06:59".
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace nomira::jetsql {

// "YYYY-MM-DD HH:MM:SS", with ".SSS" behind it for a moment that isn't a whole second. nullopt for
// what no such text can tell: outside the years 1 to 9999, or no number.
std::optional<std::string> TextOfDate(double nDays);
// The reverse; the time, or its seconds, may be missing, and "T" may stand for the blank. nullopt
// for anything else.
std::optional<double> DateOfText(std::string_view sText);

}  // namespace nomira::jetsql
