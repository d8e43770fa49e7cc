#include "adapters/jet/KeyCodes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>

#include "adapters/jet/KeyTables.h"
#include "adapters/jet/TextCodes.h"

namespace nomira::jet {
namespace {

// Ahead of each column's part.
constexpr std::uint8_t kNullAscending = 0x00;
constexpr std::uint8_t kNullDescending = 0xFF;
constexpr std::uint8_t kAscending = 0x7F;
constexpr std::uint8_t kDescending = 0x80;

// ---- Numbers and bytes

template <typename T>
const T& Get(const Value& value) {
    const T* p = std::get_if<T>(&value);
    if (p == nullptr) Fail(FailureKind::Constraint, "a value isn't of its column's type");
    return *p;
}

void Invert(ByteSpan bytes) {
    for (std::uint8_t& n : bytes)
        n = static_cast<std::uint8_t>(~n);
}

template <std::size_t kBytes>
void AppendSigned(Bytes& key, const Value& value) {
    AppendBig<kBytes>(key, static_cast<std::uint64_t>(Get<std::int64_t>(value)));
    key[key.size() - kBytes] ^= 0x80U;
}

void AppendByte(Bytes& key, const Value& value) {
    key.push_back(static_cast<std::uint8_t>(Get<std::int64_t>(value)));
}

void AppendBoolean(Bytes& key, const Value& value) {
    const bool bTrue = !IsNull(value) && Get<bool>(value);
    key.push_back(bTrue ? 0x00 : 0xFF);
}

template <std::size_t kBytes>
void AppendFloating(Bytes& key, std::uint64_t nBits) {
    AppendBig<kBytes>(key, nBits);
    const ByteSpan bytes = ByteSpan(key).last(kBytes);
    if ((bytes[0] & 0x80U) != 0)
        Invert(bytes);
    else
        bytes[0] ^= 0x80U;
}

void AppendSingle(Bytes& key, const Value& value) {
    AppendFloating<4>(key, std::bit_cast<std::uint32_t>(static_cast<float>(Get<double>(value))));
}

void AppendDouble(Bytes& key, const Value& value) {
    AppendFloating<8>(key, std::bit_cast<std::uint64_t>(Get<double>(value)));
}

constexpr std::size_t kBlock = 8;
constexpr std::uint8_t kBlockGoesOn = 9;

// Blocks of eight bytes, each followed by a 9, the last by the number of its bytes. Descending, all
// of it is inverted but the nines.
void AppendBlocks(Bytes& key, ByteView bytes, bool bAscending) {
    while (!bytes.empty()) {
        const std::size_t nLength = std::min(bytes.size(), kBlock);
        const bool bLast = bytes.size() == nLength;
        const std::size_t nStart = key.size();
        Append(key, bytes.first(nLength));
        key.resize(nStart + kBlock);
        if (bLast) key.push_back(static_cast<std::uint8_t>(nLength));
        if (!bAscending) Invert(ByteSpan(key).subspan(nStart));
        if (!bLast) key.push_back(kBlockGoesOn);
        bytes = bytes.subspan(nLength);
    }
}

void AppendGuid(Bytes& key, ByteView stored, bool bAscending) {
    if (stored.size() != 16) Fail(FailureKind::Constraint, "a GUID that isn't 16 bytes long");
    Bytes guid(stored.begin(), stored.end());
    std::reverse(guid.begin(), guid.begin() + 4);
    std::reverse(guid.begin() + 4, guid.begin() + 6);
    std::reverse(guid.begin() + 6, guid.begin() + 8);
    AppendBlocks(key, guid, bAscending);
}

// Stored: the sign, then four words of 32 bits, the highest first, each little-endian. The sign is
// not inverted by a descending order: an old flaw of the format's makers that keys must share.
void AppendNumeric(Bytes& key, ByteView stored, bool bAscending) {
    if (stored.size() != 17) Fail(FailureKind::Constraint, "a number that isn't 17 bytes long");
    const bool bNegative = stored[0] != 0;
    key.push_back(bNegative ? 0x00 : 0xFF);
    for (std::size_t nWord = 1; nWord < stored.size(); nWord += 4)
        AppendBig<4>(key, LoadU32(stored, nWord));
    if (bNegative == bAscending) Invert(ByteSpan(key).last(16));
}

// ---- Text

constexpr std::size_t kMostCharacters = 255;  // that count in a key

std::u16string_view CountingPart(std::u16string_view sText) {
    sText = sText.substr(0, kMostCharacters);
    const std::size_t nLast = sText.find_last_not_of(u' ');
    return sText.substr(0, nLast == std::u16string_view::npos ? 0 : nLast + 1);
}

[[noreturn]] void FailOnCharacter() {
    Fail(FailureKind::Unsupported,
         "an indexed text has a character whose place in the sort order "
         "isn't known");
}

// Numbers of four bits, a high one first, padded to a whole byte.
void AppendDigits(Bytes& key, ByteView digits) {
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const unsigned nLow = i + 1 < digits.size() ? digits[i + 1] : 0;
        key.push_back(static_cast<std::uint8_t>(digits[i] << 4U | nLow));
    }
}

void AppendNarrowText(Bytes& key, std::u16string_view sText) {
    Bytes accents{0};
    std::size_t nUpToAccent = 0;
    for (const char16_t c : sText) {
        const std::optional<std::uint8_t> nByte = ToCodePage1252(c);
        if (!nByte) FailOnCharacter();
        const NarrowCode& code = NarrowCodeOf(*nByte);
        key.push_back(code.first);
        if (code.second != 0) key.push_back(code.second);
        accents.insert(accents.end(), code.nAccentDigits, code.nAccent);
        if (code.nAccent > kPlainLetter) nUpToAccent = accents.size();
    }
    accents.resize(nUpToAccent);
    accents.push_back(0);
    AppendDigits(key, accents);
}

// What a text's characters give beside their key bytes.
class WideText {
  public:
    void AppendTo(Bytes& key, std::u16string_view sText) {
        for (const char16_t c : sText)
            AppendCharacter(key, c);
        key.push_back(kEndOfPart);
        Append(key, m_accents);
        if (!m_asides.empty()) {
            key.insert(key.end(), 3, kEndOfPart);
            Append(key, m_asides);
        }
        key.push_back(kEndOfText);
    }

