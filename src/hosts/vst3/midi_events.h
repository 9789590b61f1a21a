// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "hosts/adapter/midi_queue.h"
#include "pluginterfaces/vst/ivstevents.h"

// Raw MIDI messages as the events of VST 3, and back.
//
// Ranges   7-bit values; velocity and pressure 0..1
// Threads  the audio thread
// Memory   none

using MIDIBytes = std::array<std::uint8_t, 3>;

// The message that an event stands for; the start of one that is longer. Nothing for notes, which
// need no bytes, and for what MIDI does not have.
std::optional<MIDIBytes> BytesOf(const Steinberg::Vst::Event& event);
// Notes and key pressure have events of their own, all else of a channel is a controller. Nothing
// for messages of the system.
std::optional<Steinberg::Vst::Event> EventOf(const MIDIRecord& record);
