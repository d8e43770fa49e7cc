// The simulator as a process of its own, and the adapter that the program has for it.
#include "apps/vexon3/Vexon3.h"

#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <sstream>

#include "adapters/posix/ProcProcesses.h"
#include "adapters/rpc/Connection.h"
#include "adapters/rpc/RpcLinkLibrary.h"
#include "langtools/RuntimeError.h"
#include "testing/Raised.h"
#include "testing/RunProcess.h"
#include "testing/SimulatorProcess.h"
#include "testing/TemporaryFolder.h"
#include "testing/TextPrinting.h"

namespace nomira::simulator {
namespace {

namespace fs = std::filesystem;
using rpc::Json;
using testing::ProcessOutcome;
using testing::Raised;
using testing::RunProcess;
using testing::SimulatorProcess;
using testing::TemporaryFolder;

class Vexon3Test : public ::testing::Test {
  protected:
    // A run that is to end by itself. One that would serve for ever instead is ended in the end.
    ProcessOutcome Run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"60", NOMIRA_SIMULATOR});
        return RunProcess("/usr/bin/timeout", arguments,
                          {{"NOMIRA_PREFIX", m_folder.Path().string()}, {"LC_ALL", "C"}});
    }
    void ExpectRefusal(const std::vector<std::string>& arguments, const std::string& sWords) const {
        const ProcessOutcome outcome = Run(arguments);
        EXPECT_EQ(outcome.nStatus, 1);
        EXPECT_EQ(outcome.sOut, "");
        EXPECT_EQ(outcome.sErr.rfind("vexon3.exe: ", 0), 0U) << outcome.sErr;
        EXPECT_NE(outcome.sErr.find(sWords), std::string::npos) << outcome.sErr;
    }

    TemporaryFolder m_folder;
};

// The files of a simulator, as the program sees them.
std::unique_ptr<SyncFile> FilesOf(rpc::RpcLinkLibrary& library) {
    auto object = library.CreateFactory()->CreateLinkObject(kSyncFileId, u"Test");
    return std::unique_ptr<SyncFile>(dynamic_cast<SyncFile*>(object.release()));
}

// ---- The command line ----

TEST_F(Vexon3Test, HelpAndVersion) {
    const ProcessOutcome help = Run({"--help"});
    EXPECT_EQ(help.nStatus, 0);
    for (const char* sOption :
         {"--root", "--socket", "--scenario", "--log", "--state", "--version"})
        EXPECT_NE(help.sOut.find(sOption), std::string::npos) << sOption;
    EXPECT_EQ(help.sErr, "");
    EXPECT_EQ(Run({"--version"}).nStatus, 0);
    EXPECT_NE(Run({"--version"}).sOut, "");
}

TEST_F(Vexon3Test, WrongUsage) {
    EXPECT_EQ(Run({"--nothing"}).nStatus, 2);
    EXPECT_EQ(Run({"word"}).nStatus, 2);
    EXPECT_EQ(Run({"--socket"}).nStatus, 2);
}

TEST_F(Vexon3Test, ABadScenarioStopsTheStart) {
    m_folder.Put("bad.json", R"({"faults": [{"on": "ReadVar", "drop": "later"}]})");
    const std::string sFile = (m_folder / "bad.json").string();
    ExpectRefusal({"--scenario", sFile}, sFile + ": faults[0].drop: must be \"now\" or \"midway\"");
    ExpectRefusal({"--scenario", "none.json"}, "none.json: can't be read");
    m_folder.Put("out.json", R"({"programs": {"files": {"../../x.src": "x"}}})");
    ExpectRefusal({"--scenario", (m_folder / "out.json").string()}, "can't be put below R1");
    EXPECT_FALSE(fs::exists(m_folder / "x.src"));
    EXPECT_FALSE(fs::exists(m_folder / "run/vexon3.sock"));
}

TEST_F(Vexon3Test, ALogThatCantBeWrittenStopsTheStart) {
    ExpectRefusal({"--log", (m_folder / "none/log").string()}, "can't be written");
}

TEST_F(Vexon3Test, StateOfNobodyIsAFailure) {
    ExpectRefusal({"--state", (m_folder / "none.sock").string()}, "none.sock");
}

// ---- The socket ----

TEST_F(Vexon3Test, ItsFolderIsTheUsersAlone) {
    SimulatorProcess simulator(NOMIRA_SIMULATOR);
    EXPECT_EQ(fs::status(simulator.Socket().parent_path()).permissions(), fs::perms::owner_all);
    EXPECT_TRUE(fs::is_socket(simulator.Socket()));
}

TEST_F(Vexon3Test, AFolderThatOthersMayEnterIsRefused) {
    for (const unsigned nMode : {0710U, 0701U, 0755U, 0777U}) {
        fs::create_directory(m_folder / "run");
        fs::permissions(m_folder / "run", fs::perms(nMode));
        ExpectRefusal({"--socket", (m_folder / "run/s").string()}, "chmod 700");
        EXPECT_FALSE(fs::exists(m_folder / "run/s"));
    }
}

