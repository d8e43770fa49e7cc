// The programs that the user names: files, and directories for all programs in them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace nomira::companion {

// A directory gives its *.src files (in any case), sorted by name; directories in it are passed
// over. Throws Refusal for one that can't be read. Whether a named file is there isn't looked at.
std::vector<std::filesystem::path> NamedPrograms(const std::vector<std::filesystem::path>& paths);

// Their bytes, for what is there; of programs, text files and folders of programs. Fails never.
std::uint64_t SizeOfFile(const std::filesystem::path& file);
std::uint64_t SizeOfFiles(const std::vector<std::filesystem::path>& paths);

}  // namespace nomira::companion
