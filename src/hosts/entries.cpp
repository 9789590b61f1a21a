// SPDX-License-Identifier: GPL-3.0-or-later

// The library's exported functions. They stand in the shared object itself, since the linker takes
// nothing that nobody references from an archive, and hides what it takes. main is made of
// VSTPluginMain by the linker, since the language reserves its name.

#include <cstdint>

#include "effect/chorus_entry.h"
#include "foundation/objects/guarded.h"
#include "hosts/startup/product.h"
#include "hosts/startup/startup.h"
#include "hosts/vst2/vst_entry.h"
#include "hosts/vst3/vst3_entry.h"
#include "plugin/contract/plugin.h"

#pragma GCC visibility push(default)
extern "C" {

// VST 2: a new plug-in's effect structure, null where there is none to be had.
AEffect* VSTPluginMain(VstHostCallback hostCallback) {
    return StartVSTPlugin(hostCallback, kProduct);
}

// VST 3: an IPluginFactory3 with a reference for the caller.
Steinberg::IPluginFactory* GetPluginFactory() { return GetVST3PluginFactory(kProduct); }

// VST 3's entry and exit of the library, by two names, as often as a host likes. What there is to
// start is started by the first instance, and stays.
bool ModuleEntry(void*) { return true; }
bool ModuleExit() { return true; }
bool InitDll() { return true; }
bool ExitDll() { return true; }

// The effect's entry for a frame in another library: a PluginEntry. Null where there is no effect
// to be had, and -1 for what fails.
std::intptr_t FennirAudioEffectPluginInterface(MPlugin* object, int code,
                                               PluginArguments& arguments) {
    const std::intptr_t failed = code == PluginCommand::kCreate ? 0 : -1;
    return Guarded("FennirAudioEffectPluginInterface", failed,
                   [&] { return ChorusEntry(object, code, arguments); });
}

// For a sibling library that loads this one: a LibraryEntry.
MModule* LattenkitDLLInitialize(const LibraryContext* context) {
    return EnterLattenkitLibrary(context);
}

}  // extern "C"
#pragma GCC visibility pop
