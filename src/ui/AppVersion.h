// The application's version numbers, those of the project.
#pragma once

#include <cstdint>

#include "langtools/Text.h"

namespace nomira {

struct AppVersion {
    std::int16_t Major = 0, Minor = 0, Revision = 0;
    bool operator==(const AppVersion&) const = default;
};

AppVersion TheAppVersion();

// As the operator sees it: u"Version 3.1.15".
Text VersionText(const AppVersion& version);

}  // namespace nomira
