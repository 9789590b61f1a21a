// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>

#include "effect/chorus_driver.h"
#include "effect/host_sync.h"
#include "parameters/effect_parameters.h"
#include "parameters/plugin_double.h"

// The chorus's parameters as hosts and stored state know them: their places, identifiers, ranges,
// words. The defaults are those of the slow version.

namespace {

using P = ReferenceSettings;

const double kLow = std::log10(20), kHigh = std::log10(20000);

const struct {
    const char* identifier;
    const char* name;
    double min, max;
    std::string flags;  // u: a change updates, r: randomised, s: smoothed, m: among the main ones
    const char* text;   // of the default
} kTable[P::kCount] = {
    {"", "Main parameters", 0, 0, "ur", ""},
    {"Depth", "Dry/wet", 0, 2, "rm", "100% wet, 100% dry"},
    {"Rate", "Rate", -2, kLow, "ursm", "0.1000 Hz"},
    {"Range", "Range", 0.0001, 0.1, "ursm", "10 ms"},
    {"Delay", "Delay", 0, 0.5, "ursm", "5.0 ms"},
    {"Voices", "Voices", 1, 10, "urm", "2"},
    {"Saturation", "Saturation", 0, 1, "urm", "10.0%"},
    {"Spread", "Spread", 0, 1, "urm", "100.0%"},
    {"spreadmode", "Spread mode", 0, 6, "ur", "Panorama"},
    {"", "Advanced parameters", 0, 0, "ur", ""},
    {"DepthVariability", "Depth variability", -1, 1, "ur", "0.00%"},
    {"RateVariability", "Rate variability", -1, 1, "urs", "50.0%"},
    {"RangeVariability", "Range variability", -1, 1, "urs", "0.00%"},
    {"DelayVariability", "Delay variability", -1, 1, "urs", "0.00%"},
    {"MinFreq", "Min frequency", kLow, kHigh, "us", "20.0 Hz"},
    {"MaxFreq", "Max frequency", kLow, kHigh, "us", "20.0 kHz"},
    {"Tremolo", "Tremolo", -1, 1, "r", "0.00%"},
    {"VoiceTremolo", "Voice tremolo", -1, 1, "r", "0.00%"},
    {"TremoloPhase", "Tremolo phase", 0, 1, "r", "0\u00b0 (0%)"},
    {"sync", "Synchronization", 0, 1, "ur", "Off"},
    {"synclength__", "Length", 0, 14, "ur", "1 / 4"},
    {"synctype", "Type", 0, 2, "ur", "Straight"},
    {"syncphase", "Phase", 0, 1, "ur", "90\u00b0 (25.0%)"},
};

class ChorusParametersTest : public testing::Test {
protected:
    ChorusParametersTest() {
        AddEffectParameters({&plugin, {}, {}, false}, *driver.host->plugin, plugin.table, map);
    }

    ChorusDriver driver{{}};
    PluginDouble plugin;
    ParameterAdapterMap map;
};

}  // namespace

