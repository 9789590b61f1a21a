// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <deque>
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
    const char* identifier;
    const char* name;
    double min, max, defaultValue;
    const char* flags;  // u: a change updates, r: randomised, s: smoothed, m: among the main ones
    int law;            // exponent 1 << law from position to value
};

struct ReferenceSettings {
    static constexpr int kCount = 23;
    enum Index : int {
        kDryWet = 1,
        kRate,
        kRange,
        kDelay,
        kVoices,
        kSaturation,
        kSpread,
        kSpreadMode,
        kDepthVariability = 10,
        kRateVariability,
        kRangeVariability,
        kDelayVariability,
        kMinFrequency,
        kMaxFrequency,
        kTremolo,
        kVoiceTremolo,
        kTremoloPhase,
        kSync,
        kSyncLength,
        kSyncType,
        kSyncPhase,
    };
    static const std::array<ReferenceParameter, kCount>& Parameters();
    // Whether a change of the parameter takes effect by Update; the others move within a block.
    static bool NeedsUpdate(int index);

    ReferenceSettings();
    double operator[](int index) const { return values[static_cast<std::size_t>(index)]; }
    double& operator[](int index) { return values[static_cast<std::size_t>(index)]; }

    std::array<double, kCount> values;
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
    ReferenceSettings settings;

    // Clears lines and filters and sizes them; then Update, and no ramp into the next block.
    void Prepare();
    void Update();
    void Process(const ReferenceTransport& transport, const float* const* inputs,
                 float* const* outputs, int sampleCount);

    bool IsSilent() const;
    int LineLength() const { return static_cast<int>(lineLength); }

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
        std::array<double, 8> s1{}, s2{};
        void Set(bool highPass, double frequency, double sampleRate);
        double Run(int c, double x);
    };
    struct Voice {
        double base = 0;  // phase where sample 0 of count was
        std::int64_t count = 0;
        double rate = 0;  // cycles per sample
        double phaseOffset = 0;
        double range = 0;  // samples
        double delay = 0;  // samples, negated
        double depth = 0;
        double ll = 0, rl = 0, lr = 0, rr = 0;  // input side, output side
        double Phase(int i) const;
        void SetRate(double newRate);
    };
    struct Ramp {
        double value, step;
    };
    struct Ramps {
        Ramp dryWet, tremolo, tremoloPhase, voiceTremolo;
        void StepAllButPhase();
    };
    struct Fan {
        double start, step;  // samples, samples per voice
    };

    static Fan Fit(double start, double step, double bound, double last);
    void UpdateFilters();
    void UpdateVoice(int v, Fan& range, Fan& delay);
    void UpdateStereo(int v, int haas, double& position, double& pan);
    void SeatTempo(const ReferenceTransport& transport);
    Ramp StartRamp(int index, int sampleCount);
    void RunChannel(int c, double startPhase, Ramps ramps, const float* input, float* output,
                    int sampleCount);
    void RunStereo(double startPhase, Ramps ramps, const float* const* inputs,
                   float* const* outputs, int sampleCount);
    double Condition(int c, double x);
    float Read(int c, double offset) const;
    float Cell(int c, std::int64_t place) const;

    std::array<std::vector<float>, 8> history;
    std::int64_t lineLength = 0;
    int taps = 5;
    double lineSamples = 0;
    double maxRange = 0, maxDelay = 0;  // samples
    std::array<DelayLine, 8> dryDelay;
    std::array<std::array<DelayLine, 2>, 10> haasDelay;
    Filter lowPass, highPass;
    std::array<Voice, 10> voices;
    int voiceCount = 0;
    double channelPhaseStep = 0;
    double noteRate = 0;
    std::array<double, ReferenceSettings::kCount> last{};
};
