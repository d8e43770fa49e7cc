#include "testing/TestDatabase.h"

#include <sqlite3.h>
#include <stdlib.h>

#include <memory>
#include <stdexcept>
#include <utility>

#include "adapters/sqlite/StoreSchema.h"
#include "adapters/sqlite/Utf8.h"
#include "database/DatabaseEngine.h"
#include "database/adoModul.h"
#include "langtools/BasicText.h"

namespace nomira::testing {
namespace {

namespace fs = std::filesystem;

struct CloseHandle {
    void operator()(sqlite3* handle) const { sqlite3_close(handle); }
};
using HandlePtr = std::unique_ptr<sqlite3, CloseHandle>;

HandlePtr OpenHandle(const fs::path& path) {
    sqlite3* raw = nullptr;
    const int nResult = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READWRITE, nullptr);
    HandlePtr handle(raw);
    if (nResult != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(raw));
    return handle;
}

int AppendRow(void* rows, int nCount, char** values, char** /*names*/) {
    std::vector<std::string> row;
    for (int n = 0; n < nCount; ++n)
        row.emplace_back(values[n] == nullptr ? "<null>" : values[n]);
    static_cast<std::vector<std::vector<std::string>>*>(rows)->push_back(std::move(row));
    return 0;
}

// In memory where the system has such a folder: the tests make hundreds of stores.
fs::path DefaultParent() {
    const fs::path memory = "/dev/shm";
    return fs::is_directory(memory) ? memory : fs::temp_directory_path();
}

}  // namespace

TestDatabase::TestDatabase(const fs::path& parent, sqlite::Clock clock)
    : m_folder(parent.empty() ? DefaultParent() : parent),
      m_engine([this](TextView sPath) { return FileOf(sPath); }, std::move(clock)) {
    sqlite::CreateStore(Path());
    SetDatabaseEngine(&m_engine);
}

TestDatabase::~TestDatabase() {
    CloseDatabase();
    SetDatabaseEngine(nullptr);
}

void TestDatabase::Execute(const std::string& sSql) const {
    ExecuteOn(Path(), sSql);
}

std::vector<std::vector<std::string>> TestDatabase::Query(const std::string& sSql) const {
    return QueryOn(Path(), sSql);
}

fs::path TestDatabase::FileOf(TextView sPath) const {
    const std::size_t nName = sPath.find_last_of(u"\\/") + 1;
    return m_folder / sqlite::ToUtf8(LCase(sPath.substr(nName)));
}

void TestDatabase::RemoveFile() const {
    fs::remove(Path());
}

fs::path TestDatabase::CreateCatalogue() const {
    const fs::path path = FileOf(kCatalogueDatabase);
    sqlite::CreateStore(path);
    return path;
}

void ExecuteOn(const fs::path& path, const std::string& sSql) {
    QueryOn(path, sSql);
}

std::vector<std::vector<std::string>> QueryOn(const fs::path& path, const std::string& sSql) {
    std::vector<std::vector<std::string>> rows;
    const HandlePtr handle = OpenHandle(path);
    if (sqlite3_exec(handle.get(), sSql.c_str(), AppendRow, &rows, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(handle.get()));
    return rows;
}

}  // namespace nomira::testing
