// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <limits>
#include <numbers>

#include "dsp/voice_reads.h"
#include "effect/chorus_driver.h"
#include "effect/fennir_audio_effect_plugin.h"

// What can be told of the sound without a second version of it: closed forms, and outputs that
// must be equal.

namespace {

using P = ReferenceSettings;

// Nothing but plain delays: a constant comes through each voice as it is.
ReferenceSettings Plain(int channels, bool highQuality, std::initializer_list<Change> changes) {
    return With(Settings(channels, 8000, highQuality, {{P::kSaturation, 0}, {P::kVoices, 1}}),
                changes);
}

double SineAt(double cycles) { return std::sin(2 * std::numbers::pi * cycles); }

// What the last sample of a constant input is, long after it began.
double Settled(const ReferenceSettings& settings, float level) {
    const Audio output = ChorusDriver(settings).Rendered(Constant(settings.channels, 9000, level));
    return output.back().back();
}

double VoiceLoss(int voices) { return std::pow(10, -0.03 * voices); }

// The choices of a loop other than a moving "Dry/wet".
ReferenceSettings LoopSettings(int choice) {
    return Settings((choice & 8) != 0 ? 2 : 3, 48000, (choice & 1) != 0,
                    {{P::kVoices, 3},
                     {P::kDryWet, 0.7},
                     {P::kSaturation, (choice & 2) != 0 ? 0.5 : 0},
                     {P::kVoiceTremolo, (choice & 4) != 0 ? 0.5 : 0},
                     {P::kTremolo, 0.4},
                     {P::kDelayVariability, 0.1},
                     {P::kMinFrequency, 2},
                     {P::kSpreadMode, 3}});
}

template <ProcessorVariant variant>
std::intptr_t EntryOf(MPlugin* object, int code, PluginArguments& arguments) {
    if (object == nullptr) object = new FennirAudioEffectPlugin(GetVoiceReads(variant));
    if (code == PluginCommand::kCreate) return reinterpret_cast<std::intptr_t>(object);
    return object->Dispatch(code, arguments);
}

}  // namespace

TEST(ChorusBlocks, SoundTheSameHoweverTheyAreCutOnEveryProcessor) {
    const struct {
        ProcessorVariant variant;
        PluginEntry entry;
    } processors[] = {{ProcessorVariant::Baseline, EntryOf<ProcessorVariant::Baseline>},
                      {ProcessorVariant::Avx2, EntryOf<ProcessorVariant::Avx2>},
                      {ProcessorVariant::Avx512, EntryOf<ProcessorVariant::Avx512>}};
    for (int choice = 0; choice < 16; ++choice) {
        const ReferenceSettings settings = LoopSettings(choice);
        const Audio input = Programme(settings.channels, 6000, 0.5f);
        const Audio baseline = ChorusDriver(settings, processors[0].entry).Rendered(input, 6000);
        for (const auto& [variant, entry] : processors) {
            if (!HasProcessorVariant(variant)) continue;
            const Audio whole = ChorusDriver(settings, entry).Rendered(input, 6000);
            EXPECT_LT(LargestDifference(whole, baseline), 1e-6);
            for (int blockSize : {1, 7, 64, 333, 1000, 4096, 0})
                EXPECT_EQ(ChorusDriver(settings, entry).Rendered(input, blockSize), whole)
                    << "loop " << choice << " blocks of " << blockSize;
        }
    }
}

// A choice that is on but does nothing sounds as if it were off, to the rounding of a sample.
TEST(ChorusLoops, AreEqualWhereTheirChoiceIsNeutral) {
    constexpr double kTiny = 1e-12, kRounding = 3e-7;
    for (int choice = 0; choice < 16; ++choice) {
        const ReferenceSettings off = LoopSettings(choice);
        const Audio input = Programme(off.channels, 4000, 0.5f);
        const Audio expected = ChorusDriver(off).Rendered(input);
        ChorusDriver ramped(off);
        ramped.Set(P::kDryWet, off[P::kDryWet] + kTiny);
        EXPECT_LT(LargestDifference(ramped.Rendered(input), expected), kRounding) << choice;
        for (int index : {P::kSaturation, P::kVoiceTremolo}) {
            if (off[index] != 0) continue;
            ChorusDriver on(With(off, {{index, kTiny}}));
            EXPECT_LT(LargestDifference(on.Rendered(input), expected), kRounding) << choice;
        }
    }
}

