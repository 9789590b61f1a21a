// SPDX-License-Identifier: GPL-3.0-or-later
// What a control or an automation lane asks of a value: the text of a position, the number of a
// text, a position and its number. The formatter stands beside them for comparison.
#include <benchmark/benchmark.h>

#include "foundation/text/string_formatter.h"
#include "parameters/values/value_scales.h"

namespace {

// Positions that pass every threshold of a scale.
double Next(double position) { return position < 1 ? position + 0.0137 : 0; }

template <typename Value>
void TextFrom01(benchmark::State& state) {
    const Value value;
    double position = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(value.GetTextFrom01(position));
        position = Next(position);
    }
}

void TextByFormatter(benchmark::State& state) {
    double position = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(MString(MStringFormatter("{0.1}%") << position * 100));
        position = Next(position);
    }
}

template <typename Value>
void ReadText(benchmark::State& state) {
    Value value;
    const MString text = MString::FromUtf8("0.75 of it");
    for (auto _ : state) benchmark::DoNotOptimize(value.SetText(text));
}

template <typename Value>
void SetAndGet01(benchmark::State& state) {
    Value value;
    double position = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(value.Set01(position));
        benchmark::DoNotOptimize(value.Get01());
        position = Next(position);
    }
}

}  // namespace

BENCHMARK(TextByFormatter);
BENCHMARK_TEMPLATE(TextFrom01, MValueDouble);
BENCHMARK_TEMPLATE(TextFrom01, MValuePercents);
BENCHMARK_TEMPLATE(TextFrom01, MValueVolume);
BENCHMARK_TEMPLATE(TextFrom01, MValueFrequency);
BENCHMARK_TEMPLATE(TextFrom01, MValueFrequencyLog);
BENCHMARK_TEMPLATE(TextFrom01, MValueTimeMS);
BENCHMARK_TEMPLATE(TextFrom01, MValueDegreesFrom01);
BENCHMARK_TEMPLATE(TextFrom01, MValueSignalGeneratorShape);
BENCHMARK_TEMPLATE(ReadText, MValueDouble);
BENCHMARK_TEMPLATE(ReadText, MValuePercents);
BENCHMARK_TEMPLATE(SetAndGet01, MValueDouble);
BENCHMARK_TEMPLATE(SetAndGet01, MValueFrequency);
BENCHMARK_TEMPLATE(SetAndGet01, MValueInt32);
