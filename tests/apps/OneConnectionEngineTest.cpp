#include "apps/nomiractl/OneConnectionEngine.h"

#include "adapters/jet/FilePages.h"
#include "database/adoModul.h"
#include "langtools/RuntimeError.h"
#include "testing/Raised.h"
#include "testing/TestDatabase.h"
#include "testing/TextPrinting.h"

namespace nomira::companion {
namespace {

using nomira::testing::Raised;
using nomira::testing::StoreFormat;
using nomira::testing::TestDatabase;

class OneConnectionEngineTest : public ::testing::Test {
  protected:
    static std::unique_ptr<Recordset> Run(TextView sStatement) {
        auto recordset = TheDatabaseEngine().CreateRecordset();
        recordset->Open(sStatement, *g_Connection, CursorKind::Static, LockKind::ReadOnly,
                        kOptionUnspecified);
        return recordset;
    }
    // As another process sees them; those of this one share an Access file.
    std::size_t StoredTexts() const {
        if (m_database.Format() == StoreFormat::Sqlite)
            return m_database.Query("SELECT * FROM Messages").size();
        jet::AccessFile file(jet::FilePages::Open(m_database.Path(), jet::OpenMode::ReadOnly));
        return file.FindTable(u"Messages")->RowCount();
    }

    TestDatabase m_database;
};

TEST_F(OneConnectionEngineTest, ATransactionSpansWhatTheCoreOpensAndCloses) {
    OneConnectionEngine engine(m_database.Engine());
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    engine.Begin();
    StoreLongText(u"one", u"IO", u"IN_1");
    CloseDatabase();
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    StoreLongText(u"two", u"IO", u"IN_2");
    CloseDatabase();
    EXPECT_EQ(StoredTexts(), 0U);
    engine.Commit();
    EXPECT_EQ(StoredTexts(), 2U);
}

TEST_F(OneConnectionEngineTest, WhatIsNotCommittedIsRolledBack) {
    {
        OneConnectionEngine engine(m_database.Engine());
        ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
        engine.Begin();
        StoreLongText(u"one", u"IO", u"IN_1");
        CloseDatabase();
    }
    EXPECT_EQ(StoredTexts(), 0U);
}

TEST_F(OneConnectionEngineTest, TheInnerEngineIsInUseAgainAfterwards) {
    { const OneConnectionEngine engine(m_database.Engine()); }
    EXPECT_EQ(&TheDatabaseEngine(), &m_database.Engine());
}

TEST_F(OneConnectionEngineTest, KeepsTheFirstFailureThatTheCoreTraps) {
    OneConnectionEngine engine(m_database.Engine());
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    EXPECT_FALSE(engine.Failure());
    EXPECT_FALSE(StoreLongText(u"x", u"IO", u"it's no key"));
    ASSERT_TRUE(engine.Failure());
    EXPECT_NE(engine.Failure()->find(u"syntax error"), Text::npos);
    const Text sFirst = *engine.Failure();
    Raised([] { Run(u"SELECT nothing FROM nowhere"); });
    EXPECT_EQ(*engine.Failure(), sFirst);
}

TEST_F(OneConnectionEngineTest, WhatTheCoreMeansToTrapIsNoFailure) {
    OneConnectionEngine engine(m_database.Engine());
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    DeleteItemsByPrefix(u"IN_", u"IO", 0);  // ends on a recordset that isn't open
    Text sText;
    EXPECT_FALSE(ReadMessageString(0, sText, g_Connection.get()));  // no current row
    EXPECT_FALSE(engine.Failure());
}

TEST_F(OneConnectionEngineTest, AMissingFileIsAFailureWithTheSystemsWords) {
    m_database.RemoveFile();
    OneConnectionEngine engine(m_database.Engine());
    EXPECT_FALSE(OpenDatabase(kLongTextDatabase));
    EXPECT_EQ(engine.Failure(), u"No such file or directory");
}

TEST_F(OneConnectionEngineTest, OpensOneDatabaseOnly) {
    m_database.CreateCatalogue();
    OneConnectionEngine engine(m_database.Engine());
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    EXPECT_FALSE(OpenDatabase(kCatalogueDatabase));
}

TEST_F(OneConnectionEngineTest, DoesNotCompact) {
    OneConnectionEngine engine(m_database.Engine());
    EXPECT_EQ(Raised([&] { engine.CompactDatabase(u"Data Source=a", u"Data Source=b"); }),
              ErrorNumber::EngineFailure);
}

TEST_F(OneConnectionEngineTest, TheCoresConnectionCannotEndTheTransaction) {
    OneConnectionEngine engine(m_database.Engine());
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    engine.Begin();
    EXPECT_EQ(Raised([] { g_Connection->BeginTrans(); }), ErrorNumber::EngineFailure);
    EXPECT_EQ(Raised([] { g_Connection->CommitTrans(); }), ErrorNumber::EngineFailure);
    EXPECT_EQ(Raised([] { g_Connection->RollbackTrans(); }), ErrorNumber::EngineFailure);
}

TEST_F(OneConnectionEngineTest, AConnectionThatTheCoreHasClosedIsOfNoUse) {
    OneConnectionEngine engine(m_database.Engine());
    EXPECT_EQ(Raised([&] { engine.Begin(); }), ErrorNumber::ObjectClosed);
    const auto connection = engine.CreateConnection();
    EXPECT_EQ(Raised([&] { connection->Close(); }), ErrorNumber::ObjectClosed);
    EXPECT_EQ(Raised([&] {
                  engine.CreateRecordset()->Open(u"Items", *connection, CursorKind::Static,
                                                 LockKind::ReadOnly, kOptionUnspecified);
              }),
              ErrorNumber::ObjectClosed);
}

}  // namespace
}  // namespace nomira::companion
