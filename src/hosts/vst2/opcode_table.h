// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <span>

#include "hosts/vst2/vst2_interface.h"

// What a host says with an opcode; each uses some of it.
struct VstCall {
    char* Text() const { return static_cast<char*>(pointer); }

    int opcode = 0;
    int index = 0;
    VstIntPtr value = 0;
    void* pointer = nullptr;
    float option = 0;
};

// What an effect does at an opcode.
template <typename Effect>
struct OpcodeHandler {
    int opcode;
    VstIntPtr (*run)(Effect& effect, const VstCall& call);
};

// Null where the table does not have the opcode.
template <typename Effect>
const OpcodeHandler<Effect>* FindHandler(std::span<const OpcodeHandler<Effect>> table, int opcode) {
    for (const OpcodeHandler<Effect>& handler : table)
        if (handler.opcode == opcode) return &handler;
    return nullptr;
}
