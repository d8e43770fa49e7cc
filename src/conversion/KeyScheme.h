// The signal classes and their keys: a class prefix followed directly by the signal's number in
// decimal digits, as in IN_17. Nothing normalises the number, so IN_007 and IN_7 are two keys.
// The database holds keys in standard form; the customer form exists only in text files and edited
// text of a customer installation.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "langtools/Text.h"

namespace nomira {

struct SignalClass {
    TextView sName;            // for people, as "digital input"
    TextView sPrefix;          // standard form
    TextView sCustomerPrefix;  // customer form; the same for the welding classes
    TextView sModule;
    std::int16_t* pSize;        // the class's size variable; nullptr: the constant kWeldingSize
    std::int16_t nDefaultSize;  // if the controller gives none
    int nMaxDigits;             // accepted from a text file, from 1 on
    bool bWelding;  // classes 12 to 14: exactly one digit, the "1" is part of the prefix

    std::int16_t Size() const;
};

inline constexpr std::int16_t kWeldingSize = 8;
inline constexpr std::size_t kSignalClassCount = 14;
// Of these the first eleven are signals, the others welding channels.
inline constexpr std::size_t kPlainClassCount = 11;
// The export takes up to this many digits for every class.
inline constexpr int kMaxExportDigits = 4;

// The classes in the program's fixed order, in which every loop over them runs.
const std::array<SignalClass, kSignalClassCount>& SignalClasses();

// The class whose standard prefix and digits (one to kMaxExportDigits) make up the whole key.
const SignalClass* ClassOfKey(TextView sKey);

// The text of an entry without a text. It keeps the entry, and never reaches a text file.
inline constexpr TextView kEmptyMarker = u"|EMPTY|";

// Fills the prefixes that apply to this installation: the customer's, or the standard ones. On a
// standard installation sProcParam is not touched: it stays as the caller had it, so that a
// caller's empty prefix makes the bare number a process parameter's key.
void GetKeyPrefixes(Text& sIn, Text& sOut, Text& sAnIn, Text& sAnOut, Text& sBinIn, Text& sBinOut,
                    Text& sNotice, Text& sCounter, Text& sFlag, Text& sTimer, Text& sProcParam,
                    bool* bCustomer = nullptr);

// The key or row with its prefix swapped and what follows trimmed; unchanged if it doesn't begin
// with the old prefix and a digit.
Text SwapKeyPrefix(TextView sLine, TextView sOldPrefix, TextView sNewPrefix);

}  // namespace nomira
