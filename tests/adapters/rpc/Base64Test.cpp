#include "adapters/rpc/Base64.h"

#include "testing/TextPrinting.h"

namespace nomira::rpc {
namespace {

struct Row {
    const char* sBytes;
    const char* sText;
};

// From the format's own description.
constexpr Row kRows[] = {{"", ""},
                         {"f", "Zg=="},
                         {"fo", "Zm8="},
                         {"foo", "Zm9v"},
                         {"foob", "Zm9vYg=="},
                         {"fooba", "Zm9vYmE="},
                         {"foobar", "Zm9vYmFy"}};

TEST(Base64Test, WritesThreeBytesAsFourCharacters) {
    for (const Row& row : kRows)
        EXPECT_EQ(ToBase64(row.sBytes), row.sText);
}

TEST(Base64Test, ReadsWhatItWrites) {
    for (const Row& row : kRows)
        EXPECT_EQ(FromBase64(row.sText), row.sBytes);
}

TEST(Base64Test, EveryByteSurvives) {
    std::string sBytes;
    for (int n = 0; n < 256; ++n) {
        sBytes += static_cast<char>(n);
        EXPECT_EQ(FromBase64(ToBase64(sBytes)), sBytes);
    }
}

TEST(Base64Test, RefusesWhatNoBytesGive) {
    for (const char* sText : {"Z", "Zg", "Zg=", "Zg===", "=", "====", "Zg==Zg==", "Z===", "Zm9v\n",
                              "Zm 9", "Zm9-", "Zh==", "Zm9=", "\xC3\xA4g="})
        EXPECT_EQ(FromBase64(sText), std::nullopt) << sText;
}

}  // namespace
}  // namespace nomira::rpc
