// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cstdio>

#include "container_support.h"
#include "foundation/module/resource_directory.h"
#include "foundation/streams/mfile.h"

namespace {

// What the program says and how it ends.
std::string Packed(const std::string& folder, const std::string& output) {
    const std::string command = QUILLOREA_PACK " '" + folder + "' '" + output + "' 2>&1";
    std::FILE* const pipe = popen(command.c_str(), "r");
    std::string said;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) said += static_cast<char>(c);
    return pclose(pipe) == 0 ? said.append("(succeeded)") : said;
}

}  // namespace

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
    EXPECT_EQ(container.Find("note")->GetName(), "resourceEq");
    EXPECT_EQ(container.Find("note")->GetAttribute("width"), "16");
    EXPECT_EQ(container.Find("note")->GetAttribute("size"), "7");
    EXPECT_EQ(container.Resources().GetSubItem("xresource").GetAttribute("id"), "mstyle");
}

TEST(Pack, TellsWhatIsMissingAndKeepsTheOldFile) {
    const std::string folder = testing::TempDir() + "quillorea-pack";
    const std::string output = folder + "/old.mrf";
    EXPECT_TRUE(
        Packed(folder + "/nowhere", output)
            .ends_with("/nowhere/resources.mrdef\" could not be open. Make sure it exists.\n"));
    WriteFile(output, "old");
    for (const auto& [entry, error] :
         {std::pair("<resource id=\"a\"/>", "Could not find required attribute (filename)."),
          {"<resource filename=\"a\"/>", "Could not find required attribute (id)."},
          {"<resource id=\"a\" filename=\"no file\"/>", "no file\" could not be open."}}) {
        WriteFile(folder + "/resources.mrdef",
                  std::string("<solution><resources>") + entry + "</resources></solution>");
        EXPECT_NE(Packed(folder, output).find(error), std::string::npos) << entry;
        MStdFileStream old(MString::FromUtf8(output), MStdFileStream::Mode::Read);
        EXPECT_EQ(ReadAll(old), "old");
    }
}
