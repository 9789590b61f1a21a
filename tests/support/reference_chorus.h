// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

#include "dsp/audio_filter.h"
#include "dsp/delay.h"
#include "plugin/contract/transport_info.h"
#include "support/literal_reads.h"

// The chorus once more, slow and literal: one sample, one voice and one channel at a time, in the
// order in which the sound is defined. Of the engine's parts it uses those alone that are compared
// with closed forms by themselves: the filter, the line of whole samples and the kernel's table.
// Any other fault of the engine shows as a difference.
//
// Units    as the parameters: seconds, decimal logarithm of hertz, 0..1; phases in cycles
// Threads  one

struct ReferenceSettings {
    int channels = 2;
    int sampleRate = 48000;
    bool highQuality = false;
    // clang-format off
    enum Index : int {
        kDryWet = 1, kRate, kRange, kDelay, kVoices, kSaturation, kSpread, kSpreadMode,
        kDepthVariability = 10, kRateVariability, kRangeVariability, kDelayVariability,
        kMinFrequency, kMaxFrequency, kTremolo, kVoiceTremolo, kTremoloPhase,
        kSync, kSyncLength, kSyncType, kSyncPhase, kCount,
    };
    double values[kCount] = {
        0, 1, -1, 0.01, 0.005, 2, 0.1, 1, 0,
        0, 0, 0.5, 0, 0, 1.3010299956639813, 4.301029995663981, 0, 0, 0,
        0, 9, 0, 0.25};
    // clang-format on
    double operator[](int index) const { return values[index]; }
    double& operator[](int index) { return values[index]; }
};

class ReferenceChorus {
public:
    // Clears lines and filters and sizes them; then Update, and no ramp into the next block.
    void Prepare() {
        last = settings;
        maxRange = std::trunc(0.1 * settings.sampleRate);
        maxDelay = std::trunc(0.5 * settings.sampleRate);
        lineLength =
            static_cast<int>(2 * (maxRange + maxDelay + 32)) + (settings.highQuality ? 39 : 5);
        for (int c = 0; c < settings.channels; ++c) {
            history[c].assign(lineLength, 0.0f);
            dryDelay[c].Resize(18);
            dryDelay[c].Clear();
            lowPass.memory[c] = highPass.memory[c] = {};
        }
        for (Voice& voice : voices)
            for (auto& line : voice.haas) line.Clear();
        Update();
    }

    void Update() {
        voiceCount = static_cast<int>(settings[P::kVoices]);
        UpdateFilters();
        UpdateVoices();
        UpdateStereo();
    }

    void Process(const TransportInfo& transport, const float* const* inputs, float* const* outputs,
                 int sampleCount) {
        FollowHost(transport);
        const double from = Loudness(last[P::kDryWet]), to = Loudness(settings[P::kDryWet]);
        for (int i = 0; i < sampleCount; ++i) {
            const double share = double(i) / sampleCount, loudness = from + (to - from) * share;
            double sum[8], tremolo[8];
            for (int c = 0; c < settings.channels; ++c)
                sum[c] = Write(c, inputs[c][i]) * std::min(1.0, 2 - Moving(P::kDryWet, share));
            for (int v = 0; v < voiceCount; ++v) {
                // Other than in stereo a tremolo phase moves on with each voice: meant.
                const double passed = settings.channels == 2 ? i : i * voiceCount + v;
                AddVoice(v, share, passed / sampleCount, sum, tremolo);
            }
            for (int c = 0; c < settings.channels; ++c)
                outputs[c][i] = static_cast<float>(sum[c] * tremolo[c] * loudness);
        }
        last = settings;
    }

    ReferenceSettings settings;

private:
    using P = ReferenceSettings;

    struct Filter {
        bool enabled = false;
        MAudioFilters::Filter<double> filter;
        MAudioFilters::FilterMemory memory[8];
        double Run(int c, double x) { return enabled ? filter.RunSample(x, memory[c]) : x; }
    };
    struct Voice {
        double phase = 0, rate = 0, phaseOffset = 0;  // cycles, a sample
        double range = 0, delay = 0;                  // samples
        double depth = 0, pan = 0;
        MAudioFilters::Delay<float> haas[2];
    };