  private:
    static constexpr std::uint8_t kEndOfPart = 1;
    static constexpr std::uint8_t kEndOfText = 0;
    static constexpr std::uint8_t kNoAccent = 2;
    static constexpr std::uint8_t kAsideMark = 6;

    void AppendCharacter(Bytes& key, char16_t c) {
        const std::optional<WideCode> code = WideCodeOf(c);
        if (!code) FailOnCharacter();
        if (code->nKey != 0)
            AppendCode(key, *code);
        else if (code->nAside != 0)
            AppendAside(code->nAside);
    }

    void AppendCode(Bytes& key, const WideCode& code) {
        if (code.nKey > 0xFF) key.push_back(static_cast<std::uint8_t>(code.nKey >> 8U));
        key.push_back(static_cast<std::uint8_t>(code.nKey));
        if (code.nExtra != 0) {
            m_accents.resize(m_nCharacters, kNoAccent);
            m_accents.push_back(code.nExtra);
        }
        ++m_nCharacters;
    }

    // Stands aside with its place among the characters that have key bytes.
    void AppendAside(std::uint8_t nCode) {
        AppendBig<2>(m_asides, 0x8000U | (7 + 4 * m_nCharacters));
        m_asides.push_back(kAsideMark);
        m_asides.push_back(nCode);
    }

