#include "adapters/rpc/LocalFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <system_error>

namespace nomira::rpc {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kPermissionBits = 0777;
constexpr mode_t kNewFile = 0666;
constexpr mode_t kAnyoneWrites = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr std::size_t kPiece = std::size_t{64} * 1024;

[[noreturn]] void RaiseErrno() {
    throw std::system_error(errno, std::generic_category());
}

[[noreturn]] void RaiseCondition(std::errc condition) {
    throw std::system_error(std::make_error_code(condition));
}

class Descriptor {
  public:
    explicit Descriptor(int nDescriptor) : m_nDescriptor(nDescriptor) {
        if (nDescriptor < 0) RaiseErrno();
    }
    ~Descriptor() { ::close(m_nDescriptor); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Get() const { return m_nDescriptor; }

  private:
    int m_nDescriptor;
};

// nullopt if nothing is there.
std::optional<struct stat> StatusOf(const fs::path& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) return status;
    if (errno != ENOENT) RaiseErrno();
    return std::nullopt;
}

void WriteAll(const Descriptor& file, std::string_view sBytes) {
    while (!sBytes.empty()) {
        const ssize_t nWritten = ::write(file.Get(), sBytes.data(), sBytes.size());
        if (nWritten >= 0)
            sBytes.remove_prefix(static_cast<std::size_t>(nWritten));
        else if (errno != EINTR)
            RaiseErrno();
    }
}

mode_t NewFileMode() {
    const mode_t nMask = ::umask(0);
    ::umask(nMask);
    return kNewFile & ~nMask;
}

// The file beside the target; goes again unless it took the target's place.
class FileBeside {
  public:
    explicit FileBeside(const fs::path& target)
        : m_sName((target.parent_path() / ".nomira.XXXXXX").string()),
          m_file(::mkostemp(m_sName.data(), O_CLOEXEC)) {}
    ~FileBeside() {
        if (!m_sName.empty()) ::unlink(m_sName.c_str());
    }
    FileBeside(const FileBeside&) = delete;
    FileBeside& operator=(const FileBeside&) = delete;

    void Fill(std::string_view sBytes, mode_t nMode) {
        WriteAll(m_file, sBytes);
        if (::fchmod(m_file.Get(), nMode) != 0) RaiseErrno();
    }
    void TakePlaceOf(const fs::path& target) {
        if (::rename(m_sName.c_str(), target.c_str()) != 0) RaiseErrno();
        m_sName.clear();
    }

  private:
    std::string m_sName;
    Descriptor m_file;
};

}  // namespace

std::string ReadLocalFile(const fs::path& path, std::size_t nLimit) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (::fstat(file.Get(), &status) != 0) RaiseErrno();
    if (!S_ISREG(status.st_mode)) RaiseCondition(std::errc::invalid_argument);
    std::string sBytes;
    for (std::size_t nOld = 0;;) {
        sBytes.resize(nOld + kPiece);
        const ssize_t nRead = ::read(file.Get(), sBytes.data() + nOld, kPiece);
        if (nRead < 0 && errno != EINTR) RaiseErrno();
        nOld += nRead > 0 ? static_cast<std::size_t>(nRead) : 0;
        if (nOld > nLimit) RaiseCondition(std::errc::file_too_large);
        if (nRead != 0) continue;
        sBytes.resize(nOld);
        return sBytes;
    }
}

void ReplaceLocalFile(const fs::path& path, std::string_view sBytes) {
    const std::optional<struct stat> old = StatusOf(path);
    if (old && !S_ISREG(old->st_mode)) RaiseCondition(std::errc::invalid_argument);
    if (old && (old->st_mode & kAnyoneWrites) == 0) RaiseCondition(std::errc::permission_denied);
    const fs::path target = old ? fs::canonical(path) : path;
    FileBeside beside(target);
    beside.Fill(sBytes, old ? old->st_mode & kPermissionBits : NewFileMode());
    beside.TakePlaceOf(target);
}

}  // namespace nomira::rpc
