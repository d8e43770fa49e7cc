// The keys that a command is asked for: single ones, ranges of numbers, classes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "conversion/KeyScheme.h"
#include "langtools/Text.h"

namespace nomira::companion {

// The short word for a class on the command line, as "in" or "flag"; by the class's place in
// SignalClasses().
const char* ClassWord(std::size_t nClass);

// The class that the user means by a short word, the class's name or its standard prefix, in any
// case. Throws Refusal (wrong usage) with the words that there are.
const SignalClass& ClassOfWord(const std::string& sWord);

// The number of a key of that class; the key must be one.
std::int64_t NumberOfKey(const SignalClass& signalClass, TextView sKey);

// A key of either form of installation in standard form; nullopt if it is none.
std::optional<Text> StandardKey(TextView sKey);

class KeySelection {
  public:
    // `keys`: IN_5, E5, IN_1..IN_40, IN_1..40, and bare numbers 5 or 1..40 for any class.
    // `classes`: words for ClassOfWord. Neither given selects all. Throws Refusal (wrong usage).
    KeySelection(const std::vector<std::string>& keys, const std::vector<std::string>& classes);

    bool Holds(TextView sModule, TextView sKey) const;

  private:
    struct Range {
        const SignalClass* pClass;  // nullptr: any
        std::int64_t nFrom, nTo;
    };

    void Add(const std::string& sWord);
    void AddRange(const std::string& sWord, std::size_t nDots);

    std::vector<Text> m_keys;
    std::vector<Range> m_ranges;
    std::vector<const SignalClass*> m_classes;
};

}  // namespace nomira::companion
