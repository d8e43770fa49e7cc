#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <numeric>
#include <system_error>

#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseWork.h"
#include "apps/nomiractl/Interrupt.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/ProgressBar.h"
#include "apps/nomiractl/ReplaceFile.h"
#include "apps/nomiractl/TextForm.h"
#include "apps/nomiractl/TextSource.h"
#include "apps/nomiractl/Words.h"
#include "apps/nomiractl/WriteJson.h"
#include "conversion/PassObserver.h"
#include "conversion/TextExport.h"
#include "langtools/CodePage.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

constexpr TextView kRowEnd = u"\r\n";
constexpr std::size_t kMostUnwritableShown = 20;

// A text that can't stand in the file.
struct Unwritable {
    Text sKey;
    std::string sWords;  // with its place in the file
};

struct ExportReport {
    ByClass<int> rows{};        // written, by class
    std::vector<Text> leftOut;  // keys whose text is a Null or the empty marker, or no class's
    std::vector<Text> cut;      // keys whose text has a line end in it
    std::vector<Unwritable> unwritable;
};

// Collects what the export tells while it lives.
class ExportWatch : public PassObserver {
  public:
    ExportWatch(ExportReport& report, LineEnds ends, ProgressBar& bar)
        : m_report(report), m_bar(bar), m_sEnds(ends == LineEnds::Lf ? u"\r\n" : u"\r") {
        SetPassObserver(this);
    }
    ~ExportWatch() override { SetPassObserver(nullptr); }
    ExportWatch(const ExportWatch&) = delete;
    ExportWatch& operator=(const ExportWatch&) = delete;

    void RowExported(TextView sKey, TextView sText) override {
        // The export asks for one module at a time, so that the key tells the class.
        const SignalClass* signalClass = ClassOfKey(sKey);
        ++m_report.rows[signalClass ? ClassRow(signalClass->sModule, sKey) : kOtherKeys];
        if (sText.find_first_of(m_sEnds) != TextView::npos) m_report.cut.emplace_back(sKey);
        Step();
    }
    void RowLeftOut(TextView sKey, TextView) override {
        m_report.leftOut.emplace_back(sKey);
        Step();
    }

  private:
    void Step() {
        RequireNoInterrupt();
        m_bar.Step();
    }

    ExportReport& m_report;
    ProgressBar& m_bar;
    TextView m_sEnds;  // what ends a line when the file is read
};

std::uint64_t CountTexts(const std::vector<Item>& items) {
    return std::accumulate(
        items.begin(), items.end(), std::uint64_t{0},
        [](std::uint64_t nSum, const Item& item) { return nSum + item.texts.size(); });
}

Text ReadDump(const Machine& machine, DatabaseEngine& engine, LineEnds ends,
              const ProgressBar::Screen& screen, ExportReport& report) {
    DatabaseWork database(machine.Database(), engine, DatabaseUse::Read);
    // Tells a file without the tables from an empty database, too.
    const std::uint64_t nTexts = CountTexts(database.ReadItems());
    ProgressBar bar(screen, "export", ProgressUnit::Texts, nTexts);
    const ExportWatch watch(report, ends, bar);
    Text sDump = BuildLongTextDump();
    database.RequireNoFailure();
    return sDump;
}

// The file's bytes, in the shape in which DbIntoText writes them: one more line end behind the
// text, and nothing at all for an empty one.
std::string FileBytes(TextView sDump, const Options& options, ExportReport& report) {
    if (sDump.empty()) return {};
    const TextForm form = FormOf(options);
    const CodePage& page = SystemCodePage();
    const std::string_view end = form.ends == LineEnds::Lf ? "\n" : "\r\n";
    std::string bytes;
    bytes.reserve(sDump.size() + sDump.size() / 8);
    for (std::int64_t nLine = 1; !sDump.empty(); ++nLine) {
        const TextView sRow = sDump.substr(0, sDump.find(kRowEnd));
        sDump.remove_prefix(std::min(sRow.size() + kRowEnd.size(), sDump.size()));
        for (const TextFlaw& flaw : FlawsOfRow(sRow, nLine, form.encoding, page))
            report.unwritable.push_back({Text(sRow.substr(0, sRow.find(u' '))),
                                         fmt::format("{}:{}:{}: {}", options.file.string(), nLine,
                                                     flaw.nColumn, InWords(flaw, page))});
        bytes.append(EncodeLine(sRow, form.encoding, page)).append(end);
    }
    return bytes.append(end);
}

