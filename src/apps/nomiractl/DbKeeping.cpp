#include <fmt/format.h>
#include <fmt/ostream.h>

#include <nlohmann/json.hpp>
#include <string>
#include <system_error>

#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseRun.h"
#include "apps/nomiractl/FileChecks.h"
#include "apps/nomiractl/Interrupt.h"
#include "apps/nomiractl/Runs.h"
#include "apps/nomiractl/Words.h"
#include "apps/nomiractl/WriteJson.h"
#include "database/adoModul.h"
#include "langtools/RuntimeError.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> Problems(DatabaseWork& database) {
    std::vector<std::string> problems;
    for (const Text& sDamage : database.FindDamage())
        problems.push_back(ShownWhole(sDamage));
    if (database.HasLostMessages()) problems.emplace_back("texts that belong to no key");
    return problems;
}

void RequireWhole(DatabaseWork& database, const fs::path& path) {
    const std::vector<std::string> problems = Problems(database);
    if (!problems.empty())
        throw Refusal(fmt::format("{}: damaged: {}", path.string(), problems.front()),
                      ExitCode::Database);
}

// The rows of a file that must be a whole message database. Not while a Machine lives.
Rows RowsOf(const fs::path& file, const Options& options) {
    Options other = options;
    other.database = file;
    Machine machine(other);
    DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Read);
    Rows rows = database.ReadRows();
    RequireWhole(database, file);
    return rows;
}

}  // namespace

ExitCode BackUpDatabase(const Options& options, Streams streams) {
    RequireFree(options.file);
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    {
        DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Read);
        database.ReadRows();
        RequireWhole(database, machine.Database());
    }
    const Text sSource = u"Data Source=";
    try {
        machine.Engine().CompactDatabase(sSource + Text(kLongTextDatabase),
                                         sSource + CorePath(options.file));
    } catch (const RuntimeError& error) {
        throw Refusal(fmt::format("{}: {}", options.file.string(), Shown(error.Description())),
                      ExitCode::Files);
    }
    if (options.bJson)
        WriteJson(streams.out, nlohmann::ordered_json{{"database", machine.Database().string()},
                                                      {"backup", options.file.string()}});
    else if (!options.bQuiet)
        fmt::print(streams.out, "{}: a copy of {}\n", options.file.string(),
                   machine.Database().string());
    return ExitCode::Done;
}

ExitCode RestoreDatabase(const Options& options, Streams streams) {
    const InterruptWatch watch;
    const std::optional<Journal> journal = JournalFor(options, streams.err);
    const Rows wanted = RowsOf(options.file, options);
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Write);
    const Rows before = database.ReadRows();
    Plan plan = PlanOnDatabase(options, machine, Difference(before, wanted));
    database.ChangeRows(plan.items);
    EndDatabaseRun(plan, before, options.file, options, journal, machine, database);
    ShowDatabaseRun(plan, options, streams.out);
    return ExitCode::Done;
}

ExitCode VerifyDatabase(const Options& options, Streams streams) {
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Read);
    const Rows rows = database.ReadRows();
    const std::vector<std::string> problems = Problems(database);
    if (options.bJson)
        WriteJson(streams.out, nlohmann::ordered_json{{"database", machine.Database().string()},
                                                      {"keys", rows.size()},
                                                      {"problems", problems}});
    else if (!options.bQuiet && problems.empty())
        fmt::print(streams.out, "{}: {} keys, whole\n", machine.Database().string(), rows.size());
    for (const std::string& sProblem : problems)
        fmt::print(streams.err, "nomiractl: {}: {}\n", machine.Database().string(), sProblem);
    return problems.empty() ? ExitCode::Done : ExitCode::Database;
}

}  // namespace nomira::companion
