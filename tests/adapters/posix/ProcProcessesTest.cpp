#include "adapters/posix/ProcProcesses.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

#include "testing/TemporaryFolder.h"
#include "testing/TextPrinting.h"

namespace nomira::posix {
namespace {

namespace fs = std::filesystem;
using nomira::testing::TemporaryFolder;

// A process of its own that waits until it is ended.
class Child {
  public:
    Child(const std::string& sProgram, const std::string& sStartedAs) : m_nId(::fork()) {
        if (m_nId != 0) return;
        ::execl(sProgram.c_str(), sStartedAs.c_str(), "600", static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ~Child() {
        ::kill(m_nId, SIGKILL);
        ::waitpid(m_nId, nullptr, 0);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    std::uint32_t Id() const { return static_cast<std::uint32_t>(m_nId); }

    // Waits until the program runs in place of the test's own image.
    bool WaitUntilRuns(const std::string& sStartedAs) const {
        for (int n = 0; n < 1000; ++n) {
            std::ifstream in("/proc/" + std::to_string(m_nId) + "/cmdline");
            std::string sFirst;
            std::getline(in, sFirst, '\0');
            if (sFirst == sStartedAs) return true;
            ::usleep(10'000);
        }
        return false;
    }

  private:
    pid_t m_nId;
};

bool Contains(const std::vector<std::uint32_t>& ids, std::uint32_t nId) {
    return std::find(ids.begin(), ids.end(), nId) != ids.end();
}

TEST(ProcProcessesTest, ARunningProgramIsSeenByItsName) {
    TemporaryFolder folder;
    const std::string sProgram = (folder / "vexon3.exe").string();
    fs::copy_file("/bin/sleep", sProgram);
    ProcProcesses processes;
    std::uint32_t nId = 0;
    {
        const Child child(sProgram, sProgram);
        ASSERT_TRUE(child.WaitUntilRuns(sProgram));
        nId = child.Id();
        EXPECT_TRUE(Contains(processes.EnumProcesses(), nId));
        const auto sPath = processes.ModuleFileName(nId);
        ASSERT_TRUE(sPath);
        EXPECT_TRUE(sPath->ends_with(u"\\vexon3.exe"));
        EXPECT_EQ(sPath->find(u'/'), Text::npos);
        const auto names = processes.SnapshotNames();
        ASSERT_TRUE(names);
        EXPECT_NE(std::find(names->begin(), names->end(), u"vexon3.exe"), names->end());
    }
    EXPECT_FALSE(Contains(processes.EnumProcesses(), nId));
    EXPECT_EQ(processes.ModuleFileName(nId), std::nullopt);
}

TEST(ProcProcessesTest, AProgramThatALoaderRunsKeepsItsOwnName) {
    const Child child("/bin/sleep", "C:\\tqx\\VEXON3.EXE");
    ASSERT_TRUE(child.WaitUntilRuns("C:\\tqx\\VEXON3.EXE"));
    EXPECT_EQ(ProcProcesses().ModuleFileName(child.Id()), Text(u"C:\\tqx\\VEXON3.EXE"));
}

TEST(ProcProcessesTest, WithoutACommandLineTheRunningFileCounts) {
    TemporaryFolder folder;
    folder.Put("7/cmdline", "");
    folder.Put("8/cmdline", "");
    fs::create_symlink("/opt/orvo/OrvoDB", folder / "7/exe");
    fs::create_symlink("/opt/orvo/OrvoDB (deleted)", folder / "8/exe");
    ProcProcesses processes(folder.Path().string());
    EXPECT_EQ(processes.ModuleFileName(7), Text(u"\\opt\\orvo\\OrvoDB"));
    EXPECT_EQ(processes.ModuleFileName(8), Text(u"\\opt\\orvo\\OrvoDB"));
}

TEST(ProcProcessesTest, OnlyNumbersAreProcesses) {
    TemporaryFolder folder;
    for (const char* sName : {"10/cmdline", "9/cmdline", "self/cmdline", "12x/cmdline"})
        folder.Put(sName, "x");
    EXPECT_EQ(ProcProcesses(folder.Path().string()).EnumProcesses(),
              (std::vector<std::uint32_t>{9, 10}));
}

TEST(ProcProcessesTest, AProcessWithoutANameIsNotInTheSnapshot) {
    TemporaryFolder folder;
    folder.Put("9/cmdline", "");
    folder.Put("10/cmdline", "/bin/x");
    EXPECT_EQ(ProcProcesses(folder.Path().string()).SnapshotNames(), std::vector<Text>{u"x"});
}

TEST(ProcProcessesTest, WithoutTheSystemsFolderThereIsNoSnapshot) {
    TemporaryFolder folder;
    ProcProcesses processes((folder / "nowhere").string());
    EXPECT_EQ(processes.SnapshotNames(), std::nullopt);
    EXPECT_TRUE(processes.EnumProcesses().empty());
}

}  // namespace
}  // namespace nomira::posix
