// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "foundation/objects/random.h"
#include "plugin/bands_double.h"
#include "plugin/frame/meter_sink.h"

namespace {

using Kind = BandsPlugin::CrossoverKind;

// An editor that is open, a meter in it, and the keys that are held.
struct Editor : EditorDouble, MMeterSink {
    explicit Editor(BandsPlugin& plugin) {
        available = true;
        plugin.editorFactory = this;
        plugin.SetBandMeters({nullptr, this});
        plugin.CreateEditor(nullptr, nullptr);
    }
    std::uint32_t KeyState() override { return keys; }
    void Feed(int channel, float peak) override { told.push_back(10 * channel + peak); }
    void Update() override { told.push_back(-1); }
    void Resize(int channelCount) override { told.push_back(channelCount); }
    std::uint32_t keys = 0;
    std::vector<float> told;
};

}  // namespace

TEST(BandParameters, StandInTheOrderOfTheHosts) {
    const std::string master =
        "Dry/wet, Input gain, Output gain, Band gain 1, Band gain 2, "
        "Band gain 3, Band gain 4, Band gain 5, Band gain 6, Band limit 1, "
        "Band limit 2, Band limit 3, Band limit 4, Band limit 5, ";
    const std::string bands =
        "Band 1 Level, Band 1 Steps, Band 2 Level, Band 2 Steps, "
        "Band 3 Level, Band 3 Steps, Band 4 Level, Band 4 Steps, "
        "Band 5 Level, Band 5 Steps, Band 6 Level, Band 6 Steps, ";
    const std::string rest =
        "Preset trigger - previous, Preset trigger - next, Band panorama 1, "
        "Band panorama 2, Band panorama 3, Band panorama 4, Band panorama 5, "
        "Band panorama 6, ";
    for (const bool compatible : {true, false}) {
        MAttribute configuration;
        BandsPlugin before;
        before.automationCompatibility = compatible;
        before.SetDefaultSettingsToCurrent(configuration);
        BandsPlugin plugin(1, BandEffect::Entry, &configuration);
        std::string identifiers;
        for (int p = 0; p < plugin.GetHostParameterCount(); ++p)
            identifiers += plugin.GetParameterID(p).ToUtf8() + ", ";
        EXPECT_EQ(identifiers, master + (compatible ? rest + bands : bands + rest));
    }
}

TEST(BandStructure, HasTheLatencyAndTheTailOfItsCrossover) {
    const auto expect = [](BandsPlugin& plugin, int latency, int tail) {
        EXPECT_EQ(plugin.GetLatency(), latency);
        EXPECT_EQ(plugin.GetReportedLatency(), latency);
        EXPECT_EQ(plugin.GetTailLength(), tail);
    };
    BandsPlugin plugin;
    plugin.SetCrossoverKind(Kind::Linear);
    expect(plugin, 0, 100);
    plugin.SetDefaultBands(2);
    expect(plugin, 3072, 4198);
    plugin.SetCrossoverKind(Kind::Hybrid);
    expect(plugin, 3072, 4198);
    plugin.SetCrossoverKind(Kind::Analog);
    expect(plugin, 0, 4196);
    EXPECT_EQ(plugin.host.latencies, (std::vector<int>{3072, 0}));
    EXPECT_EQ(plugin.host.changes, 4);
    plugin.Effect(0).tail = -5;
    EXPECT_EQ(plugin.GetTailLength(), -1);
    plugin.Effect(2).maxBlockSize = 50;
    plugin.SetDefaultBands(3);
    EXPECT_EQ(plugin.maxBlockSize, 50);
}

