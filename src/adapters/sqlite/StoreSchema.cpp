#include "adapters/sqlite/StoreSchema.h"

#include <sqlite3.h>

#include <memory>
#include <utility>

#include "adapters/jet/AccessFile.h"
#include "adapters/jet/MemoryPages.h"
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

jet::NewTable ItemsTable() {
    return {.sName = u"Items",
            .columns = {{.sName = u"Key_id", .type = jet::ColumnType::Long, .bAutonumber = true},
                        {.sName = u"Module", .type = jet::ColumnType::Text, .nCharacters = 50},
                        {.sName = u"KeyString", .type = jet::ColumnType::Text, .nCharacters = 255}},
            .indexes = {{.sName = u"PrimaryKey", .columns = {u"Key_id"}, .bPrimary = true},
                        {.sName = u"ItemsByKey", .columns = {u"KeyString", u"Module"}}}};
}

jet::NewTable MessagesTable() {
    return {.sName = u"Messages",
            .columns = {{.sName = u"Key_id", .type = jet::ColumnType::Long},
                        {.sName = u"Language_id", .type = jet::ColumnType::Long},
                        {.sName = u"String", .type = jet::ColumnType::Memo}},
            .indexes = {{.sName = u"MessagesByKey", .columns = {u"Key_id", u"Language_id"}}}};
}

jet::Bytes AccessStore(jet::Generation generation) {
    auto pages = std::make_unique<jet::MemoryPages>(generation);
    jet::MemoryPages& memory = *pages;
    jet::AccessFile::CreateEmpty(memory);
    jet::AccessFile file(std::move(pages));
    file.CreateTable(ItemsTable());
    file.CreateTable(MessagesTable());
    file.CreateRelationship({.sName = u"ItemsMessages",
                             .sPrimaryTable = u"Items",
                             .sPrimaryColumn = u"Key_id",
                             .sForeignTable = u"Messages",
                             .sForeignColumn = u"Key_id",
                             .bCascadeDelete = true});
    memory.Commit();
    return memory.File();
}

}  // namespace

void FillStore(const std::filesystem::path& path, StoreFormat format) {
    if (format == StoreFormat::Sqlite)
        ApplySchema(path);
    else
        WriteFile(path, AccessStore(format == StoreFormat::Jet3 ? jet::Generation::Jet3
                                                                : jet::Generation::Jet4));
}

void CreateStore(const std::filesystem::path& path, StoreFormat format) {
    NewFile file(path, kPermissions);
    FillStore(path, format);
    file.Keep();
}

}  // namespace nomira::sqlite
