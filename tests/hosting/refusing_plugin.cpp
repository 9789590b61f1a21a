// SPDX-License-Identifier: GPL-3.0-or-later

// Has the entries of both interfaces and answers nothing through them.

#include <pluginterfaces/base/ipluginbase.h>

#include "hosts/vst2/vst2_interface.h"

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED AEffect* VSTPluginMain(audioMasterCallback) { return nullptr; }
EXPORTED Steinberg::IPluginFactory* GetPluginFactory() { return nullptr; }
EXPORTED bool ModuleEntry(void*) { return true; }
EXPORTED bool ModuleExit() { return true; }
