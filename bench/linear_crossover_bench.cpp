// SPDX-License-Identifier: GPL-3.0-or-later

// The linear-phase crossover splitting stereo blocks into six bands, which all get one input or
// each one of its own, in ns per stereo sample and band; then what a moved limit costs.

#include <benchmark/benchmark.h>

#include "dsp/linear_crossover.h"
#include "support/signals.h"

namespace {

constexpr int kBands = 6;
constexpr int kChannels = 2;
constexpr int kBlock = 64;
constexpr double kSampleRate = 48000;
constexpr double kLimits[] = {100, 300, 1000, 3000, 8000};

void Split(benchmark::State& bench) {
    LinearCrossover crossover;
    LinearCrossoverChannel channels[kChannels];
    BuildLinear(crossover, kBands, kLimits, kSampleRate, false);
    for (LinearCrossoverChannel& channel : channels) ReserveLinearChannel(channel, kBands, kBlock);
    const int inputs = static_cast<int>(bench.range(0));
    const Audio in = Noise(kChannels * inputs, kBlock, 0.5f);
    Audio out = Silence(kChannels, kBlock);
    for (auto _ : bench) {
        for (int b = 0; b < kBands; ++b)
            for (int c = 0; c < kChannels; ++c)
                RunLinearBand(crossover, channels[c], b, in[b % inputs * kChannels + c].data(),
                              out[c].data(), kBlock);
        benchmark::ClobberMemory();
    }
    bench.counters["ns/frame/band"] =
        benchmark::Counter(static_cast<double>(bench.iterations()) * kBlock * kBands / 1e9,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(Split)->Name("LinearCrossover/split/inputs")->Arg(1)->Arg(kBands);

void MoveLimit(benchmark::State& bench) {
    LinearCrossover crossover;
    double limits[] = {100, 300, 1000, 3000, 8000};
    for (auto _ : bench) {
        limits[0] += 0.001;
        BuildLinear(crossover, kBands, limits, kSampleRate, bench.range(0) != 0);
    }
}
BENCHMARK(MoveLimit)->Name("LinearCrossover/move limit/hybrid")->Arg(0)->Arg(1);

}  // namespace
