// SPDX-License-Identifier: GPL-3.0-or-later
#include "vst3_objects.h"

#include <pluginterfaces/vst/ivstmidicontrollers.h>

#include <cmath>

using namespace Steinberg;

namespace {

constexpr double kLargestSevenBit = 127;

enum Status { kNoteOff = 0x80, kNoteOn = 0x90, kKeyPressure = 0xa0, kController = 0xb0 };
constexpr int kProgramChange = 0xc0;
constexpr int kCtrlProgram = 130;  // a later SDK's kCtrlProgramChange

std::uint8_t SevenBits(double share) {
    return static_cast<std::uint8_t>(std::lround(share * kLargestSevenBit));
}

std::uint8_t StatusByte(int kind, int channel) {
    return static_cast<std::uint8_t>(kind | (channel & 15));
}

std::optional<HostedMidi> ToBytes(const Vst::Event& event) {
    const auto message = [&](int kind, int channel, int first, std::uint8_t second) {
        return HostedMidi{event.sampleOffset,
                          {StatusByte(kind, channel), static_cast<std::uint8_t>(first), second}};
    };
    switch (event.type) {
        case Vst::Event::kNoteOnEvent:
            return message(kNoteOn, event.noteOn.channel, event.noteOn.pitch,
                           SevenBits(event.noteOn.velocity));
        case Vst::Event::kNoteOffEvent:
            return message(kNoteOff, event.noteOff.channel, event.noteOff.pitch,
                           SevenBits(event.noteOff.velocity));
        case Vst::Event::kPolyPressureEvent:
            return message(kKeyPressure, event.polyPressure.channel, event.polyPressure.pitch,
                           SevenBits(event.polyPressure.pressure));
        case Vst::Event::kLegacyMIDICCOutEvent:
            return message(kController, event.midiCCOut.channel, event.midiCCOut.controlNumber,
                           static_cast<std::uint8_t>(event.midiCCOut.value));
        default:
            return std::nullopt;
    }
}

}  // namespace

HostParameterQueue::HostParameterQueue() {
    constexpr std::size_t kPoints = 16;
    points.reserve(kPoints);
}

void HostParameterQueue::Restart(Vst::ParamID newId) {
    id = newId;
    points.clear();
}

int32 HostParameterQueue::getPointCount() { return static_cast<int32>(points.size()); }

tresult HostParameterQueue::getPoint(int32 index, int32& sampleOffset, Vst::ParamValue& value) {
    if (index < 0 || index >= getPointCount()) return kInvalidArgument;
    sampleOffset = points[static_cast<std::size_t>(index)].offset;
    value = points[static_cast<std::size_t>(index)].value;
    return kResultOk;
}

tresult HostParameterQueue::addPoint(int32 sampleOffset, Vst::ParamValue value, int32& index) {
    index = getPointCount();
    points.push_back({sampleOffset, value});
    return kResultOk;
}

HostParameterChanges::HostParameterChanges() {
    constexpr int kQueues = 256;
    for (int q = 0; q < kQueues; ++q) queues.push_back(std::make_unique<HostParameterQueue>());
}

void HostParameterChanges::Fill(std::span<const HostedChange> changes) {
    Clear();
    for (const HostedChange& change : changes) Add(change);
}

void HostParameterChanges::Add(const HostedChange& change) {
    int32 index = 0;
    addParameterData(change.id, index)->addPoint(change.offset, change.position, index);
}

int32 HostParameterChanges::getParameterCount() { return static_cast<int32>(used); }

Vst::IParamValueQueue* HostParameterChanges::getParameterData(int32 index) {
    if (index < 0 || index >= getParameterCount()) return nullptr;
    return queues[static_cast<std::size_t>(index)].get();
}

Vst::IParamValueQueue* HostParameterChanges::addParameterData(const Vst::ParamID& id,
                                                              int32& index) {
    for (std::size_t q = 0; q < used; ++q) {
        if (queues[q]->getParameterId() != id) continue;
        index = static_cast<int32>(q);
        return queues[q].get();
    }
    if (used == queues.size()) queues.push_back(std::make_unique<HostParameterQueue>());
    index = static_cast<int32>(used);
    queues[used]->Restart(id);
    return queues[used++].get();
}

bool HostEventList::Add(const HostedMidi& message) {
    const auto [status, first, second] = message.bytes;
    const auto channel = static_cast<int16>(status & 15);
    const auto pitch = static_cast<int16>(first);
    const auto strength = static_cast<float>(second / kLargestSevenBit);
    Vst::Event event = {};
    event.sampleOffset = message.offset;
    switch (status & 0xf0) {
        case kNoteOn:
            event.type = Vst::Event::kNoteOnEvent;
            event.noteOn = {channel, pitch, 0, strength, 0, -1};
            break;
        case kNoteOff:
            event.type = Vst::Event::kNoteOffEvent;
            event.noteOff = {channel, pitch, strength, -1, 0};
            break;
        case kKeyPressure:
            event.type = Vst::Event::kPolyPressureEvent;
            event.polyPressure = {channel, pitch, strength, -1};
            break;
        case kProgramChange:
            event.type = Vst::Event::kLegacyMIDICCOutEvent;
            event.midiCCOut = {kCtrlProgram, static_cast<int8>(channel), static_cast<int8>(first),
                               0};
            break;
        default:
            return false;
    }
    events.push_back(event);
    return true;
}

void HostEventList::CopyTo(std::vector<HostedMidi>& messages) const {
    for (const Vst::Event& event : events)
        if (const std::optional<HostedMidi> message = ToBytes(event)) messages.push_back(*message);
}

int32 HostEventList::getEventCount() { return static_cast<int32>(events.size()); }

tresult HostEventList::getEvent(int32 index, Vst::Event& event) {
    if (index < 0 || index >= getEventCount()) return kInvalidArgument;
    event = events[static_cast<std::size_t>(index)];
    return kResultOk;
}

tresult HostEventList::addEvent(Vst::Event& event) {
    events.push_back(event);
    return kResultOk;
}
