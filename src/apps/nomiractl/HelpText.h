// The help of the commands: examples first, then what the arguments are.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

namespace nomira::companion {

class HelpText : public CLI::Formatter {
  public:
    std::string make_usage(const CLI::App* app, std::string sName) const override;
};

// The words of a command behind the program's name, as "db info"; empty for the program.
std::string CommandWords(const CLI::App& app);

// The commands of a command, or of the program, that its help shows.
std::vector<const CLI::App*> VisibleCommands(const CLI::App& app);

// A word of the command line that is no command or option where it stands.
struct UnknownWord {
    std::string sWord;
    std::string sMeant;  // what the user may have meant; empty if nothing is near
    bool bOption;
};

// The first one; nullopt if all are known to `app` or the command that was chosen.
std::optional<UnknownWord> FindUnknownWord(const CLI::App& app,
                                           const std::vector<std::string>& args);

}  // namespace nomira::companion
