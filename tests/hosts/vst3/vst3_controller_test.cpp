// SPDX-License-Identifier: GPL-3.0-or-later

// The factory and the bundle, the controller's parameters, and states.

#include <cmath>
#include <fstream>
#include <iterator>

#include "hosting/vst3_plugin.h"
#include "hosts/vst3/module_info.h"
#include "hosts/vst3/vst3_host.h"

TEST(Vst3Factory, TellsItsOneClass) {
    const FUnknownPtr<IPluginFactory3> factory(owned(GetVST3PluginFactory(Vst3Host::kProduct)));
    const std::string text = ModuleInfoText(*factory);
    for (const char* part :
         {R"("CID": "0123456789ABCDEFFEDCBA9876543210")", R"(["Fx", "Modulation"])",
          R"("Vendor": "Maker \"&\\ Co")", R"("Unicode": true)", R"("SDKVersion": "VST 3.5.1")"})
        EXPECT_NE(std::string::npos, text.find(part)) << part;
}

TEST(Vst3Object, IsOneBehindAllItsInterfaces) {
    Vst3Host host(std::make_unique<FakePlugin>());
    const FUnknownPtr<FUnknown> self(host.component);
    const auto references = host.component->addRef();
    for (const FUID* const id :
         {&IComponent::iid, &IAudioProcessor::iid, &IEditController::iid, &IEditController2::iid,
          &IUnitInfo::iid, &IMidiMapping::iid, &IConnectionPoint::iid, &IPluginBase::iid,
          &IProcessContextRequirements::iid, &FUnknown::iid}) {
        void* face = nullptr;
        ASSERT_EQ(kResultOk, host.controller->queryInterface(*id, &face));
        EXPECT_EQ(self.get(), FUnknownPtr<FUnknown>(static_cast<FUnknown*>(face)).get());
        EXPECT_EQ(references, static_cast<FUnknown*>(face)->release());
    }
    host.component->release();
    const FUnknownPtr<IProcessContextRequirements> needs(host.component);
    EXPECT_EQ(0x4dcu, needs->getProcessContextRequirements());  // music, tempo, transport
}

TEST(Vst3Bundle, DescribesItsLibrary) {
    Vst3Library library(QUILLOREA_BUNDLE);
    const FUnknownPtr<IPluginFactory3> factory(&library.Factory());
    ASSERT_TRUE(factory);
    std::ifstream file(std::string(QUILLOREA_BUNDLE) + "/Contents/Resources/moduleinfo.json");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(ModuleInfoText(*factory), text);
}

TEST(Vst3Parameters, HaveSectionsAndControllersWhereMIDIIsReceived) {
    HostedFake fake(2, 2, true), silent;
    EXPECT_EQ(2 + 1, silent.host.controller->getParameterCount());
    const FUnknownPtr<IUnitInfo> units(fake.host.component);
    ParameterInfo info{};
    UnitInfo unit{};
    EXPECT_EQ(kInvalidArgument, fake.host.controller->getParameterInfo(-1, info));
    EXPECT_EQ(kResultOk, fake.host.controller->getParameterInfo(1, info));
    EXPECT_EQ(std::tuple(1, 1.0, 1),
              std::tuple(info.stepCount, info.defaultNormalizedValue, info.unitId));
    EXPECT_EQ(kInvalidArgument, units->getUnitInfo(2, unit));
    EXPECT_EQ(kResultOk, units->getUnitInfo(1, unit));
    EXPECT_EQ("Band 1", Narrow(unit.name));

    const FUnknownPtr<IMidiMapping> mapping(fake.host.component), unmapped(silent.host.component);
    for (const CtrlNumber code : std::initializer_list<CtrlNumber>{-1, 0, 127, 129, 130}) {
        ParamID id = 0;
        EXPECT_EQ(kResultFalse, mapping->getMidiControllerAssignment(1, 0, code, id));
        EXPECT_EQ(kResultFalse, unmapped->getMidiControllerAssignment(0, 0, code, id));
        mapping->getMidiControllerAssignment(0, 0, code, id);
        EXPECT_EQ(code >= 0 && code < 130 ? 10000 + code : 0, static_cast<int>(id));
    }
}

// Hosts hand older values to the controller by a timer; the processor must not see them.
TEST(Vst3Parameters, SetOnTheControllerStayOnTheHostsSide) {
    HostedFake fake;
    IEditController& controller = *fake.host.controller;
    fake.host.Start();
    fake.host.Change({{0, 0, 0.5}});
    EXPECT_EQ(0.5, controller.getParamNormalized(0));
    EXPECT_EQ(kResultOk, controller.setParamNormalized(0, 0.2));
    EXPECT_EQ(0.2, controller.getParamNormalized(0));
    EXPECT_EQ(0.5, fake.plugin.GetParameter(0));
    fake.host.Change({{0, 0, 0.75}});
    EXPECT_EQ(0.75, controller.getParamNormalized(0));
    controller.setParamNormalized(0, 7);
    EXPECT_EQ(1, controller.getParamNormalized(0));
    fake.host.Load(fake.host.State());
    EXPECT_EQ(0.75, controller.getParamNormalized(0));
    EXPECT_EQ(kResultFalse, controller.setParamNormalized(3, 0.5));
    EXPECT_EQ(kInvalidArgument, controller.setParamNormalized(0, NAN));
}

TEST(Vst3Edits, AreOneGestureEach) {
    HostedFake fake;
    fake.host.Start();
    // A host that runs a block from within is not listened to, another thread's block is.
    fake.host.handler.onEdit = [&] {
        fake.host.Change({{0, 0, 0.9}}, 0);
        std::thread([&] { fake.host.Change({{1, 0, 0}}, 0); }).join();
    };
    for (const int index : {0, -1, 2, 0x7fff}) fake.plugin.SendAutomation(index, 0.5);
    EXPECT_EQ("begin 0;perform 0 0.5;end 0;", fake.host.handler.Take());
    EXPECT_EQ(0, fake.plugin.GetParameter(0));
    EXPECT_EQ(0, fake.plugin.GetParameter(1));
    static_cast<MAudioPluginVST3Adapter*>(fake.plugin.hostAdapter)->SendBypassAutomation(true);
    EXPECT_EQ("begin 32767;perform 32767 1;end 32767;", fake.host.handler.Take());
    fake.host.controller->setComponentHandler(nullptr);
    fake.plugin.SendAutomation(0, 0.5);  // nobody there
}

TEST(Vst3State, ComesBackWhatWasTaken) {
    HostedFake first, second;
    first.host.Start();
    second.host.Start();
    first.plugin.text = "some text";
    first.plugin.latency = 7;
    const std::string state = first.host.State();
    for (const int chunk : {1, 1000}) {
        second.plugin.text = {};
        second.host.Load(state, chunk);
        EXPECT_EQ("some text", second.plugin.text.ToUtf8());
        EXPECT_EQ(state, second.host.State());
    }
    // Values, and the latency where it is another one, in one call each.
    EXPECT_EQ("restart 12;restart 4;", second.host.handler.Take());
    MAttribute own;
    second.plugin.Store({false, own});  // as a preset is loaded
    EXPECT_EQ("restart 8;dirty 1;restart 4;", second.host.handler.Take());

    // Streams that fail on their way.
    ByteStream broken(state, 16, 64), full("", 16, 64);
    EXPECT_EQ(kResultOk, first.host.component->setState(&broken));
    EXPECT_EQ(kResultFalse, first.host.component->getState(&full));
    EXPECT_EQ(state, first.host.State());
    EXPECT_EQ("", first.host.handler.Take());
}
