// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <ostream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "effect/chorus_driver.h"

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
    std::string settings = "";  // "Identifier=value ...", what is not named has its default
    std::string changes = "";   // the same before each block from the second on, parted by '|'
    ReferenceTransport transport = {};  // the position is lost after a third, tempo after two
    float peak = 0.5f;
    bool inPlace = false;
};

std::vector<Change> ReadChanges(const std::string& text) {
    std::vector<Change> changes;
    std::istringstream in(text);
    std::string identifier;
    for (double value = 0; std::getline(in >> std::ws, identifier, '=') && in >> value;) {
        const auto& table = P::Parameters();
        const auto found = std::ranges::find(table, identifier, &ReferenceParameter::identifier);
        if (found == table.end()) throw std::invalid_argument("no parameter " + identifier);
        changes.emplace_back(found - table.begin(), value);
    }
    return changes;
}

// What random settings hardly meet.
std::vector<SoundCase> Corners() {
    const std::string voices =
        "Voices=1|RateVariability=-1|Voices=10|RateVariability=0|Voices=3|"
        "RateVariability=1 Rate=1|DepthVariability=-0.8|Range=0.02 Delay=0.1";
    const std::string filters =  // 1.301029995663981 and 4.301029995663981 are the ends
        "MinFreq=2.5|MaxFreq=3|MinFreq=1.301029995663981||MaxFreq=4.301029995663981|MinFreq=4.3|"
        "MaxFreq=1.31";
    const std::string tremolos =
        "TremoloPhase=1 Tremolo=1|VoiceTremolo=1|Tremolo=-1|TremoloPhase=0|"
        "VoiceTremolo=-1 TremoloPhase=0.6||Tremolo=0 VoiceTremolo=0|Depth=2 TremoloPhase=0.1";
    return {
        {"Defaults", 2, 44100, 64},
        {"InPlaceStereo", 2, 48000, 0, 3000, "", "", {}, 0.5f, true},
        {"InPlaceFour", 4, 48000, 0, 3000, "", "", {}, 0.5f, true},
        {"AboveFullScale", 2, 48000, 256, 3000, "Saturation=1", "", {}, 1.5f},
        {"HighRateHaas", 2, 192000, 0, 15000, "spreadmode=6"},
        {"VoicesMono", 1, 44100, 400, 4000, "Voices=10", voices},
        {"VoicesStereo", 2, 44100, 400, 4000, "Voices=10", voices},
        {"FiltersStereo", 2, 44100, 400, 3200, "Voices=10", filters},
        {"TremolosStereo", 2, 44100, 300, 3000, "Voices=10", tremolos},
        {"TremolosFour", 4, 96000, 300, 3000, "Voices=10", tremolos},
        // A low rate makes the lines short: fans of voices reach their bounds, and lines run around
        // several times.
        {"FanInwards", 2, 8000, 500, 12000,
         "Rate=1 Range=0.0001 Delay=0.3 Voices=7 DepthVariability=-1 RateVariability=-1 "
         "RangeVariability=-1 DelayVariability=-1"},
        {"FanOutwards", 2, 8000, 500, 12000,
         "Rate=1 Range=0.09 Delay=0.01 Voices=7 DepthVariability=1 RateVariability=1 "
         "RangeVariability=1 DelayVariability=1"},
        {"AroundTheLine", 3, 1000, 0, 6000, "Voices=1 Range=0.1 Delay=0.5 Rate=1"},
        {"OnceAroundAtFullRate", 1, 44100, 1000, 60000, "Range=0.1 Delay=0.5"},
    };
}

