// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "dsp/delay.h"
#include "dsp/fir_convolver.h"

// Splits a channel into bands of linear phase, which sum to the channel, delayed.
//
//     BuildLinear(crossover, 3, frequencies, 48000, false);
//     ReserveLinearChannel(channel, 3, 64);
//     for (int b = 0; b < 3; ++b) RunLinearBand(crossover, channel, b, in, bands[b], 64);
//
// Each band of each channel runs by itself and may get an input of its own: only bands that heard
// the same sum to it. Between two resets every band of a channel must be given the same count of
// samples, or they drift apart.
//
// Units    hertz, ascending; samples
// Ranges   bands 1 .. kMaxBands; one band passes through as it is, without latency
// Threads  as the owner says: a crossover and its channels are run and built by one at a time
// Memory   BuildLinear allocates where it has more bands than ever before; RunLinearBand does where
//          ReserveLinearChannel has not prepared for its band and count
// Errors   MException "Not enough data in the queue." out of RunLinearBand, never after a reset;
//          std::bad_alloc
// Method   overlap-add convolution with Kaiser-windowed sinc kernels, 2048 samples at a time

// What two bands and more are late, in samples: 2048 of the blocks and 1024 of the kernels.
inline constexpr int kLinearCrossoverLatency = 3072;

struct LinearCrossover {
    static constexpr int kMaxBands = 6;

    std::int32_t bands = 1;
    FirKernel kernels[kMaxBands];
    FirKernel complement;  // what a middle band leaves to those below; used while building
};

// A new one is as after ResetLinearChannel and owns nothing.
struct LinearCrossoverChannel {
    FirStream bands[LinearCrossover::kMaxBands];
    FirInput last;  // bands get the same input, as long as their gains are the same
    // The outer bands' kernels are half as long as the others: these lines make up for it.
    MAudioFilters::Delay<float> lowest;
    MAudioFilters::Delay<float> highest;
};

// bands - 1 frequencies. fixedQ shortens a kernel the higher its frequency is, which keeps the
// steepness relative to the frequency, as an analog filter does.
void BuildLinear(LinearCrossover& crossover, int bands, const double* frequencies,
                 double sampleRate, bool fixedQ);

// Room for that many bands and for blocks of up to maxCount samples. What the channel has heard
// stays.
void ReserveLinearChannel(LinearCrossoverChannel& channel, int bands, int maxCount);

// Back to silence; keeps its memory.
void ResetLinearChannel(LinearCrossoverChannel& channel);

// Source and destination may be one array.
void RunLinearBand(LinearCrossover& crossover, LinearCrossoverChannel& channel, int band,
                   const float* source, float* destination, int count);
