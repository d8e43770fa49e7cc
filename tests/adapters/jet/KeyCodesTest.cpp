#include "adapters/jet/KeyCodes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace nomira::jet {
namespace {

constexpr Generation kJet3 = Generation::Jet3;
constexpr Generation kJet4 = Generation::Jet4;

Bytes Hex(std::string_view s) {
    Bytes bytes;
    std::string sDigits;
    for (const char c : s) {
        if (c == ' ') continue;
        sDigits += c;
        if (sDigits.size() < 2) continue;
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(sDigits, nullptr, 16)));
        sDigits.clear();
    }
    return bytes;
}

Column ColumnOf(ColumnType type) {
    Column column;
    column.type = type;
    return column;
}

Bytes KeyOf(const Value& value, ColumnType type, bool bAscending, Generation generation) {
    Bytes key;
    AppendKey(key, value, ColumnOf(type), bAscending, generation);
    return key;
}

std::int64_t Whole(std::int64_t n) {
    return n;
}

struct KeyCase {
    ColumnType type;
    Value value;
    std::string_view sAscending;
    std::string_view sDescending;
};

const std::vector<KeyCase>& KeyCases() {
    static const std::vector<KeyCase> cases{
        {ColumnType::Long, {}, "00", "FF"},
        {ColumnType::Text, {}, "00", "FF"},
        {ColumnType::Boolean, true, "7F 00", "80 FF"},
        {ColumnType::Boolean, false, "7F FF", "80 00"},
        {ColumnType::Boolean, {}, "7F FF", "80 00"},
        {ColumnType::Byte, Whole(0x12), "7F 12", "80 ED"},
        {ColumnType::Integer, Whole(1), "7F 8001", "80 7FFE"},
        {ColumnType::Integer, Whole(-2), "7F 7FFE", "80 8001"},
        {ColumnType::Long, Whole(0x01020304), "7F 81020304", "80 7EFDFCFB"},
        {ColumnType::Long, Whole(-1), "7F 7FFFFFFF", "80 80000000"},
        {ColumnType::Currency, Whole(10000), "7F 8000000000002710", "80 7FFFFFFFFFFFD8EF"},
        {ColumnType::Currency, Whole(-1), "7F 7FFFFFFFFFFFFFFF", "80 8000000000000000"},
        {ColumnType::Single, 1.0, "7F BF800000", "80 407FFFFF"},
        {ColumnType::Single, -1.0, "7F 407FFFFF", "80 BF800000"},
        {ColumnType::Double, 1.0, "7F BFF0000000000000", "80 400FFFFFFFFFFFFF"},
        {ColumnType::Double, -2.0, "7F 3FFFFFFFFFFFFFFF", "80 C000000000000000"},
        {ColumnType::DateTime, 36526.0, "7F C0E1D5C000000000", "80 3F1E2A3FFFFFFFFF"},
        {ColumnType::Binary, Hex(""), "7F", "80"},
        {ColumnType::Binary, Hex("0102"), "7F 0102000000000000 02", "80 FEFDFFFFFFFFFFFF FD"},
        {ColumnType::Binary, Hex("0102030405060708"), "7F 0102030405060708 08",
         "80 FEFDFCFBFAF9F8F7 F7"},
        {ColumnType::Binary, Hex("010203040506070809"),
         "7F 0102030405060708 09 0900000000000000 01",
         "80 FEFDFCFBFAF9F8F7 09 F6FFFFFFFFFFFFFF FE"},
        {ColumnType::Guid, Hex("33221100 5544 7766 8899AABBCCDDEEFF"),
         "7F 0011223344556677 09 8899AABBCCDDEEFF 08",
         "80 FFEEDDCCBBAA9988 09 7766554433221100 F7"},
        {ColumnType::Numeric, Hex("00 00000000 00000000 02000000 04030201"),
         "7F FF 00000000 00000000 00000002 01020304", "80 FF FFFFFFFF FFFFFFFF FFFFFFFD FEFDFCFB"},
        {ColumnType::Numeric, Hex("80 00000000 00000000 00000000 01000000"),
         "7F 00 FFFFFFFF FFFFFFFF FFFFFFFF FFFFFFFE", "80 00 00000000 00000000 00000000 00000001"},
    };
    return cases;
}

TEST(KeyCodesTest, EachTypeHasItsBytes) {
    for (const KeyCase& one : KeyCases()) {
        SCOPED_TRACE(one.sAscending);
        for (const Generation generation : {kJet3, kJet4}) {
            EXPECT_EQ(KeyOf(one.value, one.type, true, generation), Hex(one.sAscending));
            EXPECT_EQ(KeyOf(one.value, one.type, false, generation), Hex(one.sDescending));
        }
    }
}

