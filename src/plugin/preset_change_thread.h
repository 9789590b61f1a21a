// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <utility>

#include "foundation/objects/mthread.h"

// Does work that the audio thread asks for, where there is no user-interface thread to do it.
//
//     PresetChangeThread thread([this] { ChangePreset(); });
//     thread.StartOnce();   // not on the audio thread
//     thread.Ask();         // anywhere
//
// What is asked for before the start waits for it; however often it is asked for, the work runs
// once behind the last time at least.
//
// Threads  Ask on any: it neither waits nor allocates, and makes one system call where the thread
//          sleeps. The rest by the owner, the destructor while nobody asks
// Errors   those of MThread out of StartOnce, which may be repeated then. The work raises nothing
class PresetChangeThread final : public MThread {
public:
    explicit PresetChangeThread(std::function<void()> work) : work(std::move(work)) {}
    ~PresetChangeThread() override {
        RequestTerminate();
        Ask();
        Finish();
    }

    void StartOnce() {
        if (started.exchange(true)) return;
        try {
            Start();
        } catch (...) {
            started = false;
            throw;
        }
    }

    // Not through the semaphore, whose lock the sleeper may hold.
    void Ask() {
        pending.fetch_add(1);
        pending.notify_one();
    }

protected:
    std::int32_t Run() override {
        for (std::uint32_t seen = 0;;) {
            pending.wait(seen);
            seen = pending;
            if (IsTerminating()) return 0;
            work();
        }
    }

private:
    const std::function<void()> work;
    std::atomic<bool> started = false;
};
