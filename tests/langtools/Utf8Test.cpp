#include "langtools/Utf8.h"

#include "testing/Random.h"
#include "testing/TextPrinting.h"

namespace nomira {
namespace {

struct Pair {
    Text sText;
    std::string sBytes;
};

const Text kHigh(1, char16_t{0xD83E});
const Text kLow(1, char16_t{0xDD16});

const std::vector<Pair> kPairs{
    {u"", ""},
    {u"abc", "abc"},
    {Text(u"a\0b", 3), std::string("a\0b", 3)},
    {u"\u007F\u0080", "\x7F\xC2\x80"},
    {u"äß", "\xC3\xA4\xC3\x9F"},
    {u"\u07FF\u0800", "\xDF\xBF\xE0\xA0\x80"},
    {u"€\uFFFF", "\xE2\x82\xAC\xEF\xBF\xBF"},
    {u"\U00010000", "\xF0\x90\x80\x80"},
    {u"\U0001F916", "\xF0\x9F\xA4\x96"},
    {u"\U0010FFFF", "\xF4\x8F\xBF\xBF"},
    // A surrogate alone, and two in the wrong order.
    {kHigh, "\xED\xA0\xBE"},
    {kHigh + u"x", "\xED\xA0\xBEx"},
    {kLow, "\xED\xB4\x96"},
    {kLow + kHigh, "\xED\xB4\x96\xED\xA0\xBE"},
    {kHigh + kHigh + kLow, "\xED\xA0\xBE\xF0\x9F\xA4\x96"},
};

TEST(Utf8Test, TextBecomesBytes) {
    for (const Pair& pair : kPairs)
        EXPECT_EQ(ToUtf8(pair.sText), pair.sBytes) << ::testing::PrintToString(pair.sText);
}

TEST(Utf8Test, BytesBecomeText) {
    for (const Pair& pair : kPairs)
        EXPECT_EQ(FromUtf8(pair.sBytes), pair.sText);
}

TEST(Utf8Test, BytesOfNoCharacterAreReplaced) {
    const Text sBad(1, u'\uFFFD');
    const std::vector<Pair> rows{
        {sBad, "\x80"},             // continues nothing
        {sBad, "\xC3"},             // ends too early
        {sBad + sBad, "\xE2\x82"},  //
        {sBad + u"a",
         "\xC3"
         "a"},                                            // interrupted
        {sBad + sBad, "\xC0\x80"},                        // longer than need be
        {sBad + sBad + sBad, "\xE0\x80\x80"},             //
        {sBad + sBad + sBad + sBad, "\xF0\x8F\xBF\xBF"},  //
        {sBad + sBad + sBad + sBad, "\xF4\x90\x80\x80"},  // beyond the last character
        {sBad, "\xF8"},
        {sBad + u"ä", "\xFF\xC3\xA4"},
    };
    for (const Pair& row : rows)
        EXPECT_EQ(FromUtf8(row.sBytes), row.sText) << ::testing::PrintToString(row.sBytes);
}

TEST(Utf8Test, AnySixteenBitTextComesBack) {
    testing::Random random;
    for (int nRound = 0; nRound < 2000; ++nRound) {
        Text sText;
        for (std::size_t n = random.UpTo(12); n > 0; --n)
            // Surrogates more often than by chance.
            sText += static_cast<char16_t>(random.UpTo(2) == 0 ? 0xD800 + random.UpTo(0x7FF)
                                                               : random.UpTo(0xFFFF));
        ASSERT_EQ(FromUtf8(ToUtf8(sText)), sText) << random.Seed();
    }
}

TEST(Utf8Test, AnyBytesBecomeSomeText) {
    testing::Random random;
    for (int nRound = 0; nRound < 2000; ++nRound) {
        std::string sBytes;
        for (std::size_t n = random.UpTo(12); n > 0; --n)
            sBytes += static_cast<char>(random.UpTo(255));
        EXPECT_LE(FromUtf8(sBytes).size(), sBytes.size());
        EXPECT_EQ(FromUtf8(sBytes).empty(), sBytes.empty());
    }
}

}  // namespace
}  // namespace nomira
