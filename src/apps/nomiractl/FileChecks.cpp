#include "apps/nomiractl/FileChecks.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <string>
#include <system_error>

#include "apps/nomiractl/Refusal.h"
#include "nativefiles/NativeFiles.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

// What stands at the path, links followed. "Not found" is an answer; anything else that keeps it
// from being looked at is a Refusal.
fs::file_status StatusOf(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::none)
        throw Refusal(fmt::format("{}: {}", path.string(), error.message()), ExitCode::Files);
    return status;
}

void RequireReadable(const fs::path& path) {
    if (::access(path.c_str(), R_OK) == 0) return;
    throw Refusal(fmt::format("{}: {}", path.string(), std::generic_category().message(errno)),
                  ExitCode::Files);
}

}  // namespace

bool IsWritable(const fs::path& path) {
    const std::optional<struct stat> status = nativefiles::StatusOf(path);
    return status && !nativefiles::IsWriteProtected(*status) && ::access(path.c_str(), W_OK) == 0;
}

void RequireWritable(const fs::path& path) {
    const fs::file_status status = StatusOf(path);
    if (!fs::is_regular_file(status)) throw Refusal("not a plain file", ExitCode::Files);
    if (IsWritable(path)) return;
    throw Refusal(fmt::format("the file is read-only; allow it with: chmod u+w {}", path.string()),
                  ExitCode::Files);
}

void RequireFree(const fs::path& path) {
    std::error_code error;
    if (fs::exists(fs::symlink_status(path, error)))
        throw Refusal(fmt::format("{}: exists already; an existing file is never replaced, name"
                                  " another one or remove it yourself",
                                  path.string()),
                      ExitCode::Files);
    const fs::path folder = fs::absolute(path).parent_path();
    if (!fs::is_directory(folder, error))
        throw Refusal(
            fmt::format("{0}: no such folder; make it with: mkdir -p {0}", folder.string()),
            ExitCode::Files);
}

void CheckTextFile(const fs::path& path) {
    const fs::file_status status = StatusOf(path);
    if (!fs::exists(status))
        throw Refusal(fmt::format("{}: no such file", path.string()), ExitCode::Files);
    if (fs::is_directory(status))
        throw Refusal(fmt::format("{}: a folder; name the text file in it", path.string()),
                      ExitCode::Files);
    if (!fs::is_regular_file(status))
        throw Refusal(
            fmt::format("{}: not a plain file; the import reads it more than once", path.string()),
            ExitCode::Files);
    RequireReadable(path);
}

void CheckDatabase(const fs::path& path, DatabaseUse use) {
    const fs::file_status status = StatusOf(path);
    if (!fs::exists(status))
        throw Refusal(fmt::format("no database at {0}; make one with: nomiractl db create {0}",
                                  path.string()),
                      ExitCode::Database);
    if (!fs::is_regular_file(status))
        throw Refusal(fmt::format("{}: no database, for it is not a plain file", path.string()),
                      ExitCode::Database);
    if (fs::file_size(path) == 0)
        throw Refusal(fmt::format("{0}: an empty file and no database; remove it and make one with:"
                                  " nomiractl db create {0}",
                                  path.string()),
                      ExitCode::Database);
    RequireReadable(path);
    if (use == DatabaseUse::Write && !IsWritable(path))
        throw Refusal(fmt::format("{0}: the database is read-only; allow it with: chmod u+w {0}",
                                  path.string()),
                      ExitCode::Database);
}

}  // namespace nomira::companion
