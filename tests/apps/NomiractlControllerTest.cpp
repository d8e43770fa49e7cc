// The companion's commands on a controller, against the simulator as a process of its own.
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <thread>

#include "adapters/rpc/Connection.h"
#include "apps/CommandRun.h"
#include "testing/SimulatorProcess.h"

namespace {

namespace fs = std::filesystem;
using nomira::companion::ExitCode;
using nomira::rpc::Connection;
using nomira::testing::CommandRun;
using nomira::testing::Contains;
using nomira::testing::Outcome;
using nomira::testing::SimulatorProcess;
using nomira::testing::Strings;
using Json = nlohmann::json;

constexpr const char* kOld = "DEF a()\r\n;FOLD OUT 7 'old' State=TRUE\rEND";
constexpr const char* kNew = "DEF a()\r\n;FOLD OUT 7 'Pump' State=TRUE\rEND";
constexpr const char* kStops = ";FOLD OUT 7 'old' State\r\n;FOLD OUT my own title\r\n";

class NomiractlControllerTest : public ::testing::Test {
  protected:
    NomiractlControllerTest() {
        fs::create_directory(Temporary());
        if (const char* pOld = ::getenv("TMPDIR")) m_oldTemporary = pOld;
        ::setenv("TMPDIR", Temporary().c_str(), 1);
        fs::create_directory_symlink(m_simulator.Socket().parent_path(), m_run.Prefix() / "run");
    }
    ~NomiractlControllerTest() override {
        EXPECT_TRUE(fs::is_empty(Temporary())) << "a temporary folder is left";
        if (m_oldTemporary)
            ::setenv("TMPDIR", m_oldTemporary->c_str(), 1);
        else
            ::unsetenv("TMPDIR");
    }

    fs::path Temporary() const { return m_run.Root() / "tmp"; }
    fs::path OnRobot(const std::string& sPath) const { return m_simulator.Root() / "R1" / sPath; }
    void Put(const std::string& sPath, const std::string& sBytes) const {
        SimulatorProcess::Put(OnRobot(sPath), sBytes);
    }
    std::string Bytes(const std::string& sPath) const {
        return SimulatorProcess::Bytes(OnRobot(sPath)).value_or("<none>");
    }
    std::string Folder(const char* sName) const {
        fs::create_directories(m_run.Root() / sName);
        return (m_run.Root() / sName).string();
    }

    Outcome Run(Strings args) const {
        args.insert(args.begin(), "controller");
        return m_run.Run(args);
    }
    void Fault(const Json& fault) const {
        Connection(m_simulator.Socket()).Call("sim.fault", fault);
    }
    void SetVariable(const char* sName, const std::string& sValue) const {
        Connection(m_simulator.Socket()).Call("sim.set", {{"name", sName}, {"value", sValue}});
    }
    Json State() const {
        return Connection(m_simulator.Socket()).Call("sim.state", Json::object());
    }
    // The controller's files that were written, in their order.
    Strings SentTo() const {
        Strings targets;
        const Json state = State();
        for (const auto& call : state.at("calls")) {
            const std::string sCall = call.get<std::string>();
            const std::size_t nTarget = sCall.find(", TQX:");
            if (sCall.rfind("CopyFile(", 0) == 0 && nTarget != std::string::npos)
                targets.push_back(
                    sCall.substr(nTarget + 2, sCall.find(", ", nTarget + 2) - nTarget - 2));
        }
        return targets;
    }

