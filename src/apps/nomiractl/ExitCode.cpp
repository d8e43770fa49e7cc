#include "apps/nomiractl/ExitCode.h"

#include <fmt/ostream.h>

#include <algorithm>
#include <iterator>

namespace nomira::companion {
namespace {

constexpr ExitWords kWords[]{
    {ExitCode::Done, "done; no difference, no finding"},
    {ExitCode::Differs, "differences or findings (diff, check, get, rewrite --check)"},
    {ExitCode::WrongUsage, "wrong usage"},
    {ExitCode::Refused, "the input was refused"},
    {ExitCode::Files, "a file is missing, or can't be read or written"},
    {ExitCode::Database, "the database is missing, locked, damaged or none"},
    {ExitCode::Controller, "the controller doesn't answer, or refuses"},
    {ExitCode::Interrupted, "interrupted"},
};

struct Failure {
    ErrorNumber number;
    ExitCode exit;
};

constexpr Failure kFailures[]{
    {ErrorNumber::BadFileName, ExitCode::Files},
    {ErrorNumber::FileNotFound, ExitCode::Files},
    {ErrorNumber::FileAlreadyOpen, ExitCode::Files},
    {ErrorNumber::DeviceIo, ExitCode::Files},
    {ErrorNumber::FileAlreadyExists, ExitCode::Files},
    {ErrorNumber::DiskFull, ExitCode::Files},
    {ErrorNumber::InputPastEnd, ExitCode::Files},
    {ErrorNumber::DeviceUnavailable, ExitCode::Files},
    {ErrorNumber::PermissionDenied, ExitCode::Files},
    {ErrorNumber::DiskNotReady, ExitCode::Files},
    {ErrorNumber::PathFileAccess, ExitCode::Files},
    {ErrorNumber::PathNotFound, ExitCode::Files},
    {ErrorNumber::NoCurrentRecord, ExitCode::Database},
    {ErrorNumber::UpdateNotAllowed, ExitCode::Database},
    {ErrorNumber::NoSuchField, ExitCode::Database},
    {ErrorNumber::ObjectClosed, ExitCode::Database},
    {ErrorNumber::EngineFailure, ExitCode::Database},
    {ErrorNumber::LinkFailure, ExitCode::Controller},
};

}  // namespace

ExitCode ExitOf(const RuntimeError& error) {
    const auto* const found =
        std::find_if(std::begin(kFailures), std::end(kFailures),
                     [&](const Failure& failure) { return failure.number == error.Number(); });
    return found == std::end(kFailures) ? ExitCode::Refused : found->exit;
}

std::span<const ExitWords> ExitCodeTable() {
    return kWords;
}

void PrintExitCodes(std::ostream& out) {
    for (const ExitWords& words : kWords)
        fmt::print(out, "  {:<4} {}\n", static_cast<int>(words.exit), words.sWords);
}

}  // namespace nomira::companion
