// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

#include "dsp/fft.h"
#include "foundation/objects/growing_buffer.h"

// A finite impulse response and its spectrum: design of low-passes, and their fast convolution with
// blocks of samples.
//
//     FirKernel kernel;
//     DesignLowPass(kernel, {1000, 48000, 1024});
//     ComputeSpectrum(kernel, 4096);
//     TransformBlock(kernel, block, spectrum);
//     FilterSpectrum(kernel, spectrum, block);    // 2048 samples and 2048 zeros became 4096
//     samples
//
// Units    hertz; lengths in samples
// Ranges   lengths 1 .. kMaxTaps, transforms of 2 .. kMaxFftSize samples, no shorter than the taps
// Threads  as the owner says; a kernel filters several blocks at once, while none changes it
// Memory   the first design of a length and the first transform of a size allocate, nothing else
//          does
// Errors   std::bad_alloc
// Method   Kaiser-windowed sinc

// A window's table, kept for the next design of its length.
struct FirWindow {
    static constexpr int kKaiser = 8;

    GrowingBuffer<float> table;
    std::int32_t kind = 2;  // other kinds than kKaiser have no table here
    std::int32_t length = 0;
    float attenuation = 170;  // decibels; who changes it sets the length to 0
};

struct FirKernel {
    static constexpr int kMaxTaps = 2049;
    static constexpr int kMaxFftSize = 4096;

    GrowingBuffer<float> taps;
    std::int32_t fullLength = 0;    // odd; the centre is at fullLength / 2
    std::int32_t activeLength = 0;  // odd; outside of this stretch around the centre all taps are 0
    FirWindow window;
    GrowingBuffer<float> spectrum;  // packed; 0 until it is computed
    std::int32_t fftSize = 0;
    bool normalise = true;  // divide by the size, which the transforms multiply by
    float fftScale = 1;     // 1 / fftSize
    float gain = 1;
    std::int32_t order = 0;  // fftSize = 2^order
    FftHolder transform;
    GrowingBuffer<std::byte> work;
};

struct LowPassDesign {
    double frequency;  // at the Nyquist frequency and above it everything passes
    double sampleRate;
    std::int32_t length;     // of all taps; made odd
    double transition = -1;  // width in hertz, which decides on the active length; -1: all active
};

// The sum of the taps comes out near 1 and is not corrected.
void DesignLowPass(FirKernel& kernel, const LowPassDesign& design);

// The taps of what a low-pass leaves over: an impulse at the centre minus the taps of source.
void TakeComplement(FirKernel& kernel, const FirKernel& source);

// Makes a kernel ready for transforms of that size; one that is keeps its spectrum.
void PrepareTransform(FirKernel& kernel, int fftSize);

void ComputeSpectrum(FirKernel& kernel, int fftSize);

// Puts another kernel with a spectrum of the same size behind this one.
void MultiplySpectrum(FirKernel& kernel, const FirKernel& other);

// The two halves of a convolution, cyclic over fftSize samples, with the gain applied. The spectrum
// in between has room for two more floats; both arrays lie at multiples of 16 bytes.
void TransformBlock(const FirKernel& kernel, float* block, float* spectrum);  // uses block up
void FilterSpectrum(const FirKernel& kernel, const float* spectrum, float* block);
