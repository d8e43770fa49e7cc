// What is wrong with a long name, wherever it stands: signs that a program comment refuses, and
// those that an old name in a program gives another meaning.
#pragma once

#include <string>
#include <vector>

#include "apps/nomiractl/Rules.h"
#include "langtools/Text.h"

namespace nomira::companion {

enum class NameFlaw {
    RefusedSign,  // a program comment refuses it
    Apostrophe,
    OpenBracket,  // no valid pattern
    Wildcard,
    State,  // holds the word that ends a header's name
};

struct NameFinding {
    NameFlaw flaw;
    std::size_t nPlace;  // zero-based, in the name
    std::string sSign;   // for people
};

// One of each kind at most, with its first place.
std::vector<NameFinding> FlawsOf(TextView sName);

}  // namespace nomira::companion
