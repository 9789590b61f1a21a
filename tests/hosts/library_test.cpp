// SPDX-License-Identifier: GPL-3.0-or-later

// The shared library as another program sees it: loaded by its path, entered by its name.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "effect/chorus_entry.h"
#include "plugin/contract/plugin_host.h"

namespace {

std::vector<float> RunBlocks(PluginEntry entry) {
    constexpr int kBlock = 300;
    constexpr int kBlocks = 20;
    const auto host = MPluginSystem::CreateOrRaise("chorus", entry);
    PluginArguments setup(1, 44100);
    host->Command(PluginCommand::kPrepare, setup);
    std::vector<float> sound(kBlock * kBlocks);
    for (std::size_t i = 0; i < sound.size(); ++i)
        sound[i] = std::sin(0.1f * static_cast<float>(i));
    const TransportInfo transport;
    for (int block = 0; block < kBlocks; ++block) {
        float* samples[] = {sound.data() + block * kBlock};
        const float* inputs[] = {samples[0]};
        float* const* outputs = samples;
        PluginArguments arguments(&transport, static_cast<const float* const*>(inputs), outputs,
                                  kBlock);
        host->Command(PluginCommand::kProcess, arguments);
    }
    return sound;
}

TEST(SharedLibrary, SoundsLikeTheEffectItHolds) {
    void* library = dlopen(QUILLOREA_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto entry =
        reinterpret_cast<PluginEntry>(dlsym(library, "FennirAudioEffectPluginInterface"));
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(RunBlocks(entry), RunBlocks(ChorusEntry));
    dlclose(library);
}

}  // namespace
