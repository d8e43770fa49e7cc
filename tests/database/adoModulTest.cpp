#include "database/adoModul.h"

#include <filesystem>
#include <fstream>

#include "database/RecordingEngine.h"
#include "langtools/ProgramState.h"
#include "langtools/RuntimeError.h"
#include "testing/TestDatabase.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

using Lines = std::vector<std::string>;

const std::string kTextOfLongTexts =
    "text DRIVER={Microsoft Access Driver (*.mdb)};DBQ=C:\\tqx\\data\\orvo_con.mdb"
    ";DefaultDir=C:\\Temp";

class adoModulTest : public ::testing::Test {
  protected:
    ~adoModulTest() override { g_Connection.reset(); }

    void AddText(const std::string& sModule, const std::string& sKey, const std::string& sText) {
        db.Execute("INSERT INTO Items(Module, KeyString) VALUES('" + sModule + "','" + sKey +
                   "');INSERT INTO Messages VALUES((SELECT max(Key_id) FROM Items), 99, " + sText +
                   ")");
    }

    TestDatabase db;
    RecordingEngine engine{db.Engine()};
};

TEST_F(adoModulTest, OpenDatabaseOpensTheSharedConnection) {
    EXPECT_TRUE(OpenDatabase(kLongTextDatabase));
    ASSERT_TRUE(g_Connection);
    EXPECT_EQ(g_Connection->State(), kStateOpen);
}

TEST_F(adoModulTest, OpenDatabaseUsesTheTextAndAccountOfTheDriver) {
    OpenDatabase(u"C:\\tqx\\data\\orvo_con.mdb");
    EXPECT_EQ(engine.calls, (Lines{kTextOfLongTexts, "open '' 'admin' '' -1", "state"}));
}

TEST_F(adoModulTest, OpenDatabaseOnMissingFileLeavesNoConnection) {
    db.RemoveFile();
    EXPECT_FALSE(OpenDatabase(kLongTextDatabase));
    EXPECT_FALSE(g_Connection);
    EXPECT_FALSE(std::filesystem::exists(db.Path()));
}

TEST_F(adoModulTest, OpenDatabaseOnMissingFileAlsoLosesTheConnectionThatWasOpen) {
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    EXPECT_FALSE(OpenDatabase(kCatalogueDatabase));
    EXPECT_FALSE(g_Connection);
    EXPECT_EQ(engine.nConnections, 0);
}

TEST_F(adoModulTest, SecondOpenDatabaseClosesTheFirstConnectionAndThenOpens) {
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    engine.calls.clear();
    EXPECT_TRUE(OpenDatabase(kLongTextDatabase));
    EXPECT_EQ(engine.calls,
              (Lines{"state", "close", kTextOfLongTexts, "open '' 'admin' '' -1", "state"}));
    EXPECT_EQ(engine.nConnections, 1);
}

TEST_F(adoModulTest, OpenDatabaseReplacesAConnectionThatWasClosedByHand) {
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    g_Connection->Close();
    EXPECT_TRUE(OpenDatabase(kLongTextDatabase));
    EXPECT_EQ(engine.nConnections, 1);
}

TEST_F(adoModulTest, OpenDatabaseOnTheCatalogueTakesTheConnectionAwayFromTheLongTexts) {
    ExecuteOn(db.CreateCatalogue(), "INSERT INTO Items(Module,KeyString) VALUES('Nomira','End')");
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    ASSERT_TRUE(OpenDatabase(kCatalogueDatabase));
    EXPECT_EQ(FindKeyId(u"Nomira", u"End", g_Connection.get()), 1);
}

TEST_F(adoModulTest, OpenDatabaseIsFalseAtEveryFailingStep) {
    for (const char* sStep : {"text", "open", "state"}) {
        engine.FailCalls(sStep);
        EXPECT_FALSE(OpenDatabase(kLongTextDatabase)) << sStep;
        EXPECT_FALSE(g_Connection) << sStep;
    }
}

TEST_F(adoModulTest, OpenDatabaseWithoutAnEngineIsFalse) {
    SetDatabaseEngine(nullptr);
    EXPECT_FALSE(OpenDatabase(kLongTextDatabase));
    EXPECT_FALSE(g_Connection);
}

TEST_F(adoModulTest, CloseDatabaseClosesAndDropsTheConnection) {
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    engine.calls.clear();
    CloseDatabase();
    EXPECT_EQ(engine.calls, Lines{"close"});
    EXPECT_FALSE(g_Connection);
}

TEST_F(adoModulTest, CloseDatabaseWithNothingOpenDoesNothing) {
    CloseDatabase();
    EXPECT_FALSE(g_Connection);
    EXPECT_EQ(engine.calls, Lines{});
}

TEST_F(adoModulTest, CloseDatabaseDropsAConnectionThatFailsToClose) {
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    engine.FailCalls("close");
    CloseDatabase();
    EXPECT_FALSE(g_Connection);
}

TEST_F(adoModulTest, ProgramResetDropsTheSharedConnection) {
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    ResetProgramState();
    EXPECT_FALSE(g_Connection);
}

