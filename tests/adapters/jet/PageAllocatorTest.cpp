#include "adapters/jet/PageAllocator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "adapters/jet/DataPage.h"
#include "adapters/jet/MemoryPages.h"

namespace nomira::jet {
namespace {

class PageAllocatorTest : public ::testing::TestWithParam<Generation> {
  protected:
    PageAllocatorTest() {
        for (std::uint32_t n = 0; n < kFirstOrdinaryPage; ++n)
            m_pages.Append();
        WriteGlobalMap(m_pages, kFirstOrdinaryPage);
    }

    ByteView MapRow() { return DataPage(m_pages, 1).Row(0); }
    // As other programs read the map: bits inside of it, and everything outside.
    bool OthersCallFree(std::uint32_t nPage) {
        const MapBits bits(m_pages, RowPlace{1, 0});
        return !bits.Covers(nPage) || bits.IsSet(nPage);
    }
    bool IsJet3() const { return GetParam() == Generation::Jet3; }

    MemoryPages m_pages{GetParam()};
};

TEST_P(PageAllocatorTest, APageOfMapsIsLaidOutAsTheMakersDo) {
    const ByteView page = m_pages.Read(1);
    EXPECT_EQ(LoadU32(page, 4), 1U);
    EXPECT_EQ(DataPage(m_pages, 1).FreeBytes(), IsJet3() ? 1768U : 3940U);
    const std::size_t nSlots = m_pages.Format().nSlotsPlace;
    EXPECT_EQ(LoadU16(page, nSlots), IsJet3() ? 0x77B : 0xFBB);
    EXPECT_EQ(LoadU16(page, nSlots + 2), IsJet3() ? 0x6F6 : 0xF76);
    EXPECT_EQ(MapRow()[5], 0xC0);
    EXPECT_TRUE(std::all_of(MapRow().begin() + 6, MapRow().end(),
                            [](std::uint8_t n) { return n == 0xFF; }));
}

TEST_P(PageAllocatorTest, TheLowestFreePageComesFirstAndEmpty) {
    for (std::uint32_t n = kFirstOrdinaryPage; n < 20; ++n)
        ASSERT_EQ(TakePage(m_pages), n);
    m_pages.Change(12)[100] = 7;
    FreePage(m_pages, 15);
    FreePage(m_pages, 12);
    EXPECT_TRUE(IsFree(m_pages, 12));
    EXPECT_FALSE(IsFree(m_pages, 13));
    EXPECT_FALSE(IsFree(m_pages, 20)) << "not there yet";
    EXPECT_EQ(TakePage(m_pages), 12U);
    EXPECT_EQ(m_pages.Read(12)[100], 0);
    EXPECT_EQ(TakePage(m_pages), 15U);
    EXPECT_EQ(TakePage(m_pages), 20U);
    EXPECT_EQ(m_pages.Count(), 21U);
}

TEST_P(PageAllocatorTest, OnlyAPageInUseIsGivenBack) {
    TakePage(m_pages);
    FreePage(m_pages, 6);
    EXPECT_THROW(FreePage(m_pages, 6), Failure);
    EXPECT_THROW(FreePage(m_pages, 7), Failure);
    EXPECT_THROW(FreePage(m_pages, 2), Failure);
}

TEST_P(PageAllocatorTest, TheMapLengthensWithTheFileAndTheOtherOneStays) {
    while (m_pages.Count() < 1466)
        TakePage(m_pages);
    EXPECT_EQ(MapRow().size(), 5U + 184);
    EXPECT_EQ(MapRow()[5 + 182], 0);
    EXPECT_EQ(MapRow()[5 + 183], 0xFC);  // behind the end of the file
    const DataPage page(m_pages, 1);
    EXPECT_EQ(page.Row(1).size(), m_pages.Format().nMapRowBytes);
    EXPECT_TRUE(
        std::all_of(page.Row(1).begin(), page.Row(1).end(), [](std::uint8_t n) { return n == 0; }));
    EXPECT_EQ(page.FreeBytes(), m_pages.Format().nPageSize - m_pages.Format().nSlotsPlace - 4 -
                                    page.Row(1).size() - MapRow().size());
    FreePage(m_pages, 1400);
    EXPECT_EQ(TakePage(m_pages), 1400U);
}

TEST_P(PageAllocatorTest, TheMapOfALargeFileGetsPagesOfBits) {
    // To near the limit of page 1 at once; those that a new map calls free are taken first.
    const std::uint32_t nStart = IsJet3() ? 14000 : 31000;
    while (m_pages.Count() < nStart)
        m_pages.Append();
    std::set<std::uint32_t> taken;
    while (m_pages.Count() < nStart + 3000)
        taken.insert(TakePage(m_pages));
    EXPECT_EQ(MapRow()[0], 1);
    EXPECT_EQ(MapRow().size(), m_pages.Format().nMapRowBytes);
    for (std::uint32_t n = 0; n < m_pages.Count(); ++n)
        ASSERT_FALSE(OthersCallFree(n)) << n;
    EXPECT_TRUE(OthersCallFree(m_pages.Count()));
    const std::vector<std::uint32_t> bitmaps = UsageMap(m_pages, RowPlace{1, 0}).BitmapPages();
    EXPECT_EQ(bitmaps.size(), (m_pages.Count() - 1) / m_pages.Format().nPagesPerBitmapPage + 1);
    for (const std::uint32_t nPage : bitmaps)
        EXPECT_FALSE(taken.contains(nPage));
    FreePage(m_pages, nStart + 2999);
    FreePage(m_pages, 4711);
    EXPECT_EQ(TakePage(m_pages), 4711U);
    EXPECT_EQ(TakePage(m_pages), nStart + 2999);
}

TEST_P(PageAllocatorTest, FreePagesStayFreeWhenTheMapTakesAnotherForm) {
    const std::uint32_t nStart = IsJet3() ? 17000 : 33000;
    while (m_pages.Count() < 3008)  // no bit is left behind the end of the file
        TakePage(m_pages);
    while (m_pages.Count() < nStart)
        m_pages.Append();
    FreePage(m_pages, 77);
    FreePage(m_pages, 2999);
    FreePage(m_pages, nStart - 1);  // too far for page 1
    EXPECT_EQ(MapRow()[0], 1);
    EXPECT_EQ(TakePage(m_pages), 77U);
    EXPECT_EQ(TakePage(m_pages), 2999U);
    EXPECT_EQ(TakePage(m_pages), nStart - 1);
}

TEST_P(PageAllocatorTest, APageOfBitsIsNotFreeWhereverItLies) {
    const std::uint32_t nPerPage = m_pages.Format().nPagesPerBitmapPage;
    while (m_pages.Count() < nPerPage + 10)
        m_pages.Append();
    FreePage(m_pages, nPerPage + 5);
    ASSERT_EQ(MapRow()[0], 1);
    StoreU32(DataPage(m_pages, 1).ChangeRow(0), 1, 0);  // the bits of the first pages are lost
    FreePage(m_pages, 100);                             // so that they get new ones, at the end
    EXPECT_FALSE(IsFree(m_pages, m_pages.Count() - 1));
    EXPECT_EQ(TakePage(m_pages), 100U);
    EXPECT_EQ(TakePage(m_pages), nPerPage + 5);
    const std::uint32_t nEnd = m_pages.Count();
    EXPECT_EQ(TakePage(m_pages), nEnd);
}

TEST_P(PageAllocatorTest, PagesOutsideOfAMovedWindowAreNeverTaken) {
    while (m_pages.Count() < 2000)
        m_pages.Append();
    MapBits bits(m_pages, RowPlace{1, 0});
    bits.MoveInline(1960, 64);
    EXPECT_EQ(TakePage(m_pages), 2000U);
    EXPECT_FALSE(IsFree(m_pages, 100));
    FreePage(m_pages, 100);
    EXPECT_EQ(TakePage(m_pages), 100U);
    EXPECT_EQ(TakePage(m_pages), 2001U);
    EXPECT_FALSE(IsFree(m_pages, 1960));
}

TEST_P(PageAllocatorTest, ARollBackTakesBackWhatWasTaken) {
    m_pages.Commit();
    EXPECT_EQ(TakePage(m_pages), 6U);
    m_pages.Rollback();
    EXPECT_EQ(TakePage(m_pages), 6U);
}

TEST_P(PageAllocatorTest, AFileThatCallsItsHeaderFreeKeepsIt) {
    MapBits bits(m_pages, RowPlace{1, 0});
    for (std::uint32_t n = 0; n < kFirstOrdinaryPage; ++n)
        bits.Set(n, true);
    EXPECT_EQ(TakePage(m_pages), 6U);
}

TEST_P(PageAllocatorTest, MapsFillTheirPageAndThenTakeAnother) {
    std::uint32_t nMapPage = 0;
    const RowPlace first = NewMap(m_pages, nMapPage);
    EXPECT_EQ(first, (RowPlace{6, 0}));
    EXPECT_EQ(DataPage(m_pages, 6).Owner(), kOwnerOfMaps);
    RowPlace last = first;
    for (int n = 0; n < 60; ++n)
        last = NewMap(m_pages, nMapPage);
    const unsigned nOnPage = IsJet3() ? 15 : 57;
    EXPECT_EQ(DataPage(m_pages, 6).Slots(), nOnPage);
    EXPECT_EQ(nMapPage, 6 + 60 / nOnPage);
    EXPECT_EQ(last, (RowPlace{nMapPage, static_cast<std::uint8_t>(60 % nOnPage)}));
}

TEST_P(PageAllocatorTest, AnObjectTakesItsPagesAndGivesThemBack) {
    std::uint32_t nMapPage = 0;
    const RowPlace owned = NewMap(m_pages, nMapPage);
    const RowPlace free = NewMap(m_pages, nMapPage);
    MappedPages source(m_pages, owned, free);
    const std::uint32_t nPage = source.Take();
    EXPECT_FALSE(IsFree(m_pages, nPage));
    EXPECT_TRUE(UsageMap(m_pages, owned).Contains(nPage));
    EXPECT_FALSE(UsageMap(m_pages, free).Contains(nPage));
    UsageMap(m_pages, free).Add(nPage);
    source.GiveBack(nPage);
    EXPECT_TRUE(IsFree(m_pages, nPage));
    EXPECT_FALSE(UsageMap(m_pages, owned).Contains(nPage));
    EXPECT_FALSE(UsageMap(m_pages, free).Contains(nPage));
    EXPECT_THROW(MappedPages(m_pages, RowPlace{}).Take(), Failure);
}

INSTANTIATE_TEST_SUITE_P(Both, PageAllocatorTest,
                         ::testing::Values(Generation::Jet3, Generation::Jet4));

}  // namespace
}  // namespace nomira::jet
