#include "adapters/jet/IndexTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <set>
#include <string>

#include "adapters/jet/MemoryPages.h"

namespace nomira::jet {
namespace {

constexpr std::uint32_t kTable = 7;

// Appends pages, and hands those out again first that came back.
class ReturnedPages : public PageSource {
  public:
    explicit ReturnedPages(PageStore& store) : m_store(store) {}

    std::uint32_t Take() override {
        ++nTaken;
        if (m_returned.empty()) return m_store.Append();
        const std::uint32_t nPage = *m_returned.begin();
        m_returned.erase(m_returned.begin());
        const ByteSpan page = m_store.Change(nPage);
        std::fill(page.begin(), page.end(), std::uint8_t{0});
        return nPage;
    }
    void GiveBack(std::uint32_t nPage) override {
        EXPECT_TRUE(m_returned.insert(nPage).second) << "a page came back twice";
        const ByteSpan page = m_store.Change(nPage);
        std::fill(page.begin(), page.end(), std::uint8_t{0xEE});
        --nTaken;
    }

    std::size_t nTaken = 0;

  private:
    PageStore& m_store;
    std::set<std::uint32_t> m_returned;
};

Bytes BigEndian(std::uint32_t n) {
    Bytes key{0x7F};
    AppendBig<4>(key, n);
    return key;
}

// Ends in a byte that occurs nowhere else, as keys are never the start of one another.
Bytes LongKey(std::uint32_t n, std::size_t nLength) {
    Bytes key{0x7F};
    std::mt19937 random(n);
    // Long common starts now and then.
    const std::size_t nShared = n % 3 * nLength / 4;
    key.resize(1 + nShared, 0x60);
    while (key.size() < nLength)
        key.push_back(static_cast<std::uint8_t>(1 + random() % 255));
    AppendBig<4>(key, n);
    return key;
}

std::string NameOf(const ::testing::TestParamInfo<Generation>& generation) {
    return generation.param == Generation::Jet3 ? "Jet3" : "Jet4";
}

class Random {
  public:
    explicit Random(unsigned nSeed) : m_engine(nSeed) {}
    std::uint32_t operator()() { return static_cast<std::uint32_t>(m_engine()); }

  private:
    std::mt19937 m_engine;
};

class IndexTreeTest : public ::testing::TestWithParam<Generation> {
  protected:
    IndexTreeTest() {
        m_pages.Append();
        m_pages.Append();
        WriteEmptyIndex(m_pages, 1, kTable);
    }

    void Insert(const Bytes& key, RowPlace place) {
        m_tree.Insert(key, place);
        m_model.insert({key, place});
    }
    void InsertNumbers(std::uint32_t nFrom, std::uint32_t nTo) {
        for (std::uint32_t n = nFrom; n < nTo; ++n)
            Insert(BigEndian(n), {n / 200 + 10, static_cast<std::uint8_t>(n % 200)});
    }

    // The tree is sound, holds the model's entries, and owns all pages that were taken.
    void ExpectModel() {
        std::vector<IndexEntry> entries;
        std::vector<std::uint32_t> pages;
        ASSERT_NO_THROW(m_tree.Check(entries, pages));
        ASSERT_EQ(pages.size(), m_source.nTaken + 1);
        ASSERT_TRUE(std::ranges::equal(entries, m_model));
        std::vector<IndexEntry> walked;
        for (auto cursor = m_tree.First(); !cursor.AtEnd(); cursor.Next())
            walked.push_back({Bytes(cursor.Key().begin(), cursor.Key().end()), cursor.Place()});
        ASSERT_TRUE(std::ranges::equal(walked, m_model));
    }

    std::vector<std::uint32_t> Pages() {
        std::vector<IndexEntry> entries;
        std::vector<std::uint32_t> pages;
        m_tree.Check(entries, pages);
        return pages;
    }

