// What must not hurt the engine: files full of anything, and a death at any moment.
#include <sqlite3.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

#include "adapters/sqlite/ChildProcess.h"
#include "adapters/sqlite/StoreSchema.h"
#include "database/adoModul.h"
#include "langtools/BasicText.h"
#include "langtools/RuntimeError.h"
#include "testing/Random.h"
#include "testing/TestDatabase.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

namespace fs = std::filesystem;

Text KeyOf(int n) {
    return u"IN_" + DecimalText(n);
}

Text TextOf(int n) {
    return u"Clamp number " + DecimalText(n) + u" closed";
}

// --- Any bytes for a file.

class DamageTest : public ::testing::TestWithParam<StoreFormat> {
  protected:
    DamageTest() {
        db.Execute(
            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n LIMIT 400)"
            " INSERT INTO Items(Module,KeyString) SELECT 'IO','IN_'||i FROM n;"
            "INSERT INTO Messages SELECT Key_id,99,'text of '||KeyString FROM Items");
        std::ifstream in(db.Path(), std::ios::binary);
        sGood.assign(std::istreambuf_iterator<char>(in), {});
    }
    ~DamageTest() override { g_Connection.reset(); }

    // Puts the bytes where the store was, and does everything with them that the program does.
    void UseAsStore(const std::string& sBytes) {
        for (const auto& entry : fs::directory_iterator(db.Folder()))
            fs::remove(entry);
        std::ofstream(db.Path(), std::ios::binary) << sBytes;
        Text sText;
        ReadLongText(sText, u"IO", u"IN_17");
        const bool bOpen = OpenDatabase(kLongTextDatabase);
        nOpened += bOpen ? 1 : 0;
        StoreLongText(u"new", u"IO", u"IN_18");
        StoreLongText(u"new", u"IO", u"IN_9999");
        ReadAll();
        DeleteItemsByPrefix(u"IN_1", u"IO", 1);
        CloseDatabase();
        EXPECT_FALSE(g_Connection);
        try {
            db.Engine().CompactDatabase(u"DBQ=orvo_con.mdb", u"DBQ=copy.mdb");
        } catch (const RuntimeError&) {
            EXPECT_FALSE(fs::exists(db.Folder() / "copy.mdb"));
        }
    }

    TestDatabase db{{}, sqlite::SystemTime, GetParam()};
    std::string sGood;
    int nOpened = 0;

  private:
    void ReadAll() {
        if (!g_Connection) return;
        try {
            const auto rows = db.Engine().CreateRecordset();
            rows->Open(ExportReadStatement(u"IO", u"IN_"), *g_Connection, CursorKind::Static,
                       LockKind::ReadOnly, kOptionUnspecified);
            for (; !rows->Eof(); rows->MoveNext())
                rows->Field(u"String");
        } catch (const RuntimeError&) {
            // As good an answer as any.
        }
    }
};

std::string FormatName(const ::testing::TestParamInfo<StoreFormat>& info) {
    constexpr const char* kNames[]{"Sqlite", "Jet3", "Jet4"};
    return kNames[static_cast<int>(info.param)];
}

const auto kEachFormat =
    ::testing::Values(StoreFormat::Sqlite, StoreFormat::Jet3, StoreFormat::Jet4);
INSTANTIATE_TEST_SUITE_P(Formats, DamageTest, kEachFormat, FormatName);

TEST_P(DamageTest, TheUndamagedFileOpens) {
    UseAsStore(sGood);
    EXPECT_EQ(nOpened, 1);
    EXPECT_TRUE(fs::exists(db.Folder() / "copy.mdb"));
}

TEST_P(DamageTest, RandomBytesAreRefused) {
    Random random;
    for (int nRound = 0; nRound < 150; ++nRound) {
        SCOPED_TRACE(random.Seed() + ", round " + std::to_string(nRound));
        std::string sBytes(random.UpTo(9000), '\0');
        for (char& c : sBytes)
            c = static_cast<char>(random.UpTo(255));
        UseAsStore(sBytes);
    }
    EXPECT_EQ(nOpened, 0);
}

