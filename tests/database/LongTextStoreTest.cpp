#include <string>
#include <vector>

#include "database/RecordingEngine.h"
#include "database/adoModul.h"
#include "testing/TestDatabase.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

using Lines = std::vector<std::string>;
using Rows = std::vector<std::vector<std::string>>;

const std::string kAllItems = "SELECT Key_id, Module, KeyString FROM Items ORDER BY 1";
const std::string kAllMessages = "SELECT Key_id, Language_id, String FROM Messages ORDER BY rowid";

// Tables of Access files as the store has them; tests make others of them.
jet::NewColumn Number(const char16_t* sName) {
    return {.sName = sName, .type = jet::ColumnType::Long};
}
jet::NewColumn Characters(const char16_t* sName) {
    return {.sName = sName, .type = jet::ColumnType::Text, .nCharacters = 255};
}
jet::NewTable ItemsTable(jet::NewColumn keyId) {
    return {.sName = u"Items",
            .columns = {std::move(keyId), Characters(u"Module"), Characters(u"KeyString")},
            .indexes = {}};
}
jet::NewTable MessagesTable() {
    return {.sName = u"Messages",
            .columns = {Number(u"Key_id"), Number(u"Language_id"), Characters(u"String")},
            .indexes = {}};
}

class LongTextStoreTest : public ::testing::Test {
  protected:
    LongTextStoreTest() { OpenDatabase(kLongTextDatabase); }
    ~LongTextStoreTest() override { g_Connection.reset(); }

    Connection* Shared() { return g_Connection.get(); }
    // Runs statements from outside; an item and its message in one line.
    void Add(const std::string& sModule, const std::string& sKey, const std::string& sText) {
        db.Execute("INSERT INTO Items(Module, KeyString) VALUES('" + sModule + "','" + sKey +
                   "');INSERT INTO Messages VALUES((SELECT max(Key_id) FROM Items), 99, '" + sText +
                   "')");
    }

    // Makes the store anew, by statements on an SQLite file, or as an Access file of these tables.
    void Remake(const std::string& sStatements, const std::vector<jet::NewTable>& tables) {
        CloseDatabase();
        if (db.Format() == StoreFormat::Sqlite)
            db.Execute(sStatements);
        else
            WriteAccessFile(db.Path(), db.Format(), tables);
        OpenDatabase(kLongTextDatabase);
    }
    // A store that takes no key and no text beyond ten characters.
    void RefuseLong() {
        CloseDatabase();
        CreateRefusingStore(db.Path(), db.Format());
        OpenDatabase(kLongTextDatabase);
    }

    TestDatabase db;
};

// The same, with every call on the engine written down from the opening on.
class StoreStatementTest : public LongTextStoreTest {
  protected:
    StoreStatementTest() {
        OpenDatabase(kLongTextDatabase);
        engine.calls.clear();
    }
    ~StoreStatementTest() override { g_Connection.reset(); }

    RecordingEngine engine{db.Engine()};
};

// --- What goes to the engine, word for word.

TEST_F(StoreStatementTest, FindKeyIdRunsItsQuery) {
    Add("IO", "IN_1", "Clamp");
    FindKeyId(u"IO", u"IN_1", Shared());
    EXPECT_EQ(engine.calls, (Lines{"recordset open SELECT Items.Key_id FROM Items WHERE "
                                   "(((Items.KeyString)='IN_1') AND ((Items.Module)='IO'))"
                                   " | keyset optimistic -1",
                                   "field Key_Id", "recordset close"}));
}

TEST_F(StoreStatementTest, ReadMessageStringRunsItsQuery) {
    Add("IO", "IN_1", "Clamp");
    Text sText;
    ReadMessageString(1, sText, Shared());
    EXPECT_EQ(engine.calls,
              (Lines{"recordset open SELECT Messages.Key_id,Messages.Language_id, Messages.String "
                     "FROM Messages WHERE ( (Messages.Language_id=99) AND (Messages.Key_id)=1)"
                     " | keyset pessimistic -1",
                     "field String", "recordset close"}));
}

TEST_F(StoreStatementTest, ANegativeKeyIdIsPastedInDecimal) {
    Text sText;
    ReadMessageString(-12, sText, Shared());
    EXPECT_NE(engine.calls.front().find("(Messages.Key_id)=-12)"), std::string::npos);
}

