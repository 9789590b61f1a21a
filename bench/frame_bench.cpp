// SPDX-License-Identifier: GPL-3.0-or-later

// The frame around an effect that does nothing: what a block costs before anything is heard.

#include <benchmark/benchmark.h>

#include "plugin/frame/frame_plugin.h"

namespace {

constexpr int kBlock = 64;

// Only the frame's own work.
class EmptyPlugin : public FramePlugin {
protected:
    void Process(float**, float**, int) override {}
};

struct Setting {
    const char* name;
    int mode = 0;
    bool bypassed = false;
    bool gainCompensated = false;
    int subBlock = 0;
    int latency = 0;
    bool automated = false;
};

void Run(benchmark::State& bench, const Setting& setting) {
    EmptyPlugin plugin;
    plugin.channelModeRequested = setting.mode;
    plugin.bypassed = setting.bypassed;
    plugin.agcEnabled = setting.gainCompensated;
    plugin.latency = setting.latency;
    plugin.Prepare(kBlock);
    if (setting.subBlock > 0) plugin.Cut(setting.subBlock, setting.subBlock);
    HostBuffers host(2, 2, kBlock);
    double value = 0;
    for (auto _ : bench) {
        if (setting.automated) plugin.SetParameter(0, value = 1 - value, false);
        host.Process(plugin);
        benchmark::ClobberMemory();
    }
}

const int registered = [] {
    for (const Setting& setting : {
             Setting{"plain"},
             Setting{.name = "latency", .latency = 100},
             Setting{.name = "bypassed", .bypassed = true, .latency = 100},
             Setting{.name = "mid and side", .mode = 5},
             Setting{.name = "gain compensation", .gainCompensated = true},
             Setting{.name = "cut by 8", .subBlock = 8},
             Setting{.name = "cut by 8, automated", .subBlock = 8, .automated = true},
         })
        benchmark::RegisterBenchmark((std::string("Frame/stereo/64/") + setting.name).c_str(), Run,
                                     setting);
    return 0;
}();

}  // namespace
