#include "adapters/jetsql/TableModule.h"

#include <algorithm>
#include <exception>
#include <map>
#include <new>
#include <optional>
#include <span>
#include <utility>

#include "adapters/jet/Names.h"
#include "adapters/jetsql/ColumnValues.h"
#include "adapters/jetsql/SearchPlan.h"
#include "langtools/Utf8.h"

namespace nomira::jetsql {
namespace {

// --- What a module is registered with.

class Sessions {
  public:
    // nullptr: files are named.
    explicit Sessions(std::shared_ptr<AccessSession> only) : m_only(std::move(only)) {}

    bool NamesFiles() const { return m_only == nullptr; }
    // `sFile` counts only where files are named.
    std::shared_ptr<AccessSession> For(const std::string& sFile) {
        if (m_only) return m_only;
        std::weak_ptr<AccessSession>& known = m_byFile[sFile];
        if (auto session = known.lock()) return session;
        auto fresh =
            std::make_shared<AccessSession>(sFile, std::vector<Cascade>(), RestTime::EachCommit);
        known = fresh;
        return fresh;
    }

  private:
    std::shared_ptr<AccessSession> m_only;
    std::map<std::string, std::weak_ptr<AccessSession>> m_byFile;
};

// --- One virtual table.

struct VirtualTable : sqlite3_vtab {
    VirtualTable() : sqlite3_vtab{} {}

    sqlite3* handle = nullptr;
    std::shared_ptr<AccessSession> session;
    std::u16string sName;
    bool bSystem = false;

    // As it was declared; empty until then.
    std::string sShape;

    // The table in the file as it has been read. Raises Damaged if it is gone, or another one.
    jet::Table& Table();
    jet::Generation Generation() { return session->File().Kind(); }

  private:
    jet::Table* m_table = nullptr;
    std::uint64_t m_nReading = 0;
};

struct Cursor : sqlite3_vtab_cursor {
    Cursor() : sqlite3_vtab_cursor{} {}

    Search search;
    std::optional<jet::Table::Scan> scan;           // of all rows
    std::optional<jet::IndexTree::Cursor> entries;  // of an index; kept for the next walk
    bool bAtEnd = true;
    jet::Table* table = nullptr;       // that is walked over
    jet::RowPlace place;               // of the row it stands on
    jet::Bytes room;                   // for a column's text as it is stored
    std::string sText;                 // and as it is handed over
    std::shared_ptr<OpenFile> walked;  // while the walk lasts

    ~Cursor() { EndWalk(); }
    Cursor(const Cursor&) = delete;
    Cursor& operator=(const Cursor&) = delete;

    void BeginWalk() {
        EndWalk();
        AccessSession& session = *Owner().session;
        session.Open().Look();
        walked = session.Shared();
        walked->AddWalk();
        table = &Owner().Table();
    }
    void EndWalk() {
        if (walked) walked->EndWalk();
        walked.reset();
        bAtEnd = true;
    }

