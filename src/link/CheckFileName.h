// The rule by which the operations on files cut a file's name out of a path.
#pragma once

#include "langtools/Text.h"

namespace nomira {

// Leaves in `sPath` what stands behind its last "\" or "/", if that is a name that counts, and the
// empty text if it isn't; tells which. With no mask a name counts if it has a "." somewhere, for a
// file needs an extension. With a mask it must match it (langtools/Matches.h, whose failures go
// up). The mask "*." looks for directories: the whole path is the name, and it must have no ".".
bool CheckFileName(Text& sPath, TextView sMask = {});

}  // namespace nomira
