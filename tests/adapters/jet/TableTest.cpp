#include "adapters/jet/Table.h"

#include <functional>
#include <random>

#include "TestFiles.h"
#include "adapters/jet/DataPage.h"
#include "adapters/jet/DefinitionPages.h"

namespace nomira::jet {
namespace {

std::u16string Text(std::size_t nLength, char16_t c = u'x') {
    return std::u16string(nLength, c);
}

std::int64_t Number(const Value& value) {
    return std::get<std::int64_t>(value);
}

class TableTest : public ::testing::TestWithParam<Generation> {
  protected:
    TableTest() : m_file(NewFile(GetParam())), m_table(Make()) { m_file->Pages().Commit(); }

    Table& Make() {
        NewTable table;
        table.sName = u"Things";
        table.columns = {{u"Id", ColumnType::Long, 0, true},
                         {u"Name", ColumnType::Text, 255},
                         {u"Code", ColumnType::Long},
                         {u"Note", ColumnType::Memo},
                         {u"Flag", ColumnType::Boolean}};
        table.indexes = {{u"PrimaryKey", {u"Id"}, true, true},
                         {u"Name", {u"Name"}},
                         {u"Code", {u"Code"}, false, true}};
        return m_file->CreateTable(table);
    }

    RowPlace Insert(Value name, Value code = {}, Value note = {}) {
        Row row = {Value(), std::move(name), std::move(code), std::move(note), false};
        return m_table.Insert(row);
    }
    void Set(RowPlace place, std::size_t nColumn, Value value) {
        Row row = m_table.Read(place);
        row[nColumn] = std::move(value);
        m_table.Update(place, row);
    }
    DataPage PageOf(RowPlace place) { return {m_file->Pages(), place.nPage}; }
    std::vector<std::uint32_t> Pages(RowPlace map) {
        return UsageMap(m_file->Pages(), map).Pages();
    }
    std::vector<std::uint32_t> OwnedPages() { return Pages(m_table.Definition().ownedMap); }
    std::vector<std::uint32_t> LongPages() {
        return Pages(m_table.Definition().longColumns.at(0).owned);
    }
    FailureKind Refusal(const std::function<void()>& act) { return RefusalOf(*m_file, act); }

