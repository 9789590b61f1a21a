// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/analog_crossover.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

#include "dsp/analog_crossover_variants.h"
#include "dsp/vectors.h"
#include "foundation/objects/tolerances.h"

namespace {

using namespace MAudioFilters;
using State = AnalogCrossoverState;

constexpr int kMaxLimits = AnalogCrossover::kMaxLimits;
constexpr int kMaxMode = FilterCascade::kRoom;

// Of the sample rate. Beyond these ends the denormal guard in the coefficients, or half the sample
// rate itself, takes the poles out of the unit circle.
constexpr double kMinFrequencyShare = 1e-6;
constexpr double kMaxFrequencyShare = 0.4999;

constexpr double kPairQ = 0.5;  // mode 0: two real poles, so that low minus high is first order

// Sections of Butterworth filters of order 2 * mode, 1 / (2 sin((2 k - 1) pi / (4 mode))).
constexpr double kButterworthQ[kMaxMode][kMaxMode] = {
    {0.7071067811865476},
    {1.3065629648763766, 0.5411961001461969},
    {1.9318516525781366, 0.7071067811865476, 0.5176380902050415},
    {2.5629154477415064, 0.8999762231364157, 0.6013448869350453, 0.5097955791041592},
    {3.196226610749831, 1.1013446322926332, 0.7071067811865476, 0.5611631188171804,
     0.5062325628940014}};

double UsableFrequency(double frequency, double sampleRate) {
    const double lowest = kMinFrequencyShare * sampleRate;
    return frequency > lowest ? std::min(frequency, kMaxFrequencyShare * sampleRate) : lowest;
}

// How often in a row a band passes a low-pass or high-pass.
int Rounds(const AnalogCrossover& crossover) { return crossover.doubled == 0 ? 1 : 2; }

bool IsNegated(const AnalogCrossover& crossover, int band) {
    return crossover.doubled == 0 && band % 2 != 0;
}

void SetFirstOrderAllPass(Filter<double>& filter, double frequency, double sampleRate) {
    const double w = 2 * std::numbers::pi * frequency / sampleRate;
    filter.type = FilterType::FirstOrderAllPass;
    filter.frequency = frequency;
    filter.sampleRate = sampleRate;
    filter.b0 = filter.a1 = std::exp(-w) + kDenormalGuard;
    filter.b1 = -1.0 + kDenormalGuard;
    filter.b2 = filter.a2 = 0;
    ++filter.version;
}

void DesignLimit(AnalogCrossover& crossover, int limit, double frequency, double sampleRate) {
    const int mode = crossover.doubled;
    const int count = std::max(mode, 1);
    const auto set = [&](FilterCascade& cascade, FilterType type) {
        cascade.count = count;
        for (int k = 0; k < count; ++k)
            cascade.filters[k].Set(type, frequency, sampleRate,
                                   mode == 0 ? kPairQ : kButterworthQ[mode - 1][k], 0);
    };
    set(crossover.lowSide[limit], FilterType::HighPass);
    set(crossover.highSide[limit], FilterType::LowPass);
    if (mode != 0) return set(crossover.allPass[limit], FilterType::AllPass);
    crossover.allPass[limit].count = 1;
    SetFirstOrderAllPass(crossover.allPass[limit].filters[0], frequency, sampleRate);
}

// RunBlock adds the guard to a filter's output. Here the history has it: with s2 and s1 kept as
// s2 + guard and s1 + guard (1 - a1), the output includes it and one constant a sample keeps it so.
void SetTaps(AnalogCrossover::LaneTaps& taps, int lane, const Filter<double>& filter, double sign) {
    taps.b0[lane] = sign * filter.b0;
    taps.b1[lane] = sign * filter.b1;
    taps.b2[lane] = sign * filter.b2;
    taps.a1[lane] = filter.a1;
    taps.a2[lane] = filter.a2;
    taps.guard[lane] = sign * kDenormalGuard * (1 - filter.a1 - filter.a2);
}

// The filters that a band passes, one after the other.
struct BandPath {
    BandPath(const AnalogCrossover& crossover, int band) {
        for (int k = 0; k < band - 1; ++k) Append(crossover.allPass[k]);
        for (int i = 0; band > 0 && i < Rounds(crossover); ++i) Append(crossover.lowSide[band - 1]);
        for (int k = band; k < crossover.bands - 1; ++k)
            for (int i = 0; i < Rounds(crossover); ++i) Append(crossover.highSide[k]);
    }

    void Append(const FilterCascade& cascade) {
        for (int k = 0; k < cascade.count; ++k) filters[count++] = &cascade.filters[k];
    }

