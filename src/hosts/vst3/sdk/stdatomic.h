// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the SDK's funknown.cpp sees in place of the C header of this name, and nobody else.
//
// Without it the SDK counts references on Linux with an addition and a separate read, so that two
// threads that release an object at once may both see 0. And it makes an ID of its own in a static
// constructor by seeding the C library's random numbers, which belong to the host.

#include <atomic>
#include <cstdint>
#include <cstdlib>

using std::atomic_fetch_add;
using std::atomic_int_least32_t;

static_assert(sizeof(atomic_int_least32_t) == sizeof(std::int32_t) &&
              atomic_int_least32_t::is_always_lock_free);

inline std::uint64_t sdkRandomState = 0;

// The seed is an address, other in every process and library.
inline void SeedSdkRandom(std::uint64_t seed) { sdkRandomState = seed; }

// D. Lehmer's generator with the multiplier and increment of D. Knuth's MMIX.
inline int NextSdkRandom() {
    sdkRandomState = sdkRandomState * 6364136223846793005u + 1442695040888963407u;
    return static_cast<int>(sdkRandomState >> 33);
}

#define srand(seed) SeedSdkRandom(seed)
#define rand() NextSdkRandom()
