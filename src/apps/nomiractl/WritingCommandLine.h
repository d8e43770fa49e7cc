// The command line of the commands that take runs back or apply plans, and the options that the
// writing commands share.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>

#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/Options.h"

namespace nomira::companion {

// Adds them to `app`. Parsing fills `options`, and calls `choose` with the command that was given.
void AddWritingCommands(CLI::App& app, Options& options,
                        const std::function<void(Command)>& choose);

// Those below `db`.
void AddDatabaseKeeping(CLI::App& db, Options& options, const std::function<void(Command)>& choose);

// --format, of a database file that is made.
void AddStoreFormat(CLI::App& command, Options& options);

// --plan and --max-changes.
void AddPlanOptions(CLI::App& command, Options& options);
// --atomic.
void AddAtomicOption(CLI::App& command, Options& options);

}  // namespace nomira::companion
