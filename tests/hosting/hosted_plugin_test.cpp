// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosting/hosted_plugin.h"

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <numeric>

namespace {

using testing::HasSubstr;
using Open = std::shared_ptr<HostedLibrary> (*)(const std::string&);

constexpr int kFrames = 256;

// The same through both interfaces.
constexpr std::uint32_t kDryWet = 1;
constexpr std::uint32_t kVoices = 5;

class HostedPluginTest : public testing::TestWithParam<Open> {
protected:
    static std::unique_ptr<HostedPlugin> Create(Open open = GetParam()) {
        auto plugin = open(HOSTING_TEST_PLUGIN)->Create();
        plugin->Setup(48000, kFrames);
        return plugin;
    }
    static bool IsVst3() { return GetParam() == &OpenVst3; }

    // Both channels of a block after a step to 1 at its start.
    static std::array<std::vector<float>, 2> Passed(HostedPlugin& plugin, int frames,
                                                    std::vector<HostedChange> changes = {}) {
        std::array<std::vector<float>, 2> in, out;
        std::array<float*, 2> inputs{}, outputs{};
        for (std::size_t c = 0; c < 2; ++c) {
            in[c].assign(static_cast<std::size_t>(frames), 1);
            out[c].assign(static_cast<std::size_t>(frames), 7);
            inputs[c] = in[c].data();
            outputs[c] = out[c].data();
        }
        const HostedTransport transport{.isPlaying = true, .tempo = 120, .position = 0};
        HostedBlock block{.sampleCount = frames,
                          .inputs = {{inputs.data(), 2}},
                          .outputs = {{outputs.data(), 2}},
                          .transport = &transport,
                          .changes = std::move(changes),
                          .midi = {{0, {0x90, 60, 100}}, {3, {0xb0, 1, 64}}, {5, {0xc0, 2, 0}}}};
        plugin.Process(block);
        return out;
    }
};

}  // namespace

TEST_P(HostedPluginTest, TellsWhatItIs) {
    const auto plugin = Create();
    const HostedInfo& info = plugin->Info();
    EXPECT_EQ(info.interface, IsVst3() ? "VST 3" : "VST 2.4");
    EXPECT_EQ(info.name, "Test plug-in");
    EXPECT_EQ(info.vendor, "Quillorea");
    EXPECT_EQ(info.version, IsVst3() ? "1.2.3" : "1203");
    EXPECT_EQ(info.identity, IsVst3() ? "11111111222222223333333344444444" : "51746573");
    const std::vector<HostedBus> buses = plugin->Buses();
    ASSERT_EQ(buses.size(), IsVst3() ? 3U : 2U);
    for (const bool isInput : {true, false}) {
        const HostedBus& bus = buses[isInput ? 0 : 1];
        EXPECT_EQ(std::tuple(bus.isInput, bus.isAudio, bus.isMain, bus.channels),
                  std::tuple(isInput, true, true, 2));
    }
}

TEST_P(HostedPluginTest, PassesSoundAtTheLatencyThatItTells) {
    const auto plugin = Create();
    EXPECT_TRUE(plugin->Arrange(1, 1));
    plugin->SetPosition(kDryWet, 0);
    Passed(*plugin, 0);
    plugin->Activate(true);
    const auto out = Passed(*plugin, kFrames);
    const auto latency = static_cast<std::size_t>(plugin->Latency());
    ASSERT_LT(latency, out[0].size());
    EXPECT_GT(latency, 0U);
    for (std::size_t i = 0; i < out[0].size(); ++i)
        EXPECT_NEAR(out[0][i], i < latency ? 0 : 1, 1e-6) << i;
    EXPECT_GT(plugin->TailLength(), 0);
}

TEST_P(HostedPluginTest, TakesWhatNoHostShouldSend) {
    const auto plugin = Create();
    plugin->Activate(true);
    HostedBlock empty{.sampleCount = kFrames, .inputs = {{}}, .outputs = {{}}};
    plugin->Process(empty);
    HostedBlock none{.sampleCount = 0};
    plugin->Process(none);
    plugin->Activate(false);
    plugin->Activate(true);
    plugin->Activate(true);
    const auto out = Passed(*plugin, 4 * kFrames, {{99999, 0, 0.5}, {1, 5, 2.0}});
    for (const float sample : out[0]) ASSERT_TRUE(std::isfinite(sample));
}

TEST_P(HostedPluginTest, ReadsTheTextsThatItShows) {
    const auto plugin = Create();
    const double before = plugin->Position(kVoices);
    EXPECT_EQ(plugin->TextAt(kVoices, 4.0 / 9), "5");
    ASSERT_TRUE(plugin->PositionOf(kVoices, "7").has_value());
    EXPECT_NEAR(*plugin->PositionOf(kVoices, "7"), 6.0 / 9, 1e-6);
    EXPECT_EQ(plugin->PositionOf(kVoices, "many"), std::nullopt);
    EXPECT_EQ(plugin->Position(kVoices), before);
}

TEST_P(HostedPluginTest, KeepsItsStateAcrossBothInterfaces) {
    const auto source = Create();
    source->SetPosition(kVoices, 1);
    source->Activate(true);
    Passed(*source, kFrames);
    const std::string state = source->State();
    EXPECT_THAT(state, HasSubstr("<settings"));
    for (const Open open : {&OpenVst2, &OpenVst3}) {
        const auto target = Create(open);
        target->SetState(state);
        EXPECT_EQ(target->Position(kVoices), 1);
        EXPECT_EQ(target->State(), state);
    }
}

TEST_P(HostedPluginTest, IsNotThereWhereItsLibraryIsNone) {
    const std::filesystem::path folder =
        std::filesystem::path(testing::TempDir()) / (IsVst3() ? "none3.vst3" : "none2");
    std::filesystem::create_directory(folder);
    const std::filesystem::path text = folder / "text.so";
    std::ofstream(text) << "no library";
    const std::tuple<std::string, const char*> cases[] = {
        {folder / "none.so", "none.so': No such file or directory."},
        {folder, IsVst3() ? "it has no 'Contents/" : "it is a folder."},
        {text, "is not a plug-in that can be loaded: "},
        {HOSTING_NO_PLUGIN, IsVst3() ? "no entry 'ModuleEntry'." : "no entry 'VSTPluginMain'."},
        {HOSTING_REFUSING_PLUGIN, IsVst3() ? "offers no plug-in." : "refuses to make an instance."},
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

INSTANTIATE_TEST_SUITE_P(BothInterfaces, HostedPluginTest, testing::Values(&OpenVst2, &OpenVst3),
                         [](const auto& info) {
                             return info.param == &OpenVst3 ? "Vst3" : "Vst2";
                         });
