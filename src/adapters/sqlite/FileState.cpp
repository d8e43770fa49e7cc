#include "adapters/sqlite/FileState.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "adapters/sqlite/Failure.h"

namespace nomira::sqlite {
namespace {

// In bytes; SQLite takes some shorter files for new, empty databases.
constexpr off_t kSmallestPage = 512;

constexpr std::chrono::seconds kQuietTime{3};

std::chrono::nanoseconds TimeOf(const timespec& time) {
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace

std::chrono::nanoseconds SystemTime() {
    return std::chrono::system_clock::now().time_since_epoch();
}

bool FileState::IsQuiet(std::chrono::nanoseconds now) const {
    return now - std::max(modified, changed) > kQuietTime;
}

std::optional<FileState> TryLookAtFile(const std::filesystem::path& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return std::nullopt;
    return FileState{{status.st_dev, status.st_ino, status.st_mode, status.st_uid, status.st_gid},
                     status.st_size,
                     TimeOf(status.st_mtim),
                     TimeOf(status.st_ctim)};
}

FileState LookAtFile(const std::filesystem::path& path) {
    const auto state = TryLookAtFile(path);
    if (!state) RaiseFailure(std::generic_category().message(errno));
    if (!S_ISREG(state->identity.nMode) || state->nSize < kSmallestPage)
        RaiseFailure("file is not a database");
    return *state;
}

}  // namespace nomira::sqlite
