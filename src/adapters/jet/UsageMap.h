// Maps of pages: which ones a table, an index or a long column owns, or has room in. A map is one
// row on a data page. A small one holds its bits itself, for a window of pages; one that has
// outgrown its row names pages that are full of bits.
#pragma once

#include <optional>
#include <vector>

#include "adapters/jet/PageStore.h"

namespace nomira::jet {

// The bits of a map in either form. Looks at the row anew at each call; holds nothing of it. All of
// its routines raise Damaged for a row that is no map.
class MapBits {
  public:
    MapBits(PageStore& store, RowPlace map) : m_store(store), m_map(map) {}

    // Whether the map has a bit for the page.
    bool Covers(std::uint32_t nPage) const { return Find(nPage).has_value(); }
    // False for a page that isn't covered.
    bool IsSet(std::uint32_t nPage) const;
    // The page must be covered.
    void Set(std::uint32_t nPage, bool bSet);
    // The first page that is set, from nFrom on.
    std::optional<std::uint32_t> NextSet(std::uint32_t nFrom) const;

    bool IsInline() const;
    // Page of the first bit, and how many bits there are. The row must be inline.
    std::uint32_t FirstPage() const;
    std::uint32_t InlineBits() const;
    // Whether the row can be made so long that it holds that many bits itself.
    bool HasRoomFor(std::uint32_t nBits) const;
    // Lets the row hold that many bits, a multiple of eight, from nFirst on, and keeps those that
    // it held; new ones are not set. There must be room.
    void MoveInline(std::uint32_t nFirst, std::uint32_t nBits);

    // Pages with bits that the row can name.
    std::uint32_t Entries() const;
    // Puts another form over the row: `nEntries` names of pages, none of them given yet.
    void MakeReference(std::uint32_t nEntries);
    // Makes the page one of bits, all of them clear, and lets it hold those of nPage. The row must
    // be in this form and have an entry that far; else raises Constraint.
    void AddBitmapPage(std::uint32_t nBitmapPage, std::uint32_t nPage);

  private:
    struct Bit {
        std::uint32_t nPage;
        std::size_t nByte;
        std::uint8_t nMask;
    };
    // Bits in a row: `bits` tells of the pages from nFirst on.
    struct Run {
        std::uint32_t nFirst;
        ByteView bits;
    };

    ByteView Row() const;
    ByteView BitmapPage(std::size_t nEntry) const;
    // Where the page's bit is; nullopt for one that isn't covered.
    std::optional<Bit> Find(std::uint32_t nPage) const;
    // The bits of the entry, none for one that is not given. An inline map has one entry.
    Run RunOf(std::size_t nEntry) const;

    PageStore& m_store;
    RowPlace m_map;
};

class UsageMap {
  public:
    // The place with page 0 stands for no map at all.
    UsageMap(PageStore& store, RowPlace map) : m_store(store), m_map(map), m_bits(store, map) {}

    bool Exists() const { return m_map.nPage != 0; }
    bool Contains(std::uint32_t nPage) const { return Exists() && m_bits.IsSet(nPage); }
    // There must be a map. Takes pages for the map itself as it grows.
    void Add(std::uint32_t nPage);
    void Remove(std::uint32_t nPage);
    // The first page of the map from nFrom on. Quick: to ask for one page, or to walk over a map
    // that changes meanwhile.
    std::optional<std::uint32_t> Next(std::uint32_t nFrom = 0) const;
    // In ascending order.
    std::vector<std::uint32_t> Pages() const;
    // The pages that hold the map's bits when its row doesn't.
    std::vector<std::uint32_t> BitmapPages() const;

  private:
    void MakeRoomFor(std::uint32_t nPage);
    bool SlideTo(std::uint32_t nPage);
    void TurnIntoReference();
    void AddBitmapPageFor(std::uint32_t nPage);

    PageStore& m_store;
    RowPlace m_map;
    MapBits m_bits;
};

}  // namespace nomira::jet
