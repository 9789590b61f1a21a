// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "parameters/values/value_number.h"
#include "plugin/multi_band_adapter.h"
#include "plugin/preset_change_thread.h"
#include "plugin/preset_slots.h"
#include "plugin/product_settings.h"

// The plug-in that hosts get: the multi-band one with what the maker's plug-ins have in common.
// That is the upsampling, eight stored presets that program changes switch between, and the
// settings of the user.
//
//     MTavrendyneAudioEffectPlugin plugin;
//     plugin.Initialize("Quillorea", "Quillorea", ChorusEntry);
//
// Life     as MAudioPlugin's. Initialize raises nothing for a failure: it tells the module, and the
//          plug-in outputs silence from then on. A thread is there from the first InitProcessing
//          with an announced size of blocks to the destructor: a scan starts none
// Threads  as MAudioPlugin's. Program changes come on the audio thread, and presets are switched on
//          the user-interface thread, or on that of the plug-in where there is none
// Locks    none may be held where settings are read or changed: see MSettingsStore
// Errors   std::bad_alloc out of the construction and Initialize
class MTavrendyneAudioEffectPlugin : public MAudioEffectPluginToAudioPluginMultiBandAdapter {
public:
    static constexpr int kMaxUpsampling = 16;

    MTavrendyneAudioEffectPlugin();
    ~MTavrendyneAudioEffectPlugin() override;

    // Once. The module's configuration holds over the options.
    void Initialize(const MString& effectName, const MString& newDisplayName, PluginEntry entry,
                    Options options = {});

    // Has a slot's preset loaded soon, and what is in use kept in the slot that was. On any thread;
    // a number of no slot is ignored.
    void RequestPreset(int slot);
    int GetCurrentPreset() const { return presetSlots.Current(); }
    void ProcessProgramChange(MIDITime when, int channel, int program) override;

    // Behind a change of the selector's value: has the plug-in run at that multiple of the host's
    // rate. One that can't be had puts the value back.
    void UpdateUpsamplingFactor();
    void OnUpsamplingChange();
    void OnAGCChange() { InitProcessing(); }
    MValueInt32 upsamplingValue;

    // The settings window. What lives with each plug-in is in use at once, and part of its state.
    bool GetSwitch(ProductSwitch which);
    void SetSwitch(ProductSwitch which, bool on);
    // "Default bands"
    int GetNewBandCount() const;
    void SetNewBandCount(int count);
    void SetChannelMode(int mode);
    // Channels 0 to 7 of the mode "Surround"; others are off and ignored.
    bool IsSurroundChannelOn(int channel) const;
    void SetSurroundChannel(int channel, bool on);
    // Makes the present state that of new instances. Whether the file of settings could be written.
    bool KeepAsDefaultSettings();

    // The selector of an open editor, null while it is closed; on the user-interface thread.
    MValueInt32* presetSelector = nullptr;
    void UpdateEditor() override;
    void EditorDestroyed() override;

protected:
    void StoreWhole(const MStoreVisitor& visitor) override;
    void InitProcessing_UnLockedPart() override;

private:
    using Base = MAudioEffectPluginToAudioPluginMultiBandAdapter;

    static MSettingsStore* Configuration();

    void StoreProductSettings(const MStoreVisitor& visitor);
    bool TakeUpsamplingValue();  // under processLock; whether the factor is another one
    void ChangePreset();
    void SwapPreset();
    void SetUserSwitch(ProductSwitch which, bool on);

    PresetSlots presetSlots;
    UserInterfaceCall<MTavrendyneAudioEffectPlugin> changePresetCall{
        *this, &MTavrendyneAudioEffectPlugin::ChangePreset};
    PresetChangeThread changePresetThread{[this] { ChangePreset(); }};  // last: it uses the others
};
