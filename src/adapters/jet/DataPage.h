// A data page: a table of slots at its start, and rows packed from its end downwards. Rows of
// tables, long values and maps of pages all live on such pages.
#pragma once

#include <optional>

#include "adapters/jet/PageStore.h"

namespace nomira::jet {

// Bits of a slot beside the row's offset.
enum SlotFlag : std::uint16_t {
    SlotMoved = 0x4000,   // the row holds the place where its bytes are: row number, page (24 bits)
    SlotHidden = 0x8000,  // with SlotMoved: deleted; alone: reached through a moved row only
    SlotDeleted = SlotMoved | SlotHidden,
};

// Owners of data pages that are no table's.
inline constexpr std::uint32_t kOwnerOfLongValues = 0x4C41564C;  // the letters LVAL
inline constexpr std::uint32_t kOwnerOfMaps = 0;
inline constexpr std::uint32_t kOwnerOfGlobalMap = 1;

// Looks at the page anew at each call; holds nothing of it.
class DataPage {
  public:
    DataPage(PageStore& store, std::uint32_t nPage) : m_store(store), m_nPage(nPage) {}

    // Writes the head of an empty page over what is there.
    static void Format(PageStore& store, std::uint32_t nPage, std::uint32_t nOwner);

    // A row's bytes, by one look: nullopt unless these are a data page of that owner with a sound
    // row of the number on it, neither moved nor deleted. What is the matter else, the calls below
    // tell.
    static std::optional<ByteView> PlainRow(ByteView page, const Layout& layout,
                                            std::uint32_t nOwner, std::size_t nRow);

    // Whether the page says of itself that it is a data page.
    bool IsOne() const;
    std::uint32_t Owner() const;
    // Slots, those of deleted rows included. Raises Damaged if they can't be as many.
    std::size_t Slots() const;
    // Bytes between the slots and the rows, as the page tells; a new row takes two of them for its
    // slot.
    std::size_t FreeBytes() const;

    // SlotFlag bits. These raise Damaged for a slot that isn't there.
    std::uint16_t Flags(std::size_t nRow) const;
    bool IsDeleted(std::size_t nRow) const { return Flags(nRow) == SlotDeleted; }
    // A row's bytes, whatever its flags. Raises Damaged where offsets lead out of the page.
    ByteView Row(std::size_t nRow) const;
    ByteSpan ChangeRow(std::size_t nRow);

    // Whether a new row of that many bytes has room.
    bool HasRoom(std::size_t nBytes) const;
    // Appends a row and gives its number. There must be room.
    std::uint8_t Add(ByteView row, std::uint16_t nFlags = 0);
    // Whether the slot's row can be made that long, by moving the others together.
    bool CanResize(std::size_t nRow, std::size_t nBytes) const;
    // Puts other bytes and flags into a slot; the rows behind it move. There must be room.
    void Replace(std::size_t nRow, ByteView row, std::uint16_t nFlags = 0);
    // Gives the slot's bytes back and marks it deleted. The number isn't used again.
    void Delete(std::size_t nRow);
    // Whether every slot is a deleted one.
    bool IsEmpty() const;

  private:
    ByteView View() const { return m_store.Read(m_nPage); }
    std::size_t Offset(std::size_t nRow) const;
    std::size_t End(std::size_t nRow) const;
    std::size_t SlotPlace(std::size_t nRow) const;
    std::size_t LowestOffset() const;

    PageStore& m_store;
    std::uint32_t m_nPage;
};

}  // namespace nomira::jet
