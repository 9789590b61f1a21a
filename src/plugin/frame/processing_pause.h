// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>

// Keeps the audio path silent and away from the locks for a scope: the first step of every change
// of structure, before stateLock.
class ProcessingPause {
public:
    explicit ProcessingPause(std::atomic<std::int32_t>& newCounter) : counter(newCounter) {
        counter.fetch_add(1);
    }
    ProcessingPause(const ProcessingPause&) = delete;
    ProcessingPause& operator=(const ProcessingPause&) = delete;
    ~ProcessingPause() { counter.fetch_sub(1); }

private:
    std::atomic<std::int32_t>& counter;
};
