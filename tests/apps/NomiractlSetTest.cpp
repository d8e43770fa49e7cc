// set and rm, and the keeping of the database: backup, restore, verify.
#include "apps/PrefixTest.h"

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

class NomiractlSetTest : public PrefixTest<> {
  protected:
    NomiractlSetTest() {
        m_sFile = m_run.Write("names.txt", "IN_1 a\r\nIN_2 b\r\nIN_20 c\r\nOUT_1 d\r\n");
        ExpectDone(m_run.Run({"import", m_sFile}));
        m_sBackup = (m_run.Root() / "backup.db").string();
    }
    std::vector<Strings> Rows() const {
        return QueryOn(m_run.Database(),
                       "SELECT * FROM Items LEFT JOIN Messages USING(Key_id) ORDER BY 1");
    }

    std::string m_sFile, m_sBackup;
};

TEST_F(NomiractlSetTest, GivesAKnownKeyAndANewOneTheirTexts) {
    const Outcome set = m_run.Run({"set", "IN_1", "Motor links", "--diff", "--quiet"});
    ExpectDone(set);
    EXPECT_EQ(set.out, "-IN_1 a\n+IN_1 Motor links\n");
    ExpectDone(m_run.Run({"set", "FlagText9", "Neu"}));
    EXPECT_EQ(m_run.Texts(), (Strings{"Flag FlagText9 Neu", "IO IN_1 Motor links", "IO IN_2 b",
                                      "IO IN_20 c", "IO OUT_1 d"}));
}

// Umlauts are spelled out, and a key without a text keeps the mark of an empty one.
TEST_F(NomiractlSetTest, HasTheRulesOfATextFilesLine) {
    ExpectDone(m_run.Run({"set", "IN_1", "T\xC3\xBCr"}));
    ExpectDone(m_run.Run({"set", "IN_2", ""}));
    const std::string sFile = m_run.Write("names.txt", "IN_3 T\xFCr\r\nIN_4 \r\n");
    ExpectDone(m_run.Run({"import", sFile}));
    const auto text = [&](const char* sKey) {
        return QueryOn(m_run.Database(),
                       std::string("SELECT String FROM Messages JOIN Items USING(Key_id) WHERE"
                                   " KeyString='") +
                           sKey + "'")
            .at(0)
            .at(0);
    };
    EXPECT_EQ(text("IN_1"), "Tuer");
    EXPECT_EQ(text("IN_1"), text("IN_3"));
    EXPECT_EQ(text("IN_2"), text("IN_4"));
}

TEST_F(NomiractlSetTest, WhatALineOfATextFileCannotSayIsRefused) {
    const auto before = Rows();
    ExpectRefused(m_run.Run({"set", "NOKEY_1", "x"}), "its first word is no key");
    ExpectRefused(m_run.Run({"set", "IN_12345", "x"}), "too many digits");
    ExpectRefused(m_run.Run({"set", "IN_1", "two\r\nlines"}), "one line");
    ExpectRefused(m_run.Run({"set", "IN_1 IN_2", "x"}), "no key");
    ExpectRefused(m_run.Run({"set", "IN_1", "\xE4\xBD\xA0"}),
                  "IN_1: character 1: the character \"你\" (U+4F60) is not in code page 1252");
    EXPECT_EQ(Rows(), before);
    EXPECT_EQ(m_run.Run({"log", "--json"}).Json()["runs"].size(), 1U);
}

TEST_F(NomiractlSetTest, SetIsTakenBack) {
    const auto before = Rows();
    ExpectDone(m_run.Run({"set", "IN_1", "x"}));
    ExpectDone(m_run.Run({"undo"}));
    EXPECT_EQ(Rows(), before);
}

TEST_F(NomiractlSetTest, ADryRunOfSetChangesNothing) {
    const auto before = Rows();
    const auto planned = m_run.Run({"set", "IN_1", "x", "--dry-run", "--json"}).Json();
    EXPECT_EQ(planned["changed"], 1);
    EXPECT_EQ(planned["entries"][0]["new"][0], "x");
    EXPECT_EQ(Rows(), before);
}

