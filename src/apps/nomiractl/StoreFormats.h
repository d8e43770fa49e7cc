// The formats of a message database in words.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "adapters/sqlite/StoreSchema.h"

namespace nomira::companion {

using sqlite::StoreFormat;

// As on the command line: sqlite, jet3, jet4.
std::vector<std::string> FormatWords();
// One of those words.
StoreFormat FormatOfWord(const std::string& sWord);
// For reports: "SQLite", "Access 97 (Jet 3)".
const char* NameOf(StoreFormat format);

// Of the database at the path, which is one. Throws Refusal for a file that isn't, or can't be
// read.
StoreFormat RequireFormat(const std::filesystem::path& path);

}  // namespace nomira::companion
