#include "ui/AppVersion.h"

#include "langtools/BasicText.h"

namespace nomira {

AppVersion TheAppVersion() {
    return {NOMIRA_VERSION_MAJOR, NOMIRA_VERSION_MINOR, NOMIRA_VERSION_REVISION};
}

Text VersionText(const AppVersion& version) {
    return u"Version " + DecimalText(version.Major) + u"." + DecimalText(version.Minor) + u"." +
           DecimalText(version.Revision);
}

}  // namespace nomira
