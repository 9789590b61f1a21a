// SPDX-License-Identifier: GPL-3.0-or-later
// What a host's calls cost in a list of 250 parameters, ten choruses and some of the plug-in's own:
// a set with and without an editor that follows, the texts, and a block in which everything moves.
#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "effect/chorus_entry.h"
#include "parameters/effect_parameters.h"
#include "plugin/contract/plugin_host.h"

namespace {

constexpr int kParameters = 250;
constexpr int kChoruses = 10;

struct Listener : ParameterListener {
    void ParameterUpdated(ParameterMainBase&) override {}
};

struct Plugin : AutomationOwner {
    Plugin() {
        for (int c = 0; c < kChoruses; ++c) {
            choruses.push_back(MPluginSystem::CreateOrRaise("chorus", ChorusEntry));
            ParameterAdapterMap map;
            AddEffectParameters({this, "Band 1", "Band 1", true}, *choruses.back()->plugin, table,
                                map);
            adapters.push_back(map.Find(2));
        }
        record.SetFloat("Gain", "Gain", -24, 24, 0);
        while (table.ParameterCount() < kParameters)
            table.Add(std::make_unique<ParameterFloatT<ParameterBaseCustom>>(
                AutomationContext{this, {}, {}}, record, 0));
        table.Rebuild(true);
    }
    void SendAutomation(int, double) override {}
    void NeedUpdateEditor(AutomationAdapter& adapter) override { table.changed.Add(adapter); }
    void ParametersChanged() override {}
    void Set(int index, double position) {
        const auto [adapter, local] = table.Find(index);
        adapter->SetParameter(local, position, false);
    }

    ParameterRecord record;
    AutomationTable table{*this};
    std::vector<std::unique_ptr<MAudioEffectPluginHost>> choruses;
    std::vector<ParameterMainBase*> adapters;  // "Rate" of each
};

void SetEach(benchmark::State& state, Plugin& plugin) {
    int index = 0;
    double position = 0;
    for (auto _ : state) {
        plugin.Set(index, position);
        index = (index + 7) % kParameters;  // all of them, never the same twice
        position = 0.7 - position;
    }
}

void SetParameter(benchmark::State& state) {
    Plugin plugin;
    SetEach(state, plugin);
}

void SetParameterThatAnEditorFollows(benchmark::State& state) {
    Plugin plugin;
    Listener listener;
    for (const auto& adapter : plugin.table.Adapters())
        static_cast<ParameterMainBase&>(*adapter).listener = &listener;
    SetEach(state, plugin);
}

void SetParameterIfChanged(benchmark::State& state) {
    Plugin plugin;
    int index = 0;
    for (auto _ : state) plugin.table.SetIfChanged(index = (index + 7) % kParameters, 0.3, false);
}

void ParameterValueNameFrom01(benchmark::State& state) {
    Plugin plugin;
    const auto [adapter, local] = plugin.table.Find(static_cast<int>(state.range(0)));
    double position = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(adapter->GetParameterValueNameFrom01(local, position));
        position = 0.7 - position;
    }
}

// The smoothed parameters of ten choruses, one set in each, 512 samples in steps of 32.
void InterpolateBlock(benchmark::State& state) {
    Plugin plugin;
    AutomationInterpolation& interpolation = plugin.table.interpolation;
    interpolation.Prepare(512);
    double position = 0;
    for (auto _ : state) {
        for (ParameterMainBase* const adapter : plugin.adapters)
            adapter->SetParameter(0, position, false);
        position = 0.7 - position;
        interpolation.Prepare(512);
        for (int step = 1; step < 16; ++step) interpolation.Process(32);
        interpolation.Finish();
    }
}

}  // namespace

BENCHMARK(SetParameter);
BENCHMARK(SetParameterThatAnEditorFollows);
BENCHMARK(SetParameterIfChanged);
BENCHMARK(ParameterValueNameFrom01)->Arg(1)->Arg(2)->Arg(5)->Arg(8)->ArgName("index");
BENCHMARK(InterpolateBlock);
