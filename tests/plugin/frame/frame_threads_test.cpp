// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "foundation/objects/event_processor.h"
#include "plugin/frame/editor_factory.h"
#include "plugin/frame/frame_plugin.h"
#include "plugin/frame/guarded.h"
#include "support/allocation_trap.h"

class MAudioPlugin::MEditor {
public:
    EditorSize size;
};

namespace {

// A user interface of one editor at most.
class EditorDouble : public MEditorFactory {
public:
    bool HasGUI() override { return made; }
    bool InitializeGUI() override { return made = available.load(); }
    MEventProcessor& Events() override { return events; }
    void RaisePendingEvents() override { ++raised; }
    MAudioPlugin::MEditor* MakeEditor(MAudioPlugin&, void*, MStyle*) override {
        return &(*editor = {});
    }
    void LayOut(MAudioPlugin::MEditor&) override { ++layouts; }
    void Resize(MAudioPlugin::MEditor& resized, EditorSize size) override { resized.size = size; }
    void Destroy(MAudioPlugin::MEditor*) override { ++destroyed; }

    std::atomic<bool> available = false;
    std::atomic<bool> made = false;
    std::atomic<int> raised = 0;
    int layouts = 0;
    int destroyed = 0;
    MEventProcessor events;
    std::unique_ptr<MAudioPlugin::MEditor> editor = std::make_unique<MAudioPlugin::MEditor>();
};

void WaitFor(const std::function<bool()>& isTrue) {
    for (int i = 0; i < 500 && !isTrue(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_TRUE(isTrue());
}

}  // namespace

TEST(FrameThreads, EverythingMayChangeWhileAudioRuns) {
    FramePlugin plugin;
    plugin.agcEnabled = 1;
    plugin.calls.shrink_to_fit();
    plugin.Prepare(512);
    plugin.Cut(0x7fffffff, 32);
    HostBuffers host(2, 2, 512);
    host.Process(plugin);  // the test's own effect takes its lines

    std::atomic<bool> done = false;
    std::thread parameters([&] {
        for (int i = 0; !done; ++i) {
            plugin.SetParameter(0, i % 100 / 100.0, false);
            plugin.NeedUpdateEditor(*plugin.number);
            plugin.bypassed = i % 2;
            (void)plugin.GetReportedLatency();
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
    {
        AllocationTrap trap("ProcessAudio");
        for (int block = 0; block < 3000; ++block) {
            host.Process(plugin, block % 3 != 0);
            for (std::size_t c = 0; c < 2; ++c) {
                std::fill(host.in[c].begin(), host.in[c].end(), 0.5f);
                std::fill(host.out[c].begin(), host.out[c].end(), 0.25f);
            }
        }
    }
    done = true;
    parameters.join();
    structure.join();
    EXPECT_EQ(plugin.GetClearCount(), 0);
    EXPECT_EQ(plugin.processingDisabled, 0);
}

TEST(FrameEditor, FollowsParametersOnItsOwnThread) {
    EditorDouble factory;
    FramePlugin plugin;
    EXPECT_FALSE(plugin.CreateEditor(nullptr, nullptr));  // nobody makes editors
    plugin.editorFactory = &factory;
    EXPECT_FALSE(plugin.CreateEditor(nullptr, nullptr));  // no user interface to be had
    factory.available = true;
    EXPECT_TRUE(plugin.CreateEditor(nullptr, nullptr));
    EXPECT_TRUE(plugin.CreateEditor(nullptr, nullptr));
    EXPECT_EQ(factory.layouts, 1);

    plugin.NeedUpdateEditor(*plugin.number);
    plugin.NeedUpdateEditor(*plugin.number);
    WaitFor([&] { return factory.raised > 0; });
    EXPECT_EQ(plugin.number->editorUpdates, 0);
    factory.events.Process();
    EXPECT_EQ(plugin.number->editorUpdates, 1);
    plugin.NeedUpdateEditor(*plugin.number);
    WaitFor([&] { return factory.raised > 1; });
    factory.events.Process();
    EXPECT_EQ(plugin.number->editorUpdates, 2);

    plugin.DestroyEditor();
    plugin.DestroyEditor();
    EXPECT_EQ(factory.destroyed, 1);
}

TEST(FrameGuard, LetsNothingOutAndAnswersNeutrally) {
    EXPECT_EQ(Guarded("Class::Method", 7, []() -> int { throw MException("quiet"); }), 7);
    EXPECT_EQ(Guarded("Class::Method", 7, []() -> int { throw 1; }), 7);
    EXPECT_EQ(Guarded("Class::Method", 7, [] { return 8; }), 8);
    Guarded("Class::Method", [] { throw std::bad_alloc(); });
}
