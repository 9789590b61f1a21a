// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/lock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "foundation/text/exception.h"

namespace {

// 0 where another thread could take the lock within the timeout.
int TryElsewhere(MLockBase& lock, std::uint32_t timeoutMilliseconds = 0) {
    int answer = -1;
    std::thread other([&] {
        answer = lock.Acquire(timeoutMilliseconds);
        if (answer == 0) lock.Release();
    });
    other.join();
    return answer;
}

}  // namespace

TEST(Lock, IsFreeForOthersAfterTheLastRelease) {
    MLock lock;
    MMutex mutex;
    for (MLockBase* each : {static_cast<MLockBase*>(&lock), static_cast<MLockBase*>(&mutex)}) {
        MLocker outer(each);
        MLocker inner(each, 0);
        EXPECT_EQ(TryElsewhere(*each), 1);
        inner.Release();
        EXPECT_EQ(TryElsewhere(*each), 1);
        outer.Release();
        EXPECT_EQ(TryElsewhere(*each), 0);
    }
}

TEST(Lock, BlocksForAnyTimeoutButZero) {
    MLock lock;
    int count = 0;
    std::vector<std::thread> threads;
    for (const std::uint32_t timeout : {kInfinite, 1u, 1u, kInfinite}) {
        threads.emplace_back([&lock, &count, timeout] {
            for (int i = 0; i < 5000; ++i) {
                MLocker outer(&lock, timeout);
                MLocker inner(lock);
                ++count;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(count, 20000);
}

TEST(Lock, TheOthersKeepTheirTimeouts) {
    using Clock = std::chrono::steady_clock;
    MMutex mutex;
    MSemaphore semaphore(1);
    for (MLockBase* each : {static_cast<MLockBase*>(&mutex), static_cast<MLockBase*>(&semaphore)}) {
        MLocker held(each);
        const auto start = Clock::now();
        EXPECT_EQ(TryElsewhere(*each, 30), 1);
        EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(30));
        held.Release();
        EXPECT_EQ(TryElsewhere(*each, 30), 0);
    }
}

TEST(Mutex, OneWithoutAHandleIsNeverHeld) {
    MMutex mutex(MMutex::Kind::Null);
    MLocker locker(mutex);
    EXPECT_EQ(TryElsewhere(mutex), 0);
}

TEST(Semaphore, LetsThroughAsManyAsItsCount) {
    MSemaphore semaphore(2);
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 1000; ++i) {
                MLocker locker(semaphore);
                const int now = ++inside;
                if (now > most) most = now;
                --inside;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_LE(most, 2);
    EXPECT_EQ(semaphore.Acquire(0), 0);
    EXPECT_EQ(semaphore.Acquire(0), 0);
    EXPECT_EQ(semaphore.Acquire(0), 1);
}

TEST(Locker, RaisesAndReleasesNothingWhenRefused) {
    MSemaphore semaphore;
    try {
        MLocker locker(semaphore, 1);
        FAIL();
    } catch (const MException& error) {
        EXPECT_STREQ(error.what(), "Could not acquire mutex.");
    }
    EXPECT_EQ(semaphore.Acquire(0), 1);
    MLocker none(static_cast<MLock*>(nullptr));
}
