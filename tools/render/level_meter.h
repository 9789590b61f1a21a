// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

// Peak and mean level of everything passed to it.
//
// Units    decibels relative to full scale, a constant 1 being 0 dB; silence is minus infinity
// Ranges   samples that are no finite number are counted and left out

class LevelMeter {
public:
    void Add(std::span<const float> samples) {
        for (const float sample : samples) {
            if (!std::isfinite(sample)) {
                ++nonFiniteCount;
                continue;
            }
            peak = std::max(peak, std::abs(sample));
            squareSum += static_cast<double>(sample) * sample;
        }
        count += samples.size();
    }

    double PeakDecibels() const { return 20 * std::log10(static_cast<double>(peak)); }
    double RmsDecibels() const {
        if (count == nonFiniteCount) return -std::numeric_limits<double>::infinity();
        return 10 * std::log10(squareSum / static_cast<double>(count - nonFiniteCount));
    }
    std::uint64_t NonFiniteCount() const { return nonFiniteCount; }

private:
    float peak = 0;
    double squareSum = 0;
    std::uint64_t count = 0;
    std::uint64_t nonFiniteCount = 0;
};
