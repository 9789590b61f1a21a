// SPDX-License-Identifier: GPL-3.0-or-later
#include "effect/host_sync.h"

#include <cmath>
#include <vector>

#include "parameters/values/scale_texts.h"

namespace {

enum Record { kSwitch, kLength, kType, kPhase };
enum NoteType { kStraight, kTriplets, kDotted };

constexpr const char* kLengths[] = {"128",    "64",     "32",      "16",     "8",     "4",
                                    "2",      "1",      "1 / 2",   "1 / 4",  "1 / 8", "1 / 16",
                                    "1 / 32", "1 / 64", "1 / 128", "1 / 256"};
constexpr const char* const* kWholeNote = kLengths + 7;
constexpr int kLengthCount = 15;
constexpr int kDefaultLength = 9;     // "1 / 4" of the long ones
constexpr double kTripletRate = 1.5;  // three in the time of two
constexpr double kDottedRate = 1.3333333333333333;
constexpr double kDefaultPhase = 0.25;

constexpr const char* kHelp[] = {
    "<name>Synchronization panel</name> contains parameters for to-host synchronization.",
    "<name>Length</name> defines note length, therefore speed.",
    "<name>Type</name> defines note type, such as straight notes or triplets.",
    "<name>Phase</name> defines phase offset of the to-host synchronization."};

// A whole note lasts 240 / tempo seconds: four quarters of 60 / tempo each.
constexpr double kSecondsTempo = 240;

// No song is longer and no tempo faster: what lies beyond is a host's garbage.
constexpr double kLargestKnown = 1e9;

}  // namespace

void MAudioPluginHostSync::Describe(ParameterRecord* newRecords, Lengths lengths) {
    records = newRecords;
    const auto first = kLengths + (lengths == Lengths::Short ? 1 : 0);
    wholeNoteIndex = static_cast<int>(kWholeNote - first);
    records[kSwitch].SetGroup("Synchronization", "sync", &enabled);
    records[kLength].SetEnumeration("Length", "synclength__",
                                    std::vector<MString>(first, first + kLengthCount),
                                    kDefaultLength);
    records[kType].SetEnumeration("Type", "synctype", {"Straight", "Triplets", "Dotted"},
                                  kStraight);
    records[kPhase].SetFloat("Phase", "syncphase", 0, 1, kDefaultPhase);
    records[kPhase].text = {DegreesText, ReadDegrees};
    for (int r = 0; r < kRecordCount; ++r) records[r].help = kHelp[r];
    Refresh();
}

bool MAudioPluginHostSync::Refresh() {
    const double before = noteRate;
    const int length = static_cast<int>(records[kLength].EffectiveInRange());
    noteRate = std::ldexp(1.0, length - wholeNoteIndex);
    const int type = static_cast<int>(records[kType].EffectiveInRange());
    if (type == kTriplets) noteRate *= kTripletRate;
    if (type == kDotted) noteRate *= kDottedRate;
    return noteRate != before;
}

bool MAudioPluginHostSync::IsKnown(double number) { return number >= 0 && number <= kLargestKnown; }

double MAudioPluginHostSync::RateAt(double tempo, int sampleRate) const {
    return tempo / (sampleRate * kSecondsTempo) * noteRate;
}

double MAudioPluginHostSync::PhaseAt(double positionQuarters) const {
    return std::fmod(positionQuarters * noteRate * 0.25 + records[kPhase].EffectiveInRange(), 1.0);
}
