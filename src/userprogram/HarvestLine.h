// One line of a customer's file of signal assignments, such as
//
//   Greifer_zu = E12 \ ;Greifer geschlossen
//
// taken apart into the signal's name ("E12"), its class and number, its symbol and its comment.
// Pure text work without state; the file, the lists and the database are Customer2's.
#pragma once

#include <cstdint>

#include "langtools/Text.h"

namespace nomira {

// Drops the marker ";|" with the four characters behind it and puts "; " there. A line without
// the marker, or with it at the very start, stays as it is.
Text RewriteLine(TextView sLine);

// Whether some "=" of the line has a signal's name behind it, with one blank between them at
// most. Only the class E may have 0 as its first digit.
bool IsSignalLine(TextView sLine);

// The signal's name: what stands between the first "=" and the "\", trimmed; empty if either is
// missing. Leaves in sLine what stands behind the "=", umlauts and tabs normalised and runs of
// blanks collapsed; without a "\" it is left unfiltered, without a "=" untouched.
// The place of the "\" is that of the unfiltered line: where the filter changes the length of what
// stands ahead of it, the name is cut behind (or ahead of) the place it meant. " E12   \ ;x" gives
// "E12 \", which ClassifySignal and SignalNumber read correctly all the same.
Text CutSignalName(Text& sLine);

// What stands ahead of the first "=", trimmed; empty without one.
Text CutSymbol(TextView sLine);

// What stands behind the first "\", trimmed and without one ";" at its start; empty without a "\".
Text CutLongText(TextView sLine);

// The class letters of a signal's name: E, A, ANAE, ANAA, BINE, BINA, P, or one of M, F, I, T, t
// and S, which nothing fills; empty for any other name. Exact in case.
TextView ClassifySignal(TextView sName);

// The number behind the class letters (in either case), as far as its digits go; 0 for a name of
// another form. Raises Overflow for a number of more than 32 bits.
std::int32_t SignalNumber(TextView sName);

// Every run of blanks becomes a single one; a tab is no blank.
Text CollapseBlanks(TextView sText);

}  // namespace nomira
