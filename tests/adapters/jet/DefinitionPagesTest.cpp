#include "adapters/jet/DefinitionPages.h"

#include <gtest/gtest.h>

#include <random>

#include "adapters/jet/MemoryPages.h"
#include "adapters/jet/PageAllocator.h"

namespace nomira::jet {
namespace {

constexpr std::uint32_t kPage = 7;

class DefinitionPagesTest : public ::testing::TestWithParam<Generation> {
  protected:
    DefinitionPagesTest() {
        while (m_pages.Count() <= kPage)
            m_pages.Append();
        WriteGlobalMap(m_pages, kPage + 1);
    }

    bool IsJet3() const { return GetParam() == Generation::Jet3; }
    const Layout& Format() const { return m_pages.Format(); }

    TableDefinition Sample(std::size_t nColumns) const {
        TableDefinition table;
        table.nPage = kPage;
        table.nRows = 77;
        table.nLastAutonumber = 99;
        table.ownedMap = {20, 0};
        table.freeMap = {20, 1};
        for (std::size_t i = 0; i < nColumns; ++i) {
            Column& column = table.columns.emplace_back();
            column.sName = u"Spalte Ü" + std::u16string(1, static_cast<char16_t>(u'A' + i % 26)) +
                           std::u16string(i / 26, u'x');
            column.type = i % 2 == 0 ? ColumnType::Memo : ColumnType::Long;
            column.nNumber = static_cast<std::uint16_t>(i);
            column.nFlags = i % 2 == 0 ? 2 : 7;
            if (i % 2 == 0) column.nVariableIndex = table.nVariableColumns++;
            column.nDisplayOrder = static_cast<std::uint16_t>(i + 3);
            if (!IsJet3()) column.nExtension = ColumnCompressed;
            if (IsJet3()) column.nCollation = 1;
            column.nFixedOffset = i % 2 == 0 ? 0 : static_cast<std::uint16_t>(2 * i);
            column.nLength = i % 2 == 0 ? 0 : 4;
            if (i % 2 == 0) table.longColumns.push_back({column.nNumber, {21, 0}, {21, 1}});
        }
        table.nMostColumns = static_cast<std::uint16_t>(nColumns + 2);
        table.realIndexes.push_back({{{0, true}, {1, false}}, {22, 3}, 23, 0x89, 5, 4});
        table.realIndexes.push_back({{{1, true}}, {22, 4}, 24, 0x80, 0, 0});
        LogicalIndex relation;
        relation.sName = u".rB";
        relation.nNumber = 2;
        relation.nRealIndex = 0;
        relation.side = RelatedSide::Primary;
        relation.nRelatedIndex = 5;
        relation.nRelatedTable = 60;
        relation.nUpdateAction = 0;
        relation.nDeleteAction = 1;
        relation.kind = LogicalKind::ForeignKey;
        LogicalIndex key;
        key.sName = u"PrimaryKey";
        key.kind = LogicalKind::PrimaryKey;
        LogicalIndex plain;
        plain.sName = u"Zahl";
        plain.nNumber = 1;
        plain.nRealIndex = 1;
        table.logicalIndexes = {relation, key, plain};
        return table;
    }

