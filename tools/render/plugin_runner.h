// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "automation_lane.h"
#include "hosting/hosted_plugin.h"
#include "parameters.h"
#include "plugin/frame/channels.h"
#include "state_text.h"

// The built plug-in, loaded and driven as a host drives it.
//
// Units    samples at the file's rate
// Threads  one
// Errors   HostingError where the plug-in can't be had; RenderError for a state that it can't take
//          and channels that it has not

struct PluginChoice {
    bool isVst2 = false;
    std::string path;  // empty: the one that was built or installed with this program
};

class PluginRunner {
public:
    struct Transport {
        double tempo = -1;     // beats a minute; negative: not known
        double position = -1;  // quarter notes; negative: the song stands still
    };
    struct Setup {
        int channels;  // 1..8
        int rate;
        int largestBlock;
        Transport start;
        std::optional<std::string> state;        // as it stands in a file
        std::string stateSource;                 // what to call it in messages
        StateEdits stateEdits;                   // on top of it
        bool isBypassed;                         // one of them
        std::vector<ParameterSetting> settings;  // on top of these
        std::vector<AutomationLane> lanes;       // on top of these
    };

    // isWide: for more than two channels.
    PluginRunner(const PluginChoice& choice, bool isWide);

    HostedPlugin& Plugin() { return *plugin; }

    // Before the first Process. The first block starts at these settings, without a ramp to them.
    void Start(const Setup& newSetup);

    // sampleCount is 1..largestBlock, the block follows on the last one. The inputs are changed.
    void Process(const Transport& transport, ChannelPointers inputs, ChannelPointers outputs,
                 int sampleCount);

    int Latency() { return plugin->Latency(); }
    // How long it sounds on behind the present sample; endlessly counts as longest.
    int TailLength(int longest);

private:
    // One main bus, as wide as the plug-in has it: what the file lacks is silence, or is dropped.
    struct Bus {
        std::vector<float*> pointers;
        std::vector<std::vector<float>> spare;  // from the file's last channel on
    };

    void SetState();
    void MakeBus(Bus& bus, bool isInput);
    void PassStart();
    void RunBlock(const HostedTransport& transport, int sampleCount);
    void AddAutomation(int sampleCount);

    std::unique_ptr<HostedPlugin> plugin;
    Setup setup = {};
    Bus input;
    Bus output;
    HostedBlock block;
    std::vector<double> sent;  // by lane: the position that the plug-in has
    std::int64_t doneSamples = 0;
};
