// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "foundation/objects/lock.h"

// A short MIDI message and when it happens.
struct MIDIRecord {
    std::int32_t time = 0;  // samples from the start of the block
    std::array<std::uint8_t, 4> bytes{};
};

// Messages that wait for the next block, in the order in which they came.
//
//     outputEvents.Add(time, bytes);                                 // on any thread
//     outputEvents.Drain(sampleCount, [&](const MIDIRecord& event) { ... });
//
// Ranges   kRoom messages; what comes beyond is dropped, so that a host which has stopped taking
//          blocks costs nothing
// Threads  Add on any, Drain on one, the audio thread; a lock is held while records are copied and
//          never while call runs
// Memory   all in place
// Errors   none of its own; where call raises the rest of the block's messages is dropped
class MIDIQueue {
public:
    static constexpr int kRoom = 2048;

    // A message of 3 bytes.
    void Add(std::int32_t time, const std::uint8_t* bytes);

    // Hands all messages on and forgets them, each within the block.
    template <typename Call>
    void Drain(int sampleCount, Call call) {
        const int count = TakeAll();
        for (int i = 0; i < count; ++i) {
            MIDIRecord record = taken[static_cast<std::size_t>(i)];
            record.time = std::clamp(record.time, 0, std::max(sampleCount - 1, 0));
            call(record);
        }
    }

private:
    // How many now stand in taken.
    int TakeAll();

    using Records = std::array<MIDIRecord, kRoom>;

    MLock lock;            // innermost, held for copies only
    Records waiting;       // under lock
    int waitingCount = 0;  // under lock
    Records taken;         // Drain's
};
