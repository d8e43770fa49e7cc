// diff: what any two of text file, database and programs don't agree on.
#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "adapters/posix/NativeName.h"
#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseWork.h"
#include "apps/nomiractl/FileKind.h"
#include "apps/nomiractl/Jobs.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/NameSet.h"
#include "apps/nomiractl/ProgramPaths.h"
#include "apps/nomiractl/ProgressBar.h"
#include "apps/nomiractl/TextSource.h"
#include "apps/nomiractl/Words.h"
#include "apps/nomiractl/WriteJson.h"
#include "langtools/RuntimeError.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr const char* kDatabaseWord = "db";  // the database of --db or the prefix

struct Side {
    std::string sName;
    NameSet names;
    bool bPrograms = false;  // holds only the keys that it shows
};

NameSet NamesOfDatabase(const Options& options, const fs::path& path, std::ostream& err) {
    Options ofPath = options;
    if (!path.empty()) ofPath.database = path;
    Machine machine(ofPath);
    machine.PrintWarnings(err);
    DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Read);
    NameSet names;
    for (const Item& item : database.ReadItems()) {
        std::vector<NameUse>& uses = names[NameKey(item.sModule, item.sKey)];
        for (const std::optional<Text>& sText : item.texts) {
            const bool bNone = !sText || *sText == kEmptyMarker;
            uses.push_back({bNone ? Text() : *sText, machine.Database().string(), 0});
        }
        if (uses.empty()) uses.push_back({{}, machine.Database().string(), 0});
    }
    return names;
}

NameSet NamesOfFolder(const Options& options, const fs::path& path, std::ostream& err,
                      ProgressBar& bar) {
    NameSet names;
    NamesOfPrograms(
        NamedPrograms({path}), ThreadsFor(options),
        [&](const fs::path& program, const ProgramNames& found) {
            const std::string sFile = program.string();
            for (const HeaderName& name : found.names)
                AddName(names, name.key, {name.sText, sFile, name.nLine});
            for (const std::int64_t nLine : found.unreadable)
                fmt::print(err, "nomiractl: warning: {}:{}: a header that can't be read\n", sFile,
                           nLine);
            bar.Step(SizeOfFile(program));
        },
        [](const fs::path& program, const Refusal& refusal) {
            throw Refusal(fmt::format("{}: {}", program.string(), refusal.what()), refusal.Exit());
        });
    return names;
}

Side NamesOfText(const Options& options, const fs::path& path, Streams streams, ProgressBar& bar) {
    const auto source = ReadTextSource(path, FormOf(options), streams.in);
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    source->RequireNoFlaws();
    machine.TakeText(path, source, [&bar](std::size_t nBytes) { bar.Step(nBytes); });
    return {source->Name(), NamesOfTextFile(path)};
}

Side ReadSide(const Options& options, const fs::path& path, Streams streams, ProgressBar& bar) {
    if (path == kStream) return NamesOfText(options, path, streams, bar);
    if (path == kDatabaseWord && !fs::exists(path))
        return {"database", NamesOfDatabase(options, {}, streams.err)};
    switch (KindOf(path, "auto")) {
        case FileKind::Database:
            return {path.string(), NamesOfDatabase(options, path, streams.err)};
        case FileKind::Registry:
            throw Refusal(fmt::format("{}: a registry holds no names", path.string()));
        case FileKind::Programs: {
            const Machine machine(options);
            return {path.string(), NamesOfFolder(options, path, streams.err, bar), true};
        }
        case FileKind::TextFile:
            break;
    }
    return NamesOfText(options, path, streams, bar);
}

// The names of one key on both sides. To programs a key without a name, and one that isn't there,
// are the same.
struct Row {
    const NameKey* pKey;
    const std::vector<NameUse>* pOld;  // nullptr: no such key
    const std::vector<NameUse>* pNew;
    bool bPrograms;

    bool Differs() const { return TextsOf(pOld) != TextsOf(pNew); }

    std::optional<std::vector<Text>> TextsOf(const std::vector<NameUse>* uses) const {
        if (!uses && !bPrograms) return std::nullopt;
        if (!uses) return std::vector<Text>{Text()};
        std::vector<Text> texts;
        for (const NameUse& use : *uses)
            texts.push_back(use.sText);
        std::sort(texts.begin(), texts.end());
        return texts;
    }
};

// The keys of both sides in one order. A side of programs shows only some keys, and is compared in
// these alone.
std::vector<Row> CompareSides(const Side& left, const Side& right) {
    std::vector<Row> rows;
    const bool bPrograms = left.bPrograms || right.bPrograms;
    for (const auto& [key, uses] : left.names) {
        const auto found = right.names.find(key);
        rows.push_back(
            {&key, &uses, found == right.names.end() ? nullptr : &found->second, bPrograms});
    }
    for (const auto& [key, uses] : right.names)
        if (!left.names.contains(key)) rows.push_back({&key, nullptr, &uses, bPrograms});
    std::erase_if(rows, [&](const Row& row) {
        if (left.bPrograms && !right.bPrograms) return row.pOld == nullptr;
        if (right.bPrograms && !left.bPrograms) return row.pNew == nullptr;
        return false;
    });
    std::sort(rows.begin(), rows.end(),
              [](const Row& a, const Row& b) { return *a.pKey < *b.pKey; });
    return rows;
}

// ---- Unified ----

struct DiffLine {
    char cMark;  // ' ', '-', '+'
    std::string sLine;
};

