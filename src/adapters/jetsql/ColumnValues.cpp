#include "adapters/jetsql/ColumnValues.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>

#include "adapters/jetsql/DateText.h"
#include "adapters/jetsql/Decimals.h"
#include "langtools/Utf8.h"

namespace nomira::jetsql {
namespace {

using jet::ColumnType;
using jet::Value;

// As many digits as a real keeps, and SQLite writes.
constexpr std::ptrdiff_t kExactDigits = 15;

struct Range {
    std::int64_t nLeast;
    std::int64_t nMost;
};

template <typename Number>
constexpr Range RangeOf() {
    return {std::numeric_limits<Number>::min(), std::numeric_limits<Number>::max()};
}

struct TypeRow {
    ColumnType type;
    const char* sDeclared;
    Range whole{0, 0};  // of whole numbers
};
constexpr TypeRow kTypes[]{
    {ColumnType::Boolean, "BOOLEAN"},
    {ColumnType::Byte, "INTEGER", RangeOf<std::uint8_t>()},
    {ColumnType::Integer, "INTEGER", RangeOf<std::int16_t>()},
    {ColumnType::Long, "INTEGER", RangeOf<std::int32_t>()},
    {ColumnType::Currency, "CURRENCY"},
    {ColumnType::Single, "REAL"},
    {ColumnType::Double, "REAL"},
    {ColumnType::DateTime, "TEXT"},
    {ColumnType::Text, "TEXT"},
    {ColumnType::Memo, "TEXT"},
    {ColumnType::Numeric, "NUMERIC"},
};
constexpr TypeRow kBlob{ColumnType::Binary, "BLOB"};

const TypeRow& RowOf(ColumnType type) {
    const auto* found = std::find_if(std::begin(kTypes), std::end(kTypes),
                                     [type](const TypeRow& row) { return row.type == type; });
    return found == std::end(kTypes) ? kBlob : *found;
}

bool IsWhole(const jet::Column& column) {
    return RowOf(column.type).whole.nMost != 0;
}

int PrecisionOf(const jet::Column& column) {
    return column.nSortOrder & 0xFF;
}
int ScaleOf(const jet::Column& column) {
    return column.nSortOrder >> 8;
}

[[noreturn]] void Refuse(const jet::Column& column, const char* sWhy) {
    jet::Fail(jet::FailureKind::Constraint, ToUtf8(column.sName) + ": " + sWhy);
}
constexpr const char* kOtherKind = "the value is of another kind than the column";
constexpr const char* kTooLarge = "the value is too large for the column";

std::string_view TextOf(sqlite3_value* value) {
    const auto* sText = reinterpret_cast<const char*>(sqlite3_value_text(value));
    if (sText == nullptr) return {};
    return {sText, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

void GiveText(sqlite3_context* context, std::string_view sText) {
    sqlite3_result_text64(context, sText.data(), sText.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

// A number that is whole, a real if that tells it exactly, else its digits.
void GiveDecimal(sqlite3_context* context, const std::string& sText) {
    constexpr std::size_t kSafeInteger = 18;
    const auto nDigits =
        std::count_if(sText.begin(), sText.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (sText.find('.') == std::string::npos && sText.size() <= kSafeInteger)
        sqlite3_result_int64(context, std::stoll(sText));
    else if (nDigits <= kExactDigits)
        sqlite3_result_double(context, std::stod(sText));
    else
        GiveText(context, sText);
}

void GiveBytes(sqlite3_context* context, const jet::Bytes& bytes, const jet::Column& column) {
    if (column.type == ColumnType::Numeric) {
        if (const auto sText = TextOfNumeric(bytes, ScaleOf(column))) {
            GiveDecimal(context, *sText);
            return;
        }
    }
    // An empty vector may have no address, which would be a Null.
    sqlite3_result_blob64(context, bytes.empty() ? "" : static_cast<const void*>(bytes.data()),
                          bytes.size(), SQLITE_TRANSIENT);
}

void GiveReal(sqlite3_context* context, double nValue, const jet::Column& column) {
    if (column.type == ColumnType::DateTime) {
        if (const auto sText = TextOfDate(nValue)) {
            GiveText(context, *sText);
            return;
        }
    }
    sqlite3_result_double(context, nValue);
}

// A real that is a whole number, as one; nullopt for others.
std::optional<std::int64_t> WholeOf(double nValue) {
    constexpr double kBeyond = 9.2e18;
    if (!(std::abs(nValue) < kBeyond) || std::trunc(nValue) != nValue) return std::nullopt;
    return static_cast<std::int64_t>(nValue);
}

std::int64_t WholeToWrite(sqlite3_value* value, const jet::Column& column) {
    std::int64_t nValue = 0;
    switch (sqlite3_value_numeric_type(value)) {
        case SQLITE_INTEGER:
            nValue = sqlite3_value_int64(value);
            break;
        case SQLITE_FLOAT: {
            const auto nWhole = WholeOf(sqlite3_value_double(value));
            if (!nWhole) Refuse(column, kOtherKind);
            nValue = *nWhole;
            break;
        }
        default:
            Refuse(column, kOtherKind);
    }
    const Range range = RowOf(column.type).whole;
    if (nValue < range.nLeast || nValue > range.nMost) Refuse(column, kTooLarge);
    return nValue;
}

double RealToWrite(sqlite3_value* value, const jet::Column& column) {
    const int nType = sqlite3_value_numeric_type(value);
    if (nType != SQLITE_INTEGER && nType != SQLITE_FLOAT) Refuse(column, kOtherKind);
    return sqlite3_value_double(value);
}

Value DateToWrite(sqlite3_value* value, const jet::Column& column) {
    if (sqlite3_value_type(value) == SQLITE_TEXT)
        if (const auto nDays = DateOfText(TextOf(value))) return *nDays;
    return RealToWrite(value, column);
}

Value CurrencyToWrite(sqlite3_value* value, const jet::Column& column) {
    if (sqlite3_value_type(value) == SQLITE_FLOAT) {
        const double nScaled = std::round(sqlite3_value_double(value) * 10000);
        const auto nWhole = WholeOf(nScaled);
        if (!nWhole) Refuse(column, kTooLarge);
        return *nWhole;
    }
    const auto nValue = CurrencyOfText(TextOf(value));
    if (!nValue) Refuse(column, kOtherKind);
    return *nValue;
}

Value NumericToWrite(sqlite3_value* value, const jet::Column& column) {
    auto bytes = NumericOfText(TextOf(value), PrecisionOf(column), ScaleOf(column));
    if (!bytes) Refuse(column, kOtherKind);
    return std::move(*bytes);
}

Value BytesToWrite(sqlite3_value* value, const jet::Column& column) {
    if (sqlite3_value_type(value) != SQLITE_BLOB) Refuse(column, kOtherKind);
    const auto* bytes = static_cast<const std::uint8_t*>(sqlite3_value_blob(value));
    return jet::Bytes(bytes, bytes + sqlite3_value_bytes(value));
}

Value TextToWrite(sqlite3_value* value, const jet::Column& column) {
    if (sqlite3_value_type(value) == SQLITE_BLOB) Refuse(column, kOtherKind);
    return FromUtf8(TextOf(value));
}

}  // namespace

const char* DeclaredType(const jet::Column& column) {
    return RowOf(column.type).sDeclared;
}

// With a zero at its end: SQLite would else lengthen its copy for whoever reads it.
void GiveAscii(sqlite3_context* context, jet::ByteView text, std::string& room) {
    room.assign(text.begin(), text.end());
    sqlite3_result_text(context, room.c_str(), -1, SQLITE_TRANSIENT);
}

void GiveWhole(sqlite3_context* context, std::int64_t nValue, const jet::Column& column) {
    if (column.type == ColumnType::Currency)
        GiveDecimal(context, TextOfCurrency(nValue));
    else
        sqlite3_result_int64(context, nValue);
}

void GiveResult(sqlite3_context* context, const Value& value, const jet::Column& column) {
    if (const auto* bValue = std::get_if<bool>(&value))
        sqlite3_result_int(context, *bValue ? 1 : 0);
    else if (const auto* nValue = std::get_if<std::int64_t>(&value))
        GiveWhole(context, *nValue, column);
    else if (const auto* nReal = std::get_if<double>(&value))
        GiveReal(context, *nReal, column);
    else if (const auto* sText = std::get_if<std::u16string>(&value))
        GiveText(context, ToUtf8(*sText));
    else if (const auto* bytes = std::get_if<jet::Bytes>(&value))
        GiveBytes(context, *bytes, column);
    else
        sqlite3_result_null(context);
}

Value ValueToWrite(sqlite3_value* value, const jet::Column& column) {
    if (sqlite3_value_type(value) == SQLITE_NULL)
        return column.type == ColumnType::Boolean ? Value(false) : Value();
    switch (column.type) {
        case ColumnType::Boolean:
            return RealToWrite(value, column) != 0;
        case ColumnType::Byte:
        case ColumnType::Integer:
        case ColumnType::Long:
            return WholeToWrite(value, column);
        case ColumnType::Currency:
            return CurrencyToWrite(value, column);
        case ColumnType::Single:
        case ColumnType::Double:
            return RealToWrite(value, column);
        case ColumnType::DateTime:
            return DateToWrite(value, column);
        case ColumnType::Text:
        case ColumnType::Memo:
            return TextToWrite(value, column);
        case ColumnType::Numeric:
            return NumericToWrite(value, column);
        default:
            return BytesToWrite(value, column);
    }
}

KeyValue ValueToFind(sqlite3_value* value, const jet::Column& column) {
    using Kind = KeyValue::Kind;
    if (sqlite3_value_type(value) == SQLITE_NULL) return {Kind::NoRow};
    if (!IsWhole(column)) {
        // A number may stand for texts that are written otherwise ("05").
        if (sqlite3_value_type(value) != SQLITE_TEXT) return {Kind::Unknown};
        return {Kind::Known, FromUtf8(TextOf(value))};
    }
    std::optional<std::int64_t> nValue;
    const int nType = sqlite3_value_numeric_type(value);
    if (nType == SQLITE_INTEGER) nValue = sqlite3_value_int64(value);
    if (nType == SQLITE_FLOAT) nValue = WholeOf(sqlite3_value_double(value));
    const Range range = RowOf(column.type).whole;
    if (!nValue || *nValue < range.nLeast || *nValue > range.nMost) return {Kind::NoRow};
    return {Kind::Known, *nValue};
}

bool CanBeFound(const jet::Column& column) {
    return IsWhole(column) || column.IsText();
}

bool CanBeCompared(const jet::Column& column) {
    return IsWhole(column);
}

bool IsFoundExactly(const jet::Column& column) {
    return IsWhole(column);
}

KeyValue BoundToFind(sqlite3_value* value, const jet::Column& column, bool bLower) {
    using Kind = KeyValue::Kind;
    if (sqlite3_value_type(value) == SQLITE_NULL) return {Kind::NoRow};
    const int nType = sqlite3_value_numeric_type(value);
    if (nType != SQLITE_INTEGER && nType != SQLITE_FLOAT) return {Kind::Unknown};
    const Range range = RowOf(column.type).whole;
    const double nBound = sqlite3_value_double(value);
    // Generous at the edges: SQLite looks at each row that is found once more.
    if (nBound <= static_cast<double>(range.nLeast))
        return bLower ? KeyValue{Kind::Unknown} : KeyValue{Kind::Known, range.nLeast};
    if (nBound >= static_cast<double>(range.nMost))
        return bLower ? KeyValue{Kind::Known, range.nMost} : KeyValue{Kind::Unknown};
    const double nRounded = bLower ? std::floor(nBound) : std::ceil(nBound);
    return {Kind::Known, static_cast<std::int64_t>(nRounded)};
}

}  // namespace nomira::jetsql
