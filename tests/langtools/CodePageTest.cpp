#include "langtools/CodePage.h"

#include <gtest/gtest.h>

#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

SingleBytePage::Table EmptyTable() {
    SingleBytePage::Table table;
    table.fill(u'\uFFFD');
    return table;
}

TEST(CodePageTest, PageOfTheControllersIs1252) {
    EXPECT_EQ(Windows1252().Number(), 1252);
    EXPECT_EQ(&SystemCodePage(), &Windows1252());
}

TEST(CodePageTest, BytesBecomeTheirCharacters) {
    EXPECT_EQ(Windows1252().Decode("T\xFCr 5\xB5m \x80 \x8A\x9F"),
              u"T\u00FCr 5\u00B5m \u20AC \u0160\u0178");
    EXPECT_EQ(Windows1252().Decode(""), u"");
    EXPECT_EQ(Windows1252().Decode(std::string_view("a\0b", 3)), Text(u"a\0b", 3));
}

TEST(CodePageTest, CharactersBecomeTheirBytes) {
    EXPECT_EQ(Windows1252().Encode(u"T\u00FCr 5\u00B5m \u20AC \u0160\u0178"),
              "T\xFCr 5\xB5m \x80 \x8A\x9F");
    EXPECT_EQ(Windows1252().Encode(Text(u"a\0b", 3)), std::string("a\0b", 3));
}

TEST(CodePageTest, CharactersOutsideOfThePageBecomeQuestionMarks) {
    EXPECT_EQ(Windows1252().Encode(u"\u03B1\u4E2D\uFFFD\u0080\u0100"), "?????");
    EXPECT_EQ(Windows1252().Encode(u"\U0001F600"), "??");
}

TEST(CodePageTest, EveryByteSurvivesARoundTrip) {
    std::string bytes;
    for (int nByte = 0; nByte < 256; ++nByte)
        bytes += static_cast<char>(nByte);
    const Text sText = Windows1252().Decode(bytes);
    EXPECT_EQ(sText.size(), 256u);
    EXPECT_EQ(Windows1252().Encode(sText), bytes);
}

TEST(CodePageTest, OpenBytesAreTheControlCharactersOfTheirNumber) {
    EXPECT_EQ(Windows1252().Decode("\x81\x8D\x8F\x90\x9D"), u"\u0081\u008D\u008F\u0090\u009D");
}

TEST(CodePageTest, HoldsWhatHasAByte) {
    for (const char16_t c : TextView(u"\0aZ\u00B5\u00FF\u20AC\u0178\u0081", 8))
        EXPECT_TRUE(Windows1252().Holds(c)) << static_cast<int>(c);
    for (const char16_t c : TextView(u"\u0080\u0100\u039C\u1E9E\uFFFD"))
        EXPECT_FALSE(Windows1252().Holds(c)) << static_cast<int>(c);
}

TEST(CodePageTest, ByteWithoutACharacterDecodesToTheReplacementCharacter) {
    SingleBytePage::Table table = EmptyTable();
    table['a'] = u'a';
    table[0xE1] = u'\u03B1';
    const SingleBytePage page(1253, table);
    EXPECT_EQ(page.Decode("a\xE1"
                          "b"),
              u"a\u03B1\uFFFD");
    EXPECT_EQ(page.Encode(u"a\u03B1b\uFFFD"), "a\xE1??");
    EXPECT_FALSE(page.Holds(u'b'));
    EXPECT_FALSE(page.Holds(u'\0'));
    EXPECT_FALSE(page.Holds(u'\uFFFD'));
}

TEST(CodePageTest, OfTwoBytesForOneCharacterTheLowerIsWritten) {
    SingleBytePage::Table table = EmptyTable();
    table[0x10] = table[0x20] = u'x';
    table[0x30] = table[0x40] = u'\u03B1';
    const SingleBytePage page(1, table);
    EXPECT_EQ(page.Encode(u"x\u03B1"), "\x10\x30");
}

TEST(CodePageTest, SystemCodePageCanBeAnother) {
    const SingleBytePage page(1, EmptyTable());
    SetSystemCodePage(&page);
    EXPECT_EQ(&SystemCodePage(), &page);
    SetSystemCodePage(nullptr);
    EXPECT_EQ(&SystemCodePage(), &Windows1252());
}

}  // namespace
}  // namespace nomira::testing
