// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin_runner.h"

#include <algorithm>
#include <cmath>

#include "errors.h"
#include "find_plugin.h"
#include "hosting/private_configuration.h"

namespace {

// The user's settings would change the sound, and surround is off without any.
constexpr char kStereoSettings[] = "<GlobalConfiguration/>";
constexpr char kWideSettings[] =
    "<GlobalConfiguration><MAudioPluginSettings SurroundActivated=\"1\"/></GlobalConfiguration>";

std::unique_ptr<HostedPlugin> Load(const PluginChoice& choice, bool isWide) {
    const std::string path = choice.path.empty() ? FindBuiltPlugin(choice.isVst2) : choice.path;
    const PrivateConfiguration configuration("quillorea", "GlobalConfiguration.xml",
                                             isWide ? kWideSettings : kStereoSettings);
    return (choice.isVst2 ? OpenVst2(path) : OpenVst3(path))->Create();
}

HostedTransport Describe(const PluginRunner::Transport& transport) {
    constexpr int kBarQuarters = 4;
    HostedTransport told;
    if (transport.tempo < 0) return told;
    told.tempo = transport.tempo;
    if (transport.position < 0) return told;
    told.isPlaying = true;
    told.position = transport.position;
    told.barStart = std::floor(transport.position / kBarQuarters) * kBarQuarters;
    told.signature = {kBarQuarters, 4};
    return told;
}

}  // namespace

PluginRunner::PluginRunner(const PluginChoice& choice, bool isWide)
    : plugin(Load(choice, isWide)) {}

void PluginRunner::Start(const Setup& newSetup) {
    setup = newSetup;
    plugin->Arrange(setup.channels, setup.channels);
    plugin->Setup(setup.rate, setup.largestBlock);
    MakeBus(input, true);
    MakeBus(output, false);
    block.inputs = {{input.pointers.data(), static_cast<int>(input.pointers.size())}};
    block.outputs = {{output.pointers.data(), static_cast<int>(output.pointers.size())}};
    SetState();
    plugin->Activate(true);
    for (const ParameterSetting& setting : setup.settings)
        plugin->SetPosition(setting.id, setting.position);
    for (const AutomationLane& lane : setup.lanes) {
        sent.push_back(lane.PositionAt(0));
        for (const std::uint32_t id : lane.Ids()) plugin->SetPosition(id, sent.back());
    }
    PassStart();
    plugin->Activate(false);
    plugin->Activate(true);
}

void PluginRunner::SetState() {
    if (!setup.state && setup.stateEdits.IsEmpty()) return;
    if (setup.state)
        plugin->SetState(EditedState(*setup.state, setup.stateEdits, setup.stateSource));
    else
        plugin->SetState(EditedState(plugin->State(), setup.stateEdits, "What the plug-in stores"));
}

void PluginRunner::MakeBus(Bus& bus, bool isInput) {
    const std::vector<HostedBus> buses = plugin->Buses();
    const auto main = std::find_if(buses.begin(), buses.end(), [&](const HostedBus& each) {
        return each.isInput == isInput && each.isAudio && each.isMain;
    });
    const int width = main != buses.end() ? main->channels : 0;
    if (width < setup.channels)
        throw RenderError("The plug-in has only " + std::to_string(width) + " channels for " +
                          std::to_string(setup.channels) + ".");
    bus.pointers.resize(static_cast<std::size_t>(width));
    bus.spare.assign(static_cast<std::size_t>(width - setup.channels),
                     std::vector<float>(static_cast<std::size_t>(setup.largestBlock)));
}

// What the plug-in is told ahead of its first block reaches it with a block of no samples, and
// takes effect at once by the new start behind it. A song first stands at its place and then plays
// from there, so that the place is no jump and its tempo is known also while it stands.
void PluginRunner::PassStart() {
    std::vector<float> silence(static_cast<std::size_t>(setup.channels));
    std::vector<float> unheard(silence.size());
    for (std::size_t c = 0; c < silence.size(); ++c) {
        input.pointers[c] = &silence[c];
        output.pointers[c] = &unheard[c];
    }
    RunBlock({}, 0);
    if (setup.start.tempo < 0) return;
    HostedTransport place = Describe({setup.start.tempo, std::max(setup.start.position, 0.0)});
    for (const bool isPlaying : {false, true}) {
        place.isPlaying = isPlaying;
        RunBlock(place, 1);
    }
}

void PluginRunner::Process(const Transport& transport, ChannelPointers inputs,
                           ChannelPointers outputs, int sampleCount) {
    const auto channels = static_cast<std::size_t>(setup.channels);
    std::copy_n(inputs.begin(), channels, input.pointers.begin());
    std::copy_n(outputs.begin(), channels, output.pointers.begin());
    AddAutomation(sampleCount);
    RunBlock(Describe(transport), sampleCount);
    doneSamples += sampleCount;
}

void PluginRunner::RunBlock(const HostedTransport& transport, int sampleCount) {
    for (Bus* const bus : {&input, &output}) {
        std::size_t place = static_cast<std::size_t>(setup.channels);
        for (std::vector<float>& channel : bus->spare) {
            std::fill_n(channel.begin(), sampleCount, 0.0F);
            bus->pointers[place++] = channel.data();
        }
    }
    block.sampleCount = sampleCount;
    block.transport = &transport;
    plugin->Process(block);
    block.changes.clear();
}

void PluginRunner::AddAutomation(int sampleCount) {
    constexpr double kSamePosition = 1e-7;
    const double start = static_cast<double>(doneSamples) / setup.rate;
    const double end = static_cast<double>(doneSamples + sampleCount) / setup.rate;
    for (std::size_t l = 0; l < setup.lanes.size(); ++l) {
        const double position = setup.lanes[l].PositionFor(start, end);
        if (std::abs(position - sent[l]) <= kSamePosition) continue;
        sent[l] = position;
        for (const std::uint32_t id : setup.lanes[l].Ids())
            block.changes.push_back({id, sampleCount - 1, position});
    }
}

int PluginRunner::TailLength(int longest) {
    if (setup.isBypassed) return 0;
    const std::int64_t tail = plugin->TailLength();
    return tail == HostedPlugin::kEndless ? longest : static_cast<int>(tail);
}
