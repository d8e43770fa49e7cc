// A folder for the length of one command, which nobody else can look into.
#pragma once

#include <filesystem>

namespace nomira::companion {

class PrivateFolder {
  public:
    // Makes it in the system's place for temporary files ($TMPDIR). Throws Refusal.
    PrivateFolder();
    // Removes it with all that is in it, unless it is to be kept.
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }
    // For what would be lost with it.
    void Keep() { m_bKept = true; }

  private:
    std::filesystem::path m_path;
    bool m_bKept = false;
};

}  // namespace nomira::companion
