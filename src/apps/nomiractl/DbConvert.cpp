#include <fmt/format.h>
#include <fmt/ostream.h>

#include <nlohmann/json.hpp>
#include <string>
#include <system_error>

#include "adapters/sqlite/ConvertFile.h"
#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/FileChecks.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/StoreFormats.h"
#include "apps/nomiractl/Words.h"
#include "apps/nomiractl/WriteJson.h"
#include "langtools/RuntimeError.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

// Runs work of the engine's, and puts its failure in words.
template <typename Work>
decltype(auto) InWords(const fs::path& path, Work work) {
    try {
        return work();
    } catch (const RuntimeError& error) {
        throw Refusal(fmt::format("{}: {}", path.string(), Shown(error.Description())),
                      ExitCode::Database);
    }
}

void ShowLeftOut(const std::vector<std::string>& leftOut, const Options& options, Streams streams) {
    if (options.bQuiet) return;
    for (const std::string& sThing : leftOut)
        fmt::print(streams.err, "nomiractl: left out: {}\n", sThing);
}

}  // namespace

ExitCode ConvertDatabase(const Options& options, Streams streams) {
    const StoreFormat format = FormatOfWord(options.storeFormat);
    Machine machine(options);
    CheckDatabase(machine.Database(), DatabaseUse::Read);
    RequireFree(options.file);
    const std::vector<std::string> leftOut = InWords(machine.Database(), [&] {
        return sqlite::ConvertFile(machine.Database(), options.file, format);
    });
    if (options.bJson)
        WriteJson(streams.out, nlohmann::ordered_json{{"database", machine.Database().string()},
                                                      {"made", options.file.string()},
                                                      {"format", NameOf(format)},
                                                      {"left_out", leftOut}});
    else if (!options.bQuiet)
        fmt::print(streams.out, "{}: {} as {}\n", options.file.string(),
                   machine.Database().string(), NameOf(format));
    ShowLeftOut(leftOut, options, streams);
    return ExitCode::Done;
}

ExitCode CompactDatabaseFile(const Options& options, Streams streams) {
    Machine machine(options);
    const fs::path& path = machine.Database();
    CheckDatabase(path, DatabaseUse::Write);
    RequireFormat(path);
    const std::uintmax_t nBefore = fs::file_size(path);
    const sqlite::CompactionResult result =
        InWords(path, [&] { return sqlite::CompactInPlace(path, options.bForce); });
    if (!result.bDone) {
        ShowLeftOut(result.leftOut, options, streams);
        throw Refusal(fmt::format("{}: nothing was changed; what is told above would be lost, to do"
                                  " it all the same give --force",
                                  path.string()),
                      ExitCode::Refused);
    }
    const std::uintmax_t nNow = fs::file_size(path);
    if (options.bJson)
        WriteJson(streams.out, nlohmann::ordered_json{{"database", path.string()},
                                                      {"bytes_before", nBefore},
                                                      {"bytes", nNow},
                                                      {"left_out", result.leftOut}});
    else if (!options.bQuiet)
        fmt::print(streams.out, "{}: {} bytes, {} before\n", path.string(), nNow, nBefore);
    ShowLeftOut(result.leftOut, options, streams);
    return ExitCode::Done;
}

}  // namespace nomira::companion