TEST_F(StoreStatementTest, InsertMessageFillsTheTableInOrder) {
    Add("IO", "IN_1", "Clamp");
    InsertMessage(1, u"Text", Shared());
    EXPECT_EQ(engine.calls,
              (Lines{"recordset open Messages | keyset pessimistic -1", "add", "set Key_Id",
                     "set Language_id", "set String", "update", "recordset close"}));
}

TEST_F(StoreStatementTest, InsertItemFillsTheTableInOrderAndReadsTheKeyIdAfterwards) {
    std::int32_t nKeyId = 0;
    InsertItem(u"IO", u"IN_1", nKeyId, Shared());
    EXPECT_EQ(engine.calls,
              (Lines{"recordset open Items | keyset optimistic -1", "add", "set Module",
                     "set KeyString", "update", "field Key_Id", "recordset close"}));
}

TEST_F(StoreStatementTest, UpdateMessageRunsItsQueryAndCommitsBeforeItReadsTheKeyId) {
    Add("IO", "IN_1", "Clamp");
    UpdateMessage(1, u"Text", Shared());
    EXPECT_EQ(engine.calls,
              (Lines{"recordset open SELECT Messages.Key_id,Messages.Language_id, Messages.String "
                     "FROM Messages WHERE ((Messages.Language_id=99) AND (Messages.Key_id)=1)"
                     " | keyset optimistic -1",
                     "set String", "update", "field Key_Id", "recordset close"}));
}

TEST_F(StoreStatementTest, DeleteItemsByPrefixRunsItsStatementAndItsCloseFailsInSilence) {
    DeleteItemsByPrefix(u"IN_", u"IO", 1024);
    EXPECT_EQ(engine.calls,
              (Lines{"recordset open DELETE FROM Items WHERE (((Items.KeyString) Like 'IN_%'))"
                     " | static pessimistic -1",
                     "recordset close"}));
    EXPECT_EQ(engine.nRecordsets, 0);
}

TEST_F(StoreStatementTest, StoreLongTextLooksUpInItsOwnWords) {
    StoreLongText(u"Clamp", u"IO", u"IN_1");
    EXPECT_EQ(engine.Opened(),
              (Lines{"SELECT Items.Key_id FROM ITEMS WHERE "
                     "((Items.KeyString)='IN_1') AND ((Items.Module)='IO')"
                     " | static read-only -1",
                     "Items | keyset optimistic -1", "Messages | keyset pessimistic -1"}));
}

TEST_F(StoreStatementTest, StoreLongTextOfAKnownKeyMakesOneQueryForTheUpdate) {
    Add("IO", "IN_1", "Clamp");
    StoreLongText(u"Clamp", u"IO", u"IN_1");
    EXPECT_EQ(engine.Opened().size(), 2U);
    EXPECT_EQ(engine.Opened().back(),
              "SELECT Messages.Key_id,Messages.Language_id, Messages.String FROM Messages "
              "WHERE ((Messages.Language_id=99) AND (Messages.Key_id)=1) | keyset optimistic -1");
}

TEST_F(StoreStatementTest, StoreLongTextOfANewKeyTakesItsStepsInOrder) {
    StoreLongText(u"Clamp", u"IO", u"IN_1");
    EXPECT_EQ(
        engine.calls,
        (Lines{"recordset open SELECT Items.Key_id FROM ITEMS WHERE "
               "((Items.KeyString)='IN_1') AND ((Items.Module)='IO') | static read-only -1",
               "recordset open Items | keyset optimistic -1", "add", "set Module", "set KeyString",
               "update", "field Key_Id", "recordset close",
               "recordset open Messages | keyset pessimistic -1", "add", "set Key_Id",
               "set Language_id", "set String", "update", "recordset close", "recordset close"}));
}

TEST_F(StoreStatementTest, StoreLongTextOfAKnownKeyGoesFromTheFirstRowToTheLast) {
    Add("IO", "IN_1", "Clamp");
    StoreLongText(u"Clamp", u"IO", u"IN_1");
    EXPECT_EQ(engine.calls,
              (Lines{"recordset open SELECT Items.Key_id FROM ITEMS WHERE "
                     "((Items.KeyString)='IN_1') AND ((Items.Module)='IO') | static read-only -1",
                     "first", "field Key_Id",
                     "recordset open SELECT Messages.Key_id,Messages.Language_id, Messages.String "
                     "FROM Messages WHERE ((Messages.Language_id=99) AND (Messages.Key_id)=1)"
                     " | keyset optimistic -1",
                     "set String", "update", "field Key_Id", "recordset close", "next",
                     "recordset close"}));
}

