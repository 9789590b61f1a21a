// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

#include "dsp/fft.h"
#include "foundation/objects/growing_buffer.h"

// A finite impulse response and its spectrum: the design of low-passes and their fast convolution
// with blocks of samples.
//
//     FirKernel kernel;
//     DesignLowPass(kernel, {1000, 48000, 1024});
//     ComputeSpectrum(kernel, 4096);
//     FilterBlock(kernel, block);    // 2048 samples and 2048 zeros become 4096 samples
//
// Units    hertz; lengths in samples
// Ranges   lengths 1 .. 2049, transforms of 2 .. 4096 samples
// Threads  as the owner says; a kernel filters one block at a time
// Memory   the first design and the first spectrum of a size allocate, filtering never does
// Errors   std::bad_alloc

// Window of a kernel as a table, kept for the next design of the same length.
struct FirWindow {
    static constexpr int kKaiser = 8;

    GrowingBuffer<float> table;
    std::int32_t kind = 2;  // other kinds than kKaiser have no table here
    std::int32_t length = 0;
    float attenuation = 170;  // decibels, of a Kaiser window
};

struct FirKernel {
    static constexpr int kMaxTaps = 2049;
    static constexpr int kMaxFftSize = 4096;

    GrowingBuffer<float> taps;      // fullLength of them, the centre at fullLength / 2
    std::int32_t fullLength = 0;    // odd
    std::int32_t activeLength = 0;  // odd; taps outside of the middle stretch of that length are 0
    FirWindow window;
    GrowingBuffer<float> spectrum;  // packed
    std::int32_t fftSize = 0;
    bool normalise = true;  // undo the transforms' factor
    float fftScale = 1;     // 1 / fftSize
    float gain = 1;
    std::int32_t order = 0;  // fftSize = 2^order
    FftHolder transform;
    GrowingBuffer<std::byte> work;
};
