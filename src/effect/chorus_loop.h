// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <utility>

#include "dsp/linear_ramp.h"
#include "dsp/voice_reads.h"
#include "effect/chorus_state.h"

// The sample loops of the chorus.
//
// Five choices hold for a block; each combination is a loop of its own, made from one template. A
// loop runs over chunks of kMaxReads samples and over the voices within a chunk, so that each stage
// is a plain pass over arrays. Two channels run together and share what they can; any other number
// runs one after the other, each from the block's start.
//
//     condition and write, dry tap, for each voice (phases, sweep, read, tremolo, mix), output
//
// Units    samples at full scale 1, gains linear
// Threads  the audio thread, under the effect's lock
// Memory   none
// Errors   none

// The choices that are constant over a block.
struct ChorusLoopKind {
    bool sinc;          // 37-tap read instead of the cubic one
    bool saturated;     // the saturator is heard
    bool ramped;        // dry/wet moves within the block
    bool voiceTremolo;  // tremolo of single voices is heard
    bool stereo;        // exactly two channels, run together

    static constexpr std::size_t kCount = 32;
    constexpr std::size_t Index() const {
        return static_cast<std::size_t>(sinc | saturated << 1 | ramped << 2 | voiceTremolo << 3 |
                                        stereo << 4);
    }
    static constexpr ChorusLoopKind FromIndex(std::size_t i) {
        return {(i & 1) != 0, (i & 2) != 0, (i & 4) != 0, (i & 8) != 0, (i & 16) != 0};
    }
};

// A block and what moves across it.
struct ChorusBlock {
    const float* const* inputs;
    float* const* outputs;
    int channels;
    int sampleCount;
    LinearRamp dryWet;  // 0 dry .. 1 both .. 2 wet
    LinearRamp tremolo;
    LinearRamp voiceTremolo;
    LinearRamp tremoloPhase;  // cycles
};

class ChorusLoop {
public:
    ChorusLoop(ChorusState& state, const VoiceReads& reads);

    // Runs the block and lets the phases pass on.
    void Run(ChorusLoopKind kind, const ChorusBlock& block);

private:
    static constexpr int kChunk = kMaxReads;
    // A chunk is written before it is read: what it overwrites lies behind every read's window.
    static_assert(kChunk <= 2 * ChorusVoices::kLineMargin);
    static constexpr int kSides = 2;

    struct Chunk {
        int first;  // sample of the block
        int count;
    };

    // Which channel a chunk is worked for, into which side's arrays, and at which phase.
    struct Place {
        int channel;
        int side;
        double startPhase;
    };

    template <std::size_t... i>
    static constexpr auto MakeLoops(std::index_sequence<i...>);

    template <ChorusLoopKind kind>
    void RunKind(const ChorusBlock& block);
    template <ChorusLoopKind kind>
    void RunStereo(const ChorusBlock& block, Chunk chunk, double startPhase);
    template <ChorusLoopKind kind>
    void RunChannel(const ChorusBlock& block, Chunk chunk, Place place);

    // Stages in the order of the path.
    void FillTremolos(const ChorusBlock& block, Chunk chunk);
    void FillMix(const LinearRamp& dryWet, int first, int count);
    template <ChorusLoopKind kind>
    void MoveMix(const ChorusBlock& block, Chunk chunk);
    template <ChorusLoopKind kind>
    void ConditionAndWrite(const ChorusBlock& block, Chunk chunk, Place place);
    void Filter(SwitchedFilter& switched, int channel, int count);
    template <ChorusLoopKind kind>
    void DryTap(Place place, int count);
    template <ChorusLoopKind kind>
    void DryTapPair(int count);
    void StartSum(const double* dry, int side, int count);
    void Locate(Place place, int v, double phaseOffset, int count);
    template <ChorusLoopKind kind>
    void ReadVoice(Place place);
    template <ChorusLoopKind kind>
    void ReadVoicePair(const Place (&places)[kSides], int v, int count);
    template <ChorusLoopKind kind>
    void TremoloOfVoice(Place place, int v, int count);
    template <ChorusLoopKind kind>
    const double* VoiceGain(int side) const;
    template <ChorusLoopKind kind>
    void Pan(int v, int count);
    void AddDelayed(int v, int side, int count);
    void AddToSum(const float* samples, const double* tremoloGain, int v, int side, int count);
    void Output(const ChorusBlock& block, Chunk chunk, Place place) const;

    ChorusState& state;
    const VoiceReads& reads;

    // One chunk's arrays; the second side is the right channel of the stereo loops.
    using Doubles = double[kChunk];
    using Floats = float[kChunk];
    alignas(64) Doubles wetGain;
    alignas(64) Doubles dryGain;
    alignas(64) Doubles tremolo;
    alignas(64) Doubles voiceTremolo;
    alignas(64) Doubles tremoloPhase;
    alignas(64) Doubles phases;
    alignas(64) Doubles work;
    alignas(64) Doubles raw[kSides];
    alignas(64) Doubles sum[kSides];
    alignas(64) Doubles voiceGain[kSides];   // voice tremolo
    alignas(64) Doubles outputGain[kSides];  // tremolo of the whole
    alignas(64) Floats taps[kSides];
    alignas(64) Floats panned[kSides];
    alignas(64) Floats delayed;
    int lineStart[kSides] = {};  // cell of the chunk's first sample
    ReadPoints points;
};
