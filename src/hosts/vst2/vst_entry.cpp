// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosts/vst2/vst_entry.h"

#include <utility>

#include "foundation/objects/guarded.h"
#include "hosts/adapter/make_adapter.h"
#include "hosts/vst2/audio_plugin_vst_adapter.h"

MAudioPluginVSTAdapter* CreateVSTPlugin(VstHostCallback hostCallback, const ProductInfo& product) {
    return Guarded("VST Plugin main", static_cast<MAudioPluginVSTAdapter*>(nullptr), [&] {
        return MakeAdapter(product, [&](std::unique_ptr<MAudioPlugin> plugin) {
            return new MAudioPluginVSTAdapter(hostCallback, product, std::move(plugin));
        });
    });
}

AEffect* StartVSTPlugin(VstHostCallback hostCallback, const ProductInfo& product) {
    if (hostCallback == nullptr || hostCallback(nullptr, audioMasterVersion, 0, 0, nullptr, 0) == 0)
        return nullptr;
    MAudioPluginVSTAdapter* const adapter = CreateVSTPlugin(hostCallback, product);
    return adapter != nullptr ? adapter->getAeffect() : nullptr;
}
