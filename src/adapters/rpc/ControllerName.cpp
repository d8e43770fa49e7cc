#include "adapters/rpc/ControllerName.h"

#include "langtools/BasicText.h"
#include "platform/FileNamePattern.h"

namespace nomira::rpc {
namespace {

constexpr TextView kController = u"TQX:";
constexpr TextView kSeparatorsAndDrive = u"\\/:";

}  // namespace

bool IsControllerPath(TextView sPath) {
    return EqualNoCase(Left(sPath, std::ssize(kController)), kController);
}

bool AsksForDirectories(TextView sListedPath) {
    return sListedPath.substr(sListedPath.find_last_of(kSeparatorsAndDrive) + 1) == u"*.";
}

bool IsPlainName(TextView sName) {
    return !CannotBeFileName(sName) && sName != u"." && sName != u".." &&
           sName.find_first_of(kSeparatorsAndDrive) == TextView::npos;
}

bool IsPlainDirectory(TextView sEntry) {
    for (;;) {
        const std::size_t nEnd = sEntry.find(u'\\');
        if (!IsPlainName(sEntry.substr(0, nEnd))) return false;
        if (nEnd == TextView::npos) return true;
        sEntry.remove_prefix(nEnd + 1);
    }
}

}  // namespace nomira::rpc
