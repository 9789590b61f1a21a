// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <ostream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "dsp/voice_reads.h"
#include "effect/chorus_driver.h"
#include "effect/fennir_audio_effect_plugin.h"

// The engine against the slow version. Both round the same float samples at the same places, and
// differ by rounding only: 1e-6 of full scale, or of an output above it, leaves room for ten voices
// and a sum in another order.

namespace {

using P = ReferenceSettings;

constexpr double kTolerance = 1e-6;

struct SoundCase {
    std::string name;
    int channels = 2;
    int sampleRate = 48000;
    int blockSize = 256;  // 0: random
    int sampleCount = 3000;
    std::string settings = "";     // "Identifier=value ...", what is not named has its default
    std::string changes = "";      // the same before each block from the second on, parted by '|'
    TransportInfo transport = {};  // the position is lost after a third, tempo after two
    float peak = 0.5f;
    bool inPlace = false;
};

void PrintTo(const SoundCase& sound, std::ostream* out) { *out << sound.name; }

// What random settings hardly meet.
const SoundCase kCorners[] = {
    {"Defaults", 2, 44100, 64},
    {"InPlaceStereo", 2, 48000, 0, 3000, "", "", {}, 0.5f, true},
    {"InPlaceFour", 4, 48000, 0, 3000, "", "", {}, 0.5f, true},
    {"AboveFullScale", 2, 48000, 256, 3000, "Saturation=1", "", {}, 1.5f},
    {"HighRateHaas", 2, 192000, 0, 15000, "spreadmode=6"},
    {"Voices", 2, 44100, 400, 4000, "Voices=10",
     "Voices=1|RateVariability=-1|Voices=10|RateVariability=0|Voices=3|"
     "RateVariability=1 Rate=1|DepthVariability=-0.8|Range=0.02 Delay=0.1"},
    // 1.301029995663981 and 4.301029995663981 are the ends.
    {"Filters", 2, 44100, 400, 3200, "",
     "MinFreq=2.5|MaxFreq=3|MinFreq=1.301029995663981||MaxFreq=4.301029995663981|MinFreq=4.3|"
     "MaxFreq=1.31"},
    {"FiltersAboveHalfTheRate", 1, 8000, 400, 3000, "MinFreq=4 MaxFreq=3.7"},
    {"Tremolos", 4, 96000, 300, 3000, "Voices=10",
     "TremoloPhase=1 Tremolo=1|VoiceTremolo=1|Tremolo=-1|TremoloPhase=0|"
     "VoiceTremolo=-1 TremoloPhase=0.6||Tremolo=0 VoiceTremolo=0|Depth=2 TremoloPhase=0.1"},
    // A low rate makes the lines short: fans of voices reach their bounds, and lines run around
    // several times. Where a read meets a whole sample its window jumps by 5e-6: a rate of 1 would.
    {"FanInwards", 2, 8000, 500, 12000,
     "Rate=0.97 Range=0.0001 Delay=0.3 Voices=7 DepthVariability=-1 RateVariability=-1 "
     "RangeVariability=-1 DelayVariability=-1"},
    {"FanOutwards", 2, 8000, 500, 12000,
     "Rate=1 Range=0.09 Delay=0.01 Voices=7 DepthVariability=1 RateVariability=1 "
     "RangeVariability=1 DelayVariability=1"},
    {"AroundTheLine", 3, 1000, 0, 6000, "Voices=1 Range=0.1 Delay=0.5 Rate=0.97"},
    {"OnceAroundAtFullRate", 1, 44100, 1000, 60000, "Range=0.1 Delay=0.5"},
    // A record takes any value; the tables behind it are as long as its range.
    {"AboveTheRange", 2, 8000, 256, 9000,
     "sync=1 Range=1e3 Delay=1e3 Voices=1e3 Spread=1e3 spreadmode=1e3 RangeVariability=1e3 "
     "DelayVariability=1e3 synclength__=1e3 synctype=1e3"},
    {"BelowTheRange", 2, 8000, 256, 9000,
     "sync=1 Range=-1e3 Delay=-1e3 Voices=-1e3 Spread=-1e3 spreadmode=-1e3 RangeVariability=-1e3 "
     "DelayVariability=nan synclength__=-1e3 synctype=nan"},
    {"NoSuchTempo", 1, 8000, 256, 3000, "sync=1", "", {1e10, 1}},
    {"NoSuchPosition", 1, 8000, 256, 3000, "sync=1", "", {120, 1e10}},
};

// Every loop three times, with whatever the table above did not think of: each parameter anywhere
// in its range, three of them moved before each block.
std::vector<SoundCase> AllLoopsAtAnySettings() {
    constexpr int kRates[] = {44100, 48000, 96000, 88200, 192000};
    constexpr int kBlocks[] = {64, 1, 333, 0, 4096, 1000, 7};
    std::mt19937 generator(2024);
    ChorusDriver description({});
    const auto unit = [&] { return static_cast<double>(generator() >> 8) / 16777216; };
    const auto pick = [&](int count) { return static_cast<int>(unit() * count); };
    const auto anywhere = [&](int index) -> std::string {
        const ParameterRecord& record = description.Record(index);
        if (record.identifier.IsEmpty()) return "";
        const bool whole = record.type != ParameterType::Float;
        const double value = record.ValueAt(unit());
        return record.identifier.ToUtf8() + "=" +
               std::to_string(whole ? std::round(value) : value) + " ";
    };
    std::vector<SoundCase> cases;
    for (int i = 0; i < 48; ++i) {
        const bool clean = i & 1, still = i & 2, plainVoices = i & 4, stereo = i & 8;
        SoundCase sound{"Any" + std::to_string(i), stereo ? 2 : 1 + pick(8), kRates[i % 5],
                        kBlocks[i % 7]};
        sound.sampleCount = std::max(3500, 5 * sound.blockSize);
        for (int p = 0; p < P::kCount; ++p) sound.settings += anywhere(p);
        if (clean) sound.settings += "Saturation=0 ";
        if (plainVoices) sound.settings += "VoiceTremolo=0 ";
        for (int block = 0; !still && block < 4; ++block) {
            for (int k = 0; k < 3; ++k) sound.changes += anywhere(1 + pick(P::kCount - 1));
            sound.changes += "Depth=" + std::to_string(2 * unit()) + "|";
        }
        sound.transport = {60 + 100 * unit(), i % 3 == 0 ? -1.0 : 10 * unit()};
        cases.push_back(sound);
    }
    return cases;
}

TransportInfo TransportAt(const SoundCase& sound, int sample) {
    TransportInfo now = sound.transport;
    if (now.position >= 0) now.position += sample * now.tempo / 60 / sound.sampleRate;
    if (sample > sound.sampleCount / 3) now.position = -1;
    if (sample > sound.sampleCount * 2 / 3) now.tempo = -1;
    return now;
}

// The engine and the slow version, which get the same.
struct Pair {
    Pair(const SoundCase& sound, bool highQuality, PluginEntry entry = ChorusEntry)
        : engine({}, entry), reference({}) {
        Apply(sound.settings);
        Prepare(sound, highQuality);
    }