std::vector<std::string> LinesOf(const NameKey& key, const std::vector<NameUse>* uses) {
    std::vector<std::string> lines;
    if (!uses) return lines;
    for (const NameUse& use : *uses) {
        std::string sLine = ShownWhole(key.sKey);
        if (!use.sText.empty()) sLine += " " + ShownWhole(use.sText);
        lines.push_back(std::move(sLine));
    }
    return lines;
}

std::vector<DiffLine> DiffLines(const std::vector<Row>& rows) {
    std::vector<DiffLine> lines;
    const auto add = [&lines](char cMark, std::vector<std::string> words) {
        for (std::string& sLine : words)
            lines.push_back({cMark, std::move(sLine)});
    };
    for (const Row& row : rows) {
        if (!row.Differs()) {
            add(' ', LinesOf(*row.pKey, row.pNew));
            continue;
        }
        add('-', LinesOf(*row.pKey, row.pOld));
        add('+', LinesOf(*row.pKey, row.pNew));
    }
    return lines;
}

constexpr std::size_t kContext = 3;

// Prints the lines nFrom up to nTo, nTo excluded, as one block. `nOld` and `nNew` count the lines
// of both sides ahead of it.
void PrintHunk(const std::vector<DiffLine>& lines, std::size_t nFrom, std::size_t nTo,
               std::size_t nOld, std::size_t nNew, std::ostream& out) {
    const auto count = [&](char cOther) {
        return std::count_if(lines.begin() + static_cast<std::ptrdiff_t>(nFrom),
                             lines.begin() + static_cast<std::ptrdiff_t>(nTo),
                             [cOther](const DiffLine& line) { return line.cMark != cOther; });
    };
    const auto nOldLines = count('+');
    const auto nNewLines = count('-');
    fmt::print(out, "@@ -{},{} +{},{} @@\n", nOld + (nOldLines > 0 ? 1 : 0), nOldLines,
               nNew + (nNewLines > 0 ? 1 : 0), nNewLines);
    for (std::size_t n = nFrom; n < nTo; ++n)
        fmt::print(out, "{}{}\n", lines[n].cMark, lines[n].sLine);
}

void PrintUnified(const Side& left, const Side& right, const std::vector<DiffLine>& lines,
                  std::ostream& out) {
    fmt::print(out, "--- {}\n+++ {}\n", left.sName, right.sName);
    std::size_t nOld = 0, nNew = 0;  // lines ahead of `n`
    for (std::size_t n = 0; n < lines.size();) {
        // The next change, and the last one that is near enough for the same block.
        std::size_t nFirst = n;
        while (nFirst < lines.size() && lines[nFirst].cMark == ' ')
            ++nFirst;
        if (nFirst == lines.size()) return;
        std::size_t nLast = nFirst;
        for (std::size_t k = nFirst; k < lines.size() && k <= nLast + 2 * kContext + 1; ++k)
            if (lines[k].cMark != ' ') nLast = k;
        const std::size_t nFrom = std::max(n, nFirst < kContext ? 0 : nFirst - kContext);
        const std::size_t nTo = std::min(lines.size(), nLast + kContext + 1);
        nOld += nFrom - n;
        nNew += nFrom - n;
        PrintHunk(lines, nFrom, nTo, nOld, nNew, out);
        for (std::size_t k = nFrom; k < nTo; ++k) {
            if (lines[k].cMark != '+') ++nOld;
            if (lines[k].cMark != '-') ++nNew;
        }
        n = nTo;
    }
}

// ---- JSON ----

Json AsJson(const std::vector<NameUse>* uses) {
    if (!uses) return nullptr;
    Json json = Json::array();
    for (const NameUse& use : *uses) {
        Json one{{"text", Utf8(use.sText)}, {"file", Utf8(posix::FromNative(use.sFile))}};
        if (use.nLine > 0) one["line"] = use.nLine;
        json.push_back(std::move(one));
    }
    return json;
}

void PrintJson(const Side& left, const Side& right, const std::vector<Row>& rows,
               std::ostream& out) {
    Json json{{"old", Utf8(posix::FromNative(left.sName))},
              {"new", Utf8(posix::FromNative(right.sName))},
              {"differences", Json::array()}};
    for (const Row& row : rows) {
        if (!row.Differs()) continue;
        const char* const sWhat = !row.pOld ? "added" : !row.pNew ? "removed" : "changed";
        json["differences"].push_back({{"key", Utf8(row.pKey->sKey)},
                                       {"module", Utf8(row.pKey->sModule)},
                                       {"change", sWhat},
                                       {"old", AsJson(row.pOld)},
                                       {"new", AsJson(row.pNew)}});
    }
    WriteJson(out, json);
}

}  // namespace

ExitCode DiffNames(const Options& options, Streams streams) {
    if (options.oldSide == kStream && options.newSide == kStream)
        throw Refusal("the standard input can be read once only", ExitCode::WrongUsage);
    ProgressBar bar(ScreenFor(options, streams), "diff", ProgressUnit::Bytes,
                    SizeOfFiles({options.oldSide, options.newSide}));
    StreamsAboveBar above(streams, bar);
    const Side left = ReadSide(options, options.oldSide, above.All(), bar);
    const Side right = ReadSide(options, options.newSide, above.All(), bar);
    bar.Wipe();
    const std::vector<Row> rows = CompareSides(left, right);
    const bool bDiffers =
        std::any_of(rows.begin(), rows.end(), [](const Row& row) { return row.Differs(); });
    if (options.bJson)
        PrintJson(left, right, rows, streams.out);
    else if (bDiffers && !options.bQuiet)
        PrintUnified(left, right, DiffLines(rows), streams.out);
    return bDiffers ? ExitCode::Differs : ExitCode::Done;
}

}  // namespace nomira::companion
