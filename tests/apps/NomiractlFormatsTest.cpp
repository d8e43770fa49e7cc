// The companion on databases of each format: making, looking at, converting, compacting.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <limits>

#include "adapters/jet/Catalogue.h"
#include "adapters/jet/FilePages.h"
#include "apps/CommandRun.h"

namespace nomira::testing {
namespace {

namespace fs = std::filesystem;
using companion::ExitCode;

constexpr const char* kFormats[]{"sqlite", "jet3", "jet4"};

const std::string kRows =
    "INSERT INTO Items VALUES(1,'IO','IN_1'),(2,'IO','IN_2'),(3,'Flag','FlagText7');"
    "INSERT INTO Messages VALUES(1,99,'Pümp'),(2,99,'|EMPTY|'),(2,49,'other'),(3,99,NULL)";
const std::string kAllRows =
    "SELECT Items.Key_id,Module,KeyString,Language_id,String FROM Items LEFT JOIN Messages ON"
    " Items.Key_id=Messages.Key_id ORDER BY 1,4";

class FormatTest : public ::testing::TestWithParam<const char*> {
  protected:
    FormatTest() {
        const Outcome made =
            run.Run({"db", "create", run.Database().string(), "--format", GetParam()});
        EXPECT_EQ(made.exit, ExitCode::Done) << made.err;
    }
    bool IsAccess() const { return std::string(GetParam()) != "sqlite"; }
    std::string Path(const std::string& sName) const { return (run.Root() / sName).string(); }

