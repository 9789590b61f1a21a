// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

// The chorus once more, slow and literal: one sample, one voice and one channel at a time, in the
// order in which the sound is defined. It shares no code with the engine, so that a fault of the
// engine shows as a difference.
//
// Units    as the parameters: seconds, decimal logarithm of hertz, 0..1; phases in cycles
// Threads  one
// Method   a line keeps everything that was written since Prepare; a read takes its cell from there

// One parameter of the chorus: its place in the list is its index.
struct ReferenceParameter {
    std::string identifier;
    std::string name;
    double min, max, defaultValue;
    std::string flags;  // u: a change updates, r: randomised, s: smoothed, m: among the main ones
    int law;            // exponent 1 << law from position to value
};

struct ReferenceSettings {
    static constexpr int kCount = 23;
    // clang-format off
    enum Index : int {
        kDryWet = 1, kRate, kRange, kDelay, kVoices, kSaturation, kSpread, kSpreadMode,
        kDepthVariability = 10, kRateVariability, kRangeVariability, kDelayVariability,
        kMinFrequency, kMaxFrequency, kTremolo, kVoiceTremolo, kTremoloPhase,
        kSync, kSyncLength, kSyncType, kSyncPhase,
    };
    // clang-format on
    static const std::array<ReferenceParameter, kCount>& Parameters();

    ReferenceSettings();
    double operator[](int index) const { return values[index]; }
    double& operator[](int index) { return values[index]; }

    double values[kCount];
    bool highQuality = false;
    int channels = 2;
    int sampleRate = 48000;
};

struct ReferenceTransport {
    double tempo = -1;     // beats a minute, negative when unknown
    double position = -1;  // quarter notes at the block's first sample, negative when unknown
};

class ReferenceChorus {
public:
    explicit ReferenceChorus(const ReferenceSettings& settings) { Prepare(settings); }

    // Clears lines and filters and sizes them; then Update, and no ramp into the next block.
    void Prepare(const ReferenceSettings& newSettings);
    void Update();
    void Process(const ReferenceTransport& transport, const float* const* inputs,
                 float* const* outputs, int sampleCount);

    ReferenceSettings settings;

private:
    // Whole-sample delay, oldest sample first.
    struct DelayLine {
        std::deque<float> cells;
        float Exchange(double newest);
        void Resize(int newLength);
    };
    struct Filter {
        bool enabled = false;
        double b0 = 0, b1 = 0, b2 = 0, a1 = 0, a2 = 0;
        double s1[8] = {}, s2[8] = {};
        void Set(bool highPass, double frequency, double sampleRate);
        double Run(int c, double x);
    };
    struct Voice {
        double base = 0;  // phase where sample 0 of count was
        std::int64_t count = 0;
        double rate = 0;  // cycles per sample
        double phaseOffset = 0;
        double range = 0, delay = 0;  // samples, the delay negated
        double depth = 0;
        double ll = 0, rl = 0, lr = 0, rr = 0;  // input side, output side
        DelayLine haas[2];
        double Phase(int i) const;
        void SetRate(double newRate);
    };
    struct Ramp {
        double value, step;
        void Step() { value += step; }
    };
    struct Ramps {
        Ramp dryWet, tremolo, voiceTremolo, tremoloPhase;
    };
    struct Fan {
        double start, step;  // samples, samples per voice
    };

    static Fan Fit(double start, double step, double bound, double last);
    void UpdateFilters();
    void UpdateSpeed(Voice& voice, double speed);
    void UpdateStereo();
    void SeatTempo(const ReferenceTransport& transport);
    Ramp StartRamp(int index, int sampleCount);
    void RunSample(int i, Ramps& ramps, const float* const* inputs, float* const* outputs);
    double Write(int c, double raw);
    float Read(int c, double offset) const;
    float Cell(int c, std::int64_t place) const;

    std::vector<float> history[8];
    std::int64_t lineLength = 0;
    int taps = 5;
    double lineSamples = 0;
    double maxRange = 0, maxDelay = 0;  // samples
    DelayLine dryDelay[8];
    Filter lowPass, highPass;
    Voice voices[10];
    int voiceCount = 0;
    double channelPhaseStep = 0;
    double noteRate = 0;
    ReferenceSettings last;
};
