// A database that has nothing but the system's four tables, laid out page by page as the makers'
// own programs begin one.
#include <algorithm>
#include <array>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "adapters/jet/AccessFile.h"
#include "adapters/jet/Catalogue.h"
#include "adapters/jet/DataPage.h"
#include "adapters/jet/DefinitionPages.h"
#include "adapters/jet/Header.h"
#include "adapters/jet/Names.h"
#include "adapters/jet/PageAllocator.h"

namespace nomira::jet {
namespace {

// ---- What the tables are

constexpr std::uint8_t kFixed = ColumnFixed | ColumnNullable | ColumnSystem;
constexpr std::uint8_t kVariable = ColumnNullable | ColumnSystem;
constexpr std::uint8_t kOwner = 0x20 | kVariable;  // of columns that tell who

// By number. Lengths are in bytes; 0 for texts and binaries of the greatest length, and for long
// values.
struct SystemColumn {
    const char16_t* sName;
    ColumnType type;
    std::uint8_t nFlags;
    std::uint16_t nVariableIndex;
    std::uint16_t nFixedOffset;
    std::uint16_t nLength;
    bool bJet4Only = false;
};
struct SystemIndex {
    const char16_t* sName;
    std::array<int, 3> columns;  // by number; -1 behind the last
    std::uint8_t nFlags;
    LogicalKind kind;
};
struct SystemTableSource {
    std::uint32_t nPage;
    std::span<const SystemColumn> columns;
    std::span<const SystemIndex> indexes;
};

using enum ColumnType;

constexpr SystemColumn kObjectColumns[] = {
    {u"Id", Long, kFixed, 0, 0, 4},
    {u"ParentId", Long, kFixed, 0, 4, 4},
    {u"Name", Text, kVariable, 0, 0, 0},
    {u"Type", Integer, kFixed, 1, 8, 2},
    {u"DateCreate", DateTime, kFixed, 1, 10, 8},
    {u"DateUpdate", DateTime, kFixed, 1, 18, 8},
    {u"Owner", Binary, kOwner, 1, 0, 0},
    {u"Flags", Long, kFixed, 2, 26, 4},
    {u"Database", Memo, kVariable, 2, 0, 0},
    {u"Connect", Memo, kVariable, 3, 0, 0},
    {u"ForeignName", Text, kVariable, 4, 0, 0},
    {u"RmtInfoShort", Binary, kVariable, 5, 0, 0},
    {u"RmtInfoLong", Ole, kVariable, 6, 0, 0},
    {u"Lv", Ole, kVariable, 7, 0, 0},
    {u"LvProp", Ole, kVariable, 8, 0, 0},
    {u"LvModule", Ole, kVariable, 9, 0, 0},
    {u"LvExtra", Ole, kVariable, 10, 0, 0},
};
constexpr SystemIndex kObjectIndexes[] = {
    {u"ParentIdName", {1, 2, -1}, IndexUnique, LogicalKind::Ordinary},
    {u"Id", {0, -1, -1}, IndexUnique, LogicalKind::PrimaryKey},
};

constexpr SystemColumn kRightsColumns[] = {
    {u"ObjectId", Long, kFixed, 0, 0, 4},
    {u"SID", Binary, kOwner, 0, 0, 0},
    {u"ACM", Long, kFixed, 1, 4, 4},
    {u"FInheritable", Boolean, kFixed, 1, 0, 1},
};
constexpr SystemIndex kRightsIndexes[] = {
    {u"ObjectId", {0, -1, -1}, IndexRequired, LogicalKind::Ordinary},
};

constexpr SystemColumn kQueryColumns[] = {
    {u"ObjectId", Long, kFixed, 0, 0, 4},   {u"Attribute", Byte, kFixed, 0, 4, 1},
    {u"Order", Binary, kVariable, 0, 0, 0}, {u"Name1", Text, kVariable, 1, 0, 0},
    {u"Name2", Text, kVariable, 2, 0, 0},   {u"Expression", Memo, kVariable, 3, 0, 0},
    {u"Flag", Integer, kFixed, 4, 5, 2},    {u"LvExtra", Long, kFixed, 4, 7, 4, true},
};
constexpr SystemIndex kQueryIndexes[] = {
    {u"ObjectIdAttribute", {0, 1, 2}, IndexUnique, LogicalKind::PrimaryKey},
};

constexpr SystemColumn kRelationshipColumns[] = {
    {u"szRelationship", Text, kVariable, 0, 0, 0},
    {u"grbit", Long, kFixed, 1, 0, 4},
    {u"ccolumn", Long, kFixed, 1, 4, 4},
    {u"icolumn", Long, kFixed, 1, 8, 4},
    {u"szObject", Text, kVariable, 1, 0, 0},
    {u"szColumn", Text, kVariable, 2, 0, 0},
    {u"szReferencedObject", Text, kVariable, 3, 0, 0},
    {u"szReferencedColumn", Text, kVariable, 4, 0, 0},
};
constexpr SystemIndex kRelationshipIndexes[] = {
    {u"szRelationship", {0, -1, -1}, IndexIgnoresNulls, LogicalKind::Ordinary},
    {u"szObject", {4, -1, -1}, IndexIgnoresNulls, LogicalKind::Ordinary},
    {u"szReferencedObject", {6, -1, -1}, IndexIgnoresNulls, LogicalKind::Ordinary},
};

constexpr SystemTableSource kTables[] = {
    {kObjectsTable, kObjectColumns, kObjectIndexes},
    {kRightsTable, kRightsColumns, kRightsIndexes},
    {kQueriesTable, kQueryColumns, kQueryIndexes},
    {kRelationshipsTable, kRelationshipColumns, kRelationshipIndexes},
};

// ---- Where their pages are

// Maps of all tables in turn: owned and free pages, both of each long column, the indexes'.
struct MapPage {
    std::uint32_t nPage;
    std::size_t nMaps;
};
struct FilePlan {
    std::span<const MapPage> mapPages;
    std::span<const std::uint32_t> roots;  // of the indexes of all tables in turn
    std::uint32_t nPages;                  // ahead of the first page of rows
};

constexpr MapPage kJet3Maps[] = {{6, 15}, {7, 1}, {8, 1}, {10, 1}, {12, 13}};
constexpr std::uint32_t kJet3Roots[] = {9, 11, 13, 14, 15, 16, 17};
constexpr MapPage kJet4Maps[] = {{6, 31}};
constexpr std::uint32_t kJet4Roots[] = {7, 8, 9, 10, 11, 12, 13};
constexpr FilePlan kJet3Plan{kJet3Maps, kJet3Roots, 18};
constexpr FilePlan kJet4Plan{kJet4Maps, kJet4Roots, 14};

// ---- What stands in them

constexpr std::int32_t kContainersParent = 0x0F000000;
constexpr std::int32_t kDatabase = 0x10000000;
constexpr std::uint32_t kSystemFlag = 0x80000000;

struct SystemObject {
    std::int32_t nId;
    std::int32_t nParent;
    const char16_t* sName;
    std::int16_t nType;
    OwnerId owner;
};
constexpr SystemObject kObjects[] = {
    {kTablesParent, kContainersParent, u"Tables", 3, OwnerId::Engine},
    {kDatabasesParent, kContainersParent, u"Databases", 3, OwnerId::Engine},
    {kRelationshipsParent, kContainersParent, u"Relationships", 3, OwnerId::Engine},
    {kDatabase, kDatabasesParent, u"MSysDb", 2, OwnerId::Admin},
    {kObjectsTable, kTablesParent, u"MSysObjects", 1, OwnerId::Engine},
    {kRightsTable, kTablesParent, u"MSysACEs", 1, OwnerId::Engine},
    {kQueriesTable, kTablesParent, u"MSysQueries", 1, OwnerId::Engine},
    {kRelationshipsTable, kTablesParent, u"MSysRelationships", 1, OwnerId::Engine},
};

struct SystemRight {
    std::int32_t nObject;
    OwnerId who;
    std::int32_t nRights;
    bool bInheritable;
};
constexpr SystemRight kRights[] = {
    {kObjectsTable, OwnerId::Admin, 0x60000, false},
    {kRightsTable, OwnerId::Admin, 0x60000, false},
    {kQueriesTable, OwnerId::Admin, 0x60000, false},
    {kRelationshipsTable, OwnerId::Admin, 0xE0000, false},
    {kTablesParent, OwnerId::Creator, 0xF00FE, true},
    {kTablesParent, OwnerId::Admin, 0x60001, false},
    {kRelationshipsParent, OwnerId::Creator, 0xF00FE, true},
    {kRelationshipsParent, OwnerId::Admin, 0x60001, false},
    {kDatabasesParent, OwnerId::Admin, 0x60000, false},
    {kDatabase, OwnerId::Admin, 0x6000E, false},
    {kDatabase, OwnerId::Users, 0x0E, false},
    {kQueriesTable, OwnerId::Users, 0x14, false},
    {kRelationshipsTable, OwnerId::Users, 0x14, false},
    {kObjectsTable, OwnerId::Users, 0x14, false},
    {kTablesParent, OwnerId::Users, 0xFFEFF, true},
    {kRelationshipsParent, OwnerId::Users, 0xFFFFF, true},
};

// ---- How it is made

// Somebody else's pages.
class BorrowedPages : public PageStore {
  public:
    explicit BorrowedPages(PageStore& pages) : m_pages(pages) {}

