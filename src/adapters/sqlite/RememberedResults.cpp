#include "adapters/sqlite/RememberedResults.h"

#include <algorithm>
#include <utility>

namespace nomira::sqlite {
namespace {

// A look-up gives one row, or a few.
constexpr std::size_t kMostRows = 8;
constexpr std::size_t kMostBytes = 4096;
// Two statements for each of some 16,000 names, in some 20 MiB.
constexpr std::size_t kMostResults = 32768;

// Rows that can be written are held in another form, so the two don't answer for each other.
std::string KeyOf(const std::string& sSql, bool bWritable) {
    return (bWritable ? 'w' : 'r') + sSql;
}

bool IsWorthKeeping(const ResultSet& result) {
    const auto computed = [](const ResultColumn& column) { return column.sTable.empty(); };
    return result.nRead <= kMostRows && result.packed.Bytes() <= kMostBytes &&
           std::none_of(result.columns.begin(), result.columns.end(), computed);
}

}  // namespace

std::shared_ptr<const ResultSet> RememberedResults::Find(const std::string& sSql,
                                                         bool bWritable) const {
    const auto found = m_results.find(KeyOf(sSql, bWritable));
    return found == m_results.end() ? nullptr : found->second;
}

void RememberedResults::Keep(const std::string& sSql, bool bWritable,
                             std::shared_ptr<const ResultSet> result) {
    if (!IsWorthKeeping(*result)) return;
    if (m_results.size() >= kMostResults) m_results.clear();
    m_results.insert_or_assign(KeyOf(sSql, bWritable), std::move(result));
}

}  // namespace nomira::sqlite
