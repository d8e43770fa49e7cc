#include "adapters/jet/RowCodec.h"

#include <algorithm>
#include <limits>

#include "adapters/jet/ValueCodes.h"

namespace nomira::jet {
namespace {

constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
// Jet 3 stores offsets by their low byte.
constexpr std::size_t kSegment = 256;
constexpr std::uint8_t kNoJump = 0xFF;

std::size_t CountBytes(const Layout& layout) {
    return layout.generation == Generation::Jet3 ? 1 : 2;
}

std::size_t LoadCount(const Layout& layout, ByteView row, std::size_t nPlace) {
    return layout.generation == Generation::Jet3 ? LoadU8(row, nPlace)
                                                 : std::size_t{LoadU16(row, nPlace)};
}

std::size_t MaskBytes(std::size_t nColumns) {
    return (nColumns + 7) / 8;
}

[[noreturn]] void FailRow() {
    Fail(FailureKind::Damaged, "a row contradicts itself");
}

}  // namespace

RowView::RowView(const Layout& layout, ByteView row)
    : m_layout(layout), m_row(row), m_nColumns(LoadCount(layout, row, 0)) {
    const std::size_t nMaskBytes = MaskBytes(m_nColumns);
    if (nMaskBytes + CountBytes(layout) > row.size()) FailRow();
    m_nMask = row.size() - nMaskBytes;
}

ByteView RowView::FixedField(const Column& column) const {
    return Part(m_row.first(m_nMask), CountBytes(m_layout) + column.nFixedOffset,
                FixedSize(column));
}

std::optional<ByteView> RowView::VariableField(std::size_t nIndex) const {
    const std::size_t nCountBytes = CountBytes(m_layout);
    if (m_nMask < 2 * nCountBytes) FailRow();
    const std::size_t nCountPlace = m_nMask - nCountBytes;
    if (nIndex >= LoadCount(m_layout, m_row, nCountPlace)) return std::nullopt;
    const Ends ends = m_layout.generation == Generation::Jet3 ? Jet3Ends(nIndex, nCountPlace)
                                                              : Jet4Ends(nIndex, nCountPlace);
    if (ends.nFrom < nCountBytes || ends.nEnd < ends.nFrom || ends.nEnd > nCountPlace) FailRow();
    return m_row.subspan(ends.nFrom, ends.nEnd - ends.nFrom);
}

RowView::Ends RowView::Jet4Ends(std::size_t nIndex, std::size_t nCountPlace) const {
    if (nCountPlace < 2 * (nIndex + 2)) FailRow();
    return {LoadU16(m_row, nCountPlace - 2 * (nIndex + 1)),
            LoadU16(m_row, nCountPlace - 2 * (nIndex + 2))};
}

// Ahead of the count of variable columns stand, backwards: one jump for each segment, which names
// the first entry that lies in it, then the entries' low bytes. The jumps are as many as the whole
// row has segments beyond the first, and the last of them may have no entry.
RowView::Ends RowView::Jet3Ends(std::size_t nIndex, std::size_t nCountPlace) const {
    const std::size_t nEntries = LoadU8(m_row, nCountPlace);
    std::size_t nJumps = (m_row.size() - 1) / kSegment;
    if (nCountPlace < nJumps + nEntries + 1) FailRow();
    const std::size_t nFirstEntry = nCountPlace - nJumps - 1;
    const std::size_t nEndEntry = nFirstEntry - nEntries;
    if (nEndEntry / kSegment < nJumps) --nJumps;
    std::size_t nJump = 0;
    const auto offset = [&](std::size_t nEntry) {
        while (nJump < nJumps && m_row[nCountPlace - 1 - nJump] <= nEntry)
            ++nJump;
        return m_row[nFirstEntry - nEntry] + nJump * kSegment;
    };
    const std::size_t nFrom = offset(nIndex);
    return {nFrom, offset(nIndex + 1)};
}

RowCodec::RowCodec(const TableDefinition& table, const Layout& layout)
    : m_table(table),
      m_layout(layout),
      m_nCountBytes(CountBytes(layout)),
      m_longOfColumn(table.columns.size(), kNone),
      m_variableColumns(table.nVariableColumns, kNone) {
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const Column& column = table.columns[i];
        if (column.type == ColumnType::Boolean) continue;
        if (column.IsFixed()) {
            m_nFixedBytes = std::max(m_nFixedBytes, column.nFixedOffset + FixedSize(column));
            continue;
        }
        m_variableColumns.at(column.nVariableIndex) = i;
        if (!column.IsLongValue()) continue;
        m_longOfColumn[i] = m_longColumns.size();
        m_longColumns.push_back(i);
    }
}

