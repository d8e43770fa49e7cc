// What the SQLite engine does beyond the contract: which files it opens, and how a file lies at
// rest and at work.
#include "adapters/sqlite/SqliteEngine.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <fstream>

#include "adapters/contracts/ExpectRaises.h"
#include "adapters/sqlite/ChildProcess.h"
#include "adapters/sqlite/StoreSchema.h"
#include "database/adoModul.h"
#include "langtools/Utf8.h"
#include "testing/TestDatabase.h"

namespace nomira::testing {
namespace {

namespace fs = std::filesystem;
using Rows = std::vector<std::vector<std::string>>;

// A handle from outside, that stays open.
class OutsideHandle {
  public:
    explicit OutsideHandle(const fs::path& path) { sqlite3_open(path.c_str(), &m_handle); }
    ~OutsideHandle() { sqlite3_close(m_handle); }
    OutsideHandle(const OutsideHandle&) = delete;
    OutsideHandle& operator=(const OutsideHandle&) = delete;

    int Run(const char* sSql) { return sqlite3_exec(m_handle, sSql, nullptr, nullptr, nullptr); }

  private:
    sqlite3* m_handle = nullptr;
};

class SqliteEngineTest : public ::testing::Test {
  protected:
    ~SqliteEngineTest() override { g_Connection.reset(); }

    static bool Store(TextView sKey, TextView sText) { return StoreLongText(sText, u"IO", sKey); }
    static Text Read(TextView sKey) {
        Text sText = u"<none>";
        return ReadLongText(sText, u"IO", sKey) ? sText : Text(u"<failed>");
    }
    bool Opens() const {
        const bool bOpened = OpenDatabase(kLongTextDatabase);
        CloseDatabase();
        return bOpened;
    }
    void Write(const std::string& sBytes) const {
        std::ofstream(db.Path(), std::ios::binary | std::ios::trunc) << sBytes;
    }
    // Of this process, on files of the store's folder.
    int HandlesOnFolder() const {
        int nHandles = 0;
        for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
            std::error_code gone;
            nHandles += fs::read_symlink(entry, gone).parent_path() == db.Folder() ? 1 : 0;
        }
        return nHandles;
    }
    // As the file's header has it: 1 for the rollback journal, 2 for write-ahead.
    int JournalVersion() const {
        std::ifstream in(db.Path(), std::ios::binary);
        in.seekg(18);
        return in.get();
    }
    // Whether a process that comes along finds any lock on the file. It uses no SQLite.
    bool IsLocked() const {
        ChildProcess looker([&](const ChildProcess::Line&) {
            const int nFile = ::open(db.Path().c_str(), O_RDWR);
            struct flock lock {};
            lock.l_type = F_WRLCK;
            lock.l_whence = SEEK_SET;
            const bool bFree = ::fcntl(nFile, F_GETLK, &lock) == 0 && lock.l_type == F_UNLCK;
            if (!bFree) ::_exit(3);
        });
        return !looker.Join();
    }

