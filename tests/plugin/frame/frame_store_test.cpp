// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <string>

#include "foundation/xml/store_visitor.h"
#include "plugin/frame/frame_plugin.h"

// What songs and the user's configuration keep of a plug-in.

namespace {

constexpr const char* kAttributes[] = {"ChannelMode", "SurroundChannelsEnable", "Effect", "Bypass"};

struct StoringPlugin : FramePlugin {
    // "mode surround bypass", all of them as numbers
    explicit StoringPlugin(const char* state = "4 10000001 1", int channels = 8) {
        channelsPerBus = 8;
        channelModeRequested = state[0] - '0';
        for (int c = 0; c < 8; ++c) surroundRequested[c] = state[2 + c] == '1';
        bypassed = state[11] == '1';
        SetConnectedChannels(channels, channels);
    }
    std::string State() const {
        std::string state = std::to_string(channelModeRequested) + " ";
        for (const auto& requested : surroundRequested) state += requested != 0 ? '1' : '0';
        return state + (bypassed != 0 ? " 1" : " 0");
    }
    void StoreSettings(const MStoreVisitor& visitor) override {
        EXPECT_EQ(processingDisabled, visitor.storing ? 0 : 1);
        if (throwing) throw 1;
        visitor.Number("Effect", effect, 5);
    }
    void ActualiseAfterLoading() override { modeAfterLoading = channelModeActive; }

    int effect = 0;
    int modeAfterLoading = -1;
};

}  // namespace

TEST(StoredPlugin, ComesBackWithItsModeAndItsBypass) {
    for (const auto& [state, stored] : {std::pair("0 11111111 0", "Left + Right|-|7|-"),
                                        {"6 11111111 1", "Left + Right (neg)|-|7|1"},
                                        {"7 01101111 0", "Surround|01101111|7|-"}}) {
        StoringPlugin from(state), to(state[0] == '7' ? "4 10000001 1" : "4 11111111 1");
        from.effect = 7;
        MAttribute tree;
        EXPECT_TRUE(from.Store({true, tree}));
        std::string texts;
        for (const char* key : kAttributes) texts += tree.GetAttribute(key, "-").ToUtf8() + "|";
        EXPECT_EQ(texts, std::string(stored) + "|");

        EXPECT_TRUE(to.Store({false, tree}));
        EXPECT_EQ(to.State(), state);
        EXPECT_EQ(to.effect, 7);
        EXPECT_EQ(to.modeAfterLoading, state[0] - '0');
        EXPECT_EQ(to.processingDisabled, 0);
    }
}

TEST(StoredPlugin, TakesWhatATreeTellsAndKeepsTheRest) {
    const struct {
        const char* texts[5];  // kAttributes, and the switch of old states
        int channels;
        const char* expected;
    } rows[] = {{{}, 8, "4 10000001 0"},
                {{"right", "01010101", nullptr, "2"}, 8, "2 10000001 1"},
                {{"Quadro", nullptr, nullptr, "0"}, 8, "4 10000001 0"},
                {{"Surround", "011"}, 3, "7 01100001 0"},
                {{"Surround", "01x11111111"}, -1, "7 01000001 0"},
                {{"Surround", "0111111111"}, 2, "0 01111111 0"},
                {{nullptr, nullptr, nullptr, nullptr, "1"}, 8, "7 10000001 0"},
                {{"Surround", nullptr, nullptr, nullptr, "0"}, 8, "0 10000001 0"}};
    for (const auto& row : rows) {
        StoringPlugin plugin("4 10000001 1", row.channels);
        MAttribute tree;
        for (int key = 0; key < 5; ++key)
            if (row.texts[key] != nullptr)
                tree.SetAttribute(key < 4 ? kAttributes[key] : "EnableSurroundProcessing",
                                  row.texts[key]);
        EXPECT_TRUE(plugin.Store({false, tree}));
        EXPECT_EQ(plugin.State(), row.expected);
        plugin.throwing = true;
        EXPECT_FALSE(plugin.Store({false, tree}));
        EXPECT_EQ(plugin.processingDisabled, 0);
    }
}

TEST(DefaultSettings, AreTheUsersForEveryPluginToCome) {
    FramePlugin old, young;
    MAttribute configuration;
    configuration.AddSubItem("MAudioPluginSettings").SetAttribute("TabletMode", "1");
    old.LoadDefaultSettings(configuration);
    EXPECT_EQ(old.GetEditorMode(), MAudioPlugin::EditorMode::Tablet);
    EXPECT_TRUE(old.automationCompatibility);
    old.automationCompatibility = false;
    old.SetDefaultSettingsToCurrent(configuration);
    young.LoadDefaultSettings(configuration);
    EXPECT_FALSE(young.automationCompatibility);
    configuration.Clear();
    young.LoadDefaultSettings(configuration);
    EXPECT_TRUE(young.automationCompatibility);
    EXPECT_EQ(young.GetEditorMode(), MAudioPlugin::EditorMode::Mouse);
    young.SetDefaultSettingsToCurrent(configuration);
    EXPECT_EQ(configuration.SubItems().Count(), 1);
}
