// What every database engine owes to the program, whatever stands behind it. A test program
// includes this once and instantiates DatabaseEngineContract with its own worlds.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "adapters/contracts/ExpectRaises.h"
#include "database/DatabaseEngine.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {

// An engine with one store, at first empty, and a hand from outside on that store.
class EngineWorld {
  public:
    virtual ~EngineWorld() = default;

    virtual DatabaseEngine& Engine() = 0;
    // The store's path, a free one beside it, and where no file is.
    virtual Text StorePath() const = 0;
    virtual Text FreePath() const = 0;
    virtual Text MissingPath() const = 0;
    // Runs statements on the store, not through the engine.
    virtual void Execute(const std::string& sSql) = 0;
    // Whether the store's file can hold the text as a key.
    virtual bool CanHold(const Text& /*sKey*/) const { return true; }
};

struct WorldMaker {
    const char* sName;
    std::function<std::unique_ptr<EngineWorld>()> make;
};

inline std::string WorldName(const ::testing::TestParamInfo<WorldMaker>& info) {
    return info.param.sName;
}

class DatabaseEngineContract : public ::testing::TestWithParam<WorldMaker> {
  protected:
    DatabaseEngineContract() : world(GetParam().make()) {}

    static Text DriverText(const Text& sPath) {
        return u"DRIVER={Some Driver (*.mdb)};DBQ=" + sPath + u";DefaultDir=C:\\Temp";
    }
    void OpenStore(Connection& fresh) const {
        fresh.SetConnectionText(DriverText(world->StorePath()));
        fresh.Open(u"", u"admin", u"", kOptionUnspecified);
    }
    std::unique_ptr<Connection> OpenedConnection() const {
        auto opened = world->Engine().CreateConnection();
        OpenStore(*opened);
        return opened;
    }
    // Three items of which the first has two equal messages.
    void Fill() const {
        world->Execute(
            "INSERT INTO Items VALUES(1,'IO','IN_1'),(2,'IO','IN_2'),(3,'Flag','FlagText1');"
            "INSERT INTO Messages VALUES(1,99,'one'),(1,99,'one'),(2,99,'two'),(3,99,NULL)");
    }

    std::unique_ptr<Recordset> Opened(TextView sSource, CursorKind cursor = CursorKind::Keyset,
                                      LockKind lock = LockKind::Optimistic) {
        auto recordset = world->Engine().CreateRecordset();
        recordset->Open(sSource, *connection, cursor, lock, kOptionUnspecified);
        return recordset;
    }
    // A query's column from its first row to its last, joined by ",".
    Text Column(TextView sQuery, TextView sColumn) {
        Text sJoined;
        const auto rows = Opened(sQuery, CursorKind::Static, LockKind::ReadOnly);
        for (; !rows->Eof(); rows->MoveNext()) {
            const FieldValue value = rows->Field(sColumn);
            sJoined += IsNull(value) ? Text(u"<null>") : std::get<Text>(value);
            sJoined += u',';
        }
        return sJoined;
    }

    std::unique_ptr<EngineWorld> world;
    std::unique_ptr<Connection> connection = OpenedConnection();
};

// --- Connections.

TEST_P(DatabaseEngineContract, AConnectionIsOpenBetweenOpenAndClose) {
    const auto fresh = world->Engine().CreateConnection();
    EXPECT_EQ(fresh->State(), kStateClosed);
    OpenStore(*fresh);
    EXPECT_EQ(fresh->State(), kStateOpen);
    fresh->Close();
    EXPECT_EQ(fresh->State(), kStateClosed);
    OpenStore(*fresh);
    EXPECT_EQ(fresh->State(), kStateOpen);
}

TEST_P(DatabaseEngineContract, EveryConnectionTextThatNamesTheFileOpensIt) {
    const Text sPath = world->StorePath();
    for (const Text& sText : {u"DBQ=" + sPath, u"dbq=" + sPath + u";", u"Data Source=" + sPath,
                              u"Provider=P;data source=" + sPath + u";Mode=1"}) {
        const auto fresh = world->Engine().CreateConnection();
        fresh->SetProvider(u"Microsoft.Jet.OLEDB.4.0");
        fresh->SetConnectionText(sText);
        fresh->Open(u"", u"admin", u"", kOptionUnspecified);
        EXPECT_EQ(fresh->State(), kStateOpen) << Printable(sText);
    }
}

