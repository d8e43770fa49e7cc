// A column's value as the library hands it over.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "adapters/jet/Bytes.h"

namespace nomira::jet {

// Kinds of columns, as numbered in the file.
enum class ColumnType : std::uint8_t {
    Boolean = 1,
    Byte = 2,
    Integer = 3,   // 16 bits
    Long = 4,      // 32 bits
    Currency = 5,  // 64 bits, ten-thousandths
    Single = 6,
    Double = 7,
    DateTime = 8,  // double, days since 1899-12-30
    Binary = 9,
    Text = 10,  // up to 255 characters
    Ole = 11,   // long binary
    Memo = 12,  // long text
    Guid = 15,
    Numeric = 16,  // 17 bytes
};

// monostate is Null. Boolean: bool. Byte, Integer, Long, Currency (in ten-thousandths): integer.
// Single, Double, DateTime: double. Text, Memo: UTF-16. All others: the bytes as stored.
using Value = std::variant<std::monostate, bool, std::int64_t, double, std::u16string, Bytes>;

inline bool IsNull(const Value& value) {
    return std::holds_alternative<std::monostate>(value);
}

}  // namespace nomira::jet
