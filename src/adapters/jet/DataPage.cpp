#include "adapters/jet/DataPage.h"

#include <algorithm>

namespace nomira::jet {
namespace {

constexpr std::size_t kFreeBytesPlace = 2;
constexpr std::size_t kOwnerPlace = 4;
constexpr std::size_t kSlotBytes = 2;
constexpr std::uint16_t kOffsetBits = 0x1FFF;
constexpr std::uint16_t kFlagBits = SlotDeleted;

}  // namespace

void DataPage::Format(PageStore& store, std::uint32_t nPage, std::uint32_t nOwner) {
    const ByteSpan page = store.Change(nPage);
    std::fill(page.begin(), page.end(), std::uint8_t{0});
    page[0] = static_cast<std::uint8_t>(PageKind::Data);
    page[1] = 1;
    StoreU16(page, kFreeBytesPlace, page.size() - store.Format().nSlotsPlace);
    StoreU32(page, kOwnerPlace, nOwner);
}

std::optional<ByteView> DataPage::PlainRow(ByteView page, const Layout& layout,
                                           std::uint32_t nOwner, std::size_t nRow) {
    if (page[0] != static_cast<std::uint8_t>(PageKind::Data) ||
        LoadU32(page, kOwnerPlace) != nOwner)
        return std::nullopt;
    const std::size_t nSlots = LoadU16(page, layout.nSlotCountPlace);
    const std::size_t nSlotsEnd = layout.nSlotsPlace + nSlots * kSlotBytes;
    if (nRow >= nSlots || nSlotsEnd > page.size()) return std::nullopt;
    const std::size_t nSlotPlace = layout.nSlotsPlace + nRow * kSlotBytes;
    const std::uint16_t nSlot = LoadU16(page, nSlotPlace);
    const std::size_t nFrom = nSlot & kOffsetBits;
    const std::size_t nEnd =
        nRow == 0 ? page.size() : LoadU16(page, nSlotPlace - kSlotBytes) & kOffsetBits;
    if ((nSlot & kFlagBits) != 0 || nFrom < nSlotsEnd || nFrom > nEnd || nEnd > page.size())
        return std::nullopt;
    return page.subspan(nFrom, nEnd - nFrom);
}

bool DataPage::IsOne() const {
    return View()[0] == static_cast<std::uint8_t>(PageKind::Data);
}

std::uint32_t DataPage::Owner() const {
    return LoadU32(View(), kOwnerPlace);
}

std::size_t DataPage::Slots() const {
    const std::size_t nSlots = LoadU16(View(), m_store.Format().nSlotCountPlace);
    if (SlotPlace(nSlots) > View().size())
        Fail(FailureKind::Damaged, "a page has more rows than room for them");
    return nSlots;
}

std::size_t DataPage::FreeBytes() const {
    return LoadU16(View(), kFreeBytesPlace);
}

std::uint16_t DataPage::Flags(std::size_t nRow) const {
    if (nRow >= Slots()) Fail(FailureKind::Damaged, "a row that isn't there is named");
    return LoadU16(View(), SlotPlace(nRow)) & kFlagBits;
}

ByteView DataPage::Row(std::size_t nRow) const {
    const std::size_t nFrom = Offset(nRow);
    const std::size_t nEnd = End(nRow);
    if (nFrom > nEnd || nFrom < SlotPlace(Slots()))
        Fail(FailureKind::Damaged, "a row lies outside of its page");
    return Part(View(), nFrom, nEnd - nFrom);
}

ByteSpan DataPage::ChangeRow(std::size_t nRow) {
    const ByteView row = Row(nRow);
    const auto nFrom = static_cast<std::size_t>(row.data() - View().data());
    return Part(m_store.Change(m_nPage), nFrom, row.size());
}

bool DataPage::HasRoom(std::size_t nBytes) const {
    return Slots() < kMostSlots && nBytes + kSlotBytes <= FreeBytes() &&
           SlotPlace(Slots() + 1) + nBytes <= LowestOffset();
}

std::uint8_t DataPage::Add(ByteView row, std::uint16_t nFlags) {
    const std::size_t nRow = Slots();
    const std::size_t nFrom = LowestOffset() - row.size();
    const std::size_t nFree = FreeBytes() - row.size() - kSlotBytes;
    const ByteSpan page = m_store.Change(m_nPage);
    std::copy(row.begin(), row.end(), page.begin() + static_cast<std::ptrdiff_t>(nFrom));
    StoreU16(page, SlotPlace(nRow), nFrom | nFlags);
    StoreU16(page, m_store.Format().nSlotCountPlace, nRow + 1);
    StoreU16(page, kFreeBytesPlace, nFree);
    return static_cast<std::uint8_t>(nRow);
}

bool DataPage::CanResize(std::size_t nRow, std::size_t nBytes) const {
    return nBytes <= Row(nRow).size() + (LowestOffset() - SlotPlace(Slots()));
}

void DataPage::Replace(std::size_t nRow, ByteView row, std::uint16_t nFlags) {
    const Bytes bytes(row.begin(), row.end());  // it may lie on this page
    const std::size_t nOldSize = Row(nRow).size();
    const std::size_t nEnd = End(nRow);
    const std::size_t nLowest = LowestOffset();
    const std::size_t nSlots = Slots();
    const ByteSpan page = m_store.Change(m_nPage);
    // What lies below the row moves with its new start.
    const auto nShift =
        static_cast<std::ptrdiff_t>(nOldSize) - static_cast<std::ptrdiff_t>(bytes.size());
    const ByteSpan below = Part(page, nLowest, nEnd - nOldSize - nLowest);
    if (nShift > 0)
        std::copy_backward(below.begin(), below.end(), below.end() + nShift);
    else if (nShift < 0)
        std::copy(below.begin(), below.end(), below.begin() + nShift);
    std::copy(bytes.begin(), bytes.end(),
              page.begin() + static_cast<std::ptrdiff_t>(nEnd - bytes.size()));
    for (std::size_t i = nRow; i < nSlots; ++i) {
        const std::uint16_t nSlot = LoadU16(page, SlotPlace(i));
        const std::size_t nOffset =
            static_cast<std::size_t>((nSlot & kOffsetBits) + nShift) & kOffsetBits;
        StoreU16(page, SlotPlace(i), nOffset | (i == nRow ? nFlags : nSlot & kFlagBits));
    }
    StoreU16(page, kFreeBytesPlace,
             static_cast<std::size_t>(static_cast<std::ptrdiff_t>(nLowest - SlotPlace(nSlots)) +
                                      nShift));
}

void DataPage::Delete(std::size_t nRow) {
    Replace(nRow, {}, SlotDeleted);
}

bool DataPage::IsEmpty() const {
    for (std::size_t i = 0; i < Slots(); ++i)
        if (!IsDeleted(i)) return false;
    return true;
}

std::size_t DataPage::SlotPlace(std::size_t nRow) const {
    return m_store.Format().nSlotsPlace + nRow * kSlotBytes;
}

std::size_t DataPage::Offset(std::size_t nRow) const {
    if (nRow >= Slots()) Fail(FailureKind::Damaged, "a row that isn't there is named");
    return LoadU16(View(), SlotPlace(nRow)) & kOffsetBits;
}

std::size_t DataPage::End(std::size_t nRow) const {
    return nRow == 0 ? View().size() : Offset(nRow - 1);
}

std::size_t DataPage::LowestOffset() const {
    const std::size_t nSlots = Slots();
    const std::size_t nLowest = nSlots == 0 ? View().size() : Offset(nSlots - 1);
    if (nLowest < SlotPlace(nSlots) || nLowest > View().size())
        Fail(FailureKind::Damaged, "a row lies outside of its page");
    return nLowest;
}

}  // namespace nomira::jet
