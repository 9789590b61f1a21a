// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

// Array primitives: what all block work is made of.
//
// Units    counts in elements, those of complex numbers in pairs of a real and an imaginary part;
//          samples are 32-bit floats, 64-bit ones where the name says Double
// Ranges   count 1 .. 2^31 - 1, pairs 1 .. 2^30 - 1
// Threads  any; no state of their own
// Memory   never allocate
// Errors   each answers a VecStatus and, unless that is kVecDone, touches nothing
// Method   loops for the processor at hand, which all give the same bits. No result depends on the
//          place of an element in its array, so a block may be cut anywhere
//
// Source and destination may be one array where nothing else is said; they must not overlap in
// part.

using VecStatus = std::int32_t;
inline constexpr VecStatus kVecDone = 0;
inline constexpr VecStatus kVecBadLength = -6;    // a count below 1
inline constexpr VecStatus kVecNullPointer = -8;  // comes before kVecBadLength

// The arrays do not overlap.
VecStatus VecCopy(const float* source, float* destination, int count);
// They may.
VecStatus VecMove(const float* source, float* destination, int count);
VecStatus VecZero(float* destination, int count);
VecStatus VecZeroDouble(double* destination, int count);
VecStatus VecFill(float value, float* destination, int count);
VecStatus VecFillDouble(double value, double* destination, int count);

// array[i] += value
VecStatus VecAddConstant(float value, float* array, int count);
VecStatus VecAddConstantDouble(double value, double* array, int count);

// array[i] += source[i]
VecStatus VecAdd(const float* source, float* array, int count);
// destination[i] = first[i] + second[i], first[i] - second[i]
VecStatus VecAdd3(const float* first, const float* second, float* destination, int count);
VecStatus VecSubtract3(const float* first, const float* second, float* destination, int count);

// destination[i] = source[i] * value
VecStatus VecScale(const float* source, float value, float* destination, int count);
// array[i] *= value; both names are one.
VecStatus VecScaleInPlace(float value, float* array, int count);
VecStatus VecScaleInPlaceAlt(float value, float* array, int count);

// array[i] *= start + i * step, the gain in 32-bit arithmetic. A step below kSameGain in size is no
// step; a gain within kSameGain of 1 without a step leaves the array alone.
VecStatus VecRamp(float start, float step, float* array, int count);

VecStatus VecAbs(const float* source, float* destination, int count);
VecStatus VecAbsInPlace(float* array, int count);

// What is above value becomes value; a NaN stays.
VecStatus VecCompareLimit(const float* source, float* destination, int count, float value);

// The destination may be either factor.
VecStatus VecMultiplyComplex(const float* first, const float* second, float* destination,
                             int pairs);
// destination[i] = sqrt(re^2 + im^2), atan2(im, re); not in place.
VecStatus VecMagnitude(const float* source, float* destination, int pairs);
VecStatus VecPhase(const float* source, float* destination, int pairs);

// Extremes pass NaNs over; where there is nothing else, the largest is -infinity, the smallest
// infinity, at index 0. The index is that of the first of equals.
VecStatus VecMax(const float* source, int count, float* result);
VecStatus VecMaxIndex(const float* source, int count, float* value, std::int32_t* index);
VecStatus VecMinMax(const float* source, int count, float* minimum, float* maximum);

// Added up in 64 bits, whatever the hint. The order of additions depends on the place in the array.
VecStatus VecSum(const float* source, int count, float* result, int hint);

VecStatus VecFloatToDouble(const float* source, double* destination, int count);
// Rounds to nearest, ties to even, as the two below do.
VecStatus VecDoubleToFloat(const double* source, float* destination, int count);
VecStatus VecInt32ToFloat(const std::int32_t* source, float* destination, int count);
VecStatus VecInt16ToFloat(const std::int16_t* source, float* destination, int count);

// Multiplies by a triangle from 0 at the first element over 1 in the middle to 0 at the last. A
// single element stays.
VecStatus VecWindowTriangular(float* array, int count);

// Largest absolute value. A NaN counts as largest, so an array with one in it is never silent.
VecStatus SseAbsMax(const float* array, int count, float* result);
// As VecSum; 0 for a null array and a count below 1.
float SseSum(const float* array, int count);
VecStatus SseScale(float* array, int count, float value);
VecStatus SseScaleTo(float* destination, const float* source, int count, float value);
