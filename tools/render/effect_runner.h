// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "foundation/objects/lock.h"
#include "parameters.h"
#include "plugin/contract/plugin_host.h"

// The chorus, driven by its commands the way a plug-in's frame drives it.
//
// Units    samples at the file's rate
// Threads  one
// Errors   MException where the effect can't be made

class EffectRunner {
public:
    struct Setup {
        int channels;
        int rate;
        bool highQuality;
        std::optional<double> randomize;
        std::vector<ParameterSetting> settings;  // on top of what randomize draws
    };

    EffectRunner();

    const PluginDescriptor& Descriptor() const { return *host->descriptor; }

    // Before the first Process. The first block starts at these settings, without a ramp to them.
    void Start(const Setup& setup);

    // sampleCount is 1..MaxBlock(). inputs and outputs point to a bus of kSlotsPerBus channels.
    void Process(const TransportInfo& transport, const float* const* inputs, float* const* outputs,
                 int sampleCount);

    int MaxBlock() const;
    int Latency() { return static_cast<int>(host->Command(PluginCommand::kGetLatency)); }
    int TailLength() { return host->GetTailLength(); }
    bool IsSilent() { return host->Command(PluginCommand::kIsSilent) != 0; }

private:
    void Prepare(const Setup& setup);

    MLock lock;
    std::atomic<std::uint8_t> highQuality = 0;
    std::unique_ptr<MAudioEffectPluginHost> host;  // uses both, so it goes first
};
