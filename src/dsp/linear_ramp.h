// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "foundation/objects/tolerances.h"

// A value that moves in a straight line across one block: start + i * step for sample i.
//
// Ranges   the sample index may run past the block; the line goes on
// Threads  a plain value
// Method   each value is computed from its index, never accumulated, so that it does not depend on
//          how a block is walked through

class LinearRamp {
public:
    // Stays at value.
    explicit LinearRamp(double value) : start(value) {}

    // Runs from last, where the block before ended, so that sample number sampleCount, the first
    // of the next block, meets target. Stays at target when the two are the same.
    LinearRamp(double last, double target, int sampleCount)
        : start(std::abs(target - last) < kSameParameter ? target : last),
          step((target - start) / std::max(sampleCount, 1)) {}

    double At(std::int64_t i) const { return start + static_cast<double>(i) * step; }

    // Stores At(first), At(first + stride), ... in out, count values, bit for bit.
    void Fill(double* out, std::int64_t first, int stride, int count) const {
        const double base = static_cast<double>(first);
        const double distance = stride;
        const double from = start;
        const double slope = step;
        for (int i = 0; i < count; ++i) out[i] = from + (base + i * distance) * slope;
    }

    bool IsMoving() const { return step != 0; }
    double Start() const { return start; }
    double Step() const { return step; }

private:
    double start;
    double step = 0;
};
