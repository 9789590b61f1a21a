// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "foundation/objects/random.h"
#include "plugin/bands_double.h"
#include "plugin/frame/meter_sink.h"

namespace {

using Kind = BandsPlugin::CrossoverKind;

std::vector<double> LimitsOf(const BandsPlugin& plugin, int count) {
    std::vector<double> hertz;
    for (int i = 0; i < count; ++i)
        hertz.push_back(std::round(std::pow(10, plugin.bandLimit[i].Get())));
    return hertz;
}

// Writes down what it is fed.
struct Meter : MMeterSink {
    void Feed(int channel, float peak) override { told.push_back(10 * channel + peak); }
    void Update() override { told.push_back(-1); }
    void Resize(int channelCount) override { told.push_back(channelCount); }
    std::vector<float> told;
};

}  // namespace

TEST(BandParameters, StandInTheOrderOfTheHosts) {
    for (const bool compatible : {true, false}) {
        MAttribute configuration;
        BandsPlugin before;
        before.automationCompatibility = compatible;
        before.SetDefaultSettingsToCurrent(configuration);
        BandsPlugin plugin(1, BandEffect::Entry, &configuration);
        std::vector<std::string> identifiers = {"Dry/wet", "Input gain", "Output gain"};
        const auto add = [&](const char* name, int count) {
            for (int i = 1; i <= count; ++i) identifiers.push_back(name + std::to_string(i));
        };
        const auto addBands = [&] {
            for (const char* const digit : {"1", "2", "3", "4", "5", "6"})
                for (const char* const name : {" Level", " Steps"})
                    identifiers.push_back(std::string("Band ") + digit + name);
        };
        add("Band gain ", 6);
        add("Band limit ", 5);
        if (!compatible) addBands();
        identifiers.insert(identifiers.end(),
                           {"Preset trigger - previous", "Preset trigger - next"});
        add("Band panorama ", 6);
        if (compatible) addBands();
        ASSERT_EQ(plugin.GetHostParameterCount(), static_cast<int>(identifiers.size()));
        for (std::size_t p = 0; p < identifiers.size(); ++p)
            EXPECT_EQ(plugin.GetParameterID(static_cast<int>(p)).ToUtf8(), identifiers[p]);
    }
}

TEST(BandParameters, TellAndReadTheirTexts) {
    BandsPlugin plugin;
    struct Case {
        const char *identifier, *typed, *text;
        double position;
    };
    for (const auto& [identifier, typed, text, position] : {
             Case{"Dry/wet", "50", "50.0%", 0.5},
             Case{"Output gain", "-6", "-6.00 dB", 18 / 48.0},
             Case{"Band gain 6", "+1.5 dB", "+1.50 dB", 25.5 / 48},
             Case{"Band limit 2", "200", "200 Hz", 1 / 3.0},
             Case{"Band panorama 3", "-25", "25% left", 0.375},
             Case{"Band 4 Level", "0.5", "0.500000", 0.5},
         }) {
        const int index = plugin.FindParameter(identifier);
        EXPECT_TRUE(plugin.ParseParameterValueName(index, typed));
        EXPECT_EQ(plugin.GetParameterValueName(index).ToUtf8(), text);
        EXPECT_NEAR(plugin.GetParameter(index), position, 1e-9) << identifier;
    }
    plugin.SetDefaultBands(2);
    for (const auto& [identifier, available] : {std::pair{"Band 2 Level", true},
                                                {"Band 3 Level", false},
                                                {"Band gain 2", true},
                                                {"Band panorama 3", false},
                                                {"Dry/wet", true},
                                                {"Preset trigger - next", true}})
        EXPECT_EQ(plugin.IsParameterAvailable(plugin.FindParameter(identifier)), available);
}

