// The tables of an Access file as SQL sees them.
#include "adapters/jetsql/TableModule.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>

#include "adapters/jet/Checker.h"
#include "langtools/Utf8.h"
#include "testing/Random.h"
#include "testing/TestDatabase.h"

namespace nomira::testing {
namespace {

namespace fs = std::filesystem;
using Rows = std::vector<std::vector<std::string>>;
using Lines = std::vector<std::string>;

// A table of all kinds of columns, and the two of a message database without a relationship between
// them.
std::vector<jet::NewTable> Tables() {
    using jet::ColumnType;
    return {{.sName = u"Kinds",
             .columns = {{.sName = u"Yes", .type = ColumnType::Boolean},
                         {.sName = u"Byte", .type = ColumnType::Byte},
                         {.sName = u"Short", .type = ColumnType::Integer},
                         {.sName = u"Long", .type = ColumnType::Long},
                         {.sName = u"Money", .type = ColumnType::Currency},
                         {.sName = u"Single", .type = ColumnType::Single},
                         {.sName = u"Double", .type = ColumnType::Double},
                         {.sName = u"Moment", .type = ColumnType::DateTime},
                         {.sName = u"Bytes", .type = ColumnType::Binary, .nCharacters = 20},
                         {.sName = u"Text", .type = ColumnType::Text, .nCharacters = 60},
                         {.sName = u"Ole", .type = ColumnType::Ole},
                         {.sName = u"Memo", .type = ColumnType::Memo},
                         {.sName = u"Guid", .type = ColumnType::Guid}},
             .indexes = {{.sName = u"ByBoth", .columns = {u"Text", u"Long"}},
                         {.sName = u"ByText", .columns = {u"Text"}},
                         {.sName = u"ByShort", .columns = {u"Short", u"Text"}}}},
            {.sName = u"Items",
             .columns = {{.sName = u"Key_id", .type = ColumnType::Long, .bAutonumber = true},
                         {.sName = u"Module", .type = ColumnType::Text, .nCharacters = 50},
                         {.sName = u"KeyString", .type = ColumnType::Text, .nCharacters = 255}},
             .indexes = {{.sName = u"PrimaryKey", .columns = {u"Key_id"}, .bPrimary = true},
                         {.sName = u"ItemsByKey", .columns = {u"KeyString", u"Module"}}}},
            {.sName = u"Messages",
             .columns = {{.sName = u"Key_id", .type = ColumnType::Long},
                         {.sName = u"Language_id", .type = ColumnType::Long},
                         {.sName = u"String", .type = ColumnType::Memo}},
             .indexes = {{.sName = u"MessagesByKey", .columns = {u"Key_id", u"Language_id"}}}}};
}

// An SQLite connection with the tables of a file.
class Handle {
  public:
    explicit Handle(const fs::path& path) {
        sqlite3_open(":memory:", &m_handle);
        m_session = std::make_shared<jetsql::AccessSession>(
            path, std::vector<jetsql::Cascade>{{u"Items", u"Key_id", u"Messages", u"Key_id"},
                                               {u"Owners", u"Id", u"Messages", u"Key_id"}});
        jetsql::RegisterModule(m_handle, "access", m_session);
        for (const jetsql::NamedTable& table : jetsql::LocalTables(m_session->File()))
            EXPECT_EQ(Run(jetsql::CreateStatement("access", "", table)), "");
        EXPECT_EQ(Run("PRAGMA case_sensitive_like=ON"), "");
    }
    ~Handle() { sqlite3_close(m_handle); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    // The failure's words; empty for none.
    std::string Run(const std::string& sSql, Rows* rows = nullptr) {
        char* sWords = nullptr;
        const auto append = [](void* to, int nCount, char** values, char**) {
            if (to == nullptr) return 0;
            std::vector<std::string> row;
            for (int n = 0; n < nCount; ++n)
                row.emplace_back(values[n] == nullptr ? "<null>" : values[n]);
            static_cast<Rows*>(to)->push_back(std::move(row));
            return 0;
        };
        m_nResult = sqlite3_exec(m_handle, sSql.c_str(), append, rows, &sWords);
        std::string sText = sWords == nullptr ? "" : sWords;
        sqlite3_free(sWords);
        return sText;
    }
    int Result() const { return m_nResult; }
    Rows Query(const std::string& sSql) {
        Rows rows;
        EXPECT_EQ(Run(sSql, &rows), "") << sSql;
        return rows;
    }
    // The first column, joined.
    std::string Column(const std::string& sSql) {
        std::string sJoined;
        for (const auto& row : Query(sSql))
            sJoined += row.front() + ',';
        return sJoined;
    }
    std::string Plan(const std::string& sSql) {
        std::string sPlan;
        for (const auto& row : Query("EXPLAIN QUERY PLAN " + sSql))
            sPlan += row.back() + '\n';
        return sPlan;
    }
    sqlite3* Get() const { return m_handle; }
    jetsql::AccessSession& Session() { return *m_session; }

  private:
    sqlite3* m_handle = nullptr;
    std::shared_ptr<jetsql::AccessSession> m_session;
    int m_nResult = 0;
};

class TableModuleTest : public ::testing::TestWithParam<jet::Generation> {
  protected:
    TableModuleTest() : path(db.Folder() / "file.mdb") {
        WriteAccessFile(path,
                        GetParam() == jet::Generation::Jet3 ? StoreFormat::Jet3 : StoreFormat::Jet4,
                        Tables());
        handle = std::make_unique<Handle>(path);
    }
    ~TableModuleTest() override {
        handle.reset();
        jet::AccessFile file(jet::FilePages::Open(path, jet::OpenMode::ReadOnly));
        for (const jet::Finding& finding : jet::CheckFile(file))
            ADD_FAILURE() << finding.nPage << ": " << finding.sText;
    }

