// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <future>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

// Waits only so long for a system call that has no time limit of its own.
//
// Threads  any; the work runs on a thread of its own, which goes on by itself where the time runs
//          out. The work owns all that it touches
// Errors   what the work raises. No result where the time ran out or there is no thread

template <typename Work>
auto ResultInTime(Work work, std::chrono::milliseconds timeout) -> std::optional<decltype(work())> {
    std::packaged_task<decltype(work())()> task(std::move(work));
    auto result = task.get_future();
    try {
        std::thread(std::move(task)).detach();
    } catch (const std::system_error&) {
        return std::nullopt;
    }
    if (result.wait_for(timeout) != std::future_status::ready) return std::nullopt;
    return result.get();
}
