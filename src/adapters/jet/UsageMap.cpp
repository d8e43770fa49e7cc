#include "adapters/jet/UsageMap.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "adapters/jet/DataPage.h"
#include "adapters/jet/PageAllocator.h"

namespace nomira::jet {
namespace {

// First byte of a map's row.
enum MapForm : std::uint8_t { FormInline = 0, FormReference = 1 };

constexpr std::size_t kFirstPagePlace = 1;     // of an inline map
constexpr std::size_t kInlineBitsPlace = 5;    // to the end of the row
constexpr std::size_t kEntriesPlace = 1;       // of a reference map, 32 bits each
constexpr std::size_t kBitmapBitsPlace = 4;    // of a page of bits
constexpr std::uint32_t kBits = 8;             // of a byte
constexpr std::uint32_t kAnyPages = 1U << 24;  // no page has a number beyond

// The first set bit from nFrom on; as many as there are bits if none is.
std::size_t NextBit(ByteView bits, std::size_t nFrom) {
    const std::size_t nAll = bits.size() * kBits;
    if (nFrom >= nAll) return nAll;
    std::size_t nByte = nFrom / kBits;
    const auto nFirst = static_cast<std::uint8_t>(bits[nByte] & (0xFFU << nFrom % kBits));
    if (nFirst != 0) return nByte * kBits + static_cast<std::size_t>(std::countr_zero(nFirst));
    for (++nByte; nByte + sizeof(std::uint64_t) <= bits.size(); nByte += sizeof(std::uint64_t)) {
        std::uint64_t nWord = 0;
        std::memcpy(&nWord, bits.data() + nByte, sizeof nWord);
        if (nWord != 0) break;
    }
    while (nByte < bits.size() && bits[nByte] == 0)
        ++nByte;
    if (nByte == bits.size()) return nAll;
    return nByte * kBits + static_cast<std::size_t>(std::countr_zero(bits[nByte]));
}

std::uint8_t MaskOf(std::uint32_t nBit) {
    return static_cast<std::uint8_t>(1U << nBit % kBits);
}

}  // namespace

ByteView MapBits::Row() const {
    const DataPage page(m_store, m_map.nPage);
    if (!page.IsOne() || page.Flags(m_map.nRow) != 0)
        Fail(FailureKind::Damaged, "a map of pages isn't where it should be");
    const ByteView row = page.Row(m_map.nRow);
    const std::size_t nHead =
        !row.empty() && row[0] == FormReference ? kEntriesPlace : kInlineBitsPlace;
    if (row.size() < nHead || row[0] > FormReference)
        Fail(FailureKind::Damaged, "a map of pages has a form that isn't known");
    return row;
}

bool MapBits::IsInline() const {
    return Row()[0] == FormInline;
}

std::uint32_t MapBits::FirstPage() const {
    const std::uint32_t nFirst = LoadU32(Row(), kFirstPagePlace);
    if (nFirst > kAnyPages) Fail(FailureKind::Damaged, "a map of pages begins behind all pages");
    return nFirst;
}

std::uint32_t MapBits::InlineBits() const {
    return static_cast<std::uint32_t>(Row().size() - kInlineBitsPlace) * kBits;
}

std::uint32_t MapBits::Entries() const {
    return static_cast<std::uint32_t>((Row().size() - kEntriesPlace) / sizeof(std::uint32_t));
}

ByteView MapBits::BitmapPage(std::size_t nEntry) const {
    const std::uint32_t nPage = LoadU32(Row(), kEntriesPlace + nEntry * sizeof(std::uint32_t));
    if (nPage == 0) return {};
    const ByteView page = m_store.Read(nPage);
    if (page[0] != static_cast<std::uint8_t>(PageKind::Bitmap))
        Fail(FailureKind::Damaged, "a map names a page of bits that is none");
    return page;
}

std::optional<MapBits::Bit> MapBits::Find(std::uint32_t nPage) const {
    const ByteView row = Row();
    if (row[0] == FormInline) {
        const std::uint32_t nFirst = FirstPage();
        if (nPage < nFirst || nPage - nFirst >= InlineBits()) return std::nullopt;
        const std::uint32_t nBit = nPage - nFirst;
        const auto nRowPlace =
            static_cast<std::size_t>(row.data() - m_store.Read(m_map.nPage).data());
        return Bit{m_map.nPage, nRowPlace + kInlineBitsPlace + nBit / kBits, MaskOf(nBit)};
    }
    const std::uint32_t nEntry = nPage / m_store.Format().nPagesPerBitmapPage;
    if (nEntry >= Entries() || BitmapPage(nEntry).empty()) return std::nullopt;
    const std::uint32_t nBit = nPage % m_store.Format().nPagesPerBitmapPage;
    return Bit{LoadU32(row, kEntriesPlace + nEntry * sizeof(std::uint32_t)),
               kBitmapBitsPlace + nBit / kBits, MaskOf(nBit)};
}

bool MapBits::IsSet(std::uint32_t nPage) const {
    const auto bit = Find(nPage);
    return bit && (m_store.Read(bit->nPage)[bit->nByte] & bit->nMask) != 0;
}

void MapBits::Set(std::uint32_t nPage, bool bSet) {
    const auto bit = Find(nPage);
    if (!bit) Fail(FailureKind::Damaged, "a page lies outside of a map");
    std::uint8_t& nByte = m_store.Change(bit->nPage)[bit->nByte];
    nByte = static_cast<std::uint8_t>(bSet ? nByte | bit->nMask : nByte & ~bit->nMask);
}

MapBits::Run MapBits::RunOf(std::size_t nEntry) const {
    const ByteView row = Row();
    if (row[0] == FormInline) return {FirstPage(), row.subspan(kInlineBitsPlace)};
    const ByteView page = BitmapPage(nEntry);
    const std::uint32_t nPerPage = m_store.Format().nPagesPerBitmapPage;
    return {static_cast<std::uint32_t>(nEntry) * nPerPage,
            page.empty() ? page : Part(page, kBitmapBitsPlace, nPerPage / kBits)};
}

std::optional<std::uint32_t> MapBits::NextSet(std::uint32_t nFrom) const {
    const bool bInline = IsInline();
    const std::size_t nEntries = bInline ? 1 : Entries();
    std::size_t nEntry = bInline ? 0 : nFrom / m_store.Format().nPagesPerBitmapPage;
    for (; nEntry < nEntries; ++nEntry) {
        const Run run = RunOf(nEntry);
        const std::size_t nBit = NextBit(run.bits, nFrom > run.nFirst ? nFrom - run.nFirst : 0);
        if (nBit < run.bits.size() * kBits) return run.nFirst + static_cast<std::uint32_t>(nBit);
    }
    return std::nullopt;
}

bool MapBits::HasRoomFor(std::uint32_t nBits) const {
    return DataPage(m_store, m_map.nPage)
        .CanResize(m_map.nRow, kInlineBitsPlace + (nBits + kBits - 1) / kBits);
}

void MapBits::MoveInline(std::uint32_t nFirst, std::uint32_t nBits) {
    Bytes row(kInlineBitsPlace + nBits / kBits);
    StoreU32(row, kFirstPagePlace, nFirst);
    for (auto page = NextSet(0); page; page = NextSet(*page + 1)) {
        if (*page < nFirst || *page - nFirst >= nBits) continue;
        const std::uint32_t nBit = *page - nFirst;
        row[kInlineBitsPlace + nBit / kBits] |= MaskOf(nBit);
    }
    DataPage(m_store, m_map.nPage).Replace(m_map.nRow, row);
}

void MapBits::MakeReference(std::uint32_t nEntries) {
    Bytes row(kEntriesPlace + nEntries * sizeof(std::uint32_t));
    row[0] = FormReference;
    DataPage(m_store, m_map.nPage).Replace(m_map.nRow, row);
}

void MapBits::AddBitmapPage(std::uint32_t nBitmapPage, std::uint32_t nPage) {
    const std::uint32_t nEntry = nPage / m_store.Format().nPagesPerBitmapPage;
    if (nEntry >= Entries()) Fail(FailureKind::Constraint, "a map of pages can't grow any further");
    const ByteSpan page = m_store.Change(nBitmapPage);
    std::fill(page.begin(), page.end(), std::uint8_t{0});
    page[0] = static_cast<std::uint8_t>(PageKind::Bitmap);
    page[1] = 1;
    const ByteSpan row = DataPage(m_store, m_map.nPage).ChangeRow(m_map.nRow);
    StoreU32(row, kEntriesPlace + nEntry * sizeof(std::uint32_t), nBitmapPage);
}

void UsageMap::Add(std::uint32_t nPage) {
    if (!Exists()) Fail(FailureKind::Damaged, "an object of the file has no map of its pages");
    if (!m_bits.Covers(nPage)) MakeRoomFor(nPage);
    if (!m_bits.IsSet(nPage)) m_bits.Set(nPage, true);
}

void UsageMap::Remove(std::uint32_t nPage) {
    if (Contains(nPage)) m_bits.Set(nPage, false);
}

std::optional<std::uint32_t> UsageMap::Next(std::uint32_t nFrom) const {
    if (!Exists()) return std::nullopt;
    const auto page = m_bits.NextSet(nFrom);
    if (page && *page >= m_store.Count())
        Fail(FailureKind::Damaged, "a map tells of pages behind the end of the file");
    return page;
}

std::vector<std::uint32_t> UsageMap::Pages() const {
    std::vector<std::uint32_t> pages;
    for (auto page = Next(0); page; page = Next(*page + 1))
        pages.push_back(*page);
    return pages;
}

std::vector<std::uint32_t> UsageMap::BitmapPages() const {
    std::vector<std::uint32_t> pages;
    if (!Exists() || m_bits.IsInline()) return pages;
    const ByteView row = DataPage(m_store, m_map.nPage).Row(m_map.nRow);
    for (std::uint32_t i = 0; i < m_bits.Entries(); ++i) {
        const std::uint32_t nPage = LoadU32(row, kEntriesPlace + i * sizeof(std::uint32_t));
        if (nPage != 0) pages.push_back(nPage);
    }
    return pages;
}

void UsageMap::MakeRoomFor(std::uint32_t nPage) {
    if (m_bits.IsInline()) {
        if (SlideTo(nPage)) return;
        TurnIntoReference();
    }
    if (!m_bits.Covers(nPage)) AddBitmapPageFor(nPage);
}

// Whether the row's window can be moved so that it shows the page along with all it has.
bool UsageMap::SlideTo(std::uint32_t nPage) {
    std::uint32_t nLowest = nPage;
    std::uint32_t nHighest = nPage;
    if (const auto first = m_bits.NextSet(0)) {
        const std::vector<std::uint32_t> pages = Pages();
        nLowest = std::min(nLowest, *first);
        nHighest = std::max(nHighest, pages.back());
    }
    nLowest -= nLowest % kBits;
    if (nHighest - nLowest >= m_bits.InlineBits()) return false;
    m_bits.MoveInline(nLowest, m_bits.InlineBits());
    return true;
}

void UsageMap::TurnIntoReference() {
    const std::vector<std::uint32_t> pages = Pages();
    // The row keeps its length; a short one has to reach as far as any file does.
    const std::uint32_t nNeeded = kMostPages / m_store.Format().nPagesPerBitmapPage + 1;
    const std::uint32_t nFits = m_bits.Entries();
    const std::uint32_t nEntries =
        nFits < nNeeded && m_bits.HasRoomFor(nNeeded * 4U * kBits) ? nNeeded : nFits;
    m_bits.MakeReference(nEntries);
    for (const std::uint32_t nPage : pages) {
        if (!m_bits.Covers(nPage)) AddBitmapPageFor(nPage);
        m_bits.Set(nPage, true);
    }
}

void UsageMap::AddBitmapPageFor(std::uint32_t nPage) {
    m_bits.AddBitmapPage(TakePage(m_store), nPage);
}

}  // namespace nomira::jet
