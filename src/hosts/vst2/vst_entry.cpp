// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosts/vst2/vst_entry.h"

#include <new>
#include <utility>

#include "foundation/objects/guarded.h"
#include "hosts/vst2/audio_plugin_vst_adapter.h"

namespace {

std::unique_ptr<MAudioPluginVSTAdapter> MakeAdapter(VstHostCallback hostCallback,
                                                    const ProductInfo& product) {
    try {
        std::unique_ptr<MAudioPlugin> plugin = product.create();
        if (plugin != nullptr)
            return std::make_unique<MAudioPluginVSTAdapter>(hostCallback, product,
                                                            std::move(plugin));
    } catch (const std::bad_alloc&) {
    }
    throw MException("Error creating Vst plugin object.");
}

}  // namespace

MAudioPluginVSTAdapter* CreateVSTPlugin(VstHostCallback hostCallback, const ProductInfo& product) {
    return Guarded("VST Plugin main", static_cast<MAudioPluginVSTAdapter*>(nullptr),
                   [&] { return MakeAdapter(hostCallback, product).release(); });
}

AEffect* StartVSTPlugin(VstHostCallback hostCallback, const ProductInfo& product) {
    if (hostCallback == nullptr || hostCallback(nullptr, audioMasterVersion, 0, 0, nullptr, 0) == 0)
        return nullptr;
    MAudioPluginVSTAdapter* const adapter = CreateVSTPlugin(hostCallback, product);
    return adapter != nullptr ? adapter->getAeffect() : nullptr;
}
