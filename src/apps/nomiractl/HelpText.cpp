#include "apps/nomiractl/HelpText.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "apps/nomiractl/Examples.h"

namespace nomira::companion {
namespace {

// How many letters have to be changed, put in, taken out or swapped with their neighbour.
std::size_t Distance(std::string_view a, std::string_view b) {
    std::vector<std::vector<std::size_t>> d(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i)
        for (std::size_t k = 0; k <= b.size(); ++k) {
            if (i == 0 || k == 0) {
                d[i][k] = i + k;
                continue;
            }
            const std::size_t nOther = a[i - 1] == b[k - 1] ? 0 : 1;
            d[i][k] = std::min({d[i - 1][k] + 1, d[i][k - 1] + 1, d[i - 1][k - 1] + nOther});
            if (i > 1 && k > 1 && a[i - 1] == b[k - 2] && a[i - 2] == b[k - 1])
                d[i][k] = std::min(d[i][k], d[i - 2][k - 2] + 1);
        }
    return d[a.size()][b.size()];
}

// Empty if nothing is near: a third of the letters may be wrong.
std::string Nearest(const std::string& sWord, const std::vector<std::string>& candidates) {
    std::string sNearest;
    std::size_t nBest = std::max<std::size_t>(1, sWord.size() / 3) + 1;
    for (const std::string& sCandidate : candidates) {
        const std::size_t nDistance = Distance(sWord, sCandidate);
        if (nDistance >= nBest) continue;
        nBest = nDistance;
        sNearest = sCandidate;
    }
    return sNearest;
}

bool IsOption(const std::string& sWord) {
    return sWord.size() > 1 && sWord.starts_with('-');
}

const CLI::App* SubcommandOf(const CLI::App& app, const std::string& sWord) {
    for (const CLI::App* sub : app.get_subcommands({}))
        if (sub->get_name() == sWord) return sub;
    return nullptr;
}

// Walks the arguments word by word down the tree of commands.
class Walk {
  public:
    explicit Walk(const CLI::App& app) : m_chain{&app} {}

    std::optional<UnknownWord> Run(const std::vector<std::string>& args) {
        for (std::size_t n = 0; n < args.size() && args[n] != "--"; ++n) {
            if (IsOption(args[n])) {
                const std::string sName = args[n].substr(0, args[n].find('='));
                const CLI::Option* option = FindOption(sName);
                if (!option) return UnknownWord{args[n], Nearest(sName, OptionNames()), true};
                if (option->get_items_expected_max() > 0 && sName == args[n]) ++n;  // its value
            } else if (const CLI::App* sub = SubcommandOf(*m_chain.back(), args[n])) {
                m_chain.push_back(sub);
            } else if (!m_chain.back()->get_subcommands({}).empty()) {
                return UnknownWord{args[n], Nearest(args[n], CommandNames()), false};
            }
        }
        return std::nullopt;
    }

  private:
    const CLI::Option* FindOption(const std::string& sName) const {
        for (const CLI::App* app : m_chain)
            if (const CLI::Option* option = app->get_option_no_throw(sName)) return option;
        return nullptr;
    }
    std::vector<std::string> OptionNames() const {
        std::vector<std::string> names;
        for (const CLI::App* app : m_chain)
            for (const CLI::Option* option : app->get_options())
                for (const std::string& sName : option->get_lnames())
                    names.push_back("--" + sName);
        return names;
    }
    std::vector<std::string> CommandNames() const {
        std::vector<std::string> names;
        for (const CLI::App* sub : VisibleCommands(*m_chain.back()))
            names.push_back(sub->get_name());
        return names;
    }

    std::vector<const CLI::App*> m_chain;
};

}  // namespace

std::string CommandWords(const CLI::App& app) {
    if (!app.get_parent()) return {};
    const std::string sAhead = CommandWords(*app.get_parent());
    return sAhead.empty() ? app.get_name() : sAhead + " " + app.get_name();
}

std::vector<const CLI::App*> VisibleCommands(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App* sub) { return !sub->get_group().empty(); });
}

std::string HelpText::make_usage(const CLI::App* app, std::string sName) const {
    std::string sText;
    std::size_t nWidth = 0;
    const auto examples = ExamplesOf(CommandWords(*app));
    for (const Example& example : examples)
        nWidth = std::max(nWidth, std::string_view(example.sLine).size());
    for (const Example& example : examples) {
        const std::string sLine =
            fmt::format("  nomiractl {:<{}}  {}", example.sLine, nWidth, example.sWhat);
        sText += sLine.substr(0, sLine.find_last_not_of(' ') + 1) + "\n";
    }
    if (!sText.empty()) sText = "Examples:\n" + sText + "\n";
    return sText + CLI::Formatter::make_usage(app, std::move(sName));
}

std::optional<UnknownWord> FindUnknownWord(const CLI::App& app,
                                           const std::vector<std::string>& args) {
    return Walk(app).Run(args);
}

}  // namespace nomira::companion
