// The real program as a process of its own, in a prefix of its own.
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "adapters/posix/PosixDesktop.h"
#include "adapters/sqlite/StoreSchema.h"
#include "testing/Random.h"
#include "testing/RunProcess.h"
#include "testing/TemporaryFolder.h"
#include "testing/TestDatabase.h"
#include "testing/TextPrinting.h"

namespace nomira {
namespace {

namespace fs = std::filesystem;
using testing::ProcessOutcome;
using Rows = std::vector<std::vector<std::string>>;

constexpr const char* kNoWindow =
    "nomira: there is no display to show the program's form on; give a batch command instead, such "
    "as 'TEXT_INTO_DB|OVERWRITE|C:\\names.txt'\n";
constexpr const char* kTooFew = "Nomira: Number of parameters too less !!!\n";
constexpr const char* kWrong = "Nomira: command lines arguments wrong !!!\n";

class NomiraTest : public ::testing::Test {
  protected:
    NomiraTest() {
        fs::create_directories(Database().parent_path());
        sqlite::CreateStore(Database(), testing::FormatUnderTest());
    }

    fs::path Prefix() const { return m_prefix.Path(); }
    fs::path Drive() const { return m_prefix / "drives/c"; }
    fs::path Database() const { return Drive() / "tqx/data/orvo_con.mdb"; }

    void Put(const fs::path& path, const std::string& sBytes) const {
        fs::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << sBytes;
    }
    static std::string Bytes(const fs::path& path) {
        std::ostringstream bytes;
        bytes << std::ifstream(path, std::ios::binary).rdbuf();
        return bytes.str();
    }
    ProcessOutcome Run(const std::vector<std::string>& arguments,
                       testing::Environment environment = {}) const {
        environment.insert(environment.begin(), {{"NOMIRA_PREFIX", Prefix().string()},
                                                 {"LC_ALL", "C"},
                                                 {"HOME", Prefix().string()},
                                                 {"DISPLAY", ""},
                                                 {"WAYLAND_DISPLAY", ""}});
        return testing::RunProcess(NOMIRA_PROGRAM, arguments, environment);
    }
    Rows Stored() const {
        return testing::QueryOn(Database(),
                                "SELECT Items.KeyString, Messages.String FROM Items "
                                "JOIN Messages ON Items.Key_id = Messages.Key_id "
                                "ORDER BY Items.KeyString");
    }
    static void ExpectSilentEnd(const ProcessOutcome& outcome) {
        EXPECT_EQ(outcome.nStatus, 0);
        EXPECT_EQ(outcome.sOut, "");
        EXPECT_EQ(outcome.sErr, "");
    }