    // Random inserts, removals and looks, by turns more of these and those.
    template <typename MakeKey>
    void RunRandom(unsigned nSeed, int nBatches, int nOperations, MakeKey makeKey) {
        Random random(nSeed);
        for (int nBatch = 0; nBatch < nBatches; ++nBatch) {
            const unsigned nInserts = nBatch % 4 < 2 ? 8 : 2;  // out of ten
            for (int n = 0; n < nOperations; ++n) {
                const Bytes key = makeKey(random());
                const RowPlace place{random() % 3 + 1, static_cast<std::uint8_t>(random() % 2)};
                if (random() % 10 < nInserts) {
                    if (!m_model.contains({key, place})) Insert(key, place);
                } else {
                    RemoveNear(key, place);
                }
                for (int nLook = 0; nLook < 4; ++nLook)
                    LookFor(nLook % 2 == 0 ? makeKey(random()) : NeighbourOf(key));
            }
            ExpectModel();
            if (HasFatalFailure()) return;
        }
        while (!m_model.empty())
            RemoveNear(makeKey(random()), {});
        ExpectModel();
        EXPECT_EQ(m_source.nTaken, 0U);
    }

    void RemoveNear(Bytes key, RowPlace place) {
        const bool bThere = m_model.contains({key, place});
        ASSERT_EQ(m_tree.Remove(key, place), bThere);
        m_model.erase({key, place});
        const auto next = m_model.lower_bound({key, place});
        if (next == m_model.end()) return;
        ASSERT_TRUE(m_tree.Remove(next->key, next->place));
        m_model.erase(next);
    }

    // The key behind this one, or the last one.
    Bytes NeighbourOf(const Bytes& key) const {
        const auto next = m_model.upper_bound({key, {0xFFFFFF, 0xFF}});
        if (next != m_model.end()) return next->key;
        return m_model.empty() ? key : m_model.rbegin()->key;
    }

    void LookFor(const Bytes& key) {
        const auto expected = m_model.lower_bound({key, {}});
        const auto cursor = m_tree.LowerBound(key);
        ASSERT_EQ(cursor.AtEnd(), expected == m_model.end());
        if (cursor.AtEnd()) return;
        ASSERT_TRUE(std::ranges::equal(cursor.Key(), expected->key));
        ASSERT_EQ(cursor.Place(), expected->place);
        ASSERT_EQ(m_tree.Contains(key), expected->key == key);
    }

