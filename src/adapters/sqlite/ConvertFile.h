// A database file as one of another format, or a compacted one of the same.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "adapters/sqlite/StoreSchema.h"

namespace nomira::sqlite {

// What the file at the path is; nullopt if it is none of them. The file must not be open in this
// process as an SQLite file. Raises EngineFailure if it can't be read.
std::optional<StoreFormat> FormatOf(const std::filesystem::path& path);

// Writes the new file, which must not be there. Between the two kinds of Access file all goes that
// can (jet/Compact.h), between those and SQLite the two tables of the message database, and from
// Access to SQLite the rows of other tables as well.
//
// Gives a sentence for each thing that the new file doesn't have. Raises EngineFailure, and then
// leaves nothing behind: rows are never left out.
std::vector<std::string> ConvertFile(const std::filesystem::path& source,
                                     const std::filesystem::path& target, StoreFormat format);

struct CompactionResult {
    bool bDone = false;
    std::vector<std::string> leftOut;  // as ConvertFile
};
// Makes the file itself as small as it can be. Where things would be left out it stays as it is,
// unless `bForce`. Raises EngineFailure, also if somebody else uses it; it is as it was then.
CompactionResult CompactInPlace(const std::filesystem::path& path, bool bForce);

}  // namespace nomira::sqlite
