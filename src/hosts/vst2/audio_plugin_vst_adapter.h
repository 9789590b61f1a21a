// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <vector>

#include "foundation/streams/memory_stream.h"
#include "hosts/adapter/automation_echo.h"
#include "hosts/adapter/host_transport.h"
#include "hosts/adapter/instance_count.h"
#include "hosts/adapter/midi_queue.h"
#include "hosts/adapter/product_info.h"
#include "hosts/vst2/audio_effect_x.h"
#include "plugin/frame/audio_plugin.h"

// Puts a plug-in behind the VST 2.4 interface: translates calls, collects MIDI, reads the
// transport. There is no editor yet.
//
// Life     owns the plug-in, and is its hostAdapter; deleted by the host's effClose
// Threads  processing and events on the audio thread; parameters, and what the plug-in tells the
//          host, on any; the rest on the host's main thread. State while audio runs
// Memory   a call of the audio thread takes none but what the plug-in takes for a larger block
//          than it was told of
// Errors   none gets out; answers are neutral then
class MAudioPluginVSTAdapter : public AudioEffectX, public MAudioPluginAdapter {
public:
    MAudioPluginVSTAdapter(audioMasterCallback audioMaster, const ProductInfo& product,
                           std::unique_ptr<MAudioPlugin> newPlugin);

    void resume() override;
    // Does nothing at 0 samples and without outputs. The arrays have the pins of all buses in a
    // row.
    void process(float** inputs, float** outputs, int count) override;
    void processReplacing(float** inputs, float** outputs, int count) override;
    // Wait for the next block.
    bool processEvents(const VstEvents& events) override;

    // What the host sends back while it is told a value is dropped, and what it sets is no news to
    // it.
    void setParameter(int index, float value) override;
    float getParameter(int index) override;
    void getParameterLabel(int index, char* text) override;
    void getParameterDisplay(int index, char* text) override;
    // Seven letters that tell the parameters apart.
    void getParameterName(int index, char* text) override;
    bool canParameterBeAutomated(int index) override;
    bool string2parameter(int index, const char* text) override;

    // The one program has a name and nothing else.
    void setProgramName(const char* text) override;
    void getProgramName(char* text) override;
    bool getProgramNameIndexed(int index, char* text) override;
    int getChunk(void** data, bool isPreset) override;
    bool setChunk(const void* data, VstIntPtr size, bool isPreset) override;

    void setSampleRate(float rate) override;
    bool getInputProperties(int index, VstPinProperties& pin) override;
    bool getOutputProperties(int index, VstPinProperties& pin) override;
    bool setSpeakerArrangement(const VstSpeakerArrangement* input,
                               const VstSpeakerArrangement* output) override;

    bool getEffectName(char* text) override;
    bool getVendorString(char* text) override;
    bool getProductString(char* text) override;
    int getVendorVersion() override { return product.versionNumber; }
    VstPlugCategory getPlugCategory() override { return kPlugCategEffect; }
    int canDo(const char* text) override;
    int getGetTailSize() override;
    int getNumMidiInputChannels() override;
    int getNumMidiOutputChannels() override;

    void SendAutomation(int index, double position) override;
    void GenerateMIDIEvent(int time, const std::uint8_t* bytes) override;
    void UpdateLatency() override;
    void StateChanged() override;
    bool ChangeEditorSize(EditorSize size) override;

private:
    // A list of events as the host gets it, with room for all that may wait.
    struct EventList {
        std::int32_t count = 0;
        VstIntPtr reserved = 0;
        std::array<VstMidiEvent*, MIDIQueue::kRoom> events;
        std::array<VstMidiEvent, MIDIQueue::kRoom> records;
    };

    void ShortenPins();
    void PerformProcessing(float** inputs, float** outputs, int count, bool replacing);
    void PrepareProcessing();
    void SendGeneratedEvents(int count);
    void WriteText(const char* trace, MString (MAudioPlugin::*get)(int), int index, char* text);
    bool GetPin(const char* trace, const std::vector<MString>& names, int index,
                VstPinProperties& pin) const;

    const ProductInfo product;
    const InstanceCount instance;
    MString programName;
    MMemoryStream chunk;  // the last one, for the host
    HostTransport transport;
    MIDIQueue inputEvents;
    MIDIQueue outputEvents;
    EventList sentEvents;                       // of the present block
    AutomationEcho inAutomation;                // within the host's call
    AutomationEcho hostSets;                    // within setParameter
    std::atomic<std::int32_t> lastLatency = 0;  // that the host was told
    // Last: a thread of its own may call the others until it ends.
    const std::unique_ptr<MAudioPlugin> plugin;
};