TEST_F(ChorusParametersTest, KeepTheirPlacesRangesAndWords) {
    ASSERT_EQ(driver.host->descriptor->parameterCount, P::kCount);
    for (int p = 0; p < P::kCount; ++p) {
        const auto& expected = kTable[p];
        SCOPED_TRACE(expected.name);
        const ParameterRecord& record = driver.Record(p);
        EXPECT_EQ(record.name.ToUtf8(), expected.name);
        EXPECT_EQ(record.identifier.ToUtf8(), expected.identifier);
        EXPECT_NEAR(record.min, expected.min, 1e-12);
        EXPECT_NEAR(record.max, expected.max, 1e-12);
        EXPECT_NEAR(record.defaultValue, P()[p], 1e-12);
        for (const auto& [letter, flag] : {std::pair('u', ParameterFlag::kUpdates),
                                           {'r', ParameterFlag::kRandomizes},
                                           {'s', ParameterFlag::kSmoothed},
                                           {'m', ParameterFlag::kMain}})
            EXPECT_EQ(record.Has(flag), expected.flags.find(letter) != std::string::npos) << letter;
        EXPECT_EQ(record.Has(ParameterFlag::kGroupBits), p == 9);
        const bool bent = p == P::kRange || p == P::kDelay;
        EXPECT_EQ(record.law, bent ? PositionLaw::FourthPower : PositionLaw::Linear);
        ParameterMainBase* adapter = map.Find(p);
        EXPECT_EQ(adapter == nullptr ? "" : adapter->GetParameterValueName(0).ToUtf8(),
                  expected.text);
        // Catches a text that slid to another row.
        const std::string help = record.help.ToUtf8(), name = std::string("<name>") + expected.name;
        EXPECT_EQ(help.starts_with(name + (p == P::kSync ? " panel</name>" : "</name>")),
                  p != 0 && p != 9);
    }
    EXPECT_EQ(driver.Record(P::kSpreadMode).options.at(6).ToUtf8(), "Haas (32 ms)");
    EXPECT_EQ(driver.Record(P::kSyncLength).options.at(14).ToUtf8(), "1 / 128");
    EXPECT_EQ(driver.Record(P::kSyncType).options.at(2).ToUtf8(), "Dotted");
    // Two oddities that are meant.
    EXPECT_THAT(driver.Record(P::kRange).help.ToUtf8(), testing::HasSubstr("defines  frequency"));
    EXPECT_THAT(driver.Record(P::kSpreadMode).help.ToUtf8(),
                testing::HasSubstr("in stereo.Note that"));
}

TEST_F(ChorusParametersTest, TellValuesAndReadThemBack) {
    const struct {
        int index;
        double value;
        const char* text;
        double readBack;
    } rows[] = {{P::kDryWet, 0.254, "25% wet, 100% dry", 0.25},
                {P::kDryWet, 1.505, "100% wet, 50% dry", 1},
                {P::kDryWet, 2, "100% wet, 0% dry", 1},
                {P::kRate, 0, "1.00 Hz", 0},
                {P::kRange, 0.00634, "6.3 ms", 0.0063},
                {P::kSaturation, 0.25, "25.0%", 0.25},
                {P::kMaxFrequency, 4, "10.0 kHz", kLow},  // 10 Hz, below the range
                {P::kTremoloPhase, 0.25, "90\u00b0 (25.0%)", 0.25},
                {P::kSyncPhase, 0.5, "180\u00b0 (50.0%)", 0.5}};
    for (const auto& [index, value, text, readBack] : rows) {
        ParameterMainBase& adapter = *map.Find(index);
        adapter.record.Set(value);
        EXPECT_EQ(adapter.GetParameterValueName(0).ToUtf8(), text);
        EXPECT_TRUE(adapter.ParseParameterValueName(0, MString::FromUtf8(text)));
        EXPECT_NEAR(adapter.record.Get(), readBack, 1e-12) << text;
    }
}

// Length is told in whole notes: "1 / 4" is four cycles in each of them.
TEST(HostSync, TakesNoteLengthsFromEitherList) {
    using Lengths = MAudioPluginHostSync::Lengths;
    for (const auto& [lengths, first] : {std::pair(Lengths::Long, "128"), {Lengths::Short, "64"}}) {
        ParameterRecord records[MAudioPluginHostSync::kRecordCount];
        MAudioPluginHostSync sync;
        sync.Describe(records, lengths);
        EXPECT_EQ(records[1].options.at(0).ToUtf8(), first);
        for (int length = 0; length < 15; ++length) {
            records[1].Set(length);
            sync.Refresh();
            const std::string text = records[1].options.at(length).ToUtf8();
            const bool fraction = text.starts_with("1 / ");
            // At 240 beats a minute a whole note lasts a second.
            EXPECT_EQ(sync.RateAt(240, 1),
                      fraction ? std::stod(text.substr(4)) : 1 / std::stod(text));
        }
    }
}
