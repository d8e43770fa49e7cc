#include "adapters/sqlite/PackedValues.h"

#include <algorithm>

#include "langtools/Utf8.h"

namespace nomira::sqlite {
namespace {

// A single row's texts mostly fit into the first one.
constexpr std::size_t kFirstBlockBytes = 256;
constexpr std::size_t kBlockBytes = std::size_t{32} * 1024;

}  // namespace

void PackedValues::Append(sqlite3_stmt* statement, int nColumn) {
    // The column is looked up once. The value is good as it stands: the handle is one thread's own,
    // and the text is copied before the statement moves on.
    sqlite3_value* value = sqlite3_column_value(statement, nColumn);
    Cell& cell = m_cells.emplace_back();
    switch (sqlite3_value_type(value)) {
        case SQLITE_NULL:
            break;
        case SQLITE_INTEGER:
            cell.kind = Kind::Integer;
            cell.nValue = sqlite3_value_int64(value);
            break;
        case SQLITE_FLOAT:
            cell.kind = Kind::Real;
            cell.nReal = sqlite3_value_double(value);
            break;
        default: {
            const auto* bytes = static_cast<const char*>(sqlite3_value_blob(value));
            cell.kind = Kind::Bytes;
            cell.nLength = static_cast<std::uint32_t>(sqlite3_value_bytes(value));
            cell.bytes = Keep({bytes, cell.nLength});
        }
    }
}

const char* PackedValues::Keep(std::string_view sBytes) {
    m_nBytes += sBytes.size();
    if (m_blocks.empty() || m_blocks.back().capacity() - m_blocks.back().size() < sBytes.size()) {
        const std::size_t nBlock = m_blocks.empty() ? kFirstBlockBytes : kBlockBytes;
        m_blocks.emplace_back().reserve(std::max(nBlock, sBytes.size()));
    }
    std::string& block = m_blocks.back();
    const std::size_t nFrom = block.size();
    block += sBytes;
    return block.data() + nFrom;
}

FieldValue PackedValues::Get(std::size_t nIndex) const {
    const Cell& cell = m_cells[nIndex];
    switch (cell.kind) {
        case Kind::Integer:
            return cell.nValue;
        case Kind::Real:
            return cell.nReal;
        case Kind::Bytes:
            return FromUtf8({cell.bytes, cell.nLength});
        default:
            return {};
    }
}

std::vector<FieldValue> PackedValues::GetRange(std::size_t nBegin, std::size_t nCount) const {
    std::vector<FieldValue> values;
    values.reserve(nCount);
    for (std::size_t n = nBegin; n < nBegin + nCount; ++n)
        values.push_back(Get(n));
    return values;
}

}  // namespace nomira::sqlite
