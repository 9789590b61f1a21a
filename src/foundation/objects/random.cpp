// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/random.h"

#include <atomic>

namespace {

constexpr double kUnitScale = 3.051850947599719e-05;  // 1 / 32767

std::atomic<std::uint32_t> processSeed = 0;
static_assert(std::atomic<std::uint32_t>::is_always_lock_free);

}  // namespace

int NextRandom() {
    std::uint32_t seen = processSeed.load(std::memory_order_relaxed);
    MRandomSequence sequence;
    int number = 0;
    do {
        sequence.seed = seen;
        number = sequence.Next();
    } while (!processSeed.compare_exchange_weak(seen, sequence.seed, std::memory_order_relaxed));
    return number;
}

double RandomUnit() { return NextRandom() * kUnitScale; }

void SetRandomSeed(std::uint32_t seed) { processSeed.store(seed, std::memory_order_relaxed); }
