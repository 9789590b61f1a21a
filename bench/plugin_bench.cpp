// SPDX-License-Identifier: GPL-3.0-or-later

// A whole plug-in in blocks of 64: around an effect that does nothing, around the chorus, and the
// chorus alone; the same in bands, where the effect that does nothing shows what frame and bands
// cost; and one set of a parameter. A share of real time is 1 at 48 kHz.

#include <benchmark/benchmark.h>

#include <string>

#include "effect/chorus_entry.h"
#include "plugin/effect_adapter.h"
#include "plugin/frame/frame_plugin.h"
#include "plugin/multi_band_adapter.h"

namespace {

constexpr int kBlock = 64;

struct EmptyEffect final : MAudioEffectPlugin {
    EmptyEffect() { maxBlockSize = kBlock; }
};

std::intptr_t EmptyEntry(MPlugin* object, int code, PluginArguments& arguments) {
    if (object == nullptr) return reinterpret_cast<std::intptr_t>(new EmptyEffect);
    return object->Dispatch(code, arguments);
}

struct Plugin : MAudioEffectPluginToAudioPluginAdapter {
    explicit Plugin(PluginEntry entry) {
        Initialize("Bench", "Bench", entry);
        AnnounceBlockSize(kBlock);
        SetHostSampleRate(48000);
        InitProcessing();
    }
    using MAudioEffectPluginToAudioPluginAdapter::effect;
};

void PluginBlock(benchmark::State& state, PluginEntry entry) {
    Plugin plugin(entry);
    HostBuffers host(2, 2, kBlock);
    for (auto _ : state) {
        host.Process(plugin);
        benchmark::ClobberMemory();
    }
}

struct BandSetting {
    const char* name;
    PluginEntry entry;
    int bands = 1;
    int voices = 2;
    int mode = 1;
    bool linear = false;
};

struct BandsPlugin : MAudioEffectPluginToAudioPluginMultiBandAdapter {
    explicit BandsPlugin(const BandSetting& setting) {
        constexpr int kVoices = 5;
        Initialize("Bench", "Bench", setting.entry);
        AnnounceBlockSize(kBlock);
        SetHostSampleRate(48000);
        SetDefaultBands(setting.bands);
        SetCrossoverMode(setting.mode);
        if (setting.linear) SetCrossoverKind(CrossoverKind::Linear);
        for (MAudioEffectPlugin* const effect : AllEffects())
            if (effect->descriptor.parameterCount > kVoices)
                effect->descriptor.parameters[kVoices].Set(setting.voices);
        InitProcessing();
    }
};

void BandsBlock(benchmark::State& state, const BandSetting& setting) {
    BandsPlugin plugin(setting);
    HostBuffers host(2, 2, kBlock);
    for (auto _ : state) {
        host.Process(plugin);
        benchmark::ClobberMemory();
    }
    state.counters["share"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * kBlock / 48000,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

const int registered = [] {
    for (const BandSetting& setting : {
             BandSetting{"1 band, empty", EmptyEntry},
             {"1 band of 2 voices", ChorusEntry},
             {"6 bands, empty", EmptyEntry, 6},
             {"6 bands, empty, 120 dB/oct", EmptyEntry, 6, 2, 5},
             {"6 bands, empty, linear", EmptyEntry, 6, 2, 1, true},
             {"6 bands of 10 voices", ChorusEntry, 6, 10},
         })
        benchmark::RegisterBenchmark((std::string("Bands/stereo/64/") + setting.name).c_str(),
                                     BandsBlock, setting);
    return 0;
}();

// One limit that moves, which designs the crossover anew.
void BandsMoveLimit(benchmark::State& state, bool linear) {
    BandsPlugin plugin({"", EmptyEntry, 6, 2, 1, linear});
    const int limit = plugin.FindParameter("Band limit 2");
    double position = 0.4;
    for (auto _ : state) plugin.SetParameter(limit, position = 0.9 - position, false);
}

void ChorusAlone(benchmark::State& state) {
    Plugin plugin(ChorusEntry);
    HostBuffers host(2, 2, kBlock);
    const TransportInfo transport;
    for (auto _ : state) {
        plugin.effect->UpdateIfNeeded();
        plugin.effect->Process(transport, host.inPointers.data(), host.outPointers.data(), kBlock);
        benchmark::ClobberMemory();
    }
}

void PluginSetParameter(benchmark::State& state) {
    Plugin plugin(ChorusEntry);
    int index = 0;
    double position = 0;
    for (auto _ : state) {
        plugin.SetParameter(index, position, false);
        index = (index + 7) % plugin.GetParameterCount();
        position = 0.7 - position;
    }
}

}  // namespace

BENCHMARK_CAPTURE(PluginBlock, empty, EmptyEntry);
BENCHMARK_CAPTURE(PluginBlock, chorus, ChorusEntry);
BENCHMARK(ChorusAlone);
BENCHMARK_CAPTURE(BandsMoveLimit, analog, false);
BENCHMARK_CAPTURE(BandsMoveLimit, linear, true);
BENCHMARK(PluginSetParameter);
