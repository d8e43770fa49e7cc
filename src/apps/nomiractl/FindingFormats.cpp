#include "apps/nomiractl/FindingFormats.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>

#include "adapters/posix/NativeName.h"
#include "apps/nomiractl/Words.h"
#include "apps/nomiractl/WriteJson.h"

namespace nomira::companion {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kColours[]{"\x1b[36m", "\x1b[33m", "\x1b[31m"};  // by severity
constexpr const char* kPlain = "\x1b[0m";

// A file's name as JSON and XML take it, for it may hold bytes that are no UTF-8.
std::string Valid(const std::string& sName) {
    return Utf8(posix::FromNative(sName));
}

std::string PlaceWords(const Finding& finding) {
    std::string sWords = finding.sFile;
    if (finding.place.nLine > 0) sWords += fmt::format(":{}", finding.place.nLine);
    if (finding.place.nColumn > 0) sWords += fmt::format(":{}", finding.place.nColumn);
    return sWords;
}

std::array<std::size_t, 3> CountBySeverity(const Findings& findings) {
    std::array<std::size_t, 3> counts{};
    for (const Finding& finding : findings.All())
        ++counts[static_cast<std::size_t>(RowOf(finding.rule).severity)];
    return counts;
}

std::string Counted(std::size_t nCount, std::string_view sWhat) {
    return fmt::format("{} {}{}", nCount, sWhat, nCount == 1 ? "" : "s");
}

Json AsJson(const Finding& finding) {
    return {
        {"rule", RowOf(finding.rule).sId}, {"severity", SeverityName(RowOf(finding.rule).severity)},
        {"file", Valid(finding.sFile)},    {"line", finding.place.nLine},
        {"column", finding.place.nColumn}, {"message", finding.sSentence},
        {"subject", finding.sSubject}};
}

Json AsJson(const LineFate& fate) {
    Json json{{"line", fate.nLine}, {"action", fate.sWhat}};
    if (fate.sKey) json["key"] = Utf8(*fate.sKey);
    if (fate.sModule) json["module"] = Utf8(*fate.sModule);
    if (fate.sText) json["text"] = Utf8(*fate.sText);
    if (fate.nError) json["error"] = *fate.nError;
    return json;
}

Json AsJson(const CheckedFile& file, bool bPredict) {
    Json json{{"file", Valid(file.sFile)}, {"kind", file.sKind}};
    if (!bPredict) return json;
    json["wipes"] = file.wipes;
    json["written"] = file.bWritten;
    json["lines"] = Json::array();
    for (const LineFate& fate : file.fates)
        json["lines"].push_back(AsJson(fate));
    return json;
}

// ---- SARIF ----

const char* SarifLevel(Severity severity) {
    return SeverityName(severity);  // the same words
}

// A path as a URI reference: everything but letters, digits and a few marks as %XX.
std::string UriOf(const std::string& sPath) {
    std::string sUri;
    for (const char c : sPath) {
        const bool bPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                            (c >= '0' && c <= '9') ||
                            std::string_view("-._~/").find(c) != std::string_view::npos;
        sUri += bPlain
                    ? std::string(1, c)
                    : fmt::format("%{:02X}", static_cast<unsigned>(static_cast<unsigned char>(c)));
    }
    return std::filesystem::path(sPath).is_absolute() ? "file://" + sUri : sUri;
}

Json SarifRule(const RuleRow& row) {
    return {{"id", row.sId},
            {"shortDescription", {{"text", row.sSentence}}},
            {"fullDescription", {{"text", row.sWhy}}},
            {"defaultConfiguration", {{"level", SarifLevel(row.severity)}}}};
}

Json SarifResult(const Finding& finding, std::size_t nRule) {
    Json location{{"artifactLocation", {{"uri", UriOf(finding.sFile)}}}};
    if (finding.place.nLine > 0) {
        location["region"] = {{"startLine", finding.place.nLine}};
        if (finding.place.nColumn > 0) location["region"]["startColumn"] = finding.place.nColumn;
    }
    return {{"ruleId", RowOf(finding.rule).sId},
            {"ruleIndex", nRule},
            {"level", SarifLevel(RowOf(finding.rule).severity)},
            {"message", {{"text", finding.sSentence}}},
            {"locations", Json::array({{{"physicalLocation", location}}})}};
}

// ---- JUnit ----

// XML has no place for control characters, not even as references.
std::string Escaped(std::string_view sText) {
    std::string sXml;
    for (const char c : sText) {
        switch (c) {
            case '<':
                sXml += "&lt;";
                break;
            case '>':
                sXml += "&gt;";
                break;
            case '&':
                sXml += "&amp;";
                break;
            case '"':
                sXml += "&quot;";
                break;
            default:
                sXml += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
        }
    }
    return sXml;
}

bool IsFailure(const Finding& finding) {
    return RowOf(finding.rule).severity != Severity::Note;
}

void PrintCase(const Finding& finding, const std::string& sFile, std::ostream& out) {
    const RuleRow& row = RowOf(finding.rule);
    const std::string sPlace = Escaped(Valid(PlaceWords(finding)));
    const std::string sSentence = Escaped(finding.sSentence);
    fmt::print(out, "    <testcase classname=\"{}\" name=\"{} {}\">\n", sFile, row.sId, sPlace);
    if (IsFailure(finding))
        fmt::print(out, "      <failure type=\"{}\" message=\"{}\">{}</failure>\n",
                   SeverityName(row.severity), sSentence, sPlace);
    else
        fmt::print(out, "      <system-out>{}: {}</system-out>\n", sPlace, sSentence);
    out << "    </testcase>\n";
}

void PrintSuite(const CheckedFile& file, const std::vector<const Finding*>& findings,
                std::ostream& out) {
    const std::string sFile = Escaped(Valid(file.sFile));
    const auto nFailures =
        std::count_if(findings.begin(), findings.end(),
                      [](const Finding* finding) { return IsFailure(*finding); });
    fmt::print(out, "  <testsuite name=\"{}\" tests=\"{}\" failures=\"{}\">\n", sFile,
               std::max<std::size_t>(findings.size(), 1), nFailures);
    for (const Finding* finding : findings)
        PrintCase(*finding, sFile, out);
    if (findings.empty())
        fmt::print(out, "    <testcase classname=\"{}\" name=\"no findings\"/>\n", sFile);
    out << "  </testsuite>\n";
}

}  // namespace

