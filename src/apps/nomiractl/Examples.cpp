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
