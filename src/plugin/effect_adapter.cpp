// SPDX-License-Identifier: GPL-3.0-or-later

// Life of a plug-in around an effect; effect_adapter_process.cpp has its blocks.

#include "plugin/effect_adapter.h"

#include <cmath>

#include "foundation/objects/guarded.h"
#include "foundation/objects/tolerances.h"
#include "foundation/text/string_formatter.h"
#include "plugin/frame/meter_sink.h"
#include "plugin/frame/preset_services.h"
#include "plugin/frame/processing_pause.h"

namespace {

constexpr std::uint16_t kAllMIDIChannels = 0xffff;

bool HasFlag(const std::atomic<std::uint8_t>& flags, std::uint8_t flag) {
    return (flags.load(std::memory_order_relaxed) & flag) != 0;
}

// "In L", "In R"; with numbers from 1 on where there are more than two channels.
void AddPins(std::vector<MString>& pins, const MString& bus, int channels) {
    for (int c = 0; c < channels; ++c) {
        if (channels == 2) {
            pins.push_back(MStringFormatter("{0} {1}") << bus << (c == 0 ? "L" : "R"));
        } else {
            pins.push_back(MStringFormatter("{0} {1}") << bus << c + 1);
        }
    }
}

}  // namespace

MAudioEffectPluginToAudioPluginAdapter::~MAudioEffectPluginToAudioPluginAdapter() {
    Guarded("MAudioEffectPluginToAudioPluginAdapter::~MAudioEffectPluginToAudioPluginAdapter", [&] {
        processingDisabled.fetch_add(1);
        DestroyEditor();
        DiscardOwnEffect();
    });
}

void MAudioEffectPluginToAudioPluginAdapter::Initialize(const MString& effectName,
                                                        const MString& newDisplayName,
                                                        PluginEntry entry, Options options) {
    displayName = newDisplayName;
    surroundActivated = options.surround;
    if (options.configuration != nullptr) LoadDefaultSettings(*options.configuration);
    try {
        CreateEffects(effectName, entry);
        CreatePins();
        InitParameters();
        RebuildAutomationTable();
        UpdateMaxBufferSize();
    } catch (...) {
        DiscardEffects();
        throw;
    }
}

void MAudioEffectPluginToAudioPluginAdapter::CreateEffects(const MString& effectName,
                                                           PluginEntry entry) {
    effectHost = MPluginSystem::CreateOrRaise(effectName, entry);
    BindEffect(*effectHost, kAllMIDIChannels);
    TakeDescriptor(*effectHost->Effect());
}

void MAudioEffectPluginToAudioPluginAdapter::BindEffect(MAudioEffectPluginHost& host,
                                                        std::uint16_t midiChannels) {
    MAudioEffectPlugin& bound = *host.Effect();
    bound.hqFlag = &hqUpsampling;
    bound.descriptor.lock = &processLock;
    if (bound.descriptor.midiProcessor != nullptr)
        AddListener(*bound.descriptor.midiProcessor, midiChannels);
    SetCallbacks(host);
}

void MAudioEffectPluginToAudioPluginAdapter::TakeDescriptor(MAudioEffectPlugin& first) {
    effect = &first;
    transportDirty = HasFlag(first.descriptor.flags[0], PluginDescriptor::kUsesHostTime);
    usesHostTime = usesHostTime || transportDirty;
    sideChainMetering = HasFlag(first.descriptor.flags[1], PluginDescriptor::kMetersInput);
}

// The effect calls these on whatever thread it is changed on, the audio thread included.
void MAudioEffectPluginToAudioPluginAdapter::SetCallbacks(MAudioEffectPluginHost& host) {
    using Callback = MAudioEffectPluginHost::Callback;
    host.owner = this;
    // What can be edited has changed.
    host.SetCallback(
        Callback::OnStateChanged, [](MAudioEffectPluginHost& caller, PluginArguments&) {
            auto* const plugin = static_cast<MAudioEffectPluginToAudioPluginAdapter*>(caller.owner);
            return std::intptr_t{plugin->updateEditorCall.Request(plugin->editorFactory)};
        });
}

