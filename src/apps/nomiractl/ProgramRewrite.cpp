#include "apps/nomiractl/ProgramRewrite.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "conversion/TextImport.h"
#include "langtools/CParser.h"
#include "langtools/CodePage.h"
#include "langtools/RuntimeError.h"
#include "userprogram/FoldHeader.h"

namespace nomira::companion {
namespace {

ProgramLine CutLine(std::string_view bytes) {
    const std::size_t nReturn = bytes.find('\r');
    if (nReturn == std::string_view::npos) return {bytes, {}};
    const bool bLineFeed = bytes.substr(nReturn + 1, 1) == "\n";
    return {bytes.substr(0, nReturn), bytes.substr(nReturn, bLineFeed ? 2 : 1)};
}

// Leaves in g_sLine what the core makes of the line; false if that is the line itself.
bool Rewrites(const Text& sLine) {
    g_sLine = sLine;
    g_bLineChanged = false;
    RewriteFoldLine();
    return g_bLineChanged && g_sLine != sLine;
}

// The boxes that the line has shown become findings of it, also if it then ended the run.
void TakeRefused(RewritePlan& plan, std::int64_t nLine, CollectingDesktop& desktop) {
    for (Text& sBox : desktop.TakeBoxes())
        plan.refused.push_back({nLine, std::move(sBox)});
}

constexpr std::size_t kContext = 3;

// One block of a diff: lines nFrom up to nTo, zero-based, nTo excluded.
struct Hunk {
    std::size_t nFrom, nTo;
};

// Changes whose contexts touch share a block.
std::vector<Hunk> Hunks(const std::vector<LineChange>& changes, std::size_t nLines) {
    std::vector<Hunk> hunks;
    for (const LineChange& change : changes) {
        const auto nPlace = static_cast<std::size_t>(change.nLine - 1);
        const std::size_t nFrom = nPlace < kContext ? 0 : nPlace - kContext;
        const std::size_t nTo = std::min(nLines, nPlace + kContext + 1);
        if (!hunks.empty() && nFrom <= hunks.back().nTo) {
            hunks.back().nTo = nTo;
        } else {
            hunks.push_back({nFrom, nTo});
        }
    }
    return hunks;
}

void AppendHunk(std::string& diff, const Hunk& hunk, const std::vector<ProgramLine>& lines,
                std::vector<LineChange>::const_iterator& change,
                std::vector<LineChange>::const_iterator last) {
    const auto write = [&diff](char cMark, std::string_view body, std::string_view end) {
        fmt::format_to(std::back_inserter(diff), "{}{}{}\n", cMark, body,
                       end == "\r\n" ? "\r" : end);
    };
    const std::size_t nCount = hunk.nTo - hunk.nFrom;
    fmt::format_to(std::back_inserter(diff), "@@ -{0},{1} +{0},{1} @@\n", hunk.nFrom + 1, nCount);
    for (std::size_t n = hunk.nFrom; n < hunk.nTo; ++n) {
        if (change == last || static_cast<std::size_t>(change->nLine - 1) != n) {
            write(' ', lines[n].body, lines[n].end);
            continue;
        }
        write('-', change->sOld, lines[n].end);
        write('+', change->sNew, lines[n].end);
        ++change;
    }
}

}  // namespace

std::vector<ProgramLine> CutLines(std::string_view bytes) {
    std::vector<ProgramLine> lines;
    while (!bytes.empty()) {
        lines.push_back(CutLine(bytes));
        bytes.remove_prefix(lines.back().body.size() + lines.back().end.size());
    }
    return lines;
}

RewritePlan PlanRewrite(std::string_view bytes, CollectingDesktop& desktop, LookAt lookAt) {
    RewritePlan plan;
    const bool bQuick = lookAt == LookAt::Quick && SystemCodePage().IsPlain();
    std::int64_t nLine = 0;
    std::size_t nCopied = 0;  // of the old bytes into the new ones
    for (std::size_t nPlace = 0, nNext = 0; nPlace < bytes.size(); nPlace = nNext) {
        ++nLine;
        const ProgramLine line = CutLine(bytes.substr(nPlace));
        nNext = nPlace + line.body.size() + line.end.size();
        if (bQuick && !MayBeFoldHeader(line.body)) continue;
        const Text sOld = SystemCodePage().Decode(line.body);
        bool bChanges = false;
        try {
            bChanges = Rewrites(sOld);
        } catch (const RuntimeError& error) {
            g_Parser() = CParser();  // one that has overflowed stays so
            TakeRefused(plan, nLine, desktop);
            plan.stopped = LineFinding{nLine, error.Description()};
            plan.changes.clear();
            plan.sNewBytes.clear();
            return plan;
        }
        TakeRefused(plan, nLine, desktop);
        if (!bChanges) continue;
        plan.changes.push_back(
            {nLine, std::string(line.body), SystemCodePage().Encode(g_sLine), nPlace});
        plan.sNewBytes.append(bytes.substr(nCopied, nPlace - nCopied))
            .append(plan.changes.back().sNew);
        nCopied = nPlace + line.body.size();
    }
    if (!plan.changes.empty()) plan.sNewBytes.append(bytes.substr(nCopied));
    return plan;
}

std::vector<LineChange> LineChanges(std::string_view bytes,
                                    const std::vector<BytesChange>& pieces) {
    const std::vector<ProgramLine> lines = CutLines(bytes);
    std::vector<LineChange> changes;
    if (lines.empty()) return changes;
    auto line = lines.begin();
    std::size_t nPlace = 0;
    std::int64_t nLine = 1;
    for (const BytesChange& piece : pieces) {
        const auto nSize = [&] { return line->body.size() + line->end.size(); };
        for (; line + 1 != lines.end() && piece.nPlace >= nPlace + nSize(); ++line, ++nLine)
            nPlace += nSize();
        std::string sNew(line->body);
        sNew.replace(std::min(piece.nPlace - nPlace, sNew.size()), piece.sOld.size(), piece.sNew);
        changes.push_back({nLine, std::string(line->body), std::move(sNew), nPlace});
    }
    return changes;
}

std::string UnifiedDiff(std::string_view sName, std::string_view bytes,
                        const std::vector<LineChange>& changes) {
    std::string diff;
    if (changes.empty()) return diff;
    const std::vector<ProgramLine> lines = CutLines(bytes);
    fmt::format_to(std::back_inserter(diff), "--- a/{0}\n+++ b/{0}\n", sName);
    auto change = changes.cbegin();
    for (const Hunk& hunk : Hunks(changes, lines.size())) {
        AppendHunk(diff, hunk, lines, change, changes.cend());
    }
    return diff;
}

}  // namespace nomira::companion
