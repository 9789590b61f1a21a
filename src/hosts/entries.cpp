// SPDX-License-Identifier: GPL-3.0-or-later

// The library's exported functions. They stand in the shared object itself, since the linker takes
// nothing that nobody references from an archive, and hides what it takes.

#include <cstdint>

#include "effect/chorus_entry.h"

// The effect's entry for a frame in another library: a PluginEntry.
extern "C" __attribute__((visibility("default"))) std::intptr_t FennirAudioEffectPluginInterface(
    MPlugin* object, int code, PluginArguments& arguments) {
    return ChorusEntry(object, code, arguments);
}
