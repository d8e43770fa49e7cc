#include "adapters/jet/Header.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>

#include "adapters/jet/Rc4.h"

namespace nomira::jet {
namespace {

TEST(Rc4Test, TheMaskOfTheHeaderBeginsAsInEveryFile) {
    Bytes bytes(8);
    ApplyRc4(0x6B39DAC7, bytes);
    EXPECT_EQ(bytes, (Bytes{0xB5, 0x6F, 0x03, 0x62, 0x61, 0x08, 0xC2, 0x55}));
    ApplyRc4(0x6B39DAC7, bytes);
    EXPECT_EQ(bytes, Bytes(8));
}

class HeaderTest : public ::testing::TestWithParam<Generation> {
  protected:
    bool IsJet3() const { return GetParam() == Generation::Jet3; }
    FailureKind FailureOf(ByteView page) {
        try {
            ReadHeader(page);
        } catch (const Failure& failure) {
            return failure.Kind();
        }
        ADD_FAILURE() << "no failure";
        return FailureKind::Held;
    }
    // Changes a byte behind the mask.
    void Poke(std::size_t nPlace, std::uint8_t nValue) {
        MaskHeader(m_page, GetParam());
        m_page[nPlace] = nValue;
        MaskHeader(m_page, GetParam());
    }

    Bytes m_page = NewHeader(GetParam());
};

TEST_P(HeaderTest, ANewHeaderTellsWhatItIs) {
    EXPECT_EQ(m_page.size(), IsJet3() ? 2048U : 4096U);
    EXPECT_EQ(GenerationOf(ByteView(m_page).first(kSignatureBytes)), GetParam());
    const Header header = ReadHeader(m_page);
    EXPECT_EQ(header.generation, GetParam());
    EXPECT_EQ(header.nKey, 0U);
    EXPECT_FALSE(header.bHasPassword);
    EXPECT_EQ(header.nCollation, 0);
    EXPECT_EQ(header.nSortOrder, 0x0409);
    EXPECT_EQ(header.nSortVersion, 0);
    EXPECT_EQ(header.nCodePage, 1252);
    EXPECT_EQ(header.nBuild, IsJet3() ? 3428U : 8618U);
    EXPECT_FALSE(WasInterrupted(m_page, GetParam()));
}

TEST_P(HeaderTest, PlacesBehindTheMaskAreTheMakers) {
    MaskHeader(m_page, GetParam());
    EXPECT_EQ(LoadU32(m_page, 0x18), 0x100U);
    EXPECT_EQ(LoadU32(m_page, 0x1C), 0x101U);
    for (std::uint32_t n = 0; n < 4; ++n)
        EXPECT_EQ(LoadU32(m_page, 0x20 + 4 * n), 2 + n);
    EXPECT_EQ(LoadU16(m_page, IsJet3() ? 0x3A : 0x6E), 0x0409);
    EXPECT_EQ(LoadU32(m_page, IsJet3() ? 0x56 : 0x6A), IsJet3() ? 3428U : 8618U);
    if (IsJet3()) return;
    EXPECT_EQ(LoadU32(m_page, 0x42), 0x94FFU);  // the day of creation, 38143
    EXPECT_EQ(LoadU32(m_page, 0x66), 0x94FFU);
    EXPECT_EQ(LoadU32(m_page, 0x98), 0x654U);
    EXPECT_EQ(LoadU32(m_page, 0x9C), 0x302E34U);
}

TEST_P(HeaderTest, CountersOfCommitsFillThePagesEnd) {
    const std::size_t nPlace = CommitCounterPlace(GetParam());
    EXPECT_EQ(nPlace + 512, m_page.size());
    EXPECT_EQ(LoadU16(m_page, nPlace), 0x0101);
    for (std::size_t n = 2; n < 512; n += 2)
        ASSERT_EQ(LoadU16(m_page, nPlace + n), 0x0100);
    EXPECT_EQ(CommitCounter(m_page, GetParam()), 0x0101);
    SetCommitCounter(m_page, GetParam(), 0);
    EXPECT_TRUE(WasInterrupted(m_page, GetParam()));
    SetCommitCounter(m_page, GetParam(), NextCommitCounter(0x0101));
    EXPECT_EQ(CommitCounter(m_page, GetParam()), 0x0102);
    EXPECT_EQ(NextCommitCounter(0xFFFF), 0x0100);
    EXPECT_FALSE(WasInterrupted(m_page, GetParam()));
    StoreU16(m_page, nPlace + 34, 0x00FF);
    EXPECT_TRUE(WasInterrupted(m_page, GetParam()));
}

TEST_P(HeaderTest, AKeyAndAPasswordAreSeen) {
    Poke(0x3E, 0x21);
    EXPECT_EQ(ReadHeader(m_page).nKey, 0x21U);
    EXPECT_FALSE(ReadHeader(m_page).bHasPassword);
    Poke(0x44, 0x70);
    EXPECT_TRUE(ReadHeader(m_page).bHasPassword);
}

TEST(Jet4HeaderTest, ADateThatIsNoneDoesNoHarm) {
    Bytes page = NewHeader(Generation::Jet4);
    MaskHeader(page, Generation::Jet4);
    StoreLittle<8>(page, 0x72, 0x7FF8000000000000);
    MaskHeader(page, Generation::Jet4);
    EXPECT_TRUE(ReadHeader(page).bHasPassword);
}

TEST_P(HeaderTest, OtherFilesAreRefusedByName) {
    Bytes page = m_page;
    page[0x14] = 2;
    EXPECT_EQ(GenerationOf(page), std::nullopt);
    EXPECT_EQ(FailureOf(page), FailureKind::Unsupported);
    page = m_page;
    const std::string_view sOther = "Standard ACE DB";
    std::copy(sOther.begin(), sOther.end(), page.begin() + 4);
    EXPECT_EQ(FailureOf(page), FailureKind::Unsupported);
    page = m_page;
    page[4] = 's';
    EXPECT_EQ(FailureOf(page), FailureKind::Damaged);
    page = m_page;
    page[1] = 0;
    EXPECT_EQ(GenerationOf(page), std::nullopt);
    EXPECT_EQ(FailureOf(Bytes()), FailureKind::Damaged);
    EXPECT_EQ(FailureOf(ByteView(m_page).first(100)), FailureKind::Damaged);
    EXPECT_EQ(GenerationOf(ByteView(m_page).first(kSignatureBytes - 1)), std::nullopt);
}

TEST_P(HeaderTest, OwnersAreMaskedInJet4Alone) {
    EXPECT_EQ(OwnerBytes(OwnerId::Admin, GetParam()),
              IsJet3() ? (Bytes{0x03, 0x01}) : (Bytes{0xA6, 0x33}));
    EXPECT_EQ(OwnerBytes(OwnerId::Users, GetParam()),
              IsJet3() ? (Bytes{0x02, 0x01}) : (Bytes{0xA7, 0x33}));
    EXPECT_EQ(OwnerBytes(OwnerId::Engine, GetParam()),
              IsJet3() ? (Bytes{0x02, 0x03}) : (Bytes{0xA7, 0x31}));
    EXPECT_EQ(OwnerBytes(OwnerId::Creator, GetParam()),
              IsJet3() ? (Bytes{0x02, 0x04}) : (Bytes{0xA7, 0x36}));
}

INSTANTIATE_TEST_SUITE_P(Both, HeaderTest, ::testing::Values(Generation::Jet3, Generation::Jet4));

}  // namespace
}  // namespace nomira::jet
