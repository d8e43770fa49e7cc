// New relationships between the tables of an Access file.
#include <algorithm>

#include "adapters/jet/AccessFile.h"
#include "adapters/jet/Catalogue.h"
#include "adapters/jet/DefinitionPages.h"
#include "adapters/jet/KeyCodes.h"
#include "adapters/jet/Names.h"
#include "adapters/jet/PageAllocator.h"

namespace nomira::jet {
namespace {

constexpr std::int64_t kCascadesDeletes = 0x1000;  // in the table of relationships
constexpr std::uint8_t kCascades = 1;              // in a definition
constexpr std::string_view kPrimarySideNames =
    "BCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

[[noreturn]] void Refuse(const char* sWhy) {
    Fail(FailureKind::Constraint, sWhy);
}

bool HasIndexNamed(const TableDefinition& table, std::u16string_view sName) {
    return std::any_of(table.logicalIndexes.begin(), table.logicalIndexes.end(),
                       [&](const LogicalIndex& index) { return SameName(index.sName, sName); });
}

// The primary side's index has a name that nobody sees.
std::u16string PrimarySideName(const TableDefinition& table) {
    for (const char c : kPrimarySideNames) {
        std::u16string sName = u".r";
        sName.push_back(static_cast<char16_t>(c));
        // Their letters count as they are, unlike in other names.
        const auto same = [&](const LogicalIndex& index) { return index.sName == sName; };
        if (std::none_of(table.logicalIndexes.begin(), table.logicalIndexes.end(), same))
            return sName;
    }
    Refuse("a table has too many relationships");
}

// The tree of exactly this column; nullopt without one.
std::optional<std::size_t> TreeOn(const TableDefinition& table, std::uint16_t nColumn,
                                  bool bUnique) {
    for (std::size_t i = 0; i < table.realIndexes.size(); ++i) {
        const RealIndex& index = table.realIndexes[i];
        if (index.columns.size() == 1 && index.columns[0].nColumn == nColumn &&
            index.IsUnique() >= bUnique && !index.IgnoresNulls())
            return i;
    }
    return std::nullopt;
}

std::uint32_t NextNumber(const TableDefinition& table) {
    std::uint32_t nNext = 0;
    for (const LogicalIndex& index : table.logicalIndexes)
        nNext = std::max(nNext, index.nNumber + 1);
    return nNext;
}

void Enter(TableDefinition& table, LogicalIndex index) {
    const auto place = std::upper_bound(
        table.logicalIndexes.begin(), table.logicalIndexes.end(), index,
        [](const auto& a, const auto& b) { return ComesBefore(a.sName, b.sName); });
    table.logicalIndexes.insert(place, std::move(index));
}

class RelationshipMaker {
  public:
    RelationshipMaker(AccessFile& file, const NewRelationship& asked)
        : m_file(file),
          m_asked(asked),
          m_primary(Find(asked.sPrimaryTable)),
          m_foreign(Find(asked.sForeignTable)),
          m_nPrimaryColumn(FindColumn(m_primary, asked.sPrimaryColumn)),
          m_nForeignColumn(FindColumn(m_foreign, asked.sForeignColumn)) {}

    void Make() {
        RequireSense();
        const std::size_t nForeignTree = ForeignTree();
        EnterSides(nForeignTree);
        CatalogueEntry entry;
        entry.nId = NextObjectId(m_file.Catalogue());
        entry.nParent = kRelationshipsParent;
        entry.sName = m_asked.sName;
        entry.nType = kRelationshipObject;
        AddObject(m_file, entry);
        SystemTable relationships(m_file, kRelationshipsTable);
        relationships.Insert({{u"szRelationship", m_asked.sName},
                              {u"grbit", m_asked.bCascadeDelete ? kCascadesDeletes : 0},
                              {u"ccolumn", std::int64_t{1}},
                              {u"icolumn", std::int64_t{0}},
                              {u"szObject", m_asked.sForeignTable},
                              {u"szColumn", m_asked.sForeignColumn},
                              {u"szReferencedObject", m_asked.sPrimaryTable},
                              {u"szReferencedColumn", m_asked.sPrimaryColumn}});
    }

  private:
    Table& Find(std::u16string_view sName) {
        Table* table = m_file.FindTable(sName);
        if (table == nullptr) Refuse("a relationship names a table that isn't there");
        return *table;
    }

    static std::size_t FindColumn(const Table& table, std::u16string_view sName) {
        const int nColumn = table.Definition().FindColumn(sName);
        if (nColumn < 0) Refuse("a relationship names a column that isn't there");
        return static_cast<std::size_t>(nColumn);
    }

    const Column& PrimaryColumn() const { return m_primary.Definition().columns[m_nPrimaryColumn]; }
    const Column& ForeignColumn() const { return m_foreign.Definition().columns[m_nForeignColumn]; }

