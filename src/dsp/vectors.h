// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

// Array primitives: what all block work is made of.
//
// Units    counts in elements; samples are 32-bit floats, 64-bit ones where the name says Double
// Ranges   count 1 .. 2^31 - 1
// Threads  any; no state of their own
// Memory   never allocate
// Errors   each answers a VecStatus and, unless that is kVecDone, touches nothing
// Method   plain loops that the compiler turns into vector code. No result depends on the place of
//          an element in its array, so a block may be cut anywhere

using VecStatus = std::int32_t;
inline constexpr VecStatus kVecDone = 0;
inline constexpr VecStatus kVecBadLength = -6;    // a count below 1
inline constexpr VecStatus kVecNullPointer = -8;  // comes before kVecBadLength

// The arrays do not overlap.
VecStatus VecCopy(const float* source, float* destination, int count);
VecStatus VecZero(float* destination, int count);
VecStatus VecZeroDouble(double* destination, int count);

// array[i] += value
VecStatus VecAddConstant(float value, float* array, int count);
VecStatus VecAddConstantDouble(double value, double* array, int count);

// array[i] += source[i]
VecStatus VecAdd(const float* source, float* array, int count);

// array[i] *= value
VecStatus VecScaleInPlace(float value, float* array, int count);

// array[i] *= start + i * step, the gain in 32-bit arithmetic. A step below kSameGain in size is no
// step; a gain within kSameGain of 1 without a step leaves the array alone.
VecStatus VecRamp(float start, float step, float* array, int count);

VecStatus VecFloatToDouble(const float* source, double* destination, int count);

// Rounds to nearest, ties to even.
VecStatus VecDoubleToFloat(const double* source, float* destination, int count);

// Largest absolute value. A NaN counts as largest, so an array with one in it is never silent.
VecStatus SseAbsMax(const float* array, int count, float* result);
