#include "adapters/jet/IndexPage.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace nomira::jet {
namespace {

constexpr std::size_t kFreePlace = 2;
constexpr std::size_t kOwnerPlace = 4;

struct HeadPlaces {
    std::size_t nPrevious;
    std::size_t nNext;
    std::size_t nTail;
    std::size_t nPrefix;
    bool bWidePrefix;  // two bytes rather than one
    std::size_t nLevel;
};
constexpr HeadPlaces kJet3Places{8, 12, 16, 20, false, 21};
constexpr HeadPlaces kJet4Places{12, 16, 20, 24, true, 26};

constexpr const HeadPlaces& PlacesOf(const Layout& layout) {
    return layout.generation == Generation::Jet3 ? kJet3Places : kJet4Places;
}

constexpr std::size_t kWordBits = 64;

constexpr std::uint64_t LowBits(std::size_t nBits) {
    return nBits >= kWordBits ? ~std::uint64_t{0} : (std::uint64_t{1} << nBits) - 1;
}

[[noreturn]] void FailOnEntry() {
    Fail(FailureKind::Damaged, "an entry of an index is too short");
}

// The hot path of every look into a page, so whole words where the machine has them that way
// round. The page holds them: its size has been looked at.
std::uint64_t LoadWord(ByteView bytes, std::size_t nOffset) {
    if constexpr (std::endian::native != std::endian::little) return LoadLittle<8>(bytes, nOffset);
    std::uint64_t nWord = 0;
    std::memcpy(&nWord, bytes.data() + nOffset, sizeof nWord);
    return nWord;
}

using Words = std::span<std::uint64_t>;

void ClearFrom(Words words, std::size_t nBit) {
    for (std::size_t n = nBit / kWordBits; n < words.size(); ++n)
        words[n] &= n == nBit / kWordBits ? LowBits(nBit % kWordBits) : 0;
}

void ClearUpTo(Words words, std::size_t nBit) {
    for (std::size_t n = 0; n <= nBit / kWordBits; ++n)
        words[n] &= n == nBit / kWordBits ? ~LowBits(nBit % kWordBits + 1) : 0;
}

void ShiftUp(Words words, std::size_t nBits) {
    const std::size_t nWhole = nBits / kWordBits;
    const std::size_t nRest = nBits % kWordBits;
    for (std::size_t n = words.size(); n-- > 0;) {
        const std::uint64_t nHigh = n >= nWhole ? words[n - nWhole] : 0;
        const std::uint64_t nLow = n > nWhole ? words[n - nWhole - 1] : 0;
        words[n] = nRest == 0 ? nHigh : nHigh << nRest | nLow >> (kWordBits - nRest);
    }
}

void ShiftDown(Words words, std::size_t nBits) {
    const std::size_t nWhole = nBits / kWordBits;
    const std::size_t nRest = nBits % kWordBits;
    for (std::size_t n = 0; n < words.size(); ++n) {
        const std::uint64_t nLow = n + nWhole < words.size() ? words[n + nWhole] : 0;
        const std::uint64_t nHigh = n + nWhole + 1 < words.size() ? words[n + nWhole + 1] : 0;
        words[n] = nRest == 0 ? nLow : nLow >> nRest | nHigh << (kWordBits - nRest);
    }
}

}  // namespace

int CompareEntries(ByteView left, ByteView right) {
    const std::size_t nBoth = std::min(left.size(), right.size());
    const int nOrder = nBoth == 0 ? 0 : std::memcmp(left.data(), right.data(), nBoth);
    if (nOrder != 0) return nOrder;
    return left.size() < right.size() ? -1 : left.size() > right.size() ? 1 : 0;
}

IndexPage::IndexPage(ByteView page, const Layout& layout) : m_page(page), m_layout(layout) {
    const std::uint8_t nKind = LoadU8(page, 0);
    const bool bIndex = nKind == static_cast<std::uint8_t>(PageKind::IndexNode) ||
                        nKind == static_cast<std::uint8_t>(PageKind::IndexLeaf);
    if (page.size() != layout.nPageSize || !bIndex)
        Fail(FailureKind::Damaged, "an index leads to a page that is none of an index");
}

bool IndexPage::IsLeaf() const {
    return m_page[0] == static_cast<std::uint8_t>(PageKind::IndexLeaf);
}

std::uint32_t IndexPage::Owner() const {
    return LoadU32(m_page, kOwnerPlace);
}

std::uint32_t IndexPage::Previous() const {
    return LoadU32(m_page, PlacesOf(m_layout).nPrevious);
}

std::uint32_t IndexPage::Next() const {
    return LoadU32(m_page, PlacesOf(m_layout).nNext);
}

std::uint32_t IndexPage::Tail() const {
    return LoadU32(m_page, PlacesOf(m_layout).nTail);
}

