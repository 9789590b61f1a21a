// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <sstream>

#include "plugin/bands_double.h"

TEST(BandState, TellsWhatIsNotStandardAndComesBack) {
    BandsPlugin plugin;
    plugin.SetProtection(256);  // what states leave out
    ForEachBandCase("stored", [&](const Row& row) {
        EXPECT_TRUE(row.isFirst || LoadState(plugin, row.right));
        EXPECT_EQ(StoredState(plugin), row.right);
        const bool isFull = row.left == "full";
        EXPECT_EQ(plugin.GetReportedLatency(), isFull ? 3072 : 0);
        EXPECT_EQ(plugin.Effect(2).records[1].Get(), isFull ? 7 : 10);
        EXPECT_EQ(plugin.bandMute[1] && plugin.bandBypass[2] && plugin.bypassed, isFull);
    });
}

TEST(BandState, MakesAnyPluginSoundTheSame) {
    const Audio input = Programme(2, 4096, 0.25f);
    BandsPlugin plugin(5, ChorusEntry), copy(2, ChorusEntry);
    copy.SetCrossoverKind(BandsPlugin::CrossoverKind::Linear);
    for (int p = 0; p < plugin.GetParameterCount(); ++p)
        plugin.SetParameter(p, p * 0.37 - std::floor(p * 0.37), false);
    for (const char* const trigger : {"Preset trigger - previous", "Preset trigger - next"})
        plugin.Set(trigger, 0);
    plugin.SetCrossoverMode(3);
    // The first one rounds to twelve decimals.
    for (BandsPlugin* const loaded : {&plugin, &copy})
        EXPECT_TRUE(LoadState(*loaded, StoredState(plugin)));
    EXPECT_EQ(StoredState(copy), StoredState(plugin));
    for (int p = 0; p < plugin.GetParameterCount(); ++p)
        EXPECT_EQ(copy.GetParameter(p), plugin.GetParameter(p)) << p;
    EXPECT_EQ(RunPlugin(copy, input, 500), RunPlugin(plugin, input, 500));
}

TEST(BandState, TakesWhatIsThereFromOldAndBrokenOnes) {
    ForEachBandCase("loaded", [](const Row& row) {
        BandsPlugin plugin(3);
        plugin.SetLimits({100});
        plugin.bandBypass[1] = true;
        plugin.bandGain[0].Set(6);
        plugin.Set("Band 1 Level", 0.5);
        EXPECT_TRUE(LoadState(plugin, row.left));
        EXPECT_EQ(plugin.bandGain[0].Get(), 0);
        std::ostringstream found;
        found << plugin.GetBandCount() << ' ';
        for (int b = 0; b < plugin.GetBandCount(); ++b) found << plugin.bandBypass[b];
        found << ' ' << int(plugin.bypassed) << ' ' << plugin.Effect(0).records[0].Get() << ' '
              << plugin.Limits()[0] << ' ' << plugin.GetCrossoverMode();
        EXPECT_EQ(found.str(), row.right);
    });
}
