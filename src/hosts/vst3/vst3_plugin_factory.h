// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pluginterfaces/base/ipluginbase.h"

struct ProductInfo;

// The one class of the module, and how hosts make objects of it. One factory serves the process
// while anybody holds it.
//
// Threads  any
// Memory   deletes itself with its last reference
// Errors   kInvalidArgument for what is null or out of range, kNoInterface for a class or interface
//          that there is not, kOutOfMemory where an object could not be made; nothing gets out
class MVST3PluginFactory final : public Steinberg::IPluginFactory3 {
public:
    using tresult = Steinberg::tresult;
    using int32 = Steinberg::int32;
    using uint32 = Steinberg::uint32;

    static constexpr const char* kCategory = "Audio Module Class";
    static constexpr const char* kSubCategories = "Fx|Modulation";
    static constexpr const char* kSDKVersion = "VST 3.5.1";

    // With a reference for the caller; null without memory.
    static MVST3PluginFactory* Get(const ProductInfo& product);

    MVST3PluginFactory(const MVST3PluginFactory&) = delete;
    MVST3PluginFactory& operator=(const MVST3PluginFactory&) = delete;

    tresult PLUGIN_API queryInterface(const Steinberg::TUID wanted, void** object) override;
    uint32 PLUGIN_API addRef() override;
    uint32 PLUGIN_API release() override;

    tresult PLUGIN_API getFactoryInfo(Steinberg::PFactoryInfo* info) override;
    int32 PLUGIN_API countClasses() override { return 1; }
    tresult PLUGIN_API getClassInfo(int32 index, Steinberg::PClassInfo* info) override;
    tresult PLUGIN_API getClassInfo2(int32 index, Steinberg::PClassInfo2* info) override;
    tresult PLUGIN_API getClassInfoUnicode(int32 index, Steinberg::PClassInfoW* info) override;
    tresult PLUGIN_API createInstance(Steinberg::FIDString classID,
                                      Steinberg::FIDString interfaceID, void** object) override;
    // Not kept: each instance gets its context in initialize.
    tresult PLUGIN_API setHostContext(Steinberg::FUnknown*) override {
        return Steinberg::kResultOk;
    }

private:
    explicit MVST3PluginFactory(const ProductInfo& product) : product(product) {}
    ~MVST3PluginFactory() = default;

    const ProductInfo& product;
    uint32 references = 1;  // under the process's lock
};
