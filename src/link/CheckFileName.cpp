#include "link/CheckFileName.h"

#include "langtools/Matches.h"

namespace nomira {
namespace {

constexpr TextView kDirectories = u"*.";

bool Counts(TextView sName, TextView sMask) {
    const bool bHasPoint = sName.find(u'.') != TextView::npos;
    if (sMask.empty()) return bHasPoint;
    return sMask == kDirectories ? !bHasPoint : Matches(sName, sMask);
}

}  // namespace

bool CheckFileName(Text& sPath, TextView sMask) {
    const std::size_t nSeparator = sPath.find_last_of(u"\\/");
    if (sMask != kDirectories && nSeparator != Text::npos) sPath.erase(0, nSeparator + 1);
    const bool bCounts = Counts(sPath, sMask);
    if (!bCounts) sPath.clear();
    return bCounts;
}

}  // namespace nomira
