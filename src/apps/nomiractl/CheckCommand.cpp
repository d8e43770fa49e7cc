// check: finds beforehand what the program would silently do otherwise than meant.
#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>
#include <vector>

#include "apps/nomiractl/AccessLook.h"
#include "apps/nomiractl/Baseline.h"
#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseCheck.h"
#include "apps/nomiractl/DatabaseWork.h"
#include "apps/nomiractl/EarlierName.h"
#include "apps/nomiractl/FileChecks.h"
#include "apps/nomiractl/FileKind.h"
#include "apps/nomiractl/FindingFormats.h"
#include "apps/nomiractl/InOrder.h"
#include "apps/nomiractl/Jobs.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/NameTable.h"
#include "apps/nomiractl/ProgramCheck.h"
#include "apps/nomiractl/ProgramPaths.h"
#include "apps/nomiractl/ProgressBar.h"
#include "apps/nomiractl/RegistryCheck.h"
#include "apps/nomiractl/ReplaceFile.h"
#include "apps/nomiractl/StoreFormats.h"
#include "apps/nomiractl/Terminal.h"
#include "apps/nomiractl/TextFileCheck.h"
#include "apps/nomiractl/TextSource.h"
#include "apps/nomiractl/Words.h"
#include "apps/nomiractl/WriteJson.h"
#include "langtools/RuntimeError.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

// Empty for a database that takes an import.
std::string WhyNotWritable(const fs::path& database) {
    if (!IsWritable(database)) return "the file is read-only";
    if (RequireFormat(database) == StoreFormat::Sqlite) return {};
    return LookIntoAccessFile(database).sWhyNotWritable;
}

class CheckRun {
  public:
    CheckRun(const Options& options, Streams streams)
        : m_options(options),
          m_streams(streams),
          m_bar(ScreenFor(options, streams), "check", ProgressUnit::Bytes,
                SizeOfFiles(options.programs)) {}

    void CheckAll() {
        for (const fs::path& path : m_options.programs)
            Guard(path, [&] { CheckPath(path); });
        CheckWaiting();
        m_bar.Wipe();
    }

    ExitCode Finish() {
        std::stable_sort(m_findings.All().begin(), m_findings.All().end(),
                         [](const Finding& left, const Finding& right) {
                             return left.sFile == right.sFile &&
                                    std::pair(left.place.nLine, left.place.nColumn) <
                                        std::pair(right.place.nLine, right.place.nColumn);
                         });
        if (!m_options.writeBaseline.empty())
            ReplaceFile(m_options.writeBaseline, BaselineOf(m_findings));
        const std::size_t nKnown =
            m_options.baseline.empty() ? 0 : HideKnown(m_options.baseline, m_findings);
        if (!m_options.rejects.empty()) WriteRejects();
        Print(nKnown);
        return Graver(m_exit, Verdict());
    }

  private:
    // A file that can't be looked at is told, and the others are looked at all the same.
    template <typename Work>
    void Guard(const fs::path& path, Work work) {
        try {
            work();
        } catch (const Refusal& refusal) {
            Fail(refusal.what(), refusal.Exit());
        } catch (const RuntimeError& error) {
            Fail(fmt::format("{}: {}", path.string(), Shown(error.Description())), ExitOf(error));
        }
    }

    void Fail(const std::string& sWords, ExitCode exit) {
        CheckWaiting();
        m_bar.Wipe();
        fmt::print(m_streams.err, "nomiractl: {}\n", sWords);
        m_exit = Graver(m_exit, exit);
    }

    void CheckPath(const fs::path& path) {
        const FileKind kind = path == kStream ? FileKind::TextFile : KindOf(path, m_options.sKind);
        if (kind != FileKind::Programs) CheckWaiting();
        switch (kind) {
            case FileKind::TextFile:
                return CheckOneTextFile(path);
            case FileKind::Programs:
                m_waiting.push_back({path, NamedPrograms({path})});
                return;
            case FileKind::Database:
                return CheckOneDatabase(path);
            case FileKind::Registry:
                m_findings.Begin(path.string(), "registry");
                LeaveMachine();
                CheckRegistry(path, TheMachine(), m_findings);
                LeaveMachine();  // the next file has its own settings again
        }
    }

    // One machine for all text files and programs, as for one run over them.
    Machine& TheMachine() {
        if (!m_machine) {
            m_machine.emplace(m_options);
            m_bar.Wipe();
            m_machine->PrintWarnings(m_streams.err);
        }
        return *m_machine;
    }

