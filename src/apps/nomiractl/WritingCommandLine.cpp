#include "apps/nomiractl/WritingCommandLine.h"

#include "apps/nomiractl/ReadingCommandLine.h"
#include "apps/nomiractl/StoreFormats.h"

namespace nomira::companion {
namespace {

using Choose = std::function<void(Command)>;

// Digits alone: the parser would take "-1" for a very great number.
CLI::Validator NumberOf(const std::string& sWhat) {
    return {[sWhat](const std::string& sWord) {
                const bool bDigits = sWord.find_first_not_of("0123456789") == std::string::npos;
                return bDigits ? std::string() : sWord + " is no number of " + sWhat;
            },
            ""};
}

CLI::App& Add(CLI::App& parent, const char* sName, const char* sWhat, Command command,
              const Choose& choose) {
    CLI::App* sub = parent.add_subcommand(sName, sWhat);
    sub->callback([choose, command] { choose(command); });
    return *sub;
}

void AddLooks(CLI::App& command, Options& options) {
    command.add_flag("--dry-run", options.bDryRun, "Report, but change nothing");
    command.add_flag("--diff", options.bDiff, "Show what goes and what comes");
}

void AddSet(CLI::App& app, Options& options, const Choose& choose) {
    CLI::App& set = Add(app, "set", "Give a key a text, by the rules of a line of a text file",
                        SetText, choose);
    set.add_option("KEY", options.key, "The key, as IN_5")->required();
    set.add_option("TEXT", options.text, "Its text; \"\" for none")->required();
    AddEncoding(set, options, "How the text is given: utf-8 (the usual way) or code-page");
    AddLooks(set, options);
    AddPlanOptions(set, options);
}

void AddRemove(CLI::App& app, Options& options, const Choose& choose) {
    CLI::App& rm = Add(app, "rm", "Remove keys with their texts", RemoveKeys, choose);
    rm.add_option("KEY", options.keys, "Keys and ranges: IN_5, IN_1..IN_40")->required();
    AddLooks(rm, options);
    AddPlanOptions(rm, options);
}

void AddUndo(CLI::App& app, Options& options, const Choose& choose) {
    CLI::App& undo =
        Add(app, "undo", "Take a run back: programs and texts are as they were before it", UndoRun,
            choose);
    undo.add_option("RUN", options.run,
                    "The number of the run, as log shows it (default: the last one that is not"
                    " taken back yet)")
        ->check(NumberOf("a run, as log shows it"));
    AddLooks(undo, options);
    AddAtomicOption(undo, options);
}

void AddApply(CLI::App& app, Options& options, const Choose& choose) {
    CLI::App& apply =
        Add(app, "apply",
            "Do what a saved plan says, if everything is as it was when the plan was made",
            ApplySavedPlan, choose);
    apply.add_option("PLAN", options.file, "A file that --plan has written")->required();
    AddLooks(apply, options);
    AddAtomicOption(apply, options);
}

}  // namespace

void AddDatabaseKeeping(CLI::App& db, Options& options, const Choose& choose) {
    Add(db, "backup", "Write a whole copy of the database to a new file", BackUpDatabase, choose)
        .add_option("FILE", options.file, "The file to make; must not exist")
        ->required();
    CLI::App& restore =
        Add(db, "restore", "Make the database's rows those of a backup; undo takes it back",
            RestoreDatabase, choose);
    restore.add_option("FILE", options.file, "The backup")->required();
    AddLooks(restore, options);
    AddPlanOptions(restore, options);
    Add(db, "verify", "Tell whether a database is whole; exit status 5 if not", VerifyDatabase,
        choose)
        .add_option("PATH", options.database, "The database (default: as for --db)");
    CLI::App& convert =
        Add(db, "convert", "Write a database as a new file of another format, rows and all",
            ConvertDatabase, choose);
    convert.add_option("SOURCE", options.database, "The database")->required();
    convert.add_option("DEST", options.file, "The file to make; must not exist")->required();
    AddStoreFormat(convert, options);
    convert.get_option("--format")->required();
    CLI::App& compact = Add(db, "compact", "Make a database's file as small as it can be",
                            CompactDatabaseFile, choose);
    compact.add_option("PATH", options.database, "The database (default: as for --db)");
    compact.add_flag("--force", options.bForce,
                     "Also if forms and other things of an Access file would be lost");
}

void AddStoreFormat(CLI::App& command, Options& options) {
    command
        .add_option("--format", options.storeFormat,
                    "What the file is: sqlite (this system's own), jet3 (Access 97, the one that"
                    " the controller software writes) or jet4 (Access 2000 to 2003)")
        ->check(CLI::IsMember(FormatWords()));
}

void AddPlanOptions(CLI::App& command, Options& options) {
    command
        .add_option("--plan", options.planFile,
                    "Change nothing, but save what would be done, for: nomiractl apply FILE")
        ->type_name("FILE");
    command
        .add_option("--max-changes", options.maxChanges,
                    "Change nothing if more than N names or lines would change")
        ->type_name("N")
        ->check(NumberOf("changes"));
}

void AddAtomicOption(CLI::App& command, Options& options) {
    command
        .add_option("--atomic", options.atomic,
                    "How programs are written: in-place keeps inode and links, rename puts a new"
                    " file in the place of the old one")
        ->type_name("WAY")
        ->check(CLI::IsMember({"in-place", "rename"}));
}

void AddWritingCommands(CLI::App& app, Options& options, const Choose& choose) {
    AddSet(app, options, choose);
    AddRemove(app, options, choose);
    Add(app, "log", "List the runs that have changed something", ShowRuns, choose);
    AddUndo(app, options, choose);
    AddApply(app, options, choose);
}

}  // namespace nomira::companion
