// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/module/resource_directory.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "container_support.h"

namespace {

// Two folders of containers, which are empty at first.
class ResourceDirectory : public testing::Test {
protected:
    void SetUp() override {
        for (const std::string& folder : {user, library})
            std::filesystem::create_directories(folder);
    }
    void TearDown() override { std::filesystem::remove_all(root); }

    MResourceDirectory::Folders Folders() const {
        return {MString::FromUtf8(user), MString::FromUtf8(library)};
    }
    void Add(const std::string& bytes) { resources.Add(StreamOver(bytes), Folders()); }
    std::string InContainer(const char* container, const char* id) {
        return ReadAll(*resources.FindContainer(container)->Open(id));
    }

    const std::string root = testing::TempDir() + "quillorea-resources-" +
                             testing::UnitTest::GetInstance()->current_test_info()->name();
    const std::string user = root + "/user";
    const std::string library = root + "/library";
    MResourceDirectory resources;
};

std::string One(const char* id, std::string_view data, const char* more = "") {
    std::string entry("<resource id=");
    entry.append(id).append(" offset=0 size=").append(std::to_string(data.size())).append(" />");
    return ContainerBytes(entry.append(more), data);
}

}  // namespace

TEST_F(ResourceDirectory, AsksContainersInTheirOrder) {
    const std::string first = One("a", "first"),
                      second = One("A", "second", "<eq id=b offset=1 size=2 />");
    Add(first);
    Add(second);
    EXPECT_EQ(ReadAll(*resources.Open("A")), "first");
    MMemoryStream block = resources.Attach("b");
    EXPECT_EQ(ReadAll(block), "ec");
    EXPECT_EQ(RaisedBy([&] { resources.Open("c"); }), "0 Cannot find requested resource (c).");
    EXPECT_EQ(RaisedBy([&] { resources.Attach("c"); }), "0 Cannot find requested resource (c).");
    EXPECT_EQ(resources.Containers().size(), 2u);
    EXPECT_EQ(RaisedBy([&] { Add("x"); }),
              "256 Invalid file contents. The resource container is incomplete.");
    EXPECT_EQ(ReadAll(*resources.Open("a")), "first");
}

TEST_F(ResourceDirectory, AttachesTheFilesOfExternalContainers) {
    WriteFile(user + "/style.mrf",
              One("a", "style", "<xresource id=deep filename=deep.mrf />") + "behind");
    WriteFile(library + "/style.mrf", One("a", "shadowed"));
    WriteFile(library + "/deep.mrf", One("a", "deep", "<xresource id=me filename=deep.mrf />"));
    WriteFile(user + "/broken.mrf", One("a", "broken").substr(0, 20));
    WriteFile(library + "/broken.mrf", One("a", "whole"));
    const std::string linked = One("a", "linked",
                                   "<xresource id=Style filename=style.mrf />"
                                   "<xresource id=style filename=deep.mrf />"
                                   "<xresource id=broken filename=broken.mrf />"
                                   "<xresource id=missing filename=missing.mrf />"
                                   "<xresource id=folder filename=\"\" />"
                                   "<xresource id=path filename=\"../library/deep.mrf\"/>"
                                   "<xresource id=path filename=..\\library\\deep.mrf />");
    Add(linked);
    EXPECT_EQ(InContainer("style", "a"), "style");
    EXPECT_EQ(InContainer("deep", "a"), "deep");
    EXPECT_EQ(resources.FindContainer("me"), resources.FindContainer("deep")) << "read once";
    for (const char* const id : {"broken", "missing", "folder", "path", "a"})
        EXPECT_EQ(resources.FindContainer(id), nullptr) << id;
    EXPECT_EQ(ReadAll(*resources.Open("a")), "linked");
}

TEST_F(ResourceDirectory, ReadsAContainerFromAFile) {
    WriteFile(user + "/a.mrf", One("a", "file", "<xresource id=b filename=b.mrf />"));
    WriteFile(user + "/b.mrf", One("b", "beside"));
    resources.AddFile(MString::FromUtf8(user + "/a.mrf"), Folders());
    EXPECT_EQ(ReadAll(*resources.Open("a")), "file");
    EXPECT_EQ(InContainer("B", "b"), "beside");
    std::string huge(64, '\0');
    huge[3] = huge[7] = '\x7f';
    WriteFile(user + "/huge.mrf", huge);
    for (const char* const name : {"/huge.mrf", "/b.mrfx"}) {
        const std::string error =
            RaisedBy([&] { resources.AddFile(MString::FromUtf8(user + name), Folders()); });
        EXPECT_NE(error.find(name[2] == 'u' ? "is incomplete" : "could not be open"),
                  std::string::npos)
            << error;
    }
}
