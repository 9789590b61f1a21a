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

constexpr int kCases = 64;

// The engine and the slow version round the same float samples at the same places, and differ by
// rounding only: 1e-6 of full scale, or of an output above it, leaves room for ten voices and a sum
// in another order.
constexpr double kTolerance = 1e-6;

using Change = std::pair<int, double>;  // parameter index, value

struct SoundCase {
    int channels;
    int sampleRate;
    int blockSize;  // 0: random
    int sampleCount;
    float peak;
    std::vector<Change> settings;
    std::vector<std::vector<Change>> changes;  // before each block from the second on
    TransportInfo transport;
};

// Case i of a fixed sequence in which every loop comes several times. Each parameter stands
// somewhere in its range, at one of its ends (a record takes any value, the sound is that of the
// nearest in range) or at 0; half of the cases move some of them before each block.
SoundCase AnySound(int i) {
    // At the low rates lines run around several times. They are primes, so that phases do not meet
    // whole samples, where a sinc read's window moves on and the result jumps by 5e-6.
    constexpr int kRates[] = {44100, 997, 96000, 8011, 192000};
    constexpr int kBlocks[] = {64, 1, 333, 0, 4096, 1000, 7};
    constexpr double kTempos[] = {-1, 75.3, 131.1, 1e10};
    static ChorusDriver description({});
    std::mt19937 generator(i);
    const auto pick = [&](int count) { return static_cast<int>(generator() % count); };
    const auto anywhere = [&](int index) -> Change {
        const ParameterRecord& record = description.Record(index);
        const double value = pick(4) == 0 ? 0 : record.ValueAt(pick(1400) * 0.001 - 0.2);
        return {index, record.type == ParameterType::Float ? value : std::round(value)};
    };
    const bool clean = i & 1, still = i & 2, plainVoices = i & 4, stereo = i & 8;
    SoundCase sound{stereo ? 2 : 1 + pick(8),
                    kRates[i % 5],
                    kBlocks[i % 7],
                    0,
                    i % 3 ? 0.5f : 1.5f,
                    {},
                    {},
                    {kTempos[i % 4], i % 3 ? 10.1 * i : 1e10}};
    sound.sampleCount = std::max(3500, 4 * sound.blockSize);
    for (int p = 0; p < P::kCount; ++p) sound.settings.push_back(anywhere(p));
    if (clean) sound.settings.emplace_back(P::kSaturation, 0);
    if (plainVoices) sound.settings.emplace_back(P::kVoiceTremolo, 0);
    if (still) return sound;
    for (int block = 0; block < 4; ++block)
        sound.changes.push_back({anywhere(pick(P::kCount)),
                                 anywhere(pick(P::kCount)),
                                 anywhere(pick(P::kCount)),
                                 {P::kDryWet, 0.2 * pick(11)}});
    return sound;
}

// The engine and the slow version, which get the same.
struct Pair {
    explicit Pair(bool smoothing = false) {
        for (int p = 0; p < P::kCount; ++p)
            engine.Record(p).SetSmoothing(smoothing &&
                                          engine.Record(p).Has(ParameterFlag::kSmoothed));
    }

    void Apply(const std::vector<Change>& changes);
    void Prepare(const SoundCase& sound, bool highQuality);
    void Run(const SoundCase& sound, bool inPlace);

    ChorusDriver engine{{}};
    ReferenceChorus reference;
};

void Pair::Apply(const std::vector<Change>& changes) {
    for (const auto& [index, value] : changes) {
        engine.Set(index, value);
        reference.settings[index] = engine.Record(index).EffectiveInRange();
        if (engine.Record(index).Has(ParameterFlag::kUpdates)) reference.Update();
    }
}

void Pair::Prepare(const SoundCase& sound, bool highQuality) {
    Apply(sound.settings);
    ReferenceSettings settings = reference.settings;
    settings.channels = sound.channels;
    settings.sampleRate = sound.sampleRate;
    settings.highQuality = highQuality;
    engine.Prepare(settings);
    reference.Prepare(settings);
}

void Pair::Run(const SoundCase& sound, bool inPlace) {
    const Audio input = Programme(sound.channels, sound.sampleCount, sound.peak);
    Audio expected = input;
    Audio actual = inPlace ? input : Constant(sound.channels, sound.sampleCount, 99);
    auto change = sound.changes.begin();
    int from = 0;
    for (const int count : BlocksOf(sound.sampleCount, sound.blockSize)) {
        if (from > 0 && change != sound.changes.end()) Apply(*change++);
        TransportInfo now = sound.transport;  // which the host forgets in time
        now.position = from > sound.sampleCount / 3 ? -1 : now.position + from * 1e-5;
        if (from > sound.sampleCount * 2 / 3) now.tempo = -1;
        reference.Process(now, ReadPointers(input, from).data(),
                          WritePointers(expected, from).data(), count);
        for (const int part : {0, count})  // an empty block is none
            engine.Process(ReadPointers(inPlace ? actual : input, from).data(),
                           WritePointers(actual, from).data(), part, now);
        from += count;
    }
    EXPECT_LT(LargestDifference(actual, expected), kTolerance * std::max(1.0, Peak(expected)));
}

class ChorusSound : public testing::TestWithParam<int> {};

}  // namespace

// One effect for all: another rate, channel count or quality empties the lines, but phases run on
// and Haas delays keep their sound.
TEST_P(ChorusSound, IsThatOfTheSlowVersion) {
    Pair pair(GetParam() % 3 == 0);
    for (const auto& [i, highQuality] : {std::pair(0, false), {0, true}, {1, false}, {5, true}}) {
        SCOPED_TRACE(highQuality ? "sinc" : "cubic");
        const SoundCase sound = AnySound(GetParam() + i);
        pair.Prepare(sound, highQuality);
        pair.Run(sound, highQuality);
    }
}

// Bit for bit, while no parameter moves: ramps follow the blocks.
TEST_P(ChorusSound, IsTheSameHoweverItIsCut) {
    const SoundCase sound = AnySound(GetParam());
    const Audio input = Programme(sound.channels, 2500, sound.peak);
    Audio whole;
    for (const int blockSize : {2500, 1, 333, 0}) {
        Pair pair;
        pair.Prepare(sound, (GetParam() & 16) != 0);
        const Audio output = pair.engine.Rendered(input, blockSize);
        if (whole.empty()) whole = output;
        EXPECT_EQ(output, whole) << "blocks of " << blockSize;
    }
}

INSTANTIATE_TEST_SUITE_P(AnySettings, ChorusSound, testing::Range(0, kCases));

TEST(ChorusLines, ForgetWhatIsNotANumber) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr int kLine = 2 * (100 + 500 + 32) + 39, kHaas = 32;
    for (const int channels : {2, 3}) {
        for (const bool highQuality : {false, true}) {
            const auto rest = [&](const std::array<float, 3>& start) {
                ChorusDriver engine({channels, 1000, highQuality});
                engine.Set(P::kSpreadMode, 6);
                Audio audio = Noise(channels, 3000, 0.5f);
                for (auto& channel : audio) std::ranges::copy(start, channel.begin());
                audio = engine.Rendered(audio);
                for (auto& channel : audio)
                    channel.erase(channel.begin(), channel.begin() + 3 + kLine + kHaas);
                return audio;
            };
            EXPECT_EQ(rest({std::nanf(""), kInfinity, -kInfinity}), rest({0, 0, 0}));
        }
    }
}
