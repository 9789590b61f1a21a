// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/lock.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "foundation/text/exception.h"

namespace {

// 0 where another thread could take the lock at this moment.
int TryElsewhere(MLock& lock) {
    int answer = -1;
    std::thread other([&] {
        answer = lock.Acquire(0);
        if (answer == 0) lock.Release();
    });
    other.join();
    return answer;
}

class RefusingLock : public MLock {
public:
    int Acquire(std::uint32_t timeoutMilliseconds) override {
        timeoutSeen = timeoutMilliseconds;
        return 1;
    }
    void Release() override { ++releases; }

    std::uint32_t timeoutSeen = 0;
    int releases = 0;
};

}  // namespace

TEST(Lock, IsFreeForOthersAfterTheLastRelease) {
    MLock lock;
    ASSERT_EQ(lock.Acquire(kInfinite), 0);
    ASSERT_EQ(lock.Acquire(0), 0);
    EXPECT_EQ(TryElsewhere(lock), 1);
    lock.Release();
    EXPECT_EQ(TryElsewhere(lock), 1);
    lock.Release();
    EXPECT_EQ(TryElsewhere(lock), 0);
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

TEST(Locker, HoldsToTheEndOfItsScope) {
    MLock lock;
    {
        MLocker locker(&lock);
        EXPECT_EQ(TryElsewhere(lock), 1);
    }
    EXPECT_EQ(TryElsewhere(lock), 0);
    MLocker none(static_cast<MLock*>(nullptr));
}

TEST(Locker, RaisesAndReleasesNothingWhenRefused) {
    RefusingLock lock;
    try {
        MLocker locker(lock, 250);
        FAIL();
    } catch (const MException& error) {
        EXPECT_STREQ(error.what(), "Could not acquire mutex.");
    }
    EXPECT_EQ(lock.timeoutSeen, 250u);
    EXPECT_EQ(lock.releases, 0);
}