TEST_F(StoreStatementTest, NothingIsEscaped) {
    FindKeyId(u"I'O", u"IN_'1", Shared());
    EXPECT_NE(engine.calls.front().find("='IN_'1') AND ((Items.Module)='I'O')"), std::string::npos);
}

TEST_F(StoreStatementTest, EachOperationReleasesItsRecordsetWhateverFails) {
    Add("IO", "IN_1", "Clamp");
    for (const char* sStep :
         {"recordset open", "add", "set", "update", "field", "first", "next", "recordset close"}) {
        engine.FailCalls(sStep);
        Text sText;
        std::int32_t nKeyId = 0;
        FindKeyId(u"IO", u"IN_1", Shared());
        ReadMessageString(1, sText, Shared());
        InsertItem(u"IO", u"IN_2", nKeyId, Shared());
        InsertMessage(1, u"Text", Shared());
        UpdateMessage(1, u"Text", Shared());
        StoreLongText(u"Text", u"IO", u"IN_1");
        DeleteItemsByPrefix(u"XX", u"IO", 1);
        EXPECT_EQ(engine.nRecordsets, 0) << sStep;
    }
}

TEST(StatementTest, ExportReadStatement) {
    EXPECT_EQ(ExportReadStatement(u"IO", u"IN_"),
              u"SELECT Items.KeyString, Messages.String FROM Items INNER JOIN Messages ON "
              u"Items.Key_id = Messages.Key_id WHERE (((Items.Module)='IO') AND "
              u"((Messages.Language_id)=99) AND ((Items.KeyString) Like 'IN_%'))");
}

TEST(StatementTest, CatalogueReadStatement) {
    EXPECT_EQ(CatalogueReadStatement(u"Nomira", 1031),
              u"SELECT Items.KeyString, Messages.String, Messages.Language_id, Items.Module FROM "
              u"Items INNER JOIN Messages ON Items.Key_id = Messages.Key_id WHERE "
              u"(((Items.Module)='Nomira') AND ((Messages.Language_id)=1031))");
}

// --- What becomes of the store.

TEST_F(LongTextStoreTest, FindKeyIdTestsKeyAndModule) {
    db.Execute("INSERT INTO Items VALUES(7,'IO','IN_1'),(8,'Notice','IN_1'),(9,'IO','in_1')");
    EXPECT_EQ(FindKeyId(u"IO", u"IN_1", Shared()), 7);
    EXPECT_EQ(FindKeyId(u"Notice", u"IN_1", Shared()), 8);
    EXPECT_EQ(FindKeyId(u"IO", u"in_1", Shared()), 9);
    EXPECT_EQ(FindKeyId(u"io", u"IN_1", Shared()), 0);
}

TEST_F(LongTextStoreTest, ReadingTakesTheFirstWhereAKeyOrItsTextOccursTwice) {
    db.Execute(
        "INSERT INTO Items VALUES(7,'IO','IN_1'),(8,'IO','IN_1');"
        "INSERT INTO Messages VALUES(8,99,'of the second'),(7,99,'first'),(7,99,'other')");
    EXPECT_EQ(FindKeyId(u"IO", u"IN_1", Shared()), 7);
    Text sText;
    EXPECT_TRUE(ReadMessageString(7, sText, Shared()));
    EXPECT_EQ(sText, u"first");
}

TEST_F(LongTextStoreTest, FindKeyIdOfAnAbsentKeyIsZeroAndSoIsItsText) {
    EXPECT_EQ(FindKeyId(u"IO", u"IN_1", Shared()), 0);
    Text sText = u"as it was";
    EXPECT_FALSE(ReadMessageString(0, sText, Shared()));
    EXPECT_EQ(sText, u"as it was");
}

TEST_F(LongTextStoreTest, KeyIdZeroCanHaveATextOfItsOwn) {
    db.Execute(
        "INSERT INTO Items VALUES(0,'IO','IN_0');"
        "INSERT INTO Messages VALUES(0, 99, 'text of nobody')");
    Text sText;
    EXPECT_TRUE(ReadMessageString(0, sText, Shared()));
    EXPECT_EQ(sText, u"text of nobody");
}

