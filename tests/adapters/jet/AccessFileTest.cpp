#include "adapters/jet/AccessFile.h"

#include <functional>

#include "TestFiles.h"
#include "adapters/jet/Catalogue.h"
#include "adapters/jet/DefinitionPages.h"
#include "adapters/jet/Names.h"

namespace nomira::jet {
namespace {

NewTable TwoColumns(std::u16string sName) {
    return {std::move(sName),
            {{u"Id", ColumnType::Long, 0, true}, {u"Name", ColumnType::Text, 50}},
            {{u"PrimaryKey", {u"Id"}, true, true}}};
}

class AccessFileTest : public ::testing::TestWithParam<Generation> {
  protected:
    AccessFileTest() : m_file(NewFile(GetParam())) {}

    bool IsJet3() const { return GetParam() == Generation::Jet3; }
    FailureKind Refusal(const std::function<void()>& act) { return RefusalOf(*m_file, act); }
    FailureKind TableRefusal(const std::function<void(NewTable&)>& change) {
        NewTable table = TwoColumns(u"Things");
        change(table);
        return Refusal([&] { m_file->CreateTable(table); });
    }
    std::vector<Row> RightsOf(std::int64_t nObject) {
        std::vector<Row> rights;
        SystemTable table(*m_file, kRightsTable);
        for (const auto& [place, row] : RowsOf(table.Rows()))
            if (row[table.Column(u"ObjectId")] == Value(nObject))
                rights.push_back({row[table.Column(u"SID")], row[table.Column(u"ACM")],
                                  row[table.Column(u"FInheritable")]});
        return rights;
    }
    // Of the catalogue's row of that object.
    Value ObjectField(std::int64_t nObject, std::u16string_view sColumn) {
        SystemTable table(*m_file, kObjectsTable);
        for (const auto& [place, row] : RowsOf(table.Rows()))
            if (row[table.Column(u"Id")] == Value(nObject)) return row[table.Column(sColumn)];
        return {};
    }

