// SPDX-License-Identifier: GPL-3.0-or-later

// What a song keeps, through one interface and the other.

#include <gmock/gmock.h>

#include <random>

#include "hosts/suite/built_plugin.h"

namespace {

using State = Suite;
FOR_BOTH_INTERFACES(State);

// What no parameter tells.
const char* const kKinds[] = {
    "",
    "BandCount=\"4\" CrossoverMode=\"3\" Mute=\"0100\" BandBypass=\"0010\"",
    "BandCount=\"6\" LinearPhaseCrossover=\"1\" Link=\"1\" MaxLFOBlockSize=\"256\"",
    "BandCount=\"2\" LinearPhaseCrossover=\"1\" LinearPhaseCrossoverFixedQ=\"1\" AGC=\"1\"",
    "BandCount=\"3\" upsampling=\"2\" hqupsampling=\"0\" Sinc=\"0\" DryWet100=\"1\"",
    "BandCount=\"2\" ChannelMode=\"Mono + Stereo\" DryWetAffectsInputGain=\"0\" DryWet0=\"1\"",
    "BandCount=\"5\" PresetIndex=\"3\" Bypass=\"1\" EditBandPanorama=\"1\"",
};

// All parameters by chance, but those that only trigger something.
void Draw(BuiltPlugin& plugin, unsigned seed) {
    std::minstd_rand draw(seed);
    std::vector<HostedChange> changes;
    const std::uint32_t previous = IDOf("Preset trigger - previous");
    const std::uint32_t next = IDOf("Preset trigger - next");
    for (std::uint32_t id = 0; id < ParameterCount(); ++id)
        if (id != previous && id != next) changes.push_back({id, 0, draw() % 1001 / 1000.0});
    plugin.Flush(changes);
}

}  // namespace

TEST_P(State, MakesAnotherInstanceTheSameThroughEitherInterface) {
    const Audio input = Noise(2, 12000, 0.1f);
    unsigned seed = 0;
    for (const char* kind : kKinds) {
        SCOPED_TRACE(kind);
        BuiltPlugin plugin(GetParam(), StateOf(kind));
        Draw(plugin, ++seed);
        const std::string state = plugin->State();
        Audio sounds[2];
        for (const Interface other : {Interface::Vst3, Interface::Vst2}) {
            BuiltPlugin same(other, state);
            EXPECT_EQ(same->State(), state);
            // Numbers are kept with 12 decimals, VST 2 tells positions in 32 bits.
            EXPECT_THAT(same.Positions(),
                        testing::Pointwise(testing::DoubleNear(1e-6), plugin.Positions()));
            EXPECT_EQ(same->Latency(), plugin->Latency());
            sounds[other == Interface::Vst2] = same.Run(input);
        }
        EXPECT_GT(Peak(sounds[0]), 1e-3);
        EXPECT_LT(LargestDifference(sounds[0], sounds[1]), 1e-6) << "-120 dBFS";
    }
}

TEST_P(State, IsKeptWhereAnotherIsRefused) {
    BuiltPlugin plugin(GetParam(), StateOf("BandCount=\"3\""));
    Draw(plugin, 1);
    const std::string state = plugin->State();
    const std::vector<double> positions = plugin.Positions();
    std::vector<std::string> refused = {
        "",
        " ",
        "x",
        std::string(1000, '\0'),
        std::string("\xff\xfe<\0s\0", 6),
        "<settings",
        "<settings>",
        "<settings/",
        "<other BandCount=\"1\"/>",
        "<settings><band0></settings>",
        "VST3 preset",
        "{\"settings\": {}}",
        "<?xml version=\"1.0\"?><!DOCTYPE x [<!ENTITY a \"aaaa\">]><x>&a;</x>",
        "<settings " + std::string(17 << 20, ' ') + "/>",
    };
    for (std::size_t part = 1; part < 12; ++part)
        refused.push_back(state.substr(0, state.size() * part / 12));
    std::string deep;
    for (int i = 0; i < 100000; ++i) deep += "<settings>";
    refused.push_back(deep);

    for (const std::string& bytes : refused) {
        SCOPED_TRACE(bytes.substr(0, 60));
        testing::internal::CaptureStdout();
        const bool isTaken = plugin->SetState(bytes);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(isTaken, GetParam() == Interface::Vst3) << "which has no other answer";
        ASSERT_EQ(plugin->State(), state);
        ASSERT_EQ(plugin.Positions(), positions);
    }
}

// Of old and newer versions, and by hand.
TEST_P(State, IsTakenAsFarAsItCanBe) {
    const Audio input = Noise(2, 2000, 0.1f);
    const std::string taken[] = {
        "<settings/>",
        "<SETTINGS Rate=\"0\" Depth=\"1.5\"/>",
        StateOf("Version=\"999999999\" BandCount=\"2\" News=\"1\""),
        StateOf("BandCount=\"99\" CrossoverMode=\"-7\" MaxLFOBlockSize=\"0\""),
        StateOf("BandCount=\"-1\" upsampling=\"1000\" PresetIndex=\"77\" ChannelMode=\"?\""),
        StateOf("BandCount=\"6\" Limit0=\"1e300\" Limit1=\"nan\" Limit2=\"-inf\" Gain0=\"1e9\"",
                "Delay=\"1e9\" Voices=\"-4\" Rate=\"inf\" sync=\"7\" synclength__=\"99\""),
        StateOf("Mute=\"\" BandBypass=\"xyzxyzxyz\" ChannelMode=\"Surround\""),
        "<settings><band0/><band0/><Preset1><settings/></Preset1><band77/></settings>",
    };
    for (const std::string& state : taken) {
        SCOPED_TRACE(state);
        BuiltPlugin plugin(GetParam(), state);
        const Audio sound = plugin.Run(input);
        EXPECT_LT(Peak(sound), 100);
        BuiltPlugin again(GetParam(), plugin->State());
        EXPECT_EQ(again->State(), plugin->State());
        EXPECT_EQ(again.Run(input), sound);
    }
}

TEST_P(State, KeepsTheBypass) {
    const Audio input = Noise(2, 2000, 0.25f);
    const auto passes = [&](BuiltPlugin& plugin) {
        const Audio sound = plugin.Run(input);
        return sound[0][1900] == input[0][1900 - plugin->Latency()];
    };
    BuiltPlugin plugin(GetParam(), StateOf("Bypass=\"1\" BandCount=\"2\""));
    EXPECT_TRUE(passes(plugin));
    BuiltPlugin loaded(GetParam(), plugin->State());
    EXPECT_TRUE(passes(loaded));
    if (GetParam() == Interface::Vst3) {
        EXPECT_EQ(loaded->Position(0x7fff), 1);
        loaded.Flush({{0x7fff, 0, 1}, {0x7fff, 9, 0.5}});
    } else {
        loaded->SetState(StateOf("BandCount=\"2\""));
    }
    EXPECT_FALSE(passes(loaded));
    EXPECT_EQ(loaded->State().find("Bypass"), std::string::npos);
    plugin->SetState(loaded->State());
    EXPECT_FALSE(passes(plugin));
}
