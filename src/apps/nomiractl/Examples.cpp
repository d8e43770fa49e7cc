#include "apps/nomiractl/Examples.h"

#include <vector>

namespace nomira::companion {
namespace {

struct CommandExamples {
    std::string_view sCommand;
    std::vector<Example> examples;
};

const std::vector<CommandExamples>& AllExamples() {
    static const std::vector<CommandExamples> all{
        {"",
         {{"check names.txt", "what is wrong with a text file"},
          {"import names.txt --dry-run", "what an import would change"},
          {"list --text pump", "all names with \"pump\" in them"}}},
        {"list",
         {{"list", "all names of the database"},
          {"list IN_1..IN_40 --empty", "inputs 1 to 40 that have no name"},
          {"list --class flag --text ready", "flags with \"ready\" in their names"},
          {"list --json | jq -r .[].key", "for other programs"}}},
        {"get",
         {{"get IN_5", "the bare name of input 5"},
          {"get IN_5 OUT_7", "several, each with its key"}}},
        {"stats",
         {{"stats", "all classes"},
          {"stats --class in", "inputs, with all free numbers"},
          {"stats --size in=2048", "on a controller with 2048 inputs"}}},
        {"check",
         {{"check names.txt", "a text file"},
          {"check C1/ --db names.db", "all programs of a folder, with their names"},
          {"check names.db cell.reg", "a database and a registry file"},
          {"check --format sarif names.txt", "for a merge request"},
          {"check names.txt --rejects rest.txt", "keep lines that are not taken"},
          {"check - < names.txt", "a text file on the standard input"},
          {"check C1/ --write-baseline known.json", "from now on show only what is new:"},
          {"check C1/ --baseline known.json", ""}}},
        {"diff",
         {{"diff names.txt db", "what an import would change"},
          {"diff C1/ db", "which names in programs are not the database's"},
          {"diff old.txt new.txt --json", "for other programs"}}},
        {"xref",
         {{"xref C1/", "every signal, its name, and where programs show it"},
          {"xref C1/ --unnamed", "used, but without a name"},
          {"xref C1/ --unused --class in", "inputs with a name that no program uses"}}},
        {"import",
         {{"import names.txt --dry-run", "what would change"},
          {"import names.txt", "its names over what is there"},
          {"import names.txt --overwrite", "wipe the classes that it has first"},
          {"import names-utf8.txt --encoding utf-8 --eol lf", "from an editor of today"},
          {"import names.txt --plan names.plan", "look first, apply later"}}},
        {"apply", {{"apply names.plan", "what import or rewrite has saved with --plan"}}},
        {"export",
         {{"export names-now.txt", "all names"},
          {"export -", "to the standard output"},
          {"export names-utf8.txt --encoding utf-8 --eol lf", "for git"}}},
        {"rewrite",
         {{"rewrite C1/ --diff --dry-run", "what would change in a folder's programs"},
          {"rewrite C1/", "the database's names into all of them"},
          {"rewrite C1/ --check", "for pipelines: 1 if a program is out of date"}}},
        {"harvest",
         {{"harvest signals.txt --dry-run", "what a customer's file would bring"},
          {"harvest signals.txt", ""}}},
        {"set", {{"set IN_5 \"Clamp closed\"", "one name"}}},
        {"rm",
         {{"rm IN_1..IN_40 --dry-run", "which keys would go"},
          {"rm OUT_7", "one key, its name too"}}},
        {"log", {{"log", "the runs that have changed something"}}},
        {"undo",
         {{"undo --diff --dry-run", "what would go and come"}, {"undo", "take the last run back"}}},
        {"db create",
         {{"db create other.db", "a new, empty database"},
          {"db create other.mdb --format jet3", "as the controller software makes them"}}},
        {"db convert",
         {{"db convert names.db names.mdb --format jet3", "for the controller"},
          {"db convert names.mdb names-now.db --format sqlite", "the reverse"}}},
        {"db compact", {{"db compact", "its file without what is no longer used in it"}}},
        {"db info", {{"db info names.db", "how many names of each class"}}},
        {"db backup", {{"db backup names.bak", "a whole copy"}}},
        {"db restore", {{"db restore names.bak", "its rows back, as a run that undo takes back"}}},
        {"db verify", {{"db verify", "whether the database is whole"}}},
        {"db",
         {{"db create names.db", "a new, empty database"},
          {"db info names.db", "how many names of each class"},
          {"db backup names.bak", "a whole copy"}}},
        {"controller",
         {{"controller ls", "its programs"},
          {"controller rewrite --all --diff --dry-run", "what would change in them"},
          {"controller sizes", "how many signals it has"}}},
        {"controller ls",
         {{"controller ls", "the files of R1"},
          {"controller ls --dirs", "its directories"},
          {"controller ls Program", "the files of one of them"}}},
        {"controller fetch",
         {{"controller fetch main.src", "into this folder"},
          {"controller fetch main.src cell.src --to R1-now", "into another one"}}},
        {"controller send",
         {{"controller send main.src", "to where the controller has it"},
          {"controller send main.src --to TQX:\\R1\\", "to one of its directories"}}},
        {"controller vars",
         {{"controller vars '$OV_PRO'", "read a variable"},
          {"controller vars '$OV_PRO=50'", "write it"}}},
        {"controller sizes", {{"controller sizes", "how many signals of each class it has"}}},
        {"controller rewrite",
         {{"controller rewrite --all --diff --dry-run", "what would change"},
          {"controller rewrite main.src", "the database's names into one program"},
          {"controller rewrite --all --check", "for pipelines: 1 if a program is out of date"}}},
        {"version", {{"version --json", "for other programs"}}},
        {"completion",
         {{"completion bash > ~/.local/share/bash-completion/completions/nomiractl", ""},
          {"completion zsh > ~/.zfunc/_nomiractl", ""},
          {"completion fish > ~/.config/fish/completions/nomiractl.fish", ""}}},
    };
    return all;
}

}  // namespace

std::span<const Example> ExamplesOf(std::string_view sCommand) {
    for (const CommandExamples& of : AllExamples())
        if (of.sCommand == sCommand) return of.examples;
    return {};
}

}  // namespace nomira::companion