// Every loop three times, with whatever the table above did not think of: each parameter anywhere
// in its range, three of them moved before each block.
std::vector<SoundCase> AllLoopsAtAnySettings() {
    constexpr int kRates[] = {44100, 48000, 96000, 88200, 192000};
    constexpr int kBlocks[] = {64, 1, 333, 0, 4096, 1000, 7};
    std::mt19937 generator(2024);
    const auto unit = [&] { return static_cast<double>(generator() >> 8) / 16777216; };
    const auto pick = [&](int count) { return static_cast<int>(unit() * count); };
    const auto anywhere = [&](int index) -> std::string {
        const ReferenceParameter& range = P::Parameters()[index];
        if (range.identifier.empty()) return "";
        const double value = range.min + (range.max - range.min) * std::pow(unit(), 1 << range.law);
        const bool whole = index == P::kVoices || index == P::kSpreadMode ||
                           (index >= P::kSync && index <= P::kSyncType);
        return range.identifier + "=" + std::to_string(whole ? std::round(value) : value) + " ";
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

// The engine and the slow version, which get the same.
struct Pair {
    Pair(const SoundCase& sound, bool highQuality)
        : settings(
              Settings(sound.channels, sound.sampleRate, highQuality, ReadChanges(sound.settings))),
          engine(settings),
          reference(settings) {}

    void Apply(const std::vector<Change>& changes) {
        for (const auto& [index, value] : changes) {
            engine.Set(index, value);
            reference.settings[index] = value;
            if (P::Parameters()[index].flags[0] == 'u') reference.Update();
        }
    }
    void Run(const SoundCase& sound);

    ReferenceSettings settings;
    ChorusDriver engine;
    ReferenceChorus reference;
};

ReferenceTransport TransportAt(const SoundCase& sound, int sample) {
    ReferenceTransport now = sound.transport;
    if (now.position >= 0) now.position += sample * now.tempo / 60 / sound.sampleRate;
    if (sample > sound.sampleCount / 3) now.position = -1;
    if (sample > sound.sampleCount * 2 / 3) now.tempo = -1;
    return now;
}

void Pair::Run(const SoundCase& sound) {
    const Audio input = Programme(sound.channels, sound.sampleCount, sound.peak);
    Audio expected = input;
    Audio actual = sound.inPlace ? input : Constant(sound.channels, sound.sampleCount, 9);
    BlockCutter cutter(sound.blockSize);
    std::istringstream changes(sound.changes);
    std::string change;
    for (int from = 0, count = 0; from < sound.sampleCount; from += count) {
        if (from > 0 && std::getline(changes, change, '|')) Apply(ReadChanges(change));
        count = cutter.Next(sound.sampleCount - from);
        const ReferenceTransport now = TransportAt(sound, from);
        reference.Process(now, ReadPointers(input, from).data(),
                          WritePointers(expected, from).data(), count);
        for (int part : {0, count})  // an empty block is none
            engine.Process(ReadPointers(sound.inPlace ? actual : input, from).data(),
                           WritePointers(actual, from).data(), part, now);
    }
    EXPECT_FALSE(std::getline(changes, change, '|')) << "too few blocks for the changes";
    EXPECT_LT(LargestDifference(actual, expected), kTolerance * std::max(1.0, Peak(expected)));
    EXPECT_GT(Peak(expected), 1e-3);
}

void PrintTo(const SoundCase& sound, std::ostream* out) { *out << sound.name; }

class ChorusSound : public testing::TestWithParam<SoundCase> {};

std::string NameOf(const testing::TestParamInfo<SoundCase>& info) { return info.param.name; }

}  // namespace

TEST_P(ChorusSound, IsThatOfTheSlowVersion) {
    for (bool highQuality : {false, true}) {
        SCOPED_TRACE(highQuality ? "sinc" : "cubic");
        Pair(GetParam(), highQuality).Run(GetParam());
    }
}

INSTANTIATE_TEST_SUITE_P(Corners, ChorusSound, testing::ValuesIn(Corners()), NameOf);
INSTANTIATE_TEST_SUITE_P(Loops, ChorusSound, testing::ValuesIn(AllLoopsAtAnySettings()), NameOf);

// Another rate, channel count or quality empties the lines, but phases run on and Haas delays keep
// their sound.
TEST(ChorusSoundAfterPrepare, IsThatOfTheSlowVersion) {
    SoundCase sound{"", 2, 8000, 256, 12000, "spreadmode=6 MinFreq=2.5"};  // fills the lines
    Pair pair(sound, false);
    pair.Run(sound);
    for (const auto& [channels, rate] :
         {std::pair(2, 8000), {1, 8000}, {3, 8000}, {2, 44100}, {2, 4000}}) {
        pair.settings.channels = sound.channels = channels;
        pair.settings.sampleRate = sound.sampleRate = rate;
        pair.settings.highQuality = !pair.settings.highQuality;
        pair.engine.Prepare(pair.settings);
        pair.reference.Prepare(pair.settings);
        pair.Run(sound);
    }
}

TEST(ChorusSoundWhileParametersMove, FollowsTheirTargets) {
    const SoundCase sound{"", 2, 44100};
    Pair pair(sound, true);
    for (const auto& [index, value] :
         ReadChanges("Rate=1 Range=0.002 Delay=0.01 RateVariability=1 RangeVariability=0.4 "
                     "DelayVariability=-0.1 MinFreq=2.5 MaxFreq=3.5")) {
        pair.engine.Record(index).SetSmoothing(true);
        pair.engine.Record(index).SetEffective(value);
        pair.reference.settings[index] = value;
    }
    pair.engine.Send(PluginCommand::kParameterChanged, -1);
    pair.reference.Update();
    pair.Run(sound);
}

// A record takes any value; the tables behind it are as long as its range.
TEST(ChorusSoundOfValuesOutOfRange, IsThatOfTheNearestInRangeOrTheDefault) {
    for (double value : {-1000.0, 1000.0, std::nan("")}) {
        const SoundCase sound{"", 2, 8000, 256, 9000, "sync=1"};
        Pair pair(sound, value > 0);
        for (int index :
             {P::kRange, P::kDelay, P::kVoices, P::kSpread, P::kSpreadMode, P::kRangeVariability,
              P::kDelayVariability, P::kSyncLength, P::kSyncType}) {
            const ReferenceParameter& range = P::Parameters()[index];
            pair.engine.Set(index, value);
            pair.reference.settings[index] = value < 0   ? range.min
                                             : value > 0 ? range.max
                                                         : range.defaultValue;
        }
        pair.reference.Update();
        pair.Run(sound);
    }
}
