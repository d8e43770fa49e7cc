// The commands, one source each. All return the exit status and throw Refusal, or let a
// RuntimeError through; the database and the files are then as they were.
#pragma once

#include <istream>
#include <ostream>

#include "apps/nomiractl/Options.h"
#include "apps/nomiractl/Refusal.h"

namespace nomira::companion {

// Where a command's results, and its errors and warnings, go, and where "-" is read from.
struct Streams {
    std::ostream& out;
    std::ostream& err;
    std::istream& in;
};

using Command = ExitCode (*)(const Options&, Streams);

// Makes a new, empty message database.
ExitCode CreateDatabase(const Options& options, Streams streams);
// Tells what is in it, and whether it is whole.
ExitCode ShowDatabase(const Options& options, Streams streams);
// A text file into the database: everything, or nothing.
ExitCode ImportTextFile(const Options& options, Streams streams);
// The database into a text file, or to the output stream.
ExitCode ExportTextFile(const Options& options, Streams streams);
// The database's names into the fold headers of programs, each file by itself: one that can't be
// worked is reported and left as it is, and the others go on.
ExitCode RewritePrograms(const Options& options, Streams streams);
// A customer's file of signal assignments into the database: everything, or nothing.
ExitCode HarvestAssignments(const Options& options, Streams streams);

// The keys that the options select, with their texts.
ExitCode ListNames(const Options& options, Streams streams);
// The texts of single keys; ExitCode::Differs if the database lacks one.
ExitCode GetNames(const Options& options, Streams streams);
// How full each class is.
ExitCode ShowStats(const Options& options, Streams streams);

// Finds what the program would do otherwise than meant with text files, programs, databases and
// registry files; ExitCode::Differs for a finding that is no mere note.
ExitCode CheckFiles(const Options& options, Streams streams);

// What two of text file, database and programs don't agree on; ExitCode::Differs if there is any.
ExitCode DiffNames(const Options& options, Streams streams);
// Where programs use the signals.
ExitCode CrossReference(const Options& options, Streams streams);
// Gives one key a text, by the rules of a text file's line.
ExitCode SetText(const Options& options, Streams streams);
// Removes keys with their texts.
ExitCode RemoveKeys(const Options& options, Streams streams);
// A whole copy of the database into a new file.
ExitCode BackUpDatabase(const Options& options, Streams streams);
// The rows of such a copy back into the database.
ExitCode RestoreDatabase(const Options& options, Streams streams);
// Whether the database is whole.
ExitCode VerifyDatabase(const Options& options, Streams streams);
// The database as a new file of another format.
ExitCode ConvertDatabase(const Options& options, Streams streams);
// The database's own file without what is no longer used in it.
ExitCode CompactDatabaseFile(const Options& options, Streams streams);
// The runs of the writing commands, the last one at the end.
ExitCode ShowRuns(const Options& options, Streams streams);
// Takes a run back, as a run of its own.
ExitCode UndoRun(const Options& options, Streams streams);
// Does what a saved plan says, if all is as it was when it was made.
ExitCode ApplySavedPlan(const Options& options, Streams streams);

// The names in a directory of the controller.
ExitCode ListController(const Options& options, Streams streams);
// Programs of the controller to the disk, and back; each by itself, as in RewritePrograms.
ExitCode FetchPrograms(const Options& options, Streams streams);
ExitCode SendPrograms(const Options& options, Streams streams);
// Reads the controller's variables, and writes those with a value.
ExitCode WorkVariables(const Options& options, Streams streams);
// How many signals of each class the controller has.
ExitCode ShowSizes(const Options& options, Streams streams);
// RewritePrograms for programs on the controller; only what changes is sent back.
ExitCode RewriteOnRobot(const Options& options, Streams streams);

}  // namespace nomira::companion