TEST_F(LongTextStoreTest, FindKeyIdBeyond32BitsIsZero) {
    jet::NewColumn amount{.sName = u"Key_id", .type = jet::ColumnType::Currency};
    Remake("", {ItemsTable(std::move(amount)), MessagesTable()});
    db.Execute("INSERT INTO Items VALUES(4294967297,'IO','IN_1')");
    EXPECT_EQ(db.Query(kAllItems), (Rows{{"4294967297", "IO", "IN_1"}}));
    EXPECT_EQ(FindKeyId(u"IO", u"IN_1", Shared()), 0);
}

TEST_F(LongTextStoreTest, ReadMessageStringReadsTheLongTextLanguageAlone) {
    db.Execute(
        "INSERT INTO Items VALUES(1,'IO','IN_1');"
        "INSERT INTO Messages VALUES(1,49,'deutsch'),(1,99,'lang'),(1,1,'x')");
    Text sText;
    EXPECT_TRUE(ReadMessageString(1, sText, Shared()));
    EXPECT_EQ(sText, u"lang");
}

TEST_F(LongTextStoreTest, ReadMessageStringOfNullIsFalseAndLeavesTheText) {
    db.Execute(
        "INSERT INTO Items VALUES(1,'IO','IN_1');"
        "INSERT INTO Messages VALUES(1,99,NULL)");
    Text sText = u"as it was";
    EXPECT_FALSE(ReadMessageString(1, sText, Shared()));
    EXPECT_EQ(sText, u"as it was");
}

TEST_F(LongTextStoreTest, ReadMessageStringOfAnEmptyTextIsTrue) {
    db.Execute(
        "INSERT INTO Items VALUES(1,'IO','IN_1');"
        "INSERT INTO Messages VALUES(1,99,'')");
    Text sText = u"gone";
    EXPECT_TRUE(ReadMessageString(1, sText, Shared()));
    EXPECT_EQ(sText, u"");
}

TEST_F(LongTextStoreTest, InsertItemGivesTheKeyIdThatTheDatabaseMade) {
    db.Execute("INSERT INTO Items VALUES(41,'IO','IN_1')");
    std::int32_t nKeyId = 0;
    EXPECT_TRUE(InsertItem(u"Notice", u"NoticeText1", nKeyId, Shared()));
    EXPECT_EQ(nKeyId, 42);
    EXPECT_EQ(db.Query(kAllItems), (Rows{{"41", "IO", "IN_1"}, {"42", "Notice", "NoticeText1"}}));
}

TEST_F(LongTextStoreTest, InsertItemDoesNotAskForUniqueness) {
    std::int32_t nKeyId = 0;
    EXPECT_TRUE(InsertItem(u"IO", u"IN_1", nKeyId, Shared()));
    EXPECT_TRUE(InsertItem(u"IO", u"IN_1", nKeyId, Shared()));
    EXPECT_EQ(db.Query(kAllItems), (Rows{{"1", "IO", "IN_1"}, {"2", "IO", "IN_1"}}));
}

TEST_F(LongTextStoreTest, InsertItemTakesAKeyWithAnApostropheByField) {
    std::int32_t nKeyId = 0;
    EXPECT_TRUE(InsertItem(u"I'O", u"IN_'1", nKeyId, Shared()));
    EXPECT_EQ(db.Query(kAllItems), (Rows{{"1", "I'O", "IN_'1"}}));
}

TEST_F(LongTextStoreTest, InsertItemThatFailsLeavesTheKeyId) {
    Remake("DROP TABLE Items", {MessagesTable()});
    std::int32_t nKeyId = 5;
    EXPECT_FALSE(InsertItem(u"IO", u"IN_1", nKeyId, Shared()));
    EXPECT_EQ(nKeyId, 5);
}

TEST_F(LongTextStoreTest, InsertMessageAddsARowInTheLongTextLanguage) {
    Add("IO", "IN_1", "first");
    EXPECT_TRUE(InsertMessage(1, u"second", Shared()));
    EXPECT_EQ(db.Query(kAllMessages), (Rows{{"1", "99", "first"}, {"1", "99", "second"}}));
}

TEST_F(LongTextStoreTest, InsertMessageWithoutAnItemIsFalse) {
    EXPECT_FALSE(InsertMessage(17, u"text", Shared()));
    EXPECT_EQ(db.Query(kAllMessages), Rows{});
}

