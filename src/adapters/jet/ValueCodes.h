// A column's value as the bytes of its field in a row. Booleans have none (they are bits of the
// row), and long values have fields of their own kind (LongValues.h).
#pragma once

#include "adapters/jet/Definition.h"

namespace nomira::jet {

// Bytes of a field in the fixed part of a row; 0 for a Boolean.
std::size_t FixedSize(const Column& column);

// Whether the type's values are integers: DecodeWhole reads them.
inline bool HoldsWhole(ColumnType type) {
    return type >= ColumnType::Byte && type <= ColumnType::Currency;
}

// These raise Damaged for a field that is too short for its type.
std::int64_t DecodeWhole(const Column& column, ByteView field);
Value DecodeValue(const Column& column, ByteView field, Generation generation);

// A long column's value: a Memo's text, else the bytes as they are.
Value DecodeLongValue(const Column& column, ByteView bytes, Generation generation);
// Raises like AppendValue.
Bytes EncodeLongValue(const Column& column, const Value& value, Generation generation);

// Appends the field of a value that isn't Null. Raises Constraint for a value of another kind than
// its column's, one out of its range or too long; Unsupported for a text with characters that the
// file can't hold.
void AppendValue(Bytes& bytes, const Value& value, const Column& column, Generation generation);

}  // namespace nomira::jet