    std::unique_ptr<AccessFile> m_file;
};

TEST_P(AccessFileTest, ANewFileHasTheSystemsTables) {
    for (const char16_t* sName :
         {u"MSysObjects", u"MSysACEs", u"MSysQueries", u"msysrelationships"})
        EXPECT_NE(m_file->FindTable(sName), nullptr);
    EXPECT_EQ(m_file->FindTable(u"Things"), nullptr);
    for (const CatalogueEntry& entry : m_file->Catalogue())
        EXPECT_TRUE(entry.IsSystem() || !entry.IsTable());
    EXPECT_THROW(m_file->TableAt(1), Failure);
    EXPECT_THROW(m_file->TableAt(99999), Failure);
    ExpectSound(*m_file);
}

TEST_P(AccessFileTest, AFileWithoutACatalogueIsRefused) {
    EXPECT_THROW(AccessFile(std::make_unique<MemoryPages>(GetParam())), Failure);
    EXPECT_THROW(AccessFile(std::make_unique<MemoryPages>(GetParam(), Bytes(100000))), Failure);
}

TEST_P(AccessFileTest, ANewTableIsFoundByItsName) {
    Table& made = m_file->CreateTable(TwoColumns(u"Things"));
    EXPECT_EQ(m_file->FindTable(u"THINGS"), &made);
    EXPECT_EQ(&m_file->TableAt(made.Definition().nPage), &made);
    const auto catalogue = m_file->Catalogue();
    const auto entry = std::find_if(catalogue.begin(), catalogue.end(),
                                    [](const auto& e) { return e.sName == u"Things"; });
    ASSERT_NE(entry, catalogue.end());
    EXPECT_TRUE(entry->IsTable());
    EXPECT_FALSE(entry->IsSystem());
    EXPECT_EQ(entry->nId, static_cast<std::int32_t>(made.Definition().nPage));
    EXPECT_EQ(entry->nParent, kTablesParent);
    ExpectSound(*m_file);
}

TEST_P(AccessFileTest, ANewTableIsEverybodys) {
    Table& made = m_file->CreateTable(TwoColumns(u"Things"));
    // Masked as the file's own entries are: the engine's identity is 02 03.
    Bytes mask = std::get<Bytes>(ObjectField(kObjectsTable, u"Owner"));
    ASSERT_EQ(mask.size(), 2U);
    mask = {static_cast<std::uint8_t>(mask[0] ^ 2), static_cast<std::uint8_t>(mask[1] ^ 3)};
    const Bytes admin = {static_cast<std::uint8_t>(mask[0] ^ 3),
                         static_cast<std::uint8_t>(mask[1] ^ 1)};
    const Bytes users = {static_cast<std::uint8_t>(mask[0] ^ 2),
                         static_cast<std::uint8_t>(mask[1] ^ 1)};
    const auto rights = RightsOf(made.Definition().nPage);
    ASSERT_GE(rights.size(), 2U);
    EXPECT_EQ(rights[0], (Row{admin, std::int64_t{0xFFEFF}, false}));
    EXPECT_EQ(rights[1], (Row{users, std::int64_t{0xFFEFF}, false}));
    EXPECT_EQ(ObjectField(made.Definition().nPage, u"Owner"), Value(admin));
    EXPECT_GT(std::get<double>(ObjectField(made.Definition().nPage, u"DateCreate")), 40000);
}

TEST_P(AccessFileTest, WhoeverInheritsFromTheParentMayUseANewTable) {
    const Bytes group(102, 0x5A);
    SystemTable(*m_file, kRightsTable)
        .Insert({{u"ObjectId", std::int64_t{kTablesParent}},
                 {u"SID", group},
                 {u"ACM", std::int64_t{0x12345}},
                 {u"FInheritable", true}});
    Table& made = m_file->CreateTable(TwoColumns(u"Things"));
    const auto rights = RightsOf(made.Definition().nPage);
    EXPECT_NE(std::find(rights.begin(), rights.end(), Row{group, std::int64_t{0x12345}, false}),
              rights.end());
}

TEST_P(AccessFileTest, ANewTablesDefinition) {
    NewTable asked = TwoColumns(u"Things");
    asked.columns.push_back({u"Flag", ColumnType::Boolean});
    asked.columns.push_back({u"Note", ColumnType::Memo});
    asked.columns.push_back({u"When", ColumnType::DateTime});
    asked.columns.push_back({u"Raw", ColumnType::Binary, 30});
    asked.columns.push_back({u"Wide", ColumnType::Text, 255, false, false});
    asked.indexes.push_back({u"Both", {u"Name", u"When"}});
    const std::uint32_t nPage = m_file->CreateTable(asked).Definition().nPage;
    const TableDefinition table = ReadDefinition(m_file->Pages(), nPage);
    struct Expected {
        int nFlags;
        int nFixedOffset;
        int nVariableIndex;
        int nLength;
    };
    const int nWidth = IsJet3() ? 1 : 2;
    const Expected expected[] = {
        {0x07, 0, 0, 4}, {0x02, 0, 0, 50 * nWidth}, {0x03, 4, 1, 1},           {0x02, 0, 1, 0},
        {0x03, 4, 2, 8}, {0x02, 0, 2, 30},          {0x02, 0, 3, 255 * nWidth}};
    ASSERT_EQ(table.columns.size(), std::size(expected));
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const Column& column = table.columns[i];
        EXPECT_EQ(column.nNumber, i);
        EXPECT_EQ(column.nFlags, expected[i].nFlags) << i;
        EXPECT_EQ(column.nFixedOffset, expected[i].nFixedOffset) << i;
        EXPECT_EQ(column.nVariableIndex, expected[i].nVariableIndex) << i;
        EXPECT_EQ(column.nLength, expected[i].nLength) << i;
        EXPECT_EQ(column.nSortOrder, kGeneralOrder);
        const bool bCompressed = !IsJet3() && (i == 1 || i == 3);
        EXPECT_EQ(column.nExtension, bCompressed ? 1 : 0) << i;
    }
    EXPECT_EQ(table.nVariableColumns, 4);
    EXPECT_EQ(table.longColumns.size(), 1U);
    ASSERT_EQ(table.logicalIndexes.size(), 2U);
    EXPECT_EQ(table.logicalIndexes[0].sName, u"Both");
    EXPECT_EQ(table.logicalIndexes[0].nNumber, 1U);
    EXPECT_EQ(table.logicalIndexes[1].kind, LogicalKind::PrimaryKey);
    EXPECT_EQ(table.realIndexes[0].nFlags, IsJet3() ? 0x09 : 0x89);
    EXPECT_EQ(table.realIndexes[1].nFlags, IsJet3() ? 0x00 : 0x80);
    ExpectSound(*m_file);
}

TEST_P(AccessFileTest, ATableMayHaveADefinitionOfSeveralPages) {
    NewTable asked;
    asked.sName = u"Wide";
    for (int i = 0; i < 255; ++i) {
        std::u16string sName = u"Column ";
        for (const char c : std::to_string(i))
            sName.push_back(static_cast<char16_t>(c));
        asked.columns.push_back({sName, i % 5 == 0 ? ColumnType::Memo : ColumnType::Long});
    }
    for (int i = 0; i < 32; ++i)
        asked.indexes.push_back(
            {{u'I', static_cast<char16_t>(u'a' + i / 8), static_cast<char16_t>(u'a' + i % 8)},
             {asked.columns[static_cast<std::size_t>(1 + i % 4)].sName}});
    Table& wide = m_file->CreateTable(asked);
    Row row(255);
    row[0] = std::u16string(100, u'w');
    row[254] = std::int64_t{7};
    const RowPlace place = wide.Insert(row);
    EXPECT_EQ(wide.Read(place), row);
    ExpectSound(*m_file);
}

TEST_P(AccessFileTest, WhatCannotBeATableIsRefused) {
    m_file->CreateTable(TwoColumns(u"Taken"));
    const auto constraint = FailureKind::Constraint;
    for (const char16_t* sName :
         {u"", u"taken", u"MSysObjects", u"A.B", u"A!", u"`A", u"[A", u"A]", u" A", u"A\n"})
        EXPECT_EQ(TableRefusal([&](NewTable& t) { t.sName = sName; }), constraint);
    EXPECT_EQ(TableRefusal([](NewTable& t) { t.sName = std::u16string(65, u'a'); }), constraint);
    EXPECT_EQ(TableRefusal([](NewTable& t) { t.columns.clear(); }), constraint);
    EXPECT_EQ(TableRefusal([](NewTable& t) { t.columns[1].sName = u"ID"; }), constraint);
    EXPECT_EQ(TableRefusal([](NewTable& t) { t.columns[1].sName = u"a.b"; }), constraint);
    EXPECT_EQ(TableRefusal([](NewTable& t) { t.columns[1].nCharacters = 256; }), constraint);
    EXPECT_EQ(TableRefusal([](NewTable& t) { t.columns[1].nCharacters = 0; }), constraint);
    EXPECT_EQ(TableRefusal([](NewTable& t) { t.columns[1].bAutonumber = true; }), constraint);
    EXPECT_EQ(TableRefusal([](NewTable& t) {
                  t.columns.push_back({u"More", ColumnType::Long, 0, true});
              }),
              constraint);
    EXPECT_EQ(TableRefusal([](NewTable& t) { t.columns.resize(256, {u"More"}); }), constraint);
    EXPECT_EQ(TableRefusal([](NewTable& t) { t.indexes[0].columns = {u"None"}; }), constraint);
    EXPECT_EQ(TableRefusal([](NewTable& t) { t.indexes[0].columns.clear(); }), constraint);
    EXPECT_EQ(TableRefusal([](NewTable& t) { t.indexes.push_back(t.indexes[0]); }), constraint);
    EXPECT_EQ(TableRefusal([](NewTable& t) {
                  t.indexes.push_back({u"Second", {u"Name"}, true, true});
              }),
              constraint);
}

TEST_P(AccessFileTest, ATableThatWasTakenBackIsNotThere) {
    Table& taken = m_file->CreateTable(TwoColumns(u"Things"));
    Row row = {Value(), std::u16string(u"one")};
    taken.Insert(row);
    const std::uint32_t nPage = taken.Definition().nPage;
    m_file->Pages().Rollback();
    EXPECT_EQ(m_file->FindTable(u"Things"), nullptr);
    EXPECT_THROW(m_file->TableAt(nPage), Failure);
    EXPECT_THROW(taken.Insert(row), Failure);
    // Another one takes its page.
    NewTable other = TwoColumns(u"Others");
    other.columns.push_back({u"More", ColumnType::Text, 20});
    Table& made = m_file->CreateTable(other);
    ASSERT_EQ(made.Definition().nPage, nPage);
    EXPECT_EQ(made.Definition().columns.size(), 3U);
    row = {Value(), std::u16string(u"one"), std::u16string(u"more")};
    const RowPlace place = made.Insert(row);
    EXPECT_EQ(made.Read(place), row);
    EXPECT_EQ(m_file->FindTable(u"Things"), nullptr);
    ExpectSound(*m_file);
}

class RelationshipTest : public AccessFileTest {
  protected:
    RelationshipTest() {
        m_items = &m_file->CreateTable(TwoColumns(u"Items"));
        m_messages = &m_file->CreateTable(
            {u"Messages", {{u"Key_id", ColumnType::Long}, {u"Text", ColumnType::Memo}}, {}});
        m_file->Pages().Commit();
    }

