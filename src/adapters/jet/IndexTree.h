// An index: a tree of pages whose leaves hold, in order, each row's key and place.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <vector>

#include "adapters/jet/IndexPage.h"
#include "adapters/jet/PageStore.h"

namespace nomira::jet {

struct IndexEntry {
    Bytes key;
    RowPlace place;

    auto operator<=>(const IndexEntry&) const = default;  // NOLINT(modernize-use-nullptr)
};

class IndexTree {
  public:
    // The root keeps its page for good: the table's definition names it. `nTable` is the
    // definition's page, which each page of the index tells as its owner. `pages` gives new pages;
    // nullptr if the tree is only read.
    IndexTree(PageStore& store, std::uint32_t nRoot, std::uint32_t nTable, PageSource* pages);

    // Stands on an entry, or behind the last one. Survives changes of the tree: it then goes on
    // behind the entry it stood on.
    class Cursor {
      public:
        bool AtEnd() const { return m_bAtEnd; }
        // Good until the next move.
        ByteView Key() const;
        RowPlace Place() const;
        // Raises Damaged where the entries don't ascend.
        void Next();

      private:
        friend class IndexTree;

        void SettleAt(std::uint32_t nLeaf, std::size_t nEntry);

        IndexTree* m_tree = nullptr;
        std::uint32_t m_nLeaf = 0;
        std::size_t m_nEnd = 0;  // of the entry on its page
        std::uint64_t m_nChanges = 0;
        Bytes m_bytes;     // the entry as it is stored
        Bytes m_previous;  // the one before it
        bool m_bAtEnd = true;
    };

    Cursor First();
    // The first entry whose key is not less than `key`, compared as bytes.
    Cursor LowerBound(ByteView key);
    // The same with a cursor that has been in use.
    void Seek(Cursor& cursor, ByteView key);
    // Whether some row has exactly this key.
    bool Contains(ByteView key);

    // Changes raise Damaged in the middle of a tree that contradicts itself, and may then have done
    // a part; the caller rolls back. Insert raises Constraint for a key that is too long for an
    // index, and Damaged for a row that the index has already with this key.
    void Insert(ByteView key, RowPlace place);
    // False if there is no such entry.
    bool Remove(ByteView key, RowPlace place);
    // Puts these in the place of all entries; they come sorted by key and place.
    void Rebuild(const std::vector<IndexEntry>& entries);

    // Entries in order, all pages of the tree with the root: for checks. Raises Damaged where the
    // tree contradicts itself (order, links, levels, masks, free bytes, loops).
    void Check(std::vector<IndexEntry>& entries, std::vector<std::uint32_t>& pages);

  private:
    // The way from the root down to a page: the nodes, and where each names the next.
    struct Step {
        std::uint32_t nPage;
        std::size_t nStart;  // of the entry
        bool bTail;          // there is none: the way goes on at the page's tail
    };
    using Path = std::vector<Step>;
    // A page and the last entry below it.
    struct Child {
        Bytes last;
        std::uint32_t nPage;
    };
    struct Visit;

    IndexPage Load(std::uint32_t nPage) const;
    IndexPageEditor Edit(std::uint32_t nPage);
    PageSource& Source() const;
    std::uint32_t NewPage(std::uint8_t nLevel);

    // A leaf that a look led to, and its first and last entries.
    struct KnownLeaf {
        std::uint32_t nPage = 0;  // 0: none
        Bytes first;
        Bytes last;
        std::size_t nFound = 0;  // the entry that was found last

        // Whether the first entry of the tree that isn't less is one of the leaf's.
        bool Has(ByteView entry) const;
    };

    // An entry, or the end of a leaf.
    struct Spot {
        std::uint32_t nLeaf;
        std::size_t nStart;
    };

    Spot Find(ByteView entry);
    void Remember(const IndexPage& leaf, Spot spot);
    std::uint32_t Descend(ByteView entry, Path* path) const;
    std::uint32_t FirstLeaf() const;
    bool IsOdd(const Path& path, std::uint32_t nLeaf) const;
    std::uint32_t DescendToChange(ByteView entry, Path& path);

    void InsertIntoLeaf(Path& path, std::uint32_t nLeaf, std::size_t nStart, ByteView entry);
    void InsertIntoNode(Path& path, ByteView entry);
    void SplitLeaf(Path& path, std::uint32_t nPage, std::span<const Bytes> entries,
                   std::size_t nLeft);
    void SplitNode(Path& path, std::uint32_t nPage, std::span<const Bytes> entries,
                   std::size_t nMiddle);
    std::uint32_t MoveRootDown(Path& path);
    std::uint32_t NewPageAhead(std::uint32_t nPage);
    void Unlink(std::uint32_t nPage);

    void TellNewLast(Path path, ByteView last);
    void DropPage(const Path& path, std::uint32_t nPage);
    void DropChild(const Path& path);
    void PullUpOnlyChild();

    void RebuildAsItIs();
    void GiveBackAllButRoot();
    std::vector<Child> BuildLeaves(std::span<const std::span<const Bytes>> groups);
    std::vector<Child> BuildNodes(std::span<const std::span<const Child>> groups,
                                  std::uint8_t nLevel);
    void FillNode(std::uint32_t nPage, std::span<const Child> children);
    void Link(std::span<const Child> pages);

    std::size_t CheckPage(std::uint32_t nPage, std::size_t nDepth, Visit& visit) const;
    void CheckLeaf(std::uint32_t nPage, Visit& visit) const;
    std::size_t CheckNode(std::uint32_t nPage, std::size_t nDepth, Visit& visit) const;
    void CheckSiblings(std::span<const std::uint32_t> children) const;

    PageStore& m_store;
    std::uint32_t m_nRoot;
    std::uint32_t m_nTable;
    PageSource* m_pages;
    // Leaves that were found last, as long as no page changes.
    std::array<KnownLeaf, 4> m_knownLeaves;
    std::size_t m_nNextLeaf = 0;  // the one that makes room
    std::uint64_t m_nChanges = 0;
};

// Writes an index without entries into the page.
void WriteEmptyIndex(PageStore& store, std::uint32_t nRoot, std::uint32_t nTable);

}  // namespace nomira::jet
