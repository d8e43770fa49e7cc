// New tables of an Access file.
#include <algorithm>

#include "adapters/jet/AccessFile.h"
#include "adapters/jet/Catalogue.h"
#include "adapters/jet/DefinitionPages.h"
#include "adapters/jet/Names.h"
#include "adapters/jet/PageAllocator.h"
#include "adapters/jet/TablePages.h"
#include "adapters/jet/ValueCodes.h"

namespace nomira::jet {
namespace {

constexpr std::size_t kMostColumns = 255;
constexpr std::size_t kMostIndexes = 32;
constexpr std::size_t kMostIndexColumns = 10;
constexpr std::size_t kMostCharacters = 255;
// Digits of a number column, and none behind the point.
constexpr std::uint16_t kNumericDigits = 18;

[[noreturn]] void Refuse(const char* sWhy) {
    Fail(FailureKind::Constraint, sWhy);
}

bool IsVariable(ColumnType type) {
    return type == ColumnType::Text || type == ColumnType::Binary || type == ColumnType::Memo ||
           type == ColumnType::Ole;
}

template <typename T>
void RequireDistinctNames(const std::vector<T>& items) {
    for (std::size_t i = 0; i < items.size(); ++i) {
        RequireName(items[i].sName);
        for (std::size_t j = 0; j < i; ++j)
            if (SameName(items[i].sName, items[j].sName)) Refuse("a name stands twice in a table");
    }
}

void RequireLength(const NewColumn& column, const Layout& layout) {
    const bool bText = column.type == ColumnType::Text;
    const std::size_t nMost = bText ? kMostCharacters : kMostCharacters * layout.nCharacterBytes;
    if ((bText || column.type == ColumnType::Binary) &&
        (column.nCharacters == 0 || column.nCharacters > nMost))
        Refuse("a column's length is one that the file can't have");
    if (column.type == ColumnType::Numeric && layout.generation == Generation::Jet3)
        Fail(FailureKind::Unsupported, "the file's generation has no such columns");
    if (column.bAutonumber && column.type != ColumnType::Long)
        Refuse("a column of another type can't be counted up");
}

void RequireSense(const NewTable& table, const Layout& layout) {
    RequireName(table.sName);
    RequireDistinctNames(table.columns);
    RequireDistinctNames(table.indexes);
    if (table.columns.empty() || table.columns.size() > kMostColumns ||
        table.indexes.size() > kMostIndexes)
        Refuse("a table has too many columns or indexes, or none");
    for (const NewColumn& column : table.columns)
        RequireLength(column, layout);
    const auto isAutonumber = [](const NewColumn& column) { return column.bAutonumber; };
    if (std::count_if(table.columns.begin(), table.columns.end(), isAutonumber) > 1)
        Refuse("a table can count up one column alone");
    const auto isPrimary = [](const NewIndex& index) { return index.bPrimary; };
    if (std::count_if(table.indexes.begin(), table.indexes.end(), isPrimary) > 1)
        Refuse("a table can have one primary key alone");
}

std::uint16_t LengthOf(const NewColumn& column, const Layout& layout) {
    if (column.type == ColumnType::Boolean) return 1;
    if (column.type == ColumnType::Text)
        return static_cast<std::uint16_t>(column.nCharacters * layout.nCharacterBytes);
    Column asked;
    asked.type = column.type;
    asked.nLength = column.nCharacters;
    const bool bLong = column.type == ColumnType::Memo || column.type == ColumnType::Ole;
    return bLong ? std::uint16_t{0} : static_cast<std::uint16_t>(FixedSize(asked));
}

// Gives columns their numbers and places in rows.
class ColumnMaker {
  public:
    // `pattern`: a text column of the file's own, for its sort order.
    ColumnMaker(TableDefinition& table, const Column& pattern, const Layout& layout)
        : m_table(table), m_pattern(pattern), m_layout(layout) {}

