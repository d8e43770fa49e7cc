#include <sqlite3.h>
#include <sys/stat.h>

#include "apps/CommandRun.h"

namespace {

namespace fs = std::filesystem;
using nomira::companion::ExitCode;
using nomira::testing::CommandRun;
using nomira::testing::Contains;
using nomira::testing::ExecuteOn;
using nomira::testing::FormatUnderTest;
using nomira::testing::Outcome;
using nomira::testing::QueryOn;
using nomira::testing::StoreFormat;
using nomira::testing::Strings;
using nomira::testing::WriteAccessFile;

// A refusal changes nothing, and says why on the error stream alone.
void ExpectRefused(const Outcome& outcome, const std::string& sWords,
                   ExitCode exit = ExitCode::Files) {
    EXPECT_EQ(outcome.exit, exit);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.rfind("nomiractl: ", 0), 0U) << outcome.err;
    EXPECT_TRUE(Contains(outcome.err, sWords)) << outcome.err;
}

void ExpectNoDatabase(const Outcome& outcome, const std::string& sWords) {
    ExpectRefused(outcome, sWords, ExitCode::Database);
}

// ---- The command line ----

TEST(NomiractlTest, HelpNamesCommandsAndExitCodes) {
    const Outcome help = CommandRun::RunAlone({"--help"});
    EXPECT_EQ(help.exit, ExitCode::Done);
    EXPECT_EQ(help.err, "");
    for (const char* sPart :
         {"import", "export", "db", "--prefix", "--customer", "Exit status", "0    done",
          "1    differences", "2    wrong usage", "3    the input", "4    a file",
          "5    the database", "6    the controller", "130  interrupted"})
        EXPECT_TRUE(Contains(help.out, sPart)) << sPart;
}

TEST(NomiractlTest, EachCommandHasHelpOfItsOwn) {
    EXPECT_TRUE(Contains(CommandRun::RunAlone({"import", "--help"}).out, "--overwrite"));
    EXPECT_TRUE(Contains(CommandRun::RunAlone({"db", "create", "--help"}).out, "must not exist"));
}

TEST(NomiractlTest, WrongUsageExitsWithTwoAndSaysWhyOnTheErrorStream) {
    for (const Strings& args :
         {Strings{}, Strings{"frobnicate"}, Strings{"import"}, Strings{"export"}, Strings{"db"},
          Strings{"db", "create"}, Strings{"import", "a.txt", "--nonsense"},
          Strings{"import", "a.txt", "b.txt"}, Strings{"--json", "export", "-"},
          Strings{"export", "x.txt", "--overwrite"}}) {
        const Outcome outcome = CommandRun::RunAlone(args);
        EXPECT_EQ(outcome.exit, ExitCode::WrongUsage) << ::testing::PrintToString(args);
        EXPECT_EQ(outcome.out, "") << ::testing::PrintToString(args);
        EXPECT_NE(outcome.err, "") << ::testing::PrintToString(args);
    }
}

TEST(NomiractlTest, CommonOptionsMayStandBeforeOrBehindTheCommand) {
    const CommandRun run;
    const std::string sPath = (run.Root() / "x.db").string();
    EXPECT_EQ(run.Run({"--json", "db", "create", sPath}).Json()["created"], true);
    EXPECT_EQ(run.Run({"db", "info", sPath, "--json"}).Json()["database"], sPath);
    EXPECT_EQ(run.Run({"--db", sPath, "--json", "db", "info"}).Json()["database"], sPath);
}

// ---- db create ----

TEST(NomiractlTest, CreateMakesAnEmptyMessageDatabase) {
    const CommandRun run;
    run.CreateDatabase();
    EXPECT_EQ(run.Texts(), Strings{});
}

TEST(NomiractlTest, CreateNeverTouchesAnExistingFile) {
    const CommandRun run;
    const std::string sPath = run.Write("precious.txt", "precious");
    ExpectRefused(run.Run({"db", "create", sPath}), "exists already");
    EXPECT_EQ(CommandRun::Bytes(sPath), "precious");
}

TEST(NomiractlTest, CreateRefusesALinkThatLeadsNowhere) {
    const CommandRun run;
    fs::create_symlink(run.Root() / "nowhere", run.Root() / "link");
    ExpectRefused(run.Run({"db", "create", (run.Root() / "link").string()}), "exists already");
    EXPECT_FALSE(fs::exists(run.Root() / "nowhere"));
}