TEST_F(LongTextStoreTest, UpdateMessageChangesTheTextAndGivesTheKeyId) {
    Add("IO", "IN_1", "old");
    db.Execute("INSERT INTO Messages VALUES(1,49,'deutsch')");
    EXPECT_EQ(UpdateMessage(1, u"new", Shared()), 1);
    EXPECT_EQ(db.Query(kAllMessages), (Rows{{"1", "99", "new"}, {"1", "49", "deutsch"}}));
}

TEST_F(LongTextStoreTest, UpdateMessageGivesANullTextItsText) {
    db.Execute("INSERT INTO Items VALUES(3,'IO','IN_3'); INSERT INTO Messages VALUES(3,99,NULL)");
    EXPECT_EQ(UpdateMessage(3, u"new", Shared()), 3);
    EXPECT_EQ(db.Query(kAllMessages), (Rows{{"3", "99", "new"}}));
}

TEST_F(LongTextStoreTest, UpdateMessageChangesOnlyTheFirstOfTwoRows) {
    db.Execute(
        "INSERT INTO Items VALUES(3,'IO','IN_3');"
        "INSERT INTO Messages VALUES(3,99,'same'),(3,99,'same')");
    EXPECT_EQ(UpdateMessage(3, u"new", Shared()), 3);
    EXPECT_EQ(db.Query(kAllMessages), (Rows{{"3", "99", "new"}, {"3", "99", "same"}}));
}

TEST_F(LongTextStoreTest, UpdateMessageWithoutARowLosesTheText) {
    db.Execute("INSERT INTO Items VALUES(3,'IO','IN_1')");
    EXPECT_EQ(UpdateMessage(3, u"new", Shared()), 0);
    EXPECT_EQ(db.Query(kAllMessages), Rows{});
}

TEST_F(LongTextStoreTest, UpdateMessageThatTheDatabaseRefusesIsZero) {
    RefuseLong();
    Add("IO", "IN_1", "old");
    EXPECT_EQ(UpdateMessage(1, u"a long text", Shared()), 0);
    EXPECT_EQ(db.Query(kAllMessages), (Rows{{"1", "99", "old"}}));
    EXPECT_EQ(UpdateMessage(1, u"new", Shared()), 1);
}

TEST_F(LongTextStoreTest, StoreLongTextOfANewKeyAddsItemAndMessage) {
    EXPECT_TRUE(StoreLongText(u"Clamp", u"IO", u"IN_1"));
    EXPECT_EQ(db.Query(kAllItems), (Rows{{"1", "IO", "IN_1"}}));
    EXPECT_EQ(db.Query(kAllMessages), (Rows{{"1", "99", "Clamp"}}));
}

TEST_F(LongTextStoreTest, StoreLongTextOfAKnownKeyChangesItsTextAndAddsNothing) {
    Add("IO", "IN_1", "old");
    db.Execute("INSERT INTO Messages VALUES(1,49,'deutsch')");
    EXPECT_TRUE(StoreLongText(u"new", u"IO", u"IN_1"));
    EXPECT_EQ(db.Query(kAllItems), (Rows{{"1", "IO", "IN_1"}}));
    EXPECT_EQ(db.Query(kAllMessages), (Rows{{"1", "99", "new"}, {"1", "49", "deutsch"}}));
}

TEST_F(LongTextStoreTest, StoreLongTextOfAKeyThatOccursTwiceUpdatesBothMessages) {
    Add("IO", "IN_1", "old");
    Add("IO", "IN_1", "older");
    EXPECT_TRUE(StoreLongText(u"new", u"IO", u"IN_1"));
    EXPECT_EQ(db.Query(kAllMessages), (Rows{{"1", "99", "new"}, {"2", "99", "new"}}));
}

TEST_F(LongTextStoreTest, StoreLongTextGoesOnBehindAnItemWithoutAMessage) {
    db.Execute("INSERT INTO Items VALUES(1,'IO','IN_1')");
    Add("IO", "IN_1", "old");
    EXPECT_TRUE(StoreLongText(u"new", u"IO", u"IN_1"));
    EXPECT_EQ(db.Query(kAllMessages), (Rows{{"2", "99", "new"}}));
}

TEST_F(LongTextStoreTest, StoreLongTextOfAnItemWithoutMessageChangesNothingAndIsTrue) {
    db.Execute("INSERT INTO Items VALUES(1,'IO','IN_1')");
    EXPECT_TRUE(StoreLongText(u"lost", u"IO", u"IN_1"));
    EXPECT_EQ(db.Query(kAllItems), (Rows{{"1", "IO", "IN_1"}}));
    EXPECT_EQ(db.Query(kAllMessages), Rows{});
}

