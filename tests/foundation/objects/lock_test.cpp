// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/lock.h"

#include <gtest/gtest.h>

#include <chrono>

#include "foundation/objects/elsewhere.h"

TEST(Lock, HoldsNestAndTimeoutsAreKept) {
    MLock lock;
    MMutex mutex;
    MSemaphore semaphore(2);
    const auto tryElsewhere = [](MLockBase& lock, std::uint32_t timeout) {
        std::string refusal;
        OnThreads(1, [&](int) { refusal = Raised([&] { MLocker locker(lock, timeout); }); });
        return refusal;
    };
    for (MLockBase* each : {static_cast<MLockBase*>(&lock), static_cast<MLockBase*>(&mutex),
                            static_cast<MLockBase*>(&semaphore)}) {
        MLocker outer(each);
        MLocker inner(each, 0);
        const std::uint32_t timeout = each == &lock ? 0 : 30;  // or it waits for ever
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(tryElsewhere(*each, timeout), "Could not acquire mutex.");
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(timeout));
        inner.Release();
        EXPECT_EQ(tryElsewhere(*each, 0).empty(), each == &semaphore);
        outer.Release();
        EXPECT_EQ(tryElsewhere(*each, 30), "");
    }
    MMutex open(MMutex::Kind::Null);
    MLocker none(static_cast<MLock*>(nullptr));
    MLocker free(open);
    EXPECT_EQ(tryElsewhere(open, 0), "");
}

TEST(Lock, ThreadsExcludeEachOther) {
    MLock lock;
    MMutex mutex;
    MSemaphore semaphore(1);
    MLockBase* const locks[] = {&lock, &mutex, &semaphore};
    int counts[3] = {};
    OnThreads(4, [&](int) {
        for (int i = 0; i < 3000; ++i) {
            MLocker held(locks[i % 3], i % 3 == 0 ? 1 : kInfinite);  // 1 waits for ever too
            ++counts[i % 3];
        }
    });
    for (const int count : counts) EXPECT_EQ(count, 4000);
    MLocker taken(semaphore, 0);
    EXPECT_EQ(semaphore.Acquire(0), 1);
}