// What comes first as a value comes first as bytes.
template <typename T, std::size_t kCount>
void ExpectOrder(ColumnType type, const std::array<T, kCount>& values) {
    for (std::size_t n = 0; n + 1 < kCount; ++n) {
        EXPECT_LT(KeyOf(values[n], type, true, kJet4), KeyOf(values[n + 1], type, true, kJet4));
        EXPECT_GT(KeyOf(values[n], type, false, kJet4), KeyOf(values[n + 1], type, false, kJet4));
    }
    EXPECT_LT(KeyOf({}, type, true, kJet4), KeyOf(values[0], type, true, kJet4));
    EXPECT_GT(KeyOf({}, type, false, kJet4), KeyOf(values[0], type, false, kJet4));
}

TEST(KeyCodesTest, KeysOrderLikeTheirValues) {
    ExpectOrder(ColumnType::Long, std::array{Whole(-2147483648), Whole(-5), Whole(0), Whole(7)});
    ExpectOrder(ColumnType::Double, std::array{-1e300, -1.5, -1e-9, 0.0, 1e-9, 2.5, 1e300});
    ExpectOrder(ColumnType::Single, std::array{-1e30, -1.5, 0.0, 2.5});
    ExpectOrder(ColumnType::Text, std::array<std::u16string, 5>{u"", u"a", u"a1", u"AB", u"b"});
}

struct TextCase {
    std::u16string_view sText;
    std::string_view sKey;
};

// ---- Jet 3

constexpr TextCase kNarrowCases[] = {
    {u"", "7F 00"},
    {u"Key 1", "7F 6C667D 11 57 00"},
    {u"kEY 1", "7F 6C667D 11 57 00"},
    {u"Key 1   ", "7F 6C667D 11 57 00"},
    {u"  x", "7F 1111 7C 00"},
    {u"\u00A0x\t", "7F 11 7C 11 00"},
    {u"São", "7F 766072 0270"},
    {u"é", "7F 66 0400"},
    {u"née", "7F 706666 0240"},
    {u"xé", "7F 7C66 0400"},
    {u"àáâäãåçš", "7F 6060606060606276 03 45 67 89 A0"},
    {u"Straße", "7F 767775607676 66 00"},
    {u"ßé", "7F 767666 0224 00"},
    {u"Æé", "7F 606666 0224 00"},
    {u"ÐØÞ", "7F 65817F 00"},
    {u"019", "7F 56575F 00"},
    {u"¹²³", "7F 575859 00"},
    {u"!\"'/:~", "7F 12 13 18 20 21 31 00"},
    {u"\u2018\u201E\u00AB\u2014\u00AD", "7F 18 13 13 1E 1E 00"},
    {u"\u0192\u2026\u00BF\u00D7\u00F7", "7F 32 33 53 54 55 00"},
    {u"\u2022\u02DC\u2122\u00A1\u00AA\u00AC\u00AE\u00B1\u00B4\u00B8\u00BA\u00BC",
     "7F 38 39 3A 3B 44 45 46 49 4A 4E 4F 50 00"},
    {std::u16string_view(u"\u0000\u0001\u007F", 3), "7F 101010 00"},
    {u"€", "7F 10 00"},
};

TEST(KeyCodesTest, TextOfJet3) {
    for (const TextCase& one : kNarrowCases) {
        SCOPED_TRACE(one.sKey);
        EXPECT_EQ(KeyOf(std::u16string(one.sText), ColumnType::Text, true, kJet3), Hex(one.sKey));
    }
}

TEST(KeyCodesTest, DescendingTextOfJet3IsInvertedWhole) {
    EXPECT_EQ(KeyOf(std::u16string(u"Key 1"), ColumnType::Text, false, kJet3),
              Hex("80 939982 EE A8 FF"));
    EXPECT_EQ(KeyOf(std::u16string(u"São"), ColumnType::Text, false, kJet3), Hex("80 899F8D FD8F"));
}

// ---- Jet 4

