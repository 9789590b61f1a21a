// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/vectors.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>

#include "foundation/objects/tolerances.h"

namespace {

using FloatBits = std::int32_t;
constexpr FloatBits kMagnitudeBits = 0x7fffffff;

template <typename... Element>
VecStatus Check(int count, const Element*... arrays) {
    if ((!arrays || ...)) return kVecNullPointer;
    return count > 0 ? kVecDone : kVecBadLength;
}

template <typename Element>
VecStatus Zero(Element* destination, int count) {
    if (const VecStatus fault = Check(count, destination)) return fault;
    std::fill_n(destination, count, Element{0});
    return kVecDone;
}

template <typename Element>
VecStatus AddConstant(Element value, Element* array, int count) {
    if (const VecStatus fault = Check(count, array)) return fault;
    for (int i = 0; i < count; ++i) array[i] += value;
    return kVecDone;
}

template <typename From, typename To>
VecStatus Convert(const From* source, To* destination, int count) {
    if (const VecStatus fault = Check(count, source, destination)) return fault;
    for (int i = 0; i < count; ++i) destination[i] = static_cast<To>(source[i]);
    return kVecDone;
}

// Bits of a float so that they order as integers do, and back: a mapping that is its own inverse.
// Compilers vectorise the extremes of integers; those of floats only under relaxed arithmetic.
FloatBits Ordered(FloatBits bits) { return bits ^ ((bits >> 31) & kMagnitudeBits); }

}  // namespace

VecStatus VecCopy(const float* source, float* destination, int count) {
    if (const VecStatus fault = Check(count, source, destination)) return fault;
    std::memcpy(destination, source, static_cast<std::size_t>(count) * sizeof(float));
    return kVecDone;
}

VecStatus VecMove(const float* source, float* destination, int count) {
    if (const VecStatus fault = Check(count, source, destination)) return fault;
    std::memmove(destination, source, static_cast<std::size_t>(count) * sizeof(float));
    return kVecDone;
}

VecStatus VecZero(float* destination, int count) { return Zero(destination, count); }

VecStatus VecZeroDouble(double* destination, int count) { return Zero(destination, count); }

VecStatus VecFill(float value, float* destination, int count) {
    if (const VecStatus fault = Check(count, destination)) return fault;
    std::fill_n(destination, count, value);
    return kVecDone;
}

VecStatus VecAddConstant(float value, float* array, int count) {
    return AddConstant(value, array, count);
}

VecStatus VecAddConstantDouble(double value, double* array, int count) {
    return AddConstant(value, array, count);
}

VecStatus VecAdd(const float* source, float* array, int count) {
    if (const VecStatus fault = Check(count, source, array)) return fault;
    for (int i = 0; i < count; ++i) array[i] += source[i];
    return kVecDone;
}

VecStatus VecScale(const float* source, float value, float* destination, int count) {
    if (const VecStatus fault = Check(count, source, destination)) return fault;
    for (int i = 0; i < count; ++i) destination[i] = source[i] * value;
    return kVecDone;
}

VecStatus VecScaleInPlace(float value, float* array, int count) {
    return VecScale(array, value, array, count);
}

VecStatus VecRamp(float start, float step, float* array, int count) {
    if (const VecStatus fault = Check(count, array)) return fault;
    if (std::abs(step) < kSameGain) {
        return std::abs(start - 1) < kSameGain ? kVecDone : VecScaleInPlace(start, array, count);
    }
    for (int i = 0; i < count; ++i) array[i] *= start + static_cast<float>(i) * step;
    return kVecDone;
}

VecStatus VecMinMax(const float* source, int count, float* minimum, float* maximum) {
    if (const VecStatus fault = Check(count, source, minimum, maximum)) return fault;
    FloatBits lowest = std::numeric_limits<FloatBits>::max();
    FloatBits highest = std::numeric_limits<FloatBits>::min();
    for (int i = 0; i < count; ++i) {
        const FloatBits bits = Ordered(std::bit_cast<FloatBits>(source[i]));
        lowest = std::min(lowest, bits);
        highest = std::max(highest, bits);
    }
    *minimum = std::bit_cast<float>(Ordered(lowest));
    *maximum = std::bit_cast<float>(Ordered(highest));
    return kVecDone;
}

VecStatus VecFloatToDouble(const float* source, double* destination, int count) {
    return Convert(source, destination, count);
}

VecStatus VecDoubleToFloat(const double* source, float* destination, int count) {
    return Convert(source, destination, count);
}

VecStatus SseAbsMax(const float* array, int count, float* result) {
    if (const VecStatus fault = Check(count, array, result)) return fault;
    FloatBits largest = 0;
    for (int i = 0; i < count; ++i)
        largest = std::max(largest, std::bit_cast<FloatBits>(array[i]) & kMagnitudeBits);
    *result = std::bit_cast<float>(largest);
    return kVecDone;
}

VecStatus SseScale(float* array, int count, float value) {
    return VecScaleInPlace(value, array, count);
}