TEST_P(DatabaseEngineContract, TheTextAtOpenReplacesTheConnectionText) {
    const auto fresh = world->Engine().CreateConnection();
    fresh->SetConnectionText(DriverText(world->MissingPath()));
    fresh->Open(DriverText(world->StorePath()), u"admin", u"", kOptionUnspecified);
    EXPECT_EQ(fresh->State(), kStateOpen);
}

TEST_P(DatabaseEngineContract, AMissingFileIsAFailureAndIsNotMade) {
    const auto fresh = world->Engine().CreateConnection();
    fresh->SetConnectionText(DriverText(world->MissingPath()));
    for (int nTry = 0; nTry < 2; ++nTry) {
        EXPECT_RAISES(ErrorNumber::EngineFailure,
                      fresh->Open(u"", u"admin", u"", kOptionUnspecified));
        EXPECT_EQ(fresh->State(), kStateClosed);
    }
}

TEST_P(DatabaseEngineContract, ATextThatNamesNoFileIsAFailure) {
    const auto fresh = world->Engine().CreateConnection();
    EXPECT_RAISES(ErrorNumber::EngineFailure, fresh->Open(u"", u"admin", u"", kOptionUnspecified));
    EXPECT_RAISES(ErrorNumber::EngineFailure,
                  fresh->Open(u"Driver=x;DBQ=", u"admin", u"", kOptionUnspecified));
}

TEST_P(DatabaseEngineContract, AnOpenConnectionCantBeOpenedAgain) {
    EXPECT_RAISES(ErrorNumber::EngineFailure, OpenStore(*connection));
    EXPECT_EQ(connection->State(), kStateOpen);
}

TEST_P(DatabaseEngineContract, AClosedConnectionCantBeClosedOrUsed) {
    connection->Close();
    EXPECT_RAISES(ErrorNumber::ObjectClosed, connection->Close());
    EXPECT_RAISES(ErrorNumber::ObjectClosed, connection->BeginTrans());
    EXPECT_RAISES(ErrorNumber::ObjectClosed, Opened(u"Items"));
}

TEST_P(DatabaseEngineContract, TwoConnectionsShareOneFile) {
    const auto second = OpenedConnection();
    const auto items = Opened(u"Items");
    items->AddNew();
    items->SetField(u"KeyString", Text(u"IN_1"));
    items->Update();
    const auto rows = world->Engine().CreateRecordset();
    rows->Open(u"SELECT KeyString FROM Items", *second, CursorKind::Static, LockKind::ReadOnly,
               kOptionUnspecified);
    EXPECT_EQ(std::get<Text>(rows->Field(u"KeyString")), u"IN_1");
    second->Close();
    EXPECT_EQ(connection->State(), kStateOpen);
}

// --- Queries.

TEST_P(DatabaseEngineContract, AQueryStandsOnItsFirstRowAndMovesToTheEnd) {
    Fill();
    const auto rows = Opened(u"SELECT Items.KeyString FROM Items WHERE Module='IO'");
    EXPECT_EQ(rows->State(), kStateOpen);
    EXPECT_FALSE(rows->Bof());
    EXPECT_FALSE(rows->Eof());
    EXPECT_EQ(std::get<Text>(rows->Field(u"KeyString")), u"IN_1");
    rows->MoveNext();
    EXPECT_EQ(std::get<Text>(rows->Field(u"KeyString")), u"IN_2");
    rows->MoveNext();
    EXPECT_TRUE(rows->Eof());
    EXPECT_FALSE(rows->Bof());
    EXPECT_RAISES(ErrorNumber::NoCurrentRecord, rows->Field(u"KeyString"));
    EXPECT_RAISES(ErrorNumber::NoCurrentRecord, rows->MoveNext());
    rows->MoveFirst();
    EXPECT_EQ(std::get<Text>(rows->Field(u"KeyString")), u"IN_1");
}

