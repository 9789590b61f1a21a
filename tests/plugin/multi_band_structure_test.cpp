// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "foundation/objects/random.h"
#include "plugin/bands_double.h"
#include "plugin/frame/meter_sink.h"

namespace {

using Kind = BandsPlugin::CrossoverKind;

// An editor that is open, a meter in it, and the keys that are held.
struct Editor : EditorDouble, MMeterSink {
    explicit Editor(BandsPlugin& plugin) : plugin(plugin) {
        available = true;
        plugin.editorFactory = this;
        plugin.SetBandMeters({nullptr, this});
        plugin.CreateEditor(nullptr, nullptr);
    }
    ~Editor() override { plugin.DestroyEditor(); }
    std::uint32_t KeyState() override { return keys; }
    void Feed(int channel, float peak) override { told.push_back(10 * channel + peak); }
    void Update() override { told.push_back(-1); }
    using EditorDouble::Resize;
    void Resize(int channelCount) override { told.push_back(channelCount); }
    BandsPlugin& plugin;
    std::uint32_t keys = 0;
    std::vector<float> told;
};

}  // namespace

TEST(BandParameters, StandAsTheUserWantsThem) {
    for (const bool compatible : {true, false}) {
        MAttribute configuration;
        BandsPlugin before;
        before.automationCompatibility = before.dryWetAffectsInputPan = compatible;
        before.SetDefaultBandCount(5);
        before.SetCrossoverMode(3);
        before.SetDefaultSettingsToCurrent(configuration);
        BandsPlugin plugin(1, BandEffect::Entry, &configuration);
        EXPECT_EQ(plugin.GetHostParameterCount(), 34);
        ForEachBandCase(compatible ? "order 1" : "order 0", [&](const Row& row) {
            EXPECT_EQ(plugin.GetParameterID(int(row.Number())).ToUtf8(), row.right);
        });
        EXPECT_EQ(plugin.GetBandCount(), 5);
        EXPECT_EQ(plugin.GetCrossoverMode(), 3);
        EXPECT_EQ(plugin.dryWetAffectsInputPan, compatible);
    }
}

TEST(BandStructure, HasTheLatencyAndTheTailOfItsCrossover) {
    const auto expect = [](BandsPlugin& plugin, int latency, int tail) {
        EXPECT_EQ(plugin.GetReportedLatency(), latency);
        EXPECT_EQ(plugin.GetTailLength(), tail);
    };
    BandsPlugin plugin;
    plugin.SetCrossoverKind(Kind::Linear);
    expect(plugin, 0, 100);
    plugin.SetDefaultBands(2);
    expect(plugin, 3072, 4198);
    plugin.SetCrossoverKind(Kind::Analog);
    expect(plugin, 0, 4196);
    EXPECT_EQ(plugin.host.latencies, (std::vector<int>{3072, 0}));
    EXPECT_EQ(plugin.host.changes, 3);
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

TEST(BandStructure, IsEmptyWhereAnEffectCannotBeHad) {
    static int made = 0;
    const PluginEntry third = [](MPlugin* object, int code, PluginArguments& arguments) {
        if (object == nullptr && ++made == 3) return std::intptr_t{0};
        return BandEffect::Entry(object, code, arguments);
    };
    MAudioEffectPluginToAudioPluginMultiBandAdapter plugin;
    EXPECT_THROW(plugin.Initialize("Test", "Test", third), MException);
    plugin.InitProcessing();
    EXPECT_EQ(plugin.GetTailLength(), -1);
}

TEST(LinkedBands, FollowEachOtherByTheSwitchOrByAKey) {
    BandsPlugin plugin(3);
    Editor editor(plugin);
    double position = 0;
    ForEachBandCase("linked", [&](const Row& row) {
        std::istringstream expected(row.right);
        bool link = false;
        std::size_t told = 0;
        expected >> link >> editor.keys >> told;
        plugin.linkBands = link;
        plugin.host.told.clear();
        const int index = plugin.FindParameter(MString::FromUtf8(row.left));
        plugin.SetParameter(index, position += 0.1, false);
        plugin.ParameterChanged(index);
        EXPECT_EQ(plugin.host.told.size(), told);
        double level = 0;
        for (int b = 0; expected >> level; ++b)
            EXPECT_NEAR(plugin.Effect(b).records[0].Get(), level, 1e-9);
    });
    ForEachBandCase("available", [&](const Row& row) {
        const int index = plugin.FindParameter(MString::FromUtf8(row.left));
        EXPECT_EQ(plugin.IsParameterAvailable(index), row.right == "1");
    });
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
    EXPECT_THAT(editor.told,
                testing::ElementsAre(2, testing::Gt(0), testing::Gt(10), -1, 0, 10, -1));
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
    ForEachBandCase("copied", [&](const Row& row) {
        EXPECT_EQ(block.GetAttribute(MString::FromUtf8(row.left)).ToUtf8(), row.right);
    });
    EXPECT_EQ(block.Attributes().Count(), 1 + 5 + 6 + 6);

    other.SetCrossoverKind(Kind::Linear);
    other.PasteBandSettings(block);
    EXPECT_EQ(other.GetReportedLatency(), 3072);
    other.CopyBandSettings(again);
    for (const MAttributePair* const pair : block.Attributes())
        EXPECT_EQ(again.GetAttribute(pair->name), pair->value);
    const auto before = StoredState(other);
    again.SetAttribute("BandLimit", "3.5");
    for (const char* const count : {"0", "7", "-1", "", "x", "99999999999999999999"}) {
        again.SetAttribute("BandCount", count);
        EXPECT_THROW(other.PasteBandSettings(again), MException) << count;
        EXPECT_EQ(StoredState(other), before);
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
    const auto records = {&plugin.bandGain[2], &plugin.bandPanorama[2], &plugin.outputGain};
    for (auto* const record : records) record->Set(0.5);
    SetRandomSeed(17);
    plugin.GenerateRandomSettings(1);
    const auto limits = plugin.Limits();
    EXPECT_TRUE(std::is_sorted(limits.begin(), limits.end()));
    EXPECT_NE(limits[2], 1000);
    for (auto* const record : records)
        EXPECT_EQ(record->Get(), record == &plugin.outputGain ? 0.5 : 0);
    EXPECT_NE(plugin.Effect(5).records[0].Get(), 1);
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
