// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "plugin/frame/frame_plugin.h"

// Buffers that stand for several channels, and buses beside the first one.

namespace {

constexpr int kBlock = 96;
constexpr std::size_t kLatency = 20;
constexpr float kGain = 0.5f;

struct ScalingPlugin : FramePlugin {
    ScalingPlugin(std::size_t pins, int mode) : FramePlugin(pins, pins) {
        gain = kGain;
        latency = kLatency;
        channelModeRequested = mode;
        Prepare();
    }
};

}  // namespace

TEST(FrameBuses, AMonoBusBehindStereoOnesStaysWhole) {
    for (const auto& [mode, second] : {std::pair{1, 1.0f}, {3, kGain}, {5, kGain}})
        for (const std::size_t before : {0u, 2u, 4u}) {
            ScalingPlugin plugin(before + 2, mode);
            const int channels = static_cast<int>(before) + 2;
            HostBuffers host(channels - 1, channels, kBlock);
            host.Process(plugin);
            const float sample = host.in[before][9];
            EXPECT_EQ(host.out[before][9 + kLatency], kGain * sample) << mode;
            EXPECT_EQ(host.out[before + 1][9 + kLatency], second * sample) << mode;
        }
}

TEST(FrameBuses, OneChannelInPlaceIsReadForBoth) {
    for (const bool bypassed : {false, true}) {
        ScalingPlugin plugin(2, kModeLeftRight);
        plugin.bypassed = bypassed;
        HostBuffers host(1, 2, kBlock);
        const float sample = WithGuard(host.in[0][7]);
        host.Output(0) = host.Input(0);
        host.Process(plugin);
        EXPECT_EQ(host.in[0][7 + kLatency], bypassed ? sample : kGain * sample);
        EXPECT_EQ(host.out[1], host.in[0]);
    }
}

TEST(FrameBuses, TheGainTakesASharedBufferOnceAndGetsOverInfinity) {
    std::vector<float> quiet(480, 1e-6f);  // the gain goes from 0 to 1
    float* const both[] = {quiet.data(), quiet.data()};
    MGainCompensator compensator;
    compensator.Prepare(48000, 2, 0);
    compensator.Apply(both, 480, 2);
    EXPECT_NEAR(quiet[240], 0.5e-6, 1e-12);

    quiet[0] = std::numeric_limits<float>::infinity();  // as the sum of two loud channels
    compensator.Apply(both, 480, 2);
    quiet.assign(480, 1e-6f);
    compensator.Apply(both, 480, 2);
    EXPECT_EQ(compensator.Gain(), 1);
}
