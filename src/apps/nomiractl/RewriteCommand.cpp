#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <system_error>
#include <vector>

#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseWork.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/ReplaceFile.h"
#include "apps/nomiractl/RewriteRun.h"
#include "langtools/BasicText.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

bool IsProgram(const fs::directory_entry& entry) {
    const Text sExtension = FromAscii(entry.path().extension().string());
    return !entry.is_directory() && EqualNoCase(sExtension, u".src");
}

// The programs of a directory, sorted by name.
std::vector<fs::path> ProgramsOf(const fs::path& directory) {
    std::vector<fs::path> programs;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(directory, error)) {
        if (IsProgram(entry)) programs.push_back(entry.path());
    }
    if (error) throw Refusal(fmt::format("{}: {}", directory.string(), error.message()));
    std::sort(programs.begin(), programs.end());
    return programs;
}

std::vector<fs::path> NamedPrograms(const Options& options) {
    std::vector<fs::path> programs;
    for (const fs::path& path : options.programs) {
        if (!fs::is_directory(path)) {
            programs.push_back(path);
            continue;
        }
        for (fs::path& program : ProgramsOf(path))
            programs.push_back(std::move(program));
    }
    return programs;
}

}  // namespace

ExitCode RewritePrograms(const Options& options, Streams streams) {
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    // A database that can't be read would look like one without names.
    DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Read);
    database.ReadItems();
    RewriteRun run(options, streams, machine.Boxes(), database);
    for (const fs::path& path : NamedPrograms(options))
        run.Rewrite(
            path.string(), [&] { return ReadProgram(path); },
            [&](const std::string& sBytes) { ReplaceFile(path, sBytes); });
    return run.Finish();
}

}  // namespace nomira::companion