  private:
    nomira::testing::TemporaryFolder m_prefix;
};

TEST_F(NomiraTest, WithoutADisplayItSaysThatTheFormHasNone) {
    const ProcessOutcome outcome = Run({});
    EXPECT_EQ(outcome.nStatus, 1);
    EXPECT_EQ(outcome.sOut, "");
    EXPECT_EQ(outcome.sErr, kNoWindow);
}

TEST_F(NomiraTest, ALineWithoutASeparatorEndsSilently) {
    for (const char* pArgument : {"word", "--help", "--version", "\"C:\\a path\\x.txt\"", " "})
        ExpectSilentEnd(Run({pArgument}));
    EXPECT_EQ(Stored(), Rows{});
}

TEST_F(NomiraTest, TheCommandMayComeAsOneArgumentOrAsSeveral) {
    const std::vector<std::string> forms[] = {
        {"TEXT_INTO_DB|OVERWRITE|C:\\a path\\x.txt"},
        {"TEXT_INTO_DB|OVERWRITE|\"C:\\a path\\x.txt\""},
        {"TEXT_INTO_DB", "|", "OVERWRITE", "|", "C:\\a path\\x.txt"},
        {"text_into_db|", "overwrite|", "C:\\a", "path\\x.txt"},
        {"\"TEXT_INTO_DB|OVERWRITE|C:\\a", "path\\x.txt\""},
        {"|TEXT_INTO_DB|OVERWRITE|C:/a path/x.txt"},
        {"TEXT_INTO_DB|OVERWRITE|" + (Drive() / "a path/x.txt").string()},
    };
    int nRun = 0;
    for (const std::vector<std::string>& arguments : forms) {
        const std::string sText = "Pump " + std::to_string(++nRun);
        Put(Drive() / "a path/x.txt", "IN_1 " + sText + "\r\n");
        ExpectSilentEnd(Run(arguments));
        EXPECT_EQ(Stored(), (Rows{{"IN_1", sText}})) << arguments[0];
    }
}

TEST_F(NomiraTest, AnOverwriteWipesAndAMergeKeeps) {
    Put(Drive() / "1.txt", "IN_1 Pump\r\nIN_2 Lamp\r\n");
    Put(Drive() / "2.txt", "IN_2 Lamp two\r\n");
    Put(Drive() / "3.txt", "IN_3 Valve\r\n");
    ExpectSilentEnd(Run({"TEXT_INTO_DB|x|C:\\1.txt"}));
    ExpectSilentEnd(Run({"TEXT_INTO_DB|x|C:\\2.txt"}));
    EXPECT_EQ(Stored(), (Rows{{"IN_1", "Pump"}, {"IN_2", "Lamp two"}}));
    ExpectSilentEnd(Run({"TEXT_INTO_DB|OVERWRITE|C:\\3.txt"}));
    EXPECT_EQ(Stored(), (Rows{{"IN_3", "Valve"}}));
}

TEST_F(NomiraTest, AnExportWritesTheFile) {
    Put(Drive() / "in.txt", "OUT_7 F\xFCllung\r\nIN_1 Temp\xB5\r\n");
    ExpectSilentEnd(Run({"TEXT_INTO_DB|x|C:\\in.txt"}));
    ExpectSilentEnd(Run({"DB_INTO_TEXT|x|C:\\out.txt"}));
    EXPECT_EQ(Bytes(Drive() / "out.txt"), "IN_1 Temp\xB5\r\nOUT_7 Fuellung\r\n\r\n");
}

TEST_F(NomiraTest, AFileNameMayComeInUtf8OrInTheEightBitPage) {
    Put(Drive() / "F\xC3\xBCllung.txt", "IN_1 Pump\r\n");
    ExpectSilentEnd(Run({"TEXT_INTO_DB|x|C:\\F\xC3\xBCllung.txt"}));
    EXPECT_EQ(Stored(), (Rows{{"IN_1", "Pump"}}));
    Put(Drive() / "F\xC3\xBCllung.txt", "IN_1 Lamp\r\n");
    ExpectSilentEnd(Run({"TEXT_INTO_DB|x|C:\\F\xFCllung.txt"}));
    EXPECT_EQ(Stored(), (Rows{{"IN_1", "Lamp"}}));
}

TEST_F(NomiraTest, ADirectoryOfProgramsTakesTheNames) {
    Put(Drive() / "in.txt", "OUT_7 Valve\r\n");
    Put(Drive() / "R1/prog.src", ";FOLD OUT 7 'old' State=TRUE;%{PE}\r\n");
    ExpectSilentEnd(Run({"TEXT_INTO_DB|x|C:\\in.txt"}));
    ExpectSilentEnd(Run({"UPDATE_USERFILES|SELECT_ALL|C:\\R1"}));
    EXPECT_EQ(Bytes(Drive() / "R1/prog.src"), ";FOLD OUT 7 'Valve' State=TRUE;%{PE}\r\n");
}

TEST_F(NomiraTest, ASingleProgramEndsInTheRunTimeBox) {
    Put(Drive() / "R1/prog.src", ";FOLD OUT 7 'old' State=TRUE\r\n");
    const ProcessOutcome outcome = Run({"UPDATE_USERFILES|one|C:\\R1\\prog.src"});
    EXPECT_EQ(outcome.nStatus, 1);
    EXPECT_EQ(outcome.sOut, "");
    EXPECT_EQ(outcome.sErr, "Nomira: Run-time error '75':\n\nPath/File access error\n");
    EXPECT_EQ(Bytes(Drive() / "R1/prog.src"), ";FOLD OUT 7 'old' State=TRUE\r\n");
}

TEST_F(NomiraTest, WrongParametersGetTheirBoxAndNought) {
    struct Row {
        const char* pCommandLine;
        const char* pBox;
    };
    const Row rows[] = {
        {"word|", kTooFew},
        {"|", kTooFew},
        {"TEXT_INTO_DB|OVERWRITE", kWrong},
        {"TEXT_INTO_DB|C:\\x.txt", kWrong},
        {"DB_INTO_TEXT|x| ", kWrong},
        {"TEXT_INTO_DB|OVERWRITE| ", ""},
        {"TEXT_INTO_DB|x|C:\\missing.txt", ""},
        {"DB_INTO_TEXT|x|Q:\\no drive\\x.txt", ""},
        {"UNKNOWN|OVERWRITE|C:\\x.txt", ""},
    };
    for (const Row& row : rows) {
        const ProcessOutcome outcome = Run({row.pCommandLine});
        EXPECT_EQ(outcome.nStatus, 0) << row.pCommandLine;
        EXPECT_EQ(outcome.sOut, "") << row.pCommandLine;
        EXPECT_EQ(outcome.sErr, row.pBox) << row.pCommandLine;
    }
}

TEST_F(NomiraTest, AMissingDatabaseEndsSilentlyAndIsNotMade) {
    fs::remove(Database());
    Put(Drive() / "x.txt", "IN_1 Pump\r\n");
    ExpectSilentEnd(Run({"TEXT_INTO_DB|OVERWRITE|C:\\x.txt"}));
    EXPECT_FALSE(fs::exists(Database()));
}

TEST_F(NomiraTest, TheRegistryFileOfThePrefixIsRead) {
    Put(Prefix() / "registry.reg",
        "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Orvo\\Version]\r\n\"Customer\"=\"VW\"\r\n");
    Put(Drive() / "x.txt", "E5 Pump\r\nIN_6 Lamp\r\n");
    ExpectSilentEnd(Run({"TEXT_INTO_DB|x|C:\\x.txt"}));
    EXPECT_EQ(Stored(), (Rows{{"IN_5", "Pump"}}));
}

TEST_F(NomiraTest, ALanguageThatIsNotHexadecimalEndsTheStart) {
    Put(Prefix() / "registry.reg",
        "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\Orvo\\Database]\r\n"
        "\"Language\"=\"German\"\r\n");
    Put(Drive() / "x.txt", "IN_1 Pump\r\n");
    for (const char* pCommandLine : {"TEXT_INTO_DB|x|C:\\x.txt", "word"}) {
        const ProcessOutcome outcome = Run({pCommandLine});
        EXPECT_EQ(outcome.nStatus, 1);
        EXPECT_EQ(outcome.sErr, "Nomira: Run-time error '13':\n\nType mismatch\n");
    }
    EXPECT_EQ(Stored(), Rows{});
}

TEST_F(NomiraTest, AnUnusablePrefixIsOneClearLine) {
    Put(Prefix() / "nomira.conf", "codepage = 1252\nnonsense\n");
    const ProcessOutcome outcome = Run({"word"});
    EXPECT_EQ(outcome.nStatus, 1);
    EXPECT_EQ(outcome.sOut, "");
    EXPECT_EQ(outcome.sErr.rfind("nomira: ", 0), 0U) << outcome.sErr;
    EXPECT_NE(outcome.sErr.find("nomira.conf:2"), std::string::npos) << outcome.sErr;
    EXPECT_EQ(std::count(outcome.sErr.begin(), outcome.sErr.end(), '\n'), 1) << outcome.sErr;
}

TEST_F(NomiraTest, ACodePageThatTheSystemLacksIsOneClearLine) {
    Put(Prefix() / "nomira.conf", "codepage = 4711\n");
    const ProcessOutcome outcome = Run({"word"});
    EXPECT_EQ(outcome.nStatus, 1);
    EXPECT_NE(outcome.sErr.find("4711"), std::string::npos) << outcome.sErr;
    EXPECT_EQ(std::count(outcome.sErr.begin(), outcome.sErr.end(), '\n'), 1) << outcome.sErr;
}

TEST_F(NomiraTest, APrefixThatIsNotThereIsAnEmptyWorld) {
    const std::string sMissing = (Prefix() / "not/there").string();
    ExpectSilentEnd(Run({"TEXT_INTO_DB|x|C:\\x.txt"}, {{"NOMIRA_PREFIX", sMissing}}));
}

TEST_F(NomiraTest, ASecondInstanceRaisesTheFirstAndChangesNothing) {
    posix::PosixDesktop first(Prefix());
    ASSERT_FALSE(first.PreviousInstance());
    first.AnnounceWindow(u"Nomira");
    Put(Drive() / "x.txt", "IN_1 Pump\r\n");
    // A registry that would end the start shows that it isn't read.
    Put(Prefix() / "registry.reg",
        "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\Orvo\\Database]\r\n"
        "\"Language\"=\"German\"\r\n");
    using posix::WindowRequest;
    const std::vector<WindowRequest> asked{{WindowRequest::Kind::Activate, u"Nomira"},
                                           {WindowRequest::Kind::Raise, u"Nomira"}};
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"TEXT_INTO_DB|OVERWRITE|C:\\x.txt"}, {"word|"}, {}}) {
        ExpectSilentEnd(Run(arguments));
        EXPECT_EQ(first.TakeRequests(), asked);
    }
    EXPECT_EQ(Stored(), Rows{});
}

