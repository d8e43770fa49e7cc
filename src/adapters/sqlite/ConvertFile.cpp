#include "adapters/sqlite/ConvertFile.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <limits>
#include <memory>
#include <system_error>
#include <utility>

#include "adapters/jet/Compact.h"
#include "adapters/jet/DefinitionPages.h"
#include "adapters/jet/Names.h"
#include "adapters/jetsql/TableModule.h"
#include "adapters/sqlite/Failure.h"
#include "adapters/sqlite/JetDatabase.h"
#include "adapters/sqlite/NewFile.h"
#include "adapters/sqlite/SqliteFile.h"
#include "langtools/Utf8.h"
#include "nativefiles/FileBeside.h"

namespace nomira::sqlite {
namespace {

constexpr mode_t kPermissionBits = 0777;
constexpr const char* kModule = "nomira_access";

// Items ahead of the messages that refer to them.
constexpr std::array<std::u16string_view, 2> kStoreTables{u"Items", u"Messages"};

bool IsStoreTable(std::u16string_view sName) {
    return std::any_of(kStoreTables.begin(), kStoreTables.end(),
                       [&](std::u16string_view sKnown) { return jet::SameName(sKnown, sName); });
}

std::string Quoted(std::string_view sName) {
    std::string sQuoted = "\"";
    for (const char c : sName)
        sQuoted += c == '"' ? "\"\"" : std::string(1, c);
    return sQuoted + '"';
}

jet::Generation GenerationOf(StoreFormat format) {
    return format == StoreFormat::Jet3 ? jet::Generation::Jet3 : jet::Generation::Jet4;
}

// An SQLite file, with the tables of an Access file beside its own as temporary ones.
class BothFiles : public SqliteFile {
  public:
    BothFiles(const std::filesystem::path& sqlite, const std::filesystem::path& access)
        : SqliteFile(sqlite, LookAtFile(sqlite).identity),
          m_session(
              std::make_shared<jetsql::AccessSession>(access, std::vector<jetsql::Cascade>())) {
        if (jetsql::RegisterModule(Handle(), kModule, m_session) != SQLITE_OK)
            RaiseFailure(Handle());
    }
    ~BothFiles() override { CloseHandle(); }

    jet::AccessFile& Access() { return m_session->File(); }

    // The Access file's table under another name; gives that name.
    std::string Attach(std::u16string_view sTable) {
        const std::string sName = ToUtf8(std::u16string(sTable));
        std::string sAttached = "temp." + Quoted("access " + sName);
        std::string sText;
        for (const char c : sName)
            sText += c == '\'' ? "''" : std::string(1, c);
        RunOrRaise(("CREATE VIRTUAL TABLE " + sAttached + " USING " + kModule + "('" + sText + "')")
                       .c_str());
        return sAttached;
    }
    void Execute(const std::string& sSql) { RunOrRaise(sSql.c_str()); }
    void Finish() {
        OnFile([this] { m_session->Rest(); });
        Rest();
    }