    void FillItems() {
        EXPECT_EQ(handle->Run("INSERT INTO Items VALUES(1,'IO','IN_1'),(2,'IO','IN_2'),"
                              "(3,'Flag','FlagText1'),(4,'IO','in_1'),(5,'IO','IN-1'),"
                              "(6,'IO','INX1'),(7,NULL,NULL)"),
                  "");
        EXPECT_EQ(handle->Run("INSERT INTO Messages VALUES(1,99,'one'),(1,49,'eins'),(2,99,'two'),"
                              "(3,99,NULL)"),
                  "");
    }

    TestDatabase db{{}, sqlite::SystemTime, StoreFormat::Sqlite};  // for its folder
    fs::path path;
    std::unique_ptr<Handle> handle;
};
std::string GenerationName(const ::testing::TestParamInfo<jet::Generation>& info) {
    return info.param == jet::Generation::Jet3 ? "Jet3" : "Jet4";
}
INSTANTIATE_TEST_SUITE_P(Generations, TableModuleTest,
                         ::testing::Values(jet::Generation::Jet3, jet::Generation::Jet4),
                         GenerationName);

// --- Tables and values.

TEST_P(TableModuleTest, TablesHaveTheirColumnsAndTypes) {
    EXPECT_EQ(handle->Column("SELECT name||' '||type FROM pragma_table_info('Messages')"),
              "Key_id INTEGER,Language_id INTEGER,String TEXT,");
    EXPECT_EQ(handle->Column("SELECT type FROM pragma_table_info('Kinds')"),
              "BOOLEAN,INTEGER,INTEGER,INTEGER,CURRENCY,REAL,REAL,TEXT,BLOB,TEXT,BLOB,TEXT,BLOB,");
}

TEST_P(TableModuleTest, TheFilesOwnTablesCanBeReadOnly) {
    EXPECT_EQ(handle->Column("SELECT Name FROM MSysObjects WHERE Type=1 AND Flags=0 ORDER BY Name"),
              "Items,Kinds,Messages,");
    EXPECT_EQ(handle->Run("DELETE FROM MSysObjects"), "the file's own tables can only be read");
}

TEST_P(TableModuleTest, ValuesOfAllKindsComeBack) {
    const std::string sInsert =
        "INSERT INTO Kinds VALUES(1,255,-32768,2147483647,12.34,1.5,0.1,'2004-06-05 13:06:59',"
        "x'0001FF','Text',x'AABB','Memo',x'000102030405060708090A0B0C0D0E0F')";
    ASSERT_EQ(handle->Run(sInsert), "");
    EXPECT_EQ(
        handle->Query("SELECT Yes,Byte,Short,Long,Money,Single,Double,Moment,hex(Bytes),Text,"
                      "hex(Ole),Memo,hex(Guid) FROM Kinds"),
        (Rows{{"1", "255", "-32768", "2147483647", "12.34", "1.5", "0.1", "2004-06-05 13:06:59",
               "0001FF", "Text", "AABB", "Memo", "000102030405060708090A0B0C0D0E0F"}}));
    EXPECT_EQ(handle->Query("SELECT typeof(Yes),typeof(Byte),typeof(Money),typeof(Single),"
                            "typeof(Moment),typeof(Bytes),typeof(Text) FROM Kinds"),
              (Rows{{"integer", "integer", "real", "real", "text", "blob", "text"}}));
}

TEST_P(TableModuleTest, NullsComeBackButForYesAndNo) {
    ASSERT_EQ(handle->Run("INSERT INTO Kinds DEFAULT VALUES"), "");
    EXPECT_EQ(handle->Query("SELECT * FROM Kinds").front(),
              (Lines{"0", "<null>", "<null>", "<null>", "<null>", "<null>", "<null>", "<null>",
                     "<null>", "<null>", "<null>", "<null>", "<null>"}));
}

TEST_P(TableModuleTest, AmountsAreExactToTheLastDigit) {
    for (const char* sAmount : {"0.0001", "-0.0001", "922337203685477.5807",
                                "-922337203685477.5808", "450359962737.0495", "7"}) {
        ASSERT_EQ(handle->Run("DELETE FROM Kinds; INSERT INTO Kinds(Money) VALUES('" +
                              std::string(sAmount) + "')"),
                  "");
        EXPECT_EQ(handle->Column("SELECT Money FROM Kinds"), std::string(sAmount) + ',');
        ASSERT_EQ(handle->Run("UPDATE Kinds SET Money=Money"), "");
        EXPECT_EQ(handle->Column("SELECT Money FROM Kinds"), std::string(sAmount) + ',');
    }
}

TEST_P(TableModuleTest, ValuesThatDontFitAreRefusedWithTheColumnsName) {
    for (const char* sColumnAndValue :
         {"Byte)VALUES(256", "Byte)VALUES(-1", "Short)VALUES(40000", "Long)VALUES(2147483648",
          "Long)VALUES(1.5", "Long)VALUES('x'", "Moment)VALUES('today'", "Bytes)VALUES('text'",
          "Text)VALUES(x'00'", "Money)VALUES('1.23456'", "Double)VALUES('much'"}) {
        const std::string sColumn =
            std::string(sColumnAndValue).substr(0, std::string(sColumnAndValue).find(')'));
        const std::string sWords =
            handle->Run("INSERT INTO Kinds(" + std::string(sColumnAndValue) + ")");
        EXPECT_EQ(sWords.rfind(sColumn + ": the value is ", 0), 0U) << sColumnAndValue << sWords;
        EXPECT_EQ(handle->Result(), SQLITE_CONSTRAINT);
    }
    EXPECT_EQ(handle->Column("SELECT count(*) FROM Kinds"), "0,");
}

TEST_P(TableModuleTest, ColumnsKnowTheirTable) {
    sqlite3_stmt* statement = nullptr;
    ASSERT_EQ(
        sqlite3_prepare_v2(handle->Get(), "SELECT rowid AS r, ITEMS.KEYSTRING AS k, 1 FROM items",
                           -1, &statement, nullptr),
        SQLITE_OK);
    EXPECT_STREQ(sqlite3_column_table_name(statement, 0), "Items");
    EXPECT_STREQ(sqlite3_column_table_name(statement, 1), "Items");
    EXPECT_STREQ(sqlite3_column_origin_name(statement, 1), "KeyString");
    EXPECT_EQ(sqlite3_column_table_name(statement, 2), nullptr);
    sqlite3_finalize(statement);
}

// --- Finding rows.

TEST_P(TableModuleTest, StatementsOfTheStoreGoByTheFilesIndexes) {
    FillItems();
    const auto goesBy = [&](const std::string& sSql, const Lines& parts) {
        const std::string sPlan = handle->Plan(sSql);
        for (const std::string& sPart : parts)
            EXPECT_NE(sPlan.find(sPart), std::string::npos) << sPlan;
        EXPECT_EQ(sPlan.find("INDEX 0:"), std::string::npos) << sPlan;
    };
    goesBy(
        "SELECT Items.Key_id FROM Items WHERE (((Items.KeyString)='IN_1') AND "
        "((Items.Module)='IO'))",
        {":== ItemsByKey"});
    goesBy(
        "SELECT Messages.Key_id,Messages.Language_id, Messages.String FROM Messages "
        "WHERE ( (Messages.Language_id=99) AND (Messages.Key_id)=1)",
        {":== MessagesByKey"});
    goesBy("DELETE FROM Items WHERE (((Items.KeyString) Like 'IN_%'))", {":% ItemsByKey"});
    goesBy(
        "SELECT Items.KeyString, Messages.String FROM Items INNER JOIN Messages ON Items.Key_id"
        " = Messages.Key_id WHERE (((Items.Module)='IO') AND ((Messages.Language_id)=99) AND"
        " ((Items.KeyString) Like 'IN_%'))",
        {":% ItemsByKey", ":== MessagesByKey"});
    goesBy("SELECT * FROM Items WHERE Key_id=?1", {":= PrimaryKey"});
    goesBy("SELECT * FROM Items WHERE rowid=?1", {":= row"});
    goesBy("SELECT * FROM Items WHERE Key_id>?1 AND Key_id<=?2", {":>< PrimaryKey"});
}

TEST_P(TableModuleTest, ComparisonsAreExactThoughTheIndexKnowsNoCase) {
    FillItems();
    EXPECT_EQ(handle->Column("SELECT Key_id FROM Items WHERE KeyString='IN_1'"), "1,");
    EXPECT_EQ(handle->Column("SELECT Key_id FROM Items WHERE KeyString='in_1'"), "4,");
    EXPECT_EQ(handle->Column("SELECT Key_id FROM Items WHERE KeyString='IN_1 '"), "");
    EXPECT_EQ(
        handle->Column("SELECT Key_id FROM Items WHERE KeyString='iN_1' COLLATE NOCASE ORDER BY 1"),
        "1,4,");
    EXPECT_EQ(handle->Column(
                  "SELECT Key_id FROM Items WHERE KeyString='IN_1  ' COLLATE RTRIM ORDER BY 1"),
              "1,");
}

TEST_P(TableModuleTest, LikeFindsWhatStandsForItsWildcards) {
    FillItems();
    EXPECT_EQ(handle->Column("SELECT Key_id FROM Items WHERE KeyString Like 'IN_%' ORDER BY 1"),
              "1,2,5,6,");
    EXPECT_EQ(handle->Column("SELECT Key_id FROM Items WHERE KeyString Like 'IN-%' ORDER BY 1"),
              "5,");
    EXPECT_EQ(handle->Column("SELECT Key_id FROM Items WHERE KeyString Like '%1' ORDER BY 1"),
              "1,3,4,5,6,");
    EXPECT_EQ(handle->Column("SELECT Key_id FROM Items WHERE KeyString Like NULL"), "");
}

TEST_P(TableModuleTest, NumbersAreFoundHoweverTheyAreWritten) {
    FillItems();
    for (const char* sCondition :
         {"Key_id=2", "Key_id='2'", "Key_id=2.0", "Key_id IN (2,17)", "Key_id BETWEEN 1.5 AND 2.5",
          "Key_id>'1' AND Key_id<3", "Key_id>=2 AND Key_id<=2", "Key_id=(SELECT 2)"})
        EXPECT_EQ(handle->Column("SELECT Key_id FROM Items WHERE " + std::string(sCondition)), "2,")
            << sCondition;
    for (const char* sCondition :
         {"Key_id=NULL", "Key_id=2.5", "Key_id='x'", "Key_id=x'32'", "Key_id=99999999999",
          "Key_id>99999999999", "Key_id<-99999999999", "Key_id>NULL", "Key_id>'abc'",
          "Key_id>1e300"})
        EXPECT_EQ(handle->Column("SELECT Key_id FROM Items WHERE " + std::string(sCondition)), "")
            << sCondition;
    for (const char* sCondition :
         {"Key_id<99999999999", "Key_id>-99999999999", "Key_id<'abc'", "Key_id<1e300"})
        EXPECT_EQ(handle->Column("SELECT count(*) FROM Items WHERE " + std::string(sCondition)),
                  "7,")
            << sCondition;
}

// Rows that an index of numbers finds aren't looked at once more; those of an index of texts are.
TEST_P(TableModuleTest, NumbersBehindATextAreLookedAt) {
    EXPECT_EQ(handle->Run("INSERT INTO Kinds(Text,Long) VALUES('5',1),('5',2),('5 ',2),('6',2),"
                          "('a',2),('A',2),('a',NULL)"),
              "");
    const auto found = [&](const std::string& sCondition) {
        const std::string sSql = "FROM Kinds WHERE " + sCondition;
        EXPECT_NE(handle->Plan("SELECT * " + sSql).find("ByBoth"), std::string::npos) << sSql;
        return handle->Column("SELECT '<'||Text||'>'||Long " + sSql);
    };
    EXPECT_EQ(found("Text='5' AND Long=2"), "<5>2,");
    EXPECT_EQ(found("Text=5 AND Long=2"), "<5>2,") << "a number for a text: all rows are looked at";
    EXPECT_EQ(found("Text='a' AND Long=2"), "<a>2,");
    EXPECT_EQ(found("Text='a' AND Long='2'"), "<a>2,");
    EXPECT_EQ(found("Text='a' AND Long=2.5"), "");
}

TEST_P(TableModuleTest, AJoinSeesWhatChangesMeanwhile) {
    ASSERT_EQ(handle->Run("BEGIN"), "");
    for (int n = 1; n <= 600; ++n) {
        const std::string sId = std::to_string(n);
        ASSERT_EQ(handle->Run("INSERT INTO Items VALUES(" + sId + ",'IO','IN_" + sId + "')"), "");
        ASSERT_EQ(handle->Run("INSERT INTO Messages VALUES(" + sId + ",99,'text " + sId + "')"),
                  "");
    }
    ASSERT_EQ(handle->Run("COMMIT"), "");
    const std::string sCount =
        "SELECT count(*), sum(length(String)) FROM Items INNER JOIN Messages"
        " ON Items.Key_id = Messages.Key_id WHERE Language_id=99";
    const auto count = [&] {
        const Rows rows = handle->Query(sCount);
        return rows.front()[0] + ' ' + rows.front()[1];
    };
    EXPECT_EQ(count(), "600 4692");
    ASSERT_EQ(handle->Run("BEGIN"), "");
    ASSERT_EQ(handle->Run("DELETE FROM Messages WHERE Key_id BETWEEN 100 AND 199"), "");
    EXPECT_EQ(count(), "500 3892");
    ASSERT_EQ(handle->Run("UPDATE Messages SET String='x' WHERE Key_id=300"), "");
    ASSERT_EQ(handle->Run("UPDATE Messages SET Language_id=49 WHERE Key_id>500"), "");
    EXPECT_EQ(count(), "400 3085");
    ASSERT_EQ(handle->Run("ROLLBACK"), "");
    EXPECT_EQ(count(), "600 4692");
    EXPECT_EQ(count(), "600 4692");
}

// What an index finds is what looking at all rows finds.
TEST_P(TableModuleTest, IndexesFindTheSameAsLookingAtAllRows) {
    Random random;
    const std::string sLetters = "aAbB-'_ 1.ß";
    const auto text = [&] {
        std::u16string sText;
        const std::u16string sFrom = FromUtf8(sLetters);
        for (std::size_t n = random.UpTo(5); n > 0; --n)
            sText += sFrom[random.UpTo(sFrom.size() - 1)];
        std::string sBytes;
        for (const char c : ToUtf8(sText))
            sBytes += c == '\'' ? "''" : std::string(1, c);
        return sBytes;
    };
    ASSERT_EQ(handle->Run("BEGIN"), "");
    for (int n = 0; n < 400; ++n)
        ASSERT_EQ(handle->Run("INSERT INTO Kinds(Short,Text) VALUES(" +
                              std::to_string(random.UpTo(8)) + ",'" + text() + "')"),
                  "");
    ASSERT_EQ(handle->Run("COMMIT"), "");
    for (int n = 0; n < 200; ++n) {
        const std::string sText = text();
        const std::string sShort = std::to_string(random.UpTo(8));
        const std::string sSelect = "SELECT rowid FROM Kinds WHERE ";
        for (const std::string& sTemplate :
             {"@Text='" + sText + "'", "@Text LIKE '" + sText + "%'",
              "@Short=" + sShort + " AND @Text='" + sText + "'",
              "@Short=" + sShort + " AND @Text LIKE 'a" + sText + "%'", "@Short>" + sShort,
              "@Short<" + sShort + " AND @Short>2"}) {
            std::string sIndexed = sTemplate;
            std::erase(sIndexed, '@');
            std::string sPlain = sTemplate;
            std::replace(sPlain.begin(), sPlain.end(), '@', '+');
            EXPECT_EQ(handle->Column(sSelect + sIndexed + " ORDER BY 1"),
                      handle->Column(sSelect + sPlain + " ORDER BY 1"))
                << sIndexed << ' ' << random.Seed();
        }
    }
}

TEST_P(TableModuleTest, ATextWithoutAKeyIsLookedForInAllRows) {
    FillItems();
    EXPECT_EQ(handle->Column("SELECT Key_id FROM Items WHERE KeyString='\xF0\x9F\xA4\x96'"), "");
    EXPECT_EQ(handle->Column("SELECT Key_id FROM Items WHERE KeyString=1"), "");
}

// --- Writing.

TEST_P(TableModuleTest, TheFileCountsTheIds) {
    ASSERT_EQ(handle->Run("INSERT INTO Items(KeyString) VALUES('a'),('b')"), "");
    const std::string sRow = std::to_string(sqlite3_last_insert_rowid(handle->Get()));
    EXPECT_EQ(handle->Column("SELECT Key_id FROM Items WHERE rowid=" + sRow), "2,");
    ASSERT_EQ(handle->Run("DELETE FROM Items; INSERT INTO Items(KeyString) VALUES('c')"), "");
    EXPECT_EQ(handle->Column("SELECT Key_id FROM Items"), "3,");
    ASSERT_EQ(handle->Run("INSERT INTO Items VALUES(40,'IO','d')"), "");
    ASSERT_EQ(handle->Run("INSERT INTO Items(KeyString) VALUES('e')"), "");
    EXPECT_EQ(handle->Column("SELECT max(Key_id) FROM Items"), "41,");
}

TEST_P(TableModuleTest, RowsChangeInTheirPlace) {
    FillItems();
    const std::string sRow = handle->Column("SELECT rowid FROM Items WHERE Key_id=2");
    ASSERT_EQ(
        handle->Run("UPDATE Items SET KeyString=KeyString||'0', Module='Flag' WHERE Key_id=2"), "");
    EXPECT_EQ(sqlite3_changes(handle->Get()), 1);
    EXPECT_EQ(handle->Query("SELECT Key_id,Module,KeyString FROM Items WHERE KeyString='IN_20'"),
              (Rows{{"2", "Flag", "IN_20"}}));
    EXPECT_EQ(handle->Column("SELECT rowid FROM Items WHERE Key_id=2"), sRow);
    EXPECT_EQ(handle->Column("SELECT Key_id FROM Items WHERE KeyString='IN_2'"), "");
}

TEST_P(TableModuleTest, EveryRowIsChangedOnceAlsoIfItMovesInItsIndex) {
    FillItems();
    ASSERT_EQ(handle->Run("UPDATE Items SET Key_id=Key_id+100 WHERE Key_id>0"), "");
    EXPECT_EQ(handle->Column("SELECT Key_id FROM Items ORDER BY 1"),
              "101,102,103,104,105,106,107,");
}

TEST_P(TableModuleTest, AKeyThatIsThereIsRefused) {
    FillItems();
    const std::string sWords = handle->Run("INSERT INTO Items VALUES(1,'IO','x')");
    EXPECT_EQ(handle->Result(), SQLITE_CONSTRAINT);
    EXPECT_NE(sWords, "");
    EXPECT_EQ(handle->Run("INSERT OR IGNORE INTO Items VALUES(1,'IO','x'),(50,'IO','y')"), "");
    EXPECT_EQ(handle->Column("SELECT Key_id FROM Items WHERE Key_id IN (1,50) ORDER BY 1"),
              "1,50,");
    EXPECT_EQ(handle->Column("SELECT KeyString FROM Items WHERE Key_id=1"), "IN_1,");
}

// Items 1 to 4; KeyString is unique and knows no case. A part stands in one of them, and in another
// part, and goes with both; a note stands in one and keeps it; item 4 has neither.
class ConflictTest : public TableModuleTest {
  protected:
    ConflictTest() {
        handle.reset();
        {
            auto pages = jet::FilePages::Open(path, jet::OpenMode::ReadWrite);
            jet::FilePages& store = *pages;
            jet::AccessFile file(std::move(pages));
            EXPECT_TRUE(store.StartWriting());
            AddTables(file);
            store.Commit();
            store.Rest();
        }
        handle = std::make_unique<Handle>(path);
        EXPECT_EQ(handle->Run("INSERT INTO Owners VALUES(1,'IN_1'),(2,'IN_2'),(3,'IN_3'),"
                              "(4,'IN_4'),(5,NULL);"
                              "INSERT INTO Parts VALUES(10,1,NULL),(11,1,10),(12,2,11),(13,4,NULL);"
                              "INSERT INTO Notes VALUES(3)"),
                  "");
    }

