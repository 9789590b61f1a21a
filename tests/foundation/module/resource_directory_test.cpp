// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/module/resource_directory.h"

#include <gtest/gtest.h>

#include "container_support.h"
#include "foundation/streams/mfile.h"

namespace {

std::string One(const char* id, std::string_view data, const char* more = "") {
    std::string entry("<resource id=");
    entry.append(id).append(" offset=0 size=").append(std::to_string(data.size())).append(" />");
    return ContainerBytes(entry.append(more), data);
}

}  // namespace

TEST(ResourceDirectory, AsksContainersInTheirOrder) {
    MResourceDirectory resources;
    const std::string first = One("a", "first");
    const std::string second = One("A", "second", "<eq id=b offset=1 size=2 />");
    resources.Add(StreamOver(first), {});
    resources.Add(StreamOver(second), {});
    EXPECT_EQ(ReadAll(*resources.Open("A")), "first");
    MMemoryStream block = resources.Attach("b");
    EXPECT_EQ(ReadAll(block), "ec");
    EXPECT_EQ(RaisedBy([&] { resources.Open("c"); }), "0 Cannot find requested resource (c).");
}

TEST(ResourceDirectory, AttachesTheFilesOfExternalContainers) {
    const std::string user = testing::TempDir() + "quillorea-user";
    const std::string library = testing::TempDir() + "quillorea-library";
    for (const std::string& folder : {user, library}) MFile::CreatePath(MString::FromUtf8(folder));
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
                                   "<xresource id=path filename=\"../library/deep.mrf\"/>");
    MResourceDirectory resources;
    resources.Add(StreamOver(linked), {MString::FromUtf8(user), MString::FromUtf8(library)});
    const auto found = [&](const char* container) {
        return ReadAll(*resources.FindContainer(container)->Open("a"));
    };
    EXPECT_EQ(found("style"), "style");
    EXPECT_EQ(found("deep"), "deep");
    EXPECT_EQ(resources.FindContainer("me"), resources.FindContainer("deep")) << "read once";
    for (const char* const id : {"broken", "missing", "path", "a"})
        EXPECT_EQ(resources.FindContainer(id), nullptr) << id;
    EXPECT_EQ(ReadAll(*resources.Open("a")), "linked");
    const auto addFile = [&](const std::string& path) {
        return RaisedBy([&] { resources.AddFile(MString::FromUtf8(path), {}); });
    };
    EXPECT_NE(addFile(user + "/broken.mrf").find("is incomplete"), std::string::npos);
    EXPECT_NE(addFile(user + "/none.mrf").find("could not be open"), std::string::npos);
}