TEST_P(DatabaseEngineContract, WithoutRowsBothEndsAreSet) {
    const auto rows = Opened(u"SELECT Items.KeyString FROM Items");
    EXPECT_TRUE(rows->Bof());
    EXPECT_TRUE(rows->Eof());
    EXPECT_RAISES(ErrorNumber::NoCurrentRecord, rows->MoveFirst());
    EXPECT_RAISES(ErrorNumber::NoCurrentRecord, rows->MoveNext());
    EXPECT_RAISES(ErrorNumber::NoCurrentRecord, rows->Field(u"KeyString"));
    EXPECT_RAISES(ErrorNumber::NoCurrentRecord, rows->SetField(u"KeyString", Text(u"x")));
}

TEST_P(DatabaseEngineContract, TablesColumnsAndFieldsAreFoundInAnyCase) {
    Fill();
    const auto rows = Opened(u"SELECT ITEMS.KEY_ID FROM items WHERE keystring='IN_2'");
    EXPECT_EQ(std::get<std::int64_t>(rows->Field(u"Key_Id")), 2);
    EXPECT_RAISES(ErrorNumber::NoSuchField, rows->Field(u"KeyString"));
}

TEST_P(DatabaseEngineContract, ComparisonsAreExactInCase) {
    Fill();
    EXPECT_EQ(Column(u"SELECT KeyString FROM Items WHERE KeyString='in_1'", u"KeyString"), u"");
    EXPECT_EQ(Column(u"SELECT KeyString FROM Items WHERE KeyString Like 'in%'", u"KeyString"), u"");
}

TEST_P(DatabaseEngineContract, LikeKnowsTheTwoWildcards) {
    Fill();
    world->Execute("INSERT INTO Items VALUES(4,'IO','INX1')");
    EXPECT_EQ(Column(u"SELECT KeyString FROM Items WHERE KeyString Like 'IN_%' ORDER BY Key_id",
                     u"KeyString"),
              u"IN_1,IN_2,INX1,");
    EXPECT_EQ(Column(u"SELECT KeyString FROM Items WHERE KeyString Like '%Text_'", u"KeyString"),
              u"FlagText1,");
}

TEST_P(DatabaseEngineContract, ValuesComeInTheirKinds) {
    Fill();
    const auto rows =
        Opened(u"SELECT Key_id, Language_id, String, 0.5 AS Half FROM Messages WHERE Key_id=3",
               CursorKind::Static, LockKind::ReadOnly);
    EXPECT_EQ(std::get<std::int64_t>(rows->Field(u"Key_id")), 3);
    EXPECT_EQ(std::get<std::int64_t>(rows->Field(u"Language_id")), 99);
    EXPECT_TRUE(IsNull(rows->Field(u"String")));
    EXPECT_EQ(std::get<double>(rows->Field(u"Half")), 0.5);
}

TEST_P(DatabaseEngineContract, ARecordsetShowsTheRowsAsTheyWereAtOpen) {
    Fill();
    for (const CursorKind cursor : {CursorKind::Static, CursorKind::Keyset}) {
        const auto rows = Opened(u"SELECT KeyString FROM Items WHERE Key_id=1", cursor);
        world->Execute("INSERT INTO Items(Module,KeyString) VALUES('IO','IN_3')");
        EXPECT_EQ(std::get<Text>(rows->Field(u"KeyString")), u"IN_1");
        rows->MoveNext();
        EXPECT_TRUE(rows->Eof());
    }
}

TEST_P(DatabaseEngineContract, WhatIsNoQueryIsAFailureAndLeavesTheRecordsetClosed) {
    for (const TextView sSource :
         {TextView(u""), TextView(u"   "), TextView(u"Nowhere"), TextView(u"SELECT x FROM Items"),
          TextView(u"SELECT 1; SELECT 2"),
          TextView(u"SELECT Key_id FROM Items WHERE KeyString='a'b'"), TextView(u"SELECT 'open"),
          TextView(u"SELECT 1\0 ", 10), TextView(u"word word")}) {
        const auto rows = world->Engine().CreateRecordset();
        EXPECT_RAISES(ErrorNumber::EngineFailure,
                      rows->Open(sSource, *connection, CursorKind::Keyset, LockKind::Optimistic,
                                 kOptionUnspecified))
            << Printable(sSource);
        EXPECT_EQ(rows->State(), kStateClosed) << Printable(sSource);
    }
}