TEST_F(NomiraTest, AnInstanceThatHasEndedIsNoneAnyMore) {
    { EXPECT_FALSE(posix::PosixDesktop(Prefix()).PreviousInstance()); }
    Put(Drive() / "x.txt", "IN_1 Pump\r\n");
    ExpectSilentEnd(Run({"TEXT_INTO_DB|x|C:\\x.txt"}));
    ExpectSilentEnd(Run({"TEXT_INTO_DB|x|C:\\x.txt"}));
    EXPECT_EQ(Stored(), (Rows{{"IN_1", "Pump"}}));
}

// Up to `nMost` parts, each one of the pieces or a few bytes, among them neither 0 nor `cLeftOut`.
std::string RandomMixture(testing::Random& random, const std::vector<std::string>& pieces,
                          std::size_t nMost, char cLeftOut) {
    std::string sMixture;
    for (std::size_t n = random.UpTo(nMost); n > 0; --n) {
        if (random.UpTo(2) > 0) {
            sMixture += pieces[random.UpTo(pieces.size() - 1)];
            continue;
        }
        for (std::size_t nBytes = random.UpTo(8); nBytes > 0; --nBytes) {
            const auto c = static_cast<char>(1 + random.UpTo(254));
            if (c != cLeftOut) sMixture += c;
        }
    }
    return sMixture;
}