    void Prepare(const SoundCase& sound, bool highQuality) {
        ReferenceSettings settings = reference.settings;
        settings.channels = sound.channels;
        settings.sampleRate = sound.sampleRate;
        settings.highQuality = highQuality;
        engine.Prepare(settings);
        reference.Prepare(settings);
    }
    void Apply(const std::string& settings);
    void Follow(int index);
    void Run(const SoundCase& sound);

    ChorusDriver engine;
    ReferenceChorus reference;
};

void Pair::Apply(const std::string& settings) {
    std::istringstream in(settings);
    std::string identifier, value;
    while (std::getline(in >> std::ws, identifier, '=') && in >> value) {
        int index = 0;
        while (engine.Record(index).identifier.ToUtf8() != identifier)
            if (++index == P::kCount) throw std::invalid_argument("no parameter " + identifier);
        engine.Set(index, std::stod(value));
        Follow(index);
    }
}

void Pair::Follow(int index) {
    reference.settings[index] = engine.Record(index).EffectiveInRange();
    if (engine.Record(index).Has(ParameterFlag::kUpdates)) reference.Update();
}

void Pair::Run(const SoundCase& sound) {
    const Audio input = Programme(sound.channels, sound.sampleCount, sound.peak);
    Audio expected = input;
    Audio actual = sound.inPlace ? input : Constant(sound.channels, sound.sampleCount, 9);
    std::istringstream changes(sound.changes);
    std::string change;
    int from = 0;
    for (const int count : BlocksOf(sound.sampleCount, sound.blockSize)) {
        if (from > 0 && std::getline(changes, change, '|')) Apply(change);
        const TransportInfo now = TransportAt(sound, from);
        reference.Process(now, ReadPointers(input, from).data(),
                          WritePointers(expected, from).data(), count);
        for (int part : {0, count})  // an empty block is none
            engine.Process(ReadPointers(sound.inPlace ? actual : input, from).data(),
                           WritePointers(actual, from).data(), part, now);
        from += count;
    }
    EXPECT_FALSE(std::getline(changes, change, '|')) << "too few blocks for the changes";
    EXPECT_LT(LargestDifference(actual, expected), kTolerance * std::max(1.0, Peak(expected)));
    EXPECT_GT(Peak(expected), 1e-3);
}

class ChorusSound : public testing::TestWithParam<SoundCase> {};

template <ProcessorVariant variant>
std::intptr_t EntryOf(MPlugin* object, int code, PluginArguments& arguments) {
    if (object == nullptr) object = new FennirAudioEffectPlugin(GetVoiceReads(variant));
    return ChorusEntry(object, code, arguments);
}

}  // namespace

