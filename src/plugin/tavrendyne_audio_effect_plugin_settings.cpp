// SPDX-License-Identifier: GPL-3.0-or-later

// The settings window's side of the product's plug-in.

#include "foundation/module/module.h"
#include "foundation/objects/guarded.h"
#include "plugin/tavrendyne_audio_effect_plugin.h"

namespace {

bool IsChannel(int channel) { return channel >= 0 && channel < kChannelStride; }

}  // namespace

MSettingsStore* MTavrendyneAudioEffectPlugin::Configuration() {
    return theModule != nullptr ? &theModule->configuration : nullptr;
}

bool MTavrendyneAudioEffectPlugin::GetSwitch(ProductSwitch which) {
    switch (which) {
        case ProductSwitch::HighQualityUpsampling:
        case ProductSwitch::HighQualitySinc:
            return hqUpsampling.load(kRelaxed) != 0;
        case ProductSwitch::DryWetAffectsInputGain:
            return dryWetAffectsInputGain.load(kRelaxed);
        case ProductSwitch::DryWetAffectsInputPan:
            return dryWetAffectsInputPan.load(kRelaxed);
        default:
            return Guarded("MTavrendyneAudioEffectPlugin::GetSwitch", RecordOf(which).standard,
                           [which] { return GetGlobalSwitch(Configuration(), RecordOf(which)); });
    }
}

void MTavrendyneAudioEffectPlugin::SetSwitch(ProductSwitch which, bool on) {
    switch (which) {
        case ProductSwitch::HighQualityUpsampling:
        case ProductSwitch::HighQualitySinc:
            hqUpsampling.store(on, kRelaxed);
            InitProcessing();
            return StateChanged();
        case ProductSwitch::DryWetAffectsInputGain:
            dryWetAffectsInputGain.store(on, kRelaxed);
            return StateChanged();
        case ProductSwitch::DryWetAffectsInputPan:
            dryWetAffectsInputPan.store(on, kRelaxed);
            return StateChanged();
        default:
            SetUserSwitch(which, on);
    }
}

void MTavrendyneAudioEffectPlugin::SetUserSwitch(ProductSwitch which, bool on) {
    Guarded("MTavrendyneAudioEffectPlugin::SetSwitch",
            [&] { SetGlobalSwitch(Configuration(), RecordOf(which), on); });
    if (which != ProductSwitch::TabletMode) return;
    MLocker state(stateLock);  // an editor that is open is to follow
    tabletMode = on;
}

int MTavrendyneAudioEffectPlugin::GetNewBandCount() const {
    return Guarded("MTavrendyneAudioEffectPlugin::GetNewBandCount", 1,
                   [] { return GetGlobalBandCount(Configuration()); });
}

void MTavrendyneAudioEffectPlugin::SetNewBandCount(int count) {
    SetDefaultBandCount(count);
    Guarded("MTavrendyneAudioEffectPlugin::SetNewBandCount",
            [count] { SetGlobalBandCount(Configuration(), count); });
}

void MTavrendyneAudioEffectPlugin::SetChannelMode(int mode) {
    channelModeRequested.store(ValidChannelMode(mode), kRelaxed);
    InitProcessing();
    StateChanged();
}

bool MTavrendyneAudioEffectPlugin::IsSurroundChannelOn(int channel) const {
    return IsChannel(channel) &&
           surroundRequested[static_cast<std::size_t>(channel)].load(kRelaxed) != 0;
}

void MTavrendyneAudioEffectPlugin::SetSurroundChannel(int channel, bool on) {
    if (!IsChannel(channel)) return;
    surroundRequested[static_cast<std::size_t>(channel)].store(on, kRelaxed);
    InitProcessing();
    StateChanged();
}

bool MTavrendyneAudioEffectPlugin::KeepAsDefaultSettings() {
    return Guarded("MTavrendyneAudioEffectPlugin::KeepAsDefaultSettings", false, [this] {
        MSettingsStore* const configuration = Configuration();
        return configuration != nullptr && configuration->Change([this](MAttribute& root) {
            SetDefaultSettingsToCurrent(root);
        });
    });
}
