#include "userprogram/Staging.h"

#include "langtools/BasicText.h"
#include "langtools/RuntimeError.h"
#include "platform/Platform.h"

namespace nomira {
namespace {

constexpr std::int32_t kRootLength = 3;

// The part up to the first "\"; it and the "\" are gone from the remainder.
TextView CutFirstPart(TextView& sRemainder) {
    const std::int32_t nEnd = InStr(sRemainder, u"\\");
    const TextView sPart = Left(sRemainder, nEnd - 1);
    sRemainder = Mid(sRemainder, nEnd + 1);
    return sPart;
}

void TryMakeDirectory(TextView sPath) {
    try {
        TheFiles().MkDir(sPath);
    } catch (const RuntimeError&) {  // it exists, or whoever needs it finds it missing
    }
}

}  // namespace

void MakeDirectoryPath(TextView sPath) {
    Text sParts(Mid(sPath, kRootLength + 1));
    if (!sParts.ends_with(u'\\')) sParts += u'\\';
    TextView sRemainder = sParts;
    Text sSoFar(Left(sPath, kRootLength));
    sSoFar.append(CutFirstPart(sRemainder));
    while (!sSoFar.ends_with(u'\\')) {
        TryMakeDirectory(sSoFar);
        sSoFar += u'\\';
        if (!sRemainder.empty()) sSoFar.append(CutFirstPart(sRemainder));
    }
}

}  // namespace nomira
