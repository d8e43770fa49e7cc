#include "adapters/jet/IndexTree.h"

#include <algorithm>
#include <unordered_set>

#include "adapters/jet/IndexEntries.h"

namespace nomira::jet {
namespace {

// Each level at least doubles what a tree can hold, so no sound tree is deeper.
constexpr std::size_t kMostLevels = 32;

[[noreturn]] void FailAsDamaged(const char* sWords) {
    Fail(FailureKind::Damaged, sWords);
}

void RequireAscending(const Bytes& before, const Bytes& entry) {
    if (!before.empty() && CompareEntries(before, entry) >= 0)
        FailAsDamaged("the entries of an index don't ascend");
}

}  // namespace

IndexTree::IndexTree(PageStore& store, std::uint32_t nRoot, std::uint32_t nTable, PageSource* pages)
    : m_store(store), m_nRoot(nRoot), m_nTable(nTable), m_pages(pages) {}

IndexPage IndexTree::Load(std::uint32_t nPage) const {
    const IndexPage page(m_store.Read(nPage), m_store.Format());
    if (page.Owner() != m_nTable) FailAsDamaged("an index leads to a page of another table");
    return page;
}

// The way to the first entry that isn't less, or to the last leaf.
std::uint32_t IndexTree::Descend(ByteView entry, Path* path) const {
    std::uint32_t nPage = m_nRoot;
    for (std::size_t n = 0; n < kMostLevels; ++n) {
        const IndexPage page = Load(nPage);
        if (page.IsLeaf()) return nPage;
        const std::size_t nEnd = page.End();
        std::size_t nStart = page.Find(entry);
        bool bTail = nStart == nEnd;
        if (bTail && page.Tail() == 0) {
            nStart = page.StartOfLast();
            bTail = false;
        }
        if (path != nullptr) path->push_back({nPage, nStart, bTail});
        nPage = bTail ? page.Tail() : page.ChildAt(nStart);
    }
    FailAsDamaged("an index is too deep");
}

// The first entry that isn't less. Who looks for keys near each other is led to their leaf at once.
IndexTree::Spot IndexTree::Find(ByteView entry) {
    const bool bChanged = m_nChanges != m_store.Changes();
    m_nChanges = m_store.Changes();
    for (KnownLeaf& leaf : m_knownLeaves) {
        if (bChanged) leaf.nPage = 0;
        if (!leaf.Has(entry)) continue;
        leaf.nFound = Load(leaf.nPage).FindBehind(leaf.nFound, entry);
        return {leaf.nPage, leaf.nFound};
    }
    const std::uint32_t nLeaf = Descend(entry, nullptr);
    const IndexPage page = Load(nLeaf);
    const Spot spot{nLeaf, page.Find(entry)};
    // Between two changes there is often but one look.
    if (!bChanged) Remember(page, spot);
    return spot;
}

// What is the first one, or not greater than the last one of the leaf ahead, may be there as well.
bool IndexTree::KnownLeaf::Has(ByteView entry) const {
    return nPage != 0 && CompareEntries(first, entry) < 0 && CompareEntries(entry, last) <= 0;
}

void IndexTree::Remember(const IndexPage& leaf, Spot spot) {
    if (spot.nStart == leaf.End()) return;
    KnownLeaf& known = m_knownLeaves[m_nNextLeaf];
    m_nNextLeaf = (m_nNextLeaf + 1) % m_knownLeaves.size();
    known.nPage = 0;  // until both are known
    leaf.Assemble(0, known.first);
    leaf.Assemble(leaf.StartOfLast(), known.last);
    known.nFound = spot.nStart;
    known.nPage = spot.nLeaf;
}

std::uint32_t IndexTree::FirstLeaf() const {
    return Descend({}, nullptr);
}

IndexTree::Cursor IndexTree::First() {
    return LowerBound({});
}

IndexTree::Cursor IndexTree::LowerBound(ByteView key) {
    Cursor cursor;
    Seek(cursor, key);
    return cursor;
}

void IndexTree::Seek(Cursor& cursor, ByteView key) {
    const Spot spot = Find(key);
    cursor.m_tree = this;
    cursor.m_previous.clear();
    cursor.SettleAt(spot.nLeaf, spot.nStart);
}

bool IndexTree::Contains(ByteView key) {
    const Cursor cursor = LowerBound(key);
    return !cursor.AtEnd() && std::ranges::equal(cursor.Key(), key);
}

ByteView IndexTree::Cursor::Key() const {
    return KeyOf(m_bytes);
}

RowPlace IndexTree::Cursor::Place() const {
    return PlaceIn(m_bytes);
}

void IndexTree::Cursor::Next() {
    if (m_bAtEnd) return;
    m_previous.swap(m_bytes);
    if (m_nChanges == m_tree->m_store.Changes()) {
        SettleAt(m_nLeaf, m_nEnd);
        return;
    }
    const std::uint32_t nLeaf = m_tree->Descend(m_previous, nullptr);
    const IndexPage page = m_tree->Load(nLeaf);
    std::size_t nEntry = page.Find(m_previous);
    if (nEntry != page.End() && page.EntryAt(nEntry) == m_previous) nEntry = page.EndOf(nEntry);
    SettleAt(nLeaf, nEntry);
}

// Goes on over the following leaves where the place is behind the last entry of one.
void IndexTree::Cursor::SettleAt(std::uint32_t nLeaf, std::size_t nEntry) {
    m_nChanges = m_tree->m_store.Changes();
    m_bAtEnd = true;
    for (std::uint32_t n = m_tree->m_store.Count(); n > 0; --n) {
        const IndexPage page = m_tree->Load(nLeaf);
        if (!page.IsLeaf()) FailAsDamaged("a leaf of an index leads to a page that is none");
        m_nLeaf = nLeaf;
        m_nEnd = page.EndIfAny(nEntry);
        if (m_nEnd != 0) {
            page.Assemble(nEntry, m_nEnd, m_bytes);
            RequireAscending(m_previous, m_bytes);
            m_bAtEnd = false;
            return;
        }
        nLeaf = page.Next();
        nEntry = 0;
        if (nLeaf == 0) return;
    }
    FailAsDamaged("the leaves of an index form a ring");
}

// ---- Checks

struct IndexTree::Visit {
    std::vector<IndexEntry>& entries;
    std::vector<std::uint32_t>& pages;
    std::unordered_set<std::uint32_t> seen;
    std::uint32_t nLeaf = 0;  // the one before
    Bytes last;               // entry
};

void IndexTree::Check(std::vector<IndexEntry>& entries, std::vector<std::uint32_t>& pages) {
    entries.clear();
    pages.clear();
    Visit visit{entries, pages, {}, 0, {}};
    CheckPage(m_nRoot, 0, visit);
    CheckSiblings(std::array{m_nRoot});
    if (Load(visit.nLeaf).Next() != 0) FailAsDamaged("an index has leaves outside its tree");
}

// How many levels there are below the page.
std::size_t IndexTree::CheckPage(std::uint32_t nPage, std::size_t nDepth, Visit& visit) const {
    if (nDepth >= kMostLevels) FailAsDamaged("an index is too deep");
    if (!visit.seen.insert(nPage).second) FailAsDamaged("an index leads to one of its pages twice");
    visit.pages.push_back(nPage);
    const IndexPage page = Load(nPage);
    page.RequireSound();
    std::size_t nLevel = 0;
    if (page.IsLeaf())
        CheckLeaf(nPage, visit);
    else
        nLevel = CheckNode(nPage, nDepth, visit);
    // Some programs leave it out.
    if (page.Level() != 0 && page.Level() != nLevel)
        FailAsDamaged("a page of an index stands on another level than it says");
    return nLevel;
}

void IndexTree::CheckLeaf(std::uint32_t nPage, Visit& visit) const {
    const IndexPage page = Load(nPage);
    if (page.IsEmpty() && nPage != m_nRoot) FailAsDamaged("an index has a leaf without entries");
    const bool bLinked = visit.nLeaf == 0 || Load(visit.nLeaf).Next() == nPage;
    if (page.Previous() != visit.nLeaf || !bLinked)
        FailAsDamaged("a leaf of an index leads to other ones than its tree");
    visit.nLeaf = nPage;
    for (const Bytes& entry : page.Entries()) {
        RequireAscending(visit.last, entry);
        visit.last = entry;
        visit.entries.push_back(SplitEntry(entry));
    }
}

std::size_t IndexTree::CheckNode(std::uint32_t nPage, std::size_t nDepth, Visit& visit) const {
    const IndexPage page = Load(nPage);
    std::vector<std::uint32_t> children;
    std::vector<std::size_t> levels;
    for (std::size_t nStart = 0; nStart < page.End(); nStart = page.EndOf(nStart)) {
        children.push_back(page.ChildAt(nStart));
        levels.push_back(CheckPage(children.back(), nDepth + 1, visit));
        if (visit.last != page.EntryAt(nStart))
            FailAsDamaged("a node of an index tells another last entry than the page has");
    }
    if (page.Tail() != 0) {
        children.push_back(page.Tail());
        levels.push_back(CheckPage(children.back(), nDepth + 1, visit));
    }
    if (children.empty()) FailAsDamaged("a node of an index has no page below");
    if (!std::ranges::all_of(levels, [&](std::size_t n) { return n == levels.front(); }))
        FailAsDamaged("an index is deeper in one place than in another");
    if (levels.front() > 0) CheckSiblings(children);
    return levels.front() + 1;
}

// Nodes are linked with those below the same node alone.
void IndexTree::CheckSiblings(std::span<const std::uint32_t> children) const {
    for (std::size_t n = 0; n < children.size(); ++n) {
        const IndexPage page = Load(children[n]);
        const std::uint32_t nPrevious = n == 0 ? 0 : children[n - 1];
        const std::uint32_t nNext = n + 1 == children.size() ? 0 : children[n + 1];
        if (page.Previous() != nPrevious || page.Next() != nNext)
            FailAsDamaged("a node of an index leads to other ones than its tree");
    }
}

}  // namespace nomira::jet