    std::chrono::nanoseconds m_ahead{0};  // of the system's clock
    TestDatabase db{{}, [this] { return sqlite::SystemTime() + m_ahead; }, StoreFormat::Sqlite};
};

// --- Which files it opens.

TEST_F(SqliteEngineTest, AFileThatIsNoDatabaseDoesNotOpen) {
    for (const std::string& sBytes :
         {std::string(), std::string("x"), std::string(5000, 'x'), std::string(100, '\0'),
          std::string("SQLite format 3"), "SQLite format 3" + std::string(2000, '\0')}) {
        Write(sBytes);
        EXPECT_FALSE(Opens()) << sBytes.size();
        EXPECT_EQ(fs::file_size(db.Path()), sBytes.size());
    }
}

TEST_F(SqliteEngineTest, ADirectoryDoesNotOpen) {
    db.RemoveFile();
    fs::create_directory(db.Path());
    EXPECT_FALSE(Opens());
}

TEST_F(SqliteEngineTest, AFileWhoseSchemaIsDamagedDoesNotOpen) {
    db.Execute("PRAGMA writable_schema=ON; UPDATE sqlite_schema SET sql='CREATE nonsense'");
    EXPECT_FALSE(Opens());
}

TEST_F(SqliteEngineTest, ADatabaseWithoutTheTablesOpensAndItsStatementsFail) {
    db.RemoveFile();
    OutsideHandle(db.Path()).Run("CREATE TABLE Other(x)");
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    EXPECT_FALSE(Store(u"IN_1", u"x"));
}

TEST_F(SqliteEngineTest, AFileThatSomebodyHoldsExclusivelyDoesNotOpen) {
    ChildProcess holder([&](const ChildProcess::Line& line) {
        OutsideHandle handle(db.Path());
        if (handle.Run("BEGIN EXCLUSIVE") != SQLITE_OK) return;
        line.Say();
        line.Hear();
        handle.Run("ROLLBACK");
        line.Say();
        line.Hear();
    });
    ASSERT_EQ(holder.Hear(), '.');
    EXPECT_FALSE(Opens());
    holder.Say();
    ASSERT_EQ(holder.Hear(), '.');
    EXPECT_TRUE(Opens());
}

TEST_F(SqliteEngineTest, AFileThatNobodyMayWriteIsReadOnlyAlsoForASuperuser) {
    db.Execute("INSERT INTO Items VALUES(1,'IO','IN_1');INSERT INTO Messages VALUES(1,99,'a')");
    fs::permissions(db.Path(), fs::perms::owner_read);
    EXPECT_EQ(Read(u"IN_1"), u"a");
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    Store(u"IN_1", u"b");
    Store(u"IN_2", u"b");
    DeleteItemsByPrefix(u"IN_", u"IO", 1);
    CloseDatabase();
    EXPECT_EQ(Read(u"IN_1"), u"a");
    EXPECT_EQ(db.FilesInFolder(), "orvo_con.mdb ");
    fs::permissions(db.Path(), fs::perms::owner_read | fs::perms::owner_write);
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    Store(u"IN_1", u"b");
    EXPECT_EQ(Read(u"IN_1"), u"b");
}

// --- The file at rest and at work.

TEST_F(SqliteEngineTest, TheFirstWriteGoesToWriteAheadAndCloseMakesTheFileWholeAgain) {
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    EXPECT_EQ(JournalVersion(), 1);
    EXPECT_EQ(db.FilesInFolder(), "orvo_con.mdb ");
    ASSERT_TRUE(Store(u"IN_1", u"a"));
    EXPECT_EQ(db.FilesInFolder(), "orvo_con.mdb orvo_con.mdb-shm orvo_con.mdb-wal ");
    CloseDatabase();
    EXPECT_EQ(JournalVersion(), 1);
    EXPECT_EQ(db.FilesInFolder(), "orvo_con.mdb ");
    EXPECT_EQ(Read(u"IN_1"), u"a");
}

TEST_F(SqliteEngineTest, ATransactionThatCloseTakesBackLeavesTheFileWhole) {
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    g_Connection->BeginTrans();
    ASSERT_TRUE(Store(u"IN_1", u"a"));
    CloseDatabase();
    EXPECT_EQ(JournalVersion(), 1);
    EXPECT_EQ(db.FilesInFolder(), "orvo_con.mdb ");
    EXPECT_EQ(Read(u"IN_1"), u"<none>");
}

TEST_F(SqliteEngineTest, ReadingAloneNeverChangesTheFile) {
    db.Execute("INSERT INTO Items VALUES(1,'IO','IN_1');INSERT INTO Messages VALUES(1,99,'a')");
    const auto before = fs::last_write_time(db.Path());
    EXPECT_EQ(Read(u"IN_1"), u"a");
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    EXPECT_EQ(FindKeyId(u"IO", u"IN_1", g_Connection.get()), 1);
    EXPECT_EQ(db.FilesInFolder(), "orvo_con.mdb ");
    CloseDatabase();
    EXPECT_EQ(fs::last_write_time(db.Path()), before);
}

TEST_F(SqliteEngineTest, AnOpenConnectionThatHasNotWrittenHoldsNoLock) {
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    EXPECT_EQ(FindKeyId(u"IO", u"IN_1", g_Connection.get()), 0);
    EXPECT_FALSE(IsLocked());
}

TEST_F(SqliteEngineTest, AClosedConnectionHoldsNoLockThoughItsHandleStaysWarm) {
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    ASSERT_TRUE(Store(u"IN_1", u"a"));
    EXPECT_TRUE(IsLocked()) << "the test sees no locks at all";
    CloseDatabase();
    EXPECT_FALSE(IsLocked());
    EXPECT_EQ(Read(u"IN_1"), u"a");
    EXPECT_FALSE(IsLocked());
}

TEST_F(SqliteEngineTest, OfTwoConnectionsTheLastOneMakesTheFileWhole) {
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    ASSERT_TRUE(Store(u"IN_1", u"a"));
    EXPECT_EQ(Read(u"IN_1"), u"a");
    EXPECT_EQ(db.FilesInFolder(), "orvo_con.mdb orvo_con.mdb-shm orvo_con.mdb-wal ");
    ASSERT_TRUE(Store(u"IN_2", u"b"));
    EXPECT_EQ(Read(u"IN_2"), u"b");
    CloseDatabase();
    EXPECT_EQ(JournalVersion(), 1);
    EXPECT_EQ(db.FilesInFolder(), "orvo_con.mdb ");
}

TEST_F(SqliteEngineTest, WhereAReaderIsInTheWayWritesGoThroughTheRollbackJournal) {
    ChildProcess reader([&](const ChildProcess::Line& line) {
        OutsideHandle handle(db.Path());
        handle.Run("BEGIN; SELECT * FROM Items");
        line.Say();
        line.Hear();
        handle.Run("COMMIT");
        line.Say();
        line.Hear();
    });
    ASSERT_EQ(reader.Hear(), '.');
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    // The reader keeps this commit away, and the row with it.
    EXPECT_TRUE(Store(u"IN_1", u"a"));
    EXPECT_EQ(FindKeyId(u"IO", u"IN_1", g_Connection.get()), 0);
    reader.Say();
    ASSERT_EQ(reader.Hear(), '.');
    EXPECT_TRUE(Store(u"IN_2", u"b"));
    EXPECT_EQ(JournalVersion(), 1);
    EXPECT_EQ(db.FilesInFolder(), "orvo_con.mdb ");
    CloseDatabase();
    EXPECT_EQ(Read(u"IN_2"), u"b");
}

TEST_F(SqliteEngineTest, AFileThatAKilledProcessLeftInWriteAheadIsRecovered) {
    ChildProcess writer([&](const ChildProcess::Line& line) {
        OpenDatabase(kLongTextDatabase);
        Store(u"IN_1", u"a");
        line.Say();
        line.Hear();
    });
    ASSERT_EQ(writer.Hear(), '.');
    writer.Kill();
    EXPECT_EQ(JournalVersion(), 2);
    EXPECT_EQ(db.FilesInFolder(), "orvo_con.mdb orvo_con.mdb-shm orvo_con.mdb-wal ");
    EXPECT_EQ(Read(u"IN_1"), u"a");
    EXPECT_EQ(JournalVersion(), 1);
    EXPECT_EQ(db.FilesInFolder(), "orvo_con.mdb ");
}

TEST_F(SqliteEngineTest, ARollbackJournalThatAKilledProcessLeftIsPlayedBack) {
    db.Execute("INSERT INTO Items VALUES(1,'IO','IN_1');INSERT INTO Messages VALUES(1,99,'a')");
    ChildProcess writer([&](const ChildProcess::Line& line) {
        OutsideHandle handle(db.Path());
        // So small a cache that the file itself is written before the commit.
        handle.Run(
            "PRAGMA cache_size=1; PRAGMA cache_spill=1; BEGIN;"
            "UPDATE Messages SET String='half'; CREATE TABLE Ballast(x);"
            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n LIMIT 500)"
            " INSERT INTO Ballast SELECT zeroblob(3000) FROM n");
        line.Say();
        line.Hear();
    });
    ASSERT_EQ(writer.Hear(), '.');
    writer.Kill();
    ASSERT_EQ(db.FilesInFolder(), "orvo_con.mdb orvo_con.mdb-journal ");
    EXPECT_EQ(Read(u"IN_1"), u"a");
    EXPECT_EQ(db.FilesInFolder(), "orvo_con.mdb ");
    EXPECT_EQ(db.Query("PRAGMA integrity_check"), (Rows{{"ok"}}));
}