TEST_P(DatabaseEngineContract, AClosedRecordsetAnswersNothing) {
    Fill();
    const auto rows = Opened(u"SELECT KeyString FROM Items");
    EXPECT_RAISES(ErrorNumber::EngineFailure, rows->Open(u"Items", *connection, CursorKind::Keyset,
                                                         LockKind::Optimistic, kOptionUnspecified));
    rows->Close();
    EXPECT_EQ(rows->State(), kStateClosed);
    EXPECT_RAISES(ErrorNumber::ObjectClosed, rows->Close());
    EXPECT_RAISES(ErrorNumber::ObjectClosed, rows->Bof());
    EXPECT_RAISES(ErrorNumber::ObjectClosed, rows->Eof());
    EXPECT_RAISES(ErrorNumber::ObjectClosed, rows->MoveFirst());
    EXPECT_RAISES(ErrorNumber::ObjectClosed, rows->MoveNext());
    EXPECT_RAISES(ErrorNumber::ObjectClosed, rows->Field(u"KeyString"));
    EXPECT_RAISES(ErrorNumber::ObjectClosed, rows->AddNew());
    EXPECT_RAISES(ErrorNumber::ObjectClosed, rows->SetField(u"KeyString", Text()));
    EXPECT_RAISES(ErrorNumber::ObjectClosed, rows->Update());
    rows->Open(u"Items", *connection, CursorKind::Keyset, LockKind::Optimistic, kOptionUnspecified);
    EXPECT_EQ(rows->State(), kStateOpen);
}

TEST_P(DatabaseEngineContract, ARecordsetEndsWithItsConnection) {
    Fill();
    const auto rows = Opened(u"SELECT KeyString FROM Items");
    connection->Close();
    EXPECT_EQ(rows->State(), kStateClosed);
    EXPECT_RAISES(ErrorNumber::ObjectClosed, rows->Field(u"KeyString"));
    EXPECT_RAISES(ErrorNumber::ObjectClosed, rows->Close());
    connection.reset();
    EXPECT_EQ(rows->State(), kStateClosed);
}

TEST_P(DatabaseEngineContract, ARecordsetEndsWithAConnectionThatGoesOutOfUse) {
    Fill();
    const auto rows = Opened(u"SELECT KeyString FROM Items");
    connection.reset();
    EXPECT_EQ(rows->State(), kStateClosed);
    EXPECT_RAISES(ErrorNumber::ObjectClosed, rows->Field(u"KeyString"));
}

TEST_P(DatabaseEngineContract, AStatementWithoutRowsRunsAndLeavesTheRecordsetClosed) {
    Fill();
    const auto rows = Opened(u"DELETE FROM Items WHERE KeyString Like 'IN_%'", CursorKind::Static,
                             LockKind::Pessimistic);
    EXPECT_EQ(rows->State(), kStateClosed);
    EXPECT_RAISES(ErrorNumber::ObjectClosed, rows->Close());
    EXPECT_EQ(Column(u"SELECT KeyString FROM Items", u"KeyString"), u"FlagText1,");
}

TEST_P(DatabaseEngineContract, DeletedItemsTakeTheirMessagesAlong) {
    Fill();
    Opened(u"DELETE FROM Items WHERE KeyString='IN_1'");
    EXPECT_EQ(Column(u"SELECT String FROM Messages ORDER BY Key_id", u"String"), u"two,<null>,");
}

// --- Changing a row.

TEST_P(DatabaseEngineContract, TheCurrentRowOfAQueryIsChanged) {
    Fill();
    const auto rows = Opened(u"SELECT Messages.String FROM Messages WHERE Messages.Key_id=2");
    rows->SetField(u"String", Text(u"it's new"));
    EXPECT_EQ(std::get<Text>(rows->Field(u"String")), u"it's new");
    EXPECT_EQ(Column(u"SELECT String FROM Messages WHERE Key_id=2", u"String"), u"two,");
    rows->Update();
    EXPECT_EQ(std::get<Text>(rows->Field(u"String")), u"it's new");
    EXPECT_EQ(Column(u"SELECT String FROM Messages ORDER BY rowid", u"String"),
              u"one,one,it's new,<null>,");
}

