#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

#include "adapters/jet/FilePages.h"
#include "apps/PrefixTest.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using nomira::companion::ExitCode;
using nomira::testing::CommandRun;
using nomira::testing::Contains;
using nomira::testing::CreateRefusingStore;
using nomira::testing::ExecuteOn;
using nomira::testing::FormatUnderTest;
using nomira::testing::Outcome;
using nomira::testing::PrefixTest;
using nomira::testing::QueryOn;
using nomira::testing::StoreFormat;
using nomira::testing::Strings;

class NomiractlImportTest : public PrefixTest<> {
  protected:
    std::string File() const { return (m_run.Root() / "in.txt").string(); }
    void Execute(const std::string& sSql) const { ExecuteOn(m_run.Database(), sSql); }
    // The first item can't be deleted any more.
    void RefuseDeletion() const {
        namespace jet = nomira::jet;
        if (FormatUnderTest() == StoreFormat::Sqlite) {
            Execute(
                "CREATE TRIGGER t BEFORE DELETE ON Items"
                " BEGIN SELECT RAISE(ABORT,'other rows refer to the row'); END");
            return;
        }
        auto pages = jet::FilePages::Open(m_run.Database(), jet::OpenMode::ReadWrite);
        jet::FilePages& store = *pages;
        jet::AccessFile file(std::move(pages));
        ASSERT_TRUE(store.StartWriting());
        jet::Table& notes =
            file.CreateTable({.sName = u"Notes", .columns = {{.sName = u"Item"}}, .indexes = {}});
        jet::Row row{std::int64_t{1}};
        notes.Insert(row);
        file.CreateRelationship({u"ItemsNotes", u"Items", u"Key_id", u"Notes", u"Item", false});
        store.Commit();
        store.Rest();
    }

    // One class's row of a JSON report: lines, added, changed, unchanged, removed.
    static std::vector<int> Row(const nlohmann::json& report, const std::string& sClass) {
        for (const auto& row : report["classes"])
            if (row["class"] == sClass)
                return {row["lines"], row["added"], row["changed"], row["unchanged"],
                        row["removed"]};
        return {};
    }
};

using Counts = std::vector<int>;

TEST_F(NomiractlImportTest, StoresWhatTheProgramItselfWouldStore) {
    const Outcome imported = Import(
        "IN_1 F\xFCllstand gro\xDF\r\nOUT_2\ttab\r\nNoticeText3\r\n  IN_4 indented\r\n"
        "Start11\r\n17 bare\r\nIN_1 again\r\n");
    EXPECT_EQ(imported.exit, ExitCode::Done) << imported.err;
    EXPECT_EQ(m_run.Texts(),
              (Strings{"A10TP Start11 ", "IO IN_1 again", "IO IN_4 IN_4 indented", "IO OUT_2 tab",
                       "Notice NoticeText3 |EMPTY|", "ZTQXProcParam 17 bare"}));
}

TEST_F(NomiractlImportTest, MergesOverWhatIsThereAndCountsByClass) {
    ASSERT_EQ(Import("IN_1 old\r\nIN_2 same\r\nIN_3 stays\r\nOUT_1 stays\r\n").exit,
              ExitCode::Done);
    const nlohmann::json report =
        Import("IN_1 new\r\nIN_2 same\r\nIN_9 more\r\n", {"--json"}).Json();
    EXPECT_EQ(Row(report, "digital input"), (Counts{3, 1, 1, 2, 0}));
    EXPECT_EQ(Row(report, "digital output"), (Counts{0, 0, 0, 1, 0}));
    EXPECT_EQ(m_run.Texts(), (Strings{"IO IN_1 new", "IO IN_2 same", "IO IN_3 stays",
                                      "IO IN_9 more", "IO OUT_1 stays"}));
}