TEST(BandStructure, KeepsTheEffectsOfBandsThatStay) {
    BandsPlugin plugin(4);
    EXPECT_EQ(plugin.Limits(), (std::vector<int>{200, 1000, 5000, 3000, 8000}));
    EXPECT_EQ(plugin.selectedBand, 2);
    plugin.bandMute[1] = plugin.bandBypass[2] = true;
    plugin.bandGain[0].Set(5);
    plugin.Set("Band 1 Level", 0.5);
    std::vector<int> clears;
    for (int b = 0; b < 6; ++b) clears.push_back(plugin.Effect(b).clears);
    for (const int count : {2, 9}) plugin.SetDefaultBands(count);
    HostBuffers host(2, 2, 4096);
    {
        const AllocationTrap trap("the first block of more bands");
        host.Process(plugin);
    }
    EXPECT_EQ(plugin.GetBandCount(), 6);
    EXPECT_EQ(plugin.Limits(), (std::vector<int>{100, 300, 1000, 3000, 8000}));
    EXPECT_FALSE(plugin.bandMute[1] || plugin.bandBypass[2]);
    EXPECT_EQ(plugin.bandGain[0].Get(), 0);
    EXPECT_EQ(plugin.Effect(0).records[0].Get(), 1);
    for (int b = 0; b < 6; ++b) EXPECT_EQ(plugin.Effect(b).clears - clears[b], b < 2 ? 0 : 1) << b;
}

TEST(BandStructure, StartsAsTheUserWantsIt) {
    MAttribute configuration;
    BandsPlugin plugin;
    plugin.SetDefaultBandCount(5);
    plugin.SetCrossoverMode(3);
    plugin.dryWetAffectsInputPan = false;
    plugin.SetDefaultSettingsToCurrent(configuration);
    BandsPlugin next(1, BandEffect::Entry, &configuration);
    EXPECT_EQ(next.GetBandCount(), 5);
    EXPECT_EQ(next.GetCrossoverMode(), 3);
    EXPECT_TRUE(next.dryWetAffectsInputGain && !next.dryWetAffectsInputPan);
}

TEST(BandStructure, IsSilentWhereAnEffectCannotBeHad) {
    static int made = 0;
    const PluginEntry third = [](MPlugin* object, int code, PluginArguments& arguments) {
        if (object == nullptr && ++made == 3) return std::intptr_t{0};
        return BandEffect::Entry(object, code, arguments);
    };
    MAudioEffectPluginToAudioPluginMultiBandAdapter plugin;
    EXPECT_THROW(plugin.Initialize("Test", "Test", third), MException);
    plugin.outputChannelNames.resize(2);
    plugin.InitProcessing();
    HostBuffers host(0, 2, 64);
    host.Process(plugin);
    EXPECT_EQ(Peak(host.out), 0);
}

TEST(LinkedBands, FollowEachOtherByTheSwitchOrByAKey) {
    BandsPlugin plugin(3);
    Editor editor(plugin);
    struct Case {
        const char* identifier;
        bool link;
        std::uint32_t keys;
        std::size_t told;
        double levels[4];
    };
    double position = 0;
    for (const Case& expected : {
             Case{"Band 2 Level", false, 0xdf, 1, {1, 0.1, 1, 1}},
             {"Band 2 Level", true, 0, 3, {0.2, 0.2, 0.2, 1}},
             {"Band 4 Level", true, 0, 1, {0.2, 0.2, 0.2, 0.3}},
             {"Band gain 1", true, 0, 1, {0.2, 0.2, 0.2, 0.3}},
             {"Band 1 Level", false, 0x21, 3, {0.5, 0.5, 0.5, 0.3}},
         }) {
        plugin.linkBands = expected.link;
        editor.keys = expected.keys;
        plugin.host.told.clear();
        plugin.Set(expected.identifier, position += 0.1);
        plugin.ParameterChanged(plugin.FindParameter(expected.identifier));
        EXPECT_EQ(plugin.host.told.size(), expected.told);
        for (int b = 0; b < 4; ++b)
            EXPECT_NEAR(plugin.Effect(b).records[0].Get(), expected.levels[b], 1e-9);
    }
    for (const auto& [identifier, available] :
         {std::pair{"Band 3 Level", true}, {"Band 4 Level", false}, {"Band gain 4", false}})
        EXPECT_EQ(plugin.IsParameterAvailable(plugin.FindParameter(identifier)), available);
}

