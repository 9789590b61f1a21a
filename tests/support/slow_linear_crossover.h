// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

// The linear-phase bands once more, in 64 bits and without transforms: each band's taps straight
// from the formulas, and their sum over all samples before.
//
// Units    hertz, samples; all bands are late by 2048 + 1024

namespace SlowLinear {

using Taps = std::vector<double>;

constexpr int kTaps = 1025;

inline Taps LowPass(double frequency, double sampleRate, bool fixedQ) {
    const double beta = (170 - 8.7) * 0.1102, pi = std::numbers::pi;
    const double fc = std::min(1.0f, static_cast<float>(2 * frequency / sampleRate));
    const double wanted = fixedQ ? 180 * sampleRate / (14.357078426905355 * frequency) : kTaps;
    const int active = std::min(static_cast<int>(wanted) / 2 * 2 + 1, kTaps);
    Taps taps(kTaps, 0);
    for (int i = 0; i < active; ++i) {
        const int distance = i - active / 2;
        const double x = 2.0 * i / active - 1, edge = std::cyl_bessel_i(0, beta);
        const double window = std::cyl_bessel_i(0, beta * std::sqrt(1 - x * x)) / edge;
        const double sinc = distance == 0 ? fc : std::sin(pi * fc * distance) / (pi * distance);
        taps[kTaps / 2 + distance] = sinc * window;
    }
    return taps;
}

inline Taps LeftOver(Taps taps) {
    for (double& tap : taps) tap = -tap;
    taps[taps.size() / 2] += 1;
    return taps;
}

inline Taps InARow(const Taps& a, const Taps& b) {
    Taps product(a.size() + b.size() - 1, 0);
    for (std::size_t i = 0; i < a.size(); ++i)
        for (std::size_t j = 0; j < b.size(); ++j) product[i + j] += a[i] * b[j];
    return product;
}

// 2049 taps around the centre. An outer band has an impulse instead of its second kernel.
inline Taps Band(const std::vector<double>& frequencies, double sampleRate, bool fixedQ,
                 std::size_t band) {
    Taps impulse(kTaps, 0);
    impulse[kTaps / 2] = 1;
    const Taps upper =
        band < frequencies.size() ? LowPass(frequencies[band], sampleRate, fixedQ) : impulse;
    const Taps lower =
        band > 0 ? LeftOver(LowPass(frequencies[band - 1], sampleRate, fixedQ)) : impulse;
    return InARow(upper, lower);
}

// Sample i of what a band makes of in.
inline double Filtered(const Taps& band, const std::vector<float>& in, std::size_t i) {
    double sum = 0;
    for (std::size_t k = 0; k < band.size() && k + 2048 <= i; ++k)
        sum += band[k] * in[i - 2048 - k];
    return sum;
}

}  // namespace SlowLinear
