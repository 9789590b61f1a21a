// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>

#include "plugin/contract/parameter_record.h"

class MAudioPluginHostSync;

// The chorus's parameters: one fixed list. A position in it is the parameter's index towards hosts
// and in stored state, so the order never changes.
enum class ChorusParameter : int {
    MainGroup,
    DryWet,
    Rate,   // decimal logarithm of hertz
    Range,  // seconds
    Delay,  // seconds
    Voices,
    Saturation,
    Spread,
    SpreadMode,
    AdvancedGroup,
    DepthVariability,
    RateVariability,
    RangeVariability,
    DelayVariability,
    MinFrequency,  // decimal logarithm of hertz
    MaxFrequency,  // decimal logarithm of hertz
    Tremolo,
    VoiceTremolo,
    TremoloPhase,  // cycles
    SyncGroup,
    SyncLength,
    SyncType,
    SyncPhase,  // cycles
};

enum class SpreadMode : int { Panorama, Phase, Haas2, Haas4, Haas8, Haas16, Haas32 };

class ChorusParameters {
public:
    static constexpr int kCount = 23;
    static constexpr int kMaxVoices = 10;

    // The records from SyncGroup on are hostSync's.
    explicit ChorusParameters(MAudioPluginHostSync& hostSync);

    ParameterRecord& operator[](ChorusParameter parameter) {
        return records[static_cast<std::size_t>(parameter)];
    }
    const ParameterRecord& operator[](ChorusParameter parameter) const {
        return records[static_cast<std::size_t>(parameter)];
    }
    ParameterRecord* Data() { return records.data(); }

    double Effective(ChorusParameter parameter) const {
        return (*this)[parameter].EffectiveInRange();
    }
    int EffectiveIndex(ChorusParameter parameter) const {
        return static_cast<int>(Effective(parameter));
    }

private:
    void DescribeMain();
    void DescribeAdvanced();

    std::array<ParameterRecord, kCount> records;
};
