#include "adapters/wx/WxText.h"

#include "testing/TextPrinting.h"

namespace nomira::wx {
namespace {

TEST(WxTextTest, CharactersGoThereAndBack) {
    for (const TextView sText : {u"", u"abc", u"äöüß µ €", u"\U0001F600 x", u"\uFFFD"})
        EXPECT_EQ(FromWx(ToWx(sText)), sText);
    EXPECT_EQ(ToWx(u"\U0001F600").length(), 1U);
}

TEST(WxTextTest, HalfAPairIsShownAsAReplacement) {
    EXPECT_EQ(FromWx(ToWx(Text(1, char16_t{0xD83D}))), u"\uFFFD");
    EXPECT_EQ(FromWx(ToWx(Text(1, char16_t{0xDE00}) + u"x")), u"\uFFFDx");
}

TEST(WxTextTest, LineEndsAreTheToolkitsThereAndTheProgramsHere) {
    EXPECT_EQ(FromWx(ToWxLines(u"a\r\nb\rc\nd\r")), u"a\nb\nc\nd\n");
    EXPECT_EQ(FromWxLines(wxString("a\nb\n")), u"a\r\nb\r\n");
}

TEST(WxTextTest, AnAmpersandInACaptionIsNoShortcut) {
    EXPECT_EQ(ToWxCaption(u"a & b"), "a && b");
}

}  // namespace
}  // namespace nomira::wx