TEST_F(LongTextStoreTest, StoreLongTextPassesOverAnItemWithoutAKeyId) {
    Remake(
        "DROP TABLE Items; CREATE TABLE Items(Key_id INTEGER, Module TEXT, KeyString TEXT);"
        "CREATE UNIQUE INDEX KeyIds ON Items(Key_id)",
        {ItemsTable(Number(u"Key_id")), MessagesTable()});
    db.Execute(
        "INSERT INTO Items VALUES(NULL,'IO','IN_1'),(2,'IO','IN_1');"
        "INSERT INTO Messages VALUES(2,99,'old')");
    EXPECT_TRUE(StoreLongText(u"new", u"IO", u"IN_1"));
    EXPECT_EQ(db.Query(kAllMessages), (Rows{{"2", "99", "new"}}));
}

TEST_F(LongTextStoreTest, TheSameKeyUnderTwoModulesIsTwoKeys) {
    StoreLongText(u"a", u"IO", u"X1");
    StoreLongText(u"b", u"Flag", u"X1");
    EXPECT_EQ(db.Query(kAllItems), (Rows{{"1", "IO", "X1"}, {"2", "Flag", "X1"}}));
    EXPECT_EQ(db.Query(kAllMessages), (Rows{{"1", "99", "a"}, {"2", "99", "b"}}));
}

TEST_F(LongTextStoreTest, AnyTextComesBackAsItWas) {
    const std::vector<Text> texts{u"it's 'quoted'",
                                  u"\"; DROP TABLE Items; --",
                                  u"100% _ [x] \\ \t",
                                  u"äöüß µ €",
                                  Text(u"nul\0inside", 10),
                                  Text(1, char16_t{0xD800}) + u"lone",
                                  u"\U0001F916",
                                  u""};
    for (const Text& sStored : texts) {
        // Jet 3 stores the characters of its code page.
        const bool bOneByte = sStored.find_first_of(u"\xD800\xD83E\xDD16") == Text::npos;
        if (db.Format() == StoreFormat::Jet3 && !bOneByte) continue;
        ASSERT_TRUE(StoreLongText(sStored, u"IO", u"IN_1"));
        Text sRead = u"?";
        EXPECT_TRUE(ReadLongText(sRead, u"IO", u"IN_1"));
        EXPECT_EQ(sRead, sStored);
    }
}

TEST_F(LongTextStoreTest, AKeyWithAnApostropheStoresNothing) {
    EXPECT_FALSE(StoreLongText(u"text", u"IO", u"IN_'1"));
    EXPECT_EQ(db.Query(kAllItems), Rows{});
    EXPECT_EQ(db.Query(kAllMessages), Rows{});
}

TEST_F(LongTextStoreTest, AKeyWithANulCharacterStoresNothing) {
    EXPECT_FALSE(StoreLongText(u"text", u"IO", Text(u"IN_\0001", 5)));
    EXPECT_EQ(db.Query(kAllItems), Rows{});
}

TEST_F(LongTextStoreTest, AKeyThatClosesItsQuoteChangesTheQuestion) {
    Add("IO", "IN_1", "old");
    EXPECT_TRUE(StoreLongText(u"new", u"IO", u"nobody' OR '1'='1"));
    EXPECT_EQ(db.Query(kAllMessages), (Rows{{"1", "99", "new"}}));
}

TEST_F(LongTextStoreTest, DeleteItemsByPrefixTakesTheMessagesAlong) {
    Add("IO", "IN_1", "a");
    Add("IO", "OUT_1", "b");
    DeleteItemsByPrefix(u"IN_", u"IO", 1024);
    EXPECT_EQ(db.Query(kAllItems), (Rows{{"2", "IO", "OUT_1"}}));
    EXPECT_EQ(db.Query(kAllMessages), (Rows{{"2", "99", "b"}}));
}

TEST_F(LongTextStoreTest, DeleteItemsByPrefixTakesTheUnderscoreForAnyCharacterOfAnyModule) {
    Add("IO", "IN_1", "a");
    Add("Notice", "INX1", "b");
    Add("IO", "IN-2", "c");
    Add("IO", "IN", "too short");
    Add("IO", "in_1", "other case");
    Add("IO", "BININ_1", "not at the beginning");
    DeleteItemsByPrefix(u"IN_", u"IO", 1024);
    EXPECT_EQ(db.Query("SELECT KeyString FROM Items ORDER BY 1"),
              (Rows{{"BININ_1"}, {"IN"}, {"in_1"}}));
}

