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

void PrintTo(const SoundCase& sound, std::ostream* out) { *out << sound.name; }

// One parameter that stands at the head of a list of settings.
Change ReadChange(std::istream& in) {
    std::string identifier;
    double value = 0;
    std::getline(in >> std::ws, identifier, '=');
    in >> value >> std::ws;
    for (int p = 1; p < P::kCount; ++p)
        if (identifier == P::Parameters()[static_cast<std::size_t>(p)].identifier)
            return {p, value};
    throw std::invalid_argument("no parameter " + identifier);
}

std::vector<Change> ReadChanges(const std::string& text) {
    std::vector<Change> changes;
    std::istringstream in(text);
    while (!(in >> std::ws).eof()) changes.push_back(ReadChange(in));
    return changes;
}

std::vector<std::vector<Change>> ReadChangeBlocks(const std::string& text) {
    std::vector<std::vector<Change>> blocks;
    std::istringstream in(text);
    for (std::string block; std::getline(in, block, '|');) blocks.push_back(ReadChanges(block));
    return blocks;
}

// Every choice that a loop is made for, in turn; everything else is at work in all of them.
std::vector<SoundCase> AllLoops() {
    constexpr int kRates[] = {8000, 44100, 48000, 96000, 192000};
    constexpr int kBlocks[] = {64, 1, 333, 0, 4096, 1000, 7};
    constexpr int kChannels[] = {1, 4, 8, 3};
    std::vector<SoundCase> cases;
    for (int i = 0; i < 16; ++i) {
        const bool saturated = i & 1, ramped = i & 2, voiceTremolo = i & 4, stereo = i & 8;
        SoundCase sound{"Loop" + std::to_string(i), stereo ? 2 : kChannels[i % 4], kRates[i % 5],
                        kBlocks[i % 7]};
        sound.sampleCount = sound.blockSize == 4096 ? 17000 : 5000;
        sound.settings =
            "Rate=0.6 Range=0.003 Delay=0.002 Voices=4 Spread=0.8 Tremolo=-0.3 TremoloPhase=0.2 "
            "DepthVariability=0.9 RateVariability=-0.3 RangeVariability=0.3 DelayVariability=-0.2 "
            "MinFreq=2.2 MaxFreq=3.5 spreadmode=" +
            std::to_string(i % 7) + " Saturation=" + (saturated ? "0.6" : "0") +
            " VoiceTremolo=" + (voiceTremolo ? "0.5" : "0");
        if (ramped) sound.changes = "Depth=1.6||Depth=0.3|VoiceTremolo=0";
        cases.push_back(sound);
    }
    return cases;
}

std::vector<SoundCase> Layouts() {
    std::vector<SoundCase> cases = {
        {"Defaults", 2, 44100, 64},
        {"DefaultsMono", 1, 44100, 64},
        {"InPlaceStereo", 2, 48000, 0, 3000, "", "", {}, 0.5f, true},
        {"InPlaceFour", 4, 48000, 0, 3000, "", "", {}, 0.5f, true},
        {"AboveFullScale", 2, 48000, 256, 3000, "Saturation=1", "", {}, 1.5f},
        {"HighRateHaas", 2, 192000, 0, 15000, "spreadmode=6"},
    };
    for (int mode = 0; mode < 7; ++mode)
        cases.push_back({"SpreadMode" + std::to_string(mode), 2, 48000, 256, 3000,
                         "Voices=5 Spread=0.7 spreadmode=" + std::to_string(mode)});
    return cases;
}

