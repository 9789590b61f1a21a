// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "foundation/xml/store_visitor.h"
#include "plugin/frame/frame_plugin.h"
#include "support/allocation_trap.h"

// Blocks of 512 samples while two other threads change everything that may be changed: parameters
// and bypass, rate, structure and state. The audio side allocates nothing.
inline void HammerWhileAudioRuns(MAudioPlugin& plugin, int blocks) {
    HostBuffers host(2, 2, 512);
    std::atomic<bool> done = false;
    std::thread parameters([&] {
        for (int i = 0; !done; ++i) {
            plugin.SetParameter(i % plugin.GetParameterCount(), i % 100 / 100.0, false);
            plugin.bypassed = i % 2;
        }
    });
    std::thread structure([&] {
        for (int i = 0; !done; ++i) {
            plugin.channelModeRequested = i % 8;
            plugin.agcEnabled = i / 8 % 2;
            plugin.hqUpsampling = i % 3 == 0;
            plugin.InitProcessing();
            MAttribute state;
            EXPECT_TRUE(plugin.Store({true, state}) && plugin.Store({false, state}));
            plugin.SetConnectedChannels(2, 1 + i % 2);
            plugin.SetHostSampleRate(44100 + i % 2 * 3900);
        }
    });
    for (int block = 0; block < blocks; ++block) {
        for (auto& channel : host.in) channel.assign(512, 0.5f);
        for (auto& channel : host.out) channel.assign(512, 0.25f);
        AllocationTrap trap("ProcessAudio");
        host.Process(plugin, block % 3 != 0);
    }
    done = true;
    parameters.join();
    structure.join();
}
