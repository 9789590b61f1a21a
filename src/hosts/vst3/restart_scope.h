// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "hosts/vst3/audio_plugin_vst3_adapter.h"

// While the host itself changes something, what it has to be told waits for the end of its call,
// and is one call then.
class MAudioPluginVST3Adapter::RestartScope {
public:
    // Of what the plug-in asks for, the host gets the flags that it does not look after by itself.
    RestartScope(MAudioPluginVST3Adapter& adapter, int32 known) : adapter(adapter), known(known) {
        adapter.restartScopes.fetch_add(1);
    }
    RestartScope(const RestartScope&) = delete;
    RestartScope& operator=(const RestartScope&) = delete;
    ~RestartScope() {
        if (adapter.restartScopes.fetch_sub(1) != 1) return;
        adapter.TellRestart(adapter.collectedRestart.exchange(0) & ~known);
    }

private:
    MAudioPluginVST3Adapter& adapter;
    const int32 known;
};
