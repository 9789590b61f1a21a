// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/frame/midi_state.h"

MMIDIState::NoteEnd MMIDIState::EndNote(int channel, int note) {
    if (SoundingNotes(channel, note) <= PedalNotes(channel, note)) return NoteEnd::None;
    if (IsPedalDown()) {
        Count(pedalled, channel, note, 1);
        return NoteEnd::Pedal;
    }
    Count(sounding, channel, note, -1);
    return NoteEnd::Now;
}

void MMIDIState::DropNote(int channel, int note) {
    if (PedalNotes(channel, note) > 0) Count(pedalled, channel, note, -1);
    Count(sounding, channel, note, -1);
}
