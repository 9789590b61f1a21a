// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosts/vst3/vst3_entry.h"

#include "hosts/vst3/vst3_plugin_factory.h"

Steinberg::IPluginFactory* GetVST3PluginFactory(const ProductInfo& product) {
    return MVST3PluginFactory::Get(product);
}
