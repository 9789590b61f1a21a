// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <random>

// The sizes of the blocks that a host sends: all alike, or drawn anew for each.
//
// Units    samples
// Method   drawn sizes come from a generator of their own with a fixed seed, so that every run cuts
//          alike and no draw of the effect moves

class BlockCutter {
public:
    // size 0 draws sizes of 1..4096.
    explicit BlockCutter(int size) : size(size) {}

    int Largest() const { return size > 0 ? size : kLargestDrawn; }

    int Next() { return size > 0 ? size : static_cast<int>(generator() % kLargestDrawn) + 1; }

private:
    static constexpr int kLargestDrawn = 4096;

    int size;
    std::mt19937 generator;  // its standard seed
};
