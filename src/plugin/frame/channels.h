// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>

// How the channels of all buses stand in one array of pointers: channel c of bus b at
// b * kChannelStride + c.

inline constexpr int kChannelStride = 8;
inline constexpr int kMaxBuses = 16;
inline constexpr int kChannelSlots = kChannelStride * kMaxBuses;

constexpr std::size_t SlotOf(int bus, int channel) {
    return static_cast<std::size_t>(bus) * kChannelStride + static_cast<std::size_t>(channel);
}

using ChannelPointers = std::array<float*, kChannelSlots>;
