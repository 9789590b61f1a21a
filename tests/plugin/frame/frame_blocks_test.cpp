// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "plugin/frame/frame_plugin.h"

namespace {

// Lets every factor through. The first samples of its buffers are the host's, silence follows.
struct AnyUpsampler : MUpsampler {
    void CheckFactor(int) const override {}
    int GetLatency() const override { return highQuality ? 96 / factor : 0; }
};

}  // namespace

TEST(FrameBypass, DelaysByTheReportedLatencyAndSwitchesWithoutAShift) {
    constexpr int kBlock = 50;
    constexpr int kSwitch = 8;  // the block from which on it is bypassed
    for (const int latency : {0, 1, 37, 333})
        for (const bool inPlace : {false, true}) {
            FramePlugin plugin;
            plugin.latency = latency;
            plugin.Prepare();
            EXPECT_EQ(plugin.GetReportedLatency(), latency);
            const Audio in = Noise(2, 2 * kSwitch * kBlock, 1);
            Audio half(2), out(2);
            for (const int from : {0, kSwitch * kBlock}) {
                plugin.bypassed = from > 0;
                for (std::size_t c = 0; c < 2; ++c)
                    half[c].assign(in[c].begin() + from, in[c].begin() + from + kSwitch * kBlock);
                const Audio part = plugin.Run(half, kBlock, inPlace);
                for (std::size_t c = 0; c < 2; ++c)
                    out[c].insert(out[c].end(), part[c].begin(), part[c].end());
            }
            for (std::size_t i = static_cast<std::size_t>(latency); i < in[0].size(); ++i)
                for (std::size_t c = 0; c < 2; ++c)
                    ASSERT_EQ(out[c][i], WithGuard(in[c][i - static_cast<std::size_t>(latency)]))
                        << latency << " at " << i;
        }
}

TEST(FrameBypass, ZeroesWhatHasNoInputAndKeepsWhatWaits) {
    FramePlugin plugin(2, 4);
    plugin.bypassed = 1;
    plugin.latency = 10;
    plugin.Prepare();
    HostBuffers first(2, 4, 64), second(2, 4, 64, 0.1f);
    first.Process(plugin);
    EXPECT_EQ(first.out[2], std::vector<float>(64, 0));

    plugin.latency = 12;  // two zeros behind the ten samples that wait
    plugin.Prepare();
    second.Process(plugin);
    for (std::size_t i = 0; i < 64; ++i)
        EXPECT_EQ(second.out[1][i], i < 10   ? first.in[1][54 + i]
                                    : i < 12 ? 0
                                             : second.in[1][i - 12]);
}

TEST(FrameLatency, IsToldOnceForEachChange) {
    HostDouble host;
    FramePlugin plugin;
    host.plugin = &plugin;
    plugin.hostAdapter = &host;
    for (const int latency : {0, 5, 5, 7, 0}) {
        plugin.latency = latency;
        plugin.InitProcessing();
    }
    EXPECT_EQ(host.latencies, (std::vector<int>{5, 7, 0}));
}

TEST(FrameBlocks, AreCutAndCarryTheirPositions) {
    // The limit, the host's block, how many blocks come of it and how large the last one is.
    for (const auto& [limit, whole, count, last] :
         {std::array{32, 100, 4, 4}, {32, 64, 2, 32}, {100, 100, 1, 100}, {0, 600, 3, 88}})
        for (const bool usesHostTime : {true, false}) {
            FramePlugin plugin;
            plugin.usesHostTime = usesHostTime;
            plugin.SetHostSampleRate(48000);
            plugin.Prepare();
            plugin.tempo = 90;
            plugin.position = usesHostTime ? 4 : 0;
            plugin.Cut(limit);
            HostBuffers host(2, 2, whole);
            host.Process(plugin);
            ASSERT_EQ(static_cast<int>(plugin.calls.size()), count);
            EXPECT_EQ(plugin.calls.back().sampleCount, last);
            for (int k = 0, before = 0; k < count; ++k) {
                const auto& call = plugin.calls[static_cast<std::size_t>(k)];
                EXPECT_NEAR(call.position, usesHostTime ? 4 + before * 90 / (48000 * 60.0) : 0,
                            1e-12);
                before += call.sampleCount;
            }
            EXPECT_EQ(host.out, host.in);
            EXPECT_EQ(plugin.prepared + plugin.finished, 2);
        }
}

TEST(FrameBlocks, DoNotDependOnTheirSize) {
    for (const int mode : {0, 2, 5}) {
        Audio first;
        for (const int blockSize : {1000, 1, 7, 64, 333, 4096}) {
            FramePlugin plugin;
            plugin.channelModeRequested = mode;
            plugin.latency = 77;
            plugin.gain = 0.3f;
            plugin.Prepare(4096);
            plugin.Cut(50);
            const Audio out = plugin.Run(Noise(2, 4096, 1), blockSize);
            if (first.empty()) first = out;
            EXPECT_EQ(out, first) << mode << " in blocks of " << blockSize;
        }
    }
}

TEST(FrameAutomation, RampsInStepsOfTheProtection) {
    constexpr int kBlock = 3000;
    for (const int protection : {2048, 256, 32, 8, 1}) {
        FramePlugin plugin;
        plugin.Prepare(kBlock);
        plugin.Cut(0x7fffffff, protection);
        HostBuffers host(2, 2, kBlock);
        // The first block only takes note, the third stands still.
        for (const double value : {0.25, 0.75, 0.75}) {
            plugin.SetParameter(0, value, false);
            host.Process(plugin);
        }
        const auto& calls = plugin.calls;
        ASSERT_EQ(static_cast<int>(calls.size()), 2 + (kBlock + protection - 1) / protection);
        for (std::size_t k = 1; k + 1 < calls.size(); ++k)
            ASSERT_NEAR(calls[k].value,
                        0.25 + 0.5 * static_cast<double>(k - 1) * protection / kBlock, 1e-12);
        EXPECT_EQ(calls.back().value, 0.75);

        plugin.Cut(0x7fffffff, kBlock);  // not below the block: it jumps
        plugin.SetParameter(0, 0, false);
        host.Process(plugin);
        EXPECT_EQ(calls.back().value, 0);
        EXPECT_EQ(calls.back().sampleCount, kBlock);

        plugin.Cut(100, 256);  // the smaller one holds
        plugin.SetParameter(0, 1, false);
        host.Process(plugin);
        EXPECT_EQ(calls.back().sampleCount, 100);
    }
}

TEST(FrameUpsampling, RunsTheEffectFasterAndClipsOrIsRefused) {
    FramePlugin plugin;
    plugin.Prepare();
    EXPECT_THROW(plugin.SetUpsampling(2), MException);
    EXPECT_EQ(plugin.sampleRate.load(), 44100);

    FramePlugin faster;
    faster.makeUpsampler = [] { return std::make_unique<AnyUpsampler>(); };
    faster.clipLevel = 0.25;
    faster.SetUpsampling(3);
    EXPECT_EQ(faster.sampleRate.load(), 3 * 44100);
    HostBuffers host(2, 2, 50, 1);
    host.Process(faster, false);
    EXPECT_EQ(faster.calls[0].sampleCount, 150);
    for (std::size_t i = 0; i < 50; ++i)
        EXPECT_EQ(host.out[1][i], std::clamp(0.25f + host.in[1][i], -0.25f, 0.25f));
    faster.latency = 300;
    faster.InitProcessing();
    EXPECT_EQ(faster.GetReportedLatency(), 300 / 3 + 96 / 3);
}
