#include "apps/nomiractl/ProgramCheck.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <utility>

#include "apps/nomiractl/EarlierName.h"
#include "apps/nomiractl/NameCheck.h"
#include "apps/nomiractl/ProgramRewrite.h"
#include "apps/nomiractl/RewriteRun.h"
#include "apps/nomiractl/Words.h"
#include "conversion/KeyScheme.h"
#include "conversion/TextImport.h"
#include "langtools/BasicText.h"
#include "langtools/CParser.h"
#include "langtools/CodePage.h"
#include "langtools/Matches.h"
#include "langtools/RuntimeError.h"
#include "userprogram/FoldHeader.h"
#include "userprogram/FoldObserver.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostLines = 32'767;

// A name that the core has looked up in a line, and what it decided.
struct LookUp {
    Text sKey;
    Text sOldName;
    Text sText;
    std::int32_t nPlace;
    NameOutcome outcome;
    Text sLine;  // as it was when the name was found
};

// What the core tells of one line.
class HeaderWatch : public FoldObserver {
  public:
    HeaderWatch() { SetFoldObserver(this); }
    ~HeaderWatch() override { SetFoldObserver(nullptr); }
    HeaderWatch(const HeaderWatch&) = delete;
    HeaderWatch& operator=(const HeaderWatch&) = delete;

    void Clear() {
        bHeader = false;
        bSymbolOnly = false;
        lookUps.clear();
    }
    void HeaderFound(FoldKind found) override {
        bHeader = true;
        kind = found;
    }
    void SymbolOnlyFound() override {
        bSymbolOnly = true;
        bAskedForEarlierName = bAskedForEarlierName || IsNameUnknown();
    }
    void NameFound(const FoldName& name) override {
        lookUps.push_back({Text(name.sKey),
                           Text(name.sOldName),
                           {},
                           name.nPlace,
                           NameOutcome::NoDatabase,
                           g_sLine});
    }
    void NameDecided(const FoldName&, TextView sText, NameOutcome outcome) override {
        lookUps.back().sText = sText;
        lookUps.back().outcome = outcome;
    }

    bool bHeader = false;
    bool bSymbolOnly = false;
    bool bAskedForEarlierName = false;  // in any line
    FoldKind kind = FoldKind::Simple;
    std::vector<LookUp> lookUps;
};

bool IsWritable(const fs::path& path) {
    std::error_code error;
    const bool bOwner =
        (fs::status(path, error).permissions() & fs::perms::owner_write) != fs::perms::none;
    return bOwner && ::access(path.c_str(), W_OK) == 0;
}

class ProgramCheck {
  public:
    ProgramCheck(CollectingDesktop& desktop, Findings& findings)
        : m_desktop(desktop), m_findings(findings) {}

    void Run(const fs::path& path, const std::string& bytes) {
        const std::vector<ProgramLine> lines = CutLines(bytes);
        m_bLfOnly = lines.size() == 1 && lines[0].body.find('\n') != std::string_view::npos;
        g_bLineChanged = false;
        for (const ProgramLine& line : lines) {
            ++m_nLine;
            CheckLine(SystemCodePage().Decode(line.body));
        }
        if (!g_bLineChanged || m_bStopped) return;
        m_findings.File().bWritten = true;
        CheckWriting(path, lines);
    }

    bool HasAskedForEarlierName() const { return m_watch.bAskedForEarlierName; }

  private:
    void Add(Rule rule, std::int64_t nColumn, const std::vector<std::string>& words = {}) {
        m_findings.Add(rule, {m_nLine, nColumn}, m_sLine, words);
    }

    void CheckLine(const Text& sLine) {
        m_sLine = sLine;
        if (const std::size_t nFeed = sLine.find(u'\n'); nFeed != Text::npos)
            Add(m_bLfOnly ? Rule::ProgramLfOnly : Rule::ProgramLoneLf,
                static_cast<std::int64_t>(nFeed) + 1);
        m_watch.Clear();
        g_sLine = sLine;
        const bool bChangedSoFar = std::exchange(g_bLineChanged, false);
        try {
            RewriteFoldLine();
            CheckHeader(g_sLine);
        } catch (const RuntimeError& error) {
            AddStop(error);
        }
        m_desktop.TakeBoxes();
        g_bLineChanged = g_bLineChanged || bChangedSoFar;
    }