// One bus for the signal and the others for side-chains.
void MAudioEffectPluginToAudioPluginAdapter::CreatePins() {
    const int buses = std::min(effect->descriptor.inputBusCount, kMaxBuses);
    channelsPerBus = surroundActivated ? kChannelStride : 2;
    inputChannelNames.clear();
    outputChannelNames.clear();
    AddPins(outputChannelNames, "Out", channelsPerBus);
    if (buses > 0) AddPins(inputChannelNames, "In", channelsPerBus);
    for (int b = 1; b < buses; ++b) {
        const MString number = MStringFormatter("Sidechain {0}") << b;
        AddPins(inputChannelNames, buses == 2 ? MString("Sidechain") : number, channelsPerBus);
    }
}

void MAudioEffectPluginToAudioPluginAdapter::InitParameters() {
    AddEffectParameters({this, {}, {}, false}, *effect, automation, effectParameters);
    AddPresetTriggers();
}

void MAudioEffectPluginToAudioPluginAdapter::AddPresetTriggers() {
    AddTrigger(presetTriggerPrevious, "Preset trigger - previous");
    AddTrigger(presetTriggerNext, "Preset trigger - next");
}

void MAudioEffectPluginToAudioPluginAdapter::AddTrigger(PresetTrigger& trigger, const char* name) {
    trigger.record.SetFloat(name, name, 0, 1, 0);
    trigger.record.Clear(ParameterFlag::kUpdates | ParameterFlag::kRandomizes);
    AddOwnParameter(trigger.record);
}

ParameterBaseCustom& MAudioEffectPluginToAudioPluginAdapter::AddOwnParameter(
    ParameterRecord& record) {
    constexpr int kOfNoList = 0;
    return static_cast<ParameterBaseCustom&>(automation.Add(
        MakeParameterAdapter<ParameterBaseCustom>({this, {}, {}, false}, record, kOfNoList)));
}

void MAudioEffectPluginToAudioPluginAdapter::DiscardEffects() { DiscardOwnEffect(); }

void MAudioEffectPluginToAudioPluginAdapter::DiscardOwnEffect() {
    ClearAutomationAdapters();
    effectParameters.Clear();
    if (effectHost != nullptr) ReleaseEffect(*effectHost->Effect());
    effect = nullptr;
    effectHost.reset();
}

void MAudioEffectPluginToAudioPluginAdapter::ReleaseEffect(MAudioEffectPlugin& released) {
    if (released.descriptor.midiProcessor != nullptr)
        RemoveListener(*released.descriptor.midiProcessor);
}

std::span<MAudioEffectPlugin* const> MAudioEffectPluginToAudioPluginAdapter::AllEffects() const {
    return {&effect, effect != nullptr ? std::size_t{1} : 0};
}

void MAudioEffectPluginToAudioPluginAdapter::InitProcessing() {
    Guarded("MAudioEffectPluginToAudioPluginAdapter::InitProcessing", [&] {
        {
            const ProcessingPause pause(processingDisabled);
            MLocker state(stateLock);
            MLocker process(processLock);
            InitProcessing_LockedPart();
            InitProcessingActivePresets();
        }
        InitProcessing_UnLockedPart();
        if (hasEditor) initGUICall.Request(editorFactory);
        TellLatencyIfChanged();
    });
}

// A change that comes meanwhile asks for an update of its own.
void MAudioEffectPluginToAudioPluginAdapter::InitProcessing_LockedPart() {
    Guarded("MAudioEffectPluginToAudioPluginAdapter::InitProcessing_LockedPart", [&] {
        InitProcessingLocked();
        midSideMode.store(IsMidSideMode(channelModeActive), kRelaxed);
        for (MAudioEffectPlugin* const prepared : AllEffects()) {
            prepared->Prepare(processingOutputs, sampleRate);
            prepared->RequestUpdate();
            prepared->UpdateIfNeeded();
            prepared->ResetParameters();
        }
        UpdateMaxBufferSize();
    });
}

void MAudioEffectPluginToAudioPluginAdapter::InitProcessingActivePresets() {
    Guarded("MAudioEffectPluginToAudioPluginAdapter::InitProcessingActivePresets", [&] {
        if (presets != nullptr) presets->InitProcessingActivePresets();
    });
}

void MAudioEffectPluginToAudioPluginAdapter::InitProcessing_UnLockedPart() {}

void MAudioEffectPluginToAudioPluginAdapter::InitProcessingGUI() {
    Guarded("MAudioEffectPluginToAudioPluginAdapter::InitProcessingGUI", [&] {
        for (MAudioEffectPlugin* const shown : AllEffects()) shown->InitGUI();
        meters.ForEach([shown = ShownChannels()](MMeterSink& meter) { meter.Resize(shown); });
    });
}

