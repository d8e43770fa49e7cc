#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseWork.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/ProgramRewrite.h"
#include "apps/nomiractl/ReplaceFile.h"
#include "apps/nomiractl/Words.h"
#include "langtools/BasicText.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

// What became of one program.
struct ProgramReport {
    fs::path path;
    RewritePlan plan;
    std::string failure;  // why it could not be read or written
    bool IsFine() const { return failure.empty() && !plan.stopped; }
};

bool IsProgram(const fs::directory_entry& entry) {
    const Text sExtension = FromAscii(entry.path().extension().string());
    return !entry.is_directory() && EqualNoCase(sExtension, u".src");
}

// The programs of a directory, sorted by name.
std::vector<fs::path> ProgramsOf(const fs::path& directory) {
    std::vector<fs::path> programs;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(directory, error)) {
        if (IsProgram(entry)) programs.push_back(entry.path());
    }
    if (error) throw Refusal(fmt::format("{}: {}", directory.string(), error.message()));
    std::sort(programs.begin(), programs.end());
    return programs;
}

std::vector<fs::path> NamedPrograms(const Options& options) {
    std::vector<fs::path> programs;
    for (const fs::path& path : options.programs) {
        if (!fs::is_directory(path)) {
            programs.push_back(path);
            continue;
        }
        for (fs::path& program : ProgramsOf(path))
            programs.push_back(std::move(program));
    }
    return programs;
}

std::string ReadProgram(const fs::path& path) {
    if (fs::is_directory(path)) throw Refusal("is a directory");
    std::ifstream file(path, std::ios::binary);
    std::ostringstream bytes;
    if (!file || !(bytes << file.rdbuf())) {
        if (fs::exists(path) && fs::is_empty(path)) return {};
        throw Refusal(fs::exists(path) ? "can't be read" : "there is no such file");
    }
    return bytes.str();
}

bool WritesFiles(const Options& options) {
    return !options.bDryRun && !options.bCheck;
}

ProgramReport RewriteOne(const fs::path& path, const Options& options, Machine& machine,
                         std::ostream& out) {
    ProgramReport report{path, {}, {}};
    try {
        const std::string bytes = ReadProgram(path);
        report.plan = PlanRewrite(bytes, machine.Boxes());
        if (options.bDiff) out << UnifiedDiff(path.string(), bytes, report.plan.changes);
        if (!report.plan.changes.empty() && WritesFiles(options))
            ReplaceFile(path, report.plan.sNewBytes);
    } catch (const Refusal& refusal) {
        report.failure = refusal.what();
    }
    return report;
}

void PrintFindings(const ProgramReport& report, std::ostream& err) {
    const std::string sPath = report.path.string();
    if (!report.failure.empty()) fmt::print(err, "nomiractl: {}: {}\n", sPath, report.failure);
    for (const LineFinding& finding : report.plan.refused)
        fmt::print(err, "nomiractl: {}:{}: warning: {}\n", sPath, finding.nLine,
                   Shown(finding.sText));
    if (report.plan.stopped)
        fmt::print(err, "nomiractl: {}:{}: {}; the program was left as it is\n", sPath,
                   report.plan.stopped->nLine, Shown(report.plan.stopped->sText));
}

struct Totals {
    std::size_t nPrograms = 0, nChanged = 0, nLines = 0, nFailed = 0;
};

Totals Count(const std::vector<ProgramReport>& reports) {
    Totals totals;
    totals.nPrograms = reports.size();
    for (const ProgramReport& report : reports) {
        totals.nChanged += report.plan.changes.empty() || !report.IsFine() ? 0 : 1;
        totals.nLines += report.IsFine() ? report.plan.changes.size() : 0;
        totals.nFailed += report.IsFine() ? 0 : 1;
    }
    return totals;
}

nlohmann::ordered_json AsJson(const std::vector<ProgramReport>& reports, const Options& options) {
    const Totals totals = Count(reports);
    nlohmann::ordered_json json{
        {"written", WritesFiles(options)}, {"programs", totals.nPrograms},
        {"changed", totals.nChanged},      {"lines", totals.nLines},
        {"failed", totals.nFailed},        {"files", nlohmann::ordered_json::array()}};
    for (const ProgramReport& report : reports) {
        nlohmann::ordered_json file{{"file", report.path.string()}};
        file["changed_lines"] = nlohmann::ordered_json::array();
        for (const LineChange& change : report.plan.changes)
            file["changed_lines"].push_back(change.nLine);
        file["refused"] = nlohmann::ordered_json::array();
        for (const LineFinding& finding : report.plan.refused)
            file["refused"].push_back({{"line", finding.nLine}, {"text", Utf8(finding.sText)}});
        if (report.plan.stopped)
            file["stopped"] = {{"line", report.plan.stopped->nLine},
                               {"reason", Utf8(report.plan.stopped->sText)}};
        if (!report.failure.empty()) file["failure"] = report.failure;
        json["files"].push_back(std::move(file));
    }
    return json;
}

void PrintSummary(const std::vector<ProgramReport>& reports, const Options& options,
                  std::ostream& out) {
    const Totals totals = Count(reports);
    fmt::print(out, "{} programs, {} {} ({} lines), {} with errors\n", totals.nPrograms,
               totals.nChanged, WritesFiles(options) ? "changed" : "would change", totals.nLines,
               totals.nFailed);
}

}  // namespace

ExitCode RewritePrograms(const Options& options, Streams streams) {
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    // A database that can't be read would look like one without names.
    DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Read);
    database.ReadItems();
    std::vector<ProgramReport> reports;
    for (const fs::path& path : NamedPrograms(options)) {
        reports.push_back(RewriteOne(path, options, machine, streams.out));
        PrintFindings(reports.back(), streams.err);
    }
    if (options.bJson)
        streams.out << AsJson(reports, options).dump(2) << '\n';
    else if (!options.bQuiet && !options.bDiff)
        PrintSummary(reports, options, streams.out);
    const Totals totals = Count(reports);
    const bool bWouldChange = options.bCheck && totals.nChanged > 0;
    return totals.nFailed > 0 || bWouldChange ? ExitCode::Refused : ExitCode::Done;
}

}  // namespace nomira::companion
