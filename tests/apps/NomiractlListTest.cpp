#include "apps/BinaryRun.h"

namespace {

using nomira::testing::BinaryRun;
using nomira::testing::ExecuteOn;
using nomira::testing::ProcessOutcome;
using nomira::testing::Strings;
using Json = nlohmann::json;

class NomiractlListTest : public ::testing::Test {
  protected:
    NomiractlListTest() {
        m_run.Fill(
            "(1,'IO','IN_10'),(2,'IO','IN_2'),(3,'IO','OUT_1'),(4,'Flag','FlagText7'),"
            "(5,'A10TP','Weld11'),(6,'IO','IN_3'),(7,'ZTQXProcParam','17'),(8,'IO','IN_4'),"
            "(9,'IO','IN_5'),(10,'IO','IN_007')",
            "(1,99,'Zange auf'),(2,99,'Pumpe'),(3,99,'Füllstand'),(4,99,'µ-step'),(5,99,'seam'),"
            "(6,99,'|EMPTY|'),(7,99,'spot'),(8,99,NULL),(10,99,'seven')");
    }
    // What a run writes, when it goes well.
    std::string Out(const Strings& args) const {
        const ProcessOutcome outcome = m_run.Start(args);
        EXPECT_EQ(outcome.nStatus, 0) << outcome.sErr;
        EXPECT_EQ(outcome.sErr, "");
        return outcome.sOut;
    }
    BinaryRun m_run;
};

TEST_F(NomiractlListTest, ListsByClassAndNumberWithATabBetween) {
    EXPECT_EQ(Out({"list"}),
              "IN_2\tPumpe\nIN_3\t\nIN_4\t\nIN_5\t\nIN_10\tZange auf\nIN_007\tseven\n"
              "OUT_1\tFüllstand\nFlagText7\tµ-step\nWeld11\tseam\n17\tspot\n");
}

TEST_F(NomiractlListTest, TakesKeysRangesAndBareNumbers) {
    EXPECT_EQ(Out({"list", "IN_2"}), "IN_2\tPumpe\n");
    EXPECT_EQ(Out({"list", "E2", "A1"}), "IN_2\tPumpe\nOUT_1\tFüllstand\n");
    EXPECT_EQ(Out({"list", "IN_5..IN_40"}), "IN_5\t\nIN_10\tZange auf\nIN_007\tseven\n");
    EXPECT_EQ(Out({"list", "IN_2..3"}), "IN_2\tPumpe\nIN_3\t\n");
    EXPECT_EQ(Out({"list", "7"}), "IN_007\tseven\nFlagText7\tµ-step\n");
    EXPECT_EQ(Out({"list", "17"}), "17\tspot\n");
    EXPECT_EQ(Out({"list", "IN_7"}), "");
    EXPECT_EQ(Out({"list", "OUT_1", "10..20"}), "IN_10\tZange auf\nOUT_1\tFüllstand\n");
}

TEST_F(NomiractlListTest, TakesClassesByWordNameAndPrefix) {
    for (const char* sClass : {"out", "OUT", "digital output", "OUT_"})
        EXPECT_EQ(Out({"list", "--class", sClass}), "OUT_1\tFüllstand\n") << sClass;
    EXPECT_EQ(Out({"list", "--class", "flag", "--class", "weld"}),
              "FlagText7\tµ-step\nWeld11\tseam\n");
    EXPECT_EQ(Out({"list", "--class", "in", "1..2"}), "IN_2\tPumpe\n");
}

TEST_F(NomiractlListTest, SearchesTextsInAnyCase) {
    EXPECT_EQ(Out({"list", "--text", "FÜLL"}), "OUT_1\tFüllstand\n");
    EXPECT_EQ(Out({"list", "--text", "e", "--class", "in"}),
              "IN_2\tPumpe\nIN_10\tZange auf\nIN_007\tseven\n");
    EXPECT_EQ(Out({"list", "--text", "nowhere"}), "");
}

TEST_F(NomiractlListTest, TellsEmptyFromFilled) {
    EXPECT_EQ(Out({"list", "--empty"}), "IN_3\t\nIN_4\t\nIN_5\t\n");
    EXPECT_EQ(Out({"list", "--filled", "--class", "in"}),
              "IN_2\tPumpe\nIN_10\tZange auf\nIN_007\tseven\n");
    EXPECT_EQ(m_run.Start({"list", "--filled", "--empty"}).nStatus, 2);
}

TEST_F(NomiractlListTest, JsonTellsTheStateOfEachKey) {
    const Json json = Json::parse(Out({"list", "--json", "IN_2..IN_5", "17"}));
    EXPECT_EQ(json, Json::parse(R"([
        {"key":"IN_2","class":"digital input","module":"IO","state":"filled","text":"Pumpe"},
        {"key":"IN_3","class":"digital input","module":"IO","state":"empty","text":null},
        {"key":"IN_4","class":"digital input","module":"IO","state":"null","text":null},
        {"key":"IN_5","class":"digital input","module":"IO","state":"no-message","text":null},
        {"key":"17","class":"other keys","module":"ZTQXProcParam","state":"filled",
         "text":"spot"}])"));
}

TEST_F(NomiractlListTest, QuietListsNothing) {
    EXPECT_EQ(Out({"list", "--quiet"}), "");
}

TEST_F(NomiractlListTest, WrongKeysAndClassesAreWrongUsage) {
    for (const Strings& args :
         {Strings{"list", "INN_5"}, Strings{"list", "IN_9..IN_2"}, Strings{"list", "IN_1..OUT_4"},
          Strings{"list", "IN_12345"}, Strings{"list", "1.."}, Strings{"list", "--class", "inn"},
          Strings{"stats", "--class", "x"}, Strings{"stats", "--size", "in"},
          Strings{"stats", "--size", "in=12x"}, Strings{"stats", "--size", "in=10000"},
          Strings{"get"}}) {
        const ProcessOutcome outcome = m_run.Start(args);
        EXPECT_EQ(outcome.nStatus, 2) << ::testing::PrintToString(args);
        EXPECT_EQ(outcome.sOut, "");
        EXPECT_NE(outcome.sErr, "");
    }
    EXPECT_EQ(m_run.Start({"list", "INN_5"}).sErr,
              "nomiractl: INN_5: no key; write one as IN_5, IN_1..IN_40 or 1..40\n");
}

TEST_F(NomiractlListTest, GetShowsTheBareTextOfOneKey) {
    EXPECT_EQ(Out({"get", "IN_2"}), "Pumpe\n");
    EXPECT_EQ(Out({"get", "E2"}), "Pumpe\n");
    EXPECT_EQ(Out({"get", "17"}), "spot\n");
    EXPECT_EQ(Out({"get", "IN_3"}), "\n");
    EXPECT_EQ(Out({"get", "IN_2", "OUT_1"}), "IN_2\tPumpe\nOUT_1\tFüllstand\n");
}

TEST_F(NomiractlListTest, GetOfAKeyThatIsNotThereExitsWithOne) {
    const ProcessOutcome outcome = m_run.Start({"get", "IN_99", "IN_2"});
    EXPECT_EQ(outcome.nStatus, 1);
    EXPECT_EQ(outcome.sOut, "IN_2\tPumpe\n");
    EXPECT_EQ(outcome.sErr, "nomiractl: IN_99: the database has no such key\n");
    const ProcessOutcome json = m_run.Start({"get", "IN_99", "--json", "--quiet"});
    EXPECT_EQ(json.nStatus, 1);
    EXPECT_EQ(Json::parse(json.sOut),
              Json::parse(R"([{"key":"IN_99","state":"absent","text":null}])"));
    EXPECT_EQ(json.sErr, "");
}

TEST_F(NomiractlListTest, StatsCountByClassAndNameFreeNumbers) {
    const std::string sOut = Out({"stats", "--class", "in", "--class", "weld"});
    EXPECT_EQ(sOut,
              "class       size  filled   empty    free  free numbers\n"
              "in          1024       3       3    1018  1 6 8..9 11..1024\n"
              "weld           8       1       0       7  2..8\n");
}

TEST_F(NomiractlListTest, StatsTakeTheControllersSize) {
    const Json json = Json::parse(Out({"stats", "--json", "--size", "in=6", "--class", "in"}));
    EXPECT_EQ(json, Json::parse(R"([{"class":"in","name":"digital input","size":6,"filled":3,
        "empty":3,"beyond_size":2,"free":2,"free_numbers":[[1,1],[6,6]]}])"));
}

