// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/reference_chorus.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

using P = ReferenceSettings;

// Bessel function of the first kind, modified, order 0: its power series.
double BesselI0(double x) {
    double sum = 1, term = 1;
    for (int k = 1; k < 60; ++k) {
        term *= (x / 2 / k) * (x / 2 / k);
        sum += term;
    }
    return sum;
}

// Kaiser-windowed sinc, 128 points per sample, unit sum.
std::vector<double> MakeKernel() {
    constexpr double kCutoff = 0.83147068852033, kBeta = 10.08;
    constexpr int kHalf = 2462;
    std::vector<double> h;
    double sum = 0;
    for (int n = 0; n <= kHalf; ++n) {
        const double t = std::numbers::pi * kCutoff * n / 128, q = double(n) / kHalf;
        const double sinc = n == 0 ? 1 : std::sin(t) / t;
        h.push_back(sinc * BesselI0(kBeta * std::sqrt(1 - q * q)));
        sum += n == 0 ? h.back() : 2 * h.back();
    }
    for (double& value : h) value *= 128 / sum;
    return h;
}

double Kernel(double place) {
    static const std::vector<double> table = MakeKernel();
    const auto n = static_cast<std::size_t>(place);
    const double a = place - double(n);
    return (1 - a) * table[n] + a * table[n + 1];
}

float ShapePoint(int i) {
    const auto quarter = [](int k) { return float(std::sin(k * 2 * std::numbers::pi / 8192)); };
    if (i <= 2048) return quarter(i);
    if (i <= 4096) return quarter(4096 - i);
    return -ShapePoint(i - 4096);
}

// The index is truncated towards zero, then wrapped: a negative phase reads past its segment.
double Shape(double phase) {
    static const std::vector<float> table = [] {
        std::vector<float> points(8193);
        for (int i = 0; i <= 8192; ++i) points[static_cast<std::size_t>(i)] = ShapePoint(i % 8192);
        return points;
    }();
    const double x = phase * 8192;
    const auto whole = static_cast<std::int64_t>(x);
    const double frac = x - double(whole);
    const auto i = static_cast<std::size_t>(((whole % 8192) + 8192) % 8192);
    return table[i] + (double(table[i + 1]) - table[i]) * frac;
}

double TremoloGain(double g, double amount) {
    return amount < 0 ? g * amount + 1 : (g - 1) * amount + 1;
}

double TremoloSource(double phase) { return (Shape(phase) + 1) * 0.5; }

