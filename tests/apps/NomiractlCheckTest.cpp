#include <set>

#include "apps/BinaryRun.h"

namespace {

namespace fs = std::filesystem;
using nomira::testing::BinaryRun;
using nomira::testing::Contains;
using nomira::testing::ExecuteOn;
using nomira::testing::FormatUnderTest;
using nomira::testing::ProcessOutcome;
using nomira::testing::StoreFormat;
using nomira::testing::Strings;
using Json = nlohmann::json;

class NomiractlCheckTest : public ::testing::Test {
  protected:
    // The findings, each "LINE:COLUMN RULE".
    Strings Found(const Strings& args) const {
        Strings all{"check", "--json"};
        all.insert(all.end(), args.begin(), args.end());
        const ProcessOutcome outcome = m_run.Start(all);
        Strings found;
        const Json json = Json::parse(outcome.sOut);
        for (const Json& finding : json["findings"]) {
            found.push_back(std::to_string(finding["line"].get<int>()) + ":" +
                            std::to_string(finding["column"].get<int>()) + " " +
                            finding["rule"].get<std::string>());
        }
        return found;
    }
    Strings FoundIn(const std::string& bytes, const Strings& options = {}) const {
        Strings args{m_run.Write("a.txt", bytes)};
        args.insert(args.end(), options.begin(), options.end());
        return Found(args);
    }
    // The only message of a file.
    std::string Message(const std::string& sFile) const {
        const Json json = Json::parse(m_run.Start({"check", "--json", sFile}).sOut);
        const Json& findings = json["findings"];
        return findings.size() == 1 ? findings[0]["message"].get<std::string>() : findings.dump();
    }

    // The first key in each index of an Access file becomes one that no row has.
    void ChangeKeys() const {
        const bool bJet3 = FormatUnderTest() == StoreFormat::Jet3;
        const std::size_t nPage = bJet3 ? 2048 : 4096;
        const std::size_t nFirstKey = bJet3 ? 248 : 480;
        std::string sBytes = BinaryRun::Bytes(m_run.Database());
        for (std::size_t n = 0; n < sBytes.size(); n += nPage)
            if (sBytes[n] == 4 && sBytes[n + nFirstKey] != 0) sBytes[n + nFirstKey + 1] ^= 1;
        std::ofstream(m_run.Database(), std::ios::binary) << sBytes;
    }

