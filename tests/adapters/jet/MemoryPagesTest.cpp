#include "adapters/jet/MemoryPages.h"

#include <gtest/gtest.h>

namespace nomira::jet {
namespace {

class MemoryPagesTest : public ::testing::Test {
  protected:
    MemoryPagesTest() {
        m_pages.Append();
        Set(0, 1);
        m_pages.Commit();
    }

    void Set(std::uint32_t nPage, std::uint8_t nValue) { m_pages.Change(nPage)[0] = nValue; }
    int Get(std::uint32_t nPage) { return m_pages.Read(nPage)[0]; }

    MemoryPages m_pages{Generation::Jet3};
};

TEST_F(MemoryPagesTest, WhatIsRolledBackIsAsBefore) {
    Set(0, 2);
    Set(m_pages.Append(), 3);
    m_pages.Rollback();
    EXPECT_EQ(Get(0), 1);
    EXPECT_EQ(m_pages.Count(), 1U);
    EXPECT_THROW(m_pages.Read(1), Failure);
}

TEST_F(MemoryPagesTest, WhatIsCommittedStays) {
    Set(0, 2);
    Set(m_pages.Append(), 3);
    m_pages.Commit();
    m_pages.Rollback();
    EXPECT_EQ(Get(0), 2);
    EXPECT_EQ(Get(1), 3);
    EXPECT_EQ(m_pages.File().size(), 4096U);
    EXPECT_EQ(m_pages.File()[2048], 3);
}

TEST_F(MemoryPagesTest, MarksGoBackOneByOne) {
    Set(0, 2);
    m_pages.Mark(0);
    Set(0, 3);
    m_pages.Mark(1);
    Set(0, 4);
    Set(m_pages.Append(), 5);
    m_pages.RollbackTo(1);
    EXPECT_EQ(Get(0), 3);
    EXPECT_EQ(m_pages.Count(), 1U);
    Set(0, 6);
    m_pages.RollbackTo(0);
    EXPECT_EQ(Get(0), 2);
    Set(0, 7);
    m_pages.RollbackTo(0);
    EXPECT_EQ(Get(0), 2);
    m_pages.Rollback();
    EXPECT_EQ(Get(0), 1);
}

TEST_F(MemoryPagesTest, AReleasedMarkKeepsWhatHappenedAndLetsItBeTakenBack) {
    m_pages.Mark(0);
    Set(0, 2);
    m_pages.Mark(1);
    Set(0, 3);
    Set(m_pages.Append(), 4);
    m_pages.Release(1);
    EXPECT_EQ(Get(0), 3);
    m_pages.RollbackTo(0);
    EXPECT_EQ(Get(0), 1);
    EXPECT_EQ(m_pages.Count(), 1U);
}

TEST_F(MemoryPagesTest, CommitTakesTheMarksAlong) {
    m_pages.Mark(0);
    Set(0, 2);
    m_pages.Commit();
    m_pages.Rollback();
    EXPECT_EQ(Get(0), 2);
}

TEST_F(MemoryPagesTest, EveryChangeIsCounted) {
    const std::uint64_t nBefore = m_pages.Changes();
    Set(0, 2);
    const std::uint64_t nChanged = m_pages.Changes();
    EXPECT_NE(nChanged, nBefore);
    m_pages.Rollback();
    EXPECT_NE(m_pages.Changes(), nChanged);
}

TEST_F(MemoryPagesTest, AWholeFileIsTakenByPages) {
    Bytes file(2 * 4096 + 100, 7);
    MemoryPages pages(Generation::Jet4, file);
    EXPECT_EQ(pages.Count(), 2U);
    EXPECT_EQ(pages.Read(1)[4095], 7);
}

}  // namespace
}  // namespace nomira::jet
