// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>

#include "parameters/effect_parameters.h"
#include "plugin/contract/plugin_host.h"
#include "plugin/frame/audio_plugin.h"
#include "plugin/protection.h"
#include "plugin/user_interface_call.h"

class MMeterSink;
class MPresetServices;

// A plug-in around one effect: binds its parameters, hands it the transport, feeds the meters of
// the editor, steps presets by automation.
//
//     MAudioEffectPluginToAudioPluginAdapter plugin;
//     plugin.Initialize("Chorus", "Chorus", ChorusEntry);
//     plugin.AnnounceBlockSize(512);
//     plugin.SetHostSampleRate(48000);
//     plugin.InitProcessing();
//     plugin.ProcessAudio(inputs, outputs, 512, true);
//
// Order    of a host's block: the limit of sub-blocks, preset triggers, sub-blocks, the meters'
//          update. Of a sub-block: transport, modulators, multiparameters, meters of the input, the
//          effect's update and process, meters of the output. Automation moves between sub-blocks;
//          MIDI came before
// Life     as MAudioPlugin's, with Initialize behind the construction. Without an effect the output
//          is silence
// Threads  as MAudioPlugin's. A change of a parameter is stored at once and reaches the effect
//          before its next sub-block; Initialize, the destructor and the editor's operations belong
//          to the user-interface thread
// Errors   MException "Error creating plugin." and "Invalid plugin parameter type." out of
//          Initialize, which leaves no effect then; nothing gets out of the other operations
class MAudioEffectPluginToAudioPluginAdapter : public MAudioPlugin {
public:
    struct Options {
        bool surround = false;  // buses of eight channels instead of two
        // The user's, whose default settings hold over `surround`. Null where there is none.
        MAttribute* configuration = nullptr;
    };

    MAudioEffectPluginToAudioPluginAdapter() = default;
    ~MAudioEffectPluginToAudioPluginAdapter() override;

    // Once. displayName is what users read.
    void Initialize(const MString& effectName, const MString& newDisplayName, PluginEntry entry,
                    Options options);
    void Initialize(const MString& effectName, const MString& newDisplayName, PluginEntry entry) {
        Initialize(effectName, newDisplayName, entry, Options{});
    }

    void InitProcessing() override;

    // How many samples pass between two updates of what moves: a size of kProtections, or what is
    // nearest to it.
    void SetProtection(int subBlock) { protection.store(NearestProtection(subBlock), kRelaxed); }
    int GetProtection() const { return protection.load(kRelaxed); }
    // Whether the mode in use is told by its names of middle and side.
    bool IsMidSideShown() const { return midSideMode.load(kRelaxed); }

    // Null where there is none.
    struct Meters {
        template <typename Call>
        void ForEach(Call call) const {
            for (MMeterSink* const meter : {input, output, sideChain})
                if (meter != nullptr) call(*meter);
        }

        MMeterSink* input = nullptr;
        MMeterSink* output = nullptr;
        MMeterSink* sideChain = nullptr;
    };
    // On the user-interface thread. They are not owned, and forgotten by EditorDestroyed.
    void SetMeters(const Meters& newMeters);
    // The first channel that meters show, and how many.
    void SetMeteredChannels(int offset, int count);

    void ActualiseAfterLoading() override;

    // New values for all parameters that take part; amount 0..1, exactly 1 makes them from nothing,
    // less moves them.
    void GenerateRandomSettings(double amount);

    // Each at least 1.
    int GetProcessingInputChannels() override;
    int GetProcessingOutputChannels() override;
    int GetHostInputChannels() override;
    int GetHostOutputChannels() override;

    int GetLatency() override;
    int GetTailLength() override;
    void ParametersChanged() override;
    void ProcessUpdate() override;

    void BuildEditor() override;
    void EditorDestroyed() override;
    void UpdateEditor() override;

    MString displayName;
    MPresetServices* presets = nullptr;  // not owned; null where there are none
    // Of the user's presets the one that the settings came from; -1 for none. Kept with a song.
    std::atomic<std::int32_t> currentPresetIndex = -1;

protected:
    void Process(float** inputs, float** outputs, int sampleCount) override;
    void ProcessBypassed(float* buffer, int sampleCount, int channel) override;
    void PrepareBlock(float** inputs, float** outputs, int sampleCount, bool replacing) override;
    void FinishBlock(float** inputs, float** outputs, int sampleCount, bool replacing) override;
    void PrepareForProcessingOnce(float** inputs, float** outputs) override;
    void ClearEffect() override;

    void StoreGeneralSettings(const MStoreVisitor& visitor) override;
    // The effect's parameters in the item itself, then the standard settings.
    void StoreSettings(const MStoreVisitor& visitor) override;
    void StoreStandardSettings(const MStoreVisitor& visitor);
    void StoreDefaultSettings(const MStoreVisitor& visitor) override;

