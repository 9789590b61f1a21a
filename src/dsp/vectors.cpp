// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/vectors.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "foundation/objects/tolerances.h"

namespace {

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

}  // namespace

VecStatus VecCopy(const float* source, float* destination, int count) {
    if (const VecStatus fault = Check(count, source, destination)) return fault;
    std::memcpy(destination, source, static_cast<std::size_t>(count) * sizeof(float));
    return kVecDone;
}

VecStatus VecZero(float* destination, int count) { return Zero(destination, count); }

VecStatus VecZeroDouble(double* destination, int count) { return Zero(destination, count); }

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

VecStatus VecScaleInPlace(float value, float* array, int count) {
    if (const VecStatus fault = Check(count, array)) return fault;
    for (int i = 0; i < count; ++i) array[i] *= value;
    return kVecDone;
}

VecStatus VecRamp(float start, float step, float* array, int count) {
    if (const VecStatus fault = Check(count, array)) return fault;
    if (std::abs(step) < kSameGain) {
        return std::abs(start - 1) < kSameGain ? kVecDone : VecScaleInPlace(start, array, count);
    }
    for (int i = 0; i < count; ++i) array[i] *= start + static_cast<float>(i) * step;
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
    // Magnitudes order as integers do; compilers vectorise the largest integer, but the largest
    // float only under relaxed arithmetic.
    constexpr std::int32_t kMagnitudeBits = 0x7fffffff;
    std::int32_t largest = 0;
    for (int i = 0; i < count; ++i)
        largest = std::max(largest, std::bit_cast<std::int32_t>(array[i]) & kMagnitudeBits);
    *result = std::bit_cast<float>(largest);
    return kVecDone;
}