    VirtualTable& Owner() const { return static_cast<VirtualTable&>(*pVtab); }
};

VirtualTable& Of(sqlite3_vtab* vtab) {
    return static_cast<VirtualTable&>(*vtab);
}
Cursor& Of(sqlite3_vtab_cursor* cursor) {
    return static_cast<Cursor&>(*cursor);
}

// --- Failures.

void SetWords(char*& sTo, const char* sWords) {
    sqlite3_free(sTo);
    sTo = sqlite3_mprintf("%s", sWords);
}

// SQLite is C: nothing may fly through it. Runs the work and gives SQLite's code; the words of a
// failure go into `sWords`.
template <typename Work>
int Guarded(char*& sWords, Work work) noexcept {
    try {
        work();
        return SQLITE_OK;
    } catch (const jet::Failure& failure) {
        SetWords(sWords, failure.what());
        return ResultOf(failure.Kind());
    } catch (const std::bad_alloc&) {
        return SQLITE_NOMEM;
    } catch (const std::exception& other) {
        SetWords(sWords, other.what());
        return SQLITE_ERROR;
    }
}

// --- Making a table.

// An argument as it is meant, without its quotes.
std::string Unquoted(std::string_view sArgument) {
    while (!sArgument.empty() && sArgument.front() == ' ')
        sArgument.remove_prefix(1);
    while (!sArgument.empty() && sArgument.back() == ' ')
        sArgument.remove_suffix(1);
    constexpr std::string_view kQuotes = "'\"`";
    if (sArgument.size() < 2 || kQuotes.find(sArgument.front()) == std::string_view::npos ||
        sArgument.front() != sArgument.back())
        return std::string(sArgument);
    const char cQuote = sArgument.front();
    std::string sPlain;
    for (std::size_t n = 1; n + 1 < sArgument.size(); ++n) {
        sPlain += sArgument[n];
        if (sArgument[n] == cQuote) ++n;
    }
    return sPlain;
}

std::string Quoted(std::string_view sName, char cQuote) {
    std::string sQuoted(1, cQuote);
    for (const char c : sName) {
        if (c == cQuote) sQuoted += c;
        sQuoted += c;
    }
    return sQuoted + cQuote;
}

std::string ShapeOf(const jet::TableDefinition& definition) {
    std::string sColumns;
    for (const jet::Column& column : definition.columns)
        sColumns += (sColumns.empty() ? "" : ",") + Quoted(ToUtf8(column.sName), '"') + ' ' +
                    DeclaredType(column);
    return "CREATE TABLE x(" + sColumns + ')';
}

bool IsSystemTable(jet::AccessFile& file, std::u16string_view sName) {
    const auto catalogue = file.Catalogue();
    return std::any_of(catalogue.begin(), catalogue.end(), [&](const jet::CatalogueEntry& entry) {
        return entry.IsTable() && entry.IsSystem() && jet::SameName(entry.sName, sName);
    });
}

jet::Table& VirtualTable::Table() {
    OpenFile& open = session->Open();
    if (m_table == nullptr || m_nReading != open.Reading()) {
        m_table = open.File().FindTable(sName);
        const bool bSame =
            m_table != nullptr && (sShape.empty() || sShape == ShapeOf(m_table->Definition()));
        if (!bSame) {
            m_table = nullptr;
            jet::Fail(jet::FailureKind::Damaged,
                      ToUtf8(sName) + ": the table is gone, or another one");
        }
        m_nReading = open.Reading();
    }
    return *m_table;
}

void Declare(sqlite3* handle, const std::string& sShape) {
    if (sqlite3_declare_vtab(handle, sShape.c_str()) != SQLITE_OK)
        jet::Fail(jet::FailureKind::Unsupported, sqlite3_errmsg(handle));
    sqlite3_vtab_config(handle, SQLITE_VTAB_CONSTRAINT_SUPPORT, 1);
}

std::unique_ptr<VirtualTable> MakeTable(sqlite3* handle, Sessions& sessions,
                                        std::span<const char* const> arguments) {
    constexpr std::size_t kOwn = 3;  // the module's, the database's and the virtual table's name
    const std::size_t nWanted = sessions.NamesFiles() ? 2 : 1;
    if (arguments.size() != kOwn + nWanted)
        jet::Fail(jet::FailureKind::Unsupported, sessions.NamesFiles()
                                                     ? "the arguments are a file and a table"
                                                     : "the argument is a table");
    const std::string sFile = sessions.NamesFiles() ? Unquoted(arguments[kOwn]) : std::string();
    auto table = std::make_unique<VirtualTable>();
    table->handle = handle;
    table->session = sessions.For(sFile);
    table->sName = FromUtf8(Unquoted(arguments.back()));
    jet::AccessFile& file = table->session->File();
    if (file.FindTable(table->sName) == nullptr)
        jet::Fail(jet::FailureKind::Unsupported, "no such table: " + ToUtf8(table->sName));
    table->bSystem = IsSystemTable(file, table->sName);
    table->sShape = ShapeOf(table->Table().Definition());
    Declare(handle, table->sShape);
    return table;
}

int Connect(sqlite3* handle, void* sessions, int nArguments, const char* const* arguments,
            sqlite3_vtab** vtab, char** sWords) {
    return Guarded(*sWords, [&] {
        *vtab = MakeTable(handle, *static_cast<Sessions*>(sessions),
                          {arguments, static_cast<std::size_t>(nArguments)})
                    .release();
    });
}

int Disconnect(sqlite3_vtab* vtab) {
    delete &Of(vtab);
    return SQLITE_OK;
}

// --- Reading.

int BestIndex(sqlite3_vtab* vtab, sqlite3_index_info* info) {
    int nResult = SQLITE_OK;
    const int nGuarded = Guarded(vtab->zErrMsg, [&] {
        VirtualTable& table = Of(vtab);
        nResult = ChoosePlan(table.Table(), table.Generation(), *info);
    });
    return nGuarded != SQLITE_OK ? nGuarded : nResult;
}

int OpenCursor(sqlite3_vtab* /*vtab*/, sqlite3_vtab_cursor** cursor) {
    *cursor = new (std::nothrow) Cursor;
    return *cursor == nullptr ? SQLITE_NOMEM : SQLITE_OK;
}

int CloseCursor(sqlite3_vtab_cursor* cursor) {
    delete &Of(cursor);
    return SQLITE_OK;
}

// Whether the entry belongs to the range; all behind it don't either.
bool IsInRange(const jet::IndexTree::Cursor& entries, const KeyRange& range) {
    if (entries.AtEnd()) return false;
    const jet::ByteView key = entries.Key();
    const jet::ByteView start = key.first(std::min(key.size(), range.upper.size()));
    return jet::CompareEntries(start, range.upper) <= 0;
}

// Takes up the row that the walk has come to.
void TakeRow(Cursor& cursor) {
    if (cursor.search.way == Search::Way::AllRows) {
        cursor.bAtEnd = cursor.scan->AtEnd();
        cursor.place = cursor.scan->Place();
    } else {
        cursor.bAtEnd = !IsInRange(*cursor.entries, cursor.search.range);
        if (!cursor.bAtEnd) cursor.place = cursor.entries->Place();
    }
}

void Start(Cursor& cursor) {
    jet::Table& table = *cursor.table;
    const Search& search = cursor.search;
    switch (search.way) {
        case Search::Way::NoRow:
            cursor.bAtEnd = true;
            break;
        case Search::Way::OneRow:
            cursor.bAtEnd = !table.Has(search.place);
            cursor.place = search.place;
            break;
        case Search::Way::AllRows:
            cursor.scan = table.Rows();
            TakeRow(cursor);
            break;
        case Search::Way::Index:
            if (!cursor.entries) cursor.entries.emplace();
            table.Index(search.range.nIndex).Seek(*cursor.entries, search.range.lower);
            TakeRow(cursor);
            break;
    }
}

// To the next row of the walk.
void Advance(Cursor& cursor) {
    switch (cursor.search.way) {
        case Search::Way::AllRows:
            cursor.scan->Next();
            TakeRow(cursor);
            break;
        case Search::Way::Index:
            cursor.entries->Next();
            TakeRow(cursor);
            break;
        default:
            cursor.bAtEnd = true;
    }
}

int Filter(sqlite3_vtab_cursor* vtabCursor, int nPlan, const char* sUse, int nArguments,
           sqlite3_value** arguments) {
    return Guarded(vtabCursor->pVtab->zErrMsg, [&] {
        Cursor& cursor = Of(vtabCursor);
        cursor.BeginWalk();
        MakeSearch(cursor.search, *cursor.table, cursor.Owner().Generation(), nPlan, sUse,
                   {arguments, static_cast<std::size_t>(nArguments)});
        Start(cursor);
        if (cursor.bAtEnd) cursor.EndWalk();
    });
}

int Next(sqlite3_vtab_cursor* vtabCursor) {
    return Guarded(vtabCursor->pVtab->zErrMsg, [&] {
        Cursor& cursor = Of(vtabCursor);
        Advance(cursor);
        if (cursor.bAtEnd) cursor.EndWalk();
    });
}

int IsAtEnd(sqlite3_vtab_cursor* cursor) {
    return Of(cursor).bAtEnd ? 1 : 0;
}

int ReadColumn(sqlite3_vtab_cursor* vtabCursor, sqlite3_context* context, int nColumn) {
    // An update that leaves the column alone doesn't ask for its value.
    if (sqlite3_vtab_nochange(context) != 0) return SQLITE_OK;
    return Guarded(vtabCursor->pVtab->zErrMsg, [&] {
        Cursor& cursor = Of(vtabCursor);
        jet::Table& table = *cursor.table;
        const auto nPlace = static_cast<std::size_t>(nColumn);
        const jet::Column& column = table.Definition().columns[nPlace];
        const jet::Table::Glance glance = table.GlanceAt(cursor.place, nPlace, cursor.room);
        if (const auto* ascii = std::get_if<jet::ByteView>(&glance))
            GiveAscii(context, *ascii, cursor.sText);
        else if (const auto* nValue = std::get_if<std::int64_t>(&glance))
            GiveWhole(context, *nValue, column);
        else
            GiveResult(context, table.Read(cursor.place, nPlace), column);
    });
}

int ReadRowId(sqlite3_vtab_cursor* vtabCursor, sqlite3_int64* nRowId) {
    return Guarded(vtabCursor->pVtab->zErrMsg, [&] { *nRowId = RowIdOf(Of(vtabCursor).place); });
}

// --- Writing.

constexpr int kFirstValue = 2;  // ahead of a row's values stand its old and its new number

using Arguments = std::span<sqlite3_value*>;

void RequireSameRow(sqlite3_value* oldId, sqlite3_value* newId) {
    if (sqlite3_value_int64(oldId) != sqlite3_value_int64(newId))
        jet::Fail(jet::FailureKind::Unsupported, "a row's number is given by the file");
}

// nullopt if another row of the same statement has taken it along.
std::optional<jet::RowPlace> PlaceOfRow(jet::Table& table, sqlite3_value* rowId) {
    jet::RowPlace place;
    if (!PlaceOf(sqlite3_value_int64(rowId), place) || !table.Has(place)) return std::nullopt;
    return place;
}

void TakeValues(const jet::TableDefinition& definition, Arguments arguments, jet::Row& row) {
    for (std::size_t n = 0; n < definition.columns.size(); ++n) {
        sqlite3_value* value = arguments[kFirstValue + n];
        if (sqlite3_value_nochange(value) == 0) row[n] = ValueToWrite(value, definition.columns[n]);
    }
}

void Delete(VirtualTable& table, sqlite3_value* rowId) {
    if (const auto place = PlaceOfRow(table.Table(), rowId))
        table.session->DeleteRow(table.Table(), table.sName, *place);
}

// Deletes the rows that the statement wants replaced by this one; `own` is where it stands itself.
void MakeRoom(VirtualTable& table, const jet::Row& row, std::optional<jet::RowPlace> own) {
    if (sqlite3_vtab_on_conflict(table.handle) != SQLITE_REPLACE) return;
    for (const jet::RowPlace place : table.Table().RowsInTheWay(row))
        if (place != own) table.session->DeleteRow(table.Table(), table.sName, place);
    if (own && !table.Table().Has(*own))
        throw jet::ReferenceFailure("the row would go with one that it replaces");
}

void Insert(VirtualTable& table, Arguments arguments, sqlite3_int64& nRowId) {
    if (sqlite3_value_type(arguments[1]) != SQLITE_NULL)
        jet::Fail(jet::FailureKind::Unsupported, "a row's number is given by the file");
    jet::Row row(table.Table().Definition().columns.size());
    TakeValues(table.Table().Definition(), arguments, row);
    MakeRoom(table, row, std::nullopt);
    nRowId = RowIdOf(table.Table().Insert(row));
}

void Change(VirtualTable& table, Arguments arguments) {
    RequireSameRow(arguments[0], arguments[1]);
    const auto place = PlaceOfRow(table.Table(), arguments[0]);
    if (!place) return;
    jet::Row row = table.Table().Read(*place);
    TakeValues(table.Table().Definition(), arguments, row);
    MakeRoom(table, row, place);
    table.Table().Update(*place, row);
}

// What a statement wants done about conflicts counts for a table's own rules alone: SQLite would
// let it pass over each failure that bears a constraint's code.
template <typename Work>
void KeepRelationships(sqlite3* handle, Work work) {
    try {
        work();
    } catch (const jet::ReferenceFailure& failure) {
        const int nWanted = sqlite3_vtab_on_conflict(handle);
        if (nWanted == SQLITE_ABORT || nWanted == SQLITE_REPLACE) throw;
        jet::Fail(jet::FailureKind::Unsupported, failure.what());
    }
}

void ChangeRow(VirtualTable& table, Arguments arguments, sqlite3_int64& nRowId) {
    if (arguments.size() == 1)
        Delete(table, arguments[0]);
    else if (sqlite3_value_type(arguments[0]) == SQLITE_NULL)
        Insert(table, arguments, nRowId);
    else
        Change(table, arguments);
}

int Update(sqlite3_vtab* vtab, int nArguments, sqlite3_value** values, sqlite3_int64* nRowId) {
    return Guarded(vtab->zErrMsg, [&] {
        VirtualTable& table = Of(vtab);
        const Arguments arguments(values, static_cast<std::size_t>(nArguments));
        if (table.bSystem)
            jet::Fail(jet::FailureKind::NotWritable, "the file's own tables can only be read");
        KeepRelationships(table.handle, [&] {
            table.session->Whole([&] { ChangeRow(table, arguments, *nRowId); });
        });
    });
}

// --- Transactions.

int Begin(sqlite3_vtab* vtab) {
    return Guarded(vtab->zErrMsg, [&] { Of(vtab).session->Begin(); });
}

// The file's changes are kept here: this is where a failure still takes all back.
int Sync(sqlite3_vtab* vtab) {
    return Guarded(vtab->zErrMsg, [&] { Of(vtab).session->Commit(); });
}

int End(sqlite3_vtab* vtab) {
    return Guarded(vtab->zErrMsg, [&] { Of(vtab).session->End(); });
}

int Mark(sqlite3_vtab* vtab, int nMark) {
    return Guarded(vtab->zErrMsg, [&] { Of(vtab).session->Mark(nMark); });
}

int ReleaseMark(sqlite3_vtab* vtab, int nMark) {
    return Guarded(vtab->zErrMsg, [&] { Of(vtab).session->Release(nMark); });
}

int RollbackToMark(sqlite3_vtab* vtab, int nMark) {
    return Guarded(vtab->zErrMsg, [&] { Of(vtab).session->RollbackTo(nMark); });
}

int Rename(sqlite3_vtab* /*vtab*/, const char* /*sName*/) {
    return SQLITE_OK;  // the virtual table has another name; that in the file stays
}

const sqlite3_module kModule{
    .iVersion = 2,
    .xCreate = Connect,
    .xConnect = Connect,
    .xBestIndex = BestIndex,
    .xDisconnect = Disconnect,
    .xDestroy = Disconnect,
    .xOpen = OpenCursor,
    .xClose = CloseCursor,
    .xFilter = Filter,
    .xNext = Next,
    .xEof = IsAtEnd,
    .xColumn = ReadColumn,
    .xRowid = ReadRowId,
    .xUpdate = Update,
    .xBegin = Begin,
    .xSync = Sync,
    .xCommit = End,
    .xRollback = End,
    .xFindFunction = nullptr,
    .xRename = Rename,
    .xSavepoint = Mark,
    .xRelease = ReleaseMark,
    .xRollbackTo = RollbackToMark,
    .xShadowName = nullptr,
};

int Register(sqlite3* handle, const char* sModule, std::unique_ptr<Sessions> sessions) {
    return sqlite3_create_module_v2(handle, sModule, &kModule, sessions.release(),
                                    [](void* p) { delete static_cast<Sessions*>(p); });
}

std::optional<NamedTable> Describe(jet::AccessFile& file, const jet::CatalogueEntry& entry) {
    try {
        const jet::Table* table = file.FindTable(entry.sName);
        if (table == nullptr) return std::nullopt;
        return NamedTable{entry.sName, ShapeOf(table->Definition())};
    } catch (const jet::Failure& failure) {
        if (failure.Kind() == jet::FailureKind::Unsupported) return std::nullopt;
        if (failure.Kind() == jet::FailureKind::Damaged && entry.IsSystem()) return std::nullopt;
        throw;
    }
}

}  // namespace

int RegisterModule(sqlite3* handle, const char* sModule, std::shared_ptr<AccessSession> session) {
    return Register(handle, sModule, std::make_unique<Sessions>(std::move(session)));
}

int RegisterModuleForAnyFile(sqlite3* handle, const char* sModule) {
    return Register(handle, sModule, std::make_unique<Sessions>(nullptr));
}

std::vector<NamedTable> LocalTables(jet::AccessFile& file) {
    std::vector<NamedTable> tables;
    for (const jet::CatalogueEntry& entry : file.Catalogue()) {
        if (!entry.IsTable()) continue;
        if (auto table = Describe(file, entry)) tables.push_back(std::move(*table));
    }
    return tables;
}

std::string CreateStatement(const std::string& sModule, const std::string& sFile,
                            const NamedTable& table, std::u16string_view sPrefix) {
    const std::string sArguments =
        (sFile.empty() ? "" : Quoted(sFile, '\'') + ',') + Quoted(ToUtf8(table.sName), '\'');
    return "CREATE VIRTUAL TABLE temp." + Quoted(ToUtf8(Text(sPrefix) + table.sName), '"') +
           " USING " + sModule + '(' + sArguments + ')';
}

int ResultOf(jet::FailureKind kind) {
    switch (kind) {
        case jet::FailureKind::Damaged:
            return SQLITE_CORRUPT;
        case jet::FailureKind::Constraint:
            return SQLITE_CONSTRAINT;
        case jet::FailureKind::NotWritable:
            return SQLITE_READONLY;
        case jet::FailureKind::Held:
            return SQLITE_BUSY;
        case jet::FailureKind::InputOutput:
            return SQLITE_IOERR;
        default:
            return SQLITE_ERROR;
    }
}

}  // namespace nomira::jetsql
