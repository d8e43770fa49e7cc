#include "langtools/CTools.h"

#include <algorithm>

#include "langtools/Ascii.h"
#include "langtools/BasicText.h"
#include "langtools/CTQLKey.h"
#include "langtools/RuntimeError.h"

namespace nomira {
namespace {

constexpr TextView kDigits = u"0123456789";
constexpr TextView kNumberAlphabet = u"0123456789.+-,E";
// ä ö ü Ö Ä Ü µ ß § ^ *
constexpr TextView kRefusedInComments = u"\u00E4\u00F6\u00FC\u00D6\u00C4\u00DC\u00B5\u00DF\u00A7^*";
constexpr TextView kRefusedAscii = u"^*";

// The old scans count characters with 16 bits, from the length on.
void CheckLength(TextView sText) {
    ToInt16(static_cast<std::int64_t>(sText.size()));
}

bool Contains(TextView sCharacters, char16_t c) {
    return sCharacters.find(c) != TextView::npos;
}

// The first run of digits and signs, of at most `nMax` characters.
TextView FirstNumber(TextView sText, TextView sSigns, std::size_t nMax) {
    CheckLength(sText);
    const auto isPart = [sSigns](char16_t c) {
        return Contains(kDigits, c) || Contains(sSigns, c);
    };
    const auto begin = std::find_if(sText.begin(), sText.end(), isPart);
    const auto end = std::find_if_not(begin, sText.end(), isPart);
    return TextView(begin, end).substr(0, nMax);
}

// Lookups never fail: whatever goes wrong on the way is a miss.
template <typename Lookup>
bool MissOnFailure(Lookup lookup) noexcept {
    try {
        return lookup();
    } catch (...) {
        return false;
    }
}

}  // namespace

bool CTools::IsTQLOperator(TextView sz, std::int16_t* nType) const noexcept {
    return MissOnFailure([&] { return g_Key().IsTQLOperator(sz, nType); });
}

bool CTools::IsTQLToken(TextView sz, std::int16_t* nType) const noexcept {
    return MissOnFailure([&] { return g_Key().IsTQLToken(sz, nType); });
}

bool CTools::IsValidTQLComment(TextView sz) const {
    // Of ASCII no letter is among them, and none becomes one.
    const bool bAscii = AsciiLength(sz) == sz.size();
    return !(bAscii ? FindChrInStr(sz, kRefusedAscii)
                    : FindChrInStr(UCase(sz), kRefusedInComments));
}

bool CTools::Str2Long(TextView str, std::int32_t& nLong) const {
    constexpr std::size_t kMaxCharacters = 9;
    const TextView sNumber = FirstNumber(str, u"-+", kMaxCharacters);
    nLong = static_cast<std::int32_t>(Val(sNumber));
    return !sNumber.empty();
}

bool CTools::Str2Int(TextView str, std::int16_t& nInt) const {
    constexpr std::size_t kMaxCharacters = 4;
    const TextView sNumber = FirstNumber(str, u"-", kMaxCharacters);
    nInt = static_cast<std::int16_t>(Val(sNumber));
    return !sNumber.empty();
}

bool CTools::IsNum(TextView str) const {
    CheckLength(str);
    return std::all_of(str.begin(), str.end(),
                       [](char16_t c) { return Contains(kNumberAlphabet, UCase(c)); });
}

// To search from the start again after each hit would cost the square of the length. What stands
// ahead of a hit holds none itself, so that the next one can only end in the replacement or
// behind it: reading on there, with the replacement put back ahead of the rest, finds the same.
Text CTools::ReplaceAllSubStrings(TextView strline, TextView strOldSubString,
                                  TextView strNewSubString) const {
    const bool bNeverEnds = strNewSubString.find(strOldSubString) != TextView::npos;
    if (bNeverEnds || strOldSubString.empty()) return Text(strline);
    const std::size_t nFirstHit = strline.find(strOldSubString);
    if (nFirstHit == TextView::npos) return Text(strline);

    Text sDone(strline.substr(0, nFirstHit));
    Text sAhead(strline.rbegin(), strline.rend() - static_cast<std::ptrdiff_t>(nFirstHit));
    while (!sAhead.empty()) {
        sDone += sAhead.back();
        sAhead.pop_back();
        if (!sDone.ends_with(strOldSubString)) continue;
        sDone.resize(sDone.size() - strOldSubString.size());
        sAhead.append(strNewSubString.rbegin(), strNewSubString.rend());
    }
    return sDone;
}

Text CTools::ReplaceTabsWithSpace(TextView strline) const {
    return ReplaceAllSubStrings(strline, u"\t", u" ");
}

bool CTools::FindChrInStr(TextView strString, TextView strCharList) const {
    CheckLength(strString);
    return strString.find_first_of(strCharList) != TextView::npos;
}

Text CTools::RemoveFirstToken(TextView szLine, TextView szToken) const {
    if (!szLine.starts_with(szToken)) return Text(szLine);
    return Text(Trim(szLine.substr(szToken.size())));
}

Text CTools::RemoveLastToken(TextView szLine, TextView szToken) const {
    if (!szLine.ends_with(szToken)) return Text(szLine);
    return Text(Trim(szLine.substr(0, szLine.size() - szToken.size())));
}

CTools& g_Tools() {
    static CTools tools;
    return tools;
}

}  // namespace nomira
