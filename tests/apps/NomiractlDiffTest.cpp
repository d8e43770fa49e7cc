#include "apps/BinaryRun.h"

namespace {

namespace fs = std::filesystem;
using nomira::testing::BinaryRun;
using nomira::testing::ProcessOutcome;
using nomira::testing::Strings;
using Json = nlohmann::json;

class NomiractlDiffTest : public ::testing::Test {
  protected:
    NomiractlDiffTest() {
        m_run.Fill(
            "(1,'IO','IN_1'),(2,'IO','IN_2'),(3,'IO','IN_10'),(4,'IO','OUT_1'),"
            "(5,'IO','OUT_2')",
            "(1,99,'Pumpe'),(2,99,'|EMPTY|'),(3,99,'Füllung'),(4,99,'Ventil')");
    }
    ProcessOutcome Diff(const Strings& args) const {
        Strings all{"diff"};
        all.insert(all.end(), args.begin(), args.end());
        return m_run.Start(all);
    }
    BinaryRun m_run;
};

TEST_F(NomiractlDiffTest, TheExportOfADatabaseIsLikeIt) {
    const std::string sFile = m_run.Write(
        "a.txt",
        "IN_10 F\xFCllung\r\nIN_1 x\r\nIN_1 Pumpe\r\nIN_2\r\nOUT_1 Ventil\r\n# no key\r\n");
    const ProcessOutcome other = Diff({sFile, "db"});
    EXPECT_EQ(other.nStatus, 1);
    EXPECT_EQ(other.sOut, "--- " + sFile +
                              "\n+++ database\n@@ -1,4 +1,5 @@\n IN_1 Pumpe\n IN_2\n"
                              "-IN_10 Fuellung\n+IN_10 Füllung\n OUT_1 Ventil\n+OUT_2\n");
    EXPECT_EQ(Diff({m_run.Database(), "db"}).nStatus, 0);
    EXPECT_EQ(Diff({sFile, sFile}).sOut, "");
}

TEST_F(NomiractlDiffTest, JsonTellsWhatChangedAndWhere) {
    const std::string sOld = m_run.Write("a.txt", "IN_1 a\r\nIN_2 b\r\n");
    const std::string sNew = m_run.Write("b.txt", "IN_2 c\r\nIN_3 d\r\n");
    const ProcessOutcome outcome = Diff({sOld, sNew, "--json"});
    EXPECT_EQ(outcome.nStatus, 1);
    const Json json = Json::parse(outcome.sOut);
    EXPECT_EQ(json["old"], sOld);
    ASSERT_EQ(json["differences"].size(), 3U);
    EXPECT_EQ(json["differences"][0]["change"], "removed");
    EXPECT_EQ(json["differences"][0]["new"], nullptr);
    EXPECT_EQ(json["differences"][1],
              (Json{{"key", "IN_2"},
                    {"module", "IO"},
                    {"change", "changed"},
                    {"old", Json::array({{{"text", "b"}, {"file", sOld}, {"line", 2}}})},
                    {"new", Json::array({{{"text", "c"}, {"file", sNew}, {"line", 1}}})}}));
    EXPECT_EQ(json["differences"][2]["change"], "added");
    EXPECT_EQ(Json::parse(Diff({sOld, sOld, "--json"}).sOut)["differences"], Json::array());
}

TEST_F(NomiractlDiffTest, DistantChangesGetBlocksOfTheirOwn) {
    std::string sOld, sNew;
    for (int n = 1; n <= 99; ++n) {
        const std::string sKey = "IN_" + std::to_string(n);
        sOld += sKey + (n == 5 ? " five" : " same") + "\r\n";
        if (n != 50) sNew += sKey + (n == 5 ? " FIVE" : " same") + "\r\n";
    }
    sNew += "IN_100 new\r\n";
    const ProcessOutcome outcome = Diff({m_run.Write("a.txt", sOld), m_run.Write("b.txt", sNew)});
    EXPECT_NE(outcome.sOut.find("@@ -2,7 +2,7 @@\n"), std::string::npos) << outcome.sOut;
    EXPECT_NE(outcome.sOut.find("@@ -47,7 +47,6 @@\n"), std::string::npos) << outcome.sOut;
    EXPECT_NE(outcome.sOut.find("@@ -97,3 +96,4 @@\n"), std::string::npos) << outcome.sOut;
}

TEST_F(NomiractlDiffTest, ProgramsAreComparedInTheKeysThatTheyShow) {
    const std::string sProgram =
        m_run.Write("a.src",
                    "DEF a()\r\n;FOLD OUT 1 'alt' State\r\n;FOLD OUT 2 '' State\r\n"
                    ";FOLD WAIT FOR IN 1 'Pumpe' State\r\n;FOLD OUT 9 '' State\r\n");
    const ProcessOutcome outcome = Diff({sProgram, "db"});
    EXPECT_EQ(outcome.nStatus, 1);
    EXPECT_EQ(outcome.sOut, "--- " + sProgram +
                                "\n+++ database\n@@ -1,3 +1,3 @@\n IN_1 Pumpe\n-OUT_1 alt\n"
                                "+OUT_1 Ventil\n OUT_2\n");
    EXPECT_EQ(Diff({"db", sProgram}).nStatus, 1);
}

TEST_F(NomiractlDiffTest, ProgramsThatDoNotAgreeShowEachName) {
    fs::create_directory(m_run.Root() / "r1");
    m_run.Write("r1/a.src", ";FOLD OUT 1 'Ventil' State\r\n");
    m_run.Write("r1/b.src", ";FOLD OUT 1 'alt' State\r\n;FOLD OUT my title\r\n");
    const std::string sFolder = (m_run.Root() / "r1").string();
    const ProcessOutcome outcome = Diff({sFolder, "db"});
    EXPECT_NE(outcome.sOut.find("-OUT_1 Ventil\n-OUT_1 alt\n+OUT_1 Ventil\n"), std::string::npos)
        << outcome.sOut;
    EXPECT_EQ(outcome.sErr,
              "nomiractl: warning: " + sFolder + "/b.src:2: a header that can't be read\n");
}

TEST_F(NomiractlDiffTest, CustomerFilesAreReadInTheirForm) {
    const std::string sFile = m_run.Write("a.txt", "E1 Pumpe\r\nA1 Ventil\r\n");
    const ProcessOutcome outcome = Diff({"--customer", "VW", sFile, "db", "--json"});
    const Json json = Json::parse(outcome.sOut);
    for (const Json& difference : json["differences"])
        EXPECT_EQ(difference["change"], "added") << difference;
    EXPECT_EQ(json["differences"].size(), 3U);
}

TEST_F(NomiractlDiffTest, FailuresHaveTheirStatus) {
    const std::string sFile = m_run.Write("a.txt", "IN_1 a\r\n");
    EXPECT_EQ(Diff({sFile}).nStatus, 2);
    EXPECT_EQ(Diff({sFile, (m_run.Root() / "none.txt").string()}).nStatus, 4);
    EXPECT_EQ(Diff({sFile, (m_run.Root() / "none.src").string()}).nStatus, 4);
    EXPECT_EQ(Diff({sFile, m_run.Write("a.reg", "REGEDIT4\r\n")}).nStatus, 3);
    EXPECT_EQ(Diff({sFile, m_run.Write("b.txt", std::string(40'000, 'x'))}).nStatus, 3);
    fs::remove(m_run.Database());
    EXPECT_EQ(Diff({sFile, "db"}).nStatus, 5);
}

// ---- xref ----

class NomiractlXrefTest : public NomiractlDiffTest {
  protected:
    NomiractlXrefTest() {
        m_sProgram = m_run.Write(
            "a.src",
            ";FOLD OUT 1 'alt' State\r\n;FOLD OUT 2 'x' State\r\n"
            ";FOLD WAIT FOR ( IN 1 'a' ) AND ( CYCFLAG 3 'b' ) ;%{PE}\r\n"
            ";FOLD ANOUT ON Speed = 1;%{PE}%VANOUT_DYN%P:CHANNEL_4,1\r\n"
            "$OUT[7]=TRUE\r\n;FOLD PULSE 1 'alt' State\r\n;FOLD OUT 1: symName State\r\n");
    }
    std::string m_sProgram;
};

TEST_F(NomiractlXrefTest, TellsWhereEachSignalIsUsedAndWhatIsMissing) {
    const ProcessOutcome outcome = m_run.Start({"xref", m_sProgram});
    EXPECT_EQ(outcome.nStatus, 0) << outcome.sErr;
    const std::string sAt = "    " + m_sProgram + ":";
    EXPECT_EQ(outcome.sOut, "IN_1 Pumpe\n" + sAt +
                                "3\nIN_10 Füllung  (named, not used)\nOUT_1 Ventil\n" + sAt +
                                "1\n" + sAt + "6\n" + sAt + "7\nOUT_2  (used, without a name)\n" +
                                sAt + "2\nNoticeText3  (used, without a name)\n" + sAt +
                                "3\nANOUT_4  (used, without a name)\n" + sAt +
                                "4\n5 signals used, 3 of them without a name; 1 names not used\n");
}

TEST_F(NomiractlXrefTest, ShowsOnlyWhatIsAskedFor) {
    const auto keys = [&](Strings args) {
        args.insert(args.begin(), {"xref", "--json", m_sProgram});
        Strings found;
        const Json json = Json::parse(m_run.Start(args).sOut);
        for (const Json& signal : json)
            found.push_back(signal["key"]);
        return found;
    };
    EXPECT_EQ(keys({"--unnamed"}), (Strings{"OUT_2", "NoticeText3", "ANOUT_4"}));
    EXPECT_EQ(keys({"--unused"}), Strings{"IN_10"});
    EXPECT_EQ(keys({"--unused", "--unnamed", "--class", "out"}), Strings{"OUT_2"});
}

TEST_F(NomiractlXrefTest, JsonHoldsEveryUse) {
    const Json json =
        Json::parse(m_run.Start({"xref", "--json", "--class", "in", m_sProgram}).sOut);
    EXPECT_EQ(json[0], (Json{{"key", "IN_1"},
                             {"module", "IO"},
                             {"name", "Pumpe"},
                             {"used", true},
                             {"uses", Json::array({{{"file", m_sProgram}, {"line", 3}}})}}));
}

TEST_F(NomiractlXrefTest, AProgramThatCannotBeReadIsToldAndTheOthersCount) {
    const std::string sMissing = (m_run.Root() / "none.src").string();
    const ProcessOutcome outcome = m_run.Start({"xref", sMissing, m_sProgram, "--unused"});
    EXPECT_EQ(outcome.nStatus, 4);
    EXPECT_EQ(outcome.sErr, "nomiractl: " + sMissing + ": there is no such file\n");
    EXPECT_NE(outcome.sOut.find("IN_10"), std::string::npos);
    EXPECT_EQ(m_run.Start({"xref"}).nStatus, 2);
}

TEST_F(NomiractlXrefTest, ChangesNoProgram) {
    const std::string sBefore = BinaryRun::Bytes(m_sProgram);
    m_run.Start({"xref", m_sProgram});
    m_run.Start({"diff", m_sProgram, "db"});
    m_run.Start({"check", m_sProgram});
    EXPECT_EQ(BinaryRun::Bytes(m_sProgram), sBefore);
}

}  // namespace