TEST(BandMeters, ShowWhatIsHeardUntilTheEditorIsGone) {
    BandsPlugin plugin(2);
    Editor editor(plugin);
    editor.told.reserve(16);
    HostBuffers host(2, 2, 600);
    for (const bool isMuted : {false, true}) {
        plugin.bandMute[1] = isMuted;
        host.Process(plugin);
    }
    EXPECT_GT(editor.told[1], 0);
    EXPECT_EQ(std::vector(editor.told.begin() + 4, editor.told.end()),
              (std::vector<float>{0, 10, -1}));
    plugin.DestroyEditor();
    host.Process(plugin);
    EXPECT_EQ(editor.told.size(), 7u);
}

TEST(CopiedBands, GoToAnotherPluginOrChangeNothing) {
    BandsPlugin plugin(6), other(1);
    plugin.SetLimits({20, 40.5, 1234.567, 15000, 300});
    plugin.bandMute[0] = plugin.bandBypass[5] = true;
    MAttribute block, again;
    plugin.CopyBandSettings(block);
    EXPECT_EQ(block.GetName().ToUtf8(), "SoverandBandSettings");
    for (const auto& [key, value] : {std::pair{"BandCount", "6"},
                                     {"BandLimit", "1.301030"},
                                     {"Limit", "2.477121"},
                                     {"BandMute", "1"},
                                     {"ute", "0"},
                                     {"BandBypass", "0"},
                                     {"ypass", "1"}})
        EXPECT_EQ(block.GetAttribute(key).ToUtf8(), value) << key;
    EXPECT_EQ(block.Attributes().Count(), 1 + 5 + 6 + 6);

    other.SetCrossoverKind(Kind::Linear);
    other.PasteBandSettings(block);
    EXPECT_EQ(other.GetReportedLatency(), 3072);
    other.CopyBandSettings(again);
    for (const MAttributePair* const pair : block.Attributes())
        EXPECT_EQ(again.GetAttribute(pair->name), pair->value);
    const auto before = other.Stored();
    for (const char* const count : {"0", "7", "-1", "", "x", "99999999999999999999"}) {
        again.SetAttribute("BandCount", count);
        again.SetAttribute("BandLimit", "3.5");
        EXPECT_THROW(other.PasteBandSettings(again), MException) << count;
        EXPECT_EQ(other.Stored(), before);
    }
    MAttribute partial;
    partial.SetAttribute("BandCount", "3");
    partial.SetAttribute("andLimit", "99");
    other.PasteBandSettings(partial);
    EXPECT_EQ(other.Limits(), (std::vector<int>{20, 20000, 1235, 15000, 300}));
    EXPECT_TRUE(other.bandMute[0]);
}

TEST(RandomBands, AreInOrderAndLevel) {
    BandsPlugin plugin(6);
    for (const double amount : {1.0, 0.4}) {
        for (auto* const record :
             {&plugin.bandGain[2], &plugin.bandPanorama[2], &plugin.outputGain})
            record->Set(0.5);
        SetRandomSeed(17);
        plugin.GenerateRandomSettings(amount);
        const auto limits = plugin.Limits();
        EXPECT_TRUE(std::is_sorted(limits.begin(), limits.end()));
        EXPECT_NE(limits[2], 1000);
        EXPECT_EQ(plugin.bandGain[2].Get(), 0);
        EXPECT_EQ(plugin.bandPanorama[2].Get(), 0);
        EXPECT_EQ(plugin.outputGain.Get(), 0.5);
        EXPECT_NE(plugin.Effect(5).records[0].Get(), 1);
    }
}

TEST(RandomBands, DrawEitherParametersOrObjects) {
    BandsPlugin plugin(3);
    plugin.Effect(0).records[1].Clear(ParameterFlag::kRandomizes);  // one alone is always drawn
    SetRandomSeed(5);
    MRandomSequence sequence{5};
    for (int turn = 1; turn <= 8; ++turn) {
        plugin.GenerateRandomSettingsSmart();
        for (int b = 0; b < 3; ++b) {
            EXPECT_EQ(plugin.Effect(b).specials, turn);  // new parameters draw the object too
            if (b > 0 && sequence.Next() % 2 != 0) continue;
            EXPECT_EQ(plugin.Effect(b).records[0].Get(), sequence.Next() * 3.051850947599719e-05);
            if (b > 0) sequence.Next();
        }
    }
}