std::size_t IndexPage::Prefix() const {
    const HeadPlaces& places = PlacesOf(m_layout);
    return places.bWidePrefix ? LoadU16(m_page, places.nPrefix) : LoadU8(m_page, places.nPrefix);
}

std::uint8_t IndexPage::Level() const {
    return LoadU8(m_page, PlacesOf(m_layout).nLevel);
}

// A mark stands behind each entry. Those behind the page's end don't count.
std::uint64_t IndexPage::MaskWord(std::size_t nWord) const {
    const std::size_t nFirst = nWord * kWordBits;
    return LoadWord(m_page, m_layout.nEntryMaskPlace + nWord * 8) &
           LowBits(Capacity() + 1 - nFirst);
}

// 0 if there is none.
std::size_t IndexPage::MarkBehind(std::size_t nPlace) const {
    const std::size_t nWords = Capacity() / kWordBits + 1;
    std::size_t nWord = (nPlace + 1) / kWordBits;
    if (nWord >= nWords) return 0;
    std::uint64_t nMarks = MaskWord(nWord) & ~LowBits((nPlace + 1) % kWordBits);
    while (nMarks == 0) {
        if (++nWord == nWords) return 0;
        nMarks = MaskWord(nWord);
    }
    return nWord * kWordBits + static_cast<std::size_t>(std::countr_zero(nMarks));
}

// 0 if there is none.
std::size_t IndexPage::MarkUpTo(std::size_t nPlace) const {
    std::size_t nWord = nPlace / kWordBits;
    std::uint64_t nMarks = MaskWord(nWord) & LowBits(nPlace % kWordBits + 1);
    while (nMarks == 0) {
        if (nWord-- == 0) return 0;
        nMarks = MaskWord(nWord);
    }
    return nWord * kWordBits + kWordBits - 1 - static_cast<std::size_t>(std::countl_zero(nMarks));
}

std::size_t IndexPage::End() const {
    return MarkUpTo(Capacity());
}

std::size_t IndexPage::EndOf(std::size_t nStart) const {
    const std::size_t nEnd = MarkBehind(nStart);
    if (nEnd == 0) Fail(FailureKind::Damaged, "an entry of an index has no end");
    return nEnd;
}

std::size_t IndexPage::StartOfLast() const {
    const std::size_t nEnd = End();
    return nEnd == 0 ? 0 : MarkUpTo(nEnd - 1);
}

// Without the page below, and without the first entry's share of the prefix.
ByteView IndexPage::Stored(std::size_t nStart, std::size_t nEnd) const {
    const std::size_t nFrom = nStart == 0 ? Prefix() : nStart;
    if (nFrom + Trailer() > nEnd) FailOnEntry();
    return Part(m_page, m_layout.nEntriesPlace + nFrom, nEnd - Trailer() - nFrom);
}

ByteView IndexPage::SharedPrefix() const {
    return Part(m_page, m_layout.nEntriesPlace, Prefix());
}

std::size_t IndexPage::Find(ByteView entry) const {
    const std::size_t nEnd = End();
    if (nEnd == 0) return 0;
    const ByteView prefix = SharedPrefix();
    const int nOrder = CompareEntries(entry.first(std::min(entry.size(), prefix.size())), prefix);
    if (nOrder != 0) return nOrder < 0 ? 0 : nEnd;
    const ByteView rest = entry.subspan(prefix.size());
    std::size_t nLow = 0;
    std::size_t nHigh = nEnd;
    while (nLow < nHigh) {
        const std::size_t nStart = MarkUpTo((nLow + nHigh) / 2);
        const std::size_t nEntryEnd = EndOf(nStart);
        if (CompareEntries(Stored(nStart, nEntryEnd), rest) < 0)
            nLow = nEntryEnd;
        else
            nHigh = nStart;
    }
    return nLow;
}

std::size_t IndexPage::FindBehind(std::size_t nStart, ByteView entry) const {
    const ByteView prefix = SharedPrefix();
    const std::size_t nNext = EndOf(nStart);
    const std::size_t nEnd = MarkBehind(nNext);
    if (nEnd == 0 || SharedBytes(entry, prefix) < prefix.size()) return Find(entry);
    const ByteView rest = entry.subspan(prefix.size());
    const bool bBetween = CompareEntries(Stored(nStart, nNext), rest) < 0 &&
                          CompareEntries(Stored(nNext, nEnd), rest) >= 0;
    return bBetween ? nNext : Find(entry);
}

void IndexPage::Assemble(std::size_t nStart, std::size_t nEnd, Bytes& entry) const {
    const ByteView stored = Stored(nStart, nEnd);
    const ByteView prefix = SharedPrefix();
    entry.resize(prefix.size() + stored.size());
    if (entry.size() < kPlaceBytes) FailOnEntry();
    std::ranges::copy(stored, std::ranges::copy(prefix, entry.begin()).out);
}