    const Filter<double>* filters[AnalogCrossover::LanePair::kMaxSections];
    int count = 0;
};

void SetLane(AnalogCrossover& crossover, int band) {
    AnalogCrossover::LanePair& pair = crossover.pairs[band / 2];
    const BandPath path(crossover, band);
    for (int i = 0; i < path.count; ++i) {
        const bool last = i + 1 == path.count;
        const double sign = last && IsNegated(crossover, band) ? -1 : 1;
        SetTaps(pair.taps[i], band % 2, *path.filters[i], sign);
    }
    pair.sections = std::max(pair.sections, path.count);
}

void SetStructure(AnalogCrossover& crossover, int bands, int mode) {
    if (crossover.bands == bands && crossover.doubled == mode) return;
    ++crossover.structure;
    crossover.bands = bands;
    crossover.doubled = mode;
    for (AnalogCrossover::LanePair& pair : crossover.pairs) pair = {};
}

RunAnalogLanes LanesFor(ProcessorVariant variant, int pieces) {
    // Two pieces would leave half of the widest vector empty; both variants give the same numbers.
    if (variant == ProcessorVariant::Avx512 && pieces > 2) return kAvx512AnalogLanes;
    return variant == ProcessorVariant::Baseline ? kBaselineAnalogLanes : kAvx2AnalogLanes;
}

// Starts anew where the histories belong to another structure.
void Follow(const AnalogCrossover& crossover, State& state) {
    if (state.structure == crossover.structure) return;
    ClearAnalogState(state);
    state.structure = crossover.structure;
}

void RunAllPasses(const AnalogCrossover& crossover, FilterMemory* memories, double* block,
                  int count) {
    for (int limit = 0; limit + 1 < crossover.bands; ++limit)
        for (int k = 0; k < crossover.allPass[limit].count; ++k) {
            const Filter<double> filter = crossover.allPass[limit].filters[k];
            FilterMemory memory = *memories;
            for (int i = 0; i < count; ++i)
                block[i] = filter.RunSample(block[i], memory) + kDenormalGuard;
            *memories++ = memory;
        }
}

}  // namespace

void BuildAnalog(AnalogCrossover& crossover, int bands, const double* frequencies,
                 double sampleRate, int mode) {
    SetStructure(crossover, bands, mode);
    for (int limit = 0; limit + 1 < bands; ++limit)
        DesignLimit(crossover, limit, UsableFrequency(frequencies[limit], sampleRate), sampleRate);
    for (int band = 0; band < bands; ++band) SetLane(crossover, band);
}

void ReserveAnalogState(State& state) {
    state.lanes.Reserve(AnalogCrossover::kMaxPairs * AnalogCrossover::LanePair::kMaxSections);
    state.leftOut.Reserve(kMaxLimits * FilterCascade::kRoom);
}

void ClearAnalogState(State& state) {
    state.bands.SetCapacity(0);
    std::fill_n(state.lanes.Data(), state.lanes.Capacity(), State::LaneMemory{});
    std::fill_n(state.leftOut.Data(), state.leftOut.Capacity(), FilterMemory{});
}

void RunAnalogBand(const AnalogCrossover& crossover, State& state, int band, const double* source,
                   double* destination, int count) {
    Follow(crossover, state);
    state.bands.Reserve(crossover.bands);
    State::Band& own = state.bands[band];
    const double* x = source;
    if (band >= 2) {
        state.allPassScratch.Reserve(count);
        double* const scratch = state.allPassScratch.Data();
        RunBlock(crossover.allPass[band - 2], own.allPass, band == 2 ? source : scratch, scratch,
                 count);
        x = scratch;
    }
    const auto run = [&](const FilterCascade& cascade, State::FilterStates* states) {
        for (int i = 0; i < Rounds(crossover); ++i, x = destination)
            RunBlock(cascade, states[i], x, destination, count);
    };
    if (band > 0) run(crossover.lowSide[band - 1], own.lowSide);
    for (int k = band; k + 1 < crossover.bands; ++k) run(crossover.highSide[k], own.highSide[k]);
    if (x != destination) std::copy_n(x, count, destination);
    if (IsNegated(crossover, band))
        std::transform(destination, destination + count, destination, std::negate());
}

void RunAnalogBands(const AnalogCrossover& crossover, State* const* states, int channels,
                    const float* const* sources, float* const* destinations, int count) {
    static const ProcessorVariant best = BestProcessorVariant();
    RunAnalogBands(best, crossover, states, channels, sources, destinations, count);
}

void RunAnalogBands(ProcessorVariant variant, const AnalogCrossover& crossover,
                    State* const* states, int channels, const float* const* sources,
                    float* const* destinations, int count) {
    for (int c = 0; c < channels; ++c) {
        Follow(crossover, *states[c]);
        ReserveAnalogState(*states[c]);
    }
    const AnalogSplit split = {crossover, states, channels, sources, destinations, count};
    LanesFor(variant, split.Pieces())(split);
}

void RunAnalogAllPass(const AnalogCrossover& crossover, State& state, float* buffer, int count) {
    constexpr int kBlock = 64;
    Follow(crossover, state);
    ReserveAnalogState(state);
    const double sign = IsNegated(crossover, crossover.bands - 1) ? -1 : 1;
    double block[kBlock];
    for (int first = 0; first < count; first += kBlock) {
        const int part = std::min(kBlock, count - first);
        VecFloatToDouble(buffer + first, block, part);
        RunAllPasses(crossover, state.leftOut.Data(), block, part);
        for (int i = 0; i < part; ++i) buffer[first + i] = static_cast<float>(sign * block[i]);
    }
}
