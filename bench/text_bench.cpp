// SPDX-License-Identifier: GPL-3.0-or-later
// MString beside std::u16string, for texts of the length of a unit, which std::u16string holds
// without an allocation, of a key and of a message. A literal is compared as keys are: with text
// that was read.
#include <benchmark/benchmark.h>

#include <string>

#include "foundation/text/mstring.h"
#include "foundation/text/string_formatter.h"

namespace {

constexpr const char16_t* kTexts[] = {u"dB", u"PhaseSyncGroup",
                                      u"File could not be created. Make sure there is no "
                                      u"write-protected file already existing."};

template <typename String>
void Copy(benchmark::State& state) {
    const String text(kTexts[state.range(0)]);
    for (auto _ : state) {
        String copy(text);
        benchmark::DoNotOptimize(copy);
    }
}

void Append(MString& text, const MString& more) { text.Append(more); }
void Append(std::u16string& text, const std::u16string& more) { text.append(more); }
void Append(MString& text, char16_t unit) { text.Append(unit); }
void Append(std::u16string& text, char16_t unit) { text += unit; }

template <typename String>
void AppendText(benchmark::State& state) {
    const String more(kTexts[state.range(0)]);
    for (auto _ : state) {
        String text;
        for (int i = 0; i < 16; ++i) Append(text, more);
        benchmark::DoNotOptimize(text);
    }
}

template <typename String>
void AppendUnits(benchmark::State& state) {
    for (auto _ : state) {
        String text;
        for (int i = 0; i < 64; ++i) Append(text, static_cast<char16_t>(u'a' + i % 26));
        benchmark::DoNotOptimize(text);
    }
}

template <typename String>
void CompareEqual(benchmark::State& state) {
    const String a(kTexts[state.range(0)]);
    const String b(kTexts[state.range(0)]);
    for (auto _ : state) benchmark::DoNotOptimize(a == b);
}

template <typename String>
void CompareOrder(benchmark::State& state) {
    const String a(kTexts[state.range(0)]);
    const String b(kTexts[state.range(0)]);
    for (auto _ : state) benchmark::DoNotOptimize(a < b);
}

void LiteralKeyMString(benchmark::State& state) {
    const MString read(u"PhaseSyncGroup");
    for (auto _ : state) benchmark::DoNotOptimize(read == MString("PhaseSyncGroup"));
}

void LiteralKeyU16String(benchmark::State& state) {
    const std::u16string read(u"PhaseSyncGroup");
    for (auto _ : state) benchmark::DoNotOptimize(read == std::u16string(u"PhaseSyncGroup"));
}

void LiteralKeyNoCase(benchmark::State& state) {
    const MString read(u"phasesyncgroup");
    for (auto _ : state) benchmark::DoNotOptimize(read.CompareNoCase("PhaseSyncGroup"));
}

void CopyLiteral(benchmark::State& state) {
    const MString text = "PhaseSyncGroup";
    for (auto _ : state) {
        MString copy(text);
        benchmark::DoNotOptimize(copy);
    }
}

std::size_t HashOf(const MString& text) { return text.Hash(); }
std::size_t HashOf(const std::u16string& text) { return std::hash<std::u16string>()(text); }

template <typename String>
void Hash(benchmark::State& state) {
    const String text(kTexts[state.range(0)]);
    for (auto _ : state) benchmark::DoNotOptimize(HashOf(text));
}

void FormatDecibels(benchmark::State& state) {
    double value = -3.25;
    for (auto _ : state) {
        benchmark::DoNotOptimize(MString(MStringFormatter("{+0.2} dB") << value));
        value = -value;
    }
}

}  // namespace

BENCHMARK_TEMPLATE(Copy, MString)->DenseRange(0, 2);
BENCHMARK_TEMPLATE(Copy, std::u16string)->DenseRange(0, 2);
BENCHMARK_TEMPLATE(AppendText, MString)->DenseRange(0, 2);
BENCHMARK_TEMPLATE(AppendText, std::u16string)->DenseRange(0, 2);
BENCHMARK_TEMPLATE(AppendUnits, MString);
BENCHMARK_TEMPLATE(AppendUnits, std::u16string);
BENCHMARK_TEMPLATE(CompareEqual, MString)->DenseRange(0, 2);
BENCHMARK_TEMPLATE(CompareEqual, std::u16string)->DenseRange(0, 2);
BENCHMARK_TEMPLATE(CompareOrder, MString)->DenseRange(0, 2);
BENCHMARK_TEMPLATE(CompareOrder, std::u16string)->DenseRange(0, 2);
BENCHMARK(LiteralKeyMString);
BENCHMARK(LiteralKeyU16String);
BENCHMARK(LiteralKeyNoCase);
BENCHMARK(CopyLiteral);
BENCHMARK_TEMPLATE(Hash, MString)->DenseRange(0, 2);
BENCHMARK_TEMPLATE(Hash, std::u16string)->DenseRange(0, 2);
BENCHMARK(FormatDecibels);
