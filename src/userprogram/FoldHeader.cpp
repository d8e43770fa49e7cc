#include "userprogram/FoldHeader.h"

#include <algorithm>
#include <array>
#include <limits>
#include <type_traits>

#include "conversion/TextImport.h"
#include "database/adoModul.h"
#include "langtools/BasicText.h"
#include "langtools/CParser.h"
#include "langtools/CTools.h"
#include "langtools/Matches.h"
#include "langtools/ProgramState.h"
#include "langtools/RuntimeError.h"
#include "platform/Platform.h"
#include "userprogram/FoldObserver.h"

namespace nomira {

thread_local bool g_bLineChanged = false;

namespace {

const OnProgramReset g_reset([] { g_bLineChanged = false; });

// The module under which a lookup is tried again when the connection has failed.
constexpr TextView kFallbackModule = u"A10TP";

// One form of a fold header: when it applies, what finds its signal, and how it is worked.
struct FoldForm {
    using Routine = void (*)(const FoldForm&);
    TextView sPattern;  // on the line, trimmed and in upper case
    Routine work;
    FoldKind kind = FoldKind::Simple;
    TextView sKeyword = {};         // simple: the word ahead of the number; analogue: the search
    TextView sKeyPrefix = {};       // simple forms
    bool bSymbolOnly = false;       // simple: "12: symName" is a form too
    bool bAtPoint = false;          // simple: " AT POINT" may stand behind the name
    std::int16_t nAddedLength = 0;  // analogue: from the search to *start*
    TextView sEndMark = {};         // analogue
};

// One class of signals in a wait with several conditions.
struct WaitClass {
    TextView sKeyword;
    TextView sModule;
    TextView sKeyPrefix;
    bool bOwnWord;  // the first one must have a blank ahead of it
};

// In the order in which a line is searched. A cyclic flag's long text is the notice of its number.
// Without the blank, the first search for FLAG would stop inside CYCFLAG.
constexpr std::array kWaitClasses{
    WaitClass{u"IN", u"IO", u"IN_", false},
    WaitClass{u"OUT", u"IO", u"OUT_", false},
    WaitClass{u"CYCFLAG", u"Notice", u"NoticeText", false},
    WaitClass{u"TIMER", u"Timer", u"TimerText", false},
    WaitClass{u"FLAG", u"Flag", u"FlagText", true},
};

void RewriteSimple(const FoldForm& form);
void RewriteWait(const FoldForm& form);
void RewriteAnalogue(const FoldForm& form);

// The chain: the first pattern that matches decides. There is no blank behind OUT in the first
// one, so that a user's own fold that begins with these letters enters the simple form. A pulse
// names an output.
constexpr std::array kForms{
    FoldForm{.sPattern = u";FOLD OUT*",
             .work = RewriteSimple,
             .sKeyword = u"OUT",
             .sKeyPrefix = u"OUT_",
             .bSymbolOnly = true,
             .bAtPoint = true},
    FoldForm{.sPattern = u";FOLD WAIT FOR (*", .work = RewriteWait, .kind = FoldKind::Wait},
    FoldForm{u";FOLD PULSE*", RewriteSimple, FoldKind::Simple, u"PULSE", u"OUT_"},
    FoldForm{u";FOLD SYN OUT*", RewriteSimple, FoldKind::Simple, u"OUT", u"OUT_"},
    FoldForm{u";FOLD SYN PULSE*", RewriteSimple, FoldKind::Simple, u"PULSE", u"OUT_"},
    FoldForm{.sPattern = u";FOLD WAIT FOR IN*",
             .work = RewriteSimple,
             .sKeyword = u"IN",
             .sKeyPrefix = u"IN_",
             .bSymbolOnly = true},
    FoldForm{u";FOLD WAIT FOR OUT*", RewriteSimple, FoldKind::Simple, u"OUT", u"OUT_"},
    FoldForm{.sPattern = u";FOLD ANOUT ON *=*;*%VANOUT_DYN*:CHANNEL_*",
             .work = RewriteAnalogue,
             .kind = FoldKind::Analogue,
             .sKeyword = u"ANOUT ON",
             .nAddedLength = 8,
             .sEndMark = u"="},
    FoldForm{.sPattern = u";FOLD ANOUT OFF *;*%VANOUT_DYN*:CHANNEL_*",
             .work = RewriteAnalogue,
             .kind = FoldKind::Analogue,
             .sKeyword = u"ANOUT OFF ",
             .nAddedLength = 9,
             .sEndMark = u";"},
    FoldForm{.sPattern = u";FOLD ANOUT *=*;*%VANOUT_STAT*:CHANNEL_*",
             .work = RewriteAnalogue,
             .kind = FoldKind::Analogue,
             .sKeyword = u"ANOUT ",
             .nAddedLength = 5,
             .sEndMark = u"="},
};

// What a header's pattern has ahead of its first sign.
constexpr TextView LiteralPart(TextView sPattern) {
    return sPattern.substr(0, sPattern.find_first_of(kPatternSigns));
}

// In front of all patterns. What each has behind it, up to its first sign, tells most lines apart.
constexpr TextView kOpening = u";FOLD ";
constexpr auto kBeginnings = [] {
    std::array<TextView, kForms.size()> beginnings;
    for (std::size_t n = 0; n < kForms.size(); ++n)
        beginnings[n] = LiteralPart(kForms[n].sPattern).substr(kOpening.size());
    return beginnings;
}();
static_assert(std::all_of(kForms.begin(), kForms.end(), [](const FoldForm& form) {
    return LiteralPart(form.sPattern).starts_with(kOpening);
}));

template <typename Character>
constexpr char16_t UpperAscii(Character c) {
    const std::make_unsigned_t<Character> n = c;
    return n >= 'a' && n <= 'z' ? static_cast<char16_t>(n - 0x20) : n;
}

// Whether the line begins with the text, which is ASCII in upper case: no other character becomes
// ASCII in upper case.
template <typename Character>
bool BeginsWith(std::basic_string_view<Character> sLine, TextView sUpper) {
    if (sLine.size() < sUpper.size()) return false;
    for (std::size_t n = 0; n < sUpper.size(); ++n)
        if (UpperAscii(sLine[n]) != sUpper[n]) return false;
    return true;
}

// What stands behind the opening; empty if the line doesn't begin with it.
template <typename Character>
std::basic_string_view<Character> BehindOpening(std::basic_string_view<Character> sLine) {
    while (!sLine.empty() && sLine[0] == ' ')
        sLine.remove_prefix(1);
    if (!BeginsWith(sLine, kOpening)) return {};
    return sLine.substr(kOpening.size());
}

// The first form of the chain that matches the trimmed line; nullptr if none does.
const FoldForm* FormOf(TextView sTrimmed) {
    const TextView sBehind = BehindOpening(sTrimmed);
    for (std::size_t n = 0; n < kForms.size(); ++n) {
        if (!BeginsWith(sBehind, kBeginnings[n])) continue;
        const TextView sRest = kForms[n].sPattern.substr(kOpening.size() + kBeginnings[n].size());
        if (sRest == u"*" || Matches(UCase(sTrimmed), kForms[n].sPattern)) return &kForms[n];
    }
    return nullptr;
}

std::int16_t Position(std::int64_t nStart, TextView sWhat) {
    return ToInt16(InStrNoCase(nStart, g_sLine, sWhat));
}

// What stands at the signal's place, for now with its name.
void TakeSymbol(std::int16_t nStart, std::int16_t nStop) {
    g_vSymbol = Trim(Mid(g_sLine, nStart, nStop - nStart));
}

// Takes the name between the first two quotes out of g_vSymbol, which keeps the number. Gives the
// place of the first quote in the trimmed text; blanks ahead of the number are not counted in it,
// so that more than one of them cuts the line short when the name is replaced.
std::int16_t SplitQuotedSymbol() {
    const std::int16_t nQuote = ToInt16(InStr(g_vSymbol, u"'"));
    const std::int16_t nSecond = ToInt16(InStr(nQuote + 1, g_vSymbol, u"'"));
    g_vLongName = Mid(g_vSymbol, nQuote + 1, nSecond - nQuote - 1);
    g_vSymbol = Text(Trim(Left(g_vSymbol, nQuote - 1)));
    return nQuote;
}

void RewriteQuoted(TextView sModule, TextView sKeyPrefix, std::int16_t nStart, std::int16_t nStop) {
    const std::int16_t nQuote = SplitQuotedSymbol();
    if (!g_Tools().IsNum(g_vSymbol)) return;
    ReplaceQuotedName(sModule, Text(sKeyPrefix) + g_vSymbol, nStart, nStop, nQuote);
}

// "12: symName": there is no name in the line yet. g_vLongName is not read, so that the comparison
// sees the name of an earlier line; and the new name takes the place of the colon.
void RewriteSymbolOnly(TextView sKeyPrefix, std::int16_t nStart, std::int16_t nStop) {
    TheFoldObserver().SymbolOnlyFound();
    const std::int16_t nQuote = ToInt16(InStr(g_vSymbol, u":"));
    g_Parser().Parse(g_vSymbol, u":");
    const TextView sNumber = Trim(g_Parser().Token(1));
    if (!g_Tools().IsNum(sNumber)) return;
    const Text sKey = Text(sKeyPrefix).append(sNumber);
    ReplaceQuotedName(u"IO", sKey, nStart, nStop, nQuote);
}

void RewriteSimple(const FoldForm& form) {
    const std::int16_t nFound = Position(1, Text(form.sKeyword) + u" ");
    const std::int16_t nStart = ToInt16(nFound + std::ssize(form.sKeyword));
    std::int16_t nStop = Position(nStart + 1, u" State");
    TakeSymbol(nStart, nStop);
    if (Matches(g_vSymbol, u"*'*'")) {
        RewriteQuoted(u"IO", form.sKeyPrefix, nStart, nStop);
    } else if (form.bSymbolOnly && Matches(g_vSymbol, u"*symName")) {
        // The other simple forms look for ": symName" in the upper-case text, which never holds
        // it: their symbol-only lines stay as they are.
        RewriteSymbolOnly(form.sKeyPrefix, nStart, nStop);
    } else if (form.bAtPoint && Matches(g_vSymbol, u"*'*'*AT POINT")) {
        nStop = Position(nStart + 1, u" AT POINT");
        TakeSymbol(nStart, nStop);
        RewriteQuoted(u"IO", form.sKeyPrefix, nStart, nStop);
    }
}

std::int16_t FirstWaitCondition(const WaitClass& wait, TextView sWord) {
    if (!wait.bOwnWord) return Position(1, sWord);
    const std::int16_t nFound = Position(1, Text(u" ").append(sWord));
    return nFound == 0 ? nFound : Position(nFound, sWord);
}

// False only if the word can't stand in the visible part from there on: no part of a header comes
// later in it than in the line. A line with parts enough to overflow the parser must come to it.
bool StandsBehind(std::int16_t nStop, TextView sWord) {
    constexpr std::size_t kNeverOverflows = std::numeric_limits<std::int16_t>::max();
    return g_sLine.size() > kNeverOverflows || InStrNoCase(nStop, g_sLine, sWord) != 0;
}

void RewriteWaitClass(const WaitClass& wait) {
    const Text sWord = Text(wait.sKeyword) + u" ";
    std::int16_t nPlace = FirstWaitCondition(wait, sWord);
    while (nPlace > 0) {
        const std::int16_t nStart = ToInt16(nPlace + std::ssize(wait.sKeyword));
        const std::int16_t nStop = ToInt16(Position(nStart + 1, u"' ") + 1);
        if (nStop <= nStart) return;
        TakeSymbol(nStart, nStop);
        if (Matches(g_vSymbol, u"*'*'")) {
            RewriteQuoted(wait.sModule, wait.sKeyPrefix, nStart, nStop);
        }
        // The stop is that of the line before the replacement: with a name of another length the
        // search goes on a little before or behind the true place.
        nPlace = StandsBehind(nStop, sWord)
                     ? ToInt16(InStrNoCase(nStop, CutFoldComment(g_sLine), sWord))
                     : std::int16_t{0};
    }
}

void RewriteWait(const FoldForm&) {
    for (const WaitClass& wait : kWaitClasses)
        RewriteWaitClass(wait);
}

void RewriteAnalogue(const FoldForm& form) {
    const std::int16_t nStart = ToInt16(Position(1, form.sKeyword) + form.nAddedLength);
    const std::int16_t nMark = Position(nStart + 1, form.sEndMark);
    TakeSymbol(nStart, nMark);
    const Text sChannel = ReadAnoutChannel(u"CHANNEL_", nMark);
    ReplaceAnoutName(u"IO", u"ANOUT_" + sChannel, Text(g_vSymbol));
}

// The old name and the key are patterns here: a sign such as "*" in an old name is a wildcard.
bool IsCurrent(const FoldName& name, TextView sText) {
    return Matches(sText, name.sOldName) || Matches(sText, name.sKey);
}

NameOutcome DecideAnoutName(const FoldName& name, Text& sText) {
    if (!ReadLongText(sText, name.sModule, name.sKey)) return NameOutcome::NoDatabase;
    if (!g_Tools().IsValidTQLComment(sText)) return NameOutcome::Refused;
    if (IsCurrent(name, sText)) return NameOutcome::Current;
    return sText.empty() ? NameOutcome::NoText : NameOutcome::Written;
}

NameOutcome DecideQuotedName(const FoldName& name, Text& sText) {
    if (!ReadLongText(sText, name.sModule, name.sKey) &&
        !ReadLongText(sText, kFallbackModule, name.sKey))
        return NameOutcome::NoDatabase;
    if (!g_Tools().IsValidTQLComment(sText)) return NameOutcome::Refused;
    return IsCurrent(name, sText) ? NameOutcome::Current : NameOutcome::Written;
}

void ReportInvalidSign(TextView sKey, TextView sText) {
    Text sMessage = u"Invalid sign in database: \r\n";
    sMessage.append(sKey).append(u"  ").append(sText);
    TheDesktop().ShowMessageBox(sMessage, kApplicationTitle, BoxIcon::None);
}

}  // namespace

void RewriteFoldLine() {
    const FoldForm* form = FormOf(Trim(g_sLine));
    if (form == nullptr) return;  // most lines
    TheFoldObserver().HeaderFound(form->kind);
    form->work(*form);
}

bool MayBeFoldHeader(std::string_view bytes) {
    const std::string_view behind = BehindOpening(bytes);
    return std::any_of(kBeginnings.begin(), kBeginnings.end(),
                       [behind](TextView sBeginning) { return BeginsWith(behind, sBeginning); });
}

Text CutFoldComment(TextView sLine) {
    const std::int32_t nFold = InStr(sLine, u";");
    Text sVisible = nFold > 1 ? Text(Left(sLine, nFold)) : Text(u";");
    g_Parser().Parse(sLine, u";");
    const std::int16_t nParts = g_Parser().count();
    for (std::int32_t n = 1; n <= nParts; ++n) {  // wider, for there may be 32,767
        const Text& sToken = g_Parser().Token(static_cast<std::int16_t>(n));
        if (Trim(sToken).starts_with(u"%{")) break;
        sVisible.append(sToken).append(u";");
    }
    return sVisible;
}

Text ReadAnoutChannel(TextView sTag, std::int16_t nFrom) {
    const std::int16_t nStart = ToInt16(Position(nFrom, sTag) + std::ssize(sTag));
    const std::int16_t nEnd = Position(nStart + 1, u",");
    const TextView sChannel = Mid(g_sLine, nStart, nEnd - nStart);
    return g_Tools().IsNum(sChannel) ? Text(sChannel) : Text();
}

void ReplaceAnoutName(TextView sModule, TextView sKey, TextView sSymbol) {
    const std::size_t nFound = sSymbol.empty() ? Text::npos : g_sLine.find(sSymbol);
    const bool bFound = nFound != Text::npos;
    const FoldName name{sModule, sKey, sSymbol, bFound ? static_cast<std::int32_t>(nFound) + 1 : 0};
    TheFoldObserver().NameFound(name);
    Text sText;
    const NameOutcome outcome = DecideAnoutName(name, sText);
    if (outcome == NameOutcome::Written) {
        g_bLineChanged = true;
        if (bFound) g_sLine.replace(nFound, sSymbol.size(), sText);
    }
    TheFoldObserver().NameDecided(name, sText, outcome);
}

void ReplaceQuotedName(TextView sModule, TextView sKey, std::int16_t nStart, std::int16_t nStop,
                       std::int16_t nQuote) {
    const FoldName name{sModule, sKey, g_vLongName, nStart + nQuote};
    TheFoldObserver().NameFound(name);
    Text sText;
    const NameOutcome outcome = DecideQuotedName(name, sText);
    if (outcome == NameOutcome::Refused) ReportInvalidSign(sKey, sText);
    if (outcome == NameOutcome::Written) {
        g_bLineChanged = true;
        Text sNew(Left(g_sLine, nStart + nQuote - 1));
        sNew.append(u"'").append(sText).append(u"'").append(Mid(g_sLine, nStop));
        g_sLine = sNew;
    }
    TheFoldObserver().NameDecided(name, sText, outcome);
}

}  // namespace nomira