    void RequireSense() {
        RequireName(m_asked.sName);
        const auto taken = [&](const CatalogueEntry& entry) {
            return entry.nParent == kRelationshipsParent && SameName(entry.sName, m_asked.sName);
        };
        const std::vector<CatalogueEntry> entries = m_file.Catalogue();
        if (std::any_of(entries.begin(), entries.end(), taken) ||
            HasIndexNamed(m_foreign.Definition(), m_asked.sName))
            Refuse("another relationship or index has the name");
        const auto tree = TreeOn(m_primary.Definition(), PrimaryColumn().nNumber, true);
        if (!tree) Refuse("the primary column of a relationship has no unique index");
        m_nPrimaryTree = *tree;
        if (PrimaryColumn().type != ForeignColumn().type)
            Refuse("the columns of a relationship are of different types");
        RequirePrimaries();
    }

    void RequirePrimaries() {
        const bool bAscending =
            m_primary.Definition().realIndexes[m_nPrimaryTree].columns[0].bAscending;
        for (auto scan = m_foreign.Rows(); !scan.AtEnd(); scan.Next()) {
            const Value value = m_foreign.Read(scan.Place(), m_nForeignColumn);
            if (IsNull(value)) continue;
            Bytes key;
            AppendKey(key, value, PrimaryColumn(), bAscending, m_file.Kind());
            if (!m_primary.Index(m_nPrimaryTree).Contains(key))
                Refuse("a row refers to none that is there");
        }
    }

    // The foreign column's tree, made if there is none.
    std::size_t ForeignTree() {
        if (const auto tree = TreeOn(m_foreign.Definition(), ForeignColumn().nNumber, false))
            return *tree;
        PageStore& store = m_file.Pages();
        TableDefinition table = DefinitionNow(m_foreign);
        std::uint32_t nMapPage = table.ownedMap.nPage;
        RealIndex& index = table.realIndexes.emplace_back();
        index.columns.push_back({ForeignColumn().nNumber, true});
        index.nFlags = m_file.Kind() == Generation::Jet4 ? IndexJet4 : 0;
        index.ownedMap = NewMap(store, nMapPage);
        index.nRootPage = MappedPages(store, index.ownedMap).Take();
        WriteEmptyIndex(store, index.nRootPage, table.nPage);
        Write(m_foreign, table);
        m_foreign.BuildIndex(m_foreign.Definition().realIndexes.size() - 1);
        return m_foreign.Definition().realIndexes.size() - 1;
    }

    // Both sides may be the same table's.
    void EnterSides(std::size_t nForeignTree) {
        LogicalIndex primary = Side(RelatedSide::Primary, m_foreign);
        primary.sName = PrimarySideName(m_primary.Definition());
        primary.nNumber = NextNumber(m_primary.Definition());
        primary.nRealIndex = static_cast<std::uint32_t>(m_nPrimaryTree);
        LogicalIndex foreign = Side(RelatedSide::Foreign, m_primary);
        foreign.sName = m_asked.sName;
        foreign.nNumber = NextNumber(m_foreign.Definition()) + (&m_primary == &m_foreign ? 1 : 0);
        foreign.nRealIndex = static_cast<std::uint32_t>(nForeignTree);
        primary.nRelatedIndex = static_cast<std::int32_t>(foreign.nNumber);
        foreign.nRelatedIndex = static_cast<std::int32_t>(primary.nNumber);
        AddSide(m_primary, std::move(primary));
        AddSide(m_foreign, std::move(foreign));
    }

    LogicalIndex Side(RelatedSide side, const Table& other) const {
        LogicalIndex index;
        index.kind = LogicalKind::ForeignKey;
        index.side = side;
        index.nRelatedTable = other.Definition().nPage;
        index.nUpdateAction = 0;
        index.nDeleteAction = m_asked.bCascadeDelete ? kCascades : 0;
        return index;
    }

    void AddSide(Table& table, LogicalIndex index) {
        TableDefinition definition = DefinitionNow(table);
        Enter(definition, std::move(index));
        Write(table, definition);
    }

    // With the counters of this moment.
    TableDefinition DefinitionNow(const Table& table) {
        return ReadDefinition(m_file.Pages(), table.Definition().nPage);
    }

    void Write(Table& table, const TableDefinition& definition) {
        WriteDefinition(m_file.Pages(), definition);
        table.Refresh();
    }

    AccessFile& m_file;
    const NewRelationship& m_asked;
    Table& m_primary;
    Table& m_foreign;
    std::size_t m_nPrimaryColumn;
    std::size_t m_nForeignColumn;
    std::size_t m_nPrimaryTree = 0;
};

}  // namespace

void AccessFile::CreateRelationship(const NewRelationship& relationship) {
    RelationshipMaker(*this, relationship).Make();
}

}  // namespace nomira::jet
