// SPDX-License-Identifier: GPL-3.0-or-later

// The factory, object identity, and the bundle.

#include <pluginterfaces/vst/ivstunits.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <thread>

#include "hosting/vst3_plugin.h"
#include "hosts/vst3/module_info.h"
#include "hosts/vst3/vst3_host.h"

using Steinberg::FUnknown, Steinberg::FUnknownPtr, Steinberg::IPluginFactory3, Steinberg::owned;

namespace {

// Tells when it goes.
struct Mortal : FakePlugin {
    explicit Mortal(bool& alive) : alive(alive) { alive = true; }
    ~Mortal() override { alive = false; }
    bool& alive;
};

ProductInfo ProductThat(std::unique_ptr<MAudioPlugin> (*create)()) {
    ProductInfo product = Vst3Host::Product();
    product.create = create;
    return product;
}

}  // namespace

TEST(Vst3Factory, TellsItsOneClass) {
    const auto held = owned(GetVST3PluginFactory(Vst3Host::Product()));
    const FUnknownPtr<IPluginFactory3> factory(held);
    ASSERT_TRUE(factory);
    EXPECT_EQ(held.get(), owned(GetVST3PluginFactory(Vst3Host::Product())).get());
    Steinberg::PFactoryInfo maker;
    Steinberg::PClassInfo info;
    Steinberg::PClassInfo2 info2;
    Steinberg::PClassInfoW wide;
    EXPECT_EQ(kResultOk, factory->getFactoryInfo(&maker));
    EXPECT_EQ(16, maker.flags);
    EXPECT_STREQ("https://maker.invalid", maker.url);
    ASSERT_EQ(1, factory->countClasses());
    EXPECT_EQ(kResultOk, factory->getClassInfo(0, &info));
    EXPECT_EQ(kResultOk, factory->getClassInfo2(0, &info2));
    EXPECT_EQ(kResultOk, factory->getClassInfoUnicode(0, &wide));
    EXPECT_EQ(
        0, std::memcmp(info.cid, "\x01\x23\x45\x67\x89\xab\xcd\xef\xfe\xdc\xba\x98\x76\x54\x32\x10",
                       16));
    EXPECT_EQ(0, std::memcmp(&info, &info2, sizeof info));
    EXPECT_EQ(0x7fffffff, wide.cardinality);
    EXPECT_EQ("Product", Narrow(wide.name));
    EXPECT_STREQ("VST 3.5.1", info2.sdkVersion);
    for (const int index : {-1, 1}) {
        EXPECT_EQ(kInvalidArgument, factory->getClassInfo(index, &info));
        EXPECT_EQ(kInvalidArgument, factory->getClassInfoUnicode(index, &wide));
    }
    EXPECT_EQ(kResultOk, factory->setHostContext(nullptr));

    const std::string text = ModuleInfoText(*factory);
    for (const char* part :
         {"\"CID\": \"0123456789ABCDEFFEDCBA9876543210\"", "[\"Fx\", \"Modulation\"]",
          "\"Vendor\": \"Maker \\\"&\\\\ Co\"", "\"Cardinality\": 2147483647", "\"Unicode\": true"})
        EXPECT_NE(std::string::npos, text.find(part)) << part;
}

TEST(Vst3Factory, MakesNothingOfWhatItDoesNotKnowOrCannotHave) {
    const auto create = [](const ProductInfo& product, const char* id,
                           const Steinberg::TUID wanted) {
        const auto factory = owned(GetVST3PluginFactory(product));
        void* object = &object;
        const auto result = factory->createInstance(id, wanted, &object);
        EXPECT_EQ(nullptr, object);
        return result;
    };
    const auto factory = owned(GetVST3PluginFactory(Vst3Host::Product()));
    Steinberg::PClassInfo info;
    factory->getClassInfo(0, &info);
    const char other[16] = "another's class";
    EXPECT_EQ(kInvalidArgument, factory->createInstance(info.cid, FUnknown::iid, nullptr));
    Vst3Host::pending = std::make_unique<FakePlugin>();
    EXPECT_EQ(Steinberg::kNoInterface, create(Vst3Host::Product(), other, FUnknown::iid));
    EXPECT_EQ(Steinberg::kNoInterface, create(Vst3Host::Product(), info.cid, IPluginFactory3::iid));
    EXPECT_EQ(Steinberg::kOutOfMemory, create(Vst3Host::Product(), info.cid, FUnknown::iid));
    EXPECT_EQ(kInvalidArgument, create(Vst3Host::Product(), nullptr, FUnknown::iid));
}

