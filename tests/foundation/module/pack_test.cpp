// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "container_support.h"
#include "foundation/module/resource_directory.h"

// What the build packed with the program is what the source folder holds.
TEST(Pack, TheBuildPacksAFolder) {
    MResourceDirectory resources;
    resources.AddFile(QUILLOREA_SAMPLE_CONTAINER, {});
    for (const auto& [id, name] : {std::pair("layout", "/layout.xml"), {"note", "/note.txt"}}) {
        MStdFileStream file(MString::FromUtf8(std::string(QUILLOREA_SAMPLE_FOLDER) + name),
                            MStdFileStream::Mode::Read);
        EXPECT_EQ(ReadAll(*resources.Open(id)), ReadAll(file)) << id;
    }
    const MResourceContainer& container = *resources.Containers()[0];
    EXPECT_EQ(container.Find("layout")->GetAttribute("compressed"), "1");
    EXPECT_EQ(container.Find("note")->GetAttribute("width"), "16");
    EXPECT_EQ(container.Find("note")->GetAttribute("size"), "7");
    EXPECT_EQ(container.Resources().GetSubItem("xresource").GetAttribute("id"), "mstyle");
}
