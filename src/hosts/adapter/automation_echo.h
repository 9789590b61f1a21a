// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <atomic>
#include <thread>

// Knows which threads are telling the host a parameter right now, so that what the host sends back
// from inside that call can be told from a change of its own, which may come on another thread at
// the same time.
//
// Threads  any
// Memory   in place. Beyond kThreads calls at once an echo is not known as one, which only sets a
//          value once more
// Errors   none
class AutomationEcho {
public:
    static constexpr int kThreads = 8;

    // Around a call of the host.
    class Scope {
    public:
        explicit Scope(AutomationEcho& echo) : slot(echo.Take()) {}
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
        ~Scope() {
            if (slot != nullptr) slot->store({}, std::memory_order_release);
        }

    private:
        std::atomic<std::thread::id>* slot;  // null where all are taken
    };

    // Whether the calling thread is inside such a call.
    bool IsHere() const {
        const std::thread::id self = std::this_thread::get_id();
        for (const auto& slot : slots)
            if (slot.load(std::memory_order_relaxed) == self) return true;
        return false;
    }

private:
    std::atomic<std::thread::id>* Take() {
        for (auto& slot : slots) {
            std::thread::id free;
            if (slot.compare_exchange_strong(free, std::this_thread::get_id())) return &slot;
        }
        return nullptr;
    }

    std::array<std::atomic<std::thread::id>, kThreads> slots{};

    static_assert(std::atomic<std::thread::id>::is_always_lock_free);
};
