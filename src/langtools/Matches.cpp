#include "langtools/Matches.h"

#include <algorithm>

#include "langtools/RuntimeError.h"

namespace nomira {
namespace {

constexpr std::size_t kNone = TextView::npos;

// The pattern's place behind the `]` that closes the set at `nOpen`.
std::size_t BehindSet(TextView sPattern, std::size_t nOpen) {
    const std::size_t nClose = sPattern.find(u']', nOpen + 1);
    if (nClose == kNone) Raise(ErrorNumber::InvalidPattern);
    return nClose + 1;
}

void CheckSetsAreClosed(TextView sPattern) {
    for (std::size_t n = sPattern.find(u'['); n != kNone; n = sPattern.find(u'[', n)) {
        n = BehindSet(sPattern, n);
    }
}

// `sSet` is what stands between the brackets, without a leading `!`.
bool IsInSet(char16_t c, TextView sSet) {
    while (!sSet.empty()) {
        const bool bRange = sSet.size() >= 3 && sSet[1] == u'-';
        if (bRange ? sSet[0] <= c && c <= sSet[2] : sSet[0] == c) return true;
        sSet.remove_prefix(bRange ? 3 : 1);
    }
    return false;
}

bool MatchesSet(char16_t c, TextView sSet) {
    const bool bOutside = sSet.size() > 1 && sSet[0] == u'!';
    return bOutside ? !IsInSet(c, sSet.substr(1)) : IsInSet(c, sSet);
}

// Whether `c` matches the pattern's element at `n`, which stands for one character; moves `n`
// behind the element then.
bool MatchesElement(char16_t c, TextView sPattern, std::size_t& n) {
    std::size_t nNext = n + 1;
    bool bMatches = false;
    switch (sPattern[n]) {
        case u'?':
            bMatches = true;
            break;
        case u'#':
            bMatches = c >= u'0' && c <= u'9';
            break;
        case u'[':
            nNext = BehindSet(sPattern, n);
            bMatches = MatchesSet(c, sPattern.substr(n + 1, nNext - n - 2));
            break;
        default:
            bMatches = c == sPattern[n];
    }
    if (bMatches) n = nNext;
    return bMatches;
}

bool IsSpecial(char16_t c) {
    return c == u'*' || c == u'?' || c == u'#' || c == u'[';
}

// How many characters at the front of both are the same and stand for themselves.
std::size_t LiteralLength(TextView sText, TextView sPattern) {
    const std::size_t nMost = std::min(sText.size(), sPattern.size());
    std::size_t n = 0;
    while (n < nMost && sText[n] == sPattern[n] && !IsSpecial(sPattern[n]))
        ++n;
    return n;
}

bool IsEmptySet(TextView sPattern, std::size_t n) {
    return n + 1 < sPattern.size() && sPattern[n] == u'[' && sPattern[n + 1] == u']';
}

// The first place from `n` on at which the pattern's element there may stand, if that is a
// character that stands for itself.
std::size_t NextPlace(TextView sText, std::size_t n, char16_t cElement) {
    if (IsSpecial(cElement)) return n;
    return std::min(sText.find(cElement, n), sText.size());
}

}  // namespace

// Runs along text and pattern. Where they part, the last `*` takes one character more; an earlier
// one need never take more, for whatever it could reach the last one reaches as well.
bool Matches(TextView sText, TextView sPattern) {
    std::size_t nText = LiteralLength(sText, sPattern);
    std::size_t nPattern = nText;
    std::size_t nBehindStar = kNone;
    std::size_t nStarEnd = 0;
    for (;;) {
        if (nPattern < sPattern.size() && sPattern[nPattern] == u'*') {
            nBehindStar = ++nPattern;
            if (nBehindStar == sPattern.size()) return true;
            nText = nStarEnd = NextPlace(sText, nText, sPattern[nBehindStar]);
        } else if (IsEmptySet(sPattern, nPattern)) {
            nPattern += 2;
        } else if (nText == sText.size()) {
            if (nPattern == sPattern.size()) return true;
            break;
        } else if (nPattern < sPattern.size() && MatchesElement(sText[nText], sPattern, nPattern)) {
            ++nText;
        } else if (nBehindStar != kNone) {
            nPattern = nBehindStar;
            nText = nStarEnd = NextPlace(sText, nStarEnd + 1, sPattern[nBehindStar]);
        } else {
            break;
        }
    }
    // A pattern with an open set is wrong whatever the text; only what is left of it can have one.
    CheckSetsAreClosed(sPattern.substr(nPattern));
    return false;
}

}  // namespace nomira
