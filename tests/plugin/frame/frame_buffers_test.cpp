// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <bit>
#include <thread>

#include "plugin/frame/frame_plugin.h"

namespace {

constexpr int kBlock = 64;

constexpr int kLatency = 20;
constexpr float kGain = 0.5f;

// What a mode makes of a pair when the effect only scales by kGain: how much of the left and the
// right comes to the left, then to the right. In the middle and the side half of both is scaled.
constexpr double kMatrix[8][4] = {
    {0.5, 0, 0, 0.5},         {0.5, 0, 0, 1},   {1, 0, 0, 0.5},    {0.75, -0.25, -0.25, 0.75},
    {0.75, 0.25, 0.25, 0.75}, {0.5, 0, 0, 0.5}, {0.5, 0, 0, -0.5}, {0.5, 0, 0, 0.5}};

}  // namespace

TEST(FrameBuffers, MissingChannelsAreRepaired) {
    // The host's word, and what of the only channel comes to the second one.
    for (const auto& [connected, mode, share] : {std::tuple{-1, kModeLeftRight, 0.5f},
                                                 {2, kModeLeftRight, 0.5f},
                                                 {1, kModeLeftRight, 0.0f},
                                                 {2, kModeLeft, 1.0f},
                                                 {2, kModeMono, 0.5f}}) {
        FramePlugin plugin(4, 2);
        plugin.gain = 0.5f;
        plugin.channelModeRequested = mode;
        plugin.Prepare();
        plugin.SetConnectedChannels(connected, 2);
        HostBuffers host(1, 2, kBlock);
        host.Process(plugin);
        for (std::size_t i = 0; i < kBlock; ++i) {
            EXPECT_EQ(host.out[0][i], 0.5f * host.in[0][i]);  // by now the input has its guard
            EXPECT_EQ(host.out[1][i], share > 0 ? share * host.in[0][i] : 0.5f * kDenormalGuard);
        }
        ASSERT_NE(host.Input(2), nullptr);  // the side-chain
        EXPECT_EQ(*std::max_element(host.Input(2), host.Input(2) + kBlock), kDenormalGuard);
    }
}

TEST(FrameBuffers, WithoutAnOutputAnInputOrALeaveNothingIsProcessed) {
    FramePlugin plugin;
    plugin.Prepare();
    HostBuffers host(2, 2, kBlock), disabled(2, 2, kBlock), empty(0, 2, kBlock);
    const Audio before = host.in;
    host.Output(0) = nullptr;
    host.Process(plugin);
    EXPECT_EQ(host.in, before);

    plugin.SetConnectedChannels(0, 2);  // null pointers stay: nothing may be read through them
    empty.Process(plugin);
    EXPECT_EQ(empty.out, Silence(2, kBlock));

    plugin.processingDisabled = 1;
    MLocker lock(plugin.processLock);  // nobody waits for it
    std::thread([&] { disabled.Process(plugin); }).join();
    EXPECT_EQ(disabled.out, Silence(2, kBlock));
    EXPECT_TRUE(plugin.calls.empty());
}

TEST(FrameBuffers, AddingGivesWhatReplacingGives) {
    for (const int mode : {0, 1, 5})
        for (const int flags : {0, 1, 2, 3}) {
            FramePlugin plugin;
            plugin.channelModeRequested = mode;
            plugin.accumulatesOutput = flags & 1;
            plugin.bypassed = flags & 2;
            plugin.gain = 0.5f;
            plugin.Prepare();
            HostBuffers replaced(2, 2, kBlock), added(2, 2, kBlock);
            replaced.Process(plugin);
            added.Process(plugin, false);
            for (auto& channel : replaced.out)
                for (float& sample : channel) sample += 0.25f;
            EXPECT_EQ(added.out, replaced.out) << mode << " flags " << flags;
        }
}

TEST(FrameBuffers, NeitherExceptionsNorBadNumbersGetThrough) {
    FramePlugin plugin;
    plugin.Prepare();
    HostBuffers host(2, 2, kBlock);
    host.in[0][3] = std::numeric_limits<float>::quiet_NaN();
    host.in[1][5] = -std::numeric_limits<float>::infinity();
    plugin.throwing = true;
    const unsigned before = _mm_getcsr();
    host.Process(plugin);
    EXPECT_EQ(plugin.controlWord & 0x8040, 0x8040u);  // subnormal results and operands are zero
    EXPECT_EQ(_mm_getcsr(), before);
    EXPECT_EQ(host.out, Constant(2, kBlock, 0.25f));
    plugin.throwing = false;
    std::thread([&] { host.Process(plugin); }).join();  // the lock was released
    EXPECT_EQ(host.out, host.in);
    EXPECT_EQ(host.out[0][3], 2 * kDenormalGuard);  // guarded twice
    EXPECT_EQ(plugin.GetNonFiniteInputCount(), 2);

    plugin.Cut(16);
    plugin.failingCall = 3;  // the second sub-block from here
    host.Process(plugin);
    for (std::size_t i = 0; i < kBlock; ++i)
        EXPECT_EQ(host.out[1][i], i >= 16 && i < 32 ? 0 : host.in[1][i]);
    EXPECT_EQ(plugin.clearCalls, 1);
    EXPECT_EQ(plugin.GetClearCount(), 1);
}

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
    for (const auto& [channels, chosen] : {std::pair{6, 0b111111u},
                                           {6, 0b101101u},
                                           {6, 0b000010u},
                                           {6, 0u},
                                           {2, 0u},
                                           {2, 1u},
                                           {2, 2u},
                                           {2, 3u}}) {
        const std::size_t pins = channels == 2 ? 2 : 8;
        const Audio in = Noise(channels, 3 * kBlock, 1);
        FramePlugin plugin(pins, pins);
        plugin.channelsPerBus = static_cast<int>(pins);
        plugin.gain = kGain;
        plugin.latency = kLatency;
        plugin.channelModeRequested = kModeSurround;
        for (std::size_t c = 0; c < 8; ++c) plugin.surroundRequested[c] = chosen >> c & 1;
        plugin.Prepare();
        plugin.SetConnectedChannels(channels, channels);
        EXPECT_EQ(plugin.GetProcessingOutputChannels(), std::popcount(chosen));
        const Audio out = plugin.Run(in, kBlock);
        for (std::size_t c = 0; c < in.size(); ++c)
            for (std::size_t i = kLatency; i < in[0].size(); ++i)
                ASSERT_EQ(out[c][i], WithGuard(in[c][i - kLatency]) * (chosen >> c & 1 ? kGain : 1))
                    << chosen << " channel " << c;
    }
}
