#include "adapters/jet/RowPages.h"

namespace nomira::jet {
namespace {

constexpr std::size_t kPointerBytes = 4;
// Places that one row's bytes may be sent on to; other programs hardly go beyond the first.
constexpr std::size_t kMostMoves = 64;

}  // namespace

bool RowPages::IsRow(const DataPage& page, std::size_t nRow) const {
    return (page.Flags(nRow) & SlotHidden) == 0;
}

bool RowPages::Next(RowPlace& place) const {
    const RowPlace neighbour{place.nPage, static_cast<std::uint8_t>(place.nRow + 1)};
    if (neighbour.nRow != 0 && m_pages.PlainRow(neighbour)) {
        place = neighbour;
        return true;
    }
    auto nPage = place.nPage == 0 ? m_pages.Next(0) : std::optional(place.nPage);
    std::size_t nRow = place.nPage == 0 ? 0 : place.nRow + std::size_t{1};
    for (; nPage; nPage = m_pages.Next(*nPage + 1), nRow = 0) {
        if (!m_pages.LooksOwned(*nPage)) {
            if (*nPage == place.nPage) continue;  // given back while the walk stood on it
            Fail(FailureKind::Damaged, "a table's map tells of a page that isn't the table's");
        }
        const DataPage page(m_store, *nPage);
        const std::size_t nSlots = std::min(page.Slots(), kMostSlots + 1);
        for (; nRow < nSlots; ++nRow) {
            if (!IsRow(page, nRow)) continue;
            place = {*nPage, static_cast<std::uint8_t>(nRow)};
            return true;
        }
    }
    return false;
}

bool RowPages::Has(RowPlace place) const {
    if (!m_pages.LooksOwned(place.nPage)) return false;
    const DataPage page(m_store, place.nPage);
    return place.nRow < page.Slots() && IsRow(page, place.nRow);
}

ByteView RowPages::Row(RowPlace place) const {
    if (const auto row = m_pages.PlainRow(place)) return *row;  // it hardly ever moves
    if (!Has(place)) Fail(FailureKind::Damaged, "a row isn't where an index says");
    if (DataPage(m_store, place.nPage).Flags(place.nRow) != 0) place = Moves(place).back();
    return DataPage(m_store, place.nPage).Row(place.nRow);
}

std::vector<RowPlace> RowPages::Moves(RowPlace place) const {
    std::vector<RowPlace> moves;
    for (;;) {
        const DataPage page(m_store, place.nPage);
        if ((page.Flags(place.nRow) & SlotMoved) == 0) return moves;
        const ByteView row = page.Row(place.nRow);
        place = {LoadU24(row, 1), LoadU8(row, 0)};
        if (!m_pages.LooksOwned(place.nPage) || moves.size() == kMostMoves ||
            DataPage(m_store, place.nPage).IsDeleted(place.nRow))
            Fail(FailureKind::Damaged, "a row that moved isn't where it went");
        moves.push_back(place);
    }
}

bool RowPages::CanResize(RowPlace place, std::size_t nBytes) const {
    return DataPage(m_store, place.nPage).CanResize(place.nRow, nBytes);
}

void RowPages::Replace(RowPlace place, ByteView row) {
    const std::vector<RowPlace> moves = Moves(place);
    if (!moves.empty() && !CanResize(place, row.size()) && CanResize(moves.back(), row.size())) {
        m_pages.Replace(moves.back(), row, SlotHidden);
        return;
    }
    if (CanResize(place, row.size()))
        m_pages.Replace(place, row, 0);
    else
        MoveAway(place, row);
    for (const RowPlace move : moves)
        m_pages.Delete(move);
}

void RowPages::MoveAway(RowPlace place, ByteView row) {
    if (!CanResize(place, kPointerBytes))
        Fail(FailureKind::Constraint, "a row can't grow on its page");
    const RowPlace target = m_pages.Add(row, SlotHidden);
    Bytes pointer(kPointerBytes);
    StoreU8(pointer, 0, target.nRow);
    StoreU24(pointer, 1, target.nPage);
    m_pages.Replace(place, pointer, SlotMoved);
}

void RowPages::Delete(RowPlace place) {
    for (const RowPlace move : Moves(place))
        m_pages.Delete(move);
    m_pages.Delete(place);
}

}  // namespace nomira::jet
