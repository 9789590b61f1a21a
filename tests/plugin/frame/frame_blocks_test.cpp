// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "plugin/frame/editor_double.h"
#include "plugin/frame/frame_plugin.h"

namespace {

// Lets every factor through. The first samples of its buffers are the host's, silence follows.
struct AnyUpsampler : MUpsampler {
    void CheckFactor(int) const override {}
    int GetLatency() const override { return highQuality ? 96 / factor : 0; }
};

struct KnobDouble final : ParameterListener {
    void ParameterUpdated(ParameterMainBase&) override { ++updates; }
    int updates = 0;
};

}  // namespace

// The same input comes twice, so what the first run holds back is what the second begins with.
TEST(FrameBypass, DelaysByTheReportedLatencyAndSwitchesWithoutAShift) {
    constexpr std::size_t kLength = 400;
    const Audio in = Noise(2, kLength, 1);
    for (const std::size_t latency : {0u, 1u, 37u, 333u})
        for (const bool inPlace : {false, true}) {
            FramePlugin plugin;
            plugin.latency = static_cast<int>(latency);
            plugin.Prepare();
            EXPECT_EQ(plugin.GetReportedLatency(), plugin.latency);
            const Audio processed = plugin.Run(in, 50, inPlace);
            plugin.bypassed = 1;
            const Audio bypassed = plugin.Run(in, 50, inPlace);
            for (std::size_t c = 0; c < 2; ++c)
                for (std::size_t i = 0; i < kLength; ++i) {
                    const float sample = WithGuard(in[c][(i + kLength - latency) % kLength]);
                    ASSERT_EQ(bypassed[c][i], sample) << latency << " at " << i;
                    ASSERT_EQ(processed[c][i], i < latency ? 0 : sample);
                }
        }
}

TEST(FrameBypass, ZeroesWhatHasNoInputAndKeepsWhatWaitsWhenTheLatencyChanges) {
    HostDouble host;
    FramePlugin plugin(2, 4);
    host.plugin = &plugin;
    plugin.hostAdapter = &host;
    plugin.bypassed = 1;
    HostBuffers first(2, 4, 64), second(2, 4, 64, 0.1f);
    for (const int latency : {10, 10, 12}) {  // two zeros behind the ten samples that wait
        plugin.latency = latency;
        plugin.Prepare();
        if (latency == 10) first.Process(plugin);
    }
    EXPECT_EQ(first.out[2], std::vector<float>(64, 0));
    second.Process(plugin);
    for (std::size_t i = 0; i < 64; ++i)
        EXPECT_EQ(second.out[1][i], i < 10   ? first.in[1][54 + i]
                                    : i < 12 ? 0
                                             : second.in[1][i - 12]);
    EXPECT_EQ(host.latencies, (std::vector{10, 12})) << "told once for each change";
}

TEST(FrameBlocks, AreCutByTheirLimitAndWhereAMoveCounts) {
    FramePlugin plugin;
    plugin.Prepare(100);
    HostBuffers host(2, 2, 100);
    const auto blocksOfMoveTo = [&](double value) {
        plugin.calls.clear();
        plugin.SetParameter(0, value, false);
        host.Process(plugin);
        return plugin.calls.size();
    };
    for (const auto& [limit, blocks] : {std::pair{30, 4u}, {50, 2u}, {100, 1u}, {0, 1u}}) {
        plugin.Cut(limit);
        plugin.position = 4;
        EXPECT_EQ(blocksOfMoveTo(0), blocks) << limit;
        const auto& last = plugin.calls.back();  // at two quarters a second
        EXPECT_NEAR(last.position, 4 + (100 - last.sampleCount) * 2 / 44100.0, 1e-12);
    }
    plugin.Cut(1000, 25);
    EXPECT_EQ(blocksOfMoveTo(0.5), 1) << "takes note";
    EXPECT_EQ(blocksOfMoveTo(0.5 + 0.9e-5), 1);
    EXPECT_EQ(blocksOfMoveTo(0.5 + 1.1e-5), 4) << "small ways add up";
    plugin.Cut(1000, 100);
    EXPECT_EQ(blocksOfMoveTo(0.1), 1) << "not below the block";
    EXPECT_EQ(plugin.calls[0].value, 0.1);
    plugin.Cut(1000, 25);
    plugin.RebuildAutomationTable();
    EXPECT_EQ(blocksOfMoveTo(0.7), 1) << "a new list takes note";
    plugin.Cut(20, 25);
    EXPECT_EQ(blocksOfMoveTo(0.2), 5) << "the smaller one holds";
    for (std::size_t k = 0; k < 5; ++k) {
        EXPECT_NEAR(plugin.calls[k].value, 0.7 - 0.1 * static_cast<double>(k), 1e-12);
        EXPECT_EQ(plugin.calls[k].setting, 0.2) << "a set has no effect beyond its sub-block";
    }
    plugin.Cut(1000, 25);
    plugin.number.Clear(ParameterFlag::kSmoothed);
    plugin.RebuildAutomationTable();
    for (const double value : {0.2, 0.9}) EXPECT_EQ(blocksOfMoveTo(value), 1) << "jumps";
}

TEST(FrameUpsampling, RunsTheEffectFasterAndClipsOrIsRefused) {
    FramePlugin plugin;
    EXPECT_THROW(plugin.SetUpsampling(2), MException);
    EXPECT_EQ(plugin.sampleRate.load(), 44100);

    FramePlugin faster;
    faster.makeUpsampler = [] { return std::make_unique<AnyUpsampler>(); };
    faster.clipLevel = 0.25;
    faster.latency = 300;
    faster.SetUpsampling(3);
    EXPECT_EQ(faster.sampleRate.load(), 3 * 44100);
    EXPECT_EQ(faster.GetReportedLatency(), 300 / 3 + 96 / 3);
    faster.latency = 0;
    HostBuffers host(2, 2, 50, 1);
    host.Process(faster, false);
    EXPECT_EQ(faster.calls[0].sampleCount, 150);
    for (std::size_t i = 0; i < 50; ++i)
        EXPECT_EQ(host.out[1][i], std::clamp(0.25f + host.in[1][i], -0.25f, 0.25f));
}

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
