// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/processor.h"

// Reads of circular lines at fractional positions, many at once.
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
// The processor's variant is picked once. Variants agree to rounding: 1e-12 of the window's peak in
// the sum before it is narrowed.

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

// One processor's variant. Outputs have room for points.count samples, rounded up to four.
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
};

// The best that this processor runs.
const VoiceReads& GetVoiceReads();

// A given one; the caller has asked HasProcessorVariant.
const VoiceReads& GetVoiceReads(ProcessorVariant variant);
