// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "plugin/bands_double.h"

namespace {

using Kind = BandsPlugin::CrossoverKind;

const char* const kFull =
    R"(<settings Version="393216" ChannelMode="Left + Right" Bypass="1" CrossoverMode="4" )"
    R"(LinearPhaseCrossover="1" LinearPhaseCrossoverFixedQ="1" DryWetAffectsInputGain="0" )"
    R"(DryWetAffectsInputPan="0" BandCount="3" Mute="010" BandBypass="101" Link="1" )"
    R"(Limit0="2.000000000000" Limit1="3.123456789012" Limit2="3.000000000000" )"
    R"(Limit3="4.000000000000" Limit4="4.250000000000" Gain1="-3.500000000000" )"
    R"(Pan2="0.250000000000" EditBandPanorama="1" DryWet="0.500000000000" DryWet0="1" )"
    R"(DryWet100="1" InputGain="1.250000000000" OutputGain="0.000000000000" Sinc="0">)"
    R"(<PreviousNextPresetController/><band0 Level="0.5"/><band1/><band2 Steps="7"/><band3/>)"
    R"(<band4/><band5 Level="0.25"/></settings>)";

const char* const kStandard =
    R"(<settings Version="393216" ChannelMode="Left + Right" LinearPhaseCrossover="0" )"
    R"(LinearPhaseCrossoverFixedQ="0" DryWetAffectsInputGain="1" BandCount="1" Link="0" )"
    R"(Limit0="2.000000000000" Limit1="2.477121254720" Limit2="3.000000000000" )"
    R"(Limit3="3.477121254720" Limit4="3.903089986992" Sinc="1">)"
    R"(<PreviousNextPresetController/><band0/><band1/><band2/><band3/><band4/><band5/></settings>)";

}  // namespace

TEST(BandState, TellsWhatIsNotStandardAndComesBack) {
    BandsPlugin plugin;
    plugin.SetProtection(256);  // what states leave out
    EXPECT_EQ(plugin.Stored(), std::string(kStandard));
    EXPECT_TRUE(plugin.Load(kFull));
    EXPECT_EQ(plugin.Stored(), std::string(kFull));
    EXPECT_EQ(plugin.GetCrossoverKind(), Kind::Hybrid);
    EXPECT_EQ(plugin.GetReportedLatency(), 3072);
    EXPECT_TRUE(plugin.bypassed && plugin.bandMute[1] && plugin.bandBypass[2]);
    EXPECT_EQ(plugin.Effect(2).records[1].Get(), 7);
    EXPECT_TRUE(plugin.Load(kStandard));
    EXPECT_EQ(plugin.Stored(), std::string(kStandard));
    EXPECT_EQ(plugin.GetReportedLatency(), 0);
}

TEST(BandState, MakesAnyPluginSoundTheSame) {
    const Audio input = Programme(2, 4096, 0.25f);
    BandsPlugin plugin(5, ChorusEntry), copy(2, ChorusEntry);
    copy.SetCrossoverKind(Kind::Linear);
    for (int p = 0; p < plugin.GetParameterCount(); ++p)
        plugin.SetParameter(p, p * 0.37 - std::floor(p * 0.37), false);
    for (const char* const trigger : {"Preset trigger - previous", "Preset trigger - next"})
        plugin.Set(trigger, 0);
    plugin.SetCrossoverMode(3);
    // The first one rounds to twelve decimals.
    for (BandsPlugin* const loaded : {&plugin, &copy}) EXPECT_TRUE(loaded->Load(plugin.Stored()));
    EXPECT_EQ(copy.Stored(), plugin.Stored());
    for (int p = 0; p < plugin.GetParameterCount(); ++p)
        EXPECT_EQ(copy.GetParameter(p), plugin.GetParameter(p)) << p;
    EXPECT_EQ(RunPlugin(copy, input, 500), RunPlugin(plugin, input, 500));
}

TEST(BandState, TakesWhatIsThereFromOldAndBrokenOnes) {
    struct Case {
        const char* loaded;
        int bands;
        std::vector<int> bypassed;  // by band
        bool isPluginBypassed;
        double level, limit;  // of the first band
    };
    const double kBefore = 2.5;
    for (const Case& expected : {
             Case{"<settings Level=\"0.75\" BandCount=\"4\"/>", 1, {0, 0}, false, 0.75, kBefore},
             {"<old Bypass=\"1\" Unknown=\"7\"><other/></old>", 1, {0, 0}, true, 1, kBefore},
             {"<s Bypass=\"01\" BandCount=\"2\"><band0/></s>", 2, {0, 1}, false, 1, kBefore},
             {"<s Bypass=\"01\" BandBypass=\"1\"><band0/></s>", 3, {1, 0, 0}, false, 1, kBefore},
             {"<s BandBypass=\"0x1yyyyyyy\"><band0/></s>", 3, {0, 0, 1}, false, 1, kBefore},
             {"<s BandCount=\"77\" Limit0=\"9\" Limit1=\"x\"><band0/></s>",
              6,
              {0},
              false,
              1,
              std::log10(20000)},
             {"<s BandCount=\"-3\" Limit0=\"nan\" CrossoverMode=\"99\"><band0 Level=\"?\"/></s>",
              1,
              {0},
              false,
              1,
              kBefore},
         }) {
        BandsPlugin plugin(3);
        plugin.bandLimit[0].Set(kBefore);
        plugin.bandBypass[1] = true;
        plugin.bandGain[0].Set(6);
        plugin.Set("Band 1 Level", 0.5);
        EXPECT_TRUE(plugin.Load(expected.loaded));
        EXPECT_EQ(plugin.GetBandCount(), expected.bands) << expected.loaded;
        for (std::size_t b = 0; b < expected.bypassed.size(); ++b)
            EXPECT_EQ(plugin.bandBypass[b], expected.bypassed[b] != 0) << expected.loaded << b;
        EXPECT_EQ(plugin.bypassed != 0, expected.isPluginBypassed) << expected.loaded;
        EXPECT_EQ(plugin.Effect(0).records[0].Get(), expected.level) << expected.loaded;
        EXPECT_NEAR(plugin.bandLimit[0].Get(), expected.limit, 1e-12) << expected.loaded;
        EXPECT_EQ(plugin.bandGain[0].Get(), 0);
        EXPECT_LE(plugin.GetCrossoverMode(), 5);
    }
}
