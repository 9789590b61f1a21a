// SPDX-License-Identifier: GPL-3.0-or-later

// One block of the host.

#include <algorithm>
#include <bit>
#include <cmath>

#include "foundation/objects/guarded.h"
#include "hosts/adapter/unserved_channels.h"
#include "hosts/vst3/audio_plugin_vst3_adapter.h"
#include "hosts/vst3/midi_events.h"
#include "pluginterfaces/vst/ivstmidicontrollers.h"

using namespace Steinberg;
using namespace Steinberg::Vst;

namespace {

constexpr int kAnyNote = -1;
constexpr int kControllerChannel = 0;  // the host's mapping knows no other

int BusCount(const AudioBusBuffers* buses, int32 count) {
    return buses != nullptr ? std::clamp<int>(count, 0, kMaxBuses) : 0;
}

// Rows without channels stay null.
void FillRows(const AudioBusBuffers* buses, int busCount, ChannelPointers& pointers) {
    for (int b = 0; b < busCount; ++b) {
        const AudioBusBuffers& bus = buses[b];
        if (bus.channelBuffers32 == nullptr) continue;
        const int channels = std::clamp<int>(bus.numChannels, 0, kChannelStride);
        std::copy_n(bus.channelBuffers32, channels, &pointers[SlotOf(b, 0)]);
    }
}

HostTime TimeOf(const ProcessContext& context) {
    const auto has = [&](uint32 flag) { return (context.state & flag) != 0; };
    HostTime time;
    time.playing = has(ProcessContext::kPlaying);
    if (has(ProcessContext::kProjectTimeMusicValid)) time.position = context.projectTimeMusic;
    if (has(ProcessContext::kTempoValid)) time.tempo = context.tempo;
    if (has(ProcessContext::kTimeSigValid))
        time.signature = {context.timeSigNumerator, context.timeSigDenominator};
    if (has(ProcessContext::kBarPositionValid)) time.barStart = context.barPositionMusic;
    if (has(ProcessContext::kCycleActive))
        time.cycle = {context.cycleStartMusic, context.cycleEndMusic};
    return time;
}

}  // namespace

tresult PLUGIN_API MAudioPluginVST3Adapter::process(ProcessData& data) {
    Guarded("MAudioPluginVST3Adapter::process", [&] {
        blockChanges = data.outputParameterChanges;
        blockThread.store(std::this_thread::get_id(), std::memory_order_relaxed);
        if (data.inputParameterChanges != nullptr) ApplyChanges(*data.inputParameterChanges);
        if (data.numSamples <= 0) return;
        TakeContext(data.processContext);
        if (data.inputEvents != nullptr) TakeEvents(*data.inputEvents);
        if (canProcessSampleSize(data.symbolicSampleSize) == kResultTrue) ProcessBuffers(data);
        if (data.outputEvents != nullptr) SendEvents(*data.outputEvents, data.numSamples);
    });
    blockThread.store({}, std::memory_order_relaxed);
    return kResultOk;
}

// Of each parameter its last point only: the frame moves there over the block.
void MAudioPluginVST3Adapter::ApplyChanges(IParameterChanges& changes) {
    const int32 count = changes.getParameterCount();
    for (int32 i = 0; i < count; ++i) {
        IParamValueQueue* const queue = changes.getParameterData(i);
        if (queue == nullptr) continue;
        int32 offset = 0;
        ParamValue value = 0;
        const int32 points = queue->getPointCount();
        if (points > 0 && queue->getPoint(points - 1, offset, value) == kResultTrue)
            ApplyChange(queue->getParameterId(), value);
    }
}

void MAudioPluginVST3Adapter::ApplyChange(ParamID id, ParamValue value) {
    if (!std::isfinite(value)) return;
    value = std::clamp(value, 0.0, 1.0);
    if (id == kBypassID) {
        plugin->bypassed.store(value > 0.5, std::memory_order_relaxed);
    } else if (id >= kFirstMIDIID) {
        const ParamID controller = id - kFirstMIDIID;
        if (controller < kMIDIControllers) ApplyController(static_cast<int>(controller), value);
    } else if (id < static_cast<ParamID>(ownCount) && !automationEcho.IsHere()) {
        appliedID = id;
        plugin->SetParameter(static_cast<int>(id), value, false);
        appliedID.reset();
    }
}

void MAudioPluginVST3Adapter::ApplyController(int controller, ParamValue value) {
    const MIDITime when{0, plugin->position};
    if (controller == kPitchBend) {
        plugin->ProcessPitchBend(when, kControllerChannel, value * 2 - 1);
    } else if (controller == kAfterTouch) {
        plugin->ProcessAftertouch(when, kControllerChannel, kAnyNote, value);
    } else {
        plugin->ProcessMIDIController(when, kControllerChannel, controller, value);
    }
}

void MAudioPluginVST3Adapter::TakeContext(const ProcessContext* context) {
    if (context == nullptr || !plugin->usesHostTime) return HostTransport::SetValid(*plugin);
    transport.Take(TimeOf(*context), *plugin);
}

void MAudioPluginVST3Adapter::TakeEvents(IEventList& events) {
    const int32 count = events.getEventCount();
    for (int32 i = 0; i < count; ++i) {
        Event event{};
        if (events.getEvent(i, event) == kResultOk) TakeEvent(event);
    }
}

void MAudioPluginVST3Adapter::TakeEvent(const Event& event) {
    const int time = event.sampleOffset;
    const double start = time * plugin->tempo / (plugin->sampleRate * 60.0) + plugin->position;
    const MIDITime when{time, plugin->usesHostTime ? start : 0};
    if (event.type == Event::kNoteOnEvent) {
        const NoteOnEvent& note = event.noteOn;
        plugin->ProcessNote(when, note.channel, note.pitch, note.velocity, true);
    } else if (event.type == Event::kNoteOffEvent) {
        const NoteOffEvent& note = event.noteOff;
        plugin->ProcessNote(when, note.channel, note.pitch, note.velocity, false);
    } else if (const std::optional<MIDIBytes> bytes = BytesOf(event)) {
        plugin->ProcessMIDIEvent(time, bytes->data());
    }
}

void MAudioPluginVST3Adapter::ProcessBuffers(ProcessData& data) {
    ChannelPointers inputs{};
    ChannelPointers outputs{};
    FillRows(data.inputs, BusCount(data.inputs, data.numInputs), inputs);
    FillRows(data.outputs, BusCount(data.outputs, data.numOutputs), outputs);
    plugin->ProcessAudio(inputs.data(), outputs.data(), data.numSamples, true);
    FinishOutputs(data);
}

// Silences what the host gave beyond the arrangement and the channel mode, and buses that do not
// exist.
void MAudioPluginVST3Adapter::FinishOutputs(ProcessData& data) const {
    const int served =
        std::min(std::popcount(outputArrangement), plugin->GetServedOutputChannels());
    const int buses = data.outputs != nullptr ? data.numOutputs : 0;
    for (int b = 0; b < buses; ++b) {
        AudioBusBuffers& bus = data.outputs[b];
        bus.silenceFlags = 0;
        if (bus.channelBuffers32 == nullptr) continue;
        SilenceUnserved(bus.channelBuffers32, bus.numChannels,
                        b < plugin->GetOutputBusCount() ? served : 0, data.numSamples);
    }
}

void MAudioPluginVST3Adapter::SendEvents(IEventList& events, int sampleCount) {
    outputEvents.Drain(sampleCount, [&](const MIDIRecord& record) {
        if (std::optional<Event> event = EventOf(record)) events.addEvent(*event);
    });
}
