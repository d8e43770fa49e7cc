#include "apps/nomiractl/ReadingCommandLine.h"

namespace nomira::companion {
namespace {

using Choose = std::function<void(Command)>;

CLI::App& Add(CLI::App& parent, const char* sName, const char* sWhat, Command command,
              const Choose& choose) {
    CLI::App* sub = parent.add_subcommand(sName, sWhat);
    sub->callback([choose, command] { choose(command); });
    return *sub;
}

void AddClasses(CLI::App& command, Options& options) {
    command
        .add_option("--class", options.classes,
                    "Only keys of this class: in, out, notice, counter, flag, timer, anin, anout,"
                    " binin, binout, param, start, weld, crater; may be repeated")
        ->type_name("CLASS")
        ->allow_extra_args(false);
}

void AddList(CLI::App& app, Options& options, const Choose& choose) {
    CLI::App& list = Add(app, "list", "List keys with their texts", ListNames, choose);
    list.add_option("KEY", options.keys, "Keys and ranges: IN_5, IN_1..IN_40, 1..40");
    AddClasses(list, options);
    list.add_option("--text", options.sText, "Only texts that hold this, in any case")
        ->type_name("PART");
    CLI::Option* empty = list.add_flag("--empty", options.bEmpty, "Only keys without a text");
    list.add_flag("--filled", options.bFilled, "Only keys with a text")->excludes(empty);
    AddEncoding(list, options, "How to write the texts: utf-8 (the usual way) or code-page");
}

void AddGet(CLI::App& app, Options& options, const Choose& choose) {
    CLI::App& get = Add(app, "get", "Show the text of a key, bare for one key", GetNames, choose);
    get.add_option("KEY", options.keys, "Keys, as IN_5")->required();
    AddEncoding(get, options, "How to write the texts: utf-8 (the usual way) or code-page");
}

void AddStats(CLI::App& app, Options& options, const Choose& choose) {
    CLI::App& stats =
        Add(app, "stats", "Count filled, empty and free numbers by class", ShowStats, choose);
    AddClasses(stats, options);
    stats
        .add_option("--size", options.sizes,
                    "How many signals of a class the controller has, if not the usual number")
        ->type_name("CLASS=N")
        ->allow_extra_args(false);
}

void AddCheck(CLI::App& app, Options& options, const Choose& choose) {
    CLI::App& check =
        Add(app, "check",
            "Find what the program would silently do otherwise than meant, and what would stop it",
            CheckFiles, choose);
    CLI::Option* rules = check.add_flag("--list-rules", options.bListRules, "List the rules");
    CLI::Option* paths =
        check.add_option("PATH", options.programs,
                         "Text files, programs, folders of programs, databases, registry files;"
                         " - for a text file on the standard input");
    AddTextForm(check, options);
    check.add_option("--as", options.sKind, "Take the files as this kind, whatever they look like")
        ->check(CLI::IsMember({"auto", "text", "program", "database", "registry"}))
        ->type_name("KIND");
    check.add_option("--format", options.sFormat, "How to report: text, json, sarif or junit")
        ->check(CLI::IsMember({"text", "json", "sarif", "junit"}))
        ->type_name("FORMAT");
    check.add_option("--color", options.sColour, "Colours in the text: auto, always or never")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->type_name("WHEN");
    CLI::Option* baseline =
        check
            .add_option("--baseline", options.baseline, "Don't show what this file holds as known")
            ->type_name("FILE");
    check
        .add_option("--write-baseline", options.writeBaseline,
                    "Keep all that is found in this file as known, and exit with 0")
        ->type_name("FILE")
        ->excludes(baseline);
    check
        .add_option("--rejects", options.rejects,
                    "Put the lines of text files that are not taken into this file, to be edited"
                    " and imported")
        ->type_name("FILE");
    check.add_flag("--predict", options.bPredict,
                   "With --format json: tell what becomes of each line");
    AddJobsOption(check, options);
    check.callback([paths, rules, choose] {
        if (paths->count() == 0 && rules->count() == 0) throw CLI::RequiredError("PATH");
        choose(CheckFiles);
    });
}

void AddDiff(CLI::App& app, Options& options, const Choose& choose) {
    CLI::App& diff =
        Add(app, "diff", "Show what any two of text file, database and programs don't agree on",
            DiffNames, choose);
    diff.add_option("OLD", options.oldSide,
                    "A text file, a database, a program or a folder of programs; db stands for"
                    " the database of --db or the prefix, - for a text file on the standard input")
        ->required();
    diff.add_option("NEW", options.newSide, "The same")->required();
    AddJobsOption(diff, options);
    AddTextForm(diff, options);
}

void AddXref(CLI::App& app, Options& options, const Choose& choose) {
    CLI::App& xref = Add(app, "xref", "Show where the fold headers of programs use signals",
                         CrossReference, choose);
    xref.add_option("PATH", options.programs, "Programs, and folders of programs")->required();
    AddClasses(xref, options);
    xref.add_flag("--unnamed", options.bUnnamed, "Only signals that are used and have no name");
    xref.add_flag("--unused", options.bUnused, "Only names that no program uses");
    AddJobsOption(xref, options);
}

}  // namespace

void AddJobsOption(CLI::App& command, Options& options) {
    constexpr std::size_t kMostJobs = 256;
    command
        .add_option("--jobs", options.jobs,
                    "Look at N programs at once (default: one for each processor); the result is"
                    " the same for any N")
        ->type_name("N")
        ->check(CLI::Range(std::size_t{1}, kMostJobs));
}

void AddEncoding(CLI::App& command, Options& options, const char* sWhat) {
    command.add_option("--encoding", options.sEncoding, sWhat)
        ->type_name("NAME")
        ->check(CLI::IsMember({"code-page", "utf-8"}));
}

void AddTextForm(CLI::App& command, Options& options) {
    AddEncoding(command, options,
                "The text file's encoding: code-page (the usual one) or utf-8; a character that the"
                " code page lacks is refused");
    command
        .add_option("--eol", options.sLineEnds,
                    "The text file's line ends: crlf (the usual ones) or lf; a file that is read"
                    " with lf may have both")
        ->type_name("ENDS")
        ->check(CLI::IsMember({"crlf", "lf"}));
}

void AddReadingCommands(CLI::App& app, Options& options, const Choose& choose) {
    AddList(app, options, choose);
    AddGet(app, options, choose);
    AddStats(app, options, choose);
    AddCheck(app, options, choose);
    AddDiff(app, options, choose);
    AddXref(app, options, choose);
}

}  // namespace nomira::companion
