// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "foundation/text/exception.h"
#include "plugin/frame/frame_plugin.h"

namespace {

// Holds each sample; its own delay is told, not made.
class HoldingUpsampler : public MUpsampler {
public:
    void CheckFactor(int) const override {}
    int GetLatency() const override { return highQuality ? 96 / factor : 0; }
    void Up(const float* source, int count) override {
        Reserve(count);
        for (int i = 0; i < count * factor; ++i) UpsampledInput()[i] = source[i / factor];
    }
    void Down(float* destination, int count, Mode mode) override {
        for (int i = 0; i < count; ++i)
            destination[i] =
                (mode == Mode::Add ? destination[i] : 0) + UpsampledOutput()[i * factor];
    }
};

}  // namespace

TEST(FrameBypass, DelaysByTheReportedLatencyAndSwitchesWithoutAShift) {
    constexpr int kBlock = 50;
    for (const int latency : {0, 1, 37, 333})
        for (const bool inPlace : {false, true}) {
            FramePlugin plugin;
            plugin.latency = latency;
            plugin.Prepare();
            EXPECT_EQ(plugin.GetReportedLatency(), latency);
            const Audio in = Noise(2, 40 * kBlock, 1);
            Audio out = Silence(2, 0);
            for (int from = 0, block = 0; block < 40; ++block, from += kBlock) {
                plugin.bypassed = block / 8 % 2;  // off, on, off ...
                Audio part = Silence(2, kBlock);
                for (std::size_t c = 0; c < 2; ++c)
                    std::copy_n(in[c].begin() + from, kBlock, part[c].begin());
                part = plugin.Run(part, 2, kBlock, inPlace);
                for (std::size_t c = 0; c < 2; ++c)
                    out[c].insert(out[c].end(), part[c].begin(), part[c].end());
            }
            // The effect has not heard what went by in bypass: only the first blocks of those are
            // looked at.
            for (std::size_t i = static_cast<std::size_t>(latency); i < 16 * kBlock; ++i)
                for (std::size_t c = 0; c < 2; ++c)
                    ASSERT_EQ(out[c][i], Guarded1(in[c][i - static_cast<std::size_t>(latency)]))
                        << latency << " at " << i;
        }
}

TEST(FrameBypass, ZeroesWhatHasNoInputAndKeepsWhatWaits) {
    FramePlugin plugin(2, 4);
    plugin.bypassed = 1;
    plugin.latency = 10;
    plugin.Prepare();
    HostBuffers host(2, 4, 64);
    host.Process(plugin);
    EXPECT_EQ(host.out[2], std::vector<float>(64, 0));
    EXPECT_EQ(host.out[3], std::vector<float>(64, 0));
    const Audio first = host.in;

    plugin.latency = 12;  // two more zeros behind the ten that wait
    plugin.Prepare();
    host = HostBuffers(2, 4, 64, 0.1f);
    host.Process(plugin);
    for (std::size_t i = 0; i < 64; ++i)
        EXPECT_EQ(host.out[1][i], i < 10 ? first[1][54 + i] : i < 12 ? 0 : host.in[1][i - 12]);
}

TEST(FrameLatency, IsToldOnceForEachChangeUnderNoLock) {
    struct Host : MAudioPluginAdapter {
        void SendAutomation(int, double) override {}
        void GenerateMIDIEvent(int, const std::uint8_t*) override {}
        bool ChangeEditorSize(EditorSize) override { return false; }
        void UpdateLatency() override { told.push_back(plugin->GetReportedLatency()); }
        FramePlugin* plugin = nullptr;
        std::vector<int> told;
    } host;
    FramePlugin plugin;
    host.plugin = &plugin;
    plugin.hostAdapter = &host;
    for (const int latency : {0, 5, 5, 7, 0}) {
        plugin.latency = latency;
        plugin.InitProcessing();
    }
    EXPECT_EQ(host.told, (std::vector<int>{5, 7, 0}));
}

