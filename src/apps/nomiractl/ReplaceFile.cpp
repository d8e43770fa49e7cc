#include "apps/nomiractl/ReplaceFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <string>
#include <system_error>

#include "apps/nomiractl/Refusal.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kPermissionBits = 07777;
constexpr mode_t kAnyoneWrites = S_IWUSR | S_IWGRP | S_IWOTH;

[[noreturn]] void Refuse(const fs::path& path, std::string_view sWhat) {
    throw Refusal(fmt::format("{}: {}", path.string(), sWhat), ExitCode::Files);
}

[[noreturn]] void RefuseWithSystemWords(const fs::path& path) {
    Refuse(path, std::generic_category().message(errno));
}

class Descriptor {
  public:
    Descriptor(int nDescriptor, const fs::path& path) : m_nDescriptor(nDescriptor) {
        if (nDescriptor < 0) RefuseWithSystemWords(path);
    }
    ~Descriptor() { ::close(m_nDescriptor); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Get() const { return m_nDescriptor; }

  private:
    int m_nDescriptor;
};

void WriteAll(const Descriptor& file, std::string_view bytes, const fs::path& path) {
    while (!bytes.empty()) {
        const ssize_t nWritten = ::write(file.Get(), bytes.data(), bytes.size());
        if (nWritten >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(nWritten));
        else if (errno != EINTR)
            RefuseWithSystemWords(path);
    }
}

std::optional<struct stat> StatusOf(const fs::path& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) return status;
    if (errno != ENOENT) RefuseWithSystemWords(path);
    return std::nullopt;
}

mode_t NewFileMode() {
    const mode_t nMask = ::umask(0);
    ::umask(nMask);
    return 0666 & ~nMask;
}

// The file beside the target; goes again unless it took the target's place.
class FileBeside {
  public:
    explicit FileBeside(const fs::path& target)
        : m_target(target),
          m_sName((target.parent_path() / ("." + target.filename().string() + ".XXXXXX")).string()),
          m_file(::mkostemp(m_sName.data(), O_CLOEXEC), target) {}
    ~FileBeside() {
        if (!m_sName.empty()) ::unlink(m_sName.c_str());
    }
    FileBeside(const FileBeside&) = delete;
    FileBeside& operator=(const FileBeside&) = delete;

    void Write(std::string_view bytes) { WriteAll(m_file, bytes, m_target); }

    // Rights and, where that is allowed, owner as the target has them.
    void TakeRights(const std::optional<struct stat>& old) {
        if (old && ::fchown(m_file.Get(), old->st_uid, old->st_gid) != 0) errno = 0;
        const mode_t nMode = old ? old->st_mode & kPermissionBits : NewFileMode();
        if (::fchmod(m_file.Get(), nMode) != 0) RefuseWithSystemWords(m_target);
    }

    void TakePlace() {
        if (::fsync(m_file.Get()) != 0) RefuseWithSystemWords(m_target);
        if (::rename(m_sName.c_str(), m_target.c_str()) != 0) RefuseWithSystemWords(m_target);
        m_sName.clear();
    }

  private:
    fs::path m_target;
    std::string m_sName;
    Descriptor m_file;
};

}  // namespace

void ReplaceFile(const fs::path& path, std::string_view bytes) {
    const std::optional<struct stat> old = StatusOf(path);
    if (old && S_ISDIR(old->st_mode)) Refuse(path, "a folder; name a file in it");
    if (old && !S_ISREG(old->st_mode)) {
        const Descriptor device(::open(path.c_str(), O_WRONLY | O_CLOEXEC), path);
        return WriteAll(device, bytes, path);
    }
    if (old && ((old->st_mode & kAnyoneWrites) == 0 || ::access(path.c_str(), W_OK) != 0))
        Refuse(path,
               fmt::format("the file is read-only; allow it with: chmod u+w {}", path.string()));
    FileBeside beside(fs::weakly_canonical(path));
    beside.Write(bytes);
    beside.TakeRights(old);
    beside.TakePlace();
}

}  // namespace nomira::companion