TEST(ChorusDrySignal, IsExactAndAsLateAsItsLineIsShared) {
    const struct {
        int channels;
        bool highQuality;
        std::size_t late;
    } rows[] = {{1, false, 0}, {2, false, 0}, {1, true, 18}, {2, true, 9}, {5, true, 18}};
    for (const auto& row : rows) {
        const Audio input = Noise(row.channels, 500, 0.9f);
        Audio expected = input;
        for (auto& channel : expected) {
            channel.insert(channel.begin(), row.late, 0.0f);
            channel.resize(500);
        }
        ChorusDriver engine(Plain(row.channels, row.highQuality, {{P::kDryWet, 0}}));
        EXPECT_EQ(engine.Rendered(input, 33), expected) << row.channels;
        EXPECT_EQ(engine.Send(PluginCommand::kGetLatency), row.highQuality ? 18 : 0);
    }
}

TEST(ChorusLevels, FollowDryWetAndVoices) {
    EXPECT_NEAR(Settled(Plain(1, false, {{P::kDryWet, 0}}), 0.5f), 0.5, 1e-7);
    EXPECT_NEAR(Settled(Plain(1, false, {{P::kDryWet, 1}}), 0.5f), 1.0 * VoiceLoss(1), 1e-6);
    EXPECT_NEAR(Settled(Plain(1, false, {{P::kDryWet, 2}}), 0.5f), 0.5 * VoiceLoss(1), 1e-6);
    EXPECT_NEAR(Settled(Plain(1, false, {{P::kDryWet, 2}, {P::kVoices, 10}}), 0.1f),
                std::pow(10, -0.3), 1e-6);
    // Half wet: the dry part is whole, the loss of the voices half.
    EXPECT_NEAR(Settled(Plain(1, false, {{P::kDryWet, 0.5}}), 0.5f),
                0.75 * (0.5 + 0.5 * VoiceLoss(1)), 1e-6);
    // A unit sum of the long kernel; its 37 taps leave out some 1e-6 at their ends.
    EXPECT_NEAR(Settled(Plain(3, true, {{P::kDryWet, 2}}), 0.5f), 0.5 * VoiceLoss(1), 1e-4);
}

TEST(ChorusSaturation, ShapesByItsCurveAndLetsEverythingPassAtZero) {
    const auto wet = [](double amount, float level) {
        return Settled(Plain(1, false, {{P::kDryWet, 2}, {P::kSaturation, amount}}), level) /
               VoiceLoss(1);
    };
    EXPECT_NEAR(wet(0, 1.75f), 1.75, 1e-6);
    // Clipped to +-1, then the square of what was lost added to both halves.
    EXPECT_NEAR(wet(1, 1.75f), 1 + 0.5625, 1e-6);
    EXPECT_NEAR(wet(1, -1.75f), -1 + 0.5625, 1e-6);
    // t = 1.5 gives 1.5 * 29.25 / 47.25 = 13 / 14.
    const double curved = 13.0 / 14;
    EXPECT_NEAR(wet(1, 0.5f), curved + (curved - 0.5) * (curved - 0.5), 1e-6);
    EXPECT_NEAR(wet(0.5, -0.5f), 0.5 * (-curved + (curved - 0.5) * (curved - 0.5)) - 0.25, 1e-6);
}

TEST(ChorusDryWet, MovesWithoutAStep) {
    constexpr int kBlock = 1000;
    ChorusDriver engine(Plain(1, false, {{P::kDryWet, 0.2}, {P::kVoices, 10}}));
    engine.Rendered(Constant(1, 2000, 0.1f));
    // Ten voices and the dry signal at 0.1 make 1.1 at most, which is the way of a whole block.
    float before = engine.Rendered(Constant(1, 100, 0.1f))[0].back();
    for (double target : {1.0, 2.0, 1.3, 0.5, 1.8, 1.8, 0.0, 0.0}) {
        engine.Set(P::kDryWet, target);
        const Audio output = engine.Rendered(Constant(1, kBlock, 0.1f), kBlock);
        for (float sample : output[0]) {
            ASSERT_LT(std::abs(sample - before), 3.0 / kBlock) << "towards " << target;
            before = sample;
        }
    }
}

