// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>

#include "dsp/delay.h"
#include "dsp/voice_reads.h"

// Delay line that is read at a fractional, moving distance.
//
//     Vibrato<float> line;
//     line.Configure(maxSamples, true);
//     line.Write(samples, count);
//     line.Locate(reads, firstIndex, offsets, points);      // then a read of dsp/voice_reads.h
//
// Units    offsets in samples before the read origin, negative or 0. The origin lies 2 samples
//          (cubic) or 19 samples (sinc) behind the newest one, so that a read's window is complete
// Ranges   an offset reaches back 2 * lineSamples at the most
// Threads  the owner's lock guards all operations
// Memory   Configure may allocate, nothing else does
namespace MAudioFilters {

template <typename T>
class Vibrato : public Delay<T> {
public:
    // Sizes the line for distances up to 2 * newLineSamples, with the room its kind of read needs.
    void Configure(int newLineSamples, bool newHighQuality) {
        lineSamples = newLineSamples;
        highQuality = newHighQuality;
        taps = highQuality ? kSincTaps : kCubicTaps;
        this->Resize(static_cast<int>(2 * lineSamples + taps));
        centre = this->Length() * 0.5;
    }

    void Write(T x) { this->Exchange(x); }
    // Reads of the block's first samples come later: its owner plans for lineSamples with a margin,
    // so that what the block overwrites lies behind their windows.
    void Write(const T* in, int count) { this->Store(in, count); }

    // Where the reads at offsets[i] start, the i-th one taken when i + 1 samples of a block are
    // written that started at cell firstIndex.
    void Locate(const VoiceReads& reads, int firstIndex, const double* offsets,
                ReadPoints& points) const {
        const double distance = taps / 2 + 2 * lineSamples;
        reads.locate({this->Length(), firstIndex, distance}, offsets, points);
    }

    LineView View() const { return {this->Cells(), this->Length()}; }

    // One read, as the last sample written would have it.
    T ReadCubic(double offset) const { return ReadOne(&VoiceReads::cubic, offset); }
    T ReadSinc(double offset) const { return ReadOne(&VoiceReads::sinc, offset); }

    bool IsHighQuality() const { return highQuality; }
    double Centre() const { return centre; }

private:
    static constexpr int kCubicTaps = 5;
    static constexpr int kSincTaps = 39;

    T ReadOne(VoiceReads::Read VoiceReads::*read, double offset) const {
        const VoiceReads& reads = GetVoiceReads();
        ReadPoints points;
        points.count = 1;
        const int length = this->Length();
        Locate(reads, (this->Index() + length - 1) % length, &offset, points);
        T samples[4];
        (reads.*read)(View(), points, samples);
        return samples[0];
    }

    double lineSamples = 0;
    double centre = 0;  // length / 2, for callers that rest in the middle of the line
    int taps = kCubicTaps;
    bool highQuality = false;
};

}  // namespace MAudioFilters
