// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>

#include "dsp/audio_filter.h"
#include "dsp/delay.h"
#include "foundation/objects/growing_buffer.h"

// Sum of the last values of a stream.
//
// Memory   Prepare allocates
// Method   a running sum, replaced once a window by one that was added up afresh, so that rounding
//          errors do not pile up
class MovingSum {
public:
    // length at least 1; the stream so far is silence.
    void Prepare(int length);
    void Push(const double* values, int count);
    double Sum() const { return sum; }
    int Length() const { return length; }

private:
    GrowingBuffer<double> window;
    int length = 0;
    int index = 0;     // of the oldest value
    double sum = 0;    // of the window
    double fresh = 0;  // of what was pushed since the index was 0
};

// Holds the loudness of an output at that of the input it was made of.
//
//     compensator.Prepare(48000, 2, latency);
//     compensator.AnalyseInput(inputs, count, 2);
//     ...
//     compensator.Apply(outputs, count, 2);
//
// Units    hertz, samples
// Ranges   1 to 8 channels; gain 0.01 to 100, and no more than 1 in the first two seconds
// Threads  the owner's lock guards all operations
// Memory   Prepare and Reserve allocate, the others where a block is larger than any before
// Method   mean power over 0.4 s after a shelf and a high-pass in the manner of the K weighting of
//          ITU-R BS.1770; the gain ramps over one block to the square root of the ratio
class MGainCompensator {
public:
    static constexpr int kMaxChannels = 8;

    // inputDelay: how many samples the output is later than the input. The next block fades in.
    void Prepare(int rate, int channels, int inputDelay);
    // Room for blocks of up to that many samples.
    void Reserve(int blockSize);

    void AnalyseInput(const float* const* inputs, int count, int channels);
    void Apply(float* const* outputs, int count, int channels);

    double Gain() const { return gain; }

    bool filtered = true;  // false: plain power

private:
    static constexpr int kFilters = 2;

    // Filters of one channel of one side.
    using Memory = std::array<MAudioFilters::FilterMemory, kFilters>;
    struct Side {
        std::array<Memory, kMaxChannels> memory{};
        MovingSum sum;

        double MeanPower() const { return sum.Sum() / sum.Length(); }
    };

    void AddPower(const float* samples, int count, Memory& memory);
    void PushPower(Side& side, int count, int channels);
    double TargetGain() const;

    std::array<MAudioFilters::Filter<double>, kFilters> filters;
    Side input;
    Side output;
    std::array<MAudioFilters::Delay<float>, kMaxChannels> delays;
    bool delayed = false;
    GrowingBuffer<double> power;   // of one block, all channels together
    GrowingBuffer<float> shifted;  // one delayed channel
    int holdSamples = 0;           // while above 0 the gain does not rise above 1
    double gain = 0;
};