    MemoryPages m_pages{GetParam()};
    ReturnedPages m_source{m_pages};
    IndexTree m_tree{m_pages, 1, kTable, &m_source};
    std::set<IndexEntry> m_model;
};

INSTANTIATE_TEST_SUITE_P(Generations, IndexTreeTest,
                         ::testing::Values(Generation::Jet3, Generation::Jet4), NameOf);

// A look that finds its leaf among those that were found before gives what a new tree gives.
TEST_P(IndexTreeTest, LooksFindTheSameInWhateverOrder) {
    for (std::uint32_t n = 0; n < 4000; ++n)
        Insert(BigEndian(n / 3 * 2), {10 + n % 3, 1});
    const auto look = [&](std::uint32_t n) { LookFor(BigEndian(n)); };
    for (std::uint32_t n = 0; n < 2700; ++n)
        look(n);
    for (std::uint32_t n = 2700; n-- > 0;)
        look(n);
    Random random(5);
    for (int n = 0; n < 3000; ++n)
        look(random() % 2700);
    for (std::uint32_t n = 0; n < 900; ++n)
        for (const std::uint32_t nFrom : {0U, 900U, 1800U})
            look(nFrom + n);
}

TEST_P(IndexTreeTest, LooksSeeEachChange) {
    InsertNumbers(0, 3000);
    m_pages.Commit();
    const auto model = m_model;
    const auto lookAround = [&] {
        for (std::uint32_t n = 1000; n < 1300; n += 7)
            LookFor(BigEndian(n));
    };
    lookAround();
    lookAround();
    for (std::uint32_t n = 0; n < 500; ++n) {
        const Bytes key = LongKey(n, 40);
        Insert(key, {5, 5});  // splits leaves
        LookFor(key);
        LookFor(BigEndian(1100));
        LookFor(BigEndian(1101));
    }
    for (std::uint32_t n = 1050; n < 1200; ++n) {
        RemoveNear(BigEndian(n), {n / 200 + 10, static_cast<std::uint8_t>(n % 200)});
        LookFor(BigEndian(n));
        LookFor(BigEndian(n + 1));
    }
    lookAround();
    m_pages.Rollback();
    m_model = model;
    lookAround();
    lookAround();
}

TEST_P(IndexTreeTest, AnEmptyOneHasNothing) {
    EXPECT_TRUE(m_tree.First().AtEnd());
    EXPECT_TRUE(m_tree.LowerBound(BigEndian(0)).AtEnd());
    EXPECT_FALSE(m_tree.Remove(BigEndian(0), {1, 1}));
    ExpectModel();
}

TEST_P(IndexTreeTest, EntriesStandAsTheFormatWantsThem) {
    Insert({0x7F, 0x55}, {0x010203, 4});
    Insert({0x7F, 0x22}, {0x010204, 5});
    const ByteView page = m_pages.Read(1);
    const Layout& layout = m_pages.Format();
    EXPECT_EQ(page[0], 4);
    EXPECT_EQ(page[1], 1);
    EXPECT_EQ(LoadU16(page, 2), layout.nPageSize - layout.nEntriesPlace - 12);
    EXPECT_EQ(LoadU32(page, 4), kTable);
    EXPECT_EQ(LoadU16(page, layout.nEntryMaskPlace), 1U << 6 | 1U << 12);
    const Bytes expected{0x7F, 0x22, 1, 2, 4, 5, 0x7F, 0x55, 1, 2, 3, 4};
    EXPECT_TRUE(std::ranges::equal(Part(page, layout.nEntriesPlace, 12), expected));
}

TEST_P(IndexTreeTest, AscendingKeysFillTheirPages) {
    InsertNumbers(0, 5000);
    ExpectModel();
    const std::size_t nEntryBytes = 9;
    const std::size_t nCapacity = m_pages.Format().nPageSize - m_pages.Format().nEntriesPlace;
    // With what they share they take up less than their bytes.
    EXPECT_LT(Pages().size(), 5000 * nEntryBytes / nCapacity);
}

TEST_P(IndexTreeTest, DescendingKeysAreKeptToo) {
    for (std::uint32_t n = 5000; n-- > 0;)
        Insert(BigEndian(n), {10, 0});
    ExpectModel();
}

TEST_P(IndexTreeTest, TheRootKeepsItsPageThroughSplitsAndBack) {
    InsertNumbers(0, 20000);
    EXPECT_EQ(Pages().front(), 1U);
    EXPECT_EQ(m_pages.Read(1)[0], static_cast<int>(PageKind::IndexNode));
    while (!m_model.empty())
        RemoveNear(m_model.begin()->key, m_model.begin()->place);
    ExpectModel();
    EXPECT_EQ(m_pages.Read(1)[0], static_cast<int>(PageKind::IndexLeaf));
    EXPECT_EQ(m_source.nTaken, 0U);
}

TEST_P(IndexTreeTest, RandomShortKeys) {
    RunRandom(1, 12, 3000, [](std::uint32_t n) { return BigEndian(n % 20000); });
}

TEST_P(IndexTreeTest, RandomKeysWithFewValues) {
    RunRandom(2, 8, 1000, [](std::uint32_t n) { return BigEndian(n % 50 << 16); });
}

TEST_P(IndexTreeTest, RandomLongKeys) {
    RunRandom(3, 12, 1500, [](std::uint32_t n) { return LongKey(n % 5000, n % 500); });
}

TEST_P(IndexTreeTest, RandomLongestKeys) {
    RunRandom(4, 8, 600, [](std::uint32_t n) { return LongKey(n % 2000, 800 + n % 60); });
}

TEST_P(IndexTreeTest, RandomKeysOfMixedLengths) {
    RunRandom(5, 12, 1500, [](std::uint32_t n) {
        return n % 4 == 0 ? LongKey(n % 3000, 700) : BigEndian(n % 3000 * 65537);
    });
}

TEST_P(IndexTreeTest, KeysThatAreTooLongAreRefused) {
    Bytes key(m_pages.Format().nPageSize / 2, 0x11);
    try {
        m_tree.Insert(key, {1, 1});
        FAIL() << "was taken";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Kind(), FailureKind::Constraint);
    }
    ExpectModel();
}

TEST_P(IndexTreeTest, ARowIsThereOnceForAKey) {
    Insert(BigEndian(1), {1, 1});
    EXPECT_THROW(m_tree.Insert(BigEndian(1), {1, 1}), Failure);
    Insert(BigEndian(1), {1, 2});
    ExpectModel();
}

TEST_P(IndexTreeTest, ATreeWithoutASourceOfPagesIsReadOnly) {
    Insert(BigEndian(1), {1, 1});
    IndexTree reader(m_pages, 1, kTable, nullptr);
    EXPECT_TRUE(reader.Contains(BigEndian(1)));
    EXPECT_THROW(reader.Insert(BigEndian(2), {1, 2}), Failure);
    EXPECT_THROW(reader.Remove(BigEndian(1), {1, 1}), Failure);
    ExpectModel();
}

TEST_P(IndexTreeTest, ACursorGoesOnBehindItsEntryWhateverChanges) {
    InsertNumbers(0, 3000);
    auto cursor = m_tree.LowerBound(BigEndian(1000));
    ASSERT_TRUE(m_tree.Remove(BigEndian(1000), cursor.Place()));
    for (std::uint32_t n = 0; n < 900; ++n)
        ASSERT_TRUE(
            m_tree.Remove(BigEndian(n), {n / 200 + 10, static_cast<std::uint8_t>(n % 200)}));
    cursor.Next();
    EXPECT_TRUE(std::ranges::equal(cursor.Key(), BigEndian(1001)));
    m_tree.Insert(BigEndian(1001), {0x777777, 1});
    cursor.Next();
    EXPECT_EQ(cursor.Place().nPage, 0x777777U);
    cursor.Next();
    EXPECT_TRUE(std::ranges::equal(cursor.Key(), BigEndian(1002)));
}

TEST_P(IndexTreeTest, ACursorRemovesAllItSees) {
    InsertNumbers(0, 3000);
    int nSeen = 0;
    for (auto cursor = m_tree.First(); !cursor.AtEnd(); cursor.Next(), ++nSeen)
        ASSERT_TRUE(m_tree.Remove(Bytes(cursor.Key().begin(), cursor.Key().end()), cursor.Place()));
    EXPECT_EQ(nSeen, 3000);
    m_model.clear();
    ExpectModel();
}

TEST_P(IndexTreeTest, ARollBackIsSeenAtOnce) {
    InsertNumbers(0, 100);
    m_pages.Commit();
    auto cursor = m_tree.LowerBound(BigEndian(50));
    const auto before = m_model;
    InsertNumbers(100, 4000);
    m_pages.Rollback();
    m_model = before;
    m_source.nTaken = 0;
    cursor.Next();
    EXPECT_TRUE(std::ranges::equal(cursor.Key(), BigEndian(51)));
    ExpectModel();
}

TEST_P(IndexTreeTest, RebuildPutsEntriesInThePlaceOfAll) {
    InsertNumbers(0, 2000);
    for (const std::uint32_t nCount : {0U, 1U, 300U, 30000U, 5U}) {
        std::vector<IndexEntry> entries;
        for (std::uint32_t n = 0; n < nCount; ++n)
            entries.push_back({BigEndian(n * 3), {n + 1, 0}});
        m_tree.Rebuild(entries);
        m_model = {entries.begin(), entries.end()};
        ExpectModel();
    }
}

TEST_P(IndexTreeTest, ARebuiltTreeOfLongKeysIsChangedOn) {
    std::vector<IndexEntry> entries;
    for (std::uint32_t n = 0; n < 3000; ++n)
        entries.push_back({LongKey(n, 400), {n + 1, 0}});
    std::ranges::sort(entries);
    m_tree.Rebuild(entries);
    m_model = {entries.begin(), entries.end()};
    ExpectModel();
    RunRandom(6, 4, 1000, [](std::uint32_t n) { return LongKey(n % 5000, 400); });
}

TEST_P(IndexTreeTest, RebuildRefusesEntriesThatDontAscend) {
    EXPECT_THROW(m_tree.Rebuild({{BigEndian(2), {1, 1}}, {BigEndian(1), {1, 1}}}), Failure);
    ExpectModel();
}

// Other programs leave the tail and the level out.
TEST_P(IndexTreeTest, ANodeWithoutATailIsReadAndPutRightOnAChange) {
    InsertNumbers(0, 3000);
    const bool bJet3 = GetParam() == Generation::Jet3;
    const ByteSpan root = m_pages.Change(1);
    const IndexPage page(root, m_pages.Format());
    // The last entry's page becomes the tail's, which goes.
    const std::uint32_t nTail = page.Tail();
    const Bytes last = m_model.rbegin()->key;
    Bytes entry = last;
    AppendBig<3>(entry, m_model.rbegin()->place.nPage);
    entry.push_back(m_model.rbegin()->place.nRow);
    AppendBig<4>(entry, nTail);
    IndexPageEditor editor(root, m_pages.Format());
    ASSERT_TRUE(editor.Insert(editor.End(), entry));
    editor.SetTail(0);
    root[bJet3 ? 21 : 26] = 0;
    ExpectModel();
    InsertNumbers(3000, 3100);
    ExpectModel();
    EXPECT_NE(IndexPage(m_pages.Read(1), m_pages.Format()).Tail(), 0U);
    EXPECT_EQ(m_pages.Read(1)[bJet3 ? 21 : 26], 1);
}

// ---- Damage

class DamagedIndexTest : public IndexTreeTest {
  protected:
    DamagedIndexTest() { InsertNumbers(0, 3000); }

