// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/erw_lock.h"

#include "foundation/text/exception.h"

namespace {

constexpr std::uint32_t kMostHolds = 0xffff;

// One hold in a thread's word.
constexpr std::uint32_t OneHold(std::uint32_t mode) { return mode == 0 ? 1 : 0x10000; }

}  // namespace

void MERWLock::BeginWait(std::uint32_t mode) {
    if ((mode == 0 ? OwnReads() : OwnWrites()) == kMostHolds)
        throw MException("Could not acquire emulated synchronization object.");
    if (mode == 0) return;
    ++waitingWriters;
    waitingWritersReads += OwnReads();
}

bool MERWLock::CanAcquire(std::uint32_t mode) {
    const bool holds = tlsIndex.Word() != 0;
    if (holds && (mode == 0 || OwnWrites() > 0)) return true;
    if (mode == 0) return writers == 0 && waitingWriters == 0;
    return writers == 0 && readers == waitingWritersReads;
}

void MERWLock::MarkAcquired(std::uint32_t mode) {
    ++(mode == 0 ? readers : writers);
    tlsIndex.Word() += OneHold(mode);
}

// Marked or not yet: a hold for writing leaves the reads as they were.
void MERWLock::EndWait(bool, std::uint32_t mode) {
    if (mode == 0) return;
    --waitingWriters;
    waitingWritersReads -= OwnReads();
}

bool MERWLock::MarkReleased(std::uint32_t mode) {
    --(mode == 0 ? readers : writers);
    tlsIndex.Word() -= OneHold(mode);
    return readers == 0 && writers == 0;
}

bool MERWLock::CanGiveUp(std::uint32_t mode) {
    return mode == 0 || writers == 0 || OwnReads() == 0;
}
