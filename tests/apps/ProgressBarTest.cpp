#include "apps/nomiractl/ProgressBar.h"

#include <gtest/gtest.h>

#include <sstream>

namespace nomira::companion {
namespace {

using std::chrono::milliseconds;

class ProgressBarTest : public ::testing::Test {
  protected:
    ProgressBar::Screen Screen(std::size_t nWidth = 80) {
        return {&m_err, &m_out, nWidth, [this] { return m_now; }};
    }
    // What has been written to the terminal since the last call.
    std::string Taken() {
        std::string sTaken = m_err.str();
        m_err.str({});
        return sTaken;
    }
    // What a terminal shows of it in the end.
    static std::string Shown(const std::string& written) {
        std::string sRow;
        std::size_t nColumn = 0;
        for (const char c : written) {
            if (c == '\r') {
                nColumn = 0;
                continue;
            }
            if (nColumn == sRow.size()) sRow += ' ';
            sRow[nColumn++] = c;
        }
        return sRow.substr(0, sRow.find_last_not_of(' ') + 1);
    }

    milliseconds m_now{7'000};
    std::ostringstream m_out, m_err;
};

TEST_F(ProgressBarTest, ComesAfterHalfASecondAndGoesWithoutATrace) {
    {
        ProgressBar bar(Screen(), "import", ProgressUnit::Lines, 1'000);
        m_now += milliseconds(499);
        bar.Step(100);
        EXPECT_EQ(m_err.str(), "");
        m_now += milliseconds(1);
        bar.Step(150);
        EXPECT_EQ(m_err.str(),
                  "\rimport [#######-----------------------]  25 %  500 lines/s"
                  "  0:02 left");
    }
    EXPECT_EQ(Shown(Taken()), "");
}

TEST_F(ProgressBarTest, IsDrawnTenTimesASecondAtMost) {
    ProgressBar bar(Screen(), "check", ProgressUnit::Bytes, 10'000'000);
    int nDrawn = 0;
    for (int n = 0; n < 2'000; ++n) {
        m_now += milliseconds(1);
        bar.Step(1'000);
        if (!Taken().empty()) ++nDrawn;
    }
    EXPECT_EQ(nDrawn, 16);
}

TEST_F(ProgressBarTest, TellsRateAndTimeInTheirUnits) {
    const auto line = [this](ProgressUnit unit, std::uint64_t nDone, std::uint64_t nTotal) {
        ProgressBar bar(Screen(), "x", unit, nTotal);
        m_now += milliseconds(2'000);
        bar.Step(nDone);
        const std::string sShown = Shown(Taken());
        return sShown.substr(sShown.find(']') + 2);
    };
    EXPECT_EQ(line(ProgressUnit::Bytes, 3'000'000, 12'000'000), " 25 %  1.5 MB/s  0:06 left");
    EXPECT_EQ(line(ProgressUnit::Programs, 2, 8'000), "  0 %  1 programs/s  2:13:18 left");
    EXPECT_EQ(line(ProgressUnit::Texts, 20, 700), "  3 %  10 texts/s  1:08 left");
    EXPECT_EQ(line(ProgressUnit::Lines, 0, 700), "  0 %");
    EXPECT_EQ(line(ProgressUnit::Lines, 900, 700), " 99 %  350 lines/s  0:00 left");
    EXPECT_EQ(line(ProgressUnit::Lines, 1, 0), "  0 %");
}

TEST_F(ProgressBarTest, LeavesRoomForACtrlCAheadOfTheLastColumn) {
    for (std::size_t nWidth = 4; nWidth < 120; ++nWidth) {
        ProgressBar bar(Screen(nWidth), "rewrite", ProgressUnit::Programs, 1'000'000);
        m_now += milliseconds(1'000);
        bar.Step(400'000);
        const std::string sDrawn = Taken();
        bar.Wipe();
        EXPECT_LT((sDrawn + "^C").size() - 1, nWidth);
        EXPECT_EQ(Shown(sDrawn + "^C" + Taken()), "");
    }
}

TEST_F(ProgressBarTest, AShorterLineLeavesNothingOfALongerOne) {
    ProgressBar bar(Screen(), "import", ProgressUnit::Lines, 100'000'000);
    m_now += milliseconds(1'000);
    bar.Step(1);
    const std::string sLong = Taken();
    m_now += milliseconds(1'000);
    bar.Step(99'000'000);
    const std::string sBoth = sLong + m_err.str();
    EXPECT_EQ(Shown(sBoth), Shown(m_err.str()));
    bar.Wipe();
    EXPECT_EQ(Shown(sLong + m_err.str()), "");
}

TEST_F(ProgressBarTest, WhatIsWrittenMeanwhileTakesTheBarAwayFirst) {
    std::istringstream in;
    ProgressBar bar(Screen(), "rewrite", ProgressUnit::Programs, 4);
    StreamsAboveBar above({m_out, m_err, in}, bar);
    m_now += milliseconds(600);
    bar.Step();
    const std::string sDrawn = Taken();
    above.All().err << "a.src: ";
    above.All().err << 7 << '\n';
    EXPECT_EQ(Shown(sDrawn + m_err.str().substr(0, m_err.str().find("a.src"))), "");
    EXPECT_TRUE(m_err.str().ends_with("\ra.src: 7\n"));
    Taken();
    m_now += milliseconds(200);
    bar.Step();
    EXPECT_NE(Taken(), "");
    above.All().out << "diff";
    EXPECT_EQ(m_out.str(), "diff");
    EXPECT_EQ(Shown(Taken()), "");
}

TEST_F(ProgressBarTest, WithoutATerminalThereIsNone) {
    std::istringstream in;
    const Streams streams{m_out, m_err, in};
    ProgressBar bar(ScreenFor({}, streams), "import", ProgressUnit::Lines, 4);
    EXPECT_FALSE(bar.IsEverShown());
    StreamsAboveBar above(streams, bar);
    EXPECT_EQ(&above.All().out, &m_out);
    bar.Step();
    bar.Wipe();
    EXPECT_EQ(m_err.str(), "");
}

}  // namespace
}  // namespace nomira::companion