TEST_F(NomiractlImportTest, WhatStandsThereAlreadyIsNotWrittenOnceMore) {
    ASSERT_EQ(Import("IN_1 a\r\nIN_2 b\r\n").exit, ExitCode::Done);
    if (FormatUnderTest() == StoreFormat::Sqlite) {
        Execute(
            "CREATE TRIGGER Refuse BEFORE UPDATE ON Messages WHEN NEW.String='a'"
            " BEGIN SELECT RAISE(ABORT,'no'); END");
    } else {
        // Each change of a row changes the file.
        const std::string sBefore = CommandRun::Bytes(m_run.Database());
        ASSERT_EQ(Import("IN_1 a\r\nIN_2 b\r\nIN_1 a\r\n").exit, ExitCode::Done);
        EXPECT_EQ(CommandRun::Bytes(m_run.Database()), sBefore);
    }
    const Outcome again = Import("IN_1 a\r\nIN_2 c\r\nIN_1 a\r\n", {"--json"});
    EXPECT_EQ(again.exit, ExitCode::Done) << again.err;
    EXPECT_EQ(Row(again.Json(), "digital input"), (Counts{3, 0, 1, 1, 0}));
    EXPECT_EQ(m_run.Texts(), (Strings{"IO IN_1 a", "IO IN_2 c"}));
}

TEST_F(NomiractlImportTest, ATextThatALineHasChangedIsWrittenAgainByALaterOne) {
    ASSERT_EQ(Import("IN_1 a\r\n").exit, ExitCode::Done);
    ASSERT_EQ(Import("IN_1 b\r\nIN_1 a\r\n").exit, ExitCode::Done);
    EXPECT_EQ(m_run.Texts(), (Strings{"IO IN_1 a"}));
    ASSERT_EQ(Import("IN_1 a\r\nIN_1 b\r\n").exit, ExitCode::Done);
    EXPECT_EQ(m_run.Texts(), (Strings{"IO IN_1 b"}));
}

TEST_F(NomiractlImportTest, OverwriteRemovesWhatTheFileDoesNotHave) {
    ASSERT_EQ(Import("IN_1 old\r\nOUT_1 goes\r\nWeld11 stays\r\n").exit, ExitCode::Done);
    const nlohmann::json report = Import("IN_1 old\r\n", {"--json", "--overwrite"}).Json();
    EXPECT_EQ(report["overwrite"], true);
    EXPECT_EQ(Row(report, "digital input"), (Counts{1, 0, 0, 1, 0}));
    EXPECT_EQ(Row(report, "digital output"), (Counts{0, 0, 0, 0, 1}));
    EXPECT_EQ(Row(report, "welding channel"), (Counts{0, 0, 0, 1, 0}));
    EXPECT_EQ(m_run.Texts(), (Strings{"A10TP Weld11 stays", "IO IN_1 old"}));
}

TEST_F(NomiractlImportTest, TellsEachLineThatIsPassedOverAndWhy) {
    const std::string bytes =
        "; remark\r\n\r\nIN_12345 long\r\nE5 other form\r\nZTQXProcParam_7 x\r\nIN_1 good\r\n";
    const nlohmann::json report = Import(bytes, {"--json"}).Json();
    EXPECT_EQ(report["passed_over"], nlohmann::json::parse(R"([
                {"line": 1, "reason": "unknown-key", "text": "; remark"},
                {"line": 2, "reason": "blank", "text": ""},
                {"line": 3, "reason": "too-many-digits", "text": "IN_12345 long"},
                {"line": 4, "reason": "other-form", "text": "E5 other form"},
                {"line": 5, "reason": "other-form", "text": "ZTQXProcParam_7 x"}])"));
    const std::string sReport = Import(bytes).out;
    EXPECT_TRUE(Contains(sReport, "passed over: 5 lines, 1 of them blank\n")) << sReport;
    EXPECT_TRUE(Contains(sReport, File() + ":3: too many digits for its class: IN_12345 long\n"))
        << sReport;
}

