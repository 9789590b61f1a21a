// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "hosts/vst2/aeff_editor.h"
#include "hosts/vst2/opcode_table.h"

// An effect behind the first version of the published VST interface: the structure that a host
// holds, and a virtual for each of the host's calls. Names are those of the interface.
//
// Life     made by the library's entry, deleted by the host's effClose
// Units    positions 0..1, samples, hertz
// Threads  process and processReplacing on the audio thread; parameters on any; the rest on the
//          host's main thread
// Errors   an override lets nothing out
class AudioEffect {
public:
    AudioEffect(audioMasterCallback audioMaster, int numPrograms, int numParams);
    AudioEffect(const AudioEffect&) = delete;
    AudioEffect& operator=(const AudioEffect&) = delete;
    virtual ~AudioEffect();

    AEffect* getAeffect() { return &block.effect; }

    // A host's call. 0 for what it does not know.
    virtual VstIntPtr dispatcher(const VstCall& call);

    virtual void open() {}
    virtual void close() {}
    virtual void suspend() {}
    virtual void resume() {}

    // Adds to the outputs; replaces them.
    virtual void process(float** inputs, float** outputs, int count) = 0;
    virtual void processReplacing(float** inputs, float** outputs, int count) = 0;

    // index is always a parameter's. Texts have kParameterTextSize bytes.
    virtual void setParameter(int index, float value) = 0;
    virtual float getParameter(int index) = 0;
    virtual void getParameterLabel(int index, char* text) = 0;
    virtual void getParameterDisplay(int index, char* text) = 0;
    virtual void getParameterName(int index, char* text) = 0;

    virtual void setProgram(int) {}
    virtual int getProgram() { return 0; }
    virtual void setProgramName(const char*) {}
    virtual void getProgramName(char* text) { text[0] = '\0'; }

    // The bytes stay in place until the next call. How many there are.
    virtual int getChunk(void** data, bool isPreset) = 0;
    // Whether it was taken.
    virtual bool setChunk(const void* data, VstIntPtr size, bool isPreset) = 0;

    virtual void setSampleRate(float rate) { sampleRate = rate; }
    virtual void setBlockSize(int size) { blockSize = size; }

    // The version of the interface that the host speaks; 0 is no host.
    int getMasterVersion();
    // Tells the host a value of the plug-in's own, and sets it.
    void setParameterAutomated(int index, float value);

protected:
    VstIntPtr callHost(int opcode, int index = 0, VstIntPtr value = 0, void* pointer = nullptr,
                       float option = 0);

    void setUniqueID(int id) { block.effect.uniqueID = id; }
    void setVersion(int number) { block.effect.version = number; }
    void setNumInputs(int count) { block.effect.numInputs = count; }
    void setNumOutputs(int count) { block.effect.numOutputs = count; }
    // A host may read it meanwhile.
    void setInitialDelay(int samples);
    void setFlags(int flags) { block.effect.flags |= flags; }
    // Null takes it away. The effect owns it.
    void setEditor(std::unique_ptr<AEffEditor> newEditor);

    bool isParameter(int index) const { return index >= 0 && index < block.effect.numParams; }

    std::unique_ptr<AEffEditor> editor;  // null where there is none
    float sampleRate = 44100;
    int blockSize = 1024;

private:
    VstEffectBlock block{};
    const audioMasterCallback audioMaster;  // null without a host

    friend struct BasicOpcodes;
};
