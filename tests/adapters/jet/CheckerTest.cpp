#include "adapters/jet/Checker.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "adapters/jet/DefinitionPages.h"
#include "adapters/jet/LongValues.h"
#include "adapters/jet/MemoryPages.h"
#include "adapters/jet/PageAllocator.h"

namespace nomira::jet {
namespace {

class CheckerTest : public ::testing::TestWithParam<Generation> {
  protected:
    CheckerTest() {
        auto pages = std::make_unique<MemoryPages>(GetParam());
        AccessFile::CreateEmpty(*pages);
        m_file = std::make_unique<AccessFile>(std::move(pages));
        m_file->CreateTable({u"Items",
                             {{u"Key_id", ColumnType::Long, 0, true, false},
                              {u"KeyString", ColumnType::Text, 255, false, true}},
                             {{u"PrimaryKey", {u"Key_id"}, true, true},
                              {u"KeyString", {u"KeyString"}, false, false}}});
        m_file->CreateTable({u"Messages",
                             {{u"Key_id", ColumnType::Long, 0, false, false},
                              {u"String", ColumnType::Memo, 0, false, true}},
                             {{u"Key_id", {u"Key_id"}, false, false}}});
        m_file->CreateRelationship(
            {u"ItemsMessages", u"Items", u"Key_id", u"Messages", u"Key_id", true});
        for (int n = 0; n < 100; ++n) {
            Row item{Value(), std::u16string(static_cast<std::size_t>(n), u'k')};
            Items().Insert(item);
            Row message{item[0], std::u16string(static_cast<std::size_t>(n * 90), u'm')};
            Messages().Insert(message);
        }
        // Some rows move away.
        for (auto scan = Items().Rows(); !scan.AtEnd(); scan.Next()) {
            Row item = Items().Read(scan.Place());
            item[1] = std::u16string(150, u'z');
            Items().Update(scan.Place(), item);
        }
    }

    Table& Items() { return *m_file->FindTable(u"Items"); }
    Table& Messages() { return *m_file->FindTable(u"Messages"); }
    PageStore& Store() { return m_file->Pages(); }
    std::uint32_t DataPageOf(Table& table) {
        return UsageMap(Store(), table.Definition().ownedMap).Pages().front();
    }
    const LongColumnMaps& LongMaps() { return Messages().Definition().longColumns.front(); }
    std::uint32_t PageOfLongValues() { return UsageMap(Store(), LongMaps().owned).Pages().front(); }

    // Whether one of the findings says this.
    void ExpectFinding(bool bWarning, const std::string& sText) {
        const std::vector<Finding> findings = CheckFile(*m_file);
        EXPECT_TRUE(std::ranges::any_of(findings,
                                        [&](const Finding& finding) {
                                            return finding.bWarning == bWarning &&
                                                   finding.sText.find(sText) != std::string::npos;
                                        }))
            << sText << "; first: " << (findings.empty() ? "none" : findings.front().sText);
    }
    void ExpectError(const std::string& sText) { ExpectFinding(false, sText); }
    // And that there is nothing worse.
    void ExpectWarning(const std::string& sText) {
        ExpectFinding(true, sText);
        EXPECT_TRUE(std::ranges::all_of(CheckFile(*m_file), &Finding::bWarning));
    }