Bytes IndexPage::EntryAt(std::size_t nStart) const {
    Bytes entry;
    Assemble(nStart, entry);
    return entry;
}

std::uint32_t IndexPage::ChildAt(std::size_t nStart) const {
    const std::size_t nEnd = EndOf(nStart);
    if (nEnd < nStart + kChildBytes) FailOnEntry();
    return static_cast<std::uint32_t>(
        LoadBig<kChildBytes>(m_page, m_layout.nEntriesPlace + nEnd - kChildBytes));
}

std::vector<Bytes> IndexPage::Entries() const {
    std::vector<Bytes> entries;
    const std::size_t nEnd = End();
    for (std::size_t nStart = 0; nStart < nEnd; nStart = EndOf(nStart)) {
        entries.push_back(EntryAt(nStart));
        if (!IsLeaf()) AppendBig<kChildBytes>(entries.back(), ChildAt(nStart));
    }
    return entries;
}

void IndexPage::RequireSound() const {
    if (LoadU16(m_page, kFreePlace) != Capacity() - End())
        Fail(FailureKind::Damaged, "a page of an index miscounts its free bytes");
    const std::size_t nMaskBits = m_layout.nEntryMaskBytes * 8;
    for (std::size_t nBit = Capacity() + 1; nBit < nMaskBits; ++nBit)
        if ((m_page[m_layout.nEntryMaskPlace + nBit / 8] >> nBit % 8 & 1U) != 0)
            Fail(FailureKind::Damaged, "an entry of an index ends behind its page");
    if ((m_page[m_layout.nEntryMaskPlace] & 1U) != 0)
        Fail(FailureKind::Damaged, "an entry of an index has no bytes");
}

// ---- Changes

IndexPageEditor::IndexPageEditor(ByteSpan page, const Layout& layout)
    : IndexPage(page, layout), m_bytes(page) {}

void IndexPageEditor::Format(ByteSpan page, const Layout& layout, std::uint32_t nOwner,
                             std::uint8_t nLevel) {
    std::fill(page.begin(), page.end(), std::uint8_t{0});
    page[0] = static_cast<std::uint8_t>(nLevel == 0 ? PageKind::IndexLeaf : PageKind::IndexNode);
    page[1] = 1;
    StoreU32(page, kOwnerPlace, nOwner);
    StoreU8(page, PlacesOf(layout).nLevel, nLevel);
    IndexPageEditor(page, layout).StoreFree();
}

void IndexPageEditor::SetPrevious(std::uint32_t nPage) {
    StoreU32(m_bytes, PlacesOf(m_layout).nPrevious, nPage);
}

void IndexPageEditor::SetNext(std::uint32_t nPage) {
    StoreU32(m_bytes, PlacesOf(m_layout).nNext, nPage);
}

void IndexPageEditor::SetTail(std::uint32_t nPage) {
    StoreU32(m_bytes, PlacesOf(m_layout).nTail, nPage);
}

void IndexPageEditor::SetPrefix(std::size_t nPrefix) {
    const HeadPlaces& places = PlacesOf(m_layout);
    if (places.bWidePrefix)
        StoreU16(m_bytes, places.nPrefix, nPrefix);
    else
        StoreU8(m_bytes, places.nPrefix, static_cast<std::uint8_t>(nPrefix));
}

void IndexPageEditor::StoreFree() {
    StoreU16(m_bytes, kFreePlace, Capacity() - End());
}

// Where the bytes start that come and go with the entry at `nStart`: behind the prefix, which is
// the start of whichever entry is the first.
std::size_t IndexPageEditor::OwnStart(std::size_t nStart) const {
    return nStart == 0 ? Prefix() : nStart;
}

bool IndexPageEditor::Insert(std::size_t nStart, ByteView entry) {
    const std::size_t nEnd = End();
    if (nEnd == 0) SetPrefix(0);
    const std::size_t nPrefix = Prefix();
    const ByteSpan entries = m_bytes.subspan(m_layout.nEntriesPlace);
    if (SharedBytes(entry, Part(entries, 0, nPrefix)) < nPrefix) return false;
    const ByteView rest = entry.subspan(nPrefix);
    const std::size_t nAt = OwnStart(nStart);
    if (nPrefix != 0 && nPrefix >= EndOf(0)) FailOnEntry();
    if (nAt > nEnd) FailOnEntry();
    if (rest.empty() || rest.size() > Capacity() - nEnd) return false;
    std::memmove(entries.data() + nAt + rest.size(), entries.data() + nAt, nEnd - nAt);
    std::copy(rest.begin(), rest.end(), entries.data() + nAt);
    OpenMarks(nAt, rest.size());
    StoreFree();
    return true;
}