    // A sine of 8192 points and straight lines between them, for phases from 0 on.
    static double Shape(double phase) {
        const auto point = [](int i) {
            return double(static_cast<float>(std::sin(2 * std::numbers::pi * (i % 8192) / 8192)));
        };
        const int i = static_cast<int>(phase * 8192);
        return point(i) + (point(i + 1) - point(i)) * (phase * 8192 - i);
    }

    static double TremoloGain(double source, double amount) {
        return amount < 0 ? source * amount + 1 : (source - 1) * amount + 1;
    }

    static double Saturated(double x) {
        const auto curve = [](double t) { return t * (27 + t * t) / (27 + 9 * t * t); };
        const double y = std::copysign(std::abs(x) >= 1 ? 1 : curve(3 * std::abs(x)) / curve(3), x);
        return y + (y - x) * (y - x);
    }

    // The first and the step of a row of values that keeps within 0 .. bound.
    static std::pair<double, double> Fit(double start, double step, double bound, int count) {
        if (count == 1) return {start, 0};
        const double last = count - 1;
        if (step < 0) {
            start = std::max(start, std::min(bound, -last * step));
            return {start, std::max(step, -start / last)};
        }
        start = std::min(start, std::max(0.0, bound - last * step));
        return {start, std::min(step, (bound - start) / last)};
    }

    void UpdateFilters() {
        using MAudioFilters::FilterType;
        const double s = settings.sampleRate, limit = 0.49 * s;
        const double lowest = std::min(limit, std::pow(10, settings[P::kMinFrequency]));
        const double highest = std::pow(10, settings[P::kMaxFrequency]);
        highPass.enabled = lowest > 20.000001;
        lowPass.enabled = highest < std::min(limit, 19999.999);
        if (highPass.enabled) highPass.filter.Set(FilterType::HighPass, lowest, s, 0.7, 0);
        if (lowPass.enabled) lowPass.filter.Set(FilterType::LowPass, highest, s, 0.7, 0);
    }

    void UpdateVoices() {
        // clang-format off
        static constexpr double kSpeeds[] = {
            0, 0.102803738317757, 0.18446601941747573, 0.2911392405063291, 0.3872832369942196,
            0.48314606741573035, 0.6058394160583942, 0.6949152542372882, 0.8072289156626506,
            0.9726027397260274};
        // clang-format on
        const double s = settings.sampleRate, variability = settings[P::kRateVariability];
        const auto cube = [this](int index) { return std::pow(settings[index], 3); };
        const auto [range, rangeStep] =
            Fit(s * settings[P::kRange], cube(P::kRangeVariability) * maxRange / 2, maxRange,
                voiceCount);
        const auto [delay, delayStep] =
            Fit(s * settings[P::kDelay], cube(P::kDelayVariability) * s / 2, maxDelay, voiceCount);
        const double depthStep = cube(P::kDepthVariability) / voiceCount;
        const double depth = depthStep > 0 ? 1 - (voiceCount - 1) * depthStep : 1;
        for (int v = 0; v < voiceCount; ++v) {
            Voice& voice = voices[v];
            voice.depth = depth + v * depthStep;
            voice.range = std::clamp(range + v * rangeStep, 0.1, std::max(0.1, maxRange));
            voice.delay = std::clamp(delay + v * delayStep, 0.0, maxDelay);
            voice.rate = std::pow(10, settings[P::kRate]) / s *
                         std::exp2(4 * variability * kSpeeds[10 * v / voiceCount]);
            voice.phaseOffset = 1 - std::fmod(voice.delay * voice.rate, 1);
            if (variability == 0) voice.phase = voices[0].phase;
        }
    }

