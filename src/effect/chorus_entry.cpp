// SPDX-License-Identifier: GPL-3.0-or-later
#include "effect/chorus_entry.h"

#include "effect/fennir_audio_effect_plugin.h"

std::intptr_t ChorusEntry(MPlugin* object, int code, PluginArguments& arguments) {
    if (object == nullptr) object = new FennirAudioEffectPlugin();
    if (code == PluginCommand::kCreate) return reinterpret_cast<std::intptr_t>(object);
    return object->Dispatch(code, arguments);
}
