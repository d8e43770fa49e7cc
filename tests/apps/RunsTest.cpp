// Runs on programs, broken off at each of their steps.
#include "apps/nomiractl/Runs.h"

#include <signal.h>
#include <sys/stat.h>

#include <sstream>

#include "apps/nomiractl/Interrupt.h"
#include "testing/TemporaryFolder.h"
#include "testing/TextPrinting.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;
using testing::TemporaryFolder;

constexpr int kPrograms = 5;

// Programs whose second line grows, shrinks or keeps its length, and the plan for that.
class RunsTest : public ::testing::TestWithParam<AtomicWay> {
  protected:
    RunsTest() {
        m_options.prefix = m_folder / "prefix";
        for (int n = 0; n < kPrograms; ++n) {
            const std::string sOldLine = "old name " + std::to_string(n);
            const std::string sNewLine = "new" + std::string(static_cast<std::size_t>(4 * n), '!');
            m_folder.Put(Name(n), "first\r\n" + sOldLine + "\r\nlast" + std::to_string(n));
            ProgramChange change{m_folder / Name(n), FingerprintOf(Bytes(n)), {}, {}, {}};
            change.pieces.push_back({2, 7, sOldLine, sNewLine});
            m_old.push_back(Bytes(n));
            m_new.push_back("first\r\n" + sNewLine + "\r\nlast" + std::to_string(n));
            change.after = FingerprintOf(m_new.back());
            m_plan.programs.push_back(change);
        }
        m_plan.command = {"rewrite", "r1"};
    }

    static std::string Name(int n) { return "r1/" + std::to_string(n) + ".src"; }
    std::string Bytes(int n) const { return m_folder.Bytes(Name(n)); }
    std::vector<std::string> All() const {
        std::vector<std::string> all;
        for (int n = 0; n < kPrograms; ++n)
            all.push_back(Bytes(n));
        return all;
    }
    std::vector<std::string> FilesIn(const fs::path& folder) const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }
    std::size_t CountPrograms() const { return FilesIn(m_folder / "r1").size(); }
    fs::path JournalPath() const { return m_folder / "prefix/journal"; }

    // The run up to the moment when its first `nWritten` programs are written.
    void BreakOff(int nWritten, AtomicWay way) {
        const Journal journal = OpenJournal(m_options, m_err);
        const int nRun = journal.Next();
        journal.OldBytesOf(nRun).Keep(m_plan.programs);
        journal.Begin(nRun, m_plan);
        if (way == AtomicWay::Rename)
            m_folder.Put("r1/.nomiractl-" + std::to_string(nRun) + "-4", "half a fi");
        for (int n = 0; n < nWritten; ++n)
            m_folder.Put(Name(n), m_new[static_cast<std::size_t>(n)]);
    }

    TemporaryFolder m_folder;
    Options m_options;
    Plan m_plan;
    std::vector<std::string> m_old, m_new;
    std::ostringstream m_err;
};

INSTANTIATE_TEST_SUITE_P(BothWays, RunsTest,
                         ::testing::Values(AtomicWay::InPlace, AtomicWay::Rename));

TEST_P(RunsTest, ChangesAllProgramsAndKeepsARecordAlone) {
    RunOnPrograms(m_plan, OpenJournal(m_options, m_err), GetParam());
    EXPECT_EQ(All(), m_new);
    EXPECT_EQ(CountPrograms(), static_cast<std::size_t>(kPrograms));
    EXPECT_EQ(FilesIn(JournalPath()), (std::vector<std::string>{"000001.run", "lock"}));
}

TEST_P(RunsTest, RightsStay) {
    fs::permissions(m_folder / Name(0), fs::perms{0640});
    RunOnPrograms(m_plan, OpenJournal(m_options, m_err), GetParam());
    EXPECT_EQ(fs::status(m_folder / Name(0)).permissions(), fs::perms{0640});
}

