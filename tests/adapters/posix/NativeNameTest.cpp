#include "adapters/posix/NativeName.h"

#include <string>

#include "testing/Random.h"
#include "testing/TextPrinting.h"

namespace nomira::posix {
namespace {

TEST(NativeNameTest, NamesAreUtf8) {
    const struct {
        std::string bytes;
        Text sText;
    } rows[] = {
        {"", u""},
        {"plain.txt", u"plain.txt"},
        {"F\xC3\xBC", u"Fü"},
        {"\xE2\x82\xAC", u"€"},
        {"\xF0\x9F\x99\x82", u"\U0001F642"},
        {"\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF", u"\u007F\u0080\u07FF\u0800\uFFFF"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(FromNative(row.bytes), row.sText);
        EXPECT_EQ(ToNative(row.sText), row.bytes);
    }
}

TEST(NativeNameTest, AByteThatIsNoUtf8IsKept) {
    const char* const names[] = {
        "F\xFC",             // Latin-1
        "\xC3",              // broken off
        "\xE2\x82",          // broken off
        "\xC0\xAF",          // longer than need be
        "\xE0\x80\x80",      // longer than need be
        "\xED\xA0\x80",      // half a surrogate pair
        "\xF4\x90\x80\x80",  // beyond the last character
        "\xF8\x88\x80\x80\x80",
        "\xFE\xFF",
        "a\x80z",
    };
    for (const std::string bytes : names) {
        const Text sText = FromNative(bytes);
        EXPECT_EQ(ToNative(sText), bytes);
        EXPECT_EQ(sText.size(), bytes.size());
    }
    EXPECT_EQ(FromNative("F\xFC"), Text({u'F', char16_t{0xDCFC}}));
}

TEST(NativeNameTest, HalfAPairThatStandsForNoByteIsReplaced) {
    EXPECT_EQ(ToNative(Text({char16_t{0xD83D}})), "\xEF\xBF\xBD");
    EXPECT_EQ(ToNative(Text({char16_t{0xDE42}, u'x'})), "\xEF\xBF\xBDx");
}

TEST(NativeNameTest, AnyBytesComeBackAsTheyWere) {
    nomira::testing::Random random;
    SCOPED_TRACE(random.Seed());
    for (int n = 0; n < 2000; ++n) {
        std::string bytes(random.UpTo(12), ' ');
        for (char& c : bytes)
            c = static_cast<char>(random.UpTo(3) ? 0x80 + random.UpTo(0x7F) : random.UpTo(0x7F));
        ASSERT_EQ(ToNative(FromNative(bytes)), bytes);
    }
}

}  // namespace
}  // namespace nomira::posix
