// The settings that only the adapters of this system need, from the prefix's file nomira.conf.
//
// The file is UTF-8, one setting a line, `#` before a comment line:
//
//     codepage = 1252
//     refresh-hook = /usr/local/bin/tell-controller
//     path C:\tqx\data\orvo_con.mdb = /srv/cell7/orvo_con.db
//
// A later line wins over an earlier one.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "langtools/Text.h"

namespace nomira::posix {

// Something in the prefix is not as it must be. what() names the file, the line, what is wrong
// and what to write instead.
class PrefixError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Where a file or directory of the Windows side, with all below it, really lives.
struct PlacedPath {
    Text sPath;           // drive, "\" and parts, in the case in which it was written
    std::string sNative;  // absolute
};

struct PrefixSettings {
    int nCodePage = 1252;      // the system's 8-bit page
    std::string sRefreshHook;  // command for the shell, empty for none
    std::vector<PlacedPath> placedPaths;
};

// The settings of the file's bytes; `sFile` is its name for the error. Raises PrefixError at the
// first line that is no setting, or whose value can't be meant.
PrefixSettings ParsePrefixSettings(std::string_view bytes, const std::string& sFile);

}  // namespace nomira::posix