TEST_F(NomiractlListTest, StatsOfAFullClassHaveNoFreeNumbers) {
    ExecuteOn(m_run.Database(),
              "INSERT INTO Items SELECT 100+value,'A10TP','Start1'||value FROM"
              " (SELECT 1 value UNION SELECT 2 UNION SELECT 3 UNION SELECT 4 UNION SELECT 5 UNION"
              "  SELECT 6 UNION SELECT 7 UNION SELECT 8);");
    EXPECT_EQ(Out({"stats", "--class", "start"}),
              "class       size  filled   empty    free  free numbers\n"
              "start          8       0       8       0\n");
}

// ---- Pipes, locales, databases that are none ----

TEST_F(NomiractlListTest, AReaderThatLeavesIsNoFailure) {
    std::string sMany = "INSERT INTO Items VALUES(1000,'IO','OUT_1000')";
    for (int n = 1001; n < 9000; ++n)
        sMany += ",(" + std::to_string(n) + ",'IO','OUT_" + std::to_string(n) + "')";
    ExecuteOn(m_run.Database(), sMany);
    const ProcessOutcome piped = m_run.Shell("$N list | head -1");
    EXPECT_EQ(piped.sOut, "IN_2\tPumpe\n");
    EXPECT_EQ(piped.sErr, "");
    const ProcessOutcome ignored =
        m_run.Shell("trap '' PIPE; { $N list; echo $? >&2; } | head -1 >/dev/null");
    EXPECT_EQ(ignored.sErr, "0\n");
}