    // Of Initialize, in order. What is raised out of them ends in DiscardEffects.
    virtual void CreateEffects(const MString& effectName, PluginEntry entry);
    // Makes an adapter for each parameter, in the order in which the host sees them.
    virtual void InitParameters();
    virtual void DiscardEffects();

    // Those there are, and those that run. None where Initialize has failed.
    virtual std::span<MAudioEffectPlugin* const> AllEffects() const;
    virtual std::span<MAudioEffectPlugin* const> UsedEffects() const { return AllEffects(); }

    // Lends an effect what it needs; it hears the MIDI channels of the mask.
    void BindEffect(MAudioEffectPluginHost& host, std::uint16_t midiChannels);
    // What the effects ask of the plug-in, told by one of them, which becomes `effect`.
    void TakeDescriptor(MAudioEffectPlugin& first);
    void ReleaseEffect(MAudioEffectPlugin& released);
    void AddPresetTriggers();
    // A parameter of the plug-in's own, behind all others.
    ParameterBaseCustom& AddOwnParameter(ParameterRecord& record);

    // Of GenerateRandomSettings, under both locks.
    virtual void Randomize(double amount);

    // Of InitProcessing: under both locks, behind them, and on the user-interface thread.
    virtual void InitProcessing_LockedPart();
    virtual void InitProcessingActivePresets();
    virtual void InitProcessing_UnLockedPart();
    virtual void InitProcessingGUI();
    // Any thread: has UpdateEditor called on the user-interface thread soon.
    void RequestEditorUpdate() { updateEditorCall.Request(editorFactory); }
    virtual void UpdateMaxBufferSize();

    // Of Process: before the effects, the effects themselves, and behind them.
    virtual void PrepareForProcessing(const float* const* inputs, int sampleCount);
    virtual void ProcessBlock(float** inputs, float** outputs, int sampleCount);
    virtual void PrepareForProcessing(const float* const* inputs, const float* const* outputs,
                                      int sampleCount);
    // The levels of a bus; of silence where bus is null. meter may be null.
    void FeedMeter(MMeterSink* meter, const float* const* bus, int channels, int sampleCount) const;
    // How many channels meters have to show. Takes processLock.
    int ShownChannels();

    std::unique_ptr<MAudioEffectPluginHost> effectHost;  // null where a plug-in has several
    MAudioEffectPlugin* effect = nullptr;                // speaks for all; null while there is none
    ParameterAdapterMap effectParameters;

    // Under processLock.
    TransportInfo transport;      // of the present sub-block
    bool transportDirty = false;  // the effect wants to know it
    int maxBlockSize = 1;         // the smallest of the effects'

    // Of stored states. The first is that of states that tell none.
    static constexpr std::int32_t kOldestStateVersion = 0x50300;
    static constexpr std::int32_t kStateVersion = 0x60000;

    // Under stateLock.
    std::int32_t loadedVersion = kStateVersion;  // of the state that was loaded last
    bool surroundActivated = false;              // pins are made for it, once

    // A MIDI controller that steps presets.
    struct PresetSwitchTrigger {
        void Store(const MStoreVisitor& visitor);

        std::atomic<bool> enabled = false;
        std::atomic<std::int32_t> controller = 0;  // 0..127, from 128 on what acts like one
        std::atomic<std::int32_t> channel = 0;     // 1..16; 0: any
    };
    PresetSwitchTrigger presetSwitchTrigger;
    std::atomic<bool> controllersEnabled = false;
    std::atomic<bool> noteControllersEnabled = false;

private:
    using Adapter = MAudioEffectPluginToAudioPluginAdapter;

    // A parameter for hosts alone: when it rises past the threshold, presets are stepped.
    struct PresetTrigger {
        ParameterRecord record;
        double lastPosition = 0;  // at the last block; on the audio thread
        bool HasRisen();
    };

    void SetCallbacks(MAudioEffectPluginHost& host);
    void CreatePins();
    void DiscardOwnEffect();
    void AddTrigger(PresetTrigger& trigger, const char* name);

    void StoreVersion(const MStoreVisitor& visitor);
    void StoreProtection(const MStoreVisitor& visitor);

    void StepPreset(int steps);
    void ServePresetStep();
    void TakeTransport();

    PresetTrigger presetTriggerPrevious;
    PresetTrigger presetTriggerNext;
    std::atomic<std::int32_t> pendingPresetStep = 0;  // waits for a user interface

    std::atomic<std::int32_t> protection = kDefaultProtection;  // samples
    std::atomic<bool> midSideMode = false;

    // Under processLock; meters are changed on the user-interface thread only.
    bool subBlocking = false;  // something moves parameters within this block
    Meters meters;
    int channelOffset = 0;
    int channelCount = kChannelStride;
    bool sideChainMetering = false;  // the effect wants its side-chain shown

    UserInterfaceCall<Adapter> presetStepCall{*this, &Adapter::ServePresetStep};
    UserInterfaceCall<Adapter> initGUICall{*this, &Adapter::InitProcessingGUI};
    UserInterfaceCall<Adapter> updateEditorCall{*this, &Adapter::UpdateEditor};
};
