#include "adapters/jet/PageAllocator.h"

#include <algorithm>

#include "adapters/jet/DataPage.h"

namespace nomira::jet {
namespace {

constexpr std::uint32_t kGlobalMapPage = 1;
constexpr RowPlace kGlobalMap{kGlobalMapPage, 0};

// A map's row lengthens by this many bits.
constexpr std::uint32_t kGrowthBits = 32;

// Its set bits are the free pages, and also all those behind the end of the file. It grows in place
// as the file does, as long as page 1 has room.
class GlobalMap {
  public:
    explicit GlobalMap(PageStore& store) : m_store(store), m_bits(store, kGlobalMap) {}

    bool IsFree(std::uint32_t nPage) const { return m_bits.IsSet(nPage); }

    // A free page inside the file. Only what the bits say outright counts as free: writers that
    // moved the map's window have left pages in use outside of it.
    std::optional<std::uint32_t> FirstFree() const {
        const auto page = m_bits.NextSet(kFirstOrdinaryPage);
        return page && *page < m_store.Count() ? page : std::nullopt;
    }

    void Mark(std::uint32_t nPage, bool bFree) {
        Cover(nPage);
        if (m_bits.IsSet(nPage) != bFree) m_bits.Set(nPage, bFree);
    }

  private:
    void Cover(std::uint32_t nPage) {
        if (m_bits.Covers(nPage)) return;
        if (m_bits.IsInline() && Lengthen(nPage)) return;
        if (m_bits.IsInline()) TurnIntoReference();
        CoverByReference(nPage);
    }

    bool Lengthen(std::uint32_t nPage) {
        const std::uint32_t nFirst = m_bits.FirstPage();
        const std::uint32_t nEnd = nFirst + m_bits.InlineBits();
        const std::uint32_t nNewFirst = nPage < nFirst ? 0 : nFirst;
        const std::uint32_t nLast = std::max({nPage + 1, nEnd, m_store.Count()});
        const std::uint32_t nBits =
            (nLast - nNewFirst + kGrowthBits - 1) / kGrowthBits * kGrowthBits;
        if (!m_bits.HasRoomFor(nBits)) return false;
        m_bits.MoveInline(nNewFirst, nBits);
        SetBehindEnd(std::max(nEnd, m_store.Count()), nNewFirst + nBits);
        return true;
    }

    void TurnIntoReference() {
        std::vector<std::uint32_t> freePages;
        for (auto page = FirstFree(); page && *page < m_store.Count();
             page = m_bits.NextSet(*page + 1))
            freePages.push_back(*page);
        m_bits.MakeReference(static_cast<std::uint32_t>((m_store.Format().nMapRowBytes - 1) /
                                                        sizeof(std::uint32_t)));
        // Others take what isn't covered for free.
        for (std::uint32_t n = 0; n < m_store.Count(); n += m_store.Format().nPagesPerBitmapPage)
            CoverByReference(n);
        for (const std::uint32_t nPage : freePages)
            m_bits.Set(nPage, true);
    }

    // The pages for the bits are appended, and covered in their turn: at most once for each.
    void CoverByReference(std::uint32_t nPage) {
        if (m_bits.Covers(nPage)) return;
        const std::uint32_t nPerPage = m_store.Format().nPagesPerBitmapPage;
        const std::uint32_t nFirst = nPage - nPage % nPerPage;
        const std::uint32_t nBitmapPage = m_store.Append();
        m_bits.AddBitmapPage(nBitmapPage, nPage);
        SetBehindEnd(std::max(nFirst, m_store.Count()), nFirst + nPerPage);
        CoverByReference(nBitmapPage);
        if (m_bits.IsSet(nBitmapPage)) m_bits.Set(nBitmapPage, false);
    }

    void SetBehindEnd(std::uint32_t nFrom, std::uint32_t nEnd) {
        for (std::uint32_t nPage = nFrom; nPage < nEnd; ++nPage)
            m_bits.Set(nPage, true);
    }

    PageStore& m_store;
    MapBits m_bits;
};

void RequireOrdinary(const PageStore& store, std::uint32_t nPage) {
    if (nPage < kFirstOrdinaryPage || nPage >= store.Count())
        Fail(FailureKind::Damaged, "a page that can't be free is to be given back");
}

}  // namespace

std::uint32_t TakePage(PageStore& store) {
    GlobalMap map(store);
    if (const auto page = map.FirstFree()) {
        const ByteSpan bytes = store.Change(*page);
        std::fill(bytes.begin(), bytes.end(), std::uint8_t{0});
        map.Mark(*page, false);
        return *page;
    }
    if (store.Count() >= kMostPages)
        Fail(FailureKind::Constraint, "the file can't grow any further");
    const std::uint32_t nPage = store.Append();
    map.Mark(nPage, false);
    return nPage;
}

void FreePage(PageStore& store, std::uint32_t nPage) {
    RequireOrdinary(store, nPage);
    GlobalMap map(store);
    if (map.IsFree(nPage)) Fail(FailureKind::Damaged, "a page is to be given back twice");
    map.Mark(nPage, true);
}

bool IsFree(PageStore& store, std::uint32_t nPage) {
    return nPage < store.Count() && GlobalMap(store).IsFree(nPage);
}

void WriteGlobalMap(PageStore& store, std::uint32_t nFirstFree) {
    DataPage::Format(store, kGlobalMapPage, kOwnerOfGlobalMap);
    DataPage page(store, kGlobalMapPage);
    const Bytes row(store.Format().nMapRowBytes);
    page.Add(row);
    page.Add(row);  // the second map stays empty in every file
    MapBits bits(store, kGlobalMap);
    for (std::uint32_t n = nFirstFree; n < bits.InlineBits(); ++n)
        bits.Set(n, true);
}

RowPlace NewMap(PageStore& store, std::uint32_t& nMapPage) {
    const Bytes row(store.Format().nMapRowBytes);
    if (nMapPage == 0 || !DataPage(store, nMapPage).HasRoom(row.size())) {
        nMapPage = TakePage(store);
        DataPage::Format(store, nMapPage, kOwnerOfMaps);
    }
    return {nMapPage, DataPage(store, nMapPage).Add(row)};
}

std::uint32_t MappedPages::Take() {
    if (!m_owned.Exists())
        Fail(FailureKind::Damaged, "an object of the file has no map of its pages");
    const std::uint32_t nPage = TakePage(m_store);
    m_owned.Add(nPage);
    return nPage;
}

void MappedPages::GiveBack(std::uint32_t nPage) {
    m_free.Remove(nPage);
    m_owned.Remove(nPage);
    FreePage(m_store, nPage);
}

}  // namespace nomira::jet
