#include "apps/nomiractl/ManPages.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <system_error>

#include "apps/nomiractl/Examples.h"
#include "apps/nomiractl/ExitCode.h"
#include "apps/nomiractl/HelpText.h"
#include "apps/nomiractl/Refusal.h"
#include "apps/nomiractl/ReplaceFile.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

// Letters that the formatter would take for something else, or show as another letter.
struct Spelling {
    char cLetter;
    const char* sSpelled;
};
constexpr Spelling kSpellings[]{
    {'\\', "\\e"}, {'-', "\\-"}, {'\'', "\\(aq"}, {'`', "\\(ga"}, {'^', "\\(ha"}, {'~', "\\(ti"},
};

std::string Plain(std::string_view sText) {
    std::string sPlain = sText.starts_with('.') ? "\\&" : "";
    for (const char c : sText) {
        const auto* const found =
            std::find_if(std::begin(kSpellings), std::end(kSpellings),
                         [c](const Spelling& spelling) { return spelling.cLetter == c; });
        if (found == std::end(kSpellings))
            sPlain += c;
        else
            sPlain += found->sSpelled;
    }
    return sPlain;
}

std::string Bold(std::string_view sText) {
    return "\\fB" + Plain(sText) + "\\fR";
}

std::string Slanted(std::string_view sText) {
    return "\\fI" + Plain(sText) + "\\fR";
}

std::string Heading(std::string_view sWords) {
    return fmt::format(".SH {}\n", sWords);
}

// A term and what it means.
std::string Entry(const std::string& sTerm, std::string_view sMeaning) {
    return fmt::format(".TP\n{}\n{}\n", sTerm, Plain(sMeaning));
}

std::string PageName(const CLI::App& app) {
    std::string sWords = CommandWords(app);
    std::replace(sWords.begin(), sWords.end(), ' ', '-');
    return sWords.empty() ? "nomiractl" : "nomiractl-" + sWords;
}

std::string CommandOf(const CLI::App& app) {
    const std::string sWords = CommandWords(app);
    return sWords.empty() ? "nomiractl" : "nomiractl " + sWords;
}

std::string InOneLine(std::string sText) {
    std::replace(sText.begin(), sText.end(), '\n', ' ');
    return sText;
}

// "FILE", without the values that it may have.
std::string ValueOf(const CLI::Option& option) {
    const std::string sType = option.get_type_name();
    return sType.substr(0, sType.find(':'));
}

// "[PATH...]".
std::string ArgumentOf(const CLI::Option& option) {
    std::string sArgument = Slanted(option.get_name(true));
    if (option.get_items_expected_max() > 1) sArgument += "...";
    return option.get_required() ? sArgument : "[" + sArgument + "]";
}

// "--db PATH", all names of it.
std::string OptionTerm(const CLI::Option& option) {
    std::string sTerm;
    for (const std::string& sName : option.get_snames())
        sTerm += (sTerm.empty() ? "" : ", ") + Bold("-" + sName);
    for (const std::string& sName : option.get_lnames())
        sTerm += (sTerm.empty() ? "" : ", ") + Bold("--" + sName);
    if (option.get_items_expected_max() > 0) sTerm += " " + Slanted(ValueOf(option));
    return sTerm;
}

