// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

#include "foundation/objects/object.h"

// Locks, and the scope that holds one.
//
//     MLocker lock(processLock);   // to the end of the scope
//
// Units    timeouts in milliseconds; kInfinite waits for ever
// Threads  any; the thread that acquired a MLock or MMutex releases it
// Errors   MException "Could not acquire mutex." out of MLocker, which then holds nothing

inline constexpr std::uint32_t kInfinite = 0xffffffff;

class MLockBase : public MObject {
public:
    // 0 on success.
    [[nodiscard]] virtual int Acquire(std::uint32_t timeoutMilliseconds) = 0;
    virtual void Release() = 0;
};

// For short holds inside the process. A thread that holds it may acquire it again and releases it
// as often.
class MLock : public MLockBase {
public:
    // Timeout 0 tries: 0 if it got the lock, 1 if not. Any other timeout waits for ever.
    [[nodiscard]] int Acquire(std::uint32_t timeoutMilliseconds) override;
    void Release() override;

private:
    std::recursive_mutex mutex;
};

// For holds of any length: every timeout is kept. Re-entrant like MLock. A thread that ends while
// it holds one leaves it held.
class MMutex : public MLockBase {
public:
    enum class Kind { System, Null };

    // One without a handle is acquired at once by everybody.
    explicit MMutex(Kind kind = Kind::System);
    // 1 where the time ran out.
    [[nodiscard]] int Acquire(std::uint32_t timeoutMilliseconds) override;
    void Release() override;

private:
    // The timed mutexes of the standard library are unknown to the thread sanitizer.
    struct Handle {
        std::mutex mutex;
        std::condition_variable freed;
        std::thread::id owner;  // under mutex
        int depth = 0;          // under mutex
    };

    std::unique_ptr<Handle> handle;  // may be null
};

// A count that Release raises by 1 and Acquire lowers by 1, waiting while it is 0. Any thread may
// release it.
class MSemaphore : public MLockBase {
public:
    explicit MSemaphore(int count = 0) : count(count) {}
    // 1 where the time ran out.
    [[nodiscard]] int Acquire(std::uint32_t timeoutMilliseconds) override;
    void Release() override;

private:
    std::mutex mutex;
    std::condition_variable raised;
    int count;  // under mutex
};

// Holds a lock for a scope.
class MLocker {
public:
    // Null is legal and holds nothing.
    [[nodiscard]] explicit MLocker(MLockBase* lock, std::uint32_t timeoutMilliseconds = kInfinite);
    [[nodiscard]] explicit MLocker(MLockBase& lock, std::uint32_t timeoutMilliseconds = kInfinite)
        : MLocker(&lock, timeoutMilliseconds) {}
    MLocker(const MLocker&) = delete;
    MLocker& operator=(const MLocker&) = delete;
    ~MLocker() { Release(); }

    // Ends the hold before the scope does. It may be repeated.
    void Release() {
        if (lock == nullptr) return;
        lock->Release();
        lock = nullptr;
    }

private:
    MLockBase* lock;
};
