// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

// Where a VST 2 host comes in, for the exported functions.

struct AEffect;
struct ProductInfo;
class MAudioPluginVSTAdapter;

// The host's function: effect, opcode, index, value, pointer, option.
using VstHostCallback = std::intptr_t (*)(AEffect*, int, int, std::intptr_t, void*, float);

// A new plug-in for the host, which the host deletes with its effClose; null where there is none
// to be had. Any thread. Nothing gets out: without memory the error is "Error creating Vst plugin
// object.".
MAudioPluginVSTAdapter* CreateVSTPlugin(VstHostCallback hostCallback, const ProductInfo& product);

// What the library's VSTPluginMain answers: the effect of a new plug-in. Null too for a host that
// has no version.
AEffect* StartVSTPlugin(VstHostCallback hostCallback, const ProductInfo& product);