// Commands and separators among any bytes but 0, so that every branch is reached. "/" is left out:
// a path of this system would lead out of the prefix.
std::string RandomCommandLine(testing::Random& random) {
    static const std::vector<std::string> pieces{"|",
                                                 "TEXT_INTO_DB",
                                                 "DB_INTO_TEXT",
                                                 "UPDATE_USERFILES",
                                                 "OVERWRITE",
                                                 "SELECT_ALL",
                                                 "C:\\x.txt",
                                                 "C:\\",
                                                 "\"",
                                                 " ",
                                                 "*?[",
                                                 "..\\"};
    return RandomMixture(random, pieces, 12, '/');
}

TEST_F(NomiraTest, AnyBytesAsCommandLineEndInAnOrderlyWay) {
    testing::Random random;
    SCOPED_TRACE(random.Seed());
    for (int i = 0; i < 60; ++i) {
        Put(Drive() / "x.txt", "IN_1 Pump\r\nno key\r\n17\tLamp\r\n");
        Put(Drive() / "p.src", ";FOLD OUT 7 'old' State=TRUE\r\n");
        const std::string sLine = RandomCommandLine(random);
        const ProcessOutcome outcome = Run({sLine});
        EXPECT_TRUE(outcome.nStatus == 0 || outcome.nStatus == 1)
            << outcome.nStatus << " for " << ::testing::PrintToString(sLine);
        EXPECT_EQ(outcome.sOut, "") << ::testing::PrintToString(sLine);
        if (outcome.nStatus == 1) {
            EXPECT_TRUE(outcome.sErr.rfind("Nomira: Run-time error", 0) == 0 ||
                        (sLine.empty() && outcome.sErr == kNoWindow))
                << outcome.sErr << " for " << ::testing::PrintToString(sLine);
        }
    }
}

