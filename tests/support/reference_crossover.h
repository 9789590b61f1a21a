// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

// The analog crossover's responses from the poles of the analogue prototypes, at frequencies that
// the bilinear transform has warped.
//
// Units    hertz

struct ReferenceCrossover {
    using Complex = std::complex<double>;

    Complex Band(int band, double frequency) const {
        Complex response = mode == 0 && band % 2 == 1 ? -1 : 1;
        for (int k = 0; k < static_cast<int>(limits.size()); ++k) {
            const Complex s = S(k, frequency);
            const Complex low = std::pow(Denominator(s), mode == 0 ? -1 : -2);
            if (k < band - 1) response *= AllPass(k, frequency);
            if (k == band - 1) response *= low * std::pow(s, mode == 0 ? 2 : 4 * mode);
            if (k >= band) response *= low;
        }
        return response;
    }

    int mode;
    double sampleRate;
    std::vector<double> limits;

private:
    // The prototypes' s, 1j at the limit.
    Complex S(int limit, double frequency) const {
        const double half = std::numbers::pi / sampleRate;
        return {0, std::tan(half * frequency) / std::tan(half * limits[limit])};
    }

    // Of mode 0 a double pole at -1, else the Butterworth poles of order 2 * mode.
    Complex Denominator(Complex s) const {
        if (mode == 0) return (s + 1.) * (s + 1.);
        Complex product = 1;
        for (int k = 1, order = 2 * mode; k <= order; ++k)
            product *= s - std::polar(1., std::numbers::pi * (2 * k + order - 1) / (2 * order));
        return product;
    }

    // Of mode 0 digital, with one pole at exp(-w) and -1 at 0 Hz.
    Complex AllPass(int limit, double frequency) const {
        const Complex s = S(limit, frequency);
        if (mode > 0) return Denominator(-s) / Denominator(s);
        const double turn = 2 * std::numbers::pi / sampleRate;
        const double pole = std::exp(-turn * limits[limit]);
        const Complex delay = std::polar(1., -turn * frequency);
        return (pole - delay) / (1. - pole * delay);
    }
};
