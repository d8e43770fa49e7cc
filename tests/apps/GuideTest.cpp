// The recipes of docs/guide.md work as they stand.
#include "apps/BinaryRun.h"

namespace {

namespace fs = std::filesystem;
using nomira::testing::BinaryRun;
using nomira::testing::ProcessOutcome;

std::vector<std::string> Recipes() {
    std::istringstream guide(BinaryRun::Bytes(fs::path(NOMIRA_SOURCE_DIR) / "docs/guide.md"));
    std::vector<std::string> recipes;
    bool bInside = false;
    for (std::string sLine; std::getline(guide, sLine);) {
        if (sLine.starts_with("```"))
            bInside = sLine == "```sh";
        else if (bInside)
            recipes.push_back(sLine);
    }
    return recipes;
}

// A recipe may find something (1), but must not fail.
TEST(GuideTest, EachRecipeRunsInAFolderAsDescribed) {
    const BinaryRun run;
    run.Write("names.txt", "IN_1 Pumpe\r\nFlagText7 ready\r\nTimerText123 x\r\n");
    fs::create_directory(run.Root() / "C1");
    run.Write("C1/a.src", ";FOLD OUT 7 'Ventil' State\r\n;FOLD WAIT FOR IN 1 'alt' State\r\n");
    const std::string sIn = "cd '" + run.Root().string() + "' && ";
    ASSERT_EQ(run.Shell(sIn + "$N db create names.db && $N --db names.db import names.txt").nStatus,
              0);
    ASSERT_GT(Recipes().size(), 15U);
    for (const std::string& sRecipe : Recipes()) {
        ASSERT_TRUE(sRecipe.starts_with("nomiractl ")) << sRecipe;
        const ProcessOutcome outcome =
            run.Shell(sIn + "\"$N\" " + sRecipe.substr(std::string("nomiractl ").size()));
        EXPECT_LE(outcome.nStatus, 1) << sRecipe << '\n' << outcome.sErr;
        EXPECT_EQ(outcome.sErr, "") << sRecipe;
    }
    for (const char* sFile :
         {"rest.txt", "known.json", "check.sarif", "check.xml", "names-now.txt", "nomiractl.bash"})
        EXPECT_GT(fs::file_size(run.Root() / sFile), 0U) << sFile;
}

TEST(GuideTest, TheExitStatusesAreThoseOfTheHelp) {
    const BinaryRun run;
    const std::string sHelp = run.Start({"--help"}).sOut;
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
