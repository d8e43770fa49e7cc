#include "adapters/jet/FileLock.h"

#include <fcntl.h>

#include <cerrno>
#include <system_error>

#include "adapters/jet/Failure.h"

namespace nomira::jet {
namespace {

struct flock LockOf(short nType, std::int64_t nFrom = 0, std::int64_t nCount = 0) {
    struct flock lock {};
    lock.l_type = nType;
    lock.l_whence = SEEK_SET;
    lock.l_start = nFrom;
    lock.l_len = nCount;
    return lock;
}

[[noreturn]] void FailByErrno() {
    Fail(FailureKind::InputOutput, std::generic_category().message(errno));
}

}  // namespace

bool TryLock(const nativefiles::Descriptor& file) {
    struct flock lock = LockOf(F_WRLCK);
    if (::fcntl(file.Get(), F_OFD_SETLK, &lock) == 0) return true;
    if (errno != EAGAIN && errno != EACCES) FailByErrno();
    return false;
}

void Unlock(const nativefiles::Descriptor& file) {
    struct flock lock = LockOf(F_UNLCK);
    ::fcntl(file.Get(), F_OFD_SETLK, &lock);
}

bool IsLockedByOthers(const nativefiles::Descriptor& file, std::int64_t nFrom,
                      std::int64_t nCount) {
    struct flock lock = LockOf(F_WRLCK, nFrom, nCount);
    if (::fcntl(file.Get(), F_OFD_GETLK, &lock) != 0) FailByErrno();
    return lock.l_type != F_UNLCK;
}

}  // namespace nomira::jet
