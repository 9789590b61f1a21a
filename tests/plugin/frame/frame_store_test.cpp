// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <string>

#include "foundation/xml/store_visitor.h"
#include "plugin/frame/frame_plugin.h"

// What songs and the user's configuration keep of a plug-in.

namespace {

struct StoringPlugin : FramePlugin {
    StoringPlugin(const std::string& state, int channels) {
        channelsPerBus = 8;
        channelModeRequested = state[0] - '0';
        for (int c = 0; c < 8; ++c) surroundRequested[c] = state[2 + c] == '1';
        bypassed = state[11] == '1';
        SetConnectedChannels(channels, channels);
    }
    // Mode, channels of surround, bypass.
    std::string State() const {
        std::string state = std::to_string(channelModeRequested) + " ";
        for (const auto& requested : surroundRequested) state += requested != 0 ? '1' : '0';
        return state + (bypassed != 0 ? " 1" : " 0");
    }
    void StoreSettings(const MStoreVisitor& visitor) override {
        EXPECT_EQ(processingDisabled, visitor.storing ? 0 : 1);
        if (throwing) throw 1;
    }
    void ActualiseAfterLoading() override {
        EXPECT_EQ(channelModeActive, channelModeRequested) << "initialised before";
    }
};

}  // namespace

TEST(StoredPlugin, TakesWhatATreeTellsAndKeepsTheRest) {
    const char* const keys[] = {"ChannelMode", "SurroundChannelsEnable", "Bypass",
                                "EnableSurroundProcessing"};
    const struct {
        const char* texts[4];
        int channels;
        const char* expected;
    } rows[] = {{{}, 8, "4 10000001 0"},
                {{"right", "01010101", "2"}, 8, "2 10000001 1"},
                {{"Quadro"}, 8, "4 10000001 0"},
                {{"Surround", "011"}, 3, "7 01100001 0"},
                {{"Surround", "01x11111111"}, -1, "7 01000001 0"},
                {{"Surround", "0111111111"}, 2, "0 01111111 0"},
                {{nullptr, nullptr, nullptr, "1"}, 8, "7 10000001 0"},
                {{"Surround", nullptr, nullptr, "0"}, 8, "0 10000001 0"}};
    for (const auto& row : rows) {
        StoringPlugin plugin("4 10000001 1", row.channels), copy("3 10000001 1", row.channels);
        MAttribute tree, written;
        for (int key = 0; key < 4; ++key)
            if (row.texts[key] != nullptr) tree.SetAttribute(keys[key], row.texts[key]);
        EXPECT_TRUE(plugin.Store({false, tree}));
        EXPECT_EQ(plugin.State(), row.expected);
        EXPECT_TRUE(plugin.Store({true, written}) && copy.Store({false, written}));
        EXPECT_EQ(copy.State()[0], row.expected[0]);
        EXPECT_EQ(copy.State()[11], row.expected[11]);
        EXPECT_EQ(written.HasAttribute(keys[1]), row.expected[0] == '7');
        plugin.throwing = true;
        EXPECT_FALSE(plugin.Store({false, tree}));
        EXPECT_EQ(plugin.processingDisabled, 0);
    }
}

TEST(DefaultSettings, AreTheUsersForEveryPluginToCome) {
    FramePlugin old, young;
    MAttribute configuration;
    configuration.AddSubItem("MAudioPluginSettings").SetAttribute("TabletMode", "1");
    old.automationCompatibility = false;
    old.SetDefaultSettingsToCurrent(configuration);
    young.LoadDefaultSettings(configuration);
    EXPECT_FALSE(young.automationCompatibility);
    EXPECT_EQ(young.GetEditorMode(), MAudioPlugin::EditorMode::Mouse);
    configuration.Clear();
    young.LoadDefaultSettings(configuration);
    EXPECT_TRUE(young.automationCompatibility);
}
