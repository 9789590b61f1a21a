// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "foundation/objects/lock.h"

// A lock emulated by polling: its subclass says who may hold it together with whom.
//
//     MSynchronizer hold(&tree, MSynchronizer::kWrite);   // to the end of the scope
//
// There is deliberately no sleeping and no signal: holds are short, and a yield is cheap.
//
// Units    timeouts in milliseconds; kInfinite waits for ever
// Threads  any but the audio thread; each hold is released by the thread that acquired it
// Errors   MException "Could not acquire emulated synchronization object." out of MSynchronizer,
//          which then holds nothing

class MSynchronizationObject : public MObject {
public:
    MSynchronizationObject() = default;
    MSynchronizationObject(const MSynchronizationObject&) = delete;
    MSynchronizationObject& operator=(const MSynchronizationObject&) = delete;

    // 0 on success, 1 where the time ran out; 0 as a timeout tries once.
    [[nodiscard]] int Acquire(std::uint32_t mode, std::uint32_t timeoutMilliseconds);
    // Whether the object is now free of all holders.
    bool Release(std::uint32_t mode);

protected:
    // All under stateLock, on the thread that acquires or releases.
    // Once, as a thread starts to acquire. What it raises passes through Acquire.
    virtual void BeginWait(std::uint32_t mode);
    virtual bool CanAcquire(std::uint32_t mode) = 0;
    virtual void MarkAcquired(std::uint32_t mode);
    // Once, as the acquiring ends: before MarkAcquired with a finite timeout, else behind it.
    virtual void EndWait(bool acquired, std::uint32_t mode);
    virtual bool MarkReleased(std::uint32_t mode);
    // Whether a wait may end without a hold at this moment; else it goes on past its time.
    virtual bool CanGiveUp(std::uint32_t mode);

    MLock stateLock;  // guards all state of the subclass; nothing else is taken under it
};

// Holds a synchronization object for a scope.
class MSynchronizer {
public:
    // Modes in the low 28 bits, flags above.
    static constexpr std::uint32_t kRead = 0;
    static constexpr std::uint32_t kWrite = 1;
    static constexpr std::uint32_t kNoYield = std::uint32_t{1} << 30;

    // Null is legal and holds nothing. At the end of the scope the thread yields where that made
    // the object free, so that those who poll for it get on; kNoYield leaves the yield out.
    [[nodiscard]] MSynchronizer(MSynchronizationObject* object, std::uint32_t mode,
                                std::uint32_t timeoutMilliseconds = kInfinite);
    MSynchronizer(const MSynchronizer&) = delete;
    MSynchronizer& operator=(const MSynchronizer&) = delete;
    ~MSynchronizer();

private:
    static constexpr std::uint32_t kModeMask = 0xfffffff;

    MSynchronizationObject* object;
    std::uint32_t mode;
};
