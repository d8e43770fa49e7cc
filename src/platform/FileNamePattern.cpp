#include "platform/FileNamePattern.h"

#include <algorithm>

#include "langtools/BasicText.h"
#include "platform/Files.h"

namespace nomira {
namespace {

constexpr std::uint16_t kMustBeAskedFor = AttributeHidden | AttributeSystem | AttributeDirectory;
constexpr TextView kNeverInNames = u"<>\"|*?";

// The usual walk with one place to come back to: the last `*` and how far it reached.
bool MatchesUpper(TextView sName, TextView sPattern) {
    std::size_t n = 0, p = 0, nRetry = 0, pRetry = TextView::npos;
    while (n < sName.size()) {
        if (p < sPattern.size() && sPattern[p] == u'*') {
            pRetry = ++p;
            nRetry = n;
        } else if (p < sPattern.size() && (sPattern[p] == u'?' || sPattern[p] == sName[n])) {
            ++p, ++n;
        } else if (pRetry != TextView::npos) {
            p = pRetry;
            n = ++nRetry;
        } else {
            return false;
        }
    }
    return sPattern.find_first_not_of(u'*', p) == TextView::npos;
}

}  // namespace

bool HasWildcards(TextView sName) {
    return sName.find_first_of(u"*?") != TextView::npos;
}

bool MatchesFileName(TextView sName, TextView sPattern) {
    return sPattern == u"*.*" || MatchesUpper(UCase(sName), UCase(sPattern));
}

bool CountsInDir(std::uint16_t nEntryAttributes, std::uint16_t nAsked) {
    return (nEntryAttributes & kMustBeAskedFor & ~nAsked) == 0;
}

bool ComesBeforeInListing(TextView sLeft, TextView sRight) {
    const Text sLeftUpper = UCase(sLeft), sRightUpper = UCase(sRight);
    return sLeftUpper != sRightUpper ? sLeftUpper < sRightUpper : sLeft < sRight;
}

bool CannotBeFileName(TextView sName) {
    return sName.empty() || std::any_of(sName.begin(), sName.end(), [](char16_t c) {
               return c < 0x20 || kNeverInNames.find(c) != TextView::npos;
           });
}

}  // namespace nomira
