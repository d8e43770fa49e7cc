#include "adapters/jet/LockFile.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <system_error>

#include "adapters/jet/Failure.h"
#include "adapters/jet/FileLock.h"
#include "nativefiles/NativeFiles.h"

namespace nomira::jet {
namespace {

constexpr std::array<const char*, 2> kExtensions{".ldb", ".LDB"};

constexpr std::size_t kNameBytes = 32;
constexpr std::size_t kEntryBytes = 2 * kNameBytes;
constexpr std::size_t kMostEntries = 255;
constexpr std::int64_t kUserLocks = 0x10000001;  // one byte per entry

std::string NameAt(std::string_view sFile, std::size_t nPlace) {
    std::string sName(sFile.substr(nPlace, kNameBytes));
    sName.resize(std::min(sName.size(), sName.find('\0')));
    sName.resize(sName.find_last_not_of(' ') + 1);
    for (char& c : sName)
        if (c < ' ' || c > '~') c = '?';
    return sName;
}

}  // namespace

std::optional<std::filesystem::path> FindLockFile(const std::filesystem::path& database) {
    for (const char* sExtension : kExtensions) {
        std::filesystem::path path = database;
        path.replace_extension(sExtension);
        std::error_code ignored;
        if (path != database && std::filesystem::exists(path, ignored)) return path;
    }
    return std::nullopt;
}

std::vector<LockFileUser> ReadLockFile(const std::filesystem::path& lockFile) {
    try {
        const nativefiles::Descriptor file =
            nativefiles::Open(lockFile, O_RDONLY | O_NONBLOCK | O_NOCTTY);
        const std::string sFile = nativefiles::ReadAt(file, kMostEntries * kEntryBytes, 0);
        std::vector<LockFileUser> users;
        for (std::size_t n = 0; (n + 1) * kEntryBytes <= sFile.size(); ++n) {
            LockFileUser user{NameAt(sFile, n * kEntryBytes),
                              NameAt(sFile, n * kEntryBytes + kNameBytes), false};
            if (user.sComputer.empty()) continue;
            user.bPresent = IsLockedByOthers(file, kUserLocks + static_cast<std::int64_t>(n), 1);
            users.push_back(std::move(user));
        }
        return users;
    } catch (const std::system_error& error) {
        Fail(FailureKind::InputOutput, error.code().message());
    }
}

bool IsLockFileHeld(const std::filesystem::path& lockFile) {
    try {
        return IsLockedByOthers(nativefiles::Open(lockFile, O_RDONLY | O_NONBLOCK | O_NOCTTY));
    } catch (const std::system_error&) {
        return true;
    } catch (const Failure&) {
        return true;
    }
}

}  // namespace nomira::jet
