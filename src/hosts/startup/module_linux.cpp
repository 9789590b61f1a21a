// SPDX-License-Identifier: GPL-3.0-or-later
#include <dlfcn.h>

#include "hosts/startup/startup.h"

namespace {

class MLinuxModule final : public MModule {
protected:
    MString GetLibraryFile() const override {
        Dl_info info = {};
        if (dladdr(&kLinkedResources, &info) == 0 || info.dli_fname == nullptr) return MString();
        return MString::FromUtf8(info.dli_fname);
    }
    void* FindEntry(void* library, const char* entry) const override {
        return dlsym(library, entry);
    }
};

}  // namespace

std::unique_ptr<MModule> MakePlatformModule() { return std::make_unique<MLinuxModule>(); }
