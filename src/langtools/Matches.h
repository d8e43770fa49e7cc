// The pattern operator of the whole program.
#pragma once

#include "langtools/Text.h"

namespace nomira {

// The signs that don't stand for themselves in a pattern.
inline constexpr TextView kPatternSigns = u"*?#[";

// Whether the pattern covers the whole text. `*` is any run of characters, also none, `?` one
// character, `#` one digit (0 to 9), `[...]` one character out of a set, `[!...]` one character
// outside of it; every other character, a `]` outside a set too, stands for itself. Comparison is
// by character code.
//   Matches(u"IN_12 Pump", u"IN_##*") is true, Matches(u"IN_123", u"IN_##") is false.
//
// In a set, X-Y is a range by character code, empty if Y comes before X; a `-` first or last in
// the set stands for itself, and so does a `!` that is not first or is alone. The first `]` closes
// the set, and `[]` stands for no character at all.
//
// Raises InvalidPattern for a `[` that is not closed. The pattern is looked through first, so that
// this depends on the pattern alone and never on the text. The time is at most proportional to
// text times pattern.
bool Matches(TextView sText, TextView sPattern);

}  // namespace nomira
