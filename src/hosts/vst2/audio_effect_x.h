// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "hosts/vst2/audio_effect.h"

// The same for version 2.4 of the interface. What nobody overrides is not supported.
//
// Not answered, since an effect of this kind has none of it: shells, names of MIDI programs and
// keys, properties of parameters (whose opcode is told in two ways), offline processing, 64-bit
// samples.
class AudioEffectX : public AudioEffect {
public:
    using AudioEffect::AudioEffect;

    VstIntPtr dispatcher(const VstCall& call) override;

    virtual bool canParameterBeAutomated(int) { return true; }
    // Sets the value that a text tells. Whether it told one.
    virtual bool string2parameter(int, const char*) { return false; }
    // kProgramTextSize bytes. Whether there is such a program.
    virtual bool getProgramNameIndexed(int, char*) { return false; }

    virtual bool getInputProperties(int, VstPinProperties&) { return false; }
    virtual bool getOutputProperties(int, VstPinProperties&) { return false; }
    // Each may be null. Whether it was taken.
    virtual bool setSpeakerArrangement(const VstSpeakerArrangement*, const VstSpeakerArrangement*) {
        return false;
    }
    virtual bool getSpeakerArrangement(VstSpeakerArrangement** input,
                                       VstSpeakerArrangement** output);

    virtual bool getEffectName(char*) { return false; }     // kEffectTextSize bytes
    virtual bool getVendorString(char*) { return false; }   // kVendorTextSize bytes
    virtual bool getProductString(char*) { return false; }  // the same
    virtual int getVendorVersion() { return 0; }
    virtual VstPlugCategory getPlugCategory() { return kPlugCategUnknown; }
    // 1 yes, 0 not known, -1 no.
    virtual int canDo(const char*) { return 0; }

    virtual bool setBypass(bool) { return false; }
    // In samples, or one of the two answers beside them.
    virtual int getGetTailSize() { return kTailUnknown; }
    // Events of the next block, on the audio thread in front of it. Whether they meant something.
    virtual bool processEvents(const VstEvents&) { return false; }
    virtual void startProcess() {}
    virtual void stopProcess() {}
    // How many channels of MIDI.
    virtual int getNumMidiInputChannels() { return 0; }
    virtual int getNumMidiOutputChannels() { return 0; }

protected:
    // Whether the host says yes.
    bool canHostDo(const char* text);
    // Null where the host has none; wanted are flags of VstTimeInfo.
    const VstTimeInfo* getTimeInfo(int wanted);
    void sendVstEventsToHost(VstEvents& events);
    void wantEvents();
    // Buses or latency are others than before.
    void ioChanged();
    // Parameters and programs are others than before.
    void updateDisplay();
    // Whether the host agrees.
    bool sizeWindow(int width, int height);

private:
    friend struct Version2Opcodes;
};
