#include "adapters/sqlite/PackedValues.h"

#include <algorithm>

#include "adapters/sqlite/Utf8.h"

namespace nomira::sqlite {
namespace {

constexpr std::size_t kBlockBytes = std::size_t{32} * 1024;

}  // namespace

void PackedValues::Append(sqlite3_stmt* statement, int nColumn) {
    switch (sqlite3_column_type(statement, nColumn)) {
        case SQLITE_NULL:
            m_cells.emplace_back();
            break;
        case SQLITE_INTEGER:
            m_cells.emplace_back(std::int64_t{sqlite3_column_int64(statement, nColumn)});
            break;
        case SQLITE_FLOAT:
            m_cells.emplace_back(sqlite3_column_double(statement, nColumn));
            break;
        default: {
            const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, nColumn));
            const auto nLength = static_cast<std::size_t>(sqlite3_column_bytes(statement, nColumn));
            m_cells.emplace_back(bytes ? Keep({bytes, nLength}) : std::string_view());
        }
    }
}

std::string_view PackedValues::Keep(std::string_view sBytes) {
    if (m_blocks.empty() || m_blocks.back().capacity() - m_blocks.back().size() < sBytes.size())
        m_blocks.emplace_back().reserve(std::max(kBlockBytes, sBytes.size()));
    std::string& block = m_blocks.back();
    const std::size_t nFrom = block.size();
    block += sBytes;
    return std::string_view(block).substr(nFrom);
}

FieldValue PackedValues::Get(std::size_t nIndex) const {
    const Cell& cell = m_cells[nIndex];
    if (const auto* nValue = std::get_if<std::int64_t>(&cell)) return *nValue;
    if (const auto* nReal = std::get_if<double>(&cell)) return *nReal;
    if (const auto* sBytes = std::get_if<std::string_view>(&cell)) return FromUtf8(*sBytes);
    return {};
}

std::vector<FieldValue> PackedValues::GetRange(std::size_t nBegin, std::size_t nCount) const {
    std::vector<FieldValue> values;
    values.reserve(nCount);
    for (std::size_t n = nBegin; n < nBegin + nCount; ++n)
        values.push_back(Get(n));
    return values;
}

}  // namespace nomira::sqlite
