#include "adapters/sqlite/NewFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "adapters/sqlite/Failure.h"
#include "nativefiles/NativeFiles.h"

namespace nomira::sqlite {
namespace {

std::filesystem::path FolderOf(const std::filesystem::path& path) {
    return path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
}

std::string_view AsText(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// False where the system has no files without a name, or can't give them one.
bool MakeUnnamed(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                 mode_t nPermissions) {
    const nativefiles::Descriptor file(
        ::open(FolderOf(path).c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, nPermissions));
    if (!file.IsOpen()) return false;
    nativefiles::WriteAll(file, AsText(bytes));
    nativefiles::Sync(file);
    const std::string sFile = "/proc/self/fd/" + std::to_string(file.Get());
    if (::linkat(AT_FDCWD, sFile.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) != 0) {
        if (errno == EEXIST) nativefiles::RaiseErrno();
        return false;
    }
    try {
        nativefiles::SyncFolder(path.parent_path());
    } catch (const std::system_error&) {
        ::unlink(path.c_str());
        throw;
    }
    return true;
}

}  // namespace

NewFile::NewFile(std::filesystem::path path, mode_t nPermissions) : m_path(std::move(path)) {
    OnDisk([&] { nativefiles::Open(m_path, O_CREAT | O_EXCL | O_WRONLY, nPermissions); });
}

NewFile::~NewFile() {
    std::error_code ignored;
    if (!m_bKept) std::filesystem::remove(m_path, ignored);
}

void NewFile::Keep() {
    OnDisk([&] {
        nativefiles::Sync(nativefiles::Open(m_path, O_RDONLY));
        nativefiles::SyncFolder(m_path.parent_path());
    });
    m_bKept = true;
}

void MakeFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
              mode_t nPermissions) {
    if (OnDisk([&] { return MakeUnnamed(path, bytes, nPermissions); })) return;
    NewFile made(path, nPermissions);
    WriteFile(path, bytes);
    made.Keep();
}

void WriteFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    OnDisk(
        [&] { nativefiles::WriteAll(nativefiles::Open(path, O_WRONLY | O_TRUNC), AsText(bytes)); });
}

}  // namespace nomira::sqlite