TEST_F(NomiractlSetTest, RemovesKeysExactlyAndByRange) {
    ExpectDone(m_run.Run({"rm", "IN_2"}));
    EXPECT_EQ(m_run.Texts(), (Strings{"IO IN_1 a", "IO IN_20 c", "IO OUT_1 d"}));
    ExpectDone(m_run.Run({"rm", "IN_1..IN_19", "OUT_1"}));
    EXPECT_EQ(m_run.Texts(), (Strings{"IO IN_20 c"}));
    EXPECT_EQ(QueryOn(m_run.Database(), "SELECT * FROM Messages").size(), 1U);
}

TEST_F(NomiractlSetTest, RemovedKeysComeBackWithTheirNumbers) {
    const auto before = Rows();
    ExpectDone(m_run.Run({"rm", "1..40"}));
    EXPECT_TRUE(m_run.Texts().empty());
    ExpectDone(m_run.Run({"undo"}));
    EXPECT_EQ(Rows(), before);
}

TEST_F(NomiractlSetTest, RemovingWhatIsNotThereIsRefused) {
    ExpectRefused(m_run.Run({"rm", "IN_9"}), "none of these keys");
}

TEST_F(NomiractlSetTest, MoreRemovalsThanAllowedChangeNothing) {
    const auto before = Rows();
    ExpectRefused(m_run.Run({"rm", "1..40", "--max-changes", "3"}), "4 changes");
    EXPECT_EQ(Rows(), before);
}

TEST_F(NomiractlSetTest, APlanOfRmIsAppliedLater) {
    const std::string sPlan = (m_run.Root() / "p").string();
    ExpectDone(m_run.Run({"rm", "IN_1", "--plan", sPlan}));
    EXPECT_EQ(m_run.Texts().size(), 4U);
    ExpectDone(m_run.Run({"apply", sPlan}));
    EXPECT_EQ(m_run.Texts().size(), 3U);
}

TEST_F(NomiractlSetTest, ABackupIsRestoredAsARunThatCanBeTakenBack) {
    ExpectDone(m_run.Run({"db", "backup", m_sBackup}));
    const auto old = Rows();
    ExpectDone(m_run.Run({"rm", "1..40"}));
    ExpectDone(m_run.Run({"set", "IN_5", "new"}));
    const auto now = Rows();
    ExpectDone(m_run.Run({"db", "restore", m_sBackup}));
    EXPECT_EQ(Rows(), old);
    ExpectDone(m_run.Run({"undo"}));
    EXPECT_EQ(Rows(), now);
}

TEST_F(NomiractlSetTest, ABackupNeverReplacesAFileAndARestoreTakesAWholeDatabaseOnly) {
    m_run.Write("backup.db", "mine");
    ExpectRefused(m_run.Run({"db", "backup", m_sBackup}), "exists already", ExitCode::Files);
    EXPECT_EQ(CommandRun::Bytes(m_sBackup), "mine");
    const auto before = Rows();
    ExpectRefused(m_run.Run({"db", "restore", m_sBackup}), "not a database", ExitCode::Database);
    EXPECT_EQ(Rows(), before);
}

TEST_F(NomiractlSetTest, VerifyTellsAWholeDatabaseFromADamagedOne) {
    const Outcome whole = m_run.Run({"db", "verify"});
    ExpectDone(whole);
    EXPECT_TRUE(Contains(whole.out, "4 keys, whole")) << whole.out;
    // The relationship of an Access file would refuse it.
    if (FormatUnderTest() != StoreFormat::Sqlite)
        CreateRefusingStore(m_run.Database(), FormatUnderTest());
    ExecuteOn(m_run.Database(), "INSERT INTO Messages VALUES(99,99,'lost')");
    const Outcome lost = m_run.Run({"db", "verify"});
    EXPECT_EQ(lost.exit, ExitCode::Database);
    EXPECT_TRUE(Contains(lost.err, "texts that belong to no key")) << lost.err;
    EXPECT_EQ(m_run.Run({"db", "backup", m_sBackup}).exit, ExitCode::Database);
    EXPECT_FALSE(fs::exists(m_sBackup));
}

}  // namespace