TEST_F(RunsTest, InPlaceKeepsInodeAndLinks) {
    fs::create_hard_link(m_folder / Name(0), m_folder / "hard.src");
    fs::create_symlink(m_folder / Name(1), m_folder / "soft.src");
    m_plan.programs[1].file = m_folder / "soft.src";
    RunOnPrograms(m_plan, OpenJournal(m_options, m_err), AtomicWay::InPlace);
    EXPECT_EQ(All(), m_new);
    EXPECT_EQ(m_folder.Bytes("hard.src"), m_new[0]);
    EXPECT_TRUE(fs::is_symlink(m_folder / "soft.src"));
}

TEST_P(RunsTest, OneFileByTwoNamesIsChangedOnce) {
    fs::create_hard_link(m_folder / Name(0), m_folder / "hard.src");
    m_plan.programs.push_back(m_plan.programs[0]);
    m_plan.programs.back().file = m_folder / "hard.src";
    RunOnPrograms(m_plan, OpenJournal(m_options, m_err), GetParam());
    EXPECT_EQ(All(), m_new);
    EXPECT_EQ(m_folder.Bytes("hard.src"), m_new[0]);
}

TEST_P(RunsTest, AProgramThatHasChangedMeanwhileStopsTheWholeRun) {
    m_folder.Put(Name(4), "somebody's own");
    m_old[4] = "somebody's own";
    EXPECT_THROW(RunOnPrograms(m_plan, OpenJournal(m_options, m_err), GetParam()), Refusal);
    EXPECT_EQ(All(), m_old);
    EXPECT_EQ(FilesIn(JournalPath()), std::vector<std::string>{"lock"});
}

TEST_P(RunsTest, AnInterruptLeavesEverythingAsItWas) {
    const InterruptWatch watch;
    const Journal journal = OpenJournal(m_options, m_err);
    raise(SIGTERM);
    EXPECT_THROW(RunOnPrograms(m_plan, journal, GetParam()), Interruption);
    EXPECT_EQ(All(), m_old);
    EXPECT_EQ(CountPrograms(), static_cast<std::size_t>(kPrograms));
    EXPECT_EQ(FilesIn(JournalPath()), std::vector<std::string>{"lock"});
}

TEST_F(RunsTest, NothingIsLeftBesideAProgramThatIsGone) {
    BreakOff(0, AtomicWay::Rename);
    fs::remove(m_folder / Name(4));
    OpenJournal(m_options, m_err);
    EXPECT_EQ(CountPrograms(), static_cast<std::size_t>(kPrograms) - 1);
}

// The new bytes of the last program don't come out as planned, when the others are written.
TEST_P(RunsTest, AFailureInTheMiddlePutsTheFirstOnesBack) {
    struct stat before {};
    struct stat after {};
    ASSERT_EQ(stat((m_folder / Name(0)).c_str(), &before), 0);
    m_plan.programs[4].after.nHash ^= 1;
    EXPECT_THROW(RunOnPrograms(m_plan, OpenJournal(m_options, m_err), GetParam()), Refusal);
    EXPECT_EQ(All(), m_old);
    EXPECT_EQ(CountPrograms(), static_cast<std::size_t>(kPrograms));
    EXPECT_EQ(FilesIn(JournalPath()), std::vector<std::string>{"lock"});
    ASSERT_EQ(stat((m_folder / Name(0)).c_str(), &after), 0);
    EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
}

TEST_P(RunsTest, ARunThatWasBrokenOffIsTakenBackAtTheNextStart) {
    for (int nWritten = 0; nWritten < kPrograms; ++nWritten) {
        BreakOff(nWritten, GetParam());
        m_err.str({});
        OpenJournal(m_options, m_err);
        EXPECT_EQ(All(), m_old) << nWritten;
        EXPECT_EQ(CountPrograms(), static_cast<std::size_t>(kPrograms));
        EXPECT_EQ(FilesIn(JournalPath()), std::vector<std::string>{"lock"});
        EXPECT_EQ(m_err.str(),
                  "nomiractl: \"rewrite r1\" was broken off before its end; its programs are as"
                  " they were before it\n");
    }
}

