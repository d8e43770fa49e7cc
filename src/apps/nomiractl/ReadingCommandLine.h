// The command line of the commands that only read.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>

#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/Options.h"

namespace nomira::companion {

// --encoding alone.
void AddEncoding(CLI::App& command, Options& options, const char* sWhat);
// --encoding and --eol of a command that works on a text file.
void AddTextForm(CLI::App& command, Options& options);

// Adds them to `app`. Parsing fills `options`, and calls `choose` with the command that was given.
void AddReadingCommands(CLI::App& app, Options& options,
                        const std::function<void(Command)>& choose);

// --jobs.
void AddJobsOption(CLI::App& command, Options& options);

}  // namespace nomira::companion
