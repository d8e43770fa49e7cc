// The old runtime's text functions, on which every module stands: one-based positions, exact
// comparison, 0 for a miss, and its failures for arguments out of range.
#pragma once

#include <algorithm>
#include <cstdint>

#include "langtools/Text.h"

namespace nomira {

// The first `nLength` characters, fewer if the text is shorter. Raises InvalidProcedureCall for
// a negative length.
TextView Left(TextView sText, std::int64_t nLength);

// The last `nLength` characters, fewer if the text is shorter; fails like Left.
TextView Right(TextView sText, std::int64_t nLength);

// From the one-based position `nStart` to the end; empty if that lies behind the end. Raises
// InvalidProcedureCall for a position below 1.
TextView Mid(TextView sText, std::int64_t nStart);
// The same, with at most `nLength` characters; a negative length fails like Left.
TextView Mid(TextView sText, std::int64_t nStart, std::int64_t nLength);

// One-based position of the first `sWhat` at or behind `nStart`, 0 if there is none or `nStart`
// lies behind the end. An empty `sWhat` is found at `nStart`, but never in an empty text. Raises
// InvalidProcedureCall for a position below 1.
std::int32_t InStr(std::int64_t nStart, TextView sText, TextView sWhat);
std::int32_t InStr(TextView sText, TextView sWhat);
// The same, letters compared without regard to case.
std::int32_t InStrNoCase(std::int64_t nStart, TextView sText, TextView sWhat);

// Blanks (U+0020) at both ends, at the left end, at the right end go; tabs and line ends stay.
TextView Trim(TextView sText);
TextView LTrim(TextView sText);
TextView RTrim(TextView sText);

// Upper and lower case, as a Western European system has it. The result never leaves the
// repertoire of the system's 8-bit code page: a letter whose counterpart is not in the page stays
// as it is (so the micro sign, U+00B5, stays itself), and so does the sharp s.
Text UCase(TextView sText);
Text LCase(TextView sText);
char16_t UCase(char16_t c);
char16_t LCase(char16_t c);

// Whether the two are equal: what == tells, but compared as memory rather than one by one.
inline bool Equal(TextView sLeft, TextView sRight) {
    return std::equal(sLeft.begin(), sLeft.end(), sRight.begin(), sRight.end());
}
// Whether the two are equal without regard to case.
bool EqualNoCase(TextView sLeft, TextView sRight);

// Every `sOld` replaced by `sNew`, from left to right, what was put in not looked at again.
Text Replace(TextView sText, TextView sOld, TextView sNew);

// The number at the start of the text: blanks are passed over, then one optional sign, then
// decimal digits as far as they go; 0 if there are none. No fraction, exponent or radix. Beyond
// 64 bits the result stays at the limit.
std::int64_t Val(TextView sText);

// The number in decimal, with "-" if negative and no blank in front.
Text DecimalText(std::int64_t n);

// The value of hexadecimal digits, as of a text headed by "&H": 32 bits, so that eight digits
// from 80000000 on give a negative number. Raises TypeMismatch if the text is empty or holds
// anything but hexadecimal digits, Overflow for more than 32 bits.
std::int32_t HexValue(TextView sDigits);

// Text of ASCII bytes, for literals that come from narrow strings.
Text FromAscii(std::string_view sAscii);

}  // namespace nomira
