// SPDX-License-Identifier: GPL-3.0-or-later

// The reads of the delay lines by themselves: the literal scalar sinc read as the yardstick, then
// every variant that this processor runs. Times are for one stereo pair of reads.
//
// Positions drift as a slow voice's do, so that neighbouring reads share the kernel's rows.

#include <benchmark/benchmark.h>

#include <cmath>
#include <string>
#include <vector>

#include "dsp/voice_reads.h"
#include "support/literal_reads.h"

namespace {

constexpr int kLineLength = 53023;  // a line at 44.1 kHz

struct Lines {
    Lines() : left(kLineLength), right(kLineLength) {
        for (int i = 0; i < kLineLength; ++i) {
            left[static_cast<std::size_t>(i)] = static_cast<float>(0.5 * std::sin(0.37 * i));
            right[static_cast<std::size_t>(i)] = static_cast<float>(0.5 * std::cos(0.21 * i));
        }
        points.count = kMaxReads;
        for (int i = 0; i < kMaxReads; ++i) {
            const double position = 30000 + 1.006 * i;
            points.cells[i] = static_cast<int>(position);
            points.fractions[i] = position - points.cells[i];
        }
    }
    LineView Left() const { return {left.data(), kLineLength}; }
    LineView Right() const { return {right.data(), kLineLength}; }

    std::vector<float> left;
    std::vector<float> right;
    ReadPoints points;
};

template <typename Body>
void MeasurePairs(benchmark::State& bench, Body body) {
    Lines lines;
    float left[kMaxReads];
    float right[kMaxReads];
    for (auto _ : bench) {
        body(lines, left, right);
        benchmark::DoNotOptimize(left);
        benchmark::DoNotOptimize(right);
        benchmark::ClobberMemory();
    }
    bench.counters["ns/pair"] =
        benchmark::Counter(static_cast<double>(bench.iterations()) * kMaxReads / 1e9,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void LiteralSinc(benchmark::State& bench) {
    MeasurePairs(bench, [](const Lines& lines, float* left, float* right) {
        for (int i = 0; i < kMaxReads; ++i) {
            const int cell = lines.points.cells[i];
            const double fraction = lines.points.fractions[i];
            left[i] = LiteralSincRead(lines.left.data(), kLineLength, cell, fraction);
            right[i] = LiteralSincRead(lines.right.data(), kLineLength, cell, fraction);
        }
    });
}

void SincPair(benchmark::State& bench, const VoiceReads& reads) {
    MeasurePairs(bench, [&](const Lines& lines, float* left, float* right) {
        reads.sincPair(lines.Left(), lines.Right(), lines.points, left, right);
    });
}

void SincTwice(benchmark::State& bench, const VoiceReads& reads) {
    MeasurePairs(bench, [&](const Lines& lines, float* left, float* right) {
        reads.sinc(lines.Left(), lines.points, left);
        reads.sinc(lines.Right(), lines.points, right);
    });
}

void Cubic(benchmark::State& bench, const VoiceReads& reads) {
    MeasurePairs(bench, [&](const Lines& lines, float* left, float* right) {
        reads.cubic(lines.Left(), lines.points, left);
        reads.cubic(lines.Right(), lines.points, right);
    });
}

const int registered = [] {
    benchmark::RegisterBenchmark("Read/literal sinc", LiteralSinc);
    for (const auto variant :
         {ProcessorVariant::Baseline, ProcessorVariant::Avx2, ProcessorVariant::Avx512}) {
        if (!HasProcessorVariant(variant)) continue;
        const VoiceReads& reads = GetVoiceReads(variant);
        const std::string name = reads.name;
        benchmark::RegisterBenchmark(("Read/sinc pair/" + name).c_str(), SincPair, reads);
        benchmark::RegisterBenchmark(("Read/sinc twice/" + name).c_str(), SincTwice, reads);
        benchmark::RegisterBenchmark(("Read/cubic/" + name).c_str(), Cubic, reads);
    }
    return 0;
}();

}  // namespace
