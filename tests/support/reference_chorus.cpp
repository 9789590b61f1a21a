// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/reference_chorus.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "support/literal_reads.h"

namespace {

using P = ReferenceSettings;

// A sine of 8192 points and straight lines between them, for phases from 0 on.
double Shape(double phase) {
    const auto point = [](int i) {
        return double(static_cast<float>(std::sin(2 * std::numbers::pi * (i % 8192) / 8192)));
    };
    const int i = static_cast<int>(phase * 8192);
    return point(i) + (point(i + 1) - point(i)) * (phase * 8192 - i);
}

double TremoloGain(double source, double amount) {
    return amount < 0 ? source * amount + 1 : (source - 1) * amount + 1;
}

double Saturated(double x) {
    const auto curve = [](double t) { return t * (27 + t * t) / (27 + 9 * t * t); };
    const double y = std::copysign(std::abs(x) >= 1 ? 1 : curve(3 * std::abs(x)) / curve(3), x);
    return y + (y - x) * (y - x);
}

double Cube(double x) { return x * x * x; }

// The first and the step of a row of values that keeps within 0 .. bound.
std::pair<double, double> Fit(double start, double step, double bound, int count) {
    if (count == 1) return {start, 0};
    const double last = count - 1;
    if (step < 0) {
        start = std::max(start, std::min(bound, -last * step));
        return {start, std::max(step, -start / last)};
    }
    start = std::min(start, std::max(0.0, bound - last * step));
    return {start, std::min(step, (bound - start) / last)};
}

bool IsKnown(double x) { return x >= 0 && x <= 1e9; }

}  // namespace

float ReferenceLine::Exchange(double newest) {
    const float y = std::exchange(cells[oldest], static_cast<float>(newest));
    oldest = (oldest + 1) % static_cast<int>(cells.size());
    return y;
}

void ReferenceLine::Resize(int newLength) {
    std::rotate(cells.begin(), cells.begin() + oldest, cells.end());
    oldest = 0;
    const int from = static_cast<int>(cells.size()), to = std::max(newLength, 1);
    std::vector<float> stretched;
    for (int i = 0; i < to; ++i) {
        const double place = to > 1 ? double(i) * (from - 1) / (to - 1) : 0;
        const int k = static_cast<int>(place);
        const double next = cells[std::min(k + 1, from - 1)];
        stretched.push_back(static_cast<float>(cells[k] + (place - k) * (next - cells[k])));
    }
    cells = stretched;
}

void ReferenceChorus::Prepare(const ReferenceSettings& newSettings) {
    settings = last = newSettings;
    maxRange = std::trunc(0.1 * settings.sampleRate);
    maxDelay = std::trunc(0.5 * settings.sampleRate);
    for (int c = 0; c < settings.channels; ++c) {
        const double length = 2 * (maxRange + maxDelay + 32) + (settings.highQuality ? 39 : 5);
        lines[c] = {std::vector<float>(static_cast<std::size_t>(length))};
        dryDelay[c] = {std::vector<float>(18)};
        lowPass.memory[c] = highPass.memory[c] = {};
    }
    Update();
}

void ReferenceChorus::Update() {
    voiceCount = static_cast<int>(settings[P::kVoices]);
    UpdateFilters();
    UpdateVoices();
    UpdateStereo();
}

void ReferenceChorus::UpdateFilters() {
    using MAudioFilters::FilterType;
    const double s = settings.sampleRate, limit = 0.49 * s;
    const double lowest = std::min(limit, std::pow(10, settings[P::kMinFrequency]));
    const double highest = std::pow(10, settings[P::kMaxFrequency]);
    highPass.enabled = lowest > 20.000001;
    lowPass.enabled = highest < std::min(limit, 19999.999);
    if (highPass.enabled) highPass.filter.Set(FilterType::HighPass, lowest, s, 0.7, 0);
    if (lowPass.enabled) lowPass.filter.Set(FilterType::LowPass, highest, s, 0.7, 0);
}

void ReferenceChorus::UpdateVoices() {
    // clang-format off
    static constexpr double kSpeeds[] = {
        0, 0.102803738317757, 0.18446601941747573, 0.2911392405063291, 0.3872832369942196,
        0.48314606741573035, 0.6058394160583942, 0.6949152542372882, 0.8072289156626506,
        0.9726027397260274};
    // clang-format on
    const double s = settings.sampleRate, variability = settings[P::kRateVariability];
    const auto [range, rangeStep] =
        Fit(s * settings[P::kRange], Cube(settings[P::kRangeVariability]) * maxRange * 0.5,
            maxRange, voiceCount);
    const auto [delay, delayStep] =
        Fit(s * settings[P::kDelay], Cube(settings[P::kDelayVariability]) * s * 0.5, maxDelay,
            voiceCount);
    const double depthStep = Cube(settings[P::kDepthVariability]) / voiceCount;
    const double depth = depthStep > 0 ? 1 - (voiceCount - 1) * depthStep : 1;
    for (int v = 0; v < voiceCount; ++v) {
        Voice& voice = voices[v];
        voice.depth = depth + v * depthStep;
        voice.range = std::clamp(range + v * rangeStep, 0.1, maxRange);
        voice.delay = std::clamp(delay + v * delayStep, 0.0, maxDelay);
        voice.rate = std::pow(10, settings[P::kRate]) / s *
                     std::exp2(4 * variability * kSpeeds[10 * v / voiceCount]);
        voice.phaseOffset = 1 - std::fmod(voice.delay * voice.rate, 1);
        if (variability == 0) voice.phase = voices[0].phase;
    }
}

