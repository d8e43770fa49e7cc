// Fold headers: the comment lines ";FOLD ..." of a robot program that show an inline form, and in
// it the long name of a signal. The change of a line works on g_sLine and the shared state alone;
// it needs no file.
//
// Lines are seen by text patterns and one-based character positions; the robot language itself is
// not parsed. Searches in the line ignore case. A position has 16 bits: what is found behind
// character 32,767 raises Overflow; a longer line is fine as long as nothing is found there.
#pragma once

#include <cstdint>
#include <string_view>

#include "langtools/Text.h"

namespace nomira {

// Set when any line of the program in hand has changed; each thread's own, as g_sLine is.
extern thread_local bool g_bLineChanged;

// Applies the chain of fold patterns to g_sLine: the first that matches decides which names are
// looked up and replaced; a line that none matches stays. Raises InvalidProcedureCall for a header
// of a known form that lacks its end mark (" State", or the "," behind a channel), InvalidPattern
// if the name in the line has an unclosed "[", for the old name serves as a pattern.
void RewriteFoldLine();

// False only if RewriteFoldLine leaves a line of these bytes alone for sure, whatever stands in it:
// none of the forms begins like it. The bytes must be of a page whose IsPlain is true.
bool MayBeFoldHeader(std::string_view bytes);

// The line up to the end of its visible fold text: the hidden parameter part behind "%{" is gone.
Text CutFoldComment(TextView sLine);

// The number between the tag and the next ",", both searched from the position on; empty if it is
// no number. Raises InvalidProcedureCall if no "," follows.
Text ReadAnoutChannel(TextView sTag, std::int16_t nFrom);

// Puts the database's text for the key in the place of the old name `sSymbol` in g_sLine: its
// first occurrence, counted from the start of the line. A text that is refused, empty or current
// leaves the line alone, without a word.
void ReplaceAnoutName(TextView sModule, TextView sKey, TextView sSymbol);

// Puts the database's text for the key between quotes: the line keeps nStart + nQuote - 1
// characters, and goes on at nStop. A text that the controller would refuse shows a message box
// and leaves the line; so does, silently, one that is current (it matches g_vLongName as a
// pattern) or equals the key.
void ReplaceQuotedName(TextView sModule, TextView sKey, std::int16_t nStart, std::int16_t nStop,
                       std::int16_t nQuote);

}  // namespace nomira
