// SPDX-License-Identifier: GPL-3.0-or-later

// Buses, arrangements and the set-up of processing.

#include <algorithm>
#include <bit>
#include <span>

#include "foundation/objects/guarded.h"
#include "foundation/text/string_formatter.h"
#include "hosts/adapter/host_setup.h"
#include "hosts/adapter/interface_text.h"
#include "hosts/vst3/guarded_result.h"
#include "hosts/vst3/restart_scope.h"

using namespace Steinberg;
using namespace Steinberg::Vst;

namespace {

constexpr int kEventChannels = 1;

// What a host asks for in one direction: the first bus's speakers and the largest bus's channels.
struct WantedSide {
    WantedSide(std::span<const SpeakerArrangement> buses, SpeakerArrangement present)
        : speakers(buses.empty() ? present : buses.front()), channels(std::popcount(speakers)) {
        for (const SpeakerArrangement bus : buses)
            channels = std::max(channels, std::popcount(bus));
    }

    SpeakerArrangement speakers;
    int channels;
};

bool IsList(const SpeakerArrangement* buses, int32 count) {
    return count == 0 || (count > 0 && buses != nullptr);
}

}  // namespace

void MAudioPluginVST3Adapter::BuildBuses() {
    const int inputs = plugin->GetInputBusCount();
    if (inputs > 0) AddAudioBus(kInput, u"Stereo In", kMain, inputArrangement);
    for (int b = 1; b < inputs; ++b) AddAudioBus(kInput, u"Sidechain", kAux, inputArrangement);

    const int outputs = plugin->GetOutputBusCount();
    for (int b = 0; b < outputs; ++b) {
        String128 name{};
        const MString number = MStringFormatter("Stereo Out {0}") << b + 1;
        CopyText(outputs == 1 ? MString("Stereo Out") : number, name, std::size(name));
        AddAudioBus(kOutput, name, kMain, outputArrangement);
    }

    if (plugin->receivesMIDI) AddEventBus(kInput, u"Midi In", kEventChannels);
    if (plugin->sendsMIDI) AddEventBus(kOutput, u"Midi Out", kEventChannels);
}

// Only what changes both directions is taken: a host that asks for what is there, in either, learns
// it from the buses.
tresult PLUGIN_API MAudioPluginVST3Adapter::setBusArrangements(SpeakerArrangement* inputs,
                                                               int32 inputCount,
                                                               SpeakerArrangement* outputs,
                                                               int32 outputCount) {
    if (!IsList(inputs, inputCount) || !IsList(outputs, outputCount)) return kInvalidArgument;
    return GuardedResult("MAudioPluginVST3Adapter::setBusArrangements", kResultFalse, [&] {
        if (inputCount > plugin->GetInputBusCount() || outputCount > plugin->GetOutputBusCount())
            return kResultFalse;
        const WantedSide in({inputs, static_cast<std::size_t>(inputCount)}, inputArrangement);
        const WantedSide out({outputs, static_cast<std::size_t>(outputCount)}, outputArrangement);
        if (in.channels > plugin->channelsPerBus || out.channels > plugin->channelsPerBus)
            return kResultFalse;
        if (in.speakers == inputArrangement || out.speakers == outputArrangement)
            return kResultFalse;

        const RestartScope restart(*this, kLatencyChanged);
        inputArrangement = in.speakers;
        outputArrangement = out.speakers;
        Arrange(kInput, inputArrangement);
        Arrange(kOutput, outputArrangement);
        plugin->SetConnectedChannels(in.channels, out.channels);
        return kResultTrue;
    });
}

tresult PLUGIN_API MAudioPluginVST3Adapter::setupProcessing(ProcessSetup& setup) {
    return GuardedResult("MAudioPluginVST3Adapter::setupProcessing", kResultFalse, [&] {
        if (MVST3AudioEffect::setupProcessing(setup) != kResultOk) return kResultFalse;
        const RestartScope restart(*this, kLatencyChanged);
        TakeHostBlockSize(setup.maxSamplesPerBlock, *plugin);
        TakeHostRate(setup.sampleRate, *plugin);
        return kResultOk;
    });
}

tresult PLUGIN_API MAudioPluginVST3Adapter::setActive(TBool state) {
    return GuardedResult("MAudioPluginVST3Adapter::setActive", kResultFalse, [&] {
        const RestartScope restart(*this, kLatencyChanged);
        if (state) plugin->InitProcessing();
        return kResultOk;
    });
}

uint32 PLUGIN_API MAudioPluginVST3Adapter::getLatencySamples() {
    return Guarded("MAudioPluginVST3Adapter::getLatencySamples", uint32{0}, [&] {
        latency = static_cast<uint32>(std::max(plugin->GetReportedLatency(), 0));
        return latency.load();
    });
}

uint32 PLUGIN_API MAudioPluginVST3Adapter::getTailSamples() {
    return Guarded("MAudioPluginVST3Adapter::getTailSamples", uint32{0}, [&] {
        tailLength = static_cast<uint32>(std::max(plugin->GetReportedTailLength(), 0));
        return tailLength.load();
    });
}

uint32 PLUGIN_API MAudioPluginVST3Adapter::getProcessContextRequirements() {
    if (!plugin->usesHostTime) return 0;
    return kNeedProjectTimeMusic | kNeedBarPositionMusic | kNeedCycleMusic | kNeedTempo |
           kNeedTimeSignature | kNeedTransportState;
}
