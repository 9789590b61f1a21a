// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <thread>
#include <vector>

#include "foundation/text/exception.h"

// Runs action(0) to action(count - 1), each on a thread of its own.
template <typename Action>
void OnThreads(int count, Action action) {
    std::vector<std::thread> threads;
    for (int t = 0; t < count; ++t) threads.emplace_back(action, t);
    for (std::thread& thread : threads) thread.join();
}

// The message of the MException that action raises, empty where it raises none.
template <typename Action>
std::string Raised(Action action) {
    try {
        action();
    } catch (const MException& error) {
        return error.what();
    }
    return {};
}
