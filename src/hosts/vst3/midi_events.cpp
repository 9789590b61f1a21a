// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosts/vst3/midi_events.h"

#include <algorithm>
#include <cmath>

#include "pluginterfaces/vst/ivstmidicontrollers.h"

using namespace Steinberg;
using namespace Steinberg::Vst;

namespace {

// The upper half of a message's first byte.
enum Status : std::uint8_t {
    kNoteOff = 0x80,
    kNoteOn = 0x90,
    kKeyPressure = 0xa0,
    kController = 0xb0,
    kProgramChange = 0xc0,
    kChannelPressure = 0xd0,
    kBend = 0xe0
};
constexpr double kLargestValue = 127;

std::uint8_t DataByte(int value) { return static_cast<std::uint8_t>(value & 0x7f); }

std::uint8_t DataByte(float value) {
    return std::isfinite(value)
               ? DataByte(static_cast<int>(std::lround(std::clamp(value, 0.0f, 1.0f) * 127)))
               : std::uint8_t{0};
}

MIDIBytes Message(Status status, int channel, std::uint8_t first, std::uint8_t second) {
    return {static_cast<std::uint8_t>(status | (channel & 0x0f)), first, second};
}

std::optional<MIDIBytes> BytesOf(const LegacyMIDICCOutEvent& event) {
    const std::uint8_t value = DataByte(event.value);
    const std::uint8_t value2 = DataByte(event.value2);
    switch (event.controlNumber) {
        case kAfterTouch:
            return Message(kChannelPressure, event.channel, value, 0);
        case Vst::kPitchBend:
            return Message(kBend, event.channel, value, value2);
        case kCtrlProgramChange:
            return Message(kProgramChange, event.channel, value, 0);
        case kCtrlPolyPressure:
            return Message(kKeyPressure, event.channel, value, value2);
        default:
            if (event.controlNumber > kCtrlPolyModeOn) return std::nullopt;
            return Message(kController, event.channel, event.controlNumber, value);
    }
}

std::optional<MIDIBytes> BytesOf(const DataEvent& event) {
    if (event.bytes == nullptr) return std::nullopt;
    MIDIBytes bytes{};
    std::copy_n(event.bytes, std::min<std::size_t>(event.size, bytes.size()), bytes.begin());
    return bytes;
}

int16 ChannelOf(const MIDIRecord& record) { return record.bytes[0] & 0x0f; }

void SetNote(Event& event, const MIDIRecord& record, bool on) {
    const auto pitch = static_cast<int16>(record.bytes[1] & 0x7f);
    const auto velocity = static_cast<float>((record.bytes[2] & 0x7f) / kLargestValue);
    constexpr int32 kNoID = -1;
    if (on) {
        event.type = Event::kNoteOnEvent;
        event.noteOn = {ChannelOf(record), pitch, 0, velocity, 0, kNoID};
    } else {
        event.type = Event::kNoteOffEvent;
        event.noteOff = {ChannelOf(record), pitch, velocity, kNoID, 0};
    }
}

void SetPressure(Event& event, const MIDIRecord& record) {
    event.type = Event::kPolyPressureEvent;
    event.polyPressure = {ChannelOf(record), static_cast<int16>(record.bytes[1] & 0x7f),
                          static_cast<float>((record.bytes[2] & 0x7f) / kLargestValue), -1};
}

void SetController(Event& event, const MIDIRecord& record, int controller, int value, int value2) {
    event.type = Event::kLegacyMIDICCOutEvent;
    event.midiCCOut = {static_cast<uint8>(controller), static_cast<int8>(ChannelOf(record)),
                       static_cast<int8>(value & 0x7f), static_cast<int8>(value2 & 0x7f)};
}

}  // namespace

std::optional<MIDIBytes> BytesOf(const Event& event) {
    switch (event.type) {
        case Event::kPolyPressureEvent:
            return Message(kKeyPressure, event.polyPressure.channel,
                           DataByte(event.polyPressure.pitch),
                           DataByte(event.polyPressure.pressure));
        case Event::kDataEvent:
            return BytesOf(event.data);
        case Event::kLegacyMIDICCOutEvent:
            return BytesOf(event.midiCCOut);
        default:
            return std::nullopt;
    }
}

std::optional<Event> EventOf(const MIDIRecord& record) {
    Event event{};
    event.sampleOffset = record.time;
    const int first = record.bytes[1], second = record.bytes[2];
    switch (record.bytes[0] & 0xf0) {
        case kNoteOff:
        case kNoteOn:
            // A note that starts with velocity 0 ends one.
            SetNote(event, record, (record.bytes[0] & 0xf0) == kNoteOn && second != 0);
            return event;
        case kKeyPressure:
            SetPressure(event, record);
            return event;
        case kController:
            SetController(event, record, first & 0x7f, second, 0);
            return event;
        case kProgramChange:
            SetController(event, record, kCtrlProgramChange, first, 0);
            return event;
        case kChannelPressure:
            SetController(event, record, kAfterTouch, first, 0);
            return event;
        case kBend:
            SetController(event, record, Vst::kPitchBend, first, second);
            return event;
        default:
            return std::nullopt;
    }
}