constexpr TextCase kWideCases[] = {
    {u"", "7F 01 00"},
    {u"KEY-3", "7F 5C51763C 01 010101 80130682 00"},
    {u"key-3  ", "7F 5C51763C 01 010101 80130682 00"},
    {u"née", "7F 625151 01 020E 00"},
    {u"Straße", "7F 6B6D694A6B6B51 01 00"},
    {u"AZaz09", "7F 4A784A783648 01 00"},
    {u"x_y z", "7F 75 2B03 76 07 78 01 00"},
    {u"a'b-c", "7F 4A4C4D 01 010101 800B0680 800F0682 00"},
    {u"é-é", "7F 5151 01 0E0E 0101 01 800B0682 00"},
    {u"éa-", "7F 514A 01 0E 010101 800F0682 00"},
    {u"Ærø", "7F 4A516964 01 020221 00"},
    {u"ÀÁÂÃÄÅÇ", "7F 4A4A4A4A4A4A4D 01 0F0E1219131A1C 00"},
    {u"ŁŦŉ", "7F 5E6E0662 01 1F1E48 00"},
    {u"Őű", "7F 646F 01 1D1D 00"},
    {u"ΑΡΣΩας", "7F 790C 791C 791D 7923 790C 791D 01 00"},
    {u"Ά", "7F 790C 01 05 00"},
    {u"АЯаяЁђ", "7F 792F 795C 792F 795C 7936 7935 01 0202020213 00"},
    {u"€™…", "7F 35A1 6E04 34B9 01 00"},
    {u"\t\r\u00A0", "7F 0803 0807 0802 01 00"},
    {std::u16string_view(u"a\u0000b", 3), "7F 4A4C 01 00"},
    {u"\u0001\u001F\u007F\u009F\u00AD",
     "7F 01 010101 80070603 8007061C 8007061D 8007063D 80070683 00"},
    {u"\u2010\u2011\u2012\u2013\u2014\u2015\u2027",
     "7F 01 010101 80070684 80070685 80070688 80070689 8007068B 8007068C 80070686 00"},
    {u"\uFF21\uFF01\uFF5E", "7F 4A 09 2B0F 01 00"},
    {u"¼¹ª", "7F 3712 38 4A 01 020203 00"},
};

TEST(KeyCodesTest, TextOfJet4) {
    for (const TextCase& one : kWideCases) {
        SCOPED_TRACE(one.sKey);
        EXPECT_EQ(KeyOf(std::u16string(one.sText), ColumnType::Text, true, kJet4), Hex(one.sKey));
    }
}

TEST(KeyCodesTest, DescendingTextOfJet4EndsInAZeroOfItsOwn) {
    EXPECT_EQ(KeyOf(std::u16string(u"née"), ColumnType::Text, false, kJet4),
              Hex("80 9DAEAE FE FDF1 FF 00"));
}

TEST(KeyCodesTest, LettersOfBothCasesAreTheSame) {
    const std::u16string_view sUpper = u"ÆŒŊĆĎĔĖĘĜĤĴĶĽŅŎŖŜŢŨŮŲŶŹŻЖЏЉΠΫ";
    const std::u16string_view sLower = u"æœŋćďĕėęĝĥĵķľņŏŗŝţũůųŷźżжџљπϋ";
    for (std::size_t n = 0; n < sUpper.size(); ++n) {
        SCOPED_TRACE(n);
        EXPECT_EQ(KeyOf(std::u16string(1, sUpper[n]), ColumnType::Text, true, kJet4),
                  KeyOf(std::u16string(1, sLower[n]), ColumnType::Text, true, kJet4));
    }
}

// ---- Both

TEST(KeyCodesTest, AMemoHasTheKeyOfATextAndCountsTo255) {
    const std::u16string sLong(300, u'x');
    for (const Generation generation : {kJet3, kJet4}) {
        const Bytes key = KeyOf(sLong, ColumnType::Memo, true, generation);
        EXPECT_EQ(key, KeyOf(sLong.substr(0, 255), ColumnType::Text, true, generation));
        EXPECT_NE(key, KeyOf(sLong.substr(0, 254), ColumnType::Text, true, generation));
    }
}

TEST(KeyCodesTest, BlanksBehindTheLastCountingCharacterGoToo) {
    const std::u16string sLong = std::u16string(200, u'x') + std::u16string(60, u' ') + u'y';
    EXPECT_EQ(KeyOf(sLong, ColumnType::Text, true, kJet4),
              KeyOf(sLong.substr(0, 200), ColumnType::Text, true, kJet4));
}

FailureKind KindOfFailure(const auto& run) {
    try {
        run();
    } catch (const Failure& failure) {
        return failure.Kind();
    }
    ADD_FAILURE() << "nothing was raised";
    return FailureKind::InputOutput;
}

