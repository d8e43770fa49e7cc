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

// The plan that the engine's own connections make for a statement.
class QueryPlanTest : public ::testing::Test {
  protected:
    ~QueryPlanTest() override { g_Connection.reset(); }

    std::string Plan(TextView sStatement) {
        OpenDatabase(kLongTextDatabase);
        const auto steps = db.Engine().CreateRecordset();
        steps->Open(u"EXPLAIN QUERY PLAN " + Text(sStatement), *g_Connection, CursorKind::Static,
                    LockKind::ReadOnly, kOptionUnspecified);
        std::string sPlan;
        for (; !steps->Eof(); steps->MoveNext())
            sPlan += Printable(std::get<Text>(steps->Field(u"detail"))) + '\n';
        return sPlan;
    }

    TestDatabase db;
};

// Whether the plan goes by these index columns, and reads no table from end to end.
void ExpectSearch(const std::string& sPlan, const std::vector<std::string>& indexes) {
    for (const std::string& sIndex : indexes)
        EXPECT_NE(sPlan.find("INDEX " + sIndex), std::string::npos) << sPlan;
    EXPECT_EQ(sPlan.find("SCAN"), std::string::npos) << sPlan;
}

TEST_F(QueryPlanTest, TheKeyLookUpGoesByTheIndex) {
    ExpectSearch(Plan(u"SELECT Items.Key_id FROM Items WHERE (((Items.KeyString)='IN_1') AND "
                      u"((Items.Module)='IO'))"),
                 {"ItemsByKey (KeyString=? AND Module=?)"});
}

TEST_F(QueryPlanTest, TheTextLookUpGoesByTheIndex) {
    ExpectSearch(Plan(u"SELECT Messages.Key_id,Messages.Language_id, Messages.String FROM Messages "
                      u"WHERE ( (Messages.Language_id=99) AND (Messages.Key_id)=1)"),
                 {"MessagesByKey (Key_id=? AND Language_id=?)"});
}

TEST_F(QueryPlanTest, TheDeleteByPrefixGoesByTheIndex) {
    ExpectSearch(Plan(u"DELETE FROM Items WHERE (((Items.KeyString) Like 'IN_%'))"),
                 {"ItemsByKey (KeyString>? AND KeyString<?)"});
}

// What the database itself runs to find the messages of a deleted item.
TEST_F(QueryPlanTest, TheCascadeGoesByTheIndex) {
    ExpectSearch(Plan(u"DELETE FROM Messages WHERE Key_id=1"), {"MessagesByKey (Key_id=?)"});
}

TEST_F(QueryPlanTest, TheExportReadGoesByBothIndexes) {
    ExpectSearch(
        Plan(ExportReadStatement(u"IO", u"IN_")),
        {"ItemsByKey (KeyString>? AND KeyString<?)", "MessagesByKey (Key_id=? AND Language_id=?)"});
}

}  // namespace
}  // namespace nomira::testing