TEST(ChorusPanorama, BringsOneVoiceToTheRight) {
    for (bool highQuality : {false, true}) {
        for (std::size_t side : {0u, 1u}) {
            Audio input = Silence(2, 2000);
            input[side] = Noise(1, 2000, 0.5f)[0];
            const Audio output =
                ChorusDriver(Plain(2, highQuality, {{P::kDryWet, 2}})).Rendered(input);
            EXPECT_EQ(Peak({output[0]}), 0);
            EXPECT_GT(Peak({output[1]}), 0.2);
        }
    }
}

// With the dry signal alone a full tremolo shows the phase of each channel.
TEST(ChorusChannels, AreSpreadOverTheCycle) {
    const Audio output = ChorusDriver(Plain(4, false, {{P::kDryWet, 0}, {P::kTremolo, 1}}))
                             .Rendered(Constant(4, 2000, 1), 77);
    for (std::size_t c = 0; c < 4; ++c)
        for (std::size_t i = 0; i < 2000; ++i)  // 0.1 Hz at 8000 samples a second
            ASSERT_NEAR(output[c][i], (SineAt(double(i) / 80000 + double(c) / 4) + 1) / 2, 1e-6);
}

TEST(ChorusTempoLock, BringsAllVoicesToTheSongsPhase) {
    ChorusDriver engine(Plain(1, false,
                              {{P::kDryWet, 2},
                               {P::kVoices, 10},
                               {P::kVoiceTremolo, 1},
                               {P::kRateVariability, 1},
                               {P::kSync, 1},
                               {P::kSyncLength, 8},  // 1 / 2: two cycles a whole note
                               {P::kSyncPhase, 0.4}}));
    Audio output = Constant(1, 1000, 0.1f);
    const Audio input = output;
    engine.Rendered(input);
    engine.Process(ReadPointers(input).data(), WritePointers(output).data(), 1000, {120, 5.3});
    for (std::size_t i = 0; i < 1000; ++i) {
        // Half a cycle a beat, two beats a second.
        const double phase = 5.3 / 2 + 0.4 + double(i) / 8000;
        ASSERT_NEAR(output[0][i], VoiceLoss(10) * (SineAt(phase) + 1) / 2, 2e-6);
    }
}

TEST(ChorusLines, ForgetWhatIsNotANumber) {
    constexpr float kBad[] = {std::numeric_limits<float>::quiet_NaN(),
                              std::numeric_limits<float>::infinity(),
                              -std::numeric_limits<float>::infinity()};
    for (int choice = 0; choice < 16; ++choice) {
        ReferenceSettings settings =
            With(LoopSettings(choice), {{P::kMinFrequency, std::log10(20)}, {P::kSpreadMode, 6}});
        settings.sampleRate = 1000;
        ReferenceChorus reference;
        reference.settings = settings;
        reference.Prepare();
        const auto longest = static_cast<std::size_t>(reference.LineLength()) + 32;
        Audio clean = Noise(settings.channels, 3000, 0.5f), dirty = clean;
        for (Audio* audio : {&clean, &dirty})
            for (auto& channel : *audio)
                for (std::size_t k = 0; k < 3; ++k) channel[20 + k] = audio == &clean ? 0 : kBad[k];
        const Audio expected = ChorusDriver(settings).Rendered(clean);
        const Audio output = ChorusDriver(settings).Rendered(dirty);
        for (std::size_t c = 0; c < output.size(); ++c)
            for (std::size_t i = 23 + longest; i < 3000; ++i)
                ASSERT_EQ(output[c][i], expected[c][i]) << "loop " << choice << " sample " << i;
    }
}