    void Add(const NewColumn& asked) {
        Column column = m_pattern;
        column.sName = asked.sName;
        column.type = asked.type;
        column.nNumber = static_cast<std::uint16_t>(m_table.columns.size());
        column.nDisplayOrder = column.nNumber;
        column.nVariableIndex = m_table.nVariableColumns;
        column.nLength = LengthOf(asked, m_layout);
        column.nFlags = ColumnNullable;
        column.nExtension = 0;
        column.nFixedOffset = 0;
        if (asked.type == ColumnType::Numeric) column.nSortOrder = kNumericDigits;
        if (asked.bAutonumber) column.nFlags |= ColumnAutonumber;
        if (column.IsText() && asked.bCompressed && m_layout.generation == Generation::Jet4)
            column.nExtension = ColumnCompressed;
        if (IsVariable(asked.type)) {
            ++m_table.nVariableColumns;
        } else {
            column.nFlags |= ColumnFixed;
            column.nFixedOffset = m_nFixedBytes;
            if (asked.type != ColumnType::Boolean) m_nFixedBytes += column.nLength;
        }
        m_table.columns.push_back(std::move(column));
        m_table.nMostColumns = static_cast<std::uint16_t>(m_table.columns.size());
    }

  private:
    TableDefinition& m_table;
    const Column& m_pattern;
    const Layout& m_layout;
    std::uint16_t m_nFixedBytes = 0;
};

RealIndex TreeFor(const TableDefinition& table, const NewIndex& asked, const Layout& layout) {
    RealIndex index;
    if (asked.columns.empty() || asked.columns.size() > kMostIndexColumns)
        Refuse("an index has too many columns, or none");
    for (const std::u16string& sName : asked.columns) {
        const int nColumn = table.FindColumn(sName);
        if (nColumn < 0) Refuse("an index names a column that isn't there");
        index.columns.push_back({table.columns[static_cast<std::size_t>(nColumn)].nNumber, true});
    }
    unsigned nFlags = layout.generation == Generation::Jet4 ? IndexJet4 : 0;
    if (asked.bUnique || asked.bPrimary) nFlags |= IndexUnique;
    if (asked.bPrimary) nFlags |= IndexRequired;
    index.nFlags = static_cast<std::uint8_t>(nFlags);
    return index;
}

TableDefinition DefinitionFor(const NewTable& asked, const Column& pattern, const Layout& layout) {
    TableDefinition table;
    ColumnMaker columns(table, pattern, layout);
    for (const NewColumn& column : asked.columns)
        columns.Add(column);
    for (const NewIndex& index : asked.indexes) {
        LogicalIndex& logical = table.logicalIndexes.emplace_back();
        logical.sName = index.sName;
        logical.nNumber = static_cast<std::uint32_t>(table.realIndexes.size());
        logical.nRealIndex = logical.nNumber;
        if (index.bPrimary) logical.kind = LogicalKind::PrimaryKey;
        table.realIndexes.push_back(TreeFor(table, index, layout));
    }
    std::sort(table.logicalIndexes.begin(), table.logicalIndexes.end(),
              [](const auto& a, const auto& b) { return ComesBefore(a.sName, b.sName); });
    return table;
}

}  // namespace

Table& AccessFile::CreateTable(const NewTable& table) {
    const Layout& layout = m_pages->Format();
    RequireSense(table, layout);
    for (const CatalogueEntry& entry : Entries())
        if (entry.nParent == kTablesParent && SameName(entry.sName, table.sName))
            Refuse("another table or query has the name");
    SystemTable objects(*this, kObjectsTable);
    const Column pattern = objects.Rows().Definition().columns[objects.Column(u"Name")];
    TableDefinition definition = DefinitionFor(table, pattern, layout);
    TakePages(*m_pages, definition);
    WriteDefinition(*m_pages, definition);
    CatalogueEntry entry;
    entry.nId = static_cast<std::int32_t>(definition.nPage);
    entry.nParent = kTablesParent;
    entry.sName = table.sName;
    entry.nType = kLocalTable;
    AddObject(*this, entry);
    return TableAt(definition.nPage);
}

}  // namespace nomira::jet
