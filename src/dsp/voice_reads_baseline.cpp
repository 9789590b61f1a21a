// SPDX-License-Identifier: GPL-3.0-or-later
#include <emmintrin.h>

#include <cstring>

#include "dsp/shape_table.h"
#include "dsp/sinc_kernel.h"
#include "dsp/voice_reads_variants.h"

namespace {
namespace baseline {

// SSE2, which every x86-64 processor has.
struct Simd {
    using Doubles = __m128d;
    static constexpr int kLanes = 2;

    static Doubles Zero() { return _mm_setzero_pd(); }
    static Doubles Weights(const double* p) { return _mm_load_pd(p); }
    static Doubles Samples(const float* p) {
        return _mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))));
    }
    static Doubles LastSamples(const float* p) { return _mm_cvtps_pd(_mm_load_ss(p)); }
    static Doubles Broadcast(double x) { return _mm_set1_pd(x); }
    static Doubles Add(Doubles a, Doubles b) { return _mm_add_pd(a, b); }
    static Doubles Multiply(Doubles a, Doubles b) { return _mm_mul_pd(a, b); }
    static Doubles MulAdd(Doubles a, Doubles b, Doubles c) {
        return _mm_add_pd(_mm_mul_pd(a, b), c);
    }
    static void Sum4(Doubles a, Doubles b, Doubles c, Doubles d, double* out) {
        _mm_storeu_pd(out, _mm_add_pd(_mm_unpacklo_pd(a, b), _mm_unpackhi_pd(a, b)));
        _mm_storeu_pd(out + 2, _mm_add_pd(_mm_unpacklo_pd(c, d), _mm_unpackhi_pd(c, d)));
    }
};

#include "dsp/voice_loops_inl.h"
#include "dsp/voice_reads_inl.h"

}  // namespace baseline

// The four cells around a position, wrapped around the line.
inline __m128 CubicWindow(const LineView& line, int cell) {
    if (cell >= 1 && cell + 2 < line.length) return _mm_loadu_ps(line.cells + cell - 1);
    float window[4];
    for (int tap = 0; tap < 4; ++tap)
        window[tap] = line.cells[(cell + tap - 1 + line.length) % line.length];
    return _mm_loadu_ps(window);
}

// The Catmull-Rom polynomial through ym1, y0, y1, y2 at f from y0 to y1, for four reads at once:
// ((((y0 - y1) 3 - ym1 + y2) 0.5 f + y1 2 + ym1 - (y0 5 + y2) 0.5) f + (y1 - ym1) 0.5) f + y0
inline __m128 CatmullRom(__m128 ym1, __m128 y0, __m128 y1, __m128 y2, __m128 f) {
    const __m128 half = _mm_set1_ps(0.5f);
    __m128 cube = _mm_mul_ps(_mm_sub_ps(y0, y1), _mm_set1_ps(3.0f));
    cube = _mm_mul_ps(_mm_add_ps(_mm_sub_ps(cube, ym1), y2), half);
    const __m128 back = _mm_mul_ps(_mm_add_ps(_mm_mul_ps(y0, _mm_set1_ps(5.0f)), y2), half);
    const __m128 ahead = _mm_mul_ps(y1, _mm_set1_ps(2.0f));
    const __m128 slope = _mm_mul_ps(_mm_sub_ps(y1, ym1), half);
    __m128 y = _mm_add_ps(_mm_add_ps(_mm_mul_ps(cube, f), ahead), ym1);
    y = _mm_sub_ps(y, back);
    y = _mm_add_ps(_mm_mul_ps(y, f), slope);
    return _mm_add_ps(_mm_mul_ps(y, f), y0);
}

}  // namespace

void ReadCubic(const LineView& line, const ReadPoints& points, float* out) {
    for (int first = 0; first < points.count; first += 4) {
        __m128 ym1 = CubicWindow(line, points.cells[first]);
        __m128 y0 = CubicWindow(line, points.cells[first + 1]);
        __m128 y1 = CubicWindow(line, points.cells[first + 2]);
        __m128 y2 = CubicWindow(line, points.cells[first + 3]);
        _MM_TRANSPOSE4_PS(ym1, y0, y1, y2);
        const __m128 f = _mm_movelh_ps(_mm_cvtpd_ps(_mm_load_pd(points.fractions + first)),
                                       _mm_cvtpd_ps(_mm_load_pd(points.fractions + first + 2)));
        _mm_storeu_ps(out + first, CatmullRom(ym1, y0, y1, y2, f));
    }
}

const VoiceReads kBaselineVoiceReads = baseline::MakeReads("SSE2");
