// The program's own staged run over a whole controller: real files, a real database, and the
// simulator as a process of its own.
#include <gtest/gtest.h>

#include "adapters/posix/PosixMachine.h"
#include "adapters/rpc/Connection.h"
#include "adapters/rpc/RpcLinkLibrary.h"
#include "langtools/ProgramState.h"
#include "link/cVexonComm.h"
#include "platform/Platform.h"
#include "testing/SimulatorProcess.h"
#include "testing/TestDatabase.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/StatusBar.h"
#include "userprogram/Staging.h"

namespace nomira::testing {
namespace {

namespace fs = std::filesystem;

constexpr const char* kOld = "DEF a()\r\n;FOLD OUT 7 'old' State=TRUE\r\nEND\r\n";
constexpr const char* kNew = "DEF a()\r\n;FOLD OUT 7 'Pump' State=TRUE\r\nEND\r\n";
constexpr const char* kPump = R"(
    INSERT INTO Items (Key_id, Module, KeyString) VALUES (1, 'IO', 'OUT_7');
    INSERT INTO Messages (Key_id, Language_id, String) VALUES (1, 99, 'Pump');
)";

class StagingForm : public Form {
  public:
    StagingForm() : Form(u"Staging") {
        file2.SetMultiSelect(true);
        for (int n = 0; n < 4; ++n)
            bar.AddPanel();
    }
    void SelectAll(TextView sDirectory) {
        file2.SetPath(sDirectory);
        for (std::int16_t n = 0; n < file2.ListCount(); ++n)
            file2.SetSelected(n, true);
    }
    FileListBox& file2 = Add<FileListBox>(u"File2");
    StatusBar& bar = Add<StatusBar>(u"StatusBar1");
};

class StagedRewriteOnSimulatorTest : public ::testing::Test {
  protected:
    StagedRewriteOnSimulatorTest() {
        ResetProgramState();
        fs::create_directories(Drive());
        m_machine.BecomePlatform({});
        m_database.Execute(kPump);
        SetLinkLibrary(&m_library);
    }
    ~StagedRewriteOnSimulatorTest() override {
        g_Comm().ExitVexonComm();
        SetLinkLibrary(nullptr);
        ResetProgramState();
        SetPlatform({});
    }

    fs::path Drive() const { return m_simulator.Folder() / "drives/c"; }
    fs::path OnRobot(int nProgram) const {
        return m_simulator.Root() / "R1/Program" / NameOf(nProgram);
    }
    static std::string NameOf(int nProgram) { return "p" + std::to_string(nProgram) + ".src"; }
    // A program on the controller, and one of its name in the list of the form.
    void Put(int nProgram, const char* bytes) const {
        SimulatorProcess::Put(OnRobot(nProgram), bytes);
        SimulatorProcess::Put(Drive() / "list" / NameOf(nProgram), "");
    }
    void Run() {
        m_form.SelectAll(u"C:\\list");
        ASSERT_TRUE(g_Comm().ConnectingVexon(u"Staging", &m_form));
        ASSERT_TRUE(g_Comm().VexonCommands->VexonIsConnected());
        StagedRewriteOnController(m_form);
    }
    // The copies, as the simulator has seen them.
    std::vector<std::string> Copies() const {
        std::vector<std::string> copies;
        const auto state =
            rpc::Connection(m_simulator.Socket()).Call("sim.state", rpc::Json::object());
        for (const auto& call : state.at("calls"))
            if (std::string sCall = call; sCall.rfind("CopyFile(", 0) == 0) copies.push_back(sCall);
        return copies;
    }
    void Fault(const rpc::Json& fault) const {
        rpc::Connection(m_simulator.Socket()).Call("sim.fault", fault);
    }

    SimulatorProcess m_simulator{NOMIRA_SIMULATOR};
    posix::PosixMachine m_machine{m_simulator.Folder()};
    TestDatabase m_database;
    rpc::RpcLinkLibrary m_library{m_simulator.Socket(), [this](TextView sPath) {
                                      return fs::path(m_machine.prefix.NativePath(sPath));
                                  }};
    StagingForm m_form;
};

TEST_F(StagedRewriteOnSimulatorTest, OfTwoHundredProgramsOnlyTheChangedOnesGoBack) {
    std::vector<std::string> expected;
    for (int n = 100; n < 300; ++n) {
        Put(n, n % 2 == 0 ? kOld : kNew);
        const std::string sRobot = "TQX:\\R1\\Program\\" + NameOf(n);
        const std::string sDisk = "C:\\Temp\\NomiraTemp\\" + NameOf(n);
        expected.push_back("CopyFile(" + sRobot + ", " + sDisk + ", 4160)");
        if (n % 2 == 0) expected.push_back("CopyFile(" + sDisk + ", " + sRobot + ", 64)");
    }
    Run();
    EXPECT_EQ(Copies(), expected);
    for (int n = 100; n < 300; ++n)
        EXPECT_EQ(SimulatorProcess::Bytes(OnRobot(n)), kNew) << n;
    EXPECT_TRUE(fs::is_directory(Drive() / "Temp"));
    EXPECT_TRUE(fs::is_empty(Drive() / "Temp"));
}

TEST_F(StagedRewriteOnSimulatorTest, FailedCopiesArePassedOverInSilence) {
    for (int n = 1; n <= 3; ++n)
        Put(n, kOld);
    Fault({{"on", "CopyFile"}, {"match", "TQX:*p1.src*"}, {"fail", "can't read"}});
    Fault({{"on", "CopyFile"}, {"match", "*, TQX:*p2.src*"}, {"fail", "can't write"}});
    Run();
    EXPECT_EQ(SimulatorProcess::Bytes(OnRobot(1)), kOld);
    EXPECT_EQ(SimulatorProcess::Bytes(OnRobot(2)), kOld);
    EXPECT_EQ(SimulatorProcess::Bytes(OnRobot(3)), kNew);
    EXPECT_TRUE(fs::is_empty(Drive() / "Temp"));
    EXPECT_EQ(m_form.bar.Panels(4).Text(), u"");
}

TEST_F(StagedRewriteOnSimulatorTest, AConnectionThatBreaksLeavesTheOthersAsTheyAre) {
    for (int n = 1; n <= 3; ++n)
        Put(n, kOld);
    Fault({{"on", "CopyFile"}, {"match", "*, TQX:*p2.src*"}, {"drop", "now"}});
    Run();
    EXPECT_EQ(SimulatorProcess::Bytes(OnRobot(1)), kNew);
    EXPECT_EQ(SimulatorProcess::Bytes(OnRobot(2)), kOld);
    EXPECT_EQ(SimulatorProcess::Bytes(OnRobot(3)), kOld);
    EXPECT_TRUE(fs::is_empty(Drive() / "Temp"));
}

}  // namespace
}  // namespace nomira::testing
