// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>

#include "plugin/contract/parameter_record.h"

// Lock of a low-frequency oscillator to the host's tempo and position.
//
// Units    noteRate in cycles a whole note; rates in cycles a sample; phases in cycles, 0..1
// Threads  Describe at construction, Refresh under the owner's lock, the rest on the audio thread
// Errors   none
class MAudioPluginHostSync {
public:
    // Four records in a row: the switch, length, type and phase.
    static constexpr int kRecordCount = 4;
    // Lengths of 128 whole notes to 1 / 128, or of half of that.
    enum class Lengths { Long, Short };
    void Describe(ParameterRecord* newRecords, Lengths lengths = Lengths::Long);

    // Takes length and type over into noteRate; whether it is another one than before.
    bool Refresh();

    bool IsEnabled() const { return enabled.load(std::memory_order_relaxed) != 0; }
    // A negative tempo or position is one that the host does not tell; so is one out of this world.
    static bool IsKnown(double number);
    double RateAt(double tempo, int sampleRate) const;
    double PhaseAt(double positionQuarters) const;

private:
    ParameterRecord* records = nullptr;
    std::atomic<std::uint8_t> enabled = 0;
    int wholeNoteIndex = 0;  // of the length "1"
    double noteRate = 1;
};
