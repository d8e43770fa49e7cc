// Kills and interrupts the real companion at random moments of a rewrite and of an import, and
// takes its disk away: behind the next start everything is as before or as it should be.
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <array>
#include <chrono>
#include <random>
#include <thread>

#include "apps/CommandRun.h"
#include "testing/Random.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using nomira::companion::ExitCode;
using nomira::testing::CommandRun;
using nomira::testing::Outcome;
using nomira::testing::QueryOn;
using nomira::testing::Random;
using nomira::testing::Strings;
using Clock = std::chrono::steady_clock;

constexpr int kRounds = 100;  // of each job
constexpr int kPrograms = 500;
constexpr int kNames = 400;

std::string NamesOf(const std::string& sText) {
    std::string bytes;
    for (int n = 0; n < kNames; ++n)
        bytes += "OUT_" + std::to_string(n) + " " + sText + std::to_string(n) + "\r\n";
    return bytes;
}

std::string ProgramOf(const std::string& sText, int n) {
    return ";FOLD OUT " + std::to_string(n % kNames) + " '" + sText + std::to_string(n % kNames) +
           "' State\r\n";
}

// A kill asks nothing of the disk, and a disk with other work on it would take minutes.
struct InMemory {
    InMemory() {
        if (fs::is_directory("/dev/shm")) setenv("TMPDIR", "/dev/shm", 1);
    }
};

class CompanionKillTest : public ::testing::Test {
  protected:
    CompanionKillTest() {
        m_run.CreateDatabase();
        m_sOld = m_run.Write("old.txt", NamesOf("old"));
        m_sNew = m_run.Write("new.txt", NamesOf("brand new "));
        EXPECT_EQ(m_run.Run({"import", m_sNew}).exit, ExitCode::Done);
        fs::create_directories(Programs());
    }

    fs::path Programs() const { return m_run.Root() / "r1"; }
    fs::path Journal() const { return m_run.Prefix() / "journal"; }

    void RenewPrograms() const {
        for (int n = 0; n < kPrograms; ++n)
            m_run.Write("r1/" + std::to_string(n) + ".src", ProgramOf("old", n));
    }
    void ExpectPrograms(const std::string& sText) const {
        int nOthers = 0;
        for (int n = 0; n < kPrograms; ++n)
            if (CommandRun::Bytes(Programs() / (std::to_string(n) + ".src")) != ProgramOf(sText, n))
                ++nOthers;
        EXPECT_EQ(nOthers, 0) << "programs are not all " << sText;
        EXPECT_EQ(CountFiles(Programs()), kPrograms);
    }
    static std::ptrdiff_t CountFiles(const fs::path& folder) {
        return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
    }
    // Nothing in the journal but finished runs and the lock.
    void ExpectNoLitter() const {
        for (const auto& entry : fs::directory_iterator(Journal()))
            EXPECT_TRUE(entry.path().extension() == ".run" || entry.path().filename() == "lock")
                << entry.path();
        for (const auto& entry : fs::directory_iterator(m_run.Database().parent_path()))
            EXPECT_EQ(entry.path(), m_run.Database());
    }