    std::unique_ptr<AccessFile> m_file;
    Table& m_table;
};

TEST_P(TableTest, ARowComesBackAsItWasInserted) {
    Row row = {Value(), std::u16string(u"Ventil"), std::int64_t{-5}, Text(5000, u'ä'), true};
    const RowPlace place = m_table.Insert(row);
    EXPECT_EQ(row[0], Value(std::int64_t{1}));
    EXPECT_EQ(m_table.Read(place), row);
    EXPECT_EQ(m_table.Read(place, 3), Value(Text(5000, u'ä')));
    EXPECT_TRUE(m_table.Has(place));
    EXPECT_EQ(m_table.RowCount(), 1U);
    ExpectSound(*m_file);
}

TEST_P(TableTest, IntegersAndAsciiNeedNoCopyWhereTheyLieInTheRow) {
    constexpr const char* kNone = "none";
    const auto glance = [&](RowPlace place, std::size_t nColumn) -> std::string {
        Bytes room;
        const Table::Glance found = m_table.GlanceAt(place, nColumn, room);
        if (const auto* nValue = std::get_if<std::int64_t>(&found)) return std::to_string(*nValue);
        if (const auto* text = std::get_if<ByteView>(&found)) return {text->begin(), text->end()};
        return kNone;
    };
    const RowPlace plain = Insert(std::u16string(u"Ventil"), {}, std::u16string(u"open"));
    EXPECT_EQ(glance(plain, 0), "1");
    EXPECT_EQ(glance(plain, 1), "Ventil");
    EXPECT_EQ(glance(plain, 2), kNone);  // Null
    EXPECT_EQ(glance(plain, 3), "open");
    EXPECT_EQ(glance(plain, 4), kNone);  // neither
    const RowPlace other = Insert(std::u16string(u"Öl"), std::int64_t{-7}, Text(500, u'x'));
    EXPECT_EQ(glance(other, 1), kNone);
    EXPECT_EQ(glance(other, 2), "-7");
    EXPECT_EQ(glance(other, 3), kNone);  // it lies elsewhere
    EXPECT_EQ(glance(Insert(std::u16string(), {}, std::u16string()), 1), kNone);
}

TEST_P(TableTest, ARowThatIsReadAgainIsAsItIsByThen) {
    const Value open = std::u16string(u"open");
    const Value closed = std::u16string(u"closed");
    const RowPlace place = Insert(open, std::int64_t{1});
    const RowPlace below = Insert(std::u16string(u"below"), std::int64_t{2});
    m_file->Pages().Commit();
    EXPECT_EQ(m_table.Read(place, 1), open);
    Set(place, 1, closed);
    EXPECT_EQ(m_table.Read(place, 1), closed);
    EXPECT_EQ(m_table.Read(below, 2), Value(std::int64_t{2}));
    m_file->Pages().Rollback();
    EXPECT_EQ(m_table.Read(place, 1), open);
    Set(place, 1, Text(200, u'x'));  // the row below moves on its page
    m_table.Delete(place);
    EXPECT_EQ(Refusal([&] { m_table.Read(place, 1); }), FailureKind::Damaged);
    EXPECT_EQ(m_table.Read(below, 2), Value(std::int64_t{2}));
    m_file->Pages().Rollback();
    EXPECT_EQ(m_table.Read(place, 1), open);
}

TEST_P(TableTest, MissingValuesAreNull) {
    Row row;
    const RowPlace place = m_table.Insert(row);
    EXPECT_EQ(m_table.Read(place), (Row{std::int64_t{1}, Value(), Value(), Value(), false}));
    Row tooMany(6);
    EXPECT_EQ(Refusal([&] { m_table.Insert(tooMany); }), FailureKind::Constraint);
    EXPECT_EQ(Refusal([&] { m_table.Update(place, Row(4)); }), FailureKind::Constraint);
}

TEST_P(TableTest, EmptyTextsAreNotNull) {
    const RowPlace place = Insert(std::u16string(), {}, std::u16string());
    EXPECT_EQ(m_table.Read(place, 1), Value(std::u16string()));
    EXPECT_EQ(m_table.Read(place, 3), Value(std::u16string()));
}

TEST_P(TableTest, AutonumbersGoOnBehindTheHighest) {
    Insert(u"one");
    Row given = {std::int64_t{500}};
    m_table.Insert(given);
    Row low = {std::int64_t{-7}};
    m_table.Insert(low);
    Row next;
    m_table.Insert(next);
    EXPECT_EQ(next[0], Value(std::int64_t{501}));
    const RowPlace place = Insert(u"two");
    Set(place, 0, std::int64_t{600});
    Row last;
    m_table.Insert(last);
    EXPECT_EQ(last[0], Value(std::int64_t{601}));
    ExpectSound(*m_file);
}

TEST_P(TableTest, AutonumbersOfRefusedOrTakenBackRowsAreGivenAgain) {
    Insert(u"one", std::int64_t{5});
    Row refused = {Value(), Value(), std::int64_t{5}};
    EXPECT_EQ(Refusal([&] { m_table.Insert(refused); }), FailureKind::Constraint);
    m_file->Pages().Commit();
    Insert(u"taken back");
    m_file->Pages().Rollback();
    EXPECT_EQ(Number(m_table.Read(Insert(u"two"), 0)), 2);
    Row highest = {std::int64_t{2147483647}};
    m_table.Insert(highest);
    Row none;
    EXPECT_EQ(Refusal([&] { m_table.Insert(none); }), FailureKind::Constraint);
}

TEST_P(TableTest, AKeyStandsOnceInAUniqueIndex) {
    const RowPlace place = Insert(u"one", std::int64_t{5});
    const RowPlace other = Insert(u"two", std::int64_t{6});
    Row twice = {std::int64_t{1}};
    EXPECT_EQ(Refusal([&] { m_table.Insert(twice); }), FailureKind::Constraint);
    EXPECT_EQ(Refusal([&] { Set(other, 2, std::int64_t{5}); }), FailureKind::Constraint);
    Set(place, 2, std::int64_t{5});
    Set(place, 1, std::u16string(u"two"));
    // Null stands in a unique index as often as it likes, but in no primary key.
    Insert(u"three");
    Insert(u"four");
    Set(place, 2, Value());
    EXPECT_EQ(Refusal([&] { Set(place, 0, Value()); }), FailureKind::Constraint);
    ExpectSound(*m_file);
}

TEST_P(TableTest, CaseAndTrailingBlanksMakeNoOtherKey) {
    NewTable asked{u"Names", {{u"Name", ColumnType::Text, 50}}, {{u"N", {u"Name"}, false, true}}};
    Table& names = m_file->CreateTable(asked);
    Row row = {std::u16string(u"Motor")};
    names.Insert(row);
    for (const char16_t* sName : {u"motor", u"MOTOR  ", u"Motor"}) {
        row = {std::u16string(sName)};
        EXPECT_EQ(Refusal([&] { names.Insert(row); }), FailureKind::Constraint);
    }
    row = {std::u16string(u" Motor")};
    names.Insert(row);
    EXPECT_EQ(names.RowCount(), 2U);
}

TEST_P(TableTest, WhatCannotBeStoredIsRefusedBeforeAnythingChanges) {
    Row row = {Value(), Text(256)};
    EXPECT_EQ(Refusal([&] { m_table.Insert(row); }), FailureKind::Constraint);
    row = {Value(), Value(), std::u16string(u"5")};
    EXPECT_EQ(Refusal([&] { m_table.Insert(row); }), FailureKind::Constraint);
    row = {Value(), std::u16string(u"ok"), Value(), Text(5000), std::int64_t{1}};
    EXPECT_EQ(Refusal([&] { m_table.Insert(row); }), FailureKind::Constraint);
    // No order of texts tells where this one belongs.
    row = {Value(), std::u16string(u"\x4E00")};
    EXPECT_EQ(Refusal([&] { m_table.Insert(row); }), FailureKind::Unsupported);
    EXPECT_EQ(m_table.RowCount(), 0U);
}

TEST_P(TableTest, ARowThatNoPageTakesIsRefusedWithItsLongValues) {
    NewTable asked;
    asked.sName = u"Wide";
    for (int i = 0; i < 20; ++i)
        asked.columns.push_back({u"C" + std::u16string(1, static_cast<char16_t>(u'a' + i)),
                                 ColumnType::Text, 255, false, false});
    asked.columns.push_back({u"Note", ColumnType::Memo});
    Table& wide = m_file->CreateTable(asked);
    Row row(20, Text(250));
    row.push_back(Text(3000));
    EXPECT_EQ(Refusal([&] { wide.Insert(row); }), FailureKind::Constraint);
    EXPECT_EQ(wide.RowCount(), 0U);
    ExpectSound(*m_file);
}

TEST_P(TableTest, AGrowingRowKeepsItsPlace) {
    std::vector<RowPlace> places;
    for (int i = 0; i < 30; ++i)
        places.push_back(Insert(Text(20), std::int64_t{i}));
    const auto before = RowsOf(m_table).size();
    for (const std::size_t nLength : {250, 10, 255, 3, 120, 255}) {
        for (std::size_t i = 0; i < places.size(); ++i)
            Set(places[i], 1,
                Text((nLength * (i + 1)) % 256, static_cast<char16_t>(u'a' + i % 26)));
        EXPECT_EQ(RowsOf(m_table).size(), before);
        for (std::size_t i = 0; i < places.size(); ++i) {
            EXPECT_TRUE(m_table.Has(places[i]));
            EXPECT_EQ(m_table.Read(places[i], 1),
                      Value(Text((nLength * (i + 1)) % 256, static_cast<char16_t>(u'a' + i % 26))));
            EXPECT_EQ(m_table.Read(places[i], 2), Value(static_cast<std::int64_t>(i)));
        }
        ExpectSound(*m_file);
    }
    for (const RowPlace place : places)
        m_table.Delete(place);
    EXPECT_TRUE(OwnedPages().empty());
    ExpectSound(*m_file);
}

TEST_P(TableTest, AMovedRowIsToldByItsOldPlaceAlone) {
    std::vector<RowPlace> places;
    do {
        places.push_back(Insert(Text(100)));
    } while (places.back().nPage == places.front().nPage);
    places.pop_back();
    const RowPlace moved = places.front();
    Set(moved, 1, Text(255));
    ASSERT_EQ(PageOf(moved).Flags(moved.nRow), SlotMoved);
    const ByteView pointer = PageOf(moved).Row(moved.nRow);
    EXPECT_EQ(pointer.size(), 4U);
    const RowPlace target{LoadU24(pointer, 1), pointer[0]};
    EXPECT_NE(target.nPage, moved.nPage);
    EXPECT_EQ(PageOf(target).Flags(target.nRow), SlotHidden);
    EXPECT_FALSE(m_table.Has(target));
    EXPECT_THROW(m_table.Read(target), Failure);
    EXPECT_EQ(m_table.Read(moved, 1), Value(Text(255)));
    // Back home, once there is room.
    Set(moved, 1, Text(90));
    EXPECT_EQ(PageOf(moved).Flags(moved.nRow), 0);
    EXPECT_TRUE(PageOf(target).IsDeleted(target.nRow));
    ExpectSound(*m_file);
}

TEST_P(TableTest, ARowThatMovedAwayTwiceLeavesNothingBehind) {
    std::vector<RowPlace> places;
    do {
        places.push_back(Insert(Text(100)));
    } while (places.back().nPage == places.front().nPage);
    const RowPlace moved = places.front();
    // The other page fills up around the row that moved there.
    Set(moved, 1, Text(200));
    const std::uint32_t nOther = LoadU24(PageOf(moved).Row(moved.nRow), 1);
    while (PageOf({nOther, 0}).HasRoom(150))
        Insert(Text(100));
    Set(moved, 1, Text(255, u'Y'));
    Set(places[1], 1, Text(255, u'Z'));
    EXPECT_EQ(m_table.Read(moved, 1), Value(Text(255, u'Y')));
    EXPECT_EQ(m_table.Read(places[1], 1), Value(Text(255, u'Z')));
    ExpectSound(*m_file);
    for (const auto& [place, row] : RowsOf(m_table))
        m_table.Delete(place);
    EXPECT_TRUE(OwnedPages().empty());
    ExpectSound(*m_file);
}

TEST_P(TableTest, AMovedRowThatGoesInCirclesIsDamage) {
    const RowPlace place = Insert(u"one");
    Bytes pointer(4);
    pointer[0] = place.nRow;
    StoreU24(pointer, 1, place.nPage);
    PageOf(place).Replace(place.nRow, pointer, SlotMoved);
    EXPECT_THROW(m_table.Read(place), Failure);
    pointer[0] = 200;
    PageOf(place).Replace(place.nRow, pointer, SlotMoved);
    EXPECT_THROW(m_table.Read(place), Failure);
    StoreU24(pointer, 1, 1);
    PageOf(place).Replace(place.nRow, pointer, SlotMoved);
    EXPECT_THROW(m_table.Read(place), Failure);
}

TEST_P(TableTest, DeletedRowsAreGone) {
    const RowPlace one = Insert(u"one", std::int64_t{1}, Text(9000));
    const RowPlace two = Insert(u"two", std::int64_t{2});
    const auto longPages = LongPages();
    ASSERT_FALSE(longPages.empty());
    m_table.Delete(one);
    EXPECT_FALSE(m_table.Has(one));
    EXPECT_THROW(m_table.Read(one), Failure);
    EXPECT_THROW(m_table.Delete(one), Failure);
    EXPECT_EQ(m_table.RowCount(), 1U);
    EXPECT_TRUE(LongPages().empty());
    for (const std::uint32_t nPage : longPages)
        EXPECT_TRUE(IsFree(m_file->Pages(), nPage));
    EXPECT_EQ(RowsOf(m_table).size(), 1U);
    EXPECT_TRUE(RowsOf(m_table).contains(two));
    ExpectSound(*m_file);
}

TEST_P(TableTest, PlacesThatAreNoRowsAreNone) {
    const RowPlace place = Insert(u"one");
    for (const RowPlace other :
         {RowPlace{0, 0}, RowPlace{1, 0}, RowPlace{2, 0}, RowPlace{place.nPage, 1},
          RowPlace{100000, 0}, RowPlace{m_table.Definition().ownedMap.nPage, 0}}) {
        EXPECT_FALSE(m_table.Has(other));
        EXPECT_THROW(m_table.Read(other), Failure);
    }
}

TEST_P(TableTest, AWalkOutlivesChanges) {
    std::vector<RowPlace> places;
    for (int i = 0; i < 400; ++i)
        places.push_back(Insert(Text(60), std::int64_t{i}));
    std::size_t nSeen = 0;
    for (auto scan = m_table.Rows(); !scan.AtEnd(); scan.Next()) {
        EXPECT_NE(Number(m_table.Read(scan.Place(), 2)) % 3, 1);
        // The row that the walk stands on, and one ahead of it.
        const std::int64_t nCode = Number(m_table.Read(scan.Place(), 2));
        if (nCode % 3 == 0 && nCode + 1 < 400)
            m_table.Delete(places[static_cast<std::size_t>(nCode) + 1]);
        m_table.Delete(scan.Place());
        ++nSeen;
    }
    EXPECT_EQ(nSeen, 267U);
    EXPECT_EQ(m_table.RowCount(), 0U);
    EXPECT_TRUE(OwnedPages().empty());
}

TEST_P(TableTest, RowsFillTheirPages) {
    for (int i = 0; i < 3000; ++i)
        Insert(Text(40));
    std::size_t nFree = 0;
    for (const std::uint32_t nPage : OwnedPages())
        nFree += PageOf({nPage, 0}).FreeBytes();
    EXPECT_LT(nFree, OwnedPages().size() * m_file->Pages().Format().nPageSize / 20);
    // Room that deleted rows leave is filled again.
    const std::size_t nPages = OwnedPages().size();
    std::size_t n = 0;
    std::size_t nDeleted = 0;
    for (const auto& [place, row] : RowsOf(m_table))
        if (n++ % 10 < 5) m_table.Delete(place), ++nDeleted;
    for (std::size_t i = 0; i < nDeleted * 9 / 10; ++i)
        Insert(Text(40));
    EXPECT_LE(OwnedPages().size(), nPages);
    ExpectSound(*m_file);
}

TEST_P(TableTest, APageWithAllItsRowNumbersUsedIsLeft) {
    NewTable asked{u"Bits", {{u"B", ColumnType::Boolean}}, {}};
    Table& bits = m_file->CreateTable(asked);
    for (int i = 0; i < 600; ++i) {
        Row row = {i % 2 == 0};
        bits.Insert(row);
    }
    EXPECT_EQ(Pages(bits.Definition().ownedMap).size(), 3U);
    EXPECT_EQ(RowsOf(bits).size(), 600U);
    ExpectSound(*m_file);
}

TEST_P(TableTest, AnUnchangedLongValueStaysWhereItIs) {
    const RowPlace place = Insert(u"one", {}, Text(3000, u'ä'));
    const auto pages = LongPages();
    const std::uint32_t nPage = pages.at(0);
    const std::size_t nSlots = PageOf({nPage, 0}).Slots();
    Set(place, 1, std::u16string(u"two"));
    EXPECT_EQ(LongPages(), pages);
    EXPECT_EQ(PageOf({nPage, 0}).Slots(), nSlots);
    EXPECT_FALSE(PageOf({nPage, 0}).IsDeleted(0));
    EXPECT_EQ(m_table.Read(place, 3), Value(Text(3000, u'ä')));
    Set(place, 3, Text(10));
    EXPECT_TRUE(LongPages().empty());
    Set(place, 3, Text(30000));
    Set(place, 3, Value());
    EXPECT_TRUE(LongPages().empty());
    EXPECT_EQ(m_table.Read(place, 3), Value());
    ExpectSound(*m_file);
}

TEST_P(TableTest, WhatIsRolledBackIsAsBefore) {
    for (int i = 0; i < 100; ++i)
        Insert(Text(50), std::int64_t{i}, Text(200));
    m_file->Pages().Commit();
    const auto before = RowsOf(m_table);
    for (const auto& [place, row] : before)
        if (place.nRow % 2 == 0) m_table.Delete(place);
    for (int i = 0; i < 300; ++i)
        Insert(Text(50), std::int64_t{1000 + i}, Text(200));
    m_file->Pages().Rollback();
    EXPECT_EQ(RowsOf(m_table), before);
    ExpectSound(*m_file);
    Insert(u"next");
    EXPECT_EQ(m_table.RowCount(), 101U);
    ExpectSound(*m_file);
}

TEST_P(TableTest, StatisticsCountTheKeysThatDiffer) {
    for (int i = 0; i < 20; ++i)
        Insert(Text(5, static_cast<char16_t>(u'a' + i % 4)), std::int64_t{i});
    const TableDefinition now = ReadDefinition(m_file->Pages(), m_table.Definition().nPage);
    EXPECT_EQ(now.realIndexes[0].nDistinctKeys, 20U);
    EXPECT_EQ(now.realIndexes[1].nDistinctKeys, 4U);
    EXPECT_EQ(now.nRows, 20U);
    EXPECT_EQ(now.nLastAutonumber, 20U);
    m_table.BuildIndex(1);
    const TableDefinition built = ReadDefinition(m_file->Pages(), m_table.Definition().nPage);
    EXPECT_EQ(built.realIndexes[1].nEntriesAtBuild, 20U);
    EXPECT_EQ(built.realIndexes[1].nDistinctKeys, 4U);
    ExpectSound(*m_file);
}

TEST_P(TableTest, AnyChangesAgreeWithAModel) {
    std::mt19937 random(77);
    std::map<RowPlace, Row> model;
    m_file->Pages().Commit();
    std::map<RowPlace, Row> committed;
    const auto randomRow = [&] {
        Row row(5);
        if (random() % 8 != 0)
            row[1] = Text(random() % 200, static_cast<char16_t>(u'a' + random() % 26));
        if (random() % 2 == 0) row[2] = static_cast<std::int64_t>(random() % 2000);
        if (random() % 2 == 0) row[3] = Text(random() % (random() % 20 == 0 ? 9000 : 150));
        row[4] = random() % 2 == 0;
        return row;
    };
    int nRefused = 0;
    for (int i = 0; i < 3000; ++i) {
        const auto nAct = random() % 100;
        try {
            if (nAct < 45 || model.empty()) {
                Row row = randomRow();
                const RowPlace place = m_table.Insert(row);
                ASSERT_TRUE(model.emplace(place, row).second);
            } else {
                auto chosen = std::next(model.begin(), static_cast<long>(random() % model.size()));
                if (nAct < 75) {
                    Row row = randomRow();
                    row[0] = chosen->second[0];
                    m_table.Update(chosen->first, row);
                    chosen->second = row;
                } else if (nAct < 97) {
                    m_table.Delete(chosen->first);
                    model.erase(chosen);
                } else if (nAct < 98) {
                    m_file->Pages().Rollback();
                    model = committed;
                } else {
                    m_file->Pages().Commit();
                    committed = model;
                }
            }
        } catch (const Failure& failure) {
            ASSERT_EQ(failure.Kind(), FailureKind::Constraint);
            ++nRefused;
        }
        if (i % 200 == 0) {
            ASSERT_EQ(RowsOf(m_table), model) << i;
            ExpectSound(*m_file);
        }
    }
    EXPECT_EQ(RowsOf(m_table), model);
    EXPECT_GT(nRefused, 10);
    ExpectSound(*m_file);
}

INSTANTIATE_TEST_SUITE_P(Both, TableTest, ::testing::Values(Generation::Jet3, Generation::Jet4));

}  // namespace
}  // namespace nomira::jet
