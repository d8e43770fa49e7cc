// Names of tables, columns and indexes: without regard to case. What the format's own names hold
// beyond ASCII is compared exactly, which finds every name that is written as it stands.
#pragma once

#include <algorithm>
#include <string_view>

namespace nomira::jet {

inline constexpr char16_t LowerCaseOf(char16_t c) {
    return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c - u'A' + u'a') : c;
}

inline bool SameName(std::u16string_view sLeft, std::u16string_view sRight) {
    return std::equal(sLeft.begin(), sLeft.end(), sRight.begin(), sRight.end(),
                      [](char16_t a, char16_t b) { return LowerCaseOf(a) == LowerCaseOf(b); });
}

// The order in which a definition's logical indexes stand.
inline bool ComesBefore(std::u16string_view sLeft, std::u16string_view sRight) {
    return std::lexicographical_compare(
        sLeft.begin(), sLeft.end(), sRight.begin(), sRight.end(),
        [](char16_t a, char16_t b) { return LowerCaseOf(a) < LowerCaseOf(b); });
}

}  // namespace nomira::jet
