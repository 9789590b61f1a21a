// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>

// The low-pass kernel of the sinc read, as rows ready for a dot product.
//
// The kernel h is a Kaiser-windowed sinc with a unit sum:
//     h(x) = g f sinc(f x) I0(beta sqrt(1 - (x / H)^2)) / I0(beta),  sinc(t) = sin(pi t) / (pi t)
// (J. F. Kaiser, "Nonrecursive digital filter design using the I0-sinh window function", 1974).
// It removes what lies above about 83 percent of the Nyquist frequency; it is not 1 at distance 0,
// so that a read at a whole position filters like any other.
//
// Units    x in samples
// Threads  made once, at the first call of Get; read-only from then on
class SincKernel {
public:
    static constexpr int kTaps = 37;
    static constexpr int kCentreTap = 18;
    static constexpr int kPhases = 128;    // points per sample distance
    static constexpr int kRowLength = 40;  // kTaps padded with zeros to whole vectors
    static constexpr int kTableLength = (kCentreTap + 1) * kPhases + 1;

    static const SincKernel& Get();

    // h(n / 128), n from 0 to kTableLength - 1.
    double Table(int n) const { return table[static_cast<std::size_t>(n)]; }

    // The weights of a window's cells for a read at the fraction phase / 128 behind its centre
    // cell, phase 0 .. 128. A read in between takes the linear mean of two neighbouring rows, which
    // follow each other in memory.
    const double* Row(int phase) const {
        return rows.data() + static_cast<std::size_t>(phase) * kRowLength;
    }

private:
    SincKernel();

    std::array<double, kTableLength> table;
    alignas(64) std::array<double, (kPhases + 1) * kRowLength> rows;
};
