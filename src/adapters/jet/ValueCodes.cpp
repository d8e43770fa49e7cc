#include "adapters/jet/ValueCodes.h"

#include <bit>
#include <limits>

#include "adapters/jet/TextCodes.h"

namespace nomira::jet {
namespace {

constexpr std::size_t kMostLongBytes = 0x3FFFFFFF;

[[noreturn]] void FailKind() {
    Fail(FailureKind::Constraint, "a value is of another kind than its column");
}

std::int64_t IntegerOf(const Value& value) {
    if (const auto* pValue = std::get_if<std::int64_t>(&value)) return *pValue;
    FailKind();
}

double RealOf(const Value& value) {
    if (const auto* pValue = std::get_if<double>(&value)) return *pValue;
    return static_cast<double>(IntegerOf(value));
}

template <typename T>
void AppendInteger(Bytes& bytes, const Value& value) {
    const std::int64_t nValue = IntegerOf(value);
    if (nValue < std::numeric_limits<T>::min() || nValue > std::numeric_limits<T>::max())
        Fail(FailureKind::Constraint, "a number is out of its column's range");
    AppendLittle<sizeof(T)>(bytes, static_cast<std::uint64_t>(nValue));
}

Bytes EncodeOrFail(const std::u16string& sText, Generation generation, bool bMayCompress) {
    auto bytes = EncodeText(sText, generation, bMayCompress);
    if (!bytes) Fail(FailureKind::Unsupported, "a text has a character that the file can't hold");
    return std::move(*bytes);
}

void AppendText(Bytes& bytes, const Value& value, const Column& column, Generation generation) {
    const auto* psText = std::get_if<std::u16string>(&value);
    if (psText == nullptr) FailKind();
    const std::size_t nMost = column.nLength / LayoutOf(generation).nCharacterBytes;
    if (psText->size() > nMost) Fail(FailureKind::Constraint, "a text is too long for its column");
    if (!column.IsFixed()) {
        const bool bMayCompress = (column.nExtension & ColumnCompressed) != 0;
        Append(bytes, EncodeOrFail(*psText, generation, bMayCompress));
        return;
    }
    std::u16string sPadded = *psText;
    sPadded.resize(nMost, u' ');
    Append(bytes, EncodeOrFail(sPadded, generation, false));
}

void AppendRaw(Bytes& bytes, const Value& value, const Column& column) {
    const auto* pValue = std::get_if<Bytes>(&value);
    if (pValue == nullptr) FailKind();
    const std::size_t nSize = FixedSize(column);
    const bool bAnyLength = column.type == ColumnType::Binary || nSize == 0;
    const std::size_t nMost = nSize == 0 ? column.nLength : nSize;
    if (pValue->size() > nMost || (!bAnyLength && pValue->size() != nSize))
        Fail(FailureKind::Constraint, "a value has another length than its column");
    Append(bytes, *pValue);
    if (column.IsFixed()) bytes.resize(bytes.size() + nSize - pValue->size());
}

}  // namespace

std::size_t FixedSize(const Column& column) {
    switch (column.type) {
        case ColumnType::Boolean:
            return 0;
        case ColumnType::Byte:
            return 1;
        case ColumnType::Integer:
            return 2;
        case ColumnType::Long:
        case ColumnType::Single:
            return 4;
        case ColumnType::Currency:
        case ColumnType::Double:
        case ColumnType::DateTime:
            return 8;
        case ColumnType::Guid:
            return 16;
        case ColumnType::Numeric:
            return 17;
        default:
            return column.nLength;
    }
}

std::int64_t DecodeWhole(const Column& column, ByteView field) {
    switch (column.type) {
        case ColumnType::Byte:
            return LoadU8(field, 0);
        case ColumnType::Integer:
            return static_cast<std::int16_t>(LoadU16(field, 0));
        case ColumnType::Long:
            return static_cast<std::int32_t>(LoadU32(field, 0));
        default:
            return static_cast<std::int64_t>(LoadLittle<8>(field, 0));
    }
}

Value DecodeValue(const Column& column, ByteView field, Generation generation) {
    const std::size_t nSize = FixedSize(column);
    switch (column.type) {
        case ColumnType::Byte:
        case ColumnType::Integer:
        case ColumnType::Long:
        case ColumnType::Currency:
            return DecodeWhole(column, field);
        case ColumnType::Single:
            return static_cast<double>(std::bit_cast<float>(LoadU32(field, 0)));
        case ColumnType::Double:
        case ColumnType::DateTime:
            return std::bit_cast<double>(LoadLittle<8>(field, 0));
        case ColumnType::Text:
            return DecodeText(field, generation);
        case ColumnType::Guid:
        case ColumnType::Numeric:
            field = Part(field, 0, nSize);
            break;
        default:
            break;
    }
    return Bytes(field.begin(), field.end());
}

Value DecodeLongValue(const Column& column, ByteView bytes, Generation generation) {
    if (column.type == ColumnType::Memo) return DecodeText(bytes, generation);
    return Bytes(bytes.begin(), bytes.end());
}

Bytes EncodeLongValue(const Column& column, const Value& value, Generation generation) {
    Bytes bytes;
    if (column.type == ColumnType::Memo) {
        const auto* psText = std::get_if<std::u16string>(&value);
        if (psText == nullptr) FailKind();
        const bool bMayCompress = (column.nExtension & ColumnCompressed) != 0;
        bytes = EncodeOrFail(*psText, generation, bMayCompress);
    } else {
        const auto* pBytes = std::get_if<Bytes>(&value);
        if (pBytes == nullptr) FailKind();
        bytes = *pBytes;
    }
    if (bytes.size() > kMostLongBytes)
        Fail(FailureKind::Constraint, "a value is too long for any column");
    return bytes;
}

void AppendValue(Bytes& bytes, const Value& value, const Column& column, Generation generation) {
    switch (column.type) {
        case ColumnType::Byte:
            return AppendInteger<std::uint8_t>(bytes, value);
        case ColumnType::Integer:
            return AppendInteger<std::int16_t>(bytes, value);
        case ColumnType::Long:
            return AppendInteger<std::int32_t>(bytes, value);
        case ColumnType::Currency:
            return AppendInteger<std::int64_t>(bytes, value);
        case ColumnType::Single:
            return AppendLittle<4>(bytes,
                                   std::bit_cast<std::uint32_t>(static_cast<float>(RealOf(value))));
        case ColumnType::Double:
        case ColumnType::DateTime:
            return AppendLittle<8>(bytes, std::bit_cast<std::uint64_t>(RealOf(value)));
        case ColumnType::Text:
            return AppendText(bytes, value, column, generation);
        default:
            return AppendRaw(bytes, value, column);
    }
}

}  // namespace nomira::jet