TEST_P(DamageTest, RandomBytesBehindAGoodHeaderDoNoHarm) {
    Random random;
    for (int nRound = 0; nRound < 150; ++nRound) {
        SCOPED_TRACE(random.Seed() + ", round " + std::to_string(nRound));
        std::string sBytes = sGood;
        for (std::size_t n = 100 + random.UpTo(12000); n < sBytes.size(); ++n)
            sBytes[n] = static_cast<char>(random.UpTo(255));
        UseAsStore(sBytes);
    }
}

TEST_P(DamageTest, ATruncatedFileDoesNoHarm) {
    for (std::size_t nSize = 0; nSize < sGood.size(); nSize += nSize < 200 ? 7 : 1021) {
        SCOPED_TRACE(nSize);
        UseAsStore(sGood.substr(0, nSize));
    }
}

TEST_P(DamageTest, FlippedBitsDoNoHarm) {
    Random random;
    for (int nRound = 0; nRound < 300; ++nRound) {
        SCOPED_TRACE(random.Seed() + ", round " + std::to_string(nRound));
        std::string sBytes = sGood;
        for (std::size_t nFlips = 1 + random.UpTo(20); nFlips > 0; --nFlips)
            sBytes[random.UpTo(sBytes.size() - 1)] ^= static_cast<char>(1U << random.UpTo(7));
        UseAsStore(sBytes);
    }
    EXPECT_GT(nOpened, 50) << "the flips should mostly get past the opening";
}

// --- A death at any moment.

// Stores rows and says so after each, opening and closing the file over and over, so that the
// death may also come while the file changes its mode.
void StoreForever(const ChildProcess::Line& line) {
    for (int n = 0;; ++n) {
        if (n % 7 == 0) OpenDatabase(kLongTextDatabase);
        StoreLongText(TextOf(n), u"IO", KeyOf(n));
        line.Say();
        if (n % 7 == 6) CloseDatabase();
    }
}

class KillTest : public ::testing::TestWithParam<StoreFormat> {};
INSTANTIATE_TEST_SUITE_P(Formats, KillTest, kEachFormat, FormatName);

TEST_P(KillTest, WhatWasStoredBeforeADeathIsThereAndTheFileIsSound) {
    Random random;
    int nStoredInAll = 0;
    for (int nRound = 0; nRound < 40; ++nRound) {
        SCOPED_TRACE(random.Seed() + ", round " + std::to_string(nRound));
        const TestDatabase db({}, sqlite::SystemTime, GetParam());
        int nStored = 0;
        {
            ChildProcess writer(StoreForever);
            for (std::size_t nAtLeast = random.UpTo(30); nAtLeast > 0; --nAtLeast)
                nStored += writer.Hear() == '.' ? 1 : 0;
            ::usleep(static_cast<useconds_t>(random.UpTo(3000)));
            writer.Kill();
            while (writer.Hear() == '.')
                ++nStored;
        }
        nStoredInAll += nStored;
        for (int n = 0; n < nStored; ++n) {
            Text sText;
            ASSERT_TRUE(ReadLongText(sText, u"IO", KeyOf(n)));
            ASSERT_EQ(sText, TextOf(n));
        }
        ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
        ASSERT_TRUE(StoreLongText(u"after", u"IO", u"IN_after"));
        CloseDatabase();
        for (const auto& entry : fs::directory_iterator(db.Folder()))
            EXPECT_EQ(entry.path(), db.Path());
        EXPECT_EQ(db.Damage(), std::vector<std::string>{});
    }
    EXPECT_GT(nStoredInAll, 40 * 5) << "the writers hardly came to write";
}

}  // namespace
}  // namespace nomira::testing
