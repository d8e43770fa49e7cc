#include "langtools/Ascii.h"

#include <string>

#include "langtools/CodePage.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

constexpr std::size_t kLongest = 20;  // more than two words of bytes

TEST(AsciiTest, WholeTextIsARun) {
    for (std::size_t nLength = 0; nLength <= kLongest; ++nLength) {
        EXPECT_EQ(AsciiLength(std::string_view(std::string(nLength, '\x7F'))), nLength);
        EXPECT_EQ(AsciiLength(TextView(Text(nLength, u'\x7F'))), nLength);
    }
}

TEST(AsciiTest, FirstOtherCharacterEndsTheRunWhereverItStands) {
    for (std::size_t n = 0; n < kLongest; ++n) {
        std::string bytes(kLongest, 'a');
        bytes[n] = '\x80';
        EXPECT_EQ(AsciiLength(std::string_view(bytes)), n);
        for (const char16_t c : {u'\u0080', u'\u00FC', u'\u0100', u'\u8000', u'\u6161'}) {
            Text sText(kLongest, u'a');
            sText[n] = c;
            EXPECT_EQ(AsciiLength(TextView(sText)), n) << static_cast<int>(c);
        }
    }
}

TEST(AsciiTest, PageEncodesRunsAndOthersInAnyOrder) {
    for (std::size_t n = 0; n < kLongest; ++n) {
        for (std::size_t nOther = 0; nOther < kLongest; ++nOther) {
            Text sText(kLongest, u'x');
            std::string bytes(kLongest, 'x');
            sText[n] = u'\u20AC';
            bytes[n] = '\x80';
            sText[nOther] = u'\u00E4';
            bytes[nOther] = '\xE4';
            EXPECT_EQ(Windows1252().Encode(sText), bytes);
            EXPECT_EQ(Windows1252().Decode(bytes), sText);
        }
    }
}

TEST(AsciiTest, PageWithAnotherOrderOfLettersIsNotTakenForAscii) {
    SingleBytePage::Table table{};
    for (std::size_t n = 0; n < table.size(); ++n)
        table[n] = static_cast<char16_t>(n);
    std::swap(table['a'], table['b']);
    EXPECT_EQ(SingleBytePage(1, table).Encode(u"abcabcabc"), "bacbacbac");
}

}  // namespace
}  // namespace nomira::testing