    BinaryRun m_run;
};

// ---- Text files ----

struct TextRow {
    const char* sBytes;
    Strings standard;
    Strings customer;
};

TEST_F(NomiractlCheckTest, FindsWhatATextFileHidesOnEachInstallation) {
    const Strings nothing;
    const TextRow rows[]{
        {"IN_1 Pumpe\r\nTimerText12 x\r\n",
         nothing,
         {"1:1 text-other-form", "2:1 text-other-form"}},
        {"E1 Pumpe\r\nP7 x\r\n", {"1:1 text-other-form", "2:1 text-other-form"}, nothing},
        {"", nothing, nothing},
        {"\r\n \t\r\n", nothing, nothing},
        {"Weld15 seam\r\n", nothing, nothing},
        {"TimerText123 x\r\n", {"1:1 text-too-many-digits"}, {"1:1 text-other-form"}},
        {"ANAE123 x\r\n", {"1:1 text-remark"}, {"1:1 text-too-many-digits"}},
        {"ZTQXProcParam_17 x\r\n", {"1:1 text-param-not-read"}, {"1:1 text-other-form"}},
        {"# remark\r\n", {"1:1 text-remark"}, {"1:1 text-remark"}},
    };
    for (const TextRow& row : rows) {
        EXPECT_EQ(FoundIn(row.sBytes), row.standard) << row.sBytes;
        EXPECT_EQ(FoundIn(row.sBytes, {"--customer", "VW"}), row.customer) << row.sBytes;
    }
}

TEST_F(NomiractlCheckTest, FindsEachWayInWhichALineGoesWrong) {
    const std::vector<std::pair<std::string, Strings>> rows{
        {"in_5 x\r\n", {"1:1 text-key-case"}},
        {"IN_12Pumpe\r\n", {"1:6 text-key-run-on"}},
        {"FlagText5=Tor\r\n", {"1:10 text-key-run-on"}},
        {"  IN_5 x\r\n", {"1:1 text-leading-blank"}},
        {"\tIN_5 x\r\n", {"0:0 text-no-wipe", "1:1 text-leading-blank"}},
        {"IN_5\r\n", {"1:5 text-no-text"}},
        {"IN_5   \r\n", {"1:5 text-no-text"}},
        {"Start11\r\n", {"1:8 text-no-channel-text"}},
        {"IN_5 |EMPTY|\r\n", {"1:6 text-marker"}},
        {"IN_1 x\r\nIN_5\tx\r\n", {"2:1 text-tab-behind-key"}},
        {"IN_5\tx\r\n", {"0:0 text-no-wipe", "1:1 text-tab-behind-key"}},
        {"BININ_5\tx\r\n", {"0:0 text-no-wipe"}},
        {"IN_5 a\tb\r\n", {"1:7 text-tab"}},
        {"IN_5 F\xFCll\r\n", {"1:7 text-umlaut"}},
        {"IN_5 \xB5-step\r\n", {"1:6 text-refused-sign"}},
        {"IN_5 F\xFCll a^b\r\n", {"1:7 text-umlaut", "1:12 text-refused-sign"}},
        {"IN_5 it's\r\n", {"1:8 text-apostrophe"}},
        {"IN_5 a[b\r\n", {"1:7 text-open-bracket"}},
        {"IN_5 a?\r\n", {"1:7 text-wildcard"}},
        {"IN_5 No. #\r\n", {"1:10 text-wildcard"}},
        {"IN_5 Ready state 1\r\n", {"1:11 text-state"}},
        {"IN_5 IN_5\r\n", {"1:6 text-is-key"}},
        {"IN_5 a\r\nOUT_1 b\r\nIN_5 c\r\n", {"1:1 text-duplicate-key"}},
        {"IN_5 a\r\nIN_5 b\r\nIN_5 c\r\n", {"1:1 text-duplicate-key", "2:1 text-duplicate-key"}},
        {"IN_007 x\r\n", {"1:1 text-leading-zeros"}},
        {"IN_0 x\r\n", {}},
        {"17 x\r\n", {"1:1 text-bare-number"}},
        {"IN_5 x\x01y\r\n", {"1:7 text-control"}},
        {"IN_1 a\nIN_2 b\n", {"1:7 text-lf-only"}},
        {"IN_1 a\nIN_2 b\r\n", {"1:7 text-lf-only"}},
        {"IN_1 a\r\nIN_2 b\nIN_3 c\r\n", {"2:7 text-lone-lf"}},
        {"\xEF\xBB\xBFIN_1 a\r\n", {"1:1 text-utf8-mark", "1:1 text-remark"}},
        {"IN_1 F\xC3\xBCll\r\n", {"1:7 text-utf8"}},
        {"IN_1 " + std::string(32'762, 'x') + "\r\n", {}},
        {"IN_1 " + std::string(32'763, 'x') + "\r\n", {"1:1 text-long-line"}},
    };
    for (const auto& [bytes, found] : rows)
        EXPECT_EQ(FoundIn(bytes), found) << bytes.substr(0, 100);
    std::string sWords;
    for (int n = 0; n < 32'768; ++n)
        sWords += "w ";
    EXPECT_EQ(FoundIn(sWords), (Strings{"1:1 text-many-words", "1:1 text-long-line"}));
}

TEST_F(NomiractlCheckTest, FindsWhatAnImportOfUtf8WouldRefuse) {
    const Strings utf8{"--encoding", "utf-8", "--eol", "lf"};
    EXPECT_EQ(FoundIn("IN_1 \xC2\xB5m 5 \xE2\x82\xAC\nOUT_1 x\r\n", utf8),
              Strings{"1:6 text-refused-sign"});
    EXPECT_EQ(FoundIn("\xEF\xBB\xBFIN_1 a\n", utf8), Strings{});
    EXPECT_EQ(FoundIn("IN_1 a\nIN_2 5 \xCE\xA9\n", utf8), Strings{"2:8 text-outside-page"});
    EXPECT_EQ(FoundIn("IN_1 \xF0\x9F\x9A\xA9!\xCE\xA9\n", utf8),
              (Strings{"1:6 text-outside-page", "1:8 text-outside-page"}));
    EXPECT_EQ(FoundIn("IN_1 F\xFCll\n", utf8), Strings{"1:7 text-not-utf8"});
    EXPECT_EQ(FoundIn("\xFF\xFEI\r\n"), (Strings{"1:1 text-utf16-mark", "1:1 text-remark"}));
}

TEST_F(NomiractlCheckTest, BytesWithoutACharacterAreFound) {
    std::ofstream(m_run.Prefix() / "nomira.conf") << "codepage = 1253\n";
    EXPECT_EQ(FoundIn("IN_1 a\xAAz\r\n"), Strings{"1:7 text-no-character"});
}

TEST_F(NomiractlCheckTest, SentencesSayWhatIsWrong) {
    const auto message = [&](const std::string& bytes) {
        return Message(m_run.Write("a.txt", bytes));
    };
    EXPECT_EQ(message("TimerText123 x\r\n"), "TimerText123: timers have one or two digits");
    EXPECT_EQ(message("NoticeText1234 x\r\n"), "NoticeText1234: notices have one to three digits");
    EXPECT_EQ(message("Weld112 x\r\n"), "Weld112: welding channels have one digit");
    EXPECT_EQ(message("E5 x\r\n"), "E5: a key of the other form; this installation reads IN_5");
    EXPECT_EQ(message("P7 x\r\n"), "P7: a key of the other form; this installation reads 7");
    EXPECT_EQ(message("ZTQXProcParam_17 x\r\n"),
              "ZTQXProcParam_17: process parameters in standard form are not read back on this"
              " installation; the key here is 17");
    EXPECT_EQ(message("IN_1 x\r\nIN_5\tx\r\n"),
              "IN_5 has a tab before its text: the OVERWRITE scan does not see this line");
    EXPECT_EQ(message("IN_1 a\r\nIN_2 x\r\nIN_1 b\r\n"),
              "key twice, lines 1 and 3: the later one counts");
    EXPECT_EQ(message("IN_1 a\nIN_2 b\n"),
              "file has LF line ends: the program reads it as one line; --eol lf takes it as it is"
              " meant");
    EXPECT_EQ(message("timerText1 x\r\n"),
              "timerText1: keys are told apart by case; is TimerText1 meant?");
}

// ---- Programs ----

TEST_F(NomiractlCheckTest, FindsWhatWouldStopARewriteOrSurprise) {
    m_run.Fill(
        "(1,'IO','OUT_1'),(2,'IO','OUT_2'),(3,'IO','OUT_3'),(4,'IO','IN_1'),"
        "(5,'Flag','FlagText1'),(6,'IO','ANOUT_1'),(7,'IO','OUT_4')",
        "(1,99,'Pump'),(2,99,'|EMPTY|'),(3,99,'5 µm'),(4,99,'it''s'),(5,99,'Flag'),"
        "(6,99,'Speed'),(7,99,'x')");
    const std::vector<std::pair<std::string, Strings>> rows{
        {";FOLD OUT 1 'old' State=TRUE;%{PE}\r\n", {}},
        {"DEF a()\r\n$OUT[1]=TRUE\r\n;FOLD my own\r\n", {}},
        {";FOLD OUT my title\r\n", {"1:1 program-no-state"}},
        {"  ;FOLD OUTLET 3\r\n", {"1:3 program-no-state"}},
        {";FOLD ANOUT ON Speed = 1;%{PE}%VANOUT_DYN%P:CHANNEL_1\r\n", {"1:1 program-no-comma"}},
        {";FOLD OUT 1 'o[ld' State\r\n", {"1:1 program-open-bracket"}},
        {";FOLD OUT 9 'old' State\r\n", {"1:13 program-name-lost"}},
        {";FOLD OUT 'old' State\r\n", {"1:11 program-no-number", "1:11 program-name-lost"}},
        {";FOLD OUT 2 'old' State\r\n", {"1:13 program-marker"}},
        {";FOLD OUT 3 'old' State\r\n", {"1:13 program-refused-sign"}},
        {";FOLD OUT 1 'P*p' State\r\n", {"1:13 program-wildcard"}},
        {";FOLD OUT   1 'old' State\r\n", {"1:1 program-not-settled", "1:13 program-header-cut"}},
        {";FOLD OUT 1: symName State\r\n", {"1:12 program-symbol-only"}},
        {";FOLD WAIT FOR IN 1 'old' State\r\n", {"1:1 program-not-settled"}},
        {";FOLD OUT 1 'old State 1' State\r\n", {"1:13 program-name-not-seen"}},
        {"\t;FOLD OUT 1 'old' State\r\n", {"1:2 program-tab-indent"}},
        {";FOLD WAIT FOR ( FLAG 1 'a' ) AND ( CYCFLAG 1 'b' ) ;%{PE}\r\n",
         {"1:1 program-not-settled", "1:47 program-name-lost", "1:47 program-cyclic-flag"}},
        {";FOLD ANOUT ON N = 1;%{PE}%VANOUT_DYN%P:CHANNEL_1,\r\n", {"1:8 program-name-elsewhere"}},
        {";FOLD ANOUT ON  = 1;%{PE}%VANOUT_DYN%P:CHANNEL_1,\r\n",
         {"1:1 program-nothing-to-replace"}},
        {";FOLD OUT 1 'old' State\n;FOLD OUT 1 'old' State\n",
         {"0:0 program-line-ends", "1:24 program-lf-only"}},
        {"a\nb\r\nc\r\n", {"1:2 program-lone-lf"}},
        {";FOLD OUT 1 'old' State", {"0:0 program-line-ends"}},
        {";FOLD OUT 1 'old'" + std::string(32'768, ' ') + "State\r\n", {"1:1 program-stops"}},
    };
    for (const auto& [bytes, found] : rows)
        EXPECT_EQ(Found({m_run.Write("a.src", bytes)}), found) << bytes.substr(0, 100);
    std::string sLong = ";FOLD OUT 1 'old' State\r\n";
    for (int n = 0; n < 32'767; ++n)
        sLong += "\r\n";
    EXPECT_EQ(Found({m_run.Write("a.src", sLong)}), Strings{"0:0 program-too-many-lines"});
}

TEST_F(NomiractlCheckTest, AReadOnlyProgramIsFoundOnlyIfItWouldChange) {
    m_run.Fill("(1,'IO','OUT_1')", "(1,99,'Pump')");
    const std::string sFile = m_run.Write("a.src", ";FOLD OUT 1 'old' State\r\n");
    const std::string sFine = m_run.Write("b.src", ";FOLD OUT 1 'Pump' State\r\n");
    for (const std::string& sName : {sFile, sFine})
        fs::permissions(sName, fs::perms::owner_read);
    EXPECT_EQ(Found({sFile}), Strings{"0:0 program-read-only"});
    EXPECT_EQ(Found({sFine}), Strings{});
}

TEST_F(NomiractlCheckTest, BytesThatARewriteWouldLoseAreFound) {
    m_run.Fill("(1,'IO','OUT_1')", "(1,99,'Pump')");
    std::ofstream(m_run.Prefix() / "nomira.conf") << "codepage = 1253\n";
    EXPECT_EQ(Found({m_run.Write("a.src", ";FOLD OUT 1 'old' State\r\n; \xAA\r\n")}),
              Strings{"0:0 program-no-character"});
}

TEST_F(NomiractlCheckTest, AProgramIsCheckedWithoutADatabaseToo) {
    const std::string sFile = m_run.Write("a.src", ";FOLD OUT my title\r\n;FOLD OUT 1 'x' State");
    EXPECT_EQ(Found({sFile}), (Strings{"0:0 program-not-compared", "1:1 program-no-state"}));
}

TEST_F(NomiractlCheckTest, ProgramsThatCannotBeReadAreFindingsAndExitWithFour) {
    const std::string sMissing = (m_run.Root() / "none.src").string();
    const std::string sFile = m_run.Write("a.src", ";FOLD OUT my title\r\n");
    EXPECT_EQ(
        Found({sMissing, sFile}),
        (Strings{"0:0 program-unreadable", "0:0 program-not-compared", "1:1 program-no-state"}));
    EXPECT_EQ(m_run.Start({"check", sMissing, sFile}).nStatus, 4);
}

TEST_F(NomiractlCheckTest, TakesAllProgramsOfAFolder) {
    fs::create_directory(m_run.Root() / "r1");
    m_run.Write("r1/a.src", ";FOLD OUT my title\r\n");
    m_run.Write("r1/B.SRC", "fine\r\n");
    m_run.Write("r1/c.dat", "IN_1\r\n");
    const Json json =
        Json::parse(m_run.Start({"check", "--json", (m_run.Root() / "r1").string()}).sOut);
    ASSERT_EQ(json["files"].size(), 2U);
    EXPECT_EQ(json["errors"], 1);
    EXPECT_EQ(json["files"][1]["kind"], "program");
}

// ---- Databases ----

TEST_F(NomiractlCheckTest, FindsWhatADatabaseWouldLose) {
    if (FormatUnderTest() == StoreFormat::Jet3)
        GTEST_SKIP() << "it has no character that the code page lacks";
    m_run.Fill(
        "(1,'IO','IN_1'),(2,'IO','IN_2'),(3,'IO','IN_3'),(4,'IO','IN_3'),(5,'IO','IN_5'),"
        "(6,'IO','INX6'),(7,'ZTQXProcParam','17'),(8,'IO','IN_8'),(9,'IO','IN_9'),"
        "(10,'Timer','TimerText123'),(11,'IO','IN_11'),(12,'IO','IN_12'),(13,'IO','IN_13'),"
        "(14,'IO','IN_14'),(15,'IO','IN_15'),(16,'IO','IN_16'),(17,'IO','IN_17'),"
        "(18,'ZTQXProcParam','ZTQXProcParam_1'),(19,'Flag','IN_19'),(20,'IO','IN_20'),"
        "(21,'IO','IN_21'),(22,'IO','IN_22')",
        "(2,99,NULL),(3,99,'a'),(4,99,'b'),(5,99,'a'),(5,99,'b'),(6,99,'x'),(7,99,'x'),"
        "(8,99,'|EMPTY|'),(9,99,''),(10,99,'x'),(11,99,'a'||char(9)||'b'),"
        "(12,99,'a'||char(13)||'b'),(13,99,'Ω'),(14,99,'a^b'),(15,99,'it''s'),(16,99,'a[b'),"
        "(17,99,'IN_17'),(18,99,'x'),(19,99,'x'),(20,99,'fine'),(21,99,'a?'),"
        "(22,99,'a State')");
    const Json json = Json::parse(m_run.Start({"check", "--json", m_run.Database()}).sOut);
    std::multiset<std::string> found;
    for (const Json& finding : json["findings"]) {
        found.insert(finding["subject"].get<std::string>() + " " +
                     finding["rule"].get<std::string>());
    }
    EXPECT_EQ(found, (std::multiset<std::string>{"IN_1 database-no-message",
                                                 "IN_2 database-null-text",
                                                 "IN_3 database-duplicate-key",
                                                 "IN_3 database-read-back-changed",
                                                 "IN_5 database-two-messages",
                                                 "IN_5 database-read-back-changed",
                                                 "INX6 database-no-class",
                                                 "INX6 database-wiped-by-chance",
                                                 "17 database-bare-number",
                                                 "IN_8 database-empty-marker",
                                                 "IN_9 database-empty-text",
                                                 "TimerText123 database-not-read-back",
                                                 "IN_11 database-read-back-changed",
                                                 "IN_12 database-line-end",
                                                 "IN_13 database-no-character",
                                                 "IN_14 database-refused-sign",
                                                 "IN_15 database-apostrophe",
                                                 "IN_16 database-open-bracket",
                                                 "IN_17 database-is-key",
                                                 "ZTQXProcParam_1 database-not-read-back",
                                                 "IN_19 database-no-class",
                                                 "IN_21 database-wildcard",
                                                 "IN_22 database-state"}));
}

TEST_F(NomiractlCheckTest, ADatabaseThatTakesNoImportIsAFinding) {
    m_run.CreateDatabase();
    EXPECT_EQ(Found({m_run.Database()}), Strings{});
    fs::permissions(m_run.Database(), fs::perms{0444});
    EXPECT_EQ(Found({m_run.Database()}), Strings{"0:0 database-not-writable"});
    EXPECT_TRUE(Contains(Message(m_run.Database()), "can't be written (the file is read-only)"));
}

TEST_F(NomiractlCheckTest, ADamagedDatabaseIsAFinding) {
    m_run.Fill("(1,'IO','IN_1')", "(1,99,'x')");
    if (FormatUnderTest() == StoreFormat::Sqlite)
        ExecuteOn(m_run.Database(),
                  "CREATE TABLE t(a); CREATE INDEX i ON t(a); INSERT INTO t VALUES(1);"
                  "PRAGMA writable_schema=1; DELETE FROM sqlite_master WHERE name='i'");
    else
        ChangeKeys();
    EXPECT_EQ(Found({m_run.Database()}).at(0), "0:0 database-damaged");
}

// ---- Registry files ----

TEST_F(NomiractlCheckTest, FindsWhatTheSettingsHide) {
    const std::string sFile = m_run.Write(
        "a.reg",
        "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Orvo\\Version]\r\n\"Customer\"=\"vw\"\r\n"
        "\"InstallationDir\"=hex:41,42\r\nnonsense\r\n\r\n"
        "[HKEY_CURRENT_USER\\Software\\Orvo\\Database]\r\n\"Language\"=\"0x9\"\r\n\r\n"
        "[HKEY_CURRENT_USER\\Software\\Nomira Program Settings\\Longname]\r\n"
        "\"TextFileName\"=hex(1):41,42\r\n\"TextFilePath\"=\"  \"\r\n"
        "\"TextFileExtention\"=\" *.txt\"\r\n");
    EXPECT_EQ(Found({sFile}),
              (Strings{"4:0 registry-customer", "5:0 registry-type", "6:0 registry-line",
                       "9:0 registry-language", "12:0 registry-unterminated", "13:0 registry-blank",
                       "14:0 registry-blanks-kept"}));
    std::string sLong =
        "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Orvo\\Version]\r\n"
        "\"Customer\"=\"" +
        std::string(32'769, 'x') + "\"\r\n";
    EXPECT_EQ(Found({m_run.Write("b.reg", sLong)}), Strings{"4:0 registry-long-value"});
    EXPECT_EQ(Found({m_run.Write("c.reg",
                                 "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Orvo\\"
                                 "Version]\r\n\"Customer\"=\"VW\"\r\n")}),
              Strings{});
}

// ---- The tests themselves ----

TEST_F(NomiractlCheckTest, EachRuleHasARowInThisFile) {
    const std::string sTests =
        BinaryRun::Bytes(fs::path(NOMIRA_SOURCE_DIR) / "tests/apps/NomiractlCheckTest.cpp");
    for (const Json& rule : Json::parse(m_run.Start({"check", "--list-rules", "--json"}).sOut)) {
        const std::string sId = rule["id"];
        EXPECT_TRUE(Contains(sTests, " " + sId + "\"")) << sId;
    }
}

// ---- Reports ----

class NomiractlCheckReportTest : public ::testing::Test {
  protected:
    NomiractlCheckReportTest() {
        m_sFile = m_run.Write("a b&c.txt", "E5 Pumpe\r\nIN_5\r\n# \"x\"\r\n");
    }
    ProcessOutcome Check(Strings options) const {
        options.insert(options.begin(), {"check", m_sFile});
        return m_run.Start(options);
    }
    BinaryRun m_run;
    std::string m_sFile;
};

TEST_F(NomiractlCheckReportTest, TextNamesPlaceSeverityAndRule) {
    const ProcessOutcome outcome = Check({});
    EXPECT_EQ(outcome.nStatus, 1);
    EXPECT_EQ(outcome.sErr, "");
    EXPECT_EQ(outcome.sOut,
              m_sFile +
                  ":1:1: error: E5: a key of the other form; this installation reads IN_5"
                  " [text-other-form]\n" +
                  m_sFile +
                  ":2:5: warning: IN_5 has no text: the marker |EMPTY| is stored, also"
                  " over a text that is there [text-no-text]\n" +
                  m_sFile +
                  ":3:1: note: # is no key: the line is passed over [text-remark]\n"
                  "1 file: 1 error, 1 warning, 1 note\n");
    const std::string sQuiet = Check({"--quiet"}).sOut;
    EXPECT_FALSE(Contains(sQuiet, "1 file")) << sQuiet;
    EXPECT_TRUE(Contains(sQuiet, "text-other-form")) << sQuiet;
}

TEST_F(NomiractlCheckReportTest, ColoursOnlyWhenAsked) {
    EXPECT_FALSE(Contains(Check({}).sOut, "\x1b["));
    EXPECT_TRUE(Contains(Check({"--color", "always"}).sOut, "\x1b[31merror\x1b[0m"));
    EXPECT_FALSE(Contains(Check({"--color", "never"}).sOut, "\x1b["));
    EXPECT_EQ(Check({"--color", "blue"}).nStatus, 2);
}

TEST_F(NomiractlCheckReportTest, JsonHoldsEachFinding) {
    const Json json = Json::parse(Check({"--format", "json"}).sOut);
    EXPECT_EQ(json["errors"], 1);
    EXPECT_EQ(json["warnings"], 1);
    EXPECT_EQ(json["notes"], 1);
    EXPECT_EQ(json["files"], Json::parse(R"([{"file":")" + m_sFile + R"(","kind":"text"}])"));
    EXPECT_EQ(json["findings"][0],
              (Json{{"rule", "text-other-form"},
                    {"severity", "error"},
                    {"file", m_sFile},
                    {"line", 1},
                    {"column", 1},
                    {"message", "E5: a key of the other form; this installation reads IN_5"},
                    {"subject", "E5 Pumpe"}}));
}

// The fields that the format requires of every log.
TEST_F(NomiractlCheckReportTest, SarifHasItsRequiredFields) {
    const Json json = Json::parse(Check({"--format", "sarif"}).sOut);
    EXPECT_EQ(json["version"], "2.1.0");
    EXPECT_TRUE(json["$schema"].is_string());
    ASSERT_EQ(json["runs"].size(), 1U);
    const Json& driver = json["runs"][0]["tool"]["driver"];
    EXPECT_EQ(driver["name"], "nomiractl");
    const std::set<std::string> levels{"none", "note", "warning", "error"};
    for (const Json& rule : driver["rules"]) {
        EXPECT_TRUE(rule["id"].is_string());
        EXPECT_TRUE(rule["shortDescription"]["text"].is_string());
        EXPECT_TRUE(levels.contains(rule["defaultConfiguration"]["level"]));
    }
    ASSERT_EQ(json["runs"][0]["results"].size(), 3U);
    for (const Json& result : json["runs"][0]["results"]) {
        EXPECT_TRUE(result["message"]["text"].is_string());
        EXPECT_TRUE(levels.contains(result["level"]));
        EXPECT_EQ(driver["rules"][result["ruleIndex"].get<std::size_t>()]["id"], result["ruleId"]);
        const Json& place = result["locations"][0]["physicalLocation"];
        EXPECT_EQ(place["artifactLocation"]["uri"],
                  "file://" + m_run.Root().string() + "/a%20b%26c.txt");
        EXPECT_GE(place["region"]["startLine"], 1);
        EXPECT_GE(place["region"]["startColumn"], 1);
    }
}

TEST_F(NomiractlCheckReportTest, JunitCountsNotesAsPassed) {
    const std::string sName = m_run.Root().string() + "/a b&amp;c.txt";
    EXPECT_EQ(
        Check({"--format", "junit"}).sOut,
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<testsuites name=\"nomiractl check\" failures=\"2\">\n"
        "  <testsuite name=\"" +
            sName +
            "\" tests=\"3\" failures=\"2\">\n"
            "    <testcase classname=\"" +
            sName + "\" name=\"text-other-form " + sName +
            ":1:1\">\n"
            "      <failure type=\"error\" message=\"E5: a key of the other form; this installation"
            " reads IN_5\">" +
            sName +
            ":1:1</failure>\n"
            "    </testcase>\n"
            "    <testcase classname=\"" +
            sName + "\" name=\"text-no-text " + sName +
            ":2:5\">\n"
            "      <failure type=\"warning\" message=\"IN_5 has no text: the marker |EMPTY| is "
            "stored,"
            " also over a text that is there\">" +
            sName +
            ":2:5</failure>\n"
            "    </testcase>\n"
            "    <testcase classname=\"" +
            sName + "\" name=\"text-remark " + sName +
            ":3:1\">\n"
            "      <system-out>" +
            sName +
            ":3:1: # is no key: the line is passed over</system-out>\n"
            "    </testcase>\n"
            "  </testsuite>\n"
            "</testsuites>\n");
}

TEST_F(NomiractlCheckReportTest, NotesAloneExitWithZero) {
    const std::string sFile = m_run.Write("notes.txt", "# remark\r\nIN_1 F\xFCll\r\n");
    EXPECT_EQ(m_run.Start({"check", sFile}).nStatus, 0);
}

TEST_F(NomiractlCheckReportTest, ABaselineHidesWhatIsKnownAlsoWhenLinesMove) {
    const std::string sBaseline = (m_run.Root() / "known.json").string();
    EXPECT_EQ(Check({"--write-baseline", sBaseline}).nStatus, 0);
    m_run.Write("a b&c.txt", "IN_9 new\r\n\r\nE5 Pumpe\r\nIN_5\r\n# \"x\"\r\n");
    const ProcessOutcome known = Check({"--baseline", sBaseline});
    EXPECT_EQ(known.nStatus, 0);
    EXPECT_EQ(known.sOut, "1 file: 0 errors, 0 warnings, 0 notes; 3 known ones not shown\n");
    m_run.Write("a b&c.txt", "E5 Pumpe\r\nE5 Pumpe\r\nE6 Pumpe\r\n");
    const ProcessOutcome fresh = Check({"--baseline", sBaseline, "--json"});
    EXPECT_EQ(fresh.nStatus, 1);
    EXPECT_EQ(Json::parse(fresh.sOut)["errors"], 2);
    EXPECT_EQ(Json::parse(fresh.sOut)["known"], 1);
}

TEST_F(NomiractlCheckReportTest, ABaselineThatIsNoneIsRefused) {
    EXPECT_EQ(Check({"--baseline", m_sFile}).nStatus, 3);
    EXPECT_EQ(Check({"--baseline", (m_run.Root() / "none").string()}).nStatus, 4);
    EXPECT_EQ(Check({"--baseline", m_run.Write("v.json", "{\"version\": 2}")}).nStatus, 3);
    EXPECT_EQ(Check({"--baseline", "x", "--write-baseline", "y"}).nStatus, 2);
}

TEST_F(NomiractlCheckReportTest, RejectsCanBeEditedAndImported) {
    const std::string sRejects = (m_run.Root() / "rejects.txt").string();
    m_run.Write("a b&c.txt", "IN_1 good\r\nE5 Pumpe \xFC\r\n# remark\r\nTimerText123 x\r\n");
    EXPECT_EQ(Check({"--rejects", sRejects}).nStatus, 1);
    EXPECT_EQ(BinaryRun::Bytes(sRejects),
              "# " + m_sFile +
                  ":2: E5: a key of the other form; this installation reads IN_5\r\n"
                  "E5 Pumpe \xFC\r\n# " +
                  m_sFile +
                  ":4: TimerText123: timers have one or two digits\r\n"
                  "TimerText123 x\r\n");
    m_run.CreateDatabase();
    ASSERT_EQ(m_run.Start({"import", "--customer", "VW", sRejects}).nStatus, 0);
    EXPECT_EQ(m_run.Texts(), Strings{"IO IN_5 Pumpe ue"});
}

TEST_F(NomiractlCheckReportTest, EveryFileIsCheckedAndFailuresDecideTheStatus) {
    const std::string sMissing = (m_run.Root() / "none.txt").string();
    const ProcessOutcome missing = Check({sMissing, "/dev/null"});
    EXPECT_EQ(missing.nStatus, 4);
    EXPECT_TRUE(Contains(missing.sErr, "none.txt: no such file")) << missing.sErr;
    EXPECT_TRUE(Contains(missing.sOut, "text-other-form")) << missing.sOut;
    const std::string sNone = m_run.Write("x.mdb", "SQLite format 3" + std::string(100, '\0'));
    EXPECT_EQ(Check({sNone}).nStatus, 5);
    const std::string sAccess = m_run.Write(
        "y.mdb", std::string("\0\1\0\0Standard ACE DB\0", 20) + std::string(9000, '\0'));
    const ProcessOutcome access = Check({sAccess});
    EXPECT_EQ(access.nStatus, 5);
    EXPECT_TRUE(Contains(access.sErr, "a kind of Access that can't be read")) << access.sErr;
}

TEST_F(NomiractlCheckReportTest, AHugeFileIsCheckedToo) {
    std::string bytes;
    for (int n = 0; n < 300'000; ++n)
        bytes += "# a remark that is long enough to make a big file of many of them\r\n";
    bytes += "E1 x";
    const ProcessOutcome outcome =
        m_run.Start({"check", "--quiet", "--color", "never", m_run.Write("huge.txt", bytes)});
    EXPECT_EQ(outcome.nStatus, 1);
    EXPECT_TRUE(Contains(outcome.sOut, "huge.txt:300001:1: error: E1")) << outcome.sOut.size();
}

TEST_F(NomiractlCheckReportTest, WrongUsageExitsWithTwo) {
    for (const Strings& args :
         {Strings{"check"}, Strings{"check", "--format", "xml", "a"},
          Strings{"check", "--as", "picture", "a"}, Strings{"check", "a", "--overwrite"}})
        EXPECT_EQ(m_run.Start(args).nStatus, 2) << ::testing::PrintToString(args);
}

TEST_F(NomiractlCheckReportTest, AsTakesAFileAsTold) {
    const Json json = Json::parse(Check({"--as", "program", "--json"}).sOut);
    EXPECT_EQ(json["files"][0]["kind"], "program");
}

// docs/rules.md is what --list-rules prints, below its own words.
TEST(NomiractlRulesTest, TheListInTheDocsIsTheListInTheCode) {
    const BinaryRun run;
    const std::string sDocs = BinaryRun::Bytes(fs::path(NOMIRA_SOURCE_DIR) / "docs/rules.md");
    const std::string sRules = run.Start({"check", "--list-rules"}).sOut;
    const std::size_t nTable = sDocs.find("|---|---|---|---|\n");
    ASSERT_NE(nTable, std::string::npos);
    EXPECT_EQ(sDocs.substr(sDocs.find('\n', nTable) + 1), sRules);
}

}  // namespace