TEST_F(adoModulTest, ReadLongTextFindsTheTextOfKeyAndModule) {
    AddText("IO", "IN_1", "'Clamp closed'");
    AddText("Notice", "IN_1", "'Other'");
    Text sText;
    EXPECT_TRUE(ReadLongText(sText, u"IO", u"IN_1"));
    EXPECT_EQ(sText, u"Clamp closed");
    EXPECT_TRUE(ReadLongText(sText, u"Notice", u"IN_1"));
    EXPECT_EQ(sText, u"Other");
}

TEST_F(adoModulTest, ReadLongTextOfAnAbsentKeyIsTrueAndLeavesTheText) {
    Text sText;
    EXPECT_TRUE(ReadLongText(sText, u"IO", u"IN_1"));
    EXPECT_EQ(sText, u"");
    sText = u"as it was";
    EXPECT_TRUE(ReadLongText(sText, u"IO", u"IN_1"));
    EXPECT_EQ(sText, u"as it was");
}

TEST_F(adoModulTest, ReadLongTextWithoutATextIsTrueAndLeavesTheText) {
    AddText("IO", "IN_1", "NULL");
    db.Execute(
        "INSERT INTO Items(Module, KeyString) VALUES('IO','IN_2');"
        "INSERT INTO Messages VALUES((SELECT max(Key_id) FROM Items), 49, 'andere Sprache')");
    for (const TextView sKey : {u"IN_1", u"IN_2"}) {
        Text sText = u"as it was";
        EXPECT_TRUE(ReadLongText(sText, u"IO", sKey));
        EXPECT_EQ(sText, u"as it was") << Printable(sKey);
    }
}

TEST_F(adoModulTest, ReadLongTextWithAnApostropheInTheKeyIsTrueAndLeavesTheText) {
    Text sText = u"as it was";
    EXPECT_TRUE(ReadLongText(sText, u"IO", u"IN_'1"));
    EXPECT_EQ(sText, u"as it was");
}

TEST_F(adoModulTest, ReadLongTextWithTheFileMissingIsFalse) {
    db.RemoveFile();
    Text sText = u"as it was";
    EXPECT_FALSE(ReadLongText(sText, u"IO", u"IN_1"));
    EXPECT_EQ(sText, u"as it was");
    EXPECT_EQ(engine.nConnections, 0);
}

TEST_F(adoModulTest, ReadLongTextThatCannotOpenDropsItsConnectionWithoutClosingIt) {
    AddText("IO", "IN_1", "'Clamp closed'");
    for (const char* sStep : {"text", "open"}) {
        engine.FailCalls(sStep);
        Text sText = u"as it was";
        EXPECT_FALSE(ReadLongText(sText, u"IO", u"IN_1")) << sStep;
        EXPECT_EQ(sText, u"as it was");
        EXPECT_EQ(engine.nConnections, 0);
    }
    EXPECT_EQ(std::count(engine.calls.begin(), engine.calls.end(), "close"), 0);
}

TEST_F(adoModulTest, ReadLongTextWithoutAnEngineIsFalse) {
    SetDatabaseEngine(nullptr);
    Text sText;
    EXPECT_FALSE(ReadLongText(sText, u"IO", u"IN_1"));
}

TEST_F(adoModulTest, ReadLongTextUsesAConnectionOfItsOwn) {
    AddText("IO", "IN_1", "'Clamp closed'");
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    const Connection* shared = g_Connection.get();
    engine.calls.clear();
    Text sText;
    EXPECT_TRUE(ReadLongText(sText, u"IO", u"IN_1"));
    EXPECT_EQ(sText, u"Clamp closed");
    EXPECT_EQ(g_Connection.get(), shared);
    EXPECT_EQ(g_Connection->State(), kStateOpen);
    EXPECT_EQ(engine.calls.front(), kTextOfLongTexts);
    EXPECT_EQ(engine.calls.at(1), "open '' 'admin' '' -1");
    EXPECT_EQ(engine.nConnections, 1);
}

TEST_F(adoModulTest, ReadLongTextOpensAndClosesOncePerName) {
    AddText("IO", "IN_1", "'Clamp closed'");
    Text sText;
    ReadLongText(sText, u"IO", u"IN_1");
    ReadLongText(sText, u"IO", u"IN_1");
    const auto opens =
        std::count(engine.calls.begin(), engine.calls.end(), "open '' 'admin' '' -1");
    const auto closes = std::count(engine.calls.begin(), engine.calls.end(), "close");
    EXPECT_EQ(opens, 2);
    EXPECT_EQ(closes, 2);
    EXPECT_EQ(engine.nConnections, 0);
}

TEST_F(adoModulTest, ReadLongTextSeesWhatTheSharedConnectionHasJustStored) {
    ASSERT_TRUE(OpenDatabase(kLongTextDatabase));
    ASSERT_TRUE(StoreLongText(u"Clamp", u"IO", u"IN_1"));
    Text sText;
    EXPECT_TRUE(ReadLongText(sText, u"IO", u"IN_1"));
    EXPECT_EQ(sText, u"Clamp");
}

TEST(DatabaseEngineTest, UseWithoutAnEngineRaisesObjectNotSet) {
    SetDatabaseEngine(nullptr);
    try {
        TheDatabaseEngine();
        FAIL() << "nothing raised";
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.Number(), ErrorNumber::ObjectNotSet);
    }
}

}  // namespace
}  // namespace nomira::testing
