#include "adapters/jet/LongValues.h"

#include <gtest/gtest.h>

#include "adapters/jet/MemoryPages.h"

namespace nomira::jet {
namespace {

class LongValuesTest : public ::testing::TestWithParam<Generation> {
  protected:
    LongValuesTest() {
        while (m_pages.Count() < kFirstOrdinaryPage)
            m_pages.Append();
        WriteGlobalMap(m_pages, kFirstOrdinaryPage);
        std::uint32_t nMapPage = 0;
        m_maps.owned = NewMap(m_pages, nMapPage);
        m_maps.free = NewMap(m_pages, nMapPage);
    }

    static Bytes Filled(std::size_t nSize) {
        Bytes bytes(nSize);
        for (std::size_t i = 0; i < nSize; ++i)
            bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
        return bytes;
    }
    std::size_t Owned() { return UsageMap(m_pages, m_maps.owned).Pages().size(); }
    std::size_t Chunk() const { return m_pages.Format().nLongChunk; }

    MemoryPages m_pages{GetParam()};
    LongColumnMaps m_maps;
};

TEST_P(LongValuesTest, AShortValueStaysInItsField) {
    const Bytes field = InlineLongField(Filled(20));
    EXPECT_EQ(field.size(), 32U);
    EXPECT_EQ(LoadU32(field, 0), 0x80000014U);
    EXPECT_EQ(ReadLongValue(m_pages, field), Filled(20));
    EXPECT_EQ(ReadLongValue(m_pages, InlineLongField({})), Bytes());
    LongValues(m_pages, m_maps).Free(field);
    EXPECT_EQ(Owned(), 0U);
}

TEST_P(LongValuesTest, ValuesOfAllLengthsComeBack) {
    LongValues values(m_pages, m_maps);
    for (const std::size_t nSize :
         {std::size_t{1}, std::size_t{65}, Chunk() - 1, Chunk(), Chunk() + 1, 2 * Chunk(),
          2 * Chunk() + 1, std::size_t{50000}}) {
        const Bytes field = values.Write(Filled(nSize));
        EXPECT_EQ(field.size(), kLongFieldHead);
        EXPECT_EQ((LoadU32(field, 0) & 0x40000000) != 0, nSize <= Chunk()) << nSize;
        EXPECT_EQ(ReadLongValue(m_pages, field), Filled(nSize)) << nSize;
    }
}

TEST_P(LongValuesTest, SmallValuesShareAPage) {
    LongValues values(m_pages, m_maps);
    for (int i = 0; i < 10; ++i)
        values.Write(Filled(100));
    EXPECT_EQ(Owned(), 1U);
    // Another walker finds the same page by the map.
    LongValues(m_pages, m_maps).Write(Filled(100));
    EXPECT_EQ(Owned(), 1U);
    EXPECT_EQ(DataPage(m_pages, UsageMap(m_pages, m_maps.owned).Pages()[0]).Owner(),
              kOwnerOfLongValues);
}

TEST_P(LongValuesTest, FreedPagesAreGivenBack) {
    LongValues values(m_pages, m_maps);
    const Bytes kept = values.Write(Filled(100));
    const std::uint32_t nCount = m_pages.Count();
    for (int i = 0; i < 20; ++i) {
        const Bytes big = values.Write(Filled(40000));
        const Bytes small = values.Write(Filled(300));
        values.Free(big);
        values.Free(small);
        values.Free(big);  // is gone: nothing happens
    }
    EXPECT_EQ(Owned(), 1U);
    EXPECT_EQ(ReadLongValue(m_pages, kept), Filled(100));
    EXPECT_LE(m_pages.Count(), nCount + 40000 / Chunk() + 2);
    values.Free(kept);
    EXPECT_EQ(Owned(), 0U);
}

TEST_P(LongValuesTest, APageThatWasRolledBackIsNotBelieved) {
    LongValues values(m_pages, m_maps);
    m_pages.Commit();
    values.Write(Filled(100));
    m_pages.Rollback();
    // The page that was the column's becomes another column's.
    LongColumnMaps others;
    std::uint32_t nMapPage = 0;
    others.owned = NewMap(m_pages, nMapPage);
    others.free = NewMap(m_pages, nMapPage);
    LongValues(m_pages, others).Write(Filled(10));
    const Bytes field = values.Write(Filled(100));
    EXPECT_TRUE(UsageMap(m_pages, m_maps.owned).Contains(LoadU24(field, 5)));
    EXPECT_FALSE(UsageMap(m_pages, others.owned).Contains(LoadU24(field, 5)));
}

TEST_P(LongValuesTest, AFieldThatLiesIsDamage) {
    LongValues values(m_pages, m_maps);
    const Bytes good = values.Write(Filled(3 * Chunk()));
    const auto broken = [&](std::size_t nPlace, std::uint32_t nValue) {
        Bytes field = good;
        StoreU32(field, nPlace, nValue);
        EXPECT_THROW(ReadLongValue(m_pages, field), Failure) << nPlace;
    };
    broken(0, 0x3FFFFFFF);                                            // longer than the file
    broken(0, static_cast<std::uint32_t>(3 * Chunk() + 1));           // longer than the chain
    broken(0, 0x40000000 | static_cast<std::uint32_t>(3 * Chunk()));  // one row alone
    broken(0, 0x80000001);                                            // in the field
    broken(4, 0);                                                     // on page 0
    broken(4, 0xFFFFFF00);                                            // behind the end
    broken(4, LoadU32(good, 4) | 0xFF);                               // no such row
    EXPECT_THROW(ReadLongValue(m_pages, Bytes(11)), Failure);
    EXPECT_THROW(ReadLongValue(m_pages, Bytes()), Failure);
}

TEST_P(LongValuesTest, AChainInCirclesEnds) {
    LongValues values(m_pages, m_maps);
    Bytes field = values.Write(Filled(2 * Chunk()));
    const RowPlace first{LoadU24(field, 5), field[4]};
    StoreU24(DataPage(m_pages, first.nPage).ChangeRow(first.nRow), 1, first.nPage);
    StoreU8(DataPage(m_pages, first.nPage).ChangeRow(first.nRow), 0, first.nRow);
    EXPECT_EQ(ReadLongValue(m_pages, field).size(), 2 * Chunk());
    values.Free(field);
    EXPECT_EQ(Owned(), 1U);  // the second row, which nothing names any more
}

TEST_P(LongValuesTest, AChainOfEmptyRowsIsDamage) {
    LongValues values(m_pages, m_maps);
    const Bytes field = values.Write(Filled(2 * Chunk()));
    const RowPlace first{LoadU24(field, 5), field[4]};
    Bytes onlyItself(4);
    onlyItself[0] = first.nRow;
    StoreU24(onlyItself, 1, first.nPage);
    DataPage(m_pages, first.nPage).Replace(first.nRow, onlyItself);
    EXPECT_THROW(ReadLongValue(m_pages, field), Failure);
}

TEST_P(LongValuesTest, WhatIsNotTheColumnsOwnIsNotFreed) {
    const std::uint32_t nPage = TakePage(m_pages);
    DataPage::Format(m_pages, nPage, 77);
    DataPage(m_pages, nPage).Add(Filled(50));
    Bytes field(kLongFieldHead);
    StoreU32(field, 0, 0x40000000 | 50);
    StoreU24(field, 5, nPage);
    LongValues(m_pages, m_maps).Free(field);
    EXPECT_FALSE(DataPage(m_pages, nPage).IsDeleted(0));
}

TEST_P(LongValuesTest, AColumnWithoutAMapOfFreePagesStoresValues) {
    m_maps.free = {};
    LongValues values(m_pages, m_maps);
    const Bytes field = values.Write(Filled(3000));
    values.Write(Filled(100));
    EXPECT_EQ(ReadLongValue(m_pages, field), Filled(3000));
}

INSTANTIATE_TEST_SUITE_P(Both, LongValuesTest,
                         ::testing::Values(Generation::Jet3, Generation::Jet4));

}  // namespace
}  // namespace nomira::jet
