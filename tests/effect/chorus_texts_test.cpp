// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "effect/chorus_driver.h"
#include "effect/host_sync.h"
#include "parameters/effect_parameters.h"
#include "parameters/plugin_double.h"

// The chorus's parameters as a host shows them.

namespace {

using P = ReferenceSettings;

}  // namespace

TEST(ChorusTexts, TellValuesAndReadThemBack) {
    ChorusDriver driver(Settings(2, 48000, false));
    PluginDouble plugin;
    ParameterAdapterMap map;
    AddEffectParameters({&plugin, {}, {}, false}, *driver.host->plugin, plugin.table, map);
    const struct {
        int index;
        double value;
        const char* text;
        double readBack;
    } rows[] = {{P::kDryWet, 1, "100% wet, 100% dry", 1},
                {P::kDryWet, 0.254, "25% wet, 100% dry", 0.25},
                {P::kDryWet, 1.505, "100% wet, 50% dry", 1},
                {P::kDryWet, 2, "100% wet, 0% dry", 1},
                {P::kRate, -1, "0.1000 Hz", -1},
                {P::kRange, 0.0001 + 0.0999 / 16, "6.3 ms", 0.0063},
                {P::kDelay, 0.25, "250 ms", 0.25},
                {P::kVoices, 10, "10", 10},
                {P::kSaturation, 0.1, "10.0%", 0.1},
                {P::kSpreadMode, 5, "Haas (16 ms)", 5},
                {P::kRateVariability, -0.5, "-50.0%", -0.5},
                {P::kMaxFrequency, 4, "10.0 kHz", 1.3010299956639813},  // 10 Hz, below the range
                {P::kTremoloPhase, 0.25, "90\u00b0 (25.0%)", 0.25},
                {P::kSyncLength, 9, "1 / 4", 9},
                {P::kSyncType, 1, "Triplets", 1},
                {P::kSyncPhase, 0, "0\u00b0 (0%)", 0}};
    for (const auto& row : rows) {
        ParameterMainBase& adapter = *map.Find(row.index);
        adapter.record.Set(row.value);
        EXPECT_EQ(adapter.GetParameterValueName(0).ToUtf8(), row.text);
        EXPECT_TRUE(adapter.ParseParameterValueName(0, MString::FromUtf8(row.text)));
        EXPECT_NEAR(adapter.record.Get(), row.readBack, 1e-12) << row.text;
    }
    EXPECT_FALSE(map.Find(P::kRate)->ParseParameterValueName(0, "0 Hz"));
    EXPECT_EQ(driver.Record(P::kRate).Get(), -1);
}

// The words are part of what users know; this catches a text that slid to another row, and the two
// oddities that are meant.
TEST(ChorusTexts, ExplainEachParameterByItsName) {
    ChorusDriver driver(Settings(2, 48000, false));
    for (int p = 0; p < P::kCount; ++p) {
        const ParameterRecord& record = driver.Record(p);
        const std::string name = record.name.ToUtf8(), help = record.help.ToUtf8();
        const std::string start = "<name>" + name + (p == 19 ? " panel</name>" : "</name>");
        EXPECT_EQ(help.substr(0, start.size()), p == 0 || p == 9 ? "" : start);
    }
    EXPECT_NE(driver.Record(P::kRange).help.ToUtf8().find("defines  frequency"), std::string::npos);
    EXPECT_NE(driver.Record(P::kSpreadMode).help.ToUtf8().find("in stereo.Note that"),
              std::string::npos);
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
