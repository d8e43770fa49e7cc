#include "adapters/sqlite/Failure.h"

#include "langtools/RuntimeError.h"
#include "langtools/Utf8.h"

namespace nomira::sqlite {

void RaiseFailure(sqlite3* handle) {
    RaiseFailure(sqlite3_errmsg(handle));
}

void RaiseFailure(std::string_view sWords) {
    throw RuntimeError(ErrorNumber::EngineFailure, FromUtf8(sWords));
}

}  // namespace nomira::sqlite
