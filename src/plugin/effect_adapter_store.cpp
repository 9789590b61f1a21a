// SPDX-License-Identifier: GPL-3.0-or-later

// What songs, presets and the user's configuration keep of a plug-in around an effect.

#include "plugin/effect_adapter.h"
#include "plugin/stored_words.h"

void MAudioEffectPluginToAudioPluginAdapter::StoreGeneralSettings(const MStoreVisitor& visitor) {
    StoreVersion(visitor);
    StoreChannelMode(visitor);
    StoreWord(visitor, "ControllersEnabled", controllersEnabled);
    StoreWord(visitor, "NoteControllersEnabled", noteControllersEnabled);
    presetSwitchTrigger.Store(visitor);
    StoreBypass(visitor);
    StoreProtection(visitor);
}

void MAudioEffectPluginToAudioPluginAdapter::StoreVersion(const MStoreVisitor& visitor) {
    std::int32_t version = kStateVersion;
    visitor.Number("Version", version, kOldestStateVersion);
    if (!visitor.storing) loadedVersion = version;
}

void MAudioEffectPluginToAudioPluginAdapter::PresetSwitchTrigger::Store(
    const MStoreVisitor& visitor) {
    const auto store = [this](const MStoreVisitor& inner) {
        StoreWord(inner, "Enabled", enabled);
        StoreWord(inner, "Controller", controller);
        StoreWord(inner, "Channel", channel);
    };
    if (visitor.SubItem("PreviousNextPresetController", store)) return;
    MAttribute none;
    store({false, none});
}

void MAudioEffectPluginToAudioPluginAdapter::StoreProtection(const MStoreVisitor& visitor) {
    int subBlock = GetProtection();
    visitor.Number("MaxLFOBlockSize", subBlock, kProtectionOfOldStates);
    if (!visitor.storing) SetProtection(subBlock);
}

// What is raised here ends in Store, which then answers that it did not go through.
void MAudioEffectPluginToAudioPluginAdapter::StoreSettings(const MStoreVisitor& visitor) {
    if (effectHost != nullptr) {
        PluginArguments tree(&visitor.node);
        effectHost->Command(visitor.storing ? PluginCommand::kStore : PluginCommand::kLoad, tree);
    }
    StoreStandardSettings(visitor);
}

// The quality is always told: a state that says nothing of it leaves the present one.
void MAudioEffectPluginToAudioPluginAdapter::StoreStandardSettings(const MStoreVisitor& visitor) {
    StoreWord(visitor, "CurrentPresetIndex", currentPresetIndex, -1);
    KeepWord(visitor, "Sinc", hqUpsampling);
}

void MAudioEffectPluginToAudioPluginAdapter::StoreDefaultSettings(const MStoreVisitor& visitor) {
    MAudioPlugin::StoreDefaultSettings(visitor);
    visitor.Flag("SurroundActivated", surroundActivated, false);
}
