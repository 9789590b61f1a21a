// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstring>
#include <filesystem>

#include "vst3_plugin.h"

using namespace Steinberg;

namespace {

constexpr char kArchitecture[] = "x86_64-linux";

// The library of a bundle's folder; anything else is taken for the library itself.
std::string LibraryOf(const std::string& path) {
    std::error_code failed;
    if (!std::filesystem::is_directory(path, failed)) return path;
    std::filesystem::path bundle = path;
    if (!bundle.has_filename()) bundle = bundle.parent_path();
    const auto library =
        bundle / "Contents" / kArchitecture / bundle.filename().replace_extension(".so");
    if (!std::filesystem::exists(library, failed))
        throw HostingError("'" + path + "' is not a VST 3 bundle: it has no '" +
                           library.lexically_relative(bundle).string() + "'.");
    return library.string();
}

}  // namespace

// What a host says at first and at last.
class Vst3Library::Entry {
public:
    explicit Entry(const SharedLibrary& library) : library(library) {
        const auto enter = library.Require<bool (*)(void*)>("ModuleEntry");
        library.Require<bool (*)()>("ModuleExit");
        if (!enter(library.Handle()))
            throw HostingError("'" + library.Path() + "' refuses to start.");
    }
    ~Entry() { library.Find<bool (*)()>("ModuleExit")(); }

private:
    const SharedLibrary& library;
};

Vst3Library::Vst3Library(const std::string& path)
    : library(LibraryOf(path)), entry(std::make_unique<Entry>(library)) {
    const auto get = library.Require<IPluginFactory* (*)()>("GetPluginFactory");
    factory = owned(get());
    if (!factory) throw HostingError("'" + path + "' offers no plug-in.");
}

Vst3Library::~Vst3Library() {
    factory = nullptr;
    entry.reset();
}

std::unique_ptr<HostedPlugin> Vst3Library::Create() {
    for (int32 c = 0; c < factory->countClasses(); ++c) {
        PClassInfo info;
        if (factory->getClassInfo(c, &info) == kResultOk &&
            std::strcmp(info.category, kVstAudioEffectClass) == 0)
            return std::make_unique<Vst3Plugin>(shared_from_this(), info);
    }
    throw HostingError("'" + library.Path() + "' offers no effect.");
}

std::shared_ptr<HostedLibrary> OpenVst3(const std::string& path) {
    return std::make_shared<Vst3Library>(path);
}