void IndexPageEditor::Remove(std::size_t nStart) {
    const std::size_t nPageEnd = End();
    const std::size_t nEnd = EndOf(nStart);
    const bool bOnly = nStart == 0 && nEnd == nPageEnd;
    const std::size_t nAt = bOnly ? 0 : OwnStart(nStart);
    if (nAt >= nEnd) FailOnEntry();
    const ByteSpan entries = m_bytes.subspan(m_layout.nEntriesPlace);
    std::memmove(entries.data() + nAt, entries.data() + nEnd, nPageEnd - nEnd);
    CloseMarks(nEnd, nEnd - nAt);
    if (bOnly) SetPrefix(0);
    StoreFree();
}

void IndexPageEditor::Fill(std::span<const Bytes> entries, std::size_t nPrefix) {
    const ByteSpan area = m_bytes.subspan(m_layout.nEntriesPlace);
    const ByteSpan mask = m_bytes.subspan(m_layout.nEntryMaskPlace, m_layout.nEntryMaskBytes);
    std::fill(mask.begin(), mask.end(), std::uint8_t{0});
    std::size_t nEnd = 0;
    for (const Bytes& entry : entries) {
        const ByteView rest = ByteView(entry).subspan(nEnd == 0 ? 0 : nPrefix);
        std::copy(rest.begin(), rest.end(), Part(area, nEnd, rest.size()).begin());
        nEnd += rest.size();
        mask[nEnd / 8] = static_cast<std::uint8_t>(mask[nEnd / 8] | 1U << nEnd % 8);
    }
    SetPrefix(nPrefix);
    StoreFree();
}

IndexPageEditor::MaskWords IndexPageEditor::LoadMask() const {
    MaskWords words{};
    for (std::size_t n = 0; n <= Capacity() / kWordBits; ++n)
        words[n] = MaskWord(n);
    return words;
}

void IndexPageEditor::StoreMask(const MaskWords& words) {
    const ByteSpan mask = m_bytes.subspan(m_layout.nEntryMaskPlace, m_layout.nEntryMaskBytes);
    if constexpr (std::endian::native == std::endian::little)
        std::memcpy(mask.data(), words.data(), mask.size());
    else
        for (std::size_t n = 0; n < mask.size(); ++n)
            mask[n] = static_cast<std::uint8_t>(words[n / 8] >> n % 8 * 8);
}

// Marks behind `nAt` move up by `nBytes`, and one comes to stand there.
void IndexPageEditor::OpenMarks(std::size_t nAt, std::size_t nBytes) {
    MaskWords low = LoadMask();
    MaskWords high = low;
    ClearFrom(low, nAt + 1);
    ClearUpTo(high, nAt);
    ShiftUp(high, nBytes);
    for (std::size_t n = 0; n < low.size(); ++n)
        low[n] |= high[n];
    low[(nAt + nBytes) / kWordBits] |= std::uint64_t{1} << (nAt + nBytes) % kWordBits;
    StoreMask(low);
}

// The mark at `nEnd` goes, those behind it move down by `nBytes`.
void IndexPageEditor::CloseMarks(std::size_t nEnd, std::size_t nBytes) {
    MaskWords low = LoadMask();
    MaskWords high = low;
    ClearFrom(low, nEnd);
    ClearUpTo(high, nEnd);
    ShiftDown(high, nBytes);
    for (std::size_t n = 0; n < low.size(); ++n)
        low[n] |= high[n];
    StoreMask(low);
}

// ---- Sizes

std::size_t SharedBytes(ByteView left, ByteView right) {
    return static_cast<std::size_t>(std::ranges::mismatch(left, right).in1 - left.begin());
}

std::size_t PackedBytes(std::span<const Bytes> entries, std::size_t nPrefix) {
    std::size_t nBytes = entries.empty() ? 0 : nPrefix;
    for (const Bytes& entry : entries)
        nBytes += entry.size() - nPrefix;
    return nBytes;
}

// Each entry keeps a byte of its own.
std::size_t LongestPrefix(ByteView first, ByteView last, const Layout& layout) {
    const std::size_t nMost = PlacesOf(layout).bWidePrefix ? layout.nPageSize : 0xFF;
    return std::min({SharedBytes(first, last), first.size() - 1, last.size() - 1, nMost});
}

std::optional<std::size_t> FittingPrefix(std::span<const Bytes> entries, const Layout& layout) {
    const std::size_t nCapacity = layout.nPageSize - layout.nEntriesPlace;
    if (PackedBytes(entries, 0) <= nCapacity) return 0;
    const std::size_t nPrefix = LongestPrefix(entries.front(), entries.back(), layout);
    if (PackedBytes(entries, nPrefix) <= nCapacity) return nPrefix;
    return std::nullopt;
}

}  // namespace nomira::jet
