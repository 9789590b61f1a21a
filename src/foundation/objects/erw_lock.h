// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "foundation/objects/synchronization_object.h"
#include "foundation/objects/thread_local_index.h"

// Lock with many readers or one writer, for whole trees of objects. Mode 0 reads, any other writes.
//
// Who holds it in any mode reads again at once; who writes writes again at once. A waiting writer
// keeps new readers out. Who reads may acquire writing too: it is granted once all other reads
// belong to threads that wait for writing themselves. Such a thread, when its own turn comes, finds
// the tree changed by those before it. Where its time runs out while another one writes over its
// read, it waits for the end of that write before it gives up.
//
// Ranges   65,535 holds of each kind by a thread, 2^32 - 1 by all
// Memory   a thread that is new to a lock may cost an allocation when it acquires
// Errors   MException "Could not acquire emulated synchronization object." for a hold beyond the
//          range, std::bad_alloc; nothing is held then

class MERWLock : public MSynchronizationObject {
protected:
    void BeginWait(std::uint32_t mode) override;
    bool CanAcquire(std::uint32_t mode) override;
    void MarkAcquired(std::uint32_t mode) override;
    void EndWait(bool acquired, std::uint32_t mode) override;
    bool MarkReleased(std::uint32_t mode) override;
    bool CanGiveUp(std::uint32_t mode) override;

private:
    std::uint32_t OwnReads() { return tlsIndex.Word() & 0xffff; }
    std::uint32_t OwnWrites() { return tlsIndex.Word() >> 16; }

    // All under stateLock.
    std::uint32_t readers = 0;  // read holds of all threads
    std::uint32_t writers = 0;  // write holds of all threads
    std::uint32_t waitingWriters = 0;
    std::uint32_t waitingWritersReads = 0;  // read holds of the waiting writers
    MThreadLocalIndex tlsIndex;  // the thread's own holds: reads in the low 16 bits, writes above
};
