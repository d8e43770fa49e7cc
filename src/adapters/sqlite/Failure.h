// The one translator of SQLite's failures: whatever went wrong is an EngineFailure with SQLite's
// own words, for the data-access layer knows no finer number.
#pragma once

#include <sqlite3.h>

#include <string_view>

namespace nomira::sqlite {

// With the words for the handle's latest failure.
[[noreturn]] void RaiseFailure(sqlite3* handle);
// With words of our own.
[[noreturn]] void RaiseFailure(std::string_view sWords);

// Whether SQLite's result code, extended or not, says that somebody else holds the file.
inline bool IsBusy(int nResult) {
    return (nResult & 0xFF) == SQLITE_BUSY;
}

}  // namespace nomira::sqlite
