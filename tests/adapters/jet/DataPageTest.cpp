#include "adapters/jet/DataPage.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "adapters/jet/MemoryPages.h"

namespace nomira::jet {
namespace {

class DataPageTest : public ::testing::TestWithParam<Generation> {
  protected:
    DataPageTest() { DataPage::Format(m_pages, m_pages.Append(), 77); }

    static Bytes Filled(std::size_t nSize, std::uint8_t nValue) { return Bytes(nSize, nValue); }
    static Bytes Copy(ByteView view) { return {view.begin(), view.end()}; }

    MemoryPages m_pages{GetParam()};
    DataPage m_page{m_pages, 0};
};

TEST_P(DataPageTest, AnEmptyPageHasAllButItsHeadFree) {
    EXPECT_TRUE(m_page.IsOne());
    EXPECT_EQ(m_page.Owner(), 77U);
    EXPECT_EQ(m_page.Slots(), 0U);
    EXPECT_EQ(m_page.FreeBytes(), GetParam() == Generation::Jet3 ? 2038U : 4082U);
    EXPECT_TRUE(m_page.IsEmpty());
}

TEST_P(DataPageTest, RowsOfAnyLengthsComeBackAfterAnyChanges) {
    std::mt19937 random(4711);
    std::map<std::size_t, Bytes> model;
    std::size_t nAdded = 0;
    for (int i = 0; i < 4000; ++i) {
        const Bytes row = Filled(random() % 90, static_cast<std::uint8_t>(random()));
        const std::size_t nRow = nAdded == 0 ? 0 : random() % nAdded;
        if (random() % 3 == 0 && m_page.HasRoom(row.size())) {
            ASSERT_EQ(m_page.Add(row), nAdded);
            model[nAdded++] = row;
        } else if (random() % 4 == 0 && model.contains(nRow)) {
            m_page.Delete(nRow);
            model.erase(nRow);
        } else if (model.contains(nRow) && m_page.CanResize(nRow, row.size())) {
            m_page.Replace(nRow, row);
            model[nRow] = row;
        }
        std::size_t nUsed = 0;
        for (std::size_t n = 0; n < nAdded; ++n) {
            ASSERT_EQ(m_page.IsDeleted(n), !model.contains(n));
            if (!model.contains(n)) continue;
            ASSERT_EQ(Copy(m_page.Row(n)), model[n]);
            nUsed += model[n].size();
        }
        ASSERT_EQ(m_page.FreeBytes(),
                  m_pages.Format().nPageSize - m_pages.Format().nSlotsPlace - 2 * nAdded - nUsed);
    }
}

TEST_P(DataPageTest, APageTakes255RowsAndNoMore) {
    for (int i = 0; i < 255; ++i) {
        ASSERT_TRUE(m_page.HasRoom(4));
        m_page.Add(Filled(4, 1));
    }
    EXPECT_FALSE(m_page.HasRoom(4));
}

TEST_P(DataPageTest, ARowMayFillThePage) {
    const std::size_t nAll = m_page.FreeBytes() - 2;
    EXPECT_FALSE(m_page.HasRoom(nAll + 1));
    ASSERT_TRUE(m_page.HasRoom(nAll));
    m_page.Add(Filled(nAll, 9));
    EXPECT_EQ(m_page.FreeBytes(), 0U);
    EXPECT_FALSE(m_page.CanResize(0, nAll + 1));
    EXPECT_EQ(Copy(m_page.Row(0)), Filled(nAll, 9));
}

TEST_P(DataPageTest, SlotsThatLieAreDamage) {
    m_page.Add(Filled(10, 1));
    m_page.Add(Filled(10, 2));
    EXPECT_THROW(m_page.Row(2), Failure);
    const std::size_t nSlots = m_pages.Format().nSlotsPlace;
    StoreU16(m_pages.Change(0), nSlots, 5);  // in the page's head
    EXPECT_THROW(m_page.Row(0), Failure);
    StoreU16(m_pages.Change(0), nSlots, 0x1FFF);  // behind its end
    EXPECT_THROW(m_page.Row(0), Failure);
    StoreU16(m_pages.Change(0), m_pages.Format().nSlotCountPlace, 5000);
    EXPECT_THROW(m_page.Slots(), Failure);
    EXPECT_THROW(m_page.HasRoom(1), Failure);
}

TEST_P(DataPageTest, OneLookTellsTheSameOrNothing) {
    std::mt19937 random(815);
    for (int i = 0; i < 20; ++i)
        m_page.Add(Filled(1 + random() % 40, static_cast<std::uint8_t>(i)));
    m_page.Delete(3);
    m_page.Replace(5, Filled(4, 9), SlotMoved);
    const Bytes sound = Copy(m_pages.Read(0));
    const auto look = [&](std::size_t nRow) {
        return DataPage::PlainRow(m_pages.Read(0), m_pages.Format(), 77, nRow);
    };
    EXPECT_EQ(Copy(look(0).value()), Copy(m_page.Row(0)));
    EXPECT_EQ(Copy(look(19).value()), Copy(m_page.Row(19)));
    for (const std::size_t nRow : {3, 5, 20, 255})
        EXPECT_FALSE(look(nRow)) << nRow;
    EXPECT_FALSE(DataPage::PlainRow(m_pages.Read(0), m_pages.Format(), 78, 0));

    int nTold = 0;
    for (int i = 0; i < 20000; ++i) {
        const ByteSpan page = m_pages.Change(0);
        std::copy(sound.begin(), sound.end(), page.begin());
        for (int n = 0; n < 3; ++n)
            page[random() % 60] = static_cast<std::uint8_t>(random());
        const std::size_t nRow = random() % 21;
        const auto row = look(nRow);
        if (!row) continue;
        ++nTold;
        ASSERT_EQ(m_page.Flags(nRow), 0);
        ASSERT_EQ(Copy(m_page.Row(nRow)), Copy(*row));
    }
    EXPECT_GT(nTold, 1000);
}

INSTANTIATE_TEST_SUITE_P(Both, DataPageTest, ::testing::Values(Generation::Jet3, Generation::Jet4));

}  // namespace
}  // namespace nomira::jet
