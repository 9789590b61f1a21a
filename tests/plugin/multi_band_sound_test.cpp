// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <random>

#include "plugin/bands_double.h"
#include "plugin/frame/hammer.h"
#include "support/reference_bands.h"

namespace {

using Reference = ReferenceBands;
using Kind = BandsPlugin::CrossoverKind;

const Reference kSounds[] = {
    {{}},
    {{1000}, Reference::Analog, 0},
    {{3000, 300}},  // taken as they are
    {{200, 1000, 5000}, Reference::Analog, 2, 44100},
    {{100, 500, 2000, 8000}, Reference::Analog, 3, 192000},
    {{100, 300, 1000, 3000, 8000}, Reference::Analog, 5},
    {{900}, Reference::Linear},
    {{200, 900, 4000}, Reference::Hybrid},
};

void Prepare(const Reference& sound, BandsPlugin& plugin) {
    plugin.SetHostSampleRate(static_cast<int>(sound.sampleRate));
    plugin.SetDefaultBands(static_cast<int>(sound.limits.size()) + 1);
    plugin.SetLimits(sound.limits);
    plugin.SetCrossoverMode(sound.mode);
    plugin.SetCrossoverKind(static_cast<Kind>(sound.kind));
}

// Sets everything that moves by chance, of bands beyond those in use too.
Reference::Block Move(BandsPlugin& plugin, int sampleCount) {
    static std::minstd_rand draw;
    const auto set = [](ParameterRecord& record, double reach, double middle = 0) {
        record.Set(middle + reach * (int(draw() % 2001) - 1000) / 1000);
        return record.Get();
    };
    Reference::Block block{sampleCount,
                           set(plugin.inputGain, 6),
                           set(plugin.outputGain, 6),
                           set(plugin.dryWet, 0.5, 0.5),
                           {},
                           {},
                           {},
                           {}};
    for (int b = 0; b < 6; ++b) {
        block.gain[b] = set(plugin.bandGain[b], 9);
        block.pan[b] = set(plugin.bandPanorama[b], 1);
        plugin.bandMute[b] = block.mute[b] = draw() % 5 == 0;
        plugin.bandBypass[b] = block.bypass[b] = draw() % 4 == 0;
    }
    plugin.OnGlobalChange(true);
    return block;
}

// Blocks of these sizes, each with settings of its own.
Audio RunMoving(BandsPlugin& plugin, std::initializer_list<int> sizes, Audio input,
                std::vector<Reference::Block>& blocks) {
    Audio output = input;
    for (int from = 0; const int size : sizes) {
        blocks.push_back(Move(plugin, size));
        if (from == 0) plugin.InitProcessing();
        ChannelPointers in{input[0].data() + from, input[1].data() + from};
        ChannelPointers out{output[0].data() + from, output[1].data() + from};
        const AllocationTrap trap("ProcessAudio");
        plugin.ProcessAudio(in.data(), out.data(), size, true);
        from += size;
    }
    return output;
}

}  // namespace

TEST(Bands, SoundAsTheirSlowVersionWhateverMoves) {
    for (Reference sound : kSounds) {
        const int late = sound.kind == Reference::Analog ? 0 : kLinearCrossoverLatency;
        BandsPlugin plugin;  // each choice starts from silence
        Prepare(sound, plugin);
        sound.effectDelay = BandEffect::kDelay;
        for (int b = 0; b < 6; ++b) plugin.Effect(b).records[0].Set(sound.level[b] = 0.3 + 0.1 * b);
        for (int choice = 0; choice < 5; ++choice) {
            sound.choice = static_cast<Reference::Choice>(choice);
            plugin.dryWetZero = choice == Reference::Dry;
            plugin.dryWetFull = choice == Reference::Wet;
            plugin.dryWetAffectsInputGain = choice != Reference::NotGain;
            plugin.dryWetAffectsInputPan = choice != Reference::NotPan;
            const Audio input = Noise(2, late + 1300, 0.25f);
            std::vector<Reference::Block> blocks;
            const Audio output = RunMoving(plugin, {late + 100, 700, 500}, input, blocks);
            // Samples are rounded at six places on their way, at levels of up to 2.
            EXPECT_LT(LargestDifference(output, sound.Run(input, blocks)), 3e-6)
                << sound.limits.size() << " " << sound.mode << " " << choice;
        }
    }
}

TEST(Bands, SoundTheSameInBlocksOfAnySize) {
    const Audio input = Programme(2, 4096, 0.25f);
    for (const Reference& sound : kSounds) {
        Audio expected;
        for (const int blockSize : {1000, 1, 7, 64, 333, 4096}) {
            BandsPlugin plugin(1, ChorusEntry);
            Prepare(sound, plugin);
            for (auto* const record :
                 {&plugin.bandPanorama[0], &plugin.bandGain[0], &plugin.dryWet})
                record->Set(0.7);
            plugin.InitProcessing();
            const Audio output = RunPlugin(plugin, input, blockSize, blockSize == 64);
            if (expected.empty()) expected = output;
            EXPECT_EQ(output, expected) << &sound - kSounds << " " << blockSize;
        }
    }
}

