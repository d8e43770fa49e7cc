#include "adapters/jet/CachedPages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace nomira::jet {
namespace {

// Pages that are full of their numbers, or of others once the file has changed.
class CountedPages : public CachedPages {
  public:
    explicit CountedPages(std::uint32_t nCount) : CachedPages(kJet3Layout, nCount) {}

    bool CanWrite() const override { return true; }

    // The pages that were loaded since the last time, call by call: the first one and how many.
    using Loads = std::vector<std::pair<std::uint32_t, std::size_t>>;
    Loads TakeLoads() { return std::exchange(m_loads, {}); }

    void ChangeFile(std::uint8_t nAdded) {
        m_nAdded = nAdded;
        Forget();
    }
    void CutOff(std::uint32_t nCount) { SetCount(nCount); }

    std::uint32_t nBroken = ~0U;

  protected:
    void Load(std::uint32_t nFirst, std::span<Bytes> pages) override {
        m_loads.emplace_back(nFirst, pages.size());
        for (std::uint32_t nPage = nFirst; Bytes & page : pages) {
            EXPECT_EQ(page.size(), Format().nPageSize);
            if (nPage == nBroken) Fail(FailureKind::InputOutput, "broken");
            std::ranges::fill(page, static_cast<std::uint8_t>(nPage++ + m_nAdded));
        }
    }
    void Keep(const Images& /*before*/) override {}

  private:
    Loads m_loads;
    std::uint8_t m_nAdded = 0;
};

std::vector<int> FirstBytes(CountedPages& pages) {
    std::vector<int> bytes;
    for (std::uint32_t n = 0; n < pages.Count(); ++n)
        bytes.push_back(pages.Read(n)[0]);
    return bytes;
}

TEST(CachedPagesTest, WhoGoesThroughTheFileGetsSeveralPagesAtATime) {
    CountedPages pages(200);
    std::vector<int> expected(200);
    for (std::size_t n = 0; n < expected.size(); ++n)
        expected[n] = static_cast<int>(n);
    EXPECT_EQ(FirstBytes(pages), expected);
    const auto loads = pages.TakeLoads();
    EXPECT_LT(loads.size(), 15U);
    std::size_t nLoaded = 0;
    for (const auto& [nFirst, nPages] : loads)
        nLoaded += nPages;
    EXPECT_EQ(nLoaded, 200U) << "each once";
    EXPECT_EQ(FirstBytes(pages), expected);
    EXPECT_TRUE(pages.TakeLoads().empty());
}

TEST(CachedPagesTest, SoDoesWhoLeavesPagesOut) {
    CountedPages pages(200);
    for (std::uint32_t n = 0; n < 200; n += 5)
        ASSERT_EQ(pages.Read(n)[0], n);
    EXPECT_LT(pages.TakeLoads().size(), 15U);
}

TEST(CachedPagesTest, APageThatStandsAloneIsReadAlone) {
    CountedPages pages(1000);
    for (const std::uint32_t n : {500U, 100U, 900U, 300U})
        pages.Read(n);
    EXPECT_EQ(pages.TakeLoads(), (CountedPages::Loads{{500, 1}, {100, 1}, {900, 1}, {300, 1}}));
}

TEST(CachedPagesTest, WhatIsInMemoryIsNotReadOnceMore) {
    CountedPages pages(64);
    for (const std::uint32_t n : {20U, 40U})
        pages.Change(n)[0] = 200;
    const std::uint32_t nNew = pages.Append();
    const std::vector<int> bytes = FirstBytes(pages);
    EXPECT_EQ(bytes[20], 200);
    EXPECT_EQ(bytes[40], 200);
    EXPECT_EQ(bytes[nNew], 0);
    EXPECT_EQ(bytes[63], 63);
    for (const auto& [nFirst, nPages] : pages.TakeLoads())
        EXPECT_LE(nFirst + nPages, 64U);
}

TEST(CachedPagesTest, OfARunThatFailsNothingIsKept) {
    CountedPages pages(64);
    pages.nBroken = 30;
    EXPECT_THROW(FirstBytes(pages), Failure);
    pages.nBroken = ~0U;
    pages.TakeLoads();
    EXPECT_EQ(FirstBytes(pages)[29], 29);
    EXPECT_EQ(FirstBytes(pages)[30], 30);
    EXPECT_THROW(pages.Read(64), Failure);
}

TEST(CachedPagesTest, TheCountOfChangesTellsOfAllThatMayLookDifferent) {
    CountedPages pages(10);
    std::uint64_t nLast = pages.Changes();
    const auto hasChanged = [&] { return std::exchange(nLast, pages.Changes()) != nLast; };
    pages.Read(3);
    EXPECT_FALSE(hasChanged());
    pages.Change(3);
    EXPECT_TRUE(hasChanged());
    pages.Mark(0);
    EXPECT_FALSE(hasChanged());
    pages.Change(3);
    EXPECT_TRUE(hasChanged());
    pages.RollbackTo(0);
    EXPECT_TRUE(hasChanged());
    pages.Rollback();
    EXPECT_TRUE(hasChanged());
    pages.Append();
    EXPECT_TRUE(hasChanged());
    pages.Commit();
    EXPECT_FALSE(hasChanged());
    pages.ChangeFile(100);
    EXPECT_TRUE(hasChanged());
    EXPECT_EQ(pages.Read(3)[0], 103);
    EXPECT_FALSE(hasChanged());
    pages.CutOff(5);
    EXPECT_TRUE(hasChanged());
    EXPECT_THROW(pages.Read(5), Failure);
}

}  // namespace
}  // namespace nomira::jet