TEST_P(DatabaseEngineContract, OfTwoEqualRowsOnlyTheCurrentOneIsChanged) {
    Fill();
    const auto rows = Opened(u"SELECT String FROM Messages WHERE Key_id=1 ORDER BY rowid");
    rows->MoveNext();
    rows->SetField(u"String", Text(u"second"));
    rows->Update();
    EXPECT_EQ(Column(u"SELECT String FROM Messages WHERE Key_id=1 ORDER BY rowid", u"String"),
              u"one,second,");
}

TEST_P(DatabaseEngineContract, AFieldCanBecomeNullAndSeveralChangeAtOnce) {
    Fill();
    const auto rows = Opened(u"SELECT * FROM Messages WHERE Key_id=2");
    rows->SetField(u"String", FieldValue());
    rows->SetField(u"Language_id", std::int64_t{49});
    rows->SetField(u"LANGUAGE_ID", std::int64_t{7});
    rows->Update();
    EXPECT_TRUE(IsNull(rows->Field(u"String")));
    EXPECT_EQ(std::get<std::int64_t>(rows->Field(u"Language_id")), 7);
    EXPECT_EQ(Column(u"SELECT String FROM Messages WHERE Language_id=7", u"String"), u"<null>,");
}

TEST_P(DatabaseEngineContract, AMoveOrACloseDropsAChange) {
    Fill();
    const auto rows = Opened(u"SELECT String FROM Messages WHERE Key_id=2");
    rows->SetField(u"String", Text(u"lost"));
    rows->MoveFirst();
    EXPECT_EQ(std::get<Text>(rows->Field(u"String")), u"two");
    rows->Update();
    rows->SetField(u"String", Text(u"lost"));
    rows->Close();
    EXPECT_EQ(Column(u"SELECT String FROM Messages WHERE Key_id=2", u"String"), u"two,");
}

TEST_P(DatabaseEngineContract, ARowThatIsGoneCantBeChanged) {
    Fill();
    const auto rows = Opened(u"SELECT String FROM Messages WHERE Key_id=2");
    rows->SetField(u"String", Text(u"new"));
    world->Execute("DELETE FROM Messages");
    EXPECT_RAISES(ErrorNumber::EngineFailure, rows->Update());
}

TEST_P(DatabaseEngineContract, ReadOnlyAndStaticRowsCantBeChanged) {
    Fill();
    const auto readOnly =
        Opened(u"SELECT String FROM Messages", CursorKind::Keyset, LockKind::ReadOnly);
    EXPECT_RAISES(ErrorNumber::UpdateNotAllowed, readOnly->SetField(u"String", Text(u"x")));
    EXPECT_RAISES(ErrorNumber::UpdateNotAllowed, readOnly->AddNew());
    const auto fixed = Opened(u"SELECT String FROM Messages", CursorKind::Static);
    EXPECT_RAISES(ErrorNumber::UpdateNotAllowed, fixed->SetField(u"String", Text(u"x")));
    const auto table = Opened(u"Items", CursorKind::Static, LockKind::ReadOnly);
    EXPECT_RAISES(ErrorNumber::UpdateNotAllowed, table->AddNew());
    EXPECT_EQ(std::get<Text>(table->Field(u"KeyString")), u"IN_1");
}

