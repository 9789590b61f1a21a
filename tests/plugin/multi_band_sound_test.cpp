// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "plugin/bands_double.h"
#include "plugin/effect_adapter.h"
#include "plugin/frame/hammer.h"
#include "support/reference_bands.h"

namespace {

using Settings = ReferenceBandSettings;
using Kind = BandsPlugin::CrossoverKind;

struct Sound {
    std::vector<double> limits;
    ReferenceBands::Kind kind = ReferenceBands::Analog;
    int mode = 1;
    int sampleRate = 48000;
};

const Sound kSounds[] = {
    {{}},
    {{1000}, ReferenceBands::Analog, 0},
    {{3000, 300}},  // taken as they are
    {{200, 1000, 5000}, ReferenceBands::Analog, 2, 44100},
    {{100, 500, 2000, 8000}, ReferenceBands::Analog, 3, 192000},
    {{100, 300, 1000, 3000, 8000}, ReferenceBands::Analog, 5},
    {{100, 300, 1000, 3000, 8000}, ReferenceBands::Analog, 0},
    {{900}, ReferenceBands::Linear},
    {{200, 900, 4000}, ReferenceBands::Hybrid},
};

void Apply(const Settings& settings, BandsPlugin& plugin) {
    plugin.inputGain.Set(settings.inputGain);
    plugin.outputGain.Set(settings.outputGain);
    plugin.dryWet.Set(settings.dryWet);
    plugin.dryWetZero = settings.isDry;
    plugin.dryWetFull = settings.isWet;
    plugin.dryWetAffectsInputGain = settings.mixMovesGain;
    plugin.dryWetAffectsInputPan = settings.mixMovesPan;
    for (int b = 0; b < BandsPlugin::kMaxBands; ++b) {
        const Settings::Band& band = settings.bands[b];
        plugin.bandGain[b].Set(band.gain);
        plugin.bandPanorama[b].Set(band.pan);
        plugin.bandMute[b] = band.mute;
        plugin.bandBypass[b] = band.bypass;
        plugin.Effect(b).records[0].Set(band.effectGain);
    }
    plugin.OnGlobalChange(true);
}

void Prepare(const Sound& sound, BandsPlugin& plugin) {
    plugin.SetHostSampleRate(sound.sampleRate);
    plugin.SetDefaultBands(static_cast<int>(sound.limits.size()) + 1);
    plugin.SetLimits(sound.limits);
    plugin.SetCrossoverMode(sound.mode);
    plugin.SetCrossoverKind(static_cast<Kind>(sound.kind));
}

Audio RunBlocks(BandsPlugin& plugin, const std::vector<ReferenceBands::Block>& blocks,
                Audio input) {
    Audio output = input;
    int from = 0;
    for (const auto& block : blocks) {
        Apply(block.settings, plugin);
        if (from == 0) plugin.InitProcessing();
        ChannelPointers in{}, out{};
        std::ranges::copy(WritePointers(input, from), in.begin());
        std::ranges::copy(WritePointers(output, from), out.begin());
        const AllocationTrap trap("ProcessAudio");
        plugin.ProcessAudio(in.data(), out.data(), block.sampleCount, true);
        from += block.sampleCount;
    }
    return output;
}

}  // namespace

TEST(Bands, SoundAsTheirSlowVersionWhateverMoves) {
    std::minstd_rand draw;
    for (std::size_t k = 0; k < std::size(kSounds); ++k) {
        const Sound& sound = kSounds[k];
        const int late = sound.kind == ReferenceBands::Analog ? 0 : kLinearCrossoverLatency;
        for (int choice = 0; choice < 5; ++choice) {
            BandsPlugin plugin;
            Prepare(sound, plugin);
            const std::vector<ReferenceBands::Block> blocks = {
                {late + 100, Settings::Drawn(draw, choice)},
                {700, Settings::Drawn(draw, choice)},
                {500, Settings::Drawn(draw, choice)}};
            const Audio input = Noise(2, late + 1300, 0.25f);
            const ReferenceBands reference{double(sound.sampleRate), sound.limits, sound.kind,
                                           sound.mode, BandEffect::kDelay};
            // Samples are rounded at six places on their way, at levels of up to 2.
            EXPECT_LT(
                LargestDifference(RunBlocks(plugin, blocks, input), reference.Run(input, blocks)),
                3e-6)
                << k << " " << choice;
        }
    }
}

