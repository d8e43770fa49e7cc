#include "apps/nomira/CommandLine.h"

#include <vector>

#include "testing/TextPrinting.h"

namespace nomira {
namespace {

Text Join(std::vector<const char*> arguments) {
    return JoinArguments(arguments, Windows1252());
}

TEST(CommandLineTest, ArgumentsAreJoinedByOneBlank) {
    EXPECT_EQ(Join({}), u"");
    EXPECT_EQ(Join({"one"}), u"one");
    EXPECT_EQ(Join({"one", "two three", "four"}), u"one two three four");
    EXPECT_EQ(Join({""}), u"");
    EXPECT_EQ(Join({"one", "", "two"}), u"one  two");
    EXPECT_EQ(Join({"", ""}), u" ");
}

TEST(CommandLineTest, BytesBecomeCharacters) {
    struct Row {
        const char* pBytes;
        TextView sText;
    };
    const Row rows[] = {
        {"C:\\F\xC3\xBCllung.txt", u"C:\\F\u00FCllung.txt"},  // UTF-8
        {"\xE2\x82\xAC", u"\u20AC"},
        {"\xF0\x9F\x98\x80", u"\xD83D\xDE00"},            // beyond 16 bits: two
        {"C:\\F\xFCllung.txt", u"C:\\F\u00FCllung.txt"},  // a byte of the 8-bit page
        {"\x80", u"\u20AC"},
        {"\xC3", u"\u00C3"},  // cut off
        {"\xE2\x82", u"\u00E2\u201A"},
        {"\xF0\x9F\x98", u"\u00F0\u0178\u02DC"},
        {"\xC3(", u"\u00C3("},          // no second byte
        {"\xC0\xAF", u"\u00C0\u00AF"},  // longer than need be
        {"\xE0\x80\xAF", u"\u00E0\u20AC\u00AF"},
        {"\xED\xA0\x80", u"\u00ED\u00A0\u20AC"},            // half a pair
        {"\xF4\x90\x80\x80", u"\u00F4\u0090\u20AC\u20AC"},  // above the last character
        {"\xFF\xFE", u"\u00FF\u00FE"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Join({row.pBytes}), row.sText) << testing::Printable(row.sText);
}

}  // namespace
}  // namespace nomira
