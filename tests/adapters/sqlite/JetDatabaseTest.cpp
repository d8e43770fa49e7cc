// What the engine does with Access files beyond the contract: how a file lies at rest and at work,
// and what is remembered of it.
#include "adapters/sqlite/JetDatabase.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "adapters/contracts/ExpectRaises.h"
#include "adapters/jet/MemoryPages.h"
#include "adapters/sqlite/ChildProcess.h"
#include "adapters/sqlite/ConvertFile.h"
#include "database/adoModul.h"
#include "testing/TestDatabase.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Rows = std::vector<std::vector<std::string>>;

const std::string kLookUp = "SELECT Items.Key_id FROM Items WHERE KeyString='IN_1'";

class JetDatabaseTest : public ::testing::TestWithParam<StoreFormat> {
  protected:
    JetDatabaseTest() {
        db.Execute(
            "INSERT INTO Items VALUES(1,'IO','IN_1'); INSERT INTO Messages VALUES(1,99,'pump')");
    }
    ~JetDatabaseTest() override { g_Connection.reset(); }

    static bool Store(TextView sKey, TextView sText) { return StoreLongText(sText, u"IO", sKey); }
    static Text Read(TextView sKey) {
        Text sText = u"<none>";
        return ReadLongText(sText, u"IO", sKey) ? sText : Text(u"<failed>");
    }
    // Whether a process that comes along can lock the file.
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
    // So long ago that each change to come gives the file another time.
    void MakeOld() const {
        const timespec times[2]{{1'000'000'000, 0}, {1'000'000'000, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, db.Path().c_str(), times, 0), 0);
    }
    // As the pool does ahead of each use, an hour after the file's last change.
    void Open(sqlite::JetDatabase& database) const {
        const sqlite::FileState state = sqlite::LookAtFile(db.Path());
        database.CheckReadable(state, std::max(state.modified, state.changed) + 1h);
    }

    TestDatabase db{{}, sqlite::SystemTime, GetParam()};
};
std::string NameOfFormat(const ::testing::TestParamInfo<StoreFormat>& info) {
    return info.param == StoreFormat::Jet3 ? "Jet3" : "Jet4";
}
INSTANTIATE_TEST_SUITE_P(Formats, JetDatabaseTest,
                         ::testing::Values(StoreFormat::Jet3, StoreFormat::Jet4), NameOfFormat);

TEST_P(JetDatabaseTest, AtRestTheFileIsAloneAndNobodys) {
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    EXPECT_FALSE(IsLocked());
    EXPECT_EQ(db.FilesInFolder(), "orvo_con.mdb ");
    ASSERT_TRUE(Store(u"IN_2", u"valve"));
    EXPECT_TRUE(IsLocked());
    EXPECT_NE(db.FilesInFolder(), "orvo_con.mdb ");
    CloseDatabase();
    EXPECT_FALSE(IsLocked());
    EXPECT_EQ(db.FilesInFolder(), "orvo_con.mdb ");
    EXPECT_EQ(Read(u"IN_2"), u"valve");
    EXPECT_EQ(db.Damage(), std::vector<std::string>{});
}

