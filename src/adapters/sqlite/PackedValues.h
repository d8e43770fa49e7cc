// The values of many rows in little room: texts stay the UTF-8 that the database gave, in blocks,
// and become Text when somebody asks for them.
#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "database/DatabaseEngine.h"

namespace nomira::sqlite {

class PackedValues {
  public:
    PackedValues() = default;
    PackedValues(PackedValues&&) = default;
    PackedValues& operator=(PackedValues&&) = default;

    std::size_t Count() const { return m_cells.size(); }
    // Of all texts together.
    std::size_t Bytes() const { return m_nBytes; }
    // Appends a column of the statement's current row.
    void Append(sqlite3_stmt* statement, int nColumn);
    FieldValue Get(std::size_t nIndex) const;
    std::vector<FieldValue> GetRange(std::size_t nBegin, std::size_t nCount) const;

  private:
    enum class Kind : std::uint32_t { Null, Integer, Real, Bytes };
    // 16 bytes, for there may be tens of thousands. SQLite's texts are shorter than 2^31 bytes.
    struct Cell {
        Kind kind = Kind::Null;
        std::uint32_t nLength = 0;
        union {
            std::int64_t nValue = 0;
            double nReal;
            const char* bytes;
        };
    };

    const char* Keep(std::string_view sBytes);

    std::vector<Cell> m_cells;
    std::size_t m_nBytes = 0;
    std::vector<std::string> m_blocks;  // filled within what they have reserved, so that they stay
};

}  // namespace nomira::sqlite
