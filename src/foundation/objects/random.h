// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

// Pseudo-random numbers: seed = seed * 214013 + 2531011, of which bits 16 to 30 are the number.
// A linear congruential generator modulo 2^32 with full period; for taste, not for secrets.
//
// Ranges   numbers 0 .. 32767
// Threads  the process-wide generator on any, without a lock: every draw is a step of the one
//          sequence. A MRandomSequence on one at a time

struct MRandomSequence {
    std::uint32_t seed = 0;

    constexpr int Next() {
        seed = seed * 214013u + 2531011u;
        return static_cast<int>(seed >> 16 & 0x7fff);
    }
};

// The process-wide generator starts at seed 0.
int NextRandom();
// 0 .. 1, both included.
double RandomUnit();
void SetRandomSeed(std::uint32_t seed);
