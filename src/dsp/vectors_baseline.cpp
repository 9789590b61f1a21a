// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "dsp/vectors_variants.h"

namespace {
namespace baseline {

void MultiplyComplex(int pairs, const float* first, const float* second, float* destination) {
    for (int i = 0; i < 2 * pairs; i += 2) {
        const float re = first[i] * second[i] - first[i + 1] * second[i + 1];
        const float im = first[i] * second[i + 1] + first[i + 1] * second[i];
        destination[i] = re;
        destination[i + 1] = im;
    }
}

#include "dsp/vectors_inl.h"

}  // namespace baseline
}  // namespace

const VectorLoops kBaselineVectorLoops = baseline::MakeLoops("SSE2");
