// SPDX-License-Identifier: GPL-3.0-or-later

// A whole plug-in in blocks of 64: around an effect that does nothing, around the chorus, and the
// chorus alone; and one set of a parameter.

#include <benchmark/benchmark.h>

#include "effect/chorus_entry.h"
#include "plugin/effect_adapter.h"
#include "plugin/frame/frame_plugin.h"

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
BENCHMARK(PluginSetParameter);