    const Layout& Format() const override { return m_pages.Format(); }
    std::uint32_t Count() const override { return m_pages.Count(); }
    bool CanWrite() const override { return m_pages.CanWrite(); }
    ByteView Read(std::uint32_t nPage) override { return m_pages.Read(nPage); }
    ByteSpan Change(std::uint32_t nPage) override { return m_pages.Change(nPage); }
    std::uint32_t Append() override { return m_pages.Append(); }
    void Commit() override { m_pages.Commit(); }
    void Rollback() override { m_pages.Rollback(); }
    void Mark(int nMark) override { m_pages.Mark(nMark); }
    void RollbackTo(int nMark) override { m_pages.RollbackTo(nMark); }
    void Release(int nMark) override { m_pages.Release(nMark); }
    std::uint64_t Changes() const override { return m_pages.Changes(); }

  private:
    PageStore& m_pages;
};

// Hands the plan's maps and roots out in their order.
class Builder {
  public:
    explicit Builder(PageStore& store)
        : m_store(store),
          m_bJet4(store.Format().generation == Generation::Jet4),
          m_plan(m_bJet4 ? kJet4Plan : kJet3Plan),
          m_nextRoot(m_plan.roots.begin()) {}

    void WritePages() {
        while (m_store.Count() < m_plan.nPages)
            m_store.Append();
        const Bytes header = NewHeader(m_store.Format().generation);
        std::copy(header.begin(), header.end(), m_store.Change(0).begin());
        WriteGlobalMap(m_store, m_plan.nPages);
        WriteMaps();
        for (const SystemTableSource& source : kTables)
            WriteTable(source);
    }

