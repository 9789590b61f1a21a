// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosts/vst3/vst3_plugin_factory.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <new>
#include <utility>

#include "hosts/adapter/make_adapter.h"
#include "hosts/vst3/audio_plugin_vst3_adapter.h"
#include "hosts/vst3/guarded_result.h"

using namespace Steinberg;

namespace {

// Guards the pointer and all references of the factory that it points to.
std::mutex factoryMutex;
MVST3PluginFactory* theFactory = nullptr;

using ClassID = std::array<char, sizeof(TUID)>;

ClassID BytesOf(const std::array<std::uint32_t, 4>& words) {
    ClassID bytes;
    FUID(words[0], words[1], words[2], words[3]).toTUID(bytes.data());
    return bytes;
}

}  // namespace

MVST3PluginFactory* MVST3PluginFactory::Get(const ProductInfo& product) {
    const std::lock_guard lock(factoryMutex);
    if (theFactory != nullptr) {
        ++theFactory->references;
    } else {
        theFactory = new (std::nothrow) MVST3PluginFactory(product);
    }
    return theFactory;
}

tresult PLUGIN_API MVST3PluginFactory::queryInterface(const TUID wanted, void** object) {
    if (object == nullptr) return kInvalidArgument;
    QUERY_INTERFACE(wanted, object, IPluginFactory3::iid, IPluginFactory3)
    QUERY_INTERFACE(wanted, object, IPluginFactory2::iid, IPluginFactory2)
    QUERY_INTERFACE(wanted, object, IPluginFactory::iid, IPluginFactory)
    QUERY_INTERFACE(wanted, object, FUnknown::iid, FUnknown)
    *object = nullptr;
    return kNoInterface;
}

uint32 PLUGIN_API MVST3PluginFactory::addRef() {
    const std::lock_guard lock(factoryMutex);
    return ++references;
}

uint32 PLUGIN_API MVST3PluginFactory::release() {
    {
        const std::lock_guard lock(factoryMutex);
        if (--references > 0) return references;
        theFactory = nullptr;
    }
    delete this;
    return 0;
}

tresult PLUGIN_API MVST3PluginFactory::getFactoryInfo(PFactoryInfo* info) {
    if (info == nullptr) return kInvalidArgument;
    *info = PFactoryInfo(product.vendor, product.webAddress, product.mailAddress,
                         PFactoryInfo::kUnicode);
    return kResultOk;
}

tresult PLUGIN_API MVST3PluginFactory::getClassInfo(int32 index, PClassInfo* info) {
    if (index != 0 || info == nullptr) return kInvalidArgument;
    *info = PClassInfo(BytesOf(product.vst3ClassID).data(), PClassInfo::kManyInstances, kCategory,
                       product.name);
    return kResultOk;
}

tresult PLUGIN_API MVST3PluginFactory::getClassInfo2(int32 index, PClassInfo2* info) {
    if (index != 0 || info == nullptr) return kInvalidArgument;
    constexpr int32 kClassFlags = 0;  // not to be run on another machine
    *info = PClassInfo2(BytesOf(product.vst3ClassID).data(), PClassInfo::kManyInstances, kCategory,
                        product.name, kClassFlags, kSubCategories, product.vendor, product.version,
                        kSDKVersion);
    return kResultOk;
}

tresult PLUGIN_API MVST3PluginFactory::getClassInfoUnicode(int32 index, PClassInfoW* info) {
    PClassInfo2 ascii;
    if (info == nullptr || getClassInfo2(index, &ascii) != kResultOk) return kInvalidArgument;
    *info = PClassInfoW();
    info->fromAscii(ascii);
    return kResultOk;
}

// IDs are 16 bytes behind a pointer to text.
tresult PLUGIN_API MVST3PluginFactory::createInstance(FIDString classID, FIDString interfaceID,
                                                      void** object) {
    if (object == nullptr) return kInvalidArgument;
    *object = nullptr;
    if (classID == nullptr || interfaceID == nullptr) return kInvalidArgument;
    const ClassID own = BytesOf(product.vst3ClassID);
    if (!std::equal(own.begin(), own.end(), classID)) return kNoInterface;
    return GuardedResult("VST3 Plugin main", kOutOfMemory, [&] {
        const auto adapter = owned(MakeAdapter(product, [](std::unique_ptr<MAudioPlugin> plugin) {
            return new MAudioPluginVST3Adapter(std::move(plugin));
        }));
        return adapter->queryInterface(interfaceID, object);
    });
}
