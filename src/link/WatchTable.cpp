#include "link/WatchTable.h"

#include <algorithm>

namespace nomira {

bool WatchTable::Contains(TextView sVariableName) const {
    return std::ranges::any_of(
        m_records, [&](const Record& record) { return record.sVariableName == sVariableName; });
}

std::int32_t WatchTable::Add(TextView sVariableName) {
    m_records.push_back({Text(sVariableName), ++m_nInfoCount});
    return m_nInfoCount;
}

std::optional<std::int32_t> WatchTable::Remove(TextView sVariableName) {
    const auto found = std::ranges::find(m_records, sVariableName, &Record::sVariableName);
    if (found == m_records.end()) return std::nullopt;
    const std::int32_t nID = found->nID;
    m_records.erase(found);
    return nID;
}

Text WatchTable::NameOf(std::int32_t nID) const {
    const auto found = std::ranges::find(m_records, nID, &Record::nID);
    return found == m_records.end() ? Text() : found->sVariableName;
}

}  // namespace nomira
