// What kind of file the user has named.
#pragma once

#include <filesystem>
#include <string>

namespace nomira::companion {

enum class FileKind { TextFile, Programs, Database, Registry };

// By the word ("text", "program", "database", "registry"), or for "auto" by what is there: a
// directory and *.src are programs, a database and a registry tell themselves by their first
// bytes, the latter also by *.reg, and everything else is a text file.
FileKind KindOf(const std::filesystem::path& path, const std::string& sWord);

}  // namespace nomira::companion
