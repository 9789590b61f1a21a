// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "foundation/objects/event_processor.h"
#include "plugin/frame/editor_factory.h"
#include "plugin/frame/frame_plugin.h"
#include "support/allocation_trap.h"

class MAudioPlugin::MEditor {};

namespace {

// A user interface of one editor at most.
struct EditorDouble : MEditorFactory {
    bool HasGUI() override { return made; }
    bool InitializeGUI() override { return made = available; }
    MEventProcessor& Events() override { return events; }
    void RaisePendingEvents() override { ++raised; }
    MAudioPlugin::MEditor* MakeEditor(MAudioPlugin&, void*, MStyle*) override { return &editor; }
    void LayOut(MAudioPlugin::MEditor&) override { ++layouts; }
    void Resize(MAudioPlugin::MEditor&, EditorSize) override {}
    void Destroy(MAudioPlugin::MEditor*) override { ++destroyed; }

    bool available = false;
    std::atomic<bool> made = false;
    std::atomic<int> raised = 0;
    int layouts = 0, destroyed = 0;
    MEventProcessor events;
    MAudioPlugin::MEditor editor;
};

struct KnobDouble final : ParameterListener {
    void ParameterUpdated(ParameterMainBase&) override { ++updates; }
    int updates = 0;
};

}  // namespace

TEST(FrameThreads, EverythingMayChangeWhileAudioRuns) {
    FramePlugin plugin;
    plugin.calls = {};  // nothing is written down
    plugin.agcEnabled = 1;
    plugin.Prepare(512);
    plugin.Cut(0x7fffffff, 32);
    HostBuffers host(2, 2, 512);
    host.Process(plugin);  // the test's own effect takes its lines

    std::atomic<bool> done = false;
    std::thread parameters([&] {
        for (int i = 0; !done; ++i) {
            plugin.SetParameter(0, i % 100 / 100.0, false);
            plugin.bypassed = i % 2;
        }
    });
    std::thread structure([&] {
        for (int i = 0; !done; ++i) {
            plugin.channelModeRequested = i % 8;
            plugin.agcEnabled = i / 8 % 2;
            plugin.InitProcessing();
            plugin.SetConnectedChannels(2, 1 + i % 2);
            plugin.SetHostSampleRate(44100 + i % 2 * 3900);
        }
    });
    for (int block = 0; block < 3000; ++block) {
        for (auto& channel : host.in) channel.assign(512, 0.5f);
        for (auto& channel : host.out) channel.assign(512, 0.25f);
        AllocationTrap trap("ProcessAudio");
        host.Process(plugin, block % 3 != 0);
    }
    done = true;
    parameters.join();
    structure.join();
    EXPECT_EQ(plugin.GetClearCount(), 0);
    EXPECT_EQ(plugin.processingDisabled.load(), 0);
}

TEST(FrameEditor, FollowsParametersOnItsOwnThread) {
    EditorDouble factory;
    KnobDouble knob;
    FramePlugin plugin;
    EXPECT_FALSE(plugin.CreateEditor(nullptr, nullptr));  // nobody makes editors
    plugin.editorFactory = &factory;
    EXPECT_FALSE(plugin.CreateEditor(nullptr, nullptr));  // no user interface to be had
    factory.available = true;
    EXPECT_TRUE(plugin.CreateEditor(nullptr, nullptr));
    EXPECT_TRUE(plugin.CreateEditor(nullptr, nullptr));
    EXPECT_EQ(factory.layouts, 1);

    plugin.Number().listener = &knob;
    for (int round = 1; round <= 2; ++round) {
        plugin.SetParameter(0, 0.1 * round, false);
        plugin.SetParameter(0, 0.5, false);
        for (int i = 0; i < 500 && factory.raised < round; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        EXPECT_EQ(knob.updates, round - 1);
        factory.events.Process();
        EXPECT_EQ(knob.updates, round);
    }
    plugin.DestroyEditor();
    plugin.DestroyEditor();
    EXPECT_EQ(factory.destroyed, 1);
}
