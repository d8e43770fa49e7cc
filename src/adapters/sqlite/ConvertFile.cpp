#include "adapters/sqlite/ConvertFile.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <limits>
#include <memory>
#include <span>
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

struct StoreTable {
    std::u16string_view sName;
    std::array<std::u16string_view, 3> columns;
    std::array<std::u16string_view, 2> index;  // both formats have one on these
    const char* sIndex;                        // its name in an SQLite file
};
// Items ahead of the messages that refer to them.
constexpr StoreTable kStoreTables[]{
    {u"Items", {u"Key_id", u"Module", u"KeyString"}, {u"KeyString", u"Module"}, "ItemsByKey"},
    {u"Messages",
     {u"Key_id", u"Language_id", u"String"},
     {u"Key_id", u"Language_id"},
     "MessagesByKey"}};

bool IsStoreTable(std::u16string_view sName) {
    return std::any_of(std::begin(kStoreTables), std::end(kStoreTables),
                       [&](const StoreTable& known) { return jet::SameName(known.sName, sName); });
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

// As a list for a statement; `sMark` stands around each.
std::string ColumnList(const StoreTable& table, std::string_view sMark = "") {
    std::string sList;
    for (const std::u16string_view sColumn : table.columns)
        sList.append(sList.empty() ? "" : ",")
            .append(sMark)
            .append(ToUtf8(std::u16string(sColumn)))
            .append(sMark);
    return sList;
}

void CopyStore(BothFiles& files, bool bToAccess) {
    for (const StoreTable& table : kStoreTables) {
        const std::string sAccess = files.Attach(table.sName);
        const std::string sOwn = "main." + Quoted(ToUtf8(std::u16string(table.sName)));
        CopyRows(files, bToAccess ? sOwn : sAccess, bToAccess ? sAccess : sOwn, ColumnList(table));
    }
}

std::string OfTable(const StoreTable& table) {
    return " of the table " + ToUtf8(std::u16string(table.sName));
}

// Whether the store's table has an index on these columns in every format.
bool IsStoreIndex(const StoreTable& table, const jet::TableDefinition& definition,
                  const jet::RealIndex& index) {
    std::vector<std::u16string> columns;
    for (const jet::IndexColumn& column : index.columns)
        columns.push_back(definition.columns[definition.ColumnOfNumber(column.nColumn)].sName);
    const auto begins = [&](std::span<const std::u16string_view> known) {
        return columns.size() <= known.size() &&
               std::equal(columns.begin(), columns.end(), known.begin(),
                          [](const auto& a, const auto& b) { return jet::SameName(a, b); });
    };
    const bool bNumber = table.sName == kStoreTables[0].sName && columns.size() == 1 &&
                         begins({table.columns.data(), 1});
    return bNumber || (!index.IsUnique() && begins(table.index));
}

// What the Access file's table has beyond the store's.
void TellStoreTable(const StoreTable& table, const jet::TableDefinition& definition,
                    std::vector<std::string>& leftOut) {
    for (const jet::Column& column : definition.columns)
        if (std::none_of(table.columns.begin(), table.columns.end(),
                         [&](auto sKnown) { return jet::SameName(sKnown, column.sName); }))
            leftOut.push_back("the column " + ToUtf8(column.sName) + OfTable(table));
    for (const jet::LogicalIndex& index : definition.logicalIndexes)
        if (index.kind != jet::LogicalKind::ForeignKey &&
            !IsStoreIndex(table, definition, definition.realIndexes.at(index.nRealIndex)))
            leftOut.push_back("the index " + ToUtf8(index.sName) + OfTable(table));
}

jet::DefinitionCounters ItemsCounter(jet::AccessFile& file) {
    const jet::Table* items = file.FindTable(kStoreTables[0].sName);
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
        for (const StoreTable& table : kStoreTables)
            TellStoreTable(table, files.Access().FindTable(table.sName)->Definition(), leftOut);
        for (const jet::CatalogueEntry& entry : files.Access().Catalogue()) {
            if (!entry.IsTable() || entry.IsSystem() || IsStoreTable(entry.sName)) continue;
            const jet::Table* table = files.Access().FindTable(entry.sName);
            if (table == nullptr) continue;
            const std::string sName = ToUtf8(entry.sName);
            const std::string sFrom = files.Attach(entry.sName);
            files.Execute("CREATE TABLE main." + Quoted(sName) + " AS SELECT * FROM " + sFrom);
            leftOut.push_back("the indexes and relationships of the table " + sName);
        }
        const std::vector<std::string> objects = jet::TellObjects(files.Access());
        leftOut.insert(leftOut.end(), objects.begin(), objects.end());
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

// What the SQLite file has beyond the store.
void TellOthers(BothFiles& files, std::vector<std::string>& leftOut) {
    const auto tell = [&](const std::string& sQuery) {
        const StatementPtr found = files.Prepare(sQuery.c_str());
        while (files.Step(found.get()))
            leftOut.emplace_back(
                reinterpret_cast<const char*>(sqlite3_column_text(found.get(), 0)));
    };
    std::string sKnown;
    for (const StoreTable& table : kStoreTables) {
        const std::string sName = ToUtf8(std::u16string(table.sName));
        tell("SELECT 'the column '||name||'" + OfTable(table) + "' FROM pragma_table_xinfo('" +
             sName + "','main') WHERE name COLLATE NOCASE NOT IN (" + ColumnList(table, "'") + ")");
        sKnown += (sKnown.empty() ? "'" : ",'") + sName + "','" + table.sIndex + '\'';
    }
    // Those that SQLite has made itself count where they keep a table of the store unique.
    tell(
        "SELECT 'the '||type||' '||name FROM main.sqlite_schema"
        " WHERE name COLLATE NOCASE NOT IN (" +
        sKnown +
        ") AND (name NOT LIKE 'sqlite\\_%' ESCAPE '\\'"
        " OR tbl_name COLLATE NOCASE IN ('Items','Messages'))");
}

std::vector<std::string> SqliteToAccess(const std::filesystem::path& source,
                                        const std::filesystem::path& target) {
    std::vector<std::string> leftOut;
    BothFiles files(source, target);
    files.Execute("BEGIN");
    CopyStore(files, true);
    files.Execute("COMMIT");
    OnFile([&] { KeepCounter(files); });
    TellOthers(files, leftOut);
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
    SqliteFile(source, LookAtFile(source).identity).CopyCompacted(target);
    return {};
}

// The file must be locked.
void ReplaceFile(const std::filesystem::path& link, const jet::Bytes& bytes) {
    OnDisk([&] {
        const std::filesystem::path path = std::filesystem::canonical(link);
        nativefiles::FileBeside beside(path, jet::SuccessorPath(path));
        beside.Write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
        beside.TakeRights(nativefiles::StatusOf(path));
        beside.ToDisk();
        beside.TakePlace();
    });
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
