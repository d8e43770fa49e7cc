#include "adapters/sqlite/PackedValues.h"

#include <gtest/gtest.h>

#include <memory>

namespace nomira::sqlite {
namespace {

class PackedValuesTest : public ::testing::Test {
  protected:
    PackedValuesTest() { sqlite3_open(":memory:", &m_handle); }
    ~PackedValuesTest() override { sqlite3_close(m_handle); }

    // Packs all columns of all rows.
    void Pack(const std::string& sSql) {
        sqlite3_stmt* statement = nullptr;
        ASSERT_EQ(sqlite3_prepare_v2(m_handle, sSql.c_str(), -1, &statement, nullptr), SQLITE_OK);
        while (sqlite3_step(statement) == SQLITE_ROW)
            for (int n = 0; n < sqlite3_column_count(statement); ++n)
                m_values.Append(statement, n);
        sqlite3_finalize(statement);
    }

    sqlite3* m_handle = nullptr;
    PackedValues m_values;
};

TEST_F(PackedValuesTest, KeepsEachKindOfValue) {
    Pack("SELECT NULL, 9223372036854775807, 2.5, 'Öl', '', x'41', x''");
    ASSERT_EQ(m_values.Count(), 7U);
    EXPECT_EQ(m_values.Get(0), FieldValue());
    EXPECT_EQ(m_values.Get(1), FieldValue(std::int64_t{9223372036854775807}));
    EXPECT_EQ(m_values.Get(2), FieldValue(2.5));
    EXPECT_EQ(m_values.Get(3), FieldValue(Text(u"Öl")));
    EXPECT_EQ(m_values.Get(4), FieldValue(Text()));
    EXPECT_EQ(m_values.Get(5), FieldValue(Text(u"A")));
    EXPECT_EQ(m_values.Get(6), FieldValue(Text()));
}

TEST_F(PackedValuesTest, TextsOfAnyLengthStayAsMoreArrive) {
    Pack(
        "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n LIMIT 900)"
        " SELECT replace(hex(zeroblob(i * 7)), '00', 'a') || i FROM n");
    Pack("SELECT replace(hex(zeroblob(100000)), '00', 'b')");
    Pack("SELECT 'last'");
    ASSERT_EQ(m_values.Count(), 902U);
    for (std::size_t n = 0; n < 900; ++n) {
        const std::string sNumber = std::to_string(n);
        const Text sExpected = Text(n * 7, u'a') + Text(sNumber.begin(), sNumber.end());
        ASSERT_EQ(m_values.Get(n), FieldValue(sExpected)) << n;
    }
    EXPECT_EQ(m_values.Get(900), FieldValue(Text(100000, u'b')));
    EXPECT_EQ(m_values.Get(901), FieldValue(Text(u"last")));
}

TEST_F(PackedValuesTest, TextsStayWhenTheWholeMoves) {
    Pack("SELECT 'a text', 'another one that is longer than a short string'");
    const auto moved = std::make_unique<PackedValues>(std::move(m_values));
    EXPECT_EQ(moved->Get(0), FieldValue(Text(u"a text")));
    EXPECT_EQ(moved->Get(1), FieldValue(Text(u"another one that is longer than a short string")));
}

}  // namespace
}  // namespace nomira::sqlite