    static void AddTables(jet::AccessFile& file) {
        using jet::ColumnType;
        file.CreateTable(
            {.sName = u"Owners",
             .columns = {{.sName = u"Id", .type = ColumnType::Long, .bAutonumber = true},
                         {.sName = u"Name", .type = ColumnType::Text, .nCharacters = 50}},
             .indexes = {{.sName = u"PrimaryKey", .columns = {u"Id"}, .bPrimary = true},
                         {.sName = u"ByName", .columns = {u"Name"}, .bUnique = true}}});
        file.CreateTable(
            {.sName = u"Parts",
             .columns = {{.sName = u"Id", .type = ColumnType::Long},
                         {.sName = u"Owner", .type = ColumnType::Long},
                         {.sName = u"Of", .type = ColumnType::Long}},
             .indexes = {{.sName = u"PrimaryKey", .columns = {u"Id"}, .bPrimary = true}}});
        file.CreateTable({.sName = u"Notes",
                          .columns = {{.sName = u"Owner", .type = ColumnType::Long}},
                          .indexes = {}});
        file.CreateRelationship({u"OwnersParts", u"Owners", u"Id", u"Parts", u"Owner", true});
        file.CreateRelationship({u"PartsParts", u"Parts", u"Id", u"Parts", u"Of", true});
        file.CreateRelationship({u"OwnersNotes", u"Owners", u"Id", u"Notes", u"Owner", false});
    }

