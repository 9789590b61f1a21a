// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosts/adapter/host_transport.h"

#include <algorithm>
#include <cmath>

#include "plugin/frame/audio_plugin.h"

namespace {

constexpr double kLongestStep = 2;        // quarter notes between two blocks of one course
constexpr double kShortestCycle = 1e-20;  // quarter notes
constexpr double kNoCycle = -1;

bool IsKnown(const std::optional<double>& value) { return value && std::isfinite(*value); }

// denominator at least 1: the unit is a quarter note, or what the signature counts in if shorter.
double SnapToUnit(double bar, int denominator) {
    const double unitsPerQuarter = std::max(1, denominator / 4);
    return std::floor(unitsPerQuarter * bar + 0.5) / unitsPerQuarter;
}

void TakeCycle(const std::optional<HostTime::Cycle>& cycle, MAudioPlugin& plugin) {
    const bool isOne = cycle && cycle->end - kShortestCycle > cycle->start;
    plugin.cycleStart = isOne ? cycle->start : kNoCycle;
    plugin.cycleEnd = isOne ? cycle->end : kNoCycle;
}

}  // namespace

void HostTransport::SetValid(MAudioPlugin& plugin) { plugin.transportValid.fill(1); }

void HostTransport::Take(const HostTime& time, MAudioPlugin& plugin) {
    SetValid(plugin);
    if (IsKnown(time.position)) plugin.position = *time.position;
    if (IsKnown(time.tempo) && *time.tempo > 0) plugin.tempo = *time.tempo;
    if (time.signature && time.signature->numerator > 0 && time.signature->denominator > 0) {
        plugin.timeSigNumerator = time.signature->numerator;
        plugin.timeSigDenominator = time.signature->denominator;
    }
    if (IsKnown(time.barStart))
        plugin.barStart = SnapToUnit(*time.barStart, plugin.timeSigDenominator);
    TakeCycle(time.cycle, plugin);
    TakePlaying(time.playing, plugin);
}

void HostTransport::TakePlaying(bool playing, MAudioPlugin& plugin) {
    const bool before = plugin.playing;
    plugin.positionJumped = false;
    if (!playing) {
        plugin.playing = false;
    } else if (std::abs(plugin.position - lastPosition) <= kLongestStep) {
        plugin.playing = true;
    } else {
        plugin.positionJumped = true;
    }
    lastPosition = plugin.position;
    plugin.playingChanged = plugin.playing != before;
}
