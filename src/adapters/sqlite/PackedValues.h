// The values of many rows in little room: texts stay the UTF-8 that the database gave, in blocks,
// and become Text when somebody asks for them.
#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "database/DatabaseEngine.h"

namespace nomira::sqlite {

class PackedValues {
  public:
    PackedValues() = default;
    PackedValues(PackedValues&&) = default;
    PackedValues& operator=(PackedValues&&) = default;

    std::size_t Count() const { return m_cells.size(); }
    // Appends a column of the statement's current row.
    void Append(sqlite3_stmt* statement, int nColumn);
    FieldValue Get(std::size_t nIndex) const;
    std::vector<FieldValue> GetRange(std::size_t nBegin, std::size_t nCount) const;

  private:
    using Cell = std::variant<std::monostate, std::int64_t, double, std::string_view>;

    std::string_view Keep(std::string_view sBytes);

    std::vector<Cell> m_cells;
    std::vector<std::string> m_blocks;  // filled within what they have reserved, so that they stay
};

}  // namespace nomira::sqlite
