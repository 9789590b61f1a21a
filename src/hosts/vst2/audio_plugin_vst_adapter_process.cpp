// SPDX-License-Identifier: GPL-3.0-or-later

// One block of a host, with its events and the transport.

#include <algorithm>

#include "foundation/objects/guarded.h"
#include "hosts/adapter/unserved_channels.h"
#include "hosts/vst2/audio_plugin_vst_adapter.h"

namespace {

// Whether it runs, the cycle, automation, position, tempo, bar and signature.
constexpr int kWantedTime = kVstTransportChanged | kVstTransportPlaying | kVstTransportCycleActive |
                            kTimeAutomationWriting | kTimeAutomationReading | kVstPpqPosValid |
                            kVstTempoValid | kVstBarsValid | kVstCyclePosValid | kVstTimeSigValid;
static_assert(kWantedTime == 0x3ec7);

constexpr std::size_t kMessageSize = 3;

// The host's row of pins as rows of buses. A bus without a first pointer is not connected; the
// last pointer of another stands for the channels beyond.
void SpreadPins(float* const* pins, int buses, int channels, ChannelPointers& rows) {
    rows.fill(nullptr);
    if (pins == nullptr) return;
    for (int b = 0; b < std::min(buses, kMaxBuses); ++b) {
        float* const* const bus = pins + b * channels;
        if (bus[0] == nullptr) continue;
        const auto row = rows.begin() + static_cast<std::ptrdiff_t>(SlotOf(b, 0));
        std::fill(std::copy_n(bus, channels, row), row + kChannelStride, bus[channels - 1]);
    }
}

}  // namespace

void MAudioPluginVSTAdapter::process(float** inputs, float** outputs, int count) {
    Guarded("MAudioPluginVSTAdapter::process",
            [&] { PerformProcessing(inputs, outputs, count, false); });
}

void MAudioPluginVSTAdapter::processReplacing(float** inputs, float** outputs, int count) {
    Guarded("MAudioPluginVSTAdapter::processReplacing",
            [&] { PerformProcessing(inputs, outputs, count, true); });
}

// The rows are copies in every case, since a host's array may be shorter than the plug-in's and
// the plug-in fills what is missing.
void MAudioPluginVSTAdapter::PerformProcessing(float** inputs, float** outputs, int count,
                                               bool replacing) {
    if (count <= 0 || outputs == nullptr) return;
    PrepareProcessing();
    inputEvents.Drain(count, [&](const MIDIRecord& event) {
        plugin->ProcessMIDIEvent(event.time, event.bytes.data());
    });
    const int channels = plugin->channelsPerBus;
    ChannelPointers inputRows;
    ChannelPointers outputRows;
    SpreadPins(inputs, plugin->GetInputBusCount(), channels, inputRows);
    SpreadPins(outputs, plugin->GetOutputBusCount(), channels, outputRows);
    plugin->ProcessAudio(inputRows.data(), outputRows.data(), count, replacing);
    const int served = std::min(plugin->GetServedOutputChannels(), channels);
    for (int b = 0; replacing && b < plugin->GetOutputBusCount(); ++b)
        SilenceUnserved(outputs + b * channels, channels, served, count);
    SendGeneratedEvents(count);
}

// Hosts do not agree on when a field counts as valid; what can't be is not taken over.
void MAudioPluginVSTAdapter::PrepareProcessing() {
    HostTransport::SetValid(*plugin);
    if (!plugin->usesHostTime) return;
    const VstTimeInfo* const info = getTimeInfo(kWantedTime);
    if (info == nullptr) return;
    HostTime time;
    time.position = info->ppqPos;
    time.tempo = info->tempo;
    time.signature = {info->timeSigNumerator, info->timeSigDenominator};
    time.barStart = info->barStartPos;
    time.cycle = {info->cycleStartPos, info->cycleEndPos};
    time.playing = (info->flags & kVstTransportPlaying) != 0;
    transport.Take(time, *plugin);
}

bool MAudioPluginVSTAdapter::processEvents(const VstEvents& list) {
    return Guarded("MAudioPluginVSTAdapter::processEvents", false, [&] {
        for (int i = 0; i < list.numEvents; ++i) {
            const VstEvent* const event = list.events[i];
            if (event == nullptr || TypeOf(*event) != kVstMidiType) continue;
            const auto* const message = reinterpret_cast<const VstMidiEvent*>(event);
            inputEvents.Add(message->deltaFrames, message->midiData);
        }
        return true;
    });
}

void MAudioPluginVSTAdapter::GenerateMIDIEvent(int time, const std::uint8_t* bytes) {
    Guarded("MAudioPluginVSTAdapter::GenerateMIDIEvent", [&] { outputEvents.Add(time, bytes); });
}

void MAudioPluginVSTAdapter::SendGeneratedEvents(int count) {
    sentEvents.count = 0;
    outputEvents.Drain(count, [&](const MIDIRecord& event) {
        const auto index = static_cast<std::size_t>(sentEvents.count++);
        VstMidiEvent& record = sentEvents.records[index];
        record = {};
        record.type = kVstMidiType;
        record.byteSize = sizeof record;
        record.deltaFrames = event.time;
        std::copy_n(event.bytes.begin(), kMessageSize, record.midiData);
        sentEvents.events[index] = &record;
    });
    if (sentEvents.count > 0) sendVstEventsToHost(reinterpret_cast<VstEvents&>(sentEvents));
}
