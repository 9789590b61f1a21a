// SPDX-License-Identifier: GPL-3.0-or-later

// The array primitives that the audio path leans on, by every variant that this processor runs, for
// a host's small block and for a transform's; then the transforms, forward and inverse in a row.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>
#include <vector>

#include "dsp/fft.h"
#include "dsp/vectors_variants.h"
#include "support/signals.h"

namespace {

constexpr int kBlocks[] = {64, 4096};

struct Arrays {
    explicit Arrays(int count) : audio(Noise(2, count, 1)), wide(count) {}
    float* A() { return audio[0].data(); }
    float* B() { return audio[1].data(); }

    Audio audio;
    std::vector<double> wide;
};

using Body = void (*)(const VectorLoops& loops, Arrays& arrays, int count);

const struct {
    const char* name;
    Body run;
} kLoops[] = {
    {"add constant", [](auto& loops, Arrays& x, int n) { loops.addConstant(n, 1e-15f, x.A()); }},
    {"add", [](auto& loops, Arrays& x, int n) { loops.add(n, x.B(), x.A()); }},
    {"scale", [](auto& loops, Arrays& x, int n) { loops.scaleInPlace(n, 1, x.A()); }},
    {"ramp", [](auto& loops, Arrays& x, int n) { loops.ramp(n, 1, 0, x.A()); }},
    {"to double",
     [](auto& loops, Arrays& x, int n) { loops.floatToDouble(n, x.A(), x.wide.data()); }},
    {"to float",
     [](auto& loops, Arrays& x, int n) { loops.doubleToFloat(n, x.wide.data(), x.A()); }},
    {"multiply complex",
     [](auto& loops, Arrays& x, int n) { loops.multiplyComplex(n / 2, x.A(), x.B(), x.A()); }},
    {"largest magnitude", [](auto& loops, Arrays& x, int n) { loops.absMax(n, x.A(), x.B()); }},
    {"sum", [](auto& loops, Arrays& x, int n) { loops.sum(n, x.A(), x.B()); }},
};

void RunLoop(benchmark::State& bench, const VectorLoops& loops, Body body, int count) {
    Arrays arrays(count);
    for (auto _ : bench) {
        body(loops, arrays, count);
        benchmark::ClobberMemory();
    }
    bench.counters["ns/element"] =
        benchmark::Counter(static_cast<double>(bench.iterations()) * count / 1e9,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void RunThereAndBack(benchmark::State& bench) {
    FftSpec* spec = nullptr;
    FftCreate(&spec, static_cast<int>(bench.range(0)), kFftUnscaled, 0);
    const FftHolder holder(spec);
    int workBytes = 0;
    FftWorkSize(spec, &workBytes);
    std::vector<std::byte> work(static_cast<std::size_t>(workBytes));
    std::vector<float> samples(std::size_t{1} << bench.range(0));
    for (auto _ : bench) {
        FftForward(samples.data(), spec, work.data());
        FftInverse(samples.data(), spec, work.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(RunThereAndBack)->Name("Fft/there and back/order")->Arg(10)->Arg(12);

const int registered = [] {
    for (const auto& [name, body] : kLoops)
        for (const int count : kBlocks)
            for (const auto variant :
                 {ProcessorVariant::Baseline, ProcessorVariant::Avx2, ProcessorVariant::Avx512}) {
                if (!HasProcessorVariant(variant)) continue;
                const VectorLoops& loops = GetVectorLoops(variant);
                const std::string title =
                    std::string("Vector/") + name + "/" + loops.name + "/" + std::to_string(count);
                benchmark::RegisterBenchmark(title.c_str(),
                                             [&loops, body = body, count](benchmark::State& bench) {
                                                 RunLoop(bench, loops, body, count);
                                             });
            }
    return 0;
}();

}  // namespace