// No output's key is among the pieces, and no byte can make one: 'O' is left out.
TEST_F(NomiraTest, AnyBytesAsTextFileLoseNothingElse) {
    static const std::vector<std::string> pieces{"IN_1",
                                                 "IN_",
                                                 "FlagText",
                                                 "NoticeText12",
                                                 "A10TP",
                                                 "Weld1",
                                                 "7",
                                                 " ",
                                                 "\t",
                                                 "'",
                                                 "\r\n",
                                                 "\r",
                                                 "\n",
                                                 "\xE4\xDF",
                                                 std::string(1, '\0'),
                                                 "|EMPTY|",
                                                 std::string(300, 'x')};
    testing::Random random;
    SCOPED_TRACE(random.Seed());
    Put(Drive() / "keep.txt", "OUT_9 Keep\r\n");
    ExpectSilentEnd(Run({"TEXT_INTO_DB|x|C:\\keep.txt"}));
    for (int i = 0; i < 40; ++i) {
        const std::string sBytes = RandomMixture(random, pieces, 60, 'O');
        Put(Drive() / "x.txt", sBytes);
        ExpectSilentEnd(Run({"TEXT_INTO_DB|x|C:\\x.txt"}));
        ASSERT_EQ(testing::DamageOn(Database()), std::vector<std::string>{})
            << ::testing::PrintToString(sBytes);
        ASSERT_EQ(testing::QueryOn(Database(),
                                   "SELECT String FROM Items JOIN Messages"
                                   " USING(Key_id) WHERE KeyString='OUT_9'"),
                  (Rows{{"Keep"}}))
            << ::testing::PrintToString(sBytes);
    }
}

TEST_F(NomiraTest, AnyBytesAsRegistryFileEndInAnOrderlyWay) {
    static const std::vector<std::string> pieces{"REGEDIT4",
                                                 "Windows Registry Editor Version 5.00",
                                                 "\r\n",
                                                 "[HKEY_LOCAL_MACHINE\\Software\\Orvo\\Version]",
                                                 "[-HKEY_CURRENT_USER]",
                                                 "\"Customer\"",
                                                 "=",
                                                 "\"VW\"",
                                                 "dword:0000",
                                                 "hex(2):41,00",
                                                 "\\",
                                                 ";",
                                                 "@",
                                                 "\xFF\xFE",
                                                 "[HKEY_CURRENT_USER\\Software\\Orvo\\Database]",
                                                 "\"Language\"=\"407\""};
    testing::Random random;
    SCOPED_TRACE(random.Seed());
    Put(Drive() / "x.txt", "IN_1 Pump\r\n");
    for (int i = 0; i < 40; ++i) {
        const std::string sBytes = RandomMixture(random, pieces, 30, '/');
        Put(Prefix() / "registry.reg", sBytes);
        const ProcessOutcome outcome = Run({"TEXT_INTO_DB|x|C:\\x.txt"});
        EXPECT_EQ(outcome.sOut, "") << ::testing::PrintToString(sBytes);
        EXPECT_TRUE(outcome.nStatus == 0 || outcome.nStatus == 1)
            << outcome.nStatus << " for " << ::testing::PrintToString(sBytes);
        EXPECT_EQ(outcome.nStatus == 0, outcome.sErr.empty())
            << outcome.sErr << " for " << ::testing::PrintToString(sBytes);
    }
}

}  // namespace
}  // namespace nomira
