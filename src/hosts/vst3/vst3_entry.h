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
