// SPDX-License-Identifier: GPL-3.0-or-later

// The analog crossover splitting stereo blocks: band by band, one biquad after the other, as the
// yardstick; then all bands at once by every variant that this processor runs; then what a moved
// limit costs. Times of splits are for one stereo frame, all bands.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>
#include <vector>

#include "dsp/analog_crossover.h"
#include "support/signals.h"

namespace {

constexpr int kChannels = 2;
constexpr int kBlock = 64;
constexpr double kSampleRate = 48000;
constexpr double kLimits[] = {100, 300, 1000, 3000, 8000};

struct Splitter {
    Splitter(int bands, int mode) : bands(bands), outputs(Silence(bands * kChannels, kBlock)) {
        BuildAnalog(crossover, bands, kLimits, kSampleRate, mode);
    }

    void RunBandByBand() {
        double samples[kBlock];
        for (int b = 0; b < bands; ++b)
            for (int c = 0; c < kChannels; ++c) {
                std::copy_n(inputs[c].data(), kBlock, samples);
                RunAnalogBand(crossover, states[c], b, samples, samples, kBlock);
                std::copy_n(samples, kBlock, outputs[b * kChannels + c].data());
            }
    }

    void Run(ProcessorVariant variant) {
        AnalogCrossoverState* const pointers[kChannels] = {&states[0], &states[1]};
        RunAnalogBands(variant, crossover, pointers, kChannels, sources.data(), destinations.data(),
                       kBlock);
    }

    int bands;
    AnalogCrossover crossover;
    AnalogCrossoverState states[kChannels];
    Audio inputs = Noise(kChannels, kBlock, 0.5f);
    Audio outputs;
    std::vector<const float*> sources = ReadPointers(inputs);
    std::vector<float*> destinations = WritePointers(outputs);
};

template <typename Body>
void MeasureSplit(benchmark::State& bench, int bands, int mode, Body body) {
    Splitter splitter(bands, mode);
    for (auto _ : bench) {
        body(splitter);
        benchmark::ClobberMemory();
    }
    bench.counters["ns/frame"] =
        benchmark::Counter(static_cast<double>(bench.iterations()) * kBlock / 1e9,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void MoveLimit(benchmark::State& bench, int mode) {
    AnalogCrossover crossover;
    double limits[] = {100, 300, 1000, 3000, 8000};
    for (auto _ : bench) {
        limits[0] += 0.001;
        BuildAnalog(crossover, 6, limits, kSampleRate, mode);
        benchmark::ClobberMemory();
    }
}

void RegisterSplit(const std::string& name, ProcessorVariant variant, int bands, int mode) {
    if (!HasProcessorVariant(variant)) return;
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& bench) {
        MeasureSplit(bench, bands, mode, [=](Splitter& splitter) { splitter.Run(variant); });
    });
}

void RegisterSplits(int bands, int mode) {
    const std::string name =
        "Split/" + std::to_string(bands) + " bands/" + std::to_string(24 * mode) + " dB/";
    benchmark::RegisterBenchmark((name + "biquads").c_str(), [=](benchmark::State& bench) {
        MeasureSplit(bench, bands, mode, [](Splitter& splitter) { splitter.RunBandByBand(); });
    });
    RegisterSplit(name + "SSE2", ProcessorVariant::Baseline, bands, mode);
    RegisterSplit(name + "AVX2", ProcessorVariant::Avx2, bands, mode);
    RegisterSplit(name + "AVX-512", ProcessorVariant::Avx512, bands, mode);
}

const int registered = [] {
    for (const int bands : {2, 6})
        for (const int mode : {1, 5}) RegisterSplits(bands, mode);
    for (const int mode : {1, 5})
        benchmark::RegisterBenchmark(("Move a limit/" + std::to_string(24 * mode) + " dB").c_str(),
                                     MoveLimit, mode);
    return 0;
}();

}  // namespace
