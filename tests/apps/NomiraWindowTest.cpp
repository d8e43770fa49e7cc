// The real program as a process of its own on a display of its own, worked from outside with mouse
// and keyboard; what is compared is what it leaves in the database and in files.
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "adapters/sqlite/StoreSchema.h"
#include "testing/SimulatorProcess.h"
#include "testing/TestDatabase.h"
#include "testing/TextPrinting.h"
#include "testing/VirtualDisplay.h"

namespace nomira {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

constexpr const char* kProgram =
    "DEF a()\r\n;FOLD OUT 7 'old' State=TRUE;%{PE}\r\n$OUT[7]=TRUE\r\n;ENDFOLD\r\nEND\r\n";
constexpr const char* kRewritten =
    "DEF a()\r\n;FOLD OUT 7 'Pump' State=TRUE;%{PE}\r\n$OUT[7]=TRUE\r\n;ENDFOLD\r\nEND\r\n";

constexpr const char* kDesktopTitle = "Longname - Conversion";
constexpr const char* kPendantTitle = "Nomira";

// What nobody can wait longer for has failed.
constexpr std::chrono::seconds kLongest{30};

bool Await(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + kLongest;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

// The program beside the test.
class Running {
  public:
    Running(const fs::path& prefix, const Texts& arguments) {
        std::vector<char*> argv{const_cast<char*>(NOMIRA_PROGRAM)};
        for (const std::string& sArgument : arguments)
            argv.push_back(const_cast<char*>(sArgument.c_str()));
        argv.push_back(nullptr);
        m_nChild = fork();
        if (m_nChild != 0) return;
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        setenv("NOMIRA_PREFIX", prefix.c_str(), 1);
        setenv("HOME", prefix.c_str(), 1);
        setenv("LC_ALL", "C.UTF-8", 1);
        execv(NOMIRA_PROGRAM, argv.data());
        _exit(127);
    }
    ~Running() {
        if (m_nChild <= 0) return;
        kill(m_nChild, SIGKILL);
        waitpid(m_nChild, nullptr, 0);
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    // The exit status, 128 and the signal's number if one ended it; -1 if it doesn't end.
    int End() {
        int nState = 0;
        if (!Await([&] { return waitpid(m_nChild, &nState, WNOHANG) == m_nChild; })) return -1;
        m_nChild = -1;
        return WIFEXITED(nState) ? WEXITSTATUS(nState) : 128 + WTERMSIG(nState);
    }

  private:
    pid_t m_nChild;
};

class NomiraWindowTest : public ::testing::Test {
  protected:
    NomiraWindowTest() {
        fs::create_directories(Database().parent_path());
        sqlite::CreateStore(Database());
        PutRegistry("");
    }

    fs::path OnDriveC(const std::string& sName) const {
        return simulator.Folder() / "drives/c" / sName;
    }
    fs::path Database() const { return OnDriveC("tqx/Data/orvo_con.mdb"); }
    static void Put(const fs::path& path, const std::string& sBytes) {
        testing::SimulatorProcess::Put(path, sBytes);
    }
    static std::string Bytes(const fs::path& path) {
        return testing::SimulatorProcess::Bytes(path).value_or("");
    }
    // C:\work is where the lists begin; with a customer it is a controller.
    void PutRegistry(const std::string& sCustomer) const {
        std::string sText =
            "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Orvo\\Version]\r\n"
            "\"InstallationDir\"=\"C:\\\\work\"\r\n";
        if (!sCustomer.empty()) sText += "\"Customer\"=\"" + sCustomer + "\"\r\n";
        Put(simulator.Folder() / "registry.reg", sText);
        fs::create_directories(OnDriveC("work"));
    }
    void Store(const std::string& sKey, const std::string& sText) const {
        testing::ExecuteOn(
            Database(), "INSERT INTO Items(Module,KeyString) VALUES('IO','" + sKey +
                            "');INSERT INTO Messages VALUES((SELECT max(Key_id) FROM Items),99,'" +
                            sText + "');");
    }
    Texts Stored() const {
        Texts texts;
        for (const auto& row : testing::QueryOn(
                 Database(),
                 "SELECT KeyString||'='||String FROM Items JOIN Messages USING(Key_id) ORDER BY 1"))
            texts.push_back(row.front());
        return texts;
    }
    // Waits until the program has stored these and no others.
    bool AwaitStored(const Texts& texts) const {
        return Await([&] {
            try {
                return Stored() == texts;
            } catch (const std::runtime_error&) {  // the program is at it
                return false;
            }
        });
    }

    // xdotool's words; false if it fails.
    static bool Robot(const std::string& sWords) {
        return std::system(("xdotool " + sWords + " >/dev/null").c_str()) == 0;
    }
    // Waits for the window of the title, and gives it the keys.
    static void TakeWindow(const std::string& sTitle) {
        ASSERT_TRUE(Await([&] {
            return Robot("search --onlyvisible --name '^" + sTitle + "$' 2>/dev/null");
        })) << sTitle;
        EXPECT_TRUE(Robot("search --onlyvisible --name '^" + sTitle +
                          "$' windowfocus --sync mousemove --window %1 5 5"));
    }
    // Clicks into the place of the window, in twips of its form.
    static void Click(const std::string& sTitle, int nLeft, int nTop, int nTimes = 1) {
        EXPECT_TRUE(Robot("search --onlyvisible --name '^" + sTitle + "$' mousemove --window %1 " +
                          std::to_string(nLeft / 15) + " " + std::to_string(nTop / 15) +
                          " sleep 0.1 click --repeat " + std::to_string(nTimes) +
                          " --delay 50 1 sleep 0.2"));
    }

    testing::VirtualDisplay display;
    testing::SimulatorProcess simulator{NOMIRA_SIMULATOR};
};

// Places on the desktop form, in twips: where to click on what.
struct Place {
    int nLeft, nTop;
};
constexpr Place kOption1{2300, 360}, kOption3{2300, 1080}, kFirstFile{2300, 1580},
    kSelectAll{2140, 2880}, kStart{4260, 1680}, kExit{4260, 2280}, kViewDb{4260, 2880},
    kText{600, 2600};

class DesktopWindowTest : public NomiraWindowTest {
  protected:
    DesktopWindowTest() { simulator.Stop(); }
    static void Click(Place place) {
        NomiraWindowTest::Click(kDesktopTitle, place.nLeft, place.nTop);
    }
};

TEST_F(DesktopWindowTest, ATextFileIsImported) {
    Store("IN_9", "from before");
    Put(OnDriveC("work/a.txt"), "IN_1 Pump\r\nOUT_2 Valve\r\n");
    Running program(simulator.Folder(), {});
    TakeWindow(kDesktopTitle);
    Click(kOption1);
    Click(kFirstFile);
    Click(kStart);
    EXPECT_TRUE(AwaitStored(Texts{"IN_1=Pump", "OUT_2=Valve"}));
    Click(kExit);
    EXPECT_EQ(program.End(), 0);
}

TEST_F(DesktopWindowTest, TheDatabaseIsViewedEditedAndSaved) {
    Store("IN_1", "Pump");
    Running program(simulator.Folder(), {});
    TakeWindow(kDesktopTitle);
    Click(kViewDb);
    Click(kText);
    EXPECT_TRUE(Robot("key ctrl+Home type --delay 20 'IN_2 Gate'"));
    EXPECT_TRUE(Robot("key Return sleep 0.2"));
    Click(kStart);
    EXPECT_TRUE(AwaitStored(Texts{"IN_1=Pump", "IN_2=Gate"}));
    Click(kExit);
    Click(kExit);
    EXPECT_EQ(program.End(), 0);
}

TEST_F(DesktopWindowTest, ProgramsAreRewritten) {
    Store("OUT_7", "Pump");
    Put(OnDriveC("work/a.src"), kProgram);
    Put(OnDriveC("work/b.src"), kProgram);
    Running program(simulator.Folder(), {});
    TakeWindow(kDesktopTitle);
    Click(kOption3);
    Click(kSelectAll);
    Click(kStart);
    EXPECT_TRUE(Await([&] { return Bytes(OnDriveC("work/b.src")) == kRewritten; }));
    EXPECT_EQ(Bytes(OnDriveC("work/a.src")), kRewritten);
    Click(kExit);
    EXPECT_EQ(program.End(), 0);
}

TEST_F(DesktopWindowTest, TheKeyboardAloneSuffices) {
    Put(OnDriveC("work/a.txt"), "IN_1 Pump\r\n");
    Running program(simulator.Folder(), {});
    TakeWindow(kDesktopTitle);
    // From the directories over the drives to the first option, which shows its list.
    EXPECT_TRUE(Robot("key Tab sleep 0.1 key Tab sleep 0.1 key space sleep 0.2"));
    // Over the other options to the list, and over the box to Start.
    EXPECT_TRUE(Robot("key Tab key Tab key Tab sleep 0.2 key space sleep 0.2"));
    EXPECT_TRUE(Robot("key Tab key Tab sleep 0.1 key space sleep 0.2"));
    EXPECT_TRUE(AwaitStored(Texts{"IN_1=Pump"}));
    EXPECT_TRUE(Robot("key Tab sleep 0.1 key Return"));
    EXPECT_EQ(program.End(), 0);
}

TEST_F(DesktopWindowTest, ASecondStartEndsAtOnceAndTheFirstGoesOn) {
    Running first(simulator.Folder(), {});
    TakeWindow(kDesktopTitle);
    Running second(simulator.Folder(), {});
    EXPECT_EQ(second.End(), 0);
    Click(kExit);
    EXPECT_EQ(first.End(), 0);
}

class PendantWindowTest : public NomiraWindowTest {
  protected:
    PendantWindowTest() { PutRegistry("Cell7"); }
};

TEST_F(PendantWindowTest, KeysAloneImportViewAndEnd) {
    Put(OnDriveC("a.txt"), "IN_1 Pump\r\n");
    Running program(simulator.Folder(), {});
    TakeWindow(kPendantTitle);
    EXPECT_TRUE(Robot("key ctrl+1 sleep 0.3 key space sleep 0.2 key F7"));
    EXPECT_TRUE(AwaitStored(Texts{"IN_1=Pump"}));
    EXPECT_TRUE(Robot("sleep 0.5 key F2 sleep 0.5 key ctrl+Home type --delay 20 'IN_2 Gate'"));
    EXPECT_TRUE(Robot("key Return sleep 0.2 key F3"));
    EXPECT_TRUE(AwaitStored(Texts{"IN_1=Pump", "IN_2=Gate"}));
    EXPECT_TRUE(Robot("sleep 0.5 key F4 sleep 0.2 key F8"));
    EXPECT_EQ(program.End(), 0);
}

class BatchWindowTest : public NomiraWindowTest {};

TEST_F(BatchWindowTest, TheSmallFormIsSeenDuringTheRun) {
    std::string sNames;
    for (int n = 1; n <= 9999; ++n)
        for (const char* pClass : {"IN_", "OUT_"})
            sNames += pClass + std::to_string(n) + " Signal of the cell\r\n";
    Put(OnDriveC("names.txt"), sNames);
    Running program(simulator.Folder(), {"TEXT_INTO_DB|ADD|C:\\names.txt"});
    TakeWindow("TQX Longname - Conversion");
    EXPECT_EQ(program.End(), 0);
    EXPECT_EQ(Stored().size(), 2 * 9999U);
}

TEST_F(BatchWindowTest, AFailureShowsItsBoxAndWaitsForTheOperator) {
    Running program(simulator.Folder(), {"UPDATE_USERFILES|one|C:\\R1\\prog.src"});
    TakeWindow("Nomira");
    EXPECT_TRUE(Robot("key Return"));
    EXPECT_EQ(program.End(), 1);
}

}  // namespace
}  // namespace nomira
