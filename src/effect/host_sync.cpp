// SPDX-License-Identifier: GPL-3.0-or-later
#include "effect/host_sync.h"

#include <cmath>

namespace {

enum Record { kSwitch, kLength, kType, kPhase };
enum NoteType { kStraight, kTriplets, kDotted };

constexpr int kDefaultLength = 9;     // "1 / 4"
constexpr int kWholeNoteIndex = 7;    // "1"
constexpr double kTripletRate = 1.5;  // three in the time of two
constexpr double kDottedRate = 1.3333333333333333;
constexpr double kDefaultPhase = 0.25;

// A whole note lasts 240 / tempo seconds: four quarters of 60 / tempo each.
constexpr double kSecondsTempo = 240;

// No song is longer and no tempo faster: what lies beyond is a host's garbage.
constexpr double kLargestKnown = 1e9;

}  // namespace

void MAudioPluginHostSync::Describe(ParameterRecord* newRecords) {
    records = newRecords;
    records[kSwitch].SetGroup("Synchronization", "sync", &enabled);
    records[kLength].SetEnumeration("Length", "synclength__",
                                    {"128", "64", "32", "16", "8", "4", "2", "1", "1 / 2", "1 / 4",
                                     "1 / 8", "1 / 16", "1 / 32", "1 / 64", "1 / 128"},
                                    kDefaultLength);
    records[kType].SetEnumeration("Type", "synctype", {"Straight", "Triplets", "Dotted"},
                                  kStraight);
    records[kPhase].SetFloat("Phase", "syncphase", 0, 1, kDefaultPhase);
    Refresh();
}

void MAudioPluginHostSync::Refresh() {
    const int length = static_cast<int>(records[kLength].EffectiveInRange());
    noteRate = std::ldexp(1.0, length - kWholeNoteIndex);
    const int type = static_cast<int>(records[kType].EffectiveInRange());
    if (type == kTriplets) noteRate *= kTripletRate;
    if (type == kDotted) noteRate *= kDottedRate;
}

bool MAudioPluginHostSync::IsKnown(double number) { return number >= 0 && number <= kLargestKnown; }

double MAudioPluginHostSync::RateAt(double tempo, int sampleRate) const {
    return tempo / (sampleRate * kSecondsTempo) * noteRate;
}

double MAudioPluginHostSync::PhaseAt(double positionQuarters) const {
    return std::fmod(positionQuarters * noteRate * 0.25 + records[kPhase].EffectiveInRange(), 1.0);
}
