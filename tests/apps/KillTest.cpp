// Kills the real program at random moments of an import: the database must stay whole and hold
// every row that was stored before, in the order of the file.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "adapters/sqlite/StoreSchema.h"
#include "testing/TemporaryFolder.h"
#include "testing/TextPrinting.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kRounds = 200;
constexpr int kLines = 1500;

std::string KeyOf(int nLine) {
    return "IN_" + std::to_string(nLine + 1);
}
std::string TextOf(int nLine) {
    return "Signal " + std::to_string(nLine * 7) + " of the cell";
}

// A prefix with the import file and, before each round, an empty database.
class Machine {
  public:
    Machine() {
        fs::create_directories(Data());
        std::ofstream file(m_root / "drives/c/names.txt", std::ios::binary);
        for (int n = 0; n < kLines; ++n)
            file << KeyOf(n) << ' ' << TextOf(n) << "\r\n";
        nomira::sqlite::CreateStore(m_root / "empty.mdb");
        setenv("NOMIRA_PREFIX", m_root.Path().c_str(), 1);
    }

    fs::path Data() const { return m_root / "drives/c/tqx/data"; }
    fs::path Database() const { return Data() / "orvo_con.mdb"; }

    void Renew() const {
        for (const auto& entry : fs::directory_iterator(Data()))
            fs::remove(entry.path());
        fs::copy_file(m_root / "empty.mdb", Database());
    }

    // Starts the program with one batch command.
    static pid_t Start(const char* sCommand) {
        std::string sProgram = NOMIRA_PROGRAM;
        std::string sArgument = sCommand;
        char* arguments[] = {sProgram.data(), sArgument.data(), nullptr};
        pid_t pid = 0;
        EXPECT_EQ(posix_spawn(&pid, sProgram.c_str(), nullptr, nullptr, arguments, environ), 0);
        return pid;
    }

    static int WaitFor(pid_t pid) {
        int nStatus = 0;
        waitpid(pid, &nStatus, 0);
        return nStatus;
    }

  private:
    nomira::testing::TemporaryFolder m_root;
};

std::vector<std::string> Column(sqlite3* db, const char* sSql) {
    std::vector<std::string> values;
    sqlite3_stmt* statement = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(db, sSql, -1, &statement, nullptr), SQLITE_OK) << sSql;
    while (sqlite3_step(statement) == SQLITE_ROW) {
        const auto* sText = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
        values.emplace_back(sText ? sText : "<null>");
    }
    sqlite3_finalize(statement);
    return values;
}

// What a killed import may leave: the first rows of the file, whole, but for the last item, which
// may still lack its message.
void ExpectFirstRowsWhole(const fs::path& database) {
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open_v2(database.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
    EXPECT_EQ(Column(db, "PRAGMA integrity_check"), std::vector<std::string>{"ok"});
    EXPECT_TRUE(Column(db, "PRAGMA foreign_key_check").empty());
    const auto keys = Column(db, "SELECT KeyString FROM Items ORDER BY Key_id");
    const auto texts = Column(db,
                              "SELECT String FROM Items LEFT JOIN Messages ON Items.Key_id = "
                              "Messages.Key_id AND Language_id = 99 ORDER BY Items.Key_id");
    sqlite3_close(db);
    ASSERT_EQ(keys.size(), texts.size());
    for (std::size_t n = 0; n < keys.size(); ++n) {
        ASSERT_EQ(keys[n], KeyOf(static_cast<int>(n)));
        const bool bLastItem = n + 1 == keys.size();
        if (bLastItem && texts[n] == "<null>") continue;
        ASSERT_EQ(texts[n], TextOf(static_cast<int>(n)));
    }
}

TEST(KillTest, AnImportKilledAtAnyMomentLeavesItsFirstRowsWhole) {
    const Machine machine;
    constexpr const char* kImport = "TEXT_INTO_DB|ADD|C:\\names.txt";

    // The shortest of a few whole runs, so that most kills meet a run that is still at work.
    auto whole = std::chrono::microseconds::max();
    for (int n = 0; n < 3; ++n) {
        machine.Renew();
        const auto begin = Clock::now();
        ASSERT_EQ(Machine::WaitFor(Machine::Start(kImport)), 0);
        whole = std::min(
            whole, std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin));
        ExpectFirstRowsWhole(machine.Database());
    }

    const unsigned nSeed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(nSeed));
    std::mt19937 random(nSeed);
    std::uniform_int_distribution<std::int64_t> moment(0, whole.count());
    int nKilled = 0;
    for (int n = 0; n < kRounds && !HasFatalFailure(); ++n) {
        machine.Renew();
        const pid_t pid = Machine::Start(kImport);
        std::this_thread::sleep_for(std::chrono::microseconds(moment(random)));
        kill(pid, SIGKILL);
        if (WIFSIGNALED(Machine::WaitFor(pid))) ++nKilled;
        ExpectFirstRowsWhole(machine.Database());
    }
    EXPECT_GT(nKilled, kRounds / 4);
}

TEST(KillTest, TheNextRunAfterAKillFinishesTheJobAndLeavesTheFileAlone) {
    const Machine machine;
    constexpr const char* kImport = "TEXT_INTO_DB|OVERWRITE|C:\\names.txt";
    machine.Renew();
    const pid_t pid = Machine::Start(kImport);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    kill(pid, SIGKILL);
    Machine::WaitFor(pid);

    ASSERT_EQ(Machine::WaitFor(Machine::Start(kImport)), 0);
    ExpectFirstRowsWhole(machine.Database());
    std::vector<std::string> files;
    for (const auto& entry : fs::directory_iterator(machine.Data())) {
        files.push_back(entry.path().filename());
    }
    EXPECT_EQ(files, std::vector<std::string>{"orvo_con.mdb"});
}

}  // namespace