void ReferenceChorus::UpdateStereo() {
    static constexpr double kHaasSeconds[] = {0, 0, 0.002, 0.004, 0.008, 0.016, 0.032};
    const bool stereo = settings.channels == 2;
    const int mode = static_cast<int>(settings[P::kSpreadMode]);
    const double w = settings[P::kSpread];
    const int haas = static_cast<int>(kHaasSeconds[mode] * settings.sampleRate);
    channelPhaseStep = !stereo ? w / settings.channels : mode == 1 ? 0.5 * w : 0;
    double position = w;
    for (int v = 0; v < voiceCount && stereo; ++v) {
        voices[v].pan = mode == 1 ? 0 : mode == 0 ? position : 0.5 * position;
        voices[v].haas[0].Resize(static_cast<int>(std::max(0.0, haas * position)));
        voices[v].haas[1].Resize(static_cast<int>(std::max(0.0, -haas * position)));
        position *= v % 2 == 0 ? -1 : -0.9;
    }
}

void ReferenceChorus::FollowHost(const TransportInfo& transport) {
    static constexpr double kTypes[] = {1, 1.5, 1.3333333333333333};
    if (settings[P::kSync] < 0.5 || !IsKnown(transport.tempo)) return;
    const double noteRate =
        std::exp2(settings[P::kSyncLength] - 7) * kTypes[static_cast<int>(settings[P::kSyncType])];
    for (int v = 0; v < voiceCount; ++v) {
        voices[v].rate = transport.tempo / (settings.sampleRate * 240.0) * noteRate;
        if (IsKnown(transport.position))
            voices[v].phase =
                std::fmod(transport.position * noteRate * 0.25 + settings[P::kSyncPhase], 1);
    }
}

// A parameter that goes from its last value to its present one, after this share of the block.
double ReferenceChorus::Moving(int index, double share) const {
    return last[index] + (settings[index] - last[index]) * share;
}

// 0.6 dB less per voice, as far as the wet signal is heard.
double ReferenceChorus::Loudness(double dryWet) const {
    const double wet = std::min(dryWet, 1.0);
    return std::pow(10, -0.6 * voiceCount / 20) * wet + 1 - wet;
}

void ReferenceChorus::Process(const TransportInfo& transport, const float* const* inputs,
                              float* const* outputs, int sampleCount) {
    FollowHost(transport);
    const double from = Loudness(last[P::kDryWet]), to = Loudness(settings[P::kDryWet]);
    for (int i = 0; i < sampleCount; ++i) {
        const double share = double(i) / sampleCount;
        double sum[8], tremolo[8];
        for (int c = 0; c < settings.channels; ++c)
            sum[c] = Write(c, inputs[c][i]) * std::min(1.0, 2 - Moving(P::kDryWet, share));
        for (int v = 0; v < voiceCount; ++v) {
            // Other than in stereo a tremolo phase moves on with each voice: meant.
            const double passed = settings.channels == 2 ? i : i * voiceCount + v;
            AddVoice(v, share, passed / sampleCount, sum, tremolo);
        }
        for (int c = 0; c < settings.channels; ++c)
            outputs[c][i] = static_cast<float>(sum[c] * tremolo[c] * (from + (to - from) * share));
    }
    last = settings;
}

// Conditions a sample and writes it to its line. Answers the dry signal, which waits in a line too,
// two channels in one.
double ReferenceChorus::Write(int c, double raw) {
    const double wet = settings[P::kSaturation];
    const double x = highPass.Run(c, lowPass.Run(c, raw));
    lines[c].Exchange(wet > 0 ? Saturated(x) * wet + x * (1 - wet) : x);
    if (!settings.highQuality) return raw;
    return dryDelay[settings.channels == 2 ? 0 : c].Exchange(raw);
}

double ReferenceChorus::Read(int c, double offset) const {
    const ReferenceLine& line = lines[c];
    const int length = static_cast<int>(line.cells.size());
    const double x =
        offset + (settings.highQuality ? 19 : 2) + 2 * (maxRange + maxDelay + 32);  // from oldest
    const int whole = static_cast<int>(x), cell = (line.oldest + whole) % length;
    const auto read = settings.highQuality ? LiteralSincRead : LiteralCubicRead;
    return read(line.cells.data(), length, cell, x - whole);
}

// Two channels have their voices panned and delayed; any other number has them as they are read.
void ReferenceChorus::AddVoice(int v, double share, double phaseShare, double (&sum)[8],
                               double (&tremolo)[8]) {
    Voice& voice = voices[v];
    const bool stereo = settings.channels == 2;
    double tap[8];
    for (int c = 0; c < settings.channels; ++c) {
        const double phase = voice.phase + c * channelPhaseStep;
        const double sweep = Shape(stereo ? phase + voice.phaseOffset : phase) - 1;
        tap[c] = Read(c, sweep * voice.range - voice.delay);
    }
    if (stereo) {
        const double left = tap[0], right = tap[1];
        tap[0] = std::min(1.0, 1 - voice.pan) * left + std::max(0.0, -voice.pan) * right;
        tap[1] = std::min(1.0, 1 + voice.pan) * right + std::max(0.0, voice.pan) * left;
    }
    for (int c = 0; c < settings.channels; ++c) {
        const double phase = voice.phase + c * channelPhaseStep;
        const double source = (Shape(phase + Moving(P::kTremoloPhase, phaseShare)) + 1) / 2;
        if (v == 0) tremolo[c] = TremoloGain(source, Moving(P::kTremolo, share));
        const double wet = tap[c] * TremoloGain(source, Moving(P::kVoiceTremolo, share));
        sum[c] += (stereo ? voice.haas[c].Exchange(wet) : wet) * voice.depth *
                  std::min(1.0, Moving(P::kDryWet, share));
    }
    voice.phase = std::fmod(voice.phase + voice.rate, 1);
}
