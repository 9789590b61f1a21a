// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/tavrendyne_audio_effect_plugin.h"

#include <new>

#include "foundation/module/module.h"
#include "foundation/objects/guarded.h"
#include "foundation/xml/store_visitor.h"
#include "plugin/frame/processing_pause.h"
#include "plugin/stored_words.h"

MTavrendyneAudioEffectPlugin::MTavrendyneAudioEffectPlugin()
    : upsamplingValue(MValueRef(), 1, 1, kMaxUpsampling) {
    upsamplingValue.name = "upsampling";
    upsamplingValue.format = "{0}x";
    noInPlace = true;      // each band reads the input
    usesHostTime = false;  // unless the effect asks for it
    receivesMIDI = true;
}

// The thread ends before anything that it works with does.
MTavrendyneAudioEffectPlugin::~MTavrendyneAudioEffectPlugin() = default;

// Without memory there is no plug-in; whatever else is in the way leaves one that is silent.
void MTavrendyneAudioEffectPlugin::Initialize(const MString& effectName,
                                              const MString& newDisplayName, PluginEntry entry,
                                              Options options) {
    bool outOfMemory = false;
    Guarded("MTavrendyneAudioEffectPlugin::Initialize", [&] {
        try {
            MAttribute settings;
            if (const MSettingsStore* const configuration = Configuration()) {
                configuration->CopyTo(settings);
                options.configuration = &settings;
            }
            Base::Initialize(effectName, newDisplayName, entry, options);
        } catch (const MException& exception) {
            if (theModule != nullptr) theModule->Log(exception.message);
        } catch (const std::bad_alloc&) {
            outOfMemory = true;
        }
    });
    if (outOfMemory) throw std::bad_alloc();
}

void MTavrendyneAudioEffectPlugin::InitProcessing_UnLockedPart() {
    Base::InitProcessing_UnLockedPart();
    if (!HasAnnouncedBlockSize()) return;
    Guarded("MTavrendyneAudioEffectPlugin::InitProcessing_UnLockedPart",
            [this] { changePresetThread.StartOnce(); });
}

void MTavrendyneAudioEffectPlugin::ProcessProgramChange(MIDITime when, int channel, int program) {
    Base::ProcessProgramChange(when, channel, program);
    RequestPreset(program % PresetSlots::kCount);
}

void MTavrendyneAudioEffectPlugin::RequestPreset(int slot) {
    if (!presetSlots.Request(slot) || changePresetCall.Request(editorFactory)) return;
    changePresetThread.Ask();
}

void MTavrendyneAudioEffectPlugin::ChangePreset() {
    while (presetSlots.IsChanging()) {
        const bool changed = Guarded("MTavrendyneAudioEffectPlugin::ChangePreset", false, [this] {
            SwapPreset();
            return true;
        });
        if (!changed) return;
    }
}

// As a load of the host's would; the slots themselves stay out of what a slot keeps.
void MTavrendyneAudioEffectPlugin::SwapPreset() {
    const ProcessingPause pause(processingDisabled);
    {
        MLocker state(stateLock);
        if (!presetSlots.IsChanging()) return;  // another thread was quicker
        MAttribute& kept = presetSlots.CurrentTree();
        kept.Clear();
        kept.SetName("settings");
        Base::StoreWhole({true, kept});
        presetSlots.Change();
        MLocker process(processLock);
        Base::StoreWhole({false, presetSlots.CurrentTree()});
    }
    InitProcessing();
    ActualiseAfterLoading();
    StateChanged();
}

void MTavrendyneAudioEffectPlugin::StoreWhole(const MStoreVisitor& visitor) {
    StoreProductSettings(visitor);
    Base::StoreWhole(visitor);
}

void MTavrendyneAudioEffectPlugin::StoreProductSettings(const MStoreVisitor& visitor) {
    if (visitor.storing || visitor.node.HasAttribute(upsamplingValue.name))
        visitor.Value(upsamplingValue);
    StoreWord(visitor, "hqupsampling", hqUpsampling, 1);
    if (!visitor.storing) TakeUpsamplingValue();
    KeepWord(visitor, "AGC", agcEnabled);
    presetSlots.Store(visitor);
}

bool MTavrendyneAudioEffectPlugin::TakeUpsamplingValue() {
    try {
        return TakeUpsampling(upsamplingValue.Get());
    } catch (const MException&) {
        upsamplingValue.Set(upsampling);
        return false;
    }
}

void MTavrendyneAudioEffectPlugin::UpdateUpsamplingFactor() {
    const ProcessingPause pause(processingDisabled);
    {
        MLocker process(processLock);
        if (!TakeUpsamplingValue()) return;
    }
    InitProcessing();
    StateChanged();
}

void MTavrendyneAudioEffectPlugin::OnUpsamplingChange() {
    UpdateUpsamplingFactor();
    UpdateEditor();
}

void MTavrendyneAudioEffectPlugin::UpdateEditor() {
    Base::UpdateEditor();
    if (presetSelector != nullptr) presetSelector->Set(GetCurrentPreset());
}

void MTavrendyneAudioEffectPlugin::EditorDestroyed() {
    presetSelector = nullptr;
    Base::EditorDestroyed();
}