TEST_F(LongTextStoreTest, DeleteItemsByPrefixUsesNeitherModuleNorSize) {
    Add("IO", "IN_1", "a");
    Add("IO", "IN_5000", "b");
    DeleteItemsByPrefix(u"IN_", u"Timer", 1);
    EXPECT_EQ(db.Query(kAllItems), Rows{});
}

TEST_F(LongTextStoreTest, DeleteItemsByPrefixWithAnApostropheLeavesTheRows) {
    Add("IO", "IN_1", "a");
    DeleteItemsByPrefix(u"IN'", u"IO", 1024);
    EXPECT_EQ(db.Query(kAllItems).size(), 1U);
}

TEST_F(LongTextStoreTest, DeletedKeyIdsAreNotGivenOutAgain) {
    StoreLongText(u"a", u"IO", u"IN_1");
    DeleteItemsByPrefix(u"IN_", u"IO", 1024);
    StoreLongText(u"b", u"IO", u"IN_1");
    EXPECT_EQ(db.Query(kAllItems), (Rows{{"2", "IO", "IN_1"}}));
}

TEST_F(LongTextStoreTest, WithoutAConnectionEveryOperationFailsInSilence) {
    CloseDatabase();
    Text sText = u"as it was";
    std::int32_t nKeyId = 5;
    EXPECT_EQ(FindKeyId(u"IO", u"IN_1", nullptr), 0);
    EXPECT_FALSE(ReadMessageString(1, sText, nullptr));
    EXPECT_FALSE(InsertItem(u"IO", u"IN_1", nKeyId, nullptr));
    EXPECT_FALSE(InsertMessage(1, u"x", nullptr));
    EXPECT_EQ(UpdateMessage(1, u"x", nullptr), 0);
    EXPECT_FALSE(StoreLongText(u"x", u"IO", u"IN_1"));
    DeleteItemsByPrefix(u"IN_", u"IO", 1);
    EXPECT_EQ(sText, u"as it was");
    EXPECT_EQ(nKeyId, 5);
}

TEST_F(LongTextStoreTest, OnAClosedConnectionEveryOperationFailsInSilence) {
    Add("IO", "IN_1", "a");
    g_Connection->Close();
    Text sText = u"as it was";
    EXPECT_EQ(FindKeyId(u"IO", u"IN_1", Shared()), 0);
    EXPECT_FALSE(ReadMessageString(1, sText, Shared()));
    EXPECT_FALSE(StoreLongText(u"x", u"IO", u"IN_1"));
    DeleteItemsByPrefix(u"IN_", u"IO", 1);
    EXPECT_EQ(db.Query(kAllMessages), (Rows{{"1", "99", "a"}}));
}

TEST_F(LongTextStoreTest, AStoreWithoutItsTablesFailsInSilence) {
    Remake("DROP TABLE Messages; DROP TABLE Items", {});
    Text sText = u"as it was";
    EXPECT_FALSE(StoreLongText(u"x", u"IO", u"IN_1"));
    EXPECT_EQ(FindKeyId(u"IO", u"IN_1", Shared()), 0);
    DeleteItemsByPrefix(u"IN_", u"IO", 1);
    EXPECT_TRUE(ReadLongText(sText, u"IO", u"IN_1"));
    EXPECT_EQ(sText, u"as it was");
}

TEST_F(LongTextStoreTest, AnItemWhoseMessageFailedStaysAndNeverGetsAText) {
    RefuseLong();
    EXPECT_TRUE(StoreLongText(u"a long text", u"IO", u"IN_1"));
    EXPECT_EQ(db.Query(kAllItems), (Rows{{"1", "IO", "IN_1"}}));
    EXPECT_TRUE(StoreLongText(u"second", u"IO", u"IN_1"));
    EXPECT_EQ(db.Query(kAllMessages), Rows{});
    EXPECT_TRUE(StoreLongText(u"second", u"IO", u"IN_2"));
    EXPECT_EQ(db.Query(kAllMessages), (Rows{{"2", "99", "second"}}));
}

// --- A source that knows the texts.

