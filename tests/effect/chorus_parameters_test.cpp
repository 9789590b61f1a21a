// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>

#include "effect/chorus_driver.h"
#include "effect/host_sync.h"
#include "parameters/effect_parameters.h"
#include "parameters/plugin_double.h"
#include "support/rows.h"

// The chorus's parameters as hosts and stored state know them. What an identifier stands for is
// shown by the sound tests.

namespace {

using P = ReferenceSettings;

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
    int places = 0;
    ForEachRow(QUILLOREA_CHORUS_PARAMETERS, [&](const Row& row) {
        const int p = std::stoi(row.section);
        ParameterRecord& record = driver.Record(p);
        ParameterMainBase* adapter = map.Find(p);
        if (row.sign == "==") {
            ASSERT_EQ(p, places++);
            EXPECT_EQ(Told(record, adapter), row.right);
            EXPECT_NEAR(record.defaultValue, P()[p], 1e-12);
            const std::string name = record.name.ToUtf8() + (p == P::kSync ? " panel" : "");
            EXPECT_THAT(record.help.ToUtf8(),
                        testing::StartsWith(p == 0 || p == 9 ? "" : "<name>" + name + "</name> "));
        } else if (row.sign == "->") {
            record.Set(row.Number());
            EXPECT_EQ(adapter->GetParameterValueName(0).ToUtf8(), row.right);
        } else {
            EXPECT_TRUE(adapter->ParseParameterValueName(0, MString::FromUtf8(row.right)));
            EXPECT_NEAR(record.Get(), row.Number(), 1e-12);
        }
    });
    EXPECT_EQ(places, driver.host->descriptor->parameterCount);
}

TEST(HostSync, TakesNoteLengthsFromTheShortList) {
    ParameterRecord records[MAudioPluginHostSync::kRecordCount];
    MAudioPluginHostSync sync;
    sync.Describe(records, MAudioPluginHostSync::Lengths::Short);
    EXPECT_EQ(records[1].options.at(9).ToUtf8(), "1 / 8");
    EXPECT_EQ(sync.RateAt(240, 1), 8) << "at 240 beats a minute a whole note lasts a second";
}
