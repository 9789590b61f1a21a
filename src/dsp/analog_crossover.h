// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "dsp/audio_filter.h"
#include "dsp/biquad.h"
#include "dsp/voice_reads.h"
#include "foundation/objects/growing_buffer.h"

// Minimum-phase crossover: splits a channel into bands whose sum is an all-pass.
//
// mode 0     12 dB/oct: second-order filters of Q 0.5, odd bands negated. The first-order all-pass
//            that aligns the bands above approximates the sum of a pair, so three and more bands
//            sum flat only well below half the sample rate
// mode 1..5  24, 48, 72, 96, 120 dB/oct: Linkwitz-Riley, that is a Butterworth low-pass or
//            high-pass of order 2 * mode run twice. The sum is an exact all-pass
//
// A band passes the high-pass of the limit below it, the low-passes of all limits above it, and the
// all-passes of the limits further below, whose filters it doesn't meet otherwise.
//
//     AnalogCrossover crossover;                        // one for all channels
//     BuildAnalog(crossover, 3, limits, 48000, 1);
//     AnalogCrossoverState left, right;                 // one for each channel
//     ReserveAnalogState(left, blockSize);              // and right
//     RunAnalogBands(crossover, states, 2, inputs, outputs, count);
//
// Units    hertz, samples at the processing rate
// Ranges   1 .. kMaxBands bands; limits in any order. A limit is taken as it is where its filters
//          exist and are stable, from 1e-6 to 0.4999 of the sample rate; another one counts as the
//          nearer of these ends, one that is not a number as the lower
// Threads  the crossover and its states belong to one caller at a time
// Memory   what ReserveAnalogState prepares is not allocated again; the plain form, RunAnalogBand,
//          allocates its filters' states at their first use all the same
// Errors   std::bad_alloc
// Method   S. P. Lipshitz, J. Vanderkooy, "A Family of Linear-Phase Crossover Networks of High
//          Slope Derived by Time Delay", 1983, for the structure with all-passes;
//          transposed direct form II in 64-bit floats

struct AnalogCrossoverPlan;

// The two forms, band by band and all bands at once, remember apart: a channel keeps to one.
struct AnalogCrossover {
    static constexpr int kMaxBands = 6;
    static constexpr int kMaxLimits = kMaxBands - 1;

    std::int32_t bands = 0;
    MAudioFilters::FilterCascade lowSide[kMaxLimits];   // high-passes: the low side of a band
    MAudioFilters::FilterCascade highSide[kMaxLimits];  // low-passes: the high side of a band
    MAudioFilters::FilterCascade allPass[kMaxLimits];
    std::int32_t doubled = 0;  // the mode that it was built with
};

struct AnalogCrossoverState {};

// Designs the filters for bands - 1 limits. States keep their histories, so that a limit may move
// while it is heard; another number of bands or another mode clears each state at its next run.
void BuildAnalog(AnalogCrossover& crossover, int bands, const double* frequencies,
                 double sampleRate, int mode);

// Makes room for blocks of up to this many samples. The history stays.
void ReserveAnalogState(AnalogCrossoverState& state, int blockSize);

// Forgets what was heard.
void ClearAnalogState(AnalogCrossoverState& state);

// One band of one channel. Bands run from the lowest up, all of them for each block: the chain of
// all-passes goes on where the band before has left it. Source and destination may be one array.
void RunAnalogBand(const AnalogCrossover& crossover, AnalogCrossoverState& state, int band,
                   const double* source, double* destination, int count);

// All bands of all channels. destinations has bands * channels arrays, band b of channel c at
// b * channels + c; none overlaps a source. Each sample is what RunAnalogBand gives, rounded; the
// two differ by less than 1e-9 of the loudest sample for a limit of 20 Hz at 192 kHz (the order of
// roundings, whose effect grows with the sample rate over the limit).
// Results don't depend on where blocks are cut, on other channels or on their number.
void RunAnalogBands(const AnalogCrossover& crossover, AnalogCrossoverState* const* states,
                    int channels, const float* const* sources, float* const* destinations,
                    int count);

// The same by a given variant; the caller has asked HasProcessorVariant.
void RunAnalogBands(ProcessorVariant variant, const AnalogCrossover& crossover,
                    AnalogCrossoverState* const* states, int channels, const float* const* sources,
                    float* const* destinations, int count);

// The phase of the bands' sum without the split, for a channel that is left out: the all-passes of
// all limits, negated in mode 0 for an even number of bands. In place.
void RunAnalogAllPass(const AnalogCrossover& crossover, AnalogCrossoverState& state, float* buffer,
                      int count);
