#include "adapters/rpc/LocalFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <optional>
#include <system_error>

#include "nativefiles/FileBeside.h"
#include "nativefiles/NativeFiles.h"

namespace nomira::rpc {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void RaiseCondition(std::errc condition) {
    throw std::system_error(std::make_error_code(condition));
}

}  // namespace

std::string ReadLocalFile(const fs::path& path, std::size_t nLimit) {
    const nativefiles::Descriptor file = nativefiles::Open(path, O_RDONLY | O_NONBLOCK);
    if (!S_ISREG(nativefiles::StatusOf(file).st_mode)) RaiseCondition(std::errc::invalid_argument);
    return nativefiles::ReadAll(file, nLimit);
}

void ReplaceLocalFile(const fs::path& path, std::string_view sBytes) {
    const std::optional<struct stat> old = nativefiles::StatusOf(path);
    if (old && !S_ISREG(old->st_mode)) RaiseCondition(std::errc::invalid_argument);
    if (old && nativefiles::IsWriteProtected(*old)) RaiseCondition(std::errc::permission_denied);
    nativefiles::FileBeside beside(old ? fs::canonical(path) : path);
    beside.Write(sBytes);
    beside.TakeRights(old);
    beside.TakePlace();
}

}  // namespace nomira::rpc
