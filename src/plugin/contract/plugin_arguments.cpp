// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/contract/plugin_arguments.h"

using Kind = PluginArgument::Kind;

std::int64_t PluginArguments::Integer(int slot) const {
    const PluginArgument& argument = slots[static_cast<std::size_t>(slot)];
    return argument.kind == Kind::Integer ? argument.integer : 0;
}

double PluginArguments::Number(int slot) const {
    const PluginArgument& argument = slots[static_cast<std::size_t>(slot)];
    return argument.kind == Kind::Number ? argument.number : 0.0;
}

MObject* PluginArguments::Object(int slot) const {
    const PluginArgument& argument = slots[static_cast<std::size_t>(slot)];
    return argument.kind == Kind::OwnedObject ? argument.object : nullptr;
}

void* PluginArguments::RawPointer(int slot) const {
    const PluginArgument& argument = slots[static_cast<std::size_t>(slot)];
    return argument.kind == Kind::Pointer ? argument.pointer : nullptr;
}

void PluginArguments::DeleteOwnedObjects() {
    for (PluginArgument& argument : slots) {
        if (argument.kind != Kind::OwnedObject) continue;
        delete argument.object;
        argument = PluginArgument();
    }
}

void PluginArguments::Put(PluginArgument& slot, double number) {
    slot.kind = Kind::Number;
    slot.number = number;
}

void PluginArguments::Put(PluginArgument& slot, std::int64_t integer) {
    slot.kind = Kind::Integer;
    slot.integer = integer;
}

void PluginArguments::Put(PluginArgument& slot, std::unique_ptr<MObject> object) {
    slot.kind = Kind::OwnedObject;
    slot.object = object.release();
}
