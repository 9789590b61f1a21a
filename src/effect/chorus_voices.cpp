// SPDX-License-Identifier: GPL-3.0-or-later
#include "effect/chorus_voices.h"

#include <algorithm>
#include <cmath>

#include "dsp/shape_table.h"
#include "effect/host_sync.h"

namespace {

using P = ChorusParameter;

constexpr double kMaxRangeSeconds = 0.1;
constexpr double kMaxDelaySeconds = 0.5;
constexpr double kMinRangeSamples = 0.1;  // what remains where the variability pulls a range to 0

// Steps of the rate in octaves of a quarter of the rate spread: nearly even, so that voices hardly
// ever meet again.
constexpr double kRateWeights[ChorusVoices::kMaxVoices] = {0,
                                                           0.102803738317757,
                                                           0.18446601941747573,
                                                           0.2911392405063291,
                                                           0.3872832369942196,
                                                           0.48314606741573035,
                                                           0.6058394160583942,
                                                           0.6949152542372882,
                                                           0.8072289156626506,
                                                           0.9726027397260274};

// How far voices of one side close in on the middle, pair by pair.
constexpr double kPairNarrowing = -0.9;

// Delays of the Haas modes in seconds (H. Haas, "The influence of a single echo on the audibility
// of speech", 1949).
constexpr double kHaasSeconds[] = {0.002, 0.004, 0.008, 0.016, 0.032};

double Cube(double x) { return x * x * x; }

}  // namespace

VoiceFan VoiceFan::Fit(double first, double step, double bound, int voiceCount) {
    const double intervals = voiceCount - 1;
    if (step < 0) {
        first = std::max(first, std::min(bound, -intervals * step));
        step = std::max(step, -first / intervals);
    } else {
        first = std::min(first, std::max(0.0, bound - intervals * step));
        step = std::min(step, (bound - first) / intervals);
    }
    return {first, step};
}

void ChorusVoices::Prepare(int newSampleRate) {
    sampleRate = newSampleRate;
    maxRangeSamples = static_cast<int>(kMaxRangeSeconds * sampleRate);
    maxDelaySamples = static_cast<int>(kMaxDelaySeconds * sampleRate);
    lineSamples = maxRangeSamples + maxDelaySamples + kLineMargin;
}

int ChorusVoices::MaxHaasSamples() const {
    return static_cast<int>(*std::max_element(std::begin(kHaasSeconds), std::end(kHaasSeconds)) *
                            sampleRate);
}

void ChorusVoices::Update(const ChorusParameters& parameters, int channels) {
    voiceCount = parameters.EffectiveIndex(P::Voices);
    UpdateRates(parameters);
    UpdateSweeps(parameters);
    UpdateDepths(parameters);
    UpdateSpread(parameters, channels);
}

void ChorusVoices::UpdateRates(const ChorusParameters& parameters) {
    const double baseRate = std::pow(10.0, parameters.Effective(P::Rate)) / sampleRate;
    const double rateSpread = 4 * parameters.Effective(P::RateVariability);
    for (int v = 0; v < voiceCount; ++v) {
        const double weight = kRateWeights[kMaxVoices * v / voiceCount];
        freeRate[v] = baseRate * std::exp2(rateSpread * weight);
        SetRate(v, freeRate[v]);
        if (v > 0 && std::abs(rateSpread) < kSameParameter) voicePhase[v] = voicePhase[0];
    }
}

