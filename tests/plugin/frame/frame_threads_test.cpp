// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "plugin/frame/editor_double.h"
#include "plugin/frame/frame_plugin.h"

namespace {

struct KnobDouble final : ParameterListener {
    void ParameterUpdated(ParameterMainBase&) override { ++updates; }
    int updates = 0;
};

}  // namespace

TEST(FrameEditor, FollowsParametersOnItsOwnThread) {
    EditorDouble factory;
    KnobDouble knob;
    FramePlugin plugin;
    EXPECT_FALSE(plugin.CreateEditor(nullptr, nullptr)) << "nobody makes editors";
    plugin.editorFactory = &factory;
    EXPECT_FALSE(plugin.CreateEditor(nullptr, nullptr)) << "no user interface to be had";
    factory.available = true;
    for (int call = 0; call < 2; ++call) EXPECT_TRUE(plugin.CreateEditor(nullptr, nullptr));
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
    for (int call = 0; call < 2; ++call) plugin.DestroyEditor();
    EXPECT_EQ(factory.destroyed, 1);
}
