// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <memory>

#include "dsp/vectors.h"

// One second-order section that filters a block, for 32-bit and for 64-bit samples.
//
//     H(z) = (b0 + b1 / z + b2 / z^2) / (1 + a1 / z + a2 / z^2)
//
// Ranges   count 1 .. 2^31 - 1; taps of a stable filter
// Threads  a state belongs to one caller at a time
// Memory   creation allocates (std::bad_alloc), release frees, nothing else does either
// Errors   the statuses of the array primitives; taps and states must not be null
// Method   transposed direct form II, arithmetic and history in 64-bit floats for both kinds

struct BiquadTaps {
    double b0 = 1;
    double b1 = 0;
    double b2 = 0;
    double a0 = 1;  // always 1: the others are divided by it
    double a1 = 0;  // a1, a2: signs of the denominator polynomial
    double a2 = 0;
};

// What one section remembers: s2 goes into the next output, s1 into the next s2.
struct BiquadMemory {
    double s1 = 0;
    double s2 = 0;
};

// History of one section with its own copy of the taps.
template <typename Sample>
class BiquadStateT;
using BiquadState = BiquadStateT<float>;
using BiquadStateDouble = BiquadStateT<double>;

// Makes a state that has heard silence so far; the caller releases it. There is one section in a
// state (any other number answers kVecBadLength) and no history but silence to start from.
VecStatus BiquadCreate(BiquadState** state, const BiquadTaps* taps, int sections,
                       std::nullptr_t history);
VecStatus BiquadCreateDouble(BiquadStateDouble** state, const BiquadTaps* taps, int sections,
                             std::nullptr_t history);

// Replaces the taps and keeps the history.
VecStatus BiquadSetTaps(const BiquadTaps* taps, BiquadState* state);
VecStatus BiquadSetTapsDouble(const BiquadTaps* taps, BiquadStateDouble* state);

// Source and destination may be one array; they must not overlap in part.
VecStatus BiquadRun(const float* source, float* destination, int count, BiquadState* state);
VecStatus BiquadRunDouble(const double* source, double* destination, int count,
                          BiquadStateDouble* state);

VecStatus BiquadRelease(BiquadState* state);
VecStatus BiquadReleaseDouble(BiquadStateDouble* state);

// Holder of a state of either kind.
struct BiquadReleaser {
    void operator()(BiquadState* state) const { BiquadRelease(state); }
    void operator()(BiquadStateDouble* state) const { BiquadReleaseDouble(state); }
};
template <typename Sample>
using BiquadHolder = std::unique_ptr<BiquadStateT<Sample>, BiquadReleaser>;
