// The batch run: one conversion from a command line of parameters separated by "|", with the small
// form StdForm as its only window.
//
//   TEXT_INTO_DB|OVERWRITE|file      the file's texts replace those in the database
//   TEXT_INTO_DB|any word|file       the file's texts are merged over those in the database
//   DB_INTO_TEXT|any word|file       the database's texts go into the file
//   UPDATE_USERFILES|SELECT_ALL|dir  all programs of the directory take the current names
//   UPDATE_USERFILES|any word|file   meant for one program; see below
//
// Case and surrounding blanks of the first two parameters don't matter, the third one is trimmed,
// further ones are ignored. Double quotes are dropped wherever they stand and protect nothing.
// There are no empty parameters: adjacent "|" count as one, and leading ones as none. An unknown
// command does nothing and says nothing.
//
// UPDATE_USERFILES puts "\" behind every path that has none, so the path of a single program never
// opens, and the run ends with the run-time failure of that. The controller's callers know the
// command by this behaviour, and it is kept.
#pragma once

#include "langtools/Text.h"

namespace nomira {

// Whether the command line is a batch command: it holds a "|".
bool IsBatchCommand(TextView sCommandLine);

// Shows StdForm, runs the command, unloads StdForm. Wrong parameters get a message box, a file
// that can't be opened nothing at all. A RuntimeError of a pass gets through, StdForm still shown.
void RunBatch(TextView sCommandLine);

}  // namespace nomira
