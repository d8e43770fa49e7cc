// The recipes of docs/guide.md work as they stand.
#include "apps/BinaryRun.h"
#include "testing/SimulatorProcess.h"

namespace {

namespace fs = std::filesystem;
using nomira::testing::BinaryRun;
using nomira::testing::ProcessOutcome;
using nomira::testing::SimulatorProcess;

struct Recipe {
    std::string sHeading;
    std::string sLine;
};

std::vector<Recipe> Recipes() {
    std::istringstream guide(BinaryRun::Bytes(fs::path(NOMIRA_SOURCE_DIR) / "docs/guide.md"));
    std::vector<Recipe> recipes;
    std::string sHeading;
    bool bInside = false;
    for (std::string sLine; std::getline(guide, sLine);) {
        if (sLine.starts_with("## ")) sHeading = sLine.substr(3);
        if (sLine.starts_with("```"))
            bInside = sLine == "```sh";
        else if (bInside)
            recipes.push_back({sHeading, sLine});
    }
    return recipes;
}

// A folder as the guide describes it, with a controller in reach.
class GuideTest : public ::testing::Test {
  protected:
    GuideTest() : m_simulator(NOMIRA_SIMULATOR) {
        m_run.Write("names.txt", "IN_1 Pumpe\r\nFlagText7 ready\r\nTimerText123 x\r\n");
        fs::create_directory(m_run.Root() / "C1");
        m_run.Write("C1/a.src", kProgram);
        fs::create_directory_symlink(m_simulator.Socket().parent_path(), m_run.Prefix() / "run");
        SimulatorProcess::Put(m_simulator.Root() / "R1/Program/main.src",
                              ";FOLD OUT 9 'x' State\r\n");
        EXPECT_EQ(Run("git init -q . && nomiractl db create names.db &&"
                      " nomiractl --db names.db import names.txt")
                      .nStatus,
                  0);
    }

    ProcessOutcome Run(const std::string& sLine) const {
        return m_run.Shell("nomiractl() { \"$N\" \"$@\"; }; cd '" + m_run.Root().string() +
                           "' && export GIT_AUTHOR_NAME=x GIT_AUTHOR_EMAIL=x GIT_COMMITTER_NAME=x"
                           " GIT_COMMITTER_EMAIL=x && " +
                           sLine);
    }
    std::string Program() const { return BinaryRun::Bytes(m_run.Root() / "C1/a.src"); }

    // What a recipe is for, behind its last line.
    void ExpectDone(const std::string& sHeading) const {
        if (sHeading.starts_with("Rename")) {
            EXPECT_NE(Program().find("OUT 7 'Valve open' State"), std::string::npos) << Program();
            EXPECT_NE(BinaryRun::Bytes(m_run.Root() / "names.txt").find("OUT_7 Valve open\r\n"),
                      std::string::npos);
            EXPECT_EQ(Run("nomiractl --db names.db diff C1/ db && nomiractl --db names.db diff"
                          " names.txt db")
                          .nStatus,
                      0);
        }
        if (sHeading.starts_with("Take back")) {
            EXPECT_EQ(Program(), kProgram);
        }
        if (sHeading.starts_with("Bring a cell")) {
            EXPECT_EQ(Run("nomiractl --db names.db export - --encoding utf-8 --eol lf |"
                          " cmp - names-git.txt && git diff --exit-code && git log")
                          .nStatus,
                      0);
        }
    }

    static constexpr const char* kProgram =
        ";FOLD OUT 7 'Ventil' State\r\n;FOLD WAIT FOR IN 1 'alt' State\r\n";
    const BinaryRun m_run;
    const SimulatorProcess m_simulator;
};

// A recipe may find something (1), but must not fail.
TEST_F(GuideTest, EachRecipeRunsInAFolderAsDescribed) {
    const std::vector<Recipe> recipes = Recipes();
    ASSERT_GT(recipes.size(), 45U);
    for (std::size_t n = 0; n < recipes.size(); ++n) {
        const std::string& sLine = recipes[n].sLine;
        ASSERT_TRUE(sLine.find("nomiractl ") != std::string::npos || sLine.starts_with("git "))
            << sLine;
        const ProcessOutcome outcome = Run(sLine);
        EXPECT_LE(outcome.nStatus, 1) << sLine << '\n' << outcome.sErr;
        EXPECT_EQ(outcome.sErr, "") << sLine;
        if (sLine.find("says nothing") != std::string::npos) {
            EXPECT_EQ(outcome.nStatus, 0) << sLine << outcome.sOut;
        }
        if (n + 1 == recipes.size() || recipes[n + 1].sHeading != recipes[n].sHeading)
            ExpectDone(recipes[n].sHeading);
    }
    for (const char* sFile : {"rest.txt", "known.json", "check.sarif", "check.xml", "names-now.txt",
                              "nomiractl.bash", "R1-now/main.src"})
        EXPECT_GT(fs::file_size(m_run.Root() / sFile), 0U) << sFile;
}

TEST_F(GuideTest, TheExitStatusesAreThoseOfTheHelp) {
    const std::string sHelp = m_run.Start({"--help"}).sOut;
    std::string sGuide = BinaryRun::Bytes(fs::path(NOMIRA_SOURCE_DIR) / "docs/guide.md");
    std::erase(sGuide, '`');
    std::istringstream help(sHelp.substr(sHelp.find("Exit status:\n") + 13));
    int nLines = 0;
    for (std::string sLine; std::getline(help, sLine) && sLine.starts_with("  "); ++nLines) {
        const std::string sNumber = sLine.substr(2, sLine.find(' ', 2) - 2);
        const std::string sWords = sLine.substr(sLine.find_first_not_of(' ', 2 + sNumber.size()));
        EXPECT_NE(sGuide.find("| " + sNumber + " | " + sWords + " |"), std::string::npos) << sLine;
    }
    EXPECT_EQ(nLines, 8);
}

}  // namespace
