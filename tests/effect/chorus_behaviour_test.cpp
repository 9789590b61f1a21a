// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "dsp/voice_reads.h"
#include "effect/chorus_driver.h"
#include "effect/fennir_audio_effect_plugin.h"

// What can be told of the sound without a second version of it: closed forms, and outputs that
// must be equal.

namespace {

using P = ReferenceSettings;

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
    const std::pair<ProcessorVariant, PluginEntry> processors[] = {
        {ProcessorVariant::Baseline, EntryOf<ProcessorVariant::Baseline>},
        {ProcessorVariant::Avx2, EntryOf<ProcessorVariant::Avx2>},
        {ProcessorVariant::Avx512, EntryOf<ProcessorVariant::Avx512>}};
    for (int choice = 0; choice < 16; ++choice) {
        const ReferenceSettings settings = LoopSettings(choice);
        const Audio input = Programme(settings.channels, 6000, 0.5f);
        const Audio baseline = ChorusDriver(settings, processors[0].second).Rendered(input, 6000);
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

// Where a constant settles in a single channel with everything but delays taken away.
TEST(ChorusLevels, FollowDryWetVoicesAndSaturation) {
    const double curved = 13.0 / 14;  // t = 1.5 gives 1.5 * 29.25 / 47.25
    const double even = (curved - 0.5) * (curved - 0.5);
    const struct {
        double dryWet, voices, saturation;
        float input;
        double output;
    } rows[] = {
        {1, 1, 0, 0.5f, VoiceLoss(1)},
        {2, 10, 0, 0.1f, std::pow(10, -0.3)},
        // The dry part whole, the loss of the voices half.
        {0.5, 1, 0, 0.5f, 0.75 * (0.5 + 0.5 * VoiceLoss(1))},
        {2, 1, 0, 1.75f, 1.75 * VoiceLoss(1)},
        // Clipped to -1, then the square of what was lost added.
        {2, 1, 1, -1.75f, (-1 + 0.5625) * VoiceLoss(1)},
        {2, 1, 0.5, -0.5f, (0.5 * (-curved + even) - 0.25) * VoiceLoss(1)},
    };
    for (const auto& row : rows) {
        ChorusDriver engine(Settings(1, 8000, false,
                                     {{P::kDryWet, row.dryWet},
                                      {P::kVoices, row.voices},
                                      {P::kSaturation, row.saturation}}));
        EXPECT_NEAR(engine.Rendered(Constant(1, 9000, row.input))[0].back(), row.output, 2e-6);
    }
}

TEST(ChorusLines, ForgetWhatIsNotANumber) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr int kLine = 2 * (100 + 500 + 32) + 39, kHaas = 32;
    for (int choice = 0; choice < 16; ++choice) {
        ReferenceSettings settings = LoopSettings(choice);
        settings[P::kMinFrequency] = std::log10(20);
        settings[P::kSpreadMode] = 6;
        settings.sampleRate = 1000;
        Audio clean = Noise(settings.channels, 3000, 0.5f), dirty = clean;
        for (int c = 0; c < settings.channels; ++c) {
            std::fill_n(&clean[c][20], 3, 0.0f);
            std::ranges::copy(std::array{std::nanf(""), kInfinity, -kInfinity}, &dirty[c][20]);
        }
        const Audio expected = ChorusDriver(settings).Rendered(clean);
        const Audio output = ChorusDriver(settings).Rendered(dirty);
        for (int c = 0; c < settings.channels; ++c)
            for (int i = 23 + kLine + kHaas; i < 3000; ++i)
                ASSERT_EQ(output[c][i], expected[c][i]) << "loop " << choice << " sample " << i;
    }
}
