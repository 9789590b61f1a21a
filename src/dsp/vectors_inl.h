// SPDX-License-Identifier: GPL-3.0-or-later

// The loops of the array primitives, which the compiler turns into vector code for the processor at
// hand. No #pragma once: each variant includes this inside its own namespace, after <algorithm>,
// <bit>, <cmath>, <cstdint> and dsp/vectors_variants.h outside of it and its own MultiplyComplex:
// of a plain one g++ 12 makes fused operations, but of its last turns.
//
// An element's result does not depend on the vectors' width: nothing is fused, extremes do not care
// for their order, and the sum has an order of its own.

template <typename Element>
void Fill(int count, Element value, Element* destination) {
    for (int i = 0; i < count; ++i) destination[i] = value;
}

template <typename Element>
void AddConstant(int count, Element value, Element* array) {
    for (int i = 0; i < count; ++i) array[i] += value;
}

void Add(int count, const float* source, float* array) {
    for (int i = 0; i < count; ++i) array[i] += source[i];
}

void Add3(int count, const float* first, const float* second, float* destination) {
    for (int i = 0; i < count; ++i) destination[i] = first[i] + second[i];
}

void Subtract3(int count, const float* first, const float* second, float* destination) {
    for (int i = 0; i < count; ++i) destination[i] = first[i] - second[i];
}

void Scale(int count, const float* source, float value, float* destination) {
    for (int i = 0; i < count; ++i) destination[i] = source[i] * value;
}

void ScaleInPlace(int count, float value, float* array) {
    for (int i = 0; i < count; ++i) array[i] *= value;
}

void Ramp(int count, float start, float step, float* array) {
    for (int i = 0; i < count; ++i) array[i] *= start + static_cast<float>(i) * step;
}

void Abs(int count, const float* source, float* destination) {
    for (int i = 0; i < count; ++i) destination[i] = std::fabs(source[i]);
}

void AbsInPlace(int count, float* array) {
    for (int i = 0; i < count; ++i) array[i] = std::fabs(array[i]);
}

void CompareLimit(int count, const float* source, float* destination, float value) {
    for (int i = 0; i < count; ++i) destination[i] = source[i] > value ? value : source[i];
}

void Magnitude(int pairs, const float* source, float* destination) {
    for (int i = 0; i < pairs; ++i) {
        const float re = source[2 * i];
        const float im = source[2 * i + 1];
        destination[i] = std::sqrt(re * re + im * im);
    }
}

template <typename From, typename To>
void Convert(int count, const From* source, To* destination) {
    for (int i = 0; i < count; ++i) destination[i] = static_cast<To>(source[i]);
}

// Element i goes into lane i % kLanes; the lanes are joined by halves.
void Sum(int count, const float* source, float* result) {
    constexpr int kLanes = 16;
    double lanes[kLanes] = {};
    int i = 0;
    for (; i + kLanes <= count; i += kLanes)
        for (int k = 0; k < kLanes; ++k) lanes[k] += source[i + k];
    for (int k = 0; i + k < count; ++k) lanes[k] += source[i + k];
    for (int half = kLanes / 2; half > 0; half /= 2)
        for (int k = 0; k < half; ++k) lanes[k] += lanes[k + half];
    *result = static_cast<float>(lanes[0]);
}

// Compilers vectorise the largest integer, but the largest float only under relaxed arithmetic.
// Magnitudes order as their bits do, and so do all numbers once the negative ones are turned round.
constexpr std::int32_t kMagnitudeBits = 0x7fffffff;
constexpr std::int32_t kInfinityBits = 0x7f800000;
constexpr std::int32_t kLowest = -kInfinityBits - 1;  // of minus infinity

// A NaN becomes other.
inline std::int32_t OrderedBits(float x, std::int32_t other) {
    const std::int32_t bits = std::bit_cast<std::int32_t>(x);
    const std::int32_t ordered = bits < 0 ? bits ^ kMagnitudeBits : bits;
    return (bits & kMagnitudeBits) > kInfinityBits ? other : ordered;
}

inline float FromOrderedBits(std::int32_t ordered) {
    return std::bit_cast<float>(ordered < 0 ? ordered ^ kMagnitudeBits : ordered);
}

void Min(int count, const float* source, float* result) {
    std::int32_t smallest = kInfinityBits;
    for (int i = 0; i < count; ++i)
        smallest = std::min(smallest, OrderedBits(source[i], kInfinityBits));
    *result = FromOrderedBits(smallest);
}

void Max(int count, const float* source, float* result) {
    std::int32_t largest = kLowest;
    for (int i = 0; i < count; ++i) largest = std::max(largest, OrderedBits(source[i], kLowest));
    *result = FromOrderedBits(largest);
}

void AbsMax(int count, const float* array, float* result) {
    std::int32_t largest = 0;
    for (int i = 0; i < count; ++i)
        largest = std::max(largest, std::bit_cast<std::int32_t>(array[i]) & kMagnitudeBits);
    *result = std::bit_cast<float>(largest);
}

constexpr VectorLoops MakeLoops(const char* name) {
    VectorLoops loops = {};
    loops.name = name;
    loops.fill = Fill<float>;
    loops.fillDouble = Fill<double>;
    loops.addConstant = AddConstant<float>;
    loops.addConstantDouble = AddConstant<double>;
    loops.add = Add;
    loops.add3 = Add3;
    loops.subtract3 = Subtract3;
    loops.scale = Scale;
    loops.scaleInPlace = ScaleInPlace;
    loops.ramp = Ramp;
    loops.abs = Abs;
    loops.absInPlace = AbsInPlace;
    loops.compareLimit = CompareLimit;
    loops.multiplyComplex = MultiplyComplex;
    loops.magnitude = Magnitude;
    loops.floatToDouble = Convert<float, double>;
    loops.doubleToFloat = Convert<double, float>;
    loops.int32ToFloat = Convert<std::int32_t, float>;
    loops.int16ToFloat = Convert<std::int16_t, float>;
    loops.sum = Sum;
    loops.min = Min;
    loops.max = Max;
    loops.absMax = AbsMax;
    return loops;
}
