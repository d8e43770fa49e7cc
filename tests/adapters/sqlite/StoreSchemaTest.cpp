#include "adapters/sqlite/StoreSchema.h"

#include <sys/stat.h>

#include <fstream>

#include "database/adoModul.h"
#include "langtools/RuntimeError.h"
#include "testing/TestDatabase.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

namespace fs = std::filesystem;
using Rows = std::vector<std::vector<std::string>>;

TEST(StoreSchemaTest, AnExistingFileStaysAsItIs) {
    const TestDatabase db;
    const fs::path path = db.Folder() / "taken";
    std::ofstream(path) << "mine";
    EXPECT_THROW(sqlite::CreateStore(path), RuntimeError);
    EXPECT_THROW(sqlite::CreateStore(db.Path()), RuntimeError);
    EXPECT_EQ(fs::file_size(path), 4U);
    EXPECT_EQ(db.Query("SELECT count(*) FROM Items"), (Rows{{"0"}}));
}

TEST(StoreSchemaTest, AMissingFolderIsAFailure) {
    const TestDatabase db;
    EXPECT_THROW(sqlite::CreateStore(db.Folder() / "no" / "such"), RuntimeError);
}

TEST(StoreSchemaTest, ANewStoreIsWholeAndAlone) {
    const TestDatabase db;
    EXPECT_EQ(db.Query("PRAGMA integrity_check"), (Rows{{"ok"}}));
    EXPECT_EQ(db.Query("PRAGMA journal_mode"), (Rows{{"delete"}}));
    EXPECT_EQ(std::distance(fs::directory_iterator(db.Folder()), fs::directory_iterator()), 1);
}

TEST(StoreSchemaTest, KeyIdsComeFromTheDatabaseAndAreNeverGivenOutTwice) {
    const TestDatabase db;
    db.Execute(
        "INSERT INTO Items(Module,KeyString) VALUES('IO','a');DELETE FROM Items;"
        "INSERT INTO Items(Module,KeyString) VALUES('IO','b')");
    EXPECT_EQ(db.Query("SELECT * FROM Items"), (Rows{{"2", "IO", "b"}}));
}

TEST(StoreSchemaTest, NothingIsUniqueButTheKeyId) {
    const TestDatabase db;
    db.Execute(
        "INSERT INTO Items(Module,KeyString) VALUES('IO','a'),('IO','a');"
        "INSERT INTO Messages VALUES(1,99,'x'),(1,99,'x')");
    EXPECT_EQ(db.Query("SELECT count(*) FROM Items"), (Rows{{"2"}}));
    EXPECT_EQ(db.Query("SELECT count(*) FROM Messages"), (Rows{{"2"}}));
}

// The query plan of a statement, with the settings that the engine gives its connections.
class QueryPlanTest : public ::testing::Test {
  protected:
    std::string Plan(const std::string& sStatement) const {
        std::string sPlan;
        for (const auto& row : db.Query("PRAGMA case_sensitive_like=ON;PRAGMA foreign_keys=ON;"
                                        "EXPLAIN QUERY PLAN " +
                                        sStatement))
            sPlan += row.back() + '\n';
        return sPlan;
    }

    TestDatabase db;
};

TEST_F(QueryPlanTest, TheKeyLookUpGoesByTheIndex) {
    EXPECT_EQ(Plan("SELECT Items.Key_id FROM Items WHERE (((Items.KeyString)='IN_1') AND "
                   "((Items.Module)='IO'))"),
              "SEARCH Items USING COVERING INDEX ItemsByKey (KeyString=? AND Module=?)\n");
}

TEST_F(QueryPlanTest, TheTextLookUpGoesByTheIndex) {
    EXPECT_EQ(Plan("SELECT Messages.Key_id,Messages.Language_id, Messages.String FROM Messages "
                   "WHERE ( (Messages.Language_id=99) AND (Messages.Key_id)=1)"),
              "SEARCH Messages USING INDEX MessagesByKey (Key_id=? AND Language_id=?)\n");
}

TEST_F(QueryPlanTest, TheDeleteByPrefixGoesByTheIndex) {
    const std::string sPlan = Plan("DELETE FROM Items WHERE (((Items.KeyString) Like 'IN_%'))");
    EXPECT_NE(sPlan.find("INDEX ItemsByKey (KeyString>? AND KeyString<?)"), std::string::npos)
        << sPlan;
    EXPECT_EQ(sPlan.find("SCAN"), std::string::npos) << sPlan;
}

// What the database itself runs to find the messages of a deleted item.
TEST_F(QueryPlanTest, TheCascadeGoesByTheIndex) {
    EXPECT_EQ(Plan("DELETE FROM Messages WHERE Key_id=1"),
              "SEARCH Messages USING COVERING INDEX MessagesByKey (Key_id=?)\n");
}

TEST_F(QueryPlanTest, TheExportReadGoesByBothIndexes) {
    const std::string sPlan = Plan(
        "SELECT Items.KeyString, Messages.String FROM Items INNER JOIN Messages ON Items.Key_id = "
        "Messages.Key_id WHERE (((Items.Module)='IO') AND ((Messages.Language_id)=99) AND "
        "((Items.KeyString) Like 'IN_%'))");
    EXPECT_EQ(sPlan,
              "SEARCH Items USING COVERING INDEX ItemsByKey (KeyString>? AND KeyString<?)\n"
              "SEARCH Messages USING INDEX MessagesByKey (Key_id=? AND Language_id=?)\n");
}

}  // namespace
}  // namespace nomira::testing
