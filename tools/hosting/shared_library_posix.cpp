// SPDX-License-Identifier: GPL-3.0-or-later
#include "shared_library.h"

#include <dlfcn.h>

#include <filesystem>

#include "hosted_plugin.h"

namespace {

void* Load(const std::string& path) {
    std::error_code failed;
    // Absolute, since the loader looks for a plain name in the system's folders.
    const std::filesystem::path full = std::filesystem::absolute(path, failed);
    const auto status = std::filesystem::status(full, failed);
    if (failed) throw HostingError("Cannot load '" + path + "': " + failed.message() + ".");
    if (std::filesystem::is_directory(status))
        throw HostingError("Cannot load '" + path + "': it is a folder.");
    void* const handle = dlopen(full.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr)
        throw HostingError("'" + path + "' is not a plug-in that can be loaded: " + dlerror() +
                           ".");
    return handle;
}

}  // namespace

SharedLibrary::SharedLibrary(const std::string& path) : path(path), handle(Load(path)) {}

SharedLibrary::~SharedLibrary() { dlclose(handle); }

void* SharedLibrary::FindAddress(const char* name) const { return dlsym(handle, name); }

void SharedLibrary::ThrowMissing(const char* name) const {
    throw HostingError("'" + path + "' is not such a plug-in: it has no entry '" + name + "'.");
}
