#include <sys/stat.h>

#include <thread>

#include "apps/PrefixTest.h"

namespace {

namespace fs = std::filesystem;
using nomira::companion::ExitCode;
using nomira::testing::CommandRun;
using nomira::testing::Contains;
using nomira::testing::Outcome;
using nomira::testing::PrefixTest;
using nomira::testing::Strings;

constexpr const char* kProgram =
    "DEF a()\r\n;FOLD OUT 7 'old' State=TRUE\r$OUT[7]=TRUE\r\n;FOLD OUT 8 'old' State=TRUE";
constexpr const char* kRewritten =
    "DEF a()\r\n;FOLD OUT 7 'Pump' State=TRUE\r$OUT[7]=TRUE\r\n;FOLD OUT 8 'Valve' State=TRUE";

class NomiractlRewriteTest : public PrefixTest<> {
  protected:
    NomiractlRewriteTest() { Store("OUT_7 Pump\r\nOUT_8 Valve\r\n"); }

    void Store(const std::string& bytes) const { ExpectDone(Import(bytes)); }
    Outcome Rewrite(Strings args) const {
        args.insert(args.begin(), "rewrite");
        return m_run.Run(args);
    }
};

TEST_F(NomiractlRewriteTest, WritesTheNamesAndKeepsEveryLineEnd) {
    const std::string sFile = m_run.Write("a.src", kProgram);
    const Outcome done = Rewrite({sFile});
    EXPECT_EQ(done.exit, ExitCode::Done) << done.err;
    EXPECT_EQ(CommandRun::Bytes(sFile), kRewritten);
    EXPECT_EQ(done.out, "1 programs, 1 changed (2 lines), 0 with errors\n");
}

TEST_F(NomiractlRewriteTest, TakesAllProgramsOfADirectoryAndNothingElse) {
    fs::create_directories(m_run.Root() / "r1/folder.src");
    m_run.Write("r1/a.src", kProgram);
    m_run.Write("r1/B.SRC", kProgram);
    m_run.Write("r1/c.dat", kProgram);
    EXPECT_EQ(Rewrite({(m_run.Root() / "r1").string()}).exit, ExitCode::Done);
    EXPECT_EQ(CommandRun::Bytes(m_run.Root() / "r1/a.src"), kRewritten);
    EXPECT_EQ(CommandRun::Bytes(m_run.Root() / "r1/B.SRC"), kRewritten);
    EXPECT_EQ(CommandRun::Bytes(m_run.Root() / "r1/c.dat"), kProgram);
}

TEST_F(NomiractlRewriteTest, AProgramThatHasItsNamesIsNotWritten) {
    const std::string sFile = m_run.Write("a.src", kRewritten);
    struct stat before {};
    struct stat after {};
    ASSERT_EQ(stat(sFile.c_str(), &before), 0);
    EXPECT_EQ(Rewrite({sFile}).exit, ExitCode::Done);
    ASSERT_EQ(stat(sFile.c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
}

TEST_F(NomiractlRewriteTest, DryRunAndCheckChangeNothing) {
    const std::string sFile = m_run.Write("a.src", kProgram);
    EXPECT_EQ(Rewrite({"--dry-run", sFile}).exit, ExitCode::Done);
    EXPECT_EQ(Rewrite({"--check", sFile}).exit, ExitCode::Differs);
    EXPECT_EQ(CommandRun::Bytes(sFile), kProgram);
    EXPECT_EQ(Rewrite({"--check", m_run.Write("b.src", kRewritten)}).exit, ExitCode::Done);
}

// The first program is a pipe, so that the database breaks between the start and the first name.
TEST_F(NomiractlRewriteTest, NamesAreThoseOfTheStartAlsoIfTheDatabaseBreaksInTheMiddle) {
    const std::string sPipe = (m_run.Root() / "pipe.src").string();
    ASSERT_EQ(mkfifo(sPipe.c_str(), 0600), 0);
    const std::string sFile = m_run.Write("z.src", kProgram);
    std::thread breaker([&] {
        std::ofstream pipe(sPipe, std::ios::binary);
        nomira::testing::ExecuteOn(m_run.Database(), "DROP TABLE Messages");
        pipe << "DEF a()\r\n";
    });
    const Outcome done = Rewrite({sPipe, sFile});
    breaker.join();
    EXPECT_EQ(done.exit, ExitCode::Done) << done.err;
    EXPECT_EQ(CommandRun::Bytes(sFile), kRewritten);
}

TEST_F(NomiractlRewriteTest, ShowsAUnifiedDiff) {
    const std::string sFile = m_run.Write("a.src", "1\r\n2\r\n3\r\n4\r\n;FOLD OUT 7 'x' State\r\n");
    const Outcome shown = Rewrite({"--dry-run", "--diff", sFile});
    EXPECT_EQ(shown.out, "--- a/" + sFile + "\n+++ b/" + sFile +
                             "\n@@ -2,4 +2,4 @@\n 2\r\n 3\r\n 4\r\n-;FOLD OUT 7 'x' State\r\n"
                             "+;FOLD OUT 7 'Pump' State\r\n");
}

TEST_F(NomiractlRewriteTest, DistantChangesGetBlocksOfTheirOwn) {
    std::string sLines = ";FOLD OUT 7 'x' State\r\n";
    for (int n = 2; n <= 20; ++n)
        sLines += std::to_string(n) + "\r\n";
    sLines += ";FOLD OUT 8 'x' State\r\n";
    const Outcome shown = Rewrite({"--dry-run", "--diff", m_run.Write("a.src", sLines)});
    EXPECT_TRUE(Contains(shown.out, "@@ -1,4 +1,4 @@\n")) << shown.out;
    EXPECT_TRUE(Contains(shown.out, "@@ -18,4 +18,4 @@\n")) << shown.out;
}

TEST_F(NomiractlRewriteTest, AHeaderThatWouldStopTheRunIsReportedAndTheOthersGoOn) {
    const std::string sBad =
        m_run.Write("a.src", ";FOLD OUT 7 'old' State\r\n;FOLD OUT my own title\r\n");
    const std::string sPattern = m_run.Write("b.src", ";FOLD OUT 7 'o[ld' State\r\n");
    const std::string sGood = m_run.Write("c.src", kProgram);
    const Outcome done = Rewrite({sBad, sPattern, sGood});
    EXPECT_EQ(done.exit, ExitCode::Refused);
    EXPECT_TRUE(Contains(done.err, sBad + ":2: Invalid procedure call or argument")) << done.err;
    EXPECT_TRUE(Contains(done.err, sPattern + ":1: Invalid pattern string")) << done.err;
    EXPECT_EQ(CommandRun::Bytes(sBad), ";FOLD OUT 7 'old' State\r\n;FOLD OUT my own title\r\n");
    EXPECT_EQ(CommandRun::Bytes(sGood), kRewritten);
}

TEST_F(NomiractlRewriteTest, ARefusedNameIsAWarningWithItsLine) {
    Store("OUT_9 two * three\r\n");
    const std::string sFile = m_run.Write("a.src", "\r\n;FOLD OUT 9 'old' State\r\n");
    const Outcome done = Rewrite({sFile});
    EXPECT_EQ(done.exit, ExitCode::Done);
    EXPECT_TRUE(Contains(done.err, sFile + ":2: warning: Invalid sign in database: ")) << done.err;
    EXPECT_TRUE(Contains(done.err, "OUT_9  two * three")) << done.err;
}

// The box comes first on such a line, then the failure; both belong to it and not to the next.
TEST_F(NomiractlRewriteTest, ARefusedNameOnALineThatStopsTheRunBelongsToThatLine) {
    Store("IN_1 two * three\r\n");
    const std::string sBad =
        m_run.Write("a.src", "\r\n;FOLD WAIT FOR ( IN 1 'old' ) AND ( OUT 7 'o[ld' ) ;%{PE}\r\n");
    const std::string sGood = m_run.Write("b.src", kProgram);
    const Outcome done = Rewrite({sBad, sGood});
    EXPECT_EQ(done.exit, ExitCode::Refused);
    EXPECT_TRUE(Contains(done.err, sBad + ":2: warning: Invalid sign in database: ")) << done.err;
    EXPECT_TRUE(Contains(done.err, sBad + ":2: Invalid pattern string")) << done.err;
    EXPECT_FALSE(Contains(done.err, sGood)) << done.err;
}

TEST_F(NomiractlRewriteTest, ReportsAsJson) {
    const std::string sFile = m_run.Write("a.src", kProgram);
    const auto report = Rewrite({"--json", sFile, (m_run.Root() / "none.src").string()}).Json();
    EXPECT_EQ(report["programs"], 2);
    EXPECT_EQ(report["changed"], 1);
    EXPECT_EQ(report["failed"], 1);
    EXPECT_EQ(report["files"][0]["changed_lines"], (std::vector<int>{2, 4}));
    EXPECT_EQ(report["files"][1]["failure"], "there is no such file");
}

TEST_F(NomiractlRewriteTest, WithoutADatabaseNoProgramLosesItsNames) {
    const std::string sFile = m_run.Write("a.src", kProgram);
    fs::remove(m_run.Database());
    const Outcome done = Rewrite({sFile});
    EXPECT_EQ(done.exit, ExitCode::Database);
    EXPECT_TRUE(Contains(done.err, "nomiractl db create")) << done.err;
    EXPECT_EQ(CommandRun::Bytes(sFile), kProgram);
}

TEST_F(NomiractlRewriteTest, AnEmptyProgramIsFine) {
    EXPECT_EQ(Rewrite({m_run.Write("a.src", "")}).exit, ExitCode::Done);
}

class NomiractlHarvestTest : public NomiractlRewriteTest {
  protected:
    Outcome Harvest(const std::string& bytes, Strings options = {}) const {
        options.insert(options.begin(), {"harvest", m_run.Write("signals.txt", bytes)});
        return m_run.Run(options);
    }
};

TEST_F(NomiractlHarvestTest, StoresTheSignalsBesideWhatIsThere) {
    const Outcome done = Harvest("X = E12 \\ ;Motor links\r\nY = A1 \\ ;Sym;Ventil\r\n");
    EXPECT_EQ(done.exit, ExitCode::Done) << done.err;
    EXPECT_EQ(m_run.Texts(), (Strings{"IO IN_12 Motor links", "IO OUT_1 Ventil", "IO OUT_7 Pump",
                                      "IO OUT_8 Valve"}));
}

TEST_F(NomiractlHarvestTest, OverwriteRemovesTheOtherSignalsFirst) {
    EXPECT_EQ(Harvest("X = E12 \\ ;Motor\r\n", {"--overwrite"}).exit, ExitCode::Done);
    EXPECT_EQ(m_run.Texts(), (Strings{"IO IN_12 Motor"}));
}

TEST_F(NomiractlHarvestTest, SymbolsAreKeptOnRequest) {
    EXPECT_EQ(Harvest("Y = A1 \\ ;Sym;Ventil\r\n", {"--with-symbols"}).exit, ExitCode::Done);
    EXPECT_EQ(m_run.Texts().front(), "IO OUT_1 Sym;Ventil");
}

TEST_F(NomiractlHarvestTest, ADryRunReportsAndChangesNothing) {
    const Outcome done = Harvest("X = E12 \\ ;Motor\r\n", {"--dry-run", "--json", "--overwrite"});
    EXPECT_EQ(done.exit, ExitCode::Done) << done.err;
    EXPECT_EQ(done.Json()["signals"], 1);
    EXPECT_EQ(done.Json()["classes"][0]["added"], 1);
    EXPECT_EQ(done.Json()["classes"][1]["removed"], 2);
    EXPECT_EQ(m_run.Texts(), (Strings{"IO OUT_7 Pump", "IO OUT_8 Valve"}));
}

TEST_F(NomiractlHarvestTest, AFileWithoutSignalsIsRefused) {
    const Outcome done = Harvest("nothing here\r\n", {"--overwrite"});
    EXPECT_EQ(done.exit, ExitCode::Refused);
    EXPECT_TRUE(Contains(done.err, "no line assigns a signal")) << done.err;
    EXPECT_EQ(m_run.Texts().size(), 2U);
}

}  // namespace
