// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <thread>

#include "foundation/objects/growing_buffer.h"
#include "foundation/objects/synchronization_object.h"

// Lock with many readers or one writer, for whole trees of objects. Mode 0 reads, any other writes.
//
// Who holds it in any mode reads again at once; who writes writes again at once. A waiting writer
// keeps new readers out. Who reads may acquire writing too: it is granted once all other reads
// belong to threads that wait for writing themselves. Such a thread, when its own turn comes, finds
// the tree changed by those before it. Where its time runs out while another one writes over its
// read, it waits for the end of that write before it gives up.
//
// Ranges   2^32 - 1 holds of each kind
// Memory   a thread that is new to a lock may cost an allocation when it acquires
// Method   the holds of each thread are kept in a table of the threads that hold or wait, which is
//          searched from its start: it has a handful of entries

class MERWLock : public MSynchronizationObject {
protected:
    void BeginWait(std::uint32_t mode) override;
    bool CanAcquire(std::uint32_t mode) override;
    void MarkAcquired(std::uint32_t mode) override;
    void EndWait(bool acquired, std::uint32_t mode) override;
    bool MarkReleased(std::uint32_t mode) override;
    bool CanGiveUp(std::uint32_t mode) override;

private:
    struct Holds {
        std::thread::id thread;
        std::uint32_t reads;
        std::uint32_t writes;
    };

    // The entry of this thread, one behind the last where it has none.
    Holds* Find();
    void DropIfEmpty(Holds* own);

    // All under stateLock.
    std::uint32_t readers = 0;  // read holds of all threads
    std::uint32_t writers = 0;  // write holds of all threads
    std::uint32_t waitingWriters = 0;
    std::uint32_t waitingWritersReads = 0;  // read holds of the waiting writers
    GrowingBuffer<Holds> holds;             // of each thread that holds or waits
    int holdCount = 0;
};
