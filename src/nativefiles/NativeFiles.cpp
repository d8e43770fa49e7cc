#include "nativefiles/NativeFiles.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace nomira::nativefiles {
namespace {

constexpr mode_t kNewFile = 0666;
constexpr mode_t kAnyoneWrites = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr std::size_t kPiece = std::size_t{64} * 1024;

}  // namespace

void RaiseErrno() {
    throw std::system_error(errno, std::generic_category());
}

Descriptor Open(const std::filesystem::path& path, int nFlags, mode_t nMode) {
    Descriptor file(::open(path.c_str(), nFlags | O_CLOEXEC, nMode));
    if (!file.IsOpen()) RaiseErrno();
    return file;
}

std::optional<struct stat> StatusOf(const std::filesystem::path& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) return status;
    if (errno != ENOENT) RaiseErrno();
    return std::nullopt;
}

struct stat StatusOf(const Descriptor& file) {
    struct stat status {};
    if (::fstat(file.Get(), &status) != 0) RaiseErrno();
    return status;
}

bool IsWriteProtected(const struct stat& status) {
    return (status.st_mode & kAnyoneWrites) == 0;
}

namespace {

// All of a file at once, and one byte more, so that the end is seen as well.
std::size_t FirstPiece(const Descriptor& file, std::size_t nLimit) {
    struct stat status {};
    if (::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) return kPiece;
    const auto nSize = static_cast<std::size_t>(status.st_size);
    return nSize < nLimit ? nSize + 1 : kPiece;
}

}  // namespace

std::string ReadAll(const Descriptor& file, std::size_t nLimit) {
    std::string sBytes(FirstPiece(file, nLimit), '\0');
    for (std::size_t nOld = 0;;) {
        if (nOld == sBytes.size()) sBytes.resize(nOld + kPiece);
        const ssize_t nRead = ::read(file.Get(), sBytes.data() + nOld, sBytes.size() - nOld);
        if (nRead < 0 && errno != EINTR) RaiseErrno();
        nOld += nRead > 0 ? static_cast<std::size_t>(nRead) : 0;
        if (nOld > nLimit) throw std::system_error(std::make_error_code(std::errc::file_too_large));
        if (nRead != 0) continue;
        sBytes.resize(nOld);
        return sBytes;
    }
}

std::string ReadAt(const Descriptor& file, std::size_t nCount, std::size_t nPlace) {
    std::string sBytes(nCount, '\0');
    std::size_t nDone = 0;
    while (nDone < nCount) {
        const ssize_t nRead = ::pread(file.Get(), sBytes.data() + nDone, nCount - nDone,
                                      static_cast<off_t>(nPlace + nDone));
        if (nRead == 0) break;
        if (nRead < 0 && errno != EINTR) RaiseErrno();
        nDone += nRead > 0 ? static_cast<std::size_t>(nRead) : 0;
    }
    sBytes.resize(nDone);
    return sBytes;
}

void WriteAll(const Descriptor& file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t nWritten = ::write(file.Get(), bytes.data(), bytes.size());
        if (nWritten < 0 && errno != EINTR) RaiseErrno();
        bytes.remove_prefix(nWritten > 0 ? static_cast<std::size_t>(nWritten) : 0);
    }
}

void WriteAt(const Descriptor& file, std::string_view bytes, std::size_t nPlace) {
    while (!bytes.empty()) {
        const ssize_t nWritten =
            ::pwrite(file.Get(), bytes.data(), bytes.size(), static_cast<off_t>(nPlace));
        if (nWritten < 0 && errno != EINTR) RaiseErrno();
        const auto nDone = nWritten > 0 ? static_cast<std::size_t>(nWritten) : 0;
        bytes.remove_prefix(nDone);
        nPlace += nDone;
    }
}

void Sync(const Descriptor& file) {
    if (::fsync(file.Get()) != 0) RaiseErrno();
}

void SyncFolder(const std::filesystem::path& folder) {
    Sync(Open(folder.empty() ? "." : folder, O_RDONLY | O_DIRECTORY));
}

mode_t NewFileMode() {
    const mode_t nMask = ::umask(0);
    ::umask(nMask);
    return kNewFile & ~nMask;
}

}  // namespace nomira::nativefiles
