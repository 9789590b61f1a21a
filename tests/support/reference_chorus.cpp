// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/reference_chorus.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

using P = ReferenceSettings;

// Kaiser-windowed sinc, 128 points per sample, unit sum.
std::vector<double> MakeKernel() {
    constexpr double kCutoff = 0.83147068852033, kBeta = 10.08;
    constexpr int kHalf = 2462;
    std::vector<double> h;
    double sum = 0;
    for (int n = 0; n <= kHalf; ++n) {
        const double t = std::numbers::pi * kCutoff * n / 128, q = double(n) / kHalf;
        const double sinc = n == 0 ? 1 : std::sin(t) / t;
        h.push_back(sinc * std::cyl_bessel_i(0, kBeta * std::sqrt(1 - q * q)));
        sum += n == 0 ? h.back() : 2 * h.back();
    }
    for (double& value : h) value *= 128 / sum;
    return h;
}

double Kernel(double place) {
    static const std::vector<double> table = MakeKernel();
    const int n = static_cast<int>(place);
    return table[n] + (table[n + 1] - table[n]) * (place - n);
}

std::vector<float> MakeShape() {
    std::vector<float> points(8193);
    for (int i = 0; i < 8192; ++i)
        points[i] = static_cast<float>(std::sin(2 * std::numbers::pi * i / 8192));
    return points;
}

// The index is truncated towards zero, then wrapped: a negative phase reads past its segment.
double Shape(double phase) {
    static const std::vector<float> table = MakeShape();
    const int whole = static_cast<int>(phase * 8192);
    const int i = (whole % 8192 + 8192) % 8192;
    return table[i] + (double(table[i + 1]) - table[i]) * (phase * 8192 - whole);
}

double TremoloGain(double g, double amount) {
    return amount < 0 ? g * amount + 1 : (g - 1) * amount + 1;
}

double TremoloSource(double phase) { return (Shape(phase) + 1) * 0.5; }

double Saturated(double x) {
    const auto curve = [](double t) { return t * (27 + t * t) / (27 + 9 * t * t); };
    const double m = std::abs(x);
    const double y = std::copysign(m >= 1 ? 1 : curve(3 * m) / curve(3), x);
    return y + (y - x) * (y - x);
}

double WetGain(double dryWet) { return std::min(dryWet, 1.0); }

double DryGain(double dryWet) { return std::min(1.0, 2 - std::abs(dryWet)); }

}  // namespace

const std::array<ReferenceParameter, P::kCount>& P::Parameters() {
    static const double low = std::log10(20), high = std::log10(20000);
    static const std::array<ReferenceParameter, kCount> table{{
        {"", "Main parameters", 0, 0, 0, "ur", 0},
        {"Depth", "Dry/wet", 0, 2, 1, "rm", 0},
        {"Rate", "Rate", -2, low, -1, "ursm", 0},
        {"Range", "Range", 0.0001, 0.1, 0.01, "ursm", 2},
        {"Delay", "Delay", 0, 0.5, 0.005, "ursm", 2},
        {"Voices", "Voices", 1, 10, 2, "urm", 0},
        {"Saturation", "Saturation", 0, 1, 0.1, "urm", 0},
        {"Spread", "Spread", 0, 1, 1, "urm", 0},
        {"spreadmode", "Spread mode", 0, 6, 0, "ur", 0},
        {"", "Advanced parameters", 0, 0, 0, "ur", 0},
        {"DepthVariability", "Depth variability", -1, 1, 0, "ur", 0},
        {"RateVariability", "Rate variability", -1, 1, 0.5, "urs", 0},
        {"RangeVariability", "Range variability", -1, 1, 0, "urs", 0},
        {"DelayVariability", "Delay variability", -1, 1, 0, "urs", 0},
        {"MinFreq", "Min frequency", low, high, low, "us", 0},
        {"MaxFreq", "Max frequency", low, high, high, "us", 0},
        {"Tremolo", "Tremolo", -1, 1, 0, "r", 0},
        {"VoiceTremolo", "Voice tremolo", -1, 1, 0, "r", 0},
        {"TremoloPhase", "Tremolo phase", 0, 1, 0, "r", 0},
        {"sync", "Synchronization", 0, 1, 0, "ur", 0},
        {"synclength__", "Length", 0, 14, 9, "ur", 0},
        {"synctype", "Type", 0, 2, 0, "ur", 0},
        {"syncphase", "Phase", 0, 1, 0.25, "ur", 0},
    }};
    return table;
}

