#include "adapters/jet/DataPages.h"

namespace nomira::jet {
namespace {

// A page with less than this part of it free is no longer listed as one with room.
constexpr std::size_t kListedPart = 10;
// Listed pages that are looked at for one row; a big row isn't worth a walk over all of them.
constexpr int kMostLooks = 8;

}  // namespace

DataPages::DataPages(PageStore& store, std::uint32_t nOwner, RowPlace ownedMap, RowPlace freeMap)
    : m_store(store),
      m_nOwner(nOwner),
      m_owned(store, ownedMap),
      m_free(store, freeMap),
      m_pages(store, ownedMap, freeMap) {}

bool DataPages::LooksOwned(std::uint32_t nPage) const {
    if (nPage == 0 || nPage >= m_store.Count()) return false;
    const DataPage page(m_store, nPage);
    return page.IsOne() && page.Owner() == m_nOwner;
}

std::optional<ByteView> DataPages::PlainRow(RowPlace place) const {
    if (place.nPage == 0 || place.nPage >= m_store.Count()) return std::nullopt;
    return DataPage::PlainRow(m_store.Read(place.nPage), m_store.Format(), m_nOwner, place.nRow);
}

bool DataPages::Owns(std::uint32_t nPage) const {
    return LooksOwned(nPage) && m_owned.Contains(nPage);
}

std::uint32_t DataPages::WithRoom(std::size_t nBytes) {
    if (Owns(m_nLast) && DataPage(m_store, m_nLast).HasRoom(nBytes)) return m_nLast;
    if (const auto listed = FindListed(nBytes)) return m_nLast = *listed;
    m_nLast = m_pages.Take();
    DataPage::Format(m_store, m_nLast, m_nOwner);
    if (m_free.Exists()) m_free.Add(m_nLast);
    return m_nLast;
}

std::optional<std::uint32_t> DataPages::FindListed(std::size_t nBytes) {
    auto listed = m_free.Next();
    for (int i = 0; listed && i < kMostLooks; ++i, listed = m_free.Next(*listed + 1)) {
        const bool bOwns = Owns(*listed);
        const DataPage page(m_store, *listed);
        if (bOwns && page.HasRoom(nBytes)) return listed;
        if (!bOwns || !IsWorthListing(page)) m_free.Remove(*listed);
    }
    return std::nullopt;
}

RowPlace DataPages::Add(ByteView row, std::uint16_t nFlags) {
    const std::uint32_t nPage = WithRoom(row.size());
    DataPage page(m_store, nPage);
    const bool bWasListed = IsWorthListing(page);
    const std::uint8_t nRow = page.Add(row, nFlags);
    List(nPage, bWasListed);
    return {nPage, nRow};
}

void DataPages::Delete(RowPlace place) {
    DataPage page(m_store, place.nPage);
    const bool bWasListed = IsWorthListing(page);
    page.Delete(place.nRow);
    const Layout& layout = m_store.Format();
    const std::size_t nAllFree = layout.nPageSize - layout.nSlotsPlace - 2 * page.Slots();
    if (page.FreeBytes() == nAllFree && page.IsEmpty() && m_owned.Contains(place.nPage))
        m_pages.GiveBack(place.nPage);
    else
        List(place.nPage, bWasListed);
}

void DataPages::Replace(RowPlace place, ByteView row, std::uint16_t nFlags) {
    DataPage page(m_store, place.nPage);
    const bool bWasListed = IsWorthListing(page);
    page.Replace(place.nRow, row, nFlags);
    List(place.nPage, bWasListed);
}

bool DataPages::IsWorthListing(const DataPage& page) const {
    return page.Slots() < kMostSlots &&
           page.FreeBytes() >= m_store.Format().nPageSize / kListedPart;
}

void DataPages::List(std::uint32_t nPage, bool bWasListed) {
    const bool bListed = IsWorthListing(DataPage(m_store, nPage));
    if (bListed == bWasListed || !m_free.Exists()) return;
    if (bListed)
        m_free.Add(nPage);
    else
        m_free.Remove(nPage);
}

}  // namespace nomira::jet
