#include "adapters/jet/References.h"

#include <functional>

#include "TestFiles.h"
#include "adapters/jet/DefinitionPages.h"

namespace nomira::jet {
namespace {

std::int64_t Number(const Value& value) {
    return std::get<std::int64_t>(value);
}

class ReferencesTest : public ::testing::TestWithParam<Generation> {
  protected:
    ReferencesTest() : m_file(NewFile(GetParam())) {
        NewTable items{u"Items",
                       {{u"Key_id", ColumnType::Long, 0, true}, {u"Name", ColumnType::Text, 50}},
                       {{u"PrimaryKey", {u"Key_id"}, true, true}}};
        m_items = &m_file->CreateTable(items);
        NewTable messages{u"Messages",
                          {{u"Key_id", ColumnType::Long},
                           {u"Id", ColumnType::Long, 0, true},
                           {u"String", ColumnType::Memo}},
                          {{u"PrimaryKey", {u"Id"}, true, true}}};
        m_messages = &m_file->CreateTable(messages);
        m_file->Pages().Commit();
    }

    void Relate(bool bCascades) {
        m_file->CreateRelationship(
            {u"ItemsMessages", u"Items", u"Key_id", u"Messages", u"Key_id", bCascades});
    }
    // Both sides tell the actions.
    void SetActions(std::uint8_t nUpdate, std::uint8_t nDelete) {
        for (Table* table : {m_items, m_messages}) {
            TableDefinition definition = ReadDefinition(m_file->Pages(), table->Definition().nPage);
            for (LogicalIndex& index : definition.logicalIndexes) {
                if (index.kind != LogicalKind::ForeignKey) continue;
                index.nUpdateAction = nUpdate;
                index.nDeleteAction = nDelete;
            }
            WriteDefinition(m_file->Pages(), definition);
            table->Refresh();
        }
    }

    RowPlace Item(std::int64_t nKey) {
        Row row = {nKey, std::u16string(u"item")};
        return m_items->Insert(row);
    }
    RowPlace Message(Value key) {
        Row row = {std::move(key), Value(), std::u16string(500, u'm')};
        return m_messages->Insert(row);
    }
    FailureKind Refusal(const std::function<void()>& act) { return RefusalOf(*m_file, act); }

