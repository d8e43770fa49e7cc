// An index: a tree of pages whose leaves hold, in order, each row's key and place.
#pragma once

#include <optional>
#include <vector>

#include "adapters/jet/PageStore.h"

namespace nomira::jet {

struct IndexEntry {
    Bytes key;
    RowPlace place;
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
        bool AtEnd() const;
        // Good until the next move or change.
        ByteView Key() const;
        RowPlace Place() const;
        void Next();

      private:
        friend class IndexTree;
        // (the tree's own; may be changed)
        IndexTree* m_tree = nullptr;
        std::uint32_t m_nLeaf = 0;
        std::size_t m_nEntry = 0;
        std::uint64_t m_nChanges = 0;
        IndexEntry m_entry;
        bool m_bAtEnd = true;
    };

    Cursor First();
    // The first entry whose key is not less than `key`, compared as bytes.
    Cursor LowerBound(ByteView key);
    // Whether some row has exactly this key.
    bool Contains(ByteView key);

    void Insert(ByteView key, RowPlace place);
    // False if there is no such entry.
    bool Remove(ByteView key, RowPlace place);
    // Puts these in the place of all entries; they come sorted by key and place.
    void Rebuild(const std::vector<IndexEntry>& entries);

    // Entries in order, all pages of the tree with the root: for checks. Raises Damaged where the
    // tree contradicts itself (order, links, levels, masks, free bytes, loops).
    void Check(std::vector<IndexEntry>& entries, std::vector<std::uint32_t>& pages);

  private:
    PageStore& m_store;
    std::uint32_t m_nRoot;
    std::uint32_t m_nTable;
    PageSource* m_pages;
};

// Writes an index without entries into the page.
void WriteEmptyIndex(PageStore& store, std::uint32_t nRoot, std::uint32_t nTable);

}  // namespace nomira::jet
