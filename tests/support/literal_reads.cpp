// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/literal_reads.h"

#include "dsp/sinc_kernel.h"

double LiteralSincSum(const float* line, int length, int cell, double fraction) {
    constexpr int kHalf = 18;
    constexpr int kPhases = 128;
    const SincKernel& kernel = SincKernel::Get();

    float wrapped[2 * kHalf + 1];
    const float* window = line + cell - kHalf;
    if (cell < kHalf || cell + kHalf >= length) {
        for (int j = 0; j <= 2 * kHalf; ++j)
            wrapped[j] = line[(cell + length - kHalf + j) % length];
        window = wrapped;
    }

    const double u = fraction * kPhases;
    const int iu = static_cast<int>(u);
    const double a = u - iu;
    const double v = kPhases - u;
    const int iv = static_cast<int>(v);
    const double b = v - iv;
    double sum = window[kHalf] * ((1 - a) * kernel.Table(iu) + a * kernel.Table(iu + 1));
    for (int m = 1; m <= kHalf; ++m) {
        const int left = iu + kPhases * m;
        const int right = iv + kPhases * (m - 1);
        sum += window[kHalf - m] * ((1 - a) * kernel.Table(left) + a * kernel.Table(left + 1));
        sum += window[kHalf + m] * ((1 - b) * kernel.Table(right) + b * kernel.Table(right + 1));
    }
    return sum;
}

float LiteralSincRead(const float* line, int length, int cell, double fraction) {
    return static_cast<float>(LiteralSincSum(line, length, cell, fraction));
}

float LiteralCubicRead(const float* line, int length, int cell, double fraction) {
    const float before = line[(cell + length - 1) % length], y0 = line[cell];
    const float y1 = line[(cell + 1) % length], y2 = line[(cell + 2) % length];
    const auto f = static_cast<float>(fraction);
    const float cube = ((y0 - y1) * 3 - before + y2) * 0.5f;
    const float square = y1 * 2 + before - (y0 * 5 + y2) * 0.5f;
    return ((cube * f + square) * f + (y1 - before) * 0.5f) * f + y0;
}
