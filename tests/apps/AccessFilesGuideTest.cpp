// The examples of docs/access-files.md work as they stand: the commands, and the statements in the
// shell of SQLite with the extension.
#include <cstdlib>

#include "apps/BinaryRun.h"

namespace {

namespace fs = std::filesystem;
using nomira::testing::BinaryRun;
using nomira::testing::ProcessOutcome;
using nomira::testing::Strings;

// The blocks of the document in one language, in their order.
Strings Blocks(const std::string& sLanguage) {
    std::istringstream guide(
        BinaryRun::Bytes(fs::path(NOMIRA_SOURCE_DIR) / "docs/access-files.md"));
    Strings blocks;
    bool bInside = false;
    for (std::string sLine; std::getline(guide, sLine);) {
        if (sLine.starts_with("```")) {
            bInside = sLine == "```" + sLanguage;
            if (bInside) blocks.emplace_back();
        } else if (bInside) {
            blocks.back() += sLine + '\n';
        }
    }
    return blocks;
}

class AccessFilesGuideTest : public ::testing::Test {
  protected:
    AccessFilesGuideTest() {
        run.Write("names.txt", "IN_1 Pump\r\nIN_2 Clamp closed\r\n");
        EXPECT_EQ(Shell("\"$N\" db create names.db && \"$N\" --db names.db import names.txt"), "");
    }
    // What went wrong; empty for nothing.
    std::string Shell(const std::string& sCommand) {
        last = run.Shell("cd '" + run.Root().string() + "' && " + sCommand);
        return last.nStatus == 0 ? "" : sCommand + '\n' + last.sErr;
    }
    bool HasShell() { return Shell("command -v sqlite3").empty(); }
    std::string Sqlite(const std::string& sStatements) {
        run.Write("statements.sql", sStatements);
        // An extension with the sanitizer in it wants that loaded ahead of the shell.
        const std::string sPreload = NOMIRA_PRELOAD;
        const std::string sAhead =
            sPreload.empty() ? "" : "ASAN_OPTIONS=detect_leaks=0 LD_PRELOAD='" + sPreload + "' ";
        return Shell(sAhead + "LD_LIBRARY_PATH='" + NOMIRA_EXTENSION_FOLDER +
                     "' sqlite3 -batch -bail :memory: < statements.sql");
    }

    BinaryRun run;
    ProcessOutcome last;
};

TEST_F(AccessFilesGuideTest, EachCommandRunsAsItStands) {
    for (const std::string& sBlock : Blocks("sh")) {
        EXPECT_EQ(Shell("rm -f names.mdb"), "");
        std::istringstream lines(sBlock);
        for (std::string sLine; std::getline(lines, sLine);) {
            ASSERT_TRUE(sLine.starts_with("nomiractl ")) << sLine;
            // Each makes a file that isn't there yet.
            const bool bToSqlite = sLine.find("--format sqlite") != std::string::npos;
            if (sLine.find("db convert") != std::string::npos) {
                EXPECT_EQ(Shell(bToSqlite ? "rm -f names.db" : "rm -f names.mdb"), "");
            }
            EXPECT_EQ(Shell("\"$N\" " + sLine.substr(std::string("nomiractl ").size())), "");
        }
    }
    ASSERT_EQ(Blocks("sh").size(), 1U);
}

TEST_F(AccessFilesGuideTest, TheFirstStatementsReadAndWriteTheFile) {
    ASSERT_TRUE(HasShell()) << "sqlite3 is missing; script/bootstrap installs it";
    for (const std::string sFormat : {"jet3", "jet4"}) {
        ASSERT_EQ(
            Shell("rm -f names.mdb; \"$N\" db convert names.db names.mdb --format " + sFormat), "");
        ASSERT_EQ(Sqlite(Blocks("sql").at(0)), "");
        EXPECT_EQ(last.sOut, "2\nIN_1|Pump\nIN_2|Clamp closed\nok\n");
        ASSERT_EQ(Shell("\"$N\" --db names.mdb get IN_2"), "");
        EXPECT_EQ(last.sOut, "Clamp open\n");
        EXPECT_EQ(Shell("ls names.mdb*"), "");
        EXPECT_EQ(last.sOut, "names.mdb\n") << "the file is whole and alone";
    }
}

TEST_F(AccessFilesGuideTest, RowsGoFromOneFileIntoTheOther) {
    if (!HasShell()) GTEST_SKIP() << "there is no sqlite3 here";
    run.Write("other.txt", "IN_2 x\r\nIN_3 y\r\nIN_4 z\r\n");
    ASSERT_EQ(Shell("\"$N\" db convert names.db names.mdb --format jet3 &&"
                    " \"$N\" db create other.mdb --format jet4 &&"
                    " \"$N\" --db other.mdb import other.txt"),
              "");
    ASSERT_EQ(Sqlite(Blocks("sql").at(1)), "");
    EXPECT_EQ(last.sOut, "2\n2\n4\n");
    EXPECT_EQ(Shell("\"$N\" db verify names.mdb"), "");
}

TEST_F(AccessFilesGuideTest, AFileThatIsntThereIsTold) {
    if (!HasShell()) GTEST_SKIP() << "there is no sqlite3 here";
    for (const char* sStatement :
         {"SELECT nomira_mdb_attach('none.mdb');", "SELECT nomira_mdb_check('none.mdb');",
          "CREATE VIRTUAL TABLE t USING nomira_mdb('none.mdb','Items');"}) {
        const std::string sFailure = Sqlite(std::string(".load nomira_mdb\n") + sStatement);
        EXPECT_NE(sFailure.find("No such file"), std::string::npos) << sFailure;
    }
}

}  // namespace
