#include "adapters/sqlite/NewFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "adapters/sqlite/Failure.h"

namespace nomira::sqlite {
namespace {

class Descriptor {
  public:
    Descriptor(const std::filesystem::path& path, int nFlags, mode_t nPermissions = 0)
        : m_nDescriptor(::open(path.c_str(), nFlags | O_CLOEXEC, nPermissions)) {
        if (m_nDescriptor < 0) RaiseFailure(std::generic_category().message(errno));
    }
    ~Descriptor() { ::close(m_nDescriptor); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    void Write(std::span<const std::uint8_t> bytes) const {
        while (!bytes.empty()) {
            const ssize_t nWritten = ::write(m_nDescriptor, bytes.data(), bytes.size());
            if (nWritten < 0 && errno != EINTR)
                RaiseFailure(std::generic_category().message(errno));
            if (nWritten > 0) bytes = bytes.subspan(static_cast<std::size_t>(nWritten));
        }
    }
    void Sync() const {
        if (::fsync(m_nDescriptor) != 0) RaiseFailure(std::generic_category().message(errno));
    }

  private:
    int m_nDescriptor;
};

std::filesystem::path FolderOf(const std::filesystem::path& path) {
    return path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
}

}  // namespace

NewFile::NewFile(std::filesystem::path path, mode_t nPermissions) : m_path(std::move(path)) {
    const Descriptor file(m_path, O_CREAT | O_EXCL | O_WRONLY, nPermissions);
}

NewFile::~NewFile() {
    std::error_code ignored;
    if (!m_bKept) std::filesystem::remove(m_path, ignored);
}

void WriteFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    Descriptor(path, O_WRONLY | O_TRUNC).Write(bytes);
}

void NewFile::Keep() {
    Descriptor(m_path, O_RDONLY).Sync();
    Descriptor(FolderOf(m_path), O_RDONLY | O_DIRECTORY).Sync();
    m_bKept = true;
}

}  // namespace nomira::sqlite
