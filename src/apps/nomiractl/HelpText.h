// The help of the commands: examples first, then what the arguments are.
#pragma once

#include <CLI/CLI.hpp>
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

// What the user may have meant by a command or option that isn't there: words that don't stand in
// `app` or the command that was chosen. Empty if everything is known, or nothing is near.
std::string DidYouMean(const CLI::App& app, const std::vector<std::string>& args);

}  // namespace nomira::companion
