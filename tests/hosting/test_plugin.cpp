// SPDX-License-Identifier: GPL-3.0-or-later

// The chorus in its frame behind both interfaces, with no more around it than they need.

#include "effect/chorus_entry.h"
#include "hosts/adapter/product_info.h"
#include "hosts/vst2/vst_entry.h"
#include "hosts/vst3/vst3_entry.h"
#include "plugin/effect_adapter.h"

namespace {

std::unique_ptr<MAudioPlugin> CreatePlugin() {
    auto plugin = std::make_unique<MAudioEffectPluginToAudioPluginAdapter>();
    plugin->Initialize("chorus", "Chorus", ChorusEntry);
    return plugin;
}

constexpr ProductInfo kProduct = {.name = "Test plug-in",
                                  .vendor = "Quillorea",
                                  .webAddress = "https://quillorea.invalid",
                                  .mailAddress = "mailto:nobody@quillorea.invalid",
                                  .version = "1.2.3",
                                  .versionNumber = 1203,
                                  .vst2UniqueID = 0x51746573,
                                  .vst3ClassID = {0x11111111, 0x22222222, 0x33333333, 0x44444444},
                                  .create = CreatePlugin};

}  // namespace

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED AEffect* VSTPluginMain(VstHostCallback host) { return StartVSTPlugin(host, kProduct); }

EXPORTED Steinberg::IPluginFactory* GetPluginFactory() { return GetVST3PluginFactory(kProduct); }

EXPORTED bool ModuleEntry(void*) { return true; }

EXPORTED bool ModuleExit() { return true; }