TEST(NomiractlTest, CreateNamesTheFolderThatIsMissing) {
    const CommandRun run;
    const std::string sFolder = (run.Root() / "missing").string();
    ExpectRefused(run.Run({"db", "create", sFolder + "/x.db"}), "mkdir -p " + sFolder);
}

// ---- Databases that are none ----

class WrongDatabaseTest : public ::testing::TestWithParam<const char*> {
  protected:
    Strings Command(const CommandRun& run) const {
        const std::string sName = GetParam();
        if (sName == "db info") return {"db", "info"};
        if (sName == "export") return {"export", (run.Root() / "out.txt").string()};
        return {"import", run.Write("in.txt", "IN_1 pump\r\n")};
    }
};
INSTANTIATE_TEST_SUITE_P(Commands, WrongDatabaseTest,
                         ::testing::Values("db info", "export", "import"));

TEST_P(WrongDatabaseTest, MissingOneIsNamedWithTheCommandThatMakesIt) {
    const CommandRun run;
    ExpectNoDatabase(run.Run(Command(run)), "no database at " + run.Database().string() +
                                                "; make one with: nomiractl db create " +
                                                run.Database().string());
    EXPECT_FALSE(fs::exists(run.Database()));
}

TEST_P(WrongDatabaseTest, FolderInItsPlace) {
    const CommandRun run;
    fs::create_directory(run.Database());
    ExpectNoDatabase(run.Run(Command(run)), "not a plain file");
}

TEST_P(WrongDatabaseTest, EmptyFile) {
    const CommandRun run;
    std::ofstream(run.Database()).close();
    ExpectNoDatabase(run.Run(Command(run)), "an empty file and no database");
    EXPECT_EQ(fs::file_size(run.Database()), 0U);
}

TEST_P(WrongDatabaseTest, TextFile) {
    const CommandRun run;
    std::ofstream(run.Database()) << std::string(5000, 'x');
    ExpectNoDatabase(run.Run(Command(run)), run.Database().string() + ": file is not a database");
}

TEST_P(WrongDatabaseTest, AccessFileThatIsCutOff) {
    const CommandRun run;
    std::ofstream(run.Database(), std::ios::binary)
        << std::string("\0\1\0\0Standard Jet DB\0", 20) << std::string(4076, '\0');
    ExpectNoDatabase(run.Run(Command(run)),
                     run.Database().string() + ": the file has been cut off");
}

TEST_P(WrongDatabaseTest, AccessFileOfALaterGeneration) {
    const CommandRun run;
    std::ofstream(run.Database(), std::ios::binary)
        << std::string("\0\1\0\0Standard ACE DB\0\2", 21) << std::string(4075 + 8192, '\0');
    ExpectNoDatabase(run.Run(Command(run)), run.Database().string() + ": ");
}

TEST_P(WrongDatabaseTest, DatabaseWithoutTheTables) {
    const CommandRun run;
    run.CreateDatabase();
    if (FormatUnderTest() == StoreFormat::Sqlite)
        ExecuteOn(run.Database(), "DROP TABLE Messages; DROP TABLE Items");
    else
        WriteAccessFile(run.Database(), FormatUnderTest(), {});
    ExpectNoDatabase(run.Run(Command(run)), "no such table");
}