double Saturated(double x) {
    const auto curve = [](double m) {
        const double t = 3 * m;
        return t * (27 + t * t) / (27 + 9 * t * t) / 3;
    };
    const double m = std::abs(x);
    const double y = std::copysign(m >= 1 ? 1 : curve(m) / curve(1), x);
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

bool P::NeedsUpdate(int index) {
    return Parameters()[static_cast<std::size_t>(index)].flags[0] == 'u';
}

ReferenceSettings::ReferenceSettings() {
    for (int p = 0; p < kCount; ++p)
        (*this)[p] = Parameters()[static_cast<std::size_t>(p)].defaultValue;
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
    const auto at = [&](int k) { return double(old[static_cast<std::size_t>(k)]); };
    cells.assign(static_cast<std::size_t>(to), from > 0 ? old.front() : 0.0f);
    if (from < 2 || to < 2) return;
    const double ratio = double(from - 1) / double(to - 1);
    for (int i = 1; i < to - 1; ++i) {
        const double place = i * ratio;
        const int k = static_cast<int>(place);
        const double f = place - k;
        cells[static_cast<std::size_t>(i)] = static_cast<float>((1 - f) * at(k) + f * at(k + 1));
    }
    cells.back() = old.back();
}

// Biquad of the well-known audio cookbook form, Q 0.7; the small constant keeps every coefficient
// off zero.
void ReferenceChorus::Filter::Set(bool isHighPass, double frequency, double sampleRate) {
    const double w = 2 * std::numbers::pi * frequency / sampleRate;
    const double c = std::cos(w), alpha = std::sin(w) / (2 * 0.7), e = 1e-15f;
    const double outer = isHighPass ? (1 + c) / 2 : (1 - c) / 2;
    const double k = 1 / (1 + alpha);
    b0 = b2 = k * outer + e;
    b1 = k * (isHighPass ? -(1 + c) : 1 - c) + e;
    a1 = -(k * (-2 * c)) + e;
    a2 = -(k * (1 - alpha)) + e;
    enabled = true;
}

double ReferenceChorus::Filter::Run(int channel, double x) {
    const auto c = static_cast<std::size_t>(channel);
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

void ReferenceChorus::Ramps::StepAllButPhase() {
    for (Ramp* ramp : {&dryWet, &tremolo, &voiceTremolo}) ramp->value += ramp->step;
}

void ReferenceChorus::Prepare() {
    maxRange = std::trunc(0.1 * settings.sampleRate);
    maxDelay = std::trunc(0.5 * settings.sampleRate);
    lineSamples = maxRange + maxDelay + 32;
    taps = settings.highQuality ? 39 : 5;
    lineLength = static_cast<std::int64_t>(2 * lineSamples + taps);
    for (std::size_t c = 0; c < static_cast<std::size_t>(settings.channels); ++c) {
        history[c].clear();
        dryDelay[c].cells.assign(settings.highQuality ? 18 : 1, 0.0f);
        for (Filter* filter : {&lowPass, &highPass}) filter->s1[c] = filter->s2[c] = 0;
    }
    Update();
    last = settings.values;
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
    highPass.enabled = false;
    if (lowest > 20 * (1 + 1e-9)) highPass.Set(true, lowest, settings.sampleRate);
    const double highest = std::pow(10, settings[P::kMaxFrequency]);
    lowPass.enabled = false;
    if (highest < 20000 * (1 - 1e-9)) lowPass.Set(false, highest, settings.sampleRate);
}

void ReferenceChorus::Update() {
    UpdateFilters();
    const double s = settings.sampleRate;
    voiceCount = static_cast<int>(settings[P::kVoices]);
    Fan range =
        Fit(s * settings[P::kRange], std::pow(settings[P::kRangeVariability], 3) * maxRange * 0.5,
            maxRange, voiceCount - 1);
    Fan delay = Fit(s * settings[P::kDelay], std::pow(settings[P::kDelayVariability], 3) * s * 0.5,
                    maxDelay, voiceCount - 1);
    const double depthStep = std::pow(settings[P::kDepthVariability], 3) / voiceCount;
    double depth = depthStep > 0 ? 1 - (voiceCount - 1) * depthStep : 1;

    const int mode = static_cast<int>(settings[P::kSpreadMode]);
    const double w = settings[P::kSpread];
    double position = 0, pan = 0;
    int haas = 0;
    channelPhaseStep = w / settings.channels;
    if (settings.channels == 2) {
        static constexpr double kHaasSeconds[] = {0, 0, 0.002, 0.004, 0.008, 0.016, 0.032};
        haas = static_cast<int>(kHaasSeconds[mode] * s);
        channelPhaseStep = mode == 1 ? 0.5 * w : 0;
        position = mode == 1 ? 0 : w;
        pan = mode == 1 ? 0 : mode == 0 ? w : 0.5 * w;
    }
    for (int v = 0; v < voiceCount; ++v) {
        UpdateVoice(v, range, delay);
        if (settings.channels == 2) UpdateStereo(v, haas, position, pan);
        voices[static_cast<std::size_t>(v)].depth = depth;
        depth += depthStep;
    }
    static constexpr double kTypes[] = {1, 1.5, 1.3333333333333333};
    noteRate = std::exp2(settings[P::kSyncLength] - 7) *
               kTypes[static_cast<std::size_t>(settings[P::kSyncType])];
}

void ReferenceChorus::UpdateVoice(int v, Fan& range, Fan& delay) {
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
    Voice& voice = voices[static_cast<std::size_t>(v)];
    const double spread = 4 * settings[P::kRateVariability];
    voice.SetRate(std::pow(10, settings[P::kRate]) / settings.sampleRate *
                  std::exp2(spread * kSpeeds[10 * v / voiceCount]));
    if (v > 0 && std::abs(spread) < 1e-50) {
        voice.base = voices[0].base;
        voice.count = voices[0].count;
    }
    voice.range = std::clamp(range.start, 0.1, maxRange);
    range.start += range.step;
    const double d = std::clamp(delay.start, 0.0, maxDelay);
    voice.delay = -d;
    delay.start += delay.step;
    voice.phaseOffset = 1 - std::fmod(d * voice.rate, 1);
}

void ReferenceChorus::UpdateStereo(int v, int haas, double& position, double& pan) {
    Voice& voice = voices[static_cast<std::size_t>(v)];
    const double p = haas * position;
    haasDelay[static_cast<std::size_t>(v)][0].Resize(static_cast<int>(std::max(0.0, p)));
    haasDelay[static_cast<std::size_t>(v)][1].Resize(static_cast<int>(std::max(0.0, -p)));
    voice.ll = pan < 0 ? 1 : 1 - pan;
    voice.rl = pan < 0 ? -pan : 0;
    voice.lr = pan < 0 ? 0 : pan;
    voice.rr = pan < 0 ? 1 + pan : 1;
    const double next = v % 2 == 0 ? -1 : -0.9;
    position *= next;
    pan *= next;
}

void ReferenceChorus::SeatTempo(const ReferenceTransport& transport) {
    if (settings[P::kSync] < 0.5 || transport.tempo < 0) return;
    for (int v = 0; v < voiceCount; ++v) {
        Voice& voice = voices[static_cast<std::size_t>(v)];
        voice.SetRate(transport.tempo / (settings.sampleRate * 240.0) * noteRate);
        if (transport.position < 0) continue;
        voice.base = std::fmod(transport.position * noteRate * 0.25 + settings[P::kSyncPhase], 1);
        voice.count = 0;
    }
}

ReferenceChorus::Ramp ReferenceChorus::StartRamp(int index, int sampleCount) {
    const double target = settings[index], from = last[static_cast<std::size_t>(index)];
    last[static_cast<std::size_t>(index)] = target;
    if (std::abs(target - from) < 1e-50) return {target, 0};
    return {from, (target - from) / sampleCount};
}

void ReferenceChorus::Process(const ReferenceTransport& transport, const float* const* inputs,
                              float* const* outputs, int sampleCount) {
    SeatTempo(transport);
    const Ramps ramps{StartRamp(P::kDryWet, sampleCount), StartRamp(P::kTremolo, sampleCount),
                      StartRamp(P::kTremoloPhase, sampleCount),
                      StartRamp(P::kVoiceTremolo, sampleCount)};
    double startPhase = channelPhaseStep < 0 ? -8 * channelPhaseStep : 0;
    if (settings.channels == 2) {
        RunStereo(startPhase, ramps, inputs, outputs, sampleCount);
    } else {
        for (int c = 0; c < settings.channels; ++c, startPhase += channelPhaseStep)
            RunChannel(c, startPhase, ramps, inputs[c], outputs[c], sampleCount);
    }
    for (int v = 0; v < voiceCount; ++v) voices[static_cast<std::size_t>(v)].count += sampleCount;

    const double k = std::pow(10, -0.6 * voiceCount * 0.05);
    const double g0 = WetGain(ramps.dryWet.value), g1 = WetGain(settings[P::kDryWet]);
    const double startGain = k * g0 + (1 - g0);
    const auto gain = static_cast<float>(startGain);
    const auto step = static_cast<float>((k * g1 + (1 - g1) - startGain) / sampleCount);
    for (int c = 0; c < settings.channels; ++c)
        for (int i = 0; i < sampleCount; ++i) outputs[c][i] *= gain + static_cast<float>(i) * step;
}

void ReferenceChorus::RunChannel(int c, double startPhase, Ramps ramps, const float* input,
                                 float* output, int sampleCount) {
    for (int i = 0; i < sampleCount; ++i) {
        const double raw = input[i];
        history[static_cast<std::size_t>(c)].push_back(static_cast<float>(Condition(c, raw)));
        const double dry =
            settings.highQuality ? dryDelay[static_cast<std::size_t>(c)].Exchange(raw) : raw;
        double sum = dry * DryGain(ramps.dryWet.value), tremolo = 1;
        for (int v = 0; v < voiceCount; ++v) {
            const Voice& voice = voices[static_cast<std::size_t>(v)];
            const double p = voice.Phase(i) + startPhase;
            const double g = TremoloSource(p + ramps.tremoloPhase.value);
            if (v == 0) tremolo = TremoloGain(g, ramps.tremolo.value);
            sum += Read(c, (Shape(p) - 1) * voice.range + voice.delay) *
                   TremoloGain(g, ramps.voiceTremolo.value) * voice.depth *
                   WetGain(ramps.dryWet.value);
            ramps.tremoloPhase.value += ramps.tremoloPhase.step;  // once per voice: meant
        }
        output[i] = static_cast<float>(sum * tremolo);
        ramps.StepAllButPhase();
    }
}

void ReferenceChorus::RunStereo(double startPhase, Ramps ramps, const float* const* inputs,
                                float* const* outputs, int sampleCount) {
    for (int i = 0; i < sampleCount; ++i) {
        std::array<double, 2> sum{}, tremolo{};
        for (std::size_t c = 0; c < 2; ++c) {
            const double raw = inputs[c][i];
            history[c].push_back(static_cast<float>(Condition(static_cast<int>(c), raw)));
            const double dry = settings.highQuality ? dryDelay[0].Exchange(raw) : raw;
            sum[c] = dry * DryGain(ramps.dryWet.value);
        }
        for (std::size_t v = 0; v < static_cast<std::size_t>(voiceCount); ++v) {
            const Voice& voice = voices[v];
            std::array<double, 2> g{}, r{};
            for (std::size_t c = 0; c < 2; ++c) {
                const double p = voice.Phase(i) + startPhase + double(c) * channelPhaseStep;
                g[c] = TremoloSource(p + ramps.tremoloPhase.value);
                if (v == 0) tremolo[c] = TremoloGain(g[c], ramps.tremolo.value);
                r[c] = Read(static_cast<int>(c),
                            (Shape(p + voice.phaseOffset) - 1) * voice.range + voice.delay);
            }
            const std::array mixed{r[1] * voice.rl + r[0] * voice.ll,
                                   r[1] * voice.rr + r[0] * voice.lr};
            for (std::size_t c = 0; c < 2; ++c) {
                const double wet = mixed[c] * TremoloGain(g[c], ramps.voiceTremolo.value);
                sum[c] += haasDelay[v][c].Exchange(wet) * voice.depth * WetGain(ramps.dryWet.value);
            }
        }
        for (std::size_t c = 0; c < 2; ++c) outputs[c][i] = static_cast<float>(sum[c] * tremolo[c]);
        ramps.tremoloPhase.value += ramps.tremoloPhase.step;
        ramps.StepAllButPhase();
    }
}

double ReferenceChorus::Condition(int c, double x) {
    if (lowPass.enabled) x = lowPass.Run(c, x);
    if (highPass.enabled) x = highPass.Run(c, x);
    const double wet = settings[P::kSaturation];
    return std::abs(wet) < 1e-50 ? x : Saturated(x) * wet + x * (1 - wet);
}

// The cell at a place counted from the oldest one of a circular line.
float ReferenceChorus::Cell(int c, std::int64_t place) const {
    const std::vector<float>& written = history[static_cast<std::size_t>(c)];
    const std::int64_t wrapped = (place % lineLength + lineLength) % lineLength;
    const std::int64_t index = static_cast<std::int64_t>(written.size()) - lineLength + wrapped;
    return index < 0 ? 0.0f : written[static_cast<std::size_t>(index)];
}

float ReferenceChorus::Read(int c, double offset) const {
    const int half = taps / 2;  // whole samples
    const double x = offset + half + 2 * lineSamples;
    const auto k = static_cast<std::int64_t>(x);
    const double frac = x - double(k);
    if (!settings.highQuality) {
        const float f = static_cast<float>(frac), before = Cell(c, k - 1), y0 = Cell(c, k),
                    y1 = Cell(c, k + 1), y2 = Cell(c, k + 2);
        return ((((y0 - y1) * 3 - before + y2) * 0.5f * f + y1 * 2 + before -
                 (y0 * 5 + y2) * 0.5f) *
                    f +
                (y1 - before) * 0.5f) *
                   f +
               y0;
    }
    const double u = frac * 128, v = 128 - u;
    double sum = Cell(c, k) * Kernel(u);
    for (int m = 1; m <= 18; ++m) {
        sum += Cell(c, k - m) * Kernel(u + 128 * m);
        sum += Cell(c, k + m) * Kernel(v + 128 * (m - 1));
    }
    return static_cast<float>(sum);
}

bool ReferenceChorus::IsSilent() const {
    for (int c = 0; c < settings.channels; ++c)
        for (std::int64_t place = 0; place < lineLength; ++place)
            if (!(std::abs(Cell(c, place)) < 1e-20f)) return false;
    return true;
}