    std::string Owners() { return Joined("SELECT Id,Name FROM Owners ORDER BY 1"); }
    std::string Parts() { return handle->Column("SELECT Id FROM Parts ORDER BY 1"); }
    std::string Joined(const std::string& sQuery) {
        std::string sJoined;
        for (const auto& row : handle->Query(sQuery))
            sJoined += row[0] + row[1] + ' ';
        return sJoined;
    }
    const std::string sAllOwners = "1IN_1 2IN_2 3IN_3 4IN_4 5<null> ";
    const std::string sAllParts = "10,11,12,13,";
};
INSTANTIATE_TEST_SUITE_P(Generations, ConflictTest,
                         ::testing::Values(jet::Generation::Jet3, jet::Generation::Jet4),
                         GenerationName);

TEST_P(ConflictTest, AReplacedRowGoesWithAllThatGoesWithIt) {
    EXPECT_EQ(handle->Run("INSERT OR REPLACE INTO Owners VALUES(4,'new')"), "");
    EXPECT_EQ(sqlite3_changes(handle->Get()), 1);
    EXPECT_EQ(Owners(), "1IN_1 2IN_2 3IN_3 4new 5<null> ");
    EXPECT_EQ(Parts(), "10,11,12,");
    EXPECT_EQ(handle->Run("REPLACE INTO Owners VALUES(1,'other')"), "");
    EXPECT_EQ(Owners(), "1other 2IN_2 3IN_3 4new 5<null> ");
    EXPECT_EQ(Parts(), "");  // 12 was of another owner, and went with part 11
}

TEST_P(ConflictTest, OneRowReplacesAllThatStandInItsWay) {
    EXPECT_EQ(handle->Run("INSERT OR REPLACE INTO Owners VALUES(4,'in_1')"), "");
    EXPECT_EQ(Owners(), "2IN_2 3IN_3 4in_1 5<null> ");
    EXPECT_EQ(Parts(), "");
    EXPECT_EQ(handle->Run("INSERT INTO Messages VALUES(2,99,'two')"), "");
    EXPECT_EQ(handle->Run("INSERT OR REPLACE INTO Owners VALUES(2,'in_2')"), "");
    EXPECT_EQ(Owners(), "2in_2 3IN_3 4in_1 5<null> ");
    EXPECT_EQ(handle->Column("SELECT String FROM Messages"), "");
}

TEST_P(ConflictTest, ARowInNobodysWayIsAddedToTheOthers) {
    EXPECT_EQ(handle->Run("INSERT OR REPLACE INTO Owners(Name) VALUES('new'),(NULL)"), "");
    EXPECT_EQ(Owners(), sAllOwners + "6new 7<null> ");
    EXPECT_EQ(Parts(), sAllParts);
}

TEST_P(ConflictTest, ARowInTheWayOfAChangeIsReplacedAndTheRowStaysWhereItIs) {
    const std::string sRow = handle->Column("SELECT rowid FROM Owners WHERE Id=2");
    EXPECT_EQ(handle->Run("UPDATE OR REPLACE Owners SET Name='In_4' WHERE Id=2"), "");
    EXPECT_EQ(Owners(), "1IN_1 2In_4 3IN_3 5<null> ");
    EXPECT_EQ(handle->Column("SELECT rowid FROM Owners WHERE Id=2"), sRow);
    EXPECT_EQ(Parts(), "10,11,12,");
    EXPECT_EQ(handle->Run("UPDATE OR REPLACE Owners SET Name='IN_1', Id=1 WHERE Id=1"), "");
    EXPECT_EQ(Parts(), "10,11,12,");
}

TEST_P(ConflictTest, ARowThatWasReplacedByTheSameStatementIsPassedOver) {
    EXPECT_EQ(handle->Run("DELETE FROM Notes; DELETE FROM Parts;"
                          "UPDATE OR REPLACE Owners SET Name='same'"),
              "");
    EXPECT_EQ(Owners(), "5same ");
    EXPECT_EQ(handle->Run("INSERT INTO Owners VALUES(6,'6'),(7,'7'),(8,'8');"
                          "UPDATE OR REPLACE Owners SET Id=Id+1"),
              "");
    EXPECT_EQ(Owners(), "6same 87 ");
}

TEST_P(ConflictTest, WhatKeepsARowThereKeepsItFromBeingReplaced) {
    EXPECT_EQ(handle->Run("INSERT OR REPLACE INTO Owners VALUES(8,'new'),(3,'other')"),
              "other rows refer to the row that is to be deleted");
    EXPECT_EQ(handle->Result(), SQLITE_CONSTRAINT);
    EXPECT_EQ(handle->Run("UPDATE OR REPLACE Owners SET Name='IN_3' WHERE Id=4"),
              "other rows refer to the row that is to be deleted");
    EXPECT_EQ(Owners(), sAllOwners);
    EXPECT_EQ(Parts(), sAllParts);
}

TEST_P(ConflictTest, NothingIsReplacedByARowThatIsRefused) {
    EXPECT_NE(handle->Run("INSERT OR REPLACE INTO Parts VALUES(11,99,NULL)"), "");
    EXPECT_NE(handle->Run("INSERT OR REPLACE INTO Parts VALUES(NULL,1,NULL)"), "");
    EXPECT_NE(handle->Run("INSERT OR REPLACE INTO Owners VALUES(1,'" + std::string(51, 'x') + "')"),
              "");
    EXPECT_EQ(Owners(), sAllOwners);
    EXPECT_EQ(Parts(), sAllParts);
}

TEST_P(ConflictTest, ARowIsNotReplacedByOneThatGoesWithIt) {
    EXPECT_EQ(handle->Run("UPDATE OR REPLACE Parts SET Id=10 WHERE Id=11"),
              "the row would go with one that it replaces");
    EXPECT_EQ(Parts(), sAllParts);
    EXPECT_EQ(handle->Run("INSERT OR REPLACE INTO Parts VALUES(10,1,11)"),
              "a row refers to none that is there");
    EXPECT_EQ(Parts(), sAllParts);
    EXPECT_EQ(handle->Run("INSERT OR REPLACE INTO Parts VALUES(10,4,10)"), "");
    EXPECT_EQ(Joined("SELECT Id,Of FROM Parts ORDER BY 1"), "1010 13<null> ");
}

TEST_P(ConflictTest, MessagesGoWithAReplacedItem) {
    FillItems();
    EXPECT_EQ(handle->Run("INSERT OR REPLACE INTO Items VALUES(1,'IO','IN_1')"), "");
    EXPECT_EQ(handle->Column("SELECT String FROM Messages WHERE Key_id=1"), "");
    EXPECT_EQ(handle->Column("SELECT count(*) FROM Messages"), "2,");
}

// In each of them the second row is refused.
const std::string kThree = "INTO Owners VALUES(8,'a'),(4,'b'),(9,'c')";

TEST_P(ConflictTest, AnIgnoredRowIsPassedOverAlone) {
    EXPECT_EQ(handle->Run("INSERT OR IGNORE " + kThree), "");
    EXPECT_EQ(sqlite3_changes(handle->Get()), 2);
    EXPECT_EQ(Owners(), sAllOwners + "8a 9c ");
    EXPECT_EQ(handle->Run("UPDATE OR IGNORE Owners SET Id=Id+3 WHERE Id IN (1,5,9)"), "");
    EXPECT_EQ(Owners(), "1IN_1 2IN_2 3IN_3 4IN_4 5<null> 8a 12c ");
    EXPECT_EQ(Parts(), sAllParts);
}

TEST_P(ConflictTest, AnIgnoredRowMayHaveNoKeyOrTooLongAText) {
    EXPECT_EQ(handle->Run("INSERT OR IGNORE INTO Parts VALUES(NULL,1,NULL),(14,1,NULL)"), "");
    EXPECT_EQ(Parts(), sAllParts + "14,");
    EXPECT_EQ(handle->Run("INSERT OR IGNORE INTO Owners VALUES(8,'" + std::string(51, 'x') + "')"),
              "");
    EXPECT_EQ(Owners(), sAllOwners);
}

TEST_P(ConflictTest, AFailureLeavesTheRowsAheadOfIt) {
    EXPECT_NE(handle->Run("INSERT OR FAIL " + kThree), "");
    EXPECT_EQ(handle->Result(), SQLITE_CONSTRAINT);
    EXPECT_EQ(Owners(), sAllOwners + "8a ");
    handle = std::make_unique<Handle>(path);
    EXPECT_EQ(Owners(), sAllOwners + "8a ");
    EXPECT_NE(handle->Run("BEGIN; DELETE FROM Owners WHERE Id=8; INSERT OR FAIL " + kThree), "");
    EXPECT_EQ(handle->Run("COMMIT"), "");
    EXPECT_EQ(Owners(), sAllOwners + "8a ");
}

TEST_P(ConflictTest, AnAbortTakesBackTheStatementAndARollbackTheTransaction) {
    EXPECT_NE(handle->Run("BEGIN; DELETE FROM Owners WHERE Id=5; INSERT OR ABORT " + kThree), "");
    EXPECT_EQ(Owners(), "1IN_1 2IN_2 3IN_3 4IN_4 ");
    EXPECT_NE(handle->Run("INSERT OR ROLLBACK " + kThree), "");
    EXPECT_EQ(handle->Result(), SQLITE_CONSTRAINT);
    EXPECT_EQ(Owners(), sAllOwners);
    EXPECT_NE(handle->Run("COMMIT"), "");  // none is open any more
}

TEST_P(ConflictTest, RelationshipsHoldWhateverTheStatementSays) {
    for (const std::string sWay : {"IGNORE", "FAIL", "ROLLBACK"}) {
        ASSERT_EQ(handle->Run("BEGIN; DELETE FROM Owners WHERE Id=5"), "");
        EXPECT_EQ(handle->Run("INSERT OR " + sWay + " INTO Parts VALUES(14,1,NULL),(15,99,NULL)"),
                  "a row refers to none that is there");
        EXPECT_EQ(handle->Run("UPDATE OR " + sWay + " Parts SET Owner=99"),
                  "a row refers to none that is there");
        EXPECT_EQ(handle->Run("UPDATE OR " + sWay + " Owners SET Id=99 WHERE Id=3"),
                  "other rows refer to the row by what is to change");
        EXPECT_EQ(Owners(), "1IN_1 2IN_2 3IN_3 4IN_4 ");
        EXPECT_EQ(Parts(), sAllParts);
        ASSERT_EQ(handle->Run("ROLLBACK"), "");
    }
}

TEST_P(ConflictTest, ARowsNumberIsNoConflict) {
    EXPECT_EQ(handle->Run("INSERT OR IGNORE INTO Owners(rowid,Name) VALUES(7,'x')"),
              "a row's number is given by the file");
    EXPECT_EQ(handle->Run("UPDATE OR IGNORE Owners SET rowid=7"),
              "a row's number is given by the file");
}

TEST_P(TableModuleTest, ARowsNumberIsTheFiles) {
    FillItems();
    EXPECT_EQ(handle->Run("INSERT INTO Items(rowid,KeyString) VALUES(7,'x')"),
              "a row's number is given by the file");
    EXPECT_EQ(handle->Run("UPDATE Items SET rowid=7 WHERE Key_id=1"),
              "a row's number is given by the file");
}

TEST_P(TableModuleTest, MessagesGoWithTheirItemWithoutARelationshipToo) {
    FillItems();
    ASSERT_EQ(handle->Run("DELETE FROM Items WHERE KeyString='IN_1'"), "");
    EXPECT_EQ(handle->Column("SELECT Key_id FROM Messages ORDER BY 1"), "2,3,");
    ASSERT_EQ(handle->Run("DELETE FROM Items"), "");
    EXPECT_EQ(handle->Column("SELECT count(*) FROM Messages"), "0,");
}

// --- Transactions.

TEST_P(TableModuleTest, ATransactionIsKeptOrTakenBackWhole) {
    FillItems();
    ASSERT_EQ(handle->Run("BEGIN; DELETE FROM Items; INSERT INTO Messages VALUES(9,1,'x');"
                          "ROLLBACK"),
              "");
    EXPECT_EQ(handle->Column("SELECT count(*) FROM Items"), "7,");
    EXPECT_EQ(handle->Column("SELECT count(*) FROM Messages"), "4,");
    ASSERT_EQ(handle->Run("BEGIN; DELETE FROM Items WHERE Key_id=1; COMMIT"), "");
    handle = std::make_unique<Handle>(path);
    EXPECT_EQ(handle->Column("SELECT count(*) FROM Items"), "6,");
}

TEST_P(TableModuleTest, SavepointsReachOverBothTables) {
    FillItems();
    ASSERT_EQ(handle->Run("BEGIN; UPDATE Items SET Module='a' WHERE Key_id=1;"
                          "SAVEPOINT one; UPDATE Messages SET String='b' WHERE Key_id=1;"
                          "SAVEPOINT two; UPDATE Items SET Module='c' WHERE Key_id=1;"
                          "DELETE FROM Messages; ROLLBACK TO two; RELEASE two;"
                          "UPDATE Items SET KeyString='d' WHERE Key_id=1"),
              "");
    EXPECT_EQ(handle->Query("SELECT Module,KeyString,(SELECT count(*) FROM Messages WHERE"
                            " String='b') FROM Items WHERE Key_id=1"),
              (Rows{{"a", "d", "2"}}));
    ASSERT_EQ(handle->Run("ROLLBACK TO one; COMMIT"), "");
    EXPECT_EQ(handle->Query("SELECT Module,KeyString FROM Items WHERE Key_id=1"),
              (Rows{{"a", "IN_1"}}));
    EXPECT_EQ(handle->Column("SELECT count(*) FROM Messages WHERE String='b'"), "0,");
}

TEST_P(TableModuleTest, AStatementThatFailsTakesItselfBackAlone) {
    FillItems();
    ASSERT_EQ(handle->Run("BEGIN; DELETE FROM Items WHERE Key_id=7"), "");
    EXPECT_NE(handle->Run("INSERT INTO Items VALUES(20,'IO','x'),(21,'IO','y'),(1,'IO','z')"), "");
    EXPECT_NE(handle->Run("UPDATE Items SET Key_id=3 WHERE Key_id<3"), "");
    ASSERT_EQ(handle->Run("COMMIT"), "");
    EXPECT_EQ(handle->Column("SELECT Key_id FROM Items ORDER BY 1"), "1,2,3,4,5,6,");
    EXPECT_NE(handle->Run("INSERT INTO Items VALUES(20,'IO','x'),(1,'IO','z')"), "");
    EXPECT_EQ(handle->Column("SELECT Key_id FROM Items ORDER BY 1"), "1,2,3,4,5,6,");
}

TEST_P(TableModuleTest, OneConnectionWritesAtATime) {
    FillItems();
    Handle other(path);
    EXPECT_EQ(other.Column("SELECT count(*) FROM Items"), "7,");
    ASSERT_EQ(handle->Run("BEGIN; DELETE FROM Items WHERE Key_id=1"), "");
    EXPECT_NE(other.Run("DELETE FROM Items"), "");
    EXPECT_EQ(other.Result(), SQLITE_BUSY);
    ASSERT_EQ(handle->Run("COMMIT"), "");
    EXPECT_EQ(other.Run("DELETE FROM Items WHERE Key_id=2"), "");
    EXPECT_EQ(handle->Column("SELECT count(*) FROM Items"), "5,");
}

TEST_P(TableModuleTest, AProtectedFileIsReadAndNotWritten) {
    FillItems();
    handle.reset();
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    handle = std::make_unique<Handle>(path);
    EXPECT_EQ(handle->Column("SELECT count(*) FROM Items"), "7,");
    EXPECT_EQ(handle->Run("DELETE FROM Items"), "the file is write-protected");
    EXPECT_EQ(handle->Result(), SQLITE_READONLY);
    EXPECT_EQ(handle->Column("SELECT count(*) FROM Items"), "7,");
}

TEST_P(TableModuleTest, AModuleForAnyFileTakesItsName) {
    FillItems();
    handle->Session().Rest();
    ASSERT_EQ(jetsql::RegisterModuleForAnyFile(handle->Get(), "anyfile"), SQLITE_OK);
    ASSERT_EQ(
        handle->Run("CREATE VIRTUAL TABLE temp.i USING anyfile('" + path.string() + "', 'Items')"),
        "");
    EXPECT_EQ(handle->Column("SELECT count(*) FROM i"), "7,");
    EXPECT_NE(handle->Run("CREATE VIRTUAL TABLE temp.j USING anyfile('" + path.string() + "')"),
              "");
    EXPECT_EQ(
        handle->Run("CREATE VIRTUAL TABLE temp.j USING anyfile('" + path.string() + "','None')"),
        "no such table: None");
    EXPECT_NE(handle->Run("CREATE VIRTUAL TABLE temp.j USING anyfile('/no/such.mdb','Items')"), "");
    ASSERT_EQ(handle->Run("DROP TABLE temp.i"), "");
}

}  // namespace
}  // namespace nomira::testing