    void UpdateStereo() {
        static constexpr double kHaasSeconds[] = {0, 0, 0.002, 0.004, 0.008, 0.016, 0.032};
        const bool stereo = settings.channels == 2;
        const int mode = static_cast<int>(settings[P::kSpreadMode]);
        const double w = settings[P::kSpread];
        const int haas = static_cast<int>(kHaasSeconds[mode] * settings.sampleRate);
        channelPhaseStep = !stereo ? w / settings.channels : mode == 1 ? 0.5 * w : 0;
        double position = w;
        for (int v = 0; v < voiceCount && stereo; ++v) {
            voices[v].pan = mode == 1 ? 0 : mode == 0 ? position : 0.5 * position;
            voices[v].haas[0].Resize(static_cast<int>(haas * position));
            voices[v].haas[1].Resize(static_cast<int>(-haas * position));
            position *= v % 2 == 0 ? -1 : -0.9;
        }
    }

    static bool IsKnown(double x) { return x >= 0 && x <= 1e9; }

    void FollowHost(const TransportInfo& transport) {
        static constexpr double kTypes[] = {1, 1.5, 1.3333333333333333};
        if (settings[P::kSync] < 0.5 || !IsKnown(transport.tempo)) return;
        const double noteRate = std::exp2(settings[P::kSyncLength] - 7) *
                                kTypes[static_cast<int>(settings[P::kSyncType])];
        const double place = transport.position * noteRate * 0.25 + settings[P::kSyncPhase];
        for (int v = 0; v < voiceCount; ++v) {
            voices[v].rate = transport.tempo / (settings.sampleRate * 240.0) * noteRate;
            if (IsKnown(transport.position)) voices[v].phase = std::fmod(place, 1);
        }
    }

    // A parameter that goes from its last value to its present one, after this share of the block.
    double Moving(int index, double share) const {
        return last[index] + (settings[index] - last[index]) * share;
    }

    // 0.6 dB less per voice, as far as the wet signal is heard.
    double Loudness(double dryWet) const {
        const double wet = std::min(dryWet, 1.0);
        return std::pow(10, -0.6 * voiceCount / 20) * wet + 1 - wet;
    }

    // Conditions a sample and writes it to its line. Answers the dry signal, which waits in a line
    // too, two channels in one.
    double Write(int c, float raw) {
        const double wet = settings[P::kSaturation], x = highPass.Run(c, lowPass.Run(c, raw));
        history[c].push_back(static_cast<float>(wet > 0 ? Saturated(x) * wet + x * (1 - wet) : x));
        return settings.highQuality ? dryDelay[settings.channels == 2 ? 0 : c].Exchange(raw) : raw;
    }

    double Read(int c, double offset) const {
        const double x =
            offset + (settings.highQuality ? 19 : 2) + 2 * (maxRange + maxDelay + 32);  // of a line
        const int whole = static_cast<int>(x);
        const auto read = settings.highQuality ? LiteralSincRead : LiteralCubicRead;
        return read(&history[c].back() + 1 - lineLength, lineLength, whole % lineLength, x - whole);
    }

    // Two channels have their voices panned and delayed; any other number has them as they are
    // read.
    void AddVoice(int v, double share, double phaseShare, double (&sum)[8], double (&tremolo)[8]) {
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
            double wet = tap[c] * TremoloGain(source, Moving(P::kVoiceTremolo, share));
            if (stereo) wet = voice.haas[c].Exchange(static_cast<float>(wet));
            sum[c] += wet * voice.depth * std::min(1.0, Moving(P::kDryWet, share));
        }
        voice.phase = std::fmod(voice.phase + voice.rate, 1);
    }

    std::vector<float> history[8];  // all that was written since Prepare
    int lineLength = 0;             // of which a read sees the last
    MAudioFilters::Delay<float> dryDelay[8];
    Filter lowPass, highPass;
    Voice voices[10];
    int voiceCount = 0;
    double maxRange = 0, maxDelay = 0;  // samples
    double channelPhaseStep = 0;
    ReferenceSettings last;  // at the end of the block before
};
