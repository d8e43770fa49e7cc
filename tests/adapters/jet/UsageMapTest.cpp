#include "adapters/jet/UsageMap.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

#include "adapters/jet/DataPage.h"
#include "adapters/jet/MemoryPages.h"
#include "adapters/jet/PageAllocator.h"

namespace nomira::jet {
namespace {

using Pages = std::vector<std::uint32_t>;

// A database of a header, the global map, and pages up to the first that may be taken.
class UsageMapTest : public ::testing::TestWithParam<Generation> {
  protected:
    UsageMapTest() {
        for (std::uint32_t n = 0; n < kFirstOrdinaryPage; ++n)
            m_pages.Append();
        WriteGlobalMap(m_pages, kFirstOrdinaryPage);
        m_map = NewMap(m_pages, m_nMapPage);
    }

    void GrowTo(std::uint32_t nCount) {
        while (m_pages.Count() < nCount)
            m_pages.Append();
    }
    ByteView Row() { return DataPage(m_pages, m_map.nPage).Row(m_map.nRow); }
    void SetRow(const Bytes& row) { DataPage(m_pages, m_map.nPage).Replace(m_map.nRow, row); }
    std::uint32_t InlineBits() const {
        return static_cast<std::uint32_t>(m_pages.Format().nMapRowBytes - 5) * 8;
    }

