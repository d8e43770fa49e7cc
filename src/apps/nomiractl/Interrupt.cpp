#include "apps/nomiractl/Interrupt.h"

#include <signal.h>

#include <array>

namespace nomira::companion {
namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};

volatile sig_atomic_t g_bInterrupted = 0;
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
    for (const int nSignal : kSignals) {
        struct sigaction before {};
        sigaction(nSignal, nullptr, &before);
        if (before.sa_handler != SIG_IGN) sigaction(nSignal, &keep, nullptr);
    }
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGXFSZ, &ignore, &g_fileSizeBefore);
}

InterruptWatch::~InterruptWatch() {
    sigaction(SIGXFSZ, &g_fileSizeBefore, nullptr);
    g_bInterrupted = 0;
}

void RequireNoInterrupt() {
    if (g_bInterrupted != 0) throw Interruption();
}

}  // namespace nomira::companion