    std::size_t m_nCharacters = 0;
    Bytes m_accents;
    Bytes m_asides;
};

void AppendText(Bytes& key, std::u16string_view sText, bool bAscending, Generation generation) {
    const std::size_t nStart = key.size();
    if (generation == Generation::Jet3)
        AppendNarrowText(key, CountingPart(sText));
    else
        WideText().AppendTo(key, CountingPart(sText));
    if (bAscending) return;
    Invert(ByteSpan(key).subspan(nStart));
    if (generation == Generation::Jet4) key.push_back(0);
}

// ---- Columns

// Types whose descending key is the ascending one inverted.
struct PlainKey {
    ColumnType type;
    void (*append)(Bytes& key, const Value& value);
};
constexpr PlainKey kPlainKeys[] = {
    {ColumnType::Boolean, AppendBoolean},    {ColumnType::Byte, AppendByte},
    {ColumnType::Integer, AppendSigned<2>},  {ColumnType::Long, AppendSigned<4>},
    {ColumnType::Currency, AppendSigned<8>}, {ColumnType::Single, AppendSingle},
    {ColumnType::Double, AppendDouble},      {ColumnType::DateTime, AppendDouble},
};

// Types that are stored as bytes and have an order of their own for descending keys.
struct ByteKey {
    ColumnType type;
    void (*append)(Bytes& key, ByteView stored, bool bAscending);
};
constexpr ByteKey kByteKeys[] = {
    {ColumnType::Binary, AppendBlocks},
    {ColumnType::Guid, AppendGuid},
    {ColumnType::Numeric, AppendNumeric},
};

template <typename T, std::size_t kCount>
const T* OfType(const T (&table)[kCount], ColumnType type) {
    const T* pFound = std::find_if(std::begin(table), std::end(table),
                                   [&](const T& key) { return key.type == type; });
    return pFound == std::end(table) ? nullptr : pFound;
}

bool KnowsOrderOf(const Column& column, Generation generation) {
    const bool bVersionKnown = generation == Generation::Jet3 || column.nSortVersion == 0;
    return column.nSortOrder == kGeneralOrder && bVersionKnown;
}

void AppendKnown(Bytes& key, const Value& value, const Column& column, bool bAscending,
                 Generation generation) {
    if (column.IsText()) {
        AppendText(key, Get<std::u16string>(value), bAscending, generation);
    } else if (const PlainKey* pPlain = OfType(kPlainKeys, column.type)) {
        const std::size_t nStart = key.size();
        pPlain->append(key, value);
        if (!bAscending) Invert(ByteSpan(key).subspan(nStart));
    } else {
        OfType(kByteKeys, column.type)->append(key, Get<Bytes>(value), bAscending);
    }
}

}  // namespace

bool KnowsKeysOf(const Column& column, Generation generation) {
    if (column.IsText()) return KnowsOrderOf(column, generation);
    return OfType(kPlainKeys, column.type) != nullptr || OfType(kByteKeys, column.type) != nullptr;
}

void AppendKey(Bytes& key, const Value& value, const Column& column, bool bAscending,
               Generation generation) {
    if (IsNull(value) && column.type != ColumnType::Boolean) {
        key.push_back(bAscending ? kNullAscending : kNullDescending);
        return;
    }
    if (!KnowsKeysOf(column, generation))
        Fail(FailureKind::Unsupported, "a column is indexed in an order that isn't known");
    key.push_back(bAscending ? kAscending : kDescending);
    AppendKnown(key, value, column, bAscending, generation);
}

Bytes KeyOfRow(const TableDefinition& table, const RealIndex& index, std::span<const Value> values,
               Generation generation) {
    static const Value null;
    Bytes key;
    bool bAllNull = true;
    for (const IndexColumn& indexColumn : index.columns) {
        const std::size_t nColumn = table.ColumnOfNumber(indexColumn.nColumn);
        const Column& column = table.columns[nColumn];
        const Value& value = nColumn < values.size() ? values[nColumn] : null;
        const bool bNull = IsNull(value) && column.type != ColumnType::Boolean;
        if (bNull && index.IsRequired())
            Fail(FailureKind::Constraint, "an index has no place for a row without a value");
        bAllNull = bAllNull && bNull;
        AppendKey(key, value, column, indexColumn.bAscending, generation);
    }
    if (bAllNull && index.IgnoresNulls()) key.clear();
    return key;
}

}  // namespace nomira::jet