    void AddStop(const RuntimeError& error) {
        const std::int64_t nColumn = FirstColumn();
        if (error.Number() == ErrorNumber::InvalidPattern) {
            Add(Rule::ProgramOpenBracket, nColumn);
        } else if (error.Number() != ErrorNumber::InvalidProcedureCall) {
            Add(Rule::ProgramStops, nColumn,
                {std::to_string(static_cast<std::int32_t>(error.Number())),
                 Utf8(error.Description())});
        } else {
            Add(m_watch.kind == FoldKind::Analogue ? Rule::ProgramNoComma : Rule::ProgramNoState,
                nColumn);
        }
        g_Parser() = CParser();  // one that has overflowed stays so
        // The program's own run ends at the first of them.
        if (!m_bStopped)
            m_findings.Foretell({.nLine = m_nLine,
                                 .sWhat = "stops",
                                 .nError = static_cast<std::int32_t>(error.Number())});
        m_bStopped = true;
    }

    std::int64_t FirstColumn() const {
        return static_cast<std::int64_t>(
                   std::min(m_sLine.find_first_not_of(u' '), m_sLine.size())) +
               1;
    }

    void CheckHeader(const Text& sNew) {
        if (!m_watch.bHeader) return CheckOtherLine();
        CheckNamesSeen();
        for (const LookUp& lookUp : m_watch.lookUps)
            CheckLookUp(lookUp, sNew);
        if (sNew == m_sLine) return;
        if (!m_bStopped) m_findings.Foretell({.nLine = m_nLine, .sWhat = "changed", .sText = sNew});
        CheckSettled(sNew);
    }

    // A tab in front hides a header, as blanks don't.
    void CheckOtherLine() {
        if (!m_sLine.starts_with(u'\t') && !m_sLine.starts_with(u" ")) return;
        const std::size_t nFirst = m_sLine.find_first_not_of(u" \t");
        if (nFirst == Text::npos || m_sLine.substr(0, nFirst).find(u'\t') == Text::npos) return;
        if (Matches(UCase(TextView(m_sLine).substr(nFirst)), u";FOLD *"))
            Add(Rule::ProgramTabIndent, static_cast<std::int64_t>(nFirst) + 1);
    }

    // Names stand between quotes in the visible part of simple and wait headers.
    void CheckNamesSeen() {
        if (m_bLfOnly || m_watch.kind == FoldKind::Analogue || m_watch.bSymbolOnly) return;
        const Text sVisible = CutFoldComment(m_sLine);
        const auto nNames =
            static_cast<std::size_t>(std::count(sVisible.begin(), sVisible.end(), u'\'')) / 2;
        if (m_watch.lookUps.size() < nNames)
            Add(Rule::ProgramNameNotSeen, static_cast<std::int64_t>(sVisible.find(u'\'')) + 1,
                {std::to_string(nNames - m_watch.lookUps.size()), std::to_string(nNames)});
    }

    // Where the name stands in the file's line. Names that were replaced before it may have moved
    // it, but not its quote among the others.
    std::int64_t ColumnOf(const LookUp& lookUp) const {
        if (lookUp.sLine == m_sLine) return lookUp.nPlace;
        const auto nBefore =
            std::count(lookUp.sLine.begin(), lookUp.sLine.begin() + (lookUp.nPlace - 1), u'\'');
        std::size_t nQuote = m_sLine.find(u'\'');
        for (std::ptrdiff_t n = 0; n < nBefore && nQuote != Text::npos; ++n)
            nQuote = m_sLine.find(u'\'', nQuote + 1);
        return nQuote == Text::npos ? lookUp.nPlace : static_cast<std::int64_t>(nQuote) + 1;
    }

    void CheckLookUp(const LookUp& lookUp, const Text& sNew) {
        if (!ClassOfKey(lookUp.sKey))
            Add(Rule::ProgramNoNumber, ColumnOf(lookUp), {Shown(lookUp.sKey)});
        if (m_watch.kind == FoldKind::Wait) CheckCyclicFlag(lookUp);
        switch (lookUp.outcome) {
            case NameOutcome::NoDatabase:
            case NameOutcome::NoText:
                return;
            case NameOutcome::Refused:
                return CheckRefused(lookUp);
            case NameOutcome::Current:
                return CheckCurrent(lookUp);
            case NameOutcome::Written:
                return CheckWritten(lookUp, sNew);
        }
    }

    void CheckRefused(const LookUp& lookUp) {
        for (const NameFinding& flaw : FlawsOf(lookUp.sText))
            if (flaw.flaw == NameFlaw::RefusedSign)
                Add(Rule::ProgramRefusedSign, ColumnOf(lookUp), {Shown(lookUp.sKey), flaw.sSign});
    }

    void CheckCurrent(const LookUp& lookUp) {
        if (lookUp.sText == lookUp.sOldName || !Matches(lookUp.sText, lookUp.sOldName)) return;
        Add(Rule::ProgramWildcard, ColumnOf(lookUp), {Shown(lookUp.sOldName), Shown(lookUp.sText)});
    }

