#include "adapters/jet/RowCodec.h"

#include <gtest/gtest.h>

#include <random>

namespace nomira::jet {
namespace {

Column MakeColumn(ColumnType type, std::uint16_t nNumber, std::uint16_t nLength) {
    Column column;
    column.type = type;
    column.nNumber = nNumber;
    column.nFlags = ColumnNullable;
    column.nLength = nLength;
    return column;
}

// Columns are added as a file's own maker adds them.
class TableMaker {
  public:
    TableMaker& Fixed(ColumnType type, std::uint16_t nLength) {
        Column column = MakeColumn(type, m_table.nMostColumns++, nLength);
        column.nFlags |= ColumnFixed;
        column.nFixedOffset = m_nFixed;
        if (type != ColumnType::Boolean) m_nFixed += nLength;
        m_table.columns.push_back(column);
        return *this;
    }
    TableMaker& Variable(ColumnType type, std::uint16_t nLength) {
        Column column = MakeColumn(type, m_table.nMostColumns++, nLength);
        column.nVariableIndex = m_table.nVariableColumns++;
        m_table.columns.push_back(column);
        return *this;
    }
    const TableDefinition& Get() const { return m_table; }

  private:
    TableDefinition m_table;
    std::uint16_t m_nFixed = 0;
};

class RowCodecTest : public ::testing::TestWithParam<Generation> {
  protected:
    const Layout& Format() const { return LayoutOf(GetParam()); }
    bool IsJet3() const { return GetParam() == Generation::Jet3; }
    auto TextLength(std::size_t nCharacters) const {
        return static_cast<std::uint16_t>(nCharacters * Format().nCharacterBytes);
    }

