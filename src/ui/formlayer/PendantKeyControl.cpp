#include "ui/formlayer/PendantKeyControl.h"

#include <algorithm>

namespace nomira {

void PendantKeyControl::AddFKeys(std::int32_t nFirst, std::int32_t nLast) {
    std::vector<Range> ranges = m_ranges;
    ranges.push_back({nFirst, nLast});
    Assign(m_ranges, ranges, u"FKeys");
}

void PendantKeyControl::SubFKeys(std::int32_t nFirst, std::int32_t nLast) {
    std::vector<Range> ranges = m_ranges;
    std::erase(ranges, Range{nFirst, nLast});
    Assign(m_ranges, ranges, u"FKeys");
}

void PendantKeyControl::UserKey(std::int16_t nKeyCode) {
    const bool bOurs = std::ranges::any_of(m_ranges, [&](const Range& range) {
        return nKeyCode >= range.nFirst && nKeyCode <= range.nLast;
    });
    if (bOurs) Fire(onFKey, nKeyCode);
}

}  // namespace nomira
