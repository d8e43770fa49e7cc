#include "apps/nomiractl/ReplaceFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <system_error>

#include "apps/nomiractl/Refusal.h"
#include "nativefiles/FileBeside.h"
#include "nativefiles/NativeFiles.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Refuse(const fs::path& path, std::string_view sWhat) {
    throw Refusal(fmt::format("{}: {}", path.string(), sWhat), ExitCode::Files);
}

void Replace(const fs::path& path, std::string_view bytes) {
    const std::optional<struct stat> old = nativefiles::StatusOf(path);
    if (old && S_ISDIR(old->st_mode)) Refuse(path, "a folder; name a file in it");
    if (old && !S_ISREG(old->st_mode))
        return nativefiles::WriteAll(nativefiles::Open(path, O_WRONLY), bytes);
    if (old && (nativefiles::IsWriteProtected(*old) || ::access(path.c_str(), W_OK) != 0))
        Refuse(path,
               fmt::format("the file is read-only; allow it with: chmod u+w {}", path.string()));
    nativefiles::FileBeside beside(fs::weakly_canonical(path));
    beside.Write(bytes);
    beside.TakeRights(old);
    beside.ToDisk();
    beside.TakePlace();
}

}  // namespace

void ReplaceFile(const fs::path& path, std::string_view bytes) {
    try {
        Replace(path, bytes);
    } catch (const std::system_error& error) {
        Refuse(path, error.code().message());
    }
}

}  // namespace nomira::companion