    MemoryPages m_pages{GetParam()};
};

TEST_P(DefinitionPagesTest, WhatIsWrittenIsRead) {
    const TableDefinition table = Sample(4);
    WriteDefinition(m_pages, table);
    const TableDefinition read = ReadDefinition(m_pages, kPage);
    EXPECT_EQ(read.nPage, kPage);
    EXPECT_EQ(read.nRows, 77U);
    EXPECT_EQ(read.nLastAutonumber, 99U);
    EXPECT_EQ(read.nAutonumberStep, 1U);
    EXPECT_EQ(read.nMostColumns, 6);
    EXPECT_EQ(read.ownedMap, (RowPlace{20, 0}));
    EXPECT_EQ(read.freeMap, (RowPlace{20, 1}));
    ASSERT_EQ(read.columns.size(), 4U);
    EXPECT_EQ(read.columns[1].sName, u"Spalte ÜB");
    EXPECT_EQ(read.columns[1].type, ColumnType::Long);
    EXPECT_TRUE(read.columns[1].IsAutonumber());
    EXPECT_EQ(read.columns[1].nFixedOffset, 2);
    EXPECT_EQ(read.columns[2].nVariableIndex, 1);
    EXPECT_EQ(read.columns[2].nDisplayOrder, 5);
    EXPECT_EQ(read.columns[2].nSortOrder, kGeneralOrder);
    ASSERT_EQ(read.realIndexes.size(), 2U);
    ASSERT_EQ(read.realIndexes[0].columns.size(), 2U);
    EXPECT_FALSE(read.realIndexes[0].columns[1].bAscending);
    EXPECT_EQ(read.realIndexes[0].nRootPage, 23U);
    EXPECT_EQ(read.realIndexes[0].nEntriesAtBuild, 5U);
    EXPECT_EQ(read.realIndexes[0].nDistinctKeys, 4U);
    EXPECT_EQ(read.realIndexes[1].ownedMap, (RowPlace{22, 4}));
    ASSERT_EQ(read.logicalIndexes.size(), 3U);
    EXPECT_EQ(read.logicalIndexes[0].sName, u".rB");
    EXPECT_EQ(read.logicalIndexes[0].nRelatedIndex, 5);
    EXPECT_EQ(read.logicalIndexes[0].nDeleteAction, 1);
    EXPECT_EQ(read.logicalIndexes[1].kind, LogicalKind::PrimaryKey);
    EXPECT_EQ(read.logicalIndexes[1].nDeleteAction, 4);
    ASSERT_EQ(read.longColumns.size(), 2U);
    EXPECT_EQ(read.longColumns[1].nColumn, 2);
    EXPECT_EQ(BuildDefinition(read, GetParam()), BuildDefinition(table, GetParam()));
}

TEST_P(DefinitionPagesTest, OnePageTellsItsRoom) {
    WriteDefinition(m_pages, Sample(2));
    const ByteView page = m_pages.Read(kPage);
    const std::size_t nLength = LoadU32(page, 8);
    EXPECT_EQ(LoadU16(page, 2), IsJet3() ? 0x4356U : 4096 - nLength - 8);
    EXPECT_EQ(LoadU32(page, 4), 0U);
    EXPECT_EQ(LoadU16(page, nLength - 2), 0xFFFF);
}

TEST_P(DefinitionPagesTest, AChainGrowsAndShrinks) {
    for (const std::size_t nColumns : {3, 250, 90, 200, 2, 250}) {
        const TableDefinition table = Sample(nColumns);
        WriteDefinition(m_pages, table);
        const TableDefinition read = ReadDefinition(m_pages, kPage);
        EXPECT_EQ(read.columns.size(), nColumns);
        EXPECT_EQ(BuildDefinition(read, GetParam()), BuildDefinition(table, GetParam()));
    }
    WriteDefinition(m_pages, Sample(250));
    const std::uint32_t nCount = m_pages.Count();
    const std::uint32_t nNext = LoadU32(m_pages.Read(kPage), 4);
    EXPECT_EQ(m_pages.Read(nNext)[0], 2);
    EXPECT_FALSE(IsFree(m_pages, nNext));
    EXPECT_EQ(LoadU16(m_pages.Read(kPage), 2), IsJet3() ? 0x4356U : 0U);
    WriteDefinition(m_pages, Sample(2));
    EXPECT_TRUE(IsFree(m_pages, nNext));
    WriteDefinition(m_pages, Sample(250));
    EXPECT_EQ(m_pages.Count(), nCount);
}

TEST_P(DefinitionPagesTest, CountersAreWrittenInPlace) {
    WriteDefinition(m_pages, Sample(3));
    Bytes expected = DefinitionBytes(m_pages, kPage);
    DefinitionCounters counters(m_pages, kPage);
    EXPECT_EQ(counters.Rows(), 77U);
    EXPECT_EQ(counters.LastAutonumber(), 99U);
    counters.SetRows(78);
    counters.SetLastAutonumber(100);
    counters.CountNewKey(0);
    counters.SetStatistics(1, 6, 7);
    const std::size_t nRows = IsJet3() ? 12 : 16;
    const std::size_t nStatistics = IsJet3() ? 43 : 63;
    const std::size_t nBlock = IsJet3() ? 8 : 12;
    StoreU32(expected, nRows, 78);
    StoreU32(expected, nRows + 4, 100);
    StoreU32(expected, nStatistics + 4, 5);
    StoreU32(expected, nStatistics + nBlock, 6);
    StoreU32(expected, nStatistics + nBlock + 4, 7);
    EXPECT_EQ(DefinitionBytes(m_pages, kPage), expected);
}

TEST_P(DefinitionPagesTest, CountersMakeNoOtherDefinition) {
    for (const std::size_t nColumns : {3, 200}) {
        WriteDefinition(m_pages, Sample(nColumns));
        const Bytes bytes = DefinitionBytes(m_pages, kPage);
        DefinitionCounters counters(m_pages, kPage);
        counters.SetRows(5);
        counters.SetLastAutonumber(6);
        counters.CountNewKey(1);
        EXPECT_TRUE(IsSameDefinition(m_pages, kPage, bytes));
        TableDefinition other = Sample(nColumns);
        other.columns.back().nDisplayOrder = 1000;
        WriteDefinition(m_pages, other);
        EXPECT_FALSE(IsSameDefinition(m_pages, kPage, bytes));
        other = Sample(nColumns);
        other.realIndexes[1].nRootPage = 25;
        WriteDefinition(m_pages, other);
        EXPECT_FALSE(IsSameDefinition(m_pages, kPage, bytes));
        other = Sample(nColumns);
        other.logicalIndexes.pop_back();
        WriteDefinition(m_pages, other);
        EXPECT_FALSE(IsSameDefinition(m_pages, kPage, bytes));
    }
    EXPECT_FALSE(IsSameDefinition(m_pages, 1, DefinitionBytes(m_pages, kPage)));
}

class Jet4DefinitionPagesTest : public DefinitionPagesTest {};

TEST_P(Jet4DefinitionPagesTest, WhatIsLeftInUnusedFieldsSurvivesARewrite) {
    WriteDefinition(m_pages, Sample(3));
    StoreU32(m_pages.Change(kPage), 28, 0xDEADBEEF);
    WriteDefinition(m_pages, Sample(4));
    EXPECT_EQ(LoadU32(m_pages.Read(kPage), 28), 0xDEADBEEF);
}

INSTANTIATE_TEST_SUITE_P(One, Jet4DefinitionPagesTest, ::testing::Values(Generation::Jet4));

TEST_P(DefinitionPagesTest, WhatIsNoDefinitionIsDamage) {
    EXPECT_THROW(ReadDefinition(m_pages, 1), Failure);
    EXPECT_THROW(ReadDefinition(m_pages, 0), Failure);
    EXPECT_THROW(ReadDefinition(m_pages, 5000), Failure);
    WriteDefinition(m_pages, Sample(250));
    const Bytes file = [&] {
        m_pages.Commit();
        return m_pages.File();
    }();
    const auto broken = [&](std::size_t nPlace, std::uint32_t nValue) {
        MemoryPages pages(GetParam(), file);
        StoreU32(pages.Change(kPage), nPlace, nValue);
        EXPECT_THROW(ReadDefinition(pages, kPage), Failure) << nPlace;
    };
    broken(8, 20);
    broken(8, 0xFFFFFFF0);
    broken(8, 0x000FFFFF);
    broken(4, 0);
    broken(4, 1);
    broken(4, 70000);
    const std::size_t nRealIndexes = IsJet3() ? 31 : 51;
    broken(nRealIndexes, 0xFFFFFFFF);
    broken(nRealIndexes - 4, 0xFFFFFFFF);
    MemoryPages circle(GetParam(), file);
    StoreU32(circle.Change(kPage), 4, kPage);
    StoreU32(circle.Change(kPage), 8, 0x000FFFF0);
    EXPECT_THROW(ReadDefinition(circle, kPage), Failure);
    EXPECT_THROW(WriteDefinition(circle, Sample(2)), Failure);
}

TEST_P(DefinitionPagesTest, AnyBytesAreReadOrDamage) {
    const Bytes bytes = BuildDefinition(Sample(12), GetParam());
    std::mt19937 random(9);
    int nDamaged = 0;
    for (int i = 0; i < 5000; ++i) {
        Bytes broken = bytes;
        for (int n = 0; n < 4; ++n)
            broken[random() % (n == 0 ? 80 : broken.size())] = static_cast<std::uint8_t>(random());
        try {
            ParseDefinition(broken, kPage, GetParam());
        } catch (const Failure& failure) {
            ASSERT_EQ(failure.Kind(), FailureKind::Damaged);
            ++nDamaged;
        }
    }
    EXPECT_GT(nDamaged, 500);
}

INSTANTIATE_TEST_SUITE_P(Both, DefinitionPagesTest,
                         ::testing::Values(Generation::Jet3, Generation::Jet4));

}  // namespace
}  // namespace nomira::jet
