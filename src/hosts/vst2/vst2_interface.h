// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

// The published VST 2.4 interface as plain structures and numbers: those of fst, and what it lacks.
//
// Its clean-room header leaves many opcodes without their number: the names effSetBypass,
// audioMasterIOChanged and the like have a number of no meaning there. The ones below are right.
// Some of its structures are too short or too long at their ends, so nothing is ever copied by
// sizeof into a host's memory or out of it.

#define FST_DONT_DEPRECATE_UNKNOWN 1
#define FST2VST 1
#include <pluginterfaces/fst/fst.h>

// Calls of the plug-in.
inline constexpr int kEffEditTop = 20;
inline constexpr int kEffConnectInput = 31;
inline constexpr int kEffConnectOutput = 32;
inline constexpr int kEffSetBlockSizeAndSampleRate = 43;
inline constexpr int kEffSetBypass = 44;
inline constexpr int kEffGetTailSize = 52;
inline constexpr int kEffEditKeyDown = 59;
inline constexpr int kEffEditKeyUp = 60;
inline constexpr int kEffBeginLoadBank = 75;
inline constexpr int kEffBeginLoadProgram = 76;
inline constexpr int kEffGetNumMidiInputChannels = 78;
inline constexpr int kEffGetNumMidiOutputChannels = 79;
// Calls of the host.
inline constexpr int kHostIOChanged = 13;
inline constexpr int kHostUpdateDisplay = 42;

// Of VstTimeInfo: the host's automation is being read, written.
inline constexpr int kTimeAutomationWriting = 1 << 6;
inline constexpr int kTimeAutomationReading = 1 << 7;

// Of VstPinProperties. The second one belongs to the first pin of a pair.
inline constexpr int kPinIsActive = 1 << 0;
inline constexpr int kPinIsStereo = 1 << 1;
inline constexpr int kPinUsesSpeaker = 1 << 2;

// Bytes of a text, terminator included.
inline constexpr int kParameterTextSize = 8;
inline constexpr int kProgramTextSize = 24;
inline constexpr int kEffectTextSize = 32;
inline constexpr int kVendorTextSize = 64;
inline constexpr int kPinTextSize = 64;
inline constexpr int kShortPinTextSize = 8;

// Answers of a tail's length beside a number of samples.
inline constexpr int kTailUnknown = 0;
inline constexpr int kTailNone = 1;

// A key as an editor gets it.
struct VstKeyCode {
    std::int32_t character = 0;
    std::uint8_t virtualKey = 0;
    std::uint8_t modifiers = 0;
};

// At the start of a preset or bank that a host is about to load.
struct VstPatchInfo {
    std::int32_t version;
    std::int32_t uniqueID;
    std::int32_t pluginVersion;
    std::int32_t elementCount;  // programs of a bank, parameters of a program
};

// The effect structure with the room that hosts expect at its end.
struct VstEffectBlock {
    AEffect effect;
    char future[sizeof(void*) == 8 ? 56 : 60];
};

static_assert(offsetof(AEffect, dispatcher) == 8 && offsetof(AEffect, numPrograms) == 40);
static_assert(offsetof(AEffect, flags) == 56 && offsetof(AEffect, initialDelay) == 80);
static_assert(offsetof(AEffect, object) == 96 && offsetof(AEffect, uniqueID) == 112);
static_assert(offsetof(AEffect, processReplacing) == 120);
static_assert(offsetof(AEffect, processDoubleReplacing) == 128);
static_assert(sizeof(VstEffectBlock) == 192);
static_assert(offsetof(VstTimeInfo, timeSigNumerator) == 64 && offsetof(VstTimeInfo, flags) == 84);
static_assert(offsetof(VstEvent, deltaFrames) == 8);
static_assert(offsetof(VstMidiEvent, midiData) == 24 && sizeof(VstMidiEvent) == 32);
static_assert(offsetof(VstEvents, events) == 16);
static_assert(offsetof(VstPinProperties, flags) == 64 &&
              offsetof(VstPinProperties, shortLabel) == 72);
static_assert(offsetof(VstSpeakerArrangement, numChannels) == 4);

// Hosts send types that the enumeration does not have.
inline int TypeOf(const VstEvent& event) {
    int type;
    std::memcpy(&type, &event, sizeof type);
    return type;
}