// Fans of voices that reach their bounds, and lines that run around several times: a low rate makes
// the lines short.
std::vector<SoundCase> Fans() {
    return {
        {"FanInwards", 2, 8000, 500, 12000,
         "Rate=1 Range=0.0001 Delay=0.3 Voices=7 DepthVariability=-1 RateVariability=-1 "
         "RangeVariability=-1 DelayVariability=-1"},
        {"FanOutwards", 2, 8000, 500, 12000,
         "Rate=1 Range=0.09 Delay=0.01 Voices=7 DepthVariability=1 RateVariability=1 "
         "RangeVariability=1 DelayVariability=1"},
        {"SmallFanInwards", 1, 11025, 256, 3000,
         "Voices=3 RangeVariability=-0.6 DelayVariability=-0.1"},
        {"SmallFanOutwards", 1, 11025, 256, 3000,
         "Voices=3 RangeVariability=0.6 DelayVariability=0.1"},
        {"AroundTheLine", 3, 1000, 0, 6000, "Voices=1 Range=0.1 Delay=0.5 Rate=1"},
        {"AroundTheLineStereo", 2, 1000, 0, 6000, "Delay=0 Range=0.1 Rate=1 spreadmode=6"},
        {"OnceAroundAtFullRate", 1, 44100, 1000, 60000, "Range=0.1 Delay=0.5"},
    };
}

// Parameters that change between blocks.
std::vector<SoundCase> Moves() {
    const std::string modes =
        "spreadmode=6||spreadmode=2|spreadmode=4 Spread=0.4|Voices=1|spreadmode=0|Voices=10|"
        "spreadmode=5|spreadmode=1|spreadmode=3 Spread=1|spreadmode=2 Voices=4";
    const std::string voices =
        "Voices=1|RateVariability=-1|Voices=10|RateVariability=0|Voices=3|"
        "RateVariability=1 Rate=1|DepthVariability=-0.8|Range=0.02 Delay=0.1";
    const std::string filters =  // 1.301029995663981 and 4.301029995663981 are the ends
        "MinFreq=2.5|MaxFreq=3|MinFreq=1.301029995663981||MaxFreq=4.301029995663981|MinFreq=4.3|"
        "MaxFreq=1.31";
    const std::string tremolos =
        "TremoloPhase=1 Tremolo=1|VoiceTremolo=1|Tremolo=-1|TremoloPhase=0|"
        "VoiceTremolo=-1 TremoloPhase=0.6||Tremolo=0 VoiceTremolo=0|Depth=2 TremoloPhase=0.1";
    std::vector<SoundCase> cases;
    for (int channels : {1, 2, 4}) {
        const std::string name = std::to_string(channels) + "Channels";
        const int rate = channels == 4 ? 96000 : 44100;
        cases.push_back({"Modes" + name, channels, rate, 333, 4000, "Voices=10", modes});
        cases.push_back({"Voices" + name, channels, rate, 0, 4000, "Voices=10", voices});
        cases.push_back({"Filters" + name, channels, rate, 400, 3200, "Voices=10", filters});
        cases.push_back({"Tremolos" + name, channels, rate, 300, 3000, "Voices=10", tremolos});
    }
    return cases;
}

std::vector<SoundCase> TempoLocks() {
    const std::string moves = "|Rate=1||sync=0|sync=1||synclength__=14";
    const std::string settings = "sync=1 syncphase=0.9 spreadmode=1 Voices=4 ";
    return {
        {"Free", 2, 48000, 0, 4000, settings + "synclength__=12", moves, {133, -1}},
        {"Seated", 2, 48000, 0, 4000, settings + "synclength__=12", moves, {133, 3.7}},
        {"Triplets", 1, 48000, 0, 4000, settings + "synctype=1", moves, {133, 3.7}},
        {"Dotted", 2, 48000, 0, 4000, settings + "synctype=2", moves, {133, 3.7}},
    };
}