TEST(FrameBlocks, AreCutAndCarryTheirPositions) {
    struct Case {
        int limit, sampleCount;
        bool usesHostTime;
        std::vector<int> counts;
    };
    const std::vector<Case> cases = {{32, 100, true, {32, 32, 32, 4}},
                                     {32, 64, true, {32, 32}},
                                     {100, 100, true, {100}},
                                     {0, 600, true, {256, 256, 88}},
                                     {32, 70, false, {32, 32, 6}}};
    for (const Case& each : cases) {
        FramePlugin plugin;
        plugin.usesHostTime = each.usesHostTime;
        plugin.SetHostSampleRate(48000);
        plugin.Prepare();
        plugin.tempo = 90;
        plugin.position = 4;
        plugin.Cut(each.limit);
        HostBuffers host(2, 2, each.sampleCount);
        host.Process(plugin);
        ASSERT_EQ(plugin.calls.size(), each.counts.size());
        int before = 0;
        for (std::size_t k = 0; k < each.counts.size(); ++k) {
            EXPECT_EQ(plugin.calls[k].sampleCount, each.counts[k]);
            const double expected = each.usesHostTime ? 4 + before * 90 / (48000 * 60.0) : 0;
            const bool whole = each.counts.size() == 1;  // an uncut block keeps the host's
            EXPECT_NEAR(plugin.calls[k].position, whole ? 4 : expected, 1e-12);
            before += each.counts[k];
        }
        EXPECT_EQ(host.out, host.in);
        EXPECT_EQ(plugin.prepared, 1);
        EXPECT_EQ(plugin.finished, 1);
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
            const Audio out = plugin.Run(Noise(2, 4096, 1), 2, blockSize);
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
        plugin.SetParameter(0, 0.25, false);
        host.Process(plugin);  // the first block only takes note
        EXPECT_EQ(plugin.calls.size(), 1u);
        plugin.SetParameter(0, 0.75, false);
        host.Process(plugin);
        EXPECT_EQ(static_cast<int>(plugin.calls.size()),
                  1 + (kBlock + protection - 1) / protection);
        for (std::size_t k = 1; k < plugin.calls.size(); ++k)
            ASSERT_NEAR(plugin.calls[k].value,
                        0.25 + 0.5 * static_cast<double>(k - 1) * protection / kBlock, 1e-12);
        host.Process(plugin);
        EXPECT_EQ(plugin.calls.back().value, 0.75);
        EXPECT_EQ(plugin.calls.back().sampleCount, kBlock);  // nothing moves: not cut
        EXPECT_GT(plugin.updates, 0);

        plugin.Cut(0x7fffffff, kBlock);  // not below the block: it jumps
        plugin.SetParameter(0, 0, false);
        host.Process(plugin);
        EXPECT_EQ(plugin.calls.back().value, 0);
        EXPECT_EQ(plugin.calls.back().sampleCount, kBlock);
    }
}

TEST(FrameUpsampling, IsRefusedPlainlyWhereItIsMissing) {
    FramePlugin plugin;
    plugin.Prepare();
    try {
        plugin.SetUpsampling(2);
        FAIL();
    } catch (const MException& exception) {
        EXPECT_EQ(exception.code, 1);
    }
    EXPECT_EQ(plugin.sampleRate, 44100);
    EXPECT_EQ(plugin.processingDisabled, 0);
    plugin.SetUpsampling(1);
}

TEST(FrameUpsampling, RunsTheEffectFasterAndClips) {
    struct Clipped : FramePlugin {
        double GetOutputClipLevel() override { return level; }
        double level = -1;
    } plugin;
    plugin.makeUpsampler = [] { return std::make_unique<HoldingUpsampler>(); };
    plugin.latency = 300;
    plugin.SetUpsampling(3);
    plugin.Prepare();
    EXPECT_EQ(plugin.sampleRate, 3 * 44100);
    EXPECT_EQ(plugin.GetReportedLatency(), 300 / 3 + 96 / 3);
    plugin.latency = 0;
    HostBuffers host(2, 2, 50, 1);
    host.Process(plugin);
    EXPECT_EQ(plugin.calls[0].sampleCount, 150);
    EXPECT_EQ(host.out, host.in);

    plugin.level = 0.25;
    for (auto& channel : host.out) channel.assign(50, 0.125f);
    host.Process(plugin, false);
    for (std::size_t i = 0; i < 50; ++i)
        EXPECT_EQ(host.out[1][i], std::clamp(0.125f + host.in[1][i], -0.25f, 0.25f));
}
