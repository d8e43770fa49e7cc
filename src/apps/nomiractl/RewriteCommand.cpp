#include <string>

#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseWork.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/ProgramPaths.h"
#include "apps/nomiractl/ReplaceFile.h"
#include "apps/nomiractl/RewriteRun.h"

namespace nomira::companion {
ExitCode RewritePrograms(const Options& options, Streams streams) {
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    // A database that can't be read would look like one without names.
    DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Read);
    database.ReadItems();
    RewriteRun run(options, streams, machine.Boxes(), database);
    for (const std::filesystem::path& path : NamedPrograms(options.programs))
        run.Rewrite(
            path.string(), [&] { return ReadProgram(path); },
            [&](const std::string& sBytes) { ReplaceFile(path, sBytes); });
    return run.Finish();
}

}  // namespace nomira::companion