  private:
    std::shared_ptr<jetsql::AccessSession> m_session;
};

void CopyRows(BothFiles& files, const std::string& sFrom, const std::string& sTo,
              const std::string& sColumns) {
    files.Execute("INSERT INTO " + sTo + '(' + sColumns + ") SELECT " + sColumns + " FROM " +
                  sFrom);
}

constexpr const char* kStoreColumns[]{"Key_id,Module,KeyString", "Key_id,Language_id,String"};

void CopyStore(BothFiles& files, bool bToAccess) {
    for (std::size_t n = 0; n < kStoreTables.size(); ++n) {
        const std::string sAccess = files.Attach(kStoreTables[n]);
        const std::string sOwn = "main." + Quoted(ToUtf8(std::u16string(kStoreTables[n])));
        CopyRows(files, bToAccess ? sOwn : sAccess, bToAccess ? sAccess : sOwn, kStoreColumns[n]);
    }
}

jet::DefinitionCounters ItemsCounter(jet::AccessFile& file) {
    const jet::Table* items = file.FindTable(kStoreTables.front());
    if (items == nullptr) RaiseFailure("no such table: Items");
    return {file.Pages(), items->Definition().nPage};
}

// A number that was handed out once stays so, also if its item is gone.
void KeepCounter(BothFiles& files, std::uint32_t nLast) {
    files.Execute("UPDATE sqlite_sequence SET seq=max(seq," + std::to_string(nLast) +
                  ") WHERE name='Items';"
                  "INSERT INTO sqlite_sequence(name,seq) SELECT 'Items'," +
                  std::to_string(nLast) +
                  " WHERE NOT EXISTS(SELECT 1 FROM sqlite_sequence WHERE name='Items')");
}

std::vector<std::string> AccessToSqlite(const std::filesystem::path& source,
                                        const std::filesystem::path& target) {
    std::vector<std::string> leftOut;
    BothFiles files(target, source);
    OnFile([&] {
        // Messages without an item are carried as they are.
        files.Execute("PRAGMA foreign_keys=OFF; BEGIN");
        CopyStore(files, false);
        KeepCounter(files, ItemsCounter(files.Access()).LastAutonumber());
        for (const jet::CatalogueEntry& entry : files.Access().Catalogue()) {
            if (!entry.IsTable() || entry.IsSystem() || IsStoreTable(entry.sName)) continue;
            const jet::Table* table = files.Access().FindTable(entry.sName);
            if (table == nullptr) continue;
            const std::string sName = ToUtf8(entry.sName);
            const std::string sFrom = files.Attach(entry.sName);
            files.Execute("CREATE TABLE main." + Quoted(sName) + " AS SELECT * FROM " + sFrom);
            leftOut.push_back("the indexes and relationships of the table " + sName);
        }
        files.Execute("COMMIT");
    });
    files.Finish();
    return leftOut;
}

bool HasCounters(BothFiles& files) {
    const StatementPtr table =
        files.Prepare("SELECT 1 FROM main.sqlite_schema WHERE name='sqlite_sequence'");
    return files.Step(table.get());
}

void KeepCounter(BothFiles& files) {
    const StatementPtr counter = files.Prepare("SELECT max(Key_id) FROM main.Items");
    std::int64_t nLast = files.Step(counter.get()) ? sqlite3_column_int64(counter.get(), 0) : 0;
    if (HasCounters(files)) {
        const StatementPtr kept =
            files.Prepare("SELECT seq FROM main.sqlite_sequence WHERE name='Items'");
        if (files.Step(kept.get()))
            nLast = std::max<std::int64_t>(nLast, sqlite3_column_int64(kept.get(), 0));
    }
    if (nLast <= 0 || nLast > std::numeric_limits<std::int32_t>::max()) return;
    ItemsCounter(files.Access()).SetLastAutonumber(static_cast<std::uint32_t>(nLast));
    files.Access().Pages().Commit();
}

std::vector<std::string> SqliteToAccess(const std::filesystem::path& source,
                                        const std::filesystem::path& target) {
    std::vector<std::string> leftOut;
    BothFiles files(source, target);
    files.Execute("BEGIN");
    CopyStore(files, true);
    files.Execute("COMMIT");
    OnFile([&] { KeepCounter(files); });
    const StatementPtr others = files.Prepare(
        "SELECT type||' '||name FROM main.sqlite_schema WHERE name NOT LIKE 'sqlite_%'"
        " AND tbl_name COLLATE NOCASE NOT IN ('Items','Messages')");
    while (files.Step(others.get()))
        leftOut.push_back("the " + std::string(reinterpret_cast<const char*>(
                                       sqlite3_column_text(others.get(), 0))));
    files.Finish();
    return leftOut;
}

std::vector<std::string> AccessToAccess(const std::filesystem::path& source,
                                        const std::filesystem::path& target, StoreFormat format) {
    jet::CompactedFile compacted = OnFile([&] {
        jetsql::AccessSession session(source, {});
        return jet::Compact(session.File(), GenerationOf(format));
    });
    WriteFile(target, compacted.bytes);
    return std::move(compacted.leftOut);
}

std::vector<std::string> Convert(const std::filesystem::path& source, StoreFormat from,
                                 const std::filesystem::path& target, StoreFormat format) {
    const bool bFromSqlite = from == StoreFormat::Sqlite;
    if (!bFromSqlite && format != StoreFormat::Sqlite)
        return AccessToAccess(source, target, format);
    if (!bFromSqlite) return AccessToSqlite(source, target);
    if (format != StoreFormat::Sqlite) return SqliteToAccess(source, target);
    SqliteFile(source, LookAtFile(source).identity).CopyCompacted(target, 0);
    return {};
}

void ReplaceFile(const std::filesystem::path& path, const jet::Bytes& bytes) {
    try {
        nativefiles::FileBeside beside(path);
        beside.Write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
        beside.TakeRights(nativefiles::StatusOf(path));
        beside.ToDisk();
        beside.TakePlace();
    } catch (const std::system_error& error) {
        RaiseFailure(error.code().message());
    }
}

// Others are kept from the file until the new one has taken its place.
CompactionResult CompactAccessFile(const std::filesystem::path& path, bool bForce) {
    return OnFile([&] {
        const auto file = jetsql::OpenFile::At(path);
        file->Begin(&bForce);
        jet::CompactedFile compacted = jet::Compact(file->File(), file->File().Kind());
        const bool bDone = bForce || compacted.leftOut.empty();
        if (bDone) ReplaceFile(path, compacted.bytes);
        file->End(&bForce);
        file->Rest();
        return CompactionResult{bDone, std::move(compacted.leftOut)};
    });
}

}  // namespace

std::optional<StoreFormat> FormatOf(const std::filesystem::path& path) {
    const auto generation = OnFile([&] { return jet::SniffGeneration(path); });
    if (generation)
        return *generation == jet::Generation::Jet3 ? StoreFormat::Jet3 : StoreFormat::Jet4;
    constexpr std::string_view kMark = "SQLite format 3";
    std::string sHead(kMark.size(), '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(sHead.data(), static_cast<std::streamsize>(sHead.size()));
    if (sHead != kMark) return std::nullopt;
    return StoreFormat::Sqlite;
}

std::vector<std::string> ConvertFile(const std::filesystem::path& source,
                                     const std::filesystem::path& target, StoreFormat format) {
    const FileState state = LookAtFile(source);
    const auto from = FormatOf(source);
    if (!from) RaiseFailure("file is not a database");
    NewFile made(target, state.identity.nMode & kPermissionBits);
    const bool bOtherKind = (*from == StoreFormat::Sqlite) != (format == StoreFormat::Sqlite);
    if (bOtherKind) FillStore(target, format);
    std::vector<std::string> leftOut = Convert(source, *from, target, format);
    made.Keep();
    return leftOut;
}

CompactionResult CompactInPlace(const std::filesystem::path& path, bool bForce) {
    const auto format = FormatOf(path);
    if (!format) RaiseFailure("file is not a database");
    if (*format != StoreFormat::Sqlite) return CompactAccessFile(path, bForce);
    SqliteFile file(path, LookAtFile(path).identity);
    file.Step(file.Prepare("VACUUM").get());
    file.Rest();
    return {.bDone = true, .leftOut = {}};
}

}  // namespace nomira::sqlite
