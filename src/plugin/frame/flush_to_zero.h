// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <xmmintrin.h>

// Subnormal numbers count as zero in this scope, as operands and as results; afterwards everything
// is as the host had it, its exception flags too.
//
// Threads  acts on its own
class FlushToZero {
public:
    FlushToZero() : before(_mm_getcsr()) { _mm_setcsr(before | kFlushResults | kZeroOperands); }
    FlushToZero(const FlushToZero&) = delete;
    FlushToZero& operator=(const FlushToZero&) = delete;
    ~FlushToZero() { _mm_setcsr(before); }

private:
    static constexpr unsigned kFlushResults = 1u << 15;
    static constexpr unsigned kZeroOperands = 1u << 6;

    unsigned before;
};
