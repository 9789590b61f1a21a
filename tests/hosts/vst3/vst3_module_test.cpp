// SPDX-License-Identifier: GPL-3.0-or-later

// The factory, object identity, and the bundle.

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

}  // namespace

TEST(Vst3Factory, TellsItsOneClass) {
    const auto held = owned(GetVST3PluginFactory(Vst3Host::kProduct));
    EXPECT_EQ(held.get(), owned(GetVST3PluginFactory(Vst3Host::kProduct)).get());
    const FUnknownPtr<IPluginFactory3> factory(held);
    PFactoryInfo maker;
    PClassInfo info;
    PClassInfo2 info2;
    PClassInfoW wide;
    EXPECT_EQ(kResultOk, factory->getFactoryInfo(&maker));
    EXPECT_EQ(16, maker.flags);
    EXPECT_STREQ("https://maker.invalid", maker.url);
    ASSERT_EQ(1, factory->countClasses());
    EXPECT_EQ(kResultOk, factory->getClassInfo(0, &info));
    EXPECT_EQ(kResultOk, factory->getClassInfo2(0, &info2));
    EXPECT_EQ(kResultOk, factory->getClassInfoUnicode(0, &wide));
    EXPECT_EQ(kInvalidArgument, factory->getClassInfoUnicode(1, &wide));
    EXPECT_EQ(0, std::memcmp(info.cid, kClassID, 16));
    EXPECT_EQ(0, std::memcmp(&info, &info2, sizeof info));
    EXPECT_EQ("Product", Narrow(wide.name));
    EXPECT_EQ(kResultOk, factory->setHostContext(nullptr));

    const std::string text = ModuleInfoText(*factory);
    for (const char* part :
         {R"("CID": "0123456789ABCDEFFEDCBA9876543210")", R"(["Fx", "Modulation"])",
          R"("Vendor": "Maker \"&\\ Co")", R"("Cardinality": 2147483647)", R"("Unicode": true)",
          R"("SDKVersion": "VST 3.5.1")", R"("Category": "Audio Module Class")"})
        EXPECT_NE(std::string::npos, text.find(part)) << part;
}

TEST(Vst3Factory, MakesNothingOfWhatItDoesNotKnowOrCannotHave) {
    using Answer = std::pair<tresult, void*>;
    static const ProductInfo products[] = {
        ProductThat([]() -> std::unique_ptr<MAudioPlugin> { return nullptr; }),
        ProductThat([]() -> std::unique_ptr<MAudioPlugin> { throw std::bad_alloc(); }),
        ProductThat([]() -> std::unique_ptr<MAudioPlugin> { throw 1; })};
    for (const ProductInfo& product : products)
        EXPECT_EQ(Answer(kOutOfMemory, nullptr), Create(product, kClassID, FUnknown::iid));
    static const ProductInfo chorus = ProductThat(MakeChorus);
    EXPECT_EQ(Answer(kNoInterface, nullptr), Create(chorus, "another's class", FUnknown::iid));
    EXPECT_EQ(Answer(kNoInterface, nullptr), Create(chorus, kClassID, IPluginFactory3::iid));
    EXPECT_EQ(Answer(kInvalidArgument, nullptr), Create(chorus, nullptr, FUnknown::iid));
}

TEST(Vst3Factory, ServesThreadsAtOnce) {
    static const ProductInfo chorus = ProductThat(MakeChorus);
    const auto work = [] {
        for (int i = 0; i < 20; ++i) {
            auto* const component =
                static_cast<IComponent*>(Create(chorus, kClassID, IComponent::iid).second);
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
    void* none = this;
    EXPECT_EQ(kNoInterface, host.component->queryInterface(IPluginFactory3::iid, &none));
    EXPECT_EQ(nullptr, none);
    TUID id;
    EXPECT_NE(kResultOk, host.component->getControllerClassId(id));
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
