// SPDX-License-Identifier: GPL-3.0-or-later
#include <emmintrin.h>

#include <algorithm>

#include "dsp/analog_crossover_variants.h"

namespace {

// SSE2, which every x86-64 processor has.
struct Simd {
    using Doubles = __m128d;
    static constexpr int kLanes = 2;
    static constexpr int kTogether = 4;

    static Doubles Load(const double* p) { return _mm_load_pd(p); }
    static void Store(Doubles x, double* p) { _mm_store_pd(p, x); }
    static Doubles Join(const double* const (&p)[1]) { return _mm_loadu_pd(p[0]); }
    static void Split(Doubles x, double* const (&p)[1]) { _mm_storeu_pd(p[0], x); }
    static Doubles MulAdd(Doubles a, Doubles b, Doubles c) {
        return _mm_add_pd(_mm_mul_pd(a, b), c);
    }
};

#include "dsp/analog_crossover_inl.h"

}  // namespace

const RunAnalogLanes kBaselineAnalogLanes = RunLanes;
