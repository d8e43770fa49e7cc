#include "adapters/jetsql/DateText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "testing/Random.h"

namespace nomira::testing {
namespace {

using jetsql::DateOfText;
using jetsql::TextOfDate;

struct Moment {
    double nDays;
    const char* sText;
};
constexpr Moment kMoments[]{
    {0, "1899-12-30 00:00:00"},
    {1, "1899-12-31 00:00:00"},
    {36526, "2000-01-01 00:00:00"},
    {38143.5, "2004-06-05 12:00:00"},
    {2958465, "9999-12-31 00:00:00"},
    {-1, "1899-12-29 00:00:00"},
    // Ahead of the day zero the time of day counts forward all the same.
    {-1.25, "1899-12-29 06:00:00"},
    {-693593, "0001-01-01 00:00:00"},
};

TEST(DateTextTest, MomentsAndTheirTexts) {
    for (const Moment& moment : kMoments) {
        EXPECT_EQ(TextOfDate(moment.nDays), moment.sText);
        EXPECT_EQ(DateOfText(moment.sText), moment.nDays) << moment.sText;
    }
}

TEST(DateTextTest, EverySecondComesBackAsItWas) {
    Random random;
    for (int nRound = 0; nRound < 2000; ++nRound) {
        const auto nDay = static_cast<double>(random.UpTo(80000));
        const double nDays = nDay + static_cast<double>(random.UpTo(86399)) / 86400.0;
        const auto sText = TextOfDate(nDays);
        ASSERT_TRUE(sText) << random.Seed();
        EXPECT_EQ(sText->size(), 19U) << *sText;
        const auto nBack = DateOfText(*sText);
        ASSERT_TRUE(nBack) << *sText;
        EXPECT_EQ(TextOfDate(*nBack), sText) << random.Seed();
    }
}

TEST(DateTextTest, PartsOfASecondStandBehindAPoint) {
    EXPECT_EQ(TextOfDate(36526 + 0.25 / 86400), "2000-01-01 00:00:00.250");
    EXPECT_EQ(DateOfText("2000-01-01 00:00:00.25"), 36526 + 250.0 / 86'400'000);
}

TEST(DateTextTest, TheTimeMayBeMissingAndATMayStandForTheBlank) {
    EXPECT_EQ(DateOfText("2000-01-01"), 36526);
    EXPECT_EQ(DateOfText("2000-01-01T12:00"), 36526.5);
}

TEST(DateTextTest, WhatIsNoMomentGivesNothing) {
    for (const char* sText :
         {"", "2000", "2000-1-1", "2000-02-30", "2000-01-01 ", "2000-01-01 24:00", "2000-01-01 12",
          "2000-01-01 12:00:61", "2000-01-01 12:00:00.", "2000-01-01x", "-200-01-01",
          "2000-01-01 12:00:00.5x", "date"})
        EXPECT_EQ(DateOfText(sText), std::nullopt) << sText;
}

TEST(DateTextTest, NumbersBeyondTheYearsHaveNoText) {
    for (const double nDays :
         {2958466.0, -693594.0, 1e300, std::nan(""), std::numeric_limits<double>::infinity()})
        EXPECT_EQ(TextOfDate(nDays), std::nullopt) << nDays;
}

}  // namespace
}  // namespace nomira::testing
