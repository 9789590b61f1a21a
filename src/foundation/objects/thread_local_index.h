// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

// A word of which every thread has its own.
//
// Ranges   each word is 0 at first
// Threads  Word answers the calling thread's; constructed and destroyed on any, the latter while
//          nobody uses it
// Memory   a thread's first call of Word may allocate, which lasts until the thread ends
// Errors   std::bad_alloc out of the constructor and Word
// Method   an index into an array of each thread. Indices are used again: a serial number beside
//          each word tells whose it is

class MThreadLocalIndex {
public:
    MThreadLocalIndex();
    MThreadLocalIndex(const MThreadLocalIndex&) = delete;
    MThreadLocalIndex& operator=(const MThreadLocalIndex&) = delete;
    ~MThreadLocalIndex();

    // It stays in place until the thread calls Word of another index.
    std::uint32_t& Word();

private:
    int index;
    std::uint64_t serial;
};