    void ExpectDamage() {
        std::vector<IndexEntry> entries;
        std::vector<std::uint32_t> pages;
        try {
            m_tree.Check(entries, pages);
            FAIL() << "passed";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Kind(), FailureKind::Damaged);
        }
    }
    IndexPageEditor Page(std::uint32_t nPage) { return {m_pages.Change(nPage), m_pages.Format()}; }
};

INSTANTIATE_TEST_SUITE_P(Generations, DamagedIndexTest,
                         ::testing::Values(Generation::Jet3, Generation::Jet4), NameOf);

TEST_P(DamagedIndexTest, AnotherTablesPage) {
    m_pages.Change(Pages()[1])[4] ^= 1;
    ExpectDamage();
    EXPECT_THROW(m_tree.First(), Failure);
}

TEST_P(DamagedIndexTest, APageOfAnotherKind) {
    m_pages.Change(Pages()[1])[0] = 1;
    ExpectDamage();
    EXPECT_THROW(m_tree.First(), Failure);
}

TEST_P(DamagedIndexTest, FreeBytesMiscounted) {
    m_pages.Change(Pages()[1])[2] ^= 1;
    ExpectDamage();
}

TEST_P(DamagedIndexTest, EntriesThatDontAscend) {
    const ByteSpan page = m_pages.Change(Pages()[1]);
    page[m_pages.Format().nEntriesPlace] = 0x90;
    ExpectDamage();
    EXPECT_THROW(
        {
            for (auto cursor = m_tree.First(); !cursor.AtEnd();)
                cursor.Next();
        },
        Failure);
}

