// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "dsp/vectors_variants.h"

namespace {
namespace baseline {

void MultiplyComplex(int pairs, const float* factors, float* array) {
    for (int i = 0; i < pairs; ++i) {
        const float re = array[2 * i] * factors[2 * i] - array[2 * i + 1] * factors[2 * i + 1];
        const float im = array[2 * i] * factors[2 * i + 1] + array[2 * i + 1] * factors[2 * i];
        array[2 * i] = re;
        array[2 * i + 1] = im;
    }
}

#include "dsp/vectors_inl.h"

}  // namespace baseline
}  // namespace

const VectorLoops kBaselineVectorLoops = baseline::MakeLoops("SSE2");