P::ReferenceSettings() {
    for (int p = 0; p < kCount; ++p) values[p] = Parameters()[p].defaultValue;
}

float ReferenceChorus::DelayLine::Exchange(double newest) {
    const float oldest = cells.front();
    cells.pop_front();
    cells.push_back(static_cast<float>(newest));
    return oldest;
}

void ReferenceChorus::DelayLine::Resize(int newLength) {
    const int from = static_cast<int>(cells.size()), to = std::max(newLength, 1);
    const std::deque<float> old = cells;
    cells.assign(to, from > 0 ? old.front() : 0.0f);
    if (from < 2 || to < 2) return;
    for (int i = 1; i < to - 1; ++i) {
        const double place = double(i) * (double(from - 1) / double(to - 1));
        const int k = static_cast<int>(place);
        cells[i] = static_cast<float>((1 - (place - k)) * old[k] + (place - k) * old[k + 1]);
    }
    cells.back() = old.back();
}

// Biquad of the well-known audio cookbook form, Q 0.7; the small constant keeps every coefficient
// off zero.
void ReferenceChorus::Filter::Set(bool isHighPass, double frequency, double sampleRate) {
    const double w = 2 * std::numbers::pi * frequency / sampleRate;
    const double c = std::cos(w), alpha = std::sin(w) / (2 * 0.7), e = 1e-15f;
    const double k = 1 / (1 + alpha);
    b0 = b2 = k * (isHighPass ? 1 + c : 1 - c) / 2 + e;
    b1 = k * (isHighPass ? -(1 + c) : 1 - c) + e;
    a1 = k * 2 * c + e;
    a2 = k * (alpha - 1) + e;
    enabled = true;
}

double ReferenceChorus::Filter::Run(int c, double x) {
    const double y = b0 * x + s2[c];
    s2[c] = b1 * x + s1[c] + a1 * y;
    s1[c] = b2 * x + a2 * y;
    return y;
}

double ReferenceChorus::Voice::Phase(int i) const {
    return std::fmod(base + double(count + i) * rate, 1);
}

void ReferenceChorus::Voice::SetRate(double newRate) {
    if (newRate == rate) return;
    base = Phase(0);
    count = 0;
    rate = newRate;
}

void ReferenceChorus::Prepare(const ReferenceSettings& newSettings) {
    settings = last = newSettings;
    maxRange = std::trunc(0.1 * settings.sampleRate);
    maxDelay = std::trunc(0.5 * settings.sampleRate);
    lineSamples = maxRange + maxDelay + 32;
    taps = settings.highQuality ? 39 : 5;
    lineLength = static_cast<std::int64_t>(2 * lineSamples + taps);
    for (int c = 0; c < settings.channels; ++c) {
        history[c].clear();
        dryDelay[c].cells.assign(settings.highQuality ? 18 : 1, 0.0f);
        for (Filter* filter : {&lowPass, &highPass}) filter->s1[c] = filter->s2[c] = 0;
    }
    Update();
}

ReferenceChorus::Fan ReferenceChorus::Fit(double start, double step, double bound, double last) {
    if (step < 0) {
        start = std::max(start, std::min(bound, -last * step));
        step = std::max(step, -start / last);
    } else {
        start = std::min(start, std::max(0.0, bound - last * step));
        step = std::min(step, (bound - start) / last);
    }
    return {start, step};
}

void ReferenceChorus::UpdateFilters() {
    const double lowest = std::pow(10, settings[P::kMinFrequency]);
    const double highest = std::pow(10, settings[P::kMaxFrequency]);
    highPass.enabled = lowPass.enabled = false;
    if (lowest > 20 * (1 + 1e-9)) highPass.Set(true, lowest, settings.sampleRate);
    if (highest < 20000 * (1 - 1e-9)) lowPass.Set(false, highest, settings.sampleRate);
}

