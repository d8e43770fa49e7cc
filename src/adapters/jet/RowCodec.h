// Rows as a file stores them: a count of columns, the fixed columns, the variable ones, the table
// of their offsets, and a mask of the columns that aren't Null.
#pragma once

#include <optional>
#include <vector>

#include "adapters/jet/Definition.h"

namespace nomira::jet {

// Looks fields up in a row without touching the others. A column that the row is too old to know
// is Null. Raises Damaged where the row contradicts itself.
class RowView {
  public:
    RowView(const Layout& layout, ByteView row);

    // The column's bit in the mask: a Boolean's value, of all others whether they aren't Null.
    bool Bit(const Column& column) const {
        const std::size_t nNumber = column.nNumber;
        return nNumber < m_nColumns && (m_row[m_nMask + nNumber / 8] >> nNumber % 8 & 1) != 0;
    }
    // nullopt for Null. Not for Booleans.
    std::optional<ByteView> Field(const Column& column) const {
        if (!Bit(column)) return std::nullopt;
        return column.IsFixed() ? FixedField(column) : VariableField(column.nVariableIndex);
    }

  private:
    ByteView FixedField(const Column& column) const;
    std::optional<ByteView> VariableField(std::size_t nIndex) const;
    // Where a variable field begins and ends.
    struct Ends {
        std::size_t nFrom;
        std::size_t nEnd;
    };
    Ends Jet3Ends(std::size_t nIndex, std::size_t nCountPlace) const;
    Ends Jet4Ends(std::size_t nIndex, std::size_t nCountPlace) const;

    const Layout& m_layout;
    ByteView m_row;
    std::size_t m_nColumns;  // that the row knows
    std::size_t m_nMask;     // where the mask starts
};

// Makes rows of a table. Keeps nothing of a row but room for the next one.
class RowCodec {
  public:
    // The definition must outlive the codec, and stay as it is.
    RowCodec(const TableDefinition& table, const Layout& layout);

    // All columns but long ones, which come with LongValues.h.
    Value Decode(const RowView& row, std::size_t nColumn) const;

    // The definition's long columns, as indexes into its columns.
    const std::vector<std::size_t>& LongColumns() const { return m_longColumns; }
    // Writes the row into `row`. `longFields`: of the long columns, in the order of LongColumns,
    // the whole fields; no bytes for Null. `values` holds one per column; those of long columns
    // aren't looked at. Raises like AppendValue, and Constraint for a row that no page takes.
    void Encode(std::span<const Value> values, std::span<const Bytes> longFields, Bytes& row);

  private:
    void AppendFixed(std::span<const Value> values, Bytes& row) const;
    void AppendVariable(std::span<const Value> values, std::span<const Bytes> longFields,
                        Bytes& row);
    void AppendJet4Offsets(Bytes& row) const;
    void AppendJet3Offsets(Bytes& row) const;
    void AppendMask(std::span<const Value> values, std::span<const Bytes> longFields,
                    Bytes& row) const;

    const TableDefinition& m_table;
    const Layout& m_layout;
    std::size_t m_nCountBytes;
    std::size_t m_nFixedBytes = 0;
    std::vector<std::size_t> m_longColumns;
    std::vector<std::size_t> m_longOfColumn;  // place in m_longColumns, kNone for other columns
    // Column of each entry in the table of offsets, kNone for one that was deleted.
    std::vector<std::size_t> m_variableColumns;
    std::vector<std::size_t> m_offsets;  // of the row at hand, with the end of its data
};

}  // namespace nomira::jet