  private:
    void WriteMaps() {
        const Bytes row(m_store.Format().nMapRowBytes);
        for (const MapPage& page : m_plan.mapPages) {
            DataPage::Format(m_store, page.nPage, kOwnerOfMaps);
            for (std::size_t n = 0; n < page.nMaps; ++n)
                m_maps.push_back({page.nPage, DataPage(m_store, page.nPage).Add(row)});
        }
        m_nextMap = m_maps.begin();
    }

    void WriteTable(const SystemTableSource& source) {
        TableDefinition table;
        table.nPage = source.nPage;
        table.kind = TableKind::System;
        AddColumns(source, table);
        table.ownedMap = *m_nextMap++;
        table.freeMap = *m_nextMap++;
        AddLongColumns(table);
        AddIndexes(source, table);
        // The makers' order.
        const auto byName = [](const Column& a, const Column& b) {
            return ComesBefore(a.sName, b.sName);
        };
        if (m_bJet4) std::sort(table.columns.begin(), table.columns.end(), byName);
        WriteDefinition(m_store, table);
    }

    void AddColumns(const SystemTableSource& source, TableDefinition& table) const {
        for (const SystemColumn& from : source.columns) {
            if (from.bJet4Only && !m_bJet4) continue;
            Column& column = table.columns.emplace_back();
            column.sName = from.sName;
            column.type = from.type;
            column.nNumber = table.nMostColumns++;
            column.nVariableIndex = from.nVariableIndex;
            column.nFlags = from.nFlags;
            column.nFixedOffset = from.nFixedOffset;
            column.nLength = from.nLength;
            if (!column.IsFixed()) ++table.nVariableColumns;
            if (!column.IsFixed() && !column.IsLongValue())
                column.nLength = static_cast<std::uint16_t>(255 * m_store.Format().nCharacterBytes);
        }
    }

