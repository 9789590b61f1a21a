// SPDX-License-Identifier: GPL-3.0-or-later

// What is no plug-in. The host suite has all the rest, with the library that was built.
#include "hosting/hosted_plugin.h"

#include <gmock/gmock.h>

#include "foundation/streams/stream_support.h"

using testing::HasSubstr;
using Open = std::shared_ptr<HostedLibrary> (*)(const std::string&);

using HostedPluginTest = testing::TestWithParam<Open>;

TEST_P(HostedPluginTest, IsNotThereWhereItsLibraryIsNone) {
    const bool isVst3 = GetParam() == &OpenVst3;
    const TestFolder own;
    own.SetContent("text.so", "no library");
    const std::filesystem::path folder = own.path / "none.vst3";
    std::filesystem::create_directory(folder);
    const std::tuple<std::string, const char*> cases[] = {
        {folder / "none.so", "none.so': No such file or directory."},
        {isVst3 ? folder : own.path, isVst3 ? "it has no 'Contents/" : "it is a folder."},
        {own.Path("text.so"), "is not a plug-in that can be loaded: "},
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
}

INSTANTIATE_TEST_SUITE_P(BothInterfaces, HostedPluginTest, testing::Values(&OpenVst2, &OpenVst3));
