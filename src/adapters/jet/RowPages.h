// A table's rows by their places. A row keeps its place for life; when its page has no room for it
// any more its bytes move to another one, and the place tells where.
#pragma once

#include "adapters/jet/DataPages.h"

namespace nomira::jet {

class RowPages {
  public:
    RowPages(PageStore& store, std::uint32_t nTable, RowPlace ownedMap, RowPlace freeMap)
        : m_store(store), m_pages(store, nTable, ownedMap, freeMap) {}

    // Moves on to the next row in the order of places, from the place of page 0 to the first one.
    // False behind the last.
    bool Next(RowPlace& place) const;
    // Whether a row stands there.
    bool Has(RowPlace place) const;
    // The row's bytes, good until the next change. Raises Damaged if there is no row.
    ByteView Row(RowPlace place) const;

    RowPlace Add(ByteView row) { return m_pages.Add(row); }
    void Replace(RowPlace place, ByteView row);
    void Delete(RowPlace place);

  private:
    bool IsRow(const DataPage& page, std::size_t nRow) const;
    // The places that the row's bytes have moved to; the last of them has them.
    std::vector<RowPlace> Moves(RowPlace place) const;
    bool CanResize(RowPlace place, std::size_t nBytes) const;
    void MoveAway(RowPlace place, ByteView row);

    PageStore& m_store;
    DataPages m_pages;
};

}  // namespace nomira::jet