    Bytes Encode(const TableDefinition& table, const std::vector<Value>& values,
                 const std::vector<Bytes>& longFields = {}) const {
        Bytes row;
        RowCodec(table, Format()).Encode(values, longFields, row);
        return row;
    }
    std::vector<Value> Decode(const TableDefinition& table, const Bytes& row) const {
        const RowCodec codec(table, Format());
        std::vector<Value> values;
        for (std::size_t i = 0; i < table.columns.size(); ++i)
            values.push_back(codec.Decode(RowView(Format(), row), i));
        return values;
    }
    FailureKind KindOf(const TableDefinition& table, const std::vector<Value>& values) const {
        try {
            Encode(table, values);
        } catch (const Failure& failure) {
            return failure.Kind();
        }
        ADD_FAILURE() << "nothing was refused";
        return FailureKind::Damaged;
    }
};

TEST_P(RowCodecTest, ARowIsTheseBytes) {
    const TableDefinition table = TableMaker()
                                      .Fixed(ColumnType::Long, 4)
                                      .Variable(ColumnType::Text, TextLength(50))
                                      .Fixed(ColumnType::Boolean, 1)
                                      .Variable(ColumnType::Binary, 20)
                                      .Fixed(ColumnType::Integer, 2)
                                      .Get();
    const std::vector<Value> values = {std::int64_t{258}, std::u16string(u"ab"), true,
                                       Bytes{7, 8, 9}, Value()};
    const Bytes jet3 = {5, 2, 1, 0, 0, 0, 0, 'a', 'b', 7, 8, 9, 12, 9, 7, 2, 0x0F};
    const Bytes jet4 = {5, 0, 2, 1,  0, 0,  0, 0, 'a', 0, 'b', 0,
                        7, 8, 9, 15, 0, 12, 0, 8, 0,   2, 0,   0x0F};
    EXPECT_EQ(Encode(table, values), IsJet3() ? jet3 : jet4);
    EXPECT_EQ(Decode(table, IsJet3() ? jet3 : jet4), values);
}

TEST_P(RowCodecTest, ARowWithoutVariableColumnsHasNoTableOfOffsets) {
    const TableDefinition table =
        TableMaker().Fixed(ColumnType::Byte, 1).Fixed(ColumnType::Boolean, 1).Get();
    const Bytes jet3 = {2, 200, 0x01};
    const Bytes jet4 = {2, 0, 200, 0x01};
    EXPECT_EQ(Encode(table, {std::int64_t{200}, false}), IsJet3() ? jet3 : jet4);
    EXPECT_EQ(Decode(table, IsJet3() ? jet3 : jet4),
              (std::vector<Value>{std::int64_t{200}, false}));
}

TEST_P(RowCodecTest, EveryTypeComesBack) {
    const TableDefinition table = TableMaker()
                                      .Fixed(ColumnType::Byte, 1)
                                      .Fixed(ColumnType::Integer, 2)
                                      .Fixed(ColumnType::Long, 4)
                                      .Fixed(ColumnType::Currency, 8)
                                      .Fixed(ColumnType::Single, 4)
                                      .Fixed(ColumnType::Double, 8)
                                      .Fixed(ColumnType::DateTime, 8)
                                      .Fixed(ColumnType::Guid, 16)
                                      .Fixed(ColumnType::Numeric, 17)
                                      .Variable(ColumnType::Binary, 255)
                                      .Variable(ColumnType::Text, TextLength(255))
                                      .Get();
    const std::vector<Value> values = {std::int64_t{255},
                                       std::int64_t{-32768},
                                       std::int64_t{-2147483648LL},
                                       std::int64_t{-9007199254740993LL},
                                       -1.5,
                                       1e300,
                                       -36521.25,
                                       Bytes(16, 3),
                                       Bytes(17, 4),
                                       Bytes{},
                                       std::u16string()};
    EXPECT_EQ(Decode(table, Encode(table, values)), values);
    const std::vector<Value> nulls(values.size());
    EXPECT_EQ(Decode(table, Encode(table, nulls)), nulls);
}

TEST_P(RowCodecTest, TheFlagAndNotTheTypeTellsWhereAColumnIs) {
    TableMaker maker;
    maker.Variable(ColumnType::Long, 4).Fixed(ColumnType::Text, TextLength(4));
    maker.Fixed(ColumnType::Binary, 3);
    const TableDefinition& table = maker.Get();
    const std::vector<Value> values = {std::int64_t{-2}, std::u16string(u"ab"), Bytes{1, 2}};
    EXPECT_EQ(Decode(table, Encode(table, values)),
              (std::vector<Value>{std::int64_t{-2}, std::u16string(u"ab  "), Bytes{1, 2, 0}}));
}

TEST_P(RowCodecTest, AnOldRowHasNullInLaterColumns) {
    TableMaker maker;
    maker.Fixed(ColumnType::Long, 4).Variable(ColumnType::Text, TextLength(20));
    const Bytes row = Encode(maker.Get(), {std::int64_t{5}, std::u16string(u"old")});
    maker.Variable(ColumnType::Text, TextLength(20)).Fixed(ColumnType::Long, 4);
    maker.Fixed(ColumnType::Boolean, 1);
    EXPECT_EQ(Decode(maker.Get(), row), (std::vector<Value>{std::int64_t{5}, std::u16string(u"old"),
                                                            Value(), Value(), false}));
    // Made when the table had no variable column at all.
    TableMaker bare;
    bare.Fixed(ColumnType::Long, 4);
    const Bytes bareRow = Encode(bare.Get(), {std::int64_t{6}});
    bare.Variable(ColumnType::Text, TextLength(20));
    EXPECT_EQ(Decode(bare.Get(), bareRow), (std::vector<Value>{std::int64_t{6}, Value()}));
}

TEST_P(RowCodecTest, DeletedColumnsKeepTheirPlacesInARow) {
    TableMaker maker;
    maker.Variable(ColumnType::Text, TextLength(9)).Variable(ColumnType::Text, TextLength(9));
    maker.Fixed(ColumnType::Long, 4).Variable(ColumnType::Text, TextLength(9));
    TableDefinition table = maker.Get();
    const Bytes row = Encode(table, {std::u16string(u"one"), std::u16string(u"two"),
                                     std::int64_t{3}, std::u16string(u"four")});
    table.columns.erase(table.columns.begin() + 1);
    const std::vector<Value> left = {std::u16string(u"one"), std::int64_t{3},
                                     std::u16string(u"four")};
    EXPECT_EQ(Decode(table, row), left);
    EXPECT_EQ(Decode(table, Encode(table, left)), left);
    // An entry of its own, and no bytes.
    EXPECT_EQ(Encode(table, left).size(), row.size() - (IsJet3() ? 3 : 6));
}

TEST_P(RowCodecTest, RowsOfAllLengthsComeBack) {
    TableMaker maker;
    maker.Fixed(ColumnType::Long, 4);
    for (int i = 0; i < 40; ++i)
        maker.Variable(ColumnType::Binary, 500);
    std::mt19937 random(20);
    int nRefused = 0;
    for (int i = 0; i < 2000; ++i) {
        std::vector<Value> values = {std::int64_t{i}};
        const std::size_t nMost = 1 + random() % 120;
        for (int nColumn = 0; nColumn < 40; ++nColumn) {
            const std::size_t nSize = random() % 4 == 0 ? 0 : random() % nMost;
            values.push_back(random() % 5 == 0 ? Value() : Value(Bytes(nSize, 0xAA)));
        }
        try {
            ASSERT_EQ(Decode(maker.Get(), Encode(maker.Get(), values)), values) << i;
        } catch (const Failure& failure) {
            ASSERT_EQ(failure.Kind(), FailureKind::Constraint);
            ++nRefused;
        }
    }
    EXPECT_LT(nRefused, 1000);
}

TEST_P(RowCodecTest, WhatAColumnCannotHoldIsRefused) {
    const auto fixed = [](ColumnType type, std::uint16_t nLength) {
        return TableMaker().Fixed(type, nLength).Get();
    };
    const auto variable = [](ColumnType type, std::uint16_t nLength) {
        return TableMaker().Variable(type, nLength).Get();
    };
    const auto constraint = FailureKind::Constraint;
    EXPECT_EQ(KindOf(fixed(ColumnType::Byte, 1), {std::int64_t{256}}), constraint);
    EXPECT_EQ(KindOf(fixed(ColumnType::Byte, 1), {std::int64_t{-1}}), constraint);
    EXPECT_EQ(KindOf(fixed(ColumnType::Integer, 2), {std::int64_t{32768}}), constraint);
    EXPECT_EQ(KindOf(fixed(ColumnType::Long, 4), {std::int64_t{2147483648LL}}), constraint);
    EXPECT_EQ(KindOf(fixed(ColumnType::Long, 4), {std::u16string(u"5")}), constraint);
    EXPECT_EQ(KindOf(fixed(ColumnType::Boolean, 1), {std::int64_t{1}}), constraint);
    EXPECT_EQ(KindOf(fixed(ColumnType::Guid, 16), {Bytes(15)}), constraint);
    EXPECT_EQ(KindOf(variable(ColumnType::Binary, 3), {Bytes(4)}), constraint);
    EXPECT_EQ(KindOf(variable(ColumnType::Text, TextLength(3)), {std::u16string(u"abcd")}),
              constraint);
    const auto nBig = static_cast<std::uint16_t>(Format().nMostRowBytes);
    EXPECT_EQ(KindOf(variable(ColumnType::Binary, nBig), {Bytes(nBig)}), constraint);
    if (IsJet3()) {
        EXPECT_EQ(KindOf(variable(ColumnType::Text, 9), {std::u16string(u"Ω")}),
                  FailureKind::Unsupported);
    }
}

TEST_P(RowCodecTest, LongFieldsStandInTheRowAsTheyAre) {
    TableMaker maker;
    maker.Variable(ColumnType::Memo, 0).Variable(ColumnType::Ole, 0).Fixed(ColumnType::Long, 4);
    const std::vector<Bytes> fields = {Bytes(12, 1), {}};
    const Bytes row = Encode(maker.Get(), {Value(), Value(), std::int64_t{9}}, fields);
    const RowView view(Format(), row);
    const auto memo = view.Field(maker.Get().columns[0]);
    ASSERT_TRUE(memo);
    EXPECT_TRUE(std::equal(memo->begin(), memo->end(), fields[0].begin(), fields[0].end()));
    EXPECT_FALSE(view.Field(maker.Get().columns[1]));
}

// Whatever is done to a row's bytes, it is read as some row or is damaged.
TEST_P(RowCodecTest, ABrokenRowIsNeverReadOutside) {
    TableMaker maker;
    maker.Fixed(ColumnType::Long, 4).Variable(ColumnType::Binary, 400);
    maker.Fixed(ColumnType::Guid, 16).Variable(ColumnType::Text, TextLength(255));
    const Bytes row = Encode(
        maker.Get(), {std::int64_t{1}, Bytes(300, 7), Bytes(16, 1), std::u16string(u"a text")});
    std::mt19937 random(5);
    int nDamaged = 0;
    for (int i = 0; i < 5000; ++i) {
        Bytes broken = row;
        for (int n = 0; n < 3; ++n)
            broken[random() % 2 == 0 ? broken.size() - 1 - random() % 12
                                     : random() % broken.size()] =
                static_cast<std::uint8_t>(random());
        if (random() % 3 == 0) broken.resize(random() % broken.size());
        try {
            Decode(maker.Get(), broken);
        } catch (const Failure& failure) {
            ASSERT_EQ(failure.Kind(), FailureKind::Damaged);
            ++nDamaged;
        }
    }
    EXPECT_GT(nDamaged, 100);
}

INSTANTIATE_TEST_SUITE_P(Both, RowCodecTest, ::testing::Values(Generation::Jet3, Generation::Jet4));

// Offsets beyond 255 are told by jumps: one byte for each further segment of the row, which names
// the first entry of that segment.
TEST(Jet3RowTest, ALongRowHasJumps) {
    TableMaker maker;
    maker.Variable(ColumnType::Binary, 255).Variable(ColumnType::Binary, 255);
    maker.Variable(ColumnType::Binary, 255);
    Bytes row;
    RowCodec codec(maker.Get(), kJet3Layout);
    codec.Encode(std::vector<Value>{Bytes(200, 1), Bytes(100, 2), Bytes(230, 3)}, {}, row);
    // Entries 1, 201, 301, the end 531; jumps to entry 2 (256) and entry 3 (512).
    ASSERT_EQ(row.size(), 1U + 530U + 4U + 2U + 1U + 1U);
    const Bytes trailer(row.begin() + 531, row.end());
    EXPECT_EQ(trailer, (Bytes{531 - 512, 301 - 256, 201, 1, 3, 2, 3, 0x07}));
    EXPECT_EQ(codec.Decode(RowView(kJet3Layout, row), 2), Value(Bytes(230, 3)));
}

TEST(Jet3RowTest, AJumpWithoutAnEntryIsADummy) {
    TableMaker maker;
    maker.Variable(ColumnType::Binary, 255).Variable(ColumnType::Binary, 255);
    Bytes row;
    RowCodec codec(maker.Get(), kJet3Layout);
    codec.Encode(std::vector<Value>{Bytes(100, 1), Bytes(152, 2)}, {}, row);
    // The data end at 253, and the row behind 256.
    const Bytes trailer(row.begin() + 253, row.end());
    EXPECT_EQ(trailer, (Bytes{253, 101, 1, 0xFF, 2, 0x03}));
    EXPECT_EQ(codec.Decode(RowView(kJet3Layout, row), 0), Value(Bytes(100, 1)));
    EXPECT_EQ(codec.Decode(RowView(kJet3Layout, row), 1), Value(Bytes(152, 2)));
}

// The number of the dummy is the end's own where a table has all the columns that it can have.
TEST(Jet3RowTest, WithAllColumnsADummyStillIsNoJump) {
    TableMaker maker;
    for (int i = 0; i < 255; ++i)
        maker.Variable(ColumnType::Binary, 255);
    std::vector<Value> values(255);
    values.back() = Bytes{1, 2, 3};
    Bytes row;
    RowCodec codec(maker.Get(), kJet3Layout);
    codec.Encode(values, {}, row);
    EXPECT_EQ(codec.Decode(RowView(kJet3Layout, row), 254), values.back());
    EXPECT_EQ(codec.Decode(RowView(kJet3Layout, row), 253), Value());
}

}  // namespace
}  // namespace nomira::jet
