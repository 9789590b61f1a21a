// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>

#include "dsp/voice_reads.h"
#include "effect/chorus_parameters.h"

class MAudioPluginHostSync;

// Where each voice of the chorus is and how it moves.
//
// Units    phases in cycles, rates in cycles a sample, ranges and delays in samples
// Ranges   up to ChorusParameters::kMaxVoices voices
// Threads  the owner's lock guards all of it
// Memory   none
//
// A phase is counted, not accumulated: fmod(base + samples * rate, 1). It depends on the samples
// that have passed alone, however the host cuts them into blocks.

// A row of values, one a voice, evenly apart.
struct VoiceFan {
    double first = 0;
    double step = 0;

    // Shifts and squeezes the row of voiceCount values into 0 .. bound. With one voice the step may
    // come out infinite; it is not used then.
    static VoiceFan Fit(double first, double step, double bound, int voiceCount);
};

class ChorusVoices {
public:
    static constexpr int kMaxVoices = ChorusParameters::kMaxVoices;
    // Lines reach this much further back than any voice, twice: a chunk of samples is written
    // ahead of its reads.
    static constexpr int kLineMargin = 32;
    using Table = std::array<double, kMaxVoices>;

    // Bounds of range and delay for a rate.
    void Prepare(int newSampleRate);

    // Everything that depends on the parameters. Phases run on.
    void Update(const ChorusParameters& parameters, int channels);

    // Takes rates and phases from the song, as far as the host knows it.
    void FollowHost(const MAudioPluginHostSync& hostSync, double tempo, double position);

    // The phases of voice v from offset samples behind the block's start on.
    PhaseRun PhasesFrom(int v, int offset) const {
        return {voicePhase[v].base, voiceRate[v], voicePhase[v].samples + offset};
    }
    void Advance(int sampleCount);

    int LineSamples() const { return lineSamples; }
    // The longest Haas delay at this rate.
    int MaxHaasSamples() const;

    int voiceCount = 0;
    Table voicePhaseOffset{};
    Table voiceRange{};  // half the sweep
    Table voiceDelay{};  // negated
    Table voiceDepth{};  // linear gain

    // Pan matrix: input side, output side.
    Table voiceLL{};
    Table voiceRL{};
    Table voiceLR{};
    Table voiceRR{};
    std::array<std::array<int, 2>, kMaxVoices> haasSamples{};  // left, right

    double channelPhaseStep = 0;  // between neighbouring channels

private:
    struct Phase {
        double base = 0;
        std::int64_t samples = 0;

        double At(double rate, std::int64_t further) const;
    };

    void SetRate(int v, double rate);
    void UpdateRates(const ChorusParameters& parameters);
    void UpdateSweeps(const ChorusParameters& parameters);
    void UpdateDepths(const ChorusParameters& parameters);
    void UpdateSpread(const ChorusParameters& parameters, int channels);
    void PlaceVoice(int v, double side, double pan, int haas);

    int sampleRate = 0;
    int maxRangeSamples = 0;
    int maxDelaySamples = 0;
    int lineSamples = 0;
    std::array<Phase, kMaxVoices> voicePhase{};
    Table voiceRate{};  // below one cycle a sample
    Table freeRate{};   // as the parameters have it, without the song
};
