// A folder for the length of one command, which nobody else can look into.
#pragma once

#include <filesystem>

namespace nomira::companion {

class PrivateFolder {
  public:
    // Makes it in the system's place for temporary files ($TMPDIR). Throws Refusal.
    PrivateFolder();
    // Removes it with all that is in it.
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

  private:
    std::filesystem::path m_path;
};

}  // namespace nomira::companion
