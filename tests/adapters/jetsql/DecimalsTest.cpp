#include "adapters/jetsql/Decimals.h"

#include <gtest/gtest.h>

#include <limits>

namespace nomira::testing {
namespace {

using jetsql::CurrencyOfText;
using jetsql::NumericOfText;
using jetsql::TextOfCurrency;
using jetsql::TextOfNumeric;

struct Amount {
    std::int64_t nValue;
    const char* sText;
};
constexpr Amount kAmounts[]{
    {0, "0"},
    {10000, "1"},
    {-10000, "-1"},
    {1, "0.0001"},
    {-1, "-0.0001"},
    {123400, "12.34"},
    {std::numeric_limits<std::int64_t>::max(), "922337203685477.5807"},
    {std::numeric_limits<std::int64_t>::min(), "-922337203685477.5808"},
};

TEST(DecimalsTest, AmountsAndTheirTexts) {
    for (const Amount& amount : kAmounts) {
        EXPECT_EQ(TextOfCurrency(amount.nValue), amount.sText);
        EXPECT_EQ(CurrencyOfText(amount.sText), amount.nValue) << amount.sText;
    }
}

TEST(DecimalsTest, AmountsMayBeWrittenOtherwise) {
    EXPECT_EQ(CurrencyOfText(" +12.3400000 "), 123400);
    EXPECT_EQ(CurrencyOfText(".5"), 5000);
    EXPECT_EQ(CurrencyOfText("5."), 50000);
}

TEST(DecimalsTest, WhatIsNoAmountGivesNothing) {
    for (const char* sText : {"", ".", "-", "1.23456", "1,5", "1e3", "0x1", "922337203685477.5808",
                              "99999999999999999999"})
        EXPECT_EQ(CurrencyOfText(sText), std::nullopt) << sText;
}

TEST(DecimalsTest, NumbersOfManyDigitsComeBackAsTheyWere) {
    struct Number {
        const char* sText;
        int nScale;
    };
    for (const auto& [sText, nScale] :
         {Number{"0", 8}, Number{"1", 8}, Number{"-1", 8}, Number{"12.345", 8},
          Number{"-99999999999999999999.99999999", 8},
          Number{"1234567890123456789012345.678", 3}}) {
        const auto bytes = NumericOfText(sText, 28, nScale);
        ASSERT_TRUE(bytes) << sText;
        EXPECT_EQ(bytes->size(), 17U);
        EXPECT_EQ(TextOfNumeric(*bytes, nScale), sText);
    }
}

TEST(DecimalsTest, TheWordsStandWithTheMostSignificantOneFirst) {
    const auto bytes = NumericOfText("-4294967297", 28, 0);
    ASSERT_TRUE(bytes);
    EXPECT_EQ(*bytes, (jet::Bytes{0x80, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}));
}

TEST(DecimalsTest, NumbersThatDontFitGiveNothing) {
    EXPECT_EQ(NumericOfText("1000", 3, 0), std::nullopt);
    EXPECT_EQ(NumericOfText("0.25", 5, 1), std::nullopt);
    EXPECT_EQ(TextOfNumeric(jet::Bytes(16), 0), std::nullopt);
}

}  // namespace
}  // namespace nomira::testing