TEST_P(ChorusSound, IsThatOfTheSlowVersion) {
    for (bool highQuality : {false, true}) {
        SCOPED_TRACE(highQuality ? "sinc" : "cubic");
        Pair(GetParam(), highQuality).Run(GetParam());
    }
}

// Bit for bit, while no parameter moves: ramps follow the blocks.
TEST_P(ChorusSound, IsTheSameHoweverItIsCutOnEveryProcessor) {
    const SoundCase& sound = GetParam();
    const std::pair<ProcessorVariant, PluginEntry> processors[] = {
        {ProcessorVariant::Baseline, EntryOf<ProcessorVariant::Baseline>},
        {ProcessorVariant::Avx2, EntryOf<ProcessorVariant::Avx2>},
        {ProcessorVariant::Avx512, EntryOf<ProcessorVariant::Avx512>}};
    const Audio input = Programme(sound.channels, 2500, sound.peak);
    for (bool highQuality : {false, true}) {
        Audio baseline;
        for (const auto& [variant, entry] : processors) {
            if (!HasProcessorVariant(variant)) continue;
            const Audio whole = Pair(sound, highQuality, entry).engine.Rendered(input, 2500);
            if (baseline.empty()) baseline = whole;
            EXPECT_LT(LargestDifference(whole, baseline), kTolerance * std::max(1.0, Peak(whole)));
            for (int size : {1, 333, 0})
                EXPECT_EQ(Pair(sound, highQuality, entry).engine.Rendered(input, size), whole)
                    << "blocks of " << size;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Corners, ChorusSound, testing::ValuesIn(kCorners));
INSTANTIATE_TEST_SUITE_P(Loops, ChorusSound, testing::ValuesIn(AllLoopsAtAnySettings()));

// Another rate, channel count or quality empties the lines, but phases run on and Haas delays keep
// their sound.
TEST(ChorusSoundAfterPrepare, IsThatOfTheSlowVersion) {
    SoundCase sound{"", 2, 8000, 256, 12000, "spreadmode=6 MinFreq=2.5"};  // fills the lines
    bool highQuality = false;
    Pair pair(sound, highQuality);
    pair.Run(sound);
    for (const auto& [channels, rate] :
         {std::pair(2, 8000), {1, 8000}, {3, 8000}, {2, 44100}, {2, 4000}}) {
        sound.channels = channels;
        sound.sampleRate = rate;
        highQuality = !highQuality;
        pair.Prepare(sound, highQuality);
        pair.Run(sound);
    }
}

TEST(ChorusSoundWhileParametersMove, FollowsTheirTargets) {
    const SoundCase sound{"", 2, 44100};
    Pair pair(sound, true);
    for (const auto& [index, value] : std::vector<Change>{{P::kRate, 1},
                                                          {P::kRange, 0.002},
                                                          {P::kDelay, 0.01},
                                                          {P::kRateVariability, 1},
                                                          {P::kRangeVariability, 0.4},
                                                          {P::kDelayVariability, -0.1},
                                                          {P::kMinFrequency, 2.5},
                                                          {P::kMaxFrequency, 3.5}}) {
        pair.engine.Record(index).SetSmoothing(true);
        pair.engine.Record(index).SetEffective(value);
        pair.Follow(index);
    }
    pair.engine.Send(PluginCommand::kParameterChanged, -1);
    pair.Run(sound);
}

TEST(ChorusLines, ForgetWhatIsNotANumber) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr int kLine = 2 * (100 + 500 + 32) + 39, kHaas = 32;
    for (int choice = 0; choice < 8; ++choice) {
        const int channels = (choice & 4) != 0 ? 2 : 3;
        const ReferenceSettings settings =
            Settings(channels, 1000, (choice & 1) != 0,
                     {{P::kSaturation, (choice & 2) != 0 ? 0.5 : 0}, {P::kSpreadMode, 6}});
        Audio clean = Noise(channels, 3000, 0.5f), dirty = clean;
        for (int c = 0; c < channels; ++c) {
            std::fill_n(&clean[c][20], 3, 0.0f);
            std::ranges::copy(std::array{std::nanf(""), kInfinity, -kInfinity}, &dirty[c][20]);
        }
        Audio expected = ChorusDriver(settings).Rendered(clean);
        Audio output = ChorusDriver(settings).Rendered(dirty);
        for (Audio* audio : {&expected, &output})
            for (auto& channel : *audio)
                channel.erase(channel.begin(), channel.begin() + 23 + kLine + kHaas);
        EXPECT_EQ(output, expected) << choice;
    }
}
