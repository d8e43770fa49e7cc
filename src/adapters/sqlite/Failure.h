// The one translator of the failures of SQLite, of Access files and of the system: whatever went
// wrong is an EngineFailure with their own words, for the data-access layer knows no finer number.
#pragma once

#include <sqlite3.h>

#include <string_view>
#include <system_error>

#include "adapters/jet/Failure.h"

namespace nomira::sqlite {

// With the words for the handle's latest failure.
[[noreturn]] void RaiseFailure(sqlite3* handle);
// With words of our own.
[[noreturn]] void RaiseFailure(std::string_view sWords);

// Runs work on an Access file.
template <typename Work>
decltype(auto) OnFile(Work work) {
    try {
        return work();
    } catch (const jet::Failure& failure) {
        RaiseFailure(failure.what());
    }
}

// Runs work on files of the system (nativefiles).
template <typename Work>
decltype(auto) OnDisk(Work work) {
    try {
        return work();
    } catch (const std::system_error& error) {
        RaiseFailure(error.code().message());
    }
}

// Whether SQLite's result code, extended or not, says that somebody else holds the file.
inline bool IsBusy(int nResult) {
    return (nResult & 0xFF) == SQLITE_BUSY;
}

}  // namespace nomira::sqlite
