// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cmath>

#include "plugin/frame/audio_plugin.h"

// What a host says of its blocks before it sends any.
//
// Threads  any but the audio thread, under no lock
// Errors   none

// The largest block to come, in samples. Memory is taken ahead for no more than kLargest; larger
// blocks take it when they come.
inline void TakeHostBlockSize(int samples, MAudioPlugin& plugin) {
    constexpr int kLargest = 1 << 16;
    plugin.AnnounceBlockSize(std::clamp(samples, 0, kLargest));
}

// hertz. Rates of 100 or less are ignored, since some hosts send them before they know better, and
// what can't be one, too.
inline void TakeHostRate(double rate, MAudioPlugin& plugin) {
    constexpr int kLowest = 101;
    constexpr int kHighest = 1 << 23;  // upsampled still an int
    if (!(rate > 0 && rate <= kHighest)) return;
    const int nearest = static_cast<int>(std::lround(rate));
    if (nearest < kLowest) return;
    plugin.SetHostSampleRate(nearest);
    plugin.InitProcessing();
}
