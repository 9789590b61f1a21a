// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "dsp/processor.h"

class ShapeTable;

// Reads of circular lines at fractional positions, many at once, and the steps around them.
//
// cubic    4-point Catmull-Rom polynomial, in 32-bit arithmetic
// sinc     37-tap windowed sinc (dsp/sinc_kernel.h), summed in 64 bits
//
// A read's result depends on its own position and window alone, never on its place among the
// others or on their number: blocks may be cut anywhere.
//
// Units    positions in cells: a whole cell and a fraction 0..1 towards the next
// Ranges   cells 0 .. length - 1; windows that reach over an end of the line wrap around
// Threads  no state; any thread
// Memory   none; the kernel's table is made by the first GetVoiceReads, which an owner calls ahead
// Errors   none
//
// The processor's variant is picked once. Variants of a sinc read agree to rounding: 1e-12 of the
// window's peak in the sum before it is narrowed. All else is the same bit by bit.

inline constexpr int kMaxReads = 64;

// Positions of up to kMaxReads reads, padded to a multiple of four with any valid ones.
struct ReadPoints {
    int count = 0;
    alignas(64) int cells[kMaxReads];
    alignas(64) double fractions[kMaxReads];
};

// A line as it stands: its cells, owned by the line, and their number.
struct LineView {
    const float* cells;
    int length;
};

// Where an offset of 0 reads, the i-th one when i + 1 samples of a block are written.
struct ReadOrigin {
    int length;       // of the line
    int cell;         // where the block's first sample stands
    double distance;  // from the line's oldest sample at that time
};

// A phase that is counted: base + samples * rate, in cycles.
struct PhaseRun {
    double base;
    double rate;
    std::int64_t samples;
};

// What is made of a level: (level + before) * scale + after.
struct LevelLaw {
    double before;
    double scale;
    double after;
};

struct GainedSamples {
    const float* samples;
    double gain;
};

// One processor's variant. Outputs have room for points.count samples, rounded up to four. Counts
// are 1 .. kMaxReads; a null tremolo is none.
struct VoiceReads {
    using Read = void (*)(const LineView& line, const ReadPoints& points, float* out);
    using ReadPair = void (*)(const LineView& left, const LineView& right, const ReadPoints& points,
                              float* outLeft, float* outRight);

    const char* name;
    Read cubic;
    Read sinc;
    // Two lines of one length at the same positions, which share the interpolated kernel; each
    // sample equals that of sinc.
    ReadPair sincPair;
    // As sinc, before narrowing: for comparing variants.
    void (*sincSums)(const LineView& line, const ReadPoints& points, double* out);

    // phases[i] of run i samples further, 0..1
    void (*fillPhases)(const PhaseRun& run, double* phases, int count);
    // The shape at phases[i] + offset, as ShapeTable::At has it.
    void (*readShape)(const ShapeTable& shape, const double* phases, double offset,
                      const LevelLaw& law, double* out, int count);
    // points.count points, and the padding behind them.
    void (*locate)(const ReadOrigin& origin, const double* offsets, ReadPoints& points);
    // out = (first + second) * tremolo
    void (*mixPair)(const GainedSamples& first, const GainedSamples& second, const double* tremolo,
                    float* out, int count);
    // sum += from * tremolo * wet
    void (*addGained)(const GainedSamples& from, const double* tremolo, const double* wet,
                      double* sum, int count);
};

// The best that this processor runs.
const VoiceReads& GetVoiceReads();

// A given one; the caller has asked HasProcessorVariant.
const VoiceReads& GetVoiceReads(ProcessorVariant variant);