void PrintText(const Findings& findings, std::size_t nKnown, bool bQuiet, bool bColour,
               std::ostream& out) {
    for (const Finding& finding : findings.All()) {
        const RuleRow& row = RowOf(finding.rule);
        const char* const sColour = kColours[static_cast<std::size_t>(row.severity)];
        fmt::print(out, "{}: {}{}{}: {} [{}]\n", PlaceWords(finding), bColour ? sColour : "",
                   SeverityName(row.severity), bColour ? kPlain : "", finding.sSentence, row.sId);
    }
    if (bQuiet) return;
    const auto [nNotes, nWarnings, nErrors] = CountBySeverity(findings);
    fmt::print(out, "{}: {}, {}, {}", Counted(findings.Files().size(), "file"),
               Counted(nErrors, "error"), Counted(nWarnings, "warning"), Counted(nNotes, "note"));
    if (nKnown > 0) fmt::print(out, "; {} known ones not shown", nKnown);
    out << '\n';
}

void PrintJson(const Findings& findings, std::size_t nKnown, bool bPredict, std::ostream& out) {
    const auto [nNotes, nWarnings, nErrors] = CountBySeverity(findings);
    Json json{{"errors", nErrors}, {"warnings", nWarnings},  {"notes", nNotes},
              {"known", nKnown},   {"files", Json::array()}, {"findings", Json::array()}};
    for (const CheckedFile& file : findings.Files())
        json["files"].push_back(AsJson(file, bPredict));
    for (const Finding& finding : findings.All())
        json["findings"].push_back(AsJson(finding));
    WriteJson(out, json);
}

void PrintSarif(const Findings& findings, std::ostream& out) {
    std::set<Rule> used;
    for (const Finding& finding : findings.All())
        used.insert(finding.rule);
    Json rules = Json::array();
    for (const Rule rule : used)
        rules.push_back(SarifRule(RowOf(rule)));
    Json results = Json::array();
    for (const Finding& finding : findings.All())
        results.push_back(SarifResult(finding, static_cast<std::size_t>(std::distance(
                                                   used.begin(), used.find(finding.rule)))));
    const Json driver{{"name", "nomiractl"}, {"version", NOMIRA_VERSION}, {"rules", rules}};
    const Json run{
        {"tool", {{"driver", driver}}}, {"columnKind", "utf16CodeUnits"}, {"results", results}};
    WriteJson(out, Json{{"$schema", "https://json.schemastore.org/sarif-2.1.0.json"},
                        {"version", "2.1.0"},
                        {"runs", Json::array({run})}});
}

void PrintJunit(const Findings& findings, std::ostream& out) {
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    const auto nFailures = std::count_if(findings.All().begin(), findings.All().end(), IsFailure);
    fmt::print(out, "<testsuites name=\"nomiractl check\" failures=\"{}\">\n", nFailures);
    for (const CheckedFile& file : findings.Files()) {
        std::vector<const Finding*> ofFile;
        for (const Finding& finding : findings.All())
            if (finding.sFile == file.sFile) ofFile.push_back(&finding);
        PrintSuite(file, ofFile, out);
    }
    out << "</testsuites>\n";
}

}  // namespace nomira::companion