TEST_F(Vexon3Test, WhereOneListensNoOtherStarts) {
    SimulatorProcess simulator(NOMIRA_SIMULATOR);
    ExpectRefusal({"--socket", simulator.Socket().string()}, "another simulator listens there");
    EXPECT_NO_THROW(rpc::Connection(simulator.Socket()).Call("sim.state", Json::object()));
}

TEST_F(Vexon3Test, AStaleSocketIsTakenAway) {
    SimulatorProcess simulator(NOMIRA_SIMULATOR);
    EXPECT_EQ(simulator.Stop(SIGKILL), 128 + SIGKILL);
    EXPECT_TRUE(fs::is_socket(simulator.Socket()));
    simulator.Start();
    EXPECT_NO_THROW(rpc::Connection(simulator.Socket()).Call("sim.state", Json::object()));
}

TEST_F(Vexon3Test, WhatIsNoSocketStays) {
    m_folder.Put("run/s", "precious");
    fs::permissions(m_folder / "run", fs::perms::owner_all);
    ExpectRefusal({"--socket", (m_folder / "run/s").string()}, "no socket");
    EXPECT_EQ(m_folder.Bytes("run/s"), "precious");
}

TEST_F(Vexon3Test, ASignalEndsItCleanly) {
    for (const int nSignal : {SIGTERM, SIGINT}) {
        SimulatorProcess simulator(NOMIRA_SIMULATOR);
        const rpc::Connection connected(simulator.Socket());
        EXPECT_EQ(simulator.Stop(nSignal), 0);
        EXPECT_FALSE(fs::exists(simulator.Socket()));
        EXPECT_TRUE(fs::is_empty(simulator.Socket().parent_path()));
    }
}

TEST_F(Vexon3Test, ASocketThatIsNoLongerItsOwnStays) {
    SimulatorProcess simulator(NOMIRA_SIMULATOR);
    fs::remove(simulator.Socket());
    SimulatorProcess::Put(simulator.Socket(), "somebody else's");
    EXPECT_EQ(simulator.Stop(SIGTERM), 0);
    EXPECT_TRUE(fs::exists(simulator.Socket()));
}

TEST_F(Vexon3Test, ProgramAndSimulatorMeetWithoutBeingTold) {
    EXPECT_EQ(rpc::DefaultSocket("/prefix"), "/prefix/run/vexon3.sock");
    fs::create_directory(m_folder / "run");
    fs::permissions(m_folder / "run", fs::perms(0755));
    ExpectRefusal({}, (m_folder / "run/vexon3.sock").string());  // so that it doesn't stay
}

TEST_F(Vexon3Test, TheProgramsProcessSearchFindsIt) {
    SimulatorProcess simulator(NOMIRA_SIMULATOR);
    posix::ProcProcesses processes;
    const auto sName = processes.ModuleFileName(static_cast<std::uint32_t>(simulator.Id()));
    ASSERT_TRUE(sName.has_value());
    EXPECT_TRUE(sName->ends_with(u"\\vexon3.exe"));
}

// ---- At work ----

TEST_F(Vexon3Test, TheScenarioIsPlayed) {
    m_folder.Put("cell.json", R"j({"variables": {"$NUM_OUT": 4096},
        "programs": {"files": {"Program\\x.src": ["DEF x()", "END"]}}})j");
    SimulatorProcess simulator(NOMIRA_SIMULATOR, {"--scenario", (m_folder / "cell.json").string()});
    EXPECT_EQ(SimulatorProcess::Bytes(simulator.Root() / "R1/Program/x.src"), "DEF x()\r\nEND\r\n");
    const ProcessOutcome outcome = Run({"--state", simulator.Socket().string()});
    EXPECT_EQ(outcome.nStatus, 0);
    const Json state = Json::parse(outcome.sOut);
    EXPECT_EQ(state.at("variables"), Json({{"$NUM_OUT", "4096"}}));
    EXPECT_EQ(state.at("files"), Json({"TQX:\\R1\\Program\\x.src"}));
}

TEST_F(Vexon3Test, ACallIsLogged) {
    SimulatorProcess simulator(NOMIRA_SIMULATOR);
    rpc::Connection connection(simulator.Socket());
    EXPECT_EQ(simulator.ReadLogLine(), "client 1: here");
    connection.Call("CreateLinkObject", {{"class", "LNK_TqxLib.SyncVar"}, {"connection", "A"}});
    EXPECT_EQ(simulator.ReadLogLine(), "client 1: CreateLinkObject(LNK_TqxLib.SyncVar, A): done");
    connection.Close();
    EXPECT_EQ(simulator.ReadLogLine(), "client 1: gone");
}