TEST(KeyCodesTest, UnknownCharactersAreRefused) {
    for (const char16_t c : {u'\u0100', u'\u0416'})
        EXPECT_EQ(
            KindOfFailure([&] { KeyOf(std::u16string(1, c), ColumnType::Text, true, kJet3); }),
            FailureKind::Unsupported);
    for (const char16_t c :
         {u'\u4E00', u'\u3042', u'\u05D0', static_cast<char16_t>(0xD800), u'\u0400', u'\u0180'})
        EXPECT_EQ(
            KindOfFailure([&] { KeyOf(std::u16string(1, c), ColumnType::Text, true, kJet4); }),
            FailureKind::Unsupported);
}

TEST(KeyCodesTest, OtherSortOrdersAreRefused) {
    Column swedish = ColumnOf(ColumnType::Text);
    swedish.nSortOrder = 0x041D;
    Column newer = ColumnOf(ColumnType::Text);
    newer.nSortVersion = 0x0100;
    Column number = ColumnOf(ColumnType::Long);
    number.nSortOrder = 0x041D;
    EXPECT_FALSE(KnowsKeysOf(swedish, kJet3));
    EXPECT_FALSE(KnowsKeysOf(swedish, kJet4));
    EXPECT_FALSE(KnowsKeysOf(newer, kJet4));
    EXPECT_TRUE(KnowsKeysOf(number, kJet4));
    EXPECT_TRUE(KnowsKeysOf(ColumnOf(ColumnType::Memo), kJet3));
    EXPECT_FALSE(KnowsKeysOf(ColumnOf(ColumnType::Ole), kJet3));
    Bytes key;
    EXPECT_EQ(KindOfFailure([&] { AppendKey(key, std::u16string(u"a"), swedish, true, kJet4); }),
              FailureKind::Unsupported);
    EXPECT_NO_THROW(AppendKey(key, {}, swedish, true, kJet4));
}

TEST(KeyCodesTest, AValueOfAnotherTypeIsRefused) {
    EXPECT_EQ(KindOfFailure([] { KeyOf(std::u16string(u"1"), ColumnType::Long, true, kJet4); }),
              FailureKind::Constraint);
    EXPECT_EQ(KindOfFailure([] { KeyOf(Bytes(15), ColumnType::Guid, true, kJet4); }),
              FailureKind::Constraint);
}

// ---- Rows

class KeyOfRowTest : public ::testing::Test {
  protected:
    KeyOfRowTest() {
        m_table.columns = {ColumnOf(ColumnType::Long), ColumnOf(ColumnType::Integer),
                           ColumnOf(ColumnType::Boolean)};
        // The order of the file needn't be that of the numbers.
        m_table.columns[0].nNumber = 5;
        m_table.columns[1].nNumber = 2;
        m_table.columns[2].nNumber = 9;
        m_index.columns = {{2, true}, {5, false}};
    }

    Bytes Key(const std::vector<Value>& row) { return KeyOfRow(m_table, m_index, row, kJet4); }

    TableDefinition m_table;
    RealIndex m_index;
};

TEST_F(KeyOfRowTest, ColumnsFollowOneAnother) {
    EXPECT_EQ(Key({Whole(1), Whole(2), true}), Hex("7F 8002 80 7FFFFFFE"));
}

TEST_F(KeyOfRowTest, ColumnsThatARowLacksAreNull) {
    EXPECT_EQ(Key({Whole(1)}), Hex("00 80 7FFFFFFE"));
    EXPECT_EQ(Key({}), Hex("00 FF"));
}

TEST_F(KeyOfRowTest, AnIndexMayIgnoreRowsThatAreAllNull) {
    m_index.nFlags = IndexIgnoresNulls;
    EXPECT_TRUE(Key({{}, {}, true}).empty());
    EXPECT_EQ(Key({{}, Whole(2), true}), Hex("7F 8002 FF"));
    m_index.columns.push_back({9, true});
    EXPECT_EQ(Key({}), Hex("00 FF 7F FF"));
}

TEST_F(KeyOfRowTest, AnIndexMayRefuseNull) {
    m_index.nFlags = IndexRequired | IndexUnique;
    EXPECT_EQ(KindOfFailure([&] { Key({{}, Whole(2), true}); }), FailureKind::Constraint);
    EXPECT_NO_THROW(Key({Whole(1), Whole(2)}));
}

TEST_F(KeyOfRowTest, AnIndexThatNamesNoColumnIsDamage) {
    m_index.columns = {{7, true}};
    EXPECT_EQ(KindOfFailure([&] { Key({}); }), FailureKind::Damaged);
}

}  // namespace
}  // namespace nomira::jet
