// SPDX-License-Identifier: GPL-3.0-or-later
// Settings in a home that is whole, broken or not to be written to, and what a module finds out.
#include "foundation/module/module.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "foundation/streams/stream_support.h"

namespace fs = std::filesystem;

namespace {

struct Store : MSettingsStore {
    explicit Store(const MString& folder) : MSettingsStore("Test") { Open(folder); }
    std::string Get(const char* key) const {
        MAttribute root;
        CopyTo(root);
        return root.GetAttribute(key, "-").ToUtf8();
    }
    bool Set(const char* key, const char* value) {
        return Change([&](MAttribute& root) { root.SetAttribute(key, value); });
    }
};

struct TestModule : MModule {
    MString GetLibraryFile() const override { return file; }
    void* FindEntry(void*, const char*) const override { return nullptr; }
    MString file;
};

}  // namespace

TEST(SettingsStore, KeepsChangesForTheUserAlone) {
    const TestFolder home;
    const MString folder = home / "a/quillorea";
    Store store(folder), other(folder);
    EXPECT_TRUE(fs::is_empty(home.path)) << "reading makes nothing";
    EXPECT_TRUE(store.Set("one", "1 < 2") && other.Set("two", "2") && store.Set("three", "3"));
    EXPECT_EQ(fs::status(home.path / "a").permissions(), fs::perms(0700));
    EXPECT_EQ(fs::status(home.path / "a/quillorea/Test.xml").permissions(), fs::perms(0600));
    const Store again(folder);
    EXPECT_EQ(again.Get("one") + again.Get("two") + again.Get("three"), "1 < 223");
}

TEST(SettingsStore, TakesDefaultsForWhatItCannotRead) {
    const std::string whole = "<Test key=\"value\"/>";
    std::string deep;
    for (int i = 0; i < 100000; ++i) deep += "<a key=1>";
    for (const auto& bytes :
         {whole, std::string(), std::string("<Test key=1></Other>"), std::string("<Test key=1><"),
          RandomBytes(1000), whole + std::string(MSettingsStore::kLargestFile, ' '), deep}) {
        const TestFolder home;
        home.SetContent("Test.xml", bytes);
        Store store(home / "");
        EXPECT_EQ(store.Get("key"), bytes == whole ? "value" : "-") << bytes.substr(0, 30);
        EXPECT_TRUE(store.Set("key", "new"));
        EXPECT_EQ(Store(home / "").Get("key"), "new");
    }
}

// Rights mean nothing to the administrator.
TEST(SettingsStore, WorksWithoutAHomeToWriteTo) {
    const auto holds = [](const MString& folder, const char* first) {
        Store store(folder);
        return store.Get("key") == first && !store.Set("key", "new") && !store.Set("b", "1") &&
               store.Get("key") == "new";
    };
    const TestFolder home;
    home.SetContent("Test.xml", "<Test key=\"old\"/>");
    fs::create_directories(home.path / "folder/Test.xml");
    for (const MString& folder : {MString(), home / "Test.xml/quillorea", home / "folder"})
        EXPECT_TRUE(holds(folder, "-"));
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

TEST(Module, FindsTheUsersFoldersByTheEnvironment) {
    const auto holds = [](const char* config, const char* home, const char* folder) {
        return HoldsInChild([&] {
            setenv("HOME", home, 1);
            setenv("XDG_CONFIG_HOME", config, 1);
            unsetenv("XDG_DATA_HOME");
            return FindUserFolders().settings.ToUtf8() == folder &&
                   TestModule().GetDataPath("a").IsEmpty() == (*home != '/');
        });
    };
    EXPECT_TRUE(holds("/c", "/h", "/c/quillorea"));
    EXPECT_TRUE(holds("c", "/h", "/h/.config/quillorea"));
    EXPECT_TRUE(holds("", "h", ""));
}

TEST(Module, TakesNameAndContainerFromWhereItsLibraryStands) {
    const TestFolder folder;
    fs::copy_file(QUILLOREA_SAMPLE_CONTAINER, folder.path / "lib.test.mrf");
    folder.SetContent("broken.mrf", "no container");
    for (const auto& [file, name, containers] :
         {std::tuple{"lib.test.so", "lib.test", 1u}, {"broken.so", "broken", 0u}}) {
        TestModule module;
        module.file = folder / file;
        EXPECT_TRUE(module.Initialize());
        EXPECT_EQ(module.moduleName.ToUtf8(), name);
        EXPECT_EQ(module.globalResources.Containers().size(), containers) << file;
    }
}
