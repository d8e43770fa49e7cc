#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <system_error>

#include "adapters/sqlite/StoreSchema.h"
#include "apps/nomiractl/AccessLook.h"
#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseWork.h"
#include "apps/nomiractl/FileChecks.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/StoreFormats.h"
#include "apps/nomiractl/Words.h"
#include "apps/nomiractl/WriteJson.h"
#include "langtools/RuntimeError.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

struct ClassCount {
    int nItems = 0;
    int nEmpty = 0;      // marked empty, or with an empty text
    int nNoMessage = 0;  // no row in the long-text language: an import can't give it a text
};

struct DatabaseInfo {
    const char* sFormat = "";
    std::uintmax_t nBytes = 0;
    std::optional<AccessLook> access{};  // of an Access file
    ByClass<ClassCount> classes{};
    ClassCount total{};
    std::vector<Text> problems{};  // what the engine finds wrong
};

void Count(ClassCount& count, const Item& item) {
    ++count.nItems;
    if (item.texts.empty()) ++count.nNoMessage;
    const auto isEmpty = [](const std::optional<Text>& sText) {
        return !sText || sText->empty() || *sText == kEmptyMarker;
    };
    const bool bEmpty = std::all_of(item.texts.begin(), item.texts.end(), isEmpty);
    if (!item.texts.empty() && bEmpty) ++count.nEmpty;
}

DatabaseInfo ReadInfo(const Machine& machine, DatabaseEngine& engine) {
    DatabaseWork database(machine.Database(), engine, DatabaseUse::Read);
    DatabaseInfo info{.nBytes = fs::file_size(machine.Database())};
    const StoreFormat format = RequireFormat(machine.Database());
    info.sFormat = NameOf(format);
    if (format != StoreFormat::Sqlite) info.access = LookIntoAccessFile(machine.Database());
    for (const Item& item : database.ReadItems()) {
        Count(info.classes[ClassRow(item.sModule, item.sKey)], item);
        Count(info.total, item);
    }
    info.problems = database.FindDamage();
    return info;
}

nlohmann::ordered_json AsJson(const ClassCount& count) {
    return {{"keys", count.nItems}, {"empty", count.nEmpty}, {"without_message", count.nNoMessage}};
}

nlohmann::ordered_json AsJson(const AccessLook& look) {
    nlohmann::ordered_json json{{"pages", look.nPages},
                                {"free_pages", look.nFreePages},
                                {"tables", nlohmann::ordered_json::array()},
                                {"users", nlohmann::ordered_json::array()},
                                {"journal", look.bJournal},
                                {"interrupted", look.bInterrupted},
                                {"not_writable", look.sWhyNotWritable}};
    for (const AccessTable& table : look.tables)
        json["tables"].push_back({{"table", table.sName}, {"rows", table.nRows}});
    for (const AccessUser& user : look.users)
        json["users"].push_back(
            {{"computer", user.sComputer}, {"name", user.sName}, {"present", user.bPresent}});
    return json;
}

nlohmann::ordered_json AsJson(const DatabaseInfo& info, const fs::path& database) {
    nlohmann::ordered_json json{
        {"database", database.string()}, {"format", info.sFormat}, {"bytes", info.nBytes}};
    if (info.access) json["access"] = AsJson(*info.access);
    json["classes"] = nlohmann::ordered_json::array();
    for (std::size_t n = 0; n < info.classes.size(); ++n) {
        nlohmann::ordered_json row{{"class", Utf8(ClassRowName(n))}};
        row.update(AsJson(info.classes[n]));
        json["classes"].push_back(row);
    }
    json["total"] = AsJson(info.total);
    json["problems"] = nlohmann::ordered_json::array();
    for (const Text& sProblem : info.problems)
        json["problems"].push_back(Utf8(sProblem));
    return json;
}

void Print(const AccessLook& look, std::ostream& out) {
    fmt::print(out, "pages      {}, {} of them free\n", look.nPages, look.nFreePages);
    for (const AccessTable& table : look.tables)
        fmt::print(out, "table      {}: {} rows\n", table.sName, table.nRows);
    for (const AccessUser& user : look.users)
        fmt::print(out, "{}   {} on {}\n", user.bPresent ? "open by " : "was open", user.sName,
                   user.sComputer);
    if (!look.sWhyNotWritable.empty())
        fmt::print(out, "writing    not possible: {}\n", look.sWhyNotWritable);
    if (look.bJournal)
        fmt::print(out, "journal    there; it comes into the file when the file is next written\n");
    if (look.bInterrupted)
        fmt::print(out, "state      a program was interrupted while it wrote the file\n");
}

void Print(const DatabaseInfo& info, const fs::path& database, std::ostream& out) {
    constexpr const char* kRow = "{:<24}{:>8}{:>8}{:>17}\n";
    fmt::print(out, "database   {}\nformat     {}\nsize       {} bytes\n", database.string(),
               info.sFormat, info.nBytes);
    if (info.access) Print(*info.access, out);
    fmt::print(out, "\n");
    fmt::print(out, kRow, "class", "keys", "empty", "without message");
    const auto print = [&](const std::string& sName, const ClassCount& c) {
        fmt::print(out, kRow, sName, c.nItems, c.nEmpty, c.nNoMessage);
    };
    for (std::size_t n = 0; n < info.classes.size(); ++n)
        if (n != kOtherKeys || info.classes[n].nItems > 0)
            print(Utf8(ClassRowName(n)), info.classes[n]);
    print("total", info.total);
    if (info.total.nNoMessage > 0)
        fmt::print(out,
                   "\nkeys without a message take no text: import with --overwrite to make"
                   " them anew\n");
    fmt::print(out, "\nintegrity  {}\n", info.problems.empty() ? "fine" : "damaged");
}

}  // namespace

ExitCode CreateDatabase(const Options& options, Streams streams) {
    RequireFree(options.file);
    try {
        sqlite::CreateStore(options.file, FormatOfWord(options.storeFormat));
    } catch (const RuntimeError& error) {
        throw Refusal(fmt::format("{}: {}", options.file.string(), Shown(error.Description())),
                      ExitCode::Files);
    }
    if (options.bJson)
        WriteJson(streams.out,
                  nlohmann::ordered_json{{"database", options.file.string()}, {"created", true}});
    else if (!options.bQuiet)
        fmt::print(streams.out, "{}: an empty message database\n", options.file.string());
    return ExitCode::Done;
}

ExitCode ShowDatabase(const Options& options, Streams streams) {
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    const DatabaseInfo info = ReadInfo(machine, machine.Engine());
    if (options.bJson)
        WriteJson(streams.out, AsJson(info, machine.Database()));
    else if (!options.bQuiet)
        Print(info, machine.Database(), streams.out);
    for (const Text& sProblem : info.problems)
        fmt::print(streams.err, "nomiractl: {}: {}\n", machine.Database().string(),
                   Shown(sProblem));
    return info.problems.empty() ? ExitCode::Done : ExitCode::Database;
}

}  // namespace nomira::companion
