// SPDX-License-Identifier: GPL-3.0-or-later
#include "effect/chorus_loop.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "dsp/vectors.h"

namespace {

template <std::size_t... i>
constexpr bool IndicesMatch(std::index_sequence<i...>) {
    return ((ChorusLoopKind::FromIndex(i).Index() == i) && ...);
}
static_assert(IndicesMatch(std::make_index_sequence<ChorusLoopKind::kCount>{}));

// The gain that a tremolo of -1..1 makes of its source 0..1: a positive one turns down where the
// source is low, a negative one where it is high.
double TremoloGain(double source, double amount) {
    return (amount < 0 ? source : source - 1) * amount + 1;
}

}  // namespace

template <std::size_t... i>
constexpr auto ChorusLoop::MakeLoops(std::index_sequence<i...>) {
    return std::array{&ChorusLoop::RunKind<ChorusLoopKind::FromIndex(i)>...};
}

ChorusLoop::ChorusLoop(ChorusState& state, const VoiceReads& reads) : state(state), reads(reads) {
    for (Doubles& gain : outputGain) std::fill_n(gain, kChunk, 1.0);
}

void ChorusLoop::Run(ChorusLoopKind kind, const ChorusBlock& block) {
    static constexpr auto loops = MakeLoops(std::make_index_sequence<ChorusLoopKind::kCount>{});
    (this->*loops[kind.Index()])(block);  // one indirect call a block
    state.voices.Advance(block.sampleCount);
}

template <ChorusLoopKind kind>
void ChorusLoop::RunKind(const ChorusBlock& block) {
    const double step = state.voices.channelPhaseStep;
    // Reads of the shape truncate towards zero, so phases must not be negative.
    const double start = step < 0 ? -8 * step : 0;
    const int channels = kind.stereo ? 1 : block.channels;
    FillMix(block.dryWet, 0, kChunk);
    for (int c = 0; c < channels; ++c) {
        for (int first = 0; first < block.sampleCount;) {
            const Chunk chunk = {first, std::min(kChunk, block.sampleCount - first)};
            first += chunk.count;
            if constexpr (kind.stereo) {
                RunStereo<kind>(block, chunk, start);
            } else {
                RunChannel<kind>(block, chunk, {c, 0, start + c * step});
            }
        }
    }
}

template <ChorusLoopKind kind>
void ChorusLoop::RunStereo(const ChorusBlock& block, Chunk chunk, double startPhase) {
    const double step = state.voices.channelPhaseStep;
    const Place places[kSides] = {{0, 0, startPhase}, {1, 1, startPhase + step}};
    FillTremolos(block, chunk);
    MoveMix<kind>(block, chunk);
    for (const Place place : places) ConditionAndWrite<kind>(block, chunk, place);
    DryTapPair<kind>(chunk.count);
    block.tremoloPhase.Fill(tremoloPhase, chunk.first, 1, chunk.count);
    for (int v = 0; v < state.voices.voiceCount; ++v) {
        reads.fillPhases(state.voices.PhasesFrom(v, chunk.first), phases, chunk.count);
        ReadVoicePair<kind>(places, v, chunk.count);
        for (const Place place : places) TremoloOfVoice<kind>(place, v, chunk.count);
        Pan<kind>(v, chunk.count);
        for (const Place place : places) AddDelayed(v, place.side, chunk.count);
    }
    for (const Place place : places) Output(block, chunk, place);
}

template <ChorusLoopKind kind>
void ChorusLoop::RunChannel(const ChorusBlock& block, Chunk chunk, Place place) {
    const int voiceCount = state.voices.voiceCount;
    FillTremolos(block, chunk);
    MoveMix<kind>(block, chunk);
    ConditionAndWrite<kind>(block, chunk, place);
    DryTap<kind>(place, chunk.count);
    for (int v = 0; v < voiceCount; ++v) {
        // The phase steps once a voice, so that a moving one overshoots within the block. Meant:
        // it is how single channels have always sounded.
        const std::int64_t step = static_cast<std::int64_t>(chunk.first) * voiceCount + v;
        block.tremoloPhase.Fill(tremoloPhase, step, voiceCount, chunk.count);
        reads.fillPhases(state.voices.PhasesFrom(v, chunk.first), phases, chunk.count);
        Locate(place, v, 0, chunk.count);
        ReadVoice<kind>(place);
        TremoloOfVoice<kind>(place, v, chunk.count);
        AddToSum(taps[0], VoiceGain<kind>(0), v, 0, chunk.count);
    }
    Output(block, chunk, place);
}

