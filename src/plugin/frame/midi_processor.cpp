// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/frame/midi_processor.h"

namespace {

constexpr int kVolume = 7;
constexpr int kPanorama = 10;
constexpr int kSustain = 64;
constexpr int kAllNotesOff = 123;
constexpr int kMonoMode = 126;

constexpr double kBendScale = 0.00012207776353537203;  // 2 / 16383

bool IsChannel(int channel) { return channel >= 0 && channel < MMIDIState::kChannels; }

int Low7(std::uint8_t byte) { return byte & 0x7f; }
double Unit7(std::uint8_t byte) { return Low7(byte) / 127.0; }

}  // namespace

void MMIDIProcessor::DecodeMIDI(MIDITime when, const std::uint8_t* bytes) {
    const int channel = bytes[0] & 0x0f;
    const int status = bytes[0] & 0xf0;
    switch (status) {
        case 0x80:
        case 0x90:
            ProcessNote(when, channel, Low7(bytes[1]), Unit7(bytes[2]),
                        status == 0x90 && Low7(bytes[2]) != 0);
            break;
        case 0xa0:
            ProcessAftertouch(when, channel, Low7(bytes[1]), Unit7(bytes[2]));
            break;
        case 0xb0:
            ProcessMIDIController(when, channel, Low7(bytes[1]), Unit7(bytes[2]));
            break;
        case 0xc0:
            ProcessProgramChange(when, channel, Low7(bytes[1]));
            break;
        case 0xd0:
            ProcessAftertouch(when, channel, -1, Unit7(bytes[1]));
            break;
        case 0xe0:
            ProcessPitchBend(when, channel,
                             (Low7(bytes[1]) | Low7(bytes[2]) << 7) * kBendScale - 1);
            break;
    }
}

template <typename Call>
void MMIDIProcessor::CallListeners(int channel, Call call) {
    for (const Listener& listener : listeners)
        if ((listener.channelMask >> channel & 1) != 0) call(*listener.processor);
}

void MMIDIProcessor::AddListener(MMIDIProcessorBase& listener, std::uint16_t channelMask) {
    listeners.push_back({&listener, channelMask});
}

void MMIDIProcessor::RemoveListener(const MMIDIProcessorBase& listener) {
    std::erase_if(listeners, [&](const Listener& each) { return each.processor == &listener; });
}

void MMIDIProcessor::ProcessNotePerform(MIDITime, int, int, double, bool) {}
void MMIDIProcessor::ProcessVolume(MIDITime, int, double) {}
void MMIDIProcessor::ProcessPanorama(MIDITime, int, double) {}

void MMIDIProcessor::ProcessProgramChange(MIDITime when, int channel, int program) {
    if (!IsChannel(channel)) return;
    CallListeners(channel, [&](MMIDIProcessorBase& listener) {
        listener.ProcessProgramChange(when, channel, program);
    });
}

void MMIDIProcessor::ProcessAllNotesOff(MIDITime when) { EndNotes(when, false); }
void MMIDIProcessor::ProcessMonoMode(MIDITime when) { EndNotes(when, false); }

bool MMIDIProcessor::ProcessMIDIController(MIDITime when, int channel, int controller,
                                           double value) {
    if (!IsChannel(channel)) return false;
    CallListeners(channel, [&](MMIDIProcessorBase& listener) {
        listener.ProcessMIDIController(when, channel, controller, value);
    });
    switch (controller) {
        case kVolume:
            ProcessVolume(when, channel, value);
            return true;
        case kPanorama:
            ProcessPanorama(when, channel, value * 2 - 1);
            return true;
        case kSustain:
            MovePedal(when, value >= 0.5);
            return true;
        case kAllNotesOff:
            ProcessAllNotesOff(when);
            return true;
        case kMonoMode:
            ProcessMonoMode(when);
            return true;
        default:
            return false;
    }
}

bool MMIDIProcessor::ProcessAftertouch(MIDITime when, int channel, int note, double value) {
    if (!IsChannel(channel)) return false;
    CallListeners(channel, [&](MMIDIProcessorBase& listener) {
        listener.ProcessAftertouch(when, channel, note, value);
    });
    SetAftertouch(channel, value);
    return true;
}

bool MMIDIProcessor::ProcessPitchBend(MIDITime when, int channel, double value) {
    if (!IsChannel(channel)) return false;
    CallListeners(channel, [&](MMIDIProcessorBase& listener) {
        listener.ProcessPitchBend(when, channel, value);
    });
    SetPitchBend(channel, value);
    return true;
}

bool MMIDIProcessor::ProcessNote(MIDITime when, int channel, int note, double velocity, bool on) {
    if (!IsNote(channel, note)) return false;
    CallListeners(channel, [&](MMIDIProcessorBase& listener) {
        listener.ProcessNote(when, channel, note, velocity, on);
    });
    if (on) {
        StartNote(channel, note);
        ProcessNotePerform(when, channel, note, velocity, true);
        return true;
    }
    const NoteEnd end = EndNote(channel, note);
    if (end == NoteEnd::Now) ProcessNotePerform(when, channel, note, velocity, false);
    return end != NoteEnd::None;
}

void MMIDIProcessor::MovePedal(MIDITime when, bool down) {
    SetPedal(down);
    if (!down) EndNotes(when, true);
}

void MMIDIProcessor::EndNotes(MIDITime when, bool pedalledOnly) {
    for (int channel = 0; channel < kChannels; ++channel) {
        for (int note = 0; note < kNotes; ++note) {
            int ends = pedalledOnly ? PedalNotes(channel, note) : SoundingNotes(channel, note);
            for (; ends > 0; --ends) {
                DropNote(channel, note);
                ProcessNotePerform(when, channel, note, 0, false);
            }
        }
    }
}