void RequireOtherFile(const fs::path& target, const fs::path& database) {
    std::error_code ignored;
    if (fs::equivalent(target, database, ignored))
        throw Refusal(
            fmt::format("{}: the message database itself; name another file", target.string()),
            ExitCode::Files);
}

// Each once, though it may have many such characters.
std::vector<Text> KeysOf(const std::vector<Unwritable>& unwritable) {
    std::vector<Text> keys;
    for (const Unwritable& one : unwritable)
        if (keys.empty() || keys.back() != one.sKey) keys.push_back(one.sKey);
    return keys;
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
    json["unwritable"] = keys(KeysOf(report.unwritable));
    json["cut"] = keys(report.cut);
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

// Whether each text can stand in the file as it is.
bool IsWritable(const ExportReport& report, LineEnds ends) {
    return report.unwritable.empty() && (report.cut.empty() || ends == LineEnds::CrLf);
}

void PrintCutTexts(const ExportReport& report, LineEnds ends, std::ostream& err) {
    for (const Text& sKey : report.cut)
        fmt::print(err,
                   "nomiractl: {}{}: its text has a line end in it: it would come back as two"
                   " lines\n",
                   ends == LineEnds::CrLf ? "warning: " : "", Shown(sKey));
}

void PrintUnwritable(const ExportReport& report, TextForm form, std::ostream& err) {
    const std::size_t nShown = std::min(report.unwritable.size(), kMostUnwritableShown);
    for (std::size_t n = 0; n < nShown; ++n)
        fmt::print(err, "nomiractl: {}: {}\n", report.unwritable[n].sWords,
                   Shown(report.unwritable[n].sKey));
    if (report.unwritable.empty()) return;
    fmt::print(err, "nomiractl: {} characters can't be written, and so nothing was{}\n",
               report.unwritable.size(),
               form.encoding == TextEncoding::CodePage ? "; --encoding utf-8 has them all" : "");
}

void Write(const Options& options, const std::string& bytes, std::ostream& out) {
    if (options.file != kStream) {
        if (!bytes.empty()) ReplaceFile(options.file, bytes);
        return;
    }
    out << bytes
        << std::flush;  // whether that could be written is told of every command at its end
}

}  // namespace

ExitCode ExportTextFile(const Options& options, Streams streams) {
    const InterruptWatch interrupts;
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    const bool bStream = options.file == kStream;
    if (!bStream) RequireOtherFile(options.file, machine.Database());
    ExportReport report;
    const TextForm form = FormOf(options);
    const std::string bytes = FileBytes(
        ReadDump(machine, machine.Engine(), form.ends, ScreenFor(options, streams), report),
        options, report);
    const bool bWritable = IsWritable(report, form.ends);
    RequireNoInterrupt();
    if (bWritable) Write(options, bytes, streams.out);
    PrintCutTexts(report, form.ends, streams.err);
    PrintUnwritable(report, form, streams.err);
    const ExitCode exit = bWritable ? ExitCode::Done : ExitCode::Refused;
    if (bStream || (options.bQuiet && !options.bJson)) return exit;
    const bool bWritten = bWritable && !bytes.empty();
    if (options.bJson)
        WriteJson(streams.out, AsJson(report, options, machine, bWritten));
    else if (bWritable)
        PrintReport(report, options, machine, bWritten, streams.out);
    return exit;
}

}  // namespace nomira::companion
