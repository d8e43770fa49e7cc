// What a machine does to the real program: readers that leave, full disks, files that can't be
// read, other locales, signals.
#include <unistd.h>

#include "apps/BinaryRun.h"

namespace {

namespace fs = std::filesystem;
using nomira::testing::BinaryRun;
using nomira::testing::Contains;
using nomira::testing::ProcessOutcome;
using nomira::testing::Strings;

class NomiractlMachineTest : public ::testing::Test {
  protected:
    NomiractlMachineTest() {
        std::string sNames;
        for (int n = 1; n < 4'000; ++n)
            sNames += "OUT_" + std::to_string(n) + " a name of an output\r\n";
        m_run.CreateDatabase();
        EXPECT_EQ(m_run.Start({"import", m_run.Write("names.txt", sNames)}).nStatus, 0);
    }
    // In the test's folder.
    ProcessOutcome Shell(const std::string& sLine) const {
        return m_run.Shell("cd '" + m_run.Root().string() + "' && { " + sLine + "; }");
    }
    static Strings NamesIn(const fs::path& folder) {
        Strings names;
        for (const auto& entry : fs::directory_iterator(folder))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }
    BinaryRun m_run;
};

// ---- Pipes ----

TEST_F(NomiractlMachineTest, AReaderThatLeavesAnExportIsNoFailure) {
    const ProcessOutcome piped = Shell("$N export - | head -1");
    EXPECT_EQ(piped.sOut, "OUT_1 a name of an output\r\n");
    EXPECT_EQ(piped.sErr, "");
    const ProcessOutcome ignored =
        Shell("trap '' PIPE; { $N export -; echo $? >&2; } | head -1 >/dev/null");
    EXPECT_EQ(ignored.sErr, "0\n");
}

TEST_F(NomiractlMachineTest, AnExportToAFullDeviceIsAFailureOfAFile) {
    const ProcessOutcome full = Shell("$N export - >/dev/full");
    EXPECT_EQ(full.nStatus, 4);
    EXPECT_EQ(full.sErr, "nomiractl: the output can't be written\n");
}

// ---- Disks without room ----

// Each command writes a file of its own, and leaves nothing of it.
const Strings kWriters{"export old.txt",
                       "db create new.db",
                       "db backup new.bak",
                       "import names.txt --dry-run --overwrite --plan new.plan",
                       "check names.txt --as program --write-baseline new.json",
                       "check names.txt --customer VW --rejects new.txt",
                       "man new"};

TEST_F(NomiractlMachineTest, AFileThatMayNotGrowFailsLikeAFullDisk) {
    m_run.Write("old.txt", "old");
    for (const std::string& sCommand : {kWriters[0], kWriters[2], kWriters[3], kWriters[5]}) {
        const Strings before = NamesIn(m_run.Root());
        const ProcessOutcome stopped = Shell("ulimit -f 16; $N " + sCommand);
        EXPECT_TRUE(stopped.nStatus == 4 || stopped.nStatus == 5)
            << sCommand << ' ' << stopped.nStatus << stopped.sErr;
        EXPECT_TRUE(stopped.sErr.starts_with("nomiractl: ")) << sCommand << stopped.sErr;
        EXPECT_EQ(NamesIn(m_run.Root()), before) << sCommand;
    }
    EXPECT_EQ(BinaryRun::Bytes(m_run.Root() / "old.txt"), "old");
}

// A small disk of its own, which goes with the shell that has made it.
TEST_F(NomiractlMachineTest, AFullDiskLeavesWhatWasThere) {
    fs::create_directory(m_run.Root() / "disk");
    const std::string sMount =
        "unshare -m sh -c 'mount -t tmpfs -o size=64k none disk && cd disk && ";
    if (Shell(sMount + "true'").nStatus != 0) GTEST_SKIP() << "no disk can be made here";
    for (const std::string& sCommand : kWriters) {
        const ProcessOutcome full =
            Shell(sMount +
                  "printf old >old.txt && ln -s ../names.txt . && "
                  "head -c 60000 /dev/zero >full 2>/dev/null; ls -A >../before; \"$N\" " +
                  sCommand + "; echo $? >&2; ls -A >../after; test \"$(cat old.txt)\" = old'");
        EXPECT_EQ(full.nStatus, 0) << sCommand << " has changed the old file";
        EXPECT_TRUE(full.sErr.ends_with("\n4\n") || full.sErr.ends_with("\n5\n"))
            << sCommand << ": " << full.sErr;
        const std::string sAfter = BinaryRun::Bytes(m_run.Root() / "after");
        if (sCommand != "man new") {
            EXPECT_EQ(sAfter, BinaryRun::Bytes(m_run.Root() / "before")) << sCommand;
        }
    }
}

// ---- Files ----

// A plain file of which every read fails.
TEST_F(NomiractlMachineTest, AFileThatCannotBeReadIsNamedWithItsReason) {
    for (const char* sCommand : {"import", "check --as text", "diff db", "harvest", "rewrite"}) {
        const ProcessOutcome failed = Shell(std::string("$N ") + sCommand + " /proc/self/mem");
        EXPECT_EQ(failed.nStatus, 4) << sCommand << failed.sErr << failed.sOut;
        EXPECT_TRUE(Contains(failed.sErr, "/proc/self/mem: ")) << sCommand << failed.sErr;
    }
}

TEST_F(NomiractlMachineTest, AFileWithoutRightsIsNamedWithItsReason) {
    if (::geteuid() == 0) GTEST_SKIP() << "the superuser reads every file";
    const std::string sFile = m_run.Write("secret.txt", "IN_1 x\r\n");
    fs::permissions(sFile, fs::perms::none);
    const ProcessOutcome failed = m_run.Start({"import", sFile});
    EXPECT_EQ(failed.nStatus, 4);
    EXPECT_TRUE(Contains(failed.sErr, "Permission denied")) << failed.sErr;
}

TEST_F(NomiractlMachineTest, AFileThatIsNoneOfNamesByItsSizeIsRefused) {
    for (const char* sCommand : {"import huge", "check huge", "diff huge db"}) {
        const ProcessOutcome huge = Shell(std::string("truncate -s 5G huge; $N ") + sCommand);
        EXPECT_EQ(huge.nStatus, 3) << sCommand;
        EXPECT_EQ(huge.sErr, "nomiractl: huge: more than 1 GiB: no text file of names\n");
    }
}

TEST_F(NomiractlMachineTest, AHugeFileIsImported) {
    std::string bytes;
    for (int n = 0; n < 60'000; ++n)
        bytes += "# a remark that is long enough to make a big file of many of them\r\n";
    const std::string sFile = m_run.Write("huge.txt", bytes + "OUT_1 last\r\n");
    EXPECT_EQ(m_run.Start({"import", "--quiet", sFile}).nStatus, 0);
    EXPECT_EQ(m_run.Start({"get", "OUT_1"}).sOut, "last\n");
}

TEST_F(NomiractlMachineTest, ADatabaseThatSomebodyKeepsIsToldByEachCommand) {
    ASSERT_EQ(Shell("sqlite3 --version").nStatus, 0);
    m_run.Write("new.txt", "OUT_1 other\r\n");
    for (const char* sCommand : {"import new.txt", "list", "export -"}) {
        const ProcessOutcome locked =
            Shell("{ echo 'BEGIN EXCLUSIVE;'; echo '.shell $N " + std::string(sCommand) +
                  " >out 2>err; echo $? >status'; } | sqlite3 '" + m_run.Database().string() + "'");
        EXPECT_EQ(BinaryRun::Bytes(m_run.Root() / "status"), "5\n") << sCommand << locked.sErr;
        EXPECT_TRUE(Contains(BinaryRun::Bytes(m_run.Root() / "err"),
                             "another program uses it, try again when that is done"))
            << sCommand << BinaryRun::Bytes(m_run.Root() / "err");
    }
    EXPECT_EQ(m_run.Start({"get", "OUT_1"}).sOut, "a name of an output\n");
}

// ---- Locales ----

TEST_F(NomiractlMachineTest, EveryLocaleGivesTheSameBytes) {
    const std::string sFile = m_run.Write("f\xC3\xBCr.txt", "OUT_1 5 \xB5m\r\nE1 x\r\n");
    ASSERT_EQ(m_run.Start({"import", sFile}).nStatus, 0);
    // A real one of 8 bits, where this machine can make it.
    const bool bMade =
        Shell("mkdir loc && localedef -i de_DE -f ISO-8859-1 loc/de_DE.ISO-8859-1 2>/dev/null")
            .nStatus == 0;
    RecordProperty("made", bMade ? "yes" : "no");
    const std::vector<Strings> commands{{"list", "OUT_1"},
                                        {"export", "-"},
                                        {"export", "-", "--encoding", "utf-8"},
                                        {"get", "OUT_1", "--encoding", "code-page"},
                                        {"check", sFile},
                                        {"check", "--json", sFile},
                                        {"stats"},
                                        {"import", "none\xFC.txt"}};
    for (const Strings& command : commands) {
        const ProcessOutcome plain = m_run.Start(command, {{"LC_ALL", "C"}});
        for (const char* sLocale : {"C.UTF-8", "POSIX", "de_DE.ISO-8859-1", "tr_TR.UTF-8"}) {
            const ProcessOutcome other = m_run.Start(
                command, {{"LC_ALL", sLocale}, {"LOCPATH", (m_run.Root() / "loc").string()}});
            EXPECT_EQ(other.nStatus, plain.nStatus) << command[0] << ' ' << sLocale;
            EXPECT_EQ(other.sOut, plain.sOut) << command[0] << ' ' << sLocale;
            EXPECT_EQ(other.sErr, plain.sErr) << command[0] << ' ' << sLocale;
        }
    }
}

// A pipe is waited for by whoever opens it.
TEST_F(NomiractlMachineTest, APipeInAFolderIsNoProgram) {
    const ProcessOutcome outcome = Shell(
        "mkdir C1 && mkfifo C1/a.src && printf idle > C1/b.src &&"
        " timeout -s KILL 60 \"$N\" rewrite --dry-run C1");
    EXPECT_EQ(outcome.nStatus, 0) << outcome.sErr;
    EXPECT_TRUE(Contains(outcome.sOut, "1 programs, ")) << outcome.sOut;
}

}  // namespace
