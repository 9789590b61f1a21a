// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/erw_lock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "foundation/objects/random.h"
#include "foundation/text/exception.h"

namespace {

constexpr std::uint32_t kRead = MSynchronizer::kRead;
constexpr std::uint32_t kWrite = MSynchronizer::kWrite;

// Whether another thread gets it at this moment.
bool FreeElsewhere(MERWLock& lock, std::uint32_t mode) {
    bool free = false;
    std::thread other([&] {
        free = lock.Acquire(mode, 0) == 0;
        if (free) lock.Release(mode);
    });
    other.join();
    return free;
}

void ExpectFreeElsewhere(MERWLock& lock, bool toRead, bool toWrite) {
    EXPECT_EQ(FreeElsewhere(lock, kRead), toRead);
    EXPECT_EQ(FreeElsewhere(lock, kWrite), toWrite);
}

// The rule seen from outside: who writes and who reads at a moment, those left out that wait for
// writing. The plain number shows the thread sanitizer what the lock orders.
struct Model {
    std::atomic<int> readingThreads = 0;
    std::atomic<int> writingThreads = 0;
    std::atomic<int> broken = 0;
    int written = 0;

    void Check(bool holds) {
        if (!holds) ++broken;
    }
};

// One thread's nested holds under random modes and timeouts.
class Holder {
public:
    Holder(MERWLock& lock, Model& model, std::uint32_t seed) : lock(lock), model(model) {
        random.seed = seed;
    }
    void Run(int steps) {
        for (int i = 0; i < steps; ++i) Nest(1 + random.Next() % 4);
    }

private:
    void Nest(int depth) {
        constexpr std::uint32_t kTimeouts[] = {0, 1, kInfinite, kInfinite};
        const std::uint32_t mode = random.Next() % 3 == 0 ? kWrite : kRead;
        const std::uint32_t timeout = kTimeouts[random.Next() % 4];
        const bool upgrades = mode == kWrite && reads > 0 && writes == 0;
        if (upgrades) --model.readingThreads;
        const bool got = lock.Acquire(mode, timeout) == 0;
        model.Check(got || timeout != kInfinite);
        // A thread with a hold reads without waiting.
        model.Check(got || mode == kWrite || reads + writes == 0);
        if (upgrades && !got) ++model.readingThreads;
        if (got) Entered(mode);
        Look();
        if (depth > 1) Nest(depth - 1);
        if (!got) return;
        Look();
        Leaving(mode);
        lock.Release(mode);
    }
    void Entered(std::uint32_t mode) {
        if (mode == kWrite) {
            if (writes++ == 0) ++model.writingThreads;
        } else if (reads++ == 0 && writes == 0) {
            ++model.readingThreads;
        }
    }
    // A thread that gives up writing and still reads goes on as a reader.
    void Leaving(std::uint32_t mode) {
        if (mode == kWrite) {
            if (--writes > 0) return;
            if (reads > 0) ++model.readingThreads;
            --model.writingThreads;
        } else if (--reads == 0 && writes == 0) {
            --model.readingThreads;
        }
    }
    void Look() {
        if (writes > 0) {
            model.Check(model.writingThreads == 1 && model.readingThreads == 0);
            ++model.written;
        } else if (reads > 0) {
            model.Check(model.writingThreads == 0 && model.written >= 0);
        }
    }

    MERWLock& lock;
    Model& model;
    MRandomSequence random;
    int reads = 0;
    int writes = 0;
};

}  // namespace

TEST(ERWLock, IsFreeAfterTheLastRelease) {
    MERWLock lock;
    const std::uint32_t modes[] = {kRead, kRead, kWrite, kRead, kWrite};
    for (const std::uint32_t mode : modes) ASSERT_EQ(lock.Acquire(mode, 0), 0);
    ExpectFreeElsewhere(lock, false, false);
    EXPECT_FALSE(lock.Release(kWrite));
    ExpectFreeElsewhere(lock, false, false);
    EXPECT_FALSE(lock.Release(kWrite));
    ExpectFreeElsewhere(lock, true, false);
    EXPECT_FALSE(lock.Release(kRead));
    EXPECT_FALSE(lock.Release(kRead));
    EXPECT_TRUE(lock.Release(kRead));
    ExpectFreeElsewhere(lock, true, true);
}

TEST(ERWLock, AWaitingWriterBlocksNewReadersOnly) {
    MERWLock lock;
    auto reading = std::make_unique<MSynchronizer>(&lock, kRead);
    std::atomic<bool> written = false;
    std::thread writer([&] {
        MSynchronizer writing(&lock, kWrite);
        written = true;
    });
    while (FreeElsewhere(lock, kRead)) std::this_thread::yield();
    {
        MSynchronizer again(&lock, kRead, 0);
        MSynchronizer upgraded(&lock, kWrite, 0);  // the only reader
        EXPECT_FALSE(written);
    }
    reading.reset();
    writer.join();
    ExpectFreeElsewhere(lock, true, true);
}

TEST(ERWLock, AnUpgradeGivesUpOnlyWhenNobodyWritesOverItsRead) {
    MERWLock lock;
    std::atomic<bool> reads = false;
    std::atomic<bool> writing = false;
    std::thread other([&] {
        MSynchronizer reading(&lock, kRead);
        reads = true;
        const bool got = lock.Acquire(kWrite, 20) == 0;
        EXPECT_FALSE(writing);
        if (got) lock.Release(kWrite);
    });
    while (!reads) std::this_thread::yield();
    {
        MSynchronizer reading(&lock, kRead);
        MSynchronizer upgraded(&lock, kWrite);
        writing = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(60));
        writing = false;
    }
    other.join();
    ExpectFreeElsewhere(lock, true, true);
}

TEST(ERWLock, RandomThreadsKeepTheModelsRules) {
    MERWLock lock;
    Model model;
    std::vector<std::thread> threads;
    for (std::uint32_t seed = 1; seed <= 5; ++seed)
        threads.emplace_back([&lock, &model, seed] { Holder(lock, model, seed).Run(1500); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(model.broken, 0);
    EXPECT_GT(model.written, 0);
    ExpectFreeElsewhere(lock, true, true);
}

TEST(Synchronizer, RaisesWhenRefusedAndLeavesNoTrace) {
    MERWLock lock;
    {
        MSynchronizer reading(&lock, MSynchronizer::kNoYield | kRead);
        std::thread other([&lock] {
            try {
                MSynchronizer writing(&lock, kWrite, 5);
                ADD_FAILURE();
            } catch (const MException& error) {
                EXPECT_STREQ(error.what(), "Could not acquire emulated synchronization object.");
            }
        });
        other.join();
        ExpectFreeElsewhere(lock, true, false);
    }
    ExpectFreeElsewhere(lock, true, true);
    MSynchronizer none(nullptr, kWrite);
}
