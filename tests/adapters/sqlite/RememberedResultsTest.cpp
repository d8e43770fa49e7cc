// What a database remembers of its queries, and when it lets go of it.
#include "adapters/sqlite/RememberedResults.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "adapters/contracts/ExpectRaises.h"
#include "adapters/sqlite/SqliteFile.h"
#include "testing/TestDatabase.h"

namespace nomira::testing {
namespace {

using namespace std::chrono_literals;
using sqlite::FileState;
using sqlite::LookAtFile;
using sqlite::ReadQuery;
using sqlite::SqliteFile;

const std::string kLookUp = "SELECT Items.Key_id FROM Items WHERE KeyString='IN_1'";

class RememberedResultsTest : public ::testing::Test {
  protected:
    RememberedResultsTest() {
        db.Execute("INSERT INTO Items VALUES(1,'IO','IN_1')");
        SetTime(1'000'000'000);
        Open(1h);
    }

    // So long ago that each change to come gives the file another time.
    void SetTime(time_t nSeconds) const {
        const timespec times[2]{{nSeconds, 0}, {nSeconds, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, db.Path().c_str(), times, 0), 0);
    }

    // As the pool does ahead of each use, `later` than the file's last change.
    void Open(std::chrono::nanoseconds later) {
        const FileState state = LookAtFile(db.Path());
        database.CheckReadable(state, std::max(state.modified, state.changed) + later);
    }
    // Whether the query's result comes from memory.
    bool IsRemembered(const std::string& sSql = kLookUp, bool bWritable = true) {
        const auto first = ReadQuery(database, sSql, bWritable);
        return first == ReadQuery(database, sSql, bWritable);
    }

    TestDatabase db;
    SqliteFile database{db.Path(), LookAtFile(db.Path()).identity};
};

TEST_F(RememberedResultsTest, AQueryOfAFileAtRestIsReadOnce) {
    const auto first = ReadQuery(database, kLookUp, true);
    EXPECT_EQ(ReadQuery(database, kLookUp, true), first);
    EXPECT_TRUE(database.Rest());
    Open(1h);
    EXPECT_EQ(ReadQuery(database, kLookUp, true), first);
    EXPECT_EQ(first->packed.Get(0), FieldValue(std::int64_t{1}));
}

TEST_F(RememberedResultsTest, AnEmptyResultIsRememberedToo) {
    EXPECT_TRUE(IsRemembered("SELECT Key_id FROM Items WHERE KeyString='IN_9'"));
}

TEST_F(RememberedResultsTest, RowsToReadAndRowsToWriteAreTwoResults) {
    const auto toWrite = ReadQuery(database, kLookUp, true);
    const auto toRead = ReadQuery(database, kLookUp, false);
    EXPECT_EQ(toWrite->sTable, "Items");
    EXPECT_EQ(toRead->sTable, "");
}

TEST_F(RememberedResultsTest, AFileThatWasChangedJustNowIsReadEachTime) {
    SqliteFile fresh(db.Path(), LookAtFile(db.Path()).identity);
    for (const auto later : {-1s, 0s, 3s}) {
        const FileState state = LookAtFile(db.Path());
        fresh.CheckReadable(state, std::max(state.modified, state.changed) + later);
        EXPECT_NE(ReadQuery(fresh, kLookUp, true), ReadQuery(fresh, kLookUp, true));
    }
}

TEST_F(RememberedResultsTest, AnotherStateOfTheFileEndsIt) {
    const auto first = ReadQuery(database, kLookUp, true);
    SetTime(1'000'000'001);
    Open(1h);
    EXPECT_NE(ReadQuery(database, kLookUp, true), first);
    EXPECT_TRUE(IsRemembered());
}

TEST_F(RememberedResultsTest, AWriteEndsItForTheUseOfTheFile) {
    EXPECT_TRUE(IsRemembered());
    sqlite::InsertRow(database, "Items", {{"KeyString", Text(u"IN_2")}});
    EXPECT_FALSE(IsRemembered());
}

TEST_F(RememberedResultsTest, ATransactionEndsIt) {
    EXPECT_TRUE(IsRemembered());
    database.BeginTransaction();
    EXPECT_FALSE(IsRemembered());
    database.RollbackTransaction();
}

TEST_F(RememberedResultsTest, SomebodyElsesWriteEndsItBeforeTheFileShowsIt) {
    EXPECT_TRUE(IsRemembered());
    const FileState state = LookAtFile(db.Path());
    SqliteFile other(db.Path(), state.identity);
    EXPECT_TRUE(database.IsAsRemembered(state));
    ASSERT_EQ(sqlite3_exec(other.Handle(), "BEGIN IMMEDIATE", nullptr, nullptr, nullptr),
              SQLITE_OK);
    EXPECT_FALSE(database.IsAsRemembered(state));
    ASSERT_EQ(sqlite3_exec(other.Handle(), "ROLLBACK", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_TRUE(database.IsAsRemembered(state));
}

TEST_F(RememberedResultsTest, AFileInWriteAheadModeIsReadEachTime) {
    SqliteFile other(db.Path(), LookAtFile(db.Path()).identity);
    ASSERT_EQ(sqlite3_exec(other.Handle(),
                           "PRAGMA journal_mode=WAL; INSERT INTO Items VALUES(2,'IO','IN_2')",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    Open(1h);
    EXPECT_FALSE(IsRemembered());
}

TEST_F(RememberedResultsTest, ComputedColumnsAreReadEachTime) {
    EXPECT_FALSE(IsRemembered("SELECT random() AS n FROM Items"));
    EXPECT_FALSE(IsRemembered("SELECT KeyString, 1+1 AS n FROM Items"));
}

TEST_F(RememberedResultsTest, LargeResultsAreReadEachTime) {
    db.Execute(
        "WITH n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n LIMIT 8)"
        " INSERT INTO Items(Module,KeyString) SELECT 'Flag', 'FlagText' || i FROM n");
    db.Execute("INSERT INTO Items(Module,KeyString) VALUES('Timer', hex(zeroblob(2048)) || 'x')");
    Open(1h);
    EXPECT_TRUE(IsRemembered("SELECT KeyString FROM Items WHERE Module='Flag'"));
    EXPECT_FALSE(IsRemembered("SELECT KeyString FROM Items WHERE Module IN ('Flag','IO')"));
    EXPECT_FALSE(IsRemembered("SELECT KeyString FROM Items WHERE Module='Timer'"));
}

TEST_F(RememberedResultsTest, OnlySoManyAreKept) {
    const auto first = ReadQuery(database, kLookUp, true);
    for (int n = 0; n < 32768; ++n)
        ReadQuery(database, "SELECT Key_id FROM Items WHERE Key_id=" + std::to_string(n), false);
    EXPECT_NE(ReadQuery(database, kLookUp, true), first);
    EXPECT_TRUE(IsRemembered());
}

}  // namespace
}  // namespace nomira::testing