    bool HasDatabase() {
        if (m_names) return true;
        Machine& machine = TheMachine();
        if (m_options.database.empty() && !fs::exists(machine.Database())) return false;
        DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Read);
        m_noNames.reset();
        m_names.emplace(database.ReadItems());
        return true;
    }

    void CheckOneTextFile(const fs::path& path) {
        const auto source = ReadTextSource(path, FormOf(m_options), m_streams.in);
        m_findings.Begin(source->Name(), "text");
        TheMachine().TakeText(path, source, [this](std::size_t nBytes) { m_bar.Step(nBytes); });
        CheckTextFileLines(path, *source, m_findings);
    }

    void LeaveMachine() {
        m_names.reset();
        m_noNames.reset();
        m_machine.reset();
    }

    // The programs up to here, all at once.
    void CheckWaiting() {
        std::vector<fs::path> programs;
        for (const NamedPath& named : std::exchange(m_waiting, {}))
            Guard(named.path, [&] {
                if (named.programs.empty()) return;
                try {
                    HasDatabase();
                } catch (const std::exception&) {
                    CheckPrograms(std::exchange(programs, {}));
                    m_findings.Begin(named.programs.front().string(), "program");
                    throw;
                }
                programs.insert(programs.end(), named.programs.begin(), named.programs.end());
            });
        CheckPrograms(programs);
    }

    // What was found in one program.
    struct Checked {
        Findings findings;
        ExitCode exit = ExitCode::Done;
    };

    Checked CheckOneProgram(const fs::path& program, bool bDatabase, bool& bAsked) {
        Checked checked;
        checked.findings.Begin(program.string(), "program");
        try {
            bAsked = CheckProgram(program, bDatabase, m_machine->Boxes(), checked.findings);
        } catch (const Refusal& refusal) {
            checked.findings.Add(Rule::ProgramUnreadable, {}, {}, {refusal.what()});
            checked.exit = refusal.Exit();
        }
        return checked;
    }

    void CheckPrograms(const std::vector<fs::path>& programs) {
        if (programs.empty()) return;
        const bool bDatabase = HasDatabase();
        if (!bDatabase && !m_noNames) m_noNames.emplace();
        InOrder(
            programs.size(), ThreadsFor(m_options),
            [&](std::size_t n) {
                auto own = LookOnItsOwn(
                    [&](bool& bAsked) { return CheckOneProgram(programs[n], bDatabase, bAsked); });
                return std::pair(n, std::move(own));
            },
            [&](auto numbered) {
                const fs::path& program = programs[numbered.first];
                Checked checked = InItsTurn(std::move(numbered.second), [&](bool& bAsked) {
                    return CheckOneProgram(program, bDatabase, bAsked);
                });
                m_findings.Append(std::move(checked.findings));
                m_bar.Step(SizeOfFile(program));
                m_exit = Graver(m_exit, checked.exit);
            });
    }

    void CheckOneDatabase(const fs::path& path) {
        LeaveMachine();
        Options options = m_options;
        options.database = path;
        Machine machine(options);
        machine.PrintWarnings(m_streams.err);
        DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Read);
        m_findings.Begin(path.string(), "database");
        if (const std::string sWhy = WhyNotWritable(path); !sWhy.empty())
            m_findings.Add(Rule::DatabaseNotWritable, {}, {}, {sWhy});
        CheckNames(database, m_findings);
    }

    // Remarks in the file tell where a line comes from; an import passes over them.
    void WriteRejects() {
        std::string bytes;
        for (const Findings::Rejected& line : m_findings.Rejects()) {
            for (const Finding& finding : m_findings.All())
                if (finding.sFile == line.sFile && finding.place.nLine == line.nLine)
                    bytes +=
                        fmt::format("# {}:{}: {}\r\n", line.sFile, line.nLine, finding.sSentence);
            bytes += line.bytes + "\r\n";
        }
        ReplaceFile(m_options.rejects, bytes);
    }

    bool IsColoured() const {
        if (m_options.sColour != "auto") return m_options.sColour == "always";
        const char* const sNoColour = std::getenv("NO_COLOR");
        return IsTerminal(m_streams.out) && (sNoColour == nullptr || *sNoColour == '\0');
    }

    void Print(std::size_t nKnown) const {
        const std::string sFormat = m_options.bJson ? "json" : m_options.sFormat;
        if (sFormat == "json")
            PrintJson(m_findings, nKnown, m_options.bPredict, m_streams.out);
        else if (sFormat == "sarif")
            PrintSarif(m_findings, m_streams.out);
        else if (sFormat == "junit")
            PrintJunit(m_findings, m_streams.out);
        else
            PrintText(m_findings, nKnown, m_options.bQuiet, IsColoured(), m_streams.out);
    }

    // Notes tell something, but ask for nothing.
    ExitCode Verdict() const {
        const bool bBad = std::any_of(
            m_findings.All().begin(), m_findings.All().end(),
            [](const Finding& finding) { return RowOf(finding.rule).severity != Severity::Note; });
        return bBad && m_options.writeBaseline.empty() ? ExitCode::Differs : ExitCode::Done;
    }

    const Options& m_options;
    Streams m_streams;
    ProgressBar m_bar;
    Findings m_findings;
    ExitCode m_exit = ExitCode::Done;
    std::optional<Machine> m_machine;
    std::optional<NameTable> m_names;
    std::optional<NoNames> m_noNames;
    struct NamedPath {
        fs::path path;
        std::vector<fs::path> programs;
    };
    std::vector<NamedPath> m_waiting;  // programs that the user has named, to be checked
};

// The rows of docs/rules.md, or JSON.
ExitCode ListRules(const Options& options, Streams streams) {
    nlohmann::ordered_json json = nlohmann::ordered_json::array();
    for (const RuleRow& row : AllRules()) {
        if (options.bJson)
            json.push_back({{"id", row.sId},
                            {"severity", SeverityName(row.severity)},
                            {"sentence", row.sSentence},
                            {"why", row.sWhy}});
        else
            fmt::print(streams.out, "| `{}` | {} | {} | {} |\n", row.sId,
                       SeverityName(row.severity), row.sSentence, row.sWhy);
    }
    if (options.bJson) WriteJson(streams.out, json);
    return ExitCode::Done;
}

}  // namespace

ExitCode CheckFiles(const Options& options, Streams streams) {
    if (options.bListRules) return ListRules(options, streams);
    if (std::count(options.programs.begin(), options.programs.end(), fs::path(kStream)) > 1)
        throw Refusal("the standard input can be read once only", ExitCode::WrongUsage);
    CheckRun run(options, streams);
    run.CheckAll();
    return run.Finish();
}

}  // namespace nomira::companion
