// Kills imports into Access files, and compactions of them, at random moments of the whole run:
// whoever opens the file next finds a state that it may be in, sound, and with nothing left beside
// it. The number of kills is a few in each test; the environment variable NOMIRA_KILLS gives
// another one. The files are kept in memory where TMPDIR doesn't name another place.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <set>
#include <stdexcept>
#include <thread>

#include "apps/CommandRun.h"
#include "apps/nomiractl/Machine.h"
#include "database/adoModul.h"
#include "testing/Random.h"

extern char** environ;

namespace nomira::testing {
namespace {

namespace fs = std::filesystem;
using companion::ExitCode;
using Clock = std::chrono::steady_clock;
using Strings = std::vector<std::string>;
using Names = std::set<std::string>;
using Table = std::vector<Strings>;

constexpr int kLines = 1200;
constexpr const char* kDatabase = "orvo_con.mdb";
constexpr const char* kCompactionsFile = "xxx_con.mdb";
constexpr const char* kAllRows =
    "SELECT Items.Key_id,Module,KeyString,Language_id,String FROM Items LEFT JOIN Messages ON"
    " Items.Key_id=Messages.Key_id ORDER BY 1,4";

int Kills() {
    const char* sKills = std::getenv("NOMIRA_KILLS");
    return sKills == nullptr ? 6 : std::atoi(sKills);
}

struct InMemory {
    InMemory() {
        if (fs::is_directory("/dev/shm")) setenv("TMPDIR", "/dev/shm", 0);
    }
};

std::string KeyOf(int nLine) {
    return "OUT_" + std::to_string(nLine + 1);
}
std::string TextOf(const std::string& sText, int nLine) {
    return sText + " of the cell, number " + std::to_string(nLine * 7);
}

std::string Lines(const std::string& sText) {
    std::string bytes;
    for (int n = 0; n < kLines; ++n)
        bytes += KeyOf(n) + ' ' + TextOf(sText, n) + "\r\n";
    return bytes;
}

pid_t StartProgram(Strings args) {
    std::vector<char*> argv;
    for (std::string& sArgument : args)
        argv.push_back(sArgument.data());
    argv.push_back(nullptr);
    pid_t pid = 0;
    // Without a process there is nobody to be killed but this group of processes itself.
    if (posix_spawn(&pid, argv.front(), nullptr, nullptr, argv.data(), environ) != 0)
        throw std::runtime_error("can't start " + args.front());
    return pid;
}

int WaitFor(pid_t pid) {
    int nStatus = 0;
    waitpid(pid, &nStatus, 0);
    return nStatus;
}

class AccessKillTest : public ::testing::TestWithParam<const char*> {
  protected:
    AccessKillTest() {
        setenv("NOMIRA_PREFIX", m_run.Prefix().c_str(), 1);
        EXPECT_EQ(m_run.Run({"db", "create", Database().string(), "--format", GetParam()}).exit,
                  ExitCode::Done);
    }

    fs::path Database() const { return m_run.Database(); }
    fs::path Folder() const { return Database().parent_path(); }
    fs::path Model() const { return m_run.Root() / "model.mdb"; }

    static Names FilesIn(const fs::path& folder) {
        Names names;
        for (const auto& entry : fs::directory_iterator(folder))
            names.insert(entry.path().filename().string());
        return names;
    }
    void KeepAsModel() const { fs::copy_file(Database(), Model()); }
    void TakeModel() const {
        for (const auto& entry : fs::directory_iterator(Folder()))
            fs::remove(entry.path());
        fs::copy_file(Model(), Database());
    }
    // By the integrity check of the companion, which is the first to open the file.
    void ExpectSound() const {
        const Outcome verified = m_run.Run({"db", "verify"});
        ASSERT_EQ(verified.exit, ExitCode::Done) << verified.err;
    }

