// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/finite.h"

#include <algorithm>
#include <bit>
#include <cstdint>

namespace {

constexpr std::uint32_t kMagnitude = 0x7fffffff;
constexpr std::uint32_t kInfinity = 0x7f800000;

std::uint32_t Magnitude(float sample) { return std::bit_cast<std::uint32_t>(sample) & kMagnitude; }

}  // namespace

bool AreFinite(const float* samples, int count) {
    if (samples == nullptr) return true;
    std::int32_t largest = 0;
    for (int i = 0; i < count; ++i)
        largest = std::max(largest, static_cast<std::int32_t>(Magnitude(samples[i])));
    return largest < static_cast<std::int32_t>(kInfinity);
}

int ReplaceNonFinite(float* samples, int count) {
    if (AreFinite(samples, count)) return 0;
    int replaced = 0;
    for (int i = 0; i < count; ++i) {
        if (Magnitude(samples[i]) < kInfinity) continue;
        samples[i] = 0;
        ++replaced;
    }
    return replaced;
}
