// What a user sees on a terminal: the progress of a long command, which leaves no trace.
#include <fcntl.h>
#include <sys/stat.h>

#include <chrono>
#include <thread>

#include "apps/BinaryRun.h"
#include "apps/TerminalRun.h"

namespace {

namespace fs = std::filesystem;
using nomira::testing::BinaryRun;
using nomira::testing::ProcessOutcome;
using nomira::testing::Strings;
using nomira::testing::TerminalRun;

// The second of three programs is a pipe, which holds a rewrite up until it has bytes.
class NomiractlTerminalTest : public ::testing::Test {
  protected:
    NomiractlTerminalTest() {
        m_run.Fill("(1,'IO','OUT_7')", "(1,99,'Pump')");
        for (const char* sName : {"a.src", "c.src"})
            m_run.Write(sName, ";FOLD OUT 7 'old' State\r\n");
        EXPECT_EQ(::mkfifo(Pipe().c_str(), 0600), 0);
    }
    fs::path Pipe() const { return m_run.Root() / "b.src"; }

    std::string Line(const std::string& sOptions) const {
        return "cd '" + m_run.Root().string() +
               "' && exec '" NOMIRACTL_PROGRAM "' rewrite --jobs 1 a.src b.src c.src " + sOptions;
    }
    nomira::testing::Environment Variables(const char* sLocale) const {
        return {{"NOMIRA_PREFIX", m_run.Prefix().string()}, {"LC_ALL", sLocale}};
    }
    // Gives the pipe its bytes when the command has been at work for longer than it takes the bar
    // to come.
    void FillPipe(const TerminalRun& run) const {
        const int nPipe = OpenPipe(Pipe(), run);
        std::this_thread::sleep_for(std::chrono::milliseconds(600));
        FillPipe(nPipe);
    }
    static void FillPipe(int nPipe) {
        EXPECT_EQ(::write(nPipe, "idle\r\n", 6), 6);
        ::close(nPipe);
    }
    // Waits until the command has come to the pipe.
    static int OpenPipe(const fs::path& pipe, const TerminalRun& run) {
        int nPipe = -1;
        while ((nPipe = ::open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)) < 0 &&
               !run.HasEnded())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return nPipe;
    }

    BinaryRun m_run;
};

TEST_F(NomiractlTerminalTest, TheBarComesAndGoesInEveryLocale) {
    for (const char* sLocale : {"C", "C.UTF-8", "de_DE.ISO-8859-1"}) {
        TerminalRun run(Line("--dry-run"), Variables(sLocale));
        FillPipe(run);
        EXPECT_EQ(run.Finish(), 0);
        EXPECT_NE(run.Seen().find("rewrite [####################----------]  67 %  "),
                  std::string::npos)
            << run.Seen();
        EXPECT_EQ(run.Rows(), (Strings{"3 programs, 2 would change (2 lines), 0 with errors", ""}))
            << sLocale;
    }
}

TEST_F(NomiractlTerminalTest, WordsBetweenStandInRowsOfTheirOwn) {
    m_run.Write("c.src", ";FOLD OUT my own title\r\n");
    TerminalRun run(Line(""), Variables("C"));
    FillPipe(run);
    EXPECT_EQ(run.Finish(), 3);
    EXPECT_NE(run.Seen().find("rewrite ["), std::string::npos);
    const Strings rows = run.Rows();
    ASSERT_EQ(rows.size(), 3U) << run.Seen();
    EXPECT_TRUE(rows[0].starts_with("nomiractl: c.src:1: ")) << rows[0];
    EXPECT_EQ(rows[1], "3 programs, 1 changed (1 lines), 1 with errors");
}

TEST_F(NomiractlTerminalTest, QuietAndJsonHaveNone) {
    for (const char* sOptions : {"--dry-run --quiet", "--dry-run --json"}) {
        TerminalRun run(Line(sOptions), Variables("C"));
        FillPipe(run);
        EXPECT_EQ(run.Finish(), 0);
        EXPECT_EQ(run.Seen().find("rewrite ["), std::string::npos) << run.Seen();
    }
}

TEST_F(NomiractlTerminalTest, AnErrorStreamElsewhereHasNone) {
    TerminalRun run(Line("--dry-run 2>err"), Variables("C"));
    FillPipe(run);
    EXPECT_EQ(run.Finish(), 0);
    EXPECT_EQ(run.Seen(), "3 programs, 2 would change (2 lines), 0 with errors\r\n");
    EXPECT_EQ(BinaryRun::Bytes(m_run.Root() / "err"), "");
}

TEST_F(NomiractlTerminalTest, AnOutputElsewhereHasTheBarOnTheErrorStream) {
    TerminalRun run(Line("--dry-run --diff >out"), Variables("C"));
    FillPipe(run);
    EXPECT_EQ(run.Finish(), 0);
    EXPECT_NE(run.Seen().find("rewrite ["), std::string::npos) << run.Seen();
    EXPECT_EQ(run.Rows(), Strings{""});
    EXPECT_TRUE(BinaryRun::Bytes(m_run.Root() / "out").starts_with("--- a/a.src\n"));
}

// Ctrl-C at the keyboard: nothing has changed, and the bar is gone.
TEST_F(NomiractlTerminalTest, CtrlCTakesEverythingBack) {
    const fs::path last = m_run.Root() / "d.src";
    ASSERT_EQ(::mkfifo(last.c_str(), 0600), 0);
    TerminalRun run(Line("d.src"), Variables("C"));
    FillPipe(run);
    ASSERT_TRUE(run.Await("rewrite ["));
    const int nPipe = OpenPipe(last, run);
    run.Type("\x03");
    ASSERT_TRUE(run.Await("^C"));
    FillPipe(nPipe);
    EXPECT_EQ(run.Finish(), 130);
    EXPECT_EQ(run.Rows().at(run.Rows().size() - 2), "nomiractl: interrupted; nothing was changed");
    EXPECT_EQ(BinaryRun::Bytes(m_run.Root() / "a.src"), ";FOLD OUT 7 'old' State\r\n");
}

}  // namespace
