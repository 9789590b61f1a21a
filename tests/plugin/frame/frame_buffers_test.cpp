// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <thread>

#include "foundation/text/exception.h"
#include "plugin/frame/frame_plugin.h"
#include "support/allocation_trap.h"

namespace {

constexpr int kBlock = 64;

std::vector<float> WithGuard(std::vector<float> samples, float gain = 1) {
    for (float& sample : samples) sample = Guarded1(sample) * gain;
    return samples;
}

}  // namespace

TEST(FrameBuffers, MissingChannelsAreRepaired) {
    struct Case {
        int connected;
        bool second;         // the host gives a second channel
        bool secondIsFirst;  // what the effect gets in its second channel; else silence
    };
    for (const Case& each : {Case{-1, false, true}, Case{2, false, true}, Case{1, false, false}}) {
        FramePlugin plugin(4, 2);
        plugin.Prepare();
        plugin.SetConnectedChannels(each.connected, 2);
        HostBuffers host(2, 2, kBlock);
        if (!each.second) host.Input(1) = nullptr;
        host.Process(plugin);
        EXPECT_EQ(host.out[0], host.in[0]);  // by now the input has its guard
        const auto silence = WithGuard(std::vector<float>(kBlock, 0));
        EXPECT_EQ(host.out[1], each.secondIsFirst ? host.in[0] : silence) << each.connected;
        EXPECT_NE(host.Input(2), nullptr);  // the side-chain is silence
        EXPECT_EQ(std::vector<float>(host.Input(2), host.Input(2) + kBlock), silence);
    }
}

TEST(FrameBuffers, NothingToWriteIntoLeavesTheBlockAlone) {
    FramePlugin plugin;
    plugin.Prepare();
    HostBuffers host(2, 2, kBlock);
    const Audio before = host.in;
    host.Output(0) = nullptr;
    host.Process(plugin);
    EXPECT_EQ(host.in, before);
    EXPECT_TRUE(plugin.calls.empty());

    plugin.SetConnectedChannels(0, 2);  // null pointers stay: nothing may be read through them
    host = HostBuffers(0, 2, kBlock);
    host.Process(plugin);
    EXPECT_EQ(host.out, Silence(2, kBlock));
    EXPECT_TRUE(plugin.calls.empty());
}

TEST(FrameBuffers, AccumulatingAndInPlaceGiveWhatReplacingGives) {
    for (const int mode : {0, 1, 5})
        for (const bool effectAdds : {false, true})
            for (const bool noInPlace : {false, true}) {
                FramePlugin plugin;
                plugin.channelModeRequested = mode;
                plugin.accumulatesOutput = effectAdds;
                plugin.noInPlace = noInPlace;
                plugin.gain = 0.5f;
                plugin.Prepare();
                HostBuffers replaced(2, 2, kBlock);
                HostBuffers added(2, 2, kBlock);
                replaced.Process(plugin);
                added.Process(plugin, false);
                for (std::size_t c = 0; c < 2; ++c)
                    for (std::size_t i = 0; i < kBlock; ++i)
                        ASSERT_EQ(added.out[c][i], 0.25f + replaced.out[c][i]) << mode;
                EXPECT_EQ(plugin.Run(Noise(2, kBlock, 0.5f), 2, kBlock, true), replaced.out);
            }
}

TEST(FrameBuffers, WhileDisabledSilenceGoesOutWithoutALock) {
    FramePlugin plugin;
    plugin.Prepare();
    plugin.processingDisabled = 1;
    HostBuffers host(2, 2, kBlock);
    {
        MLocker lock(plugin.processLock);
        std::thread([&] { host.Process(plugin); }).join();
    }
    EXPECT_EQ(host.out, Silence(2, kBlock));
    EXPECT_TRUE(plugin.calls.empty());
}

TEST(FrameBuffers, AFailingEffectLeavesTheNextBlockAlone) {
    FramePlugin plugin;
    plugin.Prepare();
    HostBuffers host(2, 2, kBlock);
    plugin.throwing = true;
    host.Process(plugin);
    EXPECT_EQ(host.out, Constant(2, kBlock, 0.25f));
    plugin.throwing = false;
    std::thread([&] { host.Process(plugin); }).join();  // the lock was released
    EXPECT_EQ(host.out, host.in);
}

TEST(FrameBuffers, NumbersThatAreNoneDoNotGetInOrOut) {
    FramePlugin plugin;
    plugin.Prepare();
    HostBuffers host(2, 2, kBlock);
    host.in[0][3] = std::numeric_limits<float>::quiet_NaN();
    host.in[1][5] = -std::numeric_limits<float>::infinity();
    host.Process(plugin);
    EXPECT_EQ(host.out[0][3], kDenormalGuard);
    EXPECT_EQ(host.out[1][5], kDenormalGuard);
    EXPECT_EQ(host.out, host.in);
    EXPECT_EQ(plugin.GetNonFiniteInputCount(), 2);

    plugin.Cut(16);
    plugin.failingCall = 2;  // one was made before: the second sub-block
    host.Process(plugin);
    for (std::size_t i = 0; i < kBlock; ++i)
        EXPECT_EQ(host.out[1][i], i >= 16 && i < 32 ? 0 : host.in[1][i]);
    EXPECT_EQ(plugin.clearCalls, 1);
    EXPECT_EQ(plugin.GetClearCount(), 1);
}

TEST(FrameBuffers, TheHostsFloatingPointStateComesBack) {
    struct Subnormal : FramePlugin {
        void PrepareBlock(float**, float**, int, bool) override {
            volatile float tiny = 1e-39f;
            result = tiny * 0.5f;
        }
        float result = -1;
    } plugin;
    plugin.Prepare();
    HostBuffers host(2, 2, kBlock);
    const unsigned before = _mm_getcsr();
    host.Process(plugin);
    EXPECT_EQ(plugin.result, 0);
    EXPECT_EQ(_mm_getcsr(), before);
}

TEST(FrameBuffers, NothingIsAllocatedUpToTheAnnouncedSize) {
    for (const int mode : {0, 2, 5, 7}) {
        FramePlugin plugin(4, 4);
        plugin.channelModeRequested = mode;
        plugin.agcEnabled = 1;
        plugin.latency = 100;
        for (auto& requested : plugin.surroundRequested) requested = 0;
        plugin.Prepare(512);
        HostBuffers warm(4, 4, 1);
        warm.Process(plugin);  // the test's own effect takes its lines
        HostBuffers host(3, 3, 512);
        AllocationTrap trap("ProcessAudio");
        for (const bool bypassed : {false, true})
            for (const bool replacing : {false, true}) {
                plugin.bypassed = bypassed;
                host.Process(plugin, replacing);
            }
    }
}

TEST(FrameParameters, AreFoundAndFailQuietly) {
    FramePlugin plugin;
    plugin.SetParameter(0, 0.5, false);
    plugin.SetParameterIfChanged(0, 0.5 + 0.9e-7, false);
    EXPECT_EQ(plugin.GetParameter(0), 0.5);
    plugin.SetParameterIfChanged(0, 0.5 + 1.1e-7, false);
    EXPECT_NE(plugin.GetParameter(0), 0.5);
    EXPECT_EQ(plugin.GetParameterID(0), "Number");
    EXPECT_EQ(plugin.GetParameterName(0), "");
    EXPECT_EQ(plugin.GetHostParameterCount(), 1);
    plugin.ClearAutomationAdapters();
    EXPECT_EQ(plugin.GetParameter(0), 0);
}
