// SPDX-License-Identifier: GPL-3.0-or-later

// What the built library tells of itself, and its channels.

#include <gmock/gmock.h>

#include <set>

#include "hosting/vst2_plugin.h"
#include "hosting/vst3_plugin.h"
#include "hosts/suite/built_plugin.h"
#include "plugin/contract/plugin_host.h"

using namespace Steinberg;

FOR_BOTH_INTERFACES(Suite);

TEST_P(Suite, TellsWhatItIs) {
    const auto plugin = OpenBuilt(GetParam())->Create();
    const bool isVst3 = GetParam() == Interface::Vst3;
    const HostedInfo& info = plugin->Info();
    EXPECT_EQ(info.name, "Quillorea");
    EXPECT_EQ(info.vendor, "Quillorea");
    EXPECT_EQ(info.version, isVst3 ? QUILLOREA_VERSION : "100");
    // Songs find the plug-in by these.
    EXPECT_EQ(info.identity, isVst3 ? "7C1F5A3E94D24B08A6E3D7152B90C84F" : "516C7261");
    EXPECT_EQ(info.category, isVst3 ? "Fx|Modulation" : "1");

    std::vector<std::string> buses;
    for (const HostedBus& bus : plugin->Buses())
        buses.push_back(bus.name + (bus.isInput ? " <" : " >") + std::to_string(bus.channels));
    if (isVst3)
        EXPECT_THAT(buses, testing::ElementsAre("Stereo In <2", "Stereo Out >2", "Midi In <1"));
    else
        EXPECT_EQ(buses.size(), 2u);
}

TEST(Vst3Library, HasOneFactoryOfOneClass) {
    const auto library = std::static_pointer_cast<Vst3Library>(OpenBuilt(Interface::Vst3));
    const auto get = library->Library().Require<IPluginFactory* (*)()>("GetPluginFactory");
    FUnknownPtr<IPluginFactory3> factory(owned(get()).get());
    ASSERT_TRUE(factory);
    EXPECT_EQ(factory.getInterface(), get());
    factory->release();
    ASSERT_EQ(factory->countClasses(), 1);
    PClassInfoW effect;
    ASSERT_EQ(factory->getClassInfoUnicode(0, &effect), kResultOk);
    EXPECT_EQ(effect.cardinality, PClassInfo::kManyInstances);
    EXPECT_STREQ(effect.category, "Audio Module Class");
    EXPECT_NE(factory->getClassInfoUnicode(1, &effect), kResultOk);

    void* object = &effect;
    EXPECT_NE(factory->createInstance(FUnknown::iid, Vst::IComponent::iid, &object), kResultOk);
    EXPECT_EQ(object, nullptr) << "not a class of this factory";
    EXPECT_TRUE(library->Library().Require<bool (*)(void*)>("ModuleEntry")(nullptr));
    for (const char* name : {"InitDll", "ModuleExit", "ExitDll", "ModuleExit"})
        EXPECT_TRUE(library->Library().Require<bool (*)()>(name)()) << name;
    EXPECT_NE(library->Create(), nullptr);
}

TEST(Vst2Library, GivesNothingToWhatIsNoHost) {
    const auto library = std::static_pointer_cast<Vst2Library>(OpenBuilt(Interface::Vst2));
    EXPECT_EQ(library->Entry()(nullptr), nullptr);
    EXPECT_EQ(library->Entry()(
                  [](AEffect*, int, int, VstIntPtr, void*, float) -> VstIntPtr { return 0; }),
              nullptr);
    EXPECT_NE(library->Library().Find<void*>("main"), nullptr);
    const auto entry = library->Library().Require<PluginEntry>("FennirAudioEffectPluginInterface");
    EXPECT_NE(MPluginSystem::CreateOrRaise("chorus", entry)->Effect(), nullptr);
}

TEST(Vst2Library, TellsParametersApartInSevenLetters) {
    const auto parameters = OpenBuilt(Interface::Vst2)->Create()->Parameters();
    std::set<std::string> names;
    for (const HostedParameter& parameter : parameters) {
        EXPECT_LE(parameter.name.size(), 7u);
        names.insert(parameter.name);
    }
    EXPECT_EQ(names.size(), parameters.size());
    EXPECT_THAT(names, testing::IsSupersetOf({"Dry/wet", "BanGa6", "1Rate", "6RatVar"}));
}

// VST 3 takes only what changes both directions.
TEST_P(Suite, TakesArrangementsOrKeepsItsOwn) {
    constexpr struct {
        int inputs, outputs;
        bool vst3, vst2;
    } kCases[] = {
        {3, 3, false, false}, {8, 8, false, false}, {1, 8, false, false}, {3, 2, false, false},
        {2, 2, false, true},  {1, 2, false, true},  {2, 1, false, true},  {1, 1, true, true},
    };
    const Audio input = Noise(2, 2000, 0.25f);
    for (const auto& row : kCases) {
        SCOPED_TRACE(testing::Message() << row.inputs << " " << row.outputs);
        const bool taken = GetParam() == Interface::Vst3 ? row.vst3 : row.vst2;
        BuiltPlugin plugin(GetParam());
        plugin->Activate(false);
        EXPECT_EQ(plugin->Arrange(row.inputs, row.outputs), taken);
        const HostedBus bus = plugin->Buses().at(0);
        EXPECT_EQ(bus.channels, GetParam() == Interface::Vst3 && taken ? row.inputs : 2);
        plugin->Activate(true);
        if (taken && row.outputs == 1) {
            EXPECT_GT(Peak(plugin.Run({input[0]})), 0.1);
        } else if (!taken || row.inputs == 2) {
            EXPECT_EQ(plugin.Run(input), BuiltPlugin(GetParam()).Run(input));
        }
    }
}

TEST_P(Suite, HasEightChannelsWhereTheUserWantsSurround) {
    const FreshLibrary fresh(
        "<GlobalConfiguration><MAudioPluginSettings SurroundActivated=\"1\"/>"
        "</GlobalConfiguration>");
    const auto library = fresh.Open(GetParam());
    const std::string attributes = "OutputGain=\"0\" ChannelMode=\"";
    for (const auto& [channels, isTaken] : {std::pair{8, true}, {6, true}, {9, false}}) {
        SCOPED_TRACE(channels);
        BuiltPlugin plugin(*library, {});
        plugin->Activate(false);
        EXPECT_EQ(plugin->Arrange(channels, channels), isTaken);
        plugin->Activate(true);
        if (!isTaken) continue;
        plugin->SetState(StateOf(attributes + "Surround\"", "Depth=\"0\""));
        const Audio input = Noise(channels, 1000, 0.25f);
        const Audio output = plugin.Run(input);
        for (int c = 0; c < channels; ++c)
            EXPECT_NEAR(output[c][900], input[c][900 - plugin->Latency()], 1e-6) << c;
        plugin->SetState(StateOf(attributes + "Left + Right\""));
        const Audio pair = plugin.Run(input);
        EXPECT_GT(Peak({pair[0], pair[1]}), 0.1);
        EXPECT_EQ(Peak({pair.begin() + 2, pair.end()}), 0) << "and nothing else of the host's";
    }
}
