// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/objects/growing_buffer.h"
#include "foundation/objects/object.h"

// Runs one channel of a processor at a multiple of the host's sample rate.
//
//     upsampler.Up(in, count);
//     Process(upsampler.UpsampledInput(), upsampler.UpsampledOutput(), count * factor);
//     upsampler.Down(out, count, MUpsampler::Mode::Replace);
//
// Units    rate in hertz; latency in samples of the host
// Ranges   factor 1, with which there is nothing to run: Up and Down are not called
// Threads  the owner's lock guards all operations
// Memory   Up grows the buffers to the largest block seen, Reserve ahead of it
// Errors   MException "Upsampling is not supported.", code 1, for a factor above 1: nothing changes

class MUpsampler : public MObject {
public:
    enum class Mode { Replace, Add };

    // Raises where a factor can't be had.
    virtual void CheckFactor(int newFactor) const;

    // Stores what differs and starts from silence.
    void Configure(int newRate, int newFactor, bool newHighQuality);
    // Stores what differs; starts from silence only if something did.
    void ConfigureIfChanged(int newRate, int newFactor, bool newHighQuality);

    // Room for host blocks of up to that many samples.
    void Reserve(int hostSamples);

    // Fills UpsampledInput with count * factor samples, of silence for a null source, and clears
    // UpsampledOutput.
    virtual void Up(const float* source, int count);
    // Writes count samples of what stands in UpsampledOutput.
    virtual void Down(float* destination, int count, Mode mode);
    // Of the way up and the way down together.
    virtual int GetLatency() const;

    float* UpsampledInput() { return input.Data(); }
    float* UpsampledOutput() { return output.Data(); }

protected:
    // After a change of rate, factor or quality.
    virtual void Reinitialise();

    int rate = 44100;
    int factor = 1;
    bool highQuality = true;
    GrowingBuffer<float> input;
    GrowingBuffer<float> output;
};
