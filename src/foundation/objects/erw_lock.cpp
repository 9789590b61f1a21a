// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/erw_lock.h"

MERWLock::Holds* MERWLock::Find() {
    const std::thread::id self = std::this_thread::get_id();
    Holds* own = holds.Data();
    for (int i = 0; i < holdCount && own->thread != self; ++i) ++own;
    return own;
}

void MERWLock::DropIfEmpty(Holds* own) {
    if (own->reads == 0 && own->writes == 0) *own = holds[--holdCount];
}

void MERWLock::BeginWait(std::uint32_t mode) {
    holds.Reserve(holdCount + 1);
    Holds* const own = Find();
    if (own == holds.Data() + holdCount) {
        *own = {std::this_thread::get_id(), 0, 0};
        ++holdCount;
    }
    if (mode == 0) return;
    ++waitingWriters;
    waitingWritersReads += own->reads;
}

bool MERWLock::CanAcquire(std::uint32_t mode) {
    const Holds& own = *Find();
    if (own.writes > 0) return true;
    if (mode == 0) return own.reads > 0 || (writers == 0 && waitingWriters == 0);
    return writers == 0 && readers == waitingWritersReads;
}

void MERWLock::MarkAcquired(std::uint32_t mode) {
    Holds& own = *Find();
    ++(mode == 0 ? own.reads : own.writes);
    ++(mode == 0 ? readers : writers);
}

void MERWLock::EndWait(bool acquired, std::uint32_t mode) {
    Holds* const own = Find();
    if (mode != 0) {
        --waitingWriters;
        // Marked or not yet: a hold for writing leaves the reads as they were.
        waitingWritersReads -= own->reads;
    }
    if (!acquired) DropIfEmpty(own);
}

bool MERWLock::MarkReleased(std::uint32_t mode) {
    Holds* const own = Find();
    --(mode == 0 ? own->reads : own->writes);
    --(mode == 0 ? readers : writers);
    DropIfEmpty(own);
    return readers == 0 && writers == 0;
}

bool MERWLock::CanGiveUp(std::uint32_t mode) {
    return mode == 0 || writers == 0 || Find()->reads == 0;
}
