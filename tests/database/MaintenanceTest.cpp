#include <filesystem>
#include <fstream>
#include <iterator>

#include "adapters/memory/MemoryMachine.h"
#include "database/FolderFiles.h"
#include "database/RecordingEngine.h"
#include "database/adoModul.h"
#include "langtools/RuntimeError.h"
#include "platform/Platform.h"
#include "testing/TestDatabase.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;
using Rows = std::vector<std::vector<std::string>>;

std::string BytesOf(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class CompactionTest : public ::testing::Test {
  protected:
    CompactionTest() {
        Platform platform;
        platform.files = &files;
        SetPlatform(platform);
        db.Execute(
            "INSERT INTO Items VALUES(7,'IO','IN_1');"
            "INSERT INTO Messages VALUES(7,99,'Clamp')");
    }
    ~CompactionTest() override { SetPlatform({}); }

    Rows Texts() const {
        return db.Query("SELECT KeyString, String FROM Items JOIN Messages USING(Key_id)");
    }
    fs::path Temporary() const { return db.FileOf(kCompactionTempFile); }

    TestDatabase db;
    FolderFiles files{db.Folder()};
    RecordingEngine engine{db.Engine()};
};

TEST_F(CompactionTest, PutsACompactedCopyInTheLiveFilesPlace) {
    db.Execute(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n LIMIT 50)"
        " INSERT INTO Messages SELECT 7,i,printf('%09000d',i) FROM n;"
        "DELETE FROM Messages WHERE Language_id<>99");
    const auto nBefore = fs::file_size(db.Path());
    CompactLongTextDatabase();
    EXPECT_LT(fs::file_size(db.Path()), nBefore);
    EXPECT_FALSE(fs::exists(Temporary()));
    EXPECT_EQ(Texts(), (Rows{{"IN_1", "Clamp"}}));
}

TEST_F(CompactionTest, TakesItsStepsInOrder) {
    CompactLongTextDatabase();
    EXPECT_EQ(files.calls, (Lines{"dir orvo_con.mdb", "dir xxx_con.mdb", "kill orvo_con.mdb",
                                  "name xxx_con.mdb orvo_con.mdb"}));
}

TEST_F(CompactionTest, AsksTheEngineForTheFileFormatOfTypeFour) {
    CompactLongTextDatabase();
    EXPECT_EQ(engine.calls,
              Lines{"compact Provider=Microsoft.Jet.OLEDB.4.0;Data Source="
                    "C:\\tqx\\data\\orvo_con.mdb | Provider=Microsoft.Jet.OLEDB.4.0;Data Source="
                    "C:\\TQX\\Data\\xxx_con.mdb;Jet OLEDB:Engine Type=4"});
}

TEST_F(CompactionTest, WithoutALiveFileNothingIsCreatedOrChanged) {
    db.RemoveFile();
    CompactLongTextDatabase();
    EXPECT_EQ(engine.calls, Lines{});
    EXPECT_EQ(files.calls, Lines{"dir orvo_con.mdb"});
    EXPECT_TRUE(fs::is_empty(db.Folder()));
}

TEST_F(CompactionTest, AHiddenLiveFileCountsAsAbsent) {
    files.hidden = {"orvo_con.mdb"};
    const std::string sBefore = BytesOf(db.Path());
    CompactLongTextDatabase();
    EXPECT_EQ(engine.calls, Lines{});
    EXPECT_EQ(BytesOf(db.Path()), sBefore);
}

TEST_F(CompactionTest, ALeftoverTemporaryFileEndsItAndStays) {
    std::ofstream(Temporary()) << "left over";
    const std::string sBefore = BytesOf(db.Path());
    for (int nTry = 0; nTry < 2; ++nTry) {
        CompactLongTextDatabase();
        EXPECT_EQ(BytesOf(db.Path()), sBefore);
        EXPECT_EQ(BytesOf(Temporary()), "left over");
    }
    fs::remove(Temporary());
    CompactLongTextDatabase();
    EXPECT_FALSE(fs::exists(Temporary()));
    EXPECT_EQ(files.calls.back(), "name xxx_con.mdb orvo_con.mdb");
}

TEST_F(CompactionTest, AFailedCompactionLeavesTheLiveFile) {
    engine.FailCalls("compact");
    const std::string sBefore = BytesOf(db.Path());
    CompactLongTextDatabase();
    EXPECT_EQ(BytesOf(db.Path()), sBefore);
    EXPECT_EQ(files.calls, Lines{"dir orvo_con.mdb"});
}

