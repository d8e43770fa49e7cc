// What the file system tells of a database file at one moment: which file it is, with which rights,
// and when it was last changed.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>

namespace nomira::sqlite {

// Which file stood at a path, and with which rights.
struct FileIdentity {
    dev_t nDevice;
    ino_t nInode;
    mode_t nMode;
    uid_t nOwner;
    gid_t nGroup;

    bool operator==(const FileIdentity&) const = default;
};

// The time of day, in nanoseconds from the start of 1970. Tests set their own.
using Clock = std::function<std::chrono::nanoseconds()>;
std::chrono::nanoseconds SystemTime();

struct FileState {
    FileIdentity identity;
    off_t nSize;
    std::chrono::nanoseconds modified;
    std::chrono::nanoseconds changed;  // also by a change of its rights or its name

    bool operator==(const FileState&) const = default;

    // Whether the last change lies so far back that every later one will give the file another
    // time: times of files come in steps, of up to two seconds on the coarsest file system (FAT).
    bool IsQuiet(std::chrono::nanoseconds now) const;
};

// nullopt if nothing stands there that can be looked at.
std::optional<FileState> TryLookAtFile(const std::filesystem::path& path);
// Raises EngineFailure unless a file stands there that is long enough for a database: SQLite would
// take an empty one for a new database.
FileState LookAtFile(const std::filesystem::path& path);

}  // namespace nomira::sqlite
