#include "apps/nomiractl/Plan.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

#include "apps/nomiractl/Refusal.h"
#include "database/adoModul.h"

namespace nomira::companion {
namespace {

using Name = std::pair<Text, Text>;

std::vector<std::optional<Text>> LongTextsOf(const ItemRow& row) {
    std::vector<std::optional<Text>> texts;
    for (const MessageRow& message : row.messages)
        if (message.nLanguage == kLongTextLanguage) texts.push_back(message.sText);
    return texts;
}

void Collect(std::map<Name, NameChange>& names, const std::optional<ItemRow>& row,
             std::int64_t nLine,
             std::optional<std::vector<std::optional<Text>>> NameChange::*side) {
    if (!row) return;
    const Name name{row->sModule.value_or(Text()), row->sKey.value_or(Text())};
    NameChange& change =
        names.try_emplace(name, NameChange{name.first, name.second, {}, {}, 0}).first->second;
    if (!(change.*side)) (change.*side).emplace();
    const std::vector<std::optional<Text>> texts = LongTextsOf(*row);
    (change.*side)->insert((change.*side)->end(), texts.begin(), texts.end());
    change.nLine = std::max(change.nLine, nLine);
}

ProgramChange Inverse(const ProgramChange& change) {
    ProgramChange inverse{change.file, change.after, change.before, {}, {}};
    std::size_t nGrown = 0;  // may wrap around, as the sums below do
    for (const BytesChange& piece : change.pieces) {
        inverse.pieces.push_back({piece.nLine, piece.nPlace + nGrown, piece.sNew, piece.sOld});
        nGrown += piece.sNew.size() - piece.sOld.size();
    }
    return inverse;
}

[[noreturn]] void RefuseChanged(const ProgramChange& change) {
    throw Refusal(
        fmt::format("{}: has changed meanwhile; nothing was changed", change.file.string()));
}

}  // namespace

std::vector<NameChange> NameChanges(const std::vector<ItemChange>& items) {
    std::map<Name, NameChange> names;
    for (const ItemChange& item : items) {
        Collect(names, item.before, item.nLine, &NameChange::before);
        Collect(names, item.after, item.nLine, &NameChange::after);
    }
    std::vector<NameChange> changes;
    for (auto& [name, change] : names)
        if (change.before != change.after) changes.push_back(std::move(change));
    return changes;
}

void TakeLines(Plan& plan, const std::string& sFile,
               const std::map<Name, std::int64_t>& lineOfName) {
    for (ItemChange& item : plan.items) {
        const ItemRow& row = item.after ? *item.after : *item.before;
        const auto place =
            lineOfName.find({row.sModule.value_or(Text()), row.sKey.value_or(Text())});
        if (place != lineOfName.end()) item.nLine = place->second;
    }
    std::set<Name> changed;
    for (const NameChange& change : NameChanges(plan.items))
        changed.emplace(change.sModule, change.sKey);
    for (const auto& [name, nLine] : lineOfName)
        if (!changed.contains(name)) plan.notes.push_back({sFile, nLine, "unchanged", name.second});
}

PlanCounts Count(const Plan& plan) {
    PlanCounts counts;
    for (const NameChange& change : NameChanges(plan.items)) {
        if (!change.before)
            ++counts.nAdded;
        else
            ++(change.after ? counts.nChanged : counts.nRemoved);
    }
    counts.nPrograms = plan.programs.size();
    for (const ProgramChange& program : plan.programs)
        counts.nLines += program.pieces.size();
    return counts;
}

std::string InWords(const PlanCounts& counts) {
    std::string sWords;
    const auto add = [&](std::size_t nCount, const char* sWhat) {
        if (nCount > 0) sWords += fmt::format("{}{} {}", sWords.empty() ? "" : ", ", nCount, sWhat);
    };
    add(counts.nAdded, "added");
    add(counts.nChanged, "changed");
    add(counts.nRemoved, "removed");
    if (counts.nPrograms > 0)
        sWords += fmt::format("{}{} {} ({} {})", sWords.empty() ? "" : ", ", counts.nPrograms,
                              counts.nPrograms == 1 ? "program" : "programs", counts.nLines,
                              counts.nLines == 1 ? "line" : "lines");
    return sWords.empty() ? "nothing" : sWords;
}

Plan Inverse(const Plan& plan) {
    Plan inverse;
    inverse.database = plan.database;
    for (const ItemChange& item : plan.items)
        inverse.items.push_back({item.after, item.before, 0});
    for (const ProgramChange& program : plan.programs)
        inverse.programs.push_back(Inverse(program));
    return inverse;
}

std::string Changed(const ProgramChange& change, std::string_view bytes) {
    if (FingerprintOf(bytes) != change.before) RefuseChanged(change);
    std::string sNew;
    std::size_t nDone = 0;
    for (const BytesChange& piece : change.pieces) {
        if (piece.nPlace < nDone || piece.nPlace > bytes.size() ||
            bytes.substr(piece.nPlace, piece.sOld.size()) != piece.sOld)
            RefuseChanged(change);
        sNew.append(bytes.substr(nDone, piece.nPlace - nDone)).append(piece.sNew);
        nDone = piece.nPlace + piece.sOld.size();
    }
    sNew.append(bytes.substr(nDone));
    if (FingerprintOf(sNew) != change.after) RefuseChanged(change);
    return sNew;
}

void RequireAtMost(const Plan& plan, std::optional<std::size_t> nMost) {
    const std::size_t nAll = Count(plan).All();
    if (nMost && nAll > *nMost)
        throw Refusal(
            fmt::format("{} changes, and --max-changes allows {}; nothing was changed"
                        " (look at them with --dry-run --diff)",
                        nAll, *nMost));
}

}  // namespace nomira::companion