TEST_P(JetDatabaseTest, TheFileIsOnlyWrittenWhenTheDatabaseIsClosed) {
    const auto bytes = [&] {
        std::ifstream in(db.Path(), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    };
    const std::string sBefore = bytes();
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    ASSERT_TRUE(Store(u"IN_2", u"valve"));
    EXPECT_EQ(bytes(), sBefore);
    CloseDatabase();
    EXPECT_NE(bytes(), sBefore);
}

TEST_P(JetDatabaseTest, AFileThatSomebodyWritesIsReadAsItWas) {
    ChildProcess writer([&](const ChildProcess::Line& line) {
        OpenDatabase(kLongTextDatabase);
        Store(u"IN_1", u"from elsewhere");
        line.Say();
        ::pause();
    });
    ASSERT_EQ(writer.Hear(), '.');
    EXPECT_NE(Read(u"IN_1"), u"<failed>");
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    Store(u"IN_1", u"mine");
    CloseDatabase();
    writer.Kill();
    EXPECT_EQ(Read(u"IN_1"), u"from elsewhere");
    EXPECT_EQ(db.Damage(), std::vector<std::string>{});
}

TEST_P(JetDatabaseTest, AFileThatSomebodyHasOpenInAccessIsReadAndNotWritten) {
    fs::path lockFile = db.Path();
    lockFile.replace_extension(".ldb");
    std::ofstream(lockFile) << std::string(64, 'x');
    ChildProcess other([&](const ChildProcess::Line& line) {
        const int nFile = ::open(lockFile.c_str(), O_RDWR);
        struct flock lock {};
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        lock.l_start = 0x10000001;
        lock.l_len = 1;
        if (::fcntl(nFile, F_SETLK, &lock) == 0) line.Say();
        ::pause();
    });
    ASSERT_EQ(other.Hear(), '.');
    EXPECT_EQ(Read(u"IN_1"), u"pump");
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    const auto table = db.Engine().CreateRecordset();
    table->Open(u"Items", *g_Connection, CursorKind::Keyset, LockKind::Optimistic,
                kOptionUnspecified);
    table->AddNew();
    EXPECT_RAISES(ErrorNumber::EngineFailure, table->Update());
    CloseDatabase();
    other.Kill();
    EXPECT_EQ(db.Query("SELECT count(*) FROM Items"), (Rows{{"1"}}));
}

TEST_P(JetDatabaseTest, ALookUpIsRememberedWhileTheFileStandsStill) {
    MakeOld();
    sqlite::JetDatabase database(db.Path(), sqlite::LookAtFile(db.Path()).identity);
    Open(database);
    const auto first = sqlite::ReadQuery(database, kLookUp, true);
    EXPECT_TRUE(database.Rest());
    Open(database);
    EXPECT_EQ(sqlite::ReadQuery(database, kLookUp, true), first);
    db.Execute("INSERT INTO Items VALUES(2,'IO','IN_1')");
    Open(database);
    const auto second = sqlite::ReadQuery(database, kLookUp, true);
    EXPECT_NE(second, first);
    EXPECT_EQ(second->nRead, 2U);
}

TEST_P(JetDatabaseTest, AWriteOfOnesOwnEndsWhatIsRemembered) {
    MakeOld();
    sqlite::JetDatabase database(db.Path(), sqlite::LookAtFile(db.Path()).identity);
    Open(database);
    const auto first = sqlite::ReadQuery(database, kLookUp, true);
    sqlite::UpdateRow(database, "Items", first->readIds.front(), {{"KeyString", Text(u"IN_9")}});
    EXPECT_EQ(sqlite::ReadQuery(database, kLookUp, true)->nRead, 0U);
}

TEST_P(JetDatabaseTest, AFileThatAnotherTakesThePlaceOfIsReadAnew) {
    EXPECT_EQ(Read(u"IN_1"), u"pump");
    const TestDatabase other({}, sqlite::SystemTime, StoreFormat::Sqlite);
    SetDatabaseEngine(&db.Engine());
    ExecuteOn(other.Path(),
              "INSERT INTO Items VALUES(5,'IO','IN_1');INSERT INTO Messages VALUES(5,99,'x')");
    fs::copy_file(other.Path(), db.Folder() / "new");
    fs::rename(db.Folder() / "new", db.Path());
    EXPECT_EQ(Read(u"IN_1"), u"x");
}

TEST_P(JetDatabaseTest, AnUnprotectedFileBecomesWritableAgain) {
    ASSERT_EQ(::chmod(db.Path().c_str(), 0444), 0);
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    EXPECT_TRUE(Store(u"IN_2", u"valve"));  // silent, as for any failure
    CloseDatabase();
    EXPECT_EQ(Read(u"IN_2"), u"<none>");
    ASSERT_EQ(::chmod(db.Path().c_str(), 0644), 0);
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    EXPECT_TRUE(Store(u"IN_2", u"valve"));
    CloseDatabase();
    EXPECT_EQ(Read(u"IN_2"), u"valve");
}

TEST_P(JetDatabaseTest, CompactionGivesTheKindOfFileThatIsAskedFor) {
    const auto kindOf = [&](const Text& sType) {
        const fs::path copy = db.FileOf(u"copy.mdb");
        fs::remove(copy);
        db.Engine().CompactDatabase(u"Data Source=orvo_con.mdb", u"Data Source=copy.mdb" + sType);
        return sqlite::FormatOf(copy);
    };
    EXPECT_EQ(kindOf(u";Jet OLEDB:Engine Type=4"), StoreFormat::Jet3);
    EXPECT_EQ(kindOf(u";Jet OLEDB:Engine Type=5"), StoreFormat::Jet4);
    EXPECT_EQ(kindOf(u""), GetParam());
}

TEST_P(JetDatabaseTest, OtherTablesGoIntoAnSqliteFileWithTheirRowsAlone) {
    auto pages = std::make_unique<jet::MemoryPages>(
        GetParam() == StoreFormat::Jet3 ? jet::Generation::Jet3 : jet::Generation::Jet4);
    jet::MemoryPages& memory = *pages;
    {
        std::ifstream in(db.Path(), std::ios::binary);
        const std::string sBytes(std::istreambuf_iterator<char>(in), {});
        pages = std::make_unique<jet::MemoryPages>(memory.Format().generation,
                                                   jet::Bytes(sBytes.begin(), sBytes.end()));
    }
    jet::MemoryPages& copied = *pages;
    jet::AccessFile file(std::move(pages));
    jet::Table& table = file.CreateTable(
        {.sName = u"Shifts and \"more\"",
         .columns = {{.sName = u"Name", .type = jet::ColumnType::Text, .nCharacters = 20}},
         .indexes = {}});
    jet::Row row{std::u16string(u"early")};
    table.Insert(row);
    copied.Commit();
    const jet::Bytes bytes = copied.File();
    std::ofstream(db.Folder() / "more.mdb", std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    const fs::path made = db.Folder() / "made.db";
    EXPECT_EQ(sqlite::ConvertFile(db.Folder() / "more.mdb", made, StoreFormat::Sqlite),
              (std::vector<std::string>{
                  "the indexes and relationships of the table Shifts and \"more\""}));
    EXPECT_EQ(QueryOn(made, "SELECT Name FROM \"Shifts and \"\"more\"\"\""), (Rows{{"early"}}));
    EXPECT_EQ(QueryOn(made, "SELECT KeyString FROM Items"), (Rows{{"IN_1"}}));
}

TEST_P(JetDatabaseTest, AConversionThatFailsLeavesNothingBehind) {
    const TestDatabase other({}, sqlite::SystemTime, StoreFormat::Sqlite);
    SetDatabaseEngine(&db.Engine());
    other.Execute("INSERT INTO Items VALUES(1,'IO','\xF0\x9F\xA4\x96')");
    const fs::path made = db.Folder() / "made.mdb";
    EXPECT_RAISES(ErrorNumber::EngineFailure, sqlite::ConvertFile(other.Path(), made, GetParam()));
    EXPECT_EQ(db.FilesInFolder(), "orvo_con.mdb ");
}

}  // namespace
}  // namespace nomira::testing
