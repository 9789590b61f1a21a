// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <tuple>
#include <utility>

#include "effect/chorus_driver.h"
#include "effect/host_sync.h"
#include "parameters/effect_parameters.h"
#include "parameters/plugin_double.h"

// The chorus's parameters as hosts and stored state know them. What an identifier stands for is
// shown by the sound tests.

namespace {

using P = ReferenceSettings;

// Identifier, name, range, law of the knob, flags (u: a change updates, r: randomised, s: smoothed,
// m: among the main ones, g: an advanced group), the default as a text.
const char* const kTable[P::kCount] = {
    "|Main parameters|0..0^1|ur|",
    "Depth|Dry/wet|0..2^1|rm|100% wet, 100% dry",
    "Rate|Rate|-2..1.30103^1|ursm|0.1000 Hz",
    "Range|Range|0.0001..0.1^4|ursm|10 ms",
    "Delay|Delay|0..0.5^4|ursm|5.0 ms",
    "Voices|Voices|1..10^1|urm|2",
    "Saturation|Saturation|0..1^1|urm|10.0%",
    "Spread|Spread|0..1^1|urm|100.0%",
    "spreadmode|Spread mode|0..6^1|ur|Panorama",
    "|Advanced parameters|0..0^1|urg|",
    "DepthVariability|Depth variability|-1..1^1|ur|0.00%",
    "RateVariability|Rate variability|-1..1^1|urs|50.0%",
    "RangeVariability|Range variability|-1..1^1|urs|0.00%",
    "DelayVariability|Delay variability|-1..1^1|urs|0.00%",
    "MinFreq|Min frequency|1.30103..4.30103^1|us|20.0 Hz",
    "MaxFreq|Max frequency|1.30103..4.30103^1|us|20.0 kHz",
    "Tremolo|Tremolo|-1..1^1|r|0.00%",
    "VoiceTremolo|Voice tremolo|-1..1^1|r|0.00%",
    "TremoloPhase|Tremolo phase|0..1^1|r|0\u00b0 (0%)",
    "sync|Synchronization|0..1^1|ur|Off",
    "synclength__|Length|0..14^1|ur|1 / 4",
    "synctype|Type|0..2^1|ur|Straight",
    "syncphase|Phase|0..1^1|ur|90\u00b0 (25.0%)",
};

std::string Told(const ParameterRecord& record, ParameterMainBase* adapter) {
    std::ostringstream out;
    out << record.identifier.ToUtf8() << '|' << record.name.ToUtf8() << '|' << record.min << ".."
        << record.max << '^' << (1 << static_cast<int>(record.law)) << '|';
    for (const auto& [letter, flag] : {std::pair('u', ParameterFlag::kUpdates),
                                       {'r', ParameterFlag::kRandomizes},
                                       {'s', ParameterFlag::kSmoothed},
                                       {'m', ParameterFlag::kMain},
                                       {'g', ParameterFlag::kGroupBits}})
        if (record.Has(flag)) out << letter;
    out << '|' << (adapter == nullptr ? "" : adapter->GetParameterValueName(0).ToUtf8());
    return out.str();
}

}  // namespace

TEST(ChorusParameters, KeepTheirPlacesRangesAndWords) {
    ChorusDriver driver({});
    PluginDouble plugin;
    ParameterAdapterMap map;
    AddEffectParameters({&plugin, {}, {}, false}, *driver.host->plugin, plugin.table, map);
    ASSERT_EQ(driver.host->descriptor->parameterCount, P::kCount);
    for (int p = 0; p < P::kCount; ++p) {
        const ParameterRecord& record = driver.Record(p);
        EXPECT_EQ(Told(record, map.Find(p)), kTable[p]);
        EXPECT_NEAR(record.defaultValue, P()[p], 1e-12) << kTable[p];
        const std::string name = record.name.ToUtf8() + (p == P::kSync ? " panel" : "");
        EXPECT_THAT(record.help.ToUtf8(),
                    testing::StartsWith(p == 0 || p == 9 ? "" : "<name>" + name + "</name> "));
    }
    for (const auto& [index, value, text, readBack] :
         {std::tuple(P::kDryWet, 0.254, "25% wet, 100% dry", 0.25),
          {P::kDryWet, 1.505, "100% wet, 50% dry", 1},
          {P::kRate, 0, "1.00 Hz", 0},
          {P::kRange, 0.00634, "6.3 ms", 0.0063},
          {P::kSaturation, 0.25, "25.0%", 0.25},
          {P::kSpreadMode, 6, "Haas (32 ms)", 6},
          {P::kTremoloPhase, 0.25, "90\u00b0 (25.0%)", 0.25},
          {P::kSyncType, 2, "Dotted", 2}}) {
        ParameterMainBase& adapter = *map.Find(index);
        adapter.record.Set(value);
        EXPECT_EQ(adapter.GetParameterValueName(0).ToUtf8(), text);
        EXPECT_TRUE(adapter.ParseParameterValueName(0, MString::FromUtf8(text)));
        EXPECT_NEAR(adapter.record.Get(), readBack, 1e-12) << text;
    }
}

TEST(HostSync, TakesNoteLengthsFromTheShortList) {
    ParameterRecord records[MAudioPluginHostSync::kRecordCount];
    MAudioPluginHostSync sync;
    sync.Describe(records, MAudioPluginHostSync::Lengths::Short);
    EXPECT_EQ(records[1].options.at(9).ToUtf8(), "1 / 8");
    EXPECT_EQ(sync.RateAt(240, 1), 8) << "at 240 beats a minute a whole note lasts a second";
}
