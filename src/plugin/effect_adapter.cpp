// SPDX-License-Identifier: GPL-3.0-or-later

// Life of a plug-in around an effect; effect_adapter_process.cpp has its blocks.

#include "plugin/effect_adapter.h"

#include "foundation/objects/guarded.h"
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
        DiscardEffect();
    });
}

void MAudioEffectPluginToAudioPluginAdapter::Initialize(const MString& effectName,
                                                        const MString& newDisplayName,
                                                        PluginEntry entry, Options options) {
    displayName = newDisplayName;
    surroundActivated = options.surround;
    if (options.configuration != nullptr) LoadDefaultSettings(*options.configuration);
    effectHost = MPluginSystem::CreateOrRaise(effectName, entry);
    try {
        BindEffect();
        CreatePins();
        InitParameters();
        RebuildAutomationTable();
        UpdateMaxBufferSize();
    } catch (...) {
        DiscardEffect();
        throw;
    }
}

void MAudioEffectPluginToAudioPluginAdapter::BindEffect() {
    effect = effectHost->Effect();
    effect->hqFlag = &hqUpsampling;
    PluginDescriptor& descriptor = effect->descriptor;
    descriptor.lock = &processLock;
    transportDirty = HasFlag(descriptor.flags[0], PluginDescriptor::kUsesHostTime);
    usesHostTime = usesHostTime || transportDirty;
    sideChainMetering = HasFlag(descriptor.flags[1], PluginDescriptor::kMetersInput);
    if (descriptor.midiProcessor != nullptr)
        AddListener(*descriptor.midiProcessor, kAllMIDIChannels);
    SetCallbacks();
}

// The effect calls these on whatever thread it is changed on, the audio thread included.
void MAudioEffectPluginToAudioPluginAdapter::SetCallbacks() {
    using Callback = MAudioEffectPluginHost::Callback;
    effectHost->owner = this;
    // What can be edited has changed.
    effectHost->SetCallback(
        Callback::OnStateChanged, [](MAudioEffectPluginHost& host, PluginArguments&) {
            auto* const plugin = static_cast<MAudioEffectPluginToAudioPluginAdapter*>(host.owner);
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
    AddTrigger(presetTriggerPrevious, "Preset trigger - previous");
    AddTrigger(presetTriggerNext, "Preset trigger - next");
}

void MAudioEffectPluginToAudioPluginAdapter::AddTrigger(PresetTrigger& trigger, const char* name) {
    constexpr int kOfNoList = 0;
    trigger.record.SetFloat(name, name, 0, 1, 0);
    trigger.record.Clear(ParameterFlag::kUpdates | ParameterFlag::kRandomizes);
    automation.Add(MakeParameterAdapter<ParameterBaseCustom>({this, {}, {}, false}, trigger.record,
                                                             kOfNoList));
}

void MAudioEffectPluginToAudioPluginAdapter::DiscardEffect() {
    ClearAutomationAdapters();
    effectParameters.Clear();
    if (effect != nullptr && effect->descriptor.midiProcessor != nullptr)
        RemoveListener(*effect->descriptor.midiProcessor);
    effect = nullptr;
    effectHost.reset();
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
        if (effect == nullptr) return;
        effect->Prepare(processingOutputs, sampleRate);
        effect->RequestUpdate();
        effect->UpdateIfNeeded();
        effect->ResetParameters();
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
        if (effect != nullptr) effect->InitGUI();
        MLocker process(processLock);
        const int shown = std::clamp<int>(hostOutputs - channelOffset, 0, channelCount);
        process.Release();
        meters.ForEach([shown](MMeterSink& meter) { meter.Resize(shown); });
    });
}

void MAudioEffectPluginToAudioPluginAdapter::UpdateMaxBufferSize() {
    Guarded("MAudioEffectPluginToAudioPluginAdapter::UpdateMaxBufferSize", [&] {
        MLocker process(processLock);
        maxBlockSize = std::max(effect->maxBlockSize, 1);
    });
}

void MAudioEffectPluginToAudioPluginAdapter::ActualiseAfterLoading() {
    Guarded("MAudioEffectPluginToAudioPluginAdapter::ActualiseAfterLoading", [&] {
        if (effect != nullptr) effect->Update();
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
    if (effect != nullptr) effect->RequestUpdate();
}

void MAudioEffectPluginToAudioPluginAdapter::ProcessUpdate() {
    Guarded("MAudioEffectPluginToAudioPluginAdapter::ProcessUpdate", [&] {
        if (effect != nullptr) effect->ProcessUpdate();
    });
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
