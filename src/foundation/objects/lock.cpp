// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/lock.h"

#include "foundation/text/exception.h"

int MLock::Acquire(std::uint32_t timeoutMilliseconds) {
    if (timeoutMilliseconds == 0) return mutex.try_lock() ? 0 : 1;
    mutex.lock();
    return 0;
}

void MLock::Release() { mutex.unlock(); }

MLocker::MLocker(MLockBase* lock, std::uint32_t timeoutMilliseconds) : lock(lock) {
    if (lock != nullptr && lock->Acquire(timeoutMilliseconds) != 0)
        throw MException("Could not acquire mutex.");
}

MLocker::~MLocker() {
    if (lock != nullptr) lock->Release();
}
