// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/vectors.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "dsp/vectors_variants.h"
#include "foundation/objects/tolerances.h"

namespace {

const VectorLoops& Loops() {
    static const VectorLoops& best = GetVectorLoops(BestProcessorVariant());
    return best;
}

template <typename Argument>
bool IsNull(Argument argument) {
    if constexpr (std::is_pointer_v<Argument>) return argument == nullptr;
    return false;
}

template <typename... Argument>
using Loop = void (*)(int count, Argument...);

// Runs the loop if the count and the arrays among its arguments are in order.
template <typename... Argument>
VecStatus Run(Loop<Argument...> loop, int count, std::type_identity_t<Argument>... arguments) {
    if ((IsNull(arguments) || ...)) return kVecNullPointer;
    if (count < 1) return kVecBadLength;
    loop(count, arguments...);
    return kVecDone;
}

std::size_t Bytes(int count) { return static_cast<std::size_t>(count) * sizeof(float); }

void Copy(int count, const float* source, float* destination) {
    std::memcpy(destination, source, Bytes(count));
}

void Move(int count, const float* source, float* destination) {
    std::memmove(destination, source, Bytes(count));
}

void Leave(int, float*) {}

template <typename Element>
void Zero(int count, Element* destination) {
    std::fill_n(destination, count, Element{0});
}

void MinMax(int count, const float* source, float* minimum, float* maximum) {
    float smallest;
    Loops().min(count, source, &smallest);
    Loops().max(count, source, maximum);
    *minimum = smallest;
}

void MaxIndex(int count, const float* source, float* value, std::int32_t* index) {
    float largest;
    Loops().max(count, source, &largest);
    const float* const first = std::find(source, source + count, largest);
    *index = first == source + count ? 0 : static_cast<std::int32_t>(first - source);
    *value = largest;
}

void Phase(int pairs, const float* source, float* destination) {
    for (int i = 0; i < pairs; ++i) destination[i] = std::atan2(source[2 * i + 1], source[2 * i]);
}

void WindowTriangular(int count, float* array) {
    const double last = count - 1;
    for (int i = 0; i < count && count > 1; ++i)
        array[i] *= static_cast<float>(1 - std::abs(2 * i - last) / last);
}

}  // namespace

const VectorLoops& GetVectorLoops(ProcessorVariant variant) {
    switch (variant) {
        case ProcessorVariant::Avx512:
            return kAvx512VectorLoops;
        case ProcessorVariant::Avx2:
            return kAvx2VectorLoops;
        case ProcessorVariant::Baseline:
            break;
    }
    return kBaselineVectorLoops;
}

VecStatus VecCopy(const float* source, float* destination, int count) {
    return Run(Copy, count, source, destination);
}

VecStatus VecMove(const float* source, float* destination, int count) {
    return Run(Move, count, source, destination);
}

VecStatus VecZero(float* destination, int count) { return Run(Zero<float>, count, destination); }

VecStatus VecZeroDouble(double* destination, int count) {
    return Run(Zero<double>, count, destination);
}

VecStatus VecFill(float value, float* destination, int count) {
    return Run(Loops().fill, count, value, destination);
}

VecStatus VecFillDouble(double value, double* destination, int count) {
    return Run(Loops().fillDouble, count, value, destination);
}

VecStatus VecAddConstant(float value, float* array, int count) {
    return Run(Loops().addConstant, count, value, array);
}

VecStatus VecAddConstantDouble(double value, double* array, int count) {
    return Run(Loops().addConstantDouble, count, value, array);
}

VecStatus VecAdd(const float* source, float* array, int count) {
    return Run(Loops().add, count, source, array);
}

VecStatus VecAdd3(const float* first, const float* second, float* destination, int count) {
    return Run(Loops().add3, count, first, second, destination);
}

VecStatus VecSubtract3(const float* first, const float* second, float* destination, int count) {
    return Run(Loops().subtract3, count, first, second, destination);
}

VecStatus VecScale(const float* source, float value, float* destination, int count) {
    return Run(Loops().scale, count, source, value, destination);
}

VecStatus VecScaleInPlace(float value, float* array, int count) {
    return Run(Loops().scaleInPlace, count, value, array);
}

VecStatus VecScaleInPlaceAlt(float value, float* array, int count) {
    return VecScaleInPlace(value, array, count);
}

VecStatus VecRamp(float start, float step, float* array, int count) {
    if (std::abs(step) >= kSameGain) return Run(Loops().ramp, count, start, step, array);
    if (std::abs(start - 1) < kSameGain) return Run(Leave, count, array);
    return VecScaleInPlace(start, array, count);
}

VecStatus VecAbs(const float* source, float* destination, int count) {
    return Run(Loops().abs, count, source, destination);
}

VecStatus VecAbsInPlace(float* array, int count) { return Run(Loops().absInPlace, count, array); }

VecStatus VecCompareLimit(const float* source, float* destination, int count, float value) {
    return Run(Loops().compareLimit, count, source, destination, value);
}

VecStatus VecMultiplyComplex(const float* first, const float* second, float* destination,
                             int pairs) {
    return Run(Loops().multiplyComplex, pairs, first, second, destination);
}

VecStatus VecMagnitude(const float* source, float* destination, int pairs) {
    return Run(Loops().magnitude, pairs, source, destination);
}

VecStatus VecPhase(const float* source, float* destination, int pairs) {
    return Run(Phase, pairs, source, destination);
}

VecStatus VecMax(const float* source, int count, float* result) {
    return Run(Loops().max, count, source, result);
}

VecStatus VecMaxIndex(const float* source, int count, float* value, std::int32_t* index) {
    return Run(MaxIndex, count, source, value, index);
}

VecStatus VecMinMax(const float* source, int count, float* minimum, float* maximum) {
    return Run(MinMax, count, source, minimum, maximum);
}

VecStatus VecSum(const float* source, int count, float* result, int) {
    return Run(Loops().sum, count, source, result);
}

VecStatus VecFloatToDouble(const float* source, double* destination, int count) {
    return Run(Loops().floatToDouble, count, source, destination);
}

VecStatus VecDoubleToFloat(const double* source, float* destination, int count) {
    return Run(Loops().doubleToFloat, count, source, destination);
}

VecStatus VecInt32ToFloat(const std::int32_t* source, float* destination, int count) {
    return Run(Loops().int32ToFloat, count, source, destination);
}

VecStatus VecInt16ToFloat(const std::int16_t* source, float* destination, int count) {
    return Run(Loops().int16ToFloat, count, source, destination);
}

VecStatus VecWindowTriangular(float* array, int count) {
    return Run(WindowTriangular, count, array);
}

VecStatus SseAbsMax(const float* array, int count, float* result) {
    return Run(Loops().absMax, count, array, result);
}

float SseSum(const float* array, int count) {
    float sum = 0;
    VecSum(array, count, &sum, 0);
    return sum;
}

VecStatus SseScale(float* array, int count, float value) {
    return VecScaleInPlace(value, array, count);
}

VecStatus SseScaleTo(float* destination, const float* source, int count, float value) {
    return VecScale(source, value, destination, count);
}