void ReferenceChorus::Update() {
    static constexpr double kSpeeds[] = {0,
                                         0.102803738317757,
                                         0.18446601941747573,
                                         0.2911392405063291,
                                         0.3872832369942196,
                                         0.48314606741573035,
                                         0.6058394160583942,
                                         0.6949152542372882,
                                         0.8072289156626506,
                                         0.9726027397260274};
    UpdateFilters();
    const double s = settings.sampleRate;
    voiceCount = static_cast<int>(settings[P::kVoices]);
    const Fan range =
        Fit(s * settings[P::kRange], std::pow(settings[P::kRangeVariability], 3) * maxRange * 0.5,
            maxRange, voiceCount - 1);
    const Fan delay =
        Fit(s * settings[P::kDelay], std::pow(settings[P::kDelayVariability], 3) * s * 0.5,
            maxDelay, voiceCount - 1);
    const double depthStep = std::pow(settings[P::kDepthVariability], 3) / voiceCount;
    const double depth = depthStep > 0 ? 1 - (voiceCount - 1) * depthStep : 1;
    for (int v = 0; v < voiceCount; ++v) {
        const auto in = [v](const Fan& fan) {
            return v == 0 ? fan.start : fan.start + v * fan.step;
        };
        voices[v].depth = depth + v * depthStep;
        voices[v].range = std::clamp(in(range), 0.1, maxRange);
        voices[v].delay = -std::clamp(in(delay), 0.0, maxDelay);
        UpdateSpeed(voices[v], kSpeeds[10 * v / voiceCount]);
    }
    channelPhaseStep = settings[P::kSpread] / settings.channels;
    if (settings.channels == 2) UpdateStereo();
    static constexpr double kTypes[] = {1, 1.5, 1.3333333333333333};
    noteRate = std::exp2(settings[P::kSyncLength] - 7) * kTypes[int(settings[P::kSyncType])];
}

void ReferenceChorus::UpdateSpeed(Voice& voice, double speed) {
    const double variability = settings[P::kRateVariability];
    voice.SetRate(std::pow(10, settings[P::kRate]) / settings.sampleRate *
                  std::exp2(4 * variability * speed));
    if (std::abs(variability) < 1e-50) {
        voice.base = voices[0].base;
        voice.count = voices[0].count;
    }
    voice.phaseOffset = 1 - std::fmod(-voice.delay * voice.rate, 1);
}

void ReferenceChorus::UpdateStereo() {
    static constexpr double kHaasSeconds[] = {0, 0, 0.002, 0.004, 0.008, 0.016, 0.032};
    const int mode = static_cast<int>(settings[P::kSpreadMode]);
    const double w = settings[P::kSpread];
    const int haas = static_cast<int>(kHaasSeconds[mode] * settings.sampleRate);
    channelPhaseStep = mode == 1 ? 0.5 * w : 0;
    double position = mode == 1 ? 0 : w;
    double pan = mode == 1 ? 0 : mode == 0 ? w : 0.5 * w;
    for (int v = 0; v < voiceCount; ++v) {
        Voice& voice = voices[v];
        voice.haas[0].Resize(static_cast<int>(std::max(0.0, haas * position)));
        voice.haas[1].Resize(static_cast<int>(std::max(0.0, -haas * position)));
        voice.ll = 1 - std::max(pan, 0.0);
        voice.lr = std::max(pan, 0.0);
        voice.rl = std::max(-pan, 0.0);
        voice.rr = 1 - std::max(-pan, 0.0);
        const double next = v % 2 == 0 ? -1 : -0.9;
        position *= next;
        pan *= next;
    }
}

void ReferenceChorus::SeatTempo(const ReferenceTransport& transport) {
    if (settings[P::kSync] < 0.5 || transport.tempo < 0) return;
    for (int v = 0; v < voiceCount; ++v) {
        voices[v].SetRate(transport.tempo / (settings.sampleRate * 240.0) * noteRate);
        if (transport.position < 0) continue;
        voices[v].base =
            std::fmod(transport.position * noteRate * 0.25 + settings[P::kSyncPhase], 1);
        voices[v].count = 0;
    }
}

ReferenceChorus::Ramp ReferenceChorus::StartRamp(int index, int sampleCount) {
    const double target = settings[index], from = last[index];
    last[index] = target;
    if (std::abs(target - from) < 1e-50) return {target, 0};
    return {from, (target - from) / sampleCount};
}

void ReferenceChorus::Process(const ReferenceTransport& transport, const float* const* inputs,
                              float* const* outputs, int sampleCount) {
    SeatTempo(transport);
    Ramps ramps{StartRamp(P::kDryWet, sampleCount), StartRamp(P::kTremolo, sampleCount),
                StartRamp(P::kVoiceTremolo, sampleCount), StartRamp(P::kTremoloPhase, sampleCount)};
    const double first = ramps.dryWet.value;
    for (int i = 0; i < sampleCount; ++i) RunSample(i, ramps, inputs, outputs);
    for (int v = 0; v < voiceCount; ++v) voices[v].count += sampleCount;

    const double k = std::pow(10, -0.6 * voiceCount * 0.05);
    const double g0 = WetGain(first), g1 = WetGain(settings[P::kDryWet]);
    const double start = k * g0 + (1 - g0), step = (k * g1 + (1 - g1) - start) / sampleCount;
    for (int c = 0; c < settings.channels; ++c)
        for (int i = 0; i < sampleCount; ++i)
            outputs[c][i] *= static_cast<float>(start) + float(i) * static_cast<float>(step);
}

