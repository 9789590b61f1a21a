// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <bit>

#include "plugin/frame/frame_plugin.h"

namespace {

constexpr int kBlock = 96;
constexpr int kLatency = 20;
constexpr float kGain = 0.5f;

// What a mode makes of a pair when the effect only scales by kGain: how much of the left and the
// right comes to the left, then to the right. In the middle and the side half of both is scaled.
constexpr double kMatrix[8][4] = {
    {0.5, 0, 0, 0.5},         {0.5, 0, 0, 1},   {1, 0, 0, 0.5},    {0.75, -0.25, -0.25, 0.75},
    {0.75, 0.25, 0.25, 0.75}, {0.5, 0, 0, 0.5}, {0.5, 0, 0, -0.5}, {0.5, 0, 0, 0.5}};

}  // namespace

TEST(ChannelModes, ProcessTheirPartAndPassTheRestInTimeInBlocksOfAnySize) {
    const Audio in = Noise(2, 1200, 1);
    for (int mode = 0; mode <= 7; ++mode)
        for (const int latency : {0, kLatency}) {
            Audio first;
            for (const int blockSize : {1200, 1, 7, 64, 333}) {
                FramePlugin plugin;
                plugin.gain = kGain;
                plugin.latency = latency;
                plugin.channelModeRequested = mode;
                plugin.Prepare();
                plugin.Cut(50);
                plugin.accumulatesOutput = blockSize % 2 != 0;
                plugin.noInPlace = blockSize == 7;
                const Audio out = plugin.Run(in, blockSize, blockSize < 50);
                if (first.empty()) first = out;
                ASSERT_EQ(out, first) << mode << " in blocks of " << blockSize;
            }
            for (std::size_t i = kLatency; i < in[0].size(); ++i) {
                const std::size_t from = i - static_cast<std::size_t>(latency);
                const float left = WithGuard(in[0][from]);
                const float right = WithGuard(in[1][from]);
                const double* const m = kMatrix[mode];
                // One rounding for the halves and one for the sums of the pair.
                ASSERT_NEAR(first[0][i], m[0] * left + m[1] * right, 2e-7) << mode << " at " << i;
                ASSERT_NEAR(first[1][i], m[2] * left + m[3] * right, 2e-7) << mode << " at " << i;
                ASSERT_TRUE(mode != 1 || first[1][i] == right);
            }
        }
}

TEST(ChannelModes, SurroundShowsTheEffectTheChosenChannels) {
    constexpr int kChannels = 6;
    const Audio in = Noise(kChannels, 3 * kBlock, 1);
    for (const unsigned chosen : {0b111111u, 0b101101u, 0b000010u, 0u}) {
        FramePlugin plugin(8, 8);
        plugin.channelsPerBus = 8;
        plugin.gain = kGain;
        plugin.latency = kLatency;
        plugin.channelModeRequested = kModeSurround;
        for (std::size_t c = 0; c < 8; ++c) plugin.surroundRequested[c] = chosen >> c & 1;
        plugin.Prepare();
        plugin.SetConnectedChannels(kChannels, kChannels);
        EXPECT_EQ(plugin.GetProcessingOutputChannels(), std::popcount(chosen));
        const Audio out = plugin.Run(in, kBlock);
        for (std::size_t c = 0; c < kChannels; ++c)
            for (std::size_t i = kLatency; i < in[0].size(); ++i)
                ASSERT_EQ(out[c][i], WithGuard(in[c][i - kLatency]) * (chosen >> c & 1 ? kGain : 1))
                    << chosen << " channel " << c;
    }
}