    pid_t Start(Strings args) const {
        args.insert(args.begin(),
                    {NOMIRACTL_PROGRAM, "--quiet", "--prefix", m_run.Prefix().string()});
        std::vector<char*> argv;
        for (std::string& sArgument : args)
            argv.push_back(sArgument.data());
        argv.push_back(nullptr);
        posix_spawn_file_actions_t quiet;
        posix_spawn_file_actions_init(&quiet);
        posix_spawn_file_actions_addopen(&quiet, 2, "/dev/null", 1, 0);
        pid_t pid = 0;
        EXPECT_EQ(posix_spawn(&pid, NOMIRACTL_PROGRAM, &quiet, nullptr, argv.data(), environ), 0);
        posix_spawn_file_actions_destroy(&quiet);
        return pid;
    }
    static int WaitFor(pid_t pid) {
        int nStatus = 0;
        waitpid(pid, &nStatus, 0);
        return nStatus;
    }
    std::chrono::microseconds TimeOf(const Strings& args) const {
        const auto begin = Clock::now();
        EXPECT_EQ(WaitFor(Start(args)), 0);
        return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin);
    }
    // Starts the command and sends it the signal at a moment up to `within`.
    int Signalled(const Strings& args, int nSignal, std::chrono::microseconds within,
                  Random& random) const {
        const pid_t pid = Start(args);
        const auto nMoment = random.UpTo(static_cast<std::size_t>(within.count()));
        std::this_thread::sleep_for(std::chrono::microseconds(nMoment));
        kill(pid, nSignal);
        return WaitFor(pid);
    }
    std::string FirstText() const {
        return QueryOn(m_run.Database(), "SELECT String FROM Messages ORDER BY Key_id").at(0).at(0);
    }
    void ExpectTexts(const std::string& sText) const {
        const auto rows = QueryOn(m_run.Database(),
                                  "SELECT String FROM Messages WHERE String LIKE '" + sText + "%'");
        EXPECT_EQ(rows.size(), static_cast<std::size_t>(kNames));
    }

    InMemory m_memory;  // ahead of the folder that is made there
    CommandRun m_run;
    std::string m_sOld, m_sNew;
};

class KilledRewriteTest : public CompanionKillTest,
                          public ::testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(BothWays, KilledRewriteTest, ::testing::Values("in-place", "rename"));

TEST_P(KilledRewriteTest, ProgramsAreAllOldOrAllNewBehindTheNextStart) {
    Random random;
    SCOPED_TRACE(random.Seed());
    const Strings rewrite{"rewrite", "--atomic", GetParam(), Programs().string()};
    RenewPrograms();
    const auto whole = TimeOf(rewrite);
    ExpectPrograms("brand new ");
    int nKilled = 0;
    int nTold = 0;
    for (int n = 0; n < kRounds / 2 && !HasFailure(); ++n) {
        RenewPrograms();
        if (WIFSIGNALED(Signalled(rewrite, SIGKILL, whole, random))) ++nKilled;
        const Outcome next = m_run.Run({"undo", "--dry-run"});
        if (next.err.find("broken off") != std::string::npos) ++nTold;
        const bool bOld = CommandRun::Bytes(Programs() / "0.src") == ProgramOf("old", 0);
        ExpectPrograms(bOld ? "old" : "brand new ");
        ExpectNoLitter();
    }
    EXPECT_GT(nKilled, kRounds / 8);
    RecordProperty("killed", nKilled);
    RecordProperty("recovered", nTold);
}

TEST_F(CompanionKillTest, TheDatabaseIsAllOldOrAllNewBehindTheNextStart) {
    Random random;
    SCOPED_TRACE(random.Seed());
    ASSERT_EQ(m_run.Run({"import", m_sOld}).exit, ExitCode::Done);
    const auto whole = TimeOf({"import", m_sNew});
    int nKilled = 0;
    for (int n = 0; n < kRounds && !HasFailure(); ++n) {
        ASSERT_EQ(m_run.Run({"import", m_sOld}).exit, ExitCode::Done);
        if (WIFSIGNALED(Signalled({"import", m_sNew}, SIGKILL, whole, random))) ++nKilled;
        ASSERT_EQ(m_run.Run({"set", "ANIN_1", "next"}).exit, ExitCode::Done);
        ASSERT_EQ(m_run.Run({"db", "verify"}).exit, ExitCode::Done);
        ExpectTexts(FirstText() == "old0" ? "old" : "brand new ");
        ExpectNoLitter();
    }
    EXPECT_GT(nKilled, kRounds / 4);
}

