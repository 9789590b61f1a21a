// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "plugin/frame/frame_plugin.h"

namespace {

constexpr int kBlock = 96;
constexpr int kLatency = 20;
constexpr float kGain = 0.5f;

struct Pair {
    double left, right;
};

// What a mode makes of a sample and of the one that is later by the latency, when the effect does
// nothing but scale.
Pair Expected(int mode, Pair in) {
    const double mid = (in.left + in.right) / 2;
    const double side = (in.left - in.right) / 2;
    switch (mode) {
        case 1:
            return {kGain * in.left, in.right};
        case 2:
            return {in.left, kGain * in.right};
        case 3:
            return {kGain * mid + side, kGain * mid - side};
        case 4:
            return {mid + kGain * side, mid - kGain * side};
        case 6:
            return {kGain * in.left, -kGain * in.right};
        default:
            return {kGain * in.left, kGain * in.right};
    }
}

}  // namespace

TEST(ChannelModes, ProcessTheirPartAndPassTheRestInTime) {
    for (int mode = 0; mode <= 7; ++mode)
        for (const bool inPlace : {false, true})
            for (const int latency : {0, kLatency}) {
                FramePlugin plugin;
                plugin.gain = kGain;
                plugin.latency = latency;
                plugin.channelModeRequested = mode;
                plugin.Prepare();
                const Audio in = Noise(2, 4 * kBlock, 1);
                const Audio out = plugin.Run(in, 2, kBlock, inPlace);
                for (std::size_t i = kLatency; i < in[0].size(); ++i) {
                    const std::size_t from = i - static_cast<std::size_t>(latency);
                    const Pair expected =
                        Expected(mode, {Guarded1(in[0][from]), Guarded1(in[1][from])});
                    // One rounding for the halves and one for the sums of the pair.
                    ASSERT_NEAR(out[0][i], expected.left, 2e-7) << mode << " at " << i;
                    ASSERT_NEAR(out[1][i], expected.right, 2e-7) << mode << " at " << i;
                }
                if (mode != 1) continue;  // what a single mode leaves out is not touched at all
                EXPECT_EQ(out[1][200], Guarded1(in[1][200 - static_cast<std::size_t>(latency)]));
            }
}

TEST(ChannelModes, APairThatIsOneBufferStaysWhole) {
    for (const int mode : {1, 3}) {
        FramePlugin plugin;
        plugin.gain = kGain;
        plugin.channelModeRequested = mode;
        plugin.Prepare();
        HostBuffers host(1, 2, kBlock);
        host.Process(plugin);
        EXPECT_EQ(host.out[0][9], kGain * host.in[0][9]);
        EXPECT_EQ(host.out[1][9], (mode == 1 ? 1 : kGain) * host.in[0][9]);
    }
}

TEST(ChannelModes, SurroundShowsTheEffectTheChosenChannels) {
    constexpr int kChannels = 6;
    for (const int chosenBits : {0b111111, 0b101101, 0b000010, 0}) {
        FramePlugin plugin(8, 8);
        plugin.channelsPerBus = 8;
        plugin.gain = kGain;
        plugin.latency = kLatency;
        plugin.channelModeRequested = kModeSurround;
        for (int c = 0; c < 8; ++c)
            plugin.surroundRequested[static_cast<std::size_t>(c)] = chosenBits >> c & 1;
        plugin.Prepare();
        plugin.SetConnectedChannels(kChannels, kChannels);
        EXPECT_EQ(plugin.GetProcessingOutputChannels(), __builtin_popcount(chosenBits));
        const Audio in = Noise(kChannels, 3 * kBlock, 1);
        const Audio out = plugin.Run(in, kChannels, kBlock);
        for (std::size_t c = 0; c < kChannels; ++c)
            for (std::size_t i = kLatency; i < in[0].size(); ++i)
                ASSERT_EQ(out[c][i],
                          Guarded1(in[c][i - kLatency]) * (chosenBits >> c & 1 ? kGain : 1))
                    << chosenBits << " channel " << c;
    }
}

TEST(ChannelModes, TakeTheChannelsThatTheirTableTells) {
    struct Case {
        int mode, connected, processing, host;
    };
    for (const Case& each : {Case{0, -1, 2, 2}, Case{0, 1, 1, 1}, Case{0, 6, 2, 2},
                             Case{3, 2, 1, 2}, Case{5, 2, 2, 2}, Case{7, 6, 6, 6}}) {
        FramePlugin plugin;
        plugin.channelModeRequested = each.mode;
        plugin.SetConnectedChannels(each.connected, each.connected);
        plugin.InitProcessing();
        EXPECT_EQ(plugin.GetProcessingInputChannels(), each.processing) << each.mode;
        EXPECT_EQ(plugin.GetProcessingOutputChannels(), each.processing) << each.mode;
        EXPECT_EQ(plugin.GetHostInputChannels(), each.host) << each.mode;
        EXPECT_EQ(plugin.GetHostOutputChannels(), each.host) << each.mode;
    }
}
