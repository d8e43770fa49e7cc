#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <numeric>
#include <system_error>

#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseWork.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/ReplaceFile.h"
#include "apps/nomiractl/Words.h"
#include "conversion/PassObserver.h"
#include "conversion/TextExport.h"
#include "langtools/CodePage.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStream = "-";

struct ExportReport {
    ByClass<int> rows{};           // written, by class
    std::vector<Text> leftOut;     // keys whose text is a Null or the empty marker, or no class's
    std::vector<Text> unwritable;  // keys with a character that the code page lacks
};

// Collects what the export tells while it lives.
class ExportWatch : public PassObserver {
  public:
    explicit ExportWatch(ExportReport& report) : m_report(report) { SetPassObserver(this); }
    ~ExportWatch() override { SetPassObserver(nullptr); }
    ExportWatch(const ExportWatch&) = delete;
    ExportWatch& operator=(const ExportWatch&) = delete;

    void RowExported(TextView sKey, TextView sText) override {
        // The export asks for one module at a time, so that the key tells the class.
        const SignalClass* signalClass = ClassOfKey(sKey);
        ++m_report.rows[signalClass ? ClassRow(signalClass->sModule, sKey) : kOtherKeys];
        const CodePage& page = SystemCodePage();
        if (!std::all_of(sText.begin(), sText.end(), [&](char16_t c) { return page.Holds(c); }))
            m_report.unwritable.emplace_back(sKey);
    }
    void RowLeftOut(TextView sKey, TextView) override { m_report.leftOut.emplace_back(sKey); }

  private:
    ExportReport& m_report;
};

Text ReadDump(const Machine& machine, DatabaseEngine& engine, ExportReport& report) {
    DatabaseWork database(machine.Database(), engine, DatabaseUse::Read);
    database.ReadItems();  // tells a file without the tables from an empty database
    const ExportWatch watch(report);
    Text sDump = BuildLongTextDump();
    database.RequireNoFailure();
    return sDump;
}

// The file's bytes, as DbIntoText writes them: one more line end behind the text, and nothing at
// all for an empty one.
std::string FileBytes(TextView sDump) {
    if (sDump.empty()) return {};
    return SystemCodePage().Encode(sDump) + "\r\n";
}

void RequireOtherFile(const fs::path& target, const fs::path& database) {
    std::error_code ignored;
    if (fs::equivalent(target, database, ignored))
        throw Refusal(
            fmt::format("{}: the message database itself; name another file", target.string()),
            ExitCode::Files);
}

int CountRows(const ExportReport& report) {
    return std::accumulate(report.rows.begin(), report.rows.end(), 0);
}

nlohmann::ordered_json AsJson(const ExportReport& report, const Options& options,
                              const Machine& machine, bool bWritten) {
    nlohmann::ordered_json json{{"database", machine.Database().string()},
                                {"file", options.file.string()},
                                {"written", bWritten},
                                {"rows", CountRows(report)}};
    json["classes"] = nlohmann::ordered_json::array();
    for (std::size_t n = 0; n < kSignalClassCount; ++n)
        json["classes"].push_back({{"class", Utf8(ClassRowName(n))}, {"rows", report.rows[n]}});
    const auto keys = [](const std::vector<Text>& list) {
        auto array = nlohmann::ordered_json::array();
        for (const Text& sKey : list)
            array.push_back(Utf8(sKey));
        return array;
    };
    json["left_out"] = keys(report.leftOut);
    json["unwritable"] = keys(report.unwritable);
    return json;
}

void PrintReport(const ExportReport& report, const Options& options, const Machine& machine,
                 bool bWritten, std::ostream& out) {
    if (!bWritten) {
        fmt::print(out, "{} holds no texts to export; {} was not written\n",
                   machine.Database().string(), options.file.string());
        return;
    }
    fmt::print(out, "{} into {}\n\n{:<24}{:>8}\n", machine.Database().string(),
               options.file.string(), "class", "rows");
    for (std::size_t n = 0; n < kSignalClassCount; ++n)
        fmt::print(out, "{:<24}{:>8}\n", Utf8(ClassRowName(n)), report.rows[n]);
    fmt::print(out, "{:<24}{:>8}\n\nleft out, without a text or of no class: {}\n", "total",
               CountRows(report), report.leftOut.size());
}

void WarnOfLostCharacters(const ExportReport& report, std::ostream& err) {
    for (const Text& sKey : report.unwritable)
        fmt::print(err, "nomiractl: warning: {}: characters that code page {} lacks became \"?\"\n",
                   Shown(sKey), SystemCodePage().Number());
}

}  // namespace

ExitCode ExportTextFile(const Options& options, Streams streams) {
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    const bool bStream = options.file == kStream;
    if (!bStream) RequireOtherFile(options.file, machine.Database());
    ExportReport report;
    const std::string bytes = FileBytes(ReadDump(machine, machine.Engine(), report));
    const bool bWritten = !bytes.empty();
    if (bStream) {
        streams.out << bytes << std::flush;
        if (!streams.out) throw Refusal("the output can't be written", ExitCode::Files);
    } else if (bWritten) {
        ReplaceFile(options.file, bytes);
    }
    WarnOfLostCharacters(report, streams.err);
    if (bStream || (options.bQuiet && !options.bJson)) return ExitCode::Done;
    if (options.bJson)
        streams.out << AsJson(report, options, machine, bWritten).dump(2) << '\n';
    else
        PrintReport(report, options, machine, bWritten, streams.out);
    return ExitCode::Done;
}

}  // namespace nomira::companion
