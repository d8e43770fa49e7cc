// Paths and names of the controller, as far as this side has to understand them: it tells them from
// the disk's, and lets no name in from outside that would mean something else on the disk.
#pragma once

#include "langtools/Text.h"

namespace nomira::rpc {

// Whether the path is one of the controller's: it begins with "TQX:" in any case.
bool IsControllerPath(TextView sPath);

// Whether a listing's path asks for directories: its mask is "*.".
bool AsksForDirectories(TextView sListedPath);

// Whether the text is a name that may come out of a listing, and nothing that leads elsewhere when
// the program puts it behind a directory of its own: no separator, no drive, no "..", and all its
// characters such as names have.
bool IsPlainName(TextView sName);

// The same for an entry of a list of directories, where "\" may stand between plain names.
bool IsPlainDirectory(TextView sEntry);

}  // namespace nomira::rpc
