// SPDX-License-Identifier: GPL-3.0-or-later

// Has the entries of both interfaces and answers nothing through them.

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED void* VSTPluginMain(void*) { return nullptr; }
EXPORTED void* GetPluginFactory() { return nullptr; }
EXPORTED bool ModuleEntry(void*) { return true; }
EXPORTED bool ModuleExit() { return true; }