TEST_F(NomiractlImportTest, ReportsNoControlCharactersToATerminal) {
    const Outcome imported = Import("x\x1B[2Jy\x9Bz\r\n");
    EXPECT_TRUE(Contains(imported.out, "x?[2Jy")) << imported.out;
    EXPECT_FALSE(Contains(imported.out, "\x1B"));
    EXPECT_FALSE(Contains(imported.out, "\xC2\x9B"));
}

TEST_F(NomiractlImportTest, CutsLongLinesInTheReportOnly) {
    const std::string sLong = "x" + std::string(500, 'y');
    EXPECT_TRUE(Contains(Import(sLong + "\r\n").out, "yyy...\n"));
    EXPECT_EQ(Import(sLong + "\r\n", {"--json"}).Json()["passed_over"][0]["text"], sLong);
}

TEST_F(NomiractlImportTest, DryRunReportsTheSameAndChangesNothing) {
    ASSERT_EQ(Import("IN_1 old\r\n").exit, ExitCode::Done);
    const auto allRows = [this] {
        return QueryOn(m_run.Database(), "SELECT * FROM Items LEFT JOIN Messages USING(Key_id)");
    };
    const auto before = allRows();
    nlohmann::json dry =
        Import("IN_1 new\r\nOUT_1 x\r\n?\r\n", {"--json", "--dry-run", "--overwrite"}).Json();
    EXPECT_EQ(m_run.Texts(), Strings{"IO IN_1 old"});
    EXPECT_EQ(allRows(), before);
    nlohmann::json real = Import("IN_1 new\r\nOUT_1 x\r\n?\r\n", {"--json", "--overwrite"}).Json();
    EXPECT_EQ(dry["dry_run"], true);
    EXPECT_EQ(dry["done"], false);
    EXPECT_EQ(real["done"], true);
    for (nlohmann::json* report : {&dry, &real}) {
        report->erase("dry_run");
        report->erase("done");
    }
    EXPECT_EQ(dry, real);
}

TEST_F(NomiractlImportTest, TheCustomersKeysComeByRegistryOrOption) {
    EXPECT_EQ(Import("E1 x\r\nIN_2 y\r\n", {"--customer", "VW"}).exit, ExitCode::Done);
    EXPECT_EQ(m_run.Texts(), Strings{"IO IN_1 x"});
    std::ofstream(m_run.Prefix() / "registry.reg")
        << "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Orvo\\Version]\r\n"
           "\"Customer\"=\"VW\"\r\n";
    EXPECT_EQ(Import("E3 x\r\nIN_4 y\r\n", {"--json"}).Json()["keys"], "customer");
    EXPECT_EQ(Import("E5 x\r\nIN_6 y\r\n", {"--customer", ""}).exit, ExitCode::Done);
    EXPECT_EQ(m_run.Texts(), (Strings{"IO IN_1 x", "IO IN_3 x", "IO IN_6 y"}));
}

TEST_F(NomiractlImportTest, HintsAtTheOtherFormWhenNothingFits) {
    EXPECT_TRUE(Contains(Import("E1 x\r\n").out, "try --customer VW"));
    EXPECT_TRUE(Contains(Import("IN_1 x\r\n", {"--customer", "VW"}).out, "try --customer \"\""));
    EXPECT_FALSE(Contains(Import("IN_1 x\r\nE1 x\r\n").out, "hint"));
}

TEST_F(NomiractlImportTest, NotesProcessParametersThatNoExportWrites) {
    EXPECT_TRUE(Contains(Import("17 x\r\n").out, "1 process parameters were stored under their"));
    EXPECT_FALSE(Contains(Import("P17 x\r\n", {"--customer", "VW"}).out, "note"));
}

// ---- Everything or nothing ----

