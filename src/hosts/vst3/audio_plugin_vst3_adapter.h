// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <vector>

#include "foundation/objects/lock.h"
#include "hosts/adapter/automation_echo.h"
#include "hosts/adapter/host_transport.h"
#include "hosts/adapter/instance_count.h"
#include "hosts/adapter/midi_queue.h"
#include "hosts/vst3/vst3_audio_effect.h"
#include "plugin/frame/audio_plugin.h"
#include "plugin/frame/channels.h"
#include "pluginterfaces/vst/ivstevents.h"
#include "pluginterfaces/vst/ivstparameterchanges.h"
#include "pluginterfaces/vst/ivstprocesscontext.h"
#include "public.sdk/source/vst/vsteditcontroller.h"

// A plug-in behind the VST 3 interfaces: processor and edit controller in one object.
//
// The processor takes values from a block's parameter changes and from setState only. What a host
// hands to the controller is kept for the host alone: many deliver older values there by a timer.
// The plug-in's own edits go out through performEdit, or with the block where they happen in it.
//
// Parameters  a plug-in's parameter has its index as ID. Then "Bypass", then, while the plug-in
//             receives MIDI, one for each controller that a host may map
// Units       normalized values 0..1, which are plain ones too; samples at the host's rate; quarter
//             notes
// Threads     process on the audio thread, state on any, the rest on the host's main thread; what
//             MAudioPluginAdapter says for its operations
// Locks       none while the host is called
// Memory      process allocates nothing of its own; owns the plug-in
// Errors      nothing gets out. Calls that fail answer a code of the interface; process and
//             setState always answer success, and a state that can't be read changes nothing
class MAudioPluginVST3Adapter final : public MVST3AudioEffect,
                                      public Steinberg::Vst::EditControllerEx1,
                                      public Steinberg::Vst::IMidiMapping,
                                      public MAudioPluginAdapter {
public:
    using ParamID = Steinberg::Vst::ParamID;
    using ParamValue = Steinberg::Vst::ParamValue;

    static constexpr ParamID kBypassID = 0x7fff;
    static constexpr ParamID kFirstMIDIID = 10000;  // of controller 0; parameters lie below it
    static constexpr int kMIDIControllers = 130;    // 128 of MIDI, aftertouch, pitch bend
    static constexpr ParamID kAftertouchID = kFirstMIDIID + 128;
    static constexpr ParamID kPitchBendID = kFirstMIDIID + 129;

    // With one reference. The plug-in is ready to be prepared.
    explicit MAudioPluginVST3Adapter(std::unique_ptr<MAudioPlugin> newPlugin);
    MAudioPluginVST3Adapter(const MAudioPluginVST3Adapter&) = delete;
    MAudioPluginVST3Adapter& operator=(const MAudioPluginVST3Adapter&) = delete;

    tresult PLUGIN_API queryInterface(const Steinberg::TUID wanted, void** object) override;
    uint32 PLUGIN_API addRef() override;
    uint32 PLUGIN_API release() override;

    // Refused until terminate where it went through before.
    tresult PLUGIN_API initialize(Steinberg::FUnknown* context) override;
    tresult PLUGIN_API terminate() override;

    tresult PLUGIN_API setBusArrangements(Steinberg::Vst::SpeakerArrangement* inputs,
                                          int32 inputCount,
                                          Steinberg::Vst::SpeakerArrangement* outputs,
                                          int32 outputCount) override;
    tresult PLUGIN_API setupProcessing(Steinberg::Vst::ProcessSetup& setup) override;
    tresult PLUGIN_API setActive(TBool state) override;
    uint32 PLUGIN_API getLatencySamples() override;
    uint32 PLUGIN_API getTailSamples() override;
    uint32 PLUGIN_API getProcessContextRequirements() override;
    tresult PLUGIN_API process(Steinberg::Vst::ProcessData& data) override;

    // Those of the processor and the controller at once: the second load of one state changes
    // nothing.
    tresult PLUGIN_API getState(Steinberg::IBStream* stream) override;
    tresult PLUGIN_API setState(Steinberg::IBStream* stream) override;
    // The controller is the processor, which has that state.
    tresult PLUGIN_API setComponentState(Steinberg::IBStream* stream) override;

    tresult PLUGIN_API setComponentHandler(Steinberg::Vst::IComponentHandler* handler) override;
    tresult PLUGIN_API getParameterInfo(int32 index, Steinberg::Vst::ParameterInfo& info) override;
    tresult PLUGIN_API getParamStringByValue(ParamID id, ParamValue value,
                                             Steinberg::Vst::String128 string) override;
    tresult PLUGIN_API getParamValueByString(ParamID id, Steinberg::Vst::TChar* string,
                                             ParamValue& value) override;
    // What the host set last, until the plug-in's own value moves or a state is loaded.
    ParamValue PLUGIN_API getParamNormalized(ParamID id) override;
    tresult PLUGIN_API setParamNormalized(ParamID id, ParamValue value) override;
    tresult PLUGIN_API getUnitInfo(int32 index, Steinberg::Vst::UnitInfo& info) override;

    // Controllers 0..127, 128 aftertouch, 129 pitch bend.
    tresult PLUGIN_API getMidiControllerAssignment(int32 bus, Steinberg::int16 channel,
                                                   Steinberg::Vst::CtrlNumber controller,
                                                   ParamID& id) override;

    void SendAutomation(int index, double position) override;
    // The plug-in's own switch was turned. On the main thread.
    void SendBypassAutomation(bool on);
    void GenerateMIDIEvent(int time, const std::uint8_t* bytes) override;
    void UpdateLatency() override;
    void StateChanged() override;
    bool ChangeEditorSize(EditorSize size) override;

private:
    using SpeakerArrangement = Steinberg::Vst::SpeakerArrangement;
    using HandlerPointer = Steinberg::IPtr<Steinberg::Vst::IComponentHandler>;

    class RestartScope;

    // What a host has set on its side of a parameter.
    struct ControllerValue {
        ParamValue value = 0;
        ParamValue seen = 0;            // the plug-in's at that time
        std::uint32_t stateNumber = 0;  // of the state that was loaded last; 0: never set
    };

    // Of initialize, in order.
    void KeepHostName(Steinberg::FUnknown* context);
    void BuildBuses();
    void BuildParameters();
    void AddParameters();
    void AddMIDIParameters();
    Steinberg::Vst::UnitID UnitOf(const MString& section);
    void Forget();

    // Place in the list of parameters; -1 for an ID that is not in it.
    int PlaceOf(ParamID id) const;
    // On the plug-in's side.
    ParamValue CurrentValue(ParamID id);
    MString TextOf(ParamID id, ParamValue value);
    bool ReadText(ParamID id, const MString& text, ParamValue& value);

    // Of process, in order.
    void ApplyChanges(Steinberg::Vst::IParameterChanges& changes);
    void ApplyChange(ParamID id, ParamValue value);
    void ApplyController(int controller, ParamValue value);
    void TakeContext(const Steinberg::Vst::ProcessContext* context);
    void TakeEvents(Steinberg::Vst::IEventList& events);
    void TakeEvent(const Steinberg::Vst::Event& event);
    void ProcessBuffers(Steinberg::Vst::ProcessData& data);
    void FinishOutputs(Steinberg::Vst::ProcessData& data) const;
    void SendEvents(Steinberg::Vst::IEventList& events, int sampleCount);

    void KeepHandler(HandlerPointer newHandler);
    HandlerPointer Handler();
    void SendEdit(ParamID id, ParamValue value);
    bool SendWithinBlock(ParamID id, ParamValue value);
    // flags of restartComponent. Within a RestartScope they wait for its end.
    void RequestRestart(int32 flags);
    void TellRestart(int32 flags);

    std::atomic<uint32> references = 1;
    const MString ownTag;  // the plug-in's, without ours
    MString hostName;
    bool initialized = false;
    std::optional<InstanceCount> instance;

    SpeakerArrangement inputArrangement = Steinberg::Vst::SpeakerArr::kStereo;
    SpeakerArrangement outputArrangement = Steinberg::Vst::SpeakerArr::kStereo;
    std::atomic<uint32> latency = 0;     // as last told
    std::atomic<uint32> tailLength = 0;  // as last told

    int ownCount = 0;                               // of the plug-in's parameters in the list
    std::vector<ControllerValue> controllerValues;  // by place in the list
    std::atomic<std::uint32_t> stateNumber = 1;     // of loads

    MLock handlerLock;
    HandlerPointer handler;  // under handlerLock

    AutomationEcho automationEcho;  // within performEdit
    AutomationEcho hostLoads;       // within setState

    std::atomic<int> restartScopes = 0;
    std::atomic<int32> collectedRestart = 0;  // of those scopes

    // Of the present block, on the audio thread; the first says whose block it is.
    std::atomic<std::thread::id> blockThread{};
    Steinberg::Vst::IParameterChanges* blockChanges = nullptr;  // to the host; may be null
    std::optional<ParamID> appliedID;                           // comes from the host just now
    HostTransport transport;
    MIDIQueue outputEvents;

    // Last: a thread of its own may call the others until it ends.
    const std::unique_ptr<MAudioPlugin> plugin;
};