// Whatever the tables did not think of: every parameter anywhere in its range, three of them moved
// before each block.
std::vector<SoundCase> AnySettings() {
    constexpr int kRates[] = {44100, 48000, 96000, 192000};
    std::mt19937 generator(2024);
    const auto unit = [&] { return static_cast<double>(generator() >> 8) / 16777216; };
    const auto pick = [&](int count) { return static_cast<int>(unit() * count); };
    const auto anywhere = [&](int index) -> std::string {
        const ReferenceParameter& range = P::Parameters()[static_cast<std::size_t>(index)];
        if (range.identifier[0] == 0) return "";
        const double value = range.min + (range.max - range.min) * std::pow(unit(), 1 << range.law);
        const bool whole = index == P::kVoices || index == P::kSpreadMode ||
                           (index >= P::kSync && index <= P::kSyncType);
        return std::string(range.identifier) + "=" +
               std::to_string(whole ? std::round(value) : value) + " ";
    };
    std::vector<SoundCase> cases;
    for (int i = 0; i < 40; ++i) {
        SoundCase sound{"Any" + std::to_string(i), i % 2 == 0 ? 2 : 1 + pick(8), kRates[pick(4)],
                        100 + pick(400)};
        for (int p = 0; p < P::kCount; ++p) sound.settings += anywhere(p);
        for (int block = 1; block * sound.blockSize < sound.sampleCount; ++block) {
            if (block > 1) sound.changes += '|';
            for (int change = 0; change < 3; ++change)
                sound.changes += anywhere(1 + pick(P::kCount - 1));
        }
        sound.transport = {60 + 100 * unit(), i % 3 == 0 ? -1.0 : 10 * unit()};
        cases.push_back(sound);
    }
    return cases;
}

class ChorusSound : public testing::TestWithParam<SoundCase> {};

ReferenceSettings SettingsOf(const SoundCase& sound, bool highQuality) {
    ReferenceSettings settings = Settings(sound.channels, sound.sampleRate, highQuality);
    for (const auto& [index, value] : ReadChanges(sound.settings)) settings[index] = value;
    return settings;
}

ReferenceTransport TransportAt(const SoundCase& sound, int sample) {
    ReferenceTransport now = sound.transport;
    if (now.position >= 0) now.position += sample * now.tempo / 60 / sound.sampleRate;
    if (sample > sound.sampleCount / 3) now.position = -1;
    if (sample > sound.sampleCount * 2 / 3) now.tempo = -1;
    return now;
}

void Apply(const std::vector<Change>& changes, ChorusDriver& engine, ReferenceChorus& reference) {
    for (const auto& [index, value] : changes) {
        engine.Set(index, value);
        reference.settings[index] = value;
        if (ReferenceSettings::NeedsUpdate(index)) reference.Update();
    }
}

void RunBoth(const SoundCase& sound, ChorusDriver& engine, ReferenceChorus& reference) {
    const Audio input = Programme(sound.channels, sound.sampleCount, sound.peak);
    const std::vector<std::vector<Change>> changes = ReadChangeBlocks(sound.changes);
    Audio expected = input;
    Audio actual = sound.inPlace ? input : Constant(sound.channels, sound.sampleCount, 9);
    BlockCutter cutter(sound.blockSize);
    std::size_t next = 0;
    for (int from = 0, count = 0; from < sound.sampleCount; from += count) {
        if (from > 0 && next < changes.size()) Apply(changes[next++], engine, reference);
        count = cutter.Next(sound.sampleCount - from);
        const ReferenceTransport now = TransportAt(sound, from);
        reference.Process(now, ReadPointers(input, from).data(),
                          WritePointers(expected, from).data(), count);
        engine.Process(ReadPointers(sound.inPlace ? actual : input, from).data(),
                       WritePointers(actual, from).data(), count, now);
    }
    EXPECT_EQ(next, changes.size()) << "too few blocks for the changes";
    EXPECT_LT(LargestDifference(actual, expected), kTolerance * std::max(1.0, Peak(expected)));
    EXPECT_GT(Peak(expected), 1e-3);
}

ReferenceChorus MakeReference(const ReferenceSettings& settings) {
    ReferenceChorus reference;
    reference.settings = settings;
    reference.Prepare();
    return reference;
}