    void CheckWritten(const LookUp& lookUp, const Text& sNew) {
        if (lookUp.sText == kEmptyMarker)
            Add(Rule::ProgramMarker, ColumnOf(lookUp), {Shown(lookUp.sKey)});
        if (m_watch.kind == FoldKind::Analogue) return CheckAnalogue(lookUp);
        if (lookUp.sText.empty() && !m_watch.bSymbolOnly)
            Add(Rule::ProgramNameLost, ColumnOf(lookUp),
                {Shown(lookUp.sKey), Shown(lookUp.sOldName)});
        if (m_watch.bSymbolOnly)
            return Add(Rule::ProgramSymbolOnly, ColumnOf(lookUp), {Shown(sNew)});
        // A new quote takes the place of the old one, unless blanks have moved it.
        const auto nPlace = static_cast<std::size_t>(lookUp.nPlace) - 1;
        if (lookUp.sLine.substr(nPlace, 1) != u"'")
            Add(Rule::ProgramHeaderCut, ColumnOf(lookUp),
                {Shown(TextView(sNew).substr(0, nPlace + 1))});
    }

    void CheckAnalogue(const LookUp& lookUp) {
        if (lookUp.nPlace == 0) return Add(Rule::ProgramNothingToReplace, FirstColumn());
        const auto nPlace = static_cast<std::size_t>(lookUp.nPlace);
        // The name itself stands behind the header's words, where it is found once more.
        if (lookUp.sLine.find(lookUp.sOldName, nPlace) < lookUp.sLine.find(u';', nPlace))
            Add(Rule::ProgramNameElsewhere, ColumnOf(lookUp),
                {Shown(lookUp.sOldName), std::to_string(lookUp.nPlace)});
    }

    void CheckCyclicFlag(const LookUp& lookUp) {
        if (!lookUp.sKey.starts_with(u"FlagText")) return;
        const auto nQuote = static_cast<std::size_t>(lookUp.nPlace);
        const Text sBefore = UCase(TextView(lookUp.sLine).substr(0, nQuote));
        const std::size_t nWord = sBefore.rfind(u"FLAG ");
        if (nWord != Text::npos && nWord >= 3 && sBefore.substr(nWord - 3, 3) == u"CYC")
            Add(Rule::ProgramCyclicFlag, ColumnOf(lookUp), {Shown(lookUp.sKey)});
    }

    // Whether a second run leaves the changed line alone.
    void CheckSettled(const Text& sNew) {
        const Text sLongName = g_vLongName;
        SetFoldObserver(nullptr);
        try {
            g_sLine = sNew;
            g_bLineChanged = false;
            RewriteFoldLine();
            if (g_bLineChanged) Add(Rule::ProgramNotSettled, FirstColumn(), {Shown(Trim(g_sLine))});
        } catch (const RuntimeError& error) {
            Add(Rule::ProgramNotSettled, FirstColumn(), {Utf8(error.Description())});
        }
        SetFoldObserver(&m_watch);
        g_vLongName = sLongName;
        g_bLineChanged = true;
    }

    // ---- What the writing of a changed program would do ----

    void CheckWriting(const fs::path& path, const std::vector<ProgramLine>& lines) {
        const auto add = [this](Rule rule, const std::vector<std::string>& words = {}) {
            m_findings.Add(rule, {}, {}, words);
        };
        if (lines.size() > kMostLines) add(Rule::ProgramTooManyLines);
        if (!IsWritable(path)) {
            add(Rule::ProgramReadOnly);
            m_findings.File().bWritten = false;
        }
        const auto isOther = [](const ProgramLine& line) { return line.end != "\r\n"; };
        if (std::any_of(lines.begin(), lines.end(), isOther)) add(Rule::ProgramLineEnds);
        const auto holdsNoCharacter = [](const ProgramLine& line) {
            return SystemCodePage().Decode(line.body).find(kNoCharacter) != Text::npos;
        };
        if (std::any_of(lines.begin(), lines.end(), holdsNoCharacter))
            add(Rule::ProgramNoCharacter, {std::to_string(SystemCodePage().Number())});
    }

    CollectingDesktop& m_desktop;
    Findings& m_findings;
    HeaderWatch m_watch;
    std::int64_t m_nLine = 0;
    Text m_sLine;
    bool m_bLfOnly = false;
    bool m_bStopped = false;
};

}  // namespace

bool CheckProgram(const fs::path& file, bool bDatabase, CollectingDesktop& desktop,
                  Findings& findings) {
    const std::string bytes = ReadProgram(file);
    if (!bDatabase) findings.Add(Rule::ProgramNotCompared, {}, {});
    ProgramCheck check(desktop, findings);
    check.Run(file, bytes);
    return check.HasAskedForEarlierName();
}

}  // namespace nomira::companion