    // Kills so many runs, each at a moment of its own of the time that a whole one takes, and has
    // the rest of each looked at.
    void KillRuns(const std::function<void()>& prepare, const std::function<pid_t()>& start,
                  const std::function<void()>& examine) {
        SCOPED_TRACE(m_random.Seed());
        auto whole = std::chrono::microseconds::zero();
        for (int n = 0; n < 3; ++n) {
            prepare();
            const auto begin = Clock::now();
            ASSERT_EQ(WaitFor(start()), 0);
            whole = std::max(
                whole, std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin));
        }
        const int nKills = Kills();
        int nKilled = 0;
        for (int nRun = 0; nKilled < nKills && !HasFailure(); ++nRun) {
            ASSERT_LT(nRun, 10 * nKills) << "hardly a run is still there to be killed";
            prepare();
            const pid_t pid = start();
            const auto nMoment = m_random.UpTo(static_cast<std::size_t>(whole.count()));
            std::this_thread::sleep_for(std::chrono::microseconds(nMoment));
            kill(pid, SIGKILL);
            if (!WIFSIGNALED(WaitFor(pid))) continue;
            SCOPED_TRACE("kill " + std::to_string(++nKilled));
            Count("with a file beside", FilesIn(Folder()) != Names{kDatabase});
            if (fs::exists(Database()) && m_random.UpTo(2) == 0) KillWhoeverIsNext(whole);
            examine();
        }
        Count("killed", 0, nKilled);
        for (const auto& [sWhat, nTimes] : m_counts)
            RecordProperty(sWhat, nTimes);
    }
    // He may be about to put things in order.
    void KillWhoeverIsNext(std::chrono::microseconds within) {
        const pid_t pid = StartProgram({NOMIRACTL_PROGRAM, "--quiet", "db", "verify"});
        const auto nMoment = m_random.UpTo(static_cast<std::size_t>(within.count()) / 2);
        std::this_thread::sleep_for(std::chrono::microseconds(nMoment));
        kill(pid, SIGKILL);
        Count("the next one killed too", WIFSIGNALED(WaitFor(pid)));
    }
    // Things that a long run tells.
    void Count(const std::string& sWhat, bool bHappened, int nMore = 0) {
        m_counts[sWhat] += static_cast<int>(bHappened) + nMore;
    }

    InMemory m_memory;  // ahead of the folder that is made there
    CommandRun m_run;
    Random m_random;
    std::map<std::string, int> m_counts;
};

INSTANTIATE_TEST_SUITE_P(Generations, AccessKillTest, ::testing::Values("jet3", "jet4"),
                         [](const auto& format) { return std::string(format.param); });

TEST_P(AccessKillTest, AnImportByTheProgramLeavesTheFirstRowsOfItsFile) {
    KeepAsModel();
    const std::string sFile = m_run.Write("names.txt", Lines("Signal"));
    KillRuns([this] { TakeModel(); },
             [&] {
                 return StartProgram({NOMIRA_PROGRAM, "TEXT_INTO_DB|ADD|" + sFile});
             },
             [this] {
                 ASSERT_NO_FATAL_FAILURE(ExpectSound());
                 EXPECT_EQ(FilesIn(Folder()), Names{kDatabase});
                 const Table rows = QueryOn(Database(), kAllRows);
                 Count("none", rows.empty());
                 Count("all", rows.size() == kLines);
                 for (std::size_t n = 0; n < rows.size(); ++n) {
                     const int nLine = static_cast<int>(n);
                     ASSERT_EQ(rows[n][2], KeyOf(nLine));
                     // The item is committed ahead of its message.
                     const bool bLastItem = n + 1 == rows.size();
                     if (bLastItem && rows[n][4] == "<null>") continue;
                     ASSERT_EQ(rows[n][4], TextOf("Signal", nLine));
                 }
             });
}

TEST_P(AccessKillTest, AnImportByTheCompanionIsDoneOrNotDone) {
    const std::string sOld = m_run.Write("old.txt", Lines("old"));
    const std::string sNew = m_run.Write("new.txt", Lines("brand new"));
    const auto take = [&](const std::string& sFile) {
        ASSERT_EQ(m_run.Run({"import", sFile}).exit, ExitCode::Done);
    };
    take(sNew);
    const Table newRows = QueryOn(Database(), kAllRows);
    take(sOld);
    const Table oldRows = QueryOn(Database(), kAllRows);
    ASSERT_NE(oldRows, newRows);
    KillRuns([&] { take(sOld); },
             [&] {
                 return StartProgram({NOMIRACTL_PROGRAM, "--quiet", "import", sNew});
             },
             [&] {
                 ASSERT_NO_FATAL_FAILURE(ExpectSound());
                 EXPECT_EQ(FilesIn(Folder()), Names{kDatabase});
                 const Table rows = QueryOn(Database(), kAllRows);
                 const bool bNew = rows == newRows;
                 EXPECT_TRUE(bNew || rows == oldRows);
                 Count("new", bNew);
                 // Whoever writes next finds no run that was broken off.
                 ASSERT_EQ(m_run.Run({"set", "OUT_1", "next"}).exit, ExitCode::Done);
                 for (const std::string& sName : FilesIn(m_run.Prefix() / "journal"))
                     EXPECT_TRUE(sName == "lock" || sName.ends_with(".run")) << sName;
             });
}

// ---- Compaction

bool HasUnnamedFiles(const fs::path& folder) {
    const int nFile = open(folder.c_str(), O_TMPFILE | O_WRONLY, S_IRUSR | S_IWUSR);
    if (nFile >= 0) close(nFile);
    return nFile >= 0;
}

class AccessCompactionKillTest : public AccessKillTest {
  protected:
    AccessCompactionKillTest() {
        const std::string sFile = m_run.Write("names.txt", Lines("Signal"));
        EXPECT_EQ(m_run.Run({"import", sFile}).exit, ExitCode::Done);
        ExecuteOn(Database(), "DELETE FROM Items WHERE Key_id%3=0");
        m_rows = QueryOn(Database(), kAllRows);
        EXPECT_GT(m_rows.size(), std::size_t{kLines / 2});
        KeepAsModel();
    }
    // The file as it was, or a smaller one, with the same rows.
    void ExpectOldOrNew() {
        ASSERT_NO_FATAL_FAILURE(ExpectSound());
        EXPECT_EQ(QueryOn(Database(), kAllRows), m_rows);
        const bool bOld = CommandRun::Bytes(Database()) == CommandRun::Bytes(Model());
        EXPECT_TRUE(bOld || fs::file_size(Database()) < fs::file_size(Model()));
        Count("new", !bOld);
    }

