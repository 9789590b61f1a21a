// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/guarded.h"
#include "foundation/xml/store_visitor.h"
#include "plugin/frame/audio_plugin.h"
#include "plugin/frame/processing_pause.h"

namespace {

constexpr const char* kDefaultSettingsItem = "MAudioPluginSettings";
constexpr int kFewestSurroundChannels = 3;

// The mode of that name; otherwise where there is none.
int FindChannelMode(const MString& name, int otherwise) {
    for (std::size_t mode = 0; mode < kChannelModes.size(); ++mode)
        if (name.CompareNoCase(kChannelModes[mode].name) == 0) return static_cast<int>(mode);
    return otherwise;
}

}  // namespace

bool MAudioPlugin::Store(const MStoreVisitor& visitor) {
    return Guarded("MAudioPlugin::Store", false, [&] {
        if (!visitor.storing) {
            Load(visitor);
            return true;
        }
        MLocker state(stateLock);
        StoreGeneralSettings(visitor);
        StoreSettings(visitor);
        return true;
    });
}

void MAudioPlugin::Load(const MStoreVisitor& visitor) {
    const ProcessingPause pause(processingDisabled);
    {
        MLocker state(stateLock);
        MLocker process(processLock);
        StoreGeneralSettings(visitor);
        StoreSettings(visitor);
    }
    InitProcessing();
    ActualiseAfterLoading();
    StateChanged();
}

void MAudioPlugin::ActualiseAfterLoading() {}

void MAudioPlugin::StoreGeneralSettings(const MStoreVisitor& visitor) {
    StoreChannelMode(visitor);
    StoreBypass(visitor);
}

void MAudioPlugin::StoreSettings(const MStoreVisitor&) {}

// A state that tells no mode, or one that is unknown, leaves the present one.
void MAudioPlugin::StoreChannelMode(const MStoreVisitor& visitor) {
    int mode = ValidChannelMode(channelModeRequested.load(kRelaxed));
    MString name = kChannelModes[static_cast<std::size_t>(mode)].name;
    visitor.Text("ChannelMode", name, MString());
    mode = FindChannelMode(name, mode);
    if (mode == kModeSurround) StoreSurroundChannels(visitor);
    if (visitor.storing) return;

    mode = LoadOldSurround(visitor, mode);
    const bool tooFew = mode == kModeSurround && ConnectedCount() < kFewestSurroundChannels;
    channelModeRequested.store(tooFew ? kModeLeftRight : mode, kRelaxed);
}

// Old states told surround by a switch of its own.
int MAudioPlugin::LoadOldSurround(const MStoreVisitor& visitor, int mode) const {
    constexpr const char* kKey = "EnableSurroundProcessing";
    if (!visitor.node.HasAttribute(kKey)) return mode;
    return MString::ToInt64(visitor.node.GetCachedAttribute()) != 0 ? kModeSurround
                                                                    : kModeLeftRight;
}

// A digit for each channel; those that are not told stay as they are.
void MAudioPlugin::StoreSurroundChannels(const MStoreVisitor& visitor) {
    MString digits;
    for (const auto& requested : surroundRequested)
        digits.Append(requested.load(kRelaxed) != 0 ? u'1' : u'0');
    visitor.Text("SurroundChannelsEnable", digits, MString());
    if (visitor.storing) return;
    for (int c = 0; c < kChannelStride && (digits[c] == u'0' || digits[c] == u'1'); ++c)
        surroundRequested[static_cast<std::size_t>(c)].store(digits[c] == u'1', kRelaxed);
}

void MAudioPlugin::StoreBypass(const MStoreVisitor& visitor) {
    bool isBypassed = bypassed.load(kRelaxed) != 0;
    visitor.Flag("Bypass", isBypassed, false);
    if (!visitor.storing) bypassed.store(isBypassed, kRelaxed);
}

void MAudioPlugin::LoadDefaultSettings(MAttribute& configuration) {
    Guarded("MAudioPlugin::LoadDefaultSettings", [&] {
        MLocker state(stateLock);
        MAttribute none;
        StoreDefaultSettings({false, configuration.HasSubItem(kDefaultSettingsItem)
                                         ? configuration.GetCachedSubItem()
                                         : none});
    });
}

void MAudioPlugin::SetDefaultSettingsToCurrent(MAttribute& configuration) {
    Guarded("MAudioPlugin::SetDefaultSettingsToCurrent", [&] {
        MLocker state(stateLock);
        StoreDefaultSettings({true, configuration.HasSubItem(kDefaultSettingsItem)
                                        ? configuration.GetCachedSubItem()
                                        : configuration.AddSubItem(kDefaultSettingsItem)});
    });
}

void MAudioPlugin::StoreDefaultSettings(const MStoreVisitor& visitor) {
    visitor.Flag("AutomationCompatibilityMode", automationCompatibility, true);
    visitor.Flag("TabletMode", tabletMode, false);
}

MAudioPlugin::EditorMode MAudioPlugin::GetEditorMode() {
    return Guarded("MAudioPlugin::GetEditorMode", EditorMode::Mouse, [&] {
        MLocker state(stateLock);
        return tabletMode ? EditorMode::Tablet : EditorMode::Mouse;
    });
}
