#include "adapters/sqlite/StoreSchema.h"

#include <sqlite3.h>

#include <memory>

#include "adapters/sqlite/Failure.h"
#include "adapters/sqlite/NewFile.h"

namespace nomira::sqlite {
namespace {

constexpr mode_t kPermissions = 0666;  // less what the user's mask takes away

struct CloseHandle {
    void operator()(sqlite3* handle) const { sqlite3_close(handle); }
};

void ApplySchema(const std::filesystem::path& path) {
    sqlite3* raw = nullptr;
    const int nResult = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READWRITE, nullptr);
    const std::unique_ptr<sqlite3, CloseHandle> handle(raw);
    if (nResult != SQLITE_OK || sqlite3_exec(raw, kStoreSchema, nullptr, nullptr, nullptr) != 0)
        RaiseFailure(raw);
}

}  // namespace

void CreateStore(const std::filesystem::path& path) {
    NewFile file(path, kPermissions);
    ApplySchema(path);
    file.Keep();
}

}  // namespace nomira::sqlite