TEST(BandStructure, HasTheLatencyAndTheTailOfItsCrossover) {
    const auto expect = [](BandsPlugin& plugin, int latency, int tail) {
        EXPECT_EQ(plugin.GetLatency(), latency);
        EXPECT_EQ(plugin.GetReportedLatency(), latency);
        EXPECT_EQ(plugin.GetTailLength(), tail);
    };
    BandsPlugin plugin;
    expect(plugin, 0, 100);
    plugin.SetCrossoverKind(Kind::Linear);
    expect(plugin, 0, 100);
    plugin.SetDefaultBands(2);
    expect(plugin, 3072, 4198);
    plugin.SetCrossoverKind(Kind::Hybrid);
    expect(plugin, 3072, 4198);
    plugin.SetCrossoverKind(Kind::Analog);
    expect(plugin, 0, 4196);
    EXPECT_EQ(plugin.around.latencies, (std::vector<int>{3072, 0}));
    plugin.Effect(0).tail = -5;
    EXPECT_EQ(plugin.GetTailLength(), -1);
    plugin.Effect(1).maxBlockSize = 60;
    plugin.Effect(2).maxBlockSize = 50;
    for (const int bands : {3, 2}) {
        plugin.SetDefaultBands(bands);
        EXPECT_EQ(plugin.maxBlockSize, bands == 2 ? 60 : 50);
    }
}