int MAudioEffectPluginToAudioPluginAdapter::ShownChannels() {
    MLocker process(processLock);
    return std::clamp<int>(hostOutputs - channelOffset, 0, channelCount);
}

void MAudioEffectPluginToAudioPluginAdapter::UpdateMaxBufferSize() {
    Guarded("MAudioEffectPluginToAudioPluginAdapter::UpdateMaxBufferSize", [&] {
        MLocker process(processLock);
        int smallest = kNoLimit;
        for (const MAudioEffectPlugin* const used : UsedEffects())
            smallest = std::min(smallest, used->maxBlockSize);
        maxBlockSize = std::max(smallest, 1);
    });
}

void MAudioEffectPluginToAudioPluginAdapter::ActualiseAfterLoading() {
    Guarded("MAudioEffectPluginToAudioPluginAdapter::ActualiseAfterLoading", [&] {
        for (MAudioEffectPlugin* const used : UsedEffects()) used->Update();
        updateEditorCall.Request(editorFactory);
        if (presets != nullptr) presets->ActualiseActivePresetsAfterLoading();
    });
}

int MAudioEffectPluginToAudioPluginAdapter::GetProcessingInputChannels() {
    return std::max(MAudioPlugin::GetProcessingInputChannels(), 1);
}

int MAudioEffectPluginToAudioPluginAdapter::GetProcessingOutputChannels() {
    return std::max(MAudioPlugin::GetProcessingOutputChannels(), 1);
}

int MAudioEffectPluginToAudioPluginAdapter::GetHostInputChannels() {
    return std::max(MAudioPlugin::GetHostInputChannels(), 1);
}

int MAudioEffectPluginToAudioPluginAdapter::GetHostOutputChannels() {
    return std::max(MAudioPlugin::GetHostOutputChannels(), 1);
}

int MAudioEffectPluginToAudioPluginAdapter::GetLatency() {
    return effect != nullptr ? effect->GetLatency() : 0;
}

int MAudioEffectPluginToAudioPluginAdapter::GetTailLength() {
    MLocker process(processLock);
    return effect != nullptr ? std::max(effect->GetTailLength(), -1) : -1;
}

void MAudioEffectPluginToAudioPluginAdapter::ParametersChanged() {
    for (MAudioEffectPlugin* const used : UsedEffects()) used->RequestUpdate();
}

void MAudioEffectPluginToAudioPluginAdapter::ProcessUpdate() {
    Guarded("MAudioEffectPluginToAudioPluginAdapter::ProcessUpdate", [&] {
        for (MAudioEffectPlugin* const used : UsedEffects()) used->ProcessUpdate();
    });
}

void MAudioEffectPluginToAudioPluginAdapter::GenerateRandomSettings(double amount) {
    Guarded("MAudioEffectPluginToAudioPluginAdapter::GenerateRandomSettings", [&] {
        {
            const ProcessingPause pause(processingDisabled);
            MLocker state(stateLock);
            MLocker process(processLock);
            Randomize(amount);
        }
        updateEditorCall.Request(editorFactory);
        StateChanged();
    });
}

void MAudioEffectPluginToAudioPluginAdapter::Randomize(double amount) {
    for (const auto& adapter : automation.Adapters()) adapter->Randomize(amount);
    if (std::abs(amount - 1) >= kSameParameter) return;
    for (MAudioEffectPlugin* const used : UsedEffects()) used->Update();
}

void MAudioEffectPluginToAudioPluginAdapter::SetMeters(const Meters& newMeters) {
    MLocker process(processLock);
    meters = newMeters;
}

void MAudioEffectPluginToAudioPluginAdapter::SetMeteredChannels(int offset, int count) {
    MLocker process(processLock);
    channelOffset = std::clamp<int>(offset, 0, kChannelStride);
    channelCount = std::clamp<int>(count, 0, kChannelStride);
}

// A step that has waited comes later, since stateLock is held here.
void MAudioEffectPluginToAudioPluginAdapter::BuildEditor() {
    InitProcessingGUI();
    presetStepCall.Request(editorFactory);
}

void MAudioEffectPluginToAudioPluginAdapter::EditorDestroyed() { SetMeters({}); }

void MAudioEffectPluginToAudioPluginAdapter::UpdateEditor() {
    for (const auto& adapter : automation.Adapters()) adapter->UpdateEditor();
}
