// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "dsp/audio_filter.h"
#include "dsp/processor.h"
#include "foundation/objects/growing_buffer.h"

// Minimum-phase crossover: splits channels into bands whose sum is an all-pass.
//
// mode 0     12 dB/oct: second-order filters of Q 0.5, odd bands negated. Two bands sum to an exact
//            all-pass; the first-order sections that align more of them come close to it well below
//            half the sample rate
// mode 1..5  24, 48, 72, 96, 120 dB/oct: Linkwitz-Riley, that is a Butterworth low-pass or
//            high-pass of order 2 * mode run twice. The sum is an exact all-pass
//
// A band passes the high-pass of the limit below it, the low-passes of all limits above it and the
// all-passes of the limits further below, which it would not meet otherwise.
//
//     AnalogCrossover crossover;                        // one for all channels
//     BuildAnalog(crossover, 3, limits, 48000, 1);
//     AnalogCrossoverState left, right;                 // one for each channel
//     ReserveAnalogState(left);                         // and right
//     RunAnalogBands(crossover, states, 2, inputs, outputs, count);
//
// Units    hertz, samples at the processing rate
// Ranges   1 .. kMaxBands bands, modes 0 .. 5, limits in any order. A limit is taken as it is where
//          its filters are stable, from 1e-6 to 0.4999 of the sample rate; another one counts as
//          the nearer of these ends, one that is not a number as the lower
// Threads  the crossover and its states belong to one caller at a time
// Memory   after ReserveAnalogState neither RunAnalogBands nor RunAnalogAllPass allocates;
//          RunAnalogBand does at its first use, after a clear, which frees, and where blocks grow
// Errors   std::bad_alloc
// Method   S. H. Linkwitz, "Active Crossover Networks for Noncoincident Drivers", 1976, and
//          all-passes for the bands further away; transposed direct form II in 64-bit floats

struct AnalogCrossover {
    static constexpr int kMaxBands = 6;
    static constexpr int kMaxLimits = kMaxBands - 1;

    // The filters of two neighbouring bands as lanes of one vector, in the order in which a sample
    // passes them.
    struct LaneTaps {
        double b0[2] = {1, 1};
        double b1[2] = {};
        double b2[2] = {};
        double a1[2] = {};  // a1, a2: inverted sign
        double a2[2] = {};
        double guard[2] = {};  // enters the history, from where it reaches the output
    };
    struct LanePair {
        // Of the lowest band: five limits, each a cascade run twice.
        static constexpr int kMaxSections = kMaxLimits * 2 * MAudioFilters::FilterCascade::kRoom;

        int sections = 0;  // of the longer lane; the shorter one ends with taps that change nothing
        LaneTaps taps[kMaxSections];
    };
    static constexpr int kMaxPairs = kMaxBands / 2;

    std::int32_t bands = 0;
    MAudioFilters::FilterCascade lowSide[kMaxLimits];   // high-passes: the low side of a band
    MAudioFilters::FilterCascade highSide[kMaxLimits];  // low-passes: the high side of a band
    MAudioFilters::FilterCascade allPass[kMaxLimits];
    std::int32_t doubled = 0;     // the mode that it was built with
    std::uint32_t structure = 0;  // raised where bands or mode change: states then start anew
    LanePair pairs[kMaxPairs];    // the same filters once more, for RunAnalogBands
};

// What one channel remembers. Each operation has its own history: a channel keeps to one of them.
struct AnalogCrossoverState {
    using FilterStates = MAudioFilters::FilterRunState[MAudioFilters::FilterCascade::kRoom];
    struct Band {
        FilterStates allPass;
        FilterStates lowSide[2];
        FilterStates highSide[AnalogCrossover::kMaxLimits][2];
    };
    struct LaneMemory {
        double s1[2];
        double s2[2];
    };

    std::uint32_t structure = 0;  // of the crossover that the histories belong to
    GrowingBuffer<Band> bands;    // RunAnalogBand
    GrowingBuffer<double> allPassScratch;
    GrowingBuffer<LaneMemory> lanes;  // RunAnalogBands; [pair * kMaxSections + section]
    GrowingBuffer<MAudioFilters::FilterMemory> leftOut;  // RunAnalogAllPass
};

// Designs the filters of bands - 1 limits. States keep their histories, so that a limit may move
// while it is heard; another number of bands or another mode clears each state at its next run.
void BuildAnalog(AnalogCrossover& crossover, int bands, const double* frequencies,
                 double sampleRate, int mode);

// Makes room for RunAnalogBands and RunAnalogAllPass, blocks of any length. Histories stay.
void ReserveAnalogState(AnalogCrossoverState& state);

// Forgets what was heard.
void ClearAnalogState(AnalogCrossoverState& state);

// One band of one channel. Each block runs all bands, from the lowest up: the chain of all-passes
// goes on from where the band before has left it. Source and destination may be one array.
void RunAnalogBand(const AnalogCrossover& crossover, AnalogCrossoverState& state, int band,
                   const double* source, double* destination, int count);

// All bands of all channels. destinations has bands * channels arrays, band b of channel c at
// b * channels + c; none overlaps a source. Each sample is that of RunAnalogBand, rounded to 32
// bits, but for the order of roundings within: less than 1e-9 of the loudest sample at 384 kHz and
// below, 1e-8 at 6 MHz, with limits of 20 Hz. It doesn't depend on where blocks are cut, nor on the
// other channels.
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
