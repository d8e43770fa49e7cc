#include "adapters/jet/LongValues.h"

#include <algorithm>

namespace nomira::jet {
namespace {

constexpr std::size_t kPlacePlace = 4;
// Ahead of a chained row's bytes: where the next one is.
constexpr std::size_t kChainHead = 4;

RowPlace LoadPlace(ByteView bytes, std::size_t nOffset) {
    return {LoadU24(bytes, nOffset + 1), LoadU8(bytes, nOffset)};
}

Bytes FieldOf(std::uint32_t nLengthWord, RowPlace place) {
    Bytes field(kLongFieldHead);
    StoreU32(field, 0, nLengthWord);
    StoreU8(field, kPlacePlace, place.nRow);
    StoreU24(field, kPlacePlace + 1, place.nPage);
    return field;
}

ByteView LongRow(PageStore& store, RowPlace place) {
    const DataPage page(store, place.nPage);
    if (place.nPage == 0 || !page.IsOne() || page.Flags(place.nRow) != 0)
        Fail(FailureKind::Damaged, "a long value isn't where its row says");
    return page.Row(place.nRow);
}

Bytes ReadChain(PageStore& store, RowPlace place, std::size_t nLength) {
    Bytes value;
    while (value.size() < nLength) {
        const ByteView row = LongRow(store, place);
        if (row.size() <= kChainHead) Fail(FailureKind::Damaged, "a long value breaks off");
        Append(value, row.subspan(kChainHead));
        place = LoadPlace(row, 0);
    }
    value.resize(nLength);
    return value;
}

}  // namespace

std::optional<ByteView> ValueInField(ByteView field) {
    if (field.size() < kLongFieldHead) return std::nullopt;
    const std::uint32_t nWord = LoadU32(field, 0);
    const ByteView value = field.subspan(kLongFieldHead);
    if ((nWord & kInlineBit) == 0 || (nWord & kLengthBits) > value.size()) return std::nullopt;
    return value.first(nWord & kLengthBits);
}

Bytes ReadLongValue(PageStore& store, ByteView field) {
    const std::uint32_t nWord = LoadU32(field, 0);
    const std::size_t nLength = nWord & kLengthBits;
    const ByteView head = Part(field, 0, kLongFieldHead);
    ByteView value;
    if ((nWord & kInlineBit) != 0) {
        value = Part(field, kLongFieldHead, nLength);
    } else {
        if (nLength / store.Format().nPageSize > store.Count())
            Fail(FailureKind::Damaged, "a long value is longer than its file");
        const RowPlace place = LoadPlace(head, kPlacePlace);
        if ((nWord & kSingleBit) == 0) return ReadChain(store, place, nLength);
        value = Part(LongRow(store, place), 0, nLength);
    }
    return {value.begin(), value.end()};
}

Bytes InlineLongField(ByteView value) {
    Bytes field = FieldOf(kInlineBit | static_cast<std::uint32_t>(value.size()), {});
    Append(field, value);
    return field;
}

LongValues::LongValues(PageStore& store, const LongColumnMaps& maps)
    : m_store(store), m_pages(store, kOwnerOfLongValues, maps.owned, maps.free) {}

Bytes LongValues::Write(ByteView value) {
    const std::size_t nChunk = m_store.Format().nLongChunk;
    const auto nLength = static_cast<std::uint32_t>(value.size());
    if (value.size() <= nChunk) return FieldOf(kSingleBit | nLength, m_pages.Add(value));
    // From the last row to the first, as each of them names the next.
    RowPlace next;
    for (std::size_t nEnd = value.size(); nEnd > 0;) {
        const std::size_t nFrom = (nEnd - 1) / nChunk * nChunk;
        Bytes row(kChainHead);
        StoreU8(row, 0, next.nRow);
        StoreU24(row, 1, next.nPage);
        Append(row, value.subspan(nFrom, nEnd - nFrom));
        next = m_pages.Add(row);
        nEnd = nFrom;
    }
    return FieldOf(nLength, next);
}

void LongValues::Free(ByteView field) {
    if (field.size() < kLongFieldHead) return;
    const std::uint32_t nWord = LoadU32(field, 0);
    const bool bChain = (nWord & (kInlineBit | kSingleBit)) == 0;
    RowPlace place = LoadPlace(field, kPlacePlace);
    if ((nWord & kInlineBit) != 0) return;
    // A row that is deleted ends the walk, so that no loop lasts.
    while (m_pages.Owns(place.nPage)) {
        const DataPage page(m_store, place.nPage);
        if (place.nRow >= page.Slots() || page.Flags(place.nRow) != 0) return;
        const ByteView row = page.Row(place.nRow);
        const RowPlace next = bChain && row.size() >= kChainHead ? LoadPlace(row, 0) : RowPlace{};
        m_pages.Delete(place);
        place = next;
    }
}

}  // namespace nomira::jet