    MemoryPages m_pages{GetParam()};
    std::uint32_t m_nMapPage = 0;
    RowPlace m_map;
};

TEST_P(UsageMapTest, ANewMapHoldsNothingAndWhatIsPutIntoIt) {
    EXPECT_EQ(m_map, (RowPlace{6, 0}));
    EXPECT_EQ(Row().size(), GetParam() == Generation::Jet3 ? 133U : 69U);
    GrowTo(100);
    UsageMap map(m_pages, m_map);
    EXPECT_TRUE(map.Exists());
    EXPECT_EQ(map.Pages(), Pages{});
    map.Add(99);
    map.Add(14);
    map.Add(14);
    EXPECT_EQ(map.Pages(), (Pages{14, 99}));
    EXPECT_EQ(Row()[5 + 14 / 8], 1 << 14 % 8);
    EXPECT_TRUE(map.Contains(14));
    EXPECT_FALSE(map.Contains(15));
    EXPECT_EQ(map.Next(), 14U);
    EXPECT_EQ(map.Next(15), 99U);
    EXPECT_EQ(map.Next(100), std::nullopt);
    map.Remove(14);
    map.Remove(14);
    map.Remove(4000000);
    EXPECT_EQ(map.Pages(), Pages{99});
}

TEST_P(UsageMapTest, NoMapHoldsNothing) {
    UsageMap map(m_pages, RowPlace{});
    EXPECT_FALSE(map.Exists());
    EXPECT_FALSE(map.Contains(1));
    EXPECT_EQ(map.Pages(), Pages{});
    map.Remove(1);
    EXPECT_THROW(map.Add(1), Failure);
}

TEST_P(UsageMapTest, TheWindowSlidesAsLongAsItShowsAll) {
    GrowTo(21000);
    UsageMap map(m_pages, m_map);
    map.Add(19001);  // the map was empty
    EXPECT_EQ(LoadU32(Row(), 1), 19000U);
    map.Add(18990);
    EXPECT_EQ(LoadU32(Row(), 1), 18984U);
    map.Add(18984 + InlineBits() - 1);
    EXPECT_EQ(map.Pages(), (Pages{18990, 19001, 18984 + InlineBits() - 1}));
    EXPECT_EQ(LoadU8(Row(), 0), 0);
    map.Remove(18990);
    map.Add(18984 + InlineBits());
    EXPECT_EQ(LoadU32(Row(), 1), 19000U);
    EXPECT_EQ(map.BitmapPages(), Pages{});
}

TEST_P(UsageMapTest, OnePageTooFarIsTooFar) {
    GrowTo(8 + InlineBits() + 1);
    UsageMap map(m_pages, m_map);
    map.Add(8);
    map.Add(8 + InlineBits() - 1);
    EXPECT_EQ(LoadU8(Row(), 0), 0);
    map.Add(8 + InlineBits());
    EXPECT_EQ(LoadU8(Row(), 0), 1);
    EXPECT_EQ(map.Pages(), (Pages{8, 8 + InlineBits() - 1, 8 + InlineBits()}));
}

TEST_P(UsageMapTest, AMapOfPagesFarApartGetsPagesOfBits) {
    GrowTo(70000);
    UsageMap map(m_pages, m_map);
    map.Add(20);
    map.Add(65000);
    map.Add(21);
    EXPECT_EQ(Row().size(), m_pages.Format().nMapRowBytes);
    EXPECT_EQ(LoadU8(Row(), 0), 1);
    EXPECT_EQ(map.Pages(), (Pages{20, 21, 65000}));
    EXPECT_FALSE(map.Contains(40000));
    ASSERT_EQ(map.BitmapPages().size(), 2U);
    for (const std::uint32_t nPage : map.BitmapPages()) {
        const ByteView page = m_pages.Read(nPage);
        EXPECT_EQ(LoadU32(page, 0), 0x105U);
        EXPECT_FALSE(IsFree(m_pages, nPage));
        EXPECT_FALSE(map.Contains(nPage));
    }
    const std::uint32_t nPerPage = m_pages.Format().nPagesPerBitmapPage;
    EXPECT_EQ(LoadU32(Row(), 1), map.BitmapPages().front());
    EXPECT_EQ(LoadU32(Row(), 1 + 65000 / nPerPage * 4), map.BitmapPages().back());
    map.Remove(20);
    EXPECT_EQ(map.Next(), 21U);
    EXPECT_EQ(map.Next(22), 65000U);
}

TEST_P(UsageMapTest, AnyOrderOfAddingAndRemovingComesBack) {
    GrowTo(40000);
    std::mt19937 random(99);
    UsageMap map(m_pages, m_map);
    std::set<std::uint32_t> model;
    for (int i = 0; i < 3000; ++i) {
        const std::uint32_t nPage = static_cast<std::uint32_t>(random() % (i < 500 ? 900 : 40000));
        if (random() % 3 == 0) {
            map.Remove(nPage);
            model.erase(nPage);
        } else {
            map.Add(nPage);
            model.insert(nPage);
        }
        ASSERT_EQ(map.Contains(nPage), model.contains(nPage));
    }
    EXPECT_EQ(map.Pages(), Pages(model.begin(), model.end()));
}

TEST_P(UsageMapTest, AShortRowThatCantReachFarEnoughRefuses) {
    GrowTo(70000);
    DataPage page(m_pages, m_map.nPage);
    SetRow(Bytes(9));
    while (page.HasRoom(20))
        page.Add(Bytes(20));
    UsageMap map(m_pages, m_map);
    map.Add(3);
    try {
        map.Add(69999);
        map.Add(69999 - 2 * 16352);
        FAIL() << "no refusal";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Kind(), FailureKind::Constraint);
    }
}

TEST_P(UsageMapTest, RowsThatAreNoMapsAreDamage) {
    const UsageMap map(m_pages, m_map);
    const std::size_t nSize = Row().size();
    SetRow(Bytes(nSize, 2));
    EXPECT_THROW(map.Pages(), Failure);  // no such form
    SetRow({});
    EXPECT_THROW(map.Contains(1), Failure);
    SetRow(Bytes(3));
    EXPECT_THROW(map.Contains(1), Failure);
    Bytes row(nSize, 0xFF);
    row[0] = 0;
    SetRow(row);
    EXPECT_THROW(map.Pages(), Failure);  // a window behind all pages
    StoreU32(row, 1, 0);
    SetRow(row);
    EXPECT_THROW(map.Pages(), Failure);  // bits behind the end of the file
    row.assign(nSize, 0);
    row[0] = 1;
    StoreU32(row, 1, 900);
    SetRow(row);
    EXPECT_THROW(map.Pages(), Failure);  // bits on a page that isn't there
    StoreU32(row, 1, m_map.nPage);
    SetRow(row);
    EXPECT_THROW(map.Pages(), Failure);  // and on one that holds none
    DataPage(m_pages, m_map.nPage).Delete(m_map.nRow);
    EXPECT_THROW(map.Pages(), Failure);
    EXPECT_THROW(UsageMap(m_pages, RowPlace{2, 0}).Pages(), Failure);
    EXPECT_THROW(UsageMap(m_pages, RowPlace{m_map.nPage, 9}).Pages(), Failure);
}

INSTANTIATE_TEST_SUITE_P(Both, UsageMapTest, ::testing::Values(Generation::Jet3, Generation::Jet4));

}  // namespace
}  // namespace nomira::jet
