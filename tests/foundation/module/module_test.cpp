// SPDX-License-Identifier: GPL-3.0-or-later
// Settings in a home of the test's own that is whole, broken or not to be written to, and what a
// module finds out about its library.
#include "foundation/module/module.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <thread>

#include "foundation/module/library_context.h"
#include "foundation/objects/event_target.h"
#include "foundation/streams/stream_support.h"

namespace fs = std::filesystem;

namespace {

std::string Setting(const MSettingsStore& store, const char* key) {
    MAttribute root;
    store.CopyTo(root);
    return root.GetAttribute(key, "-").ToUtf8();
}

bool Set(MSettingsStore& store, const char* key, const char* value) {
    return store.Change(
        [&](MAttribute& root) { root.SetAttribute(key, MString::FromUtf8(value)); });
}

unsigned RightsOf(const fs::path& path) {
    return static_cast<unsigned>(fs::status(path).permissions());
}

// Stands for one of the platform. What it is asked for is what it was told.
struct TestModule : MModule {
    MString GetLibraryFile() const override { return file; }
    void* FindEntry(void* library, const char* entry) const override {
        return std::string_view(entry) == "LattenkitDLLInitialize" ? library : nullptr;
    }
    MString file;
};

}  // namespace

TEST(SettingsStore, KeepsChangesForTheUserAlone) {
    const TestFolder home;
    const MString folder = home / "a/quillorea";
    MSettingsStore store("Test"), other("Test");
    store.Open(folder);
    other.Open(folder);
    EXPECT_TRUE(fs::is_empty(home.path)) << "reading makes nothing";
    EXPECT_TRUE(Set(store, "one", "1 < 2"));
    EXPECT_TRUE(Set(other, "two", "2"));
    EXPECT_TRUE(Set(store, "three", "3"));
    for (const char* const made : {"a", "a/quillorea"})
        EXPECT_EQ(RightsOf(home.path / made), 0700u) << made;
    EXPECT_EQ(RightsOf(home.path / "a/quillorea/Test.xml"), 0600u);
    EXPECT_EQ(std::distance(fs::directory_iterator(home.path / "a/quillorea"), {}), 1);

    other.Open(folder);
    const auto all = Setting(other, "one") + Setting(other, "two") + Setting(other, "three");
    EXPECT_EQ(all, "1 < 223") << "what another process wrote meanwhile stays";
    EXPECT_THROW(store.Change([](MAttribute& root) {
        root.Clear();
        throw MException("broken");
    }),
                 MException);
    EXPECT_EQ(Setting(store, "one"), "1 < 2");
}

TEST(SettingsStore, TakesDefaultsForWhatItCannotRead) {
    const std::string whole = "<Test key=\"value\"/>";
    const std::map<std::string, std::string> contents = {
        {"whole", whole},
        {"empty", ""},
        {"text", "key=value"},
        {"other closing", "<Test key=1></Other>"},
        {"no name", "<Test key=1><"},
        {"binary", std::string("\0\xff\xfe<", 4) + RandomBytes(1000)},
        {"huge", whole + std::string(MSettingsStore::kLargestFile, ' ')},
        {"deep", [] {
             std::string text;
             for (int i = 0; i < 100000; ++i) text += "<a>";
             return text;
         }()}};
    for (const auto& [what, bytes] : contents) {
        const TestFolder home;
        home.SetContent("Test.xml", bytes);
        MSettingsStore store("Test");
        store.Open(home / "");
        EXPECT_EQ(Setting(store, "key"), what == "whole" ? "value" : "-") << what;
        EXPECT_TRUE(Set(store, "key", "new")) << what;
        MSettingsStore again("Test");
        again.Open(home / "");
        EXPECT_EQ(Setting(again, "key"), "new") << what;
    }
}

