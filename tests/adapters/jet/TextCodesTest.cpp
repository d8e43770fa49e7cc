#include "adapters/jet/TextCodes.h"

#include <gtest/gtest.h>

#include <set>

namespace nomira::jet {
namespace {

std::u16string Decoded4(const Bytes& bytes) {
    return DecodeText(bytes, Generation::Jet4);
}

Bytes Encoded4(std::u16string_view sText, bool bMayCompress = true) {
    return EncodeText(sText, Generation::Jet4, bMayCompress).value();
}

TEST(TextCodesTest, TheCodePageIsThere) {
    struct Pair {
        int nByte;
        char16_t c;
    };
    constexpr Pair kPairs[] = {
        {0x00, 0},      {0x41, u'A'},   {0x7F, 0x7F},   {0x80, 0x20AC}, {0x82, 0x201A},
        {0x83, 0x0192}, {0x84, 0x201E}, {0x85, 0x2026}, {0x86, 0x2020}, {0x87, 0x2021},
        {0x88, 0x02C6}, {0x89, 0x2030}, {0x8A, 0x0160}, {0x8B, 0x2039}, {0x8C, 0x0152},
        {0x8E, 0x017D}, {0x91, 0x2018}, {0x92, 0x2019}, {0x93, 0x201C}, {0x94, 0x201D},
        {0x95, 0x2022}, {0x96, 0x2013}, {0x97, 0x2014}, {0x98, 0x02DC}, {0x99, 0x2122},
        {0x9A, 0x0161}, {0x9B, 0x203A}, {0x9C, 0x0153}, {0x9E, 0x017E}, {0x9F, 0x0178},
        {0xA0, 0x00A0}, {0xE4, u'ä'},   {0xDF, u'ß'},   {0xFF, u'ÿ'}};
    for (const Pair& pair : kPairs) {
        EXPECT_EQ(FromCodePage1252(static_cast<std::uint8_t>(pair.nByte)), pair.c) << pair.nByte;
        EXPECT_EQ(ToCodePage1252(pair.c), pair.nByte) << pair.nByte;
    }
}

TEST(TextCodesTest, EveryByteIsACharacterOfItsOwn) {
    std::set<char16_t> seen;
    for (int nByte = 0; nByte < 256; ++nByte) {
        const char16_t c = FromCodePage1252(static_cast<std::uint8_t>(nByte));
        EXPECT_TRUE(seen.insert(c).second) << nByte;
        EXPECT_EQ(ToCodePage1252(c), nByte);
    }
    for (const char16_t c : {u'Ω', u'Ж', u'\x0080', u'\x0099', u'\xFEFF'})
        EXPECT_EQ(ToCodePage1252(c), std::nullopt);
}

TEST(TextCodesTest, Jet3TextsAreInTheCodePage) {
    EXPECT_EQ(EncodeText(u"Tür – 5 €", Generation::Jet3, true),
              (Bytes{'T', 0xFC, 'r', ' ', 0x96, ' ', '5', ' ', 0x80}));
    EXPECT_EQ(DecodeText(Bytes{0xFF, 0xFE, 'a'}, Generation::Jet3), u"ÿþa");
    EXPECT_EQ(EncodeText(u"Ωmega", Generation::Jet3, true), std::nullopt);
    EXPECT_EQ(EncodeText(u"", Generation::Jet3, true), Bytes());
}

TEST(TextCodesTest, Jet4TextsOfThreeAndMoreNarrowCharactersAreCompressed) {
    EXPECT_EQ(Encoded4(u"ab"), (Bytes{'a', 0, 'b', 0}));
    EXPECT_EQ(Encoded4(u"aÿb"), (Bytes{0xFF, 0xFE, 'a', 0xFF, 'b'}));
    EXPECT_EQ(Encoded4(u"aÿb", false), (Bytes{'a', 0, 0xFF, 0, 'b', 0}));
    EXPECT_EQ(Encoded4(u"ab€"), (Bytes{'a', 0, 'b', 0, 0xAC, 0x20}));
    EXPECT_EQ(Encoded4(std::u16string(u"ab\0", 3)).size(), 6U);
    EXPECT_EQ(Encoded4(std::u16string(1024, u'x')).size(), 1026U);
    EXPECT_EQ(Encoded4(std::u16string(1025, u'x')).size(), 2050U);
}

TEST(TextCodesTest, Jet4TextsComeBack) {
    for (const std::u16string_view sText :
         {u"", u"a", u"ab", u"abc", u"Öl", u"Ölstand", u"Ω", u"5 € netto", u"\xD83D\xDE00 smile"})
        for (const bool bMayCompress : {false, true})
            EXPECT_EQ(Decoded4(Encoded4(sText, bMayCompress)), sText);
}

TEST(TextCodesTest, ACompressedTextMayTurnToTwoBytesAndBack) {
    EXPECT_EQ(Decoded4({0xFF, 0xFE, 'a', 0, 0xA9, 0x03, 0xAC, 0x20, 0, 'b', 'c'}), u"aΩ€bc");
    EXPECT_EQ(Decoded4({0xFF, 0xFE, 'a', 0, 0xA9, 0x03}), u"aΩ");
    EXPECT_EQ(Decoded4({0xFF, 0xFE, 'a', 0, 0xA9}), u"a");
    EXPECT_EQ(Decoded4({0xFF, 0xFE}), u"");
    EXPECT_EQ(Decoded4({0xFF}), u"");
    EXPECT_EQ(Decoded4({'a', 0, 'b'}), u"a");
}

TEST(TextCodesTest, AsciiIsFoundWhereItStands) {
    const auto ascii = [](const Bytes& stored,
                          Generation generation) -> std::optional<std::string> {
        Bytes room;
        const auto found = AsciiOf(stored, generation, room);
        if (!found) return std::nullopt;
        return std::string(found->begin(), found->end());
    };
    EXPECT_EQ(ascii({'a', '~', 1, 0x7F}, Generation::Jet3), "a~\x01\x7F");
    EXPECT_EQ(ascii({0xFF, 0xFE, 'a', 'b', 'c'}, Generation::Jet4), "abc");
    for (const Bytes& other : {Bytes{}, Bytes{'a', 0x80}, Bytes{'a', 0}, Bytes{0xFF, 0xFE, 'a'}})
        EXPECT_EQ(ascii(other, Generation::Jet3), std::nullopt);
    EXPECT_EQ(ascii({'I', 0, 'O', 0}, Generation::Jet4), "IO");
    for (const Bytes& other :
         {Bytes{}, Bytes{'a', 0, 0xE4, 0}, Bytes{'a', 1}, Bytes{0, 0}, Bytes{0xFF, 0xFE},
          Bytes{0xFF, 0xFE, 'a', 0, 0xA9, 3}, Bytes{0xFF, 0xFE, 'a', 0xE4}})
        EXPECT_EQ(ascii(other, Generation::Jet4), std::nullopt);
}

TEST(TextCodesTest, ATextThatWouldPassForACompressedOneIsRefused) {
    EXPECT_EQ(EncodeText(u"\xFEFFhello", Generation::Jet4, true), std::nullopt);
    EXPECT_NE(EncodeText(u"hello\xFEFF", Generation::Jet4, true), std::nullopt);
}

}  // namespace
}  // namespace nomira::jet
