// log and undo, and interrupts of the real program.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>

#include <thread>

#include "apps/PrefixTest.h"
#include "testing/Random.h"
#include "testing/RunProcess.h"

namespace {

namespace fs = std::filesystem;
using nomira::companion::ExitCode;
using nomira::testing::CommandRun;
using nomira::testing::Contains;
using nomira::testing::Outcome;
using nomira::testing::PrefixTest;
using nomira::testing::QueryOn;
using nomira::testing::Random;
using nomira::testing::Strings;

class NomiractlUndoTest : public PrefixTest<> {
  protected:
    // Every row of both tables.
    std::vector<Strings> Rows() const {
        auto rows = QueryOn(m_run.Database(), "SELECT * FROM Items ORDER BY Key_id");
        for (auto& row : QueryOn(m_run.Database(), "SELECT * FROM Messages ORDER BY 1, 2, 3"))
            rows.push_back(row);
        return rows;
    }
    Outcome Import(const std::string& bytes, const Strings& options = {}) const {
        Outcome done = PrefixTest::Import(bytes, options);
        ExpectDone(done);
        return done;
    }
};

TEST_F(NomiractlUndoTest, TheLogListsTheRunsWithTheirCounts) {
    EXPECT_EQ(m_run.Run({"log"}).out, "no run has changed anything yet\n");
    Import("IN_1 a\r\nIN_2 b\r\n");
    Import("IN_1 a\r\nIN_2 c\r\n");
    const auto runs = m_run.Run({"log", "--json"}).Json()["runs"];
    ASSERT_EQ(runs.size(), 2U);
    EXPECT_EQ(runs[0]["added"], 2);
    EXPECT_EQ(runs[1]["changed"], 1);
    EXPECT_EQ(runs[1]["run"], 2);
    const Outcome log = m_run.Run({"log"});
    EXPECT_TRUE(Contains(log.out, "in.txt: 2 added\n")) << log.out;
}

TEST_F(NomiractlUndoTest, ARunThatChangesNothingIsNone) {
    Import("IN_1 a\r\n");
    Import("IN_1 a\r\n");
    EXPECT_EQ(m_run.Run({"log", "--json"}).Json()["runs"].size(), 1U);
}

TEST_F(NomiractlUndoTest, UndoGivesEveryRowBackWithItsNumberAndItsOtherLanguages) {
    Import("IN_1 a\r\nIN_2 b\r\nOUT_1 c\r\n");
    nomira::testing::ExecuteOn(m_run.Database(),
                               "INSERT INTO Messages VALUES(1,7,'other language'),(1,99,'twice');"
                               "INSERT INTO Items VALUES(50,NULL,'IN_9'),(51,'IO','IN_77');"
                               "INSERT INTO Messages VALUES(50,99,NULL)");
    const auto before = Rows();
    Import("IN_1 x\r\nIN_5 new\r\n", {"--overwrite"});
    EXPECT_NE(Rows(), before);
    ExpectDone(m_run.Run({"undo"}));
    EXPECT_EQ(Rows(), before);
}

// Nothing declares a name to be one: an import gives all items of it the text, and of these two
// only the first one changes.
TEST_F(NomiractlUndoTest, UndoLeavesATwinAloneThatHadTheTextAlready) {
    Import("IN_1 a\r\n");
    nomira::testing::ExecuteOn(m_run.Database(),
                               "INSERT INTO Items VALUES(50,'IO','IN_1');"
                               "INSERT INTO Messages VALUES(50,99,'b')");
    const auto before = Rows();
    Import("IN_1 b\r\n");
    EXPECT_NE(Rows(), before);
    ExpectDone(m_run.Run({"undo"}));
    EXPECT_EQ(Rows(), before);
}

TEST_F(NomiractlUndoTest, OneUndoAfterAnotherGoesBackInTime) {
    const auto empty = Rows();
    Import("IN_1 a\r\n");
    const auto first = Rows();
    Import("IN_1 b\r\n");
    ExpectDone(m_run.Run({"undo"}));
    EXPECT_EQ(Rows(), first);
    ExpectDone(m_run.Run({"undo"}));
    EXPECT_EQ(Rows(), empty);
    ExpectRefused(m_run.Run({"undo"}), "there is no run to take back");
}

TEST_F(NomiractlUndoTest, AnUndoCanBeTakenBackItself) {
    Import("IN_1 a\r\n");
    const auto rows = Rows();
    ExpectDone(m_run.Run({"undo"}));
    ExpectRefused(m_run.Run({"undo", "1"}), "run 1 is taken back already, by run 2");
    ExpectDone(m_run.Run({"undo", "2"}));
    EXPECT_EQ(Rows(), rows);
    ExpectDone(m_run.Run({"undo"}));
    EXPECT_TRUE(Contains(m_run.Run({"log"}).out, "1 added  (taken back by 4)"));
}

TEST_F(NomiractlUndoTest, AnOlderRunIsTakenBackWhereLaterOnesLeftItAlone) {
    Import("IN_1 a\r\n");
    Import("IN_2 b\r\n");
    ExpectDone(m_run.Run({"undo", "1"}));
    EXPECT_EQ(m_run.Texts(), (Strings{"IO IN_2 b"}));
    ExpectRefused(m_run.Run({"undo", "9"}), "there is no run 9");
}

TEST_F(NomiractlUndoTest, WhatOthersHaveChangedSinceIsNotTakenBack) {
    Import("IN_1 a\r\nIN_2 b\r\n");
    nomira::testing::ExecuteOn(m_run.Database(), "UPDATE Messages SET String='x' WHERE Key_id=2");
    const auto rows = Rows();
    ExpectRefused(m_run.Run({"undo"}), "has been changed by others");
    EXPECT_EQ(Rows(), rows);
}

TEST_F(NomiractlUndoTest, ANameThatIsThereAgainIsNotMadeTwice) {
    Import("IN_1 a\r\nIN_2 b\r\n");
    Import("IN_2 b\r\n", {"--overwrite"});
    nomira::testing::ExecuteOn(m_run.Database(), "INSERT INTO Items VALUES(70,'IO','IN_1')");
    const auto rows = Rows();
    ExpectRefused(m_run.Run({"undo"}), "has been changed by others");
    EXPECT_EQ(Rows(), rows);
}

// As a kill leaves it, behind the commit and ahead of it.
TEST_F(NomiractlUndoTest, ADatabaseRunThatWasBrokenOffIsFinishedOrForgotten) {
    Import("IN_1 a\r\n");
    const fs::path journal = m_run.Prefix() / "journal";
    fs::rename(journal / "000001.run", journal / "000001.open");
    const Outcome next = m_run.Run({"undo", "--dry-run"});
    ExpectDone(next);
    EXPECT_TRUE(Contains(next.err, "counts as finished")) << next.err;
    EXPECT_TRUE(fs::exists(journal / "000001.run"));

    fs::rename(journal / "000001.run", journal / "000001.open");
    nomira::testing::ExecuteOn(m_run.Database(), "DELETE FROM Messages; DELETE FROM Items");
    const Outcome forgotten = m_run.Run({"undo", "--dry-run"});
    ExpectRefused(forgotten, "the database is as it was before it");
    EXPECT_FALSE(fs::exists(journal / "000001.open"));
    EXPECT_FALSE(fs::exists(journal / "000001.run"));
}

TEST_F(NomiractlUndoTest, ADryRunOfUndoShowsAndChangesNothing) {
    Import("IN_1 a\r\n");
    const Outcome shown = m_run.Run({"undo", "--dry-run", "--diff"});
    EXPECT_TRUE(Contains(shown.out, "-IN_1 a\nwould take back run 1")) << shown.out;
    EXPECT_EQ(m_run.Texts().size(), 1U);
    EXPECT_EQ(m_run.Run({"undo", "--dry-run", "--json"}).Json()["removed"], 1);
}

TEST_F(NomiractlUndoTest, ADryRunOfUndoIsRefusedAsTheUndoWouldBe) {
    Import("IN_1 a\r\nOUT_7 Pump\r\n");
    Import("IN_1 b\r\n");
    ExpectRefused(m_run.Run({"undo", "1", "--dry-run"}), "has been changed by others");
    const std::string sFile = m_run.Write("a.src", ";FOLD OUT 7 'old' State\r\n");
    ExpectDone(m_run.Run({"rewrite", sFile}));
    ExpectDone(m_run.Run({"undo", "--dry-run"}));
    m_run.Write("a.src", "edited");
    ExpectRefused(m_run.Run({"undo", "--dry-run"}), "a.src: has changed meanwhile",
                  ExitCode::Files);
    EXPECT_EQ(CommandRun::Bytes(sFile), "edited");
}

TEST_F(NomiractlUndoTest, TheLogShowsCommandsAsAShellTakesThem) {
    ExpectDone(m_run.Run({"set", "IN_1", "it's here"}));
    ExpectDone(m_run.Run({"set", "IN_1", ""}));
    const std::string sLog = m_run.Run({"log"}).out;
    EXPECT_TRUE(Contains(sLog, R"( set IN_1 'it'\''s here': 1 added)")) << sLog;
    EXPECT_TRUE(Contains(sLog, " set IN_1 '': 1 changed")) << sLog;
}

// Lines with and without names, of any bytes and line ends.
std::string RandomProgram(Random& random) {
    static const Strings kEnds{"\r\n", "\r", "\r\n", "\n", ""};
    std::string sProgram;
    for (std::size_t n = random.UpTo(12); n > 0; --n) {
        const std::string sNumber = std::to_string(random.UpTo(9));
        const std::string sOld(random.UpTo(20), static_cast<char>('a' + random.UpTo(25)));
        if (random.UpTo(2) > 0)
            sProgram += ";FOLD OUT " + sNumber + " '" + sOld + "' State=TRUE";
        else
            for (std::size_t i = random.UpTo(30); i > 0; --i)
                sProgram += static_cast<char>(random.UpTo(255));
        sProgram += kEnds[random.UpTo(kEnds.size() - 1)];
    }
    return sProgram;
}

class UndoneRewriteTest : public NomiractlUndoTest,
                          public ::testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(BothWays, UndoneRewriteTest, ::testing::Values("in-place", "rename"));

TEST_P(UndoneRewriteTest, EveryByteComesBack) {
    Random random;
    SCOPED_TRACE(random.Seed());
    std::string sNames;
    for (int n = 0; n < 10; ++n)
        sNames +=
            "OUT_" + std::to_string(n) + " Name " + std::string(random.UpTo(20), 'x') + "\r\n";
    Import(sNames);
    fs::create_directories(m_run.Root() / "r1");
    std::vector<std::string> before;
    for (int n = 0; n < 60; ++n) {
        before.push_back(RandomProgram(random));
        m_run.Write("r1/" + std::to_string(n) + ".src", before.back());
    }
    const auto bytes = [&] {
        std::vector<std::string> all;
        for (int n = 0; n < 60; ++n)
            all.push_back(CommandRun::Bytes(m_run.Root() / "r1" / (std::to_string(n) + ".src")));
        return all;
    };
    m_run.Run({"rewrite", "--atomic", GetParam(), (m_run.Root() / "r1").string()});
    EXPECT_NE(bytes(), before);
    ExpectDone(m_run.Run({"undo", "--atomic", GetParam()}));
    EXPECT_EQ(bytes(), before);
}

class NomiractlUndoneProgramTest : public NomiractlUndoTest {
  protected:
    NomiractlUndoneProgramTest() {
        Import("OUT_7 Pump\r\n");
        m_sFile = m_run.Write("a.src", kProgram);
        ExpectDone(m_run.Run({"rewrite", m_sFile}));
    }
    static constexpr const char* kProgram = ";FOLD OUT 7 'old' State\r\n";
    std::string m_sFile;
};

TEST_F(NomiractlUndoneProgramTest, AProgramThatWasEditedSinceIsNotTakenBack) {
    m_run.Write("a.src", ";FOLD OUT 7 'Pump' State\r\nmore\r\n");
    const Outcome undone = m_run.Run({"undo"});
    EXPECT_EQ(undone.exit, ExitCode::Files);
    EXPECT_TRUE(Contains(undone.err, "a.src: has changed meanwhile")) << undone.err;
    EXPECT_EQ(CommandRun::Bytes(m_sFile), ";FOLD OUT 7 'Pump' State\r\nmore\r\n");
}

TEST_F(NomiractlUndoneProgramTest, ANewFileOfTheSameBytesIsTakenBackAllTheSame) {
    fs::copy_file(m_sFile, m_run.Root() / "copy");
    fs::rename(m_run.Root() / "copy", m_sFile);
    const Outcome undone = m_run.Run({"undo", "--diff"});
    ExpectDone(undone);
    EXPECT_TRUE(Contains(undone.out, "+;FOLD OUT 7 'old' State")) << undone.out;
    EXPECT_EQ(CommandRun::Bytes(m_sFile), kProgram);
}

// ---- Interrupts, on the real program ----

class NomiractlInterruptTest : public NomiractlUndoTest {
  protected:
    // Starts a rewrite of these files, interrupts it while it waits for the pipe's bytes, and gives
    // its end.
    nomira::testing::ProcessOutcome InterruptedRewrite(const std::string& sPipe,
                                                       const Strings& files, int nSignal) const {
        nomira::testing::ProcessOutcome outcome;
        std::thread child([&] {
            outcome = nomira::testing::RunProcess(
                "/bin/sh",
                {"-c", "echo $$ >\"$PID\"; exec \"$0\" \"$@\"", NOMIRACTL_PROGRAM, "--prefix",
                 m_run.Prefix().string(), "rewrite", files[0], files[1], files[2]},
                {{"PID", (m_run.Root() / "pid").string()}});
        });
        // Opens only once the program reads.
        std::ofstream pipe(sPipe, std::ios::binary);
        kill(std::stoi(CommandRun::Bytes(m_run.Root() / "pid")), nSignal);
        pipe << "nothing";
        pipe.close();
        child.join();
        return outcome;
    }
};

TEST_F(NomiractlInterruptTest, LeavesEveryProgramAsItWasAndSaysSo) {
    Import("OUT_7 Pump\r\n");
    const std::string sProgram = ";FOLD OUT 7 'old' State\r\n";
    const std::string sFirst = m_run.Write("a.src", sProgram);
    const std::string sLast = m_run.Write("z.src", sProgram);
    const std::string sPipe = (m_run.Root() / "pipe.src").string();
    ASSERT_EQ(mkfifo(sPipe.c_str(), 0600), 0);
    for (const int nSignal : {SIGINT, SIGTERM, SIGHUP}) {
        const auto outcome = InterruptedRewrite(sPipe, {sFirst, sPipe, sLast}, nSignal);
        EXPECT_EQ(outcome.nStatus, 130);
        EXPECT_EQ(outcome.sErr, "nomiractl: interrupted; nothing was changed\n");
        EXPECT_EQ(CommandRun::Bytes(sFirst), sProgram);
        EXPECT_EQ(CommandRun::Bytes(sLast), sProgram);
    }
    EXPECT_EQ(m_run.Run({"log", "--json"}).Json()["runs"].size(), 1U);
}

}  // namespace