TEST_P(DatabaseEngineContract, RowsThatCantBeToldApartAreReadOnly) {
    Fill();
    for (const TextView sQuery :
         {TextView(u"SELECT Messages.String FROM Items INNER JOIN Messages ON "
                   u"Items.Key_id=Messages.Key_id"),
          TextView(u"SELECT String FROM Messages UNION SELECT KeyString FROM Items"),
          TextView(u"SELECT DISTINCT String FROM Messages"), TextView(u"SELECT 'x' AS String"),
          TextView(u"SELECT String FROM Messages GROUP BY String")}) {
        const auto rows = Opened(sQuery);
        EXPECT_FALSE(rows->Eof());
        EXPECT_RAISES(ErrorNumber::UpdateNotAllowed, rows->SetField(u"String", Text(u"x")))
            << Printable(sQuery);
    }
    const auto rows = Opened(u"SELECT String, 1+1 AS Two FROM Messages");
    EXPECT_RAISES(ErrorNumber::UpdateNotAllowed, rows->SetField(u"Two", std::int64_t{3}));
    rows->SetField(u"String", Text(u"x"));
    rows->Update();
    EXPECT_EQ(std::get<std::int64_t>(rows->Field(u"Two")), 2);
}

TEST_P(DatabaseEngineContract, SortingByAColumnsPlaceCountsTheColumnsOfTheQuery) {
    Fill();
    const auto rows = Opened(u"SELECT Items.KeyString FROM Items ORDER BY 1");
    EXPECT_EQ(std::get<Text>(rows->Field(u"KeyString")), u"FlagText1");
}

// --- Adding a row.

TEST_P(DatabaseEngineContract, ARowIsAddedToATableAndReadsBackItsId) {
    world->Execute("INSERT INTO Items VALUES(41,'IO','IN_1')");
    const auto table = Opened(u"Items");
    table->AddNew();
    table->SetField(u"Module", Text(u"IO"));
    table->SetField(u"keystring", Text(u"IN_2"));
    EXPECT_EQ(std::get<Text>(table->Field(u"KeyString")), u"IN_2");
    EXPECT_TRUE(IsNull(table->Field(u"Key_Id")));
    table->Update();
    EXPECT_EQ(std::get<std::int64_t>(table->Field(u"Key_Id")), 42);
    EXPECT_EQ(std::get<Text>(table->Field(u"Module")), u"IO");
    EXPECT_EQ(Column(u"SELECT KeyString FROM Items ORDER BY Key_id", u"KeyString"), u"IN_1,IN_2,");
}

TEST_P(DatabaseEngineContract, AddedRowsAreAmongTheTablesRows) {
    Fill();
    const auto table = Opened(u"Items", CursorKind::Keyset, LockKind::Pessimistic);
    EXPECT_EQ(std::get<Text>(table->Field(u"KeyString")), u"IN_1");
    for (const TextView sKey : {u"IN_8", u"IN_9"}) {
        table->AddNew();
        table->SetField(u"KeyString", Text(sKey));
        table->Update();
        EXPECT_EQ(std::get<Text>(table->Field(u"KeyString")), sKey);
        EXPECT_FALSE(table->Bof() || table->Eof());
    }
    table->MoveNext();
    EXPECT_TRUE(table->Eof());
    Text sKeys;
    for (table->MoveFirst(); !table->Eof(); table->MoveNext())
        sKeys += std::get<Text>(table->Field(u"KeyString")) + u',';
    EXPECT_EQ(sKeys, u"IN_1,IN_2,FlagText1,IN_8,IN_9,");
}

TEST_P(DatabaseEngineContract, ARowAddedBeforeTheTableWasReadComesOnce) {
    Fill();
    const auto table = Opened(u"Items", CursorKind::Keyset, LockKind::Optimistic);
    table->AddNew();
    table->SetField(u"KeyString", Text(u"IN_8"));
    table->Update();
    Text sKeys;
    for (table->MoveFirst(); !table->Eof(); table->MoveNext())
        sKeys += std::get<Text>(table->Field(u"KeyString")) + u',';
    EXPECT_EQ(sKeys, u"IN_1,IN_2,FlagText1,IN_8,");
}

TEST_P(DatabaseEngineContract, ChangedRowsKeepTheirPlaceAndTheirOtherValues) {
    Fill();
    const auto rows = Opened(u"SELECT * FROM Items ORDER BY Key_id");
    rows->MoveNext();
    rows->SetField(u"KeyString", Text(u"IN_7"));
    rows->Update();
    Text sRows;
    for (rows->MoveFirst(); !rows->Eof(); rows->MoveNext())
        sRows += std::get<Text>(rows->Field(u"Module")) + u':' +
                 std::get<Text>(rows->Field(u"KeyString")) + u',';
    EXPECT_EQ(sRows, u"IO:IN_1,IO:IN_7,Flag:FlagText1,");
}