    CommandRun run;
};
INSTANTIATE_TEST_SUITE_P(Formats, FormatTest, ::testing::ValuesIn(kFormats),
                         [](const auto& format) { return std::string(format.param); });

TEST_P(FormatTest, ANewDatabaseIsOfTheFormatAndEmpty) {
    const std::string sBytes = CommandRun::Bytes(run.Database());
    EXPECT_EQ(sBytes.substr(IsAccess() ? 4 : 0, 15),
              IsAccess() ? "Standard Jet DB" : "SQLite format 3");
    if (IsAccess()) {
        EXPECT_EQ(sBytes[0x14], std::string(GetParam()) == "jet4" ? 1 : 0);
    }
    EXPECT_EQ(run.Run({"db", "verify"}).exit, ExitCode::Done);
    EXPECT_EQ(run.Run({"db", "info", "--json"}).Json()["total"]["keys"], 0);
}

TEST_P(FormatTest, EveryPassWorksOnIt) {
    const std::string sFile = run.Write("in.txt", "IN_1 pump\r\nOUT_2 valve\r\n");
    ASSERT_EQ(run.Run({"import", sFile}).exit, ExitCode::Done);
    ASSERT_EQ(run.Run({"set", "IN_1", "other pump"}).exit, ExitCode::Done);
    EXPECT_EQ(run.Texts(), (Strings{"IO IN_1 other pump", "IO OUT_2 valve"}));
    EXPECT_EQ(run.Run({"get", "IN_1"}).out, "other pump\n");
    ASSERT_EQ(run.Run({"rm", "OUT_2"}).exit, ExitCode::Done);
    EXPECT_EQ(run.Texts(), (Strings{"IO IN_1 other pump"}));
    ASSERT_EQ(run.Run({"undo"}).exit, ExitCode::Done);
    EXPECT_EQ(run.Texts(), (Strings{"IO IN_1 other pump", "IO OUT_2 valve"}));
    EXPECT_EQ(run.Run({"db", "verify"}).exit, ExitCode::Done);
}

TEST_P(FormatTest, AnImportThatIsRefusedChangesNothing) {
    ASSERT_EQ(run.Run({"import", run.Write("a.txt", "IN_1 pump\r\n")}).exit, ExitCode::Done);
    const std::string sFile = run.Write("b.txt", "IN_2 valve\r\nIN_3 gate\r\n");
    const Outcome refused = run.Run({"import", sFile, "--overwrite", "--max-changes", "1"});
    EXPECT_EQ(refused.exit, ExitCode::Refused) << refused.err;
    EXPECT_EQ(run.Texts(), (Strings{"IO IN_1 pump"}));
    EXPECT_EQ(run.Run({"db", "verify"}).exit, ExitCode::Done);
}

TEST_P(FormatTest, ABackupIsAWholeCopy) {
    ExecuteOn(run.Database(), kRows);
    const Outcome made = run.Run({"db", "backup", Path("copy.mdb")});
    ASSERT_EQ(made.exit, ExitCode::Done) << made.err;
    EXPECT_EQ(QueryOn(Path("copy.mdb"), kAllRows), QueryOn(run.Database(), kAllRows));
    ASSERT_EQ(run.Run({"rm", "IN_1"}).exit, ExitCode::Done);
    ASSERT_EQ(run.Run({"db", "restore", Path("copy.mdb")}).exit, ExitCode::Done);
    EXPECT_EQ(run.Run({"get", "IN_1"}).out, "Pümp\n");
}

TEST_P(FormatTest, ItConvertsIntoEachFormatWithAllRows) {
    ExecuteOn(run.Database(), kRows);
    ExecuteOn(run.Database(),
              "DELETE FROM Messages WHERE Key_id=3; DELETE FROM Items WHERE Key_id=3");
    const auto rows = QueryOn(run.Database(), kAllRows);
    ASSERT_EQ(rows.size(), 3U);
    for (const std::string sFormat : kFormats) {
        const std::string sPath = Path("as-" + sFormat);
        const Outcome made =
            run.Run({"db", "convert", run.Database().string(), sPath, "--format", sFormat});
        ASSERT_EQ(made.exit, ExitCode::Done) << made.err;
        EXPECT_EQ(made.err, "");
        EXPECT_EQ(QueryOn(sPath, kAllRows), rows) << sFormat;
        EXPECT_EQ(run.Run({"--db", sPath, "db", "verify"}).exit, ExitCode::Done);
        // A number that was handed out stays so.
        ExecuteOn(sPath, "INSERT INTO Items(KeyString) VALUES('new')");
        EXPECT_EQ(QueryOn(sPath, "SELECT max(Key_id) FROM Items").front().front(), "4") << sFormat;
    }
    EXPECT_EQ(QueryOn(run.Database(), kAllRows), rows);
}

TEST_P(FormatTest, AConversionNeverTouchesAnExistingFile) {
    const std::string sPath = run.Write("taken", "mine");
    const Outcome refused =
        run.Run({"db", "convert", run.Database().string(), sPath, "--format", "jet4"});
    EXPECT_EQ(refused.exit, ExitCode::Files);
    EXPECT_TRUE(Contains(refused.err, "exists already")) << refused.err;
    EXPECT_EQ(CommandRun::Bytes(sPath), "mine");
}

TEST_P(FormatTest, CompactingMakesTheFileSmallerAndKeepsItsRowsAndRights) {
    ExecuteOn(run.Database(), kRows);
    ExecuteOn(run.Database(),
              "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n LIMIT 50)"
              " INSERT INTO Messages SELECT 1,i,printf('%05000d',i) FROM n;");
    ExecuteOn(run.Database(), "DELETE FROM Messages WHERE Language_id<49");
    const auto rows = QueryOn(run.Database(), kAllRows);
    ASSERT_EQ(::chmod(run.Database().c_str(), 0640), 0);
    const auto nBefore = fs::file_size(run.Database());
    const Outcome done = run.Run({"db", "compact", "--json"});
    ASSERT_EQ(done.exit, ExitCode::Done) << done.err;
    EXPECT_EQ(done.Json()["bytes_before"], nBefore);
    EXPECT_LT(done.Json()["bytes"], nBefore / 2);
    EXPECT_EQ(QueryOn(run.Database(), kAllRows), rows);
    EXPECT_EQ(fs::status(run.Database()).permissions(), fs::perms(0640));
    EXPECT_EQ(std::distance(fs::directory_iterator(run.Database().parent_path()),
                            fs::directory_iterator()),
              1);
    EXPECT_EQ(run.Run({"db", "verify"}).exit, ExitCode::Done);
}

TEST_P(FormatTest, CompactingTheFileThatALinkLeadsToLeavesTheLink) {
    const std::string sFile = run.Write("in.txt", "IN_1 pump\r\n");
    ASSERT_EQ(run.Run({"import", sFile}).exit, ExitCode::Done);
    const std::string sTarget = Path("target.mdb");
    fs::rename(run.Database(), sTarget);
    fs::create_symlink(sTarget, run.Database());
    ASSERT_EQ(run.Run({"db", "compact"}).exit, ExitCode::Done);
    EXPECT_TRUE(fs::is_symlink(run.Database()));
    EXPECT_EQ(run.Run({"get", "IN_1", "--db", sTarget}).out, "pump\n");
}

TEST_P(FormatTest, InfoTellsOfAnAccessFilesInside) {
    ExecuteOn(run.Database(), kRows);
    const nlohmann::json info = run.Run({"db", "info", "--json"}).Json();
    ASSERT_EQ(info.contains("access"), IsAccess());
    if (!IsAccess()) return;
    EXPECT_TRUE(Contains(info["format"], std::string(GetParam()) == "jet3" ? "Jet 3" : "Jet 4"));
    EXPECT_EQ(
        info["access"]["tables"],
        nlohmann::json::parse(R"([{"table":"Items","rows":3},{"table":"Messages","rows":4}])"));
    EXPECT_GT(info["access"]["pages"], 10);
    EXPECT_EQ(info["access"]["users"], nlohmann::json::array());
    EXPECT_EQ(info["access"]["not_writable"], "");
}

TEST_P(FormatTest, InfoTellsWhoHasAnAccessFileOpenByItsLockFile) {
    if (!IsAccess()) GTEST_SKIP() << "other files have none";
    std::string sEntry = "CELL7";
    sEntry.resize(32);
    sEntry += "Admin";
    sEntry.resize(64);
    fs::path lockFile = run.Database();
    std::ofstream(lockFile.replace_extension(".ldb"), std::ios::binary) << sEntry;
    const nlohmann::json info = run.Run({"db", "info", "--json"}).Json();
    EXPECT_EQ(info["access"]["users"],
              nlohmann::json::parse(R"([{"computer":"CELL7","name":"Admin","present":false}])"));
    EXPECT_TRUE(Contains(run.Run({"db", "info"}).out, "Admin on CELL7"));
}

TEST_P(FormatTest, AProtectedDatabaseIsReadAndSaysWhyItCantBeWritten) {
    ExecuteOn(run.Database(), kRows);
    ASSERT_EQ(::chmod(run.Database().c_str(), 0444), 0);
    EXPECT_EQ(run.Run({"get", "IN_1"}).out, "Pümp\n");
    const Outcome refused = run.Run({"set", "IN_1", "x"});
    EXPECT_EQ(refused.exit, ExitCode::Database);
    EXPECT_TRUE(Contains(refused.err, "chmod u+w")) << refused.err;
}

TEST_P(FormatTest, AWriteOntoAnAccessFileThatSomebodyHasOpenSaysWhyItCantBe) {
    if (!IsAccess()) GTEST_SKIP() << "other files have no lock file";
    ExecuteOn(run.Database(), kRows);
    fs::path lockFile = run.Database();
    std::ofstream(lockFile.replace_extension(".ldb")) << std::string(64, 'x');
    // Locks of an open file, not of a process: it stands in for another one.
    const int nFile = ::open(lockFile.c_str(), O_RDWR | O_CLOEXEC);
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = 0x10000001;
    lock.l_len = 1;
    ASSERT_EQ(::fcntl(nFile, F_OFD_SETLK, &lock), 0);
    EXPECT_EQ(run.Run({"get", "IN_1"}).out, "Pümp\n");
    const Outcome checked = run.Run({"check", run.Database().string()});
    EXPECT_TRUE(Contains(checked.out, "[database-not-writable]")) << checked.out;
    const std::string sText = run.Write("in.txt", "IN_1 new\r\nIN_9 new\r\n");
    for (const Strings& command : {Strings{"set", "IN_1", "x"}, Strings{"import", sText},
                                   Strings{"rm", "IN_1"}, Strings{"db", "compact"}}) {
        const Outcome refused = run.Run(command);
        EXPECT_EQ(refused.exit, ExitCode::Database) << command.front();
        EXPECT_TRUE(Contains(refused.err, "somebody has the file open in Access")) << refused.err;
    }
    EXPECT_TRUE(Contains(run.Run({"db", "info"}).out, "not possible"));
    ::close(nFile);
    EXPECT_EQ(run.Run({"get", "IN_1"}).out, "Pümp\n");
    EXPECT_EQ(run.Run({"set", "IN_1", "x"}).exit, ExitCode::Done);
}

TEST_P(FormatTest, VerifyFindsDamage) {
    if (!IsAccess()) GTEST_SKIP() << "tested with the others of its kind";
    std::string sLines;
    for (int n = 1; n <= 300; ++n)
        sLines += "IN_" + std::to_string(n) + " some text of the cell\r\n";
    ASSERT_EQ(run.Run({"import", run.Write("many.txt", sLines)}).exit, ExitCode::Done);
    std::string sBytes = CommandRun::Bytes(run.Database());
    const std::size_t nText = sBytes.find("some text of the cell");
    ASSERT_NE(nText, std::string::npos);
    // The entry of a key in an index becomes another one.
    const std::size_t nPage = std::string(GetParam()) == "jet3" ? 2048 : 4096;
    for (std::size_t nPlace = 0; nPlace < sBytes.size(); nPlace += nPage)
        if (sBytes[nPlace] == 4 && sBytes[nPlace + nPage / 2] != 0) sBytes[nPlace + nPage / 2] ^= 1;
    std::ofstream(run.Database(), std::ios::binary) << sBytes;
    const Outcome found = run.Run({"db", "verify"});
    EXPECT_EQ(found.exit, ExitCode::Database);
    EXPECT_TRUE(Contains(found.err, "page ")) << found.err;
}

// --- What a new file doesn't have.

// Adds to the Access file what the store doesn't have.
template <typename Work>
void Change(const fs::path& path, Work work) {
    auto pages = jet::FilePages::Open(path, jet::OpenMode::ReadWrite);
    jet::FilePages& store = *pages;
    jet::AccessFile file(std::move(pages));
    ASSERT_TRUE(store.StartWriting());
    work(file);
    store.Commit();
    store.Rest();
}

void AddFormAndQuery(jet::AccessFile& file) {
    constexpr std::int32_t kFirst = std::numeric_limits<std::int32_t>::min() + 100;
    jet::AddObject(file, {kFirst, jet::kTablesParent, u"All names", 5, 0});
    jet::AddObject(file, {kFirst + 1, 0x0F000005, u"Main", -32768, 0});
}

Strings LinesOf(const std::string& sText) {
    std::istringstream stream(sText);
    Strings lines;
    for (std::string sLine; std::getline(stream, sLine);)
        lines.push_back(sLine);
    return lines;
}

TEST_P(FormatTest, ACompactionThatWouldLoseThingsTellsThemAndChangesNothingUnlessForced) {
    if (!IsAccess()) GTEST_SKIP() << "other files have no forms";
    ExecuteOn(run.Database(), kRows);
    Change(run.Database(), AddFormAndQuery);
    const std::string sBefore = CommandRun::Bytes(run.Database());
    const Outcome refused = run.Run({"db", "compact"});
    EXPECT_EQ(refused.exit, ExitCode::Refused);
    EXPECT_EQ(LinesOf(refused.err).front(), "nomiractl: left out: the form Main");
    EXPECT_EQ(LinesOf(refused.err).size(), 2U) << refused.err;
    EXPECT_EQ(CommandRun::Bytes(run.Database()), sBefore);
    const Outcome done = run.Run({"db", "compact", "--force", "--json"});
    ASSERT_EQ(done.exit, ExitCode::Done) << done.err;
    EXPECT_EQ(done.Json()["left_out"], nlohmann::json::parse(R"(["the form Main"])"));
    EXPECT_EQ(run.Run({"db", "compact"}).exit, ExitCode::Done);
    EXPECT_EQ(run.Run({"db", "verify"}).exit, ExitCode::Done);
    EXPECT_EQ(QueryOn(run.Database(), kAllRows).size(), 4U);
}

TEST_P(FormatTest, AConversionTellsWhatTheNewFileDoesntHave) {
    if (!IsAccess()) GTEST_SKIP() << "the next test's";
    Change(run.Database(), [](jet::AccessFile& file) {
        AddFormAndQuery(file);
        file.CreateTable({.sName = u"Other", .columns = {{.sName = u"Id"}}, .indexes = {}});
    });
    for (const std::string sFormat : kFormats) {
        const Outcome made =
            run.Run({"db", "convert", run.Database().string(), Path(sFormat), "--format", sFormat});
        ASSERT_EQ(made.exit, ExitCode::Done) << made.err;
        EXPECT_EQ(LinesOf(made.err),
                  sFormat == "sqlite"
                      ? (Strings{"nomiractl: left out: the indexes and relationships of the table"
                                 " Other",
                                 "nomiractl: left out: the query All names",
                                 "nomiractl: left out: the form Main"})
                      : Strings{"nomiractl: left out: the form Main"});
    }
}

TEST_P(FormatTest, AConversionTellsOfColumnsAndIndexesThatTheStoreDoesntHave) {
    fs::remove(run.Database());
    if (IsAccess()) {
        using jet::ColumnType;
        WriteAccessFile(
            run.Database(),
            std::string(GetParam()) == "jet3" ? StoreFormat::Jet3 : StoreFormat::Jet4,
            {{.sName = u"Items",
              .columns = {{.sName = u"Key_id", .bAutonumber = true},
                          {.sName = u"Module", .type = ColumnType::Text, .nCharacters = 50},
                          {.sName = u"KeyString", .type = ColumnType::Text, .nCharacters = 255},
                          {.sName = u"Remark", .type = ColumnType::Memo}},
              .indexes =
                  {{.sName = u"PK", .columns = {u"Key_id"}, .bPrimary = true},
                   {.sName = u"Keys", .columns = {u"KeyString"}},
                   {.sName = u"OneEach", .columns = {u"KeyString", u"Module"}, .bUnique = true}}},
             {.sName = u"Messages",
              .columns = {{.sName = u"Key_id"},
                          {.sName = u"Language_id"},
                          {.sName = u"String", .type = ColumnType::Memo}},
              .indexes = {{.sName = u"ByLanguage", .columns = {u"Language_id"}}}}});
    } else {
        std::ofstream(run.Database()).close();
        ExecuteOn(run.Database(),
                  "CREATE TABLE Items(Key_id INTEGER PRIMARY KEY, Module TEXT, KeyString TEXT,"
                  " Remark TEXT, UNIQUE(KeyString,Module));"
                  "CREATE TABLE Messages(Key_id INTEGER, Language_id INTEGER, String TEXT);"
                  "CREATE INDEX ItemsByKey ON Items(KeyString, Module);"
                  "CREATE INDEX ByLanguage ON Messages(Language_id);"
                  "CREATE VIEW Both AS SELECT * FROM Items");
    }
    const std::string sOther = IsAccess() ? "sqlite" : "jet3";
    const Outcome made =
        run.Run({"db", "convert", run.Database().string(), Path("new"), "--format", sOther});
    ASSERT_EQ(made.exit, ExitCode::Done) << made.err;
    const std::string sLeftOut = "nomiractl: left out: the ";
    EXPECT_EQ(LinesOf(made.err),
              IsAccess() ? (Strings{sLeftOut + "column Remark of the table Items",
                                    sLeftOut + "index OneEach of the table Items",
                                    sLeftOut + "index ByLanguage of the table Messages"})
                         : (Strings{sLeftOut + "column Remark of the table Items",
                                    sLeftOut + "index sqlite_autoindex_Items_1",
                                    sLeftOut + "index ByLanguage", sLeftOut + "view Both"}));
}

TEST(FormatsTest, AnUnknownFormatIsWrongUsage) {
    const CommandRun run;
    EXPECT_EQ(run.Run({"db", "create", (run.Root() / "x").string(), "--format", "jet5"}).exit,
              ExitCode::WrongUsage);
    EXPECT_FALSE(fs::exists(run.Root() / "x"));
}

}  // namespace
}  // namespace nomira::testing
