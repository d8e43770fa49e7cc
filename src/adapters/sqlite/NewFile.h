// A file that is being made: it wasn't there before, and it goes again unless it is finished.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <span>

namespace nomira::sqlite {

class NewFile {
  public:
    // Makes the empty file. Raises EngineFailure if anything of that name exists already.
    NewFile(std::filesystem::path path, mode_t nPermissions);
    // Removes the file unless Keep was called.
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    // Brings the file and its name to the disk, and leaves it there. Raises EngineFailure.
    void Keep();

  private:
    std::filesystem::path m_path;
    bool m_bKept = false;
};

// Makes a file with these bytes, which has its name when it is whole and on the disk: where the
// file system knows files without a name, a process that is killed meanwhile leaves nothing. Raises
// EngineFailure, also if anything of that name exists already; nothing is left then.
void MakeFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
              mode_t nPermissions);

// Fills a file that is there with these bytes. Raises EngineFailure.
void WriteFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);

}  // namespace nomira::sqlite