std::vector<const CLI::Option*> Arguments(const CLI::App& app) {
    return app.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

std::vector<const CLI::Option*> NamedOptions(const CLI::App& app) {
    return app.get_options([](const CLI::Option* option) { return option->nonpositional(); });
}

std::string Synopsis(const CLI::App& app) {
    std::string sLine = Bold(CommandOf(app)) + " [" + Slanted("OPTIONS") + "]";
    for (const CLI::Option* option : Arguments(app))
        sLine += " " + ArgumentOf(*option);
    if (!VisibleCommands(app).empty()) sLine += " " + Slanted("COMMAND");
    return Heading("SYNOPSIS") + sLine + "\n";
}

std::string ExamplesSection(const CLI::App& app) {
    const auto examples = ExamplesOf(CommandWords(app));
    if (examples.empty()) return {};
    std::string sSection = Heading("EXAMPLES");
    for (const Example& example : examples) {
        sSection += ".PP\n.EX\n" + Bold(std::string("nomiractl ") + example.sLine) + "\n.EE\n";
        if (*example.sWhat != '\0')
            sSection += fmt::format(".RS 4\n{}\n.RE\n", Plain(example.sWhat));
    }
    return sSection;
}

std::string OptionsSection(const CLI::App& app) {
    std::string sSection;
    for (const CLI::Option* option : Arguments(app))
        sSection += Entry(Slanted(option->get_name(true)), option->get_description());
    for (const CLI::Option* option : NamedOptions(app))
        sSection += Entry(OptionTerm(*option), option->get_description());
    return sSection.empty() ? sSection : Heading("OPTIONS") + sSection;
}

std::string CommandsSection(const CLI::App& app) {
    const auto commands = VisibleCommands(app);
    if (commands.empty()) return {};
    std::string sSection = Heading("COMMANDS");
    for (const CLI::App* command : commands)
        sSection += Entry(Bold(command->get_name()), command->get_description());
    return sSection;
}

std::string ExitStatusSection() {
    std::string sSection = Heading("EXIT STATUS");
    for (const ExitWords& row : ExitCodeTable())
        sSection += Entry(Bold(std::to_string(static_cast<int>(row.exit))), row.sWords);
    return sSection;
}

// The program for a command, and the commands for the program.
std::string SeeAlso(const CLI::App& app) {
    std::vector<std::string> pages;
    for (const CLI::App* parent = app.get_parent(); parent; parent = parent->get_parent())
        pages.push_back(PageName(*parent));
    for (const CLI::App* command : VisibleCommands(app))
        pages.push_back(PageName(*command));
    std::string sSection;
    for (const std::string& sPage : pages)
        sSection += (sSection.empty() ? "" : ",\n") + Bold(sPage) + "(1)";
    return sSection.empty() ? sSection : Heading("SEE ALSO") + sSection + "\n";
}

std::string PageText(const CLI::App& app, const std::string& sVersion, const std::string& sFiles) {
    const bool bProgram = app.get_parent() == nullptr;
    std::string sTitle = PageName(app);
    std::transform(sTitle.begin(), sTitle.end(), sTitle.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    std::string sText =
        fmt::format(".TH {} 1 \"\" \"nomiractl {}\" \"User Commands\"\n.nh\n.ad l\n", Plain(sTitle),
                    sVersion) +
        Heading("NAME") + Plain(PageName(app)) + " \\- " + Plain(InOneLine(app.get_description())) +
        "\n" + ExamplesSection(app) + Synopsis(app) + CommandsSection(app) + OptionsSection(app);
    if (!bProgram) sText += ".PP\nThe options of " + Bold("nomiractl") + "(1) are taken too.\n";
    sText += ExitStatusSection();
    if (bProgram) sText += Heading("FILES") + Plain(InOneLine(sFiles)) + "\n";
    return sText + SeeAlso(app);
}

void Collect(const CLI::App& app, const std::string& sVersion, const std::string& sFiles,
             std::vector<ManPage>& pages) {
    pages.push_back({PageName(app) + ".1", PageText(app, sVersion, sFiles)});
    for (const CLI::App* command : VisibleCommands(app))
        Collect(*command, sVersion, sFiles, pages);
}

}  // namespace

std::vector<ManPage> ManPages(const CLI::App& app, const std::string& sVersion,
                              const std::string& sFiles) {
    std::vector<ManPage> pages;
    Collect(app, sVersion, sFiles, pages);
    return pages;
}

void WriteManPages(const std::vector<ManPage>& pages, const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error)
        throw Refusal(fmt::format("{}: {}", folder.string(), error.message()), ExitCode::Files);
    for (const ManPage& page : pages)
        ReplaceFile(folder / page.sFile, page.sText);
}

}  // namespace nomira::companion