TEST_F(Vexon3Test, SeveralProgramsAreServedAtOnce) {
    SimulatorProcess simulator(NOMIRA_SIMULATOR);
    rpc::Connection first(simulator.Socket()), second(simulator.Socket());
    for (int n = 0; n < 3; ++n)
        for (rpc::Connection* connection : {&first, &second})
            EXPECT_NO_THROW(connection->Call("sim.state", Json::object()));
}

TEST_F(Vexon3Test, ALateAnswerHoldsUpNobodyElse) {
    SimulatorProcess simulator(NOMIRA_SIMULATOR);
    rpc::Connection control(simulator.Socket());
    // For ever, as far as this test goes: the other one's call ends with the simulator.
    control.Call("sim.fault", {{"on", "CreateLinkObject"}, {"delay", 1'000'000'000}});
    asio::io_context context;
    asio::local::stream_protocol::socket waiting(context);
    waiting.connect(simulator.Socket().string());
    const std::string sRequest =
        rpc::LineOf({{"jsonrpc", "2.0"},
                     {"id", 1},
                     {"method", "CreateLinkObject"},
                     {"params", {{"class", "LNK_TqxLib.SyncVar"}, {"connection", ""}}}});
    asio::error_code error;
    waiting.write_some(asio::buffer(sRequest), error);
    while (control.Call("sim.state", Json::object()).at("calls").empty())
        continue;
    EXPECT_EQ(waiting.available(), 0U);
}

TEST_F(Vexon3Test, ADroppedConnectionEndsTheCallAndNewObjectsWork) {
    for (const char* sWhen : {"now", "midway"}) {
        SimulatorProcess simulator(NOMIRA_SIMULATOR);
        rpc::RpcLinkLibrary library(simulator.Socket(), [](TextView) { return fs::path(); });
        const auto files = FilesOf(library);
        rpc::Connection(simulator.Socket())
            .Call("sim.fault", {{"on", "ListDirectory"}, {"call", 1}, {"drop", sWhen}});
        const auto list = [](SyncFile& object) { object.ListDirectory(u"TQX:\\\\R1\\", 0, 5); };
        EXPECT_EQ(Raised([&] { list(*files); }), ErrorNumber::LinkFailure);
        EXPECT_EQ(files->GetLastErrorRecord().bstrDBMessage, u"LinkLost");
        EXPECT_EQ(Raised([&] { list(*files); }), ErrorNumber::LinkFailure);
        EXPECT_EQ(Raised([&] { list(*FilesOf(library)); }), std::nullopt);
    }
}

TEST_F(Vexon3Test, NonsenseEndsTheCall) {
    SimulatorProcess simulator(NOMIRA_SIMULATOR);
    rpc::RpcLinkLibrary library(simulator.Socket(), [](TextView) { return fs::path(); });
    const auto files = FilesOf(library);
    rpc::Connection(simulator.Socket())
        .Call("sim.fault", {{"on", "ResolvePath"}, {"nonsense", "%&$"}});
    EXPECT_EQ(Raised([&] { files->ResolvePath(u"/R1/x.src"); }), ErrorNumber::LinkFailure);
    EXPECT_EQ(files->GetLastErrorRecord().bstrDBMessage, u"BadAnswer");
}

TEST_F(Vexon3Test, APathThatLeadsOutIsRefused) {
    SimulatorProcess simulator(NOMIRA_SIMULATOR);
    SimulatorProcess::Put(simulator.Folder() / "secret.src", "secret");
    rpc::RpcLinkLibrary library(simulator.Socket(), [](TextView) { return fs::path(); });
    const auto files = FilesOf(library);
    for (const Text& sPath : {Text(u"TQX:\\..\\secret.src"), Text(u"/../secret.src"),
                              Text(u"TQX:\\R1\\..\\..\\secret.src"), Text(u"C:\\secret.src")}) {
        EXPECT_EQ(Raised([&] { files->ReadFileToMemory(sPath, 4160); }), ErrorNumber::LinkFailure);
        EXPECT_EQ(files->GetLastErrorRecord().bstrDBMessage, u"BadPath");
        EXPECT_EQ(Raised([&] { files->WriteFileFromMemory("x", sPath, 4160); }),
                  ErrorNumber::LinkFailure);
        EXPECT_EQ(Raised([&] { files->DeleteFile(sPath, -1); }), ErrorNumber::LinkFailure);
    }
    EXPECT_EQ(SimulatorProcess::Bytes(simulator.Folder() / "secret.src"), "secret");
}

TEST_F(Vexon3Test, ALineWithoutEndEndsTheConnectionAlone) {
    SimulatorProcess simulator(NOMIRA_SIMULATOR);
    asio::io_context context;
    asio::local::stream_protocol::socket hostile(context);
    hostile.connect(simulator.Socket().string());
    const std::string sPiece(1'000'000, 'x');
    asio::error_code error;
    while (!error)
        hostile.write_some(asio::buffer(sPiece), error);
    EXPECT_NO_THROW(rpc::Connection(simulator.Socket()).Call("sim.state", Json::object()));
}

}  // namespace
}  // namespace nomira::simulator
