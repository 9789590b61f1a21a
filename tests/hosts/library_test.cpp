// SPDX-License-Identifier: GPL-3.0-or-later

// The shared library as another program sees it: loaded by its path, entered by its name.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "effect/chorus_driver.h"

namespace {

TEST(SharedLibrary, SoundsLikeTheEffectItHolds) {
    void* library = dlopen(QUILLOREA_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto entry =
        reinterpret_cast<PluginEntry>(dlsym(library, "FennirAudioEffectPluginInterface"));
    ASSERT_NE(entry, nullptr);
    const ReferenceSettings settings{.sampleRate = 44100, .highQuality = true};
    const Audio input = Programme(2, 6000, 0.5f);
    EXPECT_EQ(ChorusDriver(settings, entry).Rendered(input),
              ChorusDriver(settings).Rendered(input));
    dlclose(library);
}

}  // namespace
