// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin_runner.h"

#include <cmath>

#include "effect/chorus_entry.h"

PluginRunner::PluginRunner(bool wide) {
    plugin.Initialize("chorus", "Chorus", ChorusEntry, {.surround = wide});
}

ParameterList PluginRunner::Parameters() const {
    std::vector<ParameterMainBase*> parameters;
    for (const auto& adapter : plugin.Table().Adapters())
        if (auto* const parameter = dynamic_cast<ParameterMainBase*>(adapter.get()))
            parameters.push_back(parameter);
    return ParameterList(std::move(parameters));
}

void PluginRunner::Start(const Setup& newSetup) {
    setup = newSetup;
    plugin.hqUpsampling = setup.highQuality ? 1 : 0;
    plugin.bypassed = setup.bypassed ? 1 : 0;
    plugin.channelModeRequested = setup.channelMode;
    plugin.transportValid = {1, 1};
    plugin.AnnounceBlockSize(setup.largestBlock);
    plugin.SetHostSampleRate(setup.rate);
    plugin.SetConnectedChannels(setup.channels, setup.channels);
    if (setup.randomize) Randomize(*setup.randomize);
    for (const ParameterSetting& setting : setup.settings)
        setting.parameter->record.Set(setting.value);
    SendAutomation(0);
    plugin.InitProcessing();
}

// Drawing ends in an update, which needs a rate.
void PluginRunner::Randomize(double amount) {
    plugin.InitProcessing();
    PluginArguments arguments(amount);
    plugin.Host().Command(PluginCommand::kRandomize, arguments);
}

void PluginRunner::Process(const Transport& transport, ChannelPointers inputs,
                           ChannelPointers outputs, int sampleCount) {
    SendTransport(transport);
    SendAutomation(sampleCount);
    plugin.ProcessAudio(inputs.data(), outputs.data(), sampleCount, true);
    doneSamples += sampleCount;
}

// The effect only looks at the transport while it plays.
void PluginRunner::SendTransport(const Transport& transport) {
    constexpr int kBarQuarters = 4;
    constexpr double kNowhere = -1e9;  // and still unknown at the end of any block
    const bool known = transport.position >= 0;
    plugin.playingChanged = !plugin.playing;
    plugin.playing = true;
    plugin.tempo = transport.tempo;
    plugin.position = known ? transport.position : kNowhere;
    plugin.barStart = known ? std::floor(transport.position / kBarQuarters) * kBarQuarters : -1;
    plugin.timeSigNumerator = known ? kBarQuarters : -1;
    plugin.timeSigDenominator = known ? 4 : -1;
}

void PluginRunner::SendAutomation(int sampleCount) {
    const double start = static_cast<double>(doneSamples) / setup.rate;
    const double end = static_cast<double>(doneSamples + sampleCount) / setup.rate;
    for (const AutomationLane& lane : setup.lanes)
        plugin.SetParameterIfChanged(lane.Parameter().baseIndex, lane.PositionFor(start, end),
                                     false);
}