    std::unique_ptr<AccessFile> m_file;
};

INSTANTIATE_TEST_SUITE_P(Generations, CheckerTest,
                         ::testing::Values(Generation::Jet3, Generation::Jet4),
                         [](const auto& generation) {
                             return generation.param == Generation::Jet3 ? "Jet3" : "Jet4";
                         });

TEST_P(CheckerTest, ASoundFileHasNoFindings) {
    for (const Finding& finding : CheckFile(*m_file))
        ADD_FAILURE() << finding.sText << ", page " << finding.nPage;
}

TEST_P(CheckerTest, AUsedPageThatCountsAsFree) {
    FreePage(Store(), DataPageOf(Items()));
    ExpectError("a page of Items, rows counts as free");
}

TEST_P(CheckerTest, AFreePageOfAnIndex) {
    FreePage(Store(), Items().Definition().realIndexes[0].nRootPage);
    ExpectError("a page of Items, index 0 counts as free");
}

TEST_P(CheckerTest, ALostPageIsAWarning) {
    TakePage(Store());
    ExpectWarning("neither used nor free");
}

TEST_P(CheckerTest, APageOfTwoTables) {
    UsageMap(Store(), Items().Definition().ownedMap).Add(DataPageOf(Messages()));
    ExpectError("one page is used by Items, rows and by Messages, rows");
}

TEST_P(CheckerTest, AMapOfAnotherPageAsFreeRoom) {
    UsageMap(Store(), Items().Definition().freeMap).Add(DataPageOf(Messages()));
    ExpectError("a page has room for rows that isn't its own");
}

TEST_P(CheckerTest, AnIndexWithOtherPagesThanItsMap) {
    const RealIndex& index = Items().Definition().realIndexes[0];
    UsageMap(Store(), index.ownedMap).Remove(index.nRootPage);
    ExpectError("Items, index 0 has other pages than its map");
}

TEST_P(CheckerTest, AnIndexThatLacksARow) {
    const auto first = Items().Index(1).First();
    Items().Index(1).Remove(Bytes(first.Key().begin(), first.Key().end()), first.Place());
    ExpectError("Items, index 1 lacks row");
}

TEST_P(CheckerTest, AnIndexWithAnEntryTooMany) {
    const auto first = Items().Index(1).First();
    Items().Index(1).Insert(Bytes(first.Key().begin(), first.Key().end()), {0x123456, 7});
    ExpectError("Items, index 1 has an entry too many, for row 7 of page");
}

TEST_P(CheckerTest, AUniqueIndexWithAKeyTwice) {
    const auto first = Items().Index(0).First();
    Items().Index(0).Insert(Bytes(first.Key().begin(), first.Key().end()), {0x123456, 7});
    ExpectError("Items, index 0 is unique and has a key twice");
}

TEST_P(CheckerTest, AReferenceToNoRow) {
    const auto first = Items().Index(0).First();
    Items().Index(0).Remove(Bytes(first.Key().begin(), first.Key().end()), first.Place());
    ExpectError("Messages: row 0 refers to no row");
}

TEST_P(CheckerTest, APageOfRowsThatMiscountsItsFreeBytes) {
    Store().Change(DataPageOf(Messages()))[2] ^= 1;
    ExpectError("Messages, rows: a page miscounts its free bytes");
}

TEST_P(CheckerTest, APageOfRowsThatSaysItIsAnothers) {
    Store().Change(DataPageOf(Messages()))[4] ^= 1;
    ExpectError("Messages, rows: a page doesn't say that it belongs here");
}

TEST_P(CheckerTest, RowsMiscounted) {
    DefinitionCounters(Store(), Items().Definition().nPage).SetRows(99);
    ExpectError("Items: has 100 rows and counts 99");
}

TEST_P(CheckerTest, ACounterBehindTheRowsIsAWarning) {
    DefinitionCounters(Store(), Items().Definition().nPage).SetLastAutonumber(50);
    ExpectWarning("Items: the counter is behind the rows");
}

TEST_P(CheckerTest, ARowThatMovedToNowhere) {
    for (const std::uint32_t nPage : UsageMap(Store(), Items().Definition().ownedMap).Pages()) {
        DataPage page(Store(), nPage);
        for (std::size_t n = 0; n < page.Slots(); ++n)
            if (page.Flags(n) == SlotHidden) {
                page.Delete(n);
                ExpectError("it has moved to where no row's bytes wait for it");
                return;
            }
    }
    FAIL() << "no row has moved";
}

TEST_P(CheckerTest, ALongValueThatIsDeleted) {
    DataPage(Store(), PageOfLongValues()).Delete(0);
    ExpectError("a long value is a deleted one");
}

TEST_P(CheckerTest, ALongValueOutsideOfItsColumn) {
    UsageMap(Store(), LongMaps().owned).Remove(PageOfLongValues());
    ExpectError("a long value lies outside of its column's pages");
}

TEST_P(CheckerTest, ALongValueOfNoRowIsAWarning) {
    LongValues(Store(), LongMaps()).Write(Bytes(500));
    ExpectWarning("Messages: a long value belongs to no row");
}

TEST_P(CheckerTest, TablesThatDisagreeAboutTheirRelationship) {
    TableDefinition definition = Items().Definition();
    for (LogicalIndex& index : definition.logicalIndexes)
        if (index.kind == LogicalKind::ForeignKey) index.nDeleteAction ^= 1;
    WriteDefinition(Store(), definition);
    ExpectError("the two tables disagree about what follows from a change");
}

TEST_P(CheckerTest, ARelationshipThatTheOtherTableDoesntKnow) {
    TableDefinition definition = Items().Definition();
    std::erase_if(definition.logicalIndexes,
                  [](const LogicalIndex& index) { return index.kind == LogicalKind::ForeignKey; });
    WriteDefinition(Store(), definition);
    ExpectError("Messages, relationship ItemsMessages: the other table knows nothing of it");
}

TEST_P(CheckerTest, ATableWithoutADefinition) {
    Store().Change(Messages().Definition().nPage)[0] = 1;
    ExpectError("Messages: ");
}

}  // namespace
}  // namespace nomira::jet
