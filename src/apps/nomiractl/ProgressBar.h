// How far a long command has come, in the last line of a terminal: a bar, the rate and the time
// that is left. It comes after half a second and goes without a trace. Letters of ASCII and
// carriage returns alone, so that any locale and any terminal shows it.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <ostream>
#include <streambuf>
#include <string>

#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/Options.h"

namespace nomira::companion {

// What steps are counted in; bytes are shown as megabytes.
enum class ProgressUnit { Lines, Texts, Programs, Bytes };

class ProgressBar {
  public:
    // The time since a moment that stays the same.
    using Clock = std::function<std::chrono::milliseconds()>;

    struct Screen {
        std::ostream* pBar = nullptr;  // where the bar stands; nullptr: nothing is ever shown
        std::ostream* pOther =
            nullptr;              // flushed ahead of the bar, for it may be the same terminal
        std::size_t nWidth = 80;  // columns
        Clock now = {};
    };

    // `sWork` is the word ahead of the bar. Steps beyond `nTotal` are taken for the last one.
    ProgressBar(Screen screen, std::string sWork, ProgressUnit unit, std::uint64_t nTotal);
    ~ProgressBar() { Wipe(); }
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void Step(std::uint64_t nSteps = 1);
    // Takes the bar off the screen; a later step may show it again.
    void Wipe();
    bool IsEverShown() const { return m_screen.pBar != nullptr; }

  private:
    std::string Line(std::chrono::milliseconds elapsed) const;
    void Draw(std::chrono::milliseconds elapsed);

    Screen m_screen;
    std::string m_sWork;
    ProgressUnit m_unit;
    std::uint64_t m_nTotal;
    std::uint64_t m_nDone = 0;
    std::chrono::milliseconds m_begin{};
    std::chrono::milliseconds m_next{};  // when it may be drawn again
    std::size_t m_nDrawn = 0;            // columns that it takes now
};

// The bar's screen for a command with these options and streams: a terminal, unless the report is
// for other programs or none is wanted.
ProgressBar::Screen ScreenFor(const Options& options, Streams streams);

// Streams to which a command writes while its bar stands: each write takes the bar away first.
class StreamsAboveBar {
  public:
    StreamsAboveBar(Streams streams, ProgressBar& bar);

    // Those that were given if there is never a bar.
    Streams All() { return m_bShown ? Streams{m_out, m_err, m_given.in} : m_given; }

  private:
    class Buffer : public std::streambuf {
      public:
        Buffer(std::streambuf& inner, ProgressBar& bar) : m_inner(inner), m_bar(bar) {}

      protected:
        int_type overflow(int_type c) override;
        std::streamsize xsputn(const char* p, std::streamsize nCount) override;
        int sync() override { return m_inner.pubsync(); }

      private:
        std::streambuf& m_inner;
        ProgressBar& m_bar;
    };

    Streams m_given;
    bool m_bShown;
    Buffer m_outBuffer, m_errBuffer;
    std::ostream m_out, m_err;
};

}  // namespace nomira::companion
