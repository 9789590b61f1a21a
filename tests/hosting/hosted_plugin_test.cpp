// SPDX-License-Identifier: GPL-3.0-or-later

// What is no plug-in. The host suite has all the rest, with the library that was built.
#include "hosting/hosted_plugin.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

using testing::HasSubstr;
using Open = std::shared_ptr<HostedLibrary> (*)(const std::string&);

using HostedPluginTest = testing::TestWithParam<Open>;

TEST_P(HostedPluginTest, IsNotThereWhereItsLibraryIsNone) {
    const bool isVst3 = GetParam() == &OpenVst3;
    const std::filesystem::path folder =
        std::filesystem::path(testing::TempDir()) / (isVst3 ? "none3.vst3" : "none2");
    std::filesystem::create_directory(folder);
    const std::filesystem::path text = folder / "text.so";
    std::ofstream(text) << "no library";
    const std::tuple<std::string, const char*> cases[] = {
        {folder / "none.so", "none.so': No such file or directory."},
        {folder, isVst3 ? "it has no 'Contents/" : "it is a folder."},
        {text, "is not a plug-in that can be loaded: "},
        {HOSTING_NO_PLUGIN, isVst3 ? "no entry 'ModuleEntry'." : "no entry 'VSTPluginMain'."},
        {HOSTING_REFUSING_PLUGIN, isVst3 ? "offers no plug-in." : "refuses to make an instance."},
    };
    for (const auto& [path, message] : cases) {
        try {
            GetParam()(path)->Create();
            ADD_FAILURE() << path << " is loaded";
        } catch (const HostingError& error) {
            EXPECT_THAT(error.what(), HasSubstr(message));
            EXPECT_THAT(error.what(), testing::EndsWith("."));
        }
    }
    std::filesystem::remove_all(folder);
}

INSTANTIATE_TEST_SUITE_P(BothInterfaces, HostedPluginTest, testing::Values(&OpenVst2, &OpenVst3));
