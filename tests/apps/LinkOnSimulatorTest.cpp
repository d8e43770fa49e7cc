// The controller link as the forms use it, against the simulator as a process of its own: the life
// of a link, and what becomes of a program when the other end goes.
#include <gtest/gtest.h>

#include "adapters/posix/PosixMachine.h"
#include "adapters/rpc/RpcLinkLibrary.h"
#include "langtools/ProgramState.h"
#include "link/cVexonComm.h"
#include "platform/Platform.h"
#include "testing/SimulatorProcess.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

namespace fs = std::filesystem;

class LinkOnSimulatorTest : public ::testing::Test {
  protected:
    LinkOnSimulatorTest() {
        ResetProgramState();
        fs::create_directories(Disk());
        m_machine.BecomePlatform({});
        SetLinkLibrary(&m_library);
        SimulatorProcess::Put(OnRobot("a.src"), "DEF a()\r\n");
        SimulatorProcess::Put(OnRobot("Program/b.src"), "DEF b()\r\n");
    }
    ~LinkOnSimulatorTest() override {
        g_Comm().ExitVexonComm();
        SetLinkLibrary(nullptr);
        ResetProgramState();
        SetPlatform({});
    }

    fs::path Disk() const { return m_simulator.Folder() / "drives/c/Temp"; }
    fs::path OnRobot(const char* sPath) const { return m_simulator.Root() / "R1" / sPath; }
    bool Connect() { return g_Comm().ConnectingVexon(u"NomiraMain", &m_form); }

    SimulatorProcess m_simulator{NOMIRA_SIMULATOR};
    posix::PosixMachine m_machine{m_simulator.Folder()};
    rpc::RpcLinkLibrary m_library{m_simulator.Socket(), [this](TextView sPath) {
                                      return fs::path(m_machine.prefix.NativePath(sPath));
                                  }};
    Form m_form{u"NomiraMain"};
};

TEST_F(LinkOnSimulatorTest, ASecondConnectKeepsTheLinkAndAfterTheExitThereIsANewOne) {
    ASSERT_TRUE(Connect());
    const cVexonComm* inner = g_Comm().VexonCommands.get();
    EXPECT_TRUE(Connect());
    EXPECT_EQ(g_Comm().VexonCommands.get(), inner);
    EXPECT_EQ(g_Comm().GetRobotFileList(), u"a.src\n");
    g_Comm().ExitVexonComm();
    EXPECT_FALSE(g_Comm().IsVexonConnected());
    ASSERT_TRUE(Connect());
    EXPECT_TRUE(g_Comm().VexonCommands->VexonIsConnected());
    EXPECT_EQ(g_Comm().GetRobotDirList(), u"Program\n");
    EXPECT_EQ(g_Comm().GetParticularFileList(u"R1\\Program"), u"b.src\n");
}

TEST_F(LinkOnSimulatorTest, WithoutTheMiddlewareTheLinkIsThereAndGivesNothing) {
    m_simulator.Stop();
    EXPECT_TRUE(Connect());
    EXPECT_TRUE(g_Comm().IsVexonConnected());
    EXPECT_FALSE(g_Comm().VexonCommands->VexonIsConnected());
    EXPECT_EQ(g_Comm().GetRobotFileList(), u"");
    EXPECT_FALSE(g_Comm().PutFileFromRobotToDisk(u"a.src", u"C:\\Temp"));
    g_Comm().ExitVexonComm();
    m_simulator.Start();
    ASSERT_TRUE(Connect());
    EXPECT_EQ(g_Comm().GetRobotFileList(), u"a.src\n");
}

TEST_F(LinkOnSimulatorTest, AProgramGoesToTheDiskAndBackToWhereItWas) {
    ASSERT_TRUE(Connect());
    ASSERT_TRUE(g_Comm().PutFileFromRobotToDisk(u"b.src", u"C:\\Temp"));
    EXPECT_EQ(SimulatorProcess::Bytes(Disk() / "b.src"), "DEF b()\r\n");
    SimulatorProcess::Put(Disk() / "b.src", "DEF b(changed)\r\n");
    ASSERT_TRUE(g_Comm().PutFileFromDiskToRobot(u"C:\\Temp\\b.src"));
    EXPECT_EQ(SimulatorProcess::Bytes(OnRobot("Program/b.src")), "DEF b(changed)\r\n");
    EXPECT_FALSE(fs::exists(OnRobot("b.src")));
}

TEST_F(LinkOnSimulatorTest, AProgramThatTheLookUpDoesNotFindIsNotFetched) {
    ASSERT_TRUE(Connect());
    EXPECT_FALSE(g_Comm().PutFileFromRobotToDisk(u"none.src", u"C:\\Temp"));
    EXPECT_TRUE(fs::is_empty(Disk()));
}

TEST_F(LinkOnSimulatorTest, AMiddlewareThatDiesBetweenFetchAndSendLosesNothing) {
    ASSERT_TRUE(Connect());
    ASSERT_TRUE(g_Comm().PutFileFromRobotToDisk(u"a.src", u"C:\\Temp"));
    SimulatorProcess::Put(Disk() / "a.src", "DEF a(changed)\r\n");
    m_simulator.Stop(SIGKILL);
    EXPECT_FALSE(g_Comm().PutFileFromDiskToRobot(u"C:\\Temp\\a.src"));
    EXPECT_NE(g_Comm().VexonCommands->VexonError().find(u"bstrDBMessage=LinkLost"), Text::npos)
        << ::testing::PrintToString(g_Comm().VexonCommands->VexonError());
    EXPECT_EQ(SimulatorProcess::Bytes(OnRobot("a.src")), "DEF a()\r\n");
    EXPECT_EQ(SimulatorProcess::Bytes(Disk() / "a.src"), "DEF a(changed)\r\n");
}

TEST_F(LinkOnSimulatorTest, AVariableThatTheControllerLacksLeavesTheDetail) {
    ASSERT_TRUE(Connect());
    Text sValue = u"before";
    EXPECT_FALSE(g_Comm().VCShowVar(u"$nothing", sValue));
    EXPECT_EQ(sValue, u"before");
    EXPECT_EQ(g_Comm().VexonCommands->VexonError(),
              u"Error: bDBCause=False , bstrCause=the controller has no such variable ,"
              u" bstrDBMessage=NoSuchVariable , bstrDBModule=Vexon3 , eMessageType=2 ,"
              u" nBiasTimeStamp=0 , nHighTimeStamp=0 , nLowTimeStamp=0 , nMessage=1 ,"
              u" nMessageHandle=0 , varParams(0) =$NOTHING , varDBParams(0) =$NOTHING");
}

}  // namespace
}  // namespace nomira::testing
