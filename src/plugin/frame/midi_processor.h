// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/objects/event_target.h"
#include "plugin/frame/midi_state.h"

// When an event happens: in samples from the start of the block, and in quarter notes of the song.
struct MIDITime {
    int time = 0;
    double position = 0;
};

// Handlers of decoded MIDI messages.
//
// Ranges   channel 0..15, note, controller and program 0..127, velocity and values 0..1 unless
//          said otherwise
// Threads  the audio thread
// Errors   the answers tell whether an event meant something to the handler
class MMIDIProcessorBase : public MEventTarget {
public:
    // Starts or ends a sound: behind ProcessNote and the pedal.
    virtual void ProcessNotePerform(MIDITime when, int channel, int note, double velocity,
                                    bool on) = 0;
    virtual void ProcessAllNotesOff(MIDITime when) = 0;  // controller 123
    virtual void ProcessMonoMode(MIDITime when) = 0;     // controller 126
    virtual void ProcessVolume(MIDITime when, int channel, double value) = 0;
    virtual void ProcessPanorama(MIDITime when, int channel, double value) = 0;  // -1..1
    virtual void ProcessProgramChange(MIDITime when, int channel, int program) = 0;

    virtual bool ProcessMIDIController(MIDITime when, int channel, int controller,
                                       double value) = 0;
    // note -1: the pressure of the whole channel.
    virtual bool ProcessAftertouch(MIDITime when, int channel, int note, double value) = 0;
    virtual bool ProcessPitchBend(MIDITime when, int channel, double value) = 0;  // -1..1
    virtual bool ProcessNote(MIDITime when, int channel, int note, double velocity, bool on) = 0;
};

// Keeps the state of notes and controllers, and hands events on to listeners.
//
// Method   a note off while the pedal is down sounds on until the pedal's release. Events out of
//          range are ignored
class MMIDIProcessor : public MMIDIProcessorBase, public MMIDIState {
public:
    // Decodes a raw message of up to 3 bytes; bytes that a message does not have are not read.
    // Anything but a channel's voice message is ignored.
    void DecodeMIDI(MIDITime when, const std::uint8_t* bytes);

    // Listeners get the events of the channels whose bits are set, before this object works on
    // them. They are not owned; they come and go while nothing is processed.
    void AddListener(MMIDIProcessorBase& listener, std::uint16_t channelMask);
    void RemoveListener(const MMIDIProcessorBase& listener);

    // What nobody overrides does nothing.
    void ProcessNotePerform(MIDITime when, int channel, int note, double velocity,
                            bool on) override;
    void ProcessVolume(MIDITime when, int channel, double value) override;
    void ProcessPanorama(MIDITime when, int channel, double value) override;
    void ProcessProgramChange(MIDITime when, int channel, int program) override;

    // Both end every sounding note, one after the other.
    void ProcessAllNotesOff(MIDITime when) override;
    void ProcessMonoMode(MIDITime when) override;

    // True for the controllers that it knows: 7, 10, 64, 123, 126.
    bool ProcessMIDIController(MIDITime when, int channel, int controller, double value) override;
    bool ProcessAftertouch(MIDITime when, int channel, int note, double value) override;
    bool ProcessPitchBend(MIDITime when, int channel, double value) override;
    bool ProcessNote(MIDITime when, int channel, int note, double velocity, bool on) override;

private:
    struct Listener {
        MMIDIProcessorBase* processor;
        std::uint16_t channelMask;
    };

    template <typename Call>
    void CallListeners(int channel, Call call);
    void MovePedal(MIDITime when, bool down);
    void EndNotes(MIDITime when, bool pedalledOnly);

    std::vector<Listener> listeners;
};
