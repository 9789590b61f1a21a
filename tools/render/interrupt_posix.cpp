// SPDX-License-Identifier: GPL-3.0-or-later
#include <csignal>
#include <cstdlib>
#include <initializer_list>

#include "interrupt.h"

namespace {

volatile std::sig_atomic_t caughtSignal = 0;

void Remember(int signal) { caughtSignal = signal; }

}  // namespace

void WatchInterrupts() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction present = {};
        if (sigaction(signal, nullptr, &present) != 0 || present.sa_handler == SIG_IGN) continue;
        struct sigaction wanted = {};
        wanted.sa_handler = Remember;
        wanted.sa_flags = SA_RESTART;
        sigaction(signal, &wanted, nullptr);
    }
}

void ThrowIfInterrupted() {
    if (caughtSignal != 0) throw Interrupted();
}

void EndAsInterrupted() {
    std::signal(caughtSignal, SIG_DFL);
    std::raise(caughtSignal);
    std::abort();
}