std::string NameOf(const testing::TestParamInfo<SoundCase>& info) { return info.param.name; }

}  // namespace

TEST_P(ChorusSound, IsThatOfTheSlowVersion) {
    for (bool highQuality : {false, true}) {
        SCOPED_TRACE(highQuality ? "sinc" : "cubic");
        const ReferenceSettings settings = SettingsOf(GetParam(), highQuality);
        ChorusDriver engine(settings);
        ReferenceChorus reference = MakeReference(settings);
        RunBoth(GetParam(), engine, reference);
    }
}

INSTANTIATE_TEST_SUITE_P(Loops, ChorusSound, testing::ValuesIn(AllLoops()), NameOf);
INSTANTIATE_TEST_SUITE_P(Layouts, ChorusSound, testing::ValuesIn(Layouts()), NameOf);
INSTANTIATE_TEST_SUITE_P(Fans, ChorusSound, testing::ValuesIn(Fans()), NameOf);
INSTANTIATE_TEST_SUITE_P(Moves, ChorusSound, testing::ValuesIn(Moves()), NameOf);
INSTANTIATE_TEST_SUITE_P(Tempo, ChorusSound, testing::ValuesIn(TempoLocks()), NameOf);
INSTANTIATE_TEST_SUITE_P(Any, ChorusSound, testing::ValuesIn(AnySettings()), NameOf);

// Another rate or quality empties the lines, but phases run on and Haas delays keep their sound.
TEST(ChorusSoundAfterPrepare, IsThatOfTheSlowVersion) {
    SoundCase sound{"", 2, 8000, 256, 12000, "spreadmode=6 MinFreq=2.5"};  // fills the lines
    ReferenceSettings settings = SettingsOf(sound, false);
    ChorusDriver engine(settings);
    ReferenceChorus reference = MakeReference(settings);
    RunBoth(sound, engine, reference);
    for (int rate : {8000, 44100, 4000}) {
        settings.sampleRate = sound.sampleRate = rate;
        settings.highQuality = !settings.highQuality;
        engine.Prepare(settings);
        reference.settings = settings;
        reference.Prepare();
        RunBoth(sound, engine, reference);
    }
}

TEST(ChorusSoundWhileParametersMove, FollowsTheirTargets) {
    const SoundCase sound{"", 2, 44100};
    ChorusDriver engine(SettingsOf(sound, true));
    ReferenceChorus reference = MakeReference(SettingsOf(sound, true));
    for (const auto& [index, value] :
         ReadChanges("Rate=1 Range=0.002 Delay=0.01 RateVariability=1 RangeVariability=0.4 "
                     "DelayVariability=-0.1 MinFreq=2.5 MaxFreq=3.5")) {
        engine.Record(index).SetSmoothing(true);
        engine.Record(index).SetEffective(value);
        reference.settings[index] = value;
    }
    engine.Send(PluginCommand::kParameterChanged, -1);
    reference.Update();
    RunBoth(sound, engine, reference);
}

// A record takes any value; the tables behind it are as long as its range.
TEST(ChorusSoundOfValuesOutOfRange, IsThatOfTheNearestInRange) {
    for (double sign : {-1.0, 1.0}) {
        const SoundCase sound{"", 2, 8000, 256, 9000, "sync=1"};
        ChorusDriver engine(SettingsOf(sound, sign > 0));
        ReferenceChorus reference = MakeReference(SettingsOf(sound, sign > 0));
        for (int index :
             {P::kRange, P::kDelay, P::kVoices, P::kSpread, P::kSpreadMode, P::kRangeVariability,
              P::kDelayVariability, P::kSyncLength, P::kSyncType}) {
            const ReferenceParameter& range = P::Parameters()[static_cast<std::size_t>(index)];
            engine.Set(index, sign * 1000);
            reference.settings[index] = sign < 0 ? range.min : range.max;
        }
        reference.Update();
        RunBoth(sound, engine, reference);
    }
}
