// File names as the old systems compare them: without regard to case, with the wildcards `*` and
// `?`. One home for the rules that every adapter of Files must agree on.
#pragma once

#include <cstdint>

#include "langtools/Text.h"

namespace nomira {

// Whether the name holds a wildcard, `*` or `?`.
bool HasWildcards(TextView sName);

// Whether a file's name (no directory) matches the pattern: `*` stands for any characters or none,
// `?` for one character, every other character for itself without regard to case. The pattern
// "*.*" matches every name, also one without a dot, as the old systems read it.
bool MatchesFileName(TextView sName, TextView sPattern);

// Whether `Dir` counts an entry: it does unless the entry is hidden, of the system or a directory
// and `nAsked` lacks that bit.
bool CountsInDir(std::uint16_t nEntryAttributes, std::uint16_t nAsked);

// Whether `sLeft` comes before `sRight` in a listing: case is ignored, and decides only between
// names that are else equal.
bool ComesBeforeInListing(TextView sLeft, TextView sRight);

// Whether no file can have this name: it is empty, or holds a control character or one of
// `< > " |` and the wildcards.
bool CannotBeFileName(TextView sName);

}  // namespace nomira
