#include "apps/nomiractl/Interrupt.h"

#include <signal.h>

#include <array>

namespace nomira::companion {
namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};

volatile sig_atomic_t g_bInterrupted = 0;
std::array<struct sigaction, kSignals.size()> g_before{};
struct sigaction g_fileSizeBefore {};

void KeepSignal(int /*nSignal*/) {
    g_bInterrupted = 1;
}

}  // namespace

InterruptWatch::InterruptWatch() {
    g_bInterrupted = 0;
    struct sigaction keep {};
    keep.sa_handler = KeepSignal;
    keep.sa_flags = SA_RESETHAND | SA_RESTART;
    for (std::size_t n = 0; n < kSignals.size(); ++n) {
        sigaction(kSignals[n], nullptr, &g_before[n]);
        if (g_before[n].sa_handler != SIG_IGN) sigaction(kSignals[n], &keep, nullptr);
    }
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGXFSZ, &ignore, &g_fileSizeBefore);
}

InterruptWatch::~InterruptWatch() {
    for (std::size_t n = 0; n < kSignals.size(); ++n)
        sigaction(kSignals[n], &g_before[n], nullptr);
    sigaction(SIGXFSZ, &g_fileSizeBefore, nullptr);
    g_bInterrupted = 0;
}

void RequireNoInterrupt() {
    if (g_bInterrupted != 0) throw Interruption();
}

}  // namespace nomira::companion
