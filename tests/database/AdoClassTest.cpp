#include "database/AdoClass.h"

#include "database/RecordingEngine.h"
#include "database/adoModul.h"
#include "testing/TestDatabase.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

using Lines = std::vector<std::string>;

constexpr TextView kAllKeys = u"SELECT Items.KeyString FROM Items";

class Control : public DataControl {
  public:
    std::unique_ptr<nomira::Recordset> recordset;
    nomira::Recordset* Recordset() override { return recordset.get(); }
};

class AdoClassTest : public ::testing::Test {
  protected:
    AdoClassTest() {
        db.Execute("INSERT INTO Items(Module,KeyString) VALUES('IO','IN_1'),('IO','IN_2')");
        control.recordset = engine.CreateRecordset();
    }

    TestDatabase db;
    RecordingEngine engine{db.Engine()};
    Control control;
    AdoClass ado;
};

TEST_F(AdoClassTest, OpensTheControlsRecordsetOnAConnectionOfItsOwn) {
    Recordset* recordset = ado.OpenDataSource(kLongTextDatabase, control, kAllKeys);
    ASSERT_EQ(recordset, control.recordset.get());
    EXPECT_EQ(engine.calls,
              (Lines{"provider Microsoft.Jet.OLEDB.4.0",
                     "text Data Source=C:\\tqx\\data\\orvo_con.mdb", "open '' 'admin' '' -1",
                     "recordset open SELECT Items.KeyString FROM Items | keyset optimistic -1"}));
    EXPECT_EQ(std::get<Text>(recordset->Field(u"KeyString")), u"IN_1");
    EXPECT_FALSE(g_Connection);
}

TEST_F(AdoClassTest, TheCurrentRowCanBeChanged) {
    Recordset* recordset = ado.OpenDataSource(kLongTextDatabase, control, kAllKeys);
    ASSERT_NE(recordset, nullptr);
    recordset->MoveNext();
    recordset->SetField(u"KeyString", Text(u"IN_9"));
    recordset->Update();
    EXPECT_EQ(db.Query("SELECT KeyString FROM Items ORDER BY Key_id"),
              (std::vector<Lines>{{"IN_1"}, {"IN_9"}}));
}

TEST_F(AdoClassTest, CloseDataSourceClosesTheConnectionAndTheRecordsetWithIt) {
    ado.OpenDataSource(kLongTextDatabase, control, kAllKeys);
    engine.calls.clear();
    ado.CloseDataSource();
    EXPECT_EQ(engine.calls, Lines{"close"});
    EXPECT_EQ(control.recordset->State(), kStateClosed);
}

TEST_F(AdoClassTest, CloseDataSourceWithNothingOpenDoesNothing) {
    ado.CloseDataSource();
    ado.OpenDataSource(kLongTextDatabase, control, kAllKeys);
    ado.CloseDataSource();
    engine.calls.clear();
    ado.CloseDataSource();
    EXPECT_EQ(engine.calls, Lines{});
}

TEST_F(AdoClassTest, CloseDataSourceKeepsAFailureToItself) {
    ado.OpenDataSource(kLongTextDatabase, control, kAllKeys);
    engine.FailCalls("close");
    ado.CloseDataSource();
    EXPECT_EQ(engine.calls.back(), "close");
}

TEST_F(AdoClassTest, AMissingFileGivesNoRecordset) {
    db.RemoveFile();
    EXPECT_EQ(ado.OpenDataSource(kLongTextDatabase, control, kAllKeys), nullptr);
    EXPECT_EQ(engine.calls.back(), "open '' 'admin' '' -1");
}

TEST_F(AdoClassTest, AWrongQueryGivesNoRecordsetAndClosesTheConnection) {
    EXPECT_EQ(ado.OpenDataSource(kLongTextDatabase, control, u"SELECT x FROM Nowhere"), nullptr);
    EXPECT_EQ(engine.calls.back(), "close");
}

TEST_F(AdoClassTest, AControlWithoutRecordsetGivesNone) {
    control.recordset.reset();
    EXPECT_EQ(ado.OpenDataSource(kLongTextDatabase, control, kAllKeys), nullptr);
}

TEST_F(AdoClassTest, WithoutAnEngineThereIsNoRecordset) {
    SetDatabaseEngine(nullptr);
    EXPECT_EQ(ado.OpenDataSource(kLongTextDatabase, control, kAllKeys), nullptr);
}

}  // namespace
}  // namespace nomira::testing