    NewRelationship Asked() const {
        return {u"ItemsMessages", u"Items", u"Id", u"Messages", u"Key_id", true};
    }
    FailureKind RelationshipRefusal(const std::function<void(NewRelationship&)>& change) {
        NewRelationship asked = Asked();
        change(asked);
        return Refusal([&] { m_file->CreateRelationship(asked); });
    }
    static LogicalIndex Find(const TableDefinition& table, std::u16string_view sName) {
        for (const LogicalIndex& index : table.logicalIndexes)
            if (index.sName == sName) return index;
        ADD_FAILURE() << "no such index";
        return {};
    }

    Table* m_items;
    Table* m_messages;
};

TEST_P(RelationshipTest, BothTablesTellOfIt) {
    m_file->CreateRelationship(Asked());
    const TableDefinition items = m_items->Definition();
    const TableDefinition messages = m_messages->Definition();
    ASSERT_EQ(items.logicalIndexes.size(), 2U);
    ASSERT_EQ(messages.logicalIndexes.size(), 1U);
    const LogicalIndex primary = Find(items, u".rB");
    const LogicalIndex foreign = Find(messages, u"ItemsMessages");
    EXPECT_EQ(items.logicalIndexes[0].sName, u".rB");  // by name
    EXPECT_EQ(primary.side, RelatedSide::Primary);
    EXPECT_EQ(foreign.side, RelatedSide::Foreign);
    EXPECT_EQ(primary.kind, LogicalKind::ForeignKey);
    EXPECT_EQ(foreign.kind, LogicalKind::ForeignKey);
    EXPECT_EQ(primary.nRelatedTable, messages.nPage);
    EXPECT_EQ(foreign.nRelatedTable, items.nPage);
    EXPECT_EQ(primary.nRelatedIndex, static_cast<std::int32_t>(foreign.nNumber));
    EXPECT_EQ(foreign.nRelatedIndex, static_cast<std::int32_t>(primary.nNumber));
    EXPECT_EQ(primary.nDeleteAction, 1);
    EXPECT_EQ(foreign.nDeleteAction, 1);
    EXPECT_EQ(foreign.nUpdateAction, 0);
    EXPECT_EQ(primary.nRealIndex, Find(items, u"PrimaryKey").nRealIndex);
    EXPECT_EQ(messages.realIndexes[foreign.nRealIndex].nFlags, IsJet3() ? 0 : 0x80);
    ExpectSound(*m_file);
}

TEST_P(RelationshipTest, TheSystemsTablesTellOfIt) {
    m_file->CreateRelationship(Asked());
    SystemTable table(*m_file, kRelationshipsTable);
    const auto rows = RowsOf(table.Rows());
    ASSERT_EQ(rows.size(), 1U);
    const RowPlace place = rows.begin()->first;
    EXPECT_EQ(table.Read(place, u"szRelationship"), Value(std::u16string(u"ItemsMessages")));
    EXPECT_EQ(table.Read(place, u"grbit"), Value(std::int64_t{0x1000}));
    EXPECT_EQ(table.Read(place, u"ccolumn"), Value(std::int64_t{1}));
    EXPECT_EQ(table.Read(place, u"icolumn"), Value(std::int64_t{0}));
    EXPECT_EQ(table.Read(place, u"szObject"), Value(std::u16string(u"Messages")));
    EXPECT_EQ(table.Read(place, u"szColumn"), Value(std::u16string(u"Key_id")));
    EXPECT_EQ(table.Read(place, u"szReferencedObject"), Value(std::u16string(u"Items")));
    EXPECT_EQ(table.Read(place, u"szReferencedColumn"), Value(std::u16string(u"Id")));
    const auto catalogue = m_file->Catalogue();
    const auto entry = std::find_if(catalogue.begin(), catalogue.end(),
                                    [](const auto& e) { return e.sName == u"ItemsMessages"; });
    ASSERT_NE(entry, catalogue.end());
    EXPECT_EQ(entry->nType, 8);
    EXPECT_EQ(entry->nParent, kRelationshipsParent);
    EXPECT_LT(entry->nId, 0);
    const auto rights = RightsOf(entry->nId);
    ASSERT_GE(rights.size(), 2U);
    EXPECT_EQ(rights[0][1], Value(std::int64_t{0xF00FE}));
    EXPECT_EQ(rights[1][1], Value(std::int64_t{0xFFFFF}));
}

TEST_P(RelationshipTest, AnIndexOfTheColumnIsShared) {
    Table& shared = m_file->CreateTable({u"Shared",
                                         {{u"Key_id", ColumnType::Long}, {u"L", ColumnType::Long}},
                                         {{u"Both", {u"Key_id", u"L"}}, {u"K", {u"Key_id"}}}});
    NewRelationship asked = Asked();
    asked.sForeignTable = u"Shared";
    m_file->CreateRelationship(asked);
    EXPECT_EQ(shared.Definition().realIndexes.size(), 2U);
    EXPECT_EQ(Find(shared.Definition(), u"ItemsMessages").nRealIndex,
              Find(shared.Definition(), u"K").nRealIndex);
    ExpectSound(*m_file);
}

TEST_P(RelationshipTest, ANewIndexHasTheRowsThatWereThere) {
    for (int i = 0; i < 500; ++i) {
        Row item;
        m_items->Insert(item);
        Row message = {i % 7 == 0 ? Value() : Value(std::int64_t{1 + i / 2})};
        m_messages->Insert(message);
    }
    m_file->CreateRelationship(Asked());
    ASSERT_EQ(m_messages->Definition().realIndexes.size(), 1U);
    ExpectSound(*m_file);
    m_items->Delete(RowsOf(*m_items).begin()->first);
    EXPECT_EQ(m_messages->RowCount(), 499U);
    EXPECT_EQ(m_items->RowCount(), 499U);
}

TEST_P(RelationshipTest, RowsWithoutTheOneTheyReferToForbidIt) {
    Row message = {std::int64_t{1}};
    m_messages->Insert(message);
    EXPECT_EQ(RelationshipRefusal([](auto&) {}), FailureKind::Constraint);
    Row item;
    m_items->Insert(item);
    m_file->CreateRelationship(Asked());
    ExpectSound(*m_file);
}

TEST_P(RelationshipTest, ATableMayHaveMany) {
    for (int i = 0; i < 30; ++i) {
        const auto cTens = static_cast<char16_t>(u'0' + i / 10);
        const auto cOnes = static_cast<char16_t>(u'0' + i % 10);
        NewTable table{{u'F', cTens, cOnes}, {{u"Key_id", ColumnType::Long}}, {}};
        m_file->CreateTable(table);
        NewRelationship asked = Asked();
        asked.sName = u"R" + table.sName;
        asked.sForeignTable = table.sName;
        m_file->CreateRelationship(asked);
    }
    const auto& indexes = m_items->Definition().logicalIndexes;
    EXPECT_EQ(Find(m_items->Definition(), u".rC").side, RelatedSide::Primary);
    EXPECT_EQ(Find(m_items->Definition(), u".ra").side, RelatedSide::Primary);
    EXPECT_GT(indexes.size(), 27U);
    EXPECT_TRUE(std::is_sorted(indexes.begin(), indexes.end(), [](const auto& a, const auto& b) {
        return ComesBefore(a.sName, b.sName);
    }));
    ExpectSound(*m_file);
}

TEST_P(RelationshipTest, WhatCannotBeOneIsRefused) {
    const auto constraint = FailureKind::Constraint;
    EXPECT_EQ(RelationshipRefusal([](auto& r) { r.sName = u""; }), constraint);
    EXPECT_EQ(RelationshipRefusal([](auto& r) { r.sPrimaryTable = u"None"; }), constraint);
    EXPECT_EQ(RelationshipRefusal([](auto& r) { r.sForeignTable = u"None"; }), constraint);
    EXPECT_EQ(RelationshipRefusal([](auto& r) { r.sPrimaryColumn = u"None"; }), constraint);
    EXPECT_EQ(RelationshipRefusal([](auto& r) { r.sForeignColumn = u"None"; }), constraint);
    EXPECT_EQ(RelationshipRefusal([](auto& r) { r.sPrimaryColumn = u"Name"; }), constraint);
    EXPECT_EQ(RelationshipRefusal([](auto& r) { r.sForeignColumn = u"Text"; }), constraint);
    m_file->CreateRelationship(Asked());
    EXPECT_EQ(RelationshipRefusal([](auto&) {}), constraint);
}

TEST_P(RelationshipTest, OneThatWasTakenBackBindsNoRows) {
    m_file->CreateRelationship(Asked());
    m_file->Pages().Rollback();
    Row message = {std::int64_t{1}};
    m_messages->Insert(message);
    EXPECT_EQ(m_messages->Definition().realIndexes.size(), 0U);
    EXPECT_EQ(m_items->RowCount(), 0U);
    ExpectSound(*m_file);
}

INSTANTIATE_TEST_SUITE_P(Both, AccessFileTest,
                         ::testing::Values(Generation::Jet3, Generation::Jet4));
INSTANTIATE_TEST_SUITE_P(Both, RelationshipTest,
                         ::testing::Values(Generation::Jet3, Generation::Jet4));

}  // namespace
}  // namespace nomira::jet
