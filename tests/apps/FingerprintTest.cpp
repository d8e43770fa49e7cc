#include "apps/nomiractl/Fingerprint.h"

#include <set>

#include "testing/TextPrinting.h"

namespace nomira::companion {
namespace {

TEST(FingerprintTest, EveryByteCountsAndSoDoesItsPlace) {
    const std::string sBytes(100, 'x');
    std::set<std::uint64_t> hashes{FingerprintOf(sBytes).nHash};
    for (std::size_t n = 0; n < sBytes.size(); ++n) {
        std::string sOther = sBytes;
        sOther[n] = 'y';
        EXPECT_TRUE(hashes.insert(FingerprintOf(sOther).nHash).second) << n;
    }
}

TEST(FingerprintTest, TrailingZerosAreBytesToo) {
    EXPECT_NE(FingerprintOf(std::string("a")), FingerprintOf(std::string("a\0", 2)));
    EXPECT_NE(FingerprintOf({}), FingerprintOf(std::string(8, '\0')));
}

// Records of old runs hold these.
TEST(FingerprintTest, ItsNumbersNeverChange) {
    EXPECT_EQ(AsText(FingerprintOf("")), "0-0000000000000000");
    EXPECT_EQ(AsText(FingerprintOf(";FOLD OUT 7 'old'")), "17-6f9e177dab5312dd");
}

TEST(FingerprintTest, ComesBackFromItsText) {
    const Fingerprint fingerprint = FingerprintOf("some bytes");
    EXPECT_EQ(FingerprintFromText(AsText(fingerprint)), fingerprint);
    for (const char* sNone : {"", "12", "12-", "-ab", "12-xyz", "12-ab ", "x-ab"})
        EXPECT_EQ(FingerprintFromText(sNone), std::nullopt) << sNone;
}

}  // namespace
}  // namespace nomira::companion
