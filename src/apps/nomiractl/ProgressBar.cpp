#include "apps/nomiractl/ProgressBar.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "apps/nomiractl/Terminal.h"

namespace nomira::companion {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kFirstAfter{500};
constexpr milliseconds kAgainAfter{100};
constexpr std::size_t kMostCells = 30;
constexpr std::size_t kFewestCells = 4;
constexpr std::string_view kTyped = "^C";  // the terminal shows it behind the bar
constexpr double kMega = 1e6;

std::string RateOf(ProgressUnit unit, double dPerSecond) {
    switch (unit) {
        case ProgressUnit::Bytes:
            return fmt::format("{:.1f} MB/s", dPerSecond / kMega);
        case ProgressUnit::Lines:
            return fmt::format("{:.0f} lines/s", dPerSecond);
        case ProgressUnit::Texts:
            return fmt::format("{:.0f} texts/s", dPerSecond);
        case ProgressUnit::Programs:
            break;
    }
    return fmt::format("{:.0f} programs/s", dPerSecond);
}

std::string TimeLeft(double dSeconds) {
    const auto nSeconds = std::llround(dSeconds);
    if (nSeconds < 3600) return fmt::format("{}:{:02} left", nSeconds / 60, nSeconds % 60);
    return fmt::format("{}:{:02}:{:02} left", nSeconds / 3600, nSeconds / 60 % 60, nSeconds % 60);
}

}  // namespace

ProgressBar::ProgressBar(Screen screen, std::string sWork, ProgressUnit unit, std::uint64_t nTotal)
    : m_screen(std::move(screen)), m_sWork(std::move(sWork)), m_unit(unit), m_nTotal(nTotal) {
    if (!IsEverShown()) return;
    m_begin = m_screen.now();
    m_next = m_begin + kFirstAfter;
}

void ProgressBar::Step(std::uint64_t nSteps) {
    if (!IsEverShown()) return;
    m_nDone = std::min(m_nDone + nSteps, m_nTotal);
    const milliseconds now = m_screen.now();
    if (now < m_next) return;
    m_next = now + kAgainAfter;
    Draw(now - m_begin);
}

void ProgressBar::Wipe() {
    if (m_nDrawn == 0) return;
    *m_screen.pBar << '\r' + std::string(m_nDrawn + kTyped.size(), ' ') + '\r' << std::flush;
    m_nDrawn = 0;
}

std::string ProgressBar::Line(milliseconds elapsed) const {
    const double dDone = static_cast<double>(m_nDone);
    const double dTotal = static_cast<double>(std::max<std::uint64_t>(m_nTotal, 1));
    const double dPerSecond = dDone * 1000 / static_cast<double>(elapsed.count());
    std::string sBehind = fmt::format(" {:3.0f} %", std::min(99.0, dDone * 100 / dTotal));
    if (m_nDone > 0)
        sBehind += fmt::format("  {}  {}", RateOf(m_unit, dPerSecond),
                               TimeLeft((dTotal - dDone) / dPerSecond));
    // A character in the last column would move everything into the next row.
    const std::size_t nKept = kTyped.size() + 1;
    const std::size_t nWidth = m_screen.nWidth > nKept ? m_screen.nWidth - nKept : 0;
    const std::size_t nTaken = m_sWork.size() + sBehind.size() + 3;  // a blank and the brackets
    const std::size_t nRoom = nWidth > nTaken ? nWidth - nTaken : 0;
    if (nRoom < kFewestCells) return (m_sWork + sBehind).substr(0, nWidth);
    const std::size_t nCells = std::min(nRoom, kMostCells);
    const auto nFull = static_cast<std::size_t>(dDone / dTotal * static_cast<double>(nCells));
    return fmt::format("{} [{}{}]{}", m_sWork, std::string(nFull, '#'),
                       std::string(nCells - nFull, '-'), sBehind);
}

void ProgressBar::Draw(milliseconds elapsed) {
    const std::string sLine = Line(elapsed);
    const std::size_t nOver = m_nDrawn > sLine.size() ? m_nDrawn - sLine.size() : 0;
    if (m_screen.pOther) m_screen.pOther->flush();
    *m_screen.pBar << '\r' + sLine + std::string(nOver, ' ') << std::flush;
    m_nDrawn = std::max(m_nDrawn, sLine.size());
}

ProgressBar::Screen ScreenFor(const Options& options, Streams streams) {
    const bool bForPeople = !options.bQuiet && !options.bJson && options.sFormat == "text";
    if (!bForPeople || !IsTerminal(streams.err)) return {};
    return {&streams.err, &streams.out, TerminalWidth(streams.err), [] {
                return std::chrono::duration_cast<milliseconds>(
                    std::chrono::steady_clock::now().time_since_epoch());
            }};
}

StreamsAboveBar::StreamsAboveBar(Streams streams, ProgressBar& bar)
    : m_given(streams),
      m_bShown(bar.IsEverShown()),
      m_outBuffer(*streams.out.rdbuf(), bar),
      m_errBuffer(*streams.err.rdbuf(), bar),
      m_out(&m_outBuffer),
      m_err(&m_errBuffer) {
    m_err << std::unitbuf;  // as the error stream itself
}

StreamsAboveBar::Buffer::int_type StreamsAboveBar::Buffer::overflow(int_type c) {
    if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
    m_bar.Wipe();
    return m_inner.sputc(traits_type::to_char_type(c));
}

std::streamsize StreamsAboveBar::Buffer::xsputn(const char* p, std::streamsize nCount) {
    if (nCount > 0) m_bar.Wipe();
    return m_inner.sputn(p, nCount);
}

}  // namespace nomira::companion
