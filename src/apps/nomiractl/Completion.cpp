#include "apps/nomiractl/Completion.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "apps/nomiractl/HelpText.h"
#include "apps/nomiractl/KeySelection.h"

namespace nomira::companion {
namespace {

struct OptionValues {
    std::string sOption;
    std::vector<std::string> values;
};

// Options whose values are words of a list.
std::vector<OptionValues> AllValues() {
    OptionValues classes{"--class", {}};
    for (std::size_t n = 0; n < kSignalClassCount; ++n)
        classes.values.emplace_back(ClassWord(n));
    return {{"--format", {"text", "json", "sarif", "junit"}},
            {"--as", {"auto", "text", "program", "database", "registry"}},
            {"--color", {"auto", "always", "never"}},
            {"--code-page", {"1250", "1251", "1252", "8859-1", "8859-15"}},
            {"--encoding", {"code-page", "utf-8"}},
            {"--eol", {"crlf", "lf"}},
            {"--atomic", {"in-place", "rename"}},
            classes};
}

std::vector<std::string> OptionsOf(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* level = &app; level; level = level->get_parent())
        for (const CLI::Option* option : level->get_options())
            for (const std::string& sName : option->get_lnames())
                names.push_back("--" + sName);
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

// A command of the tree, with what may follow it.
struct Level {
    std::string sPath;  // "/db/info"; "" for the program
    std::vector<std::string> commands;
    std::vector<std::string> options;
};

void Collect(const CLI::App& app, const std::string& sPath, std::vector<Level>& levels) {
    Level level{sPath, {}, OptionsOf(app)};
    for (const CLI::App* sub : VisibleCommands(app))
        level.commands.push_back(sub->get_name());
    levels.push_back(level);
    for (const CLI::App* sub : VisibleCommands(app))
        Collect(*sub, sPath + "/" + sub->get_name(), levels);
}

std::vector<Level> LevelsOf(const CLI::App& app) {
    std::vector<Level> levels;
    Collect(app, "", levels);
    return levels;
}

std::string Words(const std::vector<std::string>& words) {
    return fmt::format("{}", fmt::join(words, " "));
}

// The walk over the words ahead of the one in work, the same in bash and zsh.
std::string WalkCases(const std::vector<Level>& levels) {
    std::vector<std::string> paths;
    for (const Level& level : levels)
        if (!level.sPath.empty()) paths.push_back(level.sPath);
    return fmt::format("{}", fmt::join(paths, "|"));
}

std::string BashScript(const std::vector<Level>& levels) {
    std::string sScript =
        "# bash completion for nomiractl\n"
        "_nomiractl() {\n"
        "    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} path= word\n"
        "    local commands= options=\n"
        "    COMPREPLY=()\n"
        "    case $prev in\n";
    for (const OptionValues& of : AllValues())
        sScript += fmt::format("        {}) COMPREPLY=($(compgen -W '{}' -- \"$cur\")); return;;\n",
                               of.sOption, Words(of.values));
    sScript += fmt::format(
        "    esac\n"
        "    for word in \"${{COMP_WORDS[@]:1:COMP_CWORD-1}}\"; do\n"
        "        case $path/$word in\n"
        "            {}) path=$path/$word;;\n"
        "        esac\n"
        "    done\n"
        "    case $path in\n",
        WalkCases(levels));
    for (const Level& level : levels)
        sScript += fmt::format("        '{}') commands='{}' options='{}';;\n", level.sPath,
                               Words(level.commands), Words(level.options));
    return sScript +
           "    esac\n"
           "    if [[ $cur == -* ]]; then\n"
           "        COMPREPLY=($(compgen -W \"$options\" -- \"$cur\"))\n"
           "    elif [[ -n $commands ]]; then\n"
           "        COMPREPLY=($(compgen -W \"$commands\" -- \"$cur\"))\n"
           "    fi\n"
           "}\n"
           "complete -o default -F _nomiractl nomiractl\n";
}

std::string ZshScript(const std::vector<Level>& levels) {
    std::string sScript =
        "#compdef nomiractl\n"
        "_nomiractl() {\n"
        "    local at= word\n"
        "    local -a commands options\n"
        "    case ${words[CURRENT-1]} in\n";
    for (const OptionValues& of : AllValues())
        sScript +=
            fmt::format("        {}) compadd -- {}; return;;\n", of.sOption, Words(of.values));
    sScript += fmt::format(
        "    esac\n"
        "    for word in ${{words[2,CURRENT-1]}}; do\n"
        "        case $at/$word in\n"
        "            {}) at=$at/$word;;\n"
        "        esac\n"
        "    done\n"
        "    case $at in\n",
        WalkCases(levels));
    for (const Level& level : levels)
        sScript += fmt::format("        '{}') commands=({}) options=({});;\n", level.sPath,
                               Words(level.commands), Words(level.options));
    return sScript +
           "    esac\n"
           "    if [[ $PREFIX == -* ]]; then\n"
           "        compadd -- $options\n"
           "    elif (( $#commands )); then\n"
           "        compadd -- $commands\n"
           "    else\n"
           "        _files\n"
           "    fi\n"
           "}\n"
           "compdef _nomiractl nomiractl\n";
}

// Between single quotes.
std::string FishQuoted(const std::string& sText) {
    std::string sQuoted;
    for (const char c : sText) {
        if (c == '\'' || c == '\\') sQuoted += '\\';
        sQuoted += c;
    }
    return sQuoted;
}

void AppendFish(const CLI::App& app, std::string& sScript) {
    const std::string& sName = app.get_name();
    const bool bTop = !app.get_parent();
    const std::string sWhen =
        bTop ? "__fish_use_subcommand" : fmt::format("__fish_seen_subcommand_from {}", sName);
    for (const CLI::App* sub : VisibleCommands(app))
        sScript += fmt::format("complete -c nomiractl -n '{}' -a {} -d '{}'\n", sWhen,
                               sub->get_name(), FishQuoted(sub->get_description()));
    for (const CLI::Option* option : app.get_options())
        for (const std::string& sLong : option->get_lnames())
            sScript += fmt::format("complete -c nomiractl{} -l {}{} -d '{}'\n",
                                   bTop ? "" : fmt::format(" -n '{}'", sWhen), sLong,
                                   option->get_items_expected_max() > 0 ? " -r" : "",
                                   FishQuoted(option->get_description()));
    for (const CLI::App* sub : VisibleCommands(app))
        AppendFish(*sub, sScript);
}

std::string FishScript(const CLI::App& app) {
    std::string sScript = "# fish completion for nomiractl\n";
    AppendFish(app, sScript);
    for (const OptionValues& of : AllValues())
        sScript += fmt::format("complete -c nomiractl -l {} -x -a '{}'\n", of.sOption.substr(2),
                               Words(of.values));
    return sScript;
}

}  // namespace

std::string CompletionScript(const CLI::App& app, const std::string& sShell) {
    if (sShell == "fish") return FishScript(app);
    const std::vector<Level> levels = LevelsOf(app);
    return sShell == "zsh" ? ZshScript(levels) : BashScript(levels);
}

}  // namespace nomira::companion
