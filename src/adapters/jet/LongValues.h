// Long values: texts and bytes of any length. A short one stays in its row's field, others lie in
// rows of pages of their own: one row, or a chain of them.
#pragma once

#include <optional>

#include "adapters/jet/DataPages.h"
#include "adapters/jet/Definition.h"

namespace nomira::jet {

// Bytes of a field without the value itself.
inline constexpr std::size_t kLongFieldHead = 12;

// The field begins with the value's length, whose top bits tell where it is: in the field, or in
// one row; else in a chain of rows.
inline constexpr std::uint32_t kInlineBit = 0x80000000;
inline constexpr std::uint32_t kSingleBit = 0x40000000;
inline constexpr std::uint32_t kLengthBits = 0x3FFFFFFF;

// The value that a row's field tells. Raises Damaged.
Bytes ReadLongValue(PageStore& store, ByteView field);

// The value, if the row's field holds it itself; nullopt also for a field that is damaged.
std::optional<ByteView> ValueInField(ByteView field);

// A field that holds the value itself.
Bytes InlineLongField(ByteView value);

class LongValues {
  public:
    LongValues(PageStore& store, const LongColumnMaps& maps);

    // Stores the value outside of its row, and gives the row's field.
    Bytes Write(ByteView value);
    // Gives back what the field's value takes outside of its row. What isn't the column's own is
    // left alone.
    void Free(ByteView field);

  private:
    PageStore& m_store;
    DataPages m_pages;
};

}  // namespace nomira::jet
