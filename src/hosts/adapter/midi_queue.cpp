// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosts/adapter/midi_queue.h"

#include <utility>

void MIDIQueue::Add(std::int32_t time, const std::uint8_t* bytes) {
    MLocker locker(lock);
    if (waitingCount == kRoom) return;
    MIDIRecord& record = waiting[static_cast<std::size_t>(waitingCount++)];
    record.time = time;
    std::copy_n(bytes, 3, record.bytes.begin());
}

int MIDIQueue::TakeAll() {
    MLocker locker(lock);
    std::copy_n(waiting.begin(), waitingCount, taken.begin());
    return std::exchange(waitingCount, 0);
}
