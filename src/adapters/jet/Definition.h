// A table's definition: its columns, its indexes, and where its pages are told.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "adapters/jet/Bytes.h"
#include "adapters/jet/PageStore.h"
#include "adapters/jet/Value.h"

namespace nomira::jet {

// The one sort order whose keys are known: General, of LCID 1033, in its first version.
inline constexpr std::uint16_t kGeneralOrder = 0x0409;

enum ColumnFlag : std::uint8_t {
    ColumnFixed = 0x01,  // stored in the fixed part of a row, whatever its type
    ColumnNullable = 0x02,
    ColumnAutonumber = 0x04,  // of type Long: the file counts it up
    ColumnSystem = 0x10,
    ColumnAutoGuid = 0x40,
    ColumnHyperlink = 0x80,
};
enum ColumnExtension : std::uint8_t {
    ColumnCompressed = 0x01,  // its texts may be stored one byte per character
};

struct Column {
    std::u16string sName;
    ColumnType type = ColumnType::Long;
    std::uint16_t nNumber = 0;  // place in a row's null mask; gaps where columns were deleted
    std::uint16_t nVariableIndex = 0;  // place in a row's table of offsets
    std::uint16_t nDisplayOrder = 0;
    std::uint16_t nCollation = 0;  // Jet 3 only, as in the file's header
    std::uint16_t nSortOrder = kGeneralOrder;
    std::uint16_t nCodePage = 0x04E4;  // Jet 3 only
    std::uint16_t nSortVersion = 0;    // Jet 4 only
    std::uint8_t nFlags = 0;
    std::uint8_t nExtension = 0;     // Jet 4 only
    std::uint16_t nFixedOffset = 0;  // behind the row's count of columns; for fixed columns
    std::uint16_t nLength = 0;       // bytes; 0 for long values

    bool IsFixed() const { return (nFlags & ColumnFixed) != 0; }
    bool IsAutonumber() const {
        return (nFlags & ColumnAutonumber) != 0 && type == ColumnType::Long;
    }
    bool IsText() const { return type == ColumnType::Text || type == ColumnType::Memo; }
    bool IsLongValue() const { return type == ColumnType::Ole || type == ColumnType::Memo; }
};

enum IndexFlag : std::uint8_t {
    IndexUnique = 0x01,
    IndexIgnoresNulls = 0x02,  // rows whose columns are all Null have no entry
    IndexRequired = 0x08,      // no Null in its columns
    IndexJet4 = 0x80,          // in every index of a Jet 4 file
};

struct IndexColumn {
    std::uint16_t nColumn = 0;  // Column::nNumber
    bool bAscending = true;
};

// What is stored: a tree of keys.
struct RealIndex {
    std::vector<IndexColumn> columns;  // 1 to 10
    RowPlace ownedMap;
    std::uint32_t nRootPage = 0;
    std::uint8_t nFlags = 0;
    // The optimiser's figures.
    std::uint32_t nEntriesAtBuild = 0;
    std::uint32_t nDistinctKeys = 0;

    bool IsUnique() const { return (nFlags & IndexUnique) != 0; }
    bool IgnoresNulls() const { return (nFlags & IndexIgnoresNulls) != 0; }
    bool IsRequired() const { return (nFlags & IndexRequired) != 0; }
};

enum class LogicalKind : std::uint8_t { Ordinary = 0, PrimaryKey = 1, ForeignKey = 2 };
enum class RelatedSide : std::uint8_t { None = 0, Primary = 1, Foreign = 2 };

// What is named: an index, or one side of a relationship; several may share one tree.
struct LogicalIndex {
    std::u16string sName;
    std::uint32_t nNumber = 0;
    std::uint32_t nRealIndex = 0;  // index into TableDefinition::realIndexes
    RelatedSide side = RelatedSide::None;
    std::int32_t nRelatedIndex = -1;  // LogicalIndex::nNumber in the other table
    std::uint32_t nRelatedTable = 0;  // its definition's page
    std::uint8_t nUpdateAction = 4;   // relationships: 1 cascades, else 0; all others 4
    std::uint8_t nDeleteAction = 4;   // relationships: bit 0 cascades, bit 1 sets Null; others 4
    LogicalKind kind = LogicalKind::Ordinary;
};

// Where a long column's values are told.
struct LongColumnMaps {
    std::uint16_t nColumn = 0;  // Column::nNumber
    RowPlace owned;
    RowPlace free;  // page 0: there is none
};

enum class TableKind : std::uint8_t { User = 0x4E, System = 0x53 };

struct TableDefinition {
    std::uint32_t nPage = 0;  // the first of its pages, by which others name the table
    TableKind kind = TableKind::User;
    std::uint32_t nRows = 0;
    std::uint32_t nLastAutonumber = 0;  // handed out last
    std::uint32_t nAutonumberStep = 1;
    std::uint16_t nMostColumns = 0;      // ever: what a new row's count of columns says
    std::uint16_t nVariableColumns = 0;  // ever: entries of a row's table of offsets
    std::vector<Column> columns;         // in the order of the file
    std::vector<RealIndex> realIndexes;
    std::vector<LogicalIndex> logicalIndexes;  // in the order of the file
    std::vector<LongColumnMaps> longColumns;
    RowPlace ownedMap;
    RowPlace freeMap;

    // Index into `columns` of the column of this number. Raises Damaged without one.
    std::size_t ColumnOfNumber(std::uint16_t nNumber) const;
    // Index into `columns` by name, without regard to case; -1 without one.
    int FindColumn(std::u16string_view sName) const;
};

}  // namespace nomira::jet
