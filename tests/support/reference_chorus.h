// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "dsp/audio_filter.h"
#include "plugin/contract/transport_info.h"

// The chorus once more, slow and literal: one sample, one voice and one channel at a time, in the
// order in which the sound is defined. Of the engine's parts it uses those alone that are compared
// with closed forms by themselves, the filter and the kernel's table; any other fault of the engine
// shows as a difference.
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

// Whole-sample delay; a new length stretches what it holds.
struct ReferenceLine {
    std::vector<float> cells = {0};
    int oldest = 0;

    float Exchange(double newest);
    void Resize(int newLength);
};

class ReferenceChorus {
public:
    // Clears lines and filters and sizes them; then Update, and no ramp into the next block.
    void Prepare(const ReferenceSettings& newSettings);
    void Update();
    void Process(const TransportInfo& transport, const float* const* inputs, float* const* outputs,
                 int sampleCount);

    ReferenceSettings settings;

private:
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
        ReferenceLine haas[2];
    };

    void UpdateFilters();
    void UpdateVoices();
    void UpdateStereo();
    void FollowHost(const TransportInfo& transport);
    double Moving(int index, double share) const;
    double Loudness(double dryWet) const;
    double Write(int c, double raw);
    double Read(int c, double offset) const;
    void AddVoice(int v, double share, double phaseShare, double (&sum)[8], double (&tremolo)[8]);

    ReferenceLine lines[8], dryDelay[8];
    Filter lowPass, highPass;
    Voice voices[10];
    int voiceCount = 0;
    double maxRange = 0, maxDelay = 0;  // samples
    double channelPhaseStep = 0;
    ReferenceSettings last;  // at the end of the block before
};
