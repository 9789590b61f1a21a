// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/synchronization_object.h"

#include <chrono>
#include <thread>

#include "foundation/text/exception.h"

namespace {

// The clock is first read when the first test has failed: most never read it.
class Deadline {
public:
    explicit Deadline(std::uint32_t milliseconds) : milliseconds(milliseconds) {}

    bool HasPassed() {
        if (milliseconds == 0) return true;
        const auto now = std::chrono::steady_clock::now();
        if (start == Time{}) start = now;
        return now - start >= std::chrono::milliseconds(milliseconds);
    }

private:
    using Time = std::chrono::steady_clock::time_point;

    std::uint32_t milliseconds;
    Time start;
};

}  // namespace

int MSynchronizationObject::Acquire(std::uint32_t mode, std::uint32_t timeoutMilliseconds) {
    const bool infinite = timeoutMilliseconds == kInfinite;
    Deadline deadline(timeoutMilliseconds);
    for (bool first = true;; first = false) {
        MLocker lock(stateLock);
        if (first) BeginWait(mode);
        if (CanAcquire(mode)) {
            if (infinite) MarkAcquired(mode);
            EndWait(true, mode);
            if (!infinite) MarkAcquired(mode);
            return 0;
        }
        if (!infinite && deadline.HasPassed() && CanGiveUp(mode)) {
            EndWait(false, mode);
            return 1;
        }
        lock.Release();
        std::this_thread::yield();
    }
}

bool MSynchronizationObject::Release(std::uint32_t mode) {
    MLocker lock(stateLock);
    return MarkReleased(mode);
}

void MSynchronizationObject::BeginWait(std::uint32_t) {}
void MSynchronizationObject::MarkAcquired(std::uint32_t) {}
void MSynchronizationObject::EndWait(bool, std::uint32_t) {}
bool MSynchronizationObject::MarkReleased(std::uint32_t) { return true; }
bool MSynchronizationObject::CanGiveUp(std::uint32_t) { return true; }

MSynchronizer::MSynchronizer(MSynchronizationObject* object, std::uint32_t mode,
                             std::uint32_t timeoutMilliseconds)
    : object(object), mode(mode) {
    if (object != nullptr && object->Acquire(mode & kModeMask, timeoutMilliseconds) != 0)
        throw MException("Could not acquire emulated synchronization object.");
}

MSynchronizer::~MSynchronizer() {
    if (object == nullptr) return;
    if (object->Release(mode & kModeMask) && (mode & kNoYield) == 0) std::this_thread::yield();
}