TEST_P(DatabaseEngineContract, AnAddedRowCanBeChanged) {
    const auto table = Opened(u"Items");
    table->AddNew();
    table->SetField(u"KeyString", Text(u"IN_1"));
    table->Update();
    table->SetField(u"KeyString", Text(u"IN_2"));
    table->Update();
    EXPECT_EQ(std::get<Text>(table->Field(u"KeyString")), u"IN_2");
    EXPECT_EQ(Column(u"SELECT KeyString FROM Items", u"KeyString"), u"IN_2,");
}

TEST_P(DatabaseEngineContract, ARowIsAddedThroughAQueryToo) {
    const auto rows = Opened(u"SELECT KeyString, Key_id, 1+1 AS Two FROM Items");
    rows->AddNew();
    rows->SetField(u"KeyString", Text(u"IN_1"));
    rows->Update();
    EXPECT_EQ(std::get<std::int64_t>(rows->Field(u"Key_Id")), 1);
    EXPECT_TRUE(IsNull(rows->Field(u"Two")));
    EXPECT_EQ(Column(u"SELECT KeyString FROM Items", u"KeyString"), u"IN_1,");
}

TEST_P(DatabaseEngineContract, AnEmptyTableCanBeAddedTo) {
    const auto table = Opened(u"Items");
    EXPECT_TRUE(table->Bof() && table->Eof());
    table->AddNew();
    table->Update();
    EXPECT_FALSE(table->Bof() || table->Eof());
    EXPECT_TRUE(IsNull(table->Field(u"KeyString")));
}

TEST_P(DatabaseEngineContract, AnUnknownFieldCantBeSet) {
    const auto table = Opened(u"Items");
    table->AddNew();
    EXPECT_RAISES(ErrorNumber::NoSuchField, table->SetField(u"Nothing", Text(u"x")));
}

TEST_P(DatabaseEngineContract, ARowThatIsNotCommittedIsDropped) {
    const auto table = Opened(u"Items");
    table->AddNew();
    table->SetField(u"KeyString", Text(u"lost"));
    table->Close();
    EXPECT_EQ(Column(u"SELECT KeyString FROM Items", u"KeyString"), u"");
}

TEST_P(DatabaseEngineContract, ARowThatTheDatabaseRefusesIsDropped) {
    Fill();
    const auto table = Opened(u"Items");
    table->AddNew();
    table->SetField(u"Key_id", std::int64_t{1});
    EXPECT_RAISES(ErrorNumber::EngineFailure, table->Update());
    table->Update();
    EXPECT_EQ(std::get<Text>(table->Field(u"KeyString")), u"IN_1");
    EXPECT_EQ(Column(u"SELECT KeyString FROM Items ORDER BY Key_id", u"KeyString"),
              u"IN_1,IN_2,FlagText1,");
}

TEST_P(DatabaseEngineContract, AMessageNeedsItsItem) {
    const auto table = Opened(u"Messages");
    table->AddNew();
    table->SetField(u"Key_Id", std::int64_t{77});
    table->SetField(u"Language_id", std::int64_t{99});
    EXPECT_RAISES(ErrorNumber::EngineFailure, table->Update());
}

TEST_P(DatabaseEngineContract, TheTableOptionOpensATableToo) {
    Fill();
    const auto table = world->Engine().CreateRecordset();
    table->Open(u"Items", *connection, CursorKind::Keyset, LockKind::Optimistic, kOptionTable);
    EXPECT_EQ(std::get<Text>(table->Field(u"KeyString")), u"IN_1");
    const auto none = world->Engine().CreateRecordset();
    EXPECT_RAISES(ErrorNumber::EngineFailure,
                  none->Open(u"SELECT * FROM Items", *connection, CursorKind::Keyset,
                             LockKind::Optimistic, kOptionTable));
}