void ChorusVoices::UpdateSweeps(const ChorusParameters& parameters) {
    const double rangeStep =
        Cube(parameters.Effective(P::RangeVariability)) * maxRangeSamples * 0.5;
    const double delayStep = Cube(parameters.Effective(P::DelayVariability)) * sampleRate * 0.5;
    const VoiceFan range = VoiceFan::Fit(sampleRate * parameters.Effective(P::Range), rangeStep,
                                         maxRangeSamples, voiceCount);
    const VoiceFan delay = VoiceFan::Fit(sampleRate * parameters.Effective(P::Delay), delayStep,
                                         maxDelaySamples, voiceCount);
    double nextRange = range.first;
    double nextDelay = delay.first;
    for (int v = 0; v < voiceCount; ++v) {
        voiceRange[v] = std::max(std::min<double>(nextRange, maxRangeSamples), kMinRangeSamples);
        const double distance = std::clamp<double>(nextDelay, 0, maxDelaySamples);
        voiceDelay[v] = -distance;
        voicePhaseOffset[v] = 1 - std::fmod(distance * freeRate[v], ShapeTable::kPeriod);
        nextRange += range.step;
        nextDelay += delay.step;
    }
}

void ChorusVoices::UpdateDepths(const ChorusParameters& parameters) {
    const double step = Cube(parameters.Effective(P::DepthVariability)) / voiceCount;
    double depth = step > 0 ? 1 - (voiceCount - 1) * step : 1;
    for (int v = 0; v < voiceCount; ++v) {
        voiceDepth[v] = depth;
        depth += step;
    }
}

void ChorusVoices::UpdateSpread(const ChorusParameters& parameters, int channels) {
    const double spread = parameters.Effective(P::Spread);
    if (channels != 2) {
        channelPhaseStep = spread / std::max(channels, 1);
        return;
    }
    const auto mode = static_cast<SpreadMode>(parameters.EffectiveIndex(P::SpreadMode));
    double side = 0;
    double pan = 0;
    int haas = 0;
    channelPhaseStep = 0;
    if (mode == SpreadMode::Panorama) {
        pan = spread;
    } else if (mode == SpreadMode::Phase) {
        channelPhaseStep = 0.5 * spread;
    } else {
        const int which = static_cast<int>(mode) - static_cast<int>(SpreadMode::Haas2);
        haas = static_cast<int>(kHaasSeconds[which] * sampleRate);
        side = spread;
        pan = 0.5 * spread;
    }
    for (int v = 0; v < voiceCount; ++v) {
        PlaceVoice(v, side, pan, haas);
        const double next = v % 2 == 0 ? -1 : kPairNarrowing;
        side *= next;
        pan *= next;
    }
}

void ChorusVoices::PlaceVoice(int v, double side, double pan, int haas) {
    const double distance = haas * side;
    haasSamples[v] = {static_cast<int>(std::max(0.0, distance)),
                      static_cast<int>(std::max(0.0, -distance))};
    voiceLL[v] = pan < 0 ? 1 : 1 - pan;
    voiceRL[v] = pan < 0 ? -pan : 0;
    voiceLR[v] = pan < 0 ? 0 : pan;
    voiceRR[v] = pan < 0 ? 1 + pan : 1;
}

void ChorusVoices::FollowHost(const MAudioPluginHostSync& hostSync, double tempo, double position) {
    if (!MAudioPluginHostSync::IsKnown(tempo)) return;
    const double rate = hostSync.RateAt(tempo, sampleRate);
    for (int v = 0; v < voiceCount; ++v) {
        SetRate(v, rate);
        if (MAudioPluginHostSync::IsKnown(position))
            voicePhase[v] = {hostSync.PhaseAt(position), 0};
    }
}

// Whole cycles a sample make no difference and would only cost precision.
void ChorusVoices::SetRate(int v, double rate) {
    const double reduced = std::fmod(rate, ShapeTable::kPeriod);
    if (reduced == voiceRate[v]) return;
    voicePhase[v] = {voicePhase[v].At(voiceRate[v], 0), 0};
    voiceRate[v] = reduced;
}

double ChorusVoices::Phase::At(double rate, std::int64_t further) const {
    return std::fmod(base + static_cast<double>(samples + further) * rate, ShapeTable::kPeriod);
}

void ChorusVoices::Advance(int sampleCount) {
    for (int v = 0; v < voiceCount; ++v) voicePhase[v].samples += sampleCount;
}
