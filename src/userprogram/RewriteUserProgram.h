// Robot programs (.src): the current long names of the database go into their fold headers.
//
// Reading a program, changing a line (FoldHeader.h) and writing are three things. There is no
// temporary file and no copy of the old text: a program is held in memory and written over itself,
// and only if a line changed, so that the date of an unchanged one stays. Nothing here traps a
// run-time error; one ends the run, and the programs done before stay rewritten.
#pragma once

#include "langtools/Text.h"

namespace nomira {

// Rewrites one program in place; true if it was written anew. A line ends at CR or CR LF when
// read, and always with CR LF when written. Raises the file's RuntimeError if it can't be opened,
// and Overflow if a changed program has more than 32,767 lines: the count of lines has 16 bits and
// is taken when the file is open for writing already, so that the file is left empty.
bool RewriteUserProgram(TextView sPath);

// Rewrites every program "*.SRC" of a directory, given with its closing "\", in the order that the
// system gives; a directory named like a program is passed over.
void RewriteDirectory(TextView sDir);

}  // namespace nomira
