// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <vector>

#include "parameters.h"
#include "plugin/effect_adapter.h"

// The plug-in around the chorus, driven as a host drives it.
//
// Units    samples at the file's rate
// Threads  one
// Errors   MException where the effect can't be made

class PluginRunner {
public:
    struct Setup {
        int channels;  // 1..8
        int rate;
        int largestBlock;
        bool highQuality;
        bool bypassed;
        ChannelMode channelMode;
        std::optional<double> randomize;
        std::vector<ParameterSetting> settings;  // on top of what randomize draws
        std::vector<AutomationLane> lanes;       // on top of these
    };
    struct Transport {
        double tempo = -1;     // beats a minute; negative: not known
        double position = -1;  // quarter notes; negative: not known
    };

    // wide: for more than two channels.
    explicit PluginRunner(bool wide);

    ParameterList Parameters() const;

    // Before the first Process. The first block starts at these settings, without a ramp to them.
    void Start(const Setup& newSetup);

    // sampleCount is 1..largestBlock, the block follows on the last one. The inputs are changed.
    void Process(const Transport& transport, ChannelPointers inputs, ChannelPointers outputs,
                 int sampleCount);

    int Latency() const { return plugin.GetReportedLatency(); }
    // How long it sounds on behind the present sample.
    int TailLength() { return setup.bypassed ? 0 : plugin.GetTailLength(); }
    // Blocks whose output was not finite and was silenced.
    std::int64_t ClearCount() const { return plugin.GetClearCount(); }

private:
    // Opens what a host gets to see through its own interface.
    class Plugin : public MAudioEffectPluginToAudioPluginAdapter {
    public:
        const AutomationTable& Table() const { return automation; }
        MAudioEffectPluginHost& Host() { return *effectHost; }
    };

    void Randomize(double amount);
    void SendTransport(const Transport& transport);
    void SendAutomation(int sampleCount);

    Plugin plugin;
    Setup setup = {};
    std::int64_t doneSamples = 0;
};
