// SPDX-License-Identifier: GPL-3.0-or-later

// The factory and the bundle, the controller's parameters, and states.

#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <new>

#include "hosting/vst3_plugin.h"
#include "hosts/vst3/module_info.h"
#include "hosts/vst3/vst3_host.h"

namespace {

constexpr char kClassID[] = "\x01\x23\x45\x67\x89\xab\xcd\xef\xfe\xdc\xba\x98\x76\x54\x32\x10";

ProductInfo ProductThat(std::unique_ptr<MAudioPlugin> (*create)()) {
    ProductInfo product = Vst3Host::kProduct;
    product.create = create;
    return product;
}

// The answer and what was made.
std::pair<tresult, void*> Create(const ProductInfo& product, const char* id, const FUID& wanted) {
    const auto factory = owned(GetVST3PluginFactory(product));
    void* object = &object;
    const tresult result = factory->createInstance(id, wanted, &object);
    return {result, object};
}

std::string ListedAs(Vst3Host& host, std::initializer_list<int> places) {
    std::ostringstream text;
    for (const int place : places) {
        ParameterInfo info{};
        EXPECT_EQ(kResultOk, host.controller->getParameterInfo(place, info));
        text << info.id << ' ' << Narrow(info.title) << ' ' << info.stepCount << ' '
             << info.defaultNormalizedValue << ' ' << info.unitId << ' ' << info.flags << ';';
    }
    return text.str();
}

}  // namespace

TEST(Vst3Factory, TellsItsOneClass) {
    const auto held = owned(GetVST3PluginFactory(Vst3Host::kProduct));
    EXPECT_EQ(held.get(), owned(GetVST3PluginFactory(Vst3Host::kProduct)).get());
    const FUnknownPtr<IPluginFactory3> factory(held);
    PClassInfo info;
    EXPECT_EQ(kResultOk, factory->getClassInfo(0, &info));
    EXPECT_EQ(0, std::memcmp(info.cid, kClassID, 16));
    PClassInfoW wide;
    EXPECT_EQ(kInvalidArgument, factory->getClassInfoUnicode(1, &wide));
    EXPECT_EQ(kResultOk, factory->getClassInfoUnicode(0, &wide));
    EXPECT_EQ("Product", Narrow(wide.name));
    const std::string text = ModuleInfoText(*factory);
    for (const char* part :
         {R"("CID": "0123456789ABCDEFFEDCBA9876543210")", R"(["Fx", "Modulation"])",
          R"("Vendor": "Maker \"&\\ Co")", R"("Cardinality": 2147483647)", R"("Unicode": true)",
          R"("SDKVersion": "VST 3.5.1")", R"("Category": "Audio Module Class")"})
        EXPECT_NE(std::string::npos, text.find(part)) << part;
}

TEST(Vst3Factory, MakesNothingOfWhatItDoesNotKnowOrCannotHave) {
    using Answer = std::pair<tresult, void*>;
    static const ProductInfo broken =
        ProductThat([]() -> std::unique_ptr<MAudioPlugin> { throw std::bad_alloc(); });
    EXPECT_EQ(Answer(kOutOfMemory, nullptr), Create(broken, kClassID, FUnknown::iid));
    static const ProductInfo chorus = ProductThat(MakeChorus);
    EXPECT_EQ(Answer(kNoInterface, nullptr), Create(chorus, "another's class", FUnknown::iid));
    EXPECT_EQ(Answer(kNoInterface, nullptr), Create(chorus, kClassID, IPluginFactory3::iid));
    EXPECT_EQ(Answer(kInvalidArgument, nullptr), Create(chorus, nullptr, FUnknown::iid));
}

TEST(Vst3Object, IsOneBehindAllItsInterfaces) {
    Vst3Host host(MakeChorus());
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

TEST(Vst3Parameters, AreThePluginsThenBypassThenMIDI) {
    HostedFake fake(2, 2, true), silent;
    Vst3Host& host = fake.host;
    ASSERT_EQ(2 + 1 + 130, host.controller->getParameterCount());
    EXPECT_EQ(2 + 1, silent.host.controller->getParameterCount());
    EXPECT_EQ(
        "0 Number 0 0 0 1;1 Toggle 1 1 1 1;32767 Bypass 1 0 0 65537;"
        "10000 MIDI controller 0 0 0 0 16;10129 MIDI pitch bend 0 0.5 0 16;",
        ListedAs(host, {0, 1, 2, 3, 132}));
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
    for (const CtrlNumber code : std::initializer_list<CtrlNumber>{-1, 0, 127, 129, 130}) {
        ParamID id = 0;
        EXPECT_EQ(kResultFalse, mapping->getMidiControllerAssignment(1, 0, code, id));
        EXPECT_EQ(kResultFalse, unmapped->getMidiControllerAssignment(0, 0, code, id));
        mapping->getMidiControllerAssignment(0, 0, code, id);
        EXPECT_EQ(code >= 0 && code < 130 ? 10000 + code : 0, static_cast<int>(id));
    }
}

// Which values have which texts is seen in the built library; here, that asking sets nothing.
TEST(Vst3Parameters, AreOnlyAskedForATextsValue) {
    HostedFake fake(2, 2, true);
    const std::tuple<ParamID, double, const char16_t*> texts[] = {
        {0x7fff, 1, u"on"}, {10007, 1, u"127"},   {10129, 0.5, u"0"},   {0, 0.25, u"0.25"},
        {2, -1, u"0"},      {10001, -1, u"loud"}, {0x7fff, -1, u"loud"}};
    for (const auto& [id, expected, text] : texts) {
        double value = -1;
        fake.host.controller->getParamValueByString(id, const_cast<TChar*>(text), value);
        EXPECT_NEAR(expected, value, 1e-4);
    }
    EXPECT_EQ(0, fake.plugin.GetParameter(0));
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

    EXPECT_EQ("", second.plugin.text.ToUtf8());
    ByteStream whole(state);
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
