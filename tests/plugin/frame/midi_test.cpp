// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "plugin/frame/frame_plugin.h"

namespace {

// Writes down what reaches its handlers.
struct MIDIPlugin : FramePlugin {
    bool Add(const char* what, int channel, int number, double value) {
        char text[64];
        std::snprintf(text, sizeof text, "%s %d %d %.4f ", what, channel, number, value);
        told += text;
        return true;
    }
    void ProcessNotePerform(MIDITime when, int c, int note, double velocity, bool on) override {
        last = when;
        Add(on ? "on" : "off", c, note, velocity);
    }
    void ProcessVolume(MIDITime, int c, double v) override { Add("volume", c, 0, v); }
    void ProcessPanorama(MIDITime, int c, double v) override { Add("pan", c, 0, v); }
    void ProcessProgramChange(MIDITime, int c, int p) override { Add("program", c, p, 0); }
    bool ProcessAftertouch(MIDITime, int c, int note, double v) override {
        return Add("pressure", c, note, v);
    }
    bool ProcessPitchBend(MIDITime, int c, double v) override { return Add("bend", c, 0, v); }

    // What a message of up to 3 bytes tells.
    std::string Tell(std::initializer_list<int> message) {
        const std::vector<std::uint8_t> bytes(message.begin(), message.end());  // no byte more
        told.clear();
        ProcessMIDIEvent(0, bytes.data());
        return told;
    }

    std::string told;
    MIDITime last;
};

}  // namespace

TEST(MIDI, MessagesReachTheirHandlers) {
    struct Case {
        std::initializer_list<int> message;
        const char* told;
    };
    MIDIPlugin plugin;
    for (const Case& each : {
             Case{{0x93, 60, 127}, "on 3 60 1.0000 "}, Case{{0x83, 60, 64}, "off 3 60 0.5039 "},
             Case{{0x83, 60, 64}, ""},  // does not sound any more
             Case{{0x9f, 0, 1}, "on 15 0 0.0079 "},
             Case{{0x9f, 0, 0}, "off 15 0 0.0000 "},  // velocity 0
             Case{{0xb1, 7, 127}, "volume 1 0 1.0000 "}, Case{{0xb1, 10, 0}, "pan 1 0 -1.0000 "},
             Case{{0xb1, 10, 127}, "pan 1 0 1.0000 "}, Case{{0xb1, 20, 1}, ""},
             Case{{0xa2, 61, 127}, "pressure 2 61 1.0000 "},
             Case{{0xd2, 127}, "pressure 2 -1 1.0000 "}, Case{{0xc4, 99}, "program 4 99 0.0000 "},
             Case{{0xe0, 0, 0}, "bend 0 0 -1.0000 "}, Case{{0xe0, 0x7f, 0x7f}, "bend 0 0 1.0000 "},
             Case{{0xe0, 0, 0x40}, "bend 0 0 0.0001 "},  // 8192 of 16383
             Case{{0xf8}, ""}, Case{{0x12, 1, 2}, ""},   // no status
         })
        EXPECT_EQ(plugin.Tell(each.message), each.told) << "status " << *each.message.begin();
}

TEST(MIDI, ThePedalHoldsNotesUntilItsRelease) {
    MIDIPlugin plugin;
    plugin.Tell({0x90, 60, 100});
    plugin.Tell({0x91, 60, 100});
    plugin.Tell({0xb0, 64, 64});  // 64 / 127 is above the half
    EXPECT_EQ(plugin.Tell({0x80, 60, 0}), "");
    plugin.Tell({0x90, 60, 100});  // the same key again, and held
    EXPECT_EQ(plugin.SoundingNotes(0, 60), 2);
    EXPECT_EQ(plugin.SoundingNotes(MMIDIState::kAnyChannel, 60), 3);
    EXPECT_EQ(plugin.PedalNotes(0, 60), 1);
    EXPECT_EQ(plugin.Tell({0xb0, 64, 63}), "off 0 60 0.0000 ");
    EXPECT_EQ(plugin.PedalNotes(0, 60), 0);
    EXPECT_EQ(plugin.Tell({0xb0, 64, 0}), "");
    EXPECT_EQ(plugin.Tell({0xb5, 123, 0}), "off 0 60 0.0000 off 1 60 0.0000 ");
    EXPECT_EQ(plugin.SoundingNotes(MMIDIState::kAnyChannel, 60), 0);
}

TEST(MIDI, ListenersHearTheirChannels) {
    MIDIPlugin plugin, listener;
    plugin.AddListener(listener, 1 << 2);
    for (const int status : {0x92, 0x93, 0xb2, 0xb3}) plugin.Tell({status, 7, 127});
    EXPECT_EQ(listener.told, "on 2 7 1.0000 volume 2 0 1.0000 ");
}

TEST(MIDI, EventsHaveASongPositionAndGoBackToTheHost) {
    HostDouble host;
    MIDIPlugin plugin;
    plugin.hostAdapter = &host;
    plugin.SetHostSampleRate(48000);
    plugin.position = 8;
    const std::uint8_t on[] = {0x90, 60, 1};
    plugin.ProcessMIDIEvent(24000, on);  // half a second at two quarters a second
    EXPECT_DOUBLE_EQ(plugin.last.position, 9);
    for (std::uint8_t velocity = 1; velocity < 128; ++velocity) {
        plugin.SendNote(7, 3, 60, velocity / 127.0, true);
        EXPECT_EQ(host.sent, (std::vector<std::uint8_t>{0x93, 60, velocity}));
    }
}
