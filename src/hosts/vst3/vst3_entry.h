// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Where a VST 3 host comes in, for the exported functions.

struct ProductInfo;

namespace Steinberg {
class IPluginFactory;
}

// What the module's GetPluginFactory answers, with a reference for the caller: the same object as
// long as anybody holds it. Any thread. Null without memory; nothing gets out. product lives as
// long as the process.
Steinberg::IPluginFactory* GetVST3PluginFactory(const ProductInfo& product);

// ModuleEntry and InitDll, ModuleExit and ExitDll: hosts call them as often as they like, and some
// not at all. What a process needs is made with its first instance and stays.
inline bool EnterVST3Module() { return true; }
inline bool ExitVST3Module() { return true; }
