// SPDX-License-Identifier: GPL-3.0-or-later

// What the library does to the process, and what it does without a home or memory.

#include <cstdlib>
#include <thread>

#include "hosting/shared_library.h"
#include "hosts/suite/built_plugin.h"
#include "support/allocation_trap.h"

namespace fs = std::filesystem;

namespace {

using Process = Suite;
FOR_BOTH_INTERFACES(Process);

void LiveOnce(Interface interface) {
    const auto library = OpenBuilt(interface);
    BuiltPlugin plugin(*library, StateOf("BandCount=\"2\""));
    plugin.Run(Noise(2, 600, 0.25f));
    plugin->SetState(plugin->State());
    plugin->Activate(false);
}

// 100 lives; of the last 80 not even a small object is left behind each.
void LiveAgainAndAgain(Interface interface) {
    for (int i = 0; i < 20; ++i) LiveOnce(interface);
    const std::int64_t bytes = BytesInUse();
    const int threads = ThreadCount();
    for (int i = 0; i < 80; ++i) LiveOnce(interface);
    const bool isSame = BytesInUse() - bytes < 80 * 256 && ThreadCount() == threads;
    if (!isSame) fprintf(stderr, "%lld bytes\n", static_cast<long long>(BytesInUse() - bytes));
    std::exit(isSame ? 0 : 1);
}

std::vector<std::string> FilesIn(const fs::path& folder) {
    std::vector<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file()) files.push_back(entry.path().filename());
    return files;
}

}  // namespace

TEST_P(Process, KeepsNothingOfAHundredLives) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    setenv("GLIBC_TUNABLES", "glibc.malloc.tcache_count=0:glibc.malloc.mxfast=0", 1);
    EXPECT_EXIT(LiveAgainAndAgain(GetParam()), testing::ExitedWithCode(0), "");
}

TEST_P(Process, GetsNoThreadAndNoFileByALook) {
    const FreshLibrary fresh;
    std::thread([] {}).join();  // with the first one a sanitizer has one of its own
    const int threads = ThreadCount();
    const auto library = fresh.Open(GetParam());
    {
        const auto plugin = library->Create();
        EXPECT_FALSE(plugin->Parameters().empty());
        EXPECT_FALSE(plugin->State().empty());
        EXPECT_EQ(ThreadCount(), threads);
    }
    BuiltPlugin(*library, StateOf("")).Run(Noise(2, 600, 0.25f));
    EXPECT_EQ(ThreadCount(), threads);
    EXPECT_TRUE(FilesIn(fresh.home).empty());
}

TEST_P(Process, NeedsNoHome) {
    const Audio input = Noise(2, 2000, 0.25f);
    const Audio expected = BuiltPlugin(GetParam()).Run(input);
    // A file of settings in a folder that nobody may write, or where the home is told to be.
    const std::pair<const char*, const char*> homes[] = {
        {"", "/nowhere/at/all"},
        {"", ""},
        {"", "relative"},
        {"", "/dev/null"},
        {"", nullptr},
        {"not <a file> of settings", nullptr},
        {"<GlobalConfiguration", nullptr},
        {"<GlobalConfiguration><MAudioPluginSettings DefaultBandCount=\"99\" "
         "SurroundActivated=\"\xff\"/></GlobalConfiguration>",
         nullptr},
    };
    for (const auto& [settings, path] : homes) {
        SCOPED_TRACE(testing::Message() << settings << " " << (path != nullptr ? path : "-"));
        const FreshLibrary fresh(settings);
        for (const char* variable : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"})
            if (path != nullptr) setenv(variable, path, 1);
        fs::permissions(fresh.home, fs::perms::owner_read | fs::perms::owner_exec);
        const auto library = fresh.Open(GetParam());
        BuiltPlugin plugin(*library, StateOf("BandCount=\"1\""));
        EXPECT_EQ(plugin.Run(input), expected);
        EXPECT_FALSE(plugin->State().empty());
    }
}

TEST_P(Process, GetsNullWhereThereIsNoMemory) {
    if (!AllocationLimit::IsSupported()) GTEST_SKIP() << "sanitizers let no allocation fail";
    const auto library = OpenBuilt(GetParam());
    library->Create();  // what is made once per process and thread is there
    int refusals = 0;
    for (int allocations = 0;; allocations += 1 + allocations / 16) {
        std::unique_ptr<HostedPlugin> plugin;
        try {
            const AllocationLimit limit(allocations);
            plugin = library->Create();
        } catch (const HostingError&) {
        } catch (const std::bad_alloc&) {  // of the host's own
        }
        if (plugin != nullptr && !plugin->Parameters().empty()) break;
        ++refusals;
        ASSERT_LT(refusals, 200);
    }
    EXPECT_GT(refusals, 50);
    BuiltPlugin plugin(*library, StateOf(""));
    const Audio input = Noise(2, 600, 0.25f);
    EXPECT_EQ(plugin.Run(input), BuiltPlugin(GetParam(), StateOf("")).Run(input));
}
