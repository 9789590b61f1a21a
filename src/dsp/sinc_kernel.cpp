// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/sinc_kernel.h"

#include <cmath>
#include <cstdlib>
#include <numbers>

namespace {

// Chosen so that the response falls from 1 to the stop band between 0.66 and 1 of Nyquist and the
// kernel's last tap stays below 1e-5.
constexpr double kCutoff = 0.83147068852033;  // of the Nyquist frequency
constexpr double kBeta = 10.08;
constexpr int kHalfWidth = 2462;  // in points, just beyond the table

double Sinc(double t) {
    return t == 0 ? 1 : std::sin(std::numbers::pi * t) / (std::numbers::pi * t);
}

double Kernel(int n) {
    const double x = static_cast<double>(n) / SincKernel::kPhases;
    const double edge = static_cast<double>(n) / kHalfWidth;
    const double window = std::cyl_bessel_i(0, kBeta * std::sqrt(1 - edge * edge));
    return kCutoff * Sinc(kCutoff * x) * window / std::cyl_bessel_i(0, kBeta);
}

double Gain() {
    double sum = Kernel(0);
    for (int n = 1; n <= kHalfWidth; ++n) sum += 2 * Kernel(n);
    return SincKernel::kPhases / sum;
}

}  // namespace

const SincKernel& SincKernel::Get() {
    static const SincKernel kernel;
    return kernel;
}

SincKernel::SincKernel() {
    const double gain = Gain();
    for (int n = 0; n < kTableLength; ++n) table[static_cast<std::size_t>(n)] = gain * Kernel(n);

    rows.fill(0);
    for (int phase = 0; phase <= kPhases; ++phase) {
        double* row = rows.data() + static_cast<std::size_t>(phase) * kRowLength;
        for (int tap = 0; tap < kTaps; ++tap)
            row[tap] = Table(std::abs(phase - (tap - kCentreTap) * kPhases));
    }
}
