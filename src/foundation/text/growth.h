// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The one growth rule of all growing buffers, strings and lists.
//
// Units    whatever the owner counts: cells, or bytes in a string's block
// Threads  any

#include <bit>
#include <cstdint>

// count itself up to 2, else the smallest power of two not below it. count is at most 2^62.
constexpr std::int64_t RoundedCapacity(std::int64_t count) {
    if (count <= 2) return count;
    return static_cast<std::int64_t>(std::bit_ceil(static_cast<std::uint64_t>(count)));
}