TEST(Vst3Factory, SurvivesProductsThatFail) {
    static const ProductInfo products[] = {
        ProductThat([]() -> std::unique_ptr<MAudioPlugin> { throw std::bad_alloc(); }),
        ProductThat([]() -> std::unique_ptr<MAudioPlugin> { throw MException("no"); }),
        ProductThat([]() -> std::unique_ptr<MAudioPlugin> { throw 1; })};
    for (const ProductInfo& product : products) {
        const auto factory = owned(GetVST3PluginFactory(product));
        Steinberg::PClassInfo info;
        factory->getClassInfo(0, &info);
        void* object = nullptr;
        EXPECT_EQ(Steinberg::kOutOfMemory,
                  factory->createInstance(info.cid, FUnknown::iid, &object));
    }
}

TEST(Vst3Factory, ServesThreadsAtOnce) {
    static const ProductInfo kChorus = ProductThat(MakeChorus);
    const auto work = [] {
        for (int i = 0; i < 20; ++i) {
            const auto factory = owned(GetVST3PluginFactory(kChorus));
            Steinberg::PClassInfo info;
            factory->getClassInfo(0, &info);
            Vst::IComponent* component = nullptr;
            ASSERT_EQ(kResultOk, factory->createInstance(info.cid, Vst::IComponent::iid,
                                                         reinterpret_cast<void**>(&component)));
            EXPECT_EQ(kResultOk, component->initialize(nullptr));
            component->terminate();
            EXPECT_EQ(0u, component->release());
        }
    };
    std::thread other(work);
    work();
    other.join();
}

TEST(Vst3Object, IsOneBehindAllItsInterfaces) {
    bool alive = false;
    {
        Vst3Host host(std::make_unique<Mortal>(alive));
        const FUnknownPtr<FUnknown> self(host.component);
        const Steinberg::FUID* const interfaces[] = {
            &Vst::IComponent::iid,        &Vst::IAudioProcessor::iid,
            &Vst::IEditController::iid,   &Vst::IEditController2::iid,
            &Vst::IUnitInfo::iid,         &Vst::IMidiMapping::iid,
            &Vst::IConnectionPoint::iid,  &Vst::IProcessContextRequirements::iid,
            &Steinberg::IPluginBase::iid, &FUnknown::iid};
        const auto references = host.component->addRef();
        for (const Steinberg::FUID* const id : interfaces) {
            FUnknown* face = nullptr;
            ASSERT_EQ(kResultOk,
                      host.controller->queryInterface(*id, reinterpret_cast<void**>(&face)));
            EXPECT_EQ(self.get(), FUnknownPtr<FUnknown>(face).get());
            EXPECT_EQ(references, face->release());
        }
        host.component->release();
        void* none = this;
        EXPECT_EQ(Steinberg::kNoInterface,
                  host.component->queryInterface(IPluginFactory3::iid, &none));
        EXPECT_EQ(nullptr, none);
        Steinberg::TUID id;
        EXPECT_NE(kResultOk, host.component->getControllerClassId(id));
        const FUnknownPtr<Vst::IProcessContextRequirements> needs(host.component);
        EXPECT_EQ(0x4dcu, needs->getProcessContextRequirements());  // music, tempo, transport
    }
    EXPECT_FALSE(alive);
}

TEST(Vst3Bundle, DescribesItsLibrary) {
    const std::string bundle = QUILLOREA_BUNDLE;
    Vst3Library library(bundle + "/Contents/x86_64-linux/Quillorea.so");
    const FUnknownPtr<IPluginFactory3> factory(&library.Factory());
    ASSERT_TRUE(factory);
    std::ifstream file(bundle + "/Contents/Resources/moduleinfo.json");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(ModuleInfoText(*factory), text);
    EXPECT_NE(std::string::npos, text.find("\"CID\": \"7C1F5A3E94D24B08A6E3D7152B90C84F\""));
}
