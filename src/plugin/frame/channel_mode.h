// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

// What of a signal a plug-in processes. The numbers are stored.
enum ChannelMode : std::int32_t {
    kModeLeftRight = 0,
    kModeLeft = 1,
    kModeRight = 2,
    kModeMono = 3,
    kModeStereo = 4,
    kModeMonoStereo = 5,
    kModeLeftRightNegative = 6,
    kModeSurround = 7,
};

struct ChannelModeRecord {
    const char* name;
    const char* midSideName;  // where the pair is told as middle and side
    const char* shortName;
    const char* description;
    int processingChannels;  // at most so many are processed
    int hostChannels;        // at most so many are taken from the host
};

inline constexpr std::array<ChannelModeRecord, 8> kChannelModes = {{
    {"Left + Right", "Left + Right", "L+R", "Default setting for stereo (or mono) processing.", 2,
     2},
    {"Left", "Left", "L", "Processes the left channel only.", 1, 2},
    {"Right", "Right", "R", "Processes the right channel only.", 1, 2},
    {"Mono", "Mid", "M", "Processes mono content.", 1, 2},
    {"Stereo", "Side", "S", "Processes stereo content.", 1, 2},
    {"Mono + Stereo", "Mid + Side", "M+S", "Processes mono & stereo contents separately.", 2, 2},
    {"Left + Right (neg)", "Left + Right (neg)", "L+R-",
     "Processes both channels, but inverts the right one.", 2, 2},
    {"Surround", "Surround", "7.1", "Surround processing of up to 8 channels.", 8, 8},
}};

// What is asked for, which may be a number of no mode, as the nearest there is.
constexpr int ValidChannelMode(int mode) {
    return std::clamp<int>(mode, kModeLeftRight, static_cast<int>(kChannelModes.size()) - 1);
}

// Only one channel of the pair reaches the effect.
constexpr bool IsSingleChannelMode(int mode) { return mode >= kModeLeft && mode <= kModeStereo; }
// The effect's channel is the second of the pair.
constexpr bool SwapsChannels(int mode) { return mode == kModeRight || mode == kModeStereo; }
constexpr bool IsMidSideMode(int mode) { return mode >= kModeMono && mode <= kModeMonoStereo; }