void ChorusLoop::FillTremolos(const ChorusBlock& block, Chunk chunk) {
    block.tremolo.Fill(tremolo, chunk.first, 1, chunk.count);
    block.voiceTremolo.Fill(voiceTremolo, chunk.first, 1, chunk.count);
}

// The middle of the range passes both at full level.
void ChorusLoop::FillMix(const LinearRamp& dryWet, int first, int count) {
    dryWet.Fill(work, first, 1, count);
    for (int i = 0; i < count; ++i) {
        wetGain[i] = std::min(work[i], 1.0);
        dryGain[i] = std::min(1.0, 2 - std::abs(work[i]));
    }
}

// A constant mix stays as the block's start has filled it.
template <ChorusLoopKind kind>
void ChorusLoop::MoveMix(const ChorusBlock& block, Chunk chunk) {
    if constexpr (kind.ramped) FillMix(block.dryWet, chunk.first, chunk.count);
}

template <ChorusLoopKind kind>
void ChorusLoop::ConditionAndWrite(const ChorusBlock& block, Chunk chunk, Place place) {
    const float* input = block.inputs[place.channel] + chunk.first;
    VecFloatToDouble(input, raw[place.side], chunk.count);
    VecFloatToDouble(input, work, chunk.count);
    Filter(state.maxFrequencyFilter, place.channel, chunk.count);
    Filter(state.minFrequencyFilter, place.channel, chunk.count);
    if constexpr (kind.saturated) {
        const ChorusSaturator saturator = state.saturator;
        for (int i = 0; i < chunk.count; ++i) work[i] = saturator.Shape(work[i]);
    }
    Floats conditioned;
    VecDoubleToFloat(work, conditioned, chunk.count);
    auto& line = state.vibrato[place.channel];
    lineStart[place.side] = line.Index();
    line.Write(conditioned, chunk.count);
}

void ChorusLoop::Filter(SwitchedFilter& switched, int channel, int count) {
    if (!switched.enabled) return;
    const MAudioFilters::Filter<double> filter = switched.filter;
    MAudioFilters::FilterMemory memory = switched.filterState[channel];
    for (int i = 0; i < count; ++i) work[i] = filter.RunSample(work[i], memory);
    switched.filterState[channel] = memory;
}

// The sinc read's window makes the voices later, so the dry signal waits for them.
template <ChorusLoopKind kind>
void ChorusLoop::DryTap(Place place, int count) {
    double* dry = raw[place.side];
    if constexpr (kind.sinc) {
        Floats now;
        Floats late;
        VecDoubleToFloat(dry, now, count);
        state.dryDelay[place.channel].Exchange(now, late, count);
        VecFloatToDouble(late, dry, count);
    }
    StartSum(dry, place.side, count);
}

// Both channels pass through one line, left first, and so wait for half of its length. Meant.
template <ChorusLoopKind kind>
void ChorusLoop::DryTapPair(int count) {
    if constexpr (kind.sinc) {
        float now[kSides * kChunk] = {};
        float late[kSides * kChunk];
        for (int i = 0; i < count; ++i) {
            now[kSides * i] = static_cast<float>(raw[0][i]);
            now[kSides * i + 1] = static_cast<float>(raw[1][i]);
        }
        state.dryDelay[0].Exchange(now, late, kSides * count);
        for (int i = 0; i < count; ++i) {
            raw[0][i] = late[kSides * i];
            raw[1][i] = late[kSides * i + 1];
        }
    }
    for (int side = 0; side < kSides; ++side) StartSum(raw[side], side, count);
}

