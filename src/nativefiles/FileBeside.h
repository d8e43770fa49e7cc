// A new file beside the one that it will replace, so that whoever looks sees the old bytes or the
// new ones. It goes again unless it took the other's place. All of it throws std::system_error.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "nativefiles/NativeFiles.h"

namespace nomira::nativefiles {

class FileBeside {
  public:
    // Makes an empty file in the target's folder; no link is followed.
    explicit FileBeside(std::filesystem::path target);
    // The same under a name of the caller's, in that folder too, for whoever has to find it again.
    FileBeside(std::filesystem::path target, const std::filesystem::path& name);
    ~FileBeside();
    FileBeside(const FileBeside&) = delete;
    FileBeside& operator=(const FileBeside&) = delete;

    void Write(std::string_view bytes) { WriteAll(m_file, bytes); }
    // Rights and, where that is allowed, owner as `old` has them; those of a new file for none.
    void TakeRights(const std::optional<struct stat>& old);
    // To be called ahead of TakePlace where a crash of the machine must not leave an empty file.
    void ToDisk() { Sync(m_file); }
    void TakePlace();

  private:
    std::filesystem::path m_target;
    std::string m_sName;
    Descriptor m_file;
};

}  // namespace nomira::nativefiles
