// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/literal_reads.h"

#include <cmath>

#include "dsp/sinc_kernel.h"

double LiteralSincSum(const float* line, int length, int cell, double fraction) {
    const SincKernel& kernel = SincKernel::Get();
    double sum = 0;
    for (int m = -18; m <= 18; ++m) {
        const int i = cell + m;
        const double distance = std::abs(128 * (fraction - m));
        const int n = static_cast<int>(distance);
        const double a = distance - n;
        sum += line[i < 0        ? i + length
                    : i < length ? i
                                 : i - length] *
               ((1 - a) * kernel.Table(n) + a * kernel.Table(n + 1));
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