void ChorusLoop::StartSum(const double* dry, int side, int count) {
    for (int i = 0; i < count; ++i) sum[side][i] = dry[i] * dryGain[i];
}

// Where voice v reads: between its delay and twice its range further back.
void ChorusLoop::Locate(Place place, int v, double phaseOffset, int count) {
    const LevelLaw sweep = {-1, state.voices.voiceRange[v], state.voices.voiceDelay[v]};
    reads.readShape(state.shape, phases, phaseOffset + place.startPhase, sweep, work, count);
    points.count = count;
    state.vibrato[place.channel].Locate(reads, lineStart[place.side], work, points);
}

template <ChorusLoopKind kind>
void ChorusLoop::ReadVoice(Place place) {
    const LineView line = state.vibrato[place.channel].View();
    if constexpr (kind.sinc) {
        reads.sinc(line, points, taps[place.side]);
    } else {
        reads.cubic(line, points, taps[place.side]);
    }
}

template <ChorusLoopKind kind>
void ChorusLoop::ReadVoicePair(const Place (&places)[kSides], int v, int count) {
    const double phaseOffset = state.voices.voicePhaseOffset[v];
    Locate(places[0], v, phaseOffset, count);
    if (kind.sinc && places[1].startPhase == places[0].startPhase) {
        reads.sincPair(state.vibrato[0].View(), state.vibrato[1].View(), points, taps[0], taps[1]);
        return;
    }
    ReadVoice<kind>(places[0]);
    if (places[1].startPhase != places[0].startPhase) Locate(places[1], v, phaseOffset, count);
    ReadVoice<kind>(places[1]);
}

// The first voice's source makes the tremolo of the whole.
template <ChorusLoopKind kind>
void ChorusLoop::TremoloOfVoice(Place place, int v, int count) {
    if (v > 0 && !kind.voiceTremolo) return;
    double* source = work;
    for (int i = 0; i < count; ++i) source[i] = phases[i] + place.startPhase + tremoloPhase[i];
    reads.readShape(state.shape, source, 0, {1, 0.5, 0}, source, count);
    if (v == 0) {
        for (int i = 0; i < count; ++i)
            outputGain[place.side][i] = TremoloGain(source[i], tremolo[i]);
    }
    if constexpr (kind.voiceTremolo) {
        for (int i = 0; i < count; ++i)
            voiceGain[place.side][i] = TremoloGain(source[i], voiceTremolo[i]);
    }
}

// The gains of a voice's own tremolo; null where none is heard.
template <ChorusLoopKind kind>
const double* ChorusLoop::VoiceGain(int side) const {
    return kind.voiceTremolo ? voiceGain[side] : nullptr;
}

template <ChorusLoopKind kind>
void ChorusLoop::Pan(int v, int count) {
    const ChorusVoices& voices = state.voices;
    reads.mixPair({taps[1], voices.voiceRL[v]}, {taps[0], voices.voiceLL[v]}, VoiceGain<kind>(0),
                  panned[0], count);
    reads.mixPair({taps[1], voices.voiceRR[v]}, {taps[0], voices.voiceLR[v]}, VoiceGain<kind>(1),
                  panned[1], count);
}

void ChorusLoop::AddDelayed(int v, int side, int count) {
    state.haasDelay[v][side].Exchange(panned[side], delayed, count);
    AddToSum(delayed, nullptr, v, side, count);
}

void ChorusLoop::AddToSum(const float* samples, const double* tremoloGain, int v, int side,
                          int count) {
    reads.addGained({samples, state.voices.voiceDepth[v]}, tremoloGain, wetGain, sum[side], count);
}

void ChorusLoop::Output(const ChorusBlock& block, Chunk chunk, Place place) const {
    float* out = block.outputs[place.channel] + chunk.first;
    for (int i = 0; i < chunk.count; ++i)
        out[i] = static_cast<float>(sum[place.side][i] * outputGain[place.side][i]);
}
