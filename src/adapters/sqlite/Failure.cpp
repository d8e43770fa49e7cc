#include "adapters/sqlite/Failure.h"

#include "adapters/sqlite/Utf8.h"
#include "langtools/RuntimeError.h"

namespace nomira::sqlite {

void RaiseFailure(sqlite3* handle) {
    RaiseFailure(sqlite3_errmsg(handle));
}

void RaiseFailure(std::string_view sWords) {
    throw RuntimeError(ErrorNumber::EngineFailure, FromUtf8(sWords));
}

}  // namespace nomira::sqlite