Value RowCodec::Decode(const RowView& row, std::size_t nColumn) const {
    const Column& column = m_table.columns.at(nColumn);
    if (column.type == ColumnType::Boolean) return row.Bit(column);
    const auto field = row.Field(column);
    if (!field) return {};
    return DecodeValue(column, *field, m_layout.generation);
}

void RowCodec::Encode(std::span<const Value> values, std::span<const Bytes> longFields,
                      Bytes& row) {
    row.clear();
    const std::size_t nColumns = m_table.nMostColumns;
    if (m_layout.generation == Generation::Jet3)
        AppendLittle<1>(row, nColumns);
    else
        AppendLittle<2>(row, nColumns);
    AppendFixed(values, row);
    if (m_table.nVariableColumns != 0) {
        AppendVariable(values, longFields, row);
        if (row.size() > m_layout.nMostRowBytes) Fail(FailureKind::Constraint, "a row is too long");
        if (m_layout.generation == Generation::Jet3)
            AppendJet3Offsets(row);
        else
            AppendJet4Offsets(row);
    }
    AppendMask(values, longFields, row);
    if (row.size() > m_layout.nMostRowBytes) Fail(FailureKind::Constraint, "a row is too long");
}

void RowCodec::AppendFixed(std::span<const Value> values, Bytes& row) const {
    row.resize(m_nCountBytes + m_nFixedBytes);
    Bytes field;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Column& column = m_table.columns[i];
        if (!column.IsFixed() || column.type == ColumnType::Boolean || IsNull(values[i])) continue;
        field.clear();
        AppendValue(field, values[i], column, m_layout.generation);
        std::copy(field.begin(), field.end(),
                  row.begin() + static_cast<std::ptrdiff_t>(m_nCountBytes + column.nFixedOffset));
    }
}

void RowCodec::AppendVariable(std::span<const Value> values, std::span<const Bytes> longFields,
                              Bytes& row) {
    m_offsets.clear();
    for (const std::size_t nColumn : m_variableColumns) {
        m_offsets.push_back(row.size());
        if (nColumn == kNone) continue;
        if (m_longOfColumn[nColumn] != kNone)
            Append(row, longFields[m_longOfColumn[nColumn]]);
        else if (!IsNull(values[nColumn]))
            AppendValue(row, values[nColumn], m_table.columns[nColumn], m_layout.generation);
    }
    m_offsets.push_back(row.size());
}

void RowCodec::AppendJet4Offsets(Bytes& row) const {
    for (std::size_t i = m_offsets.size(); i-- > 0;)
        AppendLittle<2>(row, m_offsets[i]);
    AppendLittle<2>(row, m_table.nVariableColumns);
}

void RowCodec::AppendJet3Offsets(Bytes& row) const {
    const std::size_t nDataEnd = m_offsets.back();
    for (std::size_t i = m_offsets.size(); i-- > 0;)
        row.push_back(static_cast<std::uint8_t>(m_offsets[i]));
    // Jumps lengthen the row, and may so ask for one more.
    const std::size_t nRest = row.size() + 1 + MaskBytes(m_table.nMostColumns);
    std::size_t nJumps = 0;
    while (nJumps < (nRest + nJumps - 1) / kSegment)
        ++nJumps;
    for (std::size_t nJump = nJumps; nJump > 0; --nJump) {
        const std::size_t nStart = nJump * kSegment;
        const auto entry = std::lower_bound(m_offsets.begin(), m_offsets.end(), nStart);
        row.push_back(nStart > nDataEnd ? kNoJump
                                        : static_cast<std::uint8_t>(entry - m_offsets.begin()));
    }
    row.push_back(static_cast<std::uint8_t>(m_table.nVariableColumns));
}

void RowCodec::AppendMask(std::span<const Value> values, std::span<const Bytes> longFields,
                          Bytes& row) const {
    const std::size_t nMask = row.size();
    row.resize(nMask + MaskBytes(m_table.nMostColumns));
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Column& column = m_table.columns[i];
        const auto* pbValue = std::get_if<bool>(&values[i]);
        bool bSet = !IsNull(values[i]);
        if (column.type == ColumnType::Boolean) {
            if (bSet && pbValue == nullptr)
                Fail(FailureKind::Constraint, "a value is of another kind than its column");
            bSet = bSet && *pbValue;
        } else if (m_longOfColumn[i] != kNone) {
            bSet = !longFields[m_longOfColumn[i]].empty();
        }
        if (bSet)
            row[nMask + column.nNumber / 8] |= static_cast<std::uint8_t>(1U << column.nNumber % 8);
    }
}

}  // namespace nomira::jet
