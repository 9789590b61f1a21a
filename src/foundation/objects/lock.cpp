// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/lock.h"

#include "foundation/objects/timed_wait.h"
#include "foundation/text/exception.h"

int MLock::Acquire(std::uint32_t timeoutMilliseconds) {
    if (timeoutMilliseconds == 0) return mutex.try_lock() ? 0 : 1;
    mutex.lock();
    return 0;
}

void MLock::Release() { mutex.unlock(); }

MMutex::MMutex(Kind kind) : handle(kind == Kind::System ? std::make_unique<Handle>() : nullptr) {}

int MMutex::Acquire(std::uint32_t timeoutMilliseconds) {
    if (handle == nullptr) return 0;
    const std::thread::id self = std::this_thread::get_id();
    std::unique_lock lock(handle->mutex);
    const auto isOurs = [&] { return handle->depth == 0 || handle->owner == self; };
    if (!WaitUntilTrue(handle->freed, lock, timeoutMilliseconds, isOurs)) return 1;
    handle->owner = self;
    ++handle->depth;
    return 0;
}

void MMutex::Release() {
    if (handle == nullptr) return;
    const std::lock_guard lock(handle->mutex);
    if (--handle->depth == 0) handle->freed.notify_one();
}

int MSemaphore::Acquire(std::uint32_t timeoutMilliseconds) {
    std::unique_lock lock(mutex);
    if (!WaitUntilTrue(raised, lock, timeoutMilliseconds, [this] { return count > 0; })) return 1;
    --count;
    return 0;
}

void MSemaphore::Release() {
    // Notified under the mutex: who got through may destroy the semaphore at once.
    const std::lock_guard lock(mutex);
    ++count;
    raised.notify_one();
}

MLocker::MLocker(MLockBase* lock, std::uint32_t timeoutMilliseconds) : lock(lock) {
    if (lock != nullptr && lock->Acquire(timeoutMilliseconds) != 0)
        throw MException("Could not acquire mutex.");
}
