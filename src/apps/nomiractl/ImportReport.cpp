#include "apps/nomiractl/ImportReport.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <numeric>

#include "apps/nomiractl/Words.h"

namespace nomira::companion {
namespace {

// A full disk fails for every line; these tell enough.
constexpr std::size_t kMostFailuresShown = 20;

struct ReasonWords {
    PassedOver reason;
    const char* sCode;  // in JSON; never changes
    const char* sWords;
};

constexpr ReasonWords kReasons[]{
    {PassedOver::Blank, "blank", "a blank line"},
    {PassedOver::UnknownKey, "unknown-key", "its first word is no key"},
    {PassedOver::TooManyDigits, "too-many-digits", "too many digits for its class"},
    {PassedOver::OtherForm, "other-form", "a key that this installation doesn't read"},
};

const ReasonWords& WordsOf(PassedOver reason) {
    return *std::find_if(std::begin(kReasons), std::end(kReasons),
                         [reason](const ReasonWords& words) { return words.reason == reason; });
}

std::int64_t CountReason(const ImportReport& report, PassedOver reason) {
    return std::count_if(report.passedOver.begin(), report.passedOver.end(),
                         [reason](const auto& line) { return line.reason == reason; });
}

void PrintClasses(const ImportReport& report, std::ostream& out) {
    constexpr const char* kRow = "{:<24}{:>8}{:>8}{:>9}{:>11}{:>9}\n";
    fmt::print(out, kRow, "class", "lines", "added", "changed", "unchanged", "removed");
    ClassChanges total;
    for (std::size_t n = 0; n < report.lines.size(); ++n) {
        const ClassChanges& c = report.changes[n];
        total.nAdded += c.nAdded;
        total.nChanged += c.nChanged;
        total.nUnchanged += c.nUnchanged;
        total.nRemoved += c.nRemoved;
        const bool bEmpty =
            report.lines[n] + c.nAdded + c.nChanged + c.nUnchanged + c.nRemoved == 0;
        if (n == kOtherKeys && bEmpty) continue;
        fmt::print(out, kRow, Utf8(ClassRowName(n)), report.lines[n], c.nAdded, c.nChanged,
                   c.nUnchanged, c.nRemoved);
    }
    fmt::print(out, kRow, "total", std::accumulate(report.lines.begin(), report.lines.end(), 0),
               total.nAdded, total.nChanged, total.nUnchanged, total.nRemoved);
}

void PrintPassedOver(const ImportReport& report, std::ostream& out) {
    const std::int64_t nBlank = CountReason(report, PassedOver::Blank);
    fmt::print(out, "\npassed over: {} lines, {} of them blank\n", report.passedOver.size(),
               nBlank);
    for (const ImportReport::PassedLine& line : report.passedOver)
        if (line.reason != PassedOver::Blank)
            fmt::print(out, "{}:{}: {}: {}\n", report.sFile, line.nLine,
                       WordsOf(line.reason).sWords, Shown(line.sLine));
}

// A standard installation's process parameters go in by their bare numbers, which no export
// writes.
void PrintNoteOnBareNumbers(const ImportReport& report, std::ostream& out) {
    if (report.lines[kOtherKeys] == 0) return;
    fmt::print(out,
               "\nnote: {} process parameters were stored under their bare numbers; an export of a"
               " standard installation doesn't write them\n",
               report.lines[kOtherKeys]);
}

void PrintHintAtOtherForm(const ImportReport& report, std::ostream& out) {
    const bool bStored = std::any_of(report.lines.begin(), report.lines.end(),
                                     [](int nLines) { return nLines > 0; });
    if (bStored || CountReason(report, PassedOver::OtherForm) == 0) return;
    fmt::print(out, "\nhint: the file has the keys of the other kind of installation; try {}\n",
               report.bCustomer ? "--customer \"\"" : "--customer VW");
}

}  // namespace

const char* ReasonCode(PassedOver reason) {
    return WordsOf(reason).sCode;
}

const char* ReasonInWords(PassedOver reason) {
    return WordsOf(reason).sWords;
}

std::string FailureReason(const ImportReport& report, StoreOutcome outcome) {
    if (outcome != StoreOutcome::NoMessage) return "the database refused the text";
    const std::string sReason =
        "the database has this key without a message, so that its text would be lost";
    return report.bOverwrite ? sReason : sReason + "; import with --overwrite to make it anew";
}

void PrintFailures(const ImportReport& report, std::ostream& err) {
    const std::size_t nShown = std::min(report.failed.size(), kMostFailuresShown);
    for (std::size_t n = 0; n < nShown; ++n) {
        const ImportReport::FailedLine& line = report.failed[n];
        fmt::print(err, "nomiractl: {}:{}: {}: {}\n", report.sFile, line.nLine, Shown(line.sKey),
                   FailureReason(report, line.outcome));
    }
    if (!report.failed.empty())
        fmt::print(err, "nomiractl: {} lines could not be stored; nothing was changed\n",
                   report.failed.size());
}

void PrintReport(const ImportReport& report, std::ostream& out) {
    fmt::print(out, "{} into {}, {} keys{}{}\n\n", report.sFile, report.sDatabase,
               report.bCustomer ? "customer" : "standard", report.bOverwrite ? ", overwrite" : "",
               report.bDryRun ? ", dry run: nothing is changed" : "");
    PrintClasses(report, out);
    PrintPassedOver(report, out);
    PrintNoteOnBareNumbers(report, out);
    PrintHintAtOtherForm(report, out);
}

nlohmann::ordered_json ReportAsJson(const ImportReport& report) {
    nlohmann::ordered_json json{{"file", report.sFile},
                                {"database", report.sDatabase},
                                {"keys", report.bCustomer ? "customer" : "standard"},
                                {"overwrite", report.bOverwrite},
                                {"dry_run", report.bDryRun},
                                {"done", report.failed.empty() && !report.bDryRun}};
    json["classes"] = nlohmann::ordered_json::array();
    for (std::size_t n = 0; n < report.lines.size(); ++n) {
        const ClassChanges& c = report.changes[n];
        json["classes"].push_back({{"class", Utf8(ClassRowName(n))},
                                   {"lines", report.lines[n]},
                                   {"added", c.nAdded},
                                   {"changed", c.nChanged},
                                   {"unchanged", c.nUnchanged},
                                   {"removed", c.nRemoved}});
    }
    json["passed_over"] = nlohmann::ordered_json::array();
    for (const ImportReport::PassedLine& line : report.passedOver)
        json["passed_over"].push_back({{"line", line.nLine},
                                       {"reason", ReasonCode(line.reason)},
                                       {"text", Utf8(line.sLine)}});
    json["failed"] = nlohmann::ordered_json::array();
    for (const ImportReport::FailedLine& line : report.failed)
        json["failed"].push_back({{"line", line.nLine},
                                  {"key", Utf8(line.sKey)},
                                  {"reason", FailureReason(report, line.outcome)}});
    return json;
}

}  // namespace nomira::companion
