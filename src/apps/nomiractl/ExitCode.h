// The companion's exit status. Pipelines rely on the numbers; the help and the guide tell them.
#pragma once

#include <ostream>
#include <span>

#include "langtools/RuntimeError.h"

namespace nomira::companion {

enum class ExitCode {
    Done = 0,        // also: no difference, no finding
    Differs = 1,     // differences or findings, where the command was asked for them
    WrongUsage = 2,  // the arguments make no command
    Refused = 3,     // the input can't be taken: a line, a name, a value
    Files = 4,       // a file is missing, or can't be read or written
    Database = 5,    // the database is missing, locked, damaged or none
    Controller = 6,  // the controller doesn't answer, or refuses
    Interrupted = 130,
};

// Of several failures in one run the one with the greater number is told.
constexpr ExitCode Graver(ExitCode left, ExitCode right) {
    return left < right ? right : left;
}

// The status of a failure of the core that nobody has put in words.
ExitCode ExitOf(const RuntimeError& error);

struct ExitWords {
    ExitCode exit;
    const char* sWords;
};
// All of them with their meanings, in the order of their numbers.
std::span<const ExitWords> ExitCodeTable();
// The same, a line each, for the help.
void PrintExitCodes(std::ostream& out);

}  // namespace nomira::companion
