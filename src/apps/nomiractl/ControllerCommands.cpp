#include <fmt/format.h>
#include <fmt/ostream.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "adapters/posix/NativeName.h"
#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/ControllerLink.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/Words.h"
#include "apps/nomiractl/WriteJson.h"
#include "link/SystemSizes.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

// What a command did with one of its arguments: a line for people, an object for pipelines.
struct Done {
    std::string sLine;
    Json json;
};

// Works the arguments one by one; one that fails is told, and the others go on.
template <typename Work>
ExitCode WorkEach(const std::vector<std::string>& names, const Options& options, Streams streams,
                  Work work) {
    Json all = Json::array();
    std::size_t nFailed = 0;
    ExitCode exit = ExitCode::Done;
    for (const std::string& sName : names) {
        try {
            Done done = work(sName);
            if (!options.bQuiet && !options.bJson) streams.out << done.sLine << std::endl;
            all.push_back(std::move(done.json));
        } catch (const Refusal& refusal) {
            ++nFailed;
            exit = Graver(exit, refusal.Exit());
            fmt::print(streams.err, "nomiractl: {}: {}\n", sName, refusal.what());
            all.push_back({{"name", sName}, {"failure", refusal.what()}});
        }
    }
    if (options.bJson)
        WriteJson(streams.out, Json{{"failed", nFailed}, {"results", std::move(all)}});
    return exit;
}

void RequireFolder(const fs::path& folder) {
    std::error_code error;
    if (!fs::is_directory(folder, error))
        throw Refusal(
            fmt::format("{0}: no such folder; make it with: mkdir -p {0}", folder.string()),
            ExitCode::Files);
}

void RequireNew(const fs::path& path) {
    std::error_code error;
    if (fs::exists(fs::symlink_status(path, error)))
        throw Refusal(fmt::format("{} exists already; --force writes over it", path.string()),
                      ExitCode::Files);
}

// A target that ends in a separator is a directory, for files to keep their names in.
Text TargetOf(const fs::path& file, const Options& options) {
    Text sTarget = posix::FromNative(options.target);
    if (sTarget.ends_with(u'\\')) sTarget += posix::FromNative(file.filename().string());
    return sTarget;
}

Done Assign(ControllerLink& link, const std::string& sAssignment, std::size_t nEquals) {
    const Text sName = posix::FromNative(sAssignment.substr(0, nEquals));
    const Text sValue = posix::FromNative(sAssignment.substr(nEquals + 1));
    link.Write(sName, sValue);
    return {fmt::format("{}={}", ShownWhole(sName), ShownWhole(sValue)),
            {{"name", Utf8(sName)}, {"value", Utf8(sValue)}, {"written", true}}};
}

Done Show(ControllerLink& link, const std::string& sName) {
    const Text sValue = link.Read(posix::FromNative(sName));
    return {fmt::format("{}={}", sName, ShownWhole(sValue)),
            {{"name", sName}, {"value", Utf8(sValue)}, {"written", false}}};
}

struct SourceRow {
    SizeSource source;
    const char* sJson;
    const char* sWords;
};
constexpr SourceRow kSources[]{
    {SizeSource::Told, "told", "told by the controller"},
    {SizeSource::Usual, "default", "default"},
    {SizeSource::Untouched, "unknown", "not told, and there is no default"},
};

const SourceRow& RowOf(SizeSource source) {
    const SourceRow* row = kSources;
    while (row->source != source)
        ++row;
    return *row;
}

}  // namespace

ExitCode ListController(const Options& options, Streams streams) {
    const Text sDirectory = ControllerDirectory(options.directory);
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    ControllerLink link(machine.ControllerSocket());
    const std::vector<Text> names =
        options.bDirectories ? link.Directories(sDirectory) : link.Files(sDirectory);
    if (options.bJson) {
        Json json{{"directory", Utf8(sDirectory)}, {"names", Json::array()}};
        for (const Text& sName : names)
            json["names"].push_back(Utf8(sName));
        WriteJson(streams.out, json);
    } else if (!options.bQuiet) {
        for (const Text& sName : names)
            fmt::print(streams.out, "{}\n", ShownWhole(sName));
    }
    return ExitCode::Done;
}

ExitCode FetchPrograms(const Options& options, Streams streams) {
    RequireFolder(options.folder);
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    ControllerLink link(machine.ControllerSocket());
    return WorkEach(options.names, options, streams, [&](const std::string& sName) -> Done {
        const fs::path file = options.folder / sName;
        if (!options.bForce) RequireNew(file);
        link.Fetch(posix::FromNative(sName), options.folder);
        return {fmt::format("{}: fetched", file.string()),
                {{"name", sName}, {"file", file.string()}}};
    });
}

ExitCode SendPrograms(const Options& options, Streams streams) {
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    ControllerLink link(machine.ControllerSocket());
    return WorkEach(options.names, options, streams, [&](const std::string& sFile) -> Done {
        const Text sTarget = TargetOf(sFile, options);
        link.Send(sFile, sTarget);
        Json json{{"name", sFile}};
        if (!sTarget.empty()) json["target"] = Utf8(sTarget);
        return {fmt::format("{}: sent", sFile), std::move(json)};
    });
}

ExitCode WorkVariables(const Options& options, Streams streams) {
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    ControllerLink link(machine.ControllerSocket());
    return WorkEach(options.names, options, streams, [&](const std::string& sArgument) {
        const std::size_t nEquals = sArgument.find('=');
        return nEquals == std::string::npos ? Show(link, sArgument)
                                            : Assign(link, sArgument, nEquals);
    });
}

ExitCode ShowSizes(const Options& options, Streams streams) {
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    const ControllerLink link(machine.ControllerSocket());
    Json json{{"sizes", Json::array()}};
    for (const SystemSize& size : ReadSystemSizes()) {
        const SourceRow& source = RowOf(size.source);
        json["sizes"].push_back(
            {{"variable", Utf8(size.sVariable)}, {"size", size.nSize}, {"source", source.sJson}});
        if (!options.bJson && !options.bQuiet)
            fmt::print(streams.out, "{:<22}{:>6}  {}\n", Utf8(size.sVariable), size.nSize,
                       source.sWords);
    }
    if (options.bJson) WriteJson(streams.out, json);
    return ExitCode::Done;
}

}  // namespace nomira::companion