// Two channels have their voices panned and delayed; any other number has them as they are read.
void ReferenceChorus::RunSample(int i, Ramps& ramps, const float* const* inputs,
                                float* const* outputs) {
    const int channels = settings.channels;
    const bool stereo = channels == 2;
    double sum[8], tremolo[8];
    for (int c = 0; c < channels; ++c)
        sum[c] = Write(c, inputs[c][i]) * DryGain(ramps.dryWet.value);
    for (int v = 0; v < voiceCount; ++v) {
        Voice& voice = voices[v];
        double g[8], r[8];
        for (int c = 0; c < channels; ++c) {
            const double p = voice.Phase(i) + c * channelPhaseStep;
            g[c] = TremoloSource(p + ramps.tremoloPhase.value);
            if (v == 0) tremolo[c] = TremoloGain(g[c], ramps.tremolo.value);
            const double sweep = Shape(stereo ? p + voice.phaseOffset : p) - 1;
            r[c] = Read(c, sweep * voice.range + voice.delay);
        }
        const double panned[] = {r[1] * voice.rl + r[0] * voice.ll,
                                 r[1] * voice.rr + r[0] * voice.lr};
        for (int c = 0; c < channels; ++c) {
            double wet = (stereo ? panned[c] : r[c]) * TremoloGain(g[c], ramps.voiceTremolo.value);
            if (stereo) wet = voice.haas[c].Exchange(wet);
            sum[c] += wet * voice.depth * WetGain(ramps.dryWet.value);
        }
        if (!stereo) ramps.tremoloPhase.Step();  // once per voice: meant
    }
    for (int c = 0; c < channels; ++c) outputs[c][i] = static_cast<float>(sum[c] * tremolo[c]);
    for (Ramp* ramp : {&ramps.dryWet, &ramps.tremolo, &ramps.voiceTremolo}) ramp->Step();
    if (stereo) ramps.tremoloPhase.Step();
}

// Conditions a sample and writes it to its line. Answers the dry signal, which waits in a line too,
// two channels in one.
double ReferenceChorus::Write(int c, double raw) {
    double x = raw;
    if (lowPass.enabled) x = lowPass.Run(c, x);
    if (highPass.enabled) x = highPass.Run(c, x);
    const double wet = settings[P::kSaturation];
    if (wet >= 1e-50) x = Saturated(x) * wet + x * (1 - wet);
    history[c].push_back(static_cast<float>(x));
    if (!settings.highQuality) return raw;
    return dryDelay[settings.channels == 2 ? 0 : c].Exchange(raw);
}

// The cell at a place counted from the oldest one of a circular line.
float ReferenceChorus::Cell(int c, std::int64_t place) const {
    const std::int64_t wrapped = (place % lineLength + lineLength) % lineLength;
    const std::int64_t index = std::ssize(history[c]) - lineLength + wrapped;
    return index < 0 ? 0.0f : history[c][index];
}

float ReferenceChorus::Read(int c, double offset) const {
    const double x = offset + taps / 2 + 2 * lineSamples;  // whole samples
    const auto k = static_cast<std::int64_t>(x);
    const double frac = x - double(k);
    if (!settings.highQuality) {
        const float f = static_cast<float>(frac);
        const float before = Cell(c, k - 1), y0 = Cell(c, k), y1 = Cell(c, k + 1);
        const float y2 = Cell(c, k + 2);
        const float cube = ((y0 - y1) * 3 - before + y2) * 0.5f;
        const float square = y1 * 2 + before - (y0 * 5 + y2) * 0.5f;
        return ((cube * f + square) * f + (y1 - before) * 0.5f) * f + y0;
    }
    const double u = frac * 128, v = 128 - u;
    double sum = Cell(c, k) * Kernel(u);
    for (int m = 1; m <= 18; ++m) {
        sum += Cell(c, k - m) * Kernel(u + 128 * m);
        sum += Cell(c, k + m) * Kernel(v + 128 * (m - 1));
    }
    return static_cast<float>(sum);
}
