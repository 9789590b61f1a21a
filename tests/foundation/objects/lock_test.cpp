// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/lock.h"

#include <gtest/gtest.h>

#include <chrono>

#include "foundation/objects/elsewhere.h"

TEST(Lock, ThreadsExcludeEachOtherAndTimeoutsAreKept) {
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

        MLocker other(each == &semaphore ? each : nullptr);  // which then lets one through
        int count = 0;
        OnThreads(4, [&](int) {
            for (int i = 0; i < 1000; ++i) {
                MLocker held(each, each == &lock ? 1 : kInfinite);
                ++count;
            }
        });
        EXPECT_EQ(count, 4000);
    }
    MMutex open(MMutex::Kind::Null);
    MLocker none(static_cast<MLock*>(nullptr));
    MLocker free(open);
    EXPECT_EQ(tryElsewhere(open, 0), "");
}
