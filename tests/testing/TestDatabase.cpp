#include "testing/TestDatabase.h"

#include <sqlite3.h>
#include <stdlib.h>

#include <fstream>
#include <memory>
#include <set>
#include <stdexcept>
#include <utility>

#include "adapters/jet/Checker.h"
#include "adapters/jet/FilePages.h"
#include "adapters/jet/MemoryPages.h"
#include "adapters/sqlite/JetDatabase.h"
#include "adapters/sqlite/SqliteFile.h"
#include "database/DatabaseEngine.h"
#include "database/adoModul.h"
#include "langtools/BasicText.h"
#include "langtools/RuntimeError.h"
#include "langtools/Utf8.h"

namespace nomira::testing {
namespace {

namespace fs = std::filesystem;

struct CloseHandle {
    void operator()(sqlite3* handle) const { sqlite3_close(handle); }
};
using HandlePtr = std::unique_ptr<sqlite3, CloseHandle>;
using Rows = std::vector<std::vector<std::string>>;

int AppendRow(void* rows, int nCount, char** values, char** /*names*/) {
    std::vector<std::string> row;
    for (int n = 0; n < nCount; ++n)
        row.emplace_back(values[n] == nullptr ? "<null>" : values[n]);
    static_cast<Rows*>(rows)->push_back(std::move(row));
    return 0;
}

Rows Run(sqlite3* handle, const std::string& sSql) {
    Rows rows;
    if (sqlite3_exec(handle, sSql.c_str(), AppendRow, &rows, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(handle));
    return rows;
}

bool IsAccessFile(const fs::path& path) {
    const auto state = sqlite::TryLookAtFile(path);
    return state && sqlite::SqliteFile(path, state->identity).IsAccessFile();
}

Rows RunOnSqlite(const fs::path& path, const std::string& sSql) {
    sqlite3* raw = nullptr;
    const int nResult = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READWRITE, nullptr);
    const HandlePtr handle(raw);
    if (nResult != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(raw));
    return Run(raw, sSql);
}

Rows RunOnAccess(const fs::path& path, const std::string& sSql) {
    try {
        const sqlite::FileState state = sqlite::LookAtFile(path);
        sqlite::JetDatabase database(path, state.identity);
        database.CheckReadable(state, sqlite::SystemTime());
        Rows rows = Run(database.Handle(), sSql);
        database.Rest();
        return rows;
    } catch (const RuntimeError& error) {
        throw std::runtime_error(ToUtf8(error.Description()));
    }
}

struct FormatWord {
    const char* sWord;
    StoreFormat format;
};
constexpr FormatWord kFormatWords[]{
    {"sqlite", StoreFormat::Sqlite},
    {"jet3", StoreFormat::Jet3},
    {"jet4", StoreFormat::Jet4},
};

// In memory where the system has such a folder: the tests make hundreds of stores.
fs::path DefaultParent() {
    const fs::path memory = "/dev/shm";
    return fs::is_directory(memory) ? memory : fs::temp_directory_path();
}

}  // namespace

StoreFormat FormatUnderTest() {
    const char* sWord = std::getenv("NOMIRA_TEST_STORE");
    if (sWord == nullptr) return StoreFormat::Sqlite;
    for (const FormatWord& word : kFormatWords)
        if (std::string_view(sWord) == word.sWord) return word.format;
    throw std::runtime_error(std::string("no such store format: ") + sWord);
}

std::string_view WordOf(StoreFormat format) {
    for (const FormatWord& word : kFormatWords)
        if (word.format == format) return word.sWord;
    throw std::runtime_error("a store format without a word");
}

void WriteAccessFile(const fs::path& path, StoreFormat format,
                     const std::vector<jet::NewTable>& tables) {
    auto pages = std::make_unique<jet::MemoryPages>(
        format == StoreFormat::Jet3 ? jet::Generation::Jet3 : jet::Generation::Jet4);
    jet::MemoryPages& memory = *pages;
    jet::AccessFile::CreateEmpty(memory);
    jet::AccessFile file(std::move(pages));
    for (const jet::NewTable& table : tables)
        file.CreateTable(table);
    memory.Commit();
    const jet::Bytes bytes = memory.File();
    fs::remove(path);
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

void CreateRefusingStore(const fs::path& path, StoreFormat format) {
    if (format != StoreFormat::Sqlite) {
        using jet::ColumnType;
        const auto text = [](const char16_t* sName) {
            return jet::NewColumn{.sName = sName, .type = ColumnType::Text, .nCharacters = 10};
        };
        WriteAccessFile(
            path, format,
            {{.sName = u"Items",
              .columns = {{.sName = u"Key_id", .bAutonumber = true},
                          text(u"Module"),
                          text(u"KeyString")},
              .indexes = {}},
             {.sName = u"Messages",
              .columns = {{.sName = u"Key_id"}, {.sName = u"Language_id"}, text(u"String")},
              .indexes = {}}});
        return;
    }
    fs::remove(path);
    sqlite::CreateStore(path, format);
    const auto refuse = [&](const std::string& sEvent, const std::string& sTable,
                            const std::string& sColumn) {
        ExecuteOn(path, "CREATE TRIGGER " + sEvent + sTable + " BEFORE " + sEvent + " ON " +
                            sTable + " WHEN length(NEW." + sColumn +
                            ")>10 BEGIN SELECT RAISE(ABORT,'no'); END");
    };
    refuse("INSERT", "Items", "KeyString");
    refuse("INSERT", "Messages", "String");
    refuse("UPDATE", "Messages", "String");
}

TestDatabase::TestDatabase(const fs::path& parent, sqlite::Clock clock, StoreFormat format)
    : m_format(format),
      m_folder(parent.empty() ? DefaultParent() : parent),
      m_engine([this](TextView sPath) { return FileOf(sPath); }, std::move(clock)) {
    sqlite::CreateStore(Path(), m_format);
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

std::string TestDatabase::FilesInFolder() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(Folder()))
        names.insert(entry.path().filename().string());
    std::string sNames;
    for (const std::string& sName : names)
        sNames += sName + ' ';
    return sNames;
}

fs::path TestDatabase::FileOf(TextView sPath) const {
    const std::size_t nName = sPath.find_last_of(u"\\/") + 1;
    return m_folder / ToUtf8(LCase(sPath.substr(nName)));
}

void TestDatabase::RemoveFile() const {
    fs::remove(Path());
}

fs::path TestDatabase::CreateCatalogue() const {
    const fs::path path = FileOf(kCatalogueDatabase);
    sqlite::CreateStore(path, m_format);
    return path;
}

std::vector<std::string> TestDatabase::Damage() const {
    return DamageOn(Path());
}

std::vector<std::string> DamageOn(const fs::path& path) {
    std::vector<std::string> damage;
    if (!IsAccessFile(path)) {
        for (const auto& row : QueryOn(path, "PRAGMA integrity_check; PRAGMA foreign_key_check"))
            if (row.front() != "ok") damage.push_back(row.front());
        return damage;
    }
    jet::AccessFile file(jet::FilePages::Open(path, jet::OpenMode::ReadOnly));
    for (const jet::Finding& finding : jet::CheckFile(file))
        damage.push_back("page " + std::to_string(finding.nPage) + ": " + finding.sText);
    return damage;
}

void ExecuteOn(const fs::path& path, const std::string& sSql) {
    QueryOn(path, sSql);
}

std::vector<std::vector<std::string>> QueryOn(const fs::path& path, const std::string& sSql) {
    return IsAccessFile(path) ? RunOnAccess(path, sSql) : RunOnSqlite(path, sSql);
}

}  // namespace nomira::testing