TEST_F(LongTextStoreTest, ASourceAnswersInThePlaceOfTheDatabase) {
    class Source : public LongTextSource {
        bool Read(Text& sText, TextView sModule, TextView sKey) const override {
            if (sModule == u"IO" && sKey == u"IN_1") sText = u"known";
            return sKey != u"IN_9";
        }
    };
    StoreLongText(u"stored", u"IO", u"IN_1");
    const Source source;
    SetLongTextSource(&source);
    Text sText;
    EXPECT_TRUE(ReadLongText(sText, u"IO", u"IN_1"));
    EXPECT_EQ(sText, u"known");
    EXPECT_TRUE(ReadLongText(sText, u"IO", u"IN_2"));
    EXPECT_EQ(sText, u"known");
    EXPECT_FALSE(ReadLongText(sText, u"IO", u"IN_9"));
    SetLongTextSource(nullptr);
    EXPECT_TRUE(ReadLongText(sText, u"IO", u"IN_1"));
    EXPECT_EQ(sText, u"stored");
}

// --- What the observer is told.

class Watcher : public StoreObserver {
  public:
    Watcher() { SetStoreObserver(this); }
    ~Watcher() override { SetStoreObserver(nullptr); }
    void TextStored(TextView sModule, TextView sKey, TextView sText,
                    StoreOutcome outcome) override {
        told += Printable(sModule) + ' ' + Printable(sKey) + ' ' + Printable(sText) + ' ' +
                kNames[static_cast<int>(outcome)] + '\n';
    }
    std::string told;

  private:
    static constexpr const char* kNames[] = {"added", "changed", "no message", "item only",
                                             "failed"};
};

TEST_F(LongTextStoreTest, ObserverIsToldOfANewAndOfAKnownKey) {
    Watcher watcher;
    StoreLongText(u"a", u"IO", u"IN_1");
    StoreLongText(u"b", u"IO", u"IN_1");
    StoreLongText(u"b", u"IO", u"IN_1");
    EXPECT_EQ(watcher.told, "IO IN_1 a added\nIO IN_1 b changed\nIO IN_1 b changed\n");
}

TEST_F(LongTextStoreTest, WhatTheObserverKnowsToBeHeldIsNotLookedUp) {
    class Knower : public Watcher {
        bool IsHeld(TextView sModule, TextView sKey, TextView sText) override {
            return sModule == u"IO" && sKey == u"IN_1" && sText == u"a";
        }
    };
    Knower knower;
    EXPECT_TRUE(StoreLongText(u"a", u"IO", u"IN_1"));
    EXPECT_EQ(db.Query(kAllItems), Rows{});
    EXPECT_TRUE(StoreLongText(u"b", u"IO", u"IN_1"));
    EXPECT_EQ(knower.told, "IO IN_1 a changed\nIO IN_1 b added\n");
}

TEST_F(LongTextStoreTest, ObserverIsToldOfALostText) {
    db.Execute("INSERT INTO Items VALUES(1,'IO','IN_1')");
    Watcher watcher;
    StoreLongText(u"lost", u"IO", u"IN_1");
    EXPECT_EQ(watcher.told, "IO IN_1 lost no message\n");
}

TEST_F(LongTextStoreTest, ObserverIsToldOfAnItemWithoutMessage) {
    RefuseLong();
    Watcher watcher;
    StoreLongText(u"a long text", u"IO", u"IN_1");
    EXPECT_EQ(watcher.told, "IO IN_1 a long text item only\n");
}

TEST_F(LongTextStoreTest, ObserverIsToldOfAFailedLookUpAndOfAFailedAdding) {
    RefuseLong();
    Watcher watcher;
    StoreLongText(u"a", u"IO", u"IN_'1");
    StoreLongText(u"a", u"IO", u"IN_12345678");
    EXPECT_EQ(watcher.told, "IO IN_'1 a failed\nIO IN_12345678 a failed\n");
    EXPECT_EQ(db.Query(kAllItems), Rows{});
}

TEST_F(LongTextStoreTest, ObserverIsToldOfAFailedChange) {
    RefuseLong();
    Add("IO", "IN_1", "old");
    Watcher watcher;
    EXPECT_TRUE(StoreLongText(u"a long text", u"IO", u"IN_1"));
    EXPECT_EQ(watcher.told, "IO IN_1 a long text failed\n");
    EXPECT_EQ(db.Query(kAllMessages), (Rows{{"1", "99", "old"}}));
}

}  // namespace
}  // namespace nomira::testing