    void AddLongColumns(TableDefinition& table) {
        for (const Column& column : table.columns) {
            if (!column.IsLongValue()) continue;
            const RowPlace owned = *m_nextMap++;
            table.longColumns.push_back({column.nNumber, owned, *m_nextMap++});
        }
        std::sort(table.longColumns.begin(), table.longColumns.end(),
                  [&](const LongColumnMaps& a, const LongColumnMaps& b) {
                      return ComesBefore(table.columns[a.nColumn].sName,
                                         table.columns[b.nColumn].sName);
                  });
    }

    void AddIndexes(const SystemTableSource& source, TableDefinition& table) {
        for (const SystemIndex& from : source.indexes) {
            RealIndex& index = table.realIndexes.emplace_back();
            for (const int nColumn : from.columns)
                if (nColumn >= 0) index.columns.push_back({static_cast<std::uint16_t>(nColumn)});
            index.nFlags = from.nFlags;
            if (m_bJet4) index.nFlags |= IndexJet4;
            index.ownedMap = *m_nextMap++;
            index.nRootPage = *m_nextRoot++;
            WriteEmptyIndex(m_store, index.nRootPage, table.nPage);
            UsageMap(m_store, index.ownedMap).Add(index.nRootPage);
            LogicalIndex& logical = table.logicalIndexes.emplace_back();
            logical.sName = from.sName;
            logical.nNumber = static_cast<std::uint32_t>(table.realIndexes.size() - 1);
            logical.nRealIndex = logical.nNumber;
            logical.kind = from.kind;
        }
        std::sort(table.logicalIndexes.begin(), table.logicalIndexes.end(),
                  [](const LogicalIndex& a, const LogicalIndex& b) {
                      return ComesBefore(a.sName, b.sName);
                  });
    }

    PageStore& m_store;
    bool m_bJet4;
    const FilePlan& m_plan;
    std::vector<RowPlace> m_maps;
    std::vector<RowPlace>::const_iterator m_nextMap;
    std::span<const std::uint32_t>::iterator m_nextRoot;
};

void FillTables(PageStore& store) {
    AccessFile file(std::make_unique<BorrowedPages>(store));
    const Generation generation = store.Format().generation;
    SystemTable objects(file, kObjectsTable);
    for (const SystemObject& object : kObjects)
        objects.Insert({{u"Id", std::int64_t{object.nId}},
                        {u"ParentId", std::int64_t{object.nParent}},
                        {u"Name", std::u16string(object.sName)},
                        {u"Type", std::int64_t{object.nType}},
                        {u"DateCreate", NewCreationDate()},
                        {u"DateUpdate", NewCreationDate()},
                        {u"Owner", OwnerBytes(object.owner, generation)},
                        {u"Flags", std::int64_t{static_cast<std::int32_t>(kSystemFlag)}}});
    SystemTable rights(file, kRightsTable);
    for (const SystemRight& right : kRights)
        rights.Insert({{u"ObjectId", std::int64_t{right.nObject}},
                       {u"SID", OwnerBytes(right.who, generation)},
                       {u"ACM", std::int64_t{right.nRights}},
                       {u"FInheritable", right.bInheritable}});
}

}  // namespace

void AccessFile::CreateEmpty(PageStore& pages) {
    if (pages.Count() != 0) Fail(FailureKind::Constraint, "there is something in the file already");
    Builder(pages).WritePages();
    FillTables(pages);
}

}  // namespace nomira::jet
