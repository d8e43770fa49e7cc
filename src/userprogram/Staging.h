// Directories on the way of a program: what has to exist before it can be fetched and rewritten.
#pragma once

#include "langtools/Text.h"

namespace nomira {

// Makes the directories of the path level by level from the root down. The first three characters
// are the root, a drive with its "\", and are never made. Every failure is ignored, so that a level
// that exists is passed over, and a path that can't be made is found out by its next user. The path
// ends at two "\" in a row: the levels behind them are not made.
void MakeDirectoryPath(TextView sPath);

}  // namespace nomira
