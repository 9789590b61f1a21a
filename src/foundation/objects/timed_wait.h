// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "foundation/objects/lock.h"

// Waits on condition, which is notified under lock's mutex, until isTrue answers true there. False
// where the time ran out first; kInfinite waits for ever.
template <typename Predicate>
bool WaitUntilTrue(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                   std::uint32_t timeoutMilliseconds, Predicate isTrue) {
    if (timeoutMilliseconds != kInfinite)
        return condition.wait_for(lock, std::chrono::milliseconds(timeoutMilliseconds), isTrue);
    condition.wait(lock, isTrue);
    return true;
}