TEST_P(DatabaseEngineContract, AnyTextComesBackAsItWentIn) {
    const auto table = Opened(u"Items");
    for (const Text& sText : {Text(u"it's \"x\" %_"), Text(u"äöüß€"), Text(u"a\0b", 3),
                              Text(u"\U0001F916"), Text(1, char16_t{0xDC00}), Text()}) {
        table->AddNew();
        table->SetField(u"KeyString", sText);
        if (!world->CanHold(sText)) {
            EXPECT_RAISES(ErrorNumber::EngineFailure, table->Update()) << Printable(sText);
            continue;
        }
        table->Update();
        EXPECT_EQ(std::get<Text>(table->Field(u"KeyString")), sText);
    }
}

// --- Transactions.

TEST_P(DatabaseEngineContract, ATransactionIsKeptOrTakenBackAsAWhole) {
    const auto add = [&](TextView sKey) {
        const auto table = Opened(u"Items");
        table->AddNew();
        table->SetField(u"KeyString", Text(sKey));
        table->Update();
    };
    connection->BeginTrans();
    add(u"a");
    add(u"b");
    connection->RollbackTrans();
    connection->BeginTrans();
    add(u"c");
    connection->CommitTrans();
    connection->BeginTrans();
    add(u"d");
    connection->Close();
    connection = OpenedConnection();
    EXPECT_EQ(Column(u"SELECT KeyString FROM Items", u"KeyString"), u"c,");
}

TEST_P(DatabaseEngineContract, TransactionsDontNestAndEndOnce) {
    connection->BeginTrans();
    EXPECT_RAISES(ErrorNumber::EngineFailure, connection->BeginTrans());
    connection->CommitTrans();
    EXPECT_RAISES(ErrorNumber::EngineFailure, connection->CommitTrans());
    EXPECT_RAISES(ErrorNumber::EngineFailure, connection->RollbackTrans());
}

// --- Compaction.

TEST_P(DatabaseEngineContract, ACompactedCopyHoldsTheSame) {
    Fill();
    connection->Close();
    world->Engine().CompactDatabase(
        u"Provider=P;Data Source=" + world->StorePath(),
        u"Provider=P;Data Source=" + world->FreePath() + u";Jet OLEDB:Engine Type=4");
    connection->Open(u"DBQ=" + world->FreePath(), u"admin", u"", kOptionUnspecified);
    EXPECT_EQ(Column(u"SELECT KeyString FROM Items ORDER BY Key_id", u"KeyString"),
              u"IN_1,IN_2,FlagText1,");
}

TEST_P(DatabaseEngineContract, CompactionFailsWithoutASourceOrOntoAFile) {
    connection->Close();
    const auto compact = [&](const Text& sFrom, const Text& sTo) {
        return Raised([&] {
            world->Engine().CompactDatabase(u"Data Source=" + sFrom, u"Data Source=" + sTo);
        });
    };
    EXPECT_EQ(compact(world->MissingPath(), world->FreePath()), ErrorNumber::EngineFailure);
    EXPECT_EQ(compact(world->StorePath(), world->StorePath()), ErrorNumber::EngineFailure);
    EXPECT_EQ(compact(world->StorePath(), Text()), ErrorNumber::EngineFailure);
    EXPECT_EQ(compact(world->StorePath(), world->FreePath()), std::nullopt);
    EXPECT_EQ(compact(world->StorePath(), world->FreePath()), ErrorNumber::EngineFailure);
}

TEST_P(DatabaseEngineContract, DeletedIdsAreNotGivenOutAgainAlsoAfterCompaction) {
    Fill();
    Opened(u"DELETE FROM Items WHERE Key_id=3");
    connection->Close();
    world->Engine().CompactDatabase(u"Data Source=" + world->StorePath(),
                                    u"Data Source=" + world->FreePath());
    connection->Open(u"DBQ=" + world->FreePath(), u"admin", u"", kOptionUnspecified);
    const auto table = Opened(u"Items");
    table->AddNew();
    table->Update();
    EXPECT_EQ(std::get<std::int64_t>(table->Field(u"Key_id")), 4);
}

}  // namespace nomira::testing
