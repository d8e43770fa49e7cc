#include "apps/nomiractl/RewriteRun.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <fmt/ostream.h>

#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>

#include "apps/nomiractl/Interrupt.h"
#include "apps/nomiractl/Words.h"
#include "apps/nomiractl/WriteJson.h"
#include "nativefiles/NativeFiles.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

void PrintFindings(const ProgramReport& report, std::ostream& err) {
    if (!report.failure.empty())
        fmt::print(err, "nomiractl: {}: {}\n", report.sName, report.failure);
    for (const LineFinding& finding : report.plan.refused)
        fmt::print(err, "nomiractl: {}:{}: warning: {}\n", report.sName, finding.nLine,
                   Shown(finding.sText));
    if (report.plan.stopped)
        fmt::print(err, "nomiractl: {}:{}: {}; the program was left as it is\n", report.sName,
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

nlohmann::ordered_json AsJson(const ProgramReport& report) {
    nlohmann::ordered_json file{{"file", report.sName}};
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
    return file;
}

}  // namespace

std::string ReadProgram(const fs::path& path) {
    try {
        return nativefiles::ReadAll(nativefiles::Open(path, O_RDONLY));
    } catch (const std::system_error& error) {
        if (error.code() == std::errc::is_a_directory)
            throw Refusal("is a directory", ExitCode::Files);
        if (error.code() == std::errc::no_such_file_or_directory)
            throw Refusal("there is no such file", ExitCode::Files);
        throw Refusal(fmt::format("can't be read: {}", error.code().message()), ExitCode::Files);
    }
}

ProgramReport RewriteRun::Look(const std::string& sName, const Read& read,
                               const Write& write) const {
    RequireNoInterrupt();
    ProgramReport report{sName, {}, {}, {}};
    try {
        const std::string sBytes = read();
        RewritePlan plan = PlanRewrite(sBytes, m_desktop);
        m_database.RequireNoFailure();
        report.plan = std::move(plan);
        if (m_options.bDiff) report.diff = UnifiedDiff(sName, sBytes, report.plan.changes);
        if (!report.plan.changes.empty() && WantsPlans()) write(report.plan, sBytes);
        std::string().swap(report.plan.sNewBytes);  // an assignment would keep the room
    } catch (const Refusal& refusal) {
        report.failure = refusal.what();
        report.exit = refusal.Exit();
    }
    return report;
}

void RewriteRun::AddFailure(const std::string& sName, const std::string& sWhy) {
    Take({sName, {}, sWhy, ExitCode::Refused});
}

void RewriteRun::Take(ProgramReport report) {
    m_streams.out << std::exchange(report.diff, {});
    m_reports.push_back(std::move(report));
    PrintFindings(m_reports.back(), m_streams.err);
}

void RewriteRun::PrintJson() const {
    const Totals totals = Count(m_reports);
    nlohmann::ordered_json json{
        {"written", ChangesPrograms()}, {"programs", totals.nPrograms},
        {"changed", totals.nChanged},   {"lines", totals.nLines},
        {"failed", totals.nFailed},     {"files", nlohmann::ordered_json::array()}};
    for (const ProgramReport& report : m_reports)
        json["files"].push_back(AsJson(report));
    WriteJson(m_streams.out, json);
}

void RewriteRun::PrintSummary() const {
    const Totals totals = Count(m_reports);
    fmt::print(m_streams.out, "{} programs, {} {} ({} lines), {} with errors\n", totals.nPrograms,
               totals.nChanged, ChangesPrograms() ? "changed" : "would change", totals.nLines,
               totals.nFailed);
}

ExitCode RewriteRun::Finish() const {
    if (m_options.bJson)
        PrintJson();
    else if (!m_options.bQuiet && !m_options.bDiff)
        PrintSummary();
    const Totals totals = Count(m_reports);
    const bool bWouldChange = m_options.bCheck && totals.nChanged > 0;
    ExitCode exit = bWouldChange ? ExitCode::Differs : ExitCode::Done;
    for (const ProgramReport& report : m_reports)
        exit = Graver(exit, report.plan.stopped ? ExitCode::Refused : report.exit);
    return exit;
}

}  // namespace nomira::companion
