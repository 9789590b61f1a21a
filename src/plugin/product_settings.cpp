// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/product_settings.h"

#include <algorithm>

#include "foundation/module/settings_store.h"
#include "foundation/xml/store_visitor.h"
#include "plugin/band_splitter.h"
#include "plugin/frame/audio_plugin.h"

namespace {

constexpr const char* kDefaultBandCountKey = "DefaultBandCount";

template <typename Store>
void ReadSettings(const MSettingsStore* configuration, Store store) {
    MAttribute root;
    if (configuration != nullptr) configuration->CopyTo(root);
    store(MStoreVisitor{false, MAudioPlugin::DefaultSettingsOf(root)});
}

template <typename Store>
void WriteSettings(MSettingsStore* configuration, Store store) {
    if (configuration == nullptr) return;
    configuration->Change([&](MAttribute& root) {
        store(MStoreVisitor{true, MAudioPlugin::DefaultSettingsOf(root)});
    });
}

}  // namespace

bool GetGlobalSwitch(const MSettingsStore* configuration, const ProductSwitchRecord& record) {
    bool on = record.standard;
    ReadSettings(configuration, [&](const MStoreVisitor& visitor) {
        visitor.Flag(record.globalKey, on, record.standard);
    });
    return on;
}

void SetGlobalSwitch(MSettingsStore* configuration, const ProductSwitchRecord& record, bool on) {
    WriteSettings(configuration, [&](const MStoreVisitor& visitor) {
        visitor.Flag(record.globalKey, on, record.standard);
    });
}

int GetGlobalBandCount(const MSettingsStore* configuration) {
    int count = 1;
    ReadSettings(configuration, [&](const MStoreVisitor& visitor) {
        visitor.Number(kDefaultBandCountKey, count, 1);
    });
    return std::clamp(count, 1, BandSplitter::kMaxBands);
}

void SetGlobalBandCount(MSettingsStore* configuration, int count) {
    count = std::clamp(count, 1, BandSplitter::kMaxBands);
    WriteSettings(configuration, [&](const MStoreVisitor& visitor) {
        visitor.Number(kDefaultBandCountKey, count, 1);
    });
}
