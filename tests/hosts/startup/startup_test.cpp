// SPDX-License-Identifier: GPL-3.0-or-later
// What an entry of the library brings up, and what is left where there is no memory for it.
#include "hosts/startup/startup.h"

#include <new>
#include <thread>
#include <vector>

#include "foundation/objects/event_target.h"
#include "foundation/objects/lock.h"
#include "hosts/startup/module_home.h"
#include "hosts/startup/product.h"
#include "plugin/frame/audio_plugin.h"
#include "plugin/frame/frame_plugin.h"
#include "support/allocation_trap.h"

using StartUp = ModuleHome;

TEST_F(StartUp, MakesOneModuleForAllThreadsAndWritesNothing) {
    std::vector<MModule*> seen(4);
    std::vector<std::thread> threads;
    for (MModule*& module : seen)
        threads.emplace_back(
            [&module] { module = InitLattenkitSubSystems() ? theModule : nullptr; });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(seen, std::vector<MModule*>(4, theModule));
    ASSERT_NE(theModule, nullptr);
    EXPECT_EQ(theModule->moduleName.ToUtf8(), "hosts_startup_test");
    EXPECT_EQ(theModule->GetGlobalDataPath().ToUtf8(), home.Path("data/quillorea/Data"));
    EXPECT_TRUE(std::filesystem::is_empty(home.path));
}

TEST_F(StartUp, AddsTheContainersThatThereAre) {
    const std::string container = FileBytes(QUILLOREA_SAMPLE_CONTAINER);
    const auto block = [](const std::string& bytes, std::size_t size) {
        return ResourceBlock{reinterpret_cast<const std::uint8_t*>(bytes.data()),
                             static_cast<std::int32_t>(size)};
    };
    const std::unique_ptr<MModule> module = MakePlatformModule();
    EXPECT_TRUE(MLoadGlobalResources(*module, {{block(container, 20), {nullptr, 0}}}));
    EXPECT_TRUE(module->globalResources.Containers().empty()) << "cut short, and missing";
    EXPECT_TRUE(
        MLoadGlobalResources(*module, {{{nullptr, 0}, block(container, container.size())}}));
    EXPECT_FALSE(ReadAll(*module->globalResources.Open("layout")).empty());
}

TEST_F(StartUp, TakesFromASiblingWhatIsSharedUnlessItIsInUse) {
    static MLock lock, otherLock;  // for ever
    const MAllocator own = theAllocator;
    LibraryContext context{own, &lock, "sibling"};
    EXPECT_EQ(EnterLattenkitLibrary(nullptr), nullptr);
    EXPECT_EQ(theModule, nullptr);
    EXPECT_NE(EnterLattenkitLibrary(&context), nullptr);
    EXPECT_EQ(&EventLock(), &lock);
    context = {own, &otherLock, "other"};
    EXPECT_EQ(EnterLattenkitLibrary(&context), theModule);
    EXPECT_EQ(&EventLock(), &lock);
    EXPECT_EQ(theModule->moduleName.ToUtf8(), "sibling");
}

TEST_F(StartUp, MakesInstancesOnSeveralThreadsAtOnce) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < 4; ++i) {
                const std::unique_ptr<MAudioPlugin> plugin = CreateProductPlugin();
                plugin->SetHostSampleRate(48000);
                plugin->InitProcessing();
                HostBuffers host(2, 2, 256);
                host.Process(*plugin);
                EXPECT_GT(Peak(host.out), 0);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

TEST_F(StartUp, GivesNothingAndKeepsNothingWhereThereIsNoMemory) {
    if (!AllocationLimit::IsSupported()) GTEST_SKIP() << "sanitizers let no allocation fail";
    CreateProductPlugin();  // what is made once per process is there
    int failed = 0;
    for (int allocations = 0;; allocations += 1 + allocations / 16) {
        ForgetModule();
        AllocationLimit limit(allocations);
        std::unique_ptr<MAudioPlugin> plugin;
        try {
            plugin = CreateProductPlugin();
        } catch (const std::bad_alloc&) {
        }
        if (plugin != nullptr) {
            EXPECT_GT(plugin->GetParameterCount(), 0) << allocations;
            break;
        }
        ForgetModule();
        ASSERT_EQ(limit.Kept(), 0) << allocations;
        ++failed;
    }
    EXPECT_GT(failed, 50);
}

TEST_F(StartUp, StartsAThreadWithTheProcessingAndLeavesNoneBehind) {
    const int before = ThreadCount();
    {
        const std::unique_ptr<MAudioPlugin> plugin = CreateProductPlugin();
        plugin->SetConnectedChannels(2, 2);
        EXPECT_EQ(ThreadCount(), before) << "a scan goes so far";
        plugin->AnnounceBlockSize(64);
        plugin->InitProcessing();
        plugin->InitProcessing();
        EXPECT_EQ(ThreadCount(), before + 1);
    }
    EXPECT_EQ(ThreadCount(), before);
}
