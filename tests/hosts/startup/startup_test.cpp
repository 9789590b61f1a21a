// SPDX-License-Identifier: GPL-3.0-or-later
// What an entry of the library brings up, and what is left where there is no memory for it.
#include "hosts/startup/startup.h"

#include <new>

#include "foundation/objects/event_target.h"
#include "hosts/startup/module_home.h"
#include "hosts/startup/product.h"
#include "plugin/frame/audio_plugin.h"
#include "support/allocation_trap.h"

using StartUp = ModuleHome;

TEST_F(StartUp, AddsTheContainersThatThereAre) {
    const std::string bytes = FileBytes(QUILLOREA_SAMPLE_CONTAINER);
    const ResourceBlock whole{reinterpret_cast<const std::uint8_t*>(bytes.data()),
                              static_cast<std::int32_t>(bytes.size())};
    const std::unique_ptr<MModule> module = MakePlatformModule();
    EXPECT_TRUE(MLoadGlobalResources(*module, {{{whole.data, 20}, {nullptr, 0}}}));
    EXPECT_TRUE(module->globalResources.Containers().empty()) << "cut short, and missing";
    EXPECT_TRUE(MLoadGlobalResources(*module, {{{nullptr, 0}, whole}}));
    EXPECT_FALSE(ReadAll(*module->globalResources.Open("layout")).empty());
}

TEST_F(StartUp, TakesFromASiblingWhatIsSharedUnlessItIsInUse) {
    static MLock locks[2];  // for ever
    const LibraryContext first{theAllocator, &locks[0], "first"};
    const LibraryContext second{theAllocator, &locks[1], "second"};
    EXPECT_TRUE(InitLattenkitSubSystems());
    EXPECT_EQ(theModule->moduleName.ToUtf8(), "hosts_startup_test");
    ForgetModule();
    EXPECT_EQ(EnterLattenkitLibrary(nullptr), nullptr);
    EXPECT_NE(EnterLattenkitLibrary(&first), nullptr);
    EXPECT_EQ(EnterLattenkitLibrary(&second), theModule);
    EXPECT_EQ(&EventLock(), &locks[0]);
    EXPECT_EQ(theModule->moduleName.ToUtf8(), "first");
}

TEST_F(StartUp, GivesNothingAndKeepsNothingWhereThereIsNoMemory) {
    if (!AllocationLimit::IsSupported()) GTEST_SKIP() << "sanitizers let no allocation fail";
    CreateProductPlugin();  // what is made once per process is there
    bool failed = true;
    for (int allocations = 0; failed; allocations += 1 + allocations / 16) {
        ForgetModule();
        const AllocationLimit limit(allocations);
        std::unique_ptr<MAudioPlugin> plugin;
        try {
            plugin = CreateProductPlugin();
        } catch (const std::bad_alloc&) {
        }
        failed = plugin == nullptr;
        ASSERT_TRUE(failed || plugin->GetParameterCount() > 0) << allocations;
        if (failed) ForgetModule();
        ASSERT_TRUE(!failed || limit.Kept() == 0) << allocations;
    }
}