    Table m_rows;
};

INSTANTIATE_TEST_SUITE_P(Generations, AccessCompactionKillTest, ::testing::Values("jet3", "jet4"),
                         [](const auto& format) { return std::string(format.param); });

TEST_P(AccessCompactionKillTest, ThatOfTheCompanionLeavesTheOldFileOrTheNewOneAlone) {
    KillRuns([this] { TakeModel(); },
             [] {
                 return StartProgram({NOMIRACTL_PROGRAM, "--quiet", "db", "compact"});
             },
             [this] {
                 ExpectOldOrNew();
                 EXPECT_EQ(FilesIn(Folder()), Names{kDatabase});
             });
}

// Its new file has a name when it is whole, where the file system can do that. From then on it may
// be left beside the old one, and for a moment there is nothing but the new one; both have to be
// so.
TEST_P(AccessCompactionKillTest, ThatOfTheProgramLeavesTheRowsInOneOfItsFiles) {
    const auto start = [] {
        const pid_t pid = fork();
        if (pid < 0) throw std::runtime_error("no process");
        if (pid != 0) return pid;
        const companion::Machine machine{companion::Options()};
        CompactLongTextDatabase();
        _exit(0);
    };
    KillRuns([this] { TakeModel(); }, start,
             [this] {
                 const Names left = FilesIn(Folder());
                 EXPECT_TRUE(std::ranges::includes(Names{kDatabase, kCompactionsFile}, left));
                 Count("nothing but the new file", !left.contains(kDatabase));
                 if (left.contains(kDatabase)) {
                     ExpectOldOrNew();
                     EXPECT_EQ(FilesIn(Folder()), left);
                 }
                 if (!left.contains(kCompactionsFile) || !HasUnnamedFiles(Folder())) return;
                 fs::rename(Folder() / kCompactionsFile, Database());
                 ExpectOldOrNew();
                 EXPECT_EQ(FilesIn(Folder()), Names{kDatabase});
             });
}

}  // namespace
}  // namespace nomira::testing
