// The data pages of one owner: of a table, or of a long column.
#pragma once

#include "adapters/jet/DataPage.h"
#include "adapters/jet/PageAllocator.h"

namespace nomira::jet {

class DataPages {
  public:
    // nOwner: what the pages tell as their owner. Without a map of free pages none is looked up.
    DataPages(PageStore& store, std::uint32_t nOwner, RowPlace ownedMap, RowPlace freeMap);

    // Whether the page is a data page of the owner, as the page and the map tell.
    bool Owns(std::uint32_t nPage) const;
    // The same as far as the page tells: for reading.
    bool LooksOwned(std::uint32_t nPage) const;
    // The bytes of a row that hasn't moved; nullopt for any other, and where none is.
    std::optional<ByteView> PlainRow(RowPlace place) const;
    // The first page of the owner from nFrom on.
    std::optional<std::uint32_t> Next(std::uint32_t nFrom) const { return m_owned.Next(nFrom); }

    // A page with room for a new row of that many bytes: the one that was used last, one of those
    // that the map tells, or a new one. The row must be one that an empty page takes.
    std::uint32_t WithRoom(std::size_t nBytes);
    // Adds the row to a page with room for it.
    RowPlace Add(ByteView row, std::uint16_t nFlags = 0);
    // Deletes the row in the slot. A page without rows is given back.
    void Delete(RowPlace place);
    // Puts other bytes and flags into a slot of the page, which must have room for them.
    void Replace(RowPlace place, ByteView row, std::uint16_t nFlags);

  private:
    bool IsWorthListing(const DataPage& page) const;
    void List(std::uint32_t nPage, bool bWasListed);
    std::optional<std::uint32_t> FindListed(std::size_t nBytes);

    PageStore& m_store;
    std::uint32_t m_nOwner;
    UsageMap m_owned;
    UsageMap m_free;
    MappedPages m_pages;
    std::uint32_t m_nLast = 0;  // used last; looked at before it is believed
};

}  // namespace nomira::jet