TEST(OneBand, IsItsEffectSixDecibelsLower) {
    BandsPlugin plugin(1, ChorusEntry);
    MAudioEffectPluginToAudioPluginAdapter single;
    single.Initialize("Test", "Test", ChorusEntry);
    single.SetHostSampleRate(48000);
    single.InitProcessing();
    const Audio input = Noise(2, 3000, 0.5f);
    Audio expected = RunPlugin(single, input, 256);
    for (auto& channel : expected)
        for (float& sample : channel) sample = float(sample * std::pow(10, -0.3));
    EXPECT_EQ(RunPlugin(plugin, input, 256), expected);
}

// A dry band's input and the channel that no effect sees are then the same, but for the split.
TEST(ChannelThatIsLeftOut, KeepsThePhaseOfTheBands) {
    Audio input = Noise(1, 5000, 0.25f);
    input.push_back(input[0]);
    for (int mode = 0; mode < 8; ++mode) {
        for (int bands = 1; bands <= 6; ++bands) {
            BandsPlugin plugin(bands);
            plugin.SetCrossoverMode(mode);
            if (mode > 5) plugin.SetCrossoverKind(static_cast<Kind>(mode - 5));
            plugin.channelModeRequested = kModeLeft;
            plugin.dryWetZero = true;
            plugin.outputGain.Set(0);
            plugin.InitProcessing();
            const Audio output = RunPlugin(plugin, input, 500);
            // The sections of mode 0 and the kernels only come close to the bands' sum.
            const double tolerance = bands == 1 ? 0 : mode == 0 ? 0.1 : mode > 5 ? 1e-3 : 2e-6;
            EXPECT_LE(LargestDifference({output[0]}, {output[1]}), tolerance) << mode << bands;
        }
    }
}

TEST(BandSwitches, DecideWhatIsHeardAndNotWhatRuns) {
    const Audio input = Constant(2, 600, 0.5f);
    BandsPlugin plugin;
    const auto last = [&] { return RunPlugin(plugin, input, 600)[0][599]; };
    plugin.bandMute[0] = true;
    for (const bool isBypassed : {false, true}) {
        plugin.bandBypass[0] = isBypassed;
        EXPECT_EQ(last(), 0);
    }
    plugin.SetDefaultBands(3);
    plugin.outputGain.Set(0);
    plugin.InitProcessing();
    plugin.Effect(2).records[0].Set(0.5);
    plugin.SoloBand(1, true);
    EXPECT_TRUE(plugin.bandMute[0] && plugin.bandMute[2] && plugin.IsBandSolo(1));
    for (const int preview : {-1, 2, 3}) {  // the whole input, though the band is muted
        plugin.previewBand = preview;
        EXPECT_NEAR(last(), preview == 2 ? 0.5 * 0.5 : 0, 0.01);
    }
    plugin.SoloBand(1, false);
    EXPECT_FALSE(plugin.bandMute[0] || plugin.IsBandSolo(1));
    EXPECT_EQ(plugin.Effect(0).blocks, 5);
}

TEST(Bands, TakeNoMemoryAndBearOtherThreadsWhileLimitsMove) {
    for (const Kind kind : {Kind::Analog, Kind::Linear, Kind::Hybrid}) {
        BandsPlugin plugin(6, ChorusEntry);
        plugin.SetCrossoverKind(kind);
        HostBuffers host(2, 2, 100);
        for (int i = 0; i < 30; ++i) {
            const AllocationTrap trap("a limit that moves");
            plugin.SetParameter(9 + i % 5, i / 30.0, false);
            plugin.SetParameter(3 + i % 6, i / 30.0, false);
            host.Process(plugin);
        }
        HammerWhileAudioRuns(plugin, 60);
        EXPECT_EQ(plugin.GetClearCount(), 0);
        EXPECT_EQ(plugin.GetBandCount(), 6);
    }
}

TEST(Bands, AreClearedWhenTheyGoWrong) {
    BandsPlugin broken(3), sound(3);
    const Audio input = Noise(2, 3000, 0.5f);
    HostBuffers loud(2, 2, 3000, 3e38f);
    loud.Process(broken);
    EXPECT_EQ(Peak(loud.out), 0);
    EXPECT_EQ(RunPlugin(broken, input, 500), RunPlugin(sound, input, 500));
    EXPECT_EQ(broken.GetClearCount(), 1);
}