TEST_P(RunsTest, ARunThatWasBrokenOffBehindItsLastWriteIsFinished) {
    BreakOff(kPrograms, GetParam());
    m_err.str({});
    OpenJournal(m_options, m_err);
    EXPECT_EQ(All(), m_new);
    EXPECT_EQ(FilesIn(JournalPath()), (std::vector<std::string>{"000001.run", "lock"}));
    EXPECT_NE(m_err.str().find("counts as finished"), std::string::npos) << m_err.str();
}

TEST_F(RunsTest, HalfWrittenBytesAreTakenBackToo) {
    BreakOff(1, AtomicWay::InPlace);
    std::ofstream(m_folder / Name(1), std::ios::binary | std::ios::in) << "first\r\nnew!!";
    OpenJournal(m_options, m_err);
    EXPECT_EQ(All(), m_old);
}

TEST_F(RunsTest, AFileThatSomebodyHasPutThereSinceStaysAndIsTold) {
    BreakOff(2, AtomicWay::InPlace);
    m_folder.Put("other", "somebody's own");
    fs::rename(m_folder / "other", m_folder / Name(0));
    fs::remove(m_folder / Name(1));
    m_err.str({});
    OpenJournal(m_options, m_err);
    EXPECT_EQ(Bytes(0), "somebody's own");
    EXPECT_FALSE(fs::exists(m_folder / Name(1)));
    EXPECT_NE(m_err.str().find("0.src: is another file now"), std::string::npos) << m_err.str();
    EXPECT_NE(m_err.str().find("1.src: is gone"), std::string::npos) << m_err.str();
    EXPECT_TRUE(OpenJournal(m_options, m_err).Unfinished().empty());
}

TEST_F(RunsTest, WhatACommandHasLeftBeforeItBeganIsCleared) {
    m_folder.Put("prefix/journal/000001.old", "bytes");
    m_folder.Put("prefix/journal/000001.new", "{");
    OpenJournal(m_options, m_err);
    EXPECT_EQ(FilesIn(JournalPath()), std::vector<std::string>{"lock"});
    EXPECT_EQ(m_err.str(), "");
}

TEST_F(RunsTest, ASecondCommandIsKeptOut) {
    const Journal journal = OpenJournal(m_options, m_err);
    try {
        OpenJournal(m_options, m_err);
        FAIL();
    } catch (const Refusal& refusal) {
        EXPECT_EQ(refusal.Exit(), ExitCode::Database);
    }
}

TEST_F(RunsTest, OnlyTheLastRunsAreKept) {
    const Journal journal = OpenJournal(m_options, m_err);
    for (std::size_t n = 0; n < kMostRuns + 3; ++n) {
        const int nRun = journal.Next();
        journal.Begin(nRun, {});
        journal.Finish(nRun);
    }
    EXPECT_EQ(journal.Finished().size(), kMostRuns);
    EXPECT_EQ(journal.Finished().front(), 4);
}

TEST(InterruptTest, TheSecondSignalEndsTheProcessAsEver) {
    const auto twice = [] {
        const InterruptWatch watch;
        raise(SIGINT);
        raise(SIGINT);
    };
    EXPECT_EXIT(twice(), ::testing::KilledBySignal(SIGINT), "");
}

TEST(InterruptTest, ASignalBehindTheWorkChangesNothing) {
    const auto work = [] {
        { const InterruptWatch watch; }
        raise(SIGINT);
        _exit(7);
    };
    EXPECT_EXIT(work(), ::testing::ExitedWithCode(7), "");
}

TEST(InterruptTest, AnIgnoredSignalStaysIgnored) {
    auto* const before = signal(SIGHUP, SIG_IGN);
    {
        const InterruptWatch watch;
        raise(SIGHUP);
        EXPECT_NO_THROW(RequireNoInterrupt());
    }
    signal(SIGHUP, before);
}

TEST(InterruptTest, ASignalIsForgottenWithItsWatch) {
    {
        const InterruptWatch watch;
        raise(SIGINT);
        EXPECT_THROW(RequireNoInterrupt(), Interruption);
    }
    EXPECT_NO_THROW(RequireNoInterrupt());
}

}  // namespace
}  // namespace nomira::companion