    std::unique_ptr<AccessFile> m_file;
    Table* m_items;
    Table* m_messages;
};

TEST_P(ReferencesTest, ARowNeedsTheOneItRefersTo) {
    Relate(true);
    Item(5);
    EXPECT_EQ(Refusal([&] { Message(std::int64_t{6}); }), FailureKind::Constraint);
    const RowPlace place = Message(std::int64_t{5});
    Message(Value());
    Row row = m_messages->Read(place);
    row[0] = std::int64_t{7};
    EXPECT_EQ(Refusal([&] { m_messages->Update(place, row); }), FailureKind::Constraint);
    row[0] = Value();
    m_messages->Update(place, row);
    row[0] = std::int64_t{5};
    m_messages->Update(place, row);
    EXPECT_EQ(m_messages->RowCount(), 2U);
    ExpectSound(*m_file);
}

TEST_P(ReferencesTest, ADeletedRowTakesThoseAlongThatReferToIt) {
    Relate(true);
    const RowPlace one = Item(1);
    Item(2);
    for (int i = 0; i < 300; ++i)
        Message(std::int64_t{1 + i % 2});
    const RowPlace none = Message(Value());
    m_items->Delete(one);
    EXPECT_EQ(m_items->RowCount(), 1U);
    EXPECT_EQ(m_messages->RowCount(), 151U);
    EXPECT_TRUE(m_messages->Has(none));
    for (const auto& [place, row] : RowsOf(*m_messages))
        EXPECT_TRUE(IsNull(row[0]) || row[0] == Value(std::int64_t{2}));
    ExpectSound(*m_file);
}

TEST_P(ReferencesTest, WithoutACascadeTheRowStays) {
    Relate(false);
    const RowPlace one = Item(1);
    const RowPlace two = Item(2);
    Message(std::int64_t{1});
    EXPECT_EQ(Refusal([&] { m_items->Delete(one); }), FailureKind::Constraint);
    m_items->Delete(two);
    EXPECT_EQ(m_items->RowCount(), 1U);
    ExpectSound(*m_file);
}

TEST_P(ReferencesTest, OrItSetsTheColumnsNull) {
    Relate(false);
    SetActions(0, 2);
    const RowPlace one = Item(1);
    const RowPlace message = Message(std::int64_t{1});
    m_items->Delete(one);
    EXPECT_EQ(m_messages->Read(message, 0), Value());
    EXPECT_EQ(m_messages->Read(message, 2), Value(std::u16string(500, u'm')));
    ExpectSound(*m_file);
}

TEST_P(ReferencesTest, AKeyThatIsReferredToStaysAsItIs) {
    Relate(true);
    const RowPlace one = Item(1);
    const RowPlace message = Message(std::int64_t{1});
    Row row = m_items->Read(one);
    row[0] = std::int64_t{9};
    EXPECT_EQ(Refusal([&] { m_items->Update(one, row); }), FailureKind::Constraint);
    row[0] = std::int64_t{1};
    row[1] = std::u16string(u"other");
    m_items->Update(one, row);
    m_messages->Delete(message);
    row[0] = std::int64_t{9};
    m_items->Update(one, row);
    EXPECT_EQ(m_items->Read(one, 0), Value(std::int64_t{9}));
    ExpectSound(*m_file);
}

TEST_P(ReferencesTest, OrThoseThatReferToItFollow) {
    Relate(true);
    SetActions(1, 1);
    const RowPlace one = Item(1);
    Item(2);
    const RowPlace first = Message(std::int64_t{1});
    const RowPlace other = Message(std::int64_t{2});
    Row row = m_items->Read(one);
    row[0] = std::int64_t{9};
    m_items->Update(one, row);
    EXPECT_EQ(m_messages->Read(first, 0), Value(std::int64_t{9}));
    EXPECT_EQ(m_messages->Read(other, 0), Value(std::int64_t{2}));
    ExpectSound(*m_file);
}

TEST_P(ReferencesTest, CascadesGoOnFromTableToTable) {
    Relate(true);
    NewTable notes{u"Notes", {{u"Message", ColumnType::Long}}, {}};
    Table& table = m_file->CreateTable(notes);
    m_file->CreateRelationship({u"MessagesNotes", u"Messages", u"Id", u"Notes", u"Message", true});
    const RowPlace one = Item(1);
    Item(2);
    for (int i = 0; i < 20; ++i) {
        const Value id = m_messages->Read(Message(std::int64_t{1 + i % 2}), 1);
        for (int n = 0; n < 3; ++n) {
            Row note = {id};
            table.Insert(note);
        }
    }
    m_items->Delete(one);
    EXPECT_EQ(m_messages->RowCount(), 10U);
    EXPECT_EQ(table.RowCount(), 30U);
    for (const auto& [place, note] : RowsOf(table))
        EXPECT_EQ(Number(note[0]) % 2, 0);
    ExpectSound(*m_file);
}

TEST_P(ReferencesTest, ARefusalFarDownKeepsAllRows) {
    Relate(true);
    NewTable notes{u"Notes", {{u"Message", ColumnType::Long}}, {}};
    Table& table = m_file->CreateTable(notes);
    m_file->CreateRelationship({u"MessagesNotes", u"Messages", u"Id", u"Notes", u"Message", false});
    const RowPlace one = Item(1);
    Row note = {m_messages->Read(Message(std::int64_t{1}), 1)};
    table.Insert(note);
    EXPECT_EQ(Refusal([&] { m_items->Delete(one); }), FailureKind::Constraint);
    EXPECT_EQ(m_messages->RowCount(), 1U);
}

// A row that would forbid the deletion, or be set Null, goes along by another relationship.
TEST_P(ReferencesTest, ARowThatGoesItselfForbidsNothing) {
    for (const std::uint8_t nAction : {std::uint8_t{0}, std::uint8_t{2}}) {
        const std::u16string sSuffix(1, static_cast<char16_t>(u'0' + nAction));
        // Whose key can't be set Null.
        Table& pairs = m_file->CreateTable({u"Pairs" + sSuffix,
                                            {{u"A", ColumnType::Long}, {u"B", ColumnType::Long}},
                                            {{u"PrimaryKey", {u"B"}, true, true}}});
        m_file->CreateRelationship(
            {u"RA" + sSuffix, u"Items", u"Key_id", u"Pairs" + sSuffix, u"A", true});
        m_file->CreateRelationship(
            {u"RB" + sSuffix, u"Items", u"Key_id", u"Pairs" + sSuffix, u"B", false});
        TableDefinition definition = ReadDefinition(m_file->Pages(), pairs.Definition().nPage);
        for (LogicalIndex& index : definition.logicalIndexes)
            if (index.nDeleteAction == 0) index.nDeleteAction = nAction;
        WriteDefinition(m_file->Pages(), definition);
        const RowPlace one = Item(1);
        const RowPlace two = Item(2);
        Row both = {std::int64_t{1}, std::int64_t{1}};
        pairs.Insert(both);
        m_items->Delete(one);
        EXPECT_EQ(pairs.RowCount(), 0U);
        m_items->Delete(two);
        ExpectSound(*m_file);
    }
}

TEST_P(ReferencesTest, ATableMayReferToItself) {
    NewTable asked{u"Tree",
                   {{u"Id", ColumnType::Long, 0, true}, {u"Parent", ColumnType::Long}},
                   {{u"PrimaryKey", {u"Id"}, true, true}}};
    Table& tree = m_file->CreateTable(asked);
    m_file->CreateRelationship({u"TreeTree", u"Tree", u"Id", u"Tree", u"Parent", true});
    std::vector<RowPlace> places;
    for (std::int64_t i = 1; i <= 31; ++i) {
        Row row = {i, std::max<std::int64_t>(i / 2, 1)};  // the first is its own parent
        places.push_back(tree.Insert(row));
    }
    Row orphan = {std::int64_t{50}, std::int64_t{60}};
    EXPECT_EQ(Refusal([&] { tree.Insert(orphan); }), FailureKind::Constraint);
    tree.Delete(places[1]);  // 2 with 4, 5, 8 to 11, 16 to 23
    EXPECT_EQ(tree.RowCount(), 16U);
    tree.Delete(places[0]);
    EXPECT_EQ(tree.RowCount(), 0U);
    ExpectSound(*m_file);
}

TEST_P(ReferencesTest, ARelationshipWithOneSideAloneIsDamage) {
    Relate(true);
    const RowPlace one = Item(1);
    TableDefinition definition = ReadDefinition(m_file->Pages(), m_messages->Definition().nPage);
    std::erase_if(definition.logicalIndexes,
                  [](const LogicalIndex& index) { return index.kind == LogicalKind::ForeignKey; });
    WriteDefinition(m_file->Pages(), definition);
    EXPECT_EQ(Refusal([&] { m_items->Delete(one); }), FailureKind::Damaged);
}

INSTANTIATE_TEST_SUITE_P(Both, ReferencesTest,
                         ::testing::Values(Generation::Jet3, Generation::Jet4));

}  // namespace
}  // namespace nomira::jet