TEST(Bands, SoundTheSameInBlocksOfAnySize) {
    const Audio input = Programme(2, 4096, 0.25f);
    for (const Sound& sound : kSounds) {
        Audio expected;
        for (const int blockSize : {1000, 1, 7, 64, 333, 4096}) {
            BandsPlugin plugin(1, ChorusEntry);
            Prepare(sound, plugin);
            plugin.bandPanorama[0].Set(0.5);
            plugin.bandGain[0].Set(3);
            plugin.dryWet.Set(0.7);
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
    for (int mode = 0; mode < 8; ++mode) {
        for (int bands = 1; bands <= 6; ++bands) {
            BandsPlugin plugin(bands);
            plugin.SetCrossoverMode(mode);
            if (mode > 5) plugin.SetCrossoverKind(static_cast<Kind>(mode - 5));
            plugin.channelModeRequested = kModeLeft;
            plugin.dryWetZero = true;
            plugin.outputGain.Set(0);
            plugin.InitProcessing();
            Audio input = Noise(1, 5000, 0.25f);
            input.push_back(input[0]);
            const Audio output = RunPlugin(plugin, input, 500);
            // The sections of mode 0 and the kernels only come close to the bands' sum.
            const double tolerance = bands == 1 ? 0 : mode == 0 ? 0.1 : mode > 5 ? 1e-3 : 2e-6;
            EXPECT_LE(LargestDifference({output[0]}, {output[1]}), tolerance)
                << mode << " " << bands;
        }
    }
}

TEST(BandSwitches, DecideWhatIsHeardAndNotWhatRuns) {
    const Audio input = Constant(2, 600, 0.5f);
    BandsPlugin plugin;
    const auto last = [&] { return RunPlugin(plugin, input, 600)[0][599]; };
    plugin.outputGain.Set(0);
    plugin.InitProcessing();
    for (const bool isBypassed : {false, true}) {
        plugin.bandBypass[0] = isBypassed;
        plugin.bandMute[0] = true;
        EXPECT_EQ(last(), 0);
    }
    EXPECT_EQ(plugin.Effect(0).blocks, 2);

    plugin.SetDefaultBands(3);
    for (int b = 0; b < 3; ++b) plugin.Effect(b).records[0].Set(0.25 * b);
    plugin.SoloBand(1, true);
    EXPECT_TRUE(plugin.bandMute[0] && plugin.bandMute[2] && plugin.IsBandSolo(1));
    EXPECT_LT(std::abs(last()), 0.01) << "a band above 200 Hz";
    plugin.previewBand = 2;
    EXPECT_FLOAT_EQ(last(), 0.5f * 0.5f) << "the whole input, though the band is muted";
    plugin.previewBand = 3;
    EXPECT_LT(std::abs(last()), 0.01) << "there is no such band";
    plugin.SoloBand(1, false);
    EXPECT_FALSE(plugin.IsBandSolo(1));
    EXPECT_EQ(plugin.Effect(2).blocks, 3);
}

TEST(BandLimits, MoveOnTheAudioThreadWithoutMemory) {
    for (const Kind kind : {Kind::Analog, Kind::Linear, Kind::Hybrid}) {
        BandsPlugin plugin(6, ChorusEntry);
        plugin.SetCrossoverKind(kind);
        HostBuffers host(2, 2, 100);
        for (int i = 0; i < 30; ++i) {
            const AllocationTrap trap("a limit that moves");
            plugin.SetParameter(9 + i % 5, i / 30.0, false);
            plugin.SetParameter(3 + i % 6, i / 30.0, false);
            host.Process(plugin);
            ASSERT_EQ(trap.Calls(), 0) << static_cast<int>(kind) << " " << i;
        }
        EXPECT_EQ(plugin.GetClearCount(), 0);
    }
}

TEST(Bands, SurviveChangesOnOtherThreads) {
    for (const Kind kind : {Kind::Analog, Kind::Linear}) {
        BandsPlugin plugin(4, ChorusEntry);
        plugin.SetCrossoverKind(kind);
        HammerWhileAudioRuns(plugin, 100);
        EXPECT_EQ(plugin.GetClearCount(), 0);
        EXPECT_EQ(plugin.GetBandCount(), 4);
    }
}

TEST(Bands, AreClearedWhenTheyGoWrong) {
    BandsPlugin broken(3), sound(3);
    for (auto* plugin : {&broken, &sound}) plugin->SetCrossoverMode(5);
    const Audio input = Noise(2, 3000, 0.5f);
    HostBuffers loud(2, 2, 3000, 3e38f);
    broken.inputGain.Set(24);
    loud.Process(broken);
    EXPECT_EQ(Peak(loud.out), 0);
    broken.inputGain.Set(0);
    broken.InitProcessing();
    EXPECT_EQ(RunPlugin(broken, input, 500), RunPlugin(sound, input, 500));
    EXPECT_EQ(broken.GetClearCount(), 1);
}