// --- Warm handles.

// With a file that was changed just now, and with one that has been at rest for long, of which what
// was read is remembered.
class SqliteWarmHandleTest : public SqliteEngineTest, public ::testing::WithParamInterface<bool> {
  protected:
    SqliteWarmHandleTest() {
        if (GetParam()) m_ahead = std::chrono::hours(1);
        Settle();
    }

    // Makes the file one that was changed long ago, so that each change to come gives it another
    // time.
    void Settle() const {
        if (!GetParam()) return;
        const timespec longAgo{1'000'000'000, 0};
        const timespec times[2]{longAgo, longAgo};
        ::utimensat(AT_FDCWD, db.Path().c_str(), times, 0);
    }
};
INSTANTIATE_TEST_SUITE_P(FilesOf, SqliteWarmHandleTest, ::testing::Bool(),
                         [](const auto& row) { return row.param ? "LongAgo" : "JustNow"; });

TEST_P(SqliteWarmHandleTest, ADeletedFileIsSeen) {
    EXPECT_EQ(Read(u"IN_1"), u"<none>");
    db.RemoveFile();
    EXPECT_EQ(Read(u"IN_1"), u"<failed>");
    EXPECT_EQ(Read(u"IN_1"), u"<failed>");
    EXPECT_EQ(db.FilesInFolder(), "");
    sqlite::CreateStore(db.Path());
    EXPECT_EQ(Read(u"IN_1"), u"<none>");
}

TEST_P(SqliteWarmHandleTest, AReplacedFileIsSeen) {
    EXPECT_EQ(Read(u"IN_1"), u"<none>");
    const fs::path other = db.Folder() / "other";
    sqlite::CreateStore(other);
    ExecuteOn(other,
              "INSERT INTO Items VALUES(1,'IO','IN_1');"
              "INSERT INTO Messages VALUES(1,99,'other')");
    fs::rename(other, db.Path());
    EXPECT_EQ(Read(u"IN_1"), u"other");
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    Store(u"IN_1", u"mine");
    CloseDatabase();
    EXPECT_EQ(db.Query("SELECT String FROM Messages"), (Rows{{"mine"}}));
}

TEST_P(SqliteWarmHandleTest, AFileThatWasOverwrittenInItsPlaceIsSeen) {
    EXPECT_EQ(Read(u"IN_1"), u"<none>");
    Write("no database any more, but as long as need be " + std::string(8192, 'x'));
    EXPECT_EQ(Read(u"IN_1"), u"<failed>");
    Write("");
    EXPECT_EQ(Read(u"IN_1"), u"<failed>");
}

TEST_P(SqliteWarmHandleTest, ALockThatComesBetweenTwoLookUpsIsSeen) {
    EXPECT_EQ(Read(u"IN_1"), u"<none>");
    {
        OutsideHandle handle(db.Path());
        ASSERT_EQ(handle.Run("BEGIN EXCLUSIVE"), SQLITE_OK);
        EXPECT_EQ(Read(u"IN_1"), u"<failed>");
    }
    EXPECT_EQ(Read(u"IN_1"), u"<none>");
}

TEST_P(SqliteWarmHandleTest, AnotherProcesssChangeIsSeen) {
    ChildProcess writer([&](const ChildProcess::Line& line) {
        line.Hear();
        OpenDatabase(kLongTextDatabase);
        Store(u"IN_1", u"from outside");
        CloseDatabase();
        line.Say();
    });
    EXPECT_EQ(Read(u"IN_1"), u"<none>");
    writer.Say();
    ASSERT_EQ(writer.Hear(), '.');
    EXPECT_EQ(Read(u"IN_1"), u"from outside");
}

TEST_P(SqliteWarmHandleTest, AChangeIsSeenThroughAConnectionThatStaysOpenToo) {
    db.Execute("INSERT INTO Items VALUES(1,'IO','IN_1'); INSERT INTO Messages VALUES(1,99,'a')");
    Settle();
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    const auto read = [] {
        Text sText;
        ReadMessageString(FindKeyId(u"IO", u"IN_1", g_Connection.get()), sText, g_Connection.get());
        return sText;
    };
    EXPECT_EQ(read(), u"a");
    db.Execute("UPDATE Messages SET String='b'");
    EXPECT_EQ(read(), u"b");
    db.Execute("DELETE FROM Messages");
    EXPECT_EQ(read(), u"");
}

TEST_P(SqliteWarmHandleTest, AChangeOfOnesOwnIsSeen) {
    EXPECT_EQ(Read(u"IN_1"), u"<none>");
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    Store(u"IN_1", u"a");
    EXPECT_EQ(Read(u"IN_1"), u"a");
    Store(u"IN_1", u"b");
    EXPECT_EQ(Read(u"IN_1"), u"b");
    CloseDatabase();
    EXPECT_EQ(Read(u"IN_1"), u"b");
}

TEST_P(SqliteWarmHandleTest, AFileWhoseRightsWereTakenAwayIsReadOnlyFromThenOn) {
    EXPECT_EQ(Read(u"IN_1"), u"<none>");
    fs::permissions(db.Path(), fs::perms::owner_read);
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    EXPECT_FALSE(Store(u"IN_1", u"a") && Read(u"IN_1") == u"a");
    CloseDatabase();
}

TEST_P(SqliteWarmHandleTest, ARowThatIsHeldByTwoStaysAsItWasForTheOther) {
    db.Execute("INSERT INTO Items VALUES(1,'IO','IN_1')");
    Settle();
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    const auto open = [&] {
        auto rows = db.Engine().CreateRecordset();
        rows->Open(u"SELECT * FROM Items", *g_Connection, CursorKind::Keyset, LockKind::Optimistic,
                   kOptionUnspecified);
        return rows;
    };
    const auto first = open();
    const auto second = open();
    first->SetField(u"KeyString", Text(u"IN_2"));
    first->Update();
    EXPECT_EQ(std::get<Text>(first->Field(u"KeyString")), u"IN_2");
    EXPECT_EQ(std::get<Text>(second->Field(u"KeyString")), u"IN_1");
    EXPECT_EQ(std::get<Text>(open()->Field(u"KeyString")), u"IN_2");
}

TEST_F(SqliteEngineTest, AnotherHandlesChangeOfTheTablesIsSeen) {
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    ASSERT_TRUE(Store(u"IN_1", u"a"));
    CloseDatabase();
    db.Execute("DROP TABLE Messages; DROP TABLE Items");
    db.Execute(sqlite::kStoreSchema);
    db.Execute("ALTER TABLE Items ADD COLUMN Remark TEXT");
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    ASSERT_TRUE(Store(u"IN_2", u"b"));
    EXPECT_EQ(Read(u"IN_2"), u"b");
    EXPECT_EQ(Read(u"IN_1"), u"<none>");
}

TEST_F(SqliteEngineTest, OnlyAFewHandlesAreKeptAndMoreFilesWorkAllTheSame) {
    for (int nRound = 0; nRound < 2; ++nRound) {
        for (int nFile = 0; nFile < 8; ++nFile) {
            const std::string sName = "file" + std::to_string(nFile);
            if (nRound == 0) sqlite::CreateStore(db.Folder() / sName);
            EXPECT_TRUE(OpenDatabase(FromUtf8(sName)));
            EXPECT_TRUE(Store(u"IN_1", u"a"));
            CloseDatabase();
        }
    }
    EXPECT_LE(HandlesOnFolder(), 4);
    EXPECT_GE(HandlesOnFolder(), 1);
}

TEST_F(SqliteEngineTest, AConnectionMayOutliveTheEngine) {
    auto engine = std::make_unique<sqlite::SqliteEngine>([&](TextView) { return db.Path(); });
    const auto open = engine->CreateConnection();
    const auto closed = engine->CreateConnection();
    open->Open(u"DBQ=x", u"", u"", kOptionUnspecified);
    engine.reset();
    EXPECT_EQ(open->State(), kStateOpen);
    open->Close();
    EXPECT_RAISES(ErrorNumber::EngineFailure, closed->Open(u"DBQ=x", u"", u"", kOptionUnspecified));
}

// --- Waiting.

// Each of these would wait a second if the first wait in vain didn't end the patience. The bound
// is far from both, so that a slow machine doesn't matter.
TEST_F(SqliteEngineTest, AfterOneWaitInVainTheNextStatementsDontWait) {
    constexpr int kStatements = 200;
    const auto start = std::chrono::steady_clock::now();
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    OutsideHandle handle(db.Path());
    ASSERT_EQ(handle.Run("BEGIN EXCLUSIVE"), SQLITE_OK);
    for (int n = 0; n < kStatements; ++n) {
        EXPECT_FALSE(Store(u"IN_1", u"a"));
        EXPECT_EQ(Read(u"IN_1"), u"<failed>");
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(kStatements / 2));
    ASSERT_EQ(handle.Run("ROLLBACK"), SQLITE_OK);
    EXPECT_TRUE(Store(u"IN_1", u"a"));
    EXPECT_EQ(Read(u"IN_1"), u"a");
}

TEST_F(SqliteEngineTest, AShortLockIsWaitedFor) {
    ChildProcess holder([&](const ChildProcess::Line& line) {
        OutsideHandle handle(db.Path());
        handle.Run("BEGIN EXCLUSIVE");
        line.Say();
        ::usleep(50'000);
        handle.Run("ROLLBACK");
    });
    ASSERT_EQ(holder.Hear(), '.');
    EXPECT_TRUE(Opens());
}

// --- Compaction.

class SqliteCompactionTest : public SqliteEngineTest {
  protected:
    static constexpr TextView kFrom = u"Data Source=orvo_con.mdb";
    static constexpr TextView kTo = u"Data Source=copy.mdb";
    void Compact() { db.Engine().CompactDatabase(kFrom, kTo); }
    fs::path Copy() const { return db.Folder() / "copy.mdb"; }
};

TEST_F(SqliteCompactionTest, AnEmptyFileInTheWayIsAFailureAndStays) {
    std::ofstream(Copy()).close();
    EXPECT_RAISES(ErrorNumber::EngineFailure, Compact());
    EXPECT_EQ(fs::file_size(Copy()), 0U);
}

TEST_F(SqliteCompactionTest, ADamagedSourceLeavesNoCopyBehind) {
    db.Execute(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n LIMIT 5000)"
        " INSERT INTO Items(Module,KeyString) SELECT 'IO','IN_'||i FROM n");
    {
        std::fstream file(db.Path(), std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(4096 * 5);
        file << std::string(4096 * 10, '\xFF');
    }
    EXPECT_RAISES(ErrorNumber::EngineFailure, Compact());
    EXPECT_EQ(db.FilesInFolder(), "orvo_con.mdb ");
}

TEST_F(SqliteCompactionTest, TheCopyHasTheSourcesRightsAndIsWholeAndAlone) {
    fs::permissions(db.Path(), fs::perms(0640));
    Compact();
    EXPECT_EQ(fs::status(Copy()).permissions(), fs::perms(0640));
    EXPECT_EQ(db.FilesInFolder(), "copy.mdb orvo_con.mdb ");
    EXPECT_EQ(QueryOn(Copy(), "PRAGMA integrity_check"), (Rows{{"ok"}}));
}

TEST_F(SqliteCompactionTest, ASourceThatAKilledProcessLeftIsFoldedBackFirst) {
    ChildProcess writer([&](const ChildProcess::Line& line) {
        OpenDatabase(kLongTextDatabase);
        Store(u"IN_1", u"a");
        line.Say();
        line.Hear();
    });
    ASSERT_EQ(writer.Hear(), '.');
    writer.Kill();
    Compact();
    EXPECT_EQ(QueryOn(Copy(), "SELECT String FROM Messages"), (Rows{{"a"}}));
    EXPECT_EQ(db.FilesInFolder(), "copy.mdb orvo_con.mdb ");
}

TEST_F(SqliteCompactionTest, ASourceAtWorkIsAFailure) {
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    ASSERT_TRUE(Store(u"IN_1", u"a"));
    EXPECT_RAISES(ErrorNumber::EngineFailure, Compact());
    EXPECT_FALSE(fs::exists(Copy()));
    EXPECT_TRUE(Store(u"IN_2", u"b"));
}

TEST_F(SqliteCompactionTest, AnOpenConnectionThatHasNotWrittenIsNotInTheWay) {
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    Compact();
    EXPECT_TRUE(fs::exists(Copy()));
}

TEST_F(SqliteCompactionTest, AFolderThatIsMissingIsAFailure) {
    sqlite::SqliteEngine engine([&](TextView sPath) {
        return sPath == u"copy.mdb" ? db.Folder() / "no" / "copy" : db.Path();
    });
    EXPECT_RAISES(ErrorNumber::EngineFailure, engine.CompactDatabase(kFrom, kTo));
}

}  // namespace
}  // namespace nomira::testing
