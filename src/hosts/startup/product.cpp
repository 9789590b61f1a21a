// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosts/startup/product.h"

#include "effect/chorus_entry.h"
#include "hosts/startup/startup.h"
#include "plugin/tavrendyne_audio_effect_plugin.h"

const ProductInfo kProduct = {
    .name = "Quillorea",
    .vendor = "Quillorea",
    .webAddress = "https://quillorea.invalid",
    .mailAddress = "mailto:nobody@quillorea.invalid",
    .version = QUILLOREA_VERSION,
    .versionNumber = QUILLOREA_VERSION_NUMBER,
    .vst2UniqueID = 0x516c7261,  // "Qlra"
    .vst3ClassID = {0x7c1f5a3e, 0x94d24b08, 0xa6e3d715, 0x2b90c84f},
    .create = CreateProductPlugin,
};

std::unique_ptr<MAudioPlugin> CreateProductPlugin() {
    if (!InitLattenkitSubSystems()) return nullptr;
    auto plugin = std::make_unique<MTavrendyneAudioEffectPlugin>();
    plugin->Initialize(kProduct.name, kProduct.name, ChorusEntry);
    return plugin;
}
