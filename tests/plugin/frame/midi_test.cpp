// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>

#include "plugin/frame/frame_plugin.h"
#include "support/rows.h"

namespace {

// Writes down what reaches its handlers.
struct MIDIPlugin : FramePlugin {
    bool Add(const char* what, int channel, int number, double value) {
        char text[64];
        std::snprintf(text, sizeof text, "%s %d %d %.4f;", what, channel, number, value);
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

    // What a message of hexadecimal bytes tells.
    std::string Tell(const std::string& message) {
        std::istringstream digits(message);
        std::vector<std::uint8_t> bytes;
        for (int byte; digits >> std::hex >> byte;)
            bytes.push_back(static_cast<std::uint8_t>(byte));
        bytes.shrink_to_fit();  // no byte more may be read
        told.clear();
        ProcessMIDIEvent(0, bytes.data());
        return told;
    }

    std::string told;
    MIDITime last;
};

}  // namespace

TEST(MIDI, MessagesReachTheirHandlers) {
    MIDIPlugin plugin;
    ForEachRow(QUILLOREA_MIDI_CASES, [&](const Row& row) {
        const std::string told = plugin.Tell(row.left);
        const int sounding = plugin.SoundingNotes(MMIDIState::kAnyChannel, 60);
        EXPECT_EQ(row.sign == "==" ? std::to_string(sounding) : told, row.right);
    });
}

TEST(MIDI, ListenersHearTheirChannels) {
    MIDIPlugin plugin, listener;
    plugin.AddListener(listener, 1 << 2);
    for (const char* const message : {"92 7 7f", "93 7 7f", "b2 7 7f", "b3 7 7f"})
        plugin.Tell(message);
    EXPECT_EQ(listener.told, "on 2 7 1.0000;volume 2 0 1.0000;");
}

TEST(MIDI, EventsHaveASongPositionAndGoBackToTheHost) {
    HostDouble host;
    MIDIPlugin plugin;
    plugin.hostAdapter = &host;
    plugin.SetHostSampleRate(48000);
    plugin.position = 8;
    for (std::uint8_t velocity = 1; velocity < 128; ++velocity) {
        plugin.SendNote(7, 3, 60, velocity / 127.0, true);
        EXPECT_EQ(host.sent, (std::vector<std::uint8_t>{0x93, 60, velocity}));
        plugin.ProcessMIDIEvent(24000, host.sent.data());
        EXPECT_DOUBLE_EQ(plugin.last.position, 9);  // half a second, at two quarters a second
    }
}
