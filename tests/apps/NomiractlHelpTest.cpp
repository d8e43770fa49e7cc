#include "apps/BinaryRun.h"

namespace {

namespace fs = std::filesystem;
using nomira::testing::BinaryRun;
using nomira::testing::Contains;
using nomira::testing::ProcessOutcome;
using nomira::testing::RunProcess;
using nomira::testing::Strings;

class NomiractlHelpTest : public ::testing::Test {
  protected:
    BinaryRun m_run;
};

// "db info" as two words.
Strings HelpOf(const std::string& sCommand) {
    Strings words;
    std::istringstream in(sCommand);
    for (std::string sWord; in >> sWord;)
        words.push_back(sWord);
    words.emplace_back("--help");
    return words;
}

TEST_F(NomiractlHelpTest, ExamplesComeAheadOfTheUsage) {
    for (const char* sCommand : {"list",
                                 "get",
                                 "stats",
                                 "check",
                                 "diff",
                                 "xref",
                                 "completion",
                                 "import",
                                 "apply",
                                 "export",
                                 "rewrite",
                                 "harvest",
                                 "set",
                                 "rm",
                                 "log",
                                 "undo",
                                 "db create",
                                 "db info",
                                 "db backup",
                                 "db restore",
                                 "db verify",
                                 "db",
                                 "db convert",
                                 "db compact",
                                 "controller",
                                 "controller ls",
                                 "controller fetch",
                                 "controller send",
                                 "controller vars",
                                 "controller sizes",
                                 "controller rewrite",
                                 "version"}) {
        const ProcessOutcome help = m_run.Start(HelpOf(sCommand));
        EXPECT_EQ(help.nStatus, 0);
        const std::size_t nExamples =
            help.sOut.find("Examples:\n  nomiractl " + std::string(sCommand));
        ASSERT_NE(nExamples, std::string::npos) << help.sOut;
        EXPECT_LT(nExamples, help.sOut.find("Usage:")) << sCommand;
    }
    EXPECT_TRUE(Contains(m_run.Start({"--help"}).sOut, "Examples:\n  nomiractl check names.txt"));
}

// Every line that the help shows as an example is one that the command line takes.
TEST_F(NomiractlHelpTest, ExamplesAreRightUsage) {
    m_run.Fill("(1,'IO','IN_5'),(2,'IO','OUT_7')", "(1,99,'a'),(2,99,'pump')");
    m_run.Write("names.txt", "IN_5 a\r\nOUT_7 pump\r\n");
    m_run.Write("names-utf8.txt", "IN_5 \xC2\xB5m\n");
    m_run.Write("old.txt", "IN_5 a\r\n");
    m_run.Write("new.txt", "IN_5 b\r\n");
    m_run.Write("cell.reg", "REGEDIT4\r\n");
    m_run.Write("signals.txt", "E_001 = E1 \\ ;clamp open\r\n");
    m_run.Write("known.json", "{\"version\": 1, \"findings\": []}");
    fs::create_directory(m_run.Root() / "C1");
    m_run.Write("C1/a.src", ";FOLD OUT 7 'pump' State\r\n");
    fs::copy_file(m_run.Database(), m_run.Root() / "names.db");
    int nExamples = 0;
    for (const char* sCommand :
         {"",       "list",  "get",       "stats",   "check",     "diff",       "xref",
          "import", "apply", "export",    "rewrite", "harvest",   "set",        "rm",
          "log",    "undo",  "db create", "db info", "db backup", "db restore", "db verify"}) {
        std::istringstream help(m_run.Start(HelpOf(sCommand)).sOut);
        for (std::string sLine; std::getline(help, sLine) && !Contains(sLine, "Usage:");) {
            if (!sLine.starts_with("  nomiractl ")) continue;
            std::string sRun = sLine.substr(12, sLine.find("   ", 12) - 12);
            sRun = sRun.substr(0, std::min(sRun.find("  "), sRun.find(" | ")));
            const ProcessOutcome run =
                m_run.Shell("cd '" + m_run.Root().string() + "' && $N " + sRun);
            EXPECT_LE(run.nStatus, 1) << sLine << '\n' << run.sErr;
            ++nExamples;
        }
    }
    EXPECT_GE(nExamples, 40);
}

TEST_F(NomiractlHelpTest, AWordThatIsNearlyRightIsSuggested) {
    const auto said = [&](const Strings& args) {
        const ProcessOutcome outcome = m_run.Start(args);
        EXPECT_EQ(outcome.nStatus, 2);
        EXPECT_EQ(outcome.sOut, "");
        return outcome.sErr;
    };
    EXPECT_TRUE(Contains(said({"lsit"}), "Did you mean list?\n"));
    EXPECT_TRUE(Contains(said({"--prefix", "x", "exprot", "-"}), "Did you mean export?\n"));
    EXPECT_TRUE(Contains(said({"db", "inof"}), "Did you mean info?\n"));
    EXPECT_TRUE(Contains(said({"import", "a.txt", "--overwirte"}), "Did you mean --overwrite?\n"));
    EXPECT_TRUE(Contains(said({"check", "--fromat=json", "a"}), "Did you mean --format?\n"));
    EXPECT_EQ(said({"frobnicate"}),
              "There is no command frobnicate\nRun with --help for more information.\n");
    EXPECT_TRUE(Contains(said({"db", "frobnicate"}), "There is no command frobnicate\n"));
    EXPECT_TRUE(Contains(said({"db"}), "A subcommand is required\n"));
    EXPECT_FALSE(Contains(said({"import", "a.txt", "--nonsense"}), "Did you mean"));
    EXPECT_FALSE(Contains(said({"import"}), "Did you mean"));
    EXPECT_TRUE(Contains(said({"undo", "x"}), "x is no number of a run"));
}

TEST_F(NomiractlHelpTest, JsonComesAlone) {
    for (const Strings& command : {Strings{"import", "a.txt"}, {"rewrite", "a.src"}, {"undo"}}) {
        Strings args = command;
        args.insert(args.end(), {"--json", "--diff"});
        const ProcessOutcome outcome = m_run.Start(args);
        EXPECT_EQ(outcome.nStatus, 2) << command.front();
        EXPECT_TRUE(Contains(outcome.sErr, "--json: not with --diff")) << outcome.sErr;
    }
}

TEST_F(NomiractlHelpTest, AFileThatLooksLikeAnOptionIsNamedAsItMustBeWritten) {
    m_run.Write("-x.txt", "IN_1 a\r\n");
    const auto check = [&](const std::string& sFile) {
        return m_run.Shell("cd '" + m_run.Root().string() + "' && $N check " + sFile);
    };
    EXPECT_TRUE(Contains(check("-x.txt").sErr, "For the file of that name write ./-x.txt\n"));
    EXPECT_FALSE(Contains(check("-y.txt").sErr, "./"));
    EXPECT_EQ(check("./-x.txt").nStatus, 0);
    EXPECT_EQ(check("-- -x.txt").nStatus, 0);
}

TEST_F(NomiractlHelpTest, VersionIsOneLine) {
    const std::string sVersion = m_run.Start({"version"}).sOut;
    EXPECT_TRUE(sVersion.starts_with("nomiractl ")) << sVersion;
    EXPECT_EQ(std::count(sVersion.begin(), sVersion.end(), '\n'), 1);
    const auto json = nlohmann::json::parse(m_run.Start({"version", "--json"}).sOut);
    EXPECT_EQ("nomiractl " + json["version"].get<std::string>() + "\n", sVersion);
}

// What bash offers for the line, whose last word is in work.
std::string Offered(const BinaryRun& run, const Strings& words) {
    std::string sWords;
    for (const std::string& sWord : words)
        sWords += "'" + sWord + "' ";
    const ProcessOutcome outcome =
        RunProcess("/bin/bash",
                   {"-c", "source <(\"$N\" completion bash); COMP_WORDS=(nomiractl " + sWords +
                              "); COMP_CWORD=" + std::to_string(words.size()) +
                              "; _nomiractl; echo \"${COMPREPLY[@]}\""},
                   {{"N", NOMIRACTL_PROGRAM}, {"HOME", run.Root().string()}});
    EXPECT_EQ(outcome.sErr, "");
    return outcome.sOut;
}

TEST_F(NomiractlHelpTest, BashOffersCommandsOptionsAndValues) {
    EXPECT_EQ(Offered(m_run, {"li"}), "list\n");
    EXPECT_EQ(Offered(m_run, {"db", ""}), "create info backup restore verify convert compact\n");
    EXPECT_EQ(Offered(m_run, {"--json", "db", "in"}), "info\n");
    EXPECT_EQ(Offered(m_run, {"import", "--over"}), "--overwrite\n");
    EXPECT_EQ(Offered(m_run, {"list", "--class", "an"}), "anin anout\n");
    EXPECT_EQ(Offered(m_run, {"check", "--format", "s"}), "sarif\n");
    EXPECT_EQ(Offered(m_run, {"import", "na"}), "\n");  // files, by the shell itself
}

TEST_F(NomiractlHelpTest, EachShellHasAScriptWithAllCommands) {
    for (const char* sShell : {"bash", "zsh", "fish"}) {
        const ProcessOutcome script = m_run.Start({"completion", sShell});
        EXPECT_EQ(script.nStatus, 0);
        for (const char* sCommand : {"import", "check", "xref", "controller", "sizes"})
            EXPECT_TRUE(Contains(script.sOut, sCommand)) << sShell << ' ' << sCommand;
        if (fs::exists("/usr/bin/" + std::string(sShell))) {
            EXPECT_EQ(RunProcess("/usr/bin/" + std::string(sShell),
                                 {"-n", m_run.Write("script", script.sOut)}, {})
                          .nStatus,
                      0)
                << sShell;
        }
    }
    EXPECT_EQ(m_run.Start({"completion", "csh"}).nStatus, 2);
    EXPECT_EQ(m_run.Start({"completion"}).nStatus, 2);
}

}  // namespace
