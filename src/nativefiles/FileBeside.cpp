#include "nativefiles/FileBeside.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace nomira::nativefiles {
namespace {

constexpr mode_t kPermissionBits = 07777;
constexpr const char* kPattern = ".nomira.XXXXXX";

}  // namespace

FileBeside::FileBeside(std::filesystem::path target)
    : m_target(std::move(target)),
      m_sName((m_target.parent_path() / kPattern).string()),
      m_file(::mkostemp(m_sName.data(), O_CLOEXEC)) {
    if (!m_file.IsOpen()) RaiseErrno();
}

FileBeside::FileBeside(std::filesystem::path target, const std::filesystem::path& name)
    : m_target(std::move(target)),
      m_sName(name.string()),
      m_file(Open(name, O_RDWR | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR)) {}

FileBeside::~FileBeside() {
    if (!m_sName.empty()) ::unlink(m_sName.c_str());
}

void FileBeside::TakeRights(const std::optional<struct stat>& old) {
    if (old && ::fchown(m_file.Get(), old->st_uid, old->st_gid) != 0) errno = 0;
    const mode_t nMode = old ? old->st_mode & kPermissionBits : NewFileMode();
    if (::fchmod(m_file.Get(), nMode) != 0) RaiseErrno();
}

void FileBeside::TakePlace() {
    if (::rename(m_sName.c_str(), m_target.c_str()) != 0) RaiseErrno();
    m_sName.clear();
}

}  // namespace nomira::nativefiles
