// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <random>

// The sizes of the blocks that the effect gets: all alike, or drawn anew for each.
//
// Units    samples
// Method   drawn sizes come from a generator of their own with a fixed seed, so that every run cuts
//          alike and no draw of the effect moves

class BlockCutter {
public:
    // size 0 draws sizes of 1..4096; none is above limit.
    BlockCutter(int size, int limit) : size(size), limit(limit) {}

    int Largest() const { return std::min(size > 0 ? size : kLargestDrawn, limit); }

    int Next() {
        if (size > 0) return Largest();
        return std::min(static_cast<int>(generator() % kLargestDrawn) + 1, limit);
    }

private:
    static constexpr int kLargestDrawn = 4096;

    int size;
    int limit;
    std::mt19937 generator;  // its standard seed
};