// Rights mean nothing to the administrator.
TEST(SettingsStore, WorksWithoutAHomeToWriteTo) {
    const auto holds = [](const MString& folder, const char* first) {
        MSettingsStore store("Test");
        store.Open(folder);
        const bool asFirst = Setting(store, "key") == first;
        return asFirst && !Set(store, "key", "new") && !Set(store, "more", "1") &&
               Setting(store, "key") == "new";
    };
    const TestFolder home;
    home.SetContent("file", "");
    EXPECT_TRUE(holds(MString(), "-"));
    EXPECT_TRUE(holds(home / "file/quillorea", "-"));
    fs::create_directories(home.path / "folder/Test.xml");
    EXPECT_TRUE(holds(home / "folder", "-"));

    home.SetContent("Test.xml", "<Test key=\"old\"/>");
    const auto holdsForNobody = [&](const char* first) {
        return HoldsInChild(
            [&] { return (geteuid() != 0 || seteuid(65534) == 0) && holds(home / "", first); });
    };
    chmod(home.path.c_str(), 0555);
    EXPECT_TRUE(holdsForNobody("old"));
    chmod(home.Path("Test.xml").c_str(), 0);
    EXPECT_TRUE(holdsForNobody("-"));
    chmod(home.path.c_str(), 0700);
}

TEST(SettingsStore, IsSharedByThreads) {
    const TestFolder home;
    MSettingsStore store("Test");
    store.Open(home / "");
    const auto count = [&store](const char* key) {
        for (int i = 1; i <= 20; ++i) Set(store, key, std::to_string(i).c_str());
    };
    std::thread other([&] { count("a"); });
    count("b");
    other.join();
    EXPECT_EQ(Setting(store, "a") + Setting(store, "b"), "2020");
}

TEST(Module, FindsTheUsersFoldersByTheEnvironment) {
    struct {
        const char *home, *config, *data, *folders;
    } const rows[] = {
        {"/h", "/c", "/d", "/c/quillorea|/d/quillorea"},
        {"/h", nullptr, "", "/h/.config/quillorea|/h/.local/share/quillorea"},
        {"/h", "c", "../d", "/h/.config/quillorea|/h/.local/share/quillorea"},
        {nullptr, "/c", nullptr, "/c/quillorea|"},
        {"h", nullptr, nullptr, "|"},
    };
    for (const auto& row : rows) {
        EXPECT_TRUE(HoldsInChild([&row] {
            const auto set = [](const char* name, const char* value) {
                return value != nullptr ? setenv(name, value, 1) : unsetenv(name);
            };
            set("HOME", row.home);
            set("XDG_CONFIG_HOME", row.config);
            set("XDG_DATA_HOME", row.data);
            const UserFolders found = FindUserFolders();
            TestModule module;
            const std::string data = found.data.ToUtf8();
            return found.settings.ToUtf8() + "|" + data == row.folders &&
                   module.GetGlobalDataPath().ToUtf8() == (data.empty() ? "" : data + "/Data");
        })) << row.folders;
    }
}

TEST(Module, TakesNameAndContainerFromWhereItsLibraryStands) {
    const TestFolder folder;
    fs::copy_file(QUILLOREA_SAMPLE_CONTAINER, folder.path / "lib.test.mrf");
    folder.SetContent("broken.mrf", "no container");
    struct {
        const char *file, *told, *name;
        std::size_t containers;
    } const rows[] = {{"lib.test.so", "", "lib.test", 1},
                      {"lib.test", "caller", "caller", 0},
                      {"broken.so", "", "broken", 0},
                      {".hidden", "", ".hidden", 0}};
    for (const auto& row : rows) {
        TestModule module;
        module.file = folder / row.file;
        module.moduleName = row.told;
        EXPECT_TRUE(module.Initialize());
        EXPECT_EQ(module.moduleName.ToUtf8(), row.name);
        EXPECT_EQ(module.globalResources.Containers().size(), row.containers) << row.file;
    }
}

TEST(Module, SharesWhatItHasWithASibling) {
    static std::string told;
    const LibraryEntry entry = [](const LibraryContext* context) -> MModule* {
        const bool shared = context->eventLock == &EventLock();
        void* const block = context->allocator.allocateZeroed(3, 5);
        context->allocator.release(context->allocator.reallocate(block, 100));
        told = context->moduleName + std::string(shared ? " shares" : "");
        return told.empty() ? nullptr : reinterpret_cast<MModule*>(&told);
    };
    TestModule module;
    module.moduleName = "caller";
    EXPECT_TRUE(module.DLLLoaded(reinterpret_cast<void*>(entry)));
    EXPECT_EQ(told, "caller shares");
    EXPECT_FALSE(module.DLLLoaded(nullptr)) << "a library without the entry";
}
