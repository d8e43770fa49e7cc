#include "adapters/jet/Definition.h"

#include <algorithm>

#include "adapters/jet/Names.h"

namespace nomira::jet {

std::size_t TableDefinition::ColumnOfNumber(std::uint16_t nNumber) const {
    const auto found = std::find_if(columns.begin(), columns.end(),
                                    [&](const Column& c) { return c.nNumber == nNumber; });
    if (found == columns.end()) Fail(FailureKind::Damaged, "an index names no column");
    return static_cast<std::size_t>(found - columns.begin());
}

int TableDefinition::FindColumn(std::u16string_view sName) const {
    const auto found = std::find_if(columns.begin(), columns.end(),
                                    [&](const Column& c) { return SameName(c.sName, sName); });
    return found == columns.end() ? -1 : static_cast<int>(found - columns.begin());
}

}  // namespace nomira::jet
