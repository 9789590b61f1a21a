// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "effect/chorus_driver.h"

namespace {

using P = ReferenceSettings;

// The engine and the slow version, which get the same: cases of a sequence that starts anywhere.
class ChorusSound : public testing::TestWithParam<int> {
protected:
    // A third of the effects hears targets instead of values where there are some.
    ChorusSound() {
        for (int p = 0; p < P::kCount; ++p)
            if (GetParam() % 3 == 0 && engine.Record(p).Has(ParameterFlag::kSmoothed))
                engine.Record(p).SetSmoothing(true);
    }

    int Pick(int count) { return static_cast<int>(generator() % count); }

    void Set(int index, double value) {
        engine.Set(index, value);
        reference.settings[index] = engine.Record(index).EffectiveInRange();
        if (engine.Record(index).Has(ParameterFlag::kUpdates)) reference.Update();
    }

    // Somewhere in the range, at one of its ends (a record takes any value, the sound is that of
    // the nearest in range) or at 0.
    void Move(int index) {
        const ParameterRecord& record = engine.Record(index);
        const double value = Pick(4) == 0 ? 0 : record.ValueAt(Pick(1400) * 0.001 - 0.2);
        Set(index, record.type == ParameterType::Float ? value : std::round(value));
    }

    // At the low rates lines run around several times. They are primes, so that phases do not meet
    // whole samples, where a sinc read's window moves on and the result jumps by 5e-6.
    void Prepare(int number) {
        constexpr int kRates[] = {44100, 997, 96000, 8011, 192000};
        for (int p = 0; p < P::kCount; ++p) Move(p);
        if (number & 1) Set(P::kSaturation, 0);
        if (number & 2) Set(P::kVoiceTremolo, 0);
        reference.settings.channels = number & 4 ? 2 : 1 + Pick(8);
        reference.settings.highQuality = number & 8;
        reference.settings.sampleRate = kRates[number % 5];
        engine.Prepare(reference.settings);
        reference.Prepare();
    }

    void Run(int number);

    std::mt19937 generator{static_cast<std::uint32_t>(GetParam())};
    ChorusDriver engine{{}};
    ReferenceChorus reference;
};

// The host forgets its place after a while, then its tempo. In every other case parameters move.
void ChorusSound::Run(int number) {
    constexpr int kBlocks[] = {64, 1, 333, 0, 4096, 1000, 7};
    constexpr double kTempos[] = {-1, 75.3, 131.1, 1e10};
    const int channels = reference.settings.channels, sampleCount = number % 7 == 4 ? 17000 : 3500;
    const Audio input = Programme(channels, sampleCount, number % 3 ? 0.5f : 1.5f);
    const bool inPlace = number % 5 == 1;
    Audio expected = input, actual = inPlace ? input : Constant(channels, sampleCount, 99);
    int from = 0;
    for (const int count : BlocksOf(sampleCount, kBlocks[number % 7])) {
        const bool moves = (number & 16) != 0 && from > 0 && Pick(1000) < count;
        for (const int p : {P::kDryWet + 0, Pick(P::kCount), Pick(P::kCount), Pick(P::kCount)})
            if (moves) Move(p);
        const TransportInfo now = {from > 2500 ? -1 : kTempos[number % 4], from > 1200 ? -1
                                                                           : number % 3
                                                                               ? 10.1 + from * 1e-5
                                                                               : 1e10};
        reference.Process(now, ReadPointers(input, from).data(),
                          WritePointers(expected, from).data(), count);
        for (const int part : {0, count})  // an empty block is none
            engine.Process(ReadPointers(inPlace ? actual : input, from).data(),
                           WritePointers(actual, from).data(), part, now);
        from += count;
    }
    // Both round the same float samples at the same places, and differ by rounding only: 1e-6 of
    // full scale, or of an output above it, leaves room for ten voices and a sum in another order.
    EXPECT_LT(LargestDifference(actual, expected), 1e-6 * std::max(1.0, Peak(expected))) << number;
}

}  // namespace

// One effect for several: another rate, channel count or quality empties the lines, but phases run
// on and Haas delays keep their sound.
TEST_P(ChorusSound, IsThatOfTheSlowVersion) {
    for (const int further : {0, 8, 9, 5}) {
        Prepare(GetParam() + further);
        Run(GetParam() + further);
    }
}

// Bit for bit, while no parameter moves: ramps follow the blocks.
TEST_P(ChorusSound, IsTheSameHoweverItIsCut) {
    Prepare(GetParam());
    const Audio input = Programme(reference.settings.channels, 2500, 0.5f);
    const Audio whole = ChorusDriver(reference.settings).Rendered(input, 2500);
    for (const int blockSize : {1, 333, 0})
        EXPECT_EQ(ChorusDriver(reference.settings).Rendered(input, blockSize), whole) << blockSize;
}

INSTANTIATE_TEST_SUITE_P(AnySettings, ChorusSound, testing::Range(0, 64));

TEST(ChorusLines, ForgetWhatIsNotANumber) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr int kLine = 2 * (100 + 500 + 32) + 39, kHaas = 32;
    for (const int kind : {0, 1, 2, 3}) {
        const auto rest = [kind](const std::array<float, 3>& start) {
            ChorusDriver engine(Settings(2 + kind / 2, 1000, kind % 2, {{P::kSpreadMode, 6}}));
            Audio audio = Noise(2 + kind / 2, 3000, 0.5f);
            for (auto& channel : audio) std::ranges::copy(start, channel.begin());
            audio = engine.Rendered(audio);
            for (auto& channel : audio) std::fill_n(channel.begin(), 3 + kLine + kHaas, 0.0f);
            return audio;
        };
        EXPECT_EQ(rest({std::nanf(""), kInfinity, -kInfinity}), rest({0, 0, 0}));
    }
}