    CommandRun m_run;
    SimulatorProcess m_simulator{NOMIRA_SIMULATOR};
    std::optional<std::string> m_oldTemporary;
};

// ---- Lists ----

TEST_F(NomiractlControllerTest, ListsFilesAndDirectories) {
    Put("main.src", "x");
    Put("Program/a.src", "x");
    Put("Program/b.dat", "x");
    Put("System/c.src", "x");
    EXPECT_EQ(Run({"ls"}).out, "main.src\n");
    EXPECT_EQ(Run({"ls", "R1\\Program"}).out, "a.src\nb.dat\n");
    EXPECT_EQ(Run({"ls", "program"}).out, "a.src\nb.dat\n");
    EXPECT_EQ(Run({"ls", "--dirs"}).out, "Program\nSystem\n");
    const Outcome empty = Run({"ls", "--dirs", "Program"});
    EXPECT_EQ(empty.exit, ExitCode::Done) << empty.err;
    EXPECT_EQ(empty.out, "");
    EXPECT_EQ(Run({"ls", "Program", "--json"}).Json(),
              Json({{"directory", "R1\\Program"}, {"names", {"a.src", "b.dat"}}}));
    EXPECT_EQ(Run({"ls", "--quiet"}).out, "");
}

TEST_F(NomiractlControllerTest, ADirectoryThatIsNotThereIsNoEmptyOne) {
    const Outcome listed = Run({"ls", "None"});
    EXPECT_EQ(listed.exit, ExitCode::Controller);
    EXPECT_EQ(listed.out, "");
    EXPECT_TRUE(Contains(listed.err, "the controller has no such directory")) << listed.err;
    EXPECT_EQ(Run({"ls", ".."}).exit, ExitCode::Controller);
}

// ---- Fetch and send ----

TEST_F(NomiractlControllerTest, FetchesProgramsFromWhereverTheyAre) {
    Put("main.src", "main");
    Put("Program/a.src", "a");
    const std::string sFolder = Folder("here");
    const Outcome fetched = Run({"fetch", "main.src", "A.SRC", "--to", sFolder});
    EXPECT_EQ(fetched.exit, ExitCode::Done) << fetched.err;
    EXPECT_EQ(fetched.out, sFolder + "/main.src: fetched\n" + sFolder + "/A.SRC: fetched\n");
    EXPECT_EQ(CommandRun::Bytes(sFolder + "/main.src"), "main");
    EXPECT_EQ(CommandRun::Bytes(sFolder + "/A.SRC"), "a");
}

TEST_F(NomiractlControllerTest, FetchWritesOverAFileOnlyWhenForced) {
    Put("a.src", "new");
    Put("b.src", "b");
    const std::string sFolder = Folder("here");
    m_run.Write("here/a.src", "mine");
    const Outcome fetched = Run({"fetch", "a.src", "b.src", "--to", sFolder});
    EXPECT_EQ(fetched.exit, ExitCode::Files);
    EXPECT_TRUE(Contains(fetched.err, "a.src exists already; --force")) << fetched.err;
    EXPECT_EQ(CommandRun::Bytes(sFolder + "/a.src"), "mine");
    EXPECT_EQ(CommandRun::Bytes(sFolder + "/b.src"), "b");
    EXPECT_EQ(Run({"fetch", "a.src", "--to", sFolder, "--force"}).exit, ExitCode::Done);
    EXPECT_EQ(CommandRun::Bytes(sFolder + "/a.src"), "new");
}

TEST_F(NomiractlControllerTest, ALinkThatLeadsNowhereIsAFileToo) {
    Put("a.src", "new");
    const std::string sFolder = Folder("here");
    fs::create_symlink(m_run.Root() / "target.src", sFolder + "/a.src");
    EXPECT_EQ(Run({"fetch", "a.src", "--to", sFolder}).exit, ExitCode::Files);
    EXPECT_FALSE(fs::exists(m_run.Root() / "target.src"));
}

TEST_F(NomiractlControllerTest, WhatCannotBeFetchedIsCountedAndTheOthersGoOn) {
    Put("a.src", "a");
    Put("b.src", "b");
    Fault({{"on", "CopyFile"}, {"match", "*b.src*"}, {"fail", "busy just now"}});
    const std::string sFolder = Folder("here");
    const Outcome fetched =
        Run({"fetch", "none.src", "../x.src", "b.src", "a.src", "--to", sFolder, "--json"});
    EXPECT_EQ(fetched.exit, ExitCode::Controller);
    EXPECT_EQ(fetched.Json()["failed"], 3);
    EXPECT_EQ(fetched.Json()["results"].size(), 4U);
    EXPECT_TRUE(Contains(fetched.err,
                         "none.src: can't be fetched; the controller finds no program of this"))
        << fetched.err;
    EXPECT_TRUE(Contains(fetched.err, "../x.src: is no program's name")) << fetched.err;
    EXPECT_TRUE(Contains(fetched.err, "bstrCause=busy just now")) << fetched.err;
    EXPECT_EQ(fetched.Json()["results"][3]["file"], sFolder + "/a.src");
    EXPECT_EQ(CommandRun::Bytes(sFolder + "/a.src"), "a");
    EXPECT_FALSE(fs::exists(sFolder + "/b.src"));
    const Outcome nowhere = Run({"fetch", "a.src", "--to", sFolder + "/none"});
    EXPECT_EQ(nowhere.exit, ExitCode::Files);
    EXPECT_TRUE(Contains(nowhere.err, "mkdir -p")) << nowhere.err;
}

TEST_F(NomiractlControllerTest, SendsAProgramToWhereItBelongs) {
    Put("Program/a.src", "old");
    const std::string sKnown = m_run.Write("a.src", "new a"), sNew = m_run.Write("b.src", "new b");
    const Outcome sent = Run({"send", sKnown, sNew});
    EXPECT_EQ(sent.exit, ExitCode::Done) << sent.err;
    EXPECT_EQ(sent.out, sKnown + ": sent\n" + sNew + ": sent\n");
    EXPECT_EQ(Bytes("Program/a.src"), "new a");
    EXPECT_EQ(Bytes("b.src"), "new b");
    EXPECT_EQ(Bytes("a.src"), "<none>");
}

TEST_F(NomiractlControllerTest, SendsToAGivenPlace) {
    Put("Program/a.src", "old");
    const std::string sA = m_run.Write("a.src", "a"), sB = m_run.Write("b.src", "b");
    EXPECT_EQ(Run({"send", sA, "--to", "TQX:\\R1\\c.src"}).exit, ExitCode::Done);
    EXPECT_EQ(Bytes("c.src"), "a");
    EXPECT_EQ(Run({"send", sA, sB, "--to", "tqx:\\R1\\Program\\"}).exit, ExitCode::Done);
    EXPECT_EQ(Bytes("Program/a.src"), "a");
    EXPECT_EQ(Bytes("Program/b.src"), "b");
    EXPECT_EQ(Run({"send", sA, sB, "--to", "TQX:\\R1\\d.src"}).exit, ExitCode::WrongUsage);
    EXPECT_EQ(Run({"send", sA, "--to", "R1\\d.src"}).exit, ExitCode::WrongUsage);
    EXPECT_EQ(Run({"send", sA, "--to", "TQX:\\R1\\None\\d.src"}).exit, ExitCode::Controller);
}

TEST_F(NomiractlControllerTest, WhatCannotBeSentIsToldAndTheOthersGoOn) {
    Fault({{"on", "CopyFile"}, {"match", "*a.src*"}, {"fail", "write protected"}});
    const std::string sA = m_run.Write("a.src", "a"), sB = m_run.Write("b.src", "b");
    const Outcome sent = Run({"send", sA, (m_run.Root() / "none.src").string(), sB});
    EXPECT_EQ(sent.exit, ExitCode::Controller);
    EXPECT_TRUE(Contains(sent.err, sA + ": can't be sent: Error: ")) << sent.err;
    EXPECT_TRUE(Contains(sent.err, "bstrCause=write protected")) << sent.err;
    EXPECT_TRUE(Contains(sent.err, "none.src: No such file")) << sent.err;
    EXPECT_EQ(Bytes("a.src"), "<none>");
    EXPECT_EQ(Bytes("b.src"), "b");
}

// ---- Variables ----

TEST_F(NomiractlControllerTest, ReadsAndWritesVariables) {
    SetVariable("$OV_PRO", "100");
    const Outcome worked = Run({"vars", "$ov_pro", "$OV_PRO=30", "$OV_PRO", "$NONE", "$NONE=1"});
    EXPECT_EQ(worked.exit, ExitCode::Controller);
    EXPECT_EQ(worked.out, "$ov_pro=100\n$OV_PRO=30\n$OV_PRO=30\n");
    EXPECT_TRUE(Contains(worked.err, "nomiractl: $NONE: can't be read: ")) << worked.err;
    EXPECT_TRUE(Contains(worked.err, "nomiractl: $NONE=1: can't be written: ")) << worked.err;
    EXPECT_EQ(State().at("variables"), Json({{"$OV_PRO", "30"}}));
    EXPECT_EQ(Run({"vars", "$OV_PRO", "--json"}).Json(),
              Json({{"failed", 0},
                    {"results", {{{"name", "$OV_PRO"}, {"value", "30"}, {"written", false}}}}}));
}

TEST_F(NomiractlControllerTest, TellsWhoGaveEachSize) {
    SetVariable("$NUM_OUT", "4096");
    const Outcome shown = Run({"sizes"});
    EXPECT_EQ(shown.exit, ExitCode::Done) << shown.err;
    EXPECT_EQ(std::count(shown.out.begin(), shown.out.end(), '\n'), 10);
    EXPECT_TRUE(Contains(shown.out, "$NUM_OUT                4096  told by the controller\n"))
        << shown.out;
    EXPECT_TRUE(Contains(shown.out, "GETVARSIZE(#FLAG)       1024  default\n")) << shown.out;
    EXPECT_TRUE(Contains(shown.out, "PROCPAR[]                  0  not told")) << shown.out;
    const Json json = Run({"sizes", "--json"}).Json();
    EXPECT_EQ(json["sizes"].size(), 10U);
    EXPECT_EQ(json["sizes"][0],
              Json({{"variable", "$NUM_OUT"}, {"size", 4096}, {"source", "told"}}));
    EXPECT_EQ(json["sizes"][1]["source"], "default");
    EXPECT_EQ(json["sizes"][9]["source"], "unknown");
}

// ---- No controller ----

TEST_F(NomiractlControllerTest, WithoutAControllerEachCommandSaysSoOnce) {
    m_run.CreateDatabase();
    m_simulator.Stop();
    const std::string sFile = m_run.Write("a.src", "a");
    for (const Strings& args :
         {Strings{"ls"}, Strings{"fetch", "a.src"}, Strings{"send", sFile}, Strings{"vars", "$X"},
          Strings{"sizes"}, Strings{"rewrite", "--all"}, Strings{"rewrite", "a.src"}}) {
        const Outcome refused = Run(args);
        EXPECT_EQ(refused.exit, ExitCode::Controller) << args[0];
        EXPECT_EQ(refused.out, "") << args[0];
        EXPECT_EQ(refused.err, "nomiractl: no controller answers on " +
                                   (m_run.Prefix() / "run/vexon3.sock").string() +
                                   "; start its middleware, or the simulator vexon3.exe\n");
    }
}

TEST_F(NomiractlControllerTest, WrongUsageIsTold) {
    EXPECT_EQ(Run({}).exit, ExitCode::WrongUsage);
    EXPECT_EQ(Run({"fetch"}).exit, ExitCode::WrongUsage);
    EXPECT_EQ(Run({"rewrite"}).exit, ExitCode::WrongUsage);
    EXPECT_EQ(Run({"rewrite", "--all", "a.src"}).exit, ExitCode::WrongUsage);
    const Outcome help = Run({"rewrite", "--help"});
    EXPECT_EQ(help.exit, ExitCode::Done);
    EXPECT_TRUE(Contains(help.out, "--dry-run")) << help.out;
}

// ---- Rewrite ----

class NomiractlControllerRewriteTest : public NomiractlControllerTest {
  protected:
    NomiractlControllerRewriteTest() {
        m_run.CreateDatabase();
        const Outcome stored =
            m_run.Run({"import", m_run.Write("names.txt", "OUT_7 Pump\r\nOUT_8 Valve\r\n")});
        EXPECT_EQ(stored.exit, ExitCode::Done) << stored.err;
    }
    Outcome Rewrite(Strings args) const {
        args.insert(args.begin(), "rewrite");
        return Run(args);
    }
};

TEST_F(NomiractlControllerRewriteTest, SendsBackWhatHasChangedAndKeepsEveryLineEnd) {
    Put("Program/a.src", kOld);
    Put("b.src", kNew);
    const Outcome done = Rewrite({"a.src", "b.src", "A.SRC"});
    EXPECT_EQ(done.exit, ExitCode::Done) << done.err;
    EXPECT_EQ(done.out, "2 programs, 1 changed (1 lines), 0 with errors\n");
    EXPECT_EQ(Bytes("Program/a.src"), kNew);
    EXPECT_EQ(SentTo(), (Strings{"TQX:\\R1\\Program\\a.src"}));
}

TEST_F(NomiractlControllerRewriteTest, TakesAllProgramsOfAllDirectories) {
    for (const char* sPath : {"a.src", "Program/b.SRC", "Program/Deep/c.src", "System/d.src"})
        Put(sPath, kOld);
    Put("Program/e.dat", kOld);
    const Outcome done = Rewrite({"--all", "--json"});
    EXPECT_EQ(done.exit, ExitCode::Done) << done.err;
    EXPECT_EQ(done.Json()["programs"], 4);
    EXPECT_EQ(done.Json()["changed"], 4);
    for (const char* sPath : {"a.src", "Program/b.SRC", "Program/Deep/c.src", "System/d.src"})
        EXPECT_EQ(Bytes(sPath), kNew) << sPath;
    EXPECT_EQ(Bytes("Program/e.dat"), kOld);
}

TEST_F(NomiractlControllerRewriteTest, ASecondProgramOfANameIsReportedAndLeft) {
    Put("Program/a.src", kOld);
    Put("System/A.src", kOld);
    const Outcome done = Rewrite({"--all"});
    EXPECT_EQ(done.exit, ExitCode::Refused);
    EXPECT_TRUE(Contains(done.err, "R1\\System\\A.src: the controller has another program"))
        << done.err;
    EXPECT_EQ(done.out, "2 programs, 1 changed (1 lines), 1 with errors\n");
    EXPECT_EQ(Bytes("Program/a.src"), kNew);
    EXPECT_EQ(Bytes("System/A.src"), kOld);
}

// The list is the seventh request of a connection, behind its six objects.
TEST_F(NomiractlControllerRewriteTest, AControllerWithoutEndIsRefused) {
    Put("a.src", kOld);
    Json answer{{"jsonrpc", "2.0"}, {"id", 7}, {"result", {{"names", Json::array()}}}};
    for (int n = 0; n < 10'000; ++n)
        answer["result"]["names"].push_back("d" + std::to_string(n));
    Fault({{"on", "ListDirectory"}, {"nonsense", answer.dump()}});
    const Outcome refused = Rewrite({"--all"});
    EXPECT_EQ(refused.exit, ExitCode::Controller);
    EXPECT_TRUE(Contains(refused.err, "more than 10000 directories")) << refused.err;
    EXPECT_EQ(Bytes("a.src"), kOld);
}

TEST_F(NomiractlControllerRewriteTest, DryRunDiffAndCheckSendNothing) {
    Put("a.src", kOld);
    EXPECT_EQ(Rewrite({"--dry-run", "a.src"}).out,
              "1 programs, 1 would change (1 lines), 0 with errors\n");
    const Outcome shown = Rewrite({"--dry-run", "--diff", "--all"});
    EXPECT_TRUE(Contains(shown.out, "--- a/a.src\n+++ b/a.src\n")) << shown.out;
    EXPECT_TRUE(Contains(shown.out, "+;FOLD OUT 7 'Pump' State=TRUE")) << shown.out;
    EXPECT_EQ(Rewrite({"--check", "a.src"}).exit, ExitCode::Differs);
    EXPECT_EQ(SentTo(), Strings{});
    EXPECT_EQ(Bytes("a.src"), kOld);
    EXPECT_EQ(Rewrite({"a.src"}).exit, ExitCode::Done);
    EXPECT_EQ(Rewrite({"--check", "a.src"}).exit, ExitCode::Done);
}

TEST_F(NomiractlControllerRewriteTest, AHeaderThatWouldStopTheRunIsReportedAndTheOthersGoOn) {
    Put("a.src", kStops);
    Put("b.src", kOld);
    const Outcome done = Rewrite({"--all"});
    EXPECT_EQ(done.exit, ExitCode::Refused);
    EXPECT_TRUE(Contains(done.err, "a.src:2: Invalid procedure call or argument")) << done.err;
    EXPECT_EQ(Bytes("a.src"), kStops);
    EXPECT_EQ(Bytes("b.src"), kNew);
}

TEST_F(NomiractlControllerRewriteTest, ACopyThatFailsIsToldAndTheOthersGoOn) {
    for (const char* sPath : {"a.src", "b.src", "c.src"})
        Put(sPath, kOld);
    Fault({{"on", "CopyFile"}, {"match", "TQX:*a.src*"}, {"fail", "can't read"}});
    Fault({{"on", "CopyFile"}, {"match", "*, TQX:*b.src*"}, {"fail", "can't write"}});
    const Outcome done = Rewrite({"--all"});
    EXPECT_EQ(done.exit, ExitCode::Controller);
    EXPECT_TRUE(Contains(done.err, "nomiractl: a.src: can't be fetched")) << done.err;
    EXPECT_TRUE(Contains(done.err, "bstrCause=can't read ")) << done.err;
    EXPECT_TRUE(Contains(done.err, "nomiractl: b.src: can't be sent")) << done.err;
    EXPECT_TRUE(Contains(done.err, "bstrCause=can't write ")) << done.err;
    EXPECT_EQ(done.out, "3 programs, 1 changed (1 lines), 2 with errors\n");
    EXPECT_EQ(Bytes("a.src"), kOld);
    EXPECT_EQ(Bytes("b.src"), kOld);
    EXPECT_EQ(Bytes("c.src"), kNew);
}

TEST_F(NomiractlControllerRewriteTest, AConnectionThatBreaksCostsOneProgram) {
    for (const char* sPath : {"a.src", "b.src", "c.src", "d.src"})
        Put(sPath, kOld);
    Fault({{"on", "CopyFile"}, {"match", "TQX:*a.src*"}, {"drop", "now"}});
    Fault({{"on", "CopyFile"}, {"match", "TQX:*b.src*"}, {"drop", "midway"}});
    Fault({{"on", "ResolvePath"}, {"match", "*c.src*"}, {"nonsense", "%&$"}});
    const Outcome done = Rewrite({"--all"});
    EXPECT_EQ(done.exit, ExitCode::Controller);
    EXPECT_EQ(done.out, "4 programs, 1 changed (1 lines), 3 with errors\n") << done.err;
    EXPECT_TRUE(Contains(done.err, "bstrDBMessage=LinkLost")) << done.err;
    EXPECT_TRUE(Contains(done.err, "bstrDBMessage=BadAnswer")) << done.err;
    EXPECT_EQ(Bytes("a.src"), kOld);
    EXPECT_EQ(Bytes("d.src"), kNew);
}

// The look-up ahead of the way back, the second one, never ends: then the controller dies.
TEST_F(NomiractlControllerRewriteTest, AControllerThatDiesBeforeTheProgramIsBackLosesNothing) {
    Put("a.src", kOld);
    Put("b.src", kOld);
    Fault({{"on", "ResolvePath"}, {"call", 2}, {"delay", 1'000'000'000}});
    std::thread death([this] {
        for (int nSeen = 0; nSeen < 2;)
            nSeen += Contains(m_simulator.ReadLogLine(), "ResolvePath(") ? 1 : 0;
        m_simulator.Stop(SIGKILL);
    });
    const Outcome done = Rewrite({"a.src", "b.src"});
    death.join();
    EXPECT_EQ(done.exit, ExitCode::Controller);
    EXPECT_TRUE(Contains(done.err, "nomiractl: a.src: can't be sent: ")) << done.err;
    EXPECT_TRUE(Contains(done.err, "nomiractl: b.src: no controller answers on ")) << done.err;
    EXPECT_EQ(done.out, "2 programs, 0 changed (0 lines), 2 with errors\n");
    EXPECT_EQ(Bytes("a.src"), kOld);
    EXPECT_EQ(Bytes("b.src"), kOld);
}

// Ctrl-C while the third program is looked for.
class InterruptedRobotTest : public NomiractlControllerRewriteTest {
  protected:
    InterruptedRobotTest() {
        for (const char* sPath : {"a.src", "b.src", "c.src"})
            Put(sPath, kOld);
    }
    // Calls `meanwhile` when the first two programs are there with their new names.
    template <typename Act>
    Outcome RewriteInterrupted(Act meanwhile) {
        Fault({{"on", "ResolvePath"}, {"match", "*c.src*"}, {"delay", 500}});
        std::thread user([this, meanwhile] {
            while (!Contains(m_simulator.ReadLogLine(), "c.src"))
                ;
            ::kill(::getpid(), SIGINT);
            meanwhile();
        });
        const Outcome done = Rewrite({"a.src", "b.src", "c.src", "d.src"});
        user.join();
        return done;
    }
};

TEST_F(InterruptedRobotTest, WhatWasSentIsSentBack) {
    const Outcome done = RewriteInterrupted([] {});
    EXPECT_EQ(done.exit, ExitCode::Interrupted);
    EXPECT_EQ(done.err, "nomiractl: interrupted; nothing was changed\n");
    EXPECT_GE(SentTo().size(), 4U);
    for (const char* sPath : {"a.src", "b.src", "c.src"})
        EXPECT_EQ(Bytes(sPath), kOld) << sPath;
}

TEST_F(InterruptedRobotTest, WhatCannotBeSentBackIsToldAndKeptOnTheDisk) {
    Fault({{"on", "CopyFile"}, {"match", "*, TQX:*a.src*"}, {"call", 2}, {"fail", "no room"}});
    const Outcome done = RewriteInterrupted([] {});
    EXPECT_EQ(done.exit, ExitCode::Interrupted);
    EXPECT_TRUE(done.err.starts_with(
        "nomiractl: interrupted; these programs could not be sent back:\nnomiractl: a.src: can't"
        " be sent"))
        << done.err;
    EXPECT_EQ(std::count(done.err.begin(), done.err.end(), '\n'), 2) << done.err;
    EXPECT_EQ(Bytes("a.src"), kNew);
    EXPECT_EQ(Bytes("b.src"), kOld);
    const std::size_t nPath = done.err.find("kept as ") + 8;
    const fs::path kept = done.err.substr(nPath, done.err.find('\n', nPath) - nPath);
    EXPECT_EQ(CommandRun::Bytes(kept), kOld) << kept;
    fs::remove_all(kept.parent_path());
}

TEST_F(InterruptedRobotTest, AControllerThatDiesThenIsToldForEachProgram) {
    const Outcome done = RewriteInterrupted([this] { m_simulator.Stop(SIGKILL); });
    EXPECT_EQ(done.exit, ExitCode::Interrupted);
    for (const char* sName : {"a.src", "b.src"})
        EXPECT_TRUE(Contains(done.err, std::string("nomiractl: ") + sName + ": ")) << done.err;
    for (const auto& entry : fs::directory_iterator(Temporary()))
        fs::remove_all(entry.path());
}

TEST_F(NomiractlControllerRewriteTest, OfTwoHundredProgramsOnlyTheChangedOnesAreSentBack) {
    Strings changing;
    for (int n = 100; n < 300; ++n) {
        const std::string sName = "p" + std::to_string(n) + ".src";
        Put("Program/" + sName, n % 2 == 0 ? kOld : kNew);
        if (n % 2 == 0) changing.push_back("TQX:\\R1\\Program\\" + sName);
    }
    const Outcome done = Rewrite({"--all"});
    EXPECT_EQ(done.exit, ExitCode::Done) << done.err;
    EXPECT_EQ(done.out, "200 programs, 100 changed (100 lines), 0 with errors\n");
    EXPECT_EQ(SentTo(), changing);
    for (int n = 100; n < 300; ++n)
        EXPECT_EQ(Bytes("Program/p" + std::to_string(n) + ".src"), kNew) << n;
    EXPECT_EQ(Rewrite({"--all", "--check"}).exit, ExitCode::Done);
}

TEST_F(NomiractlControllerRewriteTest, WithoutADatabaseNoProgramLosesItsNames) {
    Put("a.src", kOld);
    fs::remove(m_run.Database());
    const Outcome done = Rewrite({"--all"});
    EXPECT_EQ(done.exit, ExitCode::Database);
    EXPECT_TRUE(Contains(done.err, "nomiractl db create")) << done.err;
    EXPECT_EQ(Bytes("a.src"), kOld);
}

TEST_F(NomiractlControllerRewriteTest, WithoutAPlaceForTemporaryFilesNothingIsFetched) {
    Put("a.src", kOld);
    ::setenv("TMPDIR", (m_run.Root() / "none").c_str(), 1);
    const Outcome done = Rewrite({"a.src"});
    EXPECT_EQ(done.exit, ExitCode::Files);
    EXPECT_TRUE(Contains(done.err, "TMPDIR")) << done.err;
    EXPECT_EQ(Bytes("a.src"), kOld);
}

}  // namespace
