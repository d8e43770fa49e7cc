// list, get: the names in the database.
#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <tuple>
#include <vector>

#include "adapters/posix/NativeName.h"
#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseWork.h"
#include "apps/nomiractl/KeySelection.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/Terminal.h"
#include "apps/nomiractl/TextForm.h"
#include "apps/nomiractl/Words.h"
#include "apps/nomiractl/WriteJson.h"
#include "langtools/BasicText.h"
#include "langtools/CodePage.h"

namespace nomira::companion {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kKeyColumn = 20;

// One text of a key, or a key without any.
struct Row {
    std::size_t nClass;
    Text sModule;
    Text sKey;
    Text sText;
    const char* sState;  // in JSON; never changes

    bool IsFilled() const { return !sText.empty(); }
};

Row RowOf(const Item& item, const std::optional<Text>& sText) {
    Row row{ClassRow(item.sModule, item.sKey), item.sModule, item.sKey, {}, "empty"};
    if (!sText) {
        row.sState = "null";
    } else if (*sText != kEmptyMarker && !sText->empty()) {
        row.sText = *sText;
        row.sState = "filled";
    }
    return row;
}

// In the order of an export: by class, then by number; the other keys behind them.
bool Before(const Row& left, const Row& right) {
    const auto rank = [](const Row& row) {
        return std::tuple(row.nClass, row.sKey.size(), TextView(row.sKey), TextView(row.sModule));
    };
    return rank(left) < rank(right);
}

std::vector<Row> RowsOf(const std::vector<Item>& items) {
    std::vector<Row> rows;
    for (const Item& item : items) {
        for (const std::optional<Text>& sText : item.texts)
            rows.push_back(RowOf(item, sText));
        if (item.texts.empty())
            rows.push_back(
                {ClassRow(item.sModule, item.sKey), item.sModule, item.sKey, {}, "no-message"});
    }
    std::stable_sort(rows.begin(), rows.end(), Before);
    return rows;
}

std::vector<Row> ReadRows(const Machine& machine, DatabaseEngine& engine) {
    DatabaseWork database(machine.Database(), engine, DatabaseUse::Read);
    return RowsOf(database.ReadItems());
}

Json AsJson(const Row& row) {
    Json json{{"key", Utf8(row.sKey)},
              {"class", Utf8(ClassRowName(row.nClass))},
              {"module", Utf8(row.sModule)},
              {"state", row.sState}};
    json["text"] = row.IsFilled() ? Json(Utf8(row.sText)) : Json(nullptr);
    return json;
}

// A cell of the output in the encoding that the options ask for. Throws Refusal for one that the
// code page can't hold, ahead of all output.
class Cells {
  public:
    explicit Cells(const Options& options)
        : m_encoding(FormOf(options, {.encoding = TextEncoding::Utf8}).encoding) {}

    std::string operator()(const std::string& sUtf8) const {
        if (m_encoding == TextEncoding::Utf8) return sUtf8;
        return SystemCodePage().Encode(posix::FromNative(sUtf8));
    }
    void Require(const Row& row) const {
        for (const TextFlaw& flaw : FlawsOfRow(row.sText, 1, m_encoding, SystemCodePage()))
            if (flaw.flaw == Flaw::OutsidePage)
                throw Refusal(fmt::format("{}: character {}: {}", Shown(row.sKey), flaw.nColumn,
                                          InWords(flaw, SystemCodePage())));
    }

  private:
    TextEncoding m_encoding;
};

// For a pipe a tab stands between key and text; on a terminal they are columns.
void Print(const std::vector<Row>& rows, const Cells& cells, std::ostream& out) {
    for (const Row& row : rows)
        cells.Require(row);
    if (!IsTerminal(out)) {
        for (const Row& row : rows)
            out << cells(ShownWhole(row.sKey)) << '\t' << cells(ShownWhole(row.sText)) << '\n';
        return;
    }
    const std::size_t nRoom = std::max(TerminalWidth(out), 2 * kKeyColumn) - kKeyColumn - 1;
    for (const Row& row : rows)
        fmt::print(out, "{:<{}} {}\n", cells(ShownWhole(row.sKey)), kKeyColumn,
                   row.IsFilled() ? cells(CutToWidth(ShownWhole(row.sText), nRoom))
                                  : fmt::format("({})", row.sState));
}

bool IsWanted(const Row& row, const Options& options, const KeySelection& selection,
              TextView sPart) {
    if (options.bEmpty && row.IsFilled()) return false;
    if (options.bFilled && !row.IsFilled()) return false;
    if (!sPart.empty() && InStrNoCase(1, row.sText, sPart) == 0) return false;
    return selection.Holds(row.sModule, row.sKey);
}

// What a get found: the texts of one key, none for a key that isn't there.
struct Got {
    std::string sAsked;
    std::vector<Row> rows;
};

std::vector<Got> Get(const std::vector<Row>& rows, const std::vector<std::string>& keys) {
    std::vector<Got> all;
    for (const std::string& sAsked : keys) {
        const Text sWord = posix::FromNative(sAsked);
        const Text sKey = StandardKey(sWord).value_or(sWord);
        Got got{sAsked, {}};
        std::copy_if(rows.begin(), rows.end(), std::back_inserter(got.rows),
                     [&](const Row& row) { return row.sKey == sKey; });
        all.push_back(std::move(got));
    }
    return all;
}

void PrintJson(const std::vector<Got>& all, std::ostream& out) {
    Json json = Json::array();
    for (const Got& got : all) {
        for (const Row& row : got.rows)
            json.push_back(AsJson(row));
        if (got.rows.empty())
            json.push_back({{"key", Utf8(posix::FromNative(got.sAsked))},
                            {"state", "absent"},
                            {"text", nullptr}});
    }
    WriteJson(out, json);
}

// One key gives its bare text, for scripts.
void PrintTexts(const std::vector<Got>& all, const Cells& cells, std::ostream& out) {
    for (const Got& got : all)
        for (const Row& row : got.rows)
            cells.Require(row);
    for (const Got& got : all)
        for (const Row& row : got.rows) {
            if (all.size() > 1) out << cells(ShownWhole(row.sKey)) << '\t';
            out << cells(ShownWhole(row.sText)) << '\n';
        }
}

}  // namespace

ExitCode ListNames(const Options& options, Streams streams) {
    const KeySelection selection(options.keys, options.classes);
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    const Text sPart = posix::FromNative(options.sText);
    std::vector<Row> rows = ReadRows(machine, machine.Engine());
    std::erase_if(rows, [&](const Row& row) { return !IsWanted(row, options, selection, sPart); });
    if (options.bJson) {
        Json json = Json::array();
        for (const Row& row : rows)
            json.push_back(AsJson(row));
        WriteJson(streams.out, json);
    } else if (!options.bQuiet) {
        Print(rows, Cells(options), streams.out);
    }
    return ExitCode::Done;
}

ExitCode GetNames(const Options& options, Streams streams) {
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    const std::vector<Got> all = Get(ReadRows(machine, machine.Engine()), options.keys);
    if (options.bJson)
        PrintJson(all, streams.out);
    else
        PrintTexts(all, Cells(options), streams.out);
    ExitCode exit = ExitCode::Done;
    for (const Got& got : all) {
        if (!got.rows.empty()) continue;
        exit = ExitCode::Differs;
        if (!options.bQuiet)
            fmt::print(streams.err, "nomiractl: {}: the database has no such key\n", got.sAsked);
    }
    return exit;
}

}  // namespace nomira::companion
