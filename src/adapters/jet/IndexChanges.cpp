// Entries that come and go one by one.

#include <algorithm>
#include <functional>
#include <utility>

#include "adapters/jet/IndexEntries.h"
#include "adapters/jet/IndexTree.h"

namespace nomira::jet {
namespace {

[[noreturn]] void FailAsDamaged(const char* sWords) {
    Fail(FailureKind::Damaged, sWords);
}

std::size_t CapacityOf(const Layout& layout) {
    return layout.nPageSize - layout.nEntriesPlace;
}

// With half a page for the longest entry, a node that overflows has three or more, and so each half
// has one beside the one that moves up.
std::size_t LongestEntry(const Layout& layout) {
    return CapacityOf(layout) / 2 - 2 * kChildBytes;
}

ByteView WithoutChild(const Bytes& entry) {
    return ByteView(entry).first(entry.size() - kChildBytes);
}

std::uint32_t ChildOf(const Bytes& entry) {
    return static_cast<std::uint32_t>(LoadBig<kChildBytes>(entry, entry.size() - kChildBytes));
}

Bytes WithChild(ByteView entry, std::uint32_t nPage) {
    Bytes bytes(entry.begin(), entry.end());
    AppendBig<kChildBytes>(bytes, nPage);
    return bytes;
}

// All entries of the page and one more ahead of the one at `nStart`; its index in them too. What is
// done with them relies on their order.
std::pair<std::vector<Bytes>, std::size_t> EntriesWith(const IndexPage& page, std::size_t nStart,
                                                       ByteView entry) {
    std::vector<Bytes> entries = page.Entries();
    std::size_t nIndex = 0;
    for (std::size_t n = 0; n < nStart; n = page.EndOf(n))
        ++nIndex;
    entries.emplace(entries.begin() + static_cast<std::ptrdiff_t>(nIndex), entry.begin(),
                    entry.end());
    if (std::ranges::adjacent_find(entries, std::ranges::greater_equal()) != entries.end())
        FailAsDamaged("the entries of an index don't ascend");
    return {std::move(entries), nIndex};
}

// The number from `nFirst` to `nLast` nearest to half of the bytes with which a split comes out.
template <typename Fits>
std::size_t EvenSplit(std::span<const Bytes> entries, std::size_t nFirst, std::size_t nLast,
                      Fits fits) {
    const std::size_t nHalf = PackedBytes(entries, 0) / 2;
    std::size_t nMiddle = 0;
    for (std::size_t nBytes = 0; nMiddle < nLast && nBytes + entries[nMiddle].size() <= nHalf;)
        nBytes += entries[nMiddle++].size();
    for (std::size_t nAway = 0; nAway < entries.size(); ++nAway) {
        const std::size_t nUp = nMiddle + nAway;
        if (nUp >= nFirst && nUp <= nLast && fits(nUp)) return nUp;
        const bool bDown = nMiddle >= nFirst + nAway && nMiddle - nAway <= nLast;
        if (bDown && fits(nMiddle - nAway)) return nMiddle - nAway;
    }
    Fail(FailureKind::Unsupported, "an index has entries that are too long to be moved");
}

std::size_t EvenLeafSplit(std::span<const Bytes> entries, const Layout& layout) {
    return EvenSplit(entries, 1, entries.size() - 1, [&](std::size_t nLeft) {
        return FittingPrefix(entries.first(nLeft), layout).has_value() &&
               FittingPrefix(entries.subspan(nLeft), layout).has_value();
    });
}

std::size_t EvenNodeSplit(std::span<const Bytes> entries, const Layout& layout) {
    if (entries.size() < 3)
        Fail(FailureKind::Unsupported, "an index has entries that are too long to be moved");
    return EvenSplit(entries, 1, entries.size() - 2, [&](std::size_t nMiddle) {
        return PackedBytes(entries.first(nMiddle), 0) <= CapacityOf(layout) &&
               PackedBytes(entries.subspan(nMiddle + 1), 0) <= CapacityOf(layout);
    });
}

}  // namespace

IndexPageEditor IndexTree::Edit(std::uint32_t nPage) {
    Load(nPage);
    return {m_store.Change(nPage), m_store.Format()};
}

PageSource& IndexTree::Source() const {
    if (m_pages == nullptr) Fail(FailureKind::NotWritable, "the index is open for reading only");
    return *m_pages;
}

std::uint32_t IndexTree::NewPage(std::uint8_t nLevel) {
    const std::uint32_t nPage = Source().Take();
    IndexPageEditor::Format(m_store.Change(nPage), m_store.Format(), m_nTable, nLevel);
    return nPage;
}

// Whether the tree is none that this library makes: other programs may leave nodes without a tail
// or a level, and leaves behind the last one that the nodes name. Readers take them as they are.
bool IndexTree::IsOdd(const Path& path, std::uint32_t nLeaf) const {
    bool bLast = true;
    for (const Step& step : path) {
        const IndexPage page = Load(step.nPage);
        if (page.Tail() == 0 || page.Level() == 0) return true;
        bLast = bLast && step.bTail;
    }
    return bLast && Load(nLeaf).Next() != 0;
}

std::uint32_t IndexTree::DescendToChange(ByteView entry, Path& path) {
    const std::uint32_t nLeaf = Descend(entry, &path);
    if (!IsOdd(path, nLeaf)) return nLeaf;
    RebuildAsItIs();
    path.clear();
    return Descend(entry, &path);
}

// ---- Insert

void IndexTree::Insert(ByteView key, RowPlace place) {
    const Bytes entry = JoinEntry(key, place);
    if (entry.size() > LongestEntry(m_store.Format()))
        Fail(FailureKind::Constraint, "the values are too long for an index");
    Source();
    Path path;
    const std::uint32_t nLeaf = DescendToChange(entry, path);
    const IndexPage page = Load(nLeaf);
    const std::size_t nStart = page.Find(entry);
    if (nStart != page.End() && page.EntryAt(nStart) == entry)
        FailAsDamaged("an index has a row already that is new");
    InsertIntoLeaf(path, nLeaf, nStart, entry);
}

void IndexTree::InsertIntoLeaf(Path& path, std::uint32_t nLeaf, std::size_t nStart,
                               ByteView entry) {
    IndexPageEditor page = Edit(nLeaf);
    if (page.Insert(nStart, entry)) return;
    const auto [entries, nIndex] = EntriesWith(page, nStart, entry);
    if (const auto nPrefix = FittingPrefix(entries, m_store.Format())) {
        page.Fill(entries, *nPrefix);
        return;
    }
    // Keys that only ever grow fill their pages.
    const bool bAppended = nIndex + 1 == entries.size() && page.Next() == 0;
    SplitLeaf(path, nLeaf, entries, bAppended ? nIndex : EvenLeafSplit(entries, m_store.Format()));
}

// Ahead of the child that the path leads to, which has been split.
void IndexTree::InsertIntoNode(Path& path, ByteView entry) {
    const Step step = path.back();
    path.pop_back();
    IndexPageEditor page = Edit(step.nPage);
    if (page.Insert(step.nStart, entry)) return;
    const auto [entries, nIndex] = EntriesWith(page, step.nStart, entry);
    if (PackedBytes(entries, 0) <= CapacityOf(m_store.Format())) {
        page.Fill(entries, 0);
        return;
    }
    const bool bAppended = nIndex + 1 == entries.size() && entries.size() > 2;
    SplitNode(path, step.nPage, entries,
              bAppended ? nIndex - 1 : EvenNodeSplit(entries, m_store.Format()));
}

// The first `nLeft` entries go to a new page ahead of this one.
void IndexTree::SplitLeaf(Path& path, std::uint32_t nPage, std::span<const Bytes> entries,
                          std::size_t nLeft) {
    if (path.empty()) nPage = MoveRootDown(path);
    const std::uint32_t nNew = NewPageAhead(nPage);
    const Layout& layout = m_store.Format();
    const std::span<const Bytes> left = entries.first(nLeft);
    const std::span<const Bytes> right = entries.subspan(nLeft);
    Edit(nNew).Fill(left, FittingPrefix(left, layout).value_or(0));
    Edit(nPage).Fill(right, FittingPrefix(right, layout).value_or(0));
    InsertIntoNode(path, WithChild(left.back(), nNew));
}

// The same; the entry in the middle moves up, and the page it names becomes the left one's last.
void IndexTree::SplitNode(Path& path, std::uint32_t nPage, std::span<const Bytes> entries,
                          std::size_t nMiddle) {
    if (path.empty()) nPage = MoveRootDown(path);
    const std::uint32_t nNew = NewPageAhead(nPage);
    const Bytes& middle = entries[nMiddle];
    IndexPageEditor left = Edit(nNew);
    left.Fill(entries.first(nMiddle), 0);
    left.SetTail(ChildOf(middle));
    IndexPageEditor right = Edit(nPage);
    right.Fill(entries.subspan(nMiddle + 1), 0);
    // Nodes that have another parent now are no neighbours any longer.
    if (!Load(ChildOf(middle)).IsLeaf()) {
        Edit(ChildOf(middle)).SetNext(0);
        Edit(ChildOf(entries[nMiddle + 1])).SetPrevious(0);
    }
    InsertIntoNode(path, WithChild(WithoutChild(middle), nNew));
}

// The root stays where it is and becomes the parent of a page that is what it was.
std::uint32_t IndexTree::MoveRootDown(Path& path) {
    const IndexPage root = Load(m_nRoot);
    const auto nLevel = static_cast<std::uint8_t>(root.Level() + 1);
    const std::uint32_t nPage = Source().Take();
    std::ranges::copy(m_store.Read(m_nRoot), m_store.Change(nPage).begin());
    IndexPageEditor::Format(m_store.Change(m_nRoot), m_store.Format(), m_nTable, nLevel);
    Edit(m_nRoot).SetTail(nPage);
    path.assign(1, {m_nRoot, 0, true});
    return nPage;
}

// On the same level, linked.
std::uint32_t IndexTree::NewPageAhead(std::uint32_t nPage) {
    const std::uint32_t nNew = NewPage(Load(nPage).Level());
    const std::uint32_t nPrevious = Load(nPage).Previous();
    Edit(nNew).SetPrevious(nPrevious);
    Edit(nNew).SetNext(nPage);
    Edit(nPage).SetPrevious(nNew);
    if (nPrevious != 0) Edit(nPrevious).SetNext(nNew);
    return nNew;
}

// ---- Remove

bool IndexTree::Remove(ByteView key, RowPlace place) {
    const Bytes entry = JoinEntry(key, place);
    Source();
    Path path;
    const std::uint32_t nLeaf = DescendToChange(entry, path);
    const std::size_t nStart = Load(nLeaf).Find(entry);
    if (nStart == Load(nLeaf).End() || Load(nLeaf).EntryAt(nStart) != entry) return false;
    IndexPageEditor page = Edit(nLeaf);
    page.Remove(nStart);
    if (page.IsEmpty())
        DropPage(path, nLeaf);
    else if (nStart == page.End())
        TellNewLast(path, page.EntryAt(page.StartOfLast()));
    return true;
}

// What is the last entry below a node stands in the node above, unless it is behind a tail.
void IndexTree::TellNewLast(Path path, ByteView last) {
    while (!path.empty() && path.back().bTail)
        path.pop_back();
    if (path.empty()) return;
    const Step step = path.back();
    path.pop_back();
    IndexPageEditor page = Edit(step.nPage);
    const Bytes entry = WithChild(last, page.ChildAt(step.nStart));
    page.Remove(step.nStart);
    if (page.Insert(step.nStart, entry)) return;
    const auto [entries, nIndex] = EntriesWith(page, step.nStart, entry);
    if (PackedBytes(entries, 0) <= CapacityOf(m_store.Format()))
        page.Fill(entries, 0);
    else
        SplitNode(path, step.nPage, entries, EvenNodeSplit(entries, m_store.Format()));
}

void IndexTree::Unlink(std::uint32_t nPage) {
    const std::uint32_t nPrevious = Load(nPage).Previous();
    const std::uint32_t nNext = Load(nPage).Next();
    if (nPrevious != 0) Edit(nPrevious).SetNext(nNext);
    if (nNext != 0) Edit(nNext).SetPrevious(nPrevious);
}

// A page without entries.
void IndexTree::DropPage(const Path& path, std::uint32_t nPage) {
    if (path.empty()) {
        WriteEmptyIndex(m_store, m_nRoot, m_nTable);
        return;
    }
    Unlink(nPage);
    Source().GiveBack(nPage);
    DropChild(path);
}

void IndexTree::DropChild(const Path& path) {
    const Step step = path.back();
    const Path above(path.begin(), path.end() - 1);
    IndexPageEditor page = Edit(step.nPage);
    if (!step.bTail) {
        page.Remove(step.nStart);
    } else if (page.IsEmpty()) {
        DropPage(above, step.nPage);
        return;
    } else {
        const std::size_t nLast = page.StartOfLast();
        const Bytes last = page.EntryAt(nLast);
        page.SetTail(page.ChildAt(nLast));
        page.Remove(nLast);
        TellNewLast(above, last);
    }
    if (!page.IsEmpty()) return;
    if (above.empty())
        PullUpOnlyChild();
    else
        RebuildAsItIs();  // no other program has been seen to leave a node with one child
}

void IndexTree::PullUpOnlyChild() {
    while (!Load(m_nRoot).IsLeaf() && Load(m_nRoot).IsEmpty()) {
        const std::uint32_t nChild = Load(m_nRoot).Tail();
        Load(nChild);
        if (nChild == m_nRoot) FailAsDamaged("an index leads to one of its pages twice");
        std::ranges::copy(m_store.Read(nChild), m_store.Change(m_nRoot).begin());
        Source().GiveBack(nChild);
    }
}

}  // namespace nomira::jet
