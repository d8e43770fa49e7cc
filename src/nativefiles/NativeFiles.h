// The few calls on whole files of this system that adapters and programs share. All of them throw
// std::system_error with the system's code.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "nativefiles/Descriptor.h"

namespace nomira::nativefiles {

// Throws what errno says.
[[noreturn]] void RaiseErrno();

// open(2), with O_CLOEXEC.
Descriptor Open(const std::filesystem::path& path, int nFlags, mode_t nMode = 0);

// What stands at the path, links followed; nullopt for nothing.
std::optional<struct stat> StatusOf(const std::filesystem::path& path);
struct stat StatusOf(const Descriptor& file);

// A file whose write bits are all gone is meant to stay, also for the superuser.
bool IsWriteProtected(const struct stat& status);

// From the file's place on to its end; file_too_large for more than `nLimit` bytes.
std::string ReadAll(const Descriptor& file,
                    std::size_t nLimit = std::numeric_limits<std::size_t>::max());
// `nCount` bytes from `nPlace` on; fewer where the file ends.
std::string ReadAt(const Descriptor& file, std::size_t nCount, std::size_t nPlace);

void WriteAll(const Descriptor& file, std::string_view bytes);
void WriteAt(const Descriptor& file, std::string_view bytes, std::size_t nPlace);

// Brings the file's bytes to the disk; a folder's names, likewise. An empty folder, as the parent
// of a bare file name, is the working one.
void Sync(const Descriptor& file);
void SyncFolder(const std::filesystem::path& folder);

// The mode of a new file under this process's mask.
mode_t NewFileMode();

}  // namespace nomira::nativefiles