TEST_F(NomiractlListTest, AFullDeviceIsAFailureOfAFile) {
    const ProcessOutcome outcome = m_run.Shell("$N list > /dev/full");
    EXPECT_EQ(outcome.nStatus, 4);
    EXPECT_EQ(outcome.sErr, "nomiractl: the output can't be written\n");
}

// script makes a terminal, and COLUMNS doesn't count there: 80 columns are the usual width.
TEST_F(NomiractlListTest, OnATerminalKeysAndTextsAreColumnsThatFit) {
    ExecuteOn(m_run.Database(),
              "INSERT INTO Items VALUES(50,'IO','OUT_2');"
              "INSERT INTO Messages VALUES(50,99,'" +
                  std::string(100, 'x') + "')");
    const ProcessOutcome shown =
        m_run.Shell("script -qec '\"$N\" list IN_2 IN_3 OUT_2' /dev/null | tr -d '\\r'");
    EXPECT_EQ(shown.sOut,
              "IN_2                 Pumpe\nIN_3                 (empty)\n"
              "OUT_2                " +
                  std::string(56, 'x') + "...\n");
}

TEST_F(NomiractlListTest, BytesThatAreNoUtf8StayOutOfTheJson) {
    const ProcessOutcome outcome = m_run.Start({"get", "--json", "F\xFC"});
    EXPECT_EQ(outcome.nStatus, 1);
    EXPECT_EQ(Json::parse(outcome.sOut)[0]["state"], "absent");
    const ProcessOutcome check =
        m_run.Start({"check", "--json", m_run.Write("l\xE4ngst.txt", "E1 x\r\n")});
    EXPECT_EQ(check.nStatus, 1);
    EXPECT_EQ(Json::parse(check.sOut)["errors"], 1);
}

TEST_F(NomiractlListTest, WritesUtf8InEveryLocale) {
    for (const char* sLocale : {"C", "C.UTF-8", "de_DE.ISO-8859-1", "de_DE.UTF-8", "nonsense"})
        EXPECT_EQ(m_run.Start({"get", "OUT_1"}, {{"LC_ALL", sLocale}}).sOut, "Füllstand\n")
            << sLocale;
    // An argument in an 8-bit locale's bytes finds nothing, and says nothing wrong.
    EXPECT_EQ(m_run.Start({"list", "--text", "F\xFCll"}, {{"LC_ALL", "de_DE.ISO-8859-1"}}).sOut,
              "");
}

TEST(NomiractlListWithoutDatabaseTest, ExitsWithFive) {
    const BinaryRun run;
    for (const char* sCommand : {"list", "stats"}) {
        const ProcessOutcome outcome = run.Start({sCommand});
        EXPECT_EQ(outcome.nStatus, 5) << sCommand;
        EXPECT_EQ(outcome.sErr.rfind("nomiractl: no database at ", 0), 0U) << outcome.sErr;
    }
}

}  // namespace