TEST_F(NomiractlImportTest, AKeyWithoutAMessageFailsTheWholeImport) {
    Execute("INSERT INTO Items VALUES(1,'IO','IN_2')");
    const Outcome imported = Import("IN_1 x\r\nIN_2 y\r\nIN_3 z\r\n");
    EXPECT_EQ(imported.exit, ExitCode::Refused);
    EXPECT_TRUE(Contains(imported.err, File() + ":2: IN_2: the database has this key without a"
                                                " message"))
        << imported.err;
    EXPECT_TRUE(Contains(imported.err, "1 lines could not be stored; nothing was changed"));
    EXPECT_EQ(m_run.Texts(), Strings{});

    EXPECT_EQ(Import("IN_1 x\r\nIN_2 y\r\n", {"--overwrite"}).exit, ExitCode::Done);
    EXPECT_EQ(m_run.Texts(), (Strings{"IO IN_1 x", "IO IN_2 y"}));
}

TEST_F(NomiractlImportTest, ATextThatTheDatabaseRefusesFailsTheWholeImport) {
    CreateRefusingStore(m_run.Database(), FormatUnderTest());
    ASSERT_EQ(Import("IN_1 old\r\n").exit, ExitCode::Done);
    const Outcome imported = Import("IN_1 new\r\nIN_2 a long text\r\nIN_3 good\r\n", {"--json"});
    EXPECT_EQ(imported.exit, ExitCode::Refused);
    EXPECT_EQ(imported.Json()["done"], false);
    EXPECT_EQ(imported.Json()["failed"][0]["line"], 2);
    EXPECT_EQ(m_run.Texts(), Strings{"IO IN_1 old"});
    EXPECT_EQ(QueryOn(m_run.Database(), "SELECT count(*) FROM Items")[0][0], "1");
}

TEST_F(NomiractlImportTest, AWipeThatTheDatabaseRefusesFailsTheWholeImport) {
    ASSERT_EQ(Import("IN_1 old\r\n").exit, ExitCode::Done);
    RefuseDeletion();
    const Outcome imported = Import("IN_2 new\r\n", {"--overwrite"});
    EXPECT_EQ(imported.exit, ExitCode::Database);
    EXPECT_TRUE(Contains(imported.err, "refer to the row")) << imported.err;
    EXPECT_EQ(m_run.Texts(), Strings{"IO IN_1 old"});
}

TEST_F(NomiractlImportTest, ShowsTheFirstFailuresOfVeryMany) {
    CreateRefusingStore(m_run.Database(), FormatUnderTest());
    std::string sLines;
    for (int n = 0; n < 500; ++n)
        sLines += "IN_" + std::to_string(n) + " a long text\r\n";
    const Outcome imported = Import(sLines);
    EXPECT_EQ(std::count(imported.err.begin(), imported.err.end(), '\n'), 21) << imported.err;
    EXPECT_TRUE(Contains(imported.err, "500 lines could not be stored")) << imported.err;
}

TEST_F(NomiractlImportTest, LeavesTheDatabaseWholeAndAlone) {
    ASSERT_EQ(Import("IN_1 x\r\n").exit, ExitCode::Done);
    for (const auto& entry : fs::directory_iterator(m_run.Database().parent_path()))
        EXPECT_EQ(entry.path(), m_run.Database());
}

// A process that looks like the controller's database process, for as long as it is in use.
class DatabaseProcess {
  public:
    explicit DatabaseProcess(const fs::path& folder) {
        const fs::path program = folder / "OrvoDB";
        fs::copy_file(fs::canonical("/bin/sleep"), program);
        std::string sProgram = program.string(), sSeconds = "600";
        char* arguments[] = {sProgram.data(), sSeconds.data(), nullptr};
        EXPECT_EQ(posix_spawn(&m_nPid, sProgram.c_str(), nullptr, nullptr, arguments, environ), 0);
    }
    ~DatabaseProcess() {
        ::kill(m_nPid, SIGKILL);
        ::waitpid(m_nPid, nullptr, 0);
    }
    DatabaseProcess(const DatabaseProcess&) = delete;
    DatabaseProcess& operator=(const DatabaseProcess&) = delete;

  private:
    pid_t m_nPid = 0;
};

