// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <string>

#include "plugin/frame/frame_plugin.h"

namespace {

// Writes down what reaches its handlers.
struct MIDIPlugin : FramePlugin {
    using Text = std::vector<std::string>;

    void Add(const char* what, int channel, int number, double value) {
        char text[64];
        std::snprintf(text, sizeof text, "%s %d %d %.6f", what, channel, number, value);
        told.emplace_back(text);
    }
    void ProcessNotePerform(MIDITime when, int channel, int note, double velocity,
                            bool on) override {
        last = when;
        Add(on ? "on" : "off", channel, note, velocity);
    }
    void ProcessVolume(MIDITime, int channel, double value) override {
        Add("volume", channel, 0, value);
    }
    void ProcessPanorama(MIDITime, int channel, double value) override {
        Add("pan", channel, 0, value);
    }
    void ProcessProgramChange(MIDITime when, int channel, int program) override {
        FramePlugin::ProcessProgramChange(when, channel, program);
        Add("program", channel, program, 0);
    }
    bool ProcessAftertouch(MIDITime when, int channel, int note, double value) override {
        Add("pressure", channel, note, value);
        return FramePlugin::ProcessAftertouch(when, channel, note, value);
    }
    bool ProcessPitchBend(MIDITime when, int channel, double value) override {
        Add("bend", channel, 0, value);
        return FramePlugin::ProcessPitchBend(when, channel, value);
    }

    // What a message of up to 3 bytes tells.
    Text Tell(std::initializer_list<int> message) {
        std::vector<std::uint8_t> bytes(message.begin(), message.end());  // no byte more
        told.clear();
        ProcessMIDIEvent(0, bytes.data());
        return told;
    }

    Text told;
    MIDITime last;
};

using Text = MIDIPlugin::Text;

}  // namespace

TEST(MIDI, MessagesReachTheirHandlers) {
    struct Case {
        std::initializer_list<int> message;
        Text told;
    };
    const Case cases[] = {
        {{0x93, 60, 127}, {"on 3 60 1.000000"}},
        {{0x83, 60, 64}, {"off 3 60 0.503937"}},
        {{0x83, 60, 64}, {}},  // does not sound any more
        {{0x9f, 0, 1}, {"on 15 0 0.007874"}},
        {{0x9f, 0, 0}, {"off 15 0 0.000000"}},  // velocity 0
        {{0xb1, 7, 127}, {"volume 1 0 1.000000"}},
        {{0xb1, 10, 0}, {"pan 1 0 -1.000000"}},
        {{0xb1, 10, 127}, {"pan 1 0 1.000000"}},
        {{0xb1, 20, 1}, {}},
        {{0xa2, 61, 127}, {"pressure 2 61 1.000000"}},
        {{0xd2, 127}, {"pressure 2 -1 1.000000"}},
        {{0xc4, 99}, {"program 4 99 0.000000"}},
        {{0xe0, 0, 0}, {"bend 0 0 -1.000000"}},
        {{0xe0, 0x7f, 0x7f}, {"bend 0 0 1.000000"}},
        {{0xe0, 0, 0x40}, {"bend 0 0 0.000061"}},  // 8192 of 16383
        {{0xf8}, {}},
        {{0x12, 1, 2}, {}},  // no status
    };
    MIDIPlugin plugin;
    for (const Case& each : cases) {
        Text told = plugin.Tell(each.message);
        EXPECT_EQ(told, each.told) << "status " << *each.message.begin();
    }
    EXPECT_EQ(plugin.Aftertouch(2), 1);
    EXPECT_NEAR(plugin.PitchBend(MMIDIState::kAnyChannel), 0, 1e-4);
}

TEST(MIDI, ThePedalHoldsNotesUntilItsRelease) {
    MIDIPlugin plugin;
    plugin.Tell({0x90, 60, 100});
    plugin.Tell({0x91, 60, 100});
    plugin.Tell({0xb0, 64, 64});  // 64 / 127 is above the half
    EXPECT_TRUE(plugin.IsPedalDown());
    EXPECT_EQ(plugin.Tell({0x80, 60, 0}), Text());
    plugin.Tell({0x90, 60, 100});  // the same key again, and held
    EXPECT_EQ(plugin.SoundingNotes(0, 60), 2);
    EXPECT_EQ(plugin.SoundingNotes(MMIDIState::kAnyChannel, 60), 3);
    EXPECT_EQ(plugin.PedalNotes(0, 60), 1);
    EXPECT_EQ(plugin.Tell({0xb0, 64, 63}), Text{"off 0 60 0.000000"});
    EXPECT_EQ(plugin.SoundingNotes(0, 60), 1);
    EXPECT_EQ(plugin.PedalNotes(0, 60), 0);
    EXPECT_EQ(plugin.Tell({0xb0, 64, 0}), Text());

    for (const int controller : {123, 126}) {
        EXPECT_EQ(plugin.Tell({0xb5, controller, 0}).size(), controller == 123 ? 2u : 1u);
        EXPECT_EQ(plugin.SoundingNotes(MMIDIState::kAnyChannel, 60), 0);
        plugin.Tell({0x90, 60, 100});
    }
}

TEST(MIDI, ListenersHearTheirChannelsFirst) {
    MIDIPlugin plugin, listener;
    plugin.AddListener(listener, 1 << 2);
    plugin.Tell({0x92, 60, 127});
    plugin.Tell({0x93, 61, 127});
    plugin.Tell({0xb2, 7, 127});
    plugin.Tell({0xb3, 7, 0});
    EXPECT_EQ(listener.told, (Text{"on 2 60 1.000000", "volume 2 0 1.000000"}));
    plugin.RemoveListener(listener);
    plugin.Tell({0x92, 62, 127});
    EXPECT_EQ(listener.told.size(), 2u);
}

TEST(MIDI, EventsHaveASongPositionAndGoBackToTheHost) {
    struct Host : MAudioPluginAdapter {
        void SendAutomation(int, double) override {}
        void GenerateMIDIEvent(int newTime, const std::uint8_t* bytes) override {
            time = newTime;
            sent.assign(bytes, bytes + 3);
        }
        bool ChangeEditorSize(EditorSize) override { return false; }
        void UpdateLatency() override {}
        int time = 0;
        std::vector<std::uint8_t> sent;
    } host;
    MIDIPlugin plugin;
    plugin.hostAdapter = &host;
    plugin.SetHostSampleRate(48000);
    plugin.tempo = 120;
    plugin.position = 8;
    const std::uint8_t on[] = {0x90, 60, 1};
    plugin.ProcessMIDIEvent(24000, on);  // half a second at two quarters a second
    EXPECT_EQ(plugin.last.time, 24000);
    EXPECT_DOUBLE_EQ(plugin.last.position, 9);
    for (int velocity = 1; velocity < 128; ++velocity) {
        plugin.SendNote(7, 3, 60, velocity / 127.0, true);
        EXPECT_EQ(host.sent,
                  (std::vector<std::uint8_t>{0x93, 60, static_cast<std::uint8_t>(velocity)}));
    }
    EXPECT_EQ(host.time, 7);
}
