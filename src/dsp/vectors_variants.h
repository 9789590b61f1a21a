// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "dsp/processor.h"

// The loops behind dsp/vectors.h, compiled for each processor: as the primitives of the same names,
// with checked arguments and the count first. All processors' results are the same bit by bit.
struct VectorLoops {
    const char* name;
    void (*fill)(int count, float value, float* destination);
    void (*fillDouble)(int count, double value, double* destination);
    void (*addConstant)(int count, float value, float* array);
    void (*addConstantDouble)(int count, double value, double* array);
    void (*add)(int count, const float* source, float* array);
    void (*add3)(int count, const float* first, const float* second, float* destination);
    void (*subtract3)(int count, const float* first, const float* second, float* destination);
    void (*scale)(int count, const float* source, float value, float* destination);
    void (*scaleInPlace)(int count, float value, float* array);
    void (*ramp)(int count, float start, float step, float* array);
    void (*abs)(int count, const float* source, float* destination);
    void (*absInPlace)(int count, float* array);
    void (*compareLimit)(int count, const float* source, float* destination, float value);
    void (*multiplyComplex)(int pairs, const float* first, const float* second, float* destination);
    void (*magnitude)(int pairs, const float* source, float* destination);
    void (*floatToDouble)(int count, const float* source, double* destination);
    void (*doubleToFloat)(int count, const double* source, float* destination);
    void (*int32ToFloat)(int count, const std::int32_t* source, float* destination);
    void (*int16ToFloat)(int count, const std::int16_t* source, float* destination);
    void (*sum)(int count, const float* source, float* result);
    void (*min)(int count, const float* source, float* result);
    void (*max)(int count, const float* source, float* result);
    void (*absMax)(int count, const float* array, float* result);
};

extern const VectorLoops kBaselineVectorLoops;
extern const VectorLoops kAvx2VectorLoops;
extern const VectorLoops kAvx512VectorLoops;

// A given variant; the caller has asked HasProcessorVariant.
const VectorLoops& GetVectorLoops(ProcessorVariant variant);
