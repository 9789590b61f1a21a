// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <mutex>

#include "foundation/objects/object.h"

// Locks, and the scope that holds one.
//
//     MLocker lock(processLock);   // to the end of the scope
//
// Units    timeouts in milliseconds; kInfinite waits for ever
// Threads  any; the thread that acquired a lock releases it
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

// Holds a lock for a scope.
class MLocker {
public:
    // Null is legal and holds nothing.
    [[nodiscard]] explicit MLocker(MLockBase* lock, std::uint32_t timeoutMilliseconds = kInfinite);
    [[nodiscard]] explicit MLocker(MLockBase& lock, std::uint32_t timeoutMilliseconds = kInfinite)
        : MLocker(&lock, timeoutMilliseconds) {}
    MLocker(const MLocker&) = delete;
    MLocker& operator=(const MLocker&) = delete;
    ~MLocker();

private:
    MLockBase* lock;
};