TEST_F(CompanionKillTest, AnInterruptedRewriteIsDoneOrNotDoneAndItsStatusTells) {
    Random random;
    SCOPED_TRACE(random.Seed());
    const Strings rewrite{"rewrite", Programs().string()};
    RenewPrograms();
    const auto whole = TimeOf(rewrite);
    for (int n = 0; n < 20 && !HasFailure(); ++n) {
        RenewPrograms();
        const int nStatus = Signalled(rewrite, SIGINT, whole, random);
        const bool bDone = WIFEXITED(nStatus) && WEXITSTATUS(nStatus) == 0;
        // Ahead of its first line the program has not been there to say anything.
        EXPECT_TRUE(bDone || WIFSIGNALED(nStatus) || WEXITSTATUS(nStatus) == 130) << nStatus;
        ExpectPrograms(bDone ? "brand new " : "old");
        ExpectNoLitter();
    }
}

TEST_F(CompanionKillTest, AnInterruptedExportLeavesTheOldFileOrTheNewOne) {
    Random random;
    SCOPED_TRACE(random.Seed());
    fs::create_directory(m_run.Root() / "out");
    const std::string sFile = m_run.Write("out/names.txt", "old");
    const Strings exporting{"export", sFile};
    const auto whole = TimeOf(exporting);
    const std::string sNew = CommandRun::Bytes(sFile);
    constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};
    for (int n = 0; n < 30 && !HasFailure(); ++n) {
        m_run.Write("out/names.txt", "old");
        const int nStatus = Signalled(exporting, kSignals.at(n % 3), whole, random);
        const bool bDone = WIFEXITED(nStatus) && WEXITSTATUS(nStatus) == 0;
        EXPECT_TRUE(bDone || WIFSIGNALED(nStatus) || WEXITSTATUS(nStatus) == 130) << nStatus;
        const std::string bytes = CommandRun::Bytes(sFile);
        EXPECT_TRUE(bytes == sNew || (bytes == "old" && !bDone)) << bytes.size();
        EXPECT_EQ(CountFiles(m_run.Root() / "out"), 1);
    }
}

// ---- A disk that is full: no file may grow beyond a size ----

class FullDiskTest : public CompanionKillTest {
  protected:
    // Runs the companion with no room for files of more than so many bytes.
    int RunWithin(rlim_t nBytes, const Strings& args) const {
        const pid_t pid = fork();
        if (pid == 0) {
            const rlimit limit{nBytes, nBytes};
            setrlimit(RLIMIT_FSIZE, &limit);
            const int nStatus = WaitFor(Start(args));
            _exit(WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : 255);
        }
        return WEXITSTATUS(WaitFor(pid));
    }
};

TEST_F(FullDiskTest, LeavesEveryProgramOldAndNoLitter) {
    RenewPrograms();
    m_run.Write("r1/499.src", ProgramOf("old", 499) + std::string(100'000, 'x'));
    const std::string sLarge = CommandRun::Bytes(Programs() / "499.src");
    // No room for the old bytes of all; room for these, but not for the last program, which grows.
    for (const rlim_t nBytes : {rlim_t{20'000}, rlim_t{100'040}}) {
        EXPECT_EQ(RunWithin(nBytes, {"rewrite", Programs().string()}),
                  static_cast<int>(ExitCode::Files));
        EXPECT_EQ(CommandRun::Bytes(Programs() / "499.src"), sLarge);
        m_run.Write("r1/499.src", ProgramOf("old", 499));
        ExpectPrograms("old");
        m_run.Write("r1/499.src", sLarge);
        ExpectNoLitter();
    }
}

TEST_F(FullDiskTest, LeavesTheDatabaseOldAndNoLitter) {
    ASSERT_EQ(m_run.Run({"import", m_sOld}).exit, ExitCode::Done);
    // Each file alone has room, but not the transaction.
    EXPECT_NE(RunWithin(fs::file_size(m_run.Database()) + 4096, {"import", m_sNew}), 0);
    EXPECT_EQ(m_run.Run({"db", "verify"}).exit, ExitCode::Done);
    ExpectTexts("old");
    ExpectNoLitter();
}

}  // namespace
