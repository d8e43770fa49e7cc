// CTools: the string and number tools of the whole program. Stateless; none shows a message.
// Searches and comparisons are exact in case and a digit is one of 0 to 9. The scans of Str2Long,
// Str2Int, IsNum and FindChrInStr count with 16 bits and raise Overflow for a text of more than
// 32,767 characters.
#pragma once

#include <cstdint>

#include "langtools/Text.h"

namespace nomira {

class CTools {
  public:
    // Whether the text, upper-cased, is an operator or keyword of the robot language; *nType
    // takes its class and stays untouched on a miss. Never fail.
    bool IsTQLOperator(TextView sz, std::int16_t* nType = nullptr) const noexcept;
    bool IsTQLToken(TextView sz, std::int16_t* nType = nullptr) const noexcept;

    // Whether a long name may stand in a robot program's comment: it holds none of the eleven
    // characters that the controller refuses there (umlauts, the micro sign, the sharp s, the
    // section sign, "^", "*"), in either case.
    bool IsValidTQLComment(TextView sz) const;

    // The first number in the text: what stands ahead of it is skipped, at most nine characters
    // of digits and signs are taken, and their value goes to nLong (0 if they have none, as "-").
    // False, and 0, if the text holds neither digit nor sign.
    bool Str2Long(TextView str, std::int32_t& nLong) const;

    // The same with 16 bits, at most four characters, and "+" no part of a number.
    bool Str2Int(TextView str, std::int16_t& nInt) const;

    // Whether every character is one of those that numbers are made of: digits . + - , E e.
    // It tests the alphabet, not the form; an empty text passes.
    bool IsNum(TextView str) const;

    // Replaces every `strOldSubString`, searching from the start again after each hit, so that a
    // hit that arises from a join is replaced too. If `strNewSubString` contains
    // `strOldSubString`, or that is empty, the text comes back unchanged.
    Text ReplaceAllSubStrings(TextView strline, TextView strOldSubString,
                              TextView strNewSubString) const;

    // Each tab becomes one blank.
    Text ReplaceTabsWithSpace(TextView strline) const;

    // Whether any single character of `strCharList` occurs in `strString`.
    bool FindChrInStr(TextView strString, TextView strCharList) const;

    // The text less `szToken` at its start (or end), trimmed; the text unchanged, blanks
    // included, if it does not begin (or end) with it. No word boundary is looked for.
    Text RemoveFirstToken(TextView szLine, TextView szToken) const;
    Text RemoveLastToken(TextView szLine, TextView szToken) const;
};

// The one instance, made when first used.
CTools& g_Tools();

}  // namespace nomira
