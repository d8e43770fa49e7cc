// Pages that nobody owns, as the file's global map on page 1 tells them, and how objects of the
// file get and give them.
#pragma once

#include "adapters/jet/UsageMap.h"

namespace nomira::jet {

// Pages of any file that are never free: the header, the global map, and the definitions of the
// system's tables.
inline constexpr std::uint32_t kFirstOrdinaryPage = 6;

// Pages that the largest file has: 1 GiB of Jet 3, 2 GiB of Jet 4.
inline constexpr std::uint32_t kMostPages = 1U << 19;

// Takes the lowest page that is free, else appends one. Its bytes are zeros. Raises Constraint when
// the file can't grow any further.
std::uint32_t TakePage(PageStore& store);
// What the page holds stays until somebody takes it. Raises Damaged for a page that can't be
// given back or is free already.
void FreePage(PageStore& store, std::uint32_t nPage);
bool IsFree(PageStore& store, std::uint32_t nPage);

// Writes page 1 of an empty database, whose bits say that all pages from nFirstFree on are free, as
// far as a new map reaches. Page 1 must be there.
void WriteGlobalMap(PageStore& store, std::uint32_t nFirstFree);

// A new map without pages. nMapPage: a page of maps to put it on; another one is taken and told
// where it is 0 or has no room.
RowPlace NewMap(PageStore& store, std::uint32_t& nMapPage);

// Pages of an object whose owned map tells them, and perhaps another map those with room.
class MappedPages : public PageSource {
  public:
    MappedPages(PageStore& store, RowPlace ownedMap, RowPlace freeMap = {})
        : m_store(store), m_owned(store, ownedMap), m_free(store, freeMap) {}

    std::uint32_t Take() override;
    // Out of both maps.
    void GiveBack(std::uint32_t nPage) override;

  private:
    PageStore& m_store;
    UsageMap m_owned;
    UsageMap m_free;
};

}  // namespace nomira::jet