TEST_F(NomiractlImportTest, TellsTheDatabaseProcessOnceAndOnlyWhenAllIsInTheFile) {
    const DatabaseProcess process(m_run.Root());
    const fs::path told = m_run.Root() / "told";
    std::ofstream(m_run.Prefix() / "nomira.conf")
        << "refresh-hook = ls -A '" << m_run.Database().parent_path().string() << "' >> '"
        << told.string() << "'\n";
    ASSERT_EQ(Import("IN_1 x\r\n", {"--dry-run"}).exit, ExitCode::Done);
    EXPECT_FALSE(fs::exists(told));
    ASSERT_EQ(Import("IN_1 x\r\n", {"--overwrite"}).exit, ExitCode::Done);
    // No log of a transaction beside the file, and one notice for both passes.
    EXPECT_EQ(CommandRun::Bytes(told), "orvo_con.mdb\n");
}

// ---- Text files that are none ----

TEST_F(NomiractlImportTest, RefusesFilesThatCannotBeRead) {
    const auto refused = [&](const fs::path& file, const std::string& sWords) {
        const Outcome imported = m_run.Run({"import", file.string()});
        EXPECT_EQ(imported.exit, ExitCode::Files);
        EXPECT_TRUE(Contains(imported.err, sWords)) << imported.err;
    };
    refused(m_run.Root() / "none.txt", "none.txt: no such file");
    refused(m_run.Root(), ": a folder; name the text file in it");
    const fs::path pipe = m_run.Root() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    refused(pipe, "not a plain file");
    refused(m_run.Write("a\\b.txt", "IN_1 x\r\n"), "a backslash");
}

TEST_F(NomiractlImportTest, RefusesAReadOnlyDatabase) {
    ::chmod(m_run.Database().c_str(), 0444);
    const Outcome imported = Import("IN_1 x\r\n");
    EXPECT_EQ(imported.exit, ExitCode::Database);
    EXPECT_TRUE(Contains(imported.err, "chmod u+w " + m_run.Database().string())) << imported.err;
}

TEST_F(NomiractlImportTest, TakesFilesOfAnyName) {
    const char* const kNames[] = {"Füllstand.txt", "l\xE4ngst.txt", " blank .txt", "IN.TXT"};
    int n = 0;
    for (const char* sName : kNames) {
        const std::string bytes = "IN_" + std::to_string(++n) + " x\r\n";
        const Outcome imported = m_run.Run({"import", m_run.Write(sName, bytes)});
        EXPECT_EQ(imported.exit, ExitCode::Done) << imported.err;
    }
    EXPECT_EQ(m_run.Texts().size(), 4U);
}

TEST_F(NomiractlImportTest, TakesAPathFromTheCurrentFolderOn) {
    const fs::path old = fs::current_path();
    m_run.Write("here.txt", "IN_1 x\r\n");
    fs::current_path(m_run.Root());
    const Outcome imported = m_run.Run({"import", "here.txt", "--json"});
    fs::current_path(old);
    EXPECT_EQ(imported.Json()["file"], "here.txt");
    EXPECT_EQ(m_run.Texts(), Strings{"IO IN_1 x"});
}

TEST_F(NomiractlImportTest, AnEmptyFileIsNoFailure) {
    EXPECT_EQ(Import("").exit, ExitCode::Done);
    EXPECT_EQ(Import("", {"--overwrite"}).exit, ExitCode::Done);
    EXPECT_EQ(m_run.Texts(), Strings{});
}

TEST_F(NomiractlImportTest, WhatIsExportedComesBackTheSame) {
    const std::string bytes =
        "E1 one\r\nE10 ten\r\nA2 two\r\nM3 three\r\nP4 four\r\nWeld15 five\r\n\r\n";
    ASSERT_EQ(Import(bytes, {"--customer", "VW"}).exit, ExitCode::Done);
    EXPECT_EQ(m_run.Run({"--customer", "VW", "export", "-"}).out, bytes);
}

}  // namespace
