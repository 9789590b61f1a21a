// SPDX-License-Identifier: GPL-3.0-or-later

// Parameters as a host lists and edits them, and states.

#include <cmath>

#include "hosts/vst3/vst3_host.h"

namespace {

std::string ListedAs(Vst3Host& host, int index) {
    ParameterInfo info{};
    EXPECT_EQ(kResultOk, host.controller->getParameterInfo(index, info));
    std::ostringstream text;
    text << info.id << ' ' << Narrow(info.title) << ' ' << info.stepCount << ' '
         << info.defaultNormalizedValue << ' ' << info.unitId << ' ' << info.flags;
    return text.str();
}

std::string TextAt(Vst3Host& host, ParamID id, double value) {
    String128 text{};
    return host.controller->getParamStringByValue(id, value, text) == kResultOk ? Narrow(text)
                                                                                : "-";
}

// -1 where it tells none.
double ValueOf(Vst3Host& host, ParamID id, const std::string& text) {
    String128 units{};
    std::copy(text.begin(), text.end(), units);
    double value = 0;
    return host.controller->getParamValueByString(id, units, value) == kResultOk ? value : -1;
}

}  // namespace

TEST(Vst3Parameters, AreThePluginsThenBypassThenMIDI) {
    HostedFake fake(2, 2, true), silent;
    Vst3Host& host = fake.host;
    ASSERT_EQ(2 + 1 + 130, host.controller->getParameterCount());
    EXPECT_EQ(2 + 1, silent.host.controller->getParameterCount());
    EXPECT_EQ("0 Number 0 0 0 1", ListedAs(host, 0));
    EXPECT_EQ("1 Toggle 1 1 1 1", ListedAs(host, 1));
    EXPECT_EQ("32767 Bypass 1 0 0 65537", ListedAs(host, 2));
    EXPECT_EQ("10000 MIDI controller 0 0 0 0 16", ListedAs(host, 3));
    EXPECT_EQ("10128 MIDI aftertouch 0 0 0 16", ListedAs(host, 131));
    EXPECT_EQ("10129 MIDI pitch bend 0 0.5 0 16", ListedAs(host, 132));
    const FUnknownPtr<IUnitInfo> units(host.component);
    ParameterInfo none{};
    UnitInfo unit{};
    for (const int index : {-1, 133}) {
        EXPECT_EQ(kInvalidArgument, host.controller->getParameterInfo(index, none));
        EXPECT_EQ(kInvalidArgument, units->getUnitInfo(index, unit));
    }
    ASSERT_EQ(2, units->getUnitCount());
    EXPECT_EQ(kResultOk, units->getUnitInfo(1, unit));
    EXPECT_EQ("Band 1", Narrow(unit.name));

    const FUnknownPtr<IMidiMapping> mapping(host.component), unmapped(silent.host.component);
    for (const int code : {-1, 0, 127, 128, 129, 130}) {
        ParamID id = 0;
        const auto controller = static_cast<CtrlNumber>(code);
        EXPECT_EQ(kResultFalse, mapping->getMidiControllerAssignment(1, 0, controller, id));
        EXPECT_EQ(kResultFalse, unmapped->getMidiControllerAssignment(0, 0, controller, id));
        mapping->getMidiControllerAssignment(0, 0, controller, id);
        EXPECT_EQ(code >= 0 && code < 130 ? 10000 + code : 0, static_cast<int>(id));
    }
}

TEST(Vst3Parameters, SpeakInTexts) {
    HostedFake fake(2, 2, true);
    Vst3Host& host = fake.host;
    const std::tuple<ParamID, double, const char*> texts[] = {
        {0x7fff, 1, "On"}, {0x7fff, 0, "Off"},  {10007, 1, "127"},
        {10129, 0.5, "0"}, {10129, 0, "-8192"}, {0, 0.25, "0.250000"}};
    for (const auto& [id, value, text] : texts) {
        EXPECT_EQ(text, TextAt(host, id, value));
        EXPECT_NEAR(value, ValueOf(host, id, text), 1e-4);
    }
    EXPECT_EQ(0, fake.plugin.GetParameter(0));  // it was only asked for
    for (const ParamID id : {0x7fffu, 10001u, 2u, 10130u}) EXPECT_EQ(-1, ValueOf(host, id, "loud"));
    EXPECT_EQ("-", TextAt(host, 2, 0));
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
    fake.plugin.bypassed = 1;
    EXPECT_EQ(1, controller.getParamNormalized(0x7fff));
    EXPECT_EQ(nullptr, controller.createView(ViewType::kEditor));
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
    first.plugin.bypassed = 1;
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

    ByteStream whole(state);
    EXPECT_EQ(kResultOk, second.host.controller->setComponentState(&whole));
    EXPECT_EQ("", second.host.handler.Take());
    EXPECT_EQ(kResultOk, second.host.controller->setState(&whole));  // the same object's
    EXPECT_EQ("some text", second.plugin.text.ToUtf8());
}

TEST(Vst3State, KeepsThePluginFromWhatIsNoState) {
    HostedFake fake;
    fake.plugin.text = "kept";
    const std::string state = fake.host.State();
    for (const std::string& bytes :
         {std::string(), std::string("<other/>"), std::string(1000, '\0'),
          state.substr(0, state.size() / 2), state.substr(0, state.size() - 4),
          "<settings Text='" + std::string(17 << 20, 'x') + "'/>"}) {
        fake.host.Load(bytes);
        EXPECT_EQ(state, fake.host.State()) << bytes.substr(0, 80);
    }
    ByteStream broken(state, 16, 64), full("", 16, 64);
    EXPECT_EQ(kResultOk, fake.host.component->setState(&broken));
    EXPECT_EQ(kResultFalse, fake.host.component->getState(&full));
    EXPECT_EQ(state, fake.host.State());
    EXPECT_EQ("", fake.host.handler.Take());
}

// Of the chorus, value by value, and by its sound.
TEST(Vst3State, MakesAnotherInstanceSoundTheSame) {
    Vst3Host first(MakeChorus()), second(MakeChorus()), third(MakeChorus());
    constexpr unsigned kStored = 23;  // not the triggers of presets
    first.Start();
    for (unsigned id = 0; id < kStored; ++id) first.Change({{id, 0, 0.1 + 0.8 * id / kStored}});
    for (Vst3Host* const host : {&second, &third}) host->Load(first.State()), host->Start();
    for (unsigned id = 0; id < kStored; ++id)
        EXPECT_EQ(first.controller->getParamNormalized(id),
                  second.controller->getParamNormalized(id));
    EXPECT_EQ(first.State(), second.State());
    EXPECT_EQ(0, LargestDifference(second.Run(0.5f, 512), third.Run(0.5f, 512)));
}
