// A tree made anew from the leaves up.

#include <algorithm>
#include <unordered_set>

#include "adapters/jet/IndexEntries.h"
#include "adapters/jet/IndexTree.h"

namespace nomira::jet {
namespace {

std::size_t CapacityOf(const Layout& layout) {
    return layout.nPageSize - layout.nEntriesPlace;
}

std::vector<Bytes> Joined(const std::vector<IndexEntry>& entries, const Layout& layout) {
    std::vector<Bytes> joined;
    joined.reserve(entries.size());
    for (const IndexEntry& entry : entries) {
        joined.push_back(JoinEntry(entry.key, entry.place));
        if (joined.back().size() + kChildBytes > CapacityOf(layout))
            Fail(FailureKind::Constraint, "the values are too long for an index");
        if (joined.size() > 1 && !(joined[joined.size() - 2] < joined.back()))
            Fail(FailureKind::Damaged, "the entries of an index don't ascend");
    }
    return joined;
}

// How many of the entries a leaf can take, with the prefix that they share.
std::size_t LeafFull(std::span<const Bytes> entries, const Layout& layout) {
    std::size_t nBytes = 0;
    std::size_t nCount = 0;
    for (const Bytes& entry : entries) {
        nBytes += entry.size();
        const std::size_t nPrefix = LongestPrefix(entries.front(), entry, layout);
        if (nCount > 0 && nBytes - nPrefix * nCount > CapacityOf(layout)) break;
        ++nCount;
    }
    return nCount;
}

std::vector<std::span<const Bytes>> LeafGroups(std::span<const Bytes> entries,
                                               const Layout& layout) {
    std::vector<std::span<const Bytes>> groups;
    while (!entries.empty()) {
        groups.push_back(entries.first(LeafFull(entries, layout)));
        entries = entries.subspan(groups.back().size());
    }
    return groups;
}

// How many pages a node can name; the last one takes no room.
template <typename Child>
std::size_t NodeFull(std::span<const Child> children, const Layout& layout) {
    std::size_t nBytes = 0;
    std::size_t nCount = 0;
    for (; nCount < children.size() && nBytes <= CapacityOf(layout); ++nCount)
        nBytes += children[nCount].last.size() + kChildBytes;
    return nCount;
}

template <typename Child>
std::vector<std::span<const Child>> NodeGroups(std::span<const Child> children,
                                               const Layout& layout) {
    std::vector<std::span<const Child>> groups;
    while (!children.empty()) {
        std::size_t nCount = NodeFull(children, layout);
        // No node is left with one page.
        if (nCount + 1 == children.size() && nCount > 2) --nCount;
        groups.push_back(children.first(nCount));
        children = children.subspan(nCount);
    }
    return groups;
}

}  // namespace

void WriteEmptyIndex(PageStore& store, std::uint32_t nRoot, std::uint32_t nTable) {
    IndexPageEditor::Format(store.Change(nRoot), store.Format(), nTable, 0);
}

void IndexTree::Rebuild(const std::vector<IndexEntry>& entries) {
    const Layout& layout = m_store.Format();
    const std::vector<Bytes> joined = Joined(entries, layout);
    GiveBackAllButRoot();
    WriteEmptyIndex(m_store, m_nRoot, m_nTable);
    const auto leaves = LeafGroups(joined, layout);
    if (leaves.size() <= 1) {
        if (!leaves.empty()) Edit(m_nRoot).Fill(joined, FittingPrefix(joined, layout).value_or(0));
        return;
    }
    std::vector<Child> children = BuildLeaves(leaves);
    std::uint8_t nLevel = 1;
    for (;; ++nLevel) {
        const auto nodes = NodeGroups(std::span<const Child>(children), layout);
        if (nodes.size() == 1) break;
        children = BuildNodes(nodes, nLevel);
    }
    if (nLevel > 1) Link(children);
    IndexPageEditor::Format(m_store.Change(m_nRoot), layout, m_nTable, nLevel);
    FillNode(m_nRoot, children);
}

void IndexTree::RebuildAsItIs() {
    std::vector<IndexEntry> entries;
    for (Cursor cursor = First(); !cursor.AtEnd(); cursor.Next())
        entries.push_back(SplitEntry(cursor.m_bytes));
    Rebuild(entries);
}

void IndexTree::GiveBackAllButRoot() {
    std::vector<std::uint32_t> pages{m_nRoot};
    std::unordered_set<std::uint32_t> seen{m_nRoot};
    const auto add = [&](std::uint32_t nPage) {
        if (!seen.insert(nPage).second)
            Fail(FailureKind::Damaged, "an index leads to one of its pages twice");
        pages.push_back(nPage);
    };
    std::uint32_t nLeaf = m_nRoot;  // comes to be the last one
    for (std::size_t n = 0; n < pages.size(); ++n) {
        const IndexPage page = Load(pages[n]);
        if (page.IsLeaf()) {
            nLeaf = pages[n];
            continue;
        }
        for (std::size_t nStart = 0; nStart < page.End(); nStart = page.EndOf(nStart))
            add(page.ChildAt(nStart));
        if (page.Tail() != 0) add(page.Tail());
    }
    // Those that no node names.
    while ((nLeaf = Load(nLeaf).Next()) != 0)
        add(nLeaf);
    for (std::size_t n = 1; n < pages.size(); ++n)
        Source().GiveBack(pages[n]);
}

std::vector<IndexTree::Child> IndexTree::BuildLeaves(
    std::span<const std::span<const Bytes>> groups) {
    std::vector<Child> children;
    for (const std::span<const Bytes> group : groups) {
        const std::uint32_t nPage = NewPage(0);
        Edit(nPage).Fill(group, FittingPrefix(group, m_store.Format()).value_or(0));
        children.push_back({group.back(), nPage});
    }
    Link(children);
    return children;
}

std::vector<IndexTree::Child> IndexTree::BuildNodes(std::span<const std::span<const Child>> groups,
                                                    std::uint8_t nLevel) {
    std::vector<Child> nodes;
    for (const std::span<const Child> group : groups) {
        const std::uint32_t nPage = NewPage(nLevel);
        if (nLevel > 1) Link(group);
        FillNode(nPage, group);
        nodes.push_back({group.back().last, nPage});
    }
    return nodes;
}

void IndexTree::FillNode(std::uint32_t nPage, std::span<const Child> children) {
    std::vector<Bytes> entries;
    for (const Child& child : children.first(children.size() - 1)) {
        entries.push_back(child.last);
        AppendBig<kChildBytes>(entries.back(), child.nPage);
    }
    IndexPageEditor page = Edit(nPage);
    page.Fill(entries, 0);
    page.SetTail(children.back().nPage);
}

void IndexTree::Link(std::span<const Child> pages) {
    for (std::size_t n = 0; n < pages.size(); ++n) {
        IndexPageEditor page = Edit(pages[n].nPage);
        page.SetPrevious(n == 0 ? 0 : pages[n - 1].nPage);
        page.SetNext(n + 1 == pages.size() ? 0 : pages[n + 1].nPage);
    }
}

}  // namespace nomira::jet
