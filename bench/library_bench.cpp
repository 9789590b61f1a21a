// SPDX-License-Identifier: GPL-3.0-or-later

// The built library as a VST 3 host has it: blocks of 64 at 48 kHz, the way to the factory, and
// what an instance holds. core% is the share of real time.
//
// Where QUILLOREA_OTHER names the library of another build, each is measured for both, so that one
// run tells the ratio (--benchmark_enable_random_interleaving=true).

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "heap.h"
#include "hosting/private_configuration.h"
#include "hosting/vst3_plugin.h"
#include "support/signals.h"

using namespace Steinberg;

namespace {

constexpr int kRate = 48000;
constexpr int kBlock = 64;

struct Patch {
    const char* name;
    int bands = 1;
    int voices = 2;
    bool linear = false;
    int channels = 2;
    int rate = kRate;
};

// The plug-in's own state with what no parameter tells. Its first attributes are those of the root.
std::string StateOf(HostedPlugin& plugin, const Patch& patch) {
    std::string state = plugin.State();
    const auto set = [&state](const std::string& key, const std::string& value) {
        const std::string start = " " + key + "=\"";
        if (const auto at = state.find(start); at != std::string::npos)
            state.erase(at, state.find('"', at + start.size()) + 1 - at);
        constexpr std::string_view kRoot = "<settings";
        state.insert(state.find(kRoot) + kRoot.size(), start + value + "\"");
    };
    set("BandCount", std::to_string(patch.bands));
    set("LinearPhaseCrossover", patch.linear ? "1" : "0");
    if (patch.channels > 2) set("ChannelMode", "Surround");
    return state;
}

// As many channels as the plug-in has, and nothing else of the user's settings.
constexpr char kSettings[] =
    "<GlobalConfiguration><MAudioPluginSettings SurroundActivated=\"1\"/></GlobalConfiguration>";

// One instance and the call that a host repeats; nothing of the host's own stands beside it.
class Instance {
public:
    Instance(const std::string& path, const Patch& patch)
        : plugin(Made(path)),
          input(Noise(patch.channels, kBlock, 0.5f)),
          output(Constant(patch.channels, kBlock, 0)) {
        plugin->Arrange(patch.channels, patch.channels);
        plugin->Setup(patch.rate, kBlock);
        plugin->SetState(StateOf(*plugin, patch));
        for (const HostedParameter& parameter : plugin->Parameters())
            if (parameter.name.ends_with("Voices"))
                plugin->SetPosition(
                    parameter.id, *plugin->PositionOf(parameter.id, std::to_string(patch.voices)));
        plugin->Activate(true);
        for (auto* const side : {&input, &output})
            for (auto& channel : *side) pointers.push_back(channel.data());
        FillData(patch.channels);
        RunFirst(patch.channels);
    }

    void Run() { static_cast<Vst3Plugin&>(*plugin).Processor().process(data); }

private:
    // A process reads its settings with its first instance.
    static std::unique_ptr<HostedPlugin> Made(const std::string& path) {
        static const PrivateConfiguration settings("quillorea", "GlobalConfiguration.xml",
                                                   kSettings);
        return std::make_shared<Vst3Library>(path)->Create();
    }

    void FillData(int channels) {
        buses[0].numChannels = buses[1].numChannels = channels;
        buses[0].channelBuffers32 = pointers.data();
        buses[1].channelBuffers32 = pointers.data() + channels;
        context.sampleRate = kRate;
        data.numSamples = kBlock;
        data.numInputs = data.numOutputs = 1;
        data.inputs = &buses[0];
        data.outputs = &buses[1];
        data.inputParameterChanges = &changes;
        data.inputEvents = &events;
        data.processContext = &context;
    }

    // Brings the parameters too.
    void RunFirst(int channels) {
        HostedBlock block{.sampleCount = kBlock,
                          .inputs = {{pointers.data(), channels}},
                          .outputs = {{pointers.data() + channels, channels}}};
        plugin->Process(block);
    }

    std::unique_ptr<HostedPlugin> plugin;
    Audio input, output;
    std::vector<float*> pointers;
    Vst::AudioBusBuffers buses[2];
    HostParameterChanges changes;
    HostEventList events;
    Vst::ProcessContext context = {};
    Vst::ProcessData data;
};

void Process(benchmark::State& bench, const std::string& path, const Patch& patch) {
    Instance instance(path, patch);
    for (auto _ : bench) {
        instance.Run();
        benchmark::ClobberMemory();
    }
    bench.counters["core%"] =
        benchmark::Counter(static_cast<double>(bench.iterations()) * kBlock / kRate / 100,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void Create(benchmark::State& bench, const std::string& path, const Patch& patch) {
    const Vst3Library library(path);  // what a process loads once
    Instance first(path, patch);
    const std::size_t before = HeapBytes();
    std::size_t after = before;
    for (auto _ : bench) {
        const Instance instance(path, patch);
        after = HeapBytes();
    }
    bench.counters["MiB"] = static_cast<double>(after - before) / (1 << 20);
}

// A copy of a new name each time: once loaded the library stays.
void Load(benchmark::State& bench, const std::string& path) {
    const std::filesystem::path folder = std::filesystem::temp_directory_path();
    static int copies = 0;
    for (auto _ : bench) {
        bench.PauseTiming();
        const auto copy = folder / ("quillorea-bench-" + std::to_string(copies++) + ".so");
        std::filesystem::copy_file(path, copy, std::filesystem::copy_options::overwrite_existing);
        bench.ResumeTiming();
        Vst3Library library(copy);
        PClassInfo info;
        for (int32 c = 0; c < library.Factory().countClasses(); ++c)
            library.Factory().getClassInfo(c, &info);
        bench.PauseTiming();
        std::filesystem::remove(copy);
        bench.ResumeTiming();
    }
}

void Register(const std::string& path, const std::string& label) {
    const auto name = [&](const std::string& what) { return "Library/" + label + what; };
    for (const Patch& patch : {Patch{"1 band of 2 voices"},
                               {"6 bands of 2 voices", 6, 2},
                               {"6 bands of 10 voices", 6, 10},
                               {"6 linear bands of 10 voices", 6, 10, true}})
        benchmark::RegisterBenchmark(name(std::string("process/") + patch.name).c_str(), Process,
                                     path, patch);
    for (const Patch& patch : {Patch{"stereo"},
                               {"6 linear bands, 8 channels", 6, 10, true, 8},
                               {"6 linear bands, 8 channels, 384 kHz", 6, 10, true, 8, 384000}})
        benchmark::RegisterBenchmark(name(std::string("create/") + patch.name).c_str(), Create,
                                     path, patch)
            ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(name("load").c_str(), Load, path)
        ->Unit(benchmark::kMillisecond)
        ->Iterations(10);
}

const int registered = [] {
    Register(QUILLOREA_LIBRARY, "");
    if (const char* const other = std::getenv("QUILLOREA_OTHER")) Register(other, "other/");
    return 0;
}();

}  // namespace
