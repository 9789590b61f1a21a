// SPDX-License-Identifier: GPL-3.0-or-later

// The shared library as another program sees it: loaded by its path, entered by its name.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <array>
#include <filesystem>

#include "effect/chorus_driver.h"
#include "hosting/hosted_plugin.h"
#include "hosting/private_configuration.h"

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

TEST(SharedLibrary, LeavesNothingBehindHoweverOftenItIsLoaded) {
    const PrivateConfiguration configuration("quillorea", "GlobalConfiguration.xml", "");
    const auto threads = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
    };
    constexpr int kWarmUp = 100, kRounds = 200;
    constexpr std::size_t kSmallestBlock = 32;  // one of each round would be kept
    std::array<float, 64> samples{};
    std::array<float*, 2> channels = {samples.data(), samples.data()};
    HostedBlock block;
    block.sampleCount = static_cast<int>(samples.size());
    block.inputs = block.outputs = {{channels.data(), 2}};
    const auto before = threads();
    for (const auto open : {OpenVst3, OpenVst2}) {
        std::size_t taken = 0;
        for (int round = 0; round < kWarmUp + kRounds; ++round) {
            if (round == kWarmUp) taken = mallinfo2().uordblks;
            const std::unique_ptr<HostedPlugin> plugin = open(QUILLOREA_LIBRARY)->Create();
            plugin->Setup(48000, block.sampleCount);
            plugin->Activate(true);
            plugin->Process(block);
            plugin->Activate(false);
        }
        EXPECT_LT(mallinfo2().uordblks, taken + kRounds * kSmallestBlock);
        EXPECT_EQ(threads(), before);
    }
}
