// The manual pages: one of each command, with all that its help has, and nothing that the formatter
// warns of.
#include <set>

#include "apps/BinaryRun.h"

namespace {

namespace fs = std::filesystem;
using nomira::testing::BinaryRun;
using nomira::testing::Contains;
using nomira::testing::ProcessOutcome;
using nomira::testing::Strings;

class ManPagesTest : public ::testing::Test {
  protected:
    ManPagesTest() {
        const ProcessOutcome made = m_run.Start({"man", Folder().string()});
        EXPECT_EQ(made.nStatus, 0) << made.sErr;
        EXPECT_EQ(made.sOut + made.sErr, "");
    }
    fs::path Folder() const { return m_run.Root() / "share/man"; }

    // The words behind the program's name that the page is about.
    static Strings CommandOf(const fs::path& page) {
        std::istringstream in(page.stem().string());
        Strings words;
        for (std::string sWord; std::getline(in, sWord, '-');)
            words.push_back(sWord);
        words.erase(words.begin());
        return words;
    }
    ProcessOutcome HelpOf(const fs::path& page) const {
        Strings args = CommandOf(page);
        args.emplace_back("--help");
        return m_run.Start(args);
    }
    // The page as plain text, blanks and line ends as one blank each.
    std::string Shown(const fs::path& page) const {
        const ProcessOutcome shown =
            m_run.Shell("groff -man -ww -Tascii -P-cbou '" + page.string() + "'");
        EXPECT_EQ(shown.sErr, "") << page;
        return InOneLine(shown.sOut);
    }
    static std::string InOneLine(const std::string& sText) {
        std::istringstream in(sText);
        std::string sLine;
        for (std::string sWord; in >> sWord;)
            sLine += " " + sWord;
        return sLine + " ";
    }
    std::vector<fs::path> Pages() const {
        std::vector<fs::path> pages;
        for (const auto& entry : fs::directory_iterator(Folder()))
            pages.push_back(entry.path());
        return pages;
    }

    BinaryRun m_run;
};

// The first words of the indented lines below a heading of a help.
std::set<std::string> WordsBelow(const std::string& sHelp, const std::string& sHeading) {
    std::istringstream in(sHelp.substr(std::min(sHelp.size(), sHelp.find("\n" + sHeading) + 1)));
    std::set<std::string> words;
    std::string sLine;
    std::getline(in, sLine);
    while (std::getline(in, sLine) && sLine.starts_with("  "))
        if (sLine.size() > 2 && sLine[2] != ' ')
            words.insert(sLine.substr(2, sLine.find_first_of(" ,", 2) - 2));
    return words;
}

TEST_F(ManPagesTest, ThereIsOneOfEachCommand) {
    std::set<std::string> expected{"nomiractl.1"};
    for (const std::string& sCommand : WordsBelow(m_run.Start({"--help"}).sOut, "Subcommands:")) {
        expected.insert("nomiractl-" + sCommand + ".1");
        const std::string sHelp = m_run.Start({sCommand, "--help"}).sOut;
        if (!Contains(sHelp, "\nSubcommands:")) continue;
        for (const std::string& sInner : WordsBelow(sHelp, "Subcommands:"))
            expected.insert("nomiractl-" + sCommand + "-" + sInner + ".1");
    }
    std::set<std::string> made;
    for (const fs::path& page : Pages())
        made.insert(page.filename());
    EXPECT_EQ(made, expected);
    EXPECT_TRUE(made.contains("nomiractl-db-info.1"));
    EXPECT_FALSE(made.contains("nomiractl-man.1"));
}

TEST_F(ManPagesTest, TheFormatterHasNothingToSay) {
    for (const fs::path& page : Pages())
        EXPECT_GT(Shown(page).size(), 300U) << page;
}

TEST_F(ManPagesTest, ExamplesComeFirstAndStandAsTheyAreTyped) {
    for (const fs::path& page : Pages()) {
        const std::string sHelp = HelpOf(page).sOut;
        if (!Contains(sHelp, "Examples:")) continue;
        const std::string sPage = Shown(page);
        EXPECT_LT(sPage.find(" EXAMPLES "), sPage.find(" SYNOPSIS ")) << page;
        std::istringstream in(sHelp);
        for (std::string sLine; std::getline(in, sLine) && !Contains(sLine, "Usage:");) {
            if (!sLine.starts_with("  nomiractl ")) continue;
            const std::string sExample = sLine.substr(2, sLine.find("  ", 2) - 2);
            EXPECT_TRUE(Contains(sPage, InOneLine(sExample))) << page << sExample;
        }
    }
}

TEST_F(ManPagesTest, EachOptionAndExitStatusOfTheHelpIsThere) {
    std::size_t nOptions = 0;
    for (const fs::path& page : Pages()) {
        const std::string sPage = Shown(page);
        for (const std::string& sOption : WordsBelow(HelpOf(page).sOut, "Options:")) {
            EXPECT_TRUE(Contains(sPage, " " + sOption)) << page << ' ' << sOption;
            ++nOptions;
        }
        EXPECT_TRUE(Contains(sPage, " 130 interrupted ")) << page;
    }
    EXPECT_GT(nOptions, 80U);
}

TEST_F(ManPagesTest, AFolderThatCannotBeIsAFailureOfAFile) {
    m_run.Write("file", "x");
    EXPECT_EQ(m_run.Start({"man", (m_run.Root() / "file/man").string()}).nStatus, 4);
}

TEST_F(ManPagesTest, TheHelpAndTheCompletionKeepQuietAboutIt) {
    EXPECT_FALSE(Contains(m_run.Start({"--help"}).sOut, "  man "));
    for (const char* sShell : {"bash", "zsh", "fish"})
        EXPECT_FALSE(Contains(m_run.Start({"completion", sShell}).sOut, "a man ")) << sShell;
}

}  // namespace