TEST(BandStructure, KeepsTheEffectsOfBandsThatStay) {
    BandsPlugin plugin(4);
    EXPECT_EQ(LimitsOf(plugin, 3), (std::vector<double>{200, 1000, 5000}));
    EXPECT_EQ(plugin.selectedBand, 2);
    plugin.bandMute[1] = plugin.bandBypass[2] = true;
    plugin.bandGain[0].Set(5);
    plugin.Set("Band 1 Level", 0.5);
    std::vector<int> clears;
    for (int b = 0; b < 6; ++b) clears.push_back(plugin.Effect(b).clears);
    for (const int count : {2, 9}) plugin.SetDefaultBands(count);
    EXPECT_EQ(plugin.GetBandCount(), 6);
    EXPECT_EQ(LimitsOf(plugin, 5), (std::vector<double>{100, 300, 1000, 3000, 8000}));
    EXPECT_FALSE(plugin.bandMute[1] || plugin.bandBypass[2]);
    EXPECT_EQ(plugin.bandGain[0].Get(), 0);
    EXPECT_EQ(plugin.GetParameter(plugin.FindParameter("Band 1 Level")), 1);
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

TEST(BandStructure, RaisesWhereAnEffectCannotBeHad) {
    static int made;
    made = 0;
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

TEST(LinkedBands, FollowEachOther) {
    BandsPlugin plugin(3);
    EditorDouble editors;
    struct Keys : EditorDouble {
        std::uint32_t KeyState() override { return keys; }
        std::uint32_t keys = 0x21;
    } factory;
    factory.available = true;
    plugin.editorFactory = &factory;
    const auto levels = [&] {
        std::vector<double> values;
        for (int b = 0; b < 4; ++b) values.push_back(plugin.Effect(b).records[0].Get());
        return values;
    };
    const auto change = [&](const char* identifier, double position) {
        plugin.around.told.clear();
        plugin.Set(identifier, position);
        plugin.ParameterChanged(plugin.FindParameter(identifier));
        return plugin.around.told.size();
    };
    using Levels = std::vector<double>;
    EXPECT_EQ(change("Band 2 Level", 0.5), 1u);
    EXPECT_EQ(levels(), (Levels{1, 0.5, 1, 1}));
    plugin.linkBands = true;
    EXPECT_EQ(change("Band 2 Level", 0.25), 3u);
    EXPECT_EQ(levels(), (Levels{0.25, 0.25, 0.25, 1}));
    EXPECT_EQ(change("Band 4 Level", 0.75), 1u) << "a band that is not in use";
    EXPECT_EQ(change("Band gain 1", 0.75), 1u) << "not of an effect";
    plugin.linkBands = false;
    plugin.CreateEditor(nullptr, nullptr);
    EXPECT_EQ(change("Band 1 Level", 0.5), 3u) << "by the key";
    factory.keys = 0xdf;
    EXPECT_EQ(change("Band 1 Level", 0.75), 1u);
}

TEST(BandMeters, ShowWhatIsHeardOfEachBand) {
    BandsPlugin plugin(2);
    EditorDouble factory;
    factory.available = true;
    plugin.editorFactory = &factory;
    Meter meters[2];
    plugin.SetBandMeters({&meters[0], &meters[1]});
    plugin.CreateEditor(nullptr, nullptr);
    plugin.bandMute[1] = true;
    HostBuffers host(2, 2, 600);
    for (Meter& meter : meters) meter.told.reserve(8);
    host.Process(plugin);
    EXPECT_EQ(meters[0].told.size(), 4u);
    EXPECT_GT(meters[0].told[1], 0);
    EXPECT_EQ(meters[1].told, (std::vector<float>{2, 0, 10, -1}));
    plugin.DestroyEditor();
    host.Process(plugin);
    EXPECT_EQ(meters[1].told.size(), 4u);
}

TEST(CopiedBands, GoToAnotherPlugin) {
    BandsPlugin plugin(6), other(2);
    plugin.SetLimits({20, 40.5, 1234.567, 15000, 300});
    plugin.bandMute[0] = plugin.bandBypass[5] = true;
    MAttribute block;
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
    other.SetDefaultBands(1);
    other.PasteBandSettings(block);
    EXPECT_EQ(other.GetReportedLatency(), 3072);
    MAttribute again;
    other.CopyBandSettings(again);
    for (const MAttributePair* const pair : block.Attributes())
        EXPECT_EQ(again.GetAttribute(pair->name), pair->value);
    const auto before = other.Stored();
    for (const char* const count : {"0", "7", "-1", "", "x", "99999999999999999999"}) {
        again.SetAttribute("BandCount", count);
        again.SetAttribute("BandLimit", "3.5");
        try {
            other.PasteBandSettings(again);
            ADD_FAILURE() << count;
        } catch (const MException& exception) {
            EXPECT_EQ(exception.message.ToUtf8(), "Invalid number of bands.");
        }
        EXPECT_EQ(other.Stored(), before);
    }
    MAttribute partial;
    partial.SetAttribute("BandCount", "3");
    partial.SetAttribute("andLimit", "99");
    other.PasteBandSettings(partial);
    EXPECT_EQ(LimitsOf(other, 3), (std::vector<double>{20, 20000, 1235}));
    EXPECT_TRUE(other.bandMute[0]);
}

TEST(RandomBands, AreInOrderAndLevel) {
    BandsPlugin plugin(6);
    for (const double amount : {1.0, 0.4}) {
        plugin.bandGain[2].Set(7);
        plugin.bandPanorama[2].Set(0.5);
        plugin.outputGain.Set(-3);
        SetRandomSeed(17);
        plugin.GenerateRandomSettings(amount);
        const auto limits = LimitsOf(plugin, 5);
        EXPECT_TRUE(std::is_sorted(limits.begin(), limits.end()));
        EXPECT_NE(limits[2], 1000);
        EXPECT_EQ(plugin.bandGain[2].Get(), 0);
        EXPECT_EQ(plugin.bandPanorama[2].Get(), 0);
        EXPECT_EQ(plugin.outputGain.Get(), -3);
        EXPECT_NE(plugin.Effect(5).records[0].Get(), 1);
    }
}

// Of two parameters every other draw makes new ones, and the others a new special object.
TEST(RandomBands, DrawEitherParametersOrObjects) {
    BandsPlugin plugin(3);
    plugin.Effect(0).records[1].Clear(ParameterFlag::kRandomizes);
    SetRandomSeed(5);
    MRandomSequence sequence{5};
    for (int turn = 0; turn < 8; ++turn) {
        plugin.GenerateRandomSettingsSmart();
        for (int b = 0; b < 3; ++b) {
            EXPECT_EQ(plugin.Effect(b).specials, turn + 1) << "in either case";
            if (b > 0 && sequence.Next() % 2 != 0) continue;
            EXPECT_EQ(plugin.Effect(b).records[0].Get(), sequence.Next() * 3.051850947599719e-05);
            if (b > 0) sequence.Next();
        }
    }
    EXPECT_EQ(plugin.Effect(3).specials, 0);
}