TEST_P(WrongDatabaseTest, DatabaseThatSomebodyElseKeeps) {
    if (FormatUnderTest() != StoreFormat::Sqlite)
        GTEST_SKIP() << "an Access file is read also while somebody writes it";
    const CommandRun run;
    run.CreateDatabase();
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(run.Database().c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    ExpectNoDatabase(run.Run(Command(run)), "another program uses it");
    sqlite3_close(other);
}

TEST_P(WrongDatabaseTest, DamagedDatabase) {
    const CommandRun run;
    run.CreateDatabase();
    std::string sLines;
    for (int n = 0; n < 2000; ++n)
        sLines += "IN_" + std::to_string(n) + " some text of the cell\r\n";
    ASSERT_EQ(run.Run({"import", run.Write("many.txt", sLines)}).exit, ExitCode::Done);
    const auto nSize = static_cast<long>(fs::file_size(run.Database()));
    std::fstream file(run.Database(), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(8192);
    file << std::string(static_cast<std::size_t>(nSize - 8192), '\x55');
    file.close();
    const Outcome outcome = run.Run(Command(run));
    EXPECT_EQ(outcome.exit, ExitCode::Database);
    EXPECT_TRUE(Contains(outcome.err, run.Database().string())) << outcome.err;
    EXPECT_FALSE(fs::exists(run.Root() / "out.txt"));
}

// ---- db info ----

// A part of the name that the format under test has for people.
std::string NameOfFormat() {
    switch (FormatUnderTest()) {
        case StoreFormat::Jet3:
            return "Jet 3";
        case StoreFormat::Jet4:
            return "Jet 4";
        default:
            return "SQLite";
    }
}

TEST(NomiractlTest, InfoCountsKeysByClass) {
    const CommandRun run;
    run.CreateDatabase();
    ExecuteOn(run.Database(),
              "INSERT INTO Items VALUES(1,'IO','IN_1'),(2,'IO','IN_2'),(3,'IO','OUT_1'),"
              "(4,'Flag','FlagText7'),(5,'ZTQXProcParam','17'),(6,'Flag','IN_3'),"
              "(7,'IO','IN_4');"
              "INSERT INTO Messages VALUES(1,99,'pump'),(2,99,'|EMPTY|'),(3,1,'other language'),"
              "(4,99,''),(5,99,'spot'),(6,99,'x'),(7,99,NULL)");
    const nlohmann::json json = run.Run({"db", "info", "--json"}).Json();
    EXPECT_TRUE(Contains(json["format"], NameOfFormat())) << json["format"];
    EXPECT_EQ(json["bytes"], fs::file_size(run.Database()));
    const auto row = [&](const std::string& sClass) {
        for (const auto& ofClass : json["classes"])
            if (ofClass["class"] == sClass)
                return std::vector<int>{ofClass["keys"], ofClass["empty"],
                                        ofClass["without_message"]};
        return std::vector<int>{};
    };
    EXPECT_EQ(json["classes"].size(), 15U);
    EXPECT_EQ(row("digital input"), (std::vector<int>{3, 2, 0}));
    EXPECT_EQ(row("digital output"), (std::vector<int>{1, 0, 1}));
    EXPECT_EQ(row("flag"), (std::vector<int>{1, 1, 0}));
    EXPECT_EQ(row("notice"), (std::vector<int>{0, 0, 0}));
    EXPECT_EQ(row("other keys"), (std::vector<int>{2, 0, 0}));
    EXPECT_EQ(json["total"]["keys"], 7);
    EXPECT_EQ(json["problems"], nlohmann::json::array());
}

TEST(NomiractlTest, InfoForPeopleShowsWhatIsThere) {
    const CommandRun run;
    run.CreateDatabase();
    ExecuteOn(run.Database(), "INSERT INTO Items VALUES(1,'Timer','TimerText1')");
    const Outcome info = run.Run({"db", "info"});
    EXPECT_EQ(info.exit, ExitCode::Done);
    for (const std::string& sPart : Strings{run.Database().string(), NameOfFormat(), "timer",
                                            "import with --overwrite", "fine"})
        EXPECT_TRUE(Contains(info.out, sPart)) << sPart << '\n' << info.out;
}

TEST(NomiractlTest, InfoChangesNothing) {
    const CommandRun run;
    run.CreateDatabase();
    const std::string sBefore = CommandRun::Bytes(run.Database());
    run.Run({"db", "info"});
    EXPECT_EQ(CommandRun::Bytes(run.Database()), sBefore);
}

TEST(NomiractlTest, TheDatabaseIsFoundWhereTheSettingsPlaceIt) {
    const CommandRun run;
    const std::string sPlace = (run.Root() / "elsewhere.db").string();
    ASSERT_EQ(run.Run({"db", "create", sPlace}).exit, ExitCode::Done);
    std::ofstream(run.Prefix() / "nomira.conf")
        << "path C:\\tqx\\data\\orvo_con.mdb = " << sPlace << '\n';
    EXPECT_EQ(run.Run({"db", "info", "--json"}).Json()["database"], sPlace);
}

TEST(NomiractlTest, ABadSettingIsNamedWithFileAndLine) {
    const CommandRun run;
    const fs::path conf = run.Prefix() / "nomira.conf";
    std::ofstream(conf) << "# fine\ncodepage = many\n";
    ExpectRefused(run.Run({"db", "info"}), conf.string() + ":2: ", ExitCode::Refused);
}

// ---- export ----

// A database with a few texts.
struct Filled : CommandRun {
    Filled() {
        CreateDatabase();
        ExecuteOn(Database(),
                  "INSERT INTO Items VALUES(1,'IO','IN_10'),(2,'IO','IN_2'),(3,'IO','OUT_1'),"
                  "(4,'Flag','FlagText7'),(5,'A10TP','Weld11'),(6,'IO','IN_3');"
                  "INSERT INTO Messages VALUES(1,99,'ten'),(2,99,'two'),(3,99,'pump'),"
                  "(4,99,'µ-step'),(5,99,'seam'),(6,99,'|EMPTY|')");
    }
    std::string Target() const { return (Root() / "out.txt").string(); }
};

const char* const kFilledStandard =
    "IN_2 two\r\nIN_10 ten\r\nOUT_1 pump\r\nFlagText7 \xB5-step\r\nWeld11 seam\r\n\r\n";
const char* const kFilledCustomer =
    "E2 two\r\nE10 ten\r\nA1 pump\r\nF7 \xB5-step\r\nWeld11 seam\r\n\r\n";

TEST(NomiractlTest, ExportWritesClassesInTheirOrderAndNumbersInTheirs) {
    const Filled run;
    EXPECT_EQ(run.Run({"export", run.Target()}).exit, ExitCode::Done);
    EXPECT_EQ(CommandRun::Bytes(run.Target()), kFilledStandard);
}

TEST(NomiractlTest, ExportToTheOutputStreamGivesTheSameBytesAndNoReport) {
    const Filled run;
    const Outcome exported = run.Run({"export", "-"});
    EXPECT_EQ(exported.out, kFilledStandard);
    EXPECT_EQ(exported.err, "");
}

TEST(NomiractlTest, ExportReportsRowsByClass) {
    const Filled run;
    const nlohmann::json json = run.Run({"--json", "export", run.Target()}).Json();
    EXPECT_EQ(json["written"], true);
    EXPECT_EQ(json["rows"], 5);
    EXPECT_EQ(json["classes"][0], (nlohmann::json{{"class", "digital input"}, {"rows", 2}}));
    EXPECT_EQ(json["left_out"], (nlohmann::json{"IN_3"}));
    EXPECT_TRUE(Contains(run.Run({"export", run.Target()}).out, "digital output"));
}

TEST(NomiractlTest, ExportTakesTheCustomersKeysByRegistryOrOption) {
    const Filled run;
    EXPECT_EQ(run.Run({"--customer", "VW", "export", "-"}).out, kFilledCustomer);
    std::ofstream(run.Prefix() / "registry.reg")
        << "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Orvo\\Version]\r\n"
           "\"Customer\"=\"VW\"\r\n";
    EXPECT_EQ(run.Run({"export", "-"}).out, kFilledCustomer);
    EXPECT_EQ(run.Run({"--customer", "", "export", "-"}).out, kFilledStandard);
    EXPECT_EQ(run.Run({"--customer", "vw", "export", "-"}).out, kFilledStandard);
}

TEST(NomiractlTest, ExportOfNothingLeavesTheFileAlone) {
    const CommandRun run;
    run.CreateDatabase();
    const std::string sTarget = run.Write("out.txt", "old");
    const Outcome exported = run.Run({"export", sTarget});
    EXPECT_EQ(exported.exit, ExitCode::Done);
    EXPECT_TRUE(Contains(exported.out, "was not written")) << exported.out;
    EXPECT_EQ(CommandRun::Bytes(sTarget), "old");
    EXPECT_EQ(run.Run({"export", "-"}).out, "");
    EXPECT_EQ(run.Run({"--json", "export", sTarget}).Json()["written"], false);
}

TEST(NomiractlTest, ExportReplacesAFileAndKeepsItsRights) {
    const Filled run;
    run.Write("out.txt", std::string(100000, 'x'));
    ::chmod(run.Target().c_str(), 0640);
    ASSERT_EQ(run.Run({"export", run.Target()}).exit, ExitCode::Done);
    EXPECT_EQ(CommandRun::Bytes(run.Target()), kFilledStandard);
    EXPECT_EQ(fs::status(run.Target()).permissions(), static_cast<fs::perms>(0640));
}

TEST(NomiractlTest, ExportFollowsALink) {
    const Filled run;
    const std::string sReal = run.Write("real.txt", "old");
    fs::create_symlink(sReal, run.Target());
    ASSERT_EQ(run.Run({"export", run.Target()}).exit, ExitCode::Done);
    EXPECT_TRUE(fs::is_symlink(run.Target()));
    EXPECT_EQ(CommandRun::Bytes(sReal), kFilledStandard);
}

std::size_t FilesIn(const fs::path& folder) {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

TEST(NomiractlTest, ExportLeavesNoOtherFileBehind) {
    const Filled run;
    const std::size_t nBefore = FilesIn(run.Root());
    run.Run({"export", run.Target()});
    EXPECT_EQ(FilesIn(run.Root()), nBefore + 1);
}

TEST(NomiractlTest, ExportRefusesTargetsThatCannotBe) {
    const Filled run;
    ExpectRefused(run.Run({"export", run.Root().string()}), "a folder; name a file in it");
    ExpectRefused(run.Run({"export", (run.Root() / "missing/out.txt").string()}), "No such file");
    ExpectRefused(run.Run({"export", run.Database().string()}), "the message database itself");
    EXPECT_EQ(run.Texts().size(), 6U);
}

TEST(NomiractlTest, ExportRefusesAReadOnlyFile) {
    const Filled run;
    run.Write("out.txt", "old");
    ::chmod(run.Target().c_str(), 0444);
    ExpectRefused(run.Run({"export", run.Target()}), "chmod u+w " + run.Target());
    EXPECT_EQ(CommandRun::Bytes(run.Target()), "old");
}

TEST(NomiractlTest, ExportToAFullDeviceIsRefused) {
    const Filled run;
    ExpectRefused(run.Run({"export", "/dev/full"}), "/dev/full: No space left on device");
}

TEST(NomiractlTest, ExportRefusesCharactersThatTheCodePageLacks) {
    if (FormatUnderTest() == StoreFormat::Jet3)
        GTEST_SKIP() << "its texts have the characters of the code page alone";
    const Filled run;
    ExecuteOn(run.Database(), "UPDATE Messages SET String='5 Ω' WHERE Key_id=2");
    const std::string sTarget = run.Write("out.txt", "old");
    const Outcome exported = run.Run({"export", sTarget});
    EXPECT_EQ(exported.exit, ExitCode::Refused);
    EXPECT_EQ(exported.err,
              "nomiractl: " + sTarget +
                  ":1:8: the character \"Ω\" (U+03A9) is not in code page 1252: IN_2\n"
                  "nomiractl: 1 characters can't be written, and so nothing was;"
                  " --encoding utf-8 has them all\n");
    EXPECT_EQ(CommandRun::Bytes(sTarget), "old");
    const nlohmann::json json = run.Run({"--json", "export", sTarget}).Json();
    EXPECT_EQ(json["written"], false);
    EXPECT_EQ(json["unwritable"], (nlohmann::json{"IN_2"}));
    EXPECT_TRUE(Contains(run.Run({"export", "-", "--encoding", "utf-8"}).out, "IN_2 5 Ω\r\n"));
}

TEST(NomiractlTest, ExportReadsAReadOnlyDatabase) {
    const Filled run;
    ::chmod(run.Database().c_str(), 0444);
    EXPECT_EQ(run.Run({"export", "-"}).out, kFilledStandard);
}

TEST(NomiractlTest, QuietSaysNothingOnSuccess) {
    const Filled run;
    const std::string sFile = run.Write("in.txt", "IN_1 pump\r\n; remark\r\n");
    for (const Strings& args :
         {Strings{"--quiet", "export", run.Target()}, Strings{"--quiet", "import", sFile},
          Strings{"--quiet", "db", "info"},
          Strings{"--quiet", "db", "create", (run.Root() / "new.db").string()}}) {
        const Outcome outcome = run.Run(args);
        EXPECT_EQ(outcome.exit, ExitCode::Done);
        EXPECT_EQ(outcome.out + outcome.err, "") << args[1];
    }
}

TEST(NomiractlTest, LinesOfTheRegistryThatMeanNothingAreWarnedOf) {
    const Filled run;
    std::ofstream(run.Prefix() / "registry.reg") << "REGEDIT4\r\n\r\nwhat is this\r\n";
    const Outcome exported = run.Run({"export", "-"});
    EXPECT_EQ(exported.exit, ExitCode::Done);
    EXPECT_TRUE(Contains(exported.err, "registry.reg:3: ")) << exported.err;
}

}  // namespace