TEST_F(CompactionTest, ADamagedLiveFileStaysAsItIs) {
    std::ofstream(db.Path(), std::ios::trunc) << "no database at all, only a line of text";
    const std::string sBefore = BytesOf(db.Path());
    CompactLongTextDatabase();
    EXPECT_EQ(BytesOf(db.Path()), sBefore);
    EXPECT_FALSE(fs::exists(Temporary()));
}

TEST_F(CompactionTest, ACopyThatIsNotSeenIsNotPutInPlace) {
    files.hidden = {"xxx_con.mdb"};
    CompactLongTextDatabase();
    EXPECT_TRUE(fs::exists(Temporary()));
    EXPECT_EQ(files.calls.back(), "dir xxx_con.mdb");
    EXPECT_EQ(Texts(), (Rows{{"IN_1", "Clamp"}}));
}

TEST_F(CompactionTest, AFailedDeleteLeavesBothFiles) {
    files.bKillFails = true;
    CompactLongTextDatabase();
    EXPECT_TRUE(fs::exists(db.Path()));
    EXPECT_TRUE(fs::exists(Temporary()));
    EXPECT_EQ(files.calls.back(), "kill orvo_con.mdb");
}

TEST_F(CompactionTest, AFailedRenameLeavesTheDataUnderTheTemporaryNameOnly) {
    files.bNameFails = true;
    CompactLongTextDatabase();
    EXPECT_FALSE(fs::exists(db.Path()));
    EXPECT_EQ(QueryOn(Temporary(), "SELECT KeyString FROM Items"), (Rows{{"IN_1"}}));
    EXPECT_FALSE(OpenDatabase(kLongTextDatabase));
}

TEST_F(CompactionTest, DoesNotNotify) {
    memory::MemoryClosedLibrary library;
    memory::MemoryProcesses processes;
    processes.Add(u"C:\\tqx\\bin\\OrvoDB.exe");
    Platform platform;
    platform.files = &files;
    platform.processes = &processes;
    platform.closedLibrary = &library;
    SetPlatform(platform);
    CompactLongTextDatabase();
    EXPECT_EQ(files.calls.back(), "name xxx_con.mdb orvo_con.mdb");
    EXPECT_EQ(library.nRefreshes, 0);
}

TEST_F(CompactionTest, WithoutAnEngineNothingIsEvenLookedAt) {
    SetDatabaseEngine(nullptr);
    CompactLongTextDatabase();
    EXPECT_EQ(files.calls, Lines{});
}

TEST_F(CompactionTest, LookUpsGoOnOverTheNewFile) {
    Text sText;
    ASSERT_TRUE(ReadLongText(sText, u"IO", u"IN_1"));
    CompactLongTextDatabase();
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    StoreLongText(u"changed", u"IO", u"IN_1");
    CloseDatabase();
    ASSERT_TRUE(ReadLongText(sText, u"IO", u"IN_1"));
    EXPECT_EQ(sText, u"changed");
    EXPECT_EQ(Texts(), (Rows{{"IN_1", "changed"}}));
}

TEST(NotifyTest, WithTheDatabaseProcessTheLibraryIsCalledOnce) {
    memory::MemoryMachine machine;
    machine.processes.Add(u"C:\\tqx\\bin\\ORVODB.EXE");
    NotifyDatabaseChanged();
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 1);
}

TEST(NotifyTest, WithoutTheDatabaseProcessTheLibraryIsNotTouched) {
    memory::MemoryMachine machine;
    machine.processes.Add(u"C:\\tqx\\bin\\vexon3.exe");
    machine.processes.Add(u"C:\\OrvoDB\\other.exe");
    NotifyDatabaseChanged();
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 0);
}

// The notice has no trap of its own: what the library raises goes through.
TEST(NotifyTest, AFailureOfTheLibraryIsNotTrapped) {
    class FailingLibrary : public ClosedLibrary {
      public:
        void RefreshConfDb() override { Raise(ErrorNumber::FileNotFound); }
    } library;
    memory::MemoryProcesses processes;
    processes.Add(u"C:\\tqx\\bin\\OrvoDB.exe");
    Platform platform;
    platform.processes = &processes;
    platform.closedLibrary = &library;
    SetPlatform(platform);
    EXPECT_THROW(NotifyDatabaseChanged(), RuntimeError);
    SetPlatform({});
}

}  // namespace
}  // namespace nomira::testing
