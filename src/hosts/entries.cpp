// SPDX-License-Identifier: GPL-3.0-or-later

// The library's exported functions. They stand in the shared object itself, since the linker takes
// nothing that nobody references from an archive, and hides what it takes.

#include <cstdint>
#include <memory>

#include "effect/chorus_entry.h"
#include "hosts/adapter/product_info.h"
#include "hosts/vst2/vst_entry.h"
#include "hosts/vst3/vst3_entry.h"
#include "plugin/effect_adapter.h"

namespace {

std::unique_ptr<MAudioPlugin> CreateChorus() {
    auto plugin = std::make_unique<MAudioEffectPluginToAudioPluginAdapter>();
    plugin->Initialize("Quillorea", "Quillorea", ChorusEntry);
    return plugin;
}

const ProductInfo kProduct = {
    .name = "Quillorea",
    .vendor = "Quillorea",
    .webAddress = "https://quillorea.invalid",
    .mailAddress = "mailto:nobody@quillorea.invalid",
    .version = QUILLOREA_VERSION,
    .versionNumber = 100,
    .vst2UniqueID = 0x516c7261,  // "Qlra"
    .vst3ClassID = {0x7c1f5a3e, 0x94d24b08, 0xa6e3d715, 0x2b90c84f},
    .create = CreateChorus,
};

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

// VST 3's entry and exit of the library, by two names, as often as a host likes. What there is to
// start is started by the first instance, and stays.
bool ModuleEntry(void*) { return true; }
bool ModuleExit() { return true; }
bool InitDll() { return true; }
bool ExitDll() { return true; }

Steinberg::IPluginFactory* GetPluginFactory() { return GetVST3PluginFactory(kProduct); }

// VST 2; `main` is another name for it.
AEffect* VSTPluginMain(VstHostCallback hostCallback) {
    return StartVSTPlugin(hostCallback, kProduct);
}

// The effect's entry for a frame in another library: a PluginEntry.
std::intptr_t FennirAudioEffectPluginInterface(MPlugin* object, int code,
                                               PluginArguments& arguments) {
    return ChorusEntry(object, code, arguments);
}

}  // extern "C"
#pragma GCC visibility pop
