// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>

// Which notes sound on which channel, and what the pedal and the wheels do.
//
// Ranges   channel 0..15, and kAnyChannel for the sum over all of them; note 0..127
// Threads  the audio thread
class MMIDIState {
public:
    static constexpr int kChannels = 16;
    static constexpr int kAnyChannel = 16;
    static constexpr int kNotes = 128;
    using Notes = std::array<std::int32_t, kNotes>;

    static bool IsNote(int channel, int note) {
        return channel >= 0 && channel < kChannels && note >= 0 && note < kNotes;
    }

    // How often a note was started and not ended yet, notes that only the pedal holds included,
    // and how many of them only the pedal holds.
    int SoundingNotes(int channel, int note) const { return sounding[Row(channel)][Cell(note)]; }
    int PedalNotes(int channel, int note) const { return pedalled[Row(channel)][Cell(note)]; }

    bool IsPedalDown() const { return pedal != 0; }
    double PitchBend(int channel) const { return pitchBend[Row(channel)]; }    // -1..1
    double Aftertouch(int channel) const { return aftertouch[Row(channel)]; }  // 0..1

protected:
    enum class NoteEnd { None, Pedal, Now };

    void StartNote(int channel, int note) { Count(sounding, channel, note, 1); }
    // None where it did not sound; Pedal where it goes on until the pedal is released.
    NoteEnd EndNote(int channel, int note);
    // Takes one sounding note away, one that only the pedal holds first.
    void DropNote(int channel, int note);

    void SetPedal(bool down) { pedal = down ? 1 : 0; }
    void SetPitchBend(int channel, double value) { SetValue(pitchBend, channel, value); }
    void SetAftertouch(int channel, double value) { SetValue(aftertouch, channel, value); }

private:
    static constexpr int kRows = kChannels + 1;

    static std::size_t Row(int channel) { return static_cast<std::size_t>(channel); }
    static std::size_t Cell(int note) { return static_cast<std::size_t>(note); }
    static void Count(std::array<Notes, kRows>& notes, int channel, int note, int by) {
        notes[Row(channel)][Cell(note)] += by;
        notes[kAnyChannel][Cell(note)] += by;
    }
    static void SetValue(std::array<double, kRows>& values, int channel, double value) {
        values[Row(channel)] = value;
        values[kAnyChannel] = value;
    }

    std::array<Notes, kRows> sounding{};
    std::array<Notes, kRows> pedalled{};
    std::array<double, kRows> pitchBend{};
    std::array<double, kRows> aftertouch{};
    std::uint8_t pedal = 0;
};