TEST_P(DamagedIndexTest, ALoopOfLeaves) {
    const auto pages = Pages();
    Page(pages[2]).SetNext(pages[1]);
    ExpectDamage();
    EXPECT_THROW(
        {
            for (auto cursor = m_tree.First(); !cursor.AtEnd();)
                cursor.Next();
        },
        Failure);
}

TEST_P(DamagedIndexTest, ANodeBelowItself) {
    Page(1).SetTail(1);
    ExpectDamage();
    EXPECT_THROW(m_tree.LowerBound(BigEndian(0xFFFFFFFF)), Failure);
    EXPECT_THROW(m_tree.Insert(BigEndian(0xFFFFFFFF), {1, 1}), Failure);
}

TEST_P(DamagedIndexTest, APageBehindTheFile) {
    Page(1).SetTail(m_pages.Count());
    ExpectDamage();
}

TEST_P(DamagedIndexTest, ANodeThatTellsAnotherLastEntry) {
    m_pages.Change(1)[m_pages.Format().nEntriesPlace + 4] ^= 1;
    ExpectDamage();
}

TEST_P(DamagedIndexTest, AMaskThatLeadsOutOfThePage) {
    const Layout& layout = m_pages.Format();
    m_pages.Change(1)[layout.nEntryMaskPlace + layout.nEntryMaskBytes - 1] |= 0x80;
    ExpectDamage();
}

}  // namespace
}  // namespace nomira::jet
