#include "userprogram/HarvestLine.h"

#include <algorithm>
#include <limits>

#include "conversion/TextImport.h"
#include "langtools/BasicText.h"
#include "langtools/Matches.h"
#include "langtools/RuntimeError.h"

namespace nomira {
namespace {

constexpr TextView kMarker = u";|";
constexpr std::int32_t kMarkerLength = 6;  // with the four characters behind it

constexpr TextView kSignalLinePatterns[] = {
    u"*=E[0-9]*",     u"*= E[0-9]*",    u"*=A[1-9]*",     u"*= A[1-9]*",   u"*=ANAE[1-9]*",
    u"*= ANAE[1-9]*", u"*=ANAA[1-9]*",  u"*= ANAA[1-9]*", u"*=BINE[1-9]*", u"*= BINE[1-9]*",
    u"*=BINA[1-9]*",  u"*= BINA[1-9]*", u"*=P[1-9]*",     u"*= P[1-9]*",
};

struct ClassPattern {
    TextView sPattern;
    TextView sClass;
};

constexpr ClassPattern kClassPatterns[] = {
    {u"E[0-9]*", u"E"},       {u"A[0-9]*", u"A"},       {u"ANAE[0-9]*", u"ANAE"},
    {u"ANAA[0-9]*", u"ANAA"}, {u"BINE[0-9]*", u"BINE"}, {u"BINA[0-9]*", u"BINA"},
    {u"M[0-9]*", u"M"},       {u"F[0-9]*", u"F"},       {u"I[0-9]*", u"I"},
    {u"T[0-9]*", u"T"},       {u"t[0-9]*", u"t"},       {u"S[0-9]*", u"S"},
    {u"P[0-9]*", u"P"},
};

struct NumberPattern {
    TextView sPattern;  // on the name in upper case
    std::int32_t nLetters;
};

constexpr NumberPattern kNumberPatterns[] = {
    {u"[A-E][0-9]*", 1},
    {u"[P][0-9]*", 1},
    {u"ANA[A-E][0-9]*", 4},
    {u"BIN[A-E][0-9]*", 4},
};

std::int32_t ToInt32(std::int64_t n) {
    if (n > std::numeric_limits<std::int32_t>::max()) Raise(ErrorNumber::Overflow);
    return static_cast<std::int32_t>(n);
}

}  // namespace

Text RewriteLine(TextView sLine) {
    const std::int32_t nMarker = InStr(sLine, kMarker);
    if (nMarker < 2) return Text(sLine);
    return Text(Left(sLine, nMarker - 1)).append(u"; ").append(Mid(sLine, nMarker + kMarkerLength));
}

bool IsSignalLine(TextView sLine) {
    return std::ranges::any_of(kSignalLinePatterns,
                               [&](TextView sPattern) { return Matches(sLine, sPattern); });
}

Text CutSignalName(Text& sLine) {
    const std::int32_t nEquals = InStr(sLine, u"=");
    if (nEquals == 0) return {};
    sLine.erase(0, static_cast<std::size_t>(nEquals));
    const std::int32_t nBackslash = InStr(sLine, u"\\");
    if (nBackslash == 0) return {};
    sLine = CollapseBlanks(NormalizeUmlauts(sLine));
    return Text(Trim(Left(sLine, nBackslash - 1)));
}

Text CutSymbol(TextView sLine) {
    const std::int32_t nEquals = InStr(sLine, u"=");
    return nEquals == 0 ? Text() : Text(Trim(Left(sLine, nEquals - 1)));
}

Text CutLongText(TextView sLine) {
    const std::int32_t nBackslash = InStr(sLine, u"\\");
    if (nBackslash == 0) return {};
    const TextView sLong = Trim(Mid(sLine, nBackslash + 1));
    return Text(sLong.starts_with(u';') ? Trim(Mid(sLong, 2)) : sLong);
}

TextView ClassifySignal(TextView sName) {
    for (const auto& [sPattern, sClass] : kClassPatterns) {
        if (Matches(Trim(sName), sPattern)) return sClass;
    }
    return {};
}

std::int32_t SignalNumber(TextView sName) {
    const Text sUpper = UCase(sName);
    for (const auto& [sPattern, nLetters] : kNumberPatterns) {
        if (Matches(sUpper, sPattern)) return ToInt32(Val(Mid(sName, nLetters + 1)));
    }
    return 0;
}

Text CollapseBlanks(TextView sText) {
    Text sCollapsed;
    for (const char16_t c : sText) {
        if (c != u' ' || !sCollapsed.ends_with(u' ')) sCollapsed += c;
    }
    return sCollapsed;
}

}  // namespace nomira
